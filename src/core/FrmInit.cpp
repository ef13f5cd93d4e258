#include "core/FrmInit.h"

#include <cmath>

#include "core/Controller.h"
#include "core/Text.h"
#include "ports/Dialogs.h"

namespace tlx {

namespace {
constexpr const char* kTitle = "Keypad Setup";
constexpr const char* kPopUpTitle = "Keypad Setup - PopUp Display";

struct TypeName {
    const char* shown;
    const char* stored;
};
const TypeName kTypes[] = {
    {"Kelvarin Base v3", "KELVARIN BASE V3"},
    {"Kelvarin Corehub g1", "KELVARIN COREHUB G1"},
    {"Kelvarin Corehub g2", "KELVARIN COREHUB G2"},
    {"Keyboard", "KBOARD"},
    {"Modem", "KBOARD"},
};

int toInt(const std::string& s) {
    const double d = ParseNumber(s);
    return std::fabs(d) > 1e9 ? 0 : static_cast<int>(std::lround(d));
}
}  // namespace

FrmInit::FrmInit(Controller& controller) : Form(kName), c_(controller) { setCaption(kTitle); }

const std::vector<std::string>& FrmInit::gridColumns() {
    static const std::vector<std::string> cols = {"Serial Number", "Base Type", "Lowest Keypad Number",
                                                  "Highest Keypad Number"};
    return cols;
}

const std::vector<std::string>& FrmInit::baseTypeChoices() {
    static const std::vector<std::string> choices = [] {
        std::vector<std::string> v;
        for (const auto& t : kTypes) v.emplace_back(t.shown);
        return v;
    }();
    return choices;
}

std::string FrmInit::storedBaseType(const std::string& shown) {
    const std::string u = toUpper(trim(shown));
    if (u == "KEYBOARD" || u == "MODEM (KEYBOARD VOTING)" || u == "KBOARD") return "KBOARD";
    for (const auto& t : kTypes)
        if (u == toUpper(t.shown) || u == t.stored) return t.stored;
    return {};
}

std::string FrmInit::shownBaseType(const std::string& stored) {
    const std::string u = toUpper(trim(stored));
    for (const auto& t : kTypes)
        if (u == t.stored) return t.shown;
    return stored;
}

std::string FrmInit::closeLabel() const {
    return "Close voting when " + numText(sldClosePercent) + "% have voted";
}

void FrmInit::loadFromGlobals() {
    rows.clear();
    for (const auto& b : c_.glo.bases) {
        InitGridRow r;
        r.serialNumber = b.port;
        r.baseType = shownBaseType(b.baseType);
        r.lowest = numText(b.gridLo);
        r.highest = numText(b.gridHi);
        r.duplicate = b.duplicate;
        r.colourIndex = b.colourIndex;
        r.offset = b.offset;
        rows.push_back(r);
    }
    const auto& p = c_.glo.popUp;
    chkPopUpOn = p.popUpOn;
    txtPopUp = p.popUp;
    txtHowMany = p.howMany;
    popUpLo = p.lo;
    popUpHi = p.hi;
    chkClose = p.close;
    sldClosePercent = p.closePercent;
    chkScrollingDisplay = p.scrollingDisplay;
    changed();
}

void FrmInit::ScanSystem() {
    trap(c_.errors, kName, "ScanSystem", [&] {
        setCaption("Scanning System");
        const auto found = c_.drivers->scanForBases();
        std::vector<InitGridRow> fresh;
        for (const auto& f : found) {
            InitGridRow r;
            r.serialNumber = f.port;
            r.baseType = shownBaseType(f.baseType);
            r.lowest = "1";
            r.highest = "20";
            // A base seen before keeps its keypad range.
            for (const auto& old : rows)
                if (old.serialNumber == f.port) {
                    r.lowest = old.lowest;
                    r.highest = old.highest;
                    r.duplicate = old.duplicate;
                    r.colourIndex = old.colourIndex;
                    r.offset = old.offset;
                }
            fresh.push_back(r);
        }
        setCaption(kTitle);
        if (fresh.empty()) {
            InitGridRow kb;
            kb.baseType = "Keyboard";
            kb.lowest = rows.empty() ? "1" : rows.front().lowest;
            kb.highest = rows.empty() ? "20" : rows.front().highest;
            fresh.push_back(kb);
            rows = fresh;
            changed();
            c_.ports.dialogs.message(kTitle, "No base stations found, keyboard voting enabled",
                                     MsgIcon::Information);
            return;
        }
        rows = fresh;
        changed();
    });
}

bool FrmInit::check() {
    Dialogs& d = c_.ports.dialogs;
    bool anyType = !rows.empty();
    for (const auto& r : rows)
        if (storedBaseType(r.baseType).empty()) anyType = false;
    if (!anyType) {
        d.message(kTitle, "No base type selected", MsgIcon::Exclamation);
        return false;
    }
    for (const auto& r : rows)
        if (isNumeric(r.highest) && ParseNumber(r.highest) > 4095) {
            d.message(kTitle, "Highest Keypad Number cannot be greater than 4095", MsgIcon::Exclamation);
            return false;
        }
    bool rangeError = false;
    bool anyValid = false;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& r = rows[i];
        if (!isNumeric(r.lowest) || !isNumeric(r.highest)) continue;
        anyValid = true;
        if (ParseNumber(r.lowest) >= ParseNumber(r.highest)) {
            d.message(kTitle,
                      "Error: Base Station " + numText(static_cast<long long>(i + 1)) +
                          "\r\nLowest Keypad Number equal to or greater than Highest",
                      MsgIcon::Exclamation);
            rangeError = true;
        }
    }
    if (rangeError) return false;
    if (!anyValid) {
        d.message(kTitle, "Error: No valid Low or High Keypad numbers entered", MsgIcon::Exclamation);
        return false;
    }
    if (chkPopUpOn) {
        bool ok = true;
        if (trim(txtPopUp).empty()) {
            d.message(kPopUpTitle, "Please enter a value for 'Auto PopUp when down to'", MsgIcon::Exclamation);
            ok = false;
        }
        if (trim(txtHowMany).empty()) {
            d.message(kPopUpTitle, "Please enter a value for 'Show how many'", MsgIcon::Exclamation);
            ok = false;
        }
        if (!ok) return false;
    }
    if (chkClose && sldClosePercent <= 0) {
        d.message(kTitle, "Percentage value on which to close vote must be greater than 0", MsgIcon::Exclamation);
        return false;
    }
    return true;
}

PortFileData FrmInit::entries() const {
    PortFileData data;
    for (const auto& r : rows) {
        PortEntry e;
        e.port = trim(r.serialNumber);
        e.baseType = storedBaseType(r.baseType);
        e.gridLo = toInt(r.lowest);
        e.gridHi = toInt(r.highest);
        e.duplicate = r.duplicate;
        e.colourIndex = r.colourIndex;
        e.offset = r.offset;
        data.bases.push_back(e);
    }
    auto& p = data.popUp;
    p.popUpOn = chkPopUpOn;
    p.popUp = trim(txtPopUp);
    p.howMany = trim(txtHowMany);
    p.lo = popUpLo;
    p.hi = popUpHi;
    p.close = chkClose;
    p.closePercent = sldClosePercent;
    p.scrollingDisplay = chkScrollingDisplay;
    return data;
}

bool FrmInit::SaveSettings() { return c_.settings.SaveSettings(c_.glo.options); }

bool FrmInit::cmdOK_Click() {
    bool accepted = false;
    trap(c_.errors, kName, "cmdOK_Click", [&] {
        if (!check()) return;
        const PortFileData data = entries();
        const auto status = writePortFile(c_.glo.localDataFolder / "port.tlc", data);
        if (status == PortFileWriteStatus::EncryptionError) {
            c_.ports.dialogs.message(kTitle, "Encryption error", MsgIcon::Critical);
            return;
        }
        if (status == PortFileWriteStatus::WriteError) {
            c_.ports.dialogs.message(kTitle, "Error writing data to port file, please try again",
                                     MsgIcon::Critical);
            return;
        }
        c_.glo.bases = data.bases;
        c_.glo.popUp = data.popUp;
        c_.glo.portFileRead = true;
        SaveSettings();
        accepted = true;
    });
    if (accepted) {
        const bool reconnect = c_.glo.InitialisedState == INIT_STATE_INITIALISED && !c_.glo.ShuttingDown;
        c_.forms.unload(*this);
        if (reconnect) c_.connectBases();
    }
    return accepted;
}

void FrmInit::cmdCancel_Click() { c_.forms.unload(*this); }

}  // namespace tlx
