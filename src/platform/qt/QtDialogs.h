#pragma once
// Message boxes, questions and the input box as Qt dialogs.
#include "ports/Dialogs.h"

namespace tlx {

class QtDialogs : public Dialogs {
public:
    void message(const std::string& title, const std::string& text, MsgIcon icon) override;
    bool askYesNo(const std::string& title, const std::string& text, MsgIcon icon) override;
    std::optional<std::string> inputBox(const std::string& title, const std::string& prompt,
                                        const std::string& initial) override;
    std::optional<std::string> openFileName(const std::string& title, const std::string& filter) override;
};

}  // namespace tlx
