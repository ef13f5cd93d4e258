#pragma once
// The on-screen log `txt_log`: newest line first, every line followed by "\r\n", the whole
// cut to its first 50,000 characters. Adding a line costs time in proportion to the line,
// not to the log, so the log can run for a whole event.
#include <cstddef>
#include <deque>
#include <string>

namespace tlx {

class TextLog {
public:
    explicit TextLog(std::size_t cap = 50000) : cap_(cap) {}

    // Puts a line (without its break) at the top.
    void prepend(std::string line);
    void clear();
    // The text as the box shows it.
    std::string text() const;
    std::size_t size() const { return total_ < cap_ ? total_ : cap_; }
    std::size_t cap() const { return cap_; }
    // The newest line, "" when empty.
    const std::string& newest() const;
    std::size_t lineCount() const { return lines_.size(); }
    // Line i counted from the newest (0), without its break.
    const std::string& line(std::size_t i) const { return lines_[i]; }

private:
    std::size_t cap_;
    std::deque<std::string> lines_;  // without breaks
    std::size_t total_ = 0;          // characters including the breaks
};

}  // namespace tlx
