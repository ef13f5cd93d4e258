#pragma once
// The PC's sound card as the audio window uses it for playthrough: a recording device whose
// blocks are pushed into a playback stream on an output device, with the levels, the load and
// the buffered latency the window shows. The calls follow the order the window makes them;
// each returns false on failure and `errorGetCode` then tells why, with the status codes of
// the classic sound library the window was written against (0 all is OK, 23 illegal device
// number, ...; the window turns them into text).
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tlx {

namespace AudioErrorCode {
inline constexpr int Unknown = -1;
inline constexpr int Ok = 0;
inline constexpr int Memory = 1;
inline constexpr int NoFreeDriver = 3;
inline constexpr int Handle = 5;
inline constexpr int Format = 6;
inline constexpr int NotInitialised = 8;
inline constexpr int NotStarted = 9;
inline constexpr int Already = 14;
inline constexpr int IllegalParameter = 20;
inline constexpr int Device = 23;
inline constexpr int NotPlaying = 24;
inline constexpr int SampleRate = 25;
inline constexpr int NotAvailable = 37;
}  // namespace AudioErrorCode

struct AudioDeviceInfo {
    std::string name;
    bool isDefault = false;
};

class AudioEngine {
public:
    virtual ~AudioEngine() = default;

    // Device lists, in a stable order; a device is named by its index (-1: the default one).
    virtual std::vector<AudioDeviceInfo> recordDevices() = 0;
    virtual std::vector<AudioDeviceInfo> playbackDevices() = 0;

    // Opens the playback device for the stream.
    virtual bool init(int device, int frequency) = 0;
    // Opens the recording device.
    virtual bool recordInit(int device) = 0;
    // The inputs of the open recording device (microphone, line in, ...); may be none.
    virtual std::vector<std::string> recordInputNames() = 0;
    // Level of an input from 0 to 1; input -1 is the device's master input. Nothing when the
    // input cannot be read.
    virtual std::optional<double> recordGetInput(int input) = 0;
    virtual bool recordSetInput(int input, double level) = 0;
    // A stream on the playback device that takes pushed sample blocks.
    virtual bool streamCreate(int frequency, int channels) = 0;
    // Starts recording; every recorded block is pushed into the stream.
    virtual bool recordStart(int frequency, int channels) = 0;
    virtual bool channelPlay() = 0;
    // Output level from 0 to 1.
    virtual double getVolume() = 0;
    virtual bool setVolume(double level) = 0;

    // Share of the time the playthrough's own work takes, in percent.
    virtual double cpu() = 0;
    // Peak level of the stream's latest block, from 0 to 1.
    virtual double channelLevel() = 0;
    // Sample bytes recorded but not yet played.
    virtual std::int64_t channelBufferedBytes() = 0;
    virtual std::int64_t channelSeconds2Bytes(double seconds) = 0;

    // Stops and lets go of the recording, and of the stream and the playback device.
    virtual void recordFree() = 0;
    virtual void free() = 0;

    // Why the last call failed.
    virtual int errorGetCode() = 0;

    // Each recorded block as it is pushed (its length in bytes and where it lies);
    // diagnostics only.
    std::function<void(std::size_t length, const void* buffer)> onBlock;
    // The playthrough stopped by itself (a device went away, the server failed), with the code.
    std::function<void(int code)> onFailure;
};

}  // namespace tlx
