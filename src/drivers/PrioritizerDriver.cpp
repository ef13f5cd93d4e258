#include "drivers/PrioritizerDriver.h"

#include <algorithm>
#include <cmath>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "drivers/BaseStatus.h"
#include "drivers/PrioritizerDriverInl.h"
#include "ports/Dialogs.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {

std::string seconds(double s) { return numText(std::round(s * 100.0) / 100.0); }

}  // namespace

const CorehubFlavour& kpdriver_KELVARIN_Prioritizer_g2::flavourG2() {
    static const CorehubFlavour f{kName,
                                  " - Corehub g2:   ",
                                  " - Corehub g2: ",
                                  "Kelvarin Corehub g2",
                                  "KELVARIN COREHUB G2",
                                  LibraryGeneration::Prioritizer2,
                                  true,
                                  true,
                                  false};
    return f;
}

const CorehubFlavour& kpdriver_KELVARIN_Prioritizer::flavourG1() {
    static const CorehubFlavour f{kName,
                                  " - Corehub:   ",
                                  " - Corehub: ",
                                  "Kelvarin Corehub g1",
                                  "KELVARIN COREHUB G1",
                                  LibraryGeneration::Prioritizer,
                                  false,
                                  false,
                                  true};
    return f;
}

kpdriver_KELVARIN_Prioritizer_g2::kpdriver_KELVARIN_Prioritizer_g2(Controller& controller, BaseLibrary& library)
    : KelvarinPrioritizerDriver(controller, library, flavourG2()) {}

kpdriver_KELVARIN_Prioritizer::kpdriver_KELVARIN_Prioritizer(Controller& controller, BaseLibrary& library)
    : KelvarinPrioritizerDriver(controller, library, flavourG1()) {}

void kpdriver_KELVARIN_Prioritizer::surveyReply(int slot, const KelvarinSurveyReply& reply) {
    log(baseText(slot) + " - KeypadSurveyReply Event - HID:" + reply.HID + ", Channel:" +
            numText(reply.ChannelIndex) + ", Votes:" + numText(reply.VotesSent) + ", Acks:" + numText(reply.Acks) +
            (reply.EndOfScan ? ", End Of Scan" : ""),
        "KeypadSurveyReply");
    KeypadSurveyReply(reply, baseText(slot));
}

KelvarinPrioritizerDriver::KelvarinPrioritizerDriver(Controller& controller, BaseLibrary& library,
                                                     const CorehubFlavour& flavour)
    : Form(flavour.formName), c_(controller), lib_(library), f_(flavour) {
    loadDisplaySettings();
}

KelvarinPrioritizerDriver::~KelvarinPrioritizerDriver() = default;

void KelvarinPrioritizerDriver::surveyReply(int, const KelvarinSurveyReply&) {}

void KelvarinPrioritizerDriver::loadDisplaySettings() {
    guard("loadDisplaySettings", [&] {
        texts_ = KeypadDisplayTexts{};
        menu_ = PresenterMenu{};
        const SettingsFiles files(c_.settings.readFiles());
        texts_.load(files);
        menu_.load(files);
    });
}

void KelvarinPrioritizerDriver::log(const std::string& text, const char* procedure) {
    try {
        txtDebug.prepend(timeStamp(c_.ports.scheduler.now().secondsSinceMidnight()) + " " + text);
        c_.logs.trace(text, Name(), procedure);
    } catch (...) {
        // Logging never raises into the member that logs.
    }
}

bool KelvarinPrioritizerDriver::logged(const std::string& part) const {
    for (std::size_t i = 0; i < txtDebug.lineCount(); ++i)
        if (contains(txtDebug.line(i), part)) return true;
    return false;
}

void KelvarinPrioritizerDriver::failed(const char* member, int code, const std::string& text) {
    log(std::string(" - ") + member + " FAILED - " + numText(code) + ": " + text, member);
}

std::string KelvarinPrioritizerDriver::GetCPPErrorString(int code) const { return tlx::GetCPPErrorString(code); }

void KelvarinPrioritizerDriver::corehubError(int slot, const std::string& base, const std::string& caption,
                                             int code) {
    c_.ports.dialogs.message("Kelvarin Corehub Error",
                             "Base Station " + (slot ? baseName(slot) : base) + "\r\n" + caption +
                                 "\r\nCode: " + numText(code) +
                                 "\r\nDescription: " + tlx::GetCPPErrorString(code),
                             MsgIcon::Exclamation);
}

int KelvarinPrioritizerDriver::connectedCount() const {
    int n = 0;
    for (const auto& b : bases_) n += b.connected ? 1 : 0;
    return n;
}

bool KelvarinPrioritizerDriver::isConnected(const std::string& identifier) const {
    const std::string id = idText(identifier);
    for (const auto& b : bases_)
        if (b.connected && b.identifier == id) return true;
    return false;
}

int KelvarinPrioritizerDriver::slotOf(const std::string& base) const {
    const std::string t = trim(base);
    if (!isNumeric(replaceAll(t, " ", ""))) return 0;
    const double n = ParseNumber(t);
    const int count = static_cast<int>(bases_.size());
    // An identity names the base of that port-file row; any other number is a serial number.
    std::string id;
    if (n >= 0 && n < static_cast<double>(c_.glo.bases.size()) && n == std::floor(n))
        id = c_.glo.bases[static_cast<std::size_t>(n)].port;
    else
        id = t;
    for (int i = 0; i < count; ++i) {
        const BaseStationRecord& r = bases_[static_cast<std::size_t>(i)];
        if (r.connected && r.identifier == idText(id)) return i + 1;
    }
    return 0;
}

std::string KelvarinPrioritizerDriver::baseText(int slot) const {
    if (slot < 1 || slot > static_cast<int>(bases_.size())) return numText(kUnlistedBase);
    return numText(corehubBaseIndex(c_.glo, bases_[static_cast<std::size_t>(slot - 1)].identifier));
}

std::string KelvarinPrioritizerDriver::baseName(int slot) const {
    if (slot < 1 || slot > static_cast<int>(bases_.size())) return "";
    return formatDigits(bases_[static_cast<std::size_t>(slot - 1)].identifier, "### 000 000 000");
}

KelvarinBase* KelvarinPrioritizerDriver::baseObject(int slot) const {
    if (slot < 1 || slot > kMaxBases) return nullptr;
    return oKVs_[static_cast<std::size_t>(slot - 1)].get();
}

int KelvarinPrioritizerDriver::passThrough(const std::string& base, const char* operation, const char* caption,
                                           const std::function<int(KelvarinBase&)>& op) {
    return passThroughSlot(slotOf(base), base, operation, caption, op);
}

int KelvarinPrioritizerDriver::passThroughSlot(int slot, const std::string& base, const char* operation,
                                               const char* caption, const std::function<int(KelvarinBase&)>& op) {
    KelvarinBase* b = baseObject(slot);
    const int rc = b ? op(*b) : BaseErrorCode::BaseNotFound;
    log((slot ? baseText(slot) : base) + f_.logName + operation + " = " + numText(rc), operation);
    if (rc != BaseErrorCode::Success) {
        failed(operation, rc, tlx::GetCPPErrorString(rc));
        if (caption) corehubError(slot, base, caption, rc);
    }
    return rc;
}

bool KelvarinPrioritizerDriver::takesFirmware(const std::string& version) const {
    const bool g2Family = VersionCompare(version, version::kG2Family) >= 0;
    return f_.newerFirmwareFamily ? g2Family : !g2Family;
}

void KelvarinPrioritizerDriver::attach(int slot, KelvarinBase& b) {
    b.Error.connect([this, slot](int code, const std::string& extra) { onError(slot, code, extra); });
    b.KeypadChannelScanReply.connect(
        [this, slot](const KelvarinChannelScanReply& r) { onScanReply(slot, r, "KeypadChannelScanReply"); });
    b.ChannelScanReply.connect(
        [this, slot](const KelvarinChannelScanReply& r) { onScanReply(slot, r, "ChannelScanReply"); });
    b.KeypadConfig.connect([this, slot](const KelvarinKeypadConfig& k) { onKeypadConfig(slot, k); });
    b.KeypadRegister.connect([this, slot](const std::string& hid, int flag, int error, const std::string& firmware) {
        onKeypadRegister(slot, hid, flag, error, firmware);
    });
    b.VoteReceived.connect([this, slot](const KelvarinVote& v) { onVote(slot, v); });
    if (f_.surveyReplies)
        b.KeypadSurveyReply.connect([this, slot](const KelvarinSurveyReply& r) {
            guard("KeypadSurveyReply", [&] { surveyReply(slot, r); });
        });
    if (slot != 1) return;
    // Base 1 also carries audio, debug traffic and the presenter keypad.
    b.AudioStatus.connect([this](const KelvarinAudioStatus& s) {
        guard("AudioStatus", [&] {
            log(baseText(1) + " - AudioStatus Event - Streaming:" + boolText(s.Streaming) +
                    ", RSSI:" + numText(s.RSSI) + ", LQI:" + numText(s.LQI),
                "AudioStatus");
            AudioStatus(s, baseText(1));
        });
    });
    b.DebugRx.connect([this](const std::string& t) {
        if (c_.glo.options.flag(section::kCoreHubOptions, "COREHUB DEBUG"))
            log(baseText(1) + " - DebugRx: " + t, "DebugRx");
    });
    b.DebugTx.connect([this](const std::string& t) {
        if (c_.glo.options.flag(section::kCoreHubOptions, "COREHUB DEBUG"))
            log(baseText(1) + " - DebugTx: " + t, "DebugTx");
    });
    if (!f_.presenterMembers) return;
    b.PresenterCommandReceived.connect([this](const std::string& hid, int command, int source, int value) {
        guard("PresenterCommandReceived", [&] {
            log(baseText(1) + " - PresenterCommandReceived Event - HID:" + hid + ", Command:" + numText(command),
                "PresenterCommandReceived");
            if (!hid.empty() && std::find(m_Presenters.begin(), m_Presenters.end(), hid) == m_Presenters.end())
                m_Presenters.push_back(hid);
            DecodePresenterCommand(command, source, value);
        });
    });
    b.ScannerCommandReceived.connect([this](const std::string& hid, const std::string& data) {
        guard("ScannerCommandReceived", [&] {
            log(baseText(1) + " - ScannerCommandReceived Event - HID:" + hid + ", Data:" + data,
                "ScannerCommandReceived");
            ScannerCommand(hid, data);
        });
    });
}

void KelvarinPrioritizerDriver::Disconnect() {
    guard("Disconnect", [&] {
        for (std::size_t i = 0; i < oKVs_.size(); ++i) {
            if (!oKVs_[i]) continue;
            oKVs_[i]->Disconnect();
            oKVs_[i].reset();
        }
        oKV.reset();
        for (auto& b : bases_) b.connected = false;
        m_VoteRunning = false;
        m_AudioRequestsOn = false;
        m_SilentVoteLoadedSlideNumber = -1;
        log(std::string(f_.logName) + "Disconnect", "Disconnect");
    });
}

int KelvarinPrioritizerDriver::ListDevices() {
    return guard("ListDevices", [&]() -> int {
        Scheduler& clock = c_.ports.scheduler;
        const double start = clock.monotonicSeconds();
        const std::string step = std::string(f_.stepLogName) + "ListDevices: ";
        if (!oKV) oKV = lib_.createBase(f_.generation);
        if (!oKV) {
            log(step + "no base library", "ListDevices");
            return BaseErrorCode::BaseNotFound;
        }
        double t = clock.monotonicSeconds();
        std::string usb;
        int rc = oKV->GetUSBDevices(usb);
        log(step + "GetUSBDevices - " + seconds(clock.monotonicSeconds() - t), "ListDevices");
        if (rc != BaseErrorCode::Success) {
            log(" - GetUSBDevices FAILED - " + numText(rc) + ": " + tlx::GetCPPErrorString(rc), "ListDevices");
            usb.clear();
        }
        std::string list = trim(usb);
        if (c_.glo.options.flag(section::kCoreHubOptions, "ETHERNET ENABLED")) {
            t = clock.monotonicSeconds();
            std::string eth;
            rc = oKV->GetEthernetDevices(eth);
            log(step + "GetEthernetDevices - " + seconds(clock.monotonicSeconds() - t), "ListDevices");
            if (rc != BaseErrorCode::Success) {
                log(" - GetEthernetDevices FAILED - " + numText(rc) + ": " + tlx::GetCPPErrorString(rc),
                    "ListDevices");
                eth.clear();
            }
            if (!trim(eth).empty()) list = list.empty() ? trim(eth) : list + "|" + trim(eth);
        }
        oKV.reset();

        // The table is rebuilt; per-base keypad limits and registry copies carry over by serial
        // number, and the registry read log stays for the bases found again (a re-scan reads
        // only the bases it has no copy of).
        std::vector<BaseStationRecord> old = std::move(bases_);
        std::array<LocalRegistry, kMaxBases> oldReg = std::move(localReg_);
        bases_.clear();
        for (auto& o : oKVs_) {
            if (o) o->Disconnect();
            o.reset();
        }
        for (auto& r : localReg_) r.clear();
        struct KeepFound {
            KelvarinPrioritizerDriver& d;
            ~KeepFound() {
                std::string kept;
                for (const auto& b : split(d.m_RegistryReadLog, "|"))
                    for (const auto& r : d.bases_)
                        if (!b.empty() && r.identifier == b) kept += "|" + b;
                d.m_RegistryReadLog = kept;
            }
        } keepFound{*this};
        if (list.empty()) return BaseErrorCode::Success;

        for (const auto& item : split(list, "|")) {
            if (c_.glo.ShuttingDown) return BaseErrorCode::Success;
            const std::string entry = trim(item);
            if (entry.empty()) continue;
            BaseStationRecord r;
            std::string connection;
            if (!contains(entry, ";")) {
                r.identifier = idText(entry);
                connection = formatDigits(r.identifier, "000 000 000 000");
            } else {
                const auto fields = split(entry, ";");
                if (fields.size() < 2 || trim(fields[1]).empty()) continue;
                r.isEthernet = 1;
                r.identifier = idText(fields[0]);
                r.address = trim(fields[1]);
                connection = r.address + "|2020|1010";
            }
            if (bases_.size() >= static_cast<std::size_t>(kMaxBases)) {
                log(step + "more than " + numText(kMaxBases) + " bases, " + entry + " not connected", "ListDevices");
                continue;
            }
            auto object = lib_.createBase(f_.generation);
            if (!object || object->Connect(connection) != BaseErrorCode::Success) continue;
            KelvarinBaseConfig cfg;
            if (object->GetBaseConfig(cfg) != BaseErrorCode::Success || !takesFirmware(cfg.FirmwareVersion)) {
                object->Disconnect();
                continue;
            }
            r.typeName = f_.typeName;
            r.config = cfg;
            r.firmwareVersion = cfg.FirmwareVersion;
            const std::size_t next = bases_.size();
            for (std::size_t o = 0; o < old.size(); ++o)
                if (old[o].identifier == r.identifier) {
                    r.lowestKeypad = old[o].lowestKeypad;
                    r.highestKeypad = old[o].highestKeypad;
                    if (o < oldReg.size()) localReg_[next] = std::move(oldReg[o]);
                }
            r.connected = true;
            bases_.push_back(r);
            const int slot = static_cast<int>(bases_.size());
            attach(slot, *object);
            oKVs_[static_cast<std::size_t>(slot - 1)] = std::move(object);
            if (VersionCompare(r.firmwareVersion, version::kMinimum) < 0)
                c_.logs.balloon("Kelvarin Corehub Error\r\nBase station " + baseName(slot) +
                                    " is incompatible with this version of tallix and must be upgraded\r\n"
                                    "Your Version: " +
                                    r.firmwareVersion + "\r\nMinimum Allowed Version: 1.01.00",
                                3);
        }

        for (int slot = 1; slot <= static_cast<int>(bases_.size()); ++slot) {
            if (c_.glo.ShuttingDown) return BaseErrorCode::Success;
            auto& rec = bases_[static_cast<std::size_t>(slot - 1)];
            KelvarinBase& b = *oKVs_[static_cast<std::size_t>(slot - 1)];
            const std::string base = baseText(slot);
            t = clock.monotonicSeconds();
            if (b.GetSessionConfig(rec.session) != BaseErrorCode::Success)
                log(base + " - GetSessionConfig FAILED", "ListDevices");
            log(base + step + "GetSessionConfig - " + seconds(clock.monotonicSeconds() - t), "ListDevices");
            if (c_.glo.ShuttingDown) return BaseErrorCode::Success;
            t = clock.monotonicSeconds();
            readRegistry(slot, false, false);
            log(base + step + "GetRegistry - " + seconds(clock.monotonicSeconds() - t), "ListDevices");
            if (c_.glo.ShuttingDown) return BaseErrorCode::Success;
            t = clock.monotonicSeconds();
            UpdateStaticRegistryLimits(slot - 1);
            log(base + step + "UpdateStaticRegistryLimits - " + seconds(clock.monotonicSeconds() - t),
                "ListDevices");
            if (c_.glo.ShuttingDown) return BaseErrorCode::Success;
            t = clock.monotonicSeconds();
            if (const int e = b.RadioEnable(true); e != BaseErrorCode::Success)
                log(base + " - RadioEnable FAILED - " + numText(e) + ": " + tlx::GetCPPErrorString(e), "ListDevices");
            log(base + step + "RadioEnable - " + seconds(clock.monotonicSeconds() - t), "ListDevices");
        }
        log(step + "OverallTime - " + seconds(clock.monotonicSeconds() - start), "ListDevices");
        return BaseErrorCode::Success;
    });
}

// ---- pass-through members ----

std::string KelvarinPrioritizerDriver::GetSimpleFirmwareVersion(const std::string& base) {
    return guard("GetSimpleFirmwareVersion", [&]() -> std::string {
        const int slot = slotOf(base);
        if (!slot) return "";
        return simpleFirmwareVersion(bases_[static_cast<std::size_t>(slot - 1)].firmwareVersion);
    });
}

int KelvarinPrioritizerDriver::SetBaseConfig(const std::string& base, const KelvarinBaseConfig& config) {
    return guard("SetBaseConfig", [&] {
        const int rc = passThrough(base, "SetBaseConfig", "Set Base Config Error",
                                   [&](KelvarinBase& b) { return b.SetBaseConfig(config); });
        if (rc == BaseErrorCode::Success) bases_[static_cast<std::size_t>(slotOf(base) - 1)].config = config;
        return rc;
    });
}

int KelvarinPrioritizerDriver::SetKeypadConfig(const std::string& base, const KelvarinKeypadConfig& config) {
    return guard("SetKeypadConfig", [&] {
        return passThrough(base, "SetKeypadConfig", "Set Keypad Config Error",
                           [&](KelvarinBase& b) { return b.SetKeypadConfig(config); });
    });
}

int KelvarinPrioritizerDriver::GetBaseConfig(const std::string& base, KelvarinBaseConfig& config) {
    return guard("GetBaseConfig", [&] {
        const int rc = passThrough(base, "GetBaseConfig", "Get Base Config Error",
                                   [&](KelvarinBase& b) { return b.GetBaseConfig(config); });
        if (rc == BaseErrorCode::Success) {
            auto& rec = bases_[static_cast<std::size_t>(slotOf(base) - 1)];
            rec.config = config;
            rec.firmwareVersion = config.FirmwareVersion;
        }
        return rc;
    });
}

int KelvarinPrioritizerDriver::ResetBase(const std::string& base) {
    return guard("ResetBase", [&] {
        return passThrough(base, "ResetBase", "Reset Base Error", [](KelvarinBase& b) { return b.ResetBase(); });
    });
}

int KelvarinPrioritizerDriver::RebootBaseRadio(const std::string& base) {
    return guard("RebootBaseRadio", [&] {
        return passThrough(base, "RebootBaseRadio", "Reboot Base Radio Error",
                           [](KelvarinBase& b) { return b.RebootRadio(); });
    });
}

int KelvarinPrioritizerDriver::radioStatus(const std::string& base, int& status) {
    return guard("RadioStatus", [&] {
        return passThrough(base, "RadioStatus", nullptr, [&](KelvarinBase& b) { return b.RadioStatus(status); });
    });
}

int KelvarinPrioritizerDriver::SetSessionConfig(const std::string& base, const KelvarinSessionConfig& config) {
    return guard("SetSessionConfig", [&] {
        const int rc = passThrough(base, "SetSessionConfig", "Set Session Config Error",
                                   [&](KelvarinBase& b) { return b.SetSessionConfig(config); });
        if (rc == BaseErrorCode::Success) bases_[static_cast<std::size_t>(slotOf(base) - 1)].session = config;
        return rc;
    });
}

int KelvarinPrioritizerDriver::GetSessionConfig(const std::string& base, KelvarinSessionConfig& config) {
    return guard("GetSessionConfig", [&] {
        const int rc = passThrough(base, "GetSessionConfig", "Get Session Config Error",
                                   [&](KelvarinBase& b) { return b.GetSessionConfig(config); });
        if (rc == BaseErrorCode::Success) bases_[static_cast<std::size_t>(slotOf(base) - 1)].session = config;
        return rc;
    });
}

int KelvarinPrioritizerDriver::StopAudio() {
    return guard("StopAudio", [&] {
        return passThroughSlot(m_AudioSlot, baseText(m_AudioSlot), "StopAudio", "Stop Audio Error",
                               [](KelvarinBase& b) { return b.StopAudio(); });
    });
}

int KelvarinPrioritizerDriver::StartAudio(const std::string& hid, const KelvarinAudioOptions& options) {
    return guard("StartAudio", [&] {
        // The keypad streams through the base it is registered to.
        m_AudioSlot = 1;
        const std::string key = registryKey(hid);
        for (int i = 0; i < static_cast<int>(bases_.size()); ++i)
            if (localReg_[static_cast<std::size_t>(i)].find(key)) {
                m_AudioSlot = i + 1;
                break;
            }
        return passThroughSlot(m_AudioSlot, baseText(m_AudioSlot), "StartAudio", nullptr,
                               [&](KelvarinBase& b) { return b.StartAudio(hid, options); });
    });
}

int KelvarinPrioritizerDriver::PrepareKeypadSurveyScan(const std::string& base, const std::vector<std::string>& hids,
                                                       const KelvarinSurveyOptions& options) {
    return guard("PrepareKeypadSurveyScan", [&] {
        return passThrough(base, "PrepareKeypadSurveyScan", nullptr,
                           [&](KelvarinBase& b) { return b.PrepareKeypadSurveyScan(hids, options); });
    });
}

int KelvarinPrioritizerDriver::BeginKeypadSurveyScan(const std::string& base) {
    return guard("BeginKeypadSurveyScan", [&] {
        return passThrough(base, "BeginKeypadSurveyScan", nullptr,
                           [](KelvarinBase& b) { return b.BeginKeypadSurveyScan(); });
    });
}

int KelvarinPrioritizerDriver::EndKeypadSurveyScan(const std::string& base) {
    return guard("EndKeypadSurveyScan", [&] {
        return passThrough(base, "EndKeypadSurveyScan", nullptr,
                           [](KelvarinBase& b) { return b.EndKeypadSurveyScan(); });
    });
}

// ---- base-object events ----

void KelvarinPrioritizerDriver::onError(int slot, int code, const std::string& extra) {
    guard("Error", [&] {
        const std::string base = baseText(slot);
        log(base + " - Error Event - Code:" + numText(code) + ", " + tlx::GetCPPErrorString(code) +
                (extra.empty() ? "" : " [" + extra + "]"),
            "Error");
        BaseError(base, code, extra);
    });
    if (code == BaseErrorCode::AutoReconnectSuccess) catchUpAfterReconnect(slot);
}

void KelvarinPrioritizerDriver::onKeypadConfig(int slot, const KelvarinKeypadConfig& k) {
    guard("KeypadConfig", [&] {
        const std::string base = baseText(slot);
        log(base + " - KeypadConfig Event - HID:" + k.HID + ", SID:" + numText(k.SID), "KeypadConfig");
        if (RegistryEntry* e = localReg_[static_cast<std::size_t>(slot - 1)].find(registryKey(k.HID))) {
            e->battery = k.BatteryStrength;
            e->signal = k.SignalStrength;
        }
        KeypadConfigReceived(k, base);
    });
}

void KelvarinPrioritizerDriver::onScanReply(int slot, const KelvarinChannelScanReply& r, const char* event) {
    guard(event, [&] {
        const std::string base = baseText(slot);
        log(base + " - " + event + " Event - Channel:" + numText(r.Channel) + ", Quality:" + numText(r.Quality),
            event);
        // Only the base being scanned answers the request; a reply from any other base does
        // not count for it.
        if (slot == m_ScanSlot) m_ScanReplyReceived = true;
        ChannelScanReply(r, base);
    });
}

}  // namespace tlx
