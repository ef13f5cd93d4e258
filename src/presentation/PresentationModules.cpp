#include "presentation/PresentationModules.h"

#include <memory>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "presentation/HotKeys.h"
#include "presentation/PresentationTargets.h"
#include "presentation/PresentationWatcher.h"
#include "presentation/VoteIntake.h"
#include "presentation/VoteRun.h"

namespace tlx {

namespace {

class PresentationModules final : public PresentationSide {
public:
    explicit PresentationModules(Controller& c)
        : c_(c),
          watcher_(std::make_unique<PresentationWatcher>(c)),
          voteRun_(std::make_unique<VoteRun>(c)),
          intake_(std::make_unique<VoteIntakeModule>(c)),
          hotKeys_(std::make_unique<KeyboardHook>(c)) {}

    ~PresentationModules() override {
        // The modules reach each other through the controller: no pointer outlives them.
        if (c_.voteIntake == intake_.get()) c_.voteIntake = nullptr;
        c_.watcher = nullptr;
        c_.voteRun = nullptr;
        c_.intake = nullptr;
        c_.hotKeys = nullptr;
    }

    void publish() {
        c_.watcher = watcher_.get();
        c_.voteRun = voteRun_.get();
        c_.intake = intake_.get();
        c_.hotKeys = hotKeys_.get();
        c_.voteIntake = intake_.get();
    }

    void attach() override { watcher_->InitPPTObject(false); }
    void forgetAttachment() override { watcher_->forgetAttachment(); }
    void showHideTaskBar(bool show) override { watcher_->ShowHideTaskBar(show); }
    void wireMainForm(MainForm& main) override {
        main.tmrCheck4PPT.onTick = [this] { watcher_->tmrCheck4PPT_Timer(); };
        main.tmrCheckSlideShow.onTick = [this] { watcher_->tmrCheckSlideShow_Timer(); };
        main.tmrCheck4Vote.onTick = [this] { voteRun_->tmrCheck4Vote_Timer(); };
        main.tmrRunVote.onTick = [this] { voteRun_->tmrRunVote_Timer(); };
        main.tmrVKeyPressed.onTick = [this] { voteRun_->tmrVKeyPressed_Timer(); };
        main.tmr_VotesRxBuffer.onTick = [this] { intake_->tmr_VotesRxBuffer_Timer(); };
        main.tmr_simulateVotes.onTick = [this] { intake_->tmr_simulateVotes_Timer(); };
        main.tmr_refreshLowLevelKeyboardHook.onTick = [this] { hotKeys_->tmr_refreshLowLevelKeyboardHook_Timer(); };
    }
    void setHook() override { hotKeys_->SetHook(); }
    void removeHook() override { hotKeys_->RemoveHook(); }
    void slideShowBegin(ppt::SlideShowWindow* window) override { watcher_->SlideShowBegin(window); }
    void slideShowNextSlide() override { watcher_->SlideShowNextSlide(); }
    void slideShowEnd() override { watcher_->SlideShowEnd(); }

private:
    Controller& c_;
    std::unique_ptr<PresentationWatcher> watcher_;
    std::unique_ptr<VoteRun> voteRun_;
    std::unique_ptr<VoteIntakeModule> intake_;
    std::unique_ptr<KeyboardHook> hotKeys_;
};

}  // namespace

void installPresentationSide(Controller& controller) {
    auto side = std::make_unique<PresentationModules>(controller);
    side->publish();
    controller.presentationSide = std::move(side);
    controller.targets = std::make_unique<PresentationTargets>(controller);
}

}  // namespace tlx
