#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "drivers/BaseStatus.h"
#include "drivers/CorehubConstants.h"
#include "support/Fields.h"

using namespace tlx;
namespace kc = tlx::KelvarinCorehubConstants;
using tlx::test::fields;

TEST(StatusText, TheGapsInTheCodeTableAreUnknownNotTheirNeighbours) {
    // The wording of the known codes is checked where the messages are shown.
    EXPECT_EQ(fields(GetCPPErrorString(14), GetCPPErrorString(16)), "Registry: no data found|Registry: device not found");
    for (int code : {15, 20, 25, -1, 100})
        EXPECT_EQ(GetCPPErrorString(code), "Unkown Error Code: " + std::to_string(code)) << code;
}

TEST(VersionCompare, FieldsAsNumbersTheDateCodeByYearFirstAndTextsAsDates) {
    const std::vector<std::tuple<std::string, std::string, int>> cases = {
        {"2.00.01.1801.1545", "2.00.01.1801.1545", 0}, {"1.10.00.0101.0001", "1.9.00.0101.0001", 1},
        {"1.01.00.0101.0001", "1.1.0.101.1", 0},       {"2.00.01.1801.1545", version::kG2Family, 1},
        {"1.01.00.1607.1819", version::kG2Family, -1}, {"1.0.1.0108.0000", version::kRegistry, -1},
        {"1.2", "1.2.0.0.0", 0},
        // 0109 ends in 09, 1208 in 08: the last two digits decide before the first two.
        {"1.01.00.0109.0000", "1.01.00.1208.0000", 1}, {"1.01.00.0309.0000", "1.01.00.0209.0000", 1},
        // Only when the date codes agree does the fifth field count.
        {"1.01.00.1607.1818", "1.01.00.1607.1819", -1},
        // Texts without dots compare as dates; "1.0.0" reads as an empty date.
        {"01/02/2020", "31/12/2019", 1}, {"15/06/2019", "16/06/2019", -1}, {"15/06/2019", "1.0.0", 1},
        {"", "", 0},                     {"abc", "x/y/z", 0}};
    for (const auto& [a, b, order] : cases) EXPECT_EQ(VersionCompare(a, b), order) << a << " against " << b;
}

TEST(VersionCompare, SimpleVersionAndIdentifiers) {
    EXPECT_EQ(fields(simpleFirmwareVersion("2.00.01.1801.1545"), simpleFirmwareVersion("garbage")), "2.00.01|garbage");
    EXPECT_EQ(fields(idText("300 100 001"), idText("000123"), idText("none")), "300100001|123|0");
}

TEST(KeypadScales, BatteryAndSignalBands) {
    const std::pair<int, int> percent[] = {{0, 0}, {340, 0}, {365, 50}, {389, 98}, {500, 100}};
    for (auto [mv, pc] : percent) EXPECT_EQ(kc::BatteryPercentage(mv), pc) << mv;
    const std::pair<int, const char*> battery[] = {{0, ""}, {359, "Low"}, {360, "Med"}, {370, "High"}, {379, "High"},
                                                   {380, "Full"}};
    for (auto [mv, word] : battery) EXPECT_EQ(kc::BatteryWord(mv), word) << mv;
    // The bands keep their gap at thirty: -30 and 30 read as full strength, -29 as none.
    const std::pair<int, int> signal[] = {{-30, 100}, {30, 100}, {-29, 10}, {-31, 20}, {0, 10},
                                          {-42, 40},  {-43, 50}, {-80, 90}, {-81, 100}};
    for (auto [dbm, value] : signal) EXPECT_EQ(kc::SignalValue(dbm), value) << dbm;
    const std::pair<int, const char*> words[] = {{0, ""},     {10, "None"}, {30, "None"}, {50, "Low"},
                                                 {60, "Med"}, {70, "Med"},  {80, "High"}};
    for (auto [value, word] : words) EXPECT_EQ(kc::SignalWord(value), word) << value;
}
