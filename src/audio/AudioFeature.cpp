#include "audio/AudioFeature.h"

#include "audio/AudioWindow.h"
#include "core/Controller.h"
#include "core/MainForm.h"
#include "drivers/KelvarinDrivers.h"
#include "ports/AudioEngine.h"

namespace tlx {

namespace {
constexpr const char* kObject = "tallix_controller";
}

AudioFeature::AudioFeature(Controller& controller, std::shared_ptr<AudioEngine> engine)
    : c_(controller), engine_(std::move(engine)) {
    formsSub_ = c_.forms.loaded.connect([this](Form& f) { onFormLoaded(f); });
    if (auto* a = c_.forms.get<frmAudio>(frmAudio::kName)) a->setEngine(engine_);
    drivers_ = dynamic_cast<KelvarinDrivers*>(c_.drivers.get());
    if (!drivers_) return;
    driverSubs_.push_back(drivers_->MicRequest.connect(
        [this](const KelvarinVote& v, const std::string& b, bool now) { MicRequest(v, b, now); }));
    driverSubs_.push_back(drivers_->PresenterMicRequest.connect(
        [this](const KelvarinVote& v, const std::string& b, bool now) { PresenterMicRequest(v, b, now); }));
    driverSubs_.push_back(drivers_->ToggleAudioDialog.connect([this] { ToggleAudioDialog(); }));
    driverSubs_.push_back(drivers_->AudioStatus.connect(
        [this](const KelvarinAudioStatus& s, const std::string& b) { AudioStatus(s, b); }));
}

AudioFeature::~AudioFeature() {
    c_.forms.loaded.disconnect(formsSub_);
    if (drivers_ && c_.drivers.get() == drivers_) {
        drivers_->MicRequest.disconnect(driverSubs_.at(0));
        drivers_->PresenterMicRequest.disconnect(driverSubs_.at(1));
        drivers_->ToggleAudioDialog.disconnect(driverSubs_.at(2));
        drivers_->AudioStatus.disconnect(driverSubs_.at(3));
    }
    // The window outlives its sound card only when the controller lets go of us first.
    if (auto* a = c_.forms.get<frmAudio>(frmAudio::kName); a && a->engine() == engine_.get()) a->setEngine(nullptr);
}

void AudioFeature::onFormLoaded(Form& form) {
    if (auto* a = dynamic_cast<frmAudio*>(&form)) a->setEngine(engine_);
}

bool AudioFeature::running() const {
    return c_.glo.InitialisedState == INIT_STATE_INITIALISED && !c_.glo.ShuttingDown;
}

void AudioFeature::MicRequest(const KelvarinVote& keypad, const std::string& base, bool startNow) {
    trap(c_.errors, kObject, "oKVv5_MicRequest", [&] {
        if (!running()) return;
        loadAudioWindow(c_).MicRequest(keypad, base, startNow);
    });
}

void AudioFeature::PresenterMicRequest(const KelvarinVote& keypad, const std::string& base, bool startNow) {
    trap(c_.errors, kObject, "oKVv5_PresenterMicRequest", [&] {
        if (!running()) return;
        loadAudioWindow(c_).MicRequest(keypad, base, startNow);
    });
}

void AudioFeature::ToggleAudioDialog() {
    trap(c_.errors, kObject, "oKVv5_ToggleAudioDialog", [&] {
        if (!running()) return;
        auto* a = c_.forms.get<frmAudio>(frmAudio::kName);
        if (a && a->Visible()) {
            a->cmd_hide_Click();
            c_.LogEvent("Hide Audio", LOG_XX);
        } else {
            showAudioWindow(c_);
            c_.LogEvent("Show Audio", LOG_XX);
        }
    });
}

void AudioFeature::AudioStatus(const KelvarinAudioStatus& status, const std::string& base) {
    trap(c_.errors, kObject, "oKVv5_AudioStatus", [&] {
        if (!running()) return;
        if (auto* a = c_.forms.get<frmAudio>(frmAudio::kName)) a->oKVv5_AudioStatus(status, base);
    });
}

AudioFeature& installAudioFeature(Controller& controller, std::shared_ptr<AudioEngine> engine) {
    auto feature = std::make_shared<AudioFeature>(controller, std::move(engine));
    AudioFeature& ref = *feature;
    controller.audioReferences.push_back(std::move(feature));
    return ref;
}

}  // namespace tlx
