// Firmware version comparison, as the drivers apply it to what a base reports. Two versions
// come from the input (one line each); the comparison must be an order: -1, 0 or 1, the same
// answer reversed when the sides swap, and 0 for a version against itself.
#include <cstddef>
#include <cstdint>
#include <string>

#include "drivers/BaseStatus.h"
#include "support/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tlx::fuzz::FuzzInput in(data, size);
    const std::string a = in.line();
    const std::string b = in.rest();
    const int ab = tlx::VersionCompare(a, b);
    const int ba = tlx::VersionCompare(b, a);
    if (ab < -1 || ab > 1 || ab != -ba) __builtin_trap();
    if (tlx::VersionCompare(a, a) != 0) __builtin_trap();
    (void)tlx::simpleFirmwareVersion(a);
    (void)tlx::idText(b);
    return 0;
}
