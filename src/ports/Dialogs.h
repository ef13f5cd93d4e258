#pragma once
// Message boxes and questions. Title and text travel exactly as the program words them.
#include <optional>
#include <string>

namespace tlx {

enum class MsgIcon { None, Information, Exclamation, Critical, Question };

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual void message(const std::string& title, const std::string& text, MsgIcon icon) = 0;
    virtual bool askYesNo(const std::string& title, const std::string& text, MsgIcon icon) = 0;
    // Returns nothing when the user cancels.
    virtual std::optional<std::string> inputBox(const std::string& title, const std::string& prompt,
                                                const std::string& initial) = 0;
    // A file to open, chosen with a file dialog; filter "Name (*.a, *.b)|*.a; *.b". Nothing
    // when the user cancels or there is no one to ask.
    virtual std::optional<std::string> openFileName(const std::string& title, const std::string& filter) {
        (void)title;
        (void)filter;
        return std::nullopt;
    }
};

}  // namespace tlx
