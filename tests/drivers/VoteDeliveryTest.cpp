#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "core/SmallForms.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";
const std::string kBase2 = "100100100200";
}  // namespace

TEST(VoteDelivery, IdenticalPressesFromOneKeypadGiveOneVoteUntilTheNextVoteOrWhenAllowed) {
    DriverWorld d;
    d.singleDigit();
    d.g2().StartVote();
    d.sim().press(kBase1, 7, "2");
    d.sim().press(kBase1, 7, "2");
    d.settle();
    EXPECT_EQ(fields(d.intake.votes().size(), d.intake.votes().at(0), d.g2().logged("Duplicate Vote Received 300100007: 2")),
              "1|2|1");
    d.sim().press(kBase1, 7, "3");  // a changed answer passes
    d.sim().press(kBase1, 8, "3");  // as does another keypad's
    d.settle();
    EXPECT_EQ(d.intake.votes(), (std::vector<std::string>{"2", "3", "3"}));
    ASSERT_EQ(d.intake.records.size(), 3u);
    EXPECT_EQ(d.intake.records[2].keypads, std::vector<float>{8});

    // The same key passes in the next vote (the base numbers its votes) or when allowed.
    const auto votesAfterPress = [&] {
        d.sim().press(kBase1, 8, "3");
        d.settle();
        return d.intake.votes().size();
    };
    d.g2().EndVote(true, false);
    d.g2().StartVote();
    EXPECT_EQ(votesAfterPress(), 4u);
    d.g2().AllowDuplicateVotes(true);
    EXPECT_EQ(votesAfterPress(), 5u);
}

TEST(VoteDelivery, EventsComeInOrderAndCarryTheBaseAndRegistryNumber) {
    DriverWorld d({kBase1, kBase2});
    d.singleDigit();
    d.g2().StartVote();
    std::vector<std::string> seen;
    d.g2().VoteReceived.connect([&](int keypad, const std::string& data, const std::string& f3,
                                    const std::string& f4, const std::string& base, const std::string& hid, double) {
        seen.push_back("vote " + std::to_string(keypad) + " " + data + " " + f3 + " " + f4 + " " + base + " " + hid);
    });
    d.g2().VoteReceivedObject.connect(
        [&](const KelvarinVote& v, const std::string& base) { seen.push_back("object " + v.HID + " " + base); });
    d.g2().MicRequest.connect([&](const KelvarinVote&, const std::string&, bool) { seen.push_back("mic"); });
    d.sim().press(kBase2, 5, " 3 ");
    d.settle();
    EXPECT_EQ(seen, (std::vector<std::string>{"vote 5 3 385 -45 1 300110005", "object 300110005 1"}));
    ASSERT_EQ(d.intake.records.size(), 1u);
    EXPECT_EQ(fields(d.intake.records[0].base, d.g2().logged("1 - VoteReceived Event - HID:300110005, VoteData:3")), "1|1");
    const auto entry = d.g2().GetKeypadConfigFromLocalRegCollection("1", "300110005");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(fields(entry->battery, entry->signal), "385|-45");
}

TEST(VoteDelivery, KeypadsVoteOnlyWhileAVoteIsOpenAndAsItsTypeAllows) {
    DriverWorld d;
    EXPECT_FALSE(d.sim().press(kBase1, 1, "1"));
    d.singleDigit(4);
    d.g2().StartVote();
    EXPECT_FALSE(d.sim().press(kBase1, 1, "5"));  // outside the key mask
    EXPECT_FALSE(d.sim().text(kBase1, 1, "hello"));
    EXPECT_FALSE(d.sim().press(kBase1, 99, "1"));  // not registered
    EXPECT_FALSE(d.sim().press("999", 1, "1"));

    const auto vote = [&](const char* type) {
        d.g2().EndVote(true, false);
        d.glo().voteType = type;
        d.g2().StartVote();
    };
    vote("NUMERIC");
    EXPECT_FALSE(d.sim().press(kBase1, 1, "1.5"));
    EXPECT_TRUE(d.sim().press(kBase1, 1, "15"));
    vote("FRACTIONAL");
    EXPECT_TRUE(d.sim().press(kBase1, 2, "1.5"));
    vote("TEXT");
    EXPECT_TRUE(d.sim().text(kBase1, 3, "More coffee"));
    d.settle();
    EXPECT_EQ(d.intake.votes(), (std::vector<std::string>{"15", "1.5", "More coffee"}));
    d.g2().EndVote(true, false);
    EXPECT_FALSE(d.sim().press(kBase1, 4, "1"));
    EXPECT_EQ(d.station().keypadBySid(3)->display, "   Vote Ended");
}

TEST(ControllerVote, LetterAnswersBecomeNumbersOnlyForLetterKeypads) {
    DriverWorld d;
    auto send = [&](const std::string& data) {
        d.intake.records.clear();
        d.drivers.VoteReceived(1, data, "385", "-45", "0", "300100001", 0.0);
        return d.intake.records.empty() ? std::string("<dropped>") : d.intake.records[0].votes[0];
    };
    struct Case {
        const char* type;
        int display;  // 1: keypads that show letters
        const char* sent;
        const char* handedOn;
    };
    const Case cases[] = {{"SINGLEDIGIT", 0, "B", "B"}, {"SINGLEDIGIT", 1, "B", "2"},  {"SINGLEDIGIT", 1, "A", "1"},
                          {"SINGLEDIGIT", 1, "I", "9"}, {"SINGLEDIGIT", 1, "J", "J"},  {"SINGLEDIGIT", 1, "AB", "AB"},
                          {"SINGLEDIGIT", 1, "b", "b"}, {"SINGLEDIGIT", 1, "7", "7"},  {"9", 1, "C", "3"},
                          {"MULTIDIGIT", 1, "C", "C"},  {"MULTIDIGIT", 1, "", "<dropped>"}, {"MULTIDIGIT", 1, "  ", "<dropped>"}};
    for (const Case& c : cases) {
        d.glo().voteType = c.type;
        d.glo().kelvarinDisplay = c.display;
        EXPECT_EQ(send(c.sent), c.handedOn) << c.type << " " << c.display << " '" << c.sent << "'";
    }
    // From the keypad: a letter the vote does not take (E is key 5) goes nowhere.
    d.singleDigit(4);
    d.intake.records.clear();
    d.g2().StartVote();
    EXPECT_TRUE(d.sim().press(kBase1, 2, "C"));
    EXPECT_FALSE(d.sim().press(kBase1, 3, "E"));
    d.settle();
    EXPECT_EQ(d.intake.votes(), std::vector<std::string>{"3"});
    d.w.c().forms.load<KeypadTestForm>(d.w.c());  // the keypad test wants the readings too
    EXPECT_EQ(send("4"), "4;385;-45");
}

TEST(ControllerVote, NothingIsHandedOnBeforeInitialisationOrWithoutIntake) {
    DriverWorld d({kBase1}, 10, false);
    d.drivers.VoteReceived(1, "1", "", "", "0", "", 0.0);
    EXPECT_TRUE(d.intake.records.empty());
    d.start();
    d.w.c().voteIntake = nullptr;
    d.drivers.VoteReceived(1, "1", "", "", "0", "", 0.0);  // no intake, no crash
    d.w.c().voteIntake = &d.intake;
    d.glo().ShuttingDown = true;
    d.drivers.VoteReceived(1, "1", "", "", "0", "", 0.0);
    EXPECT_TRUE(d.intake.records.empty());
}

TEST(VoteDelivery, TheVoteCarriesTheTimeTheBaseTookItNotTheTimeItArrived) {
    DriverWorld d;
    d.singleDigit();
    d.g2().StartVote();
    d.sim().eventDelayMs = 2500;  // a slow link: the event comes long after the press
    d.w.scheduler.advance(1000);
    const double pressed = d.w.scheduler.now().secondsSinceMidnight();
    ASSERT_TRUE(d.sim().press(kBase1, 4, "2"));
    d.w.scheduler.advance(3000);
    ASSERT_EQ(d.intake.records.size(), 1u);
    EXPECT_DOUBLE_EQ(d.intake.records[0].time, pressed);
    EXPECT_GT(d.w.scheduler.now().secondsSinceMidnight() - d.intake.records[0].time, 2.9);
}

TEST(VoteDelivery, MicrophoneRequestsAndWithdrawalsWhileRequestsAreOnAPresentersLikeAnyOther) {
    DriverWorld d({kBase1}, 5, false);
    d.station().setup.keypads.push_back(simDevice("300199901", 99, DeviceKind::Presenter));
    d.start();
    ASSERT_EQ(d.g2().GetFirstPresentersHID(), "300199901");
    std::vector<std::string> mics, presenterMics;
    d.g2().MicRequest.connect([&](const KelvarinVote& v, const std::string& base, bool startNow) {
        mics.push_back(v.HID + " " + v.VoteReplyData + "@" + base + (startNow ? " now" : ""));
    });
    d.g2().PresenterMicRequest.connect(
        [&](const KelvarinVote& v, const std::string&, bool) { presenterMics.push_back(v.HID); });
    EXPECT_FALSE(d.sim().micRequest(kBase1, 3, false));  // nothing open yet
    d.g2().StartAudioRequests("0,11");
    EXPECT_TRUE(d.sim().micRequest(kBase1, 3, false));
    d.settle();
    EXPECT_TRUE(d.sim().micRequest(kBase1, 3, true));
    ASSERT_TRUE(d.sim().micRequest(kBase1, 99, false));
    d.settle();
    EXPECT_FALSE(d.sim().press(kBase1, 3, "2"));  // only the request keys count
    EXPECT_EQ(fields(join(mics, ","), presenterMics.size()), "300100003 0@0,300100003 *@0,300199901 0@0|0");
    d.g2().EndAudioRequests();
    EXPECT_EQ(fields(d.station().voteOpen, d.g2().audioRequestsOn()), "0|0");
}
