// The display program's window over a scripted controller on virtual time: what it shows while
// the vote runs and once it is closed, and that its button and its closing end the vote.
#include <gtest/gtest.h>

#include <QBarCategoryAxis>
#include <QBarSet>
#include <QChartView>
#include <QHorizontalBarSeries>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QValueAxis>
#include <algorithm>
#include <memory>
#include <optional>

#include "platform/sim/VirtualScheduler.h"
#include "presentation/display/DisplayScreen.h"
#include "support/FakeDisplayLink.h"
#include "support/QtTestApp.h"
#include "ui/DisplayWindow.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const char* kInfoReply = "numKeypads=80\r\nmaxKeypads=80";

// One display program: the run, what the terminal printed, the window's model and the window.
struct DisplayProgram {
    VirtualScheduler scheduler;
    FakeLink link;
    std::unique_ptr<DisplayRun> run;
    std::unique_ptr<DisplayScreen> screen;
    std::unique_ptr<DisplayWindow> window;
    std::vector<std::string> printed;
    std::optional<int> quitWith;

    explicit DisplayProgram(const std::string& tag = "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>") {
        link.tags[{2, "TLXVOTE"}] = tag;
        link.texts[{2, "tlx_Question"}] = "Which colour do you like best?";
        link.texts[{2, "tlx_Answers"}] = "1. Red\r2. Green\r3. Blue\r4. Yellow";
        run = std::make_unique<DisplayRun>(scheduler, link, DisplayOptions{});
        run->note = [this](const std::string& t) { printed.push_back("note: " + t); };
        run->problem = [this](const std::string& t) { printed.push_back("problem: " + t); };
        run->result = [this](const DisplayModel& m) {
            for (const auto& l : resultTable(m, 80)) printed.push_back(l);
        };
    }
    DisplayWindow& withWindow() {
        qtApp();
        screen = std::make_unique<DisplayScreen>(*run);
        screen->quit = [this](int code) {
            EXPECT_FALSE(quitWith) << "quit twice";
            quitWith = code;
        };
        window = std::make_unique<DisplayWindow>(*screen);
        window->show();
        return *window;
    }
    // The same votes, whichever way the vote is then ended.
    void vote() {
        run->start();
        run->onStartVoteCount(1);
        run->onData(kInfoReply);
        run->onData("[1;1],[2;2],[3;2],[4;3],[5;2],[6;4],\r\n[7;1],[1;2],[8;2],");
        scheduler.advance(250);
    }
    void closeWithTheLastBatch() {
        run->onData("[9;3],");
        run->onData(kInfoReply);
        scheduler.advance(300);
    }
    QHorizontalBarSeries* series() const {
        auto* view = window->findChild<QChartView*>();
        return view ? qobject_cast<QHorizontalBarSeries*>(view->chart()->series().value(0)) : nullptr;
    }
    // The bars as the eye reads them, from the top (the chart counts from the bottom).
    QStringList categories() const {
        auto* axis = qobject_cast<QBarCategoryAxis*>(series()->attachedAxes().value(0));
        QStringList c = axis ? axis->categories() : QStringList{};
        std::reverse(c.begin(), c.end());
        return c;
    }
    std::vector<int> counts() const {
        std::vector<int> v;
        QBarSet* set = series()->barSets().value(0);
        for (int i = set ? set->count() - 1 : -1; i >= 0; --i) v.push_back(static_cast<int>(set->at(i)));
        return v;
    }
    // The chart lays out its labels on the loop's next turn, as it does on screen.
    std::filesystem::path screenshot(const std::string& name) {
        QCoreApplication::processEvents();
        return saveScreenshot(*window, name);
    }
    bool labelShows(const QString& text) const {
        for (auto* l : window->findChildren<QLabel*>())
            if (l->isVisible() && l->text().contains(text)) return true;
        return false;
    }
};

}  // namespace

TEST(DisplayWindow, ShowsTheQuestionLiveBarsAndVotersThenTheFinalTable) {
    DisplayProgram p;
    DisplayWindow& w = p.withWindow();
    p.vote();
    ASSERT_NE(p.series(), nullptr);
    EXPECT_EQ(p.categories(),
              (QStringList{"1 Red (12.5%)", "2 Green (62.5%)", "3 Blue (12.5%)", "4 Yellow (12.5%)"}));
    EXPECT_EQ(p.counts(), (std::vector<int>{1, 5, 1, 1}));
    auto* scale = qobject_cast<QValueAxis*>(p.series()->attachedAxes().value(1));
    ASSERT_NE(scale, nullptr);
    EXPECT_EQ(scale->max(), 10);
    EXPECT_EQ(w.windowTitle(), "Which colour do you like best? - tlx-display");
    EXPECT_TRUE(p.labelShows("Which colour do you like best?"));
    EXPECT_TRUE(p.labelShows("Vote open"));
    EXPECT_TRUE(p.labelShows("8 voters of 80, 9 votes, 1 changed - open 0.2 s"));
    EXPECT_FALSE(w.findChild<QTableWidget*>()->isVisible()) << "no table while the vote runs";
    EXPECT_GT(std::filesystem::file_size(p.screenshot("tlx-display-live")), 1000u);

    // A changed answer moves its keypad from one bar to the other.
    p.run->onData("[7;2],");
    p.scheduler.advance(250);
    EXPECT_EQ(p.counts(), (std::vector<int>{0, 6, 1, 1}));

    w.closeVoteButton()->click();
    EXPECT_FALSE(w.closeVoteButton()->isEnabled());
    EXPECT_EQ(w.closeVoteButton()->text(), "Closing the vote...");
    p.closeWithTheLastBatch();
    EXPECT_EQ(p.run->phase(), DisplayRun::Phase::Done);
    // As a line typed on the terminal ends it, but for the reason given.
    EXPECT_EQ(std::vector<std::string>(p.link.sent.end() - 2, p.link.sent.end()),
              (std::vector<std::string>{"ENDVOTE", "GETVOTEINFO"}));
    EXPECT_NE(std::find(p.printed.begin(), p.printed.end(), "note: ending the vote (closed from the window)"),
              p.printed.end());
    EXPECT_TRUE(p.labelShows("Final result"));
    auto* table = w.findChild<QTableWidget*>();
    ASSERT_TRUE(table->isVisible());
    ASSERT_EQ(table->rowCount(), 4);
    EXPECT_EQ(table->item(1, 1)->text(), "Green");
    EXPECT_EQ(table->item(1, 2)->text(), "6");
    EXPECT_EQ(table->item(2, 3)->text(), "22.2%");  // the late vote for Blue counts
    EXPECT_TRUE(p.labelShows("voters: 9 of 80 keypads (11.2%)"));
    EXPECT_TRUE(p.labelShows("votes received: 11 (2 changed answers)"));
    EXPECT_EQ(p.counts(), (std::vector<int>{0, 6, 2, 1}));
    EXPECT_GT(std::filesystem::file_size(p.screenshot("tlx-display-result")), 1000u);

    // The window stays until the user is done with it; then the program ends with the run's code.
    EXPECT_FALSE(p.quitWith);
    EXPECT_EQ(w.closeVoteButton()->text(), "Close");
    w.closeVoteButton()->click();
    EXPECT_EQ(p.quitWith, 0);
}

TEST(DisplayWindow, ClosingTheWindowEndsTheVoteAndQuitsOnceTheResultIsIn) {
    DisplayProgram p;
    DisplayWindow& w = p.withWindow();
    p.vote();
    w.close();
    EXPECT_EQ(p.link.sent.end()[-2], "ENDVOTE");
    EXPECT_FALSE(p.quitWith) << "the last batches are still due";
    w.close();  // closing again while it ends changes nothing
    EXPECT_EQ(p.link.sent.end()[-2], "ENDVOTE");
    p.closeWithTheLastBatch();
    EXPECT_EQ(p.quitWith, 0);
    EXPECT_EQ(p.printed.back(), "open for 0.2 s on 1 base station");

    // Closed before the vote opened: nothing is sent and the program ends at once.
    DisplayProgram early;
    early.link.refuse = 1000;  // the controller is still initialising
    DisplayWindow& e = early.withWindow();
    early.run->start();
    e.close();
    EXPECT_TRUE(early.link.sent.empty());
    EXPECT_EQ(early.quitWith, 0);
}

TEST(DisplayWindow, AVoteTagItCannotReadIsShownAndNoVoteIsSent) {
    DisplayProgram p("<VoteType>SINGLEDIGIT</VoteType><Options>many</Options>");
    DisplayWindow& w = p.withWindow();
    p.run->start();
    EXPECT_TRUE(p.link.sent.empty());
    const QString why = "the TLXVOTE tag of slide 2 cannot be read: <Options> \"many\" is not an option count from 1 "
                        "to 1000; no vote was sent";
    EXPECT_TRUE(p.labelShows(why));
    EXPECT_TRUE(p.labelShows("No vote"));
    EXPECT_EQ(p.printed.back(), "problem: " + why.toStdString());
    EXPECT_FALSE(w.findChild<QChartView*>()->isVisible());
    p.screenshot("tlx-display-problem");
    // It stays up so that the message can be read, and ends with "no vote" when closed.
    EXPECT_FALSE(p.quitWith);
    w.closeVoteButton()->click();
    EXPECT_EQ(p.quitWith, DisplayRun::kExitNoVote);
    w.close();  // the program is already on its way out: no second quit
}
