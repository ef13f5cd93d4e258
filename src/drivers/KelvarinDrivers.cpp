#include "drivers/KelvarinDrivers.h"

#include <cmath>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/BaseStatus.h"
#include "drivers/Black3Driver.h"
#include "drivers/PrioritizerDriver.h"
#include "drivers/VoteConfig.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {
constexpr const char* kObject = "tallix_controller";

int severityOf(int code) {
    switch (code) {
        case BaseErrorCode::AutoReconnectSuccess: return 1;
        case BaseErrorCode::BaseDisconnectedReconnecting: return 2;
        case BaseErrorCode::BaseDisconnected:
        case BaseErrorCode::UnsupportedBase: return 3;
        default: return 0;
    }
}
// A base's text as the drivers raise it, back to the base's identity.
int baseIndexOf(const std::string& base) {
    const double b = ParseNumber(base);
    return std::fabs(b) < 1e6 && b == std::floor(b) ? static_cast<int>(b) : kUnlistedBase;
}
}  // namespace

KelvarinDrivers::KelvarinDrivers(Controller& controller, BaseLibrary& library) : c_(controller), lib_(library) {}

KelvarinDrivers::~KelvarinDrivers() = default;

void KelvarinDrivers::loadDriverForms() {
    trap(c_.errors, kObject, "LoadDriverForms", [&] {
        if (!g2_) {
            g2_ = std::make_unique<kpdriver_KELVARIN_Prioritizer_g2>(c_, lib_);
            connectEvents(*g2_);
        }
        if (!g1_) {
            g1_ = std::make_unique<kpdriver_KELVARIN_Prioritizer>(c_, lib_);
            connectEvents(*g1_);
        }
        if (!v3_) {
            v3_ = std::make_unique<kpdriver_KELVARIN_BLACK_3>(c_, lib_);
            v3_->VoteReceived.connect([this](int k, const std::string& d, const std::string& f3,
                                             const std::string& f4, const std::string& b, const std::string& h,
                                             double t) { VoteReceived(k, d, f3, f4, b, h, t); });
            // A communication error ended the vote on an oldest base: its vote ends, and the
            // display programs hear which base failed, by its identity like any base error.
            v3_->BaseFailure.connect([this](const std::string& port) {
                c_.LogEvent("Base Station Failure - Port " + port, LOG_XX);
                v3_->EndVote(port);
                if (MainForm* m = c_.mainForm())
                    m->FromCtrlFormBaseStationError(serialPortBaseIndex(c_.glo, baseIndexOf(port)),
                                                    "Communication Error - Base Station " + port);
            });
        }
    });
}

void KelvarinDrivers::connectEvents(KelvarinPrioritizerDriver& d) {
    d.VoteReceived.connect([this](int k, const std::string& data, const std::string& f3, const std::string& f4,
                                  const std::string& base, const std::string& hid,
                                  double time) { VoteReceived(k, data, f3, f4, base, hid, time); });
    d.BaseError.connect(
        [this](const std::string& base, int code, const std::string& extra) { BaseError(base, code, extra); });
    auto live = [this] { return c_.glo.InitialisedState == INIT_STATE_INITIALISED && !c_.glo.ShuttingDown; };
    d.MicRequest.connect([this, live](const KelvarinVote& v, const std::string& base, bool now) {
        if (live()) MicRequest(v, base, now);
    });
    d.PresenterMicRequest.connect([this, live](const KelvarinVote& v, const std::string& base, bool now) {
        if (live()) PresenterMicRequest(v, base, now);
    });
    d.ToggleAudioDialog.connect([this, live] {
        if (live()) ToggleAudioDialog();
    });
    d.AudioStatus.connect([this, live](const KelvarinAudioStatus& s, const std::string& base) {
        if (live()) AudioStatus(s, base);
    });
}

KeypadDriver* KelvarinDrivers::corehubG1() { return g1_.get(); }
KeypadDriver* KelvarinDrivers::corehubG2() { return g2_.get(); }
Black3Driver* KelvarinDrivers::black3() { return v3_.get(); }

bool KelvarinDrivers::listed(KelvarinPrioritizerDriver& driver, bool& done) {
    if (!done) {
        driver.ListDevices();
        done = true;
    }
    return done;
}

bool KelvarinDrivers::openBase(const PortEntry& base) {
    bool up = false;
    trap(c_.errors, kObject, "OpenBase", [&] {
        loadDriverForms();
        const std::string type = toUpper(trim(base.baseType));
        if (type == "KELVARIN COREHUB G2" && g2_) {
            listed(*g2_, g2Listed_);
            up = g2_->isConnected(base.port);
        } else if (type == "KELVARIN COREHUB G1" && g1_) {
            listed(*g1_, g1Listed_);
            up = g1_->isConnected(base.port);
        } else if (type == "KELVARIN BASE V3" && v3_) {
            up = v3_->OpenPort(base.port);
        }
    });
    return up;
}

std::vector<FoundBase> KelvarinDrivers::scanForBases() {
    std::vector<FoundBase> found;
    trap(c_.errors, kObject, "ScanForBases", [&] {
        loadDriverForms();
        for (auto* d : {static_cast<KelvarinPrioritizerDriver*>(g2_.get()),
                        static_cast<KelvarinPrioritizerDriver*>(g1_.get())}) {
            if (!d) continue;
            d->ListDevices();
            for (const auto& r : d->baseTable())
                if (r.connected) found.push_back({d->flavour().baseType, r.identifier});
        }
        g2Listed_ = g1Listed_ = true;
        if (v3_)
            for (const auto& p : v3_->AvailablePorts()) found.push_back({"KELVARIN BASE V3", p});
    });
    return found;
}

void KelvarinDrivers::closePorts() {
    trap(c_.errors, kObject, "ClosePorts", [&] {
        // The audio window goes first, so that a turn it ends reaches a base still open.
        if (Form* audio = c_.forms.find("frmAudio")) c_.forms.unload(*audio);
        if (g2_) g2_->ClosePorts();
        if (g1_) g1_->ClosePorts();
        if (v3_) v3_->ClosePorts();
        g2Listed_ = g1Listed_ = false;
    });
}

void KelvarinDrivers::VoteReceived(int keypad, const std::string& data, const std::string& field3,
                                   const std::string& field4, const std::string& base, const std::string& hid,
                                   double time) {
    (void)hid;
    trap(c_.errors, kObject, "oKVv5_VoteReceived", [&] {
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED || c_.glo.ShuttingDown) return;
        std::vector<float> keypads{static_cast<float>(keypad)};
        std::vector<std::string> votes{data};
        std::string& answer = votes[0];
        // Letter keypads answer a single-digit vote with A .. I.
        if (isSingleDigitVote(c_.glo.voteType) && c_.glo.kelvarinDisplay == 1 && answer.size() == 1 &&
            answer[0] >= 'A' && answer[0] <= 'I')
            answer = numText(answer[0] - 'A' + 1);
        if (trim(answer).empty()) return;
        if (const MainForm* m = c_.mainForm(); m && m->keypadTestActive) answer += ";" + field3 + ";" + field4;
        if (c_.voteIntake) c_.voteIntake->SendVotes(keypads, votes, time, baseIndexOf(base));
    });
}

void KelvarinDrivers::BaseError(const std::string& base, int code, const std::string& extra) {
    trap(c_.errors, kObject, "oKVv5_BaseError", [&] {
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED || c_.glo.ShuttingDown) return;
        const int index = baseIndexOf(base);
        // People are told the base's serial number (or port); programs get its identity.
        std::string message = "Base Station " + baseName(c_.glo, index) + "\r\n" + GetCPPErrorString(code);
        if (!extra.empty()) message += "\r\n[" + extra + "]";
        int severity = severityOf(code);
        if (code == BaseErrorCode::AlternateBaseOnSameChannel) {
            const std::string key = "K:" + numText(index);
            const double now = c_.ports.scheduler.monotonicSeconds();
            auto it = alternateBaseShown_.find(key);
            if (it != alternateBaseShown_.end() && now - it->second < kAlternateBaseQuietSeconds) return;
            alternateBaseShown_[key] = now;
            severity = 3;
        }
        c_.logs.balloon(message, severity);
        if (MainForm* m = c_.mainForm()) {
            if (code == BaseErrorCode::AutoReconnectSuccess || code == BaseErrorCode::ActionCompleted)
                m->FromCtrlFormBaseStationFeedback(index, message);
            else
                m->FromCtrlFormBaseStationError(index, message);
        }
    });
}

KeypadRange KelvarinDrivers::keypadRange(int baseIndex, const GlobalState& glo) const {
    KeypadRange r = BaseDrivers::keypadRange(baseIndex, glo);
    if (baseIndex < 0 || static_cast<std::size_t>(baseIndex) >= glo.bases.size()) return r;
    const PortEntry& e = glo.bases[static_cast<std::size_t>(baseIndex)];
    if (onSerialPort(e)) return r;
    for (KelvarinPrioritizerDriver* d : {static_cast<KelvarinPrioritizerDriver*>(g2_.get()),
                                         static_cast<KelvarinPrioritizerDriver*>(g1_.get())}) {
        if (!d) continue;
        for (const BaseStationRecord& rec : d->baseTable())
            if (rec.connected && rec.highestKeypad > 0 && sameSerialNumber(rec.identifier, e.port)) {
                r.highest = rec.highestKeypad;
                return r;
            }
    }
    return r;
}

}  // namespace tlx
