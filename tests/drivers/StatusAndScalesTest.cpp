#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "drivers/BaseStatus.h"
#include "drivers/CorehubConstants.h"

using namespace tlx;
namespace kc = tlx::KelvarinCorehubConstants;

TEST(StatusText, EveryCodeKeepsItsWordingAndTheGapsAreUnknown) {
    const std::vector<std::pair<int, std::string>> texts = {
        {0, "Success"},
        {1, "Auto reconnect success"},
        {2, "Unkown error"},
        {3, "Base station not found"},
        {4, "Base station disconnected"},
        {5, "Base station disconnected - attempting auto reconnect"},
        {6, "TX Comms failed"},
        {7, "RX Comms failed"},
        {8, "TX Comms time out"},
        {9, "RX Comms time out"},
        {10, "Alternate base on same channel"},
        {11, "ACK time out"},
        {12, "Offline vote limit reached"},
        {13, "Invalid vote character"},
        {14, "Registry: no data found"},
        {16, "Registry: device not found"},
        {17, "Dataflash erase page error"},
        {18, "Dataflash read error"},
        {19, "Dataflash write error"},
        {21, "Registry mode is Fixed (read only)"},
        {22, "Unsupported base attached"},
        {23, "Requested action error - base busy (Addon Message)"},
        {24, "Requested action completed (Addon Message)"},
    };
    ASSERT_EQ(texts.size(), 23u);
    for (const auto& [code, text] : texts) EXPECT_EQ(GetCPPErrorString(code), text) << code;
    for (int code : {15, 20, 25, -1, 100})
        EXPECT_EQ(GetCPPErrorString(code), "Unkown Error Code: " + std::to_string(code)) << code;
}

TEST(VersionCompare, FieldsCompareAsNumbers) {
    EXPECT_EQ(VersionCompare("2.00.01.1801.1545", "2.00.01.1801.1545"), 0);
    EXPECT_EQ(VersionCompare("1.10.00.0101.0001", "1.9.00.0101.0001"), 1);
    EXPECT_EQ(VersionCompare("1.01.00.0101.0001", "1.1.0.101.1"), 0);
    EXPECT_EQ(VersionCompare("2.00.01.1801.1545", version::kG2Family), 1);
    EXPECT_EQ(VersionCompare("1.01.00.1607.1819", version::kG2Family), -1);
    EXPECT_EQ(VersionCompare("1.0.1.0108.0000", version::kRegistry), -1);
    EXPECT_EQ(VersionCompare("1.2", "1.2.0.0.0"), 0);
}

TEST(VersionCompare, DateCodeCountsItsLastTwoDigitsFirst) {
    // 0109 ends in 09, 1208 in 08: the last two digits decide before the first two.
    EXPECT_EQ(VersionCompare("1.01.00.0109.0000", "1.01.00.1208.0000"), 1);
    EXPECT_EQ(VersionCompare("1.01.00.0309.0000", "1.01.00.0209.0000"), 1);
    // Only when the date codes agree does the fifth field count.
    EXPECT_EQ(VersionCompare("1.01.00.1607.1818", "1.01.00.1607.1819"), -1);
}

TEST(VersionCompare, TextsWithoutDotsCompareAsDates) {
    EXPECT_EQ(VersionCompare("01/02/2020", "31/12/2019"), 1);
    EXPECT_EQ(VersionCompare("15/06/2019", "16/06/2019"), -1);
    EXPECT_EQ(VersionCompare("15/06/2019", "1.0.0"), 1);  // "1.0.0" reads as an empty date
    EXPECT_EQ(VersionCompare("", ""), 0);
    EXPECT_EQ(VersionCompare("abc", "x/y/z"), 0);
}

TEST(VersionCompare, SimpleVersionAndIdentifiers) {
    EXPECT_EQ(simpleFirmwareVersion("2.00.01.1801.1545"), "2.00.01");
    EXPECT_EQ(simpleFirmwareVersion("garbage"), "garbage");
    EXPECT_EQ(idText("300 100 001"), "300100001");
    EXPECT_EQ(idText("000123"), "123");
    EXPECT_EQ(idText("none"), "0");
}

TEST(KeypadScales, BatteryPercentageAndWord) {
    EXPECT_EQ(kc::BatteryPercentage(0), 0);
    EXPECT_EQ(kc::BatteryWord(0), "");
    EXPECT_EQ(kc::BatteryPercentage(340), 0);
    EXPECT_EQ(kc::BatteryPercentage(365), 50);
    EXPECT_EQ(kc::BatteryPercentage(389), 98);
    EXPECT_EQ(kc::BatteryPercentage(500), 100);
    EXPECT_EQ(kc::BatteryWord(359), "Low");
    EXPECT_EQ(kc::BatteryWord(360), "Med");
    EXPECT_EQ(kc::BatteryWord(370), "High");
    EXPECT_EQ(kc::BatteryWord(379), "High");
    EXPECT_EQ(kc::BatteryWord(380), "Full");
}

TEST(KeypadScales, SignalBandsKeepTheGapAtThirty) {
    EXPECT_EQ(kc::SignalValue(-30), 100);
    EXPECT_EQ(kc::SignalValue(30), 100);
    EXPECT_EQ(kc::SignalValue(-29), 10);
    EXPECT_EQ(kc::SignalValue(-31), 20);
    EXPECT_EQ(kc::SignalValue(0), 10);
    EXPECT_EQ(kc::SignalValue(-42), 40);
    EXPECT_EQ(kc::SignalValue(-43), 50);
    EXPECT_EQ(kc::SignalValue(-80), 90);
    EXPECT_EQ(kc::SignalValue(-81), 100);
    EXPECT_EQ(kc::SignalWord(0), "");
    EXPECT_EQ(kc::SignalWord(10), "None");
    EXPECT_EQ(kc::SignalWord(30), "None");
    EXPECT_EQ(kc::SignalWord(50), "Low");
    EXPECT_EQ(kc::SignalWord(60), "Med");
    EXPECT_EQ(kc::SignalWord(70), "Med");
    EXPECT_EQ(kc::SignalWord(80), "High");
}
