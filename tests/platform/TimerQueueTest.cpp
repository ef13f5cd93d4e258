// The queue both schedulers keep their entries in, against a plain ordered model under long
// random runs of arming, moving, disarming, posting, cancelling and taking what is due.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "platform/sim/VirtualScheduler.h"
#include "ports/TimerQueue.h"

using namespace tlx;

namespace {

constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

// What should come out, and in which order: (due, order armed) -> entry name.
struct Model {
    std::map<std::pair<std::int64_t, std::uint64_t>, int> entries;
    std::map<int, std::pair<std::int64_t, std::uint64_t>> where;
    std::uint64_t seq = 0;
    void put(int name, std::int64_t due) {
        drop(name);
        const auto key = std::make_pair(due, seq++);
        entries[key] = name;
        where[name] = key;
    }
    bool drop(int name) {
        auto it = where.find(name);
        if (it == where.end()) return false;
        entries.erase(it->second);
        where.erase(it);
        return true;
    }
};

}  // namespace

TEST(TimerQueue, RandomRunsAgreeWithAnOrderedModel) {
    VirtualScheduler owner;  // only for the timers' sake; the queue is driven directly
    std::mt19937 rng(12);
    for (int run = 0; run < 20; ++run) {
        Model m;
        constexpr int kTimers = 40;
        std::vector<std::unique_ptr<Timer>> timers;
        for (int i = 0; i < kTimers; ++i) timers.push_back(std::make_unique<Timer>(owner, "t", 1));
        // Goes before the timers do, and lets go of those still armed in it.
        TimerQueue q;
        std::map<int, std::uint64_t> postIds;  // live posts: name -> id
        std::vector<std::uint64_t> spentIds;    // posts that ran or were cancelled
        int nextPost = 1000;
        std::int64_t now = 0;
        std::vector<int> ran;
        for (int step = 0; step < 3000; ++step) {
            const int op = static_cast<int>(rng() % 10);
            const std::int64_t due = now + static_cast<std::int64_t>(rng() % 50);
            if (op < 3) {  // arm or move a timer
                const int t = static_cast<int>(rng() % kTimers);
                q.arm(*timers[t], due);
                m.put(t, due);
            } else if (op < 4) {  // disarm
                const int t = static_cast<int>(rng() % kTimers);
                q.disarm(*timers[t]);
                m.drop(t);
            } else if (op < 6) {  // post
                const int name = nextPost++;
                postIds[name] = q.post(due, [&ran, name] { ran.push_back(name); });
                m.put(name, due);
            } else if (op < 7 && !postIds.empty()) {  // cancel a live post
                auto it = std::next(postIds.begin(), static_cast<long>(rng() % postIds.size()));
                EXPECT_TRUE(q.cancel(it->second));
                m.drop(it->first);
                spentIds.push_back(it->second);
                postIds.erase(it);
            } else if (op < 8 && !spentIds.empty()) {  // cancel an old id: nothing happens
                EXPECT_FALSE(q.cancel(spentIds[rng() % spentIds.size()]));
            } else {  // time passes: take what is due
                now += static_cast<std::int64_t>(rng() % 20);
                TimerQueue::Due d;
                while (q.takeDue(now, kAll, d)) {
                    ASSERT_FALSE(m.entries.empty());
                    const auto first = m.entries.begin();
                    EXPECT_EQ(d.due, first->first.first);
                    const int name = first->second;
                    if (name < kTimers) {
                        EXPECT_EQ(d.timer, timers[name].get());
                        EXPECT_FALSE(q.armed(*timers[name]));
                    } else {
                        d.run();
                        ASSERT_FALSE(ran.empty());
                        EXPECT_EQ(ran.back(), name);
                        spentIds.push_back(postIds[name]);
                        postIds.erase(name);
                    }
                    m.drop(name);
                }
                if (!m.entries.empty()) {
                    EXPECT_GT(m.entries.begin()->first.first, now);
                }
            }
            ASSERT_EQ(q.size(), m.entries.size()) << "step " << step;
            if (!q.empty()) {
                ASSERT_EQ(q.nextDue(), m.entries.begin()->first.first);
            }
        }
    }
}

TEST(TimerQueue, AnOwnerCanTakeOnlyWhatWasPendingWhenItBegan) {
    TimerQueue q;
    std::vector<int> ran;
    q.post(5, [&] { ran.push_back(1); });
    q.post(5, [&] { ran.push_back(2); });
    const auto stamp = q.stamp();
    q.post(5, [&] { ran.push_back(3); });  // armed while the first two run
    TimerQueue::Due d;
    while (q.takeDue(10, stamp, d)) d.run();
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
    EXPECT_FALSE(q.takeDue(4, kAll, d));
    EXPECT_TRUE(q.takeDue(10, kAll, d));
    d.run();
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(q.empty());
}
