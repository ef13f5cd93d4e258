#include "presentation/Tallix.h"

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"

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

void tallix::init(const std::string& NewArgs) {
    trap(c_.errors, kObject, "Init", [&] {
        c_.trace("Begin - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Init", kObject);
        if (c_.glo.InitialisedState == INIT_STATE_NOT_STARTED) c_.GlobalInitSub();
        c_.trace("Mid - glo.InitialisedState = " + numText(c_.glo.InitialisedState), "Init", kObject);
        if (!NewArgs.empty()) {
            c_.glo.commandLine = NewArgs;
            c_.glo.usePowerPoint = !icontains(c_.glo.commandLine, "-noppt");
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
    // Forced on, then replaced by the setting, which decides whether a trace file is written.
    controller.glo.traceToFile = true;
    controller.glo.traceToFile = controller.settings.LogEventsToFile();
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
