#include "drivers/CorehubConstants.h"

#include <cstdlib>

namespace tlx::KelvarinCorehubConstants {

int BatteryPercentage(int reading) {
    int b = reading < 340 ? 340 : (reading > 390 ? 390 : reading);
    return static_cast<int>(static_cast<double>(b - 340) / 50.0 * 100.0);
}

std::string BatteryWord(int reading) {
    if (reading == 0) return "";
    if (reading < 360) return "Low";
    if (reading < 370) return "Med";
    if (reading < 380) return "High";
    return "Full";
}

int SignalValue(int reading) {
    const long s = std::labs(static_cast<long>(reading));
    if (s < 30) return 10;
    if (s >= 31 && s <= 33) return 20;
    if (s >= 34 && s <= 37) return 30;
    if (s >= 38 && s <= 42) return 40;
    if (s >= 43 && s <= 48) return 50;
    if (s >= 49 && s <= 54) return 60;
    if (s >= 55 && s <= 61) return 70;
    if (s >= 62 && s <= 72) return 80;
    if (s >= 73 && s <= 80) return 90;
    return 100;
}

std::string SignalWord(int value) {
    if (value == 0) return "";
    if (value < 31) return "None";
    if (value < 51) return "Low";
    if (value > 70) return "High";
    return "Med";
}

}  // namespace tlx::KelvarinCorehubConstants
