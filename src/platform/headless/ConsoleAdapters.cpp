#include "platform/headless/ConsoleAdapters.h"

#include "core/Text.h"

namespace tlx {

std::string oneLine(const std::string& text) {
    return replaceAll(replaceAll(text, "\r\n", " | "), "\n", " | ");
}

void ConsoleDialogs::message(const std::string& title, const std::string& text, MsgIcon) {
    out_ << "[message box] " << title << ": " << oneLine(text) << std::endl;
}

bool ConsoleDialogs::askYesNo(const std::string& title, const std::string& text, MsgIcon) {
    out_ << "[question] " << title << ": " << oneLine(text) << " -> " << (answerYes_ ? "Yes" : "No")
         << std::endl;
    return answerYes_;
}

std::optional<std::string> ConsoleDialogs::inputBox(const std::string& title, const std::string& prompt,
                                                    const std::string& initial) {
    out_ << "[input box] " << title << ": " << oneLine(prompt) << " -> " << initial << std::endl;
    if (!answerYes_) return std::nullopt;
    return initial;
}

void ConsoleTray::addIcon(const std::string& tooltip) {
    if (!hasIcon_) out_ << "[tray] icon added: " << tooltip << std::endl;
    hasIcon_ = true;
}

void ConsoleTray::removeIcon() {
    if (hasIcon_) out_ << "[tray] icon removed" << std::endl;
    hasIcon_ = false;
}

void ConsoleTray::balloon(const std::string& title, const std::string& text, int) {
    out_ << "[balloon] " << title << ": " << oneLine(text) << std::endl;
}

}  // namespace tlx
