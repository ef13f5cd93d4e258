// Starting and ending a text vote on both driver generations, the lock, the commands that
// open the window, and closing it.
#include <gtest/gtest.h>

#include "TextVoteWorld.h"
#include "core/MainForm.h"
#include "drivers/PrioritizerDriver.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kThanks = "Text Submitted|| Thanks for|     voting";
}

TEST(TextVoteStartEnd, StartSetsTheTextVoteAndOpensItOnBothGenerations) {
    TextVoteWorld t(true);
    ASSERT_EQ(t.station(kG1Base).attachedObjects(), 1u);
    ASSERT_EQ(t.station(kG2Base).attachedObjects(), 1u);
    t.w.glo().voteName = "Colours";
    t.w.glo().kelvarinDisplay = 1;  // letters from an earlier vote must not reach the texts
    auto& f = t.startVote();

    const GlobalState& g = t.w.glo();
    EXPECT_EQ(g.voteType, "12");
    EXPECT_EQ(g.kelvarinDisplay, 0);
    EXPECT_EQ(g.kvpOptions, 7);
    EXPECT_EQ(g.voteName, "");
    EXPECT_EQ(g.voteText, kThanks);
    EXPECT_EQ(g.voteEndedText, "Texting finished");
    for (const auto& base : {kG1Base, kG2Base}) {
        const SimBaseStation& st = t.station(base);
        EXPECT_TRUE(st.voteOpen) << base;
        EXPECT_EQ(st.vote.VoteType, 12) << base;
        EXPECT_FALSE(st.vote.DisplayLetters) << base;
        EXPECT_EQ(st.vote.VoteText, kThanks) << base;
        EXPECT_EQ(st.vote.VoteEndedText, "Texting finished") << base;
    }
    EXPECT_TRUE(t.drivers.oKVv4()->voteRunning());
    EXPECT_TRUE(t.drivers.oKVv5()->voteRunning());
    // The slide-driven run's flag stays off: moving the show on must not end a text vote.
    EXPECT_FALSE(g.Voting);

    EXPECT_EQ(f.cmdStartStopVote.tag, "VOTING");
    EXPECT_EQ(f.cmdStartStopVote.caption, "End Vote");
    EXPECT_EQ(f.lblStatus, "Voting");
    EXPECT_FALSE(f.txtSessionNameEnabled);
    EXPECT_EQ(f.cmdStartStopVoteLock.tag, "LOCKED");
    EXPECT_EQ(f.cmdStartStopVoteLock.caption, "\xC3\x8F");  // U+00CF
    EXPECT_FALSE(f.cmdStartStopVote.enabled);

    // Texts from either generation reach the window, and the keypads thank their senders.
    t.text(kG1Base, 2, "From the older base");
    t.text(kG2Base, 4, "From the newer base");
    ASSERT_EQ(f.lstTextVotes.size(), 2u);
    EXPECT_TRUE(endsWith(f.lstTextVotes[0], "] - From the older base"));
    EXPECT_TRUE(endsWith(f.lstTextVotes[1], "] - From the newer base"));
    std::string shown;
    t.sim().screen(kG2Base, 4, shown);
    EXPECT_EQ(shown, kThanks);
}

TEST(TextVoteStartEnd, TheLockKeepsClicksOffUntilUnlockedThenEndEndsBothGenerations) {
    TextVoteWorld t(true);
    auto& f = t.startVote();
    f.cmdStartStopVote_Click();  // a stray click while locked
    t.settle();
    EXPECT_TRUE(f.voting());
    EXPECT_TRUE(t.station(kG2Base).voteOpen);
    EXPECT_EQ(f.click("cmdStartStopVote"), "cmdStartStopVote is locked");

    f.cmdStartStopVoteLock_Click();
    EXPECT_EQ(f.cmdStartStopVoteLock.tag, "UNLOCKED");
    EXPECT_EQ(f.cmdStartStopVoteLock.caption, "\xC3\x90");  // U+00D0
    EXPECT_TRUE(f.cmdStartStopVote.enabled);
    f.cmdStartStopVote_Click();
    t.settle();

    for (const auto& base : {kG1Base, kG2Base}) {
        EXPECT_FALSE(t.station(base).voteOpen) << base;
        // Ended as a vote that ran: an empty ended text, not the blank of a vote never started.
        EXPECT_EQ(t.station(base).lastEndedText, "") << base;
    }
    EXPECT_FALSE(t.drivers.oKVv4()->voteRunning());
    EXPECT_FALSE(t.drivers.oKVv5()->voteRunning());
    // Ended with clearSettings: the text vote's settings do not leak into the next vote.
    EXPECT_EQ(t.w.glo().voteType, "");
    EXPECT_EQ(t.w.glo().voteText, "");
    EXPECT_EQ(f.cmdStartStopVote.tag, "IDLE");
    EXPECT_EQ(f.cmdStartStopVote.caption, "Start Vote");
    EXPECT_EQ(f.lblStatus, "Idle");
    EXPECT_TRUE(f.txtSessionNameEnabled);
    // The lock stays as the presenter left it.
    EXPECT_EQ(f.cmdStartStopVoteLock.tag, "UNLOCKED");
    std::string shown;
    t.sim().screen(kG2Base, 1, shown);
    EXPECT_EQ(shown, "Texting finished");

    // Locking by hand while idle disables the button too.
    f.cmdStartStopVoteLock_Click();
    EXPECT_FALSE(f.cmdStartStopVote.enabled);
    f.cmdStartStopVote_Click();
    EXPECT_FALSE(f.voting());
}

TEST(TextVoteStartEnd, ANewWindowIsIdleUnlockedAndNamedForToday) {
    TextVoteWorld t;
    auto& f = t.open();
    EXPECT_TRUE(f.Visible());
    EXPECT_EQ(f.Caption(), "Text Vote Collection");
    EXPECT_EQ(f.cmdStartStopVote.tag, "IDLE");
    EXPECT_EQ(f.cmdStartStopVote.caption, "Start Vote");
    EXPECT_EQ(f.cmdStartStopVoteLock.tag, "UNLOCKED");
    EXPECT_TRUE(f.cmdStartStopVote.enabled);
    EXPECT_EQ(f.txtSessionName, "2026-11-22 Text Votes");
    EXPECT_EQ(f.sessionLogPath(), t.w.temp() / "2026-11-22 Text Votes.kvtxt");
    EXPECT_FALSE(f.tmrDebugGenerateVotes.enabled());
    EXPECT_EQ(f.tmrDebugGenerateVotes.interval(), 1000);
}

TEST(TextVoteStartEnd, ClosingWhileVotingEndsTheVoteOnBothDriversFirst) {
    TextVoteWorld t(true);
    const std::size_t handlers = t.drivers.oKVv5()->VoteReceivedObject.size();
    auto& f = t.startVote();
    EXPECT_EQ(t.drivers.oKVv5()->VoteReceivedObject.size(), handlers + 1);
    f.Close();
    // The window lets go of both drivers' events: opening and closing it never piles them up.
    EXPECT_EQ(t.drivers.oKVv5()->VoteReceivedObject.size(), handlers);
    EXPECT_EQ(t.drivers.oKVv4()->VoteReceivedObject.size(), handlers);
    t.settle();
    EXPECT_FALSE(t.w.c().forms.isLoaded(frmTextVoteCollection::kName));
    EXPECT_FALSE(t.station(kG1Base).voteOpen);
    EXPECT_FALSE(t.station(kG2Base).voteOpen);
    // Gone means gone: a text after closing reaches no window and breaks nothing.
    EXPECT_FALSE(t.sim().text(kG2Base, 1, "late"));  // the vote is closed on the base
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100001", 1, "late"), "0");
    EXPECT_EQ(t.errLog(), "");
}

TEST(TextVoteStartEnd, ClosingWhileIdleLeavesTheBasesAlone) {
    TextVoteWorld t;
    auto& f = t.open();
    f.Close();
    t.settle();
    EXPECT_EQ(t.station(kG2Base).callCount("EndVote"), 0);
}

TEST(TextVoteStartEnd, TextvoteTextvotesAndTvOpenOneWindow) {
    TextVoteWorld t;
    MainForm& main = t.w.main();
    main.AddDataToCommandQueue("textvote");
    main.RunCommandQueueNow();
    auto* f = t.w.c().forms.get<frmTextVoteCollection>(frmTextVoteCollection::kName);
    ASSERT_NE(f, nullptr);
    EXPECT_TRUE(f->Visible());
    f->lstTextVotes.push_back("[09:00:00] - kept");
    f->Hide();
    for (const char* command : {"TEXTVOTES", "TV"}) {
        f->Hide();
        main.AddDataToCommandQueue(command);
        main.RunCommandQueueNow();
        EXPECT_EQ(t.w.c().forms.get<frmTextVoteCollection>(frmTextVoteCollection::kName), f) << command;
        EXPECT_TRUE(f->Visible()) << command;
    }
    EXPECT_EQ(f->lstTextVotes.size(), 1u);
    std::size_t windows = 0;
    for (Form* form : t.w.c().forms.all()) windows += form->Name() == frmTextVoteCollection::kName;
    EXPECT_EQ(windows, 1u);
}

TEST(TextVoteStartEnd, WithoutBasesStartAndEndOnlyChangeTheWindow) {
    TestWorld w;
    w.start();
    auto& f = showTextVoteWindow(w.c());
    f.cmdStartStopVote_Click();
    EXPECT_TRUE(f.voting());
    f.cmdStartStopVoteLock_Click();
    f.cmdStartStopVote_Click();
    EXPECT_FALSE(f.voting());
    EXPECT_EQ(readFile(w.appData() / "tallix" / "Err.log"), "");
}
