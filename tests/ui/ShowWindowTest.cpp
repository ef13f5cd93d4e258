// The presentation program's window on the offscreen platform: the slide as the audience sees
// it, the bars of a vote in progress, and the keys typed on it reaching the hook and the show.
#include <gtest/gtest.h>

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QLabel>
#include <QStackedLayout>
#include <QTest>

#include "core/MainForm.h"
#include "core/Text.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "platform/sim/SimShowScreen.h"
#include "support/QtTestApp.h"
#include "support/TestWorld.h"
#include "ui/ShowWindow.h"

using namespace tlx;
using namespace tlx::test;

namespace {

struct ShowWorld : TestWorld {
    ShowWorld() {
        start();
        wireAddIn();
        pptx::DeckPlan plan;
        pptx::SlidePlan welcome, vote;
        welcome.title = "Welcome to the annual meeting";
        vote.title = "Colours";
        vote.question = "Which colour do you like best?";
        vote.answers = {"1. Red", "2. Green", "3. Blue", "4. Yellow"};
        vote.tags = {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}};
        plan.slides = {welcome, vote, welcome};
        openDeck(plan, "meeting.pptx");
        window.resize(1280, 720);
        window.refresh();
    }
    QString text(const char* label) { return window.findChild<QLabel*>(label)->text(); }
    bool shown(const char* label) { return !window.findChild<QLabel*>(label)->isHidden(); }
    QChartView* chart() { return window.findChild<QChartView*>("chart"); }
    QBarSet* bars() {
        auto* series = qobject_cast<QBarSeries*>(chart()->chart()->series().value(0));
        return series ? series->barSets().value(0) : nullptr;
    }
    QStringList categories() {
        for (QAbstractAxis* a : chart()->chart()->axes(Qt::Horizontal))
            if (auto* c = qobject_cast<QBarCategoryAxis*>(a)) return c->categories();
        return {};
    }
    QApplication& app = qtApp();  // before the window
    SimShowScreen screen{presentation};
    ShowWindow window{screen};
};

}  // namespace

TEST(ShowWindow, ShowsTheSlideAndTheBarsOfAVoteInProgress) {
    ShowWorld w;
    // The program's own window before the show: the first slide, no chart.
    EXPECT_TRUE(w.window.isVisible());
    EXPECT_FALSE(w.window.isFullScreen());
    EXPECT_EQ(w.window.windowTitle().toStdString(), "meeting.pptx - presentation");
    EXPECT_EQ(w.text("title").toStdString(), "Welcome to the annual meeting");
    EXPECT_FALSE(w.shown("question"));
    EXPECT_TRUE(w.chart()->isHidden());
    saveScreenshot(w.window, "ShowWindow-before-the-show");

    ASSERT_EQ(w.presentation.Begin(), "");
    w.presentation.Next();
    w.window.refresh();
    EXPECT_TRUE(w.window.isFullScreen());
    EXPECT_EQ(w.window.windowTitle().toStdString(), "Slide Show - meeting.pptx");
    EXPECT_EQ(w.text("title").toStdString(), "Colours");
    EXPECT_EQ(w.text("question").toStdString(), "Which colour do you like best?");
    EXPECT_EQ(w.text("answers").toStdString(), "1. Red\n2. Green\n3. Blue\n4. Yellow");
    EXPECT_EQ(w.text("status").toStdString(), "Slide 2 of 3");

    // Mid-vote: a bar per option, the counts so far, the summary beside the slide number.
    w.screen.voteStarted();
    w.screen.forwarded("[1;2],[2;2],[3;1],[4;2],[5;3],[6;2],\r\nnumKeypads=40\r\n");
    w.window.resize(1280, 720);
    w.window.refresh();
    ASSERT_FALSE(w.chart()->isHidden());
    EXPECT_EQ(w.categories(), (QStringList{"1 Red", "2 Green", "3 Blue", "4 Yellow"}));
    ASSERT_NE(w.bars(), nullptr);
    ASSERT_EQ(w.bars()->count(), 4);
    EXPECT_EQ(w.bars()->at(0), 1);
    EXPECT_EQ(w.bars()->at(1), 4);
    EXPECT_EQ(w.bars()->at(2), 1);
    EXPECT_EQ(w.bars()->at(3), 0);
    EXPECT_EQ(w.text("status").toStdString(), "6 voters of 40, 6 votes   Slide 2 of 3");
    // Large text on a full-screen show: the title is a tenth of the height or so.
    EXPECT_GE(w.window.findChild<QLabel*>("title")->font().pixelSize(), 720 / 12);
    saveScreenshot(w.window, "ShowWindow-vote-in-progress");

    // More votes arrive, keypad 1 changes its answer: the bars follow.
    w.screen.forwarded("[7;4],[1;4],\r\n");
    w.window.refresh();
    EXPECT_EQ(w.bars()->at(1), 3);
    EXPECT_EQ(w.bars()->at(3), 2);

    // Blanked, the screen is black; the next slide has no chart.
    QTest::keyClick(&w.window, Qt::Key_B);
    w.window.refresh();
    EXPECT_EQ(qobject_cast<QStackedLayout*>(w.window.layout())->currentWidget()->objectName(), "blank");
    saveScreenshot(w.window, "ShowWindow-blanked");
    QTest::keyClick(&w.window, Qt::Key_B);
    QTest::keyClick(&w.window, Qt::Key_PageDown);
    w.window.refresh();
    EXPECT_EQ(w.text("status").toStdString(), "Slide 3 of 3");
    EXPECT_TRUE(w.chart()->isHidden());
}

TEST(ShowWindow, KeysTypedOnItReachTheHookAndTheShow) {
    ShowWorld w;
    // F5 on the program's window begins the show, which takes the window to full screen.
    QTest::keyClick(&w.window, Qt::Key_F5);
    w.window.refresh();
    ASSERT_TRUE(w.glo().slideShowActive);
    EXPECT_TRUE(w.window.isFullScreen());
    EXPECT_EQ(w.desktop.foregroundWindowClass(), "screenClass");

    QTest::keyClick(&w.window, Qt::Key_PageDown);
    EXPECT_EQ(w.presentation.CurrentSlide().value, 2);
    QTest::keyClick(&w.window, Qt::Key_PageUp);
    EXPECT_EQ(w.presentation.CurrentSlide().value, 1);
    QTest::keyClick(&w.window, Qt::Key_2);
    QTest::keyClick(&w.window, Qt::Key_Return);  // digits and Enter go to a slide
    EXPECT_EQ(w.presentation.CurrentSlide().value, 2);

    // V and the modifier keys reach the hook as their own key events.
    w.main().tmr_executeCommand.onTick = nullptr;  // keep the queue for inspection
    QTest::keyClick(&w.window, Qt::Key_V);
    EXPECT_TRUE(w.main().tmrCheck4Vote.enabled());
    QTest::keyPress(&w.window, Qt::Key_Control);
    QTest::keyClick(&w.window, Qt::Key_7, Qt::ControlModifier);
    QTest::keyRelease(&w.window, Qt::Key_Control, Qt::ControlModifier);
    QTest::keyPress(&w.window, Qt::Key_Alt);
    QTest::keyClick(&w.window, Qt::Key_A, Qt::AltModifier);
    QTest::keyRelease(&w.window, Qt::Key_Alt, Qt::AltModifier);
    QTest::keyClick(&w.window, Qt::Key_7);  // nothing held any more
    EXPECT_EQ(split(w.main().txt_command, "\r\n"), (std::vector<std::string>{"CTRL KEYDOWN=7", "ALT KEYDOWN=A"}));

    // F11 switches between full screen and a window; closing the window ends the show.
    QTest::keyClick(&w.window, Qt::Key_F11);
    w.window.refresh();
    EXPECT_FALSE(w.window.isFullScreen());
    EXPECT_TRUE(w.glo().slideShowActive);
    EXPECT_FALSE(w.window.close());
    w.window.refresh();
    EXPECT_FALSE(w.glo().slideShowActive);
    EXPECT_TRUE(w.window.isVisible());
    EXPECT_EQ(w.window.windowTitle().toStdString(), "meeting.pptx - presentation");

    // The program quits: its window goes.
    w.presentation.quit();
    w.window.refresh();
    EXPECT_FALSE(w.window.isVisible());
}

TEST(ShowWindow, VirtualKeysOfTheKeysThePresenterUses) {
    qtApp();  // key events need the application's keyboard device
    auto vk = [](int key, Qt::KeyboardModifiers mods = {}, quint32 native = 0) {
        const QKeyEvent e(QEvent::KeyPress, key, mods, 0, native, 0);
        return virtualKeyOf(e);
    };
    // The keys typed in the test above are checked by what they do; these by their codes.
    EXPECT_EQ(vk(Qt::Key_Home), 36);
    EXPECT_EQ(vk(Qt::Key_Enter), 13);
    // Left and right modifiers are told apart by the platform's key symbol.
    EXPECT_EQ(vk(Qt::Key_Control), 162);
    EXPECT_EQ(vk(Qt::Key_Control, Qt::ControlModifier, 0xffe4), 163);
    EXPECT_EQ(vk(Qt::Key_Shift, {}, 0xffe2), 161);
    EXPECT_EQ(vk(Qt::Key_Alt), 164);
    EXPECT_EQ(vk(Qt::Key_Alt, {}, 0xffea), 165);
    // Keys without a code are the window's own.
    EXPECT_EQ(vk(Qt::Key_VolumeUp), 0);
}
