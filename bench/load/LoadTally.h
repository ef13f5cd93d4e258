#pragma once
// What the load driver checks and measures, apart from processes and the bus: the schedule of
// key presses a burst makes, the vote records a bus client hears, whether each keypad's vote
// arrived exactly once, and the latency figures.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tlx::load {

// N bases of K keypads each; base b (0-based) holds the system keypads b*K+1 .. b*K+K. The
// simulated base presses its keypads in registry order, keypad i (0-based) at
// round(i * 1000 / perSecond) ms after the burst call reached it.
struct BurstPlan {
    int bases = 1;
    int keypads = 1000;
    int perSecond = 1000;
    // When each base's burst began, on the monotonic clock in nanoseconds.
    std::vector<std::int64_t> originNs;

    int total() const { return bases * keypads; }
    // Press time of a system keypad, or -1 when no keypad of the burst has that number.
    std::int64_t pressNs(int systemKeypad) const;
};

// One record a client heard: the system keypad, its vote, and when the client got it.
struct Receipt {
    int keypad = 0;
    std::string vote;
    std::int64_t receivedNs = 0;
};

// Reads the vote records "[keypad;vote]," of one outgoing-data event (batches joined by
// "\r\n"). Lines that are not vote records (command replies) are skipped; a line that starts
// as records and then breaks counts as malformed.
struct ParsedEvent {
    std::vector<std::pair<int, std::string>> records;
    int malformed = 0;
};
ParsedEvent parseVoteEvent(std::string_view text);

// Nearest-rank percentile of the samples (p in 0..100); 0 when there are none.
double percentile(std::vector<double> samples, double p);
double median(std::vector<double> samples);

struct ClientTally {
    int delivered = 0;   // keypads of the burst heard at least once
    int missing = 0;     // keypads of the burst never heard
    int duplicates = 0;  // records heard more than once for one keypad
    int unknown = 0;     // records of keypads outside the burst
    int badVotes = 0;    // records whose vote is not one of the burst's answers
    std::vector<double> latencyMs;  // first receipt of each keypad, from its press
    // Per event heard (its records share one receipt time): the latency of its youngest
    // vote, which waited on no timer. What is left of it beyond the base's own report delay
    // is the road itself: the controller's work, the bus and the client waking.
    std::vector<double> youngestMs;
    bool exactlyOnce() const { return missing == 0 && duplicates == 0 && unknown == 0 && badVotes == 0; }
};

// Checks one client's receipts against the plan; `answers` are the allowed votes ("1234").
ClientTally tally(const BurstPlan& plan, const std::vector<Receipt>& receipts, std::string_view answers);

struct LatencySummary {
    double p50 = 0, p99 = 0, max = 0;
};
LatencySummary summarise(const std::vector<double>& latencyMs);

}  // namespace tlx::load
