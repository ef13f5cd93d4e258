#include "presentation/display/DisplayScreen.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/Text.h"

namespace tlx {

namespace {

// Bars beyond the options: abstentions and at most this many other answers, then one "more" bar.
constexpr std::size_t kOtherBars = 8;

}  // namespace

long long scaleTop(long long largest) {
    // A fifth of headroom keeps the count at the end of the longest bar inside the chart.
    const long long need = largest + std::max<long long>(1, largest / 5);
    for (long long power = 1;; power *= 10)
        for (long long m : {1, 2, 5})
            if (m * power >= std::max<long long>(need, 5)) return m * power;
}

long long scaleStep(long long top) {
    long long lead = top;
    while (lead >= 10) lead /= 10;
    return lead == 2 ? top / 4 : top / 5;
}

DisplayScreen::DisplayScreen(DisplayRun& run) : run_(run) {
    auto note = std::move(run_.note);
    auto live = std::move(run_.live);
    auto result = std::move(run_.result);
    auto problem = std::move(run_.problem);
    run_.note = [this, note](const std::string& text) {
        if (note) note(text);
        status_ = printable(text);
        show();
    };
    run_.live = [this, live](const DisplayModel& m) {
        if (live) live(m);
        show();
    };
    run_.result = [this, result](const DisplayModel& m) {
        if (result) result(m);
        resultIn_ = true;
        status_ = "the vote is closed";
        show();
    };
    run_.problem = [this, problem](const std::string& text) {
        if (problem) problem(text);
        status_ = printable(text);
        problem_ = true;
        show();
    };
    run_.finished = [this](int code) {
        show();
        if (closing_ && !quitSent_ && quit) {
            quitSent_ = true;
            quit(code);
        }
    };
}

void DisplayScreen::show() {
    if (changed) changed();
}

std::string DisplayScreen::heading() const {
    switch (run_.phase()) {
        case DisplayRun::Phase::Idle:
        case DisplayRun::Phase::Connecting:
        case DisplayRun::Phase::Configuring:
            return "Waiting for the vote to open";
        case DisplayRun::Phase::Running:
            return "Vote open";
        case DisplayRun::Phase::Ending:
            return "Closing the vote";
        case DisplayRun::Phase::Done:
            break;
    }
    return resultIn_ ? "Final result" : "No vote";
}

std::string DisplayScreen::title() const {
    const DisplayModel& m = run_.model();
    // Before the slide is read there is nothing to name.
    if (m.slide <= 0 && m.question.empty() && m.setup.voteName.empty()) return "tlx-display";
    return voteTitle(m);
}

std::string DisplayScreen::description() const {
    const DisplayModel& m = run_.model();
    return m.options > 0 ? voteDescription(m) : std::string();
}

std::string DisplayScreen::voters() const {
    const DisplayModel& m = run_.model();
    if (run_.phase() != DisplayRun::Phase::Running && run_.phase() != DisplayRun::Phase::Ending && !resultIn_)
        return {};
    return voterSummary(m) + fmt::format(" - open {:.1f} s", m.seconds);
}

std::string DisplayScreen::status() const { return status_; }

std::vector<ChartBar> DisplayScreen::bars() const {
    std::vector<ChartBar> out;
    const DisplayModel& m = run_.model();
    if (m.options <= 0) return out;
    for (const ResultRow& r : resultRows(m, kOtherBars)) {
        std::string caption = r.answer;
        if (!r.label.empty()) caption += (caption.empty() ? "" : " ") + r.label;
        out.push_back({caption + " (" + shareText(r.share) + ")", r.count});
    }
    return out;
}

long long DisplayScreen::barsTop() const {
    long long largest = 0;
    for (const ChartBar& b : bars()) largest = std::max(largest, b.count);
    return scaleTop(largest);
}

bool DisplayScreen::final() const { return resultIn_; }

std::vector<ResultRow> DisplayScreen::tableRows() const {
    return resultIn_ ? resultRows(run_.model()) : std::vector<ResultRow>{};
}

std::vector<std::string> DisplayScreen::summary() const {
    return resultIn_ ? resultSummary(run_.model()) : std::vector<std::string>{};
}

std::string DisplayScreen::buttonCaption() const {
    switch (run_.phase()) {
        case DisplayRun::Phase::Ending:
            return "Closing the vote...";
        case DisplayRun::Phase::Done:
            return "Close";
        default:
            return "Close vote";
    }
}

bool DisplayScreen::buttonEnabled() const { return run_.phase() != DisplayRun::Phase::Ending && !closing_; }

void DisplayScreen::pressButton() {
    if (run_.phase() == DisplayRun::Phase::Done) return windowClosed();
    if (run_.phase() == DisplayRun::Phase::Ending) return;
    run_.requestEnd("closed from the window");
}

void DisplayScreen::windowClosed() {
    closing_ = true;
    if (run_.phase() == DisplayRun::Phase::Ending) return;  // the last batches are still due
    if (run_.phase() != DisplayRun::Phase::Done) {
        // A vote left open would keep the keypads voting with nobody to count them.
        run_.requestEnd("the window was closed");
        return;
    }
    if (!quitSent_ && quit) {
        quitSent_ = true;
        quit(run_.exitCode());
    }
}

}  // namespace tlx
