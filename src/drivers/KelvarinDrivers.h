#pragma once
// The keypad drivers as the controller sees them: the three driver forms over one base
// library, opening the configured bases through the driver for their type, and the main
// form's side of the drivers' events (received votes, base errors).
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/Signal.h"
#include "ports/BaseLibrary.h"

namespace tlx {

class Controller;
class BaseLibrary;
class KelvarinPrioritizerDriver;
class kpdriver_KELVARIN_Prioritizer_g2;
class kpdriver_KELVARIN_Prioritizer;
class kpdriver_KELVARIN_BLACK_3;

class KelvarinDrivers : public BaseDrivers {
public:
    static constexpr double kAlternateBaseQuietSeconds = 30.0;

    KelvarinDrivers(Controller& controller, BaseLibrary& library);
    ~KelvarinDrivers() override;

    void loadDriverForms() override;
    bool openBase(const PortEntry& base) override;
    std::vector<FoundBase> scanForBases() override;
    void closePorts() override;
    KeypadDriver* corehubG1() override;
    KeypadDriver* corehubG2() override;
    Black3Driver* black3() override;
    // The base of that port-file row: its offset, and as its highest keypad the registry's
    // (a Corehub base's driver knows it), or the set-up range's when there is none.
    KeypadRange keypadRange(int baseIndex, const GlobalState& glo) const override;

    // The driver forms themselves (nullptr before loadDriverForms).
    kpdriver_KELVARIN_Prioritizer_g2* oKVv5() { return g2_.get(); }
    kpdriver_KELVARIN_Prioritizer* oKVv4() { return g1_.get(); }
    kpdriver_KELVARIN_BLACK_3* v3() { return v3_.get(); }

    // The main form's handlers of the drivers' events. `base` is the base's text (its
    // identity); `time` the time the base reported with the vote.
    void VoteReceived(int keypad, const std::string& data, const std::string& field3, const std::string& field4,
                      const std::string& base, const std::string& hid, double time);
    // A base's status: codes that report progress (a reconnect that succeeded, an add-on
    // action completed) go out as base feedback, every other code as a base error.
    void BaseError(const std::string& base, int code, const std::string& extra);

    // The microphone events of both Corehub drivers, handed on to the audio feature while the
    // controller is initialised and not shutting down.
    Signal<const KelvarinVote&, const std::string&, bool> MicRequest;
    Signal<const KelvarinVote&, const std::string&, bool> PresenterMicRequest;
    Signal<> ToggleAudioDialog;
    Signal<const KelvarinAudioStatus&, const std::string&> AudioStatus;

private:
    void connectEvents(KelvarinPrioritizerDriver& driver);
    bool listed(KelvarinPrioritizerDriver& driver, bool& done);

    Controller& c_;
    BaseLibrary& lib_;
    std::unique_ptr<kpdriver_KELVARIN_Prioritizer_g2> g2_;
    std::unique_ptr<kpdriver_KELVARIN_Prioritizer> g1_;
    std::unique_ptr<kpdriver_KELVARIN_BLACK_3> v3_;
    bool g2Listed_ = false;
    bool g1Listed_ = false;
    // Last time "Alternate base on same channel" was shown, per "K:" + the base's identity.
    std::map<std::string, double> alternateBaseShown_;
};

}  // namespace tlx
