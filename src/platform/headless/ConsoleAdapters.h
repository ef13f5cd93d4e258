#pragma once
// Dialogs and tray for the headless controller: everything is printed, and questions are
// answered with the answer given on the command line.
#include <ostream>
#include <string>
#include <vector>

#include "ports/Dialogs.h"
#include "ports/Tray.h"

namespace tlx {

class ConsoleDialogs : public Dialogs {
public:
    ConsoleDialogs(std::ostream& out, bool answerYes) : out_(out), answerYes_(answerYes) {}
    void message(const std::string& title, const std::string& text, MsgIcon icon) override;
    bool askYesNo(const std::string& title, const std::string& text, MsgIcon icon) override;
    std::optional<std::string> inputBox(const std::string& title, const std::string& prompt,
                                        const std::string& initial) override;

private:
    std::ostream& out_;
    bool answerYes_;
};

class ConsoleTray : public Tray {
public:
    explicit ConsoleTray(std::ostream& out) : out_(out) {}
    void addIcon(const std::string& tooltip) override;
    void removeIcon() override;
    bool hasIcon() const override { return hasIcon_; }
    void balloon(const std::string& title, const std::string& text, int iconKind) override;
    void setTasks(const std::vector<std::string>& tasks) override { tasks_ = tasks; }
    // A console has no icon to animate.
    void setIconFrame(int) override {}

private:
    std::ostream& out_;
    bool hasIcon_ = false;
    std::vector<std::string> tasks_;
};

// Shows line breaks of a dialog text on one console line.
std::string oneLine(const std::string& text);

}  // namespace tlx
