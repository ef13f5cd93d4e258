// The cost of one scheduled callback while many others wait, on Qt's loop: the program's
// scheduler (one queue of its own, one Qt timer) beside the design it replaced, one Qt timer
// per callback (kept here only, for the comparison). A burst of key presses schedules a
// callback per keypad, so the cost per callback must not grow with the number pending.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <functional>
#include <memory>
#include <unordered_map>

#include "platform/qt/QtScheduler.h"
#include "platform/sim/VirtualScheduler.h"

namespace {

QCoreApplication& app() {
    static int argc = 1;
    static char name[] = "scheduler_bench";
    static char* argv[] = {name, nullptr};
    static auto* a = new QCoreApplication(argc, argv);
    return *a;
}

// The replaced design: every posted callback its own single-shot Qt timer, which Qt keeps in
// a list sorted by due time.
class TimerPerCallback {
public:
    ~TimerPerCallback() {
        for (auto& [id, t] : posts_) delete t;
    }
    std::uint64_t post(int delayMs, std::function<void()> fn) {
        const std::uint64_t id = ++next_;
        auto* q = new QTimer;
        q->setSingleShot(true);
        q->setTimerType(Qt::PreciseTimer);
        QObject::connect(q, &QTimer::timeout, [this, id, fn = std::move(fn)] {
            auto it = posts_.find(id);
            if (it == posts_.end()) return;
            it->second->deleteLater();
            posts_.erase(it);
            fn();
        });
        posts_[id] = q;
        q->start(delayMs);
        return id;
    }

private:
    std::unordered_map<std::uint64_t, QTimer*> posts_;
    std::uint64_t next_ = 0;
};

// range(0) callbacks wait a minute away (a burst's later key presses); each iteration posts
// 1,000 callbacks due in 1 ms (the presses' events) and runs the loop until they have run.
template <class S>
void postAmongPending(benchmark::State& state) {
    app();
    S s;
    for (int i = 0; i < state.range(0); ++i) s.post(60000 + i % 1000, [] {});
    constexpr int kBatch = 1000;
    std::int64_t done = 0;
    for (auto _ : state) {
        int fired = 0;
        for (int i = 0; i < kBatch; ++i) s.post(1, [&fired] { ++fired; });
        // The loop sleeps until the Qt timers wake it (a time-limited processEvents would spin).
        QEventLoop loop;
        for (int turns = 0; fired < kBatch && turns < 100000; ++turns)
            loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        done += fired;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    state.SetItemsProcessed(done);
    state.counters["pending"] = static_cast<double>(state.range(0));
}

void BM_QtScheduler_PostAmongPending(benchmark::State& state) { postAmongPending<tlx::QtScheduler>(state); }
void BM_TimerPerCallback_PostAmongPending(benchmark::State& state) { postAmongPending<TimerPerCallback>(state); }
BENCHMARK(BM_QtScheduler_PostAmongPending)->Arg(0)->Arg(4095)->Arg(40950)->MeasureProcessCPUTime();
BENCHMARK(BM_TimerPerCallback_PostAmongPending)->Arg(0)->Arg(4095)->Arg(40950)->MeasureProcessCPUTime();

// The virtual scheduler on the same work, without a loop: the queue alone.
void BM_VirtualScheduler_PostAmongPending(benchmark::State& state) {
    tlx::VirtualScheduler s;
    for (int i = 0; i < state.range(0); ++i) s.post(60000 + i % 1000, [] {});
    constexpr int kBatch = 1000;
    std::int64_t done = 0;
    for (auto _ : state) {
        int fired = 0;
        for (int i = 0; i < kBatch; ++i) s.post(0, [&fired] { ++fired; });
        s.runDue();
        done += fired;
    }
    state.SetItemsProcessed(done);
}
BENCHMARK(BM_VirtualScheduler_PostAmongPending)->Arg(0)->Arg(4095)->Arg(40950);

}  // namespace
