// The display program's reading of the controller's texts and its live tally.
#include <gtest/gtest.h>

#include "presentation/display/VoteTally.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::fields;

namespace {

std::vector<std::string> records(const BatchRead& r) {
    std::vector<std::string> v;
    for (const auto& b : r.ballots) v.push_back(std::to_string(b.keypad) + ":" + b.vote);
    return v;
}

}  // namespace

TEST(VoteBatch, ReadsRecordsAsTheyComeMultiPartAndAbstentionsIncluded) {
    const BatchRead r = readVoteBatch("[12;3],[7;1],[45;-2],[9;5;2],[40950;10],");
    EXPECT_EQ(records(r), (std::vector<std::string>{"12:3", "7:1", "45:-2", "9:5;2", "40950:10"}));
    EXPECT_EQ(r.skipped, 0);
    // The last record of a line may go without its comma; blanks between records are no harm.
    EXPECT_EQ(records(readVoteBatch("[1;A], [2;B]")), (std::vector<std::string>{"1:A", "2:B"}));
}

TEST(VoteBatch, MalformedRecordsAreSkippedAndCountedNeverGuessed) {
    struct Case {
        const char* line;
        std::vector<std::string> kept;
        long long skipped;
    };
    const Case cases[] = {
        {"[;3],[7;1],", {"7:1"}, 1},                   // no keypad
        {"[x;3],[7;1],", {"7:1"}, 1},                  // keypad not a number
        {"[-4;3],[7;1],", {"7:1"}, 1},                 // negative keypad
        {"[0;3],[7;1],", {"7:1"}, 1},                  // keypad 0
        {"[1234567890;3],[7;1],", {"7:1"}, 1},         // more than nine digits
        {"[12;],[7;1],", {"7:1"}, 1},                  // no vote
        {"[12 3],[7;1],", {"7:1"}, 1},                 // no separator
        {"[12;3,[7;1],", {"7:1"}, 1},                  // cut record: reading goes on at the next "["
        {"[12;3", {}, 1},                              // cut at the end of the line
        {"[12;\x01],[7;1],", {"7:1"}, 1},              // control character in the vote
        {"[7;1],junk,[8;2],", {"7:1", "8:2"}, 1},      // stray text between records
        {"[7;1]]],", {"7:1"}, 1},                      // stray brackets
        {"[[[7;1],", {"7:1"}, 2},                      // doubled opening brackets
    };
    for (const auto& c : cases) {
        const BatchRead r = readVoteBatch(c.line);
        EXPECT_EQ(records(r), c.kept) << c.line;
        EXPECT_EQ(r.skipped, c.skipped) << c.line;
    }
}

TEST(ControllerText, LinesAreBatchesOrMessages) {
    EXPECT_EQ(controllerLines("[1;2],\r\n[3;4],\r\nnumKeypads=80"),
              (std::vector<std::string_view>{"[1;2],", "[3;4],", "numKeypads=80"}));
    // Lone line feeds or carriage returns also part lines; empty lines are dropped.
    EXPECT_EQ(controllerLines("a\nb\r\rc\r\n\r\n"), (std::vector<std::string_view>{"a", "b", "c"}));
    EXPECT_EQ(fields(isVoteBatch("  [1;2],"), isVoteBatch("offset=0,0,1,20,False")), "1|0");
}

TEST(VoteTally, ALaterVoteReplacesTheKeypadsEarlierOne) {
    VoteTally t;
    EXPECT_TRUE(t.add(7, "1"));
    EXPECT_TRUE(t.add(8, "1"));
    EXPECT_TRUE(t.add(7, "3"));   // keypad 7 changes its mind
    EXPECT_FALSE(t.add(8, "1"));  // the same answer again changes nothing
    EXPECT_EQ(fields(t.count("1"), t.count("3"), t.voters(), t.received(), t.changes(), t.voteOf(7)), "1|1|2|4|1|3");
    // An answer nobody holds any more leaves the list of answers.
    t.add(8, "-2");
    EXPECT_EQ(t.answers(), (std::map<std::string, long long>{{"-2", 1}, {"3", 1}}));
}

TEST(VoteTally, FeedTalliesBatchesWhileCountingAndKeepsTheOtherMessages) {
    VoteTally t;
    t.setCounting(false);
    VoteTally::Fed early = t.feed("[1;1],[2;2],");
    EXPECT_EQ(fields(early.ignored, t.voters()), "2|0");

    t.setCounting(true);
    const VoteTally::Fed fed =
        t.feed("[1;1],[2;2],\r\n[1;4],[x;1],\r\nnumKeypads=80\r\nStartListOfNames\r\nmaxKeypads=80\r\n=odd");
    EXPECT_EQ(fed.messages, (std::vector<std::string>{"numKeypads=80", "StartListOfNames", "maxKeypads=80", "=odd"}));
    EXPECT_EQ(fields(fed.ballots, fed.skipped, t.voteOf(1), t.info("NUMKEYPADS"), t.hasInfo("StartListOfNames")),
              "3|1|4|80|0");
    t.feed("maxKeypads=120");
    EXPECT_EQ(fields(t.info("maxKeypads"), t.infoCount("maxKeypads")), "120|2");
}
