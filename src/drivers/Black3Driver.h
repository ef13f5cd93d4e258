#pragma once
// `kpdriver_KELVARIN_BLACK_3`: the oldest base generation ("KELVARIN BASE V3"), driven through
// the library's control `vPanel` on serial ports. It opens and ends votes; its control's
// events carry communication errors, configuration reports, presenter keys and votes.
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/Form.h"
#include "core/Signal.h"
#include "core/TextLog.h"
#include "ports/BaseLibrary.h"

namespace tlx {

class Controller;

class kpdriver_KELVARIN_BLACK_3 : public Form, public Black3Driver {
public:
    static constexpr const char* kName = "kpdriver_KELVARIN_BLACK_3";
    kpdriver_KELVARIN_BLACK_3(Controller& controller, BaseLibrary& library);
    ~kpdriver_KELVARIN_BLACK_3() override;

    void StartVote(const std::string& port) override;
    void EndVote(const std::string& port) override;
    bool SetDetectMode(int mode) override;

    // Opens a configured base's port; true when the base answers.
    bool OpenPort(const std::string& port);
    void ClosePorts();
    // Ports on which a base answers now.
    std::vector<std::string> AvailablePorts();
    int CommsErrorCounter(const std::string& port) const;

    // Events of `vPanel`.
    void vPanel_ErrorMessage(int port, int code);
    void vPanel_BaseConfig(const VPanelBaseConfig& config);
    void vPanel_PresenterKey(int port, const std::string& keyName);
    void vPanel_KeypadScan(int port, const std::string& text);
    void vPanel_VoteReceived(int port, int keypad, const std::string& data, double time);

    // A key press: keypad, vote data, field 3, field 4, base (the base's identity, its row in
    // the port file), HID, and the time the base took it.
    Signal<int, const std::string&, const std::string&, const std::string&, const std::string&, const std::string&,
           double>
        VoteReceived;
    // The controller's base-failure routine takes the port.
    Signal<const std::string&> BaseFailure;
    // The keypad test, alias and set-up forms hear of communication errors.
    Signal<const std::string&> CommsError;
    // "Keypad Group Scanned" / "Keypad Universe Scanned" for the alias form.
    Signal<int, const std::string&> KeypadScanned;

    // The last configuration report as the set-up form shows it.
    std::string speedText;    // "256 kbps" or "1 Mbps"
    std::string beepText;     // "Off" or "On"
    std::string autoOffText;  // "Off" or "On"

    TextLog txtDebug{20000};
    bool logged(const std::string& part) const;

private:
    void log(const std::string& text, const char* procedure);
    Controller& c_;
    std::unique_ptr<KelvarinVPanel> vPanel;
    std::map<std::string, int> m_CommsErrorCounter;  // per port
    std::vector<int> openPorts_;
};

}  // namespace tlx
