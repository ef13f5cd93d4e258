#pragma once
// What the display program's window shows, and what its button does, with no toolkit in it:
// the window binds to this and forwards the user's actions. It reads the run's own model, so
// the window and the terminal show the same tally, and it ends the vote through the run, as a
// line typed on the terminal does.
#include <functional>
#include <string>
#include <vector>

#include "presentation/display/DisplayRun.h"

namespace tlx {

// One bar of the live chart.
struct ChartBar {
    std::string caption;  // "1 Red (66.7%)": the answer, its label, its share of the voters
    long long count = 0;
};

// The top of a count axis: 1, 2 or 5 times a power of ten, at least 5, with room above the
// largest count for the count written at the end of its bar.
long long scaleTop(long long largest);
// The step between the marks of that axis (a whole number: 5 or 4 steps).
long long scaleStep(long long top);

class DisplayScreen {
public:
    // Takes over the run's callbacks, calling those set before (the terminal's) as well; the
    // run's `finished` is left to the screen, which quits when the user is done with the window.
    explicit DisplayScreen(DisplayRun& run);
    DisplayScreen(const DisplayScreen&) = delete;
    DisplayScreen& operator=(const DisplayScreen&) = delete;

    // Something shown has changed.
    std::function<void()> changed;
    // The program ends with this code (the run's): the user closed the window once the run was
    // over, or closed it earlier and the run is now over.
    std::function<void(int)> quit;

    std::string heading() const;      // "Vote open", "Final result", ...
    std::string title() const;        // the question from the slide (else the vote's name)
    std::string description() const;  // "slide 2, TLXVOTE, SINGLEDIGIT, 4 options from 1"
    std::string voters() const;       // "3 voters of 80, 4 votes, 1 changed - open 6.2 s"
    std::string status() const;       // the latest note, or why the run could not go on
    bool problem() const { return problem_; }

    std::vector<ChartBar> bars() const;
    long long barsTop() const;
    // The result is in: the final table and its summary are to be shown.
    bool final() const;
    std::vector<ResultRow> tableRows() const;
    std::vector<std::string> summary() const;

    std::string buttonCaption() const;  // "Close vote", "Closing the vote...", "Close"
    bool buttonEnabled() const;

    // The button: ends the vote (before it opened: stops the run); once over, closes.
    void pressButton();
    // The user closed the window: the vote ends as with the button, and the program quits as
    // soon as the run is over.
    void windowClosed();

    const DisplayRun& run() const { return run_; }

private:
    void show();

    DisplayRun& run_;
    std::string status_ = "waiting for the controller";
    bool problem_ = false;
    bool resultIn_ = false;
    bool closing_ = false;  // the window has been closed
    bool quitSent_ = false;
};

}  // namespace tlx
