// Exact timing on virtual time; the rules both schedulers share are in SchedulerContractTest.
#include <gtest/gtest.h>

#include "platform/sim/VirtualScheduler.h"

using namespace tlx;

TEST(Timer, EnablingAnEnabledTimerKeepsItsInterval) {
    VirtualScheduler s;
    Timer t(s, "oneShot", 50);
    int ticks = 0;
    t.onTick = [&] {
        t.setEnabled(false);
        ++ticks;
    };
    t.setEnabled(true);
    // A steady stream of producers re-enabling it cannot starve it.
    for (int i = 0; i < 4; ++i) {
        s.advance(10);
        t.setEnabled(true);
    }
    EXPECT_EQ(ticks, 0);
    s.advance(10);
    EXPECT_EQ(ticks, 1);
    EXPECT_FALSE(t.enabled());
}

TEST(Timer, TicksOncePerIntervalWhileEnabledAndReEnablingOrANewIntervalStartAfresh) {
    VirtualScheduler s;
    Timer t(s, "t", 100);
    int ticks = 0;
    t.onTick = [&] { ++ticks; };
    // The ticks counted once the time has gone by.
    const auto after = [&](int ms) {
        s.advance(ms);
        return ticks;
    };
    EXPECT_EQ(after(1000), 0);
    t.setEnabled(true);
    EXPECT_EQ(after(390), 3);
    t.setEnabled(false);
    t.setEnabled(true);
    EXPECT_EQ(after(90), 3);
    EXPECT_EQ(after(10), 4);
    s.advance(60);
    t.setInterval(100);
    EXPECT_EQ(after(90), 4);
    EXPECT_EQ(after(10), 5);
    t.setEnabled(false);
    EXPECT_EQ(after(1000), 5);
}

TEST(Scheduler, WaitUntilTakesExactlyTheTimeItWaitedAndTheWallClockFollows) {
    VirtualScheduler s;
    bool replied = false;
    s.post(300, [&] { replied = true; });
    EXPECT_TRUE(s.waitUntil([&] { return replied; }, 5.0));
    EXPECT_EQ(s.elapsedMs(), 300);
    EXPECT_FALSE(s.waitUntil([] { return false; }, 5.0));
    EXPECT_EQ(s.elapsedMs(), 5300);
    VirtualScheduler late(DateTime{2026, 12, 31, 23, 59, 59, 900});  // the wall clock follows
    late.advance(200);
    EXPECT_EQ(late.now(), (DateTime{2027, 1, 1, 0, 0, 0, 100}));
}
