// What a keypad shows through a whole vote, read from the simulated base as a show reads it.
#include <gtest/gtest.h>

#include "DriverWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";

struct ScreenWorld : DriverWorld {
    ScreenWorld() : DriverWorld({kBase1}, 10, false) {
        w.writeSettings("KELVARIN CORE HUB OPTIONS", "PREVOTE TEXT", "Get ready");
        w.writeSettings("KELVARIN CORE HUB OPTIONS", "PREVOTE TEXT TIME", "10");  // one second
        start();
        singleDigit(4);
        glo().questionTextShort = "Pick a colour";
    }
    std::string screen(int keypad) {
        std::string shown;
        const SimOutcome o = sim().screen(kBase1, keypad, shown);
        return o ? shown : "<" + o.message + ">";
    }
    void after(int ms) { w.scheduler.advance(ms); }
    std::string screenAfter(int ms, int keypad) {
        after(ms);
        return screen(keypad);
    }
};

const std::string kQuestion = "Pick a colour";
const std::string kSubmitted = "Vote Submitted|||   Press 10|  to  revote";
const std::string kFailed = "**Vote Failed**||Please try again";
const std::string kLost = "Base Signal Lost||Attempting to|reconnect";
}  // namespace

TEST(KeypadScreen, AWholeVoteAsTheKeypadsShowIt) {
    ScreenWorld s;
    EXPECT_EQ(s.screen(3), "");
    s.g2().StartVote();
    EXPECT_EQ(s.screen(3), "Get ready");  // before the vote: the prevote text, for its time
    EXPECT_EQ(s.screenAfter(999, 3), "Get ready");
    EXPECT_EQ(s.screenAfter(2, 3), kQuestion);

    ASSERT_TRUE(s.sim().press(kBase1, 3, "2"));
    EXPECT_EQ(s.screen(3), "Sending Vote...");  // while the press is on its way
    // It got through: the vote text, for its time; another keypad is not concerned.
    EXPECT_EQ(s.screenAfter(s.sim().eventDelayMs, 3), kSubmitted);
    EXPECT_EQ(s.screen(4), kQuestion);
    EXPECT_EQ(s.screenAfter(2000, 3), kQuestion);

    ASSERT_TRUE(s.sim().press(kBase1, 3, "4"));
    EXPECT_EQ(s.screen(3), "Sending Re-vote.");  // a changed answer
    EXPECT_EQ(s.screenAfter(s.sim().eventDelayMs, 3), kSubmitted);
    EXPECT_FALSE(s.sim().press(kBase1, 3, "7"));  // a key this vote does not take
    EXPECT_EQ(s.screen(3), kFailed);
    EXPECT_EQ(s.screenAfter(2500, 3), kFailed);  // longer than the vote text's time, which the failure replaced
    EXPECT_EQ(s.screenAfter(500, 3), kQuestion);

    ASSERT_TRUE(s.sim().disconnect(kBase1));  // the radio link goes during the vote
    EXPECT_EQ(fields(s.screen(3), s.screen(9)), fields(kLost, kLost));
    EXPECT_EQ(s.screenAfter(5000, 9), kQuestion);
    EXPECT_FALSE(s.sim().press(kBase1, 9, "1"));  // sent while the link is down
    EXPECT_EQ(s.screen(9), kLost);
    ASSERT_TRUE(s.sim().reconnect(kBase1));
    s.after(5000);

    s.g2().EndVote(true, false);
    EXPECT_EQ(s.screen(3), "   Vote Ended");
    EXPECT_EQ(s.screenAfter(1999, 3), "   Vote Ended");
    s.after(2);
    EXPECT_EQ(fields(s.screen(3), s.screen(99)), "|<Keypad 99 is not registered on base 100100100100>");
}

TEST(KeypadScreen, TheRequestPromptsShowWithoutAPrevote) {
    ScreenWorld s;
    s.g2().StartAudioRequests("0,11");  // the prompts: no prevote, no "sending" text
    EXPECT_EQ(s.screen(2), "  Press 0 to||  request mic");
    ASSERT_TRUE(s.sim().micRequest(kBase1, 2, false));
    EXPECT_EQ(s.screen(2), "  Press 0 to||  request mic");
    EXPECT_EQ(s.screenAfter(s.sim().eventDelayMs, 2), "    Request||   Submitted");
}
