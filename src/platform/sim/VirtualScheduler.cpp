#include "platform/sim/VirtualScheduler.h"

#include <limits>

namespace tlx {

VirtualScheduler::VirtualScheduler(DateTime start) : startMillis_(start.toMillis()) {}

DateTime VirtualScheduler::now() const { return DateTime::fromMillis(startMillis_ + nowMs_); }

void VirtualScheduler::setWallClock(DateTime t) { startMillis_ = t.toMillis() - nowMs_; }

std::uint64_t VirtualScheduler::post(int delayMs, std::function<void()> fn) {
    return queue_.post(nowMs_ + (delayMs < 0 ? 0 : delayMs), std::move(fn));
}

void VirtualScheduler::cancel(std::uint64_t id) { queue_.cancel(id); }

void VirtualScheduler::arm(Timer* timer, int delayMs) { queue_.arm(*timer, nowMs_ + delayMs); }

void VirtualScheduler::disarm(Timer* timer) { queue_.disarm(*timer); }

std::int64_t VirtualScheduler::nextDue() const { return queue_.empty() ? -1 : queue_.nextDue(); }

bool VirtualScheduler::fireNext(std::int64_t limit) {
    // Everything falls due in its turn, including what the handlers arm on the way.
    TimerQueue::Due due;
    if (!queue_.takeDue(limit, std::numeric_limits<std::uint64_t>::max(), due)) return false;
    if (due.due > nowMs_) nowMs_ = due.due;
    due.run();
    return true;
}

void VirtualScheduler::advance(std::int64_t ms) {
    const std::int64_t target = nowMs_ + (ms < 0 ? 0 : ms);
    while (fireNext(target)) {
    }
    if (nowMs_ < target) nowMs_ = target;
}

bool VirtualScheduler::waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) {
    const std::int64_t deadline = nowMs_ + static_cast<std::int64_t>(timeoutSeconds * 1000.0 + 0.5);
    while (true) {
        if (predicate()) return true;
        if (!fireNext(deadline)) break;
    }
    if (nowMs_ < deadline) nowMs_ = deadline;
    return predicate();
}

}  // namespace tlx
