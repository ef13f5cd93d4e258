#pragma once
// The program's scheduler: Qt timers on the one event loop, and waits that keep the loop
// turning.
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <unordered_map>

#include "ports/Scheduler.h"

namespace tlx {

class QtScheduler : public Scheduler {
public:
    QtScheduler();
    ~QtScheduler() override;

    DateTime now() const override;
    double monotonicSeconds() const override;
    bool waitUntil(const std::function<bool()>& predicate, double timeoutSeconds) override;
    std::uint64_t post(int delayMs, std::function<void()> fn) override;
    void cancel(std::uint64_t id) override;
    void arm(Timer* timer, int delayMs) override;
    void disarm(Timer* timer) override;

private:
    QElapsedTimer clock_;
    std::unordered_map<Timer*, QTimer*> timers_;
    std::unordered_map<std::uint64_t, QTimer*> posts_;
    std::uint64_t nextId_ = 0;
};

}  // namespace tlx
