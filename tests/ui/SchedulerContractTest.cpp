// The rules every scheduler keeps, run against both: the virtual one of the tests and the Qt
// one of the program (on a real loop, so its cases wait for conditions, never for a fixed
// time, and check order rather than timing).
#include <gtest/gtest.h>

#include <QDateTime>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/qt/QtScheduler.h"
#include "platform/sim/VirtualScheduler.h"
#include "support/QtTestApp.h"

using namespace tlx;

namespace {

struct OnVirtualTime {
    VirtualScheduler s;
    // Lets about `ms` of the scheduler's time pass.
    void run(int ms) { s.advance(ms); }
};

struct OnQtLoop {
    OnQtLoop() { tlx::test::qtApp(); }
    QtScheduler s;
    void run(int ms) { s.waitUntil([] { return false; }, ms / 1000.0); }
};

template <class Clock>
class SchedulerContract : public ::testing::Test {
protected:
    Clock clock;
    Scheduler& s() { return clock.s; }
    // Generous: only a broken scheduler takes this long.
    bool until(const std::function<bool()>& condition) { return s().waitUntil(condition, 10.0); }
    std::vector<std::string> order;
    std::function<void()> note(const std::string& what) {
        return [this, what] { order.push_back(what); };
    }
};

using Clocks = ::testing::Types<OnVirtualTime, OnQtLoop>;
class ClockNames {
public:
    template <class T>
    static std::string GetName(int) {
        return std::is_same_v<T, OnVirtualTime> ? "Virtual" : "Qt";
    }
};
TYPED_TEST_SUITE(SchedulerContract, Clocks, ClockNames);

}  // namespace

TYPED_TEST(SchedulerContract, EntriesDueTogetherFireInTheOrderArmed) {
    auto& s = this->s();
    Timer late(s, "late", 5);
    late.onTick = [&] {
        late.setEnabled(false);
        this->order.push_back("timer");
    };
    s.post(5, this->note("a5"));
    s.post(0, this->note("b0"));
    late.setEnabled(true);
    s.post(5, this->note("c5"));
    s.post(0, this->note("d0"));
    s.post(-3, this->note("e0"));  // a negative delay is no delay
    ASSERT_TRUE(this->until([&] { return this->order.size() == 6; }));
    EXPECT_EQ(this->order, (std::vector<std::string>{"b0", "d0", "e0", "a5", "timer", "c5"}));
}

TYPED_TEST(SchedulerContract, ATimerArmedAgainInItsOwnTickKeepsTicking) {
    auto& s = this->s();
    // A one-shot that enables itself again from its handler, and a periodic timer whose
    // handler changes its interval (which restarts it): both go on ticking.
    Timer again(s, "again", 2);
    int againTicks = 0;
    again.onTick = [&] {
        again.setEnabled(false);
        if (++againTicks < 3) again.setEnabled(true);
    };
    Timer stretching(s, "stretching", 2, true);
    int stretchingTicks = 0;
    stretching.onTick = [&] {
        stretching.setInterval(2 + ++stretchingTicks);
        if (stretchingTicks == 3) stretching.setEnabled(false);
    };
    again.setEnabled(true);
    ASSERT_TRUE(this->until([&] { return againTicks == 3 && stretchingTicks == 3; }))
        << againTicks << " and " << stretchingTicks << " ticks";
    EXPECT_FALSE(again.enabled());
    EXPECT_FALSE(stretching.enabled());
    this->clock.run(30);
    EXPECT_EQ(againTicks, 3);
    EXPECT_EQ(stretchingTicks, 3);
}

TYPED_TEST(SchedulerContract, CancellingAPostThatHasRunChangesNothing) {
    auto& s = this->s();
    bool first = false, second = false, third = false;
    const auto id1 = s.post(0, [&] { first = true; });
    ASSERT_TRUE(this->until([&] { return first; }));
    // The next post may take the place the first one had; the first's id must not reach it.
    const auto id2 = s.post(1, [&] { second = true; });
    EXPECT_NE(id1, id2);
    s.cancel(id1);
    s.cancel(id1);
    ASSERT_TRUE(this->until([&] { return second; }));
    s.cancel(id2);
    s.cancel(0);
    s.cancel(~0ULL);
    s.post(1, [&] { third = true; });
    s.cancel(id2);
    EXPECT_TRUE(this->until([&] { return third; }));
}

TYPED_TEST(SchedulerContract, WhatAHandlerCancelsOrDestroysNeverFires) {
    auto& s = this->s();
    auto victim = std::make_unique<Timer>(s, "victim", 1);
    victim->onTick = this->note("victim");
    bool killed = false;
    std::uint64_t doomed = 0;
    // Armed first, so it runs first among entries due together.
    const auto killer = s.post(1, [&] {
        victim.reset();
        s.cancel(doomed);
        killed = true;
    });
    (void)killer;
    victim->setEnabled(true);
    doomed = s.post(1, this->note("post"));
    s.post(2, this->note("after"));
    ASSERT_TRUE(this->until([&] { return killed && !this->order.empty(); }));
    this->clock.run(20);
    EXPECT_EQ(this->order, (std::vector<std::string>{"after"}));
}

TYPED_TEST(SchedulerContract, AWaitInsideAHandlerLetsOtherEntriesFire) {
    auto& s = this->s();
    // Armed before the handler runs, and nothing arms anything during it: the wait itself
    // must see to it that this falls due.
    bool laterFired = false;
    s.post(15, [&] { laterFired = true; });
    Timer periodic(s, "periodic", 3, true);
    int periodicTicks = 0;
    periodic.onTick = [&] { ++periodicTicks; };
    bool waited = false, outerDone = false;
    s.post(1, [&] {
        waited = s.waitUntil([&] { return laterFired; }, 10.0);
        outerDone = true;
    });
    ASSERT_TRUE(this->until([&] { return outerDone; }));
    EXPECT_TRUE(waited);
    EXPECT_GE(periodicTicks, 1);
    const double before = s.monotonicSeconds();
    EXPECT_FALSE(s.waitUntil([] { return false; }, 0.05));
    EXPECT_GE(s.monotonicSeconds() - before, 0.05);
}

TYPED_TEST(SchedulerContract, ManyPendingEntriesFireOnceEachNeverEarlyAndTiesInOrder) {
    auto& s = this->s();
    constexpr int kCount = 20000;
    constexpr int kDelays = 40;
    struct Record {
        int delay;
        double dueSeconds;
    };
    std::vector<Record> posted(kCount);
    std::vector<int> firings(kCount, 0);
    std::map<int, std::vector<int>> byDelay;  // the order each delay's posts fired in
    int early = 0;
    int fired = 0;
    for (int i = 0; i < kCount; ++i) {
        const int delay = (i * 7919) % kDelays;
        posted[i] = {delay, s.monotonicSeconds() + delay / 1000.0};
        s.post(delay, [&, i] {
            ++firings[i];
            ++fired;
            // The clock was read before the post, so the entry is due no earlier than this.
            if (s.monotonicSeconds() + 1e-9 < posted[i].dueSeconds) ++early;
            byDelay[posted[i].delay].push_back(i);
        });
    }
    ASSERT_TRUE(this->until([&] { return fired == kCount; })) << fired;
    this->clock.run(5);
    EXPECT_EQ(std::count(firings.begin(), firings.end(), 1), kCount);
    EXPECT_EQ(early, 0);
    for (const auto& [delay, indices] : byDelay)
        EXPECT_TRUE(std::is_sorted(indices.begin(), indices.end())) << "delay " << delay;
}

TYPED_TEST(SchedulerContract, PendingCallbacksAreReleasedWithTheScheduler) {
    auto held = std::make_shared<int>(7);
    {
        TypeParam other;
        other.s.post(1000, [held] {});
        Timer t(other.s, "t", 1000, true);
        EXPECT_EQ(held.use_count(), 2);
    }
    EXPECT_EQ(held.use_count(), 1);
}

// The program's clock reads the time zone once a second, not on every call: the local time
// it gives must still be the system's, offset and all.
TEST(QtScheduler, LocalTimeCarriesTheZonesOffset) {
    tlx::test::qtApp();
    const char* old = std::getenv("TZ");
    const std::string saved = old ? old : "";
    for (const char* zone : {"UTC0", "XST-05:30", "YST+08"}) {
        setenv("TZ", zone, 1);
        tzset();
        QtScheduler s;
        const DateTime system = [] {
            const QDateTime n = QDateTime::currentDateTime();
            return DateTime{n.date().year(), n.date().month(), n.date().day(),  n.time().hour(),
                            n.time().minute(),  n.time().second(), n.time().msec()};
        }();
        for (int call = 0; call < 3; ++call)  // the first call asks the zone; the later ones reuse it
            EXPECT_NEAR(static_cast<double>(s.now().toMillis() - system.toMillis()), 0.0, 1000.0) << zone;
    }
    if (old)
        setenv("TZ", saved.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

// A wait lets the loop sleep while nothing happens: the controller waits for base replies and
// scans during a show, beside programs that need the processor.
TEST(QtScheduler, AWaitSleepsWhileNothingHappens) {
    tlx::test::qtApp();
    QtScheduler s;
    Timer idle(s, "idle", 100000, true);  // something pending, far away
    timespec before{}, after{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
    EXPECT_FALSE(s.waitUntil([] { return false; }, 0.2));
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
    const double cpu = static_cast<double>(after.tv_sec - before.tv_sec) + (after.tv_nsec - before.tv_nsec) / 1e9;
    EXPECT_LT(cpu, 0.02) << "a 0.2 s wait used " << cpu << " s of processor time";
}
