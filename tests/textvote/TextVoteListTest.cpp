// Picking, copying, marking, deleting and clearing texts; the session name; the debug generator.
#include "TextVoteWorld.h"

using namespace tlx;
using namespace tlx::test;

using Lines = std::vector<std::string>;

TEST(TextVoteCopy, CopyAllNewTwiceResetAndATextStartingWithStarIsStillNewAsOnlyTheEntrysHeadIsMarked) {
    TextVoteWorld t;
    auto& f = t.startVote();
    auto clipboard = [&] { return t.w.desktop.clipboardText(); };
    t.text(kG2Base, 1, "alpha");
    // An entry begins with "[", so a "*" at its head can only be the copy mark.
    t.text(kG2Base, 2, "*urgent*");
    f.cmdCopyAllNew_Click();
    const std::string both = "[09:00:00] - alpha\r\n[09:00:00] - *urgent*\r\n";
    EXPECT_EQ(fields(clipboard(), f.txtSelectedVote), fields(both, both));
    EXPECT_EQ(f.lstTextVotes, (Lines{"*[09:00:00] - alpha", "*[09:00:00] - *urgent*"}));
    f.cmdCopyAllNew_Click();  // nothing new: nothing copied, nothing marked twice
    EXPECT_EQ(fields(clipboard(), f.lstTextVotes[0]), "|*[09:00:00] - alpha");
    t.text(kG2Base, 3, "delta");
    f.cmdCopyAllNew_Click();
    EXPECT_EQ(clipboard(), "[09:00:00] - delta\r\n");
    f.cmdResetVoteList_Click();
    f.cmdResetVoteList_Click();  // takes off marks only, never a character of a text
    EXPECT_EQ(f.lstTextVotes, (Lines{"[09:00:00] - alpha", "[09:00:00] - *urgent*", "[09:00:00] - delta"}));
    f.cmdCopyAllNew_Click();
    EXPECT_EQ(clipboard(), both + "[09:00:00] - delta\r\n");
}

TEST(TextVoteList, ChooseCopyDeleteTheOnlyEntryAndClear) {
    TextVoteWorld t;
    auto& f = t.startVote();
    for (const char* text : {"alpha", "beta", "gamma"}) t.text(kG2Base, 1, text);
    f.lstTextVotes_KeyDown(46);  // nothing chosen: nothing goes
    EXPECT_EQ(f.lstTextVotes.size(), 3u);
    f.lstTextVotes_Click(1);
    f.lstTextVotes_Click(3);  // beside the entries: the choice stays
    EXPECT_EQ(f.lblStatus, "Selected: [09:00:00] - beta");
    f.txtSelectedVote += ", tidied";  // the presenter may edit before copying
    f.cmdCopySelectedVote_Click();
    EXPECT_EQ(t.w.desktop.clipboardText(), "[09:00:00] - beta, tidied");
    f.lstTextVotes_KeyDown(45);  // Insert does nothing
    f.lstTextVotes_KeyDown(46);
    EXPECT_EQ(fields(join(f.lstTextVotes, ","), f.lblStatus), "[09:00:00] - alpha,[09:00:00] - gamma|Total: 2");
    f.cmdDeleteVote_Click();  // the choice went with the entry
    EXPECT_EQ(f.lstTextVotes.size(), 2u);
    f.lstTextVotes_Click(0);
    f.cmdDeleteVote_Click();
    f.lstTextVotes_Click(0);
    f.cmdDeleteVote_Click();
    EXPECT_EQ(fields(f.lstTextVotes.empty(), f.lblStatus), "1|Total: 0");
    EXPECT_EQ(split(readFile(f.sessionLogPath()), "\r\n").size(), 4u);  // the log keeps all three
    t.text(kG2Base, 2, "delta");
    f.cmdClearAllVotes_Click();
    EXPECT_TRUE(f.lstTextVotes.empty());
    t.text(kG2Base, 2, "epsilon");
    EXPECT_EQ(f.lblStatus, "Total: 1");
}

TEST(TextVoteSessionName, NamesThatCannotNameAFileAreRefusedAndNoneWhileVoting) {
    TextVoteWorld t;
    auto& f = t.open();
    const std::string before = f.txtSessionName;
    for (const char* bad : {"a/b", "what?", "x:y", "a\\b", "\"q\"", "a|b", "<>", "star*", "   "}) {
        t.w.dialogs.shown.clear();
        EXPECT_FALSE(f.txtSessionName_Validate(bad)) << bad;
        ASSERT_EQ(t.w.dialogs.shown.size(), 1u) << bad;
        EXPECT_EQ(t.w.dialogs.shown[0].title, "Text Vote Collection");
        EXPECT_EQ(t.w.dialogs.shown[0].text, bad[0] == ' ' ? "Please enter a session name"
                                                           : "A session name cannot contain any of the following "
                                                             "characters:\r\n\\ / : * ? \" < > |");
        EXPECT_EQ(f.txtSessionName, before) << bad;
    }
    EXPECT_TRUE(f.txtSessionName_Validate("Q&A - round 2"));
    EXPECT_EQ(f.sessionLogPath().filename(), "Q&A - round 2.kvtxt");
    f.cmdStartStopVote_Click();
    t.w.dialogs.shown.clear();
    EXPECT_FALSE(f.txtSessionName_Validate("Other"));
    EXPECT_EQ(fields(t.w.dialogs.shown.empty(), f.sessionLogPath().filename().string()), "1|Q&A - round 2.kvtxt");
}

TEST(TextVoteDebug, TheGeneratorAddsEntriesAtTheSlidersIntervalUntilClosed) {
    TextVoteWorld t;
    auto& f = t.open();
    f.ShowDebugPanel();
    f.chkDebugGenerateRandomVotes_Click(true);
    t.w.scheduler.advance(999);
    EXPECT_TRUE(f.lstTextVotes.empty());
    t.w.scheduler.advance(1);
    EXPECT_EQ(f.lstTextVotes, Lines{"[09:00:01] - Vote Text Data Appears Here"});
    f.sldDebugTimerInterval_Change(250);
    t.w.scheduler.advance(1000);
    EXPECT_EQ(f.lblStatus, "Total: 5");
    f.sldDebugTimerInterval_Change(10);
    EXPECT_EQ(f.tmrDebugGenerateVotes.interval(), 100);
    f.sldDebugTimerInterval_Change(600000);
    EXPECT_EQ(f.tmrDebugGenerateVotes.interval(), 5000);
    f.cmdDebugClose_Click();
    EXPECT_FALSE(f.debugPanelVisible || f.chkDebugGenerateRandomVotes);
    t.w.scheduler.advance(20000);
    // Test entries are not texts.
    EXPECT_EQ(fields(f.lstTextVotes.size(), std::filesystem::exists(f.sessionLogPath())), "5|0");
    f.chkDebugGenerateRandomVotes_Click(true);
    f.Close();
    t.w.scheduler.advance(5000);  // a closed window's timer never fires into it
    EXPECT_EQ(t.errLog(), "");
}
