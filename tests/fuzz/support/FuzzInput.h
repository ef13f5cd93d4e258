#pragma once
// Reads a fuzz input piece by piece: single bytes for choices and small numbers, lines for
// texts. Reading past the end gives zeros and empty texts, so a harness never has to check.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tlx::fuzz {

class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : text_(reinterpret_cast<const char*>(data), size) {}
    explicit FuzzInput(std::string_view text) : text_(text) {}

    bool empty() const { return pos_ >= text_.size(); }
    std::uint8_t byte() { return empty() ? 0 : static_cast<std::uint8_t>(text_[pos_++]); }
    bool flag() { return (byte() & 1) != 0; }
    // A number in [lo, hi] from up to four bytes.
    int number(int lo, int hi) {
        std::uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = (v << 8) | byte();
        const std::uint64_t span = static_cast<std::uint64_t>(static_cast<std::int64_t>(hi) - lo) + 1;
        return static_cast<int>(lo + static_cast<std::int64_t>(v % span));
    }
    // The text up to the next "\n" (not included), or to the end.
    std::string line() {
        if (empty()) return {};
        const std::size_t end = text_.find('\n', pos_);
        const std::size_t stop = end == std::string_view::npos ? text_.size() : end;
        std::string s(text_.substr(pos_, stop - pos_));
        pos_ = end == std::string_view::npos ? text_.size() : end + 1;
        return s;
    }
    // Everything not read yet.
    std::string rest() {
        std::string s(empty() ? std::string_view() : text_.substr(pos_));
        pos_ = text_.size();
        return s;
    }

private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

}  // namespace tlx::fuzz
