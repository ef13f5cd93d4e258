// Base stations that misbehave in the middle of an event: every vote a base took reaches every
// display program once, and the other bases never notice.
#include <gtest/gtest.h>

#include "EventWorld.h"
#include "ports/BaseLibrary.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const std::vector<std::string> kEveryOperation = {
    "AddKeypadToRegistry", "BeginKeypadSurveyScan", "BeginLiveVote", "ChannelScan", "DeleteKeypadFromRegistry",
    "DeleteRegistry", "EndKeypadSurveyScan", "EndVote", "GetBaseConfig", "GetChannelList", "GetKeypadConfig",
    "GetKeypadFromRegistry", "GetRegistry", "GetSessionConfig", "PauseVote", "PrepareKeypadSurveyScan",
    "PrepareVote", "RadioEnable", "RadioStatus", "RebootRadio", "ResetBase", "ResumeVote", "SetBaseConfig",
    "SetKeypadConfig", "SetPresenterEchoMessage", "SetPresenterGotoMenu", "SetPresenterMenu", "SetSessionConfig",
    "ShowWinningKeypad", "StartAudio", "StartVote", "StopAudio", "UpdateRegistryFlashRIT"};

}  // namespace

TEST(BaseDropsMidVote, VotesBeforeTheDropAndAfterTheReconnectArriveOnceEach) {
    EventWorld w(2, 40);
    Display& d = w.join();
    std::vector<std::string> baseEvents;
    d.client->FromTLXCtrlBaseError.connect(
        [&](int base, const std::string& msg) { baseEvents.push_back("error " + std::to_string(base) + " " + msg); });
    d.client->FromTLXCtrlBaseFeedback.connect(
        [&](int base, const std::string& msg) { baseEvents.push_back("feedback " + std::to_string(base) + " " + msg); });
    w.openVote(d);
    std::vector<std::string> expected;
    for (int k = 1; k <= 5; ++k) {
        ASSERT_TRUE(w.press(0, k, "1"));
        ASSERT_TRUE(w.press(1, k, "2"));
        expected.push_back(w.record(0, k, "1"));
        expected.push_back(w.record(1, k, "2"));
    }
    // A press the base has taken is still on its way when the link goes (code 5).
    ASSERT_TRUE(w.baseLibrary.press(w.ids[0], 6, "3").ok);
    expected.push_back(w.record(0, 6, "3"));
    ASSERT_TRUE(w.baseLibrary.disconnect(w.ids[0]).ok);
    w.scheduler.advance(100);
    // While it is away its keypads are refused (they keep their answer and show the lost
    // signal); the other base goes on.
    EXPECT_FALSE(w.press(0, 7, "4"));
    ASSERT_TRUE(w.press(1, 7, "4"));
    expected.push_back(w.record(1, 7, "4"));
    ASSERT_TRUE(w.baseLibrary.reconnect(w.ids[0]).ok);  // code 1
    w.scheduler.advance(500);
    // After the reconnect the base's keypads vote again in the same vote.
    for (int k = 7; k <= 10; ++k) {
        ASSERT_TRUE(w.press(0, k, "4")) << "keypad " << k << " after the reconnect";
        expected.push_back(w.record(0, k, "4"));
    }
    // A keypad that voted before the drop and presses the same key again gives no new vote.
    w.press(0, 1, "1");
    w.scheduler.advance(500);
    for (const auto& r : expected) EXPECT_EQ(d.records[r], 1) << r;
    EXPECT_EQ(fields(d.total, d.doubled().size()), fields(expected.size(), 0));
    EXPECT_EQ(baseEvents, (std::vector<std::string>{
                              "error 0 Base Station 100 100 100 100\r\nBase station disconnected - attempting auto reconnect",
                              "feedback 0 Base Station 100 100 100 100\r\nAuto reconnect success",
                          }));
    w.closeVote(d);
    EXPECT_EQ(w.open(), "0|0");
}

TEST(BaseDropsMidVote, ABaseAwayWhenTheVoteOpensJoinsItWhenItComesBack) {
    EventWorld w(2, 20);
    Display& d = w.join();
    ASSERT_TRUE(w.baseLibrary.disconnect(w.ids[0]).ok);
    w.scheduler.advance(100);
    w.openVote(d);
    EXPECT_EQ(w.open(), "0|1");
    ASSERT_TRUE(w.press(1, 2, "3"));
    ASSERT_TRUE(w.baseLibrary.reconnect(w.ids[0]).ok);
    w.scheduler.advance(100);
    EXPECT_EQ(w.open(), "1|1");
    EXPECT_EQ(w.baseLibrary.station(0).vote.KeyMask, w.baseLibrary.station(1).vote.KeyMask);
    ASSERT_TRUE(w.press(0, 2, "4"));
    w.scheduler.advance(200);
    EXPECT_EQ(d.records, (std::map<std::string, int>{{w.record(1, 2, "3"), 1}, {w.record(0, 2, "4"), 1}}));
    // A reconnect with nothing missed changes nothing.
    const int starts = w.baseLibrary.station(1).callCount("StartVote");
    ASSERT_TRUE(w.baseLibrary.disconnect(w.ids[1]).ok);
    ASSERT_TRUE(w.baseLibrary.reconnect(w.ids[1]).ok);
    w.scheduler.advance(100);
    EXPECT_EQ(w.baseLibrary.station(1).callCount("StartVote"), starts);
}

TEST(BaseDropsMidVote, ABaseThatComesBackAfterTheVoteEndedIsClosedThen) {
    EventWorld w(2, 20);
    Display& d = w.join();
    w.openVote(d);
    ASSERT_TRUE(w.baseLibrary.disconnect(w.ids[0], 3000).ok);
    w.scheduler.advance(100);
    w.closeVote(d);
    w.scheduler.advance(4000);  // the library reconnects it
    EXPECT_EQ(fields(w.baseLibrary.station(0).linkUp, w.open()), "1|0|0");
    EXPECT_FALSE(w.press(0, 1, "1"));
    EXPECT_EQ(d.total, 0);
}

TEST(FailingBase, EveryOperationFailingOnOneBaseLeavesTheOthersVoting) {
    EventWorld w(3, 20);
    Display& d = w.join();
    for (const auto& op : kEveryOperation) ASSERT_TRUE(w.baseLibrary.fail(w.ids[1], op, BaseErrorCode::TxCommsFailed, -1).ok);
    std::vector<std::string> expected;
    for (int round = 0; round < 2; ++round) {
        w.openVote(d);
        EXPECT_EQ(w.open(), "1|0|1");
        for (int k = 1; k <= 20; ++k) {
            const std::string vote = std::to_string(1 + (k + round) % 4);
            ASSERT_TRUE(w.press(0, k, vote));
            EXPECT_FALSE(w.press(1, k, vote));
            ASSERT_TRUE(w.press(2, k, vote));
        }
        w.closeVote(d);
        EXPECT_EQ(fields(w.open(), d.total, d.doubled().size()), "0|0|0|40|0") << "round " << round;
        for (int k = 1; k <= 20; ++k) {
            const std::string vote = std::to_string(1 + (k + round) % 4);
            EXPECT_EQ(fields(d.heard(w.record(0, k, vote)), d.heard(w.record(2, k, vote))), "1|1");
        }
        d.clear();
    }
    EXPECT_EQ(fields(w.logged("FAILED - 6"), w.glo().InitialisedState == INIT_STATE_INITIALISED, w.glo().ShuttingDown), "1|1|0");
    // Healed, the base takes part in the next vote.
    for (const auto& op : kEveryOperation) w.baseLibrary.fail(w.ids[1], op, 0);
    w.openVote(d);
    ASSERT_TRUE(w.press(1, 3, "2"));
    w.scheduler.advance(200);
    EXPECT_TRUE(d.heard(w.record(1, 3, "2")));
}

TEST(FailingBase, ABaseThatCannotBeOpenedAtStartUpLeavesTheOthersServing) {
    EventWorld w(2, 10, [](EventWorld& e) { e.baseLibrary.fail(e.ids[0], "Connect", BaseErrorCode::BaseNotFound, -1); });
    EXPECT_FALSE(w.dialogs.any("Unable to initialise Kelvarin Base"));  // another base came up
    Display& d = w.join();
    w.openVote(d);
    EXPECT_TRUE(w.baseLibrary.station(1).voteOpen);
    ASSERT_TRUE(w.press(1, 4, "3"));
    w.scheduler.advance(200);
    EXPECT_EQ(d.records, (std::map<std::string, int>{{"14;3", 1}}));
}
