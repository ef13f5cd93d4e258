#include "audio/AudioText.h"

#include <algorithm>
#include <cctype>

#include "core/Text.h"

namespace tlx {

std::string bassErrorText(int code) {
    switch (code) {
        case 0: return "all is OK";
        case 1: return "memory error";
        case 2: return "can't open the file";
        case 3: return "can't find a free sound driver";
        case 4: return "the sample buffer was lost";
        case 5: return "invalid handle";
        case 6: return "unsupported sample format";
        case 7: return "invalid position";
        case 8: return "BASS_Init has not been successfully called";
        case 9: return "BASS_Start has not been successfully called";
        case 14: return "already initialized/paused/etc";
        case 18: return "can't get a free channel";
        case 19: return "an illegal type was specified";
        case 20: return "an illegal parameter was specified";
        case 21: return "no 3D support";
        case 22: return "no EAX support";
        case 23: return "illegal device number";
        case 24: return "not playing";
        case 25: return "illegal sample rate";
        case 27: return "the stream is not a file stream";
        case 29: return "no hardware voices available";
        case 31: return "the MOD music has no sequence data";
        case 32: return "no internet connection could be opened";
        case 33: return "couldn't create the file";
        case 34: return "effects are not available";
        case 37: return "requested data is not available";
        case 38: return "the channel is a decoding channel";
        case 39: return "a sufficient DirectX version is not installed";
        case 40: return "connection timedout";
        case 41: return "unsupported file format";
        case 42: return "unavailable speaker";
        case 43: return "invalid BASS version (used by add-ons)";
        case 44: return "codec is not available/supported";
        case 45: return "the channel/file has ended";
        default: return "Unkown BASS error";
    }
}

std::string audioErrorMessage(int code) { return "Error " + numText(code) + ": " + bassErrorText(code); }

std::string formatHid(std::string_view hid) { return formatDigits(hid, "### 000 000 000"); }

namespace {
std::string numberDigits(std::string_view s) {
    std::string d;
    for (char c : s)
        if (std::isdigit(static_cast<unsigned char>(c))) d += c;
    const auto nz = d.find_first_not_of('0');
    return nz == std::string::npos ? "0" : d.substr(nz);
}
}  // namespace

bool sameHid(std::string_view a, std::string_view b) {
    const bool aEmpty = std::none_of(a.begin(), a.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
    const bool bEmpty = std::none_of(b.begin(), b.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
    if (aEmpty || bEmpty) return false;
    return numberDigits(a) == numberDigits(b);
}

int batteryPercent(int reading) {
    constexpr int kEmpty = 300, kFull = 420;
    const int p = (reading - kEmpty) * 100 / (kFull - kEmpty);
    return std::clamp(p, 0, 100);
}

std::string batteryText(int reading) { return numText(batteryPercent(reading)) + "%"; }

std::string signalText(int reading) { return reading == 0 ? "-" : numText(reading) + "dB"; }

}  // namespace tlx
