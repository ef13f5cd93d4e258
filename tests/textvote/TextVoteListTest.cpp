// Picking, copying, marking, deleting and clearing texts; the alert list's rows and options;
// the session name; the debug generator.
#include <gtest/gtest.h>

#include "TextVoteWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// A window with three texts from keypads 1, 2 and 3.
struct ThreeTexts {
    TextVoteWorld t;
    frmTextVoteCollection& f = t.startVote();
    ThreeTexts() {
        t.text(kG2Base, 1, "alpha");
        t.text(kG2Base, 2, "beta");
        t.text(kG2Base, 3, "gamma");
    }
    std::string clipboard() { return t.w.desktop.clipboardText(); }
};

}  // namespace

TEST(TextVoteCopy, CopyAllNewTwiceCopiesNothingTheSecondTime) {
    ThreeTexts x;
    x.f.cmdCopyAllNew_Click();
    const std::string all = "[09:00:00] - alpha\r\n[09:00:00] - beta\r\n[09:00:00] - gamma\r\n";
    EXPECT_EQ(x.clipboard(), all);
    EXPECT_EQ(x.f.txtSelectedVote, all);
    EXPECT_EQ(x.f.lstTextVotes,
              (std::vector<std::string>{"*[09:00:00] - alpha", "*[09:00:00] - beta", "*[09:00:00] - gamma"}));
    x.f.cmdCopyAllNew_Click();
    EXPECT_EQ(x.clipboard(), "");
    EXPECT_EQ(x.f.txtSelectedVote, "");
    EXPECT_EQ(x.f.lstTextVotes[0], "*[09:00:00] - alpha");  // marked once, not twice
    // Only what came since is new.
    x.t.text(kG2Base, 4, "delta");
    x.f.cmdCopyAllNew_Click();
    EXPECT_EQ(x.clipboard(), "[09:00:00] - delta\r\n");
}

TEST(TextVoteCopy, AfterResetEveryEntryIsCopiedAgain) {
    ThreeTexts x;
    x.f.cmdCopyAllNew_Click();
    x.f.cmdResetVoteList_Click();
    EXPECT_EQ(x.f.lstTextVotes,
              (std::vector<std::string>{"[09:00:00] - alpha", "[09:00:00] - beta", "[09:00:00] - gamma"}));
    x.f.cmdCopyAllNew_Click();
    EXPECT_EQ(x.clipboard(), "[09:00:00] - alpha\r\n[09:00:00] - beta\r\n[09:00:00] - gamma\r\n");
    // Reset takes off the marks only, never a character of an unmarked entry.
    x.f.cmdResetVoteList_Click();
    x.f.cmdResetVoteList_Click();
    EXPECT_EQ(x.f.lstTextVotes[0], "[09:00:00] - alpha");
}

TEST(TextVoteCopy, ATextBeginningWithStarIsNewSinceOnlyAnEntrysHeadCarriesTheMark) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.text(kG2Base, 1, "*urgent*");
    ASSERT_EQ(f.lstTextVotes[0], "[09:00:00] - *urgent*");
    f.cmdCopyAllNew_Click();
    EXPECT_EQ(t.w.desktop.clipboardText(), "[09:00:00] - *urgent*\r\n");
    f.cmdCopyAllNew_Click();
    EXPECT_EQ(t.w.desktop.clipboardText(), "");
    f.cmdResetVoteList_Click();
    EXPECT_EQ(f.lstTextVotes[0], "[09:00:00] - *urgent*");  // the text keeps its own star
}

TEST(TextVoteCopy, ChoosingAnEntryShowsItAndCopySelectedPutsItOnTheClipboard) {
    ThreeTexts x;
    x.f.lstTextVotes_Click(1);
    EXPECT_EQ(x.f.lstTextVotesIndex, 1);
    EXPECT_EQ(x.f.txtSelectedVote, "[09:00:00] - beta");
    EXPECT_EQ(x.f.lblStatus, "Selected: [09:00:00] - beta");
    x.f.cmdCopySelectedVote_Click();
    EXPECT_EQ(x.clipboard(), "[09:00:00] - beta");
    // The presenter may edit the text before copying it.
    x.f.txtSelectedVote = "beta, tidied";
    x.f.cmdCopySelectedVote_Click();
    EXPECT_EQ(x.clipboard(), "beta, tidied");
    // A click beside the entries changes nothing.
    x.f.lstTextVotes_Click(3);
    x.f.lstTextVotes_Click(-1);
    EXPECT_EQ(x.f.lstTextVotesIndex, 1);
    EXPECT_EQ(x.f.lblStatus, "Selected: [09:00:00] - beta");
}

TEST(TextVoteList, DeleteRemovesTheChosenEntryOnlyAndCounts) {
    ThreeTexts x;
    x.f.lstTextVotes_KeyDown(46);  // nothing chosen: nothing goes
    x.f.cmdDeleteVote_Click();
    EXPECT_EQ(x.f.lstTextVotes.size(), 3u);
    x.f.lstTextVotes_Click(1);
    x.f.lstTextVotes_KeyDown(45);  // Insert does nothing
    EXPECT_EQ(x.f.lstTextVotes.size(), 3u);
    x.f.lstTextVotes_KeyDown(46);
    EXPECT_EQ(x.f.lstTextVotes, (std::vector<std::string>{"[09:00:00] - alpha", "[09:00:00] - gamma"}));
    EXPECT_EQ(x.f.lblStatus, "Total: 2");
    EXPECT_EQ(x.f.lstTextVotesIndex, -1);
    x.f.cmdDeleteVote_Click();  // the choice went with the entry
    EXPECT_EQ(x.f.lstTextVotes.size(), 2u);
    x.f.lstTextVotes_Click(1);
    x.f.cmdDeleteVote_Click();
    x.f.lstTextVotes_Click(0);
    x.f.cmdDeleteVote_Click();
    EXPECT_TRUE(x.f.lstTextVotes.empty());
    EXPECT_EQ(x.f.lblStatus, "Total: 0");
    // Deleting from the list leaves the session log whole.
    EXPECT_EQ(x.t.logLines(x.f).size(), 3u);
}

TEST(TextVoteList, ClearAllEmptiesTheListAndTheNextTextCountsFromOne) {
    ThreeTexts x;
    x.f.lstTextVotes_Click(2);
    x.f.cmdClearAllVotes_Click();
    EXPECT_TRUE(x.f.lstTextVotes.empty());
    EXPECT_EQ(x.f.lstTextVotesIndex, -1);
    x.t.text(kG2Base, 5, "epsilon");
    EXPECT_EQ(x.f.lblStatus, "Total: 1");
}

TEST(TextVoteAlerts, DeleteKeypadRemovesTheChosenRowsOnly) {
    TextVoteWorld t;
    auto& f = t.startVote();
    for (int k = 1; k <= 3; ++k) t.keypad(kG2Base, k).battery = 350;
    for (int k = 1; k <= 3; ++k) t.text(kG2Base, k, "low " + std::to_string(k));
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 3u);
    f.cmdDeleteKeypad_Click();  // none chosen
    EXPECT_EQ(f.lvwKeypadAlerts.size(), 3u);
    f.selectAlertRow("K:1", true);
    f.selectAlertRow("K:3", true);
    f.cmdDeleteKeypad_Click();
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 1u);
    EXPECT_EQ(f.lvwKeypadAlerts[0].key, "K:2");
    // A deleted keypad comes back with its next weak-battery text.
    t.text(kG2Base, 1, "still low");
    EXPECT_EQ(f.lvwKeypadAlerts.size(), 2u);
}

TEST(TextVoteAlerts, TheOptionsMenuTogglesEveryoneAndFullDetails) {
    TextVoteWorld t;
    auto& f = t.open();
    int popups = 0;
    f.popupAlertListOptions.connect([&] { ++popups; });
    f.cmdAlertListConfig_Click();
    EXPECT_EQ(popups, 1);
    for (int c = 0; c < 10; ++c) EXPECT_EQ(f.columnVisible(c), c < 4) << c;
    f.mnuShowFullKpadDetails_Click();
    for (int c = 0; c < 10; ++c) EXPECT_TRUE(f.columnVisible(c)) << c;
    EXPECT_FALSE(f.columnVisible(10));
    f.mnuShowFullKpadDetails_Click();
    EXPECT_FALSE(f.columnVisible(4));
    EXPECT_FALSE(f.mnuShowAllKpadInfoAsVotesArrive);
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    EXPECT_TRUE(f.mnuShowAllKpadInfoAsVotesArrive);
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    EXPECT_FALSE(f.mnuShowAllKpadInfoAsVotesArrive);
}

TEST(TextVoteSessionName, NamesThatCannotNameAFileAreRefusedWithTheWindowsMessage) {
    TextVoteWorld t;
    auto& f = t.open();
    const std::string before = f.txtSessionName;
    for (const char* bad : {"a/b", "what?", "x:y", "a\\b", "\"q\"", "a|b", "<>", "star*"}) {
        t.w.dialogs.shown.clear();
        EXPECT_FALSE(f.txtSessionName_Validate(bad)) << bad;
        ASSERT_EQ(t.w.dialogs.shown.size(), 1u) << bad;
        EXPECT_EQ(t.w.dialogs.shown[0].title, "Text Vote Collection");
        EXPECT_EQ(t.w.dialogs.shown[0].text,
                  "A session name cannot contain any of the following characters:\r\n\\ / : * ? \" < > |");
        EXPECT_EQ(f.txtSessionName, before) << bad;
    }
    t.w.dialogs.shown.clear();
    EXPECT_FALSE(f.txtSessionName_Validate("   "));
    EXPECT_EQ(t.w.dialogs.texts(), std::vector<std::string>{"Please enter a session name"});
    EXPECT_EQ(f.txtSessionName, before);
    EXPECT_TRUE(f.lstTextVotes.empty());
    EXPECT_TRUE(f.txtSessionName_Validate("Q&A - round 2"));
    EXPECT_EQ(f.sessionLogPath().filename(), "Q&A - round 2.kvtxt");
}

TEST(TextVoteSessionName, TheNameCannotChangeWhileAVoteRuns) {
    TextVoteWorld t;
    auto& f = t.startVote();
    const std::string before = f.txtSessionName;
    EXPECT_FALSE(f.txtSessionName_Validate("Other"));
    EXPECT_EQ(f.txtSessionName, before);
    EXPECT_TRUE(t.w.dialogs.shown.empty());
    f.cmdStartStopVoteLock_Click();
    f.cmdStartStopVote_Click();
    EXPECT_TRUE(f.txtSessionName_Validate("Other"));
}

TEST(TextVoteDebug, TheGeneratorAddsEntriesAtTheSlidersIntervalUntilClosed) {
    TextVoteWorld t;
    auto& f = t.open();
    f.ShowDebugPanel();
    EXPECT_TRUE(f.debugPanelVisible);
    f.chkDebugGenerateRandomVotes_Click(true);
    t.w.scheduler.advance(999);
    EXPECT_TRUE(f.lstTextVotes.empty());
    t.w.scheduler.advance(1);
    ASSERT_EQ(f.lstTextVotes.size(), 1u);
    EXPECT_EQ(f.lstTextVotes[0], "[09:00:01] - Vote Text Data Appears Here");
    EXPECT_EQ(f.lblStatus, "Total: 1");
    f.sldDebugTimerInterval_Change(250);
    t.w.scheduler.advance(1000);
    EXPECT_EQ(f.lstTextVotes.size(), 5u);
    EXPECT_EQ(f.lblStatus, "Total: 5");
    // The slider keeps to its bounds.
    f.sldDebugTimerInterval_Change(10);
    EXPECT_EQ(f.tmrDebugGenerateVotes.interval(), frmTextVoteCollection::kDebugIntervalMin);
    f.sldDebugTimerInterval_Change(600000);
    EXPECT_EQ(f.tmrDebugGenerateVotes.interval(), frmTextVoteCollection::kDebugIntervalMax);
    f.cmdDebugClose_Click();
    EXPECT_FALSE(f.debugPanelVisible);
    EXPECT_FALSE(f.chkDebugGenerateRandomVotes);
    t.w.scheduler.advance(20000);
    EXPECT_EQ(f.lstTextVotes.size(), 5u);
    // Test entries are not texts: the session log has none of them.
    EXPECT_FALSE(std::filesystem::exists(f.sessionLogPath()));
}

TEST(TextVoteDebug, UncheckingStopsTheGeneratorAndClosingTheWindowStopsItsTimer) {
    TextVoteWorld t;
    auto& f = t.open();
    f.chkDebugGenerateRandomVotes_Click(true);
    t.w.scheduler.advance(2000);
    f.chkDebugGenerateRandomVotes_Click(false);
    t.w.scheduler.advance(5000);
    EXPECT_EQ(f.lstTextVotes.size(), 2u);
    f.chkDebugGenerateRandomVotes_Click(true);
    f.Close();
    t.w.scheduler.advance(5000);  // the timer of a closed window never fires into it
    EXPECT_EQ(t.errLog(), "");
}
