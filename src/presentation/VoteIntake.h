#pragma once
// Vote intake: each base's key presses become system keypad numbers, are sorted into
// accepted and rejected, counted, and travel on to the display programs in batches.
#include <cstdint>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/BaseDrivers.h"

namespace tlx {

class Controller;

class VoteIntakeModule : public VoteIntake {
public:
    explicit VoteIntakeModule(Controller& controller);

    void SendVotes(std::vector<float>& keypads, std::vector<std::string>& votes, double time,
                   int baseIndex) override;
    void tmr_VotesRxBuffer_Timer();
    void tmr_simulateVotes_Timer();

    // A vote starts: the voter list and the counters begin again.
    void resetForVote();
    void seed(std::uint32_t s) { random_.seed(s); }

    const std::string& buffer() const { return buffer_; }
    long long acceptedTotal() const { return acceptedTotal_; }
    long long receivedTotal() const { return receivedTotal_; }
    long long distinctVoters() const { return voterCount_; }
    bool isVoter(const std::string& keypad) const;

    // Handing on happens at once when the buffer reaches this many characters.
    static constexpr std::size_t kBatchCharacters = 500;

private:
    void intake(class MainForm& m, std::vector<float>& keypads, std::vector<std::string>& votes, int baseIndex,
                std::size_t start);
    int randomBetween(int lo, int hi);
    void showCounters();
    // Adds the keypad (its number when whole, else -1; and its text) to the voter list; true
    // when it was not there yet.
    bool addVoter(long long number, const std::string& text);
    Controller& c_;
    std::string buffer_;
    // The voter list ("|" + keypad + "|" for each): whole keypad numbers as bits by number, so
    // that a whole system's list stays in the nearest cache, anything else as text.
    std::vector<bool> voterBits_;
    std::unordered_set<std::string> otherVoters_;
    long long voterCount_ = 0;
    long long acceptedTotal_ = 0;
    long long receivedTotal_ = 0;
    std::mt19937 random_{20261122};
};

}  // namespace tlx
