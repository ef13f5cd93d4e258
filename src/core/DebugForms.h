#pragma once
// The debug windows: the debug form, the window handles and the running processes.
#include <functional>
#include <string>
#include <vector>

#include "core/Form.h"

namespace tlx {

class Controller;

// `frm_DEBUG`: the controller's state at a glance.
class DebugForm : public Form {
public:
    static constexpr const char* kName = "frm_DEBUG";
    explicit DebugForm(Controller& controller);
    void Refresh();
    std::vector<std::string> lines;

private:
    Controller& c_;
};

// One top-level window of the program.
struct WindowHandleRow {
    std::string handle;     // the window system's handle, "-" while the window has none
    std::string className;  // the window's class, or the form's name when no window shows it
    std::string caption;
    bool visible = false;
    bool topMost = false;
};

// `frmDebugWindowHandles`: the program's own top-level windows, one row each, then the
// desktop's foreground class.
class DebugWindowHandlesForm : public Form {
public:
    static constexpr const char* kName = "frmDebugWindowHandles";
    explicit DebugWindowHandlesForm(Controller& controller);
    void Refresh();
    // The windows as the window system knows them, given by the view layer while a display
    // serves; without it (headless) the loaded forms stand for the windows.
    std::function<std::vector<WindowHandleRow>()> topLevelWindows;
    std::vector<WindowHandleRow> rows;
    std::string foregroundClass;
    // The rows as text: "0: name \"caption\" visible", then "foreground: " + class.
    std::vector<std::string> lines;

private:
    Controller& c_;
};

// `frmDebugProcessList`: the running processes.
class DebugProcessListForm : public Form {
public:
    static constexpr const char* kName = "frmDebugProcessList";
    explicit DebugProcessListForm(Controller& controller);
    void Refresh();
    std::vector<std::string> lines;

private:
    Controller& c_;
};

}  // namespace tlx
