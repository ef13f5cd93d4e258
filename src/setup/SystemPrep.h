#pragma once
// `frmKelvarinCorehubSystemPrep`: takes a new or returned system through set-up on the
// second Corehub generation. Each base is reset, replugged and its firmware checked; the
// system's keypads, presenters and scanners are listed from the base's registry or entered
// by hand, then programmed (the base opens its registration for a while and every device
// answers with its firmware); keypads can be swapped; the serial numbers go into the
// operator's invoice workbook.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/Form.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;
class kpdriver_KELVARIN_Prioritizer_g2;

// The firmware each kind of device should run; a device reporting a lower version is flagged.
// The four versions are assigned in the order they have always been listed: base, keypad,
// presenter, scanner. The base's is the one older build, which fits the base firmware family.
namespace latestFirmware {
inline constexpr const char* kBase = "2.00.01.1801.1545";
inline constexpr const char* kKeypad = "2.00.01.2103.2038";
inline constexpr const char* kPresenter = "2.00.01.2103.2103";
inline constexpr const char* kScanner = "2.00.01.2103.2057";
}  // namespace latestFirmware

struct PrepBaseRow {
    std::string key;   // "K:" + serial number
    std::string text;  // "### 000 000 000"
    std::string icon;  // "OK"
    std::string hid;   // the serial number, digits
};

struct PrepDeviceRow {
    std::string key;     // "K:" + HID
    std::string hid;     // "HID": "### 000 000 000"
    std::string sid;     // "SID" (keypads), the device kind (presenters and scanners)
    std::string status;  // "Status"
    std::string icon;    // "UNKNOWN", "BUSY", "OK", "ERROR"
    bool selected = false;
};

class frmKelvarinCorehubSystemPrep : public Form {
public:
    static constexpr const char* kName = "frmKelvarinCorehubSystemPrep";
    // `tmrPrep` steps. Steps 1 (the operator replugs a base) and 4 once its lists stand
    // (the operator enters and programs devices) wait with the timer off; step 6 is the end.
    static constexpr int kStepBasePrep = 0;
    static constexpr int kStepReplug = 1;
    static constexpr int kStepBaseList = 2;
    static constexpr int kStepDeviceLists = 4;
    static constexpr int kStepCountdown = 5;
    static constexpr int kStepDone = 6;
    // How long the base keeps its registration open for programming.
    static constexpr int kProgrammingSeconds = 30;
    // Serial numbers go down column A of the "Serial Numbers" worksheet from row 2 (row 1
    // keeps the workbook's own heading).
    static constexpr int kSerialColumn = 1;
    static constexpr int kSerialFirstRow = 2;

    explicit frmKelvarinCorehubSystemPrep(Controller& controller);

    // Steps.
    Timer tmrPrep;
    int prepStep = kStepBasePrep;
    void tmrPrep_Timer();
    std::string lblStatus;

    // Base preparation: the base being prepared and its sub-step labels.
    std::string lblSetupBase;  // the base's serial number
    bool lblSetupBaseReset = false;
    bool lblSetupBaseResetDone = false;
    bool lblSetupBaseUnplug = false;
    bool cmdSetupBaseUnplugEnabled = false;
    bool lblSetupBaseUnplugDone = false;
    bool lblSetupBaseCheckFW = false;
    void cmdSetupBaseUnplug_Click();

    std::vector<PrepBaseRow> lvwBaseStations;  // heading "Base Stations"
    int selectedBase = -1;
    void lvwBaseStations_Click(int row);

    std::vector<PrepDeviceRow> lvwKeypadRegister;           // "HID", "SID", "Status"
    std::vector<PrepDeviceRow> lvwPresenterScannerRegister;  // "HID", "Type", "Status"
    static const std::vector<std::string>& keypadColumns();
    static const std::vector<std::string>& presenterScannerColumns();

    // Manual entry (Enter in the boxes).
    std::string txtKeypadHID;
    std::string txtStartingSID;
    std::string txtPresenterScannerHID;
    void txtKeypadHID_Enter();
    void txtPresenterScannerHID_Enter();

    bool cmdProgramKeypadsEnabled = false;
    std::string lblCountdown;  // "30s" while the base takes registrations
    void cmdProgramKeypads_Click();
    void cmdScanKeypadDelete_Click();
    void cmdPresenterScannerDelete_Click();
    void cmdScanKeypadSwap_Click();
    void cmdExportToExcel_Click();
    std::string exportWorkbook;  // the workbook last named
    // The window's close box and its Close button: the leaving questions.
    bool RequestClose();

    // `oKVv5_KeypadRegister`, `oKVv5_PresenterValidated`, `oKVv5_ScannerValidated`.
    void KeypadRegister(const std::string& hid, int flag, int error, const std::string& firmware);
    void PresenterValidated(const std::string& hid, const std::string& firmware);
    void ScannerValidated(const std::string& hid, const std::string& firmware);

    // The selected base's serial number ("" when none).
    std::string baseHID() const;
    bool programming() const { return prepStep == kStepCountdown; }

protected:
    void unloading() override;

private:
    kpdriver_KELVARIN_Prioritizer_g2* driver() const;
    void prepareBase();
    void nextBase();
    void fillBaseList();
    void fillDeviceLists();
    void countdown();
    void endProgramming();
    bool setRegistration(bool open);
    void recount();
    void validated(const std::string& hid, const std::string& firmware, const char* kind, const char* latest);
    // "Code: ", "Base Station: ", "Description: " on their lines.
    void driverError(int code, const std::string& base);
    bool deleteRows(std::vector<PrepDeviceRow>& rows, const std::string& question);
    void clearBaseLabels();

    Controller& c_;
    std::size_t prepBase_ = 0;  // the base being prepared, in lvwBaseStations
    double countdownEnd_ = 0.0;
    std::vector<std::uint64_t> subs_;
};

// Opens the window (or brings it forward).
frmKelvarinCorehubSystemPrep& showSystemPrep(Controller& controller);

}  // namespace tlx
