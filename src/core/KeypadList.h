#pragma once
// `glo.ActiveKeypads`: the allowed keypads written ",3,7,12," (or empty: every keypad). The
// text stays what it is; membership of "," + keypad + "," is answered from a set, so the test
// costs the same for a list of four keypads as for one of four thousand. Keypad numbers
// written plainly are also kept as bits by number: the whole of a 40,950-keypad system is
// 5 KB, which stays in the processor's nearest cache through a burst of votes.
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tlx {

class KeypadList {
public:
    KeypadList() = default;
    KeypadList(std::string text) { assign(std::move(text)); }  // NOLINT: reads like the string it is
    KeypadList& operator=(std::string text) {
        assign(std::move(text));
        return *this;
    }
    const std::string& text() const { return text_; }
    operator const std::string&() const { return text_; }  // NOLINT
    bool empty() const { return text_.empty(); }
    // True when the text holds "," + keypad + ",".
    bool contains(std::string_view keypad) const;
    // The same for a keypad number (as contains of its plain decimal text).
    bool contains(long long keypad) const {
        if (keypad >= 0 && keypad < kDenseKeypads) return static_cast<std::size_t>(keypad) < bits_.size() && bits_[static_cast<std::size_t>(keypad)];
        return contains(std::string_view(std::to_string(keypad)));
    }

    // Numbers below this are kept as bits (one megabit at most).
    static constexpr long long kDenseKeypads = 1 << 20;

private:
    void assign(std::string text);
    std::string text_;
    std::unordered_set<std::string> members_;
    std::vector<bool> bits_;  // bits_[n]: the plain decimal text of n is a member
};

// A list as the presentation's tag "ActiveKeypads" keeps it: one leading and one trailing
// comma dropped (",3,7," and "3,7" both give "3,7").
std::string activeKeypadsTag(std::string_view list);
// The same list as the intake tests it: a comma before and after (",3,7,"), or empty.
std::string activeKeypadsText(std::string_view list);

}  // namespace tlx
