#pragma once
// What the simulated presentation program's window shows, and what reaches it from the
// presenter. One window plays both of the program's roles: its own window (the desktop sees
// its frame class) while no show runs, and the slide-show window (class "screenClass") while
// one does. It shows the current slide's title, question and answers, and a live chart of the
// vote opened on that slide, tallied from the texts the controller forwards to display
// programs. Keys typed on it go through the keyboard as typed keys do: the hook first, then
// the program.
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "core/Signal.h"
#include "presentation/display/ResultView.h"

namespace tlx {

class SimPresentationApp;

struct ShownSlide {
    int number = 0;  // 0: nothing to show
    int count = 0;   // slides in the presentation
    std::string title;
    std::string question;
    std::vector<std::string> answers;
};

class SimShowScreen {
public:
    explicit SimShowScreen(SimPresentationApp& app);
    ~SimShowScreen();
    SimShowScreen(const SimShowScreen&) = delete;
    SimShowScreen& operator=(const SimShowScreen&) = delete;

    // The window is on screen while the program runs with a presentation open.
    bool open() const { return open_; }
    bool showRunning() const { return showRunning_; }
    bool fullScreen() const { return fullScreen_; }
    bool blanked() const { return blanked_; }
    // "Slide Show - demo.pptx" while the show runs, else "demo.pptx - presentation".
    const std::string& caption() const { return caption_; }
    const ShownSlide& slide() const { return slide_; }
    // "Slide 2 of 5"
    std::string position() const;

    // The vote: whether one has been opened on the slide shown, its rows and its summary.
    bool chartShown() const { return voteSlide_ > 0 && voteSlide_ == slide_.number; }
    int voteSlide() const { return voteSlide_; }
    const DisplayModel& vote() const { return vote_; }
    std::vector<ResultRow> chartRows() const { return resultRows(vote_, 8); }
    std::string chartSummary() const { return voterSummary(vote_); }

    // What the controller tells its display programs: a vote has opened, and each text it
    // forwards (vote batches and replies).
    void voteStarted();
    void forwarded(const std::string& text);

    // The window: keys typed on it (virtual-key codes), its gaining and losing the focus, and
    // the commands of its menu.
    void keyDown(int vk);
    void keyUp(int vk);
    void activated();
    void deactivated();
    void beginShow();
    void endShow();
    void next();
    void previous();
    void toggleFullScreen();
    // The presentation program quits (the controller follows it, as it does the real one).
    void closeProgram();

    // Raised after any change of what the window shows.
    Signal<> changed;

private:
    void refresh();
    void readSlide(int number);
    SimPresentationApp& app_;
    std::uint64_t sub_ = 0;
    bool open_ = false;
    bool showRunning_ = false;
    bool fullScreen_ = false;
    bool blanked_ = false;
    std::string caption_;
    ShownSlide slide_;
    int voteSlide_ = 0;
    DisplayModel vote_;
    std::set<int> held_;  // keys down on this window, not yet released
};

}  // namespace tlx
