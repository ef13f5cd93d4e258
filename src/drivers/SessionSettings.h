#pragma once
// `frmPrioritizerSessionSettings`: edits one Corehub base's radio session and keeps the
// factory defaults file "CorehubDefaults.ini", which can be loaded into the form or
// overwritten from it.
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "core/Form.h"
#include "ports/BaseLibrary.h"

namespace tlx {

class Controller;
class KelvarinPrioritizerDriver;

class frmPrioritizerSessionSettings : public Form {
public:
    static constexpr const char* kName = "frmPrioritizerSessionSettings";
    static constexpr const char* kDefaultsFile = "CorehubDefaults.ini";

    // The base is named as the driver names it (slot or serial number).
    frmPrioritizerSessionSettings(Controller& controller, KelvarinPrioritizerDriver* driver = nullptr,
                                  std::string base = "0");

    // Controls.
    std::string txtID;
    std::string txtName;
    int cmbRegistryMode = 1;
    static const std::vector<std::string>& registryModes();  // "Fixed", "Dynamic", "Static"
    std::string txtStaticRegSIDOffset;
    std::string txtStaticRegSIDMax;
    // The static registry fields and their labels show only for the "Static" mode.
    bool staticRegistryFieldsVisible() const;
    // Scanning every channel is a kind of automatic scan: without it the box is disabled.
    bool scanAllChannelsEnabled() const { return chkAutoScanEnabled; }
    // The environmental fields are edited once the environment settings are chosen.
    bool environmentFieldsEnabled() const { return EnvironmentModeSelected; }
    std::string txtChannel;
    std::array<std::string, 9> txtSessionChannel;  // indices 1..8
    bool chkAutoScanEnabled = true;
    bool chkScanAllChannels = false;
    std::string txtAutoOffKeyPress;
    std::string txtAutoOffNoSignal;
    std::string txtVoteSleepTimer;
    std::string txtPacketRetryCount;
    bool chkHighNoiseMode = false;
    std::string cmdAdvancedOptionsCaption = ">>";
    bool advancedVisible = false;

    bool EditMode = false;
    bool EnvironmentModeSelected = false;

    std::filesystem::path defaultsFile() const;
    // Reads the base's session into the controls (the defaults when there is no base).
    void Form_Load();
    void cmdLoadDefault();
    void cmdSaveAsDefault();
    void cmdAdvancedOptions();
    void cmdEnvironment();
    // Checks the controls, writes them to the base and closes; false when a control holds a
    // bad value (its message is shown, nothing is written and the form stays) or the base
    // refused.
    bool cmdOK();
    // The message for the first control whose value cannot be sent, "" when all can.
    std::string checkControls() const;
    static constexpr const char* kCheckTitle = "Session Settings";
    static constexpr int kFirstChannel = 1, kLastChannel = 77;
    void cmdCancel();

    // The defaults file into the controls, and the controls into it, without asking.
    void loadDefaults();
    bool saveDefaults() const;
    void fromSession(const KelvarinSessionConfig& session);
    KelvarinSessionConfig toSession(KelvarinSessionConfig session) const;

private:
    Controller& c_;
    KelvarinPrioritizerDriver* driver_;
    std::string base_;
    KelvarinSessionConfig loaded_;
};

}  // namespace tlx
