#include "presentation/PresentationTargets.h"

#include "audio/AudioWindow.h"
#include "core/Controller.h"
#include "core/DebugForms.h"
#include "ports/Desktop.h"
#include "presentation/HotKeys.h"
#include "presentation/PresentationWatcher.h"
#include "presentation/VoteIntake.h"
#include "presentation/VoteRun.h"
#include "setup/ChannelScan.h"
#include "setup/SystemPrep.h"
#include "textvote/TextVoteCollection.h"

namespace tlx {

namespace {
template <class F>
void show(Controller& c) {
    auto* f = c.forms.get<F>(F::kName);
    if (!f) f = &c.forms.load<F>(c);
    f->Refresh();
    f->Show();
}
}  // namespace

int PresentationTargets::voteStart() {
    // A vote's voters and counters are its own.
    c_.intake->resetForVote();
    return c_.voteRun->VoteStart();
}

void PresentationTargets::voteEnd() { c_.voteRun->VoteEnd(); }

void PresentationTargets::voteNameParts(const std::vector<std::string>& parts) {
    // "name@@detail": the name proper, and what the display program added to it.
    if (parts.empty()) return;
    c_.glo.voteName = parts.front();
    c_.voteRun->voteNameDetail = parts.size() > 1 ? parts[1] : std::string();
}

void PresentationTargets::goToNextSlide() { c_.voteRun->GoToNextSlide(); }
void PresentationTargets::goToPreviousSlide() { c_.voteRun->GoToPreviousSlide(); }

void PresentationTargets::enablePowerPoint() { c_.ports.desktop.enableProcessWindows("POWERPNT.EXE", true); }

void PresentationTargets::toggleTopMost() { c_.watcher->TogglePPTSlideShowTopMost(-2, false); }

void PresentationTargets::readActiveKeypads() { c_.voteRun->ReadActiveKeypads(); }
void PresentationTargets::setActiveKeypads(const std::string& list) { c_.voteRun->SetActiveKeypads(list); }

bool PresentationTargets::showAudio() {
    showAudioWindow(c_);
    return true;
}

void PresentationTargets::showTextVote() { showTextVoteWindow(c_); }

void PresentationTargets::ctrlKeyPressed(const std::string& key) { c_.hotKeys->CtrlKeyPressed(key); }
void PresentationTargets::altKeyPressed(const std::string& key) { c_.hotKeys->AltKeyPressed(key); }

void PresentationTargets::setHook() { c_.hotKeys->SetHook(); }
void PresentationTargets::removeHook() { c_.hotKeys->RemoveHook(); }

void PresentationTargets::showDebug() { show<DebugForm>(c_); }
void PresentationTargets::showWindowHandles() { show<DebugWindowHandlesForm>(c_); }
void PresentationTargets::showProcessList() { show<DebugProcessListForm>(c_); }
void PresentationTargets::showChannelScan() { tlx::showChannelScan(c_); }
void PresentationTargets::showSystemPrep() { tlx::showSystemPrep(c_); }

}  // namespace tlx
