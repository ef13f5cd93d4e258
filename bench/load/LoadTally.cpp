#include "load/LoadTally.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>

namespace tlx::load {

std::int64_t BurstPlan::pressNs(int systemKeypad) const {
    if (systemKeypad < 1 || systemKeypad > total() || perSecond <= 0) return -1;
    const auto base = static_cast<std::size_t>((systemKeypad - 1) / keypads);
    const int index = (systemKeypad - 1) % keypads;
    if (base >= originNs.size()) return -1;
    // The same arithmetic as the simulated crowd's: whole milliseconds after the call.
    const double interval = 1000.0 / perSecond;
    const long ms = std::lround(static_cast<double>(index) * interval);
    return originNs[base] + static_cast<std::int64_t>(ms) * 1000000;
}

namespace {

// One line "[k;v],[k;v],": true and the records when the whole line is records.
bool parseLine(std::string_view line, std::vector<std::pair<int, std::string>>& out) {
    std::size_t i = 0;
    std::vector<std::pair<int, std::string>> found;
    while (i < line.size()) {
        if (line[i] != '[') return false;
        const std::size_t semi = line.find(';', i);
        const std::size_t close = line.find(']', i);
        if (semi == std::string_view::npos || close == std::string_view::npos || semi > close) return false;
        int keypad = 0;
        const char* first = line.data() + i + 1;
        const char* last = line.data() + semi;
        const auto [p, ec] = std::from_chars(first, last, keypad);
        if (ec != std::errc() || p != last) return false;
        if (close + 1 >= line.size() || line[close + 1] != ',') return false;
        found.emplace_back(keypad, std::string(line.substr(semi + 1, close - semi - 1)));
        i = close + 2;
    }
    out.insert(out.end(), found.begin(), found.end());
    return !found.empty();
}

}  // namespace

ParsedEvent parseVoteEvent(std::string_view text) {
    ParsedEvent e;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find("\r\n", start);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view line = text.substr(start, end - start);
        if (!line.empty() && line.front() == '[' && !parseLine(line, e.records)) ++e.malformed;
        if (end == text.size()) break;
        start = end + 2;
    }
    return e;
}

double percentile(std::vector<double> samples, double p) {
    if (samples.empty()) return 0.0;
    std::sort(samples.begin(), samples.end());
    const double rank = std::ceil(p / 100.0 * static_cast<double>(samples.size()));
    const auto i = static_cast<std::size_t>(std::clamp(rank, 1.0, static_cast<double>(samples.size()))) - 1;
    return samples[i];
}

double median(std::vector<double> samples) {
    if (samples.empty()) return 0.0;
    std::sort(samples.begin(), samples.end());
    const std::size_t n = samples.size();
    return n % 2 ? samples[n / 2] : (samples[n / 2 - 1] + samples[n / 2]) / 2.0;
}

ClientTally tally(const BurstPlan& plan, const std::vector<Receipt>& receipts, std::string_view answers) {
    ClientTally t;
    std::vector<int> heard(static_cast<std::size_t>(plan.total()) + 1, 0);
    std::map<std::int64_t, double> youngest;  // receipt time -> smallest latency heard then
    for (const Receipt& r : receipts) {
        const std::int64_t press = plan.pressNs(r.keypad);
        if (press < 0) {
            ++t.unknown;
            continue;
        }
        const double ms = static_cast<double>(r.receivedNs - press) / 1e6;
        auto [it, fresh] = youngest.emplace(r.receivedNs, ms);
        if (!fresh) it->second = std::min(it->second, ms);
        if (r.vote.size() != 1 || answers.find(r.vote[0]) == std::string_view::npos) ++t.badVotes;
        if (heard[static_cast<std::size_t>(r.keypad)]++ > 0) {
            ++t.duplicates;
            continue;
        }
        t.latencyMs.push_back(ms);
    }
    for (const auto& [at, ms] : youngest) t.youngestMs.push_back(ms);
    for (int k = 1; k <= plan.total(); ++k) {
        if (heard[static_cast<std::size_t>(k)] > 0)
            ++t.delivered;
        else
            ++t.missing;
    }
    return t;
}

LatencySummary summarise(const std::vector<double>& latencyMs) {
    LatencySummary s;
    if (latencyMs.empty()) return s;
    s.p50 = percentile(latencyMs, 50);
    s.p99 = percentile(latencyMs, 99);
    s.max = *std::max_element(latencyMs.begin(), latencyMs.end());
    return s;
}

}  // namespace tlx::load
