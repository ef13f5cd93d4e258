#include <gtest/gtest.h>

#include "platform/qt/QtScheduler.h"
#include "support/QtTestApp.h"

using namespace tlx;
using namespace tlx::test;

// The program's scheduler on Qt's loop: the same timer rules as the virtual one. Waits are
// for a condition, with a generous limit, never a fixed sleep.
TEST(QtScheduler, OneShotTimersPostsAndWaits) {
    qtApp();
    QtScheduler s;
    Timer oneShot(s, "oneShot", 5);
    int ticks = 0;
    oneShot.onTick = [&] {
        oneShot.setEnabled(false);
        ++ticks;
    };
    oneShot.setEnabled(true);
    oneShot.setEnabled(true);  // already enabled: no second interval
    EXPECT_TRUE(s.waitUntil([&] { return ticks == 1; }, 5.0));
    EXPECT_FALSE(oneShot.enabled());

    bool posted = false, cancelled = false;
    s.post(1, [&] { posted = true; });
    const auto id = s.post(1, [&] { cancelled = true; });
    s.cancel(id);
    EXPECT_TRUE(s.waitUntil([&] { return posted; }, 5.0));
    EXPECT_FALSE(cancelled);

    Timer repeating(s, "repeating", 2, true);
    int count = 0;
    repeating.onTick = [&] { ++count; };
    EXPECT_TRUE(s.waitUntil([&] { return count >= 3; }, 5.0));
    const double before = s.monotonicSeconds();
    EXPECT_FALSE(s.waitUntil([] { return false; }, 0.05));
    EXPECT_GE(s.monotonicSeconds() - before, 0.05);
}

TEST(QtScheduler, ATimerMayGoFromAnotherTimersHandler) {
    qtApp();
    QtScheduler s;
    auto victim = std::make_unique<Timer>(s, "victim", 1, true);
    Timer killer(s, "killer", 1, true);
    bool done = false;
    killer.onTick = [&] {
        killer.setEnabled(false);
        victim.reset();
        done = true;
    };
    EXPECT_TRUE(s.waitUntil([&] { return done; }, 5.0));
    EXPECT_FALSE(s.waitUntil([] { return false; }, 0.02));  // nothing left that could fire
}
