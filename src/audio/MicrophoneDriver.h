#pragma once
// The keypad driver's audio members as the audio window calls them, so the window can be
// driven against the Corehub drivers or a stand-in.
#include <memory>
#include <optional>
#include <string>

#include "ports/BaseLibrary.h"

namespace tlx {

class Controller;

// A keypad the driver's registry copy knows.
struct RegisteredKeypad {
    int number = 0;
    std::string hid;
    int battery = 0;
    int signal = 0;
};

class MicrophoneDriver {
public:
    virtual ~MicrophoneDriver() = default;
    // Opens the bases for microphone requests on the request keys ("0,11").
    virtual void StartAudioRequests(const std::string& keys) = 0;
    virtual void EndAudioRequests() = 0;
    // Status codes of the base library (0 success).
    virtual int StartAudio(const std::string& hid, const KelvarinAudioOptions& options) = 0;
    virtual int StopAudio() = 0;
    // The HID of a keypad number, "" when no base has it.
    virtual std::string GetHIDFromSID(int keypad) = 0;
    // The registry entry of a HID on any base.
    virtual std::optional<RegisteredKeypad> registeredKeypad(const std::string& hid) = 0;
};

// The Corehub driver the controller uses for audio: the g2 driver (`oKVv5`) when it has a
// base, else the g1 driver (`oKVv4`) when it has one, else the g2 driver. Without Corehub
// drivers every call does nothing and StartAudio reports "Base station not found".
std::unique_ptr<MicrophoneDriver> corehubMicrophoneDriver(Controller& controller);

}  // namespace tlx
