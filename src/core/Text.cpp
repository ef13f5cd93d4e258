#include "core/Text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace tlx {

namespace {
char g_decimalSeparator = '.';
const std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
}  // namespace

std::string toUpper(std::string_view s) {
    std::string r(s);
    for (auto& c : r) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return r;
}

std::string toLower(std::string_view s) {
    std::string r(s);
    for (auto& c : r) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return r;
}

std::string trim(std::string_view s) {
    auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!s.empty() && blank(s.front())) s.remove_prefix(1);
    while (!s.empty() && blank(s.back())) s.remove_suffix(1);
    return std::string(s);
}

bool iequals(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) !=
            std::toupper(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool icontains(std::string_view text, std::string_view part) {
    return toUpper(text).find(toUpper(part)) != std::string::npos;
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
    if (from.empty()) return text;
    std::string out;
    out.reserve(text.size());
    std::size_t pos = 0;
    while (true) {
        const std::size_t hit = text.find(from, pos);
        if (hit == std::string::npos) break;
        out.append(text, pos, hit - pos);
        out.append(to);
        pos = hit + from.size();
    }
    out.append(text, pos, std::string::npos);
    return out;
}

std::vector<std::string> split(std::string_view text, std::string_view sep) {
    std::vector<std::string> parts;
    if (text.empty()) return parts;
    if (sep.empty()) {
        parts.emplace_back(text);
        return parts;
    }
    std::size_t pos = 0;
    while (true) {
        const std::size_t hit = text.find(sep, pos);
        if (hit == std::string_view::npos) {
            parts.emplace_back(text.substr(pos));
            break;
        }
        parts.emplace_back(text.substr(pos, hit - pos));
        pos = hit + sep.size();
    }
    return parts;
}

std::pair<std::string, std::string> splitOnce(std::string_view text, std::string_view sep) {
    const std::size_t hit = text.find(sep);
    if (hit == std::string_view::npos) return {std::string(text), std::string()};
    return {std::string(text.substr(0, hit)), std::string(text.substr(hit + sep.size()))};
}

std::string join(const std::vector<std::string>& parts, std::string_view sep) {
    std::string out;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i) out.append(sep);
        out.append(parts[i]);
    }
    return out;
}

std::string repeat(char c, std::size_t n) { return std::string(n, c); }

std::string left(std::string_view s, std::size_t n) { return std::string(s.substr(0, n)); }

std::string leftChars(std::string_view s, std::size_t n) {
    std::size_t i = 0;
    for (std::size_t count = 0; i < s.size() && count < n; ++count) {
        ++i;  // a lead byte, then its continuation bytes (10xxxxxx)
        while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) ++i;
    }
    return std::string(s.substr(0, i));
}

void setSystemDecimalSeparator(char sep) { g_decimalSeparator = sep; }
char systemDecimalSeparator() { return g_decimalSeparator; }

double leadingNumber(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    // Hexadecimal and octal prefixes, as the classic reader accepts them.
    if (i + 1 < s.size() && s[i] == '&' && (s[i + 1] == 'H' || s[i + 1] == 'h' || s[i + 1] == 'O' ||
                                            s[i + 1] == 'o')) {
        const int base = (s[i + 1] == 'H' || s[i + 1] == 'h') ? 16 : 8;
        long long v = 0;
        bool any = false;
        for (i += 2; i < s.size(); ++i) {
            const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(s[i])));
            int d;
            if (c >= '0' && c <= '9')
                d = c - '0';
            else if (base == 16 && c >= 'a' && c <= 'f')
                d = c - 'a' + 10;
            else
                break;
            if (d >= base) break;
            if (v > (1LL << 40)) break;  // far beyond any number the program reads
            v = v * base + d;
            any = true;
        }
        return any ? static_cast<double>(v) : 0.0;
    }
    std::string num;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) num += s[i++];
    bool digits = false;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
        num += s[i++];
        digits = true;
    }
    if (i < s.size() && s[i] == '.') {
        num += s[i++];
        while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
            num += s[i++];
            digits = true;
        }
    }
    if (!digits) return 0.0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        std::size_t j = i + 1;
        std::string exp = "e";
        if (j < s.size() && (s[j] == '+' || s[j] == '-')) exp += s[j++];
        bool expDigits = false;
        while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j])) && exp.size() < 6) {
            exp += s[j++];
            expDigits = true;
        }
        if (expDigits) num += exp;
    }
    const double v = std::strtod(num.c_str(), nullptr);
    return std::isfinite(v) ? v : 0.0;
}

double ParseNumber(std::string_view text) {
    std::string s(text);
    const char dec = g_decimalSeparator;
    if (dec != '.') std::replace(s.begin(), s.end(), dec, '.');
    std::string cleaned;
    cleaned.reserve(s.size());
    for (char c : s)
        if (c != ',' && c != ' ' && c != '_' && c != '#' && c != '%') cleaned += c;
    return leadingNumber(cleaned);
}

bool isNumeric(std::string_view text) {
    const std::string t = trim(text);
    if (t.empty()) return false;
    std::size_t i = 0;
    if (t[i] == '+' || t[i] == '-') ++i;
    bool digits = false, dot = false;
    for (; i < t.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(t[i])))
            digits = true;
        else if (t[i] == '.' && !dot)
            dot = true;
        else
            return false;
    }
    return digits;
}

std::string numText(double value) {
    if (!std::isfinite(value)) return "0";
    if (value == std::floor(value) && std::fabs(value) < 1e15)
        return numText(static_cast<long long>(value));
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.15g", value);
    std::string s = buf;
    const auto e = s.find('e');
    if (e != std::string::npos) s[e] = 'E';
    return s;
}

std::string numText(long long value) { return std::to_string(value); }

std::string numText(float value) {
    if (!std::isfinite(value)) return "0";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.7g", static_cast<double>(value));
    std::string s = buf;
    const auto e = s.find('e');
    if (e != std::string::npos) s[e] = 'E';
    return s;
}

std::string boolText(bool value) { return value ? "True" : "False"; }

std::string formatNumber(double value, std::string_view pattern) {
    const std::size_t dot = pattern.find('.');
    const std::string_view intPat = pattern.substr(0, dot);
    const std::string_view decPat = dot == std::string_view::npos ? "" : pattern.substr(dot + 1);
    int decimals = 0;
    for (char c : decPat)
        if (c == '0' || c == '#') ++decimals;
    int minInt = 0;
    for (char c : intPat)
        if (c == '0') ++minInt;
    const bool grouping = intPat.find(',') != std::string_view::npos;

    const bool negative = value < 0;
    const double scaled = std::round(std::fabs(value) * std::pow(10.0, decimals));
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.0f", scaled);
    std::string digits = buf;
    while (static_cast<int>(digits.size()) <= decimals) digits.insert(digits.begin(), '0');
    std::string intPart = digits.substr(0, digits.size() - decimals);
    const std::string decPart = digits.substr(digits.size() - decimals);
    // Drop leading zeros beyond the required ones.
    std::size_t firstNonZero = intPart.find_first_not_of('0');
    if (firstNonZero == std::string::npos) firstNonZero = intPart.size();
    intPart = intPart.substr(std::min(firstNonZero, intPart.size()));
    while (static_cast<int>(intPart.size()) < minInt) intPart.insert(intPart.begin(), '0');
    if (grouping && intPart.size() > 3) {
        std::string g;
        const int n = static_cast<int>(intPart.size());
        for (int i = 0; i < n; ++i) {
            g += intPart[static_cast<std::size_t>(i)];
            const int rest = n - 1 - i;
            if (rest > 0 && rest % 3 == 0) g += ',';
        }
        intPart = g;
    }
    std::string out;
    const bool nonZero = scaled != 0;
    if (negative && nonZero) out += '-';
    out += intPart;
    if (decimals > 0) {
        out += '.';
        out += decPart;
    }
    return out;
}

std::string formatDigits(std::string_view digits, std::string_view pattern) {
    std::string d;
    for (char c : digits)
        if (std::isdigit(static_cast<unsigned char>(c))) d += c;
    // Strip leading zeros; the pattern's required digits put them back.
    const std::size_t nz = d.find_first_not_of('0');
    d = nz == std::string::npos ? "" : d.substr(nz);
    int slots = 0;
    for (char c : pattern)
        if (c == '0' || c == '#') ++slots;
    std::string out;
    int di = static_cast<int>(d.size()) - 1;
    bool wroteDigit = false;
    // Fill from the right.
    for (int pi = static_cast<int>(pattern.size()) - 1; pi >= 0; --pi) {
        const char p = pattern[static_cast<std::size_t>(pi)];
        if (p == '0' || p == '#') {
            --slots;
            if (di >= 0) {
                if (slots == 0) {  // the leftmost slot takes every remaining digit
                    out.insert(0, d.substr(0, static_cast<std::size_t>(di) + 1));
                    di = -1;
                } else {
                    out.insert(out.begin(), d[static_cast<std::size_t>(di--)]);
                }
                wroteDigit = true;
            } else if (p == '0') {
                out.insert(out.begin(), '0');
                wroteDigit = true;
            } else {
                wroteDigit = false;
            }
        } else {
            // A literal shows only when a digit stands to its right and one follows to its left.
            bool digitLeft = di >= 0;
            for (int k = pi - 1; k >= 0 && !digitLeft; --k)
                if (pattern[static_cast<std::size_t>(k)] == '0') digitLeft = true;
            if (wroteDigit && digitLeft) out.insert(out.begin(), p);
        }
    }
    return out;
}

std::string formatDate(const DateTime& t, std::string_view pattern) {
    char buf[64];
    if (pattern == "dd-mmm-yyyy") {
        std::snprintf(buf, sizeof buf, "%02d-%s-%04d", t.day, kMonths[static_cast<std::size_t>(t.month - 1) % 12],
                      t.year);
    } else if (pattern == "hh:nn:ss") {
        std::snprintf(buf, sizeof buf, "%02d:%02d:%02d", t.hour, t.minute, t.second);
    } else if (pattern == "YYYY_MM_DD") {
        std::snprintf(buf, sizeof buf, "%04d_%02d_%02d", t.year, t.month, t.day);
    } else if (pattern == "DD/MM/YY") {
        std::snprintf(buf, sizeof buf, "%02d/%02d/%02d", t.day, t.month, t.year % 100);
    } else if (pattern == "DD/MM/YYYY") {
        std::snprintf(buf, sizeof buf, "%02d/%02d/%04d", t.day, t.month, t.year);
    } else if (pattern == "YYYYMMDD") {
        std::snprintf(buf, sizeof buf, "%04d%02d%02d", t.year, t.month, t.day);
    } else {
        std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", t.year, t.month, t.day);
    }
    return buf;
}

std::string timeOfDay(double secondsSinceMidnight) {
    long long ms = std::llround(secondsSinceMidnight * 1000.0);
    if (ms < 0) ms = 0;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02lld:%02lld:%06.3f", ms / 3'600'000, ms / 60'000 % 60,
                  static_cast<double>(ms % 60'000) / 1000.0);
    return buf;
}

std::string timeStamp(double secondsSinceMidnight) {
    return "[" + timeOfDay(secondsSinceMidnight) + "]";
}

}  // namespace tlx
