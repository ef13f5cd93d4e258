#pragma once
// A private session bus per test, bus clients on connections of their own, and programs run
// against it, all with time limits and nothing left running afterwards.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcessEnvironment>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/TestWorld.h"

namespace tlx {
class DbusSignalTap;
}

namespace tlx::test {

QCoreApplication& busApp();

// Lets the Qt loop turn until the condition holds or the limit passes.
bool waitFor(const std::function<bool()>& condition, double seconds = 20.0);

// dbus-daemon of our own, stopped with the object. Activated services inherit `env`.
class PrivateBus {
public:
    explicit PrivateBus(const QString& serviceDir = {},
                        const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment());
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool ok() const { return !address_.isEmpty(); }
    const QString& address() const { return address_; }
    std::string problem() const { return problem_; }
    // A connection of its own, closed with the bus unless closed before.
    QDBusConnection connect(const QString& name);
    void close(const QString& name);
    // The environment of a program that should find this bus as its session bus.
    QProcessEnvironment programEnvironment(QProcessEnvironment env = QProcessEnvironment::systemEnvironment()) const;

private:
    TempDir dir_;
    struct Daemon;
    std::unique_ptr<Daemon> daemon_;
    QString address_;
    std::string problem_;
    QStringList names_;
};

// Calls a method and waits for the answer (the server may be in this very process).
QDBusMessage callOn(const QDBusConnection& conn, const QString& path, const QString& iface, const QString& method,
                    const QVariantList& args = {}, double seconds = 20.0);

// A client of the automation class on a connection of its own, hearing its signals.
class BusClient {
public:
    BusClient(PrivateBus& bus, const QString& name);
    ~BusClient();
    QDBusMessage call(const QString& method, const QVariantList& args = {});
    // Sends a call without waiting for its answer.
    void post(const QString& method, const QVariantList& args = {});
    // Closes the connection: the client's unique name leaves the bus.
    void leave();
    QString uniqueName() const { return unique_; }
    std::vector<std::string> heard;  // signals, one line each
    bool heardLine(const std::string& line) const;

private:
    PrivateBus& bus_;
    QString name_, unique_;
    std::optional<QDBusConnection> conn_;
    std::unique_ptr<DbusSignalTap> tap_;
};

struct ProgramRun {
    bool finished = false;
    int exitCode = -1;
    std::string out, err;
};

// Runs a program to its end, the Qt loop turning meanwhile (it may call back into us).
ProgramRun runProgram(const QString& program, const QStringList& args, const QProcessEnvironment& env,
                      double seconds = 60.0);

}  // namespace tlx::test
