#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "core/Text.h"
#include "presentation/VoteIntake.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct IntakeWorld : TestWorld {
    IntakeWorld() {
        start();
        glo().bases = {{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0},
                       {"200200200200", "KELVARIN COREHUB G2", 1, 40, false, 0, 100}};
        main().FromCtrlForm.connect([this](const std::string& s) { sent.push_back(s); });
    }
    // One base's key presses, as a driver event hands them over.
    void votes(int base, std::vector<std::pair<float, std::string>> v) {
        std::vector<float> k;
        std::vector<std::string> d;
        for (auto& [kp, data] : v) {
            k.push_back(kp);
            d.push_back(data);
        }
        c().intake->SendVotes(k, d, 0.0, base);
    }
    void flush() { scheduler.advance(100); }
    std::vector<std::string> sent;
};
}  // namespace

TEST(VoteIntake, AcceptedVotesTravelAsOneBatchInArrivalOrder) {
    IntakeWorld w;
    w.votes(0, {{12, "3"}, {7, "1"}});
    w.votes(1, {{5, "-2"}});  // the second base counts from 100
    w.flush();
    ASSERT_EQ(w.sent, std::vector<std::string>{"[12;3],[7;1],[105;-2],"});
    EXPECT_EQ(fields(w.logged(" - TX - [12;3],[7;1],[105;-2],"), w.main().txt_VoteCounter[0]), "1|3");
}

TEST(VoteIntake, HighestKeypadOfTheBaseIsTheLimit) {
    IntakeWorld w;
    w.votes(0, {{40, "1"}, {41, "2"}});
    w.flush();
    ASSERT_EQ(w.sent, std::vector<std::string>{"[40;1],"});
    for (const char* line : {" - TX - NOT SENT: [41;2],", " - XX - KPADS ACTIVE: ", " - XX - MAX KPAD NUM: 40"})
        EXPECT_TRUE(w.logged(line)) << line;
    // An offset base's limit moves with it.
    w.votes(1, {{40, "1"}, {41, "1"}});
    w.flush();
    EXPECT_EQ(fields(w.sent.back(), w.logged("NOT SENT: [141;1],") && w.logged("MAX KPAD NUM: 140")), "[140;1],|1");
}

TEST(VoteIntake, ActiveKeypadListIsMatchedWholeNumbersOnly) {
    IntakeWorld w;
    w.glo().ActiveKeypads = ",3,7,";
    w.votes(0, {{37, "1"}, {7, "2"}, {3, "4"}, {73, "1"}});
    w.flush();
    ASSERT_EQ(w.sent, std::vector<std::string>{"[7;2],[3;4],"});
    EXPECT_TRUE(w.logged("NOT SENT: [37;1],[73;1],") && w.logged("KPADS ACTIVE: ,3,7,"));
    // The keypad test lets every keypad through.
    w.main().keypadTestActive = true;
    w.votes(0, {{37, "1"}});
    w.flush();
    EXPECT_EQ(w.sent.back(), "[37;1],");
}

TEST(VoteIntake, RepeatVotesAreForwardedButCountOneVoter) {
    IntakeWorld w;
    w.votes(0, {{5, "1"}});
    w.votes(0, {{5, "2"}});
    w.votes(0, {{6, "2"}});
    w.flush();
    ASSERT_EQ(w.sent, std::vector<std::string>{"[5;1],[5;2],[6;2],"});
    EXPECT_EQ(fields(w.c().intake->distinctVoters(), w.main().txt_VoteCounter[2], w.main().txt_VoteCounter[0]), "2|2|3");
    w.c().intake->resetForVote();  // a new vote, a new voter list (KeypadNumbersTest: both ways of keeping it)
    EXPECT_EQ(w.main().txt_VoteCounter[2], "0");
}

TEST(VoteIntake, TheAbstainLineMakesItsKeyMinusTwoComparingTheFirstPartAsANumber) {
    IntakeWorld w;
    w.main().AddDataToCommandQueue("abstain=5");
    w.scheduler.advance(60);
    w.votes(0, {{1, "5"}, {2, "05;2"}, {3, "5;2"}, {4, "2;5"}, {5, "15"}, {6, "4"}});
    w.flush();
    EXPECT_EQ(w.sent.back(), "[1;-2],[2;-2;2],[3;-2;2],[4;2;5],[5;15],[6;4],");
    w.main().AddDataToCommandQueue("abstain=0");
    w.scheduler.advance(60);
    w.votes(0, {{1, "5"}});
    w.flush();
    EXPECT_EQ(w.sent.back(), "[1;5],");
}

TEST(VoteIntake, AFullBufferIsHandedOnInTheSameCall) {
    IntakeWorld w;
    w.glo().bases[0].gridHi = 4095;
    std::vector<std::pair<float, std::string>> many;
    for (int k = 1000; k < 1080; ++k) many.push_back({static_cast<float>(k), "1"});  // 80 x "[1000;1]," = 720
    w.votes(0, many);
    // Handed to the transmit queue at once, not after the buffer timer's tick.
    EXPECT_TRUE(w.c().intake->buffer().empty());
    EXPECT_EQ(fields(w.main().txt_data.size(), w.main().tmr_VotesRxBuffer.enabled()), "720|0");
    // A small batch waits for the tick.
    w.flush();
    w.votes(0, {{1, "1"}});
    EXPECT_EQ(fields(w.c().intake->buffer(), w.main().txt_data), "[1;1],|");
    w.scheduler.advance(10);
    EXPECT_EQ(fields(w.c().intake->buffer(), w.main().txt_data), "|[1;1],");
}

TEST(VoteIntake, BatchesQueuedBetweenTwoSendsArriveInOneEvent) {
    IntakeWorld w;
    w.votes(0, {{1, "1"}});
    w.scheduler.advance(10);  // the buffer's tick: first batch queued
    w.votes(0, {{2, "2"}});
    w.scheduler.advance(10);  // second batch queued before the 50 ms send
    w.flush();
    EXPECT_EQ(w.sent, std::vector<std::string>{"[1;1],\r\n[2;2],"});
}

TEST(VoteIntake, CountersAreGroupedByThousands) {
    IntakeWorld w;
    w.glo().bases[0].gridHi = 4095;
    std::vector<std::pair<float, std::string>> many;
    for (int i = 0; i < 1234; ++i) many.push_back({static_cast<float>(1 + i % 4000), "1"});
    w.votes(0, many);
    w.flush();
    EXPECT_EQ(fields(w.main().txt_VoteCounter[0], w.main().txt_VoteCounter[2]), "1,234|1,234");
}

TEST(VoteSimulator, BatchesOfRandomVotesWithinTheLimits) {
    IntakeWorld w;
    w.main().txt_simulateVotesMaxKpadNum = "20";
    w.main().txt_simulateVotesCount = "4";
    w.main().cmd_start_Click();
    w.scheduler.advance(25 * 8);
    w.main().cmd_Stop_Click();
    w.flush();
    ASSERT_FALSE(w.sent.empty());
    int records = 0;
    for (const auto& event : w.sent)
        for (const auto& line : split(event, "\r\n"))
            for (const auto& rec : split(line, "],")) {
                if (rec.empty()) continue;
                ASSERT_EQ(rec[0], '[');
                const auto [kp, vote] = splitOnce(rec.substr(1), ";");
                EXPECT_GE(ParseNumber(kp), 1);
                EXPECT_LE(ParseNumber(kp), 20);
                EXPECT_GE(ParseNumber(vote), 1);
                EXPECT_LE(ParseNumber(vote), 9);
                ++records;
            }
    EXPECT_GE(records, 8);
    EXPECT_LE(records, 32);
}

TEST(VoteIntake, ABatchReachesTheOutgoingEventWithoutBeingCopiedOnTheWay) {
    IntakeWorld w;
    w.glo().bases[0].gridHi = 4095;
    std::vector<std::pair<float, std::string>> many;
    for (int k = 1000; k < 1020; ++k) many.push_back({static_cast<float>(k), "1"});
    w.votes(0, many);
    const char* storage = w.c().intake->buffer().data();
    const char* raised = nullptr;
    w.main().FromCtrlForm.connect([&raised](const std::string& s) { raised = s.data(); });
    w.flush();
    // The buffer's own storage became the transmit queue and then the event's text.
    EXPECT_EQ(raised, storage);
    EXPECT_EQ(w.sent.back().size(), 20u * 9u);

    // Behind text already queued it is appended once.
    w.main().AddDataToTxQueue("GETVOTEINFO reply");
    w.votes(0, {{7, "2"}});
    w.scheduler.advance(10);
    EXPECT_EQ(w.main().txt_data, "GETVOTEINFO reply\r\n[7;2],");
}
