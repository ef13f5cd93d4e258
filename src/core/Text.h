#pragma once
// Text helpers shared by every module: case, splitting, the locale-safe number reader
// and the number and date formats the program writes.
#include <string>
#include <string_view>
#include <vector>

#include "ports/Clock.h"

namespace tlx {

inline constexpr const char* kCrLf = "\r\n";

std::string toUpper(std::string_view s);
std::string toLower(std::string_view s);
std::string trim(std::string_view s);
bool iequals(std::string_view a, std::string_view b);
bool contains(std::string_view text, std::string_view part);
bool icontains(std::string_view text, std::string_view part);
bool startsWith(std::string_view text, std::string_view prefix);
bool endsWith(std::string_view text, std::string_view suffix);
std::string replaceAll(std::string text, std::string_view from, std::string_view to);
// Splits at every separator; an empty text gives no fields.
std::vector<std::string> split(std::string_view text, std::string_view sep);
// Splits once, at the first separator; the second part is "" when there is none.
std::pair<std::string, std::string> splitOnce(std::string_view text, std::string_view sep);
std::string join(const std::vector<std::string>& parts, std::string_view sep);
std::string repeat(char c, std::size_t n);
// The first n characters (fewer when the text is shorter).
std::string left(std::string_view s, std::size_t n);
// The first n characters of a UTF-8 text (a character is never cut in two).
std::string leftChars(std::string_view s, std::size_t n);

// Locale-safe number reader: the system decimal separator becomes ".", then ",", " ",
// "_", "#" and "%" are removed and the leading number is read; malformed text gives 0.
double ParseNumber(std::string_view text);
// The system decimal separator used by ParseNumber (set once by the program's wiring).
void setSystemDecimalSeparator(char sep);
char systemDecimalSeparator();
// Reads the leading number of a text the way a classic Val does ("12abc" -> 12, "" -> 0).
double leadingNumber(std::string_view text);
// True when the whole text (blanks around allowed) is a number.
bool isNumeric(std::string_view text);

// Number to text as the classic string conversion writes it: "12", "0.5", "-3.25".
std::string numText(double value);
// A single-precision value as its seven significant digits show it ("0.1234567").
std::string numText(float value);
std::string numText(long long value);
inline std::string numText(int value) { return numText(static_cast<long long>(value)); }
std::string boolText(bool value);  // "True" / "False"

// Number formats: "0" is a required digit, "#" an optional one, "," groups thousands,
// "." starts the decimals, anything else is copied. e.g. "000.000", "##0.000", "###,##0".
std::string formatNumber(double value, std::string_view pattern);
// Digit-group formats of identifiers, e.g. "### 000 000 000" and "000 000 000 000".
std::string formatDigits(std::string_view digits, std::string_view pattern);

// Date formats: "dd-mmm-yyyy", "hh:nn:ss", "YYYY_MM_DD", "DD/MM/YY", "YYYYMMDD".
std::string formatDate(const DateTime& t, std::string_view pattern);
// "[hh:mm:ss.000]" from seconds since midnight, rounded to milliseconds.
std::string timeStamp(double secondsSinceMidnight);
// "hh:mm:ss.000" without brackets.
std::string timeOfDay(double secondsSinceMidnight);

}  // namespace tlx
