#include "presentation/Tallix.h"

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "ports/PresentationApp.h"

#include <cmath>

namespace tlx {

namespace {
constexpr const char* kObject = "tallix";
}

tallix::tallix(Controller& controller) : c_(controller) {
    c_.trace("Begin - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Class_Initialize", kObject);
    if (c_.glo.InitialisedState == INIT_STATE_NOT_STARTED) c_.GlobalInitSub();
    initSub_ = c_.initialised.connect([this] { Initialised(); });
    c_.trace("End - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Class_Initialize", kObject);
}

tallix::~tallix() {
    unsubscribe();
    c_.initialised.disconnect(initSub_);
}

void tallix::VoteLoaded() {
    trap(c_.errors, kObject, "VoteLoaded", [&] {
        if (c_.glo.slideShowActive) return;
        c_.trace("glo.slideShowActive=False", "VoteLoaded", kObject);
        MainForm* m = c_.mainForm();
        if (!m || !c_.glo.ppApp) return;
        ppt::Presentation* p = c_.glo.ppApp->activePresentation();
        m->SlideShowBegin(p ? p->slideShowWindow() : nullptr);
    });
}

void tallix::SlideShowBegin(ppt::SlideShowWindow* Wn) {
    trap(c_.errors, kObject, "SlideShowBegin", [&] {
        if (MainForm* m = c_.mainForm()) m->SlideShowBegin(Wn);
    });
}

void tallix::SlideShowBegin(std::int64_t window) {
    ppt::SlideShowWindow* Wn = nullptr;
    trap(c_.errors, kObject, "SlideShowBegin", [&] {
        ppt::Application* app = c_.glo.ppApp ? c_.glo.ppApp : c_.getPowerPointObject();
        if (!app) return;
        const int count = app->slideShowWindowCount();
        for (int i = 1; i <= count && !Wn; ++i)
            if (app->slideShowWindow(i)->hwnd() == window) Wn = app->slideShowWindow(i);
        if (!Wn && window >= 1 && window <= count) Wn = app->slideShowWindow(static_cast<int>(window));
        if (!Wn && count > 0) Wn = app->slideShowWindow(1);
    });
    SlideShowBegin(Wn);
}

void tallix::SlideShowEnd() {
    trap(c_.errors, kObject, "SlideShowEnd", [&] {
        if (MainForm* m = c_.mainForm()) m->SlideShowEnd();
    });
}

void tallix::SlideShowNextSlide() {
    trap(c_.errors, kObject, "SlideShowNextSlide", [&] {
        if (MainForm* m = c_.mainForm()) m->SlideShowNextSlide();
    });
}

int tallix::CurrentSlide() {
    int slide = 0;
    trap(c_.errors, kObject, "CurrentSlide", [&] {
        ppt::Application* app = c_.glo.ppApp ? c_.glo.ppApp : c_.getPowerPointObject();
        if (!app) return;
        ppt::Presentation* p = app->activePresentation();
        if (!p) return;
        const double v = ParseNumber(p->tags().item("tlxCurrentSlide"));
        slide = std::fabs(v) < 2e9 ? static_cast<int>(v) : 0;
    });
    return slide;
}

void tallix::PowerPointClosed() {
    trap(c_.errors, kObject, "PowerPointClosed", [&] {
        MainForm* m = c_.mainForm();
        if (!m) return;
        m->PowerPointClosed();
        c_.FullShutdown(false);
    });
}

void tallix::init(const std::string& NewArgs) {
    trap(c_.errors, kObject, "Init", [&] {
        c_.trace("Begin - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Init", kObject);
        if (c_.glo.InitialisedState == INIT_STATE_NOT_STARTED) c_.GlobalInitSub();
        c_.trace("Mid - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Init", kObject);
        if (!NewArgs.empty()) {
            c_.glo.commandLine = NewArgs;
            c_.setUsePowerPoint(!icontains(c_.glo.commandLine, "-noppt"));
        }
        subscribe();
        c_.trace("End - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Init", kObject);
    });
}

bool tallix::SendCommand(const std::string& sCommand) {
    bool queued = false;
    trap(c_.errors, kObject, "SendCommand", [&] {
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
        MainForm* m = c_.mainForm();
        if (!m) return;
        m->AddDataToCommandQueue(sCommand);
        queued = true;
    });
    return queued;
}

void tallix::subscribe() {
    if (subscribed_) return;
    MainForm* m = c_.mainForm();
    if (!m) return;
    subs_[0] = m->FromCtrlForm.connect([this](const std::string& s) { FromTLXCtrl(s); });
    subs_[1] = m->FromCtrlFormBaseStationStartVoteCount.connect(
        [this](int n) { FromCtrlFormBaseStationStartVoteCount(n); });
    subs_[2] = m->FromCtrlFormBaseStationError.connect(
        [this](int i, const std::string& s) { FromTLXCtrlBaseError(i, s); });
    subs_[3] = m->FromCtrlFormBaseStationFeedback.connect(
        [this](int i, const std::string& s) { FromTLXCtrlBaseFeedback(i, s); });
    subs_[4] = m->VKeyPressed.connect([this] { VKeyPressed(); });
    subscribed_ = true;
}

void tallix::unsubscribe() {
    if (!subscribed_) return;
    subscribed_ = false;
    MainForm* m = c_.mainForm();
    if (!m) return;  // the form went first and took its subscriptions with it
    m->FromCtrlForm.disconnect(subs_[0]);
    m->FromCtrlFormBaseStationStartVoteCount.disconnect(subs_[1]);
    m->FromCtrlFormBaseStationError.disconnect(subs_[2]);
    m->FromCtrlFormBaseStationFeedback.disconnect(subs_[3]);
    m->VKeyPressed.disconnect(subs_[4]);
}

void Main(Controller& controller) {
    // Forced on: Main's opening lines are traced before anything has read the setting, so
    // every start leaves them in the dated trace file. GlobalInitSub replaces the flag with
    // the setting ("LOGEVENTS TO FILE"), which decides about every later line.
    controller.glo.traceToFile = true;
    auto state = [&] { return numText(controller.glo.InitialisedState); };
    controller.trace("Initial Load from Main Sub - BEGIN, glo.InitialisedState=" + state(), "Main");
    controller.trace("Set oTLX = New tallix, glo.InitialisedState=" + state(), "Main");
    {
        tallix oTLX(controller);
        controller.trace("Set oTLX = Nothing, glo.InitialisedState=" + state(), "Main");
    }
    controller.trace("Initial Load from Main Sub - END, glo.InitialisedState=" + state(), "Main");
}

}  // namespace tlx
