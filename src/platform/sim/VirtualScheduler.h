#pragma once
// Virtual time for tests and simulations: nothing happens until time is advanced, and
// timers and posted callbacks then fire in due order (ties in the order they were armed).
#include <cstdint>

#include "ports/Scheduler.h"
#include "ports/TimerQueue.h"

namespace tlx {

class VirtualScheduler : public Scheduler {
public:
    explicit VirtualScheduler(DateTime start = DateTime{2026, 11, 22, 9, 0, 0, 0});

    DateTime now() const override;
    double monotonicSeconds() const override { return static_cast<double>(nowMs_) / 1000.0; }
    bool waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) override;
    std::uint64_t post(int delayMs, std::function<void()> fn) override;
    void cancel(std::uint64_t id) override;
    void arm(Timer* timer, int delayMs) override;
    void disarm(Timer* timer) override;

    // Advances virtual time by ms, firing everything that falls due on the way.
    void advance(std::int64_t ms);
    void advanceSeconds(double s) { advance(static_cast<std::int64_t>(s * 1000.0 + 0.5)); }
    // Fires everything due now (zero-delay posts).
    void runDue() { advance(0); }
    // Moves the wall clock (date changes) without firing anything.
    void setWallClock(DateTime t);
    std::int64_t elapsedMs() const { return nowMs_; }
    bool idle() const { return queue_.empty(); }
    std::size_t pending() const { return queue_.size(); }
    // Time of the next due entry, or -1.
    std::int64_t nextDue() const;

private:
    bool fireNext(std::int64_t limit);

    std::int64_t startMillis_;
    std::int64_t nowMs_ = 0;
    TimerQueue queue_;  // due times in milliseconds of virtual time
};

}  // namespace tlx
