#include <gtest/gtest.h>

#include "core/GlobalState.h"
#include "drivers/DisplayTexts.h"
#include "drivers/VoteConfig.h"
#include "core/Text.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::fields;

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

TEST(VoteTypes, EveryNameAndAliasSendsItsCodeAndItsParameters) {
    struct Row {
        const char* name;
        const char* alias;
        int sent;
        int items;  // the count parameter: the options of an order or allocation, else 1
    };
    const Row rows[] = {{"SINGLEDIGIT", "9", 9, 2}, {"SINGLEITEM", "14", 14, 1}, {"MULTIDIGIT", "12", 12, 1},
                        {"NUMERIC", "99", 11, 1},   {"FRACTIONAL", "11", 11, 1}, {"TEXT", "7", 7, 1},
                        {"MESSAGE", "8", 8, 1},     {"EDIT", "2", 2, 1},         {"ALLOCATE", "6", 6, 6},
                        {"ORDER", "5", 5, 6},       {"SORT", "1", 1, 1},         {"TAG", "3", 3, 1}};
    GlobalState g;
    g.optionCount = 6;
    g.voteText = "Hello";
    for (const Row& r : rows)
        for (const std::string& t : {std::string(r.name), std::string(r.alias), toLower(r.name)}) {
            g.voteType = t;
            const auto b = build(g);
            ASSERT_TRUE(b.ok) << t;
            EXPECT_EQ(b.vote.VoteType, r.sent) << t;
            EXPECT_EQ(b.vote.ItemCount, r.items) << t;
            EXPECT_EQ(b.vote.AllowFraction, std::string(r.name) == "FRACTIONAL") << t;
            const bool message = std::string(r.name) == "MESSAGE" || std::string(r.name) == "TEXT";
            EXPECT_EQ(b.vote.MessageText, message ? "Hello" : "") << t;
            EXPECT_EQ(isSingleDigitVote(t), r.sent == 9) << t;
        }
}

TEST(VoteTypes, UnknownTypesLeaveTheVoteUnconfigured) {
    GlobalState g;
    for (const char* t : {"", "POLL", "10", "9x", "999"}) {
        g.voteType = t;
        const auto b = build(g);
        EXPECT_EQ(fields(b.ok, b.vote.VoteType), "0|0") << t;
    }
}

TEST(KeyMask, RangesAndListsOfAnswersSumTheirKeysBits) {
    struct Row {
        int from, count;
        const char* list;
        int mask;  // -1: the vote is refused
    };
    const Row rows[] = {
        {1, 4, "", 15},
        {0, 10, "", 1024 + 511},
        {5, 10, "", 16 + 32 + 64 + 128 + 256 + 2048 + 512},  // a range past the keys adds nothing for them
        {14, 3, "", 0},
        {-2, 4, "", 1024 + 1},
        {1, 4, "0,10", 3072},
        {1, 4, "11", 512},  // 10 and 11 are swapped in the key table
        {1, 4, "1, x, 2,,", 3},  // entries that are not numbers are skipped
        {1, 4, "12,13", 0},
        {1, 4, "1,14", -1},  // only a listed answer of 14 or more is an error
        {1, 4, "200", -1},
        {1, 10, "1,1", 2},  // the bits are summed, so a repeated answer counts twice
        {1, 10, "3,3,4", 4 + 4 + 8},
        {1, 10, "0,0", 2048},
    };
    GlobalState g;
    g.voteType = "SINGLEDIGIT";
    for (const Row& r : rows) {
        g.startFrom = static_cast<std::int16_t>(r.from);
        g.optionCount = static_cast<std::int16_t>(r.count);
        g.validAnswers = r.list;
        const auto b = build(g);
        EXPECT_EQ(b.ok ? b.vote.KeyMask : -1, r.mask) << r.from << " " << r.count << " '" << r.list << "'";
    }
    EXPECT_EQ(fields(keyMaskOfList("0,11"), keyMaskOfList("5,5,5")), fields(1024 + 512, 48));
}

TEST(VoteObject, TextsFlagsAndNumbersComeFromTheSettings) {
    GlobalState g;
    g.voteType = "SINGLEDIGIT";
    g.questionTextShort = "Q1";
    g.limits = 2;
    g.points = 3;
    g.allocation = 4;
    auto b = build(g);
    EXPECT_EQ(fields(b.vote.DisplayLetters, b.vote.DisplayAnswerNumbers), "0|1");
    EXPECT_EQ(describeVote(b.vote),
              "ovote.VoteType:9, oVote.VoteQuestionText:Q1, oVote.VoteText:Vote Submitted|||   Press 10|  to  "
              "revote, oVote.VoteEndedText:   Vote Ended, oVote.Limits:2, oVote.Points:3, oVote.Allocation:4");

    g.voteText = "Text Submitted|| Thanks for|     voting";
    g.voteEndedText = "Texting finished";
    g.kelvarinDisplay = 1;
    b = build(g);
    EXPECT_EQ(fields(b.vote.VoteText, b.vote.VoteEndedText, b.vote.DisplayLetters),
              "Text Submitted|| Thanks for|     voting|Texting finished|1");
    g.kelvarinDisplay = 2;
    b = build(g);
    EXPECT_EQ(fields(b.vote.DisplayLetters, b.vote.DisplayAnswerNumbers), "0|0");
}

TEST(VoteObject, CarriesEveryKeypadTextWithItsTimeAndTheFonts) {
    KeypadDisplayTexts t;
    t.PrevoteText = "Get ready";
    t.VotedText = "Sending";
    t.RevotedText = "Resending";
    t.VoteFailedText = "Failed";
    t.SignalLostDuringVoteText = "Lost (vote)";
    t.SignalLostDuringTransmitText = "Lost (send)";
    // Every time and font its own number, so that no two can be swapped unseen.
    t.PrevoteTextTime = 11;
    t.VoteFailedTextTime = 12;
    t.VoteSuccessTextTime = 13;
    t.VoteEndTextTime = 14;
    t.SignalLostDuringVoteTextTime = 15;
    t.SignalLostDuringTransmitTextTime = 16;
    t.TextVoteFontSize = 4;
    t.ListVoteFontSize = 5;
    GlobalState g;
    g.voteType = "TEXT";
    KelvarinVote v;
    ASSERT_TRUE(UpdateVoteObjectFromGlobalVariables(g, t, v));
    EXPECT_EQ(std::vector<std::string>({v.PrevoteText, v.VotedText, v.RevotedText, v.VoteFailedText,
                                        v.SignalLostDuringVoteText, v.SignalLostDuringTransmitText, v.AnswerText}),
              std::vector<std::string>({"Get ready", "Sending", "Resending", "Failed", "Lost (vote)", "Lost (send)", ""}));
    EXPECT_EQ(std::vector<int>({v.PrevoteTextTime, v.VoteFailedTextTime, v.VoteTextTime, v.VoteEndedTextTime,
                                v.SignalLostDuringVoteTextTime, v.SignalLostDuringTransmitTextTime,
                                v.TextVoteFontSize, v.ListVoteFontSize}),
              std::vector<int>({11, 12, 13, 14, 15, 16, 4, 5}));

    // The vote's own texts win over the settings'.
    g.prevoteText = "Question 3 coming";
    g.answerText = "A-D";
    ASSERT_TRUE(UpdateVoteObjectFromGlobalVariables(g, t, v));
    EXPECT_EQ(fields(v.PrevoteText, v.AnswerText), "Question 3 coming|A-D");
    // With the defaults, "UNUSED" goes as it stands.
    g.prevoteText.clear();
    ASSERT_TRUE(UpdateVoteObjectFromGlobalVariables(g, KeypadDisplayTexts{}, v));
    EXPECT_EQ(v.PrevoteText, "UNUSED");
}
