#include "presentation/display/VoteTally.h"

#include "core/Text.h"

namespace tlx {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }

}  // namespace

bool isVoteBatch(std::string_view line) {
    const std::size_t first = line.find_first_not_of(" \t");
    return first != std::string_view::npos && line[first] == '[';
}

BatchRead readVoteBatch(std::string_view line) {
    BatchRead r;
    const std::size_t n = line.size();
    std::size_t i = 0;
    while (i < n) {
        const char c = line[i];
        if (c == ',' || c == ' ' || c == '\t') {
            ++i;
            continue;
        }
        if (c != '[') {
            // Stray text between records.
            ++r.skipped;
            i = line.find('[', i);
            if (i == std::string_view::npos) break;
            continue;
        }
        std::size_t j = i + 1;
        while (j < n && isDigit(line[j])) ++j;
        const std::size_t digits = j - (i + 1);
        bool ok = digits >= 1 && digits <= 9 && j < n && line[j] == ';';
        std::size_t close = j + 1;
        if (ok) {
            while (close < n && line[close] != ']' && line[close] != '[' && !isControl(line[close])) ++close;
            ok = close < n && line[close] == ']' && close > j + 1;
        }
        long long keypad = 0;
        if (ok) {
            for (std::size_t k = i + 1; k < j; ++k) keypad = keypad * 10 + (line[k] - '0');
            ok = keypad > 0;
        }
        if (!ok) {
            ++r.skipped;
            i = line.find('[', i + 1);
            if (i == std::string_view::npos) break;
            continue;
        }
        r.ballots.push_back({keypad, std::string(line.substr(j + 1, close - j - 1))});
        i = close + 1;
    }
    return r;
}

std::vector<std::string_view> controllerLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] != '\r' && text[i] != '\n') continue;
        if (i > start) lines.push_back(text.substr(start, i - start));
        if (i + 1 < text.size() && text[i] == '\r' && text[i + 1] == '\n') ++i;
        start = i + 1;
    }
    return lines;
}

bool VoteTally::add(long long keypad, const std::string& vote) {
    ++received_;
    auto [it, first] = byKeypad_.try_emplace(keypad, vote);
    if (first) {
        ++counts_[vote];
        return true;
    }
    if (it->second == vote) return false;
    // A changed answer: the keypad's earlier one no longer counts.
    if (auto old = counts_.find(it->second); old != counts_.end() && --old->second <= 0) counts_.erase(old);
    ++counts_[vote];
    it->second = vote;
    ++changes_;
    return true;
}

VoteTally::Fed VoteTally::feed(std::string_view text) {
    Fed fed;
    for (const std::string_view line : controllerLines(text)) {
        if (isVoteBatch(line)) {
            BatchRead r = readVoteBatch(line);
            fed.skipped += r.skipped;
            if (counting_) {
                for (const Ballot& b : r.ballots) add(b.keypad, b.vote);
                fed.ballots += static_cast<long long>(r.ballots.size());
            } else {
                fed.ignored += static_cast<long long>(r.ballots.size());
            }
            continue;
        }
        fed.messages.emplace_back(line);
        const auto eq = line.find('=');
        if (eq == std::string_view::npos) continue;
        const std::string key = toLower(trim(line.substr(0, eq)));
        if (key.empty()) continue;
        auto& slot = info_[key];
        slot.first = std::string(line.substr(eq + 1));
        ++slot.second;
    }
    skipped_ += fed.skipped;
    ignored_ += fed.ignored;
    return fed;
}

long long VoteTally::count(const std::string& answer) const {
    const auto it = counts_.find(answer);
    return it == counts_.end() ? 0 : it->second;
}

std::string VoteTally::voteOf(long long keypad) const {
    const auto it = byKeypad_.find(keypad);
    return it == byKeypad_.end() ? std::string() : it->second;
}

std::string VoteTally::info(std::string_view key) const {
    const auto it = info_.find(toLower(key));
    return it == info_.end() ? std::string() : it->second.first;
}

bool VoteTally::hasInfo(std::string_view key) const { return info_.count(toLower(key)) != 0; }

long long VoteTally::infoCount(std::string_view key) const {
    const auto it = info_.find(toLower(key));
    return it == info_.end() ? 0 : it->second.second;
}

}  // namespace tlx
