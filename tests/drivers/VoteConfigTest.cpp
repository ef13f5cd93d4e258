#include <gtest/gtest.h>

#include "core/GlobalState.h"
#include "drivers/DisplayTexts.h"
#include "drivers/VoteConfig.h"

using namespace tlx;

namespace {
struct Built {
    bool ok;
    KelvarinVote vote;
};
Built build(GlobalState& g) {
    KelvarinVote v;
    const bool ok = UpdateVoteObjectFromGlobalVariables(g, KeypadDisplayTexts{}, v);
    return {ok, v};
}
}  // namespace

TEST(VoteTypes, NamesAndAliasesMapToTheCodeSent) {
    GlobalState g;
    for (const char* t : {"99", "NUMERIC", "numeric"}) {
        g.voteType = t;
        const auto b = build(g);
        ASSERT_TRUE(b.ok) << t;
        EXPECT_EQ(b.vote.VoteType, 11) << t;
        EXPECT_FALSE(b.vote.AllowFraction) << t;
    }
    for (const char* t : {"11", "FRACTIONAL"}) {
        g.voteType = t;
        const auto b = build(g);
        ASSERT_TRUE(b.ok) << t;
        EXPECT_EQ(b.vote.VoteType, 11) << t;
        EXPECT_TRUE(b.vote.AllowFraction) << t;
    }
    g.voteType = "ORDER";
    g.optionCount = 6;
    EXPECT_EQ(build(g).vote.VoteType, 5);
    EXPECT_EQ(build(g).vote.ItemCount, 6);
    g.voteType = "14";
    EXPECT_EQ(build(g).vote.VoteType, 14);
    EXPECT_EQ(build(g).vote.ItemCount, 1);
    g.voteType = "MESSAGE";
    g.voteText = "Hello";
    EXPECT_EQ(build(g).vote.MessageText, "Hello");
}

TEST(VoteTypes, UnknownTypesLeaveTheVoteUnconfigured) {
    GlobalState g;
    for (const char* t : {"", "POLL", "10", "9x", "999"}) {
        g.voteType = t;
        const auto b = build(g);
        EXPECT_FALSE(b.ok) << t;
        EXPECT_EQ(b.vote.VoteType, 0) << t;
    }
}

TEST(KeyMask, RangeAndListOfAnswers) {
    GlobalState g;
    g.voteType = "SINGLEDIGIT";
    g.startFrom = 1;
    g.optionCount = 4;
    auto b = build(g);
    ASSERT_TRUE(b.ok);
    EXPECT_EQ(b.vote.VoteType, 9);
    EXPECT_EQ(b.vote.KeyMask, 15);
    EXPECT_EQ(b.vote.ItemCount, 2);

    g.validAnswers = "0,10";
    EXPECT_EQ(build(g).vote.KeyMask, 3072);
    g.validAnswers = "11";  // 10 and 11 are swapped in the key table
    EXPECT_EQ(build(g).vote.KeyMask, 512);
    g.validAnswers = "1, x, 2,,";  // entries that are not numbers are skipped
    EXPECT_EQ(build(g).vote.KeyMask, 3);
    g.validAnswers = "12,13";
    EXPECT_EQ(build(g).vote.KeyMask, 0);
    g.validAnswers = "1,14";
    EXPECT_FALSE(build(g).ok);

    g.validAnswers.clear();
    g.startFrom = 0;
    g.optionCount = 10;  // 0..9
    EXPECT_EQ(build(g).vote.KeyMask, 1024 + 511);
    g.startFrom = 5;  // 5..14 runs off the keypad
    EXPECT_FALSE(build(g).ok);
}

TEST(VoteObject, TextsFlagsAndNumbersComeFromTheSettings) {
    GlobalState g;
    g.voteType = "SINGLEDIGIT";
    g.questionTextShort = "Q1";
    g.limits = 2;
    g.points = 3;
    g.allocation = 4;
    auto b = build(g);
    EXPECT_EQ(b.vote.VoteQuestionText, "Q1");
    EXPECT_EQ(b.vote.VoteText, "Vote Submitted|||   Press 10|  to  revote");
    EXPECT_EQ(b.vote.VoteEndedText, "   Vote Ended");
    EXPECT_FALSE(b.vote.DisplayLetters);
    EXPECT_TRUE(b.vote.DisplayAnswerNumbers);
    EXPECT_EQ(describeVote(b.vote),
              "ovote.VoteType:9, oVote.VoteQuestionText:Q1, oVote.VoteText:Vote Submitted|||   Press 10|  to  "
              "revote, oVote.VoteEndedText:   Vote Ended, oVote.Limits:2, oVote.Points:3, oVote.Allocation:4");

    g.voteText = "Text Submitted|| Thanks for|     voting";
    g.voteEndedText = "Texting finished";
    g.kelvarinDisplay = 1;
    b = build(g);
    EXPECT_EQ(b.vote.VoteText, "Text Submitted|| Thanks for|     voting");
    EXPECT_EQ(b.vote.VoteEndedText, "Texting finished");
    EXPECT_TRUE(b.vote.DisplayLetters);
    g.kelvarinDisplay = 2;
    b = build(g);
    EXPECT_FALSE(b.vote.DisplayLetters);
    EXPECT_FALSE(b.vote.DisplayAnswerNumbers);
}
