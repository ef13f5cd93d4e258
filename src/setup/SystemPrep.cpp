#include "setup/SystemPrep.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "core/Controller.h"
#include "core/Text.h"
#include "drivers/BaseStatus.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "ports/AppError.h"
#include "ports/Dialogs.h"
#include "ports/Spreadsheet.h"

namespace tlx {

namespace {

constexpr int kPrepTimerMs = 10;
constexpr const char* kTitle = "System Prep";
constexpr const char* kExportTitle = "Unable to Export to Excel";
constexpr const char* kSerialSheet = "Serial Numbers";

// An HID as entered: every blank removed, and nothing but digits left.
bool enteredHid(const std::string& text, std::string& hid) {
    hid.clear();
    for (char c : text)
        if (!std::isspace(static_cast<unsigned char>(c))) hid += c;
    return !hid.empty() && hid.size() <= 15 &&
           std::all_of(hid.begin(), hid.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool enteredSid(const std::string& text, int& sid) {
    std::string digits;
    if (!enteredHid(text, digits) || digits.size() > 4) return false;
    sid = std::stoi(digits);
    return sid >= 1 && sid <= 4095;
}

std::string shown(const std::string& hid) { return formatDigits(idText(hid), "### 000 000 000"); }

// A device that reports no firmware at all predates the firmware report: it is old too.
bool oldFirmware(const std::string& firmware, const char* latest) {
    return trim(firmware).empty() || VersionCompare(firmware, latest) < 0;
}

PrepDeviceRow* rowOf(std::vector<PrepDeviceRow>& rows, const std::string& hid) {
    const std::string key = registryKey(hid);
    for (auto& r : rows)
        if (r.key == key) return &r;
    return nullptr;
}

const char* kindName(int kind) {
    return kind == DeviceKind::Presenter ? "Presenter" : kind == DeviceKind::Scanner ? "Scanner" : "";
}

}  // namespace

const std::vector<std::string>& frmKelvarinCorehubSystemPrep::keypadColumns() {
    static const std::vector<std::string> c{"HID", "SID", "Status"};
    return c;
}

const std::vector<std::string>& frmKelvarinCorehubSystemPrep::presenterScannerColumns() {
    static const std::vector<std::string> c{"HID", "Type", "Status"};
    return c;
}

frmKelvarinCorehubSystemPrep::frmKelvarinCorehubSystemPrep(Controller& controller)
    : Form(kName), tmrPrep(controller.ports.scheduler, "tmrPrep", kPrepTimerMs), c_(controller) {
    setCaption("System Preparation");
    tmrPrep.onTick = [this] { tmrPrep_Timer(); };
    trap(c_.errors, kName, "Form_Load", [&] {
        if (auto* g2 = driver()) {
            subs_.push_back(g2->KeypadRegister.connect(
                [this](const std::string& hid, int flag, int error, const std::string& firmware) {
                    KeypadRegister(hid, flag, error, firmware);
                }));
            subs_.push_back(g2->PresenterValidated.connect(
                [this](const std::string& hid, const std::string& firmware) { PresenterValidated(hid, firmware); }));
            subs_.push_back(g2->ScannerValidated.connect(
                [this](const std::string& hid, const std::string& firmware) { ScannerValidated(hid, firmware); }));
        }
        fillBaseList();
        prepStep = kStepBasePrep;
        tmrPrep.setEnabled(true);
    });
}

kpdriver_KELVARIN_Prioritizer_g2* frmKelvarinCorehubSystemPrep::driver() const {
    auto* drivers = dynamic_cast<KelvarinDrivers*>(c_.drivers.get());
    return drivers ? drivers->oKVv5() : nullptr;
}

void frmKelvarinCorehubSystemPrep::unloading() {
    tmrPrep.setEnabled(false);
    if (auto* g2 = driver(); g2 && subs_.size() == 3) {
        g2->KeypadRegister.disconnect(subs_[0]);
        g2->PresenterValidated.disconnect(subs_[1]);
        g2->ScannerValidated.disconnect(subs_[2]);
    }
    subs_.clear();
}

std::string frmKelvarinCorehubSystemPrep::baseHID() const {
    if (selectedBase < 0 || selectedBase >= static_cast<int>(lvwBaseStations.size())) return "";
    return lvwBaseStations[static_cast<std::size_t>(selectedBase)].hid;
}

void frmKelvarinCorehubSystemPrep::driverError(int code, const std::string& base) {
    c_.ports.dialogs.message(kTitle,
                             "Code: " + numText(code) + "\r\nBase Station: " + shown(base) +
                                 "\r\nDescription: " + GetCPPErrorString(code),
                             MsgIcon::Exclamation);
}

// ---- the steps ----

void frmKelvarinCorehubSystemPrep::tmrPrep_Timer() {
    trap(c_.errors, kName, "tmrPrep_Timer", [&] {
        switch (prepStep) {
            case kStepBasePrep:
                tmrPrep.setEnabled(false);
                prepareBase();
                break;
            case kStepBaseList:
                tmrPrep.setEnabled(false);
                fillBaseList();
                prepStep = kStepDeviceLists;
                tmrPrep.setEnabled(true);
                break;
            case kStepDeviceLists:
                tmrPrep.setEnabled(false);
                fillDeviceLists();
                break;
            case kStepCountdown:
                countdown();
                break;
            default:
                tmrPrep.setEnabled(false);
                c_.ports.dialogs.message("Error", "Unknown timer event activated", MsgIcon::Exclamation);
                break;
        }
    });
}

void frmKelvarinCorehubSystemPrep::clearBaseLabels() {
    lblSetupBase.clear();
    lblSetupBaseReset = lblSetupBaseResetDone = lblSetupBaseUnplug = false;
    cmdSetupBaseUnplugEnabled = lblSetupBaseUnplugDone = lblSetupBaseCheckFW = false;
}

void frmKelvarinCorehubSystemPrep::prepareBase() {
    if (prepBase_ >= lvwBaseStations.size()) {
        // Every base is prepared: the lists follow.
        clearBaseLabels();
        lblStatus.clear();
        prepStep = kStepBaseList;
        tmrPrep.setEnabled(true);
        changed();
        return;
    }
    const PrepBaseRow& base = lvwBaseStations[prepBase_];
    clearBaseLabels();
    lblSetupBase = base.text;
    lblStatus = "PROGRAMMING BASE";
    lblSetupBaseReset = true;
    changed();
    auto* g2 = driver();
    const int rc = g2 ? g2->ResetBase(base.hid) : BaseErrorCode::BaseNotFound;
    if (rc != BaseErrorCode::Success) {
        // A base that cannot be set is reported and left as it is; the others go on.
        driverError(rc, base.hid);
        nextBase();
        return;
    }
    lblSetupBaseResetDone = true;
    lblSetupBaseUnplug = true;
    cmdSetupBaseUnplugEnabled = true;
    prepStep = kStepReplug;
    changed();
}

void frmKelvarinCorehubSystemPrep::cmdSetupBaseUnplug_Click() {
    trap(c_.errors, kName, "cmdSetupBaseUnplug_Click", [&] {
        if (prepStep != kStepReplug || !cmdSetupBaseUnplugEnabled || prepBase_ >= lvwBaseStations.size()) return;
        const std::string hid = lvwBaseStations[prepBase_].hid;
        cmdSetupBaseUnplugEnabled = false;
        auto* g2 = driver();
        int rc = g2 ? g2->RebootBaseRadio(hid) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) {
            driverError(rc, hid);
            nextBase();
            return;
        }
        lblSetupBaseUnplugDone = true;
        lblSetupBaseCheckFW = true;
        changed();
        KelvarinBaseConfig config;
        rc = g2->GetBaseConfig(hid, config);
        if (rc != BaseErrorCode::Success) {
            driverError(rc, hid);
            nextBase();
            return;
        }
        if (oldFirmware(config.FirmwareVersion, latestFirmware::kBase)) {
            const bool goOn = c_.ports.dialogs.askYesNo(
                kTitle,
                "Base station " + shown(hid) + "\r\nBase station firmware must be updated.\r\n" + shown(hid) +
                    " firmware: " + config.FirmwareVersion + "\r\nLatest base station firmware: " +
                    latestFirmware::kBase + "\r\n\r\nContinue with the base station as is?",
                MsgIcon::Question);
            if (!goOn) {
                // The set-up stops here until the base is updated; closing asks as ever.
                lblStatus = "Base station firmware must be updated.";
                changed();
                return;
            }
        }
        nextBase();
    });
}

void frmKelvarinCorehubSystemPrep::nextBase() {
    ++prepBase_;
    prepStep = kStepBasePrep;
    tmrPrep.setEnabled(true);
    changed();
}

void frmKelvarinCorehubSystemPrep::fillBaseList() {
    const std::string was = baseHID();
    lvwBaseStations.clear();
    if (auto* g2 = driver())
        for (const auto& r : g2->baseTable())
            if (r.connected) lvwBaseStations.push_back({"K:" + r.identifier, shown(r.identifier), "OK", r.identifier});
    selectedBase = lvwBaseStations.empty() ? -1 : 0;
    for (std::size_t i = 0; i < lvwBaseStations.size(); ++i)
        if (lvwBaseStations[i].hid == was) selectedBase = static_cast<int>(i);
    changed();
}

void frmKelvarinCorehubSystemPrep::lvwBaseStations_Click(int row) {
    trap(c_.errors, kName, "lvwBaseStations_Click", [&] {
        if (programming() || row < 0 || row >= static_cast<int>(lvwBaseStations.size()) || row == selectedBase) return;
        selectedBase = row;
        // Another base: its devices.
        if (prepStep >= kStepDeviceLists) fillDeviceLists();
        changed();
    });
}

void frmKelvarinCorehubSystemPrep::fillDeviceLists() {
    lvwKeypadRegister.clear();
    lvwPresenterScannerRegister.clear();
    auto* g2 = driver();
    const std::string base = baseHID();
    const int slot = g2 && !base.empty() ? g2->slotOf(base) : 0;
    int highest = 0;
    if (slot) {
        for (const RegistryEntry& e : g2->localRegistry(slot - 1).entries()) {
            int kind = e.kind;
            // The registry text does not say what a device is; the base's record of it does.
            if (kind == 0) {
                KelvarinKeypadConfig k;
                if (g2->GetKeypadConfig(base, e.HID, k) == BaseErrorCode::Success) kind = k.Kind;
            }
            if (kind == DeviceKind::Presenter || kind == DeviceKind::Scanner) {
                lvwPresenterScannerRegister.push_back({registryKey(e.HID), shown(e.HID), kindName(kind), "", "UNKNOWN"});
            } else {
                lvwKeypadRegister.push_back({registryKey(e.HID), shown(e.HID), numText(e.SID), "", "UNKNOWN"});
                highest = std::max(highest, e.SID);
            }
        }
    }
    txtStartingSID = numText(std::min(highest + 1, 4095));
    cmdProgramKeypadsEnabled = !lvwKeypadRegister.empty() || !lvwPresenterScannerRegister.empty();
    changed();
}

// ---- devices by hand ----

void frmKelvarinCorehubSystemPrep::txtKeypadHID_Enter() {
    trap(c_.errors, kName, "txtKeypadHID_KeyPress", [&] {
        std::string hid;
        int sid = 0;
        if (!enteredHid(txtKeypadHID, hid)) {
            c_.ports.dialogs.message("Error", "Invalid HID entered", MsgIcon::Exclamation);
            return;
        }
        if (!enteredSid(txtStartingSID, sid)) {
            c_.ports.dialogs.message("Error", "Invalid SID entered", MsgIcon::Exclamation);
            return;
        }
        const std::string base = baseHID();
        auto* g2 = driver();
        const int rc = g2 ? g2->AddKeypadToRegistry(base, hid, sid) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) {
            driverError(rc, base);
            return;
        }
        // An HID already listed takes the new keypad number.
        if (PrepDeviceRow* r = rowOf(lvwKeypadRegister, hid)) {
            r->sid = numText(sid);
            r->icon = "UNKNOWN";
            r->status.clear();
        } else {
            lvwKeypadRegister.push_back({registryKey(hid), shown(hid), numText(sid), "", "UNKNOWN"});
        }
        txtKeypadHID.clear();
        // The next keypad scanned in takes the next number.
        txtStartingSID = numText(std::min(sid + 1, 4095));
        cmdProgramKeypadsEnabled = !programming();
        changed();
    });
}

void frmKelvarinCorehubSystemPrep::txtPresenterScannerHID_Enter() {
    trap(c_.errors, kName, "txtPresenterScannerHID_KeyPress", [&] {
        std::string hid;
        if (!enteredHid(txtPresenterScannerHID, hid)) {
            c_.ports.dialogs.message("Error", "Invalid HID entered", MsgIcon::Exclamation);
            return;
        }
        const std::string base = baseHID();
        auto* g2 = driver();
        // Presenters and scanners have no keypad number.
        const int rc = g2 ? g2->AddKeypadToRegistry(base, hid, 0) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) {
            driverError(rc, base);
            return;
        }
        if (!rowOf(lvwPresenterScannerRegister, hid))
            lvwPresenterScannerRegister.push_back({registryKey(hid), shown(hid), "", "", "UNKNOWN"});
        txtPresenterScannerHID.clear();
        cmdProgramKeypadsEnabled = !programming();
        changed();
    });
}

// ---- programming ----

bool frmKelvarinCorehubSystemPrep::setRegistration(bool open) {
    const std::string base = baseHID();
    auto* g2 = driver();
    KelvarinSessionConfig session;
    int rc = g2 ? g2->GetSessionConfig(base, session) : BaseErrorCode::BaseNotFound;
    if (rc == BaseErrorCode::Success && open && session.RegistrationOpen) {
        // Left open by an earlier run: closed first, so that the devices are asked afresh.
        session.RegistrationOpen = false;
        rc = g2->SetSessionConfig(base, session);
    }
    if (rc == BaseErrorCode::Success) {
        session.RegistrationOpen = open;
        rc = g2->SetSessionConfig(base, session);
    }
    if (rc != BaseErrorCode::Success) {
        driverError(rc, base);
        return false;
    }
    return true;
}

void frmKelvarinCorehubSystemPrep::cmdProgramKeypads_Click() {
    trap(c_.errors, kName, "cmdProgramKeypads_Click", [&] {
        if (programming() || (lvwKeypadRegister.empty() && lvwPresenterScannerRegister.empty())) return;
        const auto before = lvwKeypadRegister;
        const std::string statusBefore = lblStatus;
        lblStatus = "Waiting for keypads to join base....";
        changed();
        lblStatus = "Updating base for programming....";
        // A keypad that answered an earlier run keeps its "OK" while it is asked again.
        for (auto& r : lvwKeypadRegister) {
            r.status = "Waiting...";
            r.icon = r.icon == "OK" ? "OK" : "BUSY";
        }
        changed();
        if (!setRegistration(true)) {
            lvwKeypadRegister = before;
            lblStatus = statusBefore;
            changed();
            return;
        }
        lblStatus = "Waiting for keypads to respond...";
        prepStep = kStepCountdown;
        countdownEnd_ = c_.ports.scheduler.monotonicSeconds() + kProgrammingSeconds;
        lblCountdown = numText(kProgrammingSeconds) + "s";
        cmdProgramKeypadsEnabled = false;
        tmrPrep.setEnabled(true);
        changed();
    });
}

void frmKelvarinCorehubSystemPrep::countdown() {
    const auto remaining =
        static_cast<long long>(std::ceil(countdownEnd_ - c_.ports.scheduler.monotonicSeconds() - 1e-9));
    if (remaining > 0) {
        const std::string text = numText(remaining) + "s";
        if (text != lblCountdown) {
            lblCountdown = text;
            changed();
        }
        return;
    }
    tmrPrep.setEnabled(false);
    endProgramming();
}

void frmKelvarinCorehubSystemPrep::endProgramming() {
    setRegistration(false);
    prepStep = kStepDone;
    lblCountdown.clear();
    // Keypads that never answered are as they were before programming.
    for (auto& r : lvwKeypadRegister)
        if (r.status == "Waiting...") {
            r.status.clear();
            r.icon = "UNKNOWN";
        }
    recount();
    cmdProgramKeypadsEnabled = !lvwKeypadRegister.empty() || !lvwPresenterScannerRegister.empty();
    changed();
}

void frmKelvarinCorehubSystemPrep::recount() {
    int ok = 0, errors = 0;
    for (const auto& r : lvwKeypadRegister) {
        ok += r.icon == "OK" && r.status == "Programmed" ? 1 : 0;
        errors += r.icon == "ERROR" ? 1 : 0;
    }
    lblStatus = numText(ok) + " of " + numText(static_cast<long long>(lvwKeypadRegister.size())) +
                " keypads responded OK, " + numText(errors) + " errors";
}

void frmKelvarinCorehubSystemPrep::KeypadRegister(const std::string& hid, int flag, int error,
                                                  const std::string& firmware) {
    trap(c_.errors, kName, "oKVv5_KeypadRegister", [&] {
        // Presenters and scanners are told apart by their own events.
        if (flag == DeviceKind::Presenter || flag == DeviceKind::Scanner) return;
        PrepDeviceRow* r = rowOf(lvwKeypadRegister, hid);
        if (!r) return;
        if (error != BaseErrorCode::Success) {
            r->icon = "ERROR";
            r->status = GetCPPErrorString(error);
        } else if (oldFirmware(firmware, latestFirmware::kKeypad)) {
            // Registered all the same; only its firmware is behind.
            r->icon = "ERROR";
            r->status = "Old Firmware Detected";
        } else {
            r->icon = "OK";
            r->status = "Programmed";
        }
        recount();
        changed();
    });
}

void frmKelvarinCorehubSystemPrep::validated(const std::string& hid, const std::string& firmware, const char* kind,
                                             const char* latest) {
    PrepDeviceRow* r = rowOf(lvwPresenterScannerRegister, hid);
    if (!r) return;
    r->sid = kind;
    if (oldFirmware(firmware, latest)) {
        r->icon = "ERROR";
        r->status = "Old Firmware Detected";
    } else {
        r->icon = "OK";
        r->status = "Programmed";
    }
    changed();
}

void frmKelvarinCorehubSystemPrep::PresenterValidated(const std::string& hid, const std::string& firmware) {
    trap(c_.errors, kName, "oKVv5_PresenterValidated",
         [&] { validated(hid, firmware, "Presenter", latestFirmware::kPresenter); });
}

void frmKelvarinCorehubSystemPrep::ScannerValidated(const std::string& hid, const std::string& firmware) {
    trap(c_.errors, kName, "oKVv5_ScannerValidated",
         [&] { validated(hid, firmware, "Scanner", latestFirmware::kScanner); });
}

// ---- deleting and swapping ----

bool frmKelvarinCorehubSystemPrep::deleteRows(std::vector<PrepDeviceRow>& rows, const std::string& question) {
    if (programming() || std::none_of(rows.begin(), rows.end(), [](const PrepDeviceRow& r) { return r.selected; }))
        return false;
    if (!c_.ports.dialogs.askYesNo("Confirm Delete", question, MsgIcon::Question)) return false;
    const std::string base = baseHID();
    auto* g2 = driver();
    for (auto it = rows.begin(); it != rows.end();) {
        if (!it->selected) {
            ++it;
            continue;
        }
        const int rc = g2 ? g2->DeleteKeypadFromRegistry(base, idText(it->hid)) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) {
            // The row stays with the keypad the base still has.
            driverError(rc, base);
            ++it;
            continue;
        }
        it = rows.erase(it);
    }
    if (prepStep == kStepDone) recount();
    cmdProgramKeypadsEnabled = !lvwKeypadRegister.empty() || !lvwPresenterScannerRegister.empty();
    changed();
    return true;
}

void frmKelvarinCorehubSystemPrep::cmdScanKeypadDelete_Click() {
    trap(c_.errors, kName, "cmdScanKeypadDelete_Click",
         [&] { deleteRows(lvwKeypadRegister, "Remove selected Keypads(s) from this system?"); });
}

void frmKelvarinCorehubSystemPrep::cmdPresenterScannerDelete_Click() {
    trap(c_.errors, kName, "cmdPresenterScannerDelete_Click",
         [&] { deleteRows(lvwPresenterScannerRegister, "Remove selected Presenter/Scanner(s) from this system?"); });
}

void frmKelvarinCorehubSystemPrep::cmdScanKeypadSwap_Click() {
    trap(c_.errors, kName, "cmdScanKeypadSwap_Click", [&] {
        if (programming()) return;
        auto selected = std::find_if(lvwKeypadRegister.begin(), lvwKeypadRegister.end(),
                                     [](const PrepDeviceRow& r) { return r.selected; });
        if (selected == lvwKeypadRegister.end()) {
            c_.ports.dialogs.message("Error", "Nothing selected to replace", MsgIcon::Exclamation);
            return;
        }
        const auto answer = c_.ports.dialogs.inputBox("Replace Keypad", "Scan/enter new HID", "");
        if (!answer) return;
        std::string hid;
        // A keypad can be listed once only: the new HID must not be listed already.
        if (!enteredHid(*answer, hid) || rowOf(lvwKeypadRegister, hid) || rowOf(lvwPresenterScannerRegister, hid)) {
            c_.ports.dialogs.message("Error", "Invalid HID entered", MsgIcon::Exclamation);
            return;
        }
        const std::string oldHid = idText(selected->hid);
        const int sid = static_cast<int>(ParseNumber(selected->sid));
        const std::string base = baseHID();
        auto* g2 = driver();
        int rc = g2 ? g2->DeleteKeypadFromRegistry(base, oldHid) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) {
            driverError(rc, base);
            return;
        }
        rc = g2->AddKeypadToRegistry(base, hid, sid);
        if (rc != BaseErrorCode::Success) {
            driverError(rc, base);
            // The old keypad goes back, so the base is as it was.
            g2->AddKeypadToRegistry(base, oldHid, sid);
            return;
        }
        selected->key = registryKey(hid);
        selected->hid = shown(hid);
        selected->icon = "UNKNOWN";
        selected->status.clear();
        cmdProgramKeypadsEnabled = true;
        if (prepStep == kStepDone) recount();
        changed();
    });
}

// ---- serial numbers ----

void frmKelvarinCorehubSystemPrep::cmdExportToExcel_Click() {
    trap(c_.errors, kName, "cmdExportToExcel_Click", [&] {
        Dialogs& d = c_.ports.dialogs;
        const std::string noExcel = "Excel object not found\r\nError connecting to Excel application";
        const std::string noWorkbook = "There are no workbooks open in Excel";
        Spreadsheet* sheets = c_.spreadsheet;
        if (!sheets) {
            d.message(kExportTitle, noExcel, MsgIcon::Exclamation);
            return;
        }
        // On this platform the workbook is named rather than found open: the name stands for
        // the spreadsheet program's open workbooks.
        const auto answer = d.inputBox("Export to Excel", "Invoice workbook (.xlsx) to update with the serial numbers",
                                       exportWorkbook);
        if (!answer) return;
        std::string name = trim(*answer);
        if (name.size() >= 2 && name.front() == '"' && name.back() == '"') name = trim(name.substr(1, name.size() - 2));
        if (name.empty()) {
            d.message(kExportTitle, noWorkbook, MsgIcon::Exclamation);
            return;
        }
        exportWorkbook = name;
        auto failed = [&](const AppError& e) {
            if (e.number() == err::kCannotCreateObject)
                d.message(kExportTitle, noExcel, MsgIcon::Exclamation);
            else if (e.number() == err::kFileNotFound)
                d.message(kExportTitle, noWorkbook, MsgIcon::Exclamation);
            else
                d.message("Export to Excel Error", "Error " + numText(e.number()) + "\r\n" + e.what(),
                          MsgIcon::Exclamation);
        };
        std::string workbook;
        try {
            workbook = sheets->findWorksheet(name, kSerialSheet);
        } catch (const AppError& e) {
            failed(e);
            return;
        }
        if (workbook.empty()) {
            d.message(kExportTitle, "There are no Serial Number worksheets available in any open Excel files",
                      MsgIcon::Exclamation);
            return;
        }
        if (!d.askYesNo("Confirm Update",
                        "Update serial number information in the following Excel invoice file?\r\n" + workbook,
                        MsgIcon::Question))
            return;
        std::vector<std::string> serials;
        for (const auto& r : lvwKeypadRegister) serials.push_back(r.hid);
        for (const auto& r : lvwPresenterScannerRegister) serials.push_back(r.hid);
        try {
            sheets->writeWorksheetColumn(name, kSerialSheet, kSerialColumn, kSerialFirstRow, serials);
        } catch (const AppError& e) {
            failed(e);
        }
    });
}

// ---- leaving ----

bool frmKelvarinCorehubSystemPrep::RequestClose() {
    bool closed = false;
    trap(c_.errors, kName, "Form_QueryUnload", [&] {
        Dialogs& d = c_.ports.dialogs;
        // One question: an unfinished set-up is asked about before the devices are.
        if (prepStep < kStepDone) {
            if (!d.askYesNo("Confirm Exit", "The setup process is incomplete, are you sure you wish to quit now?",
                            MsgIcon::Question))
                return;
        } else {
            const auto notOk = [](const PrepDeviceRow& r) { return r.icon != "OK"; };
            if ((std::any_of(lvwKeypadRegister.begin(), lvwKeypadRegister.end(), notOk) ||
                 std::any_of(lvwPresenterScannerRegister.begin(), lvwPresenterScannerRegister.end(), notOk)) &&
                !d.askYesNo("Confirm",
                            "Not all devices are confirmed as programmed, are you sure you wish to continue?",
                            MsgIcon::Question))
                return;
        }
        if (programming()) {
            tmrPrep.setEnabled(false);
            setRegistration(false);
        }
        c_.forms.unload(*this);
        closed = true;
    });
    return closed;
}

frmKelvarinCorehubSystemPrep& showSystemPrep(Controller& controller) {
    auto* form = controller.forms.get<frmKelvarinCorehubSystemPrep>(frmKelvarinCorehubSystemPrep::kName);
    if (!form) form = &controller.forms.load<frmKelvarinCorehubSystemPrep>(controller);
    form->Show();
    return *form;
}

}  // namespace tlx
