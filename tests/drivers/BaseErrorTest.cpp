#include <gtest/gtest.h>

#include <tuple>

#include "DriverWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";
const std::string kBase2 = "100100100200";
const std::string kBase3 = "100100100300";

std::vector<std::pair<std::string, int>> balloons(TestWorld& w) {
    std::vector<std::pair<std::string, int>> v;
    for (const auto& b : w.tray.balloons) v.emplace_back(b.text, b.iconKind);
    return v;
}
}  // namespace

TEST(BaseError, MessageNamesTheBaseForPeopleAndItsIdentityForPrograms) {
    DriverWorld d({kBase1, kBase2, kBase3});
    std::vector<std::pair<int, std::string>> errors, feedback;
    d.w.main().FromCtrlFormBaseStationError.connect(
        [&](int base, const std::string& text) { errors.emplace_back(base, text); });
    d.w.main().FromCtrlFormBaseStationFeedback.connect(
        [&](int base, const std::string& text) { feedback.emplace_back(base, text); });
    const auto before = d.w.tray.balloons.size();
    // The last names a base the port file does not list.
    for (const auto& [base, code, extra] : std::initializer_list<std::tuple<const char*, int, const char*>>{
             {"0", 1, ""}, {"0", 5, ""}, {"1", 4, ""}, {"1", 22, "USB"}, {"2", 8, ""}, {"2", 25, ""}, {"2", 24, ""},
             {"-1", 6, ""}})
        d.drivers.BaseError(base, code, extra);
    const auto b = balloons(d.w);
    const std::vector<std::pair<std::string, int>> added(b.begin() + static_cast<std::ptrdiff_t>(before), b.end());
    EXPECT_EQ(added, (std::vector<std::pair<std::string, int>>{
                  {"Base Station 100 100 100 100\r\nAuto reconnect success", 1},
                  {"Base Station 100 100 100 100\r\nBase station disconnected - attempting auto reconnect", 2},
                  {"Base Station 100 100 100 200\r\nBase station disconnected", 3},
                  {"Base Station 100 100 100 200\r\nUnsupported base attached\r\n[USB]", 3},
                  {"Base Station 100 100 100 300\r\nTX Comms time out", 0},
                  {"Base Station 100 100 100 300\r\nUnkown Error Code: 25", 0},
                  {"Base Station 100 100 100 300\r\nRequested action completed (Addon Message)", 0},
                  {"Base Station -1\r\nTX Comms failed", 0},
              }));
    // Progress (a reconnect that worked, an add-on action done) is feedback; the rest errors.
    EXPECT_EQ(feedback, (std::vector<std::pair<int, std::string>>{
                            {0, "Base Station 100 100 100 100\r\nAuto reconnect success"},
                            {2, "Base Station 100 100 100 300\r\nRequested action completed (Addon Message)"}}));
    ASSERT_EQ(errors.size(), 6u);
    EXPECT_EQ(errors[0].first, 0);
    EXPECT_EQ(errors[2],
              (std::pair<int, std::string>{1, "Base Station 100 100 100 200\r\nUnsupported base attached\r\n[USB]"}));
    EXPECT_EQ(errors[5].first, -1);
}

TEST(BaseError, AlternateBaseIsShownAtMostOnceIn30SecondsPerBase) {
    DriverWorld d({kBase1, kBase2});
    const auto before = d.w.tray.balloons.size();
    d.drivers.BaseError("0", 10, "");
    d.w.scheduler.advanceSeconds(29.9);
    d.drivers.BaseError("0", 10, "");  // dropped, and the quiet time is not renewed
    d.drivers.BaseError("1", 10, "");  // another base is its own
    d.w.scheduler.advanceSeconds(0.2);
    d.drivers.BaseError("0", 10, "");
    const auto b = balloons(d.w);
    ASSERT_EQ(b.size(), before + 3);
    EXPECT_EQ(b[before],
              (std::pair<std::string, int>{"Base Station 100 100 100 100\r\nAlternate base on same channel", 3}));
    for (const auto& [at, id] : {std::pair{1, "200"}, std::pair{2, "100"}})
        EXPECT_EQ(b[before + at].first, std::string("Base Station 100 100 100 ") + id + "\r\nAlternate base on same channel");
}
