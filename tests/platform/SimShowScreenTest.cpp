// The presentation program's window as a model: what it shows of the deck and the show, the
// keys typed on it on their way through the hook, and the live chart of the vote.
#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "platform/sim/SimShowScreen.h"
#include "presentation/Tallix.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {

constexpr int kCtrl = 162, kPageDown = 34, kEscape = 27;

pptx::DeckPlan showDeck() {
    pptx::DeckPlan plan;
    plan.slides = {{"Welcome", "", {}, {}, {}},
                   {"Colours", "Which colour do you like best?", {"1. Red", "2. Green", "3. Blue", "4. Yellow"}, {},
                    {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}}},
                   {"Thank you", "", {}, {}, {}}};
    return plan;
}

struct ScreenWorld : TestWorld {
    explicit ScreenWorld(bool withBase = false) {
        if (withBase) {
            useSimBases();
            addSimBase("100100100100", 40);
            writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40}});
        }
        start();
        wireAddIn();
        openDeck(showDeck(), "colours.pptx");
    }
    void type(int vk) {
        screen.keyDown(vk);
        screen.keyUp(vk);
    }
    long long count(const std::string& answer) {
        for (const auto& r : screen.chartRows())
            if (r.answer == answer) return r.count;
        return -1;
    }
    std::string counts(std::initializer_list<const char*> answers) {
        std::string s;
        for (const char* a : answers) s += (s.empty() ? "" : "|") + std::to_string(count(a));
        return s;
    }
    // Open, the show running, full screen, the slide shown.
    std::string state() {
        return fields(screen.open(), screen.showRunning(), screen.fullScreen(), screen.slide().number);
    }
    SimShowScreen screen{presentation};
};

}  // namespace

TEST(ShowScreen, ShowsTheProgramsWindowThenTheShowSlideBySlide) {
    ScreenWorld w;
    int changes = 0;
    w.screen.changed.connect([&] { ++changes; });
    // No show yet: the program's own window on its first slide. (The view test reads the
    // captions and the slide's texts off the window.)
    EXPECT_EQ(fields(w.state(), w.screen.position()), "1|0|0|1|Slide 1 of 3");
    ASSERT_EQ(w.presentation.Begin(), "");
    EXPECT_TRUE(w.screen.fullScreen());
    w.presentation.Next();
    EXPECT_GE(changes, 2);
    EXPECT_EQ(w.screen.slide().answers.size(), 4u);

    // A shape hidden on the slide is not drawn.
    w.presentation.active()->slide(2)->shapeByName("tlx_Answers")->setVisible(false);
    w.presentation.Next();
    w.presentation.Previous();
    EXPECT_TRUE(w.screen.slide().answers.empty());

    // The show ends where it was; the program's window shows that slide.
    w.presentation.End();
    EXPECT_EQ(w.state(), "1|0|0|2");

    // The program quits: nothing left to show.
    w.presentation.quit();
    EXPECT_EQ(fields(w.state(), w.screen.caption()), "0|0|0|0|");
}

// The window's keys as the view hands them over: the view test types them through Qt; here,
// what the focus does to the desktop and the keys of the program's own.
TEST(ShowScreen, TheFocusMakesItTheForegroundInTheRoleItPlays) {
    ScreenWorld w;
    ASSERT_EQ(w.presentation.Begin(), "");
    w.desktop.setForegroundWindowClass("Progman");  // the focus went elsewhere meanwhile
    w.screen.activated();
    EXPECT_EQ(w.desktop.foregroundWindowClass(), "screenClass");
    w.type(kPageDown);
    w.type('B');
    EXPECT_TRUE(w.screen.blanked());
    w.type('B');
    EXPECT_FALSE(w.screen.blanked());
    // F5 during the show starts no second one.
    w.type(kVkF5);
    EXPECT_EQ(w.screen.slide().number, 2);

    // Escape ends the show; the window is the program's own again, where F5 begins it anew.
    w.type(kEscape);
    EXPECT_FALSE(w.glo().slideShowActive);
    w.desktop.setForegroundWindowClass("Progman");
    w.type(kVkF5);  // not the foreground: nothing
    EXPECT_FALSE(w.screen.showRunning());
    w.screen.activated();
    EXPECT_EQ(w.desktop.foregroundWindowClass(), "PP14FrameClass");
    w.type(kVkF5);
    EXPECT_EQ(fields(w.glo().slideShowActive, w.screen.slide().number), "1|1");
}

TEST(ShowScreen, KeysHeldWhenTheFocusLeavesAreReleased) {
    ScreenWorld w;
    ASSERT_EQ(w.presentation.Begin(), "");
    w.screen.activated();
    w.main().tmr_executeCommand.onTick = nullptr;
    // Ctrl goes down here, the focus moves away, Ctrl comes up in another window.
    w.screen.keyDown(kCtrl);
    w.screen.deactivated();
    w.screen.activated();
    w.type('5');
    w.type(kPageDown);
    EXPECT_EQ(w.main().txt_command, "") << "the hook still believed Ctrl held";
    EXPECT_EQ(w.presentation.CurrentSlide().value, 2);
    // Nothing held: losing the focus sends nothing.
    const auto lines = w.logLines().size();
    w.screen.deactivated();
    EXPECT_EQ(w.logLines().size(), lines);
}

TEST(ShowScreen, TheMenuRunsTheShowAndEndsIt) {
    ScreenWorld w;
    w.screen.next();  // no show: nothing to move
    EXPECT_EQ(w.screen.slide().number, 1);
    w.screen.beginShow();
    ASSERT_TRUE(w.screen.showRunning());
    w.screen.beginShow();  // running already: stays where it is
    w.screen.next();
    w.screen.next();
    w.screen.previous();
    EXPECT_EQ(w.screen.slide().number, 2);
    w.screen.endShow();
    EXPECT_FALSE(w.glo().slideShowActive);
    w.screen.toggleFullScreen();  // no show: nothing to switch
    EXPECT_FALSE(w.screen.fullScreen());
    // Closing the program closes the controller after it, as the real program's closing does.
    w.screen.closeProgram();
    EXPECT_EQ(fields(w.screen.open(), w.glo().ShuttingDown), "0|1");
}

// The chart belongs to the slide the vote opened on: the show moving on hides it, coming
// back shows its tally again, and only the next vote starts a new one.
TEST(ShowScreen, ChartBelongsToTheSlideTheVoteOpenedOn) {
    ScreenWorld w;
    w.presentation.Begin();
    w.presentation.Next();
    EXPECT_FALSE(w.screen.chartShown());
    w.screen.voteStarted();
    EXPECT_EQ(fields(w.screen.chartShown(), w.screen.vote().options, w.screen.vote().question),
              "1|4|Which colour do you like best?");
    // One row per option, named from the answers box, before anyone voted.
    const auto rows = w.screen.chartRows();
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(fields(rows[0].label, rows[3].label), "Red|Yellow");

    w.screen.forwarded("[3;2],[5;1],[7;2],\r\n");
    w.screen.forwarded("[5;4],\r\nnumKeypads=80\r\n");  // keypad 5 changes its mind
    EXPECT_EQ(fields(w.counts({"1", "2", "4"}), w.screen.chartSummary()), "0|2|1|3 voters of 80, 4 votes, 1 changed");
    // A record that is not one is counted as skipped, not as a vote.
    w.screen.forwarded("[x;1],[9;-2],\r\n");
    EXPECT_EQ(fields(w.count("-2"), w.screen.vote().tally.skipped()), "1|1");

    w.presentation.Next();
    EXPECT_FALSE(w.screen.chartShown());
    w.presentation.Previous();
    EXPECT_EQ(fields(w.screen.chartShown(), w.count("2")), "1|2");

    // A vote opened on the first slide (no tag, no answers) starts empty with no options.
    w.presentation.GoTo(1);
    w.screen.voteStarted();
    EXPECT_EQ(fields(w.screen.voteSlide(), w.screen.chartRows().empty()), "1|1");
    w.screen.forwarded("[4;7],\r\n");
    EXPECT_EQ(fields(w.screen.chartRows().size(), w.count("7")), "1|1");
}

TEST(ShowScreen, ChartFollowsARealVoteThroughTheController) {
    ScreenWorld w(true);
    // Subscribed as the program does: the texts every display program hears.
    tallix feed(w.c());
    feed.init("");
    feed.FromTLXCtrl.connect([&](const std::string& t) { w.screen.forwarded(t); });
    feed.FromCtrlFormBaseStationStartVoteCount.connect([&](int) { w.screen.voteStarted(); });
    w.presentation.Begin();
    w.presentation.Next();
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "STARTVOTE"}) ASSERT_TRUE(feed.SendCommand(line));
    w.scheduler.advance(200);
    ASSERT_EQ(fields(w.baseLibrary.station(0).voteOpen, w.screen.voteSlide()), "1|2");
    for (auto [keypad, key] : {std::pair{1, "2"}, {2, "3"}, {3, "2"}, {1, "3"}})
        ASSERT_TRUE(w.baseLibrary.press("100100100100", keypad, key));
    w.scheduler.advance(500);
    EXPECT_EQ(fields(w.counts({"2", "3"}), w.screen.chartSummary()), "1|2|3 voters, 4 votes, 1 changed");
    // The next vote starts from nothing.
    ASSERT_TRUE(feed.SendCommand("ENDVOTE"));
    ASSERT_TRUE(feed.SendCommand("STARTVOTE"));
    w.scheduler.advance(200);
    EXPECT_EQ(fields(w.count("3"), w.screen.chartSummary()), "0|0 voters, 0 votes");
}
