#pragma once
// Small windows: the balloon message log, the keypad test and the form that ends the process.
#include <string>
#include <vector>

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

// `ktest`: the keypad test window. While it is loaded the main form's keypad-test flag is
// set: every keypad may vote, votes carry their two readings, and the outgoing data is
// handed to this window as well.
class KeypadTestForm : public Form {
public:
    static constexpr const char* kName = "ktest";
    explicit KeypadTestForm(Controller& controller);
    // The outgoing data as the main form sends it.
    void ReceiveData(const std::string& data);
    std::vector<std::string> received;

protected:
    void unloading() override;

private:
    Controller& c_;
};

// `frm_CloseController`: ends the process from its timer, so that whoever asked for the
// shutdown (an automation client, say) gets its call back first.
class CloseControllerForm : public Form {
public:
    static constexpr const char* kName = "frm_CloseController";
    explicit CloseControllerForm(Controller& controller);
    Timer tmr_CloseApp;
    std::string lblStatus = "Closing the tallix controller ...";

private:
    void tmr_CloseApp_Timer();
    Controller& c_;
};

}  // namespace tlx
