#pragma once
// Two small windows: the balloon message log and the form that ends the process.
#include <string>

#include "core/Form.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;

// `frmBubbleErrorMessageLog`: shows every balloon message since start-up.
class BubbleMessageLogForm : public Form {
public:
    static constexpr const char* kName = "frmBubbleErrorMessageLog";
    explicit BubbleMessageLogForm(Controller& controller);
    std::string txtLog;
    Timer tmrRefresh;

private:
    void tmrRefresh_Timer();
    Controller& c_;
    std::size_t shownLength_ = static_cast<std::size_t>(-1);
};

// `frm_CloseController`: ends the process from its timer, so that whoever asked for the
// shutdown (an automation client, say) gets its call back first.
class CloseControllerForm : public Form {
public:
    static constexpr const char* kName = "frm_CloseController";
    explicit CloseControllerForm(Controller& controller);
    Timer tmr_CloseApp;

private:
    void tmr_CloseApp_Timer();
    Controller& c_;
};

}  // namespace tlx
