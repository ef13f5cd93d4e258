#pragma once
// What the display program shows: the vote it runs, the live tally as a bar chart or one line
// per update, and the final result table. Plain text; the terminal part only prints it.
#include <string>
#include <vector>

#include "presentation/display/VoteSetup.h"
#include "presentation/display/VoteTally.h"

namespace tlx {

struct DisplayModel {
    int slide = 0;
    VoteSetup setup;
    std::string question;
    std::vector<std::string> labels;  // the answers' texts on the slide, first option first
    int options = 0;                  // option count sent to the controller
    VoteTally tally;
    int bases = -1;        // base stations taking part (-1: not reported yet)
    double seconds = 0;    // how long the vote has been open
    bool ended = false;    // ENDVOTE has gone out (or the controller has gone)
    bool controllerGone = false;
};

struct ResultRow {
    std::string answer;  // as the keypads sent it: "3", "-2", "5;2"
    std::string label;   // the slide's text for an option, "abstain", or ""
    long long count = 0;
    double share = 0;     // percent of the voters
    bool offered = false;  // one of the vote's options
    bool correct = false;  // a quiz's correct answer
};

// One row per option of the vote (also those nobody chose), then abstentions, then any other
// answer the keypads sent (numbers first, in order; at most `maxOthers` of them, the rest in
// one row labelled "... N more answers").
std::vector<ResultRow> resultRows(const DisplayModel& m, std::size_t maxOthers = 12);

// The slide's answer text for an option with its leading number taken off ("1. Red" -> "Red").
std::string optionLabel(const std::string& answer, const std::string& text);
// The keypad count the controller reported (GETVOTEINFO's numKeypads), or 0.
long long reportedKeypads(const DisplayModel& m);
// The question, else the vote's name, else "slide N".
std::string voteTitle(const DisplayModel& m);
// "slide 2, TLXVOTE, SINGLEDIGIT, 4 options from 1"
std::string voteDescription(const DisplayModel& m);
// "35 voters of 80, 37 votes, 2 changed"
std::string voterSummary(const DisplayModel& m);

// One line for an update: "35 voters of 80, 37 votes | 1 Red: 10 | 2 Green: 9 | ...".
std::string liveLine(const DisplayModel& m);
// The live bar chart, `width` characters wide.
std::vector<std::string> chartLines(const DisplayModel& m, int width);
// The final result table: title, description, column heads, a line per row, then the summary.
std::vector<std::string> resultTable(const DisplayModel& m, int width);
// The lines under the table: voters, votes received, skipped records, a quiz's correct
// answer, how long the vote was open.
std::vector<std::string> resultSummary(const DisplayModel& m);
// "66.7%"
std::string shareText(double share);

// Text safe to print on a terminal: control characters become blanks.
std::string printable(std::string_view text);

}  // namespace tlx
