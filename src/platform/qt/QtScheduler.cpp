#include "platform/qt/QtScheduler.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QEventLoop>

namespace tlx {

QtScheduler::QtScheduler() { clock_.start(); }

QtScheduler::~QtScheduler() {
    for (auto& [t, q] : timers_) delete q;
    for (auto& [id, q] : posts_) delete q;
}

DateTime QtScheduler::now() const {
    const QDateTime n = QDateTime::currentDateTime();
    const QDate d = n.date();
    const QTime t = n.time();
    return DateTime{d.year(), d.month(), d.day(), t.hour(), t.minute(), t.second(), t.msec()};
}

double QtScheduler::monotonicSeconds() const { return static_cast<double>(clock_.nsecsElapsed()) / 1e9; }

bool QtScheduler::waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) {
    QElapsedTimer t;
    t.start();
    const qint64 limit = static_cast<qint64>(timeoutSeconds * 1000.0);
    while (!predicate()) {
        const qint64 left = limit - t.elapsed();
        if (left <= 0) return predicate();
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents,
                                        static_cast<int>(std::min<qint64>(left, 20)));
    }
    return true;
}

std::uint64_t QtScheduler::post(int delayMs, std::function<void()> fn) {
    const std::uint64_t id = ++nextId_;
    auto* q = new QTimer;
    q->setSingleShot(true);
    q->setTimerType(Qt::PreciseTimer);
    QObject::connect(q, &QTimer::timeout, [this, id, fn = std::move(fn)] {
        auto it = posts_.find(id);
        if (it == posts_.end()) return;
        QTimer* self = it->second;
        posts_.erase(it);
        self->deleteLater();
        fn();
    });
    posts_[id] = q;
    q->start(delayMs < 0 ? 0 : delayMs);
    return id;
}

void QtScheduler::cancel(std::uint64_t id) {
    auto it = posts_.find(id);
    if (it == posts_.end()) return;
    it->second->stop();
    it->second->deleteLater();
    posts_.erase(it);
}

void QtScheduler::arm(Timer* timer, int delayMs) {
    QTimer*& q = timers_[timer];
    if (!q) {
        q = new QTimer;
        q->setSingleShot(true);
        // The program's intervals are short and exact (10 to 50 ms one-shots): no coarse slack.
        q->setTimerType(Qt::PreciseTimer);
        QObject::connect(q, &QTimer::timeout, [timer] { timer->fire(); });
    }
    q->start(delayMs);
}

void QtScheduler::disarm(Timer* timer) {
    auto it = timers_.find(timer);
    if (it == timers_.end()) return;
    it->second->stop();
    // The Timer is going or stopping; its QTimer may be inside its own timeout right now.
    it->second->deleteLater();
    timers_.erase(it);
}

}  // namespace tlx
