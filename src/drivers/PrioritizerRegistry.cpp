// Registries and channels of the Corehub driver: the local registry copies, the registry
// read log, the per-base keypad limits and the channel scan.
#include <algorithm>
#include <cmath>

#include "core/Controller.h"
#include "drivers/BaseStatus.h"
#include "drivers/PrioritizerDriver.h"
#include "drivers/PrioritizerDriverInl.h"
#include "ports/Dialogs.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {
constexpr int kHighestKeypadNumber = 4095;
constexpr double kScanReplyTimeout = 5.0;

// The read log names each base by its serial number, which survives a re-scan that moves
// the base to another slot.
bool inReadLog(const std::string& log, const std::string& serial) {
    for (const auto& b : split(log, "|"))
        if (b == serial) return true;
    return false;
}
}  // namespace

void KelvarinPrioritizerDriver::ResetBaseGetRegistryLog() {
    guard("ResetBaseGetRegistryLog", [&] { m_RegistryReadLog.clear(); });
}

bool KelvarinPrioritizerDriver::CheckIfMirroredReg() { return false; }

int KelvarinPrioritizerDriver::GetRegistry(const std::string& base, bool forceReadFromBase) {
    return guard("GetRegistry", [&] {
        const int slot = slotOf(base);
        int rc = BaseErrorCode::BaseNotFound;
        if (!slot)
            c_.ports.dialogs.message("USB Comms Error", "Unable to connect to base station " + base,
                                     MsgIcon::Exclamation);
        else
            rc = readRegistry(slot, forceReadFromBase, true);
        log(base + " - GetRegistry = " + numText(rc), "GetRegistry");
        return rc;
    });
}

int KelvarinPrioritizerDriver::readRegistry(int slot, bool forceReadFromBase, bool interactive) {
    const std::string base = baseText(slot);
    auto& rec = bases_[static_cast<std::size_t>(slot - 1)];
    KelvarinBase* b = baseObject(slot);
    if (!b) return BaseErrorCode::BaseNotFound;
    KelvarinBaseConfig cfg;
    int rc = b->GetBaseConfig(cfg);
    if (rc != BaseErrorCode::Success) {
        log(base + " - GetKeypadRegister FAILED - " + numText(rc) + ": " + tlx::GetCPPErrorString(rc), "GetRegistry");
        if (interactive)
            c_.ports.dialogs.message("USB Comms Error", "Unable to connect to base station " + baseName(slot),
                                     MsgIcon::Exclamation);
        return rc;
    }
    rec.config = cfg;
    rec.firmwareVersion = cfg.FirmwareVersion;
    if (VersionCompare(cfg.FirmwareVersion, version::kRegistry) < 0 && !c_.glo.registryVersionOverride) {
        log(base + " - Registry is not available for this version of the base station - Base Version: " +
                cfg.FirmwareVersion,
            "GetRegistry");
        if (interactive)
            c_.ports.dialogs.message("tallix",
                                     "Registry is not available for this version of the base station\r\n"
                                     "Base Version: " + cfg.FirmwareVersion,
                                     MsgIcon::Information);
        return BaseErrorCode::RegistryNoDataFound;
    }
    if (VersionCompare(cfg.FirmwareVersion, version::kReportsLimits) >= 0) {
        rec.lowestKeypad = cfg.RegistryLowSID;
        rec.highestKeypad = cfg.RegistryHighSID;
    }
    if (inReadLog(m_RegistryReadLog, rec.identifier) && !forceReadFromBase) return BaseErrorCode::Success;

    Scheduler& clock = c_.ports.scheduler;
    const double t = clock.monotonicSeconds();
    std::string text;
    m_RegistryReading = true;
    rc = b->GetRegistry(text);
    m_RegistryReading = false;
    log(" - GetKeypadRegistry:" + base + " secs - " + numText(std::round((clock.monotonicSeconds() - t) * 100) / 100),
        "GetRegistry");
    if (rc != BaseErrorCode::Success) {
        log(base + " - GetKeypadRegister FAILED - " + numText(rc) + ": " + tlx::GetCPPErrorString(rc), "GetRegistry");
        if (interactive) corehubError(slot, base, "Get Registry Error", rc);
        return rc;
    }
    localReg_[static_cast<std::size_t>(slot - 1)] = parseRegistryText(text);
    if (!inReadLog(m_RegistryReadLog, rec.identifier)) m_RegistryReadLog += "|" + rec.identifier;
    UpdateGlobalKpadLoAndHi(slot - 1);
    UpdateStaticRegistryLimits(slot - 1);
    return BaseErrorCode::Success;
}

void KelvarinPrioritizerDriver::UpdateGlobalKpadLoAndHi(int baseIndex) {
    guard("UpdateGlobalKpadLoAndHi", [&] {
        if (m_PauseAutoUpdate) return;
        for (int i = 0; i < static_cast<int>(bases_.size()) && i < kMaxBases; ++i) {
            if (baseIndex != -1 && i != baseIndex) continue;
            int lo = 9999;
            int hi = -1;
            for (const auto& e : localReg_[static_cast<std::size_t>(i)].entries()) {
                if (e.SID <= 0) continue;
                lo = std::min(lo, e.SID);
                hi = std::max(hi, e.SID);
            }
            if (lo == 9999 || lo < 1) lo = 0;
            if (hi == -1) hi = 0;
            bases_[static_cast<std::size_t>(i)].lowestKeypad = lo;
            bases_[static_cast<std::size_t>(i)].highestKeypad = hi;
        }
    });
}

int KelvarinPrioritizerDriver::UpdateStaticRegistryLimits(int baseIndex) {
    return guard("UpdateStaticRegistryLimits", [&] {
        int status = BaseErrorCode::Success;
        if (m_PauseAutoUpdate) return status;
        for (int i = 0; i < static_cast<int>(bases_.size()) && i < kMaxBases; ++i) {
            if (baseIndex != -1 && i != baseIndex) continue;
            auto& rec = bases_[static_cast<std::size_t>(i)];
            KelvarinBase* b = baseObject(i + 1);
            if (!rec.connected || !b) continue;
            KelvarinBaseConfig cfg = rec.config;
            bool changed = false;
            if (cfg.RegistryLowSID != rec.lowestKeypad && rec.lowestKeypad != 0) {
                cfg.RegistryLowSID = rec.lowestKeypad;
                changed = true;
            }
            if (cfg.RegistryHighSID != rec.highestKeypad && rec.highestKeypad >= 1 &&
                rec.highestKeypad <= kHighestKeypadNumber) {
                cfg.RegistryHighSID = rec.highestKeypad;
                changed = true;
            }
            if (!changed) continue;
            const std::string base = baseText(i + 1);
            const int rc = b->SetBaseConfig(cfg);
            if (rc != BaseErrorCode::Success) {
                log(base + " - UpdateStaticRegistryLimits - Error:" + numText(rc) + ", " + tlx::GetCPPErrorString(rc),
                    "UpdateStaticRegistryLimits");
                corehubError(i + 1, base, "Update Static Registry Limits Error", rc);
                status = rc;
                continue;
            }
            rec.config = cfg;
        }
        return status;
    });
}

int KelvarinPrioritizerDriver::UpdateFlagOnBaseStations(const std::string& hid, int flag) {
    return guard("UpdateFlagOnBaseStations", [&] {
        int status = BaseErrorCode::Success;
        forEachBase([&](int slot, const std::string& base, KelvarinBase& b) {
            const int rc = b.UpdateRegistryFlashRIT(hid, flag);
            log(base + f_.logName + "UpdateFlagOnBaseStations = " + numText(rc), "UpdateFlagOnBaseStations");
            if (rc != BaseErrorCode::Success) {
                corehubError(slot, base, "Update Flag On Base Station", rc);
                status = rc;
            }
        });
        return status;
    });
}

int KelvarinPrioritizerDriver::DeleteRegistry(const std::string& base) {
    return guard("DeleteRegistry", [&] {
        const int rc = passThrough(base, "DeleteRegistry", "Delete Registry Error",
                                   [](KelvarinBase& b) { return b.DeleteRegistry(); });
        if (rc == BaseErrorCode::Success) {
            const int slot = slotOf(base);
            localReg_[static_cast<std::size_t>(slot - 1)].clear();
            UpdateGlobalKpadLoAndHi(slot - 1);
        }
        return rc;
    });
}

int KelvarinPrioritizerDriver::DeleteKeypadFromRegistry(const std::string& base, const std::string& hid) {
    return guard("DeleteKeypadFromRegistry", [&] {
        const int rc = passThrough(base, "DeleteKeypadFromRegistry", "Delete Keypad From Registry Error",
                                   [&](KelvarinBase& b) { return b.DeleteKeypadFromRegistry(hid); });
        if (rc == BaseErrorCode::Success)
            localReg_[static_cast<std::size_t>(slotOf(base) - 1)].remove(registryKey(hid));
        return rc;
    });
}

int KelvarinPrioritizerDriver::UpdateRegistryFlashRIT(const std::string& base, const std::string& hid, int flag) {
    return guard("UpdateRegistryFlashRIT", [&] {
        return passThrough(base, "UpdateRegistryFlashRIT", "Update Registry Flash RIT Error",
                           [&](KelvarinBase& b) { return b.UpdateRegistryFlashRIT(hid, flag); });
    });
}

int KelvarinPrioritizerDriver::AddKeypadToRegistry(const std::string& base, const std::string& hid, int sid) {
    return guard("AddKeypadToRegistry", [&] {
        const int rc = passThrough(base, "AddKeypadToRegistry", "Add Keypad To Registry Error",
                                   [&](KelvarinBase& b) { return b.AddKeypadToRegistry(hid, sid); });
        if (rc == BaseErrorCode::Success) {
            RegistryEntry e;
            e.HID = hid;
            e.SID = sid;
            localReg_[static_cast<std::size_t>(slotOf(base) - 1)].put(e);
        }
        return rc;
    });
}

std::optional<RegistryEntry> KelvarinPrioritizerDriver::GetKeypadConfigFromLocalRegCollection(
    const std::string& base, const std::string& hid) const {
    const int slot = slotOf(base);
    if (!slot) return std::nullopt;
    const RegistryEntry* e = localReg_[static_cast<std::size_t>(slot - 1)].find(registryKey(hid));
    if (!e) return std::nullopt;
    return *e;
}

int KelvarinPrioritizerDriver::GetKeypadConfig(const std::string& base, const std::string& hid,
                                               KelvarinKeypadConfig& config) {
    return guard("GetKeypadConfig", [&] {
        return passThrough(base, "GetKeypadConfig", nullptr,
                           [&](KelvarinBase& b) { return b.GetKeypadConfig(hid, config); });
    });
}

std::string KelvarinPrioritizerDriver::GetHIDFromSID(int sid) {
    return guard("GetHIDFromSID", [&]() -> std::string {
        if (sid <= 0) return "";
        for (const auto& reg : localReg_)
            if (const RegistryEntry* e = reg.findSID(sid)) return e->HID;
        return "";
    });
}

int KelvarinPrioritizerDriver::ScanForBestChannel(const std::string& base) {
    return guard("ScanForBestChannel", [&]() -> int {
        if (m_ScanRunning) {
            log(" - ScanForBestChannel - a scan is already running", "ScanForBestChannel");
            return BaseErrorCode::BaseBusy;
        }
        m_ScanRunning = true;
        struct Done {
            bool& flag;
            int& slot;
            ~Done() {
                flag = false;
                slot = 0;
            }
        } done{m_ScanRunning, m_ScanSlot};
        // One pass per connected base: unnamed, each base in slot order; named, the named
        // base on every pass. The walk goes on past the named base (a named base is scanned as
        // many times as bases are connected, each pass a fresh set of readings for the
        // channel choice); a text that names no base is skipped on every pass.
        const int count = static_cast<int>(bases_.size());
        const std::string named = trim(base);
        for (int n = 1; n <= count; ++n) {
            if (!bases_[static_cast<std::size_t>(n - 1)].connected) continue;
            int slot = n;
            if (!named.empty()) slot = isNumeric(replaceAll(named, " ", "")) ? slotOf(named) : 0;
            if (!slot || !baseObject(slot)) continue;
            const std::string name = baseText(slot);
            KelvarinChannelList list;
            int rc = baseObject(slot)->GetChannelList(list);
            if (rc != BaseErrorCode::Success) {
                log(name + " - GetChannelList FAILED - " + numText(rc) + ": " + tlx::GetCPPErrorString(rc),
                    "ScanForBestChannel");
                continue;
            }
            for (int c = 0; c < 8; ++c) {
                KelvarinBase* b = baseObject(slot);
                if (!b || c_.glo.ShuttingDown) return BaseErrorCode::BaseNotFound;
                const int channel = list.Channel[static_cast<std::size_t>(c)];
                m_ScanReplyReceived = false;
                m_ScanSlot = slot;
                rc = b->ChannelScan(channel, channel, 1, 100);
                log(name + f_.logName + "ChannelScan " + numText(channel) + " = " + numText(rc), "ScanForBestChannel");
                if (rc != BaseErrorCode::Success) return rc;
                const bool answered = c_.ports.scheduler.waitUntil(
                    [&] { return m_ScanReplyReceived || c_.glo.ShuttingDown; }, kScanReplyTimeout);
                if (!answered || !m_ScanReplyReceived) {
                    log(name + " - ScanForBestChannel - no reply within 5 secs on channel " + numText(channel),
                        "ScanForBestChannel");
                    return BaseErrorCode::RxCommsTimeOut;
                }
            }
        }
        return BaseErrorCode::Success;
    });
}

void KelvarinPrioritizerDriver::onKeypadRegister(int slot, const std::string& hid, int flag, int error,
                                                 const std::string& firmware) {
    guard("KeypadRegister", [&] {
        const std::string base = baseText(slot);
        log(base + " - KeypadRegister Event - HID:" + hid + ", Flag:" + numText(flag) + ",Error:" + numText(error),
            "KeypadRegister");
        if (error == BaseErrorCode::Success && !trim(hid).empty()) {
            LocalRegistry& reg = localReg_[static_cast<std::size_t>(slot - 1)];
            if (RegistryEntry* e = reg.find(registryKey(hid))) {
                e->kind = flag;
            } else {
                RegistryEntry fresh;
                fresh.HID = hid;
                fresh.kind = flag;
                KelvarinKeypadConfig k;
                if (KelvarinBase* b = baseObject(slot); b && b->GetKeypadConfig(hid, k) == BaseErrorCode::Success)
                    fresh.SID = k.SID;
                reg.put(fresh);
            }
        }
        KeypadRegister(hid, flag, error, firmware);
        if (flag == DeviceKind::Presenter) {
            if (std::find(m_Presenters.begin(), m_Presenters.end(), hid) == m_Presenters.end())
                m_Presenters.push_back(hid);
            if (error == BaseErrorCode::Success && f_.presenterMembers) SendPresenterMenu(hid);
            PresenterValidated(hid, firmware);
        } else if (flag == DeviceKind::Scanner) {
            ScannerValidated(hid, firmware);
        }
    });
}

}  // namespace tlx
