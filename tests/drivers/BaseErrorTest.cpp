#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "core/Text.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";

std::vector<std::pair<std::string, int>> balloons(TestWorld& w) {
    std::vector<std::pair<std::string, int>> v;
    for (const auto& b : w.tray.balloons) v.emplace_back(b.text, b.iconKind);
    return v;
}
}  // namespace

TEST(BaseError, MessageAndSeverityPerCode) {
    DriverWorld d;
    std::vector<std::pair<int, std::string>> raised;
    d.w.main().FromCtrlFormBaseStationError.connect(
        [&](int base, const std::string& text) { raised.emplace_back(base, text); });
    d.drivers.BaseError("1", 1, "");
    d.drivers.BaseError("1", 5, "");
    d.drivers.BaseError("2", 4, "");
    d.drivers.BaseError("2", 22, "USB");
    d.drivers.BaseError("3", 8, "");
    d.drivers.BaseError("3", 25, "");
    EXPECT_EQ(balloons(d.w), (std::vector<std::pair<std::string, int>>{
                                 {"Base Station 1\r\nAuto reconnect success", 1},
                                 {"Base Station 1\r\nBase station disconnected - attempting auto reconnect", 2},
                                 {"Base Station 2\r\nBase station disconnected", 3},
                                 {"Base Station 2\r\nUnsupported base attached\r\n[USB]", 3},
                                 {"Base Station 3\r\nTX Comms time out", 0},
                                 {"Base Station 3\r\nUnkown Error Code: 25", 0},
                             }));
    ASSERT_EQ(raised.size(), 6u);
    EXPECT_EQ(raised[3], (std::pair<int, std::string>{2, "Base Station 2\r\nUnsupported base attached\r\n[USB]"}));
}

TEST(BaseError, AlternateBaseIsShownAtMostOnceIn30SecondsPerBase) {
    DriverWorld d;
    const auto before = d.w.tray.balloons.size();
    d.drivers.BaseError("1", 10, "");
    d.w.scheduler.advanceSeconds(29.9);
    d.drivers.BaseError("1", 10, "");  // dropped, and the quiet time is not renewed
    d.drivers.BaseError("2", 10, "");  // another base is its own
    d.w.scheduler.advanceSeconds(0.2);
    d.drivers.BaseError("1", 10, "");
    const auto b = balloons(d.w);
    ASSERT_EQ(b.size(), before + 3);
    EXPECT_EQ(b[before], (std::pair<std::string, int>{"Base Station 1\r\nAlternate base on same channel", 3}));
    EXPECT_EQ(b[before + 1].first, "Base Station 2\r\nAlternate base on same channel");
    EXPECT_EQ(b[before + 2].first, "Base Station 1\r\nAlternate base on same channel");
}

TEST(BaseError, ABaseThatLosesItsLinkIsReportedAndReconnectedByTheLibrary) {
    DriverWorld d;
    d.singleDigit();
    ASSERT_TRUE(d.sim().disconnect(kBase1, 2000));
    d.settle();
    EXPECT_EQ(balloons(d.w).back(),
              (std::pair<std::string, int>{"Base Station 1\r\nBase station disconnected - attempting auto reconnect", 2}));
    EXPECT_TRUE(d.g2().logged("1 - Error Event - Code:5"));
    d.g2().StartVote();
    EXPECT_TRUE(d.g2().logged("1 - Start Vote FAILED - 4: Base station disconnected"));
    EXPECT_FALSE(d.sim().press(kBase1, 1, "1"));
    d.settle(2000);
    EXPECT_EQ(balloons(d.w).back(), (std::pair<std::string, int>{"Base Station 1\r\nAuto reconnect success", 1}));
    d.g2().StartVote();
    EXPECT_TRUE(d.sim().press(kBase1, 1, "1"));

    // Reconnecting by hand works the same way.
    d.sim().disconnect(kBase1);
    d.settle();
    EXPECT_FALSE(d.sim().disconnect(kBase1));
    EXPECT_TRUE(d.sim().reconnect(kBase1));
    EXPECT_FALSE(d.sim().reconnect(kBase1));
    d.settle();
    EXPECT_EQ(balloons(d.w).back().second, 1);
}

TEST(BaseError, AlternateBaseFromTheSimulationReachesTheTray) {
    DriverWorld d;
    const auto before = d.w.tray.balloons.size();
    d.sim().alternateBase(kBase1);
    d.sim().alternateBase(kBase1);
    d.settle();
    EXPECT_EQ(d.w.tray.balloons.size(), before + 1);
    EXPECT_TRUE(contains(d.glo().bubbleMessageLog, "Alternate base on same channel"));
}
