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
    long long distinctVoters() const { return static_cast<long long>(voters_.size()); }
    bool isVoter(const std::string& keypad) const { return voters_.count(keypad) != 0; }

    // Handing on happens at once when the buffer reaches this many characters.
    static constexpr std::size_t kBatchCharacters = 500;

private:
    void intake(class MainForm& m, std::vector<float>& keypads, std::vector<std::string>& votes, int baseIndex,
                std::size_t start);
    int randomBetween(int lo, int hi);
    void showCounters();
    Controller& c_;
    std::string buffer_;
    std::unordered_set<std::string> voters_;  // "|" + keypad + "|" in the voter list
    long long acceptedTotal_ = 0;
    long long receivedTotal_ = 0;
    std::mt19937 random_{20261122};
};

}  // namespace tlx
