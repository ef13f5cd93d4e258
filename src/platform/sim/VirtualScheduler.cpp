#include "platform/sim/VirtualScheduler.h"

namespace tlx {

VirtualScheduler::VirtualScheduler(DateTime start) : startMillis_(start.toMillis()) {}

DateTime VirtualScheduler::now() const { return DateTime::fromMillis(startMillis_ + nowMs_); }

void VirtualScheduler::setWallClock(DateTime t) { startMillis_ = t.toMillis() - nowMs_; }

std::uint64_t VirtualScheduler::post(int delayMs, std::function<void()> fn) {
    const std::uint64_t id = ++seq_;
    Key k{nowMs_ + (delayMs < 0 ? 0 : delayMs), id};
    Entry e;
    e.fn = std::move(fn);
    e.postId = id;
    queue_.emplace(k, std::move(e));
    posts_[id] = k;
    return id;
}

void VirtualScheduler::cancel(std::uint64_t id) {
    auto it = posts_.find(id);
    if (it == posts_.end()) return;
    queue_.erase(it->second);
    posts_.erase(it);
}

void VirtualScheduler::arm(Timer* timer, int delayMs) {
    disarm(timer);
    Key k{nowMs_ + delayMs, ++seq_};
    Entry e;
    e.timer = timer;
    queue_.emplace(k, std::move(e));
    timers_[timer] = k;
}

void VirtualScheduler::disarm(Timer* timer) {
    auto it = timers_.find(timer);
    if (it == timers_.end()) return;
    queue_.erase(it->second);
    timers_.erase(it);
}

std::int64_t VirtualScheduler::nextDue() const {
    return queue_.empty() ? -1 : queue_.begin()->first.due;
}

bool VirtualScheduler::fireNext(std::int64_t limit) {
    if (queue_.empty()) return false;
    auto it = queue_.begin();
    if (it->first.due > limit) return false;
    const Key k = it->first;
    Entry e = std::move(it->second);
    queue_.erase(it);
    if (k.due > nowMs_) nowMs_ = k.due;
    if (e.timer) {
        timers_.erase(e.timer);
        e.timer->fire();
    } else {
        posts_.erase(e.postId);
        if (e.fn) e.fn();
    }
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
