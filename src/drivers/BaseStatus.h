#pragma once
// Status texts of the base library's codes, firmware version comparison and the version
// thresholds the drivers apply.
#include <string>
#include <string_view>

namespace tlx {

// Text of a base status code; codes without a text give "Unkown Error Code: " + code.
std::string GetCPPErrorString(int code);

// Compares two dotted firmware versions field by field: -1, 0 or 1. The fourth field is a
// date code whose last two digits count before its first two. When either text has no "."
// both are read as "/"-separated dates.
int VersionCompare(std::string_view a, std::string_view b);

// The first three fields of a version ("2.00.01" of "2.00.01.1801.1545").
std::string simpleFirmwareVersion(std::string_view version);

namespace version {
// Lowest base version that has a registry.
inline constexpr const char* kRegistry = "1.0.1.0109.0900";
// From this version on a base reports its lowest and highest keypad numbers itself.
inline constexpr const char* kReportsLimits = "1.01.00.1607.1819";
// Lowest version accepted at all.
inline constexpr const char* kMinimum = "1.01.00.0101.0001";
// Lowest version served by the g2 driver.
inline constexpr const char* kG2Family = "2.00.00.0101.0001";
}  // namespace version

// A number read from text as whole digits ("300 100 001" -> "300100001"; "" -> "0").
std::string idText(std::string_view text);

}  // namespace tlx
