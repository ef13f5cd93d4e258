// A vote slide's configuration as the display program reads it, the key lines it sends, and
// the result it shows.
#include <gtest/gtest.h>

#include "presentation/display/ResultView.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::fields;

TEST(VoteSetupText, TheDeckTagsReadAsTheyMean) {
    const VoteSetup s = readVoteSetup("TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>");
    EXPECT_EQ(fields(s.voteType, s.options, s.startFrom, s.problems.size()), "SINGLEDIGIT|4|1|0");
    EXPECT_EQ(setupLines(s, 4), (std::vector<std::string>{"votetype=SINGLEDIGIT", "options=4", "startfrom=1"}));

    const VoteSetup quiz = readVoteSetup(
        "tlxquiz", "<votetype>singledigit</votetype> <OPTIONS>3</OPTIONS><CorrectAnswer>2</CorrectAnswer>"
                   "<StartFrom>0</StartFrom><VoteName>Keys &amp; more</VoteName><KeypadsActive>3, 7,12</KeypadsActive>"
                   "<Abstain>9</Abstain><Seconds>20</Seconds><Question>How many?</Question><Rows>3</Rows>");
    EXPECT_EQ(fields(quiz.tag, quiz.voteType, quiz.correctAnswer, quiz.startFrom, quiz.seconds, quiz.question),
              "TLXQUIZ|SINGLEDIGIT|2|0|20|How many?");
    EXPECT_EQ(quiz.others, (std::vector<std::pair<std::string, std::string>>{{"Rows", "3"}}));
    EXPECT_EQ(setupLines(quiz, 3),
              (std::vector<std::string>{"votetype=SINGLEDIGIT", "options=3", "startfrom=0", "votename=Keys & more",
                                        "keypadsactive=3,7,12", "abstain=9"}));

    // A reshow names the slide whose results it shows again.
    EXPECT_EQ(readVoteSetup("TLXRESHOW", "2").reshowOf, 2);
}

TEST(VoteSetupText, UnreadableValuesKeepTheirDefaultsAndSaySo) {
    const VoteSetup s = readVoteSetup("TLXVOTE", "junk<Options>four</Options><StartFrom>-1</StartFrom><Abstain>2.5"
                                                 "</Abstain><KeypadsActive>3;x</KeypadsActive><VoteType></VoteType><B>1");
    EXPECT_EQ(setupLines(s, 10), (std::vector<std::string>{"votetype=SINGLEDIGIT", "options=10", "startfrom=1"}));
    EXPECT_EQ(s.problems, (std::vector<std::string>{
                              "text outside an element: \"junk\"", "<B> has no closing tag",
                              "text outside an element: \"1\"",
                              "<Options> \"four\" is not an option count from 1 to 1000",
                              "<StartFrom> \"-1\" is not a first option number from 0 to 1000",
                              "<Abstain> \"2.5\" is not an abstain key from 0 to 99",
                              "<KeypadsActive> \"3;x\" is not a list of keypad numbers",
                              "<VoteType> \"\" is not a vote type"}));
}

TEST(VoteSetupText, AValueCannotSmuggleInFurtherCommands) {
    const VoteSetup s = readVoteSetup("TLXVOTE", "<VoteName>Q1\r\nEXIT</VoteName><VoteType>9\nENDVOTE</VoteType>");
    const auto lines = setupLines(s, 2);
    for (const auto& l : lines) EXPECT_EQ(l.find_first_of("\r\n"), std::string::npos) << l;
    EXPECT_EQ(fields(lines[3], keypadListText(" 1, 2,,3 ")), "votename=Q1  EXIT|1,2,3");
}

namespace {

DisplayModel colours() {
    DisplayModel m;
    m.slide = 2;
    m.setup = readVoteSetup("TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>");
    m.options = 4;
    m.question = "Which colour do you like best?";
    m.labels = {"1. Red", "2. Green", "3. Blue", "4. Yellow"};
    m.tally.feed("numKeypads=80");
    return m;
}

std::vector<std::string> rowTexts(const std::vector<ResultRow>& rows) {
    std::vector<std::string> v;
    for (const auto& r : rows) v.push_back(r.answer + "|" + r.label + "|" + std::to_string(r.count));
    return v;
}

}  // namespace

TEST(ResultRows, OptionsFirstThenAbstentionsThenOtherAnswersInNumericOrder) {
    DisplayModel m = colours();
    m.tally.feed("[1;1],[2;1],[3;3],[4;-2],[5;10],[6;9],[7;5;2],[8;B],");
    EXPECT_EQ(rowTexts(resultRows(m)),
              (std::vector<std::string>{"1|Red|2", "2|Green|0", "3|Blue|1", "4|Yellow|0", "-2|abstain|1", "9||1",
                                        "10||1", "5;2||1", "B||1"}));
    const auto capped = resultRows(m, 2);
    EXPECT_EQ(rowTexts(capped).back(), "|... 2 more answers|2");
    EXPECT_DOUBLE_EQ(resultRows(m)[0].share, 25.0);

    // The leading number of an answer text goes; other texts stay as they are.
    EXPECT_EQ(fields(optionLabel("1", "1. Red"), optionLabel("2", "2) Green"), optionLabel("1", "10 green bottles"),
                     optionLabel("3", "Blue\tsky")),
              "Red|Green|10 green bottles|Blue sky");
}

TEST(ResultTable, ShowsEveryOptionVotersAndChangesAndMarksAQuizsAnswer) {
    DisplayModel m = colours();
    m.tally.feed("[1;1],[2;4],[3;4],[4;2],[1;2],");
    m.bases = 2;
    m.seconds = 6;
    const auto table = resultTable(m, 80);
    EXPECT_EQ(table, (std::vector<std::string>{
                         "Result: Which colour do you like best?",
                         "(slide 2, TLXVOTE, SINGLEDIGIT, 4 options from 1)",
                         " answer           votes    share",
                         "      1  Red          0     0.0%",
                         "      2  Green        2    50.0%  #######################",
                         "      3  Blue         0     0.0%",
                         "      4  Yellow       2    50.0%  #######################",
                         "voters: 4 of 80 keypads (5.0%)",
                         "votes received: 5 (1 changed answer)",
                         "open for 6.0 s on 2 base stations",
                     }));
    EXPECT_EQ(liveLine(m), "4 voters of 80, 5 votes, 1 changed | 1 Red: 0 | 2 Green: 2 | 3 Blue: 0 | 4 Yellow: 2");

    m.setup.correctAnswer = 2;
    m.tally.feed("[5;]x,");
    m.controllerGone = true;
    const auto quiz = resultTable(m, 80);
    EXPECT_EQ(quiz[4].substr(0, 16), "*     2  Green  ");
    EXPECT_NE(std::find(quiz.begin(), quiz.end(), "correct answer 2: 2 of 4 voters"), quiz.end());
    EXPECT_NE(std::find(quiz.begin(), quiz.end(), "records skipped (malformed): 1"), quiz.end());
    EXPECT_EQ(quiz.back(), "open for 6.0 s on 2 base stations; the controller left before the vote was ended");
}

TEST(ResultTable, TheChartFitsItsWidthAndNamesTheVote) {
    DisplayModel m = colours();
    m.question.clear();
    m.labels = {std::string(100, 'L')};
    m.tally.feed("[1;1],");
    for (int width : {40, 80, 132})
        for (const auto& line : chartLines(m, width)) EXPECT_LE(line.size(), static_cast<std::size_t>(width)) << line;
    // No terminal control from outside.
    EXPECT_EQ(fields(chartLines(m, 80).front(), printable("a\x1b[2Jb")), "slide 2|a [2Jb");
}
