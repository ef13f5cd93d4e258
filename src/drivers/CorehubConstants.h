#pragma once
// `KelvarinCorehubConstants`: raw keypad battery and signal readings as the percentages and
// words the set-up tools show.
#include <string>

namespace tlx::KelvarinCorehubConstants {

// Battery reading in hundredths of a volt: 340 and below 0 %, 390 and above 100 %.
int BatteryPercentage(int reading);
// "" for 0, then "Low", "Med", "High", "Full".
std::string BatteryWord(int reading);
// Signal value 10..100 from a reading in dB (its absolute value counts). A reading of 30
// falls between the bands and gives 100.
int SignalValue(int reading);
// Word of a signal value: "" for 0, then "None", "Low", "Med", "High".
std::string SignalWord(int value);

}  // namespace tlx::KelvarinCorehubConstants
