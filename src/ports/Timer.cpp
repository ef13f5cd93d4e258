#include "ports/Scheduler.h"

namespace tlx {

Timer::Timer(Scheduler& scheduler, std::string name, int intervalMs, bool enabled)
    : scheduler_(scheduler), name_(std::move(name)), intervalMs_(intervalMs) {
    setEnabled(enabled);
}

Timer::~Timer() { scheduler_.disarm(this); }

void Timer::setEnabled(bool on) {
    if (on == enabled_) return;  // enabling an enabled timer keeps its running interval
    enabled_ = on;
    if (on && intervalMs_ > 0)
        scheduler_.arm(this, intervalMs_);
    else
        scheduler_.disarm(this);
}

void Timer::setInterval(int ms) {
    intervalMs_ = ms;
    if (!enabled_) return;
    if (ms > 0)
        scheduler_.arm(this, ms);  // a new interval starts afresh
    else
        scheduler_.disarm(this);
}

void Timer::fire() {
    if (!enabled_) return;
    // Re-arm first, so that a handler that disables the timer (one-shot) has the last word.
    scheduler_.arm(this, intervalMs_);
    if (onTick) onTick();
}

}  // namespace tlx
