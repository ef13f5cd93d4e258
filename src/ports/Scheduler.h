#pragma once
// The one thread's clock and timers. Logic never reads a clock or sleeps:
// it asks the scheduler, which is virtual in tests and Qt's loop in the program.
#include <cstdint>
#include <functional>
#include <string>

#include "ports/Clock.h"

namespace tlx {

class Scheduler;

// A named timer with Enabled and Interval. While enabled it ticks once per interval.
// Enabling a disabled timer starts its interval afresh; enabling an enabled one changes
// nothing; changing the interval of an enabled timer restarts it. A one-shot timer is one
// whose handler disables it first.
class Timer {
public:
    Timer(Scheduler& scheduler, std::string name, int intervalMs, bool enabled = false);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    const std::string& name() const { return name_; }
    bool enabled() const { return enabled_; }
    void setEnabled(bool on);
    int interval() const { return intervalMs_; }
    void setInterval(int ms);

    std::function<void()> onTick;

    // Called by the scheduler when the interval has run out.
    void fire();

private:
    friend class TimerQueue;
    Scheduler& scheduler_;
    std::string name_;
    int intervalMs_;
    bool enabled_ = false;
    // The timer's place among its scheduler's pending entries, kept by the queue itself so
    // that arming and disarming need no look-up.
    std::uint32_t queueSlot_ = 0xFFFFFFFFu;
};

class Scheduler {
public:
    virtual ~Scheduler() = default;

    // Local date and time of day.
    virtual DateTime now() const = 0;
    // A steady high-resolution counter in seconds (only differences mean anything).
    virtual double monotonicSeconds() const = 0;

    // Lets other events run until the predicate holds or the timeout (seconds) passes.
    // Returns whether the predicate held.
    virtual bool waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) = 0;

    // Runs fn once after delayMs on the loop. Returns an id for cancel().
    virtual std::uint64_t post(int delayMs, std::function<void()> fn) = 0;
    virtual void cancel(std::uint64_t id) = 0;

    // Timer back end: arm for one interval from now, or disarm.
    virtual void arm(Timer* timer, int delayMs) = 0;
    virtual void disarm(Timer* timer) = 0;
};

}  // namespace tlx
