#include "presentation/VoteIntake.h"

#include <algorithm>
#include <cmath>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"

namespace tlx {

namespace {
constexpr const char* kForm = "tallix_controller";

// The keypad number as the vote record writes it.
std::string keypadText(float keypad) { return numText(static_cast<double>(keypad)); }

// The keypad as a whole number the lists keep by number, or -1 (its text is then the key).
long long wholeKeypad(float keypad) {
    if (!(keypad >= 0.0f) || keypad >= static_cast<float>(KeypadList::kDenseKeypads)) return -1;
    const auto n = static_cast<long long>(keypad);
    return static_cast<float>(n) == keypad ? n : -1;
}

// The value of a keypad text written plainly, or -1.
long long plainKeypad(const std::string& t) {
    if (t.empty() || t.size() > 7 || (t.size() > 1 && t[0] == '0')) return -1;
    long long v = 0;
    for (char c : t) {
        if (c < '0' || c > '9') return -1;
        v = v * 10 + (c - '0');
    }
    return v < KeypadList::kDenseKeypads ? v : -1;
}

// "[" + keypad + ";" + vote + "],"
void appendRecord(std::string& to, const std::string& keypad, const std::string& vote) {
    to += '[';
    to += keypad;
    to += ';';
    to += vote;
    to += "],";
}

// The abstain key turns a vote (or the first part of a multi-part vote) into -2. Parts are
// compared as numbers, so "05;2" with key 5 becomes "-2;2".
void applyAbstain(std::string& vote, int key) {
    const auto semi = vote.find(';');
    const std::string first = vote.substr(0, semi);
    if (!isNumeric(first) || ParseNumber(first) != key) return;
    vote = semi == std::string::npos ? std::string("-2") : "-2" + vote.substr(semi);
}
}  // namespace

VoteIntakeModule::VoteIntakeModule(Controller& controller) : c_(controller) {}

bool VoteIntakeModule::isVoter(const std::string& keypad) const {
    const long long n = plainKeypad(keypad);
    if (n >= 0) return static_cast<std::size_t>(n) < voterBits_.size() && voterBits_[static_cast<std::size_t>(n)];
    return otherVoters_.count(keypad) != 0;
}

bool VoteIntakeModule::addVoter(long long number, const std::string& text) {
    if (number >= 0) {
        const auto at = static_cast<std::size_t>(number);
        if (at >= voterBits_.size()) voterBits_.resize(std::max(at + 1, voterBits_.size() * 2), false);
        if (voterBits_[at]) return false;
        voterBits_[at] = true;
    } else if (!otherVoters_.insert(text).second) {
        return false;
    }
    ++voterCount_;
    return true;
}

void VoteIntakeModule::resetForVote() {
    voterBits_.clear();
    otherVoters_.clear();
    voterCount_ = 0;
    acceptedTotal_ = 0;
    receivedTotal_ = 0;
    showCounters();
}

void VoteIntakeModule::SendVotes(std::vector<float>& keypads, std::vector<std::string>& votes, double time,
                                 int baseIndex) {
    (void)time;
    MainForm* m = c_.mainForm();
    if (!m) return;
    // Accepted records are written straight into the buffer, which travels on without being
    // copied again; a failed intake takes them out again.
    const std::size_t start = buffer_.size();
    trap(c_.errors, kForm, "SendVotes", [&] {
        try {
            intake(*m, keypads, votes, baseIndex, start);
        } catch (...) {
            // Unless the buffer has been handed on already.
            if (buffer_.size() >= start) buffer_.resize(start);
            throw;
        }
    });
}

void VoteIntakeModule::intake(MainForm& m, std::vector<float>& keypads, std::vector<std::string>& votes,
                              int baseIndex, std::size_t start) {
    const KeypadRange range = c_.drivers->keypadRange(baseIndex, c_.glo);
    const double highest = static_cast<double>(range.offset) + range.highest;
    const KeypadList& active = c_.glo.ActiveKeypads;
    std::string rejected;
    long long acceptedCount = 0;
    const std::size_t n = std::min(keypads.size(), votes.size());
    for (std::size_t i = 0; i < n; ++i) {
        ++receivedTotal_;
        keypads[i] = keypads[i] + static_cast<float>(range.offset);
        const std::string kp = keypadText(keypads[i]);
        const long long number = wholeKeypad(keypads[i]);
        if (static_cast<double>(keypads[i]) > highest) {
            appendRecord(rejected, kp, votes[i]);
            continue;
        }
        if (!active.empty() && !(number >= 0 ? active.contains(number) : active.contains(kp)) && !m.keypadTestActive) {
            appendRecord(rejected, kp, votes[i]);
            continue;
        }
        ++acceptedCount;
        if (m.Opt_Abstain) applyAbstain(votes[i], m.key_Abstain);
        appendRecord(buffer_, kp, votes[i]);
        if (addVoter(number, kp)) m.txt_VoteCounter[2] = formatNumber(static_cast<double>(voterCount_), "###,##0");
    }
    if (buffer_.size() > start) {
        if (c_.glo.traceToFile)
            c_.logs.voteTrace("VOTE RX - ACCEPTED: " + std::string(std::string_view(buffer_).substr(start)));
        if (buffer_.size() >= kBatchCharacters)
            tmr_VotesRxBuffer_Timer();
        else
            m.tmr_VotesRxBuffer.setEnabled(true);
    }
    if (!rejected.empty()) {
        const std::string high = numText(highest);
        c_.logs.voteTrace("VOTE RX - REJECTED: " + rejected);
        c_.logs.voteTrace("ACTIVE KPADS: " + active.text());
        c_.logs.voteTrace("MAX KPAD NUM: " + high);
        m.LogEvent("NOT SENT: " + rejected, LOG_TX);
        m.LogEvent("KPADS ACTIVE: " + active.text(), LOG_XX);
        m.LogEvent("MAX KPAD NUM: " + high, LOG_XX);
    }
    acceptedTotal_ += acceptedCount;
    m.txt_VoteCounter[0] = formatNumber(static_cast<double>(acceptedTotal_), "###,##0");
}

void VoteIntakeModule::tmr_VotesRxBuffer_Timer() {
    MainForm* m = c_.mainForm();
    if (!m || c_.glo.ShuttingDown) return;
    m->tmr_VotesRxBuffer.setEnabled(false);
    trap(c_.errors, kForm, "tmr_VotesRxBuffer_Timer", [&] {
        if (!buffer_.empty()) {
            // The buffer itself becomes (or joins) the transmit queue.
            m->MoveDataToTxQueue(std::move(buffer_));
            buffer_.clear();
        }
        showCounters();
    });
}

void VoteIntakeModule::showCounters() {
    if (MainForm* m = c_.mainForm()) {
        m->txt_VoteCounter[0] = formatNumber(static_cast<double>(acceptedTotal_), "###,##0");
        m->txt_VoteCounter[1] = formatNumber(static_cast<double>(receivedTotal_), "###,##0");
        m->txt_VoteCounter[2] = formatNumber(static_cast<double>(voterCount_), "###,##0");
        m->changed();
    }
}

int VoteIntakeModule::randomBetween(int lo, int hi) {
    if (hi < lo) return lo;
    return std::uniform_int_distribution<int>(lo, hi)(random_);
}

void VoteIntakeModule::tmr_simulateVotes_Timer() {
    MainForm* m = c_.mainForm();
    if (!m || c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
    trap(c_.errors, kForm, "tmr_simulateVotes_Timer", [&] {
        const double maxD = ParseNumber(m->txt_simulateVotesMaxKpadNum);
        const double limitD = ParseNumber(m->txt_simulateVotesCount);
        const int maxKeypad = maxD >= 1 && maxD <= 1e6 ? static_cast<int>(maxD) : 1;
        const int limit = limitD >= 1 && limitD <= 1e4 ? static_cast<int>(limitD) : 1;
        const int count = randomBetween(1, limit);
        std::string batch;
        for (int i = 0; i < count; ++i)
            batch += "[" + numText(randomBetween(1, maxKeypad)) + ";" + numText(randomBetween(1, 9)) + "],";
        m->AddDataToTxQueue(batch);
        acceptedTotal_ += count;
        receivedTotal_ += count;
        showCounters();
    });
}

}  // namespace tlx
