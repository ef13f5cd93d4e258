#pragma once
// The debug windows: the debug form, the window handles and the running processes.
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

// `frmDebugWindowHandles`: the controller's windows, one line each.
class DebugWindowHandlesForm : public Form {
public:
    static constexpr const char* kName = "frmDebugWindowHandles";
    explicit DebugWindowHandlesForm(Controller& controller);
    void Refresh();
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
