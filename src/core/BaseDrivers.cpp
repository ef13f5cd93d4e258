#include "core/BaseDrivers.h"

#include <cctype>
#include <cmath>

#include "core/PortFile.h"
#include "core/Text.h"

namespace tlx {

namespace {

// Serial numbers compare as whole numbers: blanks, other separators and leading zeros do not
// count ("100 100 100 100" is 100100100100). A text without a non-zero digit names no base.
// Without allocating: this runs for every vote.
bool sameSerial(std::string_view a, std::string_view b) {
    // The next digit that counts, or 0 at the end.
    auto next = [](std::string_view s, std::size_t& i, bool& started) -> char {
        for (; i < s.size(); ++i) {
            const char c = s[i];
            if (!std::isdigit(static_cast<unsigned char>(c)) || (!started && c == '0')) continue;
            started = true;
            ++i;
            return c;
        }
        return 0;
    };
    std::size_t i = 0, j = 0;
    bool sa = false, sb = false;
    char ca = next(a, i, sa);
    if (!ca) return false;
    for (;; ca = next(a, i, sa)) {
        const char cb = next(b, j, sb);
        if (ca != cb) return false;
        if (!ca) return true;
    }
}

// The type without surrounding blanks, without copying it.
std::string_view trimmed(std::string_view s) {
    const auto a = s.find_first_not_of(" \t");
    if (a == std::string_view::npos) return {};
    return s.substr(a, s.find_last_not_of(" \t") - a + 1);
}

// ASCII letters compared without regard to case (type names are plain upper-case words).
bool sameLetters(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char x = a[i] >= 'a' && a[i] <= 'z' ? static_cast<char>(a[i] - 32) : a[i];
        const char y = b[i] >= 'a' && b[i] <= 'z' ? static_cast<char>(b[i] - 32) : b[i];
        if (x != y) return false;
    }
    return true;
}

bool isCorehubType(std::string_view type) {
    constexpr std::string_view kCorehub = "KELVARIN COREHUB";
    const std::string_view t = trimmed(type);
    return t.size() >= kCorehub.size() && sameLetters(t.substr(0, kCorehub.size()), kCorehub);
}

}  // namespace

bool sameSerialNumber(std::string_view a, std::string_view b) { return sameSerial(a, b); }

int corehubBaseIndex(const GlobalState& glo, std::string_view serial) {
    for (std::size_t i = 0; i < glo.bases.size(); ++i)
        if (sameSerial(glo.bases[i].port, serial) && isCorehubType(glo.bases[i].baseType))  // the cheap test first
            return static_cast<int>(i);
    return kUnlistedBase;
}

int serialPortBaseIndex(const GlobalState& glo, int port) {
    for (std::size_t i = 0; i < glo.bases.size(); ++i) {
        const PortEntry& b = glo.bases[i];
        if (sameLetters(trimmed(b.baseType), "KELVARIN BASE V3") && isNumeric(trim(b.port)) && ParseNumber(b.port) == port)
            return static_cast<int>(i);
    }
    return kUnlistedBase;
}

bool onSerialPort(const PortEntry& base) {
    return !isCorehubType(base.baseType) && !sameLetters(trimmed(base.baseType), kKeyboardBaseType);
}

std::string baseName(const PortEntry& base) {
    return onSerialPort(base) ? trim(base.port) : formatDigits(base.port, "### 000 000 000");
}

std::string baseName(const GlobalState& glo, int baseIndex) {
    if (baseIndex >= 0 && static_cast<std::size_t>(baseIndex) < glo.bases.size())
        return baseName(glo.bases[static_cast<std::size_t>(baseIndex)]);
    return numText(baseIndex);
}

KeypadRange BaseDrivers::keypadRange(int baseIndex, const GlobalState& glo) const {
    KeypadRange r;
    if (baseIndex < 0 || static_cast<std::size_t>(baseIndex) >= glo.bases.size()) return r;
    r.offset = glo.bases[static_cast<std::size_t>(baseIndex)].offset;
    r.highest = glo.bases[static_cast<std::size_t>(baseIndex)].gridHi;
    return r;
}

}  // namespace tlx
