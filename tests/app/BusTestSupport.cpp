#include "app/BusTestSupport.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusReply>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <signal.h>
#include <sys/prctl.h>

#include "platform/dbus/DbusNames.h"
#include "platform/dbus/DbusSignalTap.h"

namespace tlx::test {

void dieWithParent(QProcess& p) {
    p.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

QProcessEnvironment folderEnvironment(const TestWorld& folders, QProcessEnvironment env) {
    env.insert(QStringLiteral("APPDATA"), QString::fromStdString(folders.appData().string()));
    env.insert(QStringLiteral("PROGRAMDATA"), QString::fromStdString(folders.programData().string()));
    env.insert(QStringLiteral("TEMP"), QString::fromStdString(folders.temp().string()));
    return env;
}

bool nameOwned(const QDBusConnection& c) {
    const QDBusReply<bool> r = c.interface()->isServiceRegistered(QLatin1String(bus::kService));
    return r.isValid() && r.value();
}

QCoreApplication& busApp() {
    static int argc = 1;
    static char name[] = "tests_app";
    static char* argv[] = {name, nullptr};
    if (!QCoreApplication::instance()) new QCoreApplication(argc, argv);  // lives to the end
    return *QCoreApplication::instance();
}

bool waitFor(const std::function<bool()>& condition, double seconds) {
    busApp();
    QElapsedTimer t;
    t.start();
    const qint64 limit = static_cast<qint64>(seconds * 1000.0);
    while (!condition()) {
        const qint64 left = limit - t.elapsed();
        if (left <= 0) return condition();
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents,
                                        static_cast<int>(std::min<qint64>(left, 20)));
    }
    return true;
}

PrivateBus::PrivateBus(const QString& serviceDir, const QProcessEnvironment& env) {
    busApp();
    const auto config = dir_ / "bus.conf";
    writeFile(config,
              "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
              " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
              "<busconfig>\n"
              "  <type>session</type>\n"
              "  <listen>unix:dir=" + dir_.path().string() + "</listen>\n"
              "  <auth>EXTERNAL</auth>\n" +
                  (serviceDir.isEmpty() ? std::string() : "  <servicedir>" + serviceDir.toStdString() + "</servicedir>\n") +
                  "  <policy context=\"default\">\n"
                  "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                  "    <allow eavesdrop=\"true\"/>\n"
                  "    <allow own=\"*\"/>\n"
                  "  </policy>\n"
                  "</busconfig>\n");
    QProcess& p = daemon_;
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::SeparateChannels);
    dieWithParent(p);
    p.start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--config-file=") + QString::fromStdString(config.string()), QStringLiteral("--print-address"),
             QStringLiteral("--nofork")});
    if (!p.waitForStarted(10000)) {
        problem_ = "dbus-daemon did not start: " + p.errorString().toStdString();
        return;
    }
    QDeadlineTimer deadline(10000);
    QByteArray line;
    while (!line.contains('\n') && !deadline.hasExpired()) {
        if (p.waitForReadyRead(static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1))))
            line += p.readAllStandardOutput();
        if (p.state() == QProcess::NotRunning) break;
    }
    if (!line.contains('\n')) {
        problem_ = "dbus-daemon gave no address: " + p.readAllStandardError().toStdString();
        return;
    }
    address_ = QString::fromUtf8(line.left(line.indexOf('\n')).trimmed());
}

PrivateBus::~PrivateBus() {
    for (const QString& n : names_) QDBusConnection::disconnectFromBus(n);
    if (daemon_.state() == QProcess::NotRunning) return;
    daemon_.terminate();
    if (daemon_.waitForFinished(5000)) return;
    daemon_.kill();
    daemon_.waitForFinished(5000);
}

QDBusConnection PrivateBus::connect(const QString& name) {
    static int serial = 0;
    const QString unique = name + QLatin1Char('-') + QString::number(++serial);
    names_ << unique;
    return QDBusConnection::connectToBus(address_, unique);
}

void PrivateBus::close(const QString& name) {
    QDBusConnection::disconnectFromBus(name);
    names_.removeAll(name);
}

QProcessEnvironment PrivateBus::programEnvironment(QProcessEnvironment env) const {
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address_);
    return env;
}

QDBusMessage callOn(const QDBusConnection& conn, const QString& path, const QString& iface, const QString& method,
                    const QVariantList& args, double seconds) {
    QDBusMessage msg = QDBusMessage::createMethodCall(QLatin1String(bus::kService), path, iface, method);
    msg.setArguments(args);
    QDBusPendingCall pending = conn.asyncCall(msg, static_cast<int>(seconds * 1000.0));
    waitFor([&] { return pending.isFinished(); }, seconds + 1.0);
    if (!pending.isFinished())
        return msg.createErrorReply(QStringLiteral("tests.Error.NoAnswer"), QStringLiteral("no answer in time"));
    return pending.reply();
}

BusClient::BusClient(PrivateBus& bus, const QString& name) : bus_(bus) {
    conn_ = bus.connect(name);
    name_ = conn_->name();
    tap_ = std::make_unique<DbusSignalTap>(*conn_, [this](const QDBusMessage& m) { heard.push_back(describeSignal(m)); });
    tap_->listen(QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface), bus::tallixSignals());
}

BusClient::~BusClient() { leave(); }

QDBusMessage BusClient::call(const QString& method, const QVariantList& args) {
    if (!conn_) return {};
    return callOn(*conn_, QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface), method, args);
}

void BusClient::post(const QString& method, const QVariantList& args) {
    if (!conn_) return;
    QDBusMessage msg = QDBusMessage::createMethodCall(QLatin1String(bus::kService), QLatin1String(bus::kTallixPath),
                                                      QLatin1String(bus::kTallixInterface), method);
    msg.setArguments(args);
    conn_->send(msg);
}

void BusClient::leave() {
    // Every copy of the connection must go before it closes.
    tap_.reset();
    conn_.reset();
    if (!name_.isEmpty()) bus_.close(name_);
    name_.clear();
}

ProgramRun runProgram(const QString& program, const QStringList& args, const QProcessEnvironment& env,
                      double seconds) {
    ProgramRun r;
    QProcess p;
    p.setProcessEnvironment(env);
    dieWithParent(p);
    p.start(program, args);
    if (!p.waitForStarted(10000)) {
        r.err = "did not start: " + p.errorString().toStdString();
        return r;
    }
    r.finished = waitFor([&] { return p.state() == QProcess::NotRunning; }, seconds);
    if (!r.finished) {
        p.kill();
        p.waitForFinished(5000);
    }
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = p.readAllStandardOutput().toStdString();
    r.err = p.readAllStandardError().toStdString();
    return r;
}

}  // namespace tlx::test
