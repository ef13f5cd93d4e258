#include "presentation/PresentationWatcher.h"

#include "audio/AudioWindow.h"

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "ports/Desktop.h"
#include "ports/PresentationApp.h"
#include "presentation/HotKeys.h"

namespace tlx {

namespace {
constexpr const char* kForm = "tallix_controller";
constexpr const char* kModule = "Controller";
constexpr const char* kTaskBar = "TaskBarHideShow";

// Display programs whose windows manage themselves while they run.
const char* const kSiblings[] = {"CHARTIST.EXE",  "REPLAYER.EXE", "CREWBOARD.EXE", "QUESTOR.EXE",
                                 "TALLYDUMP.EXE", "PILLARS.EXE",  "DECKWRIGHT.EXE"};
// Our own windows that need the screen as they left it.
const char* const kOwnForms[] = {"frmInit", "ktest", "frmKELVARINsetup", "frmSetAlias", "frmAudio"};
}  // namespace

PresentationWatcher::PresentationWatcher(Controller& controller) : c_(controller) {}

bool PresentationWatcher::IsPowerPointRunning() const { return processRunning(c_.ports.desktop, "POWERPNT.EXE"); }

bool PresentationWatcher::InitPPTObject(bool force) {
    presentation_ = nullptr;
    // Switched off, the program is not there for us, attached or not.
    if (!c_.glo.usePowerPoint) {
        pptFound_ = false;
        return false;
    }
    if (force) pptFound_ = false;
    if (pptFound_) return true;
    pptFound_ = IsPowerPointRunning();
    if (!pptFound_) return false;
    // Automation errors here only leave the flag as the caller sees it.
    try {
        c_.glo.ppApp = nullptr;
        c_.glo.ppApp = c_.getPowerPointObject();
        if (!c_.glo.ppApp) {
            pptFound_ = false;
            return false;
        }
        if (icontains("tallix controller", "controller")) {
            try {
                addInPath_ = c_.glo.ppApp->addInPath("tallix.ppa");
            } catch (...) {
            }
        }
        presentation_ = c_.glo.ppApp->activePresentation();
    } catch (...) {
    }
    return pptFound_;
}

std::string PresentationWatcher::buildGotoMenu(ppt::Presentation& p) const {
    std::string menu = "Exit";
    const int count = p.slideCount();
    for (int i = 1; i <= count; ++i) {
        std::string item = numText(i) + ":Slide " + numText(i);
        // A slide without the shapes, or with unreadable text, keeps the default item.
        try {
            ppt::Slide* slide = p.slide(i);
            if (slide) {
                if (ppt::Shape* title = slide->shapeByName("Title 1"))
                    item = numText(i) + ":" + leftChars(title->text(), 20);
                if (ppt::Shape* question = slide->shapeByName("tlx_Question"))
                    item = numText(i) + ":" + leftChars(question->text(), 20);
            }
        } catch (...) {
        }
        menu += "|" + item;
    }
    return menu;
}

void PresentationWatcher::forgetAttachment() {
    pptFound_ = false;
    presentation_ = nullptr;
}

void PresentationWatcher::SlideShowBegin(ppt::SlideShowWindow* Wn) {
    trap(c_.errors, kForm, "SlideShowBegin", [&] {
        // Without a show window there is no show to begin; with the program switched off its
        // window is not ours to touch.
        if (!Wn || !c_.glo.usePowerPoint) return;
        c_.glo.slideShowActive = true;
        c_.trace("SLIDE SHOW BEGIN", "SlideShowBegin", kForm);
        ShowHideTaskBar();
        if (c_.settings.MinimizeWindowsOnSlideShowStart()) {
            c_.trace("Minize All Windows", "SlideShowBegin", kForm);
            c_.ports.desktop.minimizeAllWindows();
        }
        showWindow_ = Wn->hwnd();
        if (!c_.settings.DisableForceSlideShowTopMost() && Wn->isFullScreen()) TogglePPTSlideShowTopMost(-1, false);
        c_.trace("Slide Show Activate", "SlideShowBegin", kForm);
        Wn->activate();
        if (!c_.glo.ppApp) return;
        ppt::Presentation* p = c_.glo.ppApp->activePresentation();
        if (!p) return;
        const std::string menu = buildGotoMenu(*p);
        if (KeypadDriver* g2 = c_.drivers->corehubG2()) g2->SetPresenterGotoMenu(menu);
        showAudioPanelOnCurrentSlide();
    });
}

void PresentationWatcher::showAudioPanelOnCurrentSlide() {
    // A slide that asks for the microphone control panel brings up the audio window with it.
    if (!c_.glo.ppApp || c_.glo.ppApp->slideShowWindowCount() < 1) return;
    ppt::SlideShowWindow* w = c_.glo.ppApp->slideShowWindow(1);
    if (ppt::Slide* slide = w ? w->view().slide() : nullptr) showAudioControlPanelFor(c_, *slide);
}

void PresentationWatcher::endRunningVote() {
    if (!c_.glo.Voting) return;
    c_.glo.Voting = false;
    bool g1InUse = false;
    for (const auto& b : c_.glo.bases) {
        const std::string t = toUpper(b.baseType);
        if (t == "KELVARIN COREHUB G1" || t == "KELVARIN COREHUB") g1InUse = true;
    }
    KeypadDriver* g1 = c_.drivers->corehubG1();
    KeypadDriver* g2 = c_.drivers->corehubG2();
    if (g1InUse && g1)
        g1->EndVote(false, false);
    else if (g2)
        g2->EndVote(false, false);
}

void PresentationWatcher::SlideShowNextSlide() {
    trap(c_.errors, kForm, "SlideShowNextSlide", [&] {
        c_.trace("SLIDE SHOW NEXT SLIDE", "SlideShowNextSlide", kForm);
        endRunningVote();
        showAudioPanelOnCurrentSlide();
    });
}

void PresentationWatcher::SlideShowEnd() {
    trap(c_.errors, kForm, "SlideShowEnd", [&] {
        c_.glo.slideShowActive = false;
        c_.trace("SLIDE SHOW END", "SlideShowEnd", kForm);
        endRunningVote();
        ShowHideTaskBar();
        if (c_.settings.MinimizeWindowsOnSlideShowStart()) {
            c_.trace("Restore All Windows (from Minimized)", "SlideShowEnd", kForm);
            c_.ports.desktop.restoreAllWindows();
        }
        TogglePPTSlideShowTopMost(0, false);
        // Show-end clean-up: the cursor is free again and the show window is gone.
        c_.ports.desktop.clipCursor(false);
        showWindow_ = 0;
        if (c_.glo.ppApp) c_.glo.ppApp->activateActiveWindow();
    });
}

void PresentationWatcher::PowerPointClosed() {
    if (MainForm* m = c_.mainForm()) m->PowerPointClosed();
}

void PresentationWatcher::TogglePPTSlideShowTopMost(int mode, bool force) {
    trap(c_.errors, kModule, "TogglePPTSlideShowTopMost", [&] {
        const bool target = mode == -2 ? !topMost_ : mode != 0;
        if (!force) {
            if (target && c_.settings.DisableForceSlideShowTopMost()) return;
            if (!target && c_.settings.DisableForceSlideShowNoTopMost()) return;
        }
        if (c_.glo.ppApp) presentation_ = c_.glo.ppApp->activePresentation();
        // The remembered state is the one last applied: without a show window nothing is.
        if (!showWindow_) return;
        topMost_ = target;
        c_.trace(std::string("Set Slide Show Window ") + (target ? "HWND_TOPMOST" : "HWND_NOTOPMOST"),
                 "TogglePPTSlideShowTopMost", kModule);
        c_.ports.desktop.setTopMost(showWindow_, target);
    });
}

void PresentationWatcher::ShowHideTaskBar(bool eventActive, bool forceShow) {
    trap(c_.errors, kTaskBar, "ShowHideTaskBar", [&] {
        c_.trace("Begin, bEventActive=" + boolText(eventActive) + ", bForceShow=" + boolText(forceShow),
                 "ShowHideTaskBar", kTaskBar);
        // The task bar would overlap a full-screen show: one the controller follows, or (with
        // eventActive) one that runs already, as at start-up.
        bool overlap = false;
        if ((eventActive || c_.glo.slideShowActive) && c_.glo.ppApp && c_.glo.ppApp->slideShowWindowCount() > 0)
            overlap = c_.glo.ppApp->slideShowWindow(1)->isFullScreen();
        c_.trace("Check4Overlap = " + boolText(overlap), "ShowHideTaskBar", kTaskBar);
        Desktop& d = c_.ports.desktop;
        if (forceShow || !overlap) {
            if (!d.taskBarVisible()) {
                d.showTaskBar(true);
                c_.trace("SHOW Shell_traywnd:" + boolText(d.taskBarVisible()), "ShowHideTaskBar", kTaskBar);
                c_.trace("SHOW Button:" + boolText(d.taskBarVisible()), "ShowHideTaskBar", kTaskBar);
            }
        } else if (d.taskBarVisible()) {
            d.showTaskBar(false);
            c_.trace("HIDE Shell_traywnd:" + boolText(!d.taskBarVisible()), "ShowHideTaskBar", kTaskBar);
            c_.trace("HIDE Button:" + boolText(!d.taskBarVisible()), "ShowHideTaskBar", kTaskBar);
        }
    });
}

void PresentationWatcher::keepWindowOrder() {
    if (showWindow_ && c_.glo.slideShowActive) c_.ports.desktop.setTopMost(showWindow_, topMost_);
    for (Form* f : c_.forms.all())
        if (f->topMost && f->Visible()) f->changed();  // views bring their window to the front
}

void PresentationWatcher::tmrCheck4PPT_Timer() {
    trap(c_.errors, kForm, "tmrCheck4PPT_Timer", [&] {
        MainForm* m = c_.mainForm();
        if (!m) return;
        if (c_.glo.FullShutDownInitiated) {
            m->tmrCheck4PPT.setEnabled(false);
            return;
        }
        if (c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
        if (!InitPPTObject(false)) return;
        if (!IsPowerPointRunning() || !c_.glo.ppApp || c_.glo.ppApp->presentationCount() == 0) return;
        ShowHideTaskBar();
        if (!m->tmrCheckSlideShow.enabled()) {
            const int windows = c_.glo.ppApp->slideShowWindowCount();
            if (c_.glo.slideShowActive && windows == 0) {
                c_.glo.slideShowActive = false;
                if (!c_.glo.hookActive && c_.forms.isLoaded("frmHotKey")) c_.hotKeys->returnHotKeysToController();
            } else if (!c_.glo.slideShowActive && windows > 0) {
                c_.glo.slideShowActive = true;
            }
        }
        for (const char* p : kSiblings)
            if (processRunning(c_.ports.desktop, p)) return;
        for (const char* f : kOwnForms)
            if (c_.forms.isLoaded(f)) return;
        keepWindowOrder();
    });
}

void PresentationWatcher::tmrCheckSlideShow_Timer() {
    trap(c_.errors, kForm, "tmrCheckSlideShow_Timer", [&] {
        MainForm* m = c_.mainForm();
        if (!m) return;
        if (c_.glo.FullShutDownInitiated) {
            m->tmrCheckSlideShow.setEnabled(false);
            return;
        }
        if (c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
        if (!InitPPTObject(false)) return;
        if (!IsPowerPointRunning() || !c_.glo.ppApp || c_.glo.ppApp->presentationCount() == 0) return;
        if (c_.glo.ppApp->slideShowWindowCount() > 0) {
            ShowHideTaskBar();
            if (!c_.glo.hookActive && c_.forms.isLoaded("frmKeyHook")) {
                c_.ports.scheduler.waitUntil([] { return false; }, 0.25);
                c_.hotKeys->attachHotKeysToShow();
            }
        } else {
            ShowHideTaskBar();
            if (!c_.glo.hookActive && !c_.forms.isLoaded("frmHotKey") &&
                !processRunning(c_.ports.desktop, "PILLARS.EXE") && !processRunning(c_.ports.desktop, "GRIDDER.EXE")) {
                c_.LogEvent("Hook Set - Office 97", LOG_XX);
                c_.hotKeys->registerHotKeys();
            }
        }
    });
}

}  // namespace tlx
