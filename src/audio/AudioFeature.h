#pragma once
// The microphone feature's place in the controller: the main form's handlers of the drivers'
// audio events (requests, the presenter's and the keypads', the audio window toggle, the link
// status), and the sound card the audio window plays through. The wiring installs it; the
// controller keeps it among its audio references, so shutdown lets go of it.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ports/BaseLibrary.h"

namespace tlx {

class Controller;
class AudioEngine;
class Form;
class KelvarinDrivers;

class AudioFeature {
public:
    AudioFeature(Controller& controller, std::shared_ptr<AudioEngine> engine);
    ~AudioFeature();
    AudioFeature(const AudioFeature&) = delete;
    AudioFeature& operator=(const AudioFeature&) = delete;

    // The main form's handlers (`oKVv5_MicRequest` and the others, the same for `oKVv4_`).
    void MicRequest(const KelvarinVote& keypad, const std::string& base, bool startNow);
    void PresenterMicRequest(const KelvarinVote& keypad, const std::string& base, bool startNow);
    // Shows a hidden audio window ("Show Audio"), hides a shown one ("Hide Audio").
    void ToggleAudioDialog();
    void AudioStatus(const KelvarinAudioStatus& status, const std::string& base);

    AudioEngine* engine() const { return engine_.get(); }

private:
    bool running() const;
    void onFormLoaded(Form& form);

    Controller& c_;
    std::shared_ptr<AudioEngine> engine_;
    KelvarinDrivers* drivers_ = nullptr;
    std::vector<std::uint64_t> driverSubs_;
    std::uint64_t formsSub_ = 0;
};

// Creates the feature over the controller's drivers (install it after they are in place) and
// hands it to the controller's audio references. The engine may be empty (no playthrough).
AudioFeature& installAudioFeature(Controller& controller, std::shared_ptr<AudioEngine> engine);

}  // namespace tlx
