#include "drivers/BaseStatus.h"

#include <array>
#include <cmath>
#include <vector>

#include "core/Text.h"

namespace tlx {

std::string GetCPPErrorString(int code) {
    static const std::array<const char*, 25> kTexts = {
        "Success",
        "Auto reconnect success",
        "Unkown error",
        "Base station not found",
        "Base station disconnected",
        "Base station disconnected - attempting auto reconnect",
        "TX Comms failed",
        "RX Comms failed",
        "TX Comms time out",
        "RX Comms time out",
        "Alternate base on same channel",
        "ACK time out",
        "Offline vote limit reached",
        "Invalid vote character",
        "Registry: no data found",
        nullptr,
        "Registry: device not found",
        "Dataflash erase page error",
        "Dataflash read error",
        "Dataflash write error",
        nullptr,
        "Registry mode is Fixed (read only)",
        "Unsupported base attached",
        "Requested action error - base busy (Addon Message)",
        "Requested action completed (Addon Message)",
    };
    if (code >= 0 && code < static_cast<int>(kTexts.size()) && kTexts[static_cast<std::size_t>(code)])
        return kTexts[static_cast<std::size_t>(code)];
    return "Unkown Error Code: " + numText(code);
}

namespace {

long long field(const std::vector<std::string>& f, std::size_t i) {
    if (i >= f.size()) return 0;
    const double v = ParseNumber(f[i]);
    return std::fabs(v) > 1e15 ? 0 : static_cast<long long>(v);
}

int sign(long long a, long long b) { return a < b ? -1 : (a > b ? 1 : 0); }

// Day, month and year of a "/"-separated date, compared year first.
int compareDates(std::string_view a, std::string_view b) {
    const auto fa = split(trim(a), "/");
    const auto fb = split(trim(b), "/");
    for (std::size_t i : {std::size_t{2}, std::size_t{1}, std::size_t{0}})
        if (const int s = sign(field(fa, i), field(fb, i)); s != 0) return s;
    return 0;
}

}  // namespace

int VersionCompare(std::string_view a, std::string_view b) {
    if (!contains(a, ".") || !contains(b, ".")) return compareDates(a, b);
    const auto fa = split(trim(a), ".");
    const auto fb = split(trim(b), ".");
    const std::size_t n = fa.size() > fb.size() ? fa.size() : fb.size();
    for (std::size_t i = 0; i < n; ++i) {
        const long long x = field(fa, i);
        const long long y = field(fb, i);
        if (i == 3) {
            // Date code: its last two digits count first.
            if (const int s = sign(x % 100, y % 100); s != 0) return s;
            if (const int s = sign(x / 100, y / 100); s != 0) return s;
            continue;
        }
        if (const int s = sign(x, y); s != 0) return s;
    }
    return 0;
}

std::string simpleFirmwareVersion(std::string_view version) {
    auto f = split(trim(version), ".");
    if (f.size() > 3) f.resize(3);
    return join(f, ".");
}

std::string idText(std::string_view text) {
    const double v = ParseNumber(text);
    if (!(v >= 0) || v >= 1e15) return "0";
    return numText(std::floor(v));
}

}  // namespace tlx
