// The winner message and the presenter keypad of the Corehub driver.
#include <algorithm>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "drivers/BaseStatus.h"
#include "drivers/PresenterKeys.h"
#include "drivers/PrioritizerDriver.h"
#include "drivers/PrioritizerDriverInl.h"
#include "ports/Desktop.h"

namespace tlx {

namespace {
constexpr int kToggleAudioDialogCommand = 133;
constexpr int kReadPresenterConfigCommand = 139;
}  // namespace

void KelvarinPrioritizerDriver::ShowWinningKeypad(int keypad, bool flag) {
    guard("ShowWinningKeypad", [&] {
        const std::string hid = GetHIDFromSID(keypad);
        if (hid.empty()) {
            log("Winning Keypad Not Loaded - KpadHID NULL", "ShowWinningKeypad");
            c_.LogEvent("Winning Keypad Not Loaded - KpadHID NULL", LOG_XX);
            return;
        }
        loadDisplaySettings();
        KelvarinWinnerMessage message;
        message.LoadMessage = texts_.WinningKeypadLoadMessage;
        message.MainMessage = texts_.WinningKeypadMainMessage;
        message.MainMessageFont = texts_.WinningKeypadMainMessageFont;
        message.LedEffect = texts_.WinningKeypadLedEffect;
        message.Flag = flag;
        log("Winning Keypad Loaded - " + numText(keypad), "ShowWinningKeypad");
        forEachBase([&](int, const std::string& base, KelvarinBase& b) {
            const int rc = b.ShowWinningKeypad(hid, message);
            if (rc != BaseErrorCode::Success)
                log(base + " - Show Winning Keypad FAILED - " + numText(rc) + ": " + tlx::GetCPPErrorString(rc),
                    "ShowWinningKeypad");
            else
                log(base + " - Show Winning Keypad - Keypad: " + numText(keypad), "ShowWinningKeypad");
        });
        c_.glo.winningKeypadShown = true;
    });
}

std::string KelvarinPrioritizerDriver::GetFirstPresentersHID() {
    return guard("GetFirstPresentersHID", [&]() -> std::string {
        if (!m_Presenters.empty()) return m_Presenters.front();
        for (const auto& reg : localReg_)
            for (const auto& e : reg.entries())
                if (e.kind == DeviceKind::Presenter) return e.HID;
        return "";
    });
}

int KelvarinPrioritizerDriver::presenterEcho(const std::string& text) {
    return guard("SetPresenterEchoMessage", [&]() -> int {
        const std::string hid = GetFirstPresentersHID();
        if (hid.empty()) {
            log(" - SetPresenterEchoMessage - no presenter keypad", "SetPresenterEchoMessage");
            return BaseErrorCode::RegistryDeviceNotFound;
        }
        return passThroughSlot(1, baseText(1), "SetPresenterEchoMessage", nullptr,
                               [&](KelvarinBase& b) { return b.SetPresenterEchoMessage(hid, text); });
    });
}

int KelvarinPrioritizerDriver::presenterGotoMenu(const std::string& menu) {
    return guard("SetPresenterGotoMenu", [&]() -> int {
        const std::string hid = GetFirstPresentersHID();
        if (hid.empty()) {
            log(" - SetPresenterGotoMenu - no presenter keypad", "SetPresenterGotoMenu");
            return BaseErrorCode::RegistryDeviceNotFound;
        }
        return passThroughSlot(1, baseText(1), "SetPresenterGotoMenu", nullptr,
                               [&](KelvarinBase& b) { return b.SetPresenterGotoMenu(hid, menu); });
    });
}

// The menu labels are the presenter keypad's own set-up: they go to it when it registers (the
// moment the driver learns of it), read afresh from the settings.
int KelvarinPrioritizerDriver::SendPresenterMenu(const std::string& hid) {
    return guard("SendPresenterMenu", [&]() -> int {
        if (trim(hid).empty()) return BaseErrorCode::RegistryDeviceNotFound;
        loadDisplaySettings();
        KelvarinPresenterMenu m;
        m.Labels = menu_.labels;
        m.Value1 = menu_.value1;
        m.Value2 = menu_.value2;
        // Through the base the keypad is registered to.
        int slot = 1;
        for (int i = 0; i < static_cast<int>(baseTable().size()); ++i)
            if (localRegistry(i).find(registryKey(hid))) {
                slot = i + 1;
                break;
            }
        return passThroughSlot(slot, baseText(slot), "SetPresenterMenu", nullptr,
                               [&](KelvarinBase& b) { return b.SetPresenterMenu(hid, m); });
    });
}

void KelvarinPrioritizerDriver::DecodePresenterCommand(int command, int commandSource, int value) {
    guard("DecodePresenterCommand", [&] {
        log("Presneter Cmd Rx: command=" + numText(command) + ",commandSource=" + numText(commandSource),
            "DecodePresenterCommand");
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED || c_.glo.ShuttingDown) return;
        if (command == kToggleAudioDialogCommand) {
            ToggleAudioDialog();
            return;
        }
        if (command == kReadPresenterConfigCommand) {
            const std::string hid = GetFirstPresentersHID();
            KelvarinKeypadConfig config;
            if (!hid.empty())
                passThroughSlot(1, baseText(1), "GetKeypadConfig", nullptr,
                                [&](KelvarinBase& b) { return b.GetKeypadConfig(hid, config); });
            return;
        }
        Desktop& desktop = c_.ports.desktop;
        std::string echo;
        if (commandSource == kPresenterMenuSource) {
            switch (command) {
                case 0:
                    desktop.sendKey(vk::F5);
                    echo = "Start Show";
                    break;
                case 1:
                    desktop.sendKey(vk::Escape);
                    echo = "Escape";
                    break;
                case 2:
                    desktop.sendKey(vk::B);
                    echo = "Blank";
                    break;
                case 3:
                    // A revote is the presenter starting the current slide's vote again.
                    desktop.sendKey(processRunning(desktop, kGridderProcess) ? vk::Clear : vk::V);
                    echo = "Revote";
                    break;
                default:
                    return;
            }
        } else if (commandSource == kPresenterGotoSource) {
            if (value <= 0) return;
            desktop.sendKeys(numText(value) + "{ENTER}");
            echo = "GoTo " + numText(value);
        } else {
            const std::string key = presenterKeyName(command);
            if (key.empty()) return;
            echo = performPresenterKey(desktop, key).echo;
        }
        if (!echo.empty()) presenterEcho(echo);
    });
}

}  // namespace tlx
