#pragma once
// `glo.ActiveKeypads`: the allowed keypads written ",3,7,12," (or empty: every keypad). The
// text stays what it is; membership of "," + keypad + "," is answered from a set, so the test
// costs the same for a list of four keypads as for one of four thousand.
#include <string>
#include <string_view>
#include <unordered_set>

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

private:
    void assign(std::string text);
    std::string text_;
    std::unordered_set<std::string> members_;
};

// A list as the presentation's tag "ActiveKeypads" keeps it: one leading and one trailing
// comma dropped (",3,7," and "3,7" both give "3,7").
std::string activeKeypadsTag(std::string_view list);
// The same list as the intake tests it: a comma before and after (",3,7,"), or empty.
std::string activeKeypadsText(std::string_view list);

}  // namespace tlx
