#pragma once
// The display program's side of the vote data: the controller's texts ("\r\n" between lines,
// each line a batch of "[keypad;vote]," records or another message such as a "key=value"
// reply), and the live tally built from the records: one answer per keypad, a later vote
// replacing the earlier one.
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tlx {

struct Ballot {
    long long keypad = 0;
    std::string vote;  // as it came: "3", "5;2", "-2"
};

struct BatchRead {
    std::vector<Ballot> ballots;
    long long skipped = 0;  // malformed records (and stray text between records)
};

// Whether a line of the controller's text is a vote batch (it starts with "[").
bool isVoteBatch(std::string_view line);

// Reads the records of one batch line. A record is "[" + keypad + ";" + vote + "]" followed by
// "," (or the end of the line): the keypad a whole number from 1 to 999,999,999, the vote any
// text without brackets or control characters. Anything else counts as skipped, and reading
// goes on at the next "[".
BatchRead readVoteBatch(std::string_view line);

// The lines of a controller text: split at "\r\n" (a lone "\n" or "\r" too), empty lines left out.
std::vector<std::string_view> controllerLines(std::string_view text);

class VoteTally {
public:
    // Adds one vote; returns true when it changed the keypad's answer (or is its first).
    bool add(long long keypad, const std::string& vote);

    // One text from the controller. Vote records are tallied while counting; other lines are
    // kept as messages, "key=value" ones also by key (the latest value wins).
    struct Fed {
        long long ballots = 0;  // records tallied
        long long ignored = 0;  // records that came while not counting
        long long skipped = 0;  // malformed records
        std::vector<std::string> messages;
    };
    Fed feed(std::string_view text);

    void setCounting(bool on) { counting_ = on; }
    bool counting() const { return counting_; }

    long long voters() const { return static_cast<long long>(byKeypad_.size()); }
    long long received() const { return received_; }
    long long changes() const { return changes_; }
    long long skipped() const { return skipped_; }
    long long ignored() const { return ignored_; }
    // How many keypads hold this answer now.
    long long count(const std::string& answer) const;
    // Every answer held by at least one keypad, with its keypad count.
    const std::map<std::string, long long>& answers() const { return counts_; }
    // The keypad's current answer ("" when it has not voted).
    std::string voteOf(long long keypad) const;
    // The latest value of a "key=value" message, key compared without regard to case.
    std::string info(std::string_view key) const;
    bool hasInfo(std::string_view key) const;
    // How many times a "key=value" message with this key has come.
    long long infoCount(std::string_view key) const;

private:
    bool counting_ = true;
    std::unordered_map<long long, std::string> byKeypad_;
    std::map<std::string, long long> counts_;
    std::map<std::string, std::pair<std::string, long long>> info_;  // lower-case key -> value, times
    long long received_ = 0;
    long long changes_ = 0;
    long long skipped_ = 0;
    long long ignored_ = 0;
};

}  // namespace tlx
