#pragma once
// The pending timers and one-off callbacks of a scheduler, earliest first. It is a binary heap
// whose entries know their place in it, so arming, re-arming, posting, disarming and cancelling
// cost O(log n) and finding the earliest entry O(1), however many are pending. Entries due at
// the same time come out in the order they were armed or posted. The virtual and the Qt
// scheduler both keep their entries here and differ only in the clock that says what is due.
#include <cstdint>
#include <functional>
#include <vector>

namespace tlx {

class Timer;

class TimerQueue {
public:
    // Time in the owner's unit (milliseconds of virtual time, nanoseconds of the real clock).
    using Tick = std::int64_t;

    TimerQueue() = default;
    ~TimerQueue();
    TimerQueue(const TimerQueue&) = delete;
    TimerQueue& operator=(const TimerQueue&) = delete;

    // A callback to run once at `due`. The id serves cancel() and is never 0 nor used again.
    std::uint64_t post(Tick due, std::function<void()> fn);
    // Takes a pending callback out. An id that has run or was cancelled is ignored, even when
    // its place has since been taken by another callback.
    bool cancel(std::uint64_t id);
    // Arms the timer for `due`; an armed timer moves, and counts as armed now among ties.
    void arm(Timer& timer, Tick due);
    void disarm(Timer& timer);
    bool armed(const Timer& timer) const;

    bool empty() const { return heap_.empty(); }
    std::size_t size() const { return heap_.size(); }
    // Due time of the earliest entry (only when not empty).
    Tick nextDue() const { return heap_.front().due; }
    // The stamp the next entry will carry: every entry armed or posted from now on has a
    // stamp at least this, so an owner can run only what was pending when it began.
    std::uint64_t stamp() const { return seq_; }

    // What is due, taken out of the queue and ready to run.
    struct Due {
        Tick due = 0;
        Timer* timer = nullptr;
        std::function<void()> fn;
        // Fires the timer (which arms itself again first) or calls the callback.
        void run();
    };
    // Takes out the earliest entry when it is due at or before `limit` and carries a stamp
    // below `before`; false when there is none.
    bool takeDue(Tick limit, std::uint64_t before, Due& out);

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFFu;
    struct Node {
        Tick due;
        std::uint64_t seq;
        std::uint32_t slot;
    };
    struct Slot {
        std::uint32_t pos = kNone;  // place in the heap, kNone while free
        std::uint32_t generation = 1;
        Timer* timer = nullptr;
        std::function<void()> fn;
    };
    static bool before(const Node& a, const Node& b) { return a.due != b.due ? a.due < b.due : a.seq < b.seq; }
    std::uint32_t allocate();
    void release(std::uint32_t slot);
    void place(std::size_t i, Node n);
    void siftUp(std::size_t i);
    void siftDown(std::size_t i);
    void removeAt(std::size_t i);
    static std::uint32_t& slotOf(Timer& timer);
    static std::uint32_t slotOf(const Timer& timer);

    std::vector<Node> heap_;
    std::vector<Slot> slots_;
    std::vector<std::uint32_t> free_;
    std::uint64_t seq_ = 0;
};

}  // namespace tlx
