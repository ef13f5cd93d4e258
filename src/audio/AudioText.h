#pragma once
// Texts and numbers the microphone windows show: the sound card's status texts, the keypad
// identifier form, battery and signal readings.
#include <string>
#include <string_view>

namespace tlx {

// The text of a playthrough status code; codes without one are "Unkown BASS error".
std::string bassErrorText(int code);
// "Error <code>: <text>", as the "Audio Error" report gives it.
std::string audioErrorMessage(int code);

// A keypad's HID in its display form "### 000 000 000" (nine digits in three groups after a
// group of up to three).
std::string formatHid(std::string_view hid);
// Two HIDs name the same keypad when their digits read as the same number.
bool sameHid(std::string_view a, std::string_view b);

// The driver's battery reading (hundredths of a volt) as a percentage: linear from 3.00 V
// (empty) to 4.20 V (full), clamped to 0..100.
int batteryPercent(int reading);
// "71%".
std::string batteryText(int reading);
// "-45dB", or "-" when the keypad reported no signal reading (0).
std::string signalText(int reading);

}  // namespace tlx
