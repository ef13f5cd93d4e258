#pragma once
// The presenter keypad's keys: each key name becomes key strokes to the foreground window
// (the slide show) and an echo text for the presenter keypad's display.
#include <string>
#include <string_view>

namespace tlx {

class Desktop;

namespace vk {
inline constexpr int Clear = 12;
inline constexpr int Enter = 13;
inline constexpr int Escape = 27;
inline constexpr int Space = 32;
inline constexpr int PageUp = 33;
inline constexpr int PageDown = 34;
inline constexpr int End = 35;
inline constexpr int Home = 36;
inline constexpr int B = 66;
inline constexpr int V = 86;
inline constexpr int F5 = 116;
inline constexpr int VolumeMute = 173;
inline constexpr int VolumeDown = 174;
inline constexpr int VolumeUp = 175;
}  // namespace vk

// Display programs whose keys differ while they run.
inline constexpr const char* kGridderProcess = "GRIDDER.EXE";
inline constexpr const char* kChartistProcess = "CHARTIST.EXE";

struct PresenterKeyResult {
    bool known = false;
    std::string echo;  // "" when nothing is echoed
};

// Performs one key name ("VOL-", "VOL+", "MUTE", "V", "PageUp", "PageDown", "End", "Home",
// "F5", "B", "Escape"); an unknown name does nothing.
PresenterKeyResult performPresenterKey(Desktop& desktop, std::string_view keyName);

// The presenter keypad's key map: the key name of a command number, "" when none.
std::string presenterKeyName(int command);

}  // namespace tlx
