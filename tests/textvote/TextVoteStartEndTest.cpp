// Starting and ending a text vote on both driver generations, the lock, the commands that
// open the window, and closing it.
#include <gtest/gtest.h>

#include "TextVoteWorld.h"
#include "core/MainForm.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kThanks = "Text Submitted|| Thanks for|     voting";
// The start button's tag and caption, the status, the session name open to edits.
std::string window(const frmTextVoteCollection& f) {
    return fields(f.cmdStartStopVote.tag, f.cmdStartStopVote.caption, f.lblStatus, f.txtSessionNameEnabled);
}
}  // namespace

TEST(TextVoteStartEnd, StartOpensTheTextVoteOnBothGenerationsLocksAndEndEndsItOnBoth) {
    TextVoteWorld t(true);
    t.w.glo().voteName = "Colours";
    t.w.glo().kelvarinDisplay = 1;  // letters from an earlier vote must not reach the texts
    auto& f = t.startVote();
    const GlobalState& g = t.w.glo();
    // Voting is the slide-driven run's flag: moving the show on must not end it.
    EXPECT_EQ(fields(g.voteType, g.kelvarinDisplay, g.kvpOptions, g.voteName, g.Voting), "12|0|7||0");
    for (const auto& base : {kG1Base, kG2Base}) {
        const SimBaseStation& st = *t.w.baseLibrary.find(base);
        EXPECT_TRUE(st.voteOpen && st.vote.VoteType == 12 && !st.vote.DisplayLetters) << base;
        EXPECT_EQ(fields(st.vote.VoteText, st.vote.VoteEndedText), kThanks + "|Texting finished");
    }
    EXPECT_EQ(fields(window(f), f.cmdStartStopVoteLock.tag), "VOTING|End Vote|Voting|0|LOCKED");
    // Texts from either generation reach the window; the keypads thank their senders.
    t.text(kG1Base, 2, "older");
    t.text(kG2Base, 4, "newer");
    EXPECT_EQ(fields(join(f.lstTextVotes, ","), t.screen(kG2Base, 4)), "[09:00:00] - older,[09:00:00] - newer|" + kThanks);

    f.cmdStartStopVote_Click();  // a stray click while locked
    EXPECT_TRUE(f.voting());
    EXPECT_EQ(f.click("cmdStartStopVote"), "cmdStartStopVote is locked");
    EXPECT_EQ(f.click("cmdNoSuchButton"), "no control cmdNoSuchButton on frmTextVoteCollection");
    f.cmdStartStopVoteLock_Click();
    EXPECT_EQ(f.cmdStartStopVoteLock.tag, "UNLOCKED");
    f.cmdStartStopVote_Click();
    t.w.scheduler.advance(100);
    for (const auto& base : {kG1Base, kG2Base}) {
        EXPECT_FALSE(t.w.baseLibrary.find(base)->voteOpen) << base;
        EXPECT_EQ(t.w.baseLibrary.find(base)->lastEndedText, "") << base;  // ended as a vote that ran
    }
    // Ended with the settings cleared.
    EXPECT_EQ(fields(t.w.glo().voteType, window(f), t.screen(kG2Base, 1)), "|IDLE|Start Vote|Idle|1|Texting finished");
}

TEST(TextVoteStartEnd, TextvoteTextvotesAndTvOpenOneIdleWindow) {
    TextVoteWorld t;
    MainForm& main = t.w.main();
    main.AddDataToCommandQueue("textvote");
    main.RunCommandQueueNow();
    auto* f = t.w.c().forms.get<frmTextVoteCollection>(frmTextVoteCollection::kName);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->cmdStartStopVote.tag, "IDLE");
    f->lstTextVotes.push_back("kept");
    for (const char* command : {"TEXTVOTES", "TV"}) {
        f->Hide();
        main.AddDataToCommandQueue(command);
        main.RunCommandQueueNow();
        EXPECT_EQ(t.w.c().forms.get<frmTextVoteCollection>(frmTextVoteCollection::kName), f) << command;
        EXPECT_TRUE(f->Visible()) << command;
    }
    EXPECT_EQ(f->lstTextVotes.size(), 1u);
}

TEST(TextVoteStartEnd, ClosingWhileVotingEndsTheVoteAndLetsGoOfTheDrivers) {
    TextVoteWorld t(true);
    const std::size_t handlers = t.drivers.oKVv5()->VoteReceivedObject.size();
    auto& f = t.startVote();
    f.Close();
    EXPECT_FALSE(t.w.c().forms.isLoaded(frmTextVoteCollection::kName));
    EXPECT_EQ(fields(t.w.baseLibrary.find(kG1Base)->voteOpen, t.w.baseLibrary.find(kG2Base)->voteOpen,
                     t.drivers.oKVv5()->VoteReceivedObject.size(), t.drivers.oKVv4()->VoteReceivedObject.size()),
              fields(0, 0, handlers, handlers));
    t.w.scheduler.advance(100);  // the window is gone: a late event reaches nothing
    t.raise(1, "late");
    EXPECT_EQ(t.errLog(), "");
}

TEST(TextVoteStartEnd, WithoutBasesStartAndEndOnlyChangeTheWindow) {
    TestWorld w;
    w.start();
    auto& f = showTextVoteWindow(w.c());
    f.cmdStartStopVote_Click();
    EXPECT_TRUE(f.voting());
    f.cmdStartStopVoteLock_Click();
    f.cmdStartStopVote_Click();
    EXPECT_EQ(fields(f.voting(), readFile(w.appData() / "tallix" / "Err.log")), "0|");
}
