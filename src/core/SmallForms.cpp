#include "core/SmallForms.h"

#include "core/Controller.h"
#include "core/MainForm.h"
#include "ports/Desktop.h"

namespace tlx {

BubbleMessageLogForm::BubbleMessageLogForm(Controller& controller)
    : Form(kName), tmrRefresh(controller.ports.scheduler, "tmrRefresh", 500, true), c_(controller) {
    setCaption("Bubble Message Log");
    tmrRefresh.onTick = [this] { tmrRefresh_Timer(); };
    tmrRefresh_Timer();
}

void BubbleMessageLogForm::tmrRefresh_Timer() {
    const std::string& log = c_.glo.bubbleMessageLog;
    if (log.size() == shownLength_) return;
    shownLength_ = log.size();
    txtLog = log;
    changed();
}

KeypadTestForm::KeypadTestForm(Controller& controller) : Form(kName), c_(controller) {
    setCaption("Keypad Test");
    if (MainForm* m = c_.mainForm()) m->keypadTestActive = true;
}

void KeypadTestForm::ReceiveData(const std::string& data) {
    received.push_back(data);
    changed();
}

void KeypadTestForm::unloading() {
    if (MainForm* m = c_.mainForm()) m->keypadTestActive = false;
}

CloseControllerForm::CloseControllerForm(Controller& controller)
    : Form(kName), tmr_CloseApp(controller.ports.scheduler, "tmr_CloseApp", 100), c_(controller) {
    tmr_CloseApp.onTick = [this] { tmr_CloseApp_Timer(); };
    setCaption("tallix controller");
}

void CloseControllerForm::tmr_CloseApp_Timer() {
    tmr_CloseApp.setEnabled(false);
    c_.logs.trace("End", "frm_CloseController", "tmr_CloseApp_Timer");
    c_.ports.desktop.endProcess(0);
}

}  // namespace tlx
