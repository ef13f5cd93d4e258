#include "audio/MicrophoneDriver.h"

#include "core/Controller.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/LocalRegistry.h"
#include "drivers/PrioritizerDriver.h"

namespace tlx {

namespace {

class CorehubMicrophoneDriver : public MicrophoneDriver {
public:
    explicit CorehubMicrophoneDriver(Controller& c) : c_(c) {}

    void StartAudioRequests(const std::string& keys) override {
        if (auto* d = driver()) d->StartAudioRequests(keys);
    }
    void EndAudioRequests() override {
        if (auto* d = driver()) d->EndAudioRequests();
    }
    int StartAudio(const std::string& hid, const KelvarinAudioOptions& options) override {
        auto* d = driver();
        return d ? d->StartAudio(hid, options) : BaseErrorCode::BaseNotFound;
    }
    int StopAudio() override {
        auto* d = driver();
        return d ? d->StopAudio() : BaseErrorCode::BaseNotFound;
    }
    std::string GetHIDFromSID(int keypad) override {
        auto* d = driver();
        return d ? d->GetHIDFromSID(keypad) : std::string();
    }
    std::optional<RegisteredKeypad> registeredKeypad(const std::string& hid) override {
        auto* d = driver();
        if (!d) return std::nullopt;
        const std::string key = registryKey(hid);
        for (int i = 0; i < static_cast<int>(d->baseTable().size()); ++i)
            if (const RegistryEntry* e = d->localRegistry(i).find(key))
                return RegisteredKeypad{e->SID, e->HID, e->battery, e->signal};
        return std::nullopt;
    }

private:
    KelvarinPrioritizerDriver* driver() const {
        auto* drivers = dynamic_cast<KelvarinDrivers*>(c_.drivers.get());
        if (!drivers) return nullptr;
        KelvarinPrioritizerDriver* g2 = drivers->oKVv5();
        KelvarinPrioritizerDriver* g1 = drivers->oKVv4();
        if (g2 && g2->connectedCount() > 0) return g2;
        if (g1 && g1->connectedCount() > 0) return g1;
        return g2;
    }
    Controller& c_;
};

}  // namespace

std::unique_ptr<MicrophoneDriver> corehubMicrophoneDriver(Controller& controller) {
    return std::make_unique<CorehubMicrophoneDriver>(controller);
}

}  // namespace tlx
