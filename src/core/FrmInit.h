#pragma once
// `frmInit`, the keypad set-up form: the base stations with their keypad ranges, the
// not-voted pop-up and the close-voting slider. During start-up it carries the opening bar.
#include <string>
#include <vector>

#include "core/Form.h"
#include "core/PortFile.h"

namespace tlx {

class Controller;

struct InitGridRow {
    std::string serialNumber;
    std::string baseType;  // as shown: "Kelvarin Corehub g2", "Keyboard", ...
    std::string lowest;    // "Lowest Keypad Number"
    std::string highest;   // "Highest Keypad Number"
    bool duplicate = false;
    int colourIndex = 0;
    int offset = 0;
};

class FrmInit : public Form {
public:
    static constexpr const char* kName = "frmInit";
    explicit FrmInit(Controller& controller);

    // The opening bar's text during start-up.
    std::string openingBar;
    std::vector<InitGridRow> rows;
    static const std::vector<std::string>& gridColumns();
    // Base types offered, as shown.
    static const std::vector<std::string>& baseTypeChoices();
    // Shown form to stored form ("Keyboard" -> "KBOARD"); "" when unknown.
    static std::string storedBaseType(const std::string& shown);
    static std::string shownBaseType(const std::string& stored);

    // Not-voted pop-up.
    bool chkPopUpOn = false;
    std::string txtPopUp;   // "Auto PopUp when down to"
    std::string txtHowMany; // "Show how many"
    int popUpLo = 0;
    int popUpHi = 0;
    bool chkScrollingDisplay = false;
    // Close voting automatically.
    bool chkClose = false;
    int sldClosePercent = 100;
    std::string closeLabel() const;

    // Fills the form from the global base table and pop-up settings.
    void loadFromGlobals();
    // Searches for base stations ("Scanning System"); none found means keyboard voting.
    void ScanSystem();
    // Checks the entries; on success writes the port file and the settings and closes.
    bool cmdOK_Click();
    void cmdCancel_Click();
    // The port-file contents the entries describe.
    PortFileData entries() const;
    // Writes the settings file from the global settings.
    bool SaveSettings();

private:
    bool check();
    Controller& c_;
};

}  // namespace tlx
