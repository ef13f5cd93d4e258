// Firmware version comparison, as the drivers apply it to what a base reports. Two versions
// come from the input (one line each); the comparison must be an order: -1, 0 or 1, the same
// answer reversed when the sides swap, and 0 for a version against itself.
#include "drivers/BaseStatus.h"
#include "support/Harness.h"

TLX_FUZZ_HARNESS(in) {
    const std::string a = in.line();
    const std::string b = in.rest();
    const int ab = tlx::VersionCompare(a, b);
    tlx::fuzz::require(ab >= -1 && ab <= 1 && ab == -tlx::VersionCompare(b, a) && tlx::VersionCompare(a, a) == 0);
    (void)tlx::simpleFirmwareVersion(a);
    (void)tlx::idText(b);
}
