#include "core/KeypadList.h"

namespace tlx {

namespace {

// The value of a keypad number written plainly ("12", "0"; not "012", "+3" or "1.0"), or -1.
long long plainNumber(std::string_view t) {
    if (t.empty() || t.size() > 7 || (t.size() > 1 && t[0] == '0')) return -1;
    long long v = 0;
    for (char c : t) {
        if (c < '0' || c > '9') return -1;
        v = v * 10 + (c - '0');
    }
    return v;
}

}  // namespace

void KeypadList::assign(std::string text) {
    text_ = std::move(text);
    members_.clear();
    bits_.clear();
    // Every text between two commas can be found as "," + it + ",".
    std::size_t start = text_.find(',');
    while (start != std::string::npos) {
        const std::size_t next = text_.find(',', start + 1);
        if (next == std::string::npos) break;
        const std::string_view member = std::string_view(text_).substr(start + 1, next - start - 1);
        members_.emplace(member);
        const long long n = plainNumber(member);
        if (n >= 0 && n < kDenseKeypads) {
            if (static_cast<std::size_t>(n) >= bits_.size()) bits_.resize(static_cast<std::size_t>(n) + 1, false);
            bits_[static_cast<std::size_t>(n)] = true;
        }
        start = next;
    }
}

bool KeypadList::contains(std::string_view keypad) const {
    if (keypad.find(',') != std::string_view::npos) return text_.find(std::string(",") + std::string(keypad) + ",") != std::string::npos;
    return members_.count(std::string(keypad)) != 0;
}

std::string activeKeypadsTag(std::string_view list) {
    if (!list.empty() && list.front() == ',') list.remove_prefix(1);
    if (!list.empty() && list.back() == ',') list.remove_suffix(1);
    return std::string(list);
}

std::string activeKeypadsText(std::string_view list) {
    const std::string tag = activeKeypadsTag(list);
    return tag.empty() ? std::string() : "," + tag + ",";
}

}  // namespace tlx
