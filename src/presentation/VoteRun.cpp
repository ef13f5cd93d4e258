#include "presentation/VoteRun.h"

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "ports/Desktop.h"
#include "ports/PresentationApp.h"
#include "presentation/PresentationWatcher.h"

namespace tlx {

namespace {
constexpr const char* kForm = "tallix_controller";
constexpr const char* kModule = "Controller";

bool tagTrue(const std::string& v) { return iequals(trim(v), "True") || ParseNumber(v) != 0; }
}  // namespace

VoteRun::VoteRun(Controller& controller) : c_(controller) {}

void VoteRun::logCheck(const std::string& text, bool toScreen) {
    if (toScreen) c_.LogEvent(text, LOG_XX);
    c_.trace(text, "tmrCheck4Vote", kForm);
}

void VoteRun::tmrCheck4Vote_Timer() {
    MainForm* m = c_.mainForm();
    if (!m) return;
    trap(c_.errors, kForm, "tmrCheck4Vote_Timer", [&] {
        // A refusal before the check proper leaves the check armed: it tries again on the next
        // tick until the controller and the presentation program are there. From then on one
        // V press gives one check.
        if (c_.glo.ShuttingDown) {
            logCheck("V Down: tmrCheck4Vote_Timer: glo.ShuttingDown=TRUE");
            return;
        }
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED) {
            logCheck("V Down: tmrCheck4Vote_Timer: glo.InitialisedState <> INIT_STATE_INITIALISED");
            return;
        }
        if (!c_.watcher->InitPPTObject(false)) {
            logCheck("V Down: tmrCheck4Vote_Timer: InitPPTObject=FALSE");
            return;
        }
        if (!c_.watcher->IsPowerPointRunning()) {
            logCheck("V Down: tmrCheck4Vote_Timer: IsPowerPointRunning=FALSE");
            return;
        }
        m->tmrCheck4Vote.setEnabled(false);
        slideShowHasFocus_ = false;
        ppt::Application* app = c_.glo.ppApp;
        if (!app || app->slideShowWindowCount() <= 0) {
            logCheck("V Down: tmrCheck4Vote_Timer: Slide Show NOT found");
        } else {
            const std::string cls = c_.ports.desktop.foregroundWindowClass();
            if (toUpper(cls) == "SCREENCLASS") {
                slideShowHasFocus_ = true;
                m->tmrVKeyPressed.setEnabled(true);
                logCheck("V Down: tmrCheck4Vote_Timer: Slide Show has focus (" + cls + ")");
            } else {
                logCheck("V Down: tmrCheck4Vote_Timer: Slide Show NOT focus (" + cls + ")");
            }
        }
        if (!slideShowHasFocus_) return;
        logCheck("V Down: tmrCheck4Vote_Timer: Active Slide Show Found", false);
        ppt::Presentation* p = app->activePresentation();
        ppt::SlideShowWindow* w = p ? p->slideShowWindow() : nullptr;
        ppt::Slide* slide = w ? w->view().slide() : nullptr;
        if (!slide) return;
        bool vote = false;
        for (const auto& tag : split(kVoteTags, ","))
            if (!slide->tags().item(tag).empty()) vote = true;
        const bool audio = !slide->tags().item("MURMELO").empty();
        if (vote) {
            logCheck("V Down: tmrCheck4Vote_Timer: Vote Found", false);
            c_.LogEvent("tmrCheck4Vote_Timer: Vote Found", LOG_XX);
            m->tmrRunVote.setEnabled(true);
        } else if (audio) {
            logCheck("V Down: tmrCheck4Vote_Timer: Murmelo Found", false);
            c_.LogEvent("tmrCheck4Vote_Timer: Murmelo Found", LOG_XX);
            m->AddDataToCommandQueue("SHOWAUDIO");
        } else {
            logCheck("V Down: tmrCheck4Vote_Timer: Nothing Found on current slide", false);
        }
    });
}

void VoteRun::tmrRunVote_Timer() {
    MainForm* m = c_.mainForm();
    if (!m || c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
    m->tmrRunVote.setEnabled(false);
    trap(c_.errors, kForm, "tmrRunVote_Timer", [&] {
        ppt::Application* app = c_.glo.ppApp;
        if (!app) return;
        ppt::Presentation* p = app->activePresentation();
        if (!p || !p->slideShowWindow()) return;
        ppt::Slide* slide = p->slideShowWindow()->view().slide();
        if (!slide) return;
        p->tags().add("tlxCurrentSlide", numText(slide->slideNumber()));
        app->run("DoRapidpoll", {true});
    });
}

void VoteRun::tmrVKeyPressed_Timer() {
    MainForm* m = c_.mainForm();
    if (!m) return;
    m->tmrVKeyPressed.setEnabled(false);
    if (c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
    m->VKeyPressed();
}

void VoteRun::ReadActiveKeypads() {
    trap(c_.errors, kModule, "ReadActiveKeypads", [&] {
        if (!c_.glo.ppApp) c_.glo.ppApp = c_.getPowerPointObject();
        if (!c_.glo.ppApp) return;
        ppt::Presentation* p = c_.glo.ppApp->activePresentation();
        if (!p) return;
        const std::string tag = p->tags().item("ActiveKeypads");
        c_.glo.ActiveKeypads = tag.empty() ? std::string() : "," + tag + ",";
    });
}

void VoteRun::SetActiveKeypads(const std::string& list) {
    trap(c_.errors, kModule, "SetActiveKeypads", [&] {
        // The intake's list and the tag that the next vote start reads back say the same.
        c_.glo.ActiveKeypads = activeKeypadsText(list);
        if (!c_.glo.ppApp) c_.glo.ppApp = c_.getPowerPointObject();
        if (!c_.glo.ppApp) return;
        if (ppt::Presentation* p = c_.glo.ppApp->activePresentation())
            p->tags().add("ActiveKeypads", activeKeypadsTag(list));
    });
}

void VoteRun::moveSlide(const char* macro) {
    trap(c_.errors, kModule, macro, [&] {
        if (!c_.glo.ppApp) return;
        ppt::Presentation* p = c_.glo.ppApp->activePresentation();
        if (!p) return;
        p->tags().remove("tlxCurrentSlide");
        // While a quick vote is open the show stays where it is.
        if (tagTrue(p->tags().item("rapidQactive"))) return;
        c_.glo.ppApp->run(macro, {0});
    });
}

void VoteRun::GoToNextSlide() { moveSlide("GoToNextSlide"); }
void VoteRun::GoToPreviousSlide() { moveSlide("GoToPreviousSlide"); }

int VoteRun::VoteStart() {
    int taking = 0;
    trap(c_.errors, kModule, "StartVote", [&] {
        c_.trace("*** VOTE STARTED ***", "StartVote", kModule);
        c_.logs.voteTrace("*** VOTE STARTED ***");
        startedPorts_.clear();
        ReadActiveKeypads();
        c_.glo.voteRunning = true;
        bool g1 = false, g2 = false;
        for (const auto& b : c_.glo.bases) {
            const std::string type = toUpper(trim(b.baseType));
            if (type == "KELVARIN BASE V3") {
                const std::string mark = ":" + b.port + ":";
                if (contains(startedPorts_, mark)) continue;
                startedPorts_ += mark;
                if (Black3Driver* v3 = c_.drivers->black3()) {
                    v3->StartVote(b.port);
                    // The oldest driver reads the flag too: a comms error now is one during a vote.
                    c_.glo.Voting = true;
                    ++taking;
                }
            } else if (type == "KELVARIN COREHUB" || type == "KELVARIN COREHUB G1") {
                g1 = true;
                ++taking;
            } else if (type == "KELVARIN COREHUB G2") {
                g2 = true;
                ++taking;
            }
        }
        if (g1)
            if (KeypadDriver* d = c_.drivers->corehubG1()) {
                d->StartVote();
                c_.glo.Voting = true;
            }
        if (g2)
            if (KeypadDriver* d = c_.drivers->corehubG2()) {
                d->StartVote();
                c_.glo.Voting = true;
            }
        // Editing the presentation during a vote is kept out only when the setting asks for it.
        if (!c_.settings.DisableDisablingPptWindows())
            c_.ports.desktop.enableProcessWindows("POWERPNT.EXE", false);
    });
    return taking;
}

void VoteRun::VoteEnd() {
    trap(c_.errors, kModule, "EndVote", [&] {
        c_.trace("*** VOTE ENDED ***", "EndVote", kModule);
        c_.logs.voteTrace("*** VOTE ENDED ***");
        c_.glo.voteRunning = false;
        std::string ended;
        for (const auto& b : c_.glo.bases) {
            if (toUpper(trim(b.baseType)) != "KELVARIN BASE V3") continue;
            const std::string mark = ":" + b.port + ":";
            if (contains(ended, mark)) continue;
            ended += mark;
            if (Black3Driver* v3 = c_.drivers->black3()) v3->EndVote(b.port);
        }
        c_.glo.Voting = false;
        if (!c_.settings.DisableDisablingPptWindows())
            c_.ports.desktop.enableProcessWindows("POWERPNT.EXE", true);
        // The tags the vote wrote are kept in the file when the setting asks for it.
        if (!c_.settings.DisablePptSaveAfterVoteClose() && c_.glo.ppApp)
            if (ppt::Presentation* p = c_.glo.ppApp->activePresentation()) p->save();
    });
}

}  // namespace tlx
