// The text-vote window's view: it shows the model in its main states and forwards the
// presenter's clicks, keys and typing. Saves pictures of the idle and the voting window.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTest>
#include <QTreeWidget>

#include "core/PortFile.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/qt/QtDesktop.h"
#include "support/QtTestApp.h"
#include "support/TestWorld.h"
#include "textvote/TextVoteCollection.h"
#include "ui/TextVoteView.h"
#include "ui/Views.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const std::string kBase = "100100100100";

struct ViewWorld {
    ViewWorld() {
        qtApp();
        w.useSimBases();
        w.addSimBase(kBase, 10);
        w.writePortFile({{kBase, "KELVARIN COREHUB G2", 1, 10}});
        w.start();
        w.scheduler.advance(100);
        form = &showTextVoteWindow(w.c());
        view = dynamic_cast<TextVoteView*>(views.viewOf(frmTextVoteCollection::kName));
    }
    template <class T>
    T* child(const char* name) {
        return view->findChild<T*>(name);
    }
    void text(int keypad, const std::string& t) {
        ASSERT_TRUE(w.baseLibrary.text(kBase, keypad, t).ok);
        w.scheduler.advance(50);
    }
    TestWorld w;
    ViewManager views{w.c()};
    frmTextVoteCollection* form = nullptr;
    TextVoteView* view = nullptr;
};

}  // namespace

TEST(TextVoteView, IdleWindowShowsItsControlsAndForwardsStart) {
    ViewWorld v;
    ASSERT_NE(v.view, nullptr);
    EXPECT_TRUE(v.view->isVisible());
    auto* start = v.child<QPushButton>("cmdStartStopVote");
    auto* session = v.child<QLineEdit>("txtSessionName");
    auto* alerts = v.child<QTreeWidget>("lvwKeypadAlerts");
    ASSERT_TRUE(start && session && alerts);
    EXPECT_EQ(start->text().toStdString(), "Start Vote");
    EXPECT_EQ(session->text().toStdString(), "2026-11-22 Text Votes");
    EXPECT_EQ(v.child<QLabel>("lblStatus")->text().toStdString(), "Idle");
    EXPECT_FALSE(alerts->isColumnHidden(3));
    EXPECT_TRUE(alerts->isColumnHidden(4));
    EXPECT_FALSE(v.child<QGroupBox>("fraDebug")->isVisible());
    saveScreenshot(*v.view, "frmTextVoteCollection-idle");

    start->click();
    v.w.scheduler.advance(50);
    v.view->refresh();
    EXPECT_TRUE(v.form->voting());
    EXPECT_TRUE(v.w.baseLibrary.station(0).voteOpen);
    EXPECT_EQ(start->text().toStdString(), "End Vote");
    EXPECT_FALSE(start->isEnabled());
    EXPECT_FALSE(session->isEnabled());
    EXPECT_EQ(v.child<QPushButton>("cmdStartStopVoteLock")->property("glyph").toString(), QString(QChar(0x00CF)));
}

TEST(TextVoteView, VotingWindowListsTextsAndAlertsAndForwardsTheListActions) {
    ViewWorld v;
    v.form->cmdStartStopVote_Click();
    v.w.scheduler.advance(50);
    v.w.baseLibrary.station(0).keypadBySid(4)->battery = 352;
    v.form->mnuShowFullKpadDetails_Click();
    v.text(2, "Can we have the slides afterwards?");
    v.text(4, "The microphone is too quiet at the back");
    v.text(7, "*Great* session");
    v.view->refresh();
    auto* list = v.child<QListWidget>("lstTextVotes");
    auto* alerts = v.child<QTreeWidget>("lvwKeypadAlerts");
    ASSERT_TRUE(list && alerts);
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->item(1)->text().toStdString(), "[09:00:00] - The microphone is too quiet at the back");
    ASSERT_EQ(alerts->topLevelItemCount(), 1);
    EXPECT_EQ(alerts->topLevelItem(0)->text(0).toStdString(), "300 100 004");
    EXPECT_EQ(alerts->topLevelItem(0)->text(2).toStdString(), "Low (3.52V)");
    EXPECT_FALSE(alerts->topLevelItem(0)->icon(0).isNull());
    EXPECT_FALSE(alerts->isColumnHidden(9));
    EXPECT_EQ(v.child<QLabel>("lblStatus")->text().toStdString(), "Total: 3");
    saveScreenshot(*v.view, "frmTextVoteCollection-voting");

    // Choosing an entry with the mouse, then Delete on the list.
    list->setFocus();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
    EXPECT_EQ(v.form->lstTextVotesIndex, 0);
    EXPECT_EQ(v.form->txtSelectedVote, "[09:00:00] - Can we have the slides afterwards?");
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(v.form->lstTextVotes.size(), 2u);
    v.view->refresh();
    EXPECT_EQ(list->count(), 2);

    v.child<QPushButton>("cmdCopyAllNew")->click();
    EXPECT_EQ(v.w.desktop.clipboardText(),
              "[09:00:00] - The microphone is too quiet at the back\r\n[09:00:00] - *Great* session\r\n");
    v.view->refresh();
    EXPECT_TRUE(list->item(0)->text().startsWith("*"));

    // The presenter's choice of alert rows goes to the model with Delete Keypad.
    alerts->topLevelItem(0)->setSelected(true);
    v.child<QPushButton>("cmdDeleteKeypad")->click();
    EXPECT_TRUE(v.form->lvwKeypadAlerts.empty());
}

TEST(TextVoteView, OptionsMenuSessionNameAndDebugPanel) {
    ViewWorld v;
    v.child<QPushButton>("cmdAlertListConfig")->click();
    QMenu* menu = v.view->alertListOptions();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    auto* everyone = menu->findChild<QAction*>("mnuShowAllKpadInfoAsVotesArrive");
    ASSERT_NE(everyone, nullptr);
    everyone->trigger();
    EXPECT_TRUE(v.form->mnuShowAllKpadInfoAsVotesArrive);
    menu->hide();

    // A name that cannot name a file is refused and the box shows the name kept.
    auto* session = v.child<QLineEdit>("txtSessionName");
    session->setText("a/b");
    emit session->editingFinished();
    EXPECT_EQ(v.w.dialogs.shown.size(), 1u);
    EXPECT_EQ(v.form->txtSessionName, "2026-11-22 Text Votes");
    v.view->refresh();
    EXPECT_EQ(session->text().toStdString(), "2026-11-22 Text Votes");
    session->setText("Afternoon");
    emit session->editingFinished();
    EXPECT_EQ(v.form->txtSessionName, "Afternoon");

    // The offscreen platform has no active window for shortcuts: press the panel's key directly.
    auto* debugKey = v.view->findChild<QShortcut*>();
    ASSERT_NE(debugKey, nullptr);
    EXPECT_EQ(debugKey->key(), QKeySequence("Ctrl+Shift+D"));
    emit debugKey->activated();
    EXPECT_TRUE(v.form->debugPanelVisible);
    v.view->refresh();
    v.child<QCheckBox>("chkDebugGenerateRandomVotes")->setChecked(true);
    EXPECT_TRUE(v.form->tmrDebugGenerateVotes.enabled());
    v.child<QPushButton>("cmdDebugClose")->click();
    EXPECT_FALSE(v.form->debugPanelVisible);
}

TEST(TextVoteView, ClosingTheWindowUnloadsTheFormAndEndsTheVote) {
    ViewWorld v;
    v.form->cmdStartStopVote_Click();
    v.w.scheduler.advance(50);
    v.view->close();
    EXPECT_FALSE(v.w.c().forms.isLoaded(frmTextVoteCollection::kName));
    EXPECT_FALSE(v.w.baseLibrary.station(0).voteOpen);
    EXPECT_EQ(v.views.viewOf(frmTextVoteCollection::kName), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(TextVoteView, TheWindowedProgramsDesktopCopiesToTheSessionClipboard) {
    qtApp();
    QtDesktop desktop;
    desktop.setClipboardText("[09:00:00] - copied\r\n");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "[09:00:00] - copied\r\n");
    QGuiApplication::clipboard()->setText("typed elsewhere");
    EXPECT_EQ(desktop.clipboardText(), "typed elsewhere");
}
