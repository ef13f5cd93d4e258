#pragma once
// The program's scheduler on Qt's one event loop. Its timers and posted callbacks wait in one
// queue of its own, and a single Qt timer is armed for the earliest of them, so a burst that
// schedules a callback per key press costs the same per callback however many are pending.
// Waits keep the loop turning, and timers fire inside them.
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <limits>

#include "ports/Scheduler.h"
#include "ports/TimerQueue.h"

namespace tlx {

class QtScheduler : public Scheduler {
public:
    QtScheduler();
    ~QtScheduler() override;

    DateTime now() const override;
    double monotonicSeconds() const override;
    bool waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) override;
    std::uint64_t post(int delayMs, std::function<void()> fn) override;
    void cancel(std::uint64_t id) override;
    void arm(Timer* timer, int delayMs) override;
    void disarm(Timer* timer) override;

    // Entries waiting, timers and callbacks together.
    std::size_t pending() const { return queue_.size(); }
    // At most this many entries run in one turn of the loop; the rest run on the next turn,
    // after the loop has looked at its sockets and other events.
    static constexpr int kMaxPerTurn = 1024;

private:
    std::int64_t nowNs() const { return clock_.nsecsElapsed(); }
    // Runs what is due now and was pending when the Qt timer fired.
    void dispatch();
    // Makes sure the Qt timer fires no later than the earliest entry is due.
    void wake();

    QElapsedTimer clock_;
    TimerQueue queue_;  // due times in nanoseconds of clock_
    QTimer wake_;
    std::int64_t wakeAt_ = 0;  // when wake_ fires, while it is active
    // The local time's offset from UTC, and the UTC time (ms) it was last asked for.
    mutable std::int64_t offsetMs_ = 0;
    mutable std::int64_t offsetFrom_ = std::numeric_limits<std::int64_t>::min() / 2;
};

}  // namespace tlx
