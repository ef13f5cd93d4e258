#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include "core/MainForm.h"
#include "support/QtTestApp.h"
#include "support/TestWorld.h"
#include "ui/MainWindowView.h"

using namespace tlx;
using namespace tlx::test;

namespace {

template <class W>
W* child(QWidget* view, const char* name) {
    W* w = view->findChild<W*>(name);
    EXPECT_NE(w, nullptr) << name;
    return w;
}

QColor shownColour(QLabel* label) { return label->grab().toImage().pixelColor(2, 2); }

void typeLine(QPlainTextEdit* box, const char* text) {
    box->setFocus();
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Return);
}

}  // namespace

// One operator session: the status the model holds, commands typed into the box, the hook
// switched off and on, a simulated vote in the debug view with its counters and the tray
// icon's animation, and back to the normal view.
TEST(MainWindowView, ShowsTheModelAndCarriesTheOperatorsActionsToIt) {
    qtApp();
    TestWorld w;
    ViewManager views(w.c());
    w.start();
    MainForm& main = w.main();
    main.Show();
    QWidget* view = views.viewOf(MainForm::kName);
    ASSERT_NE(view, nullptr);
    auto* mv = dynamic_cast<MainWindowView*>(view);
    ASSERT_NE(mv, nullptr);
    mv->refresh();

    EXPECT_EQ(view->windowTitle().toStdString(), "tallix controller v1.0.0");
    EXPECT_EQ(child<QLabel>(view, "lblVersion")->text().toStdString(), "1.0.0");
    EXPECT_EQ(child<QLabel>(view, "lblOffice")->text().toStdString(), "Office 2000 or later detected");
    EXPECT_EQ(child<QLabel>(view, "lblOS")->text().toStdString(), main.lblOS);
    auto* debugPanel = child<QWidget>(view, "debugPanel");
    EXPECT_FALSE(debugPanel->isVisibleTo(view));
    auto* hookStatus = child<QLabel>(view, "lblHookStatus");
    EXPECT_EQ(hookStatus->text().toStdString(), "Hook Active");
    EXPECT_EQ(shownColour(hookStatus), QColor(0, 255, 0));

    // Enter in the command box runs the queue; the reply goes out and shows in the log.
    auto* command = child<QPlainTextEdit>(view, "txt_command");
    typeLine(command, "GETVOTEINFO");
    EXPECT_EQ(main.txt_command, "GETVOTEINFO");
    w.scheduler.advance(120);
    mv->refresh();
    EXPECT_TRUE(command->toPlainText().isEmpty());
    auto* log = child<QPlainTextEdit>(view, "txt_log");
    EXPECT_TRUE(log->toPlainText().contains(" - TX - numKeypads=")) << log->toPlainText().toStdString();
    saveScreenshot(*view, "tallix_controller");

    typeLine(command, "SwitchToDebugView");
    w.scheduler.advance(60);
    mv->refresh();
    ASSERT_TRUE(debugPanel->isVisibleTo(view));

    // The hook switched off and on from its tick box, its label in the model's colours.
    auto* hook = child<QCheckBox>(view, "chkLowLevelKeyboardHook");
    EXPECT_TRUE(hook->isChecked());
    hook->click();
    EXPECT_FALSE(w.glo().hookActive);
    EXPECT_EQ(hookStatus->text().toStdString(), "Hook Disabled");
    EXPECT_EQ(shownColour(hookStatus), QColor(255, 0, 0));
    hook->click();
    EXPECT_TRUE(w.glo().hookActive);
    EXPECT_EQ(hookStatus->text().toStdString(), "Hook Active");

    // An abstain key that is not a whole number is refused and the box shows the key again.
    auto* key = child<QLineEdit>(view, "key_Abstain");
    key->setText("5x");
    emit key->editingFinished();
    EXPECT_EQ(main.key_Abstain, 0);
    EXPECT_EQ(key->text().toStdString(), "0");
    key->setText("5");
    emit key->editingFinished();
    EXPECT_EQ(main.key_Abstain, 5);

    // A simulated vote: up to 400 votes every 25 ms gives counters in the thousands, and the
    // tray icon cycles its frames every 250 ms while the vote runs.
    auto* perTick = child<QLineEdit>(view, "txt_simulateVotesCount");
    perTick->selectAll();
    QTest::keyClicks(perTick, "400");
    EXPECT_EQ(main.txt_simulateVotesCount, "400");
    child<QPushButton>(view, "cmd_start")->click();
    w.scheduler.advance(1300);
    mv->refresh();
    EXPECT_TRUE(w.glo().voteRunning);
    EXPECT_TRUE(child<QCheckBox>(view, "chk_simulateVotes")->isChecked());
    const QString accepted = child<QLineEdit>(view, "txt_VoteCounter(0)")->text();
    EXPECT_TRUE(QRegularExpression("^\\d{1,3}(,\\d{3})+$").match(accepted).hasMatch()) << accepted.toStdString();
    EXPECT_EQ(accepted.toStdString(), main.txt_VoteCounter[0]);
    ASSERT_GE(w.tray.frames.size(), 5u);
    EXPECT_EQ(std::vector<int>(w.tray.frames.begin(), w.tray.frames.begin() + 5), (std::vector<int>{1, 2, 3, 4, 1}));
    saveScreenshot(*view, "tallix_controller-debug");

    // Stopping ends the vote: the simulator stops and the icon comes to rest.
    child<QPushButton>(view, "cmd_Stop")->click();
    w.scheduler.advance(400);
    mv->refresh();
    EXPECT_FALSE(child<QCheckBox>(view, "chk_simulateVotes")->isChecked());
    EXPECT_FALSE(main.tmr_IconAnimate.enabled());
    EXPECT_EQ(w.tray.frames.back(), 0);

    child<QPushButton>(view, "cmd_normalView")->click();
    EXPECT_FALSE(main.debugView);
    EXPECT_FALSE(debugPanel->isVisibleTo(view));
}
