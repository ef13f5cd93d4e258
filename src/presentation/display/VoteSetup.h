#pragma once
// What a vote slide asks of its display program: the slide's vote tag holds a short
// configuration text such as "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>", and the
// display program turns it into the key lines that configure the vote before STARTVOTE.
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tlx {

// The vote tags in the order a slide is searched for them.
inline constexpr const char* kDisplayVoteTags[] = {"TLXVOTE", "TLXQUIZ", "TLXTEAM", "TLXRESHOW", "TLXMATRIX"};

// The controller's option count when a vote does not set one.
inline constexpr int kDefaultOptionCount = 10;

struct VoteSetup {
    std::string tag = "TLXVOTE";
    std::string voteType = "SINGLEDIGIT";
    int options = 0;  // 0: not given (the answers on the slide, or the controller's default)
    int startFrom = 1;
    std::string voteName;
    std::string question;
    std::string keypadsActive;  // "3,7,12"; empty: every keypad
    std::optional<int> abstain;
    std::optional<int> correctAnswer;  // quizzes
    double seconds = 0;                // how long the vote stays open; 0: until told
    int reshowOf = 0;                  // TLXRESHOW: the slide whose results are shown again
    // Elements this program does not use, as they were written.
    std::vector<std::pair<std::string, std::string>> others;
    // Elements that could not be read (their defaults are left in place). A display program
    // runs no vote from a configuration with problems.
    std::vector<std::string> problems;
};

// Reads a tag's configuration text. Every element is optional; names are compared without
// regard to case; a value that cannot be read leaves the default and adds a problem.
VoteSetup readVoteSetup(std::string_view tag, std::string_view text);

// The element values of a configuration text, in order ("<A>1</A><B>x</B>" gives A=1, B=x);
// XML's five character entities are decoded. Text outside elements, and an element without
// its closing tag, are reported in `problems`.
std::vector<std::pair<std::string, std::string>> configElements(std::string_view text,
                                                                 std::vector<std::string>* problems = nullptr);

// A value made safe for one key line: line breaks (which would start further commands)
// become blanks, and blanks around it go.
std::string keyLineValue(std::string_view value);

// "3, 7,12" -> "3,7,12"; nullopt when the text holds anything but keypad numbers.
std::optional<std::string> keypadListText(std::string_view text);

// The key lines that configure the vote, in the order they are sent (STARTVOTE not included).
// `options` is the option count to send.
std::vector<std::string> setupLines(const VoteSetup& setup, int options);

}  // namespace tlx
