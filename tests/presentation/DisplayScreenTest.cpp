// What the display program's window is to show at each moment of a run, and the scale of its
// chart, without any window.
#include <gtest/gtest.h>

#include <memory>

#include "platform/sim/VirtualScheduler.h"
#include "presentation/display/DisplayScreen.h"
#include "support/FakeDisplayLink.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::FakeLink;
using tlx::test::fields;

TEST(DisplayScale, LeavesRoomForTheLongestBarsCountAndStepsInWholeNumbers) {
    const std::pair<long long, long long> tops[] = {{0, 5},     {3, 5},      {4, 5},      {5, 10},    {8, 10},
                                                    {9, 10},    {16, 20},    {17, 20},    {41, 50},   {42, 50},
                                                    {400, 500}, {417, 500}, {418, 1000}, {4095, 5000}, {40950, 50000}};
    for (const auto& [largest, top] : tops) {
        EXPECT_EQ(scaleTop(largest), top) << largest;
        const long long step = scaleStep(top);
        EXPECT_GT(step, 0) << top;
        EXPECT_EQ(top % step, 0) << top;
        EXPECT_LE(top / step, 5) << top;
    }
}

namespace {

struct QuizRun {
    VirtualScheduler scheduler;
    FakeLink link;
    std::unique_ptr<DisplayRun> run;
    std::vector<std::string> terminal;
    int changes = 0;

    explicit QuizRun(const std::string& tag) {
        link.tags[{2, "TLXQUIZ"}] = tag;
        link.texts[{2, "tlx_Answers"}] = "1. Paris\r2. Lyon";
        run = std::make_unique<DisplayRun>(scheduler, link, DisplayOptions{});
        run->note = [this](const std::string& t) { terminal.push_back(t); };
        run->result = [this](const DisplayModel&) { terminal.push_back("result"); };
        run->problem = [this](const std::string& t) { terminal.push_back("problem: " + t); };
    }
};

}  // namespace

TEST(DisplayScreenModel, FollowsTheRunFromWaitingToTheFinalTableAndKeepsTheTerminalsRecord) {
    QuizRun r("<Options>2</Options><CorrectAnswer>1</CorrectAnswer>");
    DisplayScreen screen(*r.run);
    screen.changed = [&] { ++r.changes; };
    EXPECT_EQ(fields(screen.title(), screen.bars().empty()), "tlx-display|1");

    r.run->start();
    // The vote's name, with no question on the slide.
    EXPECT_EQ(fields(screen.title(), screen.status()), "Slide 2|vote open; it ends when told");
    EXPECT_EQ(r.terminal.back(), "vote open; it ends when told") << "the terminal hears every note still";
    r.run->onData("[1;1],[2;2],[3;1],[4;7],[5;-2],");
    const int before = r.changes;
    r.scheduler.advance(250);
    EXPECT_GT(r.changes, before);
    std::vector<std::string> captions;
    std::vector<long long> counts;
    for (const auto& b : screen.bars()) {
        captions.push_back(b.caption);
        counts.push_back(b.count);
    }
    EXPECT_EQ(captions, (std::vector<std::string>{"1 Paris (40.0%)", "2 Lyon (20.0%)", "-2 abstain (20.0%)",
                                                  "7 (20.0%)"}));
    EXPECT_EQ(counts, (std::vector<long long>{2, 1, 1, 1}));
    EXPECT_EQ(fields(screen.barsTop(), screen.tableRows().empty()), "5|1");

    screen.pressButton();
    EXPECT_EQ(fields(screen.heading(), screen.buttonEnabled()), "Closing the vote|0");
    screen.pressButton();  // disabled: a second press does not cut the wait for the last batches short
    EXPECT_EQ(r.run->phase(), DisplayRun::Phase::Ending);
    r.scheduler.advance(2000);
    EXPECT_EQ(fields(screen.final(), screen.tableRows().at(0).correct, screen.summary().at(2), r.terminal.back()),
              "1|1|correct answer 1: 2 of 5 voters|result");
}
