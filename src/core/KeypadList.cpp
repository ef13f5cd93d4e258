#include "core/KeypadList.h"

namespace tlx {

void KeypadList::assign(std::string text) {
    text_ = std::move(text);
    members_.clear();
    // Every text between two commas can be found as "," + it + ",".
    std::size_t start = text_.find(',');
    while (start != std::string::npos) {
        const std::size_t next = text_.find(',', start + 1);
        if (next == std::string::npos) break;
        members_.emplace(text_.substr(start + 1, next - start - 1));
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
