#include <gtest/gtest.h>

#include "core/Text.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::fields;

TEST(ParseNumber, ReadsTheLeadingNumberAfterRemovingSeparatorsAndMarks) {
    for (const auto& [text, number] : std::initializer_list<std::pair<const char*, double>>{
             {"42", 42}, {"1,000", 1000}, {" 12 345 ", 12345}, {"#5%", 5}, {"1_000_000", 1000000},
             {"-3.25abc", -3.25}, {"2.5E3", 2500}, {"&HFF", 255}})
        EXPECT_DOUBLE_EQ(ParseNumber(text), number) << text;
}

TEST(ParseNumber, MalformedTextGivesZero) {
    for (const char* s : {"", "abc", "-", ".", "e5", "++1", "\xff\xfe", "&H"}) EXPECT_DOUBLE_EQ(ParseNumber(s), 0) << s;
    // A number too large to hold is no number at all.
    EXPECT_DOUBLE_EQ(ParseNumber("1e999999"), 0);
}

TEST(ParseNumber, HonoursACommaDecimalSeparator) {
    setSystemDecimalSeparator(',');
    EXPECT_DOUBLE_EQ(ParseNumber("1,5"), 1.5);
    setSystemDecimalSeparator('.');
    EXPECT_DOUBLE_EQ(ParseNumber("1,5"), 15);
}

TEST(Formats, NumberPatterns) {
    EXPECT_EQ(fields(formatNumber(1.5, "000.000"), formatNumber(1234.5678, "000.000"), formatNumber(0.25, "##0.000")),
              "001.500|1234.568|0.250");
    EXPECT_EQ(fields(formatNumber(0, "###,##0"), formatNumber(1234567, "###,##0"), formatNumber(999, "###,##0"),
                     formatNumber(-1500, "###,##0")),
              "0|1,234,567|999|-1,500");
}

TEST(Formats, DigitGroupsOfIdentifiers) {
    EXPECT_EQ(formatDigits("100100100100", "### 000 000 000"), "100 100 100 100");
    EXPECT_EQ(formatDigits("5", "000 000 000 000"), "000 000 000 005");
    EXPECT_EQ(formatDigits("123456789", "### 000 000 000"), "123 456 789");
    // Digits beyond the pattern stay in front rather than being lost.
    EXPECT_EQ(formatDigits("98765432101234", "### 000 000 000"), "98765 432 101 234");
}

TEST(Formats, TimeStampsAndDates) {
    EXPECT_EQ(fields(timeStamp(3723.4567), timeStamp(0), timeStamp(59.9996)), "[01:02:03.457]|[00:00:00.000]|[00:01:00.000]");
    const DateTime t{2026, 3, 7, 14, 5, 9, 12};
    EXPECT_EQ(fields(formatDate(t, "dd-mmm-yyyy"), formatDate(t, "hh:nn:ss"), formatDate(t, "YYYY_MM_DD"),
                     formatDate(t, "DD/MM/YY"), formatDate(t, "YYYYMMDD"), formatDate(t.addDays(30), "YYYYMMDD")),
              "07-Mar-2026|14:05:09|2026_03_07|07/03/26|20260307|20260406");
}

TEST(Formats, NumberTexts) {
    EXPECT_EQ(numText(12.0), "12");
    EXPECT_EQ(numText(0.1234567891f), "0.1234568");
}

TEST(Formats, LeftCharsNeverCutsACharacterInTwo) {
    EXPECT_EQ(fields(leftChars("Grüße", 3), leftChars("Grüße", 5), leftChars("Grüße", 50), leftChars("€uro", 1),
                     leftChars("ab", 0), leftChars("", 3)),
              "Grü|Grüße|Grüße|€||");
    // A stray continuation byte counts with the character before it; a cut lead byte stays whole.
    EXPECT_EQ(leftChars("a\x80" "b", 1), "a\x80");
    EXPECT_EQ(leftChars("\xE2\x82", 1), "\xE2\x82");
}

TEST(Split, EmptyTextHasNoFieldsAndSeparatorsKeepEmptyFields) {
    EXPECT_TRUE(split("", "\r\n").empty());
    EXPECT_EQ(split("a\r\n\r\nb", "\r\n"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(splitOnce("key=a=b", "="), (std::pair<std::string, std::string>{"key", "a=b"}));
}
