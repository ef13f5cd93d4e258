// The active list and the voter list answer by keypad number for plain whole numbers and by
// text for anything else; both must give what the text itself would.
#include <gtest/gtest.h>

#include "core/KeypadList.h"
#include "core/MainForm.h"
#include "presentation/VoteIntake.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(KeypadNumbers, TheActiveListByNumberAgreesWithItsText) {
    KeypadList list(",007,12,0,2000000,x,");
    EXPECT_TRUE(list.contains("007"));
    // "007" is written, "7" is not; 2,000,000 lies beyond the numbers kept as bits.
    std::string held;
    for (long long n : {7LL, 12LL, 0LL, 13LL, 120LL, 2000000LL, -12LL, 1LL << 40}) held += list.contains(n) ? '1' : '0';
    EXPECT_EQ(held, "01100100");
    // A new text forgets every number of the old one.
    list = ",3,";
    EXPECT_EQ(fields(list.contains(12LL), list.contains(0LL), list.contains(3LL)), "0|0|1");
    list = "";
    EXPECT_FALSE(list.contains(3LL));
}

TEST(KeypadNumbers, VotersAreCountedOnceByNumberOrByText) {
    TestWorld w;
    w.start();
    // One base counting from 1,048,570, so that its keypads straddle the numbers kept as bits.
    w.glo().bases = {{"100100100100", "KELVARIN COREHUB G2", 1, 4095, false, 0, 1048570}};
    auto& intake = static_cast<VoteIntakeModule&>(*w.c().intake);
    auto send = [&](std::vector<float> keypads) {
        std::vector<std::string> votes(keypads.size(), "1");
        intake.SendVotes(keypads, votes, 0.0, 0);
    };
    send({1, 5, 1, 5, 7, 10});  // 1048571 .. 1048580
    // 1048580 is kept as text.
    EXPECT_EQ(fields(intake.distinctVoters(), intake.isVoter("1048575"), intake.isVoter("1048580"),
                     intake.isVoter("1048572"), intake.isVoter("01048575"), w.main().txt_VoteCounter[2]),
              "4|1|1|0|0|4");
    // A new vote starts a new list, whichever way its voters were kept.
    intake.resetForVote();
    EXPECT_EQ(fields(intake.distinctVoters(), intake.isVoter("1048575"), intake.isVoter("1048580")), "0|0|0");
    send({5, 10});
    EXPECT_EQ(intake.distinctVoters(), 2);
}
