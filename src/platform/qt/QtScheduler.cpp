#include "platform/qt/QtScheduler.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEventLoop>

namespace tlx {

namespace {
constexpr std::int64_t kNsPerMs = 1000000;
}

QtScheduler::QtScheduler() {
    clock_.start();
    wake_.setSingleShot(true);
    // The program's intervals are short and exact (10 to 50 ms one-shots): no coarse slack.
    wake_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&wake_, &QTimer::timeout, [this] { dispatch(); });
}

QtScheduler::~QtScheduler() { wake_.stop(); }

DateTime QtScheduler::now() const {
    // Asking the system for local time looks at its time-zone files on every call, and the
    // vote path stamps every key press. The offset from UTC is asked for at most once a
    // second (so a change of summer time shows within a second); the rest is arithmetic.
    const qint64 utc = QDateTime::currentMSecsSinceEpoch();
    if (utc < offsetFrom_ || utc >= offsetFrom_ + 1000) {
        offsetMs_ = static_cast<std::int64_t>(QDateTime::fromMSecsSinceEpoch(utc).offsetFromUtc()) * 1000;
        offsetFrom_ = utc;
    }
    return DateTime::fromMillis(utc + offsetMs_);
}

double QtScheduler::monotonicSeconds() const { return static_cast<double>(nowNs()) / 1e9; }

bool QtScheduler::waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) {
    QElapsedTimer t;
    t.start();
    const qint64 limit = static_cast<qint64>(timeoutSeconds * 1000.0);
    // The loop sleeps until something happens: an event, a due entry, or this tick, which
    // bounds each sleep so that the limit is kept. (QCoreApplication::processEvents with a
    // time limit never sleeps: it would spin a core for the whole wait.)
    QEventLoop loop;
    QTimer tick;
    tick.setSingleShot(true);
    while (!predicate()) {
        const qint64 left = limit - t.elapsed();
        if (left <= 0) return predicate();
        // Called from a handler the Qt timer has just run, nothing may have armed it again:
        // entries that fall due during the wait must still fire.
        wake();
        tick.start(static_cast<int>(std::min<qint64>(left, 20)));
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

std::uint64_t QtScheduler::post(int delayMs, std::function<void()> fn) {
    const std::uint64_t id = queue_.post(nowNs() + (delayMs < 0 ? 0 : delayMs) * kNsPerMs, std::move(fn));
    wake();
    return id;
}

// Taking an entry out never needs the Qt timer moved: if it fires for nothing, dispatch()
// finds nothing due and arms it for what is.
void QtScheduler::cancel(std::uint64_t id) { queue_.cancel(id); }

void QtScheduler::arm(Timer* timer, int delayMs) {
    queue_.arm(*timer, nowNs() + static_cast<std::int64_t>(delayMs < 0 ? 0 : delayMs) * kNsPerMs);
    wake();
}

void QtScheduler::disarm(Timer* timer) { queue_.disarm(*timer); }

void QtScheduler::wake() {
    if (queue_.empty()) return;
    const std::int64_t now = nowNs();
    const std::int64_t due = queue_.nextDue();
    // Whole milliseconds, rounded up, so that the Qt timer never fires before the entry is due.
    const std::int64_t ms = due <= now ? 0 : (due - now + kNsPerMs - 1) / kNsPerMs;
    const std::int64_t at = now + ms * kNsPerMs;
    if (wake_.isActive() && wakeAt_ <= at) return;  // already armed early enough
    wake_.start(static_cast<int>(std::min<std::int64_t>(ms, 24LL * 3600 * 1000)));
    wakeAt_ = at;
}

void QtScheduler::dispatch() {
    // Whatever a handler does, the Qt timer is armed again for what is left.
    struct Rearm {
        QtScheduler& s;
        ~Rearm() { s.wake(); }
    } rearm{*this};
    const std::int64_t now = nowNs();
    // Entries armed while these run (a timer's next interval, a zero-delay post) wait for a
    // later turn, so a handler that posts again cannot keep the loop from its other events.
    const std::uint64_t pendingBefore = queue_.stamp();
    TimerQueue::Due due;
    for (int n = 0; n < kMaxPerTurn && queue_.takeDue(now, pendingBefore, due); ++n) due.run();
}

}  // namespace tlx
