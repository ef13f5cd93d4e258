#include "core/TextLog.h"

namespace tlx {

void TextLog::prepend(std::string line) {
    // A line longer than the box is kept only as far as the box shows it.
    if (line.size() + 2 > cap_) line.resize(cap_ > 2 ? cap_ - 2 : 0);
    total_ += line.size() + 2;
    lines_.push_front(std::move(line));
    // Drop the lines that lie wholly beyond the cap; the last kept one may be cut.
    while (!lines_.empty() && total_ - (lines_.back().size() + 2) >= cap_) {
        total_ -= lines_.back().size() + 2;
        lines_.pop_back();
    }
}

void TextLog::clear() {
    lines_.clear();
    total_ = 0;
}

std::string TextLog::text() const {
    std::string out;
    out.reserve(size());
    for (const auto& l : lines_) {
        out += l;
        out += "\r\n";
        if (out.size() >= cap_) break;
    }
    if (out.size() > cap_) out.resize(cap_);
    return out;
}

const std::string& TextLog::newest() const {
    static const std::string empty;
    return lines_.empty() ? empty : lines_.front();
}

}  // namespace tlx
