#include "ports/TimerQueue.h"

#include "ports/Scheduler.h"

namespace tlx {

TimerQueue::~TimerQueue() {
    // Timers that outlive their scheduler must not point into a queue that is gone.
    for (auto& s : slots_)
        if (s.pos != kNone && s.timer) slotOf(*s.timer) = kNone;
}

std::uint32_t& TimerQueue::slotOf(Timer& timer) { return timer.queueSlot_; }
std::uint32_t TimerQueue::slotOf(const Timer& timer) { return timer.queueSlot_; }

std::uint32_t TimerQueue::allocate() {
    if (!free_.empty()) {
        const std::uint32_t s = free_.back();
        free_.pop_back();
        return s;
    }
    slots_.emplace_back();
    return static_cast<std::uint32_t>(slots_.size() - 1);
}

void TimerQueue::release(std::uint32_t slot) {
    Slot& s = slots_[slot];
    s.pos = kNone;
    s.timer = nullptr;
    s.fn = nullptr;
    // A new generation: ids handed out for this slot before no longer match it.
    ++s.generation;
    free_.push_back(slot);
}

void TimerQueue::place(std::size_t i, Node n) {
    heap_[i] = n;
    slots_[n.slot].pos = static_cast<std::uint32_t>(i);
}

void TimerQueue::siftUp(std::size_t i) {
    const Node n = heap_[i];
    while (i > 0) {
        const std::size_t parent = (i - 1) / 2;
        if (!before(n, heap_[parent])) break;
        place(i, heap_[parent]);
        i = parent;
    }
    place(i, n);
}

void TimerQueue::siftDown(std::size_t i) {
    const Node n = heap_[i];
    const std::size_t count = heap_.size();
    while (true) {
        std::size_t child = 2 * i + 1;
        if (child >= count) break;
        if (child + 1 < count && before(heap_[child + 1], heap_[child])) ++child;
        if (!before(heap_[child], n)) break;
        place(i, heap_[child]);
        i = child;
    }
    place(i, n);
}

void TimerQueue::removeAt(std::size_t i) {
    const std::size_t last = heap_.size() - 1;
    if (i != last) {
        place(i, heap_[last]);
        heap_.pop_back();
        // The moved entry may belong above or below its new place.
        if (i > 0 && before(heap_[i], heap_[(i - 1) / 2]))
            siftUp(i);
        else
            siftDown(i);
    } else {
        heap_.pop_back();
    }
}

std::uint64_t TimerQueue::post(Tick due, std::function<void()> fn) {
    const std::uint32_t slot = allocate();
    Slot& s = slots_[slot];
    s.fn = std::move(fn);
    heap_.push_back(Node{due, seq_++, slot});
    siftUp(heap_.size() - 1);
    return (static_cast<std::uint64_t>(s.generation) << 32) | slot;
}

bool TimerQueue::cancel(std::uint64_t id) {
    const auto slot = static_cast<std::uint32_t>(id & 0xFFFFFFFFu);
    const auto generation = static_cast<std::uint32_t>(id >> 32);
    if (slot >= slots_.size()) return false;
    Slot& s = slots_[slot];
    if (s.pos == kNone || s.generation != generation || s.timer) return false;
    removeAt(s.pos);
    release(slot);
    return true;
}

void TimerQueue::arm(Timer& timer, Tick due) {
    std::uint32_t& mine = slotOf(timer);
    if (mine != kNone) {
        // Already pending: move it in place.
        const std::size_t i = slots_[mine].pos;
        Node& n = heap_[i];
        const bool earlier = due < n.due;
        n.due = due;
        n.seq = seq_++;
        if (earlier)
            siftUp(i);
        else
            siftDown(i);
        return;
    }
    const std::uint32_t slot = allocate();
    slots_[slot].timer = &timer;
    mine = slot;
    heap_.push_back(Node{due, seq_++, slot});
    siftUp(heap_.size() - 1);
}

void TimerQueue::disarm(Timer& timer) {
    std::uint32_t& mine = slotOf(timer);
    if (mine == kNone) return;
    const std::uint32_t slot = mine;
    mine = kNone;
    removeAt(slots_[slot].pos);
    release(slot);
}

bool TimerQueue::armed(const Timer& timer) const { return slotOf(timer) != kNone; }

bool TimerQueue::takeDue(Tick limit, std::uint64_t stampLimit, Due& out) {
    if (heap_.empty()) return false;
    const Node top = heap_.front();
    if (top.due > limit || top.seq >= stampLimit) return false;
    Slot& s = slots_[top.slot];
    out.due = top.due;
    out.timer = s.timer;
    out.fn = std::move(s.fn);
    if (out.timer) slotOf(*out.timer) = kNone;
    removeAt(0);
    release(top.slot);
    return true;
}

void TimerQueue::Due::run() {
    if (timer) {
        Timer* t = timer;
        timer = nullptr;
        t->fire();
    } else if (fn) {
        auto f = std::move(fn);
        fn = nullptr;
        f();
    }
}

}  // namespace tlx
