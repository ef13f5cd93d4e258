#include "drivers/SessionSettings.h"

#include <algorithm>
#include <cmath>

#include "core/Controller.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "drivers/PrioritizerDriver.h"
#include "ports/Dialogs.h"

namespace tlx {

namespace {

constexpr const char* kSession = "SESSION";
constexpr const char* kRadio = "RADIO";
constexpr const char* kPowerSave = "POWER SAVE";
constexpr const char* kEnvironmental = "ENVIRONMENTAL";
const std::array<const char*, 8> kAltDefaults = {"1", "3", "5", "7", "24", "45", "69", "77"};

int toInt(const std::string& s) {
    const double v = ParseNumber(s);
    return std::fabs(v) < 2e9 ? static_cast<int>(std::lround(v)) : 0;
}

// A number as the form shows it, read through the shared reader.
std::string numberText(const std::string& s) { return numText(static_cast<long long>(toInt(s))); }

// Time and count fields go to 16-bit fields of the base: a value outside 0..65535 is
// corrected to the nearer end rather than refused.
int timeOrCount(const std::string& s) { return std::clamp(toInt(s), 0, 65535); }

// Text that holds a number at all: the shared reader gives 0 for "abc" as for "0".
bool isNumber(const std::string& s) {
    return std::any_of(s.begin(), s.end(), [](char ch) { return ch >= '0' && ch <= '9'; });
}

// "" when the text is a whole number within the range, else the control's message.
std::string rangeMessage(const std::string& label, const std::string& text, int lo, int hi) {
    const double v = ParseNumber(text);
    if (isNumber(text) && v >= lo && v <= hi && v == std::floor(v)) return {};
    return label + " must be a whole number from " + numText(lo) + " to " + numText(hi);
}

}  // namespace

frmPrioritizerSessionSettings::frmPrioritizerSessionSettings(Controller& controller,
                                                             KelvarinPrioritizerDriver* driver, std::string base)
    : Form(kName), c_(controller), driver_(driver), base_(std::move(base)) {
    setCaption("Session Settings");
    fromSession(KelvarinSessionConfig{});
}

const std::vector<std::string>& frmPrioritizerSessionSettings::registryModes() {
    static const std::vector<std::string> modes = {"Fixed", "Dynamic", "Static"};
    return modes;
}

bool frmPrioritizerSessionSettings::staticRegistryFieldsVisible() const {
    return cmbRegistryMode >= 0 && cmbRegistryMode < static_cast<int>(registryModes().size()) &&
           registryModes()[static_cast<std::size_t>(cmbRegistryMode)] == "Static";
}

std::filesystem::path frmPrioritizerSessionSettings::defaultsFile() const {
    return c_.glo.localDataFolder / kDefaultsFile;
}

void frmPrioritizerSessionSettings::fromSession(const KelvarinSessionConfig& s) {
    loaded_ = s;
    txtID = numText(s.SessionID);
    txtName = s.SessionName;
    cmbRegistryMode = s.RegistryMode;
    txtStaticRegSIDOffset = numText(s.StaticRegSIDOffset);
    txtStaticRegSIDMax = numText(s.StaticRegSIDMax);
    txtChannel = numText(s.PrimaryChannel);
    for (std::size_t i = 0; i < 8; ++i) txtSessionChannel[i + 1] = numText(s.AltChannels[i]);
    chkAutoScanEnabled = s.AutoScanEnabled;
    chkScanAllChannels = s.AutoScanAllChannels;
    txtAutoOffKeyPress = numText(s.AutoOffNoKeypress);
    txtAutoOffNoSignal = numText(s.AutoOffNoSignal);
    txtVoteSleepTimer = numText(s.VoteSleepTimer);
    txtPacketRetryCount = numText(s.PacketRetryCount);
    chkHighNoiseMode = s.HighNoiseMode;
    changed();
}

KelvarinSessionConfig frmPrioritizerSessionSettings::toSession(KelvarinSessionConfig s) const {
    s.SessionID = toInt(txtID);
    s.SessionName = txtName;
    s.RegistryMode = cmbRegistryMode;
    s.StaticRegSIDOffset = timeOrCount(txtStaticRegSIDOffset);
    s.StaticRegSIDMax = timeOrCount(txtStaticRegSIDMax);
    s.PrimaryChannel = toInt(txtChannel);
    for (std::size_t i = 0; i < 8; ++i) s.AltChannels[i] = toInt(txtSessionChannel[i + 1]);
    s.AutoScanEnabled = chkAutoScanEnabled;
    s.AutoScanAllChannels = chkScanAllChannels;
    s.AutoOffNoKeypress = timeOrCount(txtAutoOffKeyPress);
    s.AutoOffNoSignal = timeOrCount(txtAutoOffNoSignal);
    s.VoteSleepTimer = timeOrCount(txtVoteSleepTimer);
    s.PacketRetryCount = timeOrCount(txtPacketRetryCount);
    s.HighNoiseMode = chkHighNoiseMode;
    return s;
}

void frmPrioritizerSessionSettings::Form_Load() {
    trap(c_.errors, kName, "Form_Load", [&] {
        KelvarinSessionConfig s;
        if (driver_ && driver_->GetSessionConfig(base_, s) == BaseErrorCode::Success)
            fromSession(s);
        else
            loadDefaults();
    });
}

void frmPrioritizerSessionSettings::loadDefaults() {
    trap(c_.errors, kName, "LoadDefaults", [&] {
        const auto file = defaultsFile();
        auto get = [&](const char* section, const std::string& key, const char* def) {
            return GetProfileString(file, section, key, def);
        };
        txtID = numberText(get(kSession, "SESSION ID", "1"));
        txtName = get(kSession, "SESSION NAME", "tallix Session");
        cmbRegistryMode = toInt(get(kSession, "REGISTRY MODE", "1"));
        txtChannel = numberText(get(kRadio, "PRIMARY CHANNEL", "69"));
        for (std::size_t i = 0; i < 8; ++i)
            txtSessionChannel[i + 1] = numberText(get(kRadio, "ALT CHANNEL " + numText(static_cast<int>(i + 1)),
                                                      kAltDefaults[i]));
        chkAutoScanEnabled = toInt(get(kRadio, "AUTO SCAN ENABLED", "1")) != 0;
        chkScanAllChannels = toInt(get(kRadio, "AUTO SCAN ALL CHANNELS", "0")) != 0;
        txtAutoOffKeyPress = numberText(get(kPowerSave, "AUTO OFF NO KEYPRESS", "500"));
        txtAutoOffNoSignal = numberText(get(kPowerSave, "AUTO OFF NO SIGNAL", "30"));
        txtVoteSleepTimer = numberText(get(kPowerSave, "VOTE SLEEP TIMER", "2"));
        txtPacketRetryCount = numberText(get(kEnvironmental, "PACKET RETRY COUNT", "20"));
        chkHighNoiseMode = toInt(get(kEnvironmental, "HIGH NOISE MODE", "0")) != 0;
        changed();
    });
}

bool frmPrioritizerSessionSettings::saveDefaults() const {
    ProfileWriter w(defaultsFile());
    auto flag = [](bool b) { return std::string(b ? "1" : "0"); };
    w.set(kSession, "SESSION ID", numberText(txtID));
    w.set(kSession, "SESSION NAME", txtName);
    w.set(kSession, "REGISTRY MODE", numText(cmbRegistryMode));
    w.set(kRadio, "PRIMARY CHANNEL", numberText(txtChannel));
    for (int i = 1; i <= 8; ++i)
        w.set(kRadio, "ALT CHANNEL " + numText(i), numberText(txtSessionChannel[static_cast<std::size_t>(i)]));
    w.set(kRadio, "AUTO SCAN ENABLED", flag(chkAutoScanEnabled));
    w.set(kRadio, "AUTO SCAN ALL CHANNELS", flag(chkScanAllChannels));
    w.set(kPowerSave, "AUTO OFF NO KEYPRESS", numberText(txtAutoOffKeyPress));
    w.set(kPowerSave, "AUTO OFF NO SIGNAL", numberText(txtAutoOffNoSignal));
    w.set(kPowerSave, "VOTE SLEEP TIMER", numberText(txtVoteSleepTimer));
    w.set(kEnvironmental, "PACKET RETRY COUNT", numberText(txtPacketRetryCount));
    w.set(kEnvironmental, "HIGH NOISE MODE", flag(chkHighNoiseMode));
    return w.save();
}

void frmPrioritizerSessionSettings::cmdLoadDefault() {
    trap(c_.errors, kName, "cmdLoadDefault_Click", [&] {
        if (!c_.ports.dialogs.askYesNo("Load Default Confirm", "Load in settings with default values?",
                                       MsgIcon::Question))
            return;
        loadDefaults();
    });
}

void frmPrioritizerSessionSettings::cmdSaveAsDefault() {
    trap(c_.errors, kName, "cmdSaveAsDefault_Click", [&] {
        if (!c_.ports.dialogs.askYesNo(
                "Save Default Confirm",
                "Overwrite default tallix settings for base station with currently loaded settings?",
                MsgIcon::Question))
            return;
        if (!saveDefaults())
            c_.ports.dialogs.message("Save Default Confirm",
                                     "Unable to write " + defaultsFile().string(), MsgIcon::Exclamation);
    });
}

void frmPrioritizerSessionSettings::cmdAdvancedOptions() {
    advancedVisible = !advancedVisible;
    cmdAdvancedOptionsCaption = advancedVisible ? "<<" : ">>";
    changed();
}

void frmPrioritizerSessionSettings::cmdEnvironment() {
    EnvironmentModeSelected = !EnvironmentModeSelected;
    changed();
}

std::string frmPrioritizerSessionSettings::checkControls() const {
    std::string first;
    auto check = [&](std::string message) {
        if (first.empty()) first = std::move(message);
    };
    check(rangeMessage("Session ID", txtID, 1, 65535));
    if (trim(txtName).empty()) check("Please enter a session name");
    if (cmbRegistryMode < 0 || cmbRegistryMode >= static_cast<int>(registryModes().size()))
        check("Please choose a registry mode");
    if (staticRegistryFieldsVisible()) {
        check(rangeMessage("Static Registry Keypad Offset", txtStaticRegSIDOffset, 0, 4094));
        check(rangeMessage("Static Registry Maximum Keypads", txtStaticRegSIDMax, 1, 4095));
    }
    check(rangeMessage("Primary Channel", txtChannel, kFirstChannel, kLastChannel));
    for (int i = 1; i <= 8; ++i)
        check(rangeMessage("Alternative Channel " + numText(i), txtSessionChannel[static_cast<std::size_t>(i)],
                           kFirstChannel, kLastChannel));
    // Time and count fields are corrected into range, but must hold a number.
    const std::pair<const char*, const std::string*> counts[] = {{"Auto Off (No Keypress)", &txtAutoOffKeyPress},
                                                                 {"Auto Off (No Signal)", &txtAutoOffNoSignal},
                                                                 {"Vote Sleep Timer", &txtVoteSleepTimer},
                                                                 {"Packet Retry Count", &txtPacketRetryCount}};
    for (const auto& [label, text] : counts)
        if (!isNumber(*text)) check(std::string(label) + " must be a number");
    return first;
}

bool frmPrioritizerSessionSettings::cmdOK() {
    bool ok = false;
    trap(c_.errors, kName, "cmdOK_Click", [&] {
        if (const std::string problem = checkControls(); !problem.empty()) {
            c_.ports.dialogs.message(kCheckTitle, problem, MsgIcon::Exclamation);
            return;
        }
        if (driver_ && driver_->SetSessionConfig(base_, toSession(loaded_)) != BaseErrorCode::Success) return;
        ok = true;
    });
    if (ok) c_.forms.unload(*this);
    return ok;
}

void frmPrioritizerSessionSettings::cmdCancel() { c_.forms.unload(*this); }

}  // namespace tlx
