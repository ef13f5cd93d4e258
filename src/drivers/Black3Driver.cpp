#include "drivers/Black3Driver.h"

#include <algorithm>
#include <cmath>

#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/Text.h"
#include "drivers/BaseStatus.h"
#include "drivers/DisplayTexts.h"
#include "drivers/PresenterKeys.h"
#include "drivers/VoteConfig.h"
#include "ports/Desktop.h"
#include "ports/Dialogs.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {
constexpr int kCommsError = 1;
constexpr int kFlagReset = 20;

int portNumber(const std::string& port) {
    const double v = ParseNumber(port);
    return std::fabs(v) < 1e6 ? static_cast<int>(v) : 0;
}
}  // namespace

kpdriver_KELVARIN_BLACK_3::kpdriver_KELVARIN_BLACK_3(Controller& controller, BaseLibrary& library)
    : Form(kName), c_(controller), vPanel(library.createVPanel()) {
    if (!vPanel) return;
    vPanel->ErrorMessage.connect([this](int port, int code) { vPanel_ErrorMessage(port, code); });
    vPanel->BaseConfigReport.connect([this](const VPanelBaseConfig& c) { vPanel_BaseConfig(c); });
    vPanel->PresenterKey.connect([this](int port, const std::string& k) { vPanel_PresenterKey(port, k); });
    vPanel->KeypadScan.connect([this](int port, const std::string& t) { vPanel_KeypadScan(port, t); });
    vPanel->VoteReceived.connect([this](int port, int keypad, const std::string& data, double time) {
        vPanel_VoteReceived(port, keypad, data, time);
    });
}

kpdriver_KELVARIN_BLACK_3::~kpdriver_KELVARIN_BLACK_3() = default;

void kpdriver_KELVARIN_BLACK_3::log(const std::string& text, const char* procedure) {
    try {
        txtDebug.prepend(timeStamp(c_.ports.scheduler.now().secondsSinceMidnight()) + " " + text);
        c_.logs.trace(text, kName, procedure);
    } catch (...) {
    }
}

bool kpdriver_KELVARIN_BLACK_3::logged(const std::string& part) const {
    for (std::size_t i = 0; i < txtDebug.lineCount(); ++i)
        if (contains(txtDebug.line(i), part)) return true;
    return false;
}

int kpdriver_KELVARIN_BLACK_3::CommsErrorCounter(const std::string& port) const {
    auto it = m_CommsErrorCounter.find(idText(port));
    return it == m_CommsErrorCounter.end() ? 0 : it->second;
}

bool kpdriver_KELVARIN_BLACK_3::OpenPort(const std::string& port) {
    bool opened = false;
    trap(c_.errors, kName, "OpenPort", [&] {
        if (!vPanel) return;
        const int p = portNumber(port);
        const int rc = vPanel->OpenPort(p);
        log("OpenPort " + numText(p) + " = " + numText(rc), "OpenPort");
        if (rc != BaseErrorCode::Success) return;
        if (std::find(openPorts_.begin(), openPorts_.end(), p) == openPorts_.end()) openPorts_.push_back(p);
        m_CommsErrorCounter.emplace(numText(p), 0);
        opened = true;
    });
    return opened;
}

void kpdriver_KELVARIN_BLACK_3::ClosePorts() {
    trap(c_.errors, kName, "ClosePorts", [&] {
        if (!vPanel) return;
        for (int p : openPorts_) vPanel->ClosePort(p);
        openPorts_.clear();
    });
}

std::vector<std::string> kpdriver_KELVARIN_BLACK_3::AvailablePorts() {
    std::vector<std::string> ports;
    trap(c_.errors, kName, "AvailablePorts", [&] {
        if (!vPanel) return;
        for (int p : vPanel->AvailablePorts()) ports.push_back(numText(p));
    });
    return ports;
}

void kpdriver_KELVARIN_BLACK_3::StartVote(const std::string& port) {
    trap(c_.errors, kName, "StartVote", [&] {
        if (!vPanel) return;
        // The keypads show the texts configured in the settings, as the Corehub keypads do.
        KeypadDisplayTexts texts;
        texts.load(SettingsFiles(c_.settings.readFiles()));
        KelvarinVote oVote;
        if (!UpdateVoteObjectFromGlobalVariables(c_.glo, texts, oVote)) {
            log("Start Vote Quit: UpdateVoteObjectFromGlobalVariables(oVote) = False", "StartVote");
            return;
        }
        const int rc = vPanel->StartVote(portNumber(port), oVote);
        log(port + " - Start Vote = " + numText(rc), "StartVote");
    });
}

void kpdriver_KELVARIN_BLACK_3::EndVote(const std::string& port) {
    trap(c_.errors, kName, "EndVote", [&] {
        if (!vPanel) return;
        const int rc = vPanel->EndVote(portNumber(port));
        log(port + " - End Vote = " + numText(rc), "EndVote");
    });
}

bool kpdriver_KELVARIN_BLACK_3::SetDetectMode(int mode) {
    bool accepted = false;
    trap(c_.errors, kName, "SetDetectMode", [&] {
        if (!vPanel || (mode != -1 && (mode < 1 || mode > 3))) return;
        accepted = vPanel->SetDetectMode(mode) == BaseErrorCode::Success;
    });
    return accepted;
}

void kpdriver_KELVARIN_BLACK_3::vPanel_ErrorMessage(int port, int code) {
    trap(c_.errors, kName, "vPanel_ErrorMessage", [&] {
        const std::string p = numText(port);
        int& counter = m_CommsErrorCounter[p];
        if (c_.glo.traceToFile)
            c_.logs.trace(" Base Station ERROR: " + p + ", " + numText(code), kName, "vPanel_ErrorMessage");
        log(" Base Station ERROR: " + p + ", " + numText(code), "vPanel_ErrorMessage");
        if (code == kCommsError) {
            CommsError(p);
            if (c_.forms.isLoaded(FrmInit::kName)) return;
            const std::string message = "Communication Error - Base Station " + p +
                                        "\r\nIt may be necessary to remove and reconnect the base station "
                                        "before continuing";
            if (c_.glo.Voting) {
                log("glo.Voting = TRUE, CommsErrorCounter = " + numText(counter), "vPanel_ErrorMessage");
                counter += 1;
                // The test follows the increment, so the restart branch is never taken.
                if (counter > 0) {
                    log("Auto Restart Vote Failed", "vPanel_ErrorMessage");
                    counter = 0;
                    c_.ports.dialogs.message("tallix", message, MsgIcon::Exclamation);
                    BaseFailure(p);
                } else {
                    log("Controller.StartVote " + p, "vPanel_ErrorMessage");
                    StartVote(p);
                }
            } else {
                c_.ports.dialogs.message("tallix", message, MsgIcon::Exclamation);
            }
        } else if (code == kFlagReset) {
            c_.glo.waitingForBase = false;
        }
    });
}

void kpdriver_KELVARIN_BLACK_3::vPanel_BaseConfig(const VPanelBaseConfig& cfg) {
    trap(c_.errors, kName, "vPanel_BaseConfig", [&] {
        speedText = cfg.Speed == 0 ? "256 kbps" : "1 Mbps";
        beepText = cfg.Beep ? "On" : "Off";
        autoOffText = cfg.AutoOff ? "On" : "Off";
        log("Base Config - Port:" + numText(cfg.Port) + ", Session:" + numText(cfg.SessionID) +
                ", Channel:" + numText(cfg.RadioChannel) + ", Speed:" + speedText,
            "vPanel_BaseConfig");
        const bool reset = cfg.SessionID < 0 || cfg.SessionID > 255 || cfg.RadioChannel < 6 || cfg.RadioChannel > 77 ||
                           cfg.Third != 32 || cfg.ResetFlag;
        if (!reset) return;
        c_.ports.dialogs.message("Kelvarin Base Station Error Recovery",
                                 "Base station " + numText(cfg.BaseNumber) +
                                     " has recovered from a configuration error and been reset to the following "
                                     "factory defaults\r\n\r\n\tRadio Channel = 75\r\n\tSession ID = 0\r\n\r\n"
                                     "Please ensure these settings match your keypad system before attempting to vote",
                                 MsgIcon::Critical);
    });
}

void kpdriver_KELVARIN_BLACK_3::vPanel_PresenterKey(int port, const std::string& keyName) {
    trap(c_.errors, kName, "vPanel_PresenterKey", [&] {
        log("Presenter Key - Port:" + numText(port) + ", Key:" + keyName, "vPanel_PresenterKey");
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED || c_.glo.ShuttingDown) return;
        if (startsWith(toUpper(keyName), "GOTO")) {
            const std::string number = trim(keyName.substr(4));
            if (!isNumeric(number) || ParseNumber(number) <= 0) return;
            c_.ports.desktop.sendKeys(numText(std::floor(ParseNumber(number))) + "{ENTER}");
            return;
        }
        performPresenterKey(c_.ports.desktop, keyName);
    });
}

void kpdriver_KELVARIN_BLACK_3::vPanel_KeypadScan(int port, const std::string& text) {
    trap(c_.errors, kName, "vPanel_KeypadScan", [&] {
        log("Keypad Scan - Port:" + numText(port) + ", " + text, "vPanel_KeypadScan");
        if (text == "Keypad Group Scanned" || text == "Keypad Universe Scanned") KeypadScanned(port, text);
    });
}

void kpdriver_KELVARIN_BLACK_3::vPanel_VoteReceived(int port, int keypad, const std::string& data, double time) {
    trap(c_.errors, kName, "vPanel_VoteReceived", [&] {
        const std::string base = numText(serialPortBaseIndex(c_.glo, port));
        log(base + " - VoteReceived Event - Port:" + numText(port) + ", Keypad:" + numText(keypad) +
                ", VoteData:" + data,
            "vPanel_VoteReceived");
        VoteReceived(keypad, trim(data), "", "", base, "", time);
    });
}

}  // namespace tlx
