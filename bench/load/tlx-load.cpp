// tlx-load: the controller under a burst of key presses, run as users run it. It starts a
// private session bus, the controller (`tlxctrl --headless --automation --sim FILE`) with N
// simulated bases of K keypads, and two bus clients in processes of their own; opens a vote,
// has every keypad press one of the answers within the burst time, and reports whether each
// client heard every vote exactly once, the latency from key press to the client's receipt,
// the controller's CPU time for the burst and the growth of its peak memory, its start-up
// time to bus-ready and its idle memory. Every wait is bounded; nothing leaves loopback.
#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>
#include <QProcess>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <csignal>
#include <unistd.h>
#include <vector>

#include "core/PortFile.h"
#include "load/LoadTally.h"
#include "platform/dbus/DbusNames.h"
#include "platform/dbus/DbusSignalTap.h"

namespace {

using namespace tlx;
using namespace tlx::load;
namespace fs = std::filesystem;

constexpr const char* kAnswers = "1234";
constexpr int kExitNotExactlyOnce = 1;
constexpr int kExitSetUp = 3;

// The monotonic clock every process of the run reads.
std::int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Lets the loop turn until the condition holds or the limit passes, sleeping while nothing
// happens (the driver shares the machine with the controller it measures).
bool waitFor(const std::function<bool()>& condition, double seconds) {
    const std::int64_t end = nowNs() + static_cast<std::int64_t>(seconds * 1e9);
    QEventLoop loop;
    QTimer tick;
    tick.setSingleShot(true);
    while (!condition()) {
        const std::int64_t left = end - nowNs();
        if (left <= 0) return condition();
        tick.start(static_cast<int>(std::clamp<std::int64_t>(left / 1000000, 1, 20)));
        loop.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

QString qs(const std::string& s) { return QString::fromStdString(s); }

// ---- the clients ----

// A display program's part: init, then every FromTLXCtrl event noted with the time it came.
// It says "ready" once its init is answered (its signal rules are in place by then),
// "started N" when the vote opens on N bases and "complete" once it has heard as many records
// as expected; "dump" on its input prints what it heard and ends it.
int runClient(int expected) {
    QDBusConnection conn = QDBusConnection::sessionBus();
    if (!conn.isConnected()) {
        std::cerr << "tlx-load client: no session bus" << std::endl;
        return kExitSetUp;
    }
    std::vector<std::pair<std::int64_t, QString>> events;
    events.reserve(4096);
    long long records = 0;
    bool complete = false;
    DbusSignalTap tap(conn, [&](const QDBusMessage& m) {
        const std::int64_t at = nowNs();
        if (m.member() == QLatin1String("FromTLXCtrl")) {
            QString text = m.arguments().value(0).toString();
            records += text.count(QLatin1String("],"));
            events.emplace_back(at, std::move(text));
            if (!complete && records >= expected) {
                complete = true;
                std::cout << "complete" << std::endl;
            }
        } else if (m.member() == QLatin1String("FromCtrlFormBaseStationStartVoteCount")) {
            std::cout << "started " << m.arguments().value(0).toInt() << std::endl;
        }
    });
    tap.listen(QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface), bus::tallixSignals());
    QDBusMessage init = QDBusMessage::createMethodCall(QLatin1String(bus::kService), QLatin1String(bus::kTallixPath),
                                                       QLatin1String(bus::kTallixInterface), QStringLiteral("init"));
    init.setArguments({QString()});
    const QDBusMessage reply = conn.call(init, QDBus::Block, 30000);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        std::cerr << "tlx-load client: init failed: " << reply.errorMessage().toStdString() << std::endl;
        return kExitSetUp;
    }
    std::cout << "ready" << std::endl;

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    std::string line;
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buf[256];
        const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
        if (n > 0) line.append(buf, static_cast<std::size_t>(n));
        if (n > 0 && line.find('\n') == std::string::npos) return;
        // "dump", or the driver has gone: print what was heard and end.
        input.setEnabled(false);
        std::string out;
        int malformed = 0;
        for (const auto& [at, text] : events) {
            const ParsedEvent e = parseVoteEvent(text.toStdString());
            malformed += e.malformed;
            for (const auto& [keypad, vote] : e.records)
                out += "R " + std::to_string(keypad) + " " + vote + " " + std::to_string(at) + "\n";
        }
        out += "M " + std::to_string(malformed) + "\nend\n";
        std::fwrite(out.data(), 1, out.size(), stdout);
        std::fflush(stdout);
        QCoreApplication::exit(0);
    });
    return QCoreApplication::exec();
}

// ---- the controller's process ----

struct ProcFigures {
    double cpuSeconds = -1;  // user + system, all threads
    double rssMb = -1;
    double peakMb = -1;
};

ProcFigures procFigures(qint64 pid) {
    ProcFigures f;
    {
        std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
        std::string all((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
        // The fields after the command name (which may hold blanks) in parentheses.
        const auto close = all.rfind(')');
        if (close != std::string::npos) {
            std::istringstream rest(all.substr(close + 2));
            std::string field;
            double utime = 0, stime = 0;
            for (int i = 3; i <= 15 && rest >> field; ++i) {
                if (i == 14) utime = std::stod(field);
                if (i == 15) stime = std::stod(field);
            }
            f.cpuSeconds = (utime + stime) / static_cast<double>(::sysconf(_SC_CLK_TCK));
        }
    }
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string key;
    while (status >> key) {
        double kb = 0;
        if (key == "VmRSS:" && status >> kb) f.rssMb = kb / 1024.0;
        if (key == "VmHWM:" && status >> kb) f.peakMb = kb / 1024.0;
    }
    return f;
}

// Starts the peak-memory mark afresh at the current size; false where the kernel refuses.
bool resetPeak(qint64 pid) {
    std::ofstream out("/proc/" + std::to_string(pid) + "/clear_refs");
    out << "5";
    out.flush();
    return static_cast<bool>(out);
}

void dieWithParent(QProcess& p) {
    p.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

void stopProcess(QProcess& p, int graceMs) {
    if (p.state() == QProcess::NotRunning) return;
    if (graceMs > 0 && p.waitForFinished(graceMs)) return;
    p.terminate();
    if (p.waitForFinished(3000)) return;
    p.kill();
    p.waitForFinished(3000);
}

// ---- one run ----

struct LoadOptions {
    int bases = 1;
    int keypads = 1000;
    double seconds = 1.0;
    int clients = 2;
    int runs = 1;
    double timeout = 60.0;
    std::string tlxctrl;
    bool keep = false;
    bool startupOnly = false;
};

struct RunResult {
    std::string problem;  // the run could not be made (set-up failed)
    double startupMs = 0;
    double startupCpuMs = 0;  // the controller's processor time by then (tells load from work)
    double idleRssMb = 0;
    double rssBeforeMb = 0;
    double rssGrowthMb = 0;
    bool peakReset = false;
    double cpuSeconds = 0;
    double originWindowMs = 0;
    std::vector<ClientTally> clients;
    LatencySummary latency;
    LatencySummary youngest;  // of each batch's youngest vote
    bool exactlyOnce() const {
        if (!problem.empty() || clients.empty()) return false;
        return std::all_of(clients.begin(), clients.end(), [](const ClientTally& t) { return t.exactlyOnce(); });
    }
};

RunResult failed(std::string why) {
    RunResult r;
    r.problem = std::move(why);
    return r;
}

std::string serial(int base) { return std::to_string(100100100101LL + base); }

void writeSimFile(const fs::path& file, const LoadOptions& o) {
    std::ofstream out(file);
    out << "; tlx-load: " << o.bases << " bases of " << o.keypads << " keypads\n"
        << "[presentation]\nrunning=1\n\n[bases]\ncount=" << o.bases << "\nseed=7\n";
    for (int b = 0; b < o.bases; ++b)
        out << "\n[base" << b + 1 << "]\ntype=KELVARIN COREHUB G2\nid=" << serial(b)
            << "\nfirmware=2.00.01.1801.1545\nconnection=usb\nkeypads=1-" << o.keypads << "\nhidstart="
            << 300000001LL + 10000LL * b << "\n";
}

// Each base's keypads follow the previous base's: base b holds b*K+1 .. b*K+K.
bool writePorts(const fs::path& appData, const LoadOptions& o) {
    PortFileData data;
    for (int b = 0; b < o.bases; ++b) {
        PortEntry e;
        e.port = serial(b);
        e.baseType = "KELVARIN COREHUB G2";
        e.gridLo = 1;
        e.gridHi = o.keypads;
        e.offset = b * o.keypads;
        data.bases.push_back(e);
    }
    fs::create_directories(appData / "tallix");
    return writePortFile(appData / "tallix" / "port.tlc", data) == PortFileWriteStatus::Ok;
}

// A child process whose standard output arrives line by line.
struct Child {
    QProcess process;
    std::string pending;
    std::vector<std::string> lines;
    void attach() {
        QObject::connect(&process, &QProcess::readyReadStandardOutput, [this] {
            pending += process.readAllStandardOutput().toStdString();
            std::size_t nl;
            while ((nl = pending.find('\n')) != std::string::npos) {
                lines.push_back(pending.substr(0, nl));
                pending.erase(0, nl + 1);
            }
        });
    }
    bool said(const std::string& prefix) const {
        return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
    }
};

QDBusMessage method(const char* path, const char* iface, const char* name, const QVariantList& args) {
    QDBusMessage m = QDBusMessage::createMethodCall(QLatin1String(bus::kService), QLatin1String(path),
                                                    QLatin1String(iface), QLatin1String(name));
    m.setArguments(args);
    return m;
}

RunResult runOnce(const LoadOptions& o) {
    RunResult r;
    QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/tlx-load-XXXXXX"));
    if (!dir.isValid()) return failed("no temporary folder");
    dir.setAutoRemove(!o.keep);
    const fs::path root = dir.path().toStdString();
    if (o.keep) std::cout << "files of this run: " << root.string() << std::endl;
    for (const char* sub : {"appdata", "programdata", "temp", "bus"}) fs::create_directories(root / sub);
    writeSimFile(root / "load.ini", o);
    if (!writePorts(root / "appdata", o)) return failed("the port file could not be written");

    // A session bus of our own.
    {
        std::ofstream conf(root / "bus.conf");
        conf << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
                " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                "<busconfig>\n  <type>session</type>\n  <listen>unix:dir="
             << (root / "bus").string()
             << "</listen>\n  <auth>EXTERNAL</auth>\n"
                "  <policy context=\"default\">\n    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                "    <allow eavesdrop=\"true\"/>\n    <allow own=\"*\"/>\n  </policy>\n</busconfig>\n";
    }
    Child daemon;
    dieWithParent(daemon.process);
    daemon.attach();
    daemon.process.start(QStringLiteral("dbus-daemon"),
                         {QStringLiteral("--config-file=") + qs((root / "bus.conf").string()),
                          QStringLiteral("--print-address"), QStringLiteral("--nofork")});
    if (!daemon.process.waitForStarted(10000)) return failed("dbus-daemon did not start");
    struct Stop {
        QProcess& p;
        ~Stop() { stopProcess(p, 0); }
    } stopDaemon{daemon.process};
    if (!waitFor([&] { return !daemon.lines.empty(); }, 10.0)) return failed("dbus-daemon gave no address");
    const QString address = qs(daemon.lines.front());

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address);
    env.insert(QStringLiteral("APPDATA"), qs((root / "appdata").string()));
    env.insert(QStringLiteral("PROGRAMDATA"), qs((root / "programdata").string()));
    env.insert(QStringLiteral("ALLUSERSPROFILE"), qs((root / "programdata").string()));
    env.insert(QStringLiteral("TEMP"), qs((root / "temp").string()));

    const QString controlName = QStringLiteral("tlx-load-control");
    QDBusConnection control = QDBusConnection::connectToBus(address, controlName);
    struct Disconnect {
        QString name;
        ~Disconnect() { QDBusConnection::disconnectFromBus(name); }
    } disconnect{controlName};
    if (!control.isConnected()) return failed("cannot reach the private bus");

    // The controller; start-up ends when it owns its bus name.
    bool ready = false;
    std::int64_t readyAt = 0;
    QDBusServiceWatcher watcher(QLatin1String(bus::kService), control, QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, [&] {
        if (!ready) readyAt = nowNs();
        ready = true;
    });
    QProcess ctrl;
    dieWithParent(ctrl);
    ctrl.setProcessEnvironment(env);
    ctrl.setStandardOutputFile(qs((root / "tlxctrl.out").string()));
    ctrl.setStandardErrorFile(qs((root / "tlxctrl.err").string()));
    struct StopCtrl {
        QProcess& p;
        ~StopCtrl() { stopProcess(p, 0); }
    } stopCtrl{ctrl};
    const std::int64_t spawnedAt = nowNs();
    ctrl.start(qs(o.tlxctrl), {QStringLiteral("--headless"), QStringLiteral("--automation"), QStringLiteral("--sim"),
                               qs((root / "load.ini").string())});
    if (!ctrl.waitForStarted(10000)) return failed("cannot start " + o.tlxctrl);
    const qint64 pid = ctrl.processId();
    if (!waitFor([&] { return ready || ctrl.state() == QProcess::NotRunning; }, 30.0) || !ready) {
        std::ifstream err(root / "tlxctrl.err");
        std::string why((std::istreambuf_iterator<char>(err)), std::istreambuf_iterator<char>());
        return failed("the controller did not reach the bus" + (why.empty() ? std::string() : ": " + why));
    }
    r.startupMs = static_cast<double>(readyAt - spawnedAt) / 1e6;
    r.startupCpuMs = procFigures(pid).cpuSeconds * 1000.0;
    // Idle: the controller has started and nothing asks anything of it.
    waitFor([] { return false; }, 0.5);
    r.idleRssMb = procFigures(pid).rssMb;
    if (o.startupOnly) {
        control.call(method(bus::kTallixPath, bus::kTallixInterface, "PowerPointClosed", {}), QDBus::NoBlock);
        stopProcess(ctrl, 10000);
        return r;
    }

    // The display programs.
    const int total = o.bases * o.keypads;
    std::vector<std::unique_ptr<Child>> clients;
    for (int i = 0; i < o.clients; ++i) {
        auto c = std::make_unique<Child>();
        dieWithParent(c->process);
        c->process.setProcessEnvironment(env);
        c->process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        c->attach();
        c->process.start(QCoreApplication::applicationFilePath(),
                         {QStringLiteral("client"), QStringLiteral("--expect"), QString::number(total)});
        clients.push_back(std::move(c));
    }
    struct StopClients {
        std::vector<std::unique_ptr<Child>>& c;
        ~StopClients() {
            for (auto& x : c) stopProcess(x->process, 0);
        }
    } stopClients{clients};
    auto all = [&](const std::string& what) {
        return std::all_of(clients.begin(), clients.end(), [&](const auto& c) { return c->said(what); });
    };
    if (!waitFor([&] { return all("ready"); }, 30.0)) return failed("the clients did not call init in time");

    // Open the vote as a display program does, and wait until every client has heard it open.
    auto send = [&](const char* line) {
        const QDBusMessage m = control.call(
            method(bus::kTallixPath, bus::kTallixInterface, "SendCommand", {QString::fromLatin1(line)}), QDBus::Block,
            30000);
        return m.type() == QDBusMessage::ReplyMessage && m.arguments().value(0).toBool();
    };
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "startfrom=1", "STARTVOTE"})
        if (!send(line)) return failed(std::string("the controller refused ") + line);
    if (!waitFor([&] { return all("started"); }, 30.0)) return failed("the vote did not open");
    for (const auto& c : clients)
        for (const auto& l : c->lines)
            if (l.rfind("started ", 0) == 0 && l != "started " + std::to_string(o.bases))
                return failed("the vote opened on " + l.substr(8) + " of " + std::to_string(o.bases) + " bases");

    const ProcFigures before = procFigures(pid);
    r.rssBeforeMb = before.rssMb;
    r.peakReset = resetPeak(pid);
    const double peakBefore = r.peakReset ? before.rssMb : before.peakMb;

    // The burst: every base's keypads at once, spread over the burst time.
    BurstPlan plan;
    plan.bases = o.bases;
    plan.keypads = o.keypads;
    plan.perSecond = std::max(1, static_cast<int>(std::lround(o.keypads / o.seconds)));
    plan.originNs.resize(static_cast<std::size_t>(o.bases));
    std::vector<std::int64_t> answeredAt(static_cast<std::size_t>(o.bases), 0);
    std::vector<std::string> refused;
    std::vector<std::unique_ptr<QDBusPendingCallWatcher>> calls;
    for (int b = 0; b < o.bases; ++b) {
        plan.originNs[static_cast<std::size_t>(b)] = nowNs();
        auto w = std::make_unique<QDBusPendingCallWatcher>(control.asyncCall(
            method(bus::kSimBasesPath, bus::kSimBasesInterface, "Crowd",
                   {qs(serial(b)), o.keypads, QString::fromLatin1(kAnswers), plan.perSecond}),
            30000));
        QObject::connect(w.get(), &QDBusPendingCallWatcher::finished, [&, b](QDBusPendingCallWatcher* call) {
            answeredAt[static_cast<std::size_t>(b)] = nowNs();
            if (call->isError()) refused.push_back(call->error().message().toStdString());
        });
        calls.push_back(std::move(w));
    }
    const double burstEnd = o.seconds + 1.0;
    if (!waitFor([&] { return std::all_of(answeredAt.begin(), answeredAt.end(), [](auto t) { return t != 0; }); },
                 30.0))
        return failed("the simulated bases did not answer the burst calls");
    if (!refused.empty()) return failed("the simulated bases refused the burst: " + refused.front());
    for (int b = 0; b < o.bases; ++b)
        r.originWindowMs = std::max(r.originWindowMs, static_cast<double>(answeredAt[static_cast<std::size_t>(b)] -
                                                                          plan.originNs[static_cast<std::size_t>(b)]) /
                                                          1e6);

    // Until every client has heard every record, and a little longer for any that come twice.
    waitFor([&] { return all("complete"); }, burstEnd + o.timeout);
    waitFor([] { return false; }, 0.3);
    const ProcFigures after = procFigures(pid);
    r.cpuSeconds = after.cpuSeconds - before.cpuSeconds;
    r.rssGrowthMb = std::max(0.0, after.peakMb - peakBefore);

    for (auto& c : clients) c->process.write("dump\n");
    if (!waitFor([&] { return all("end"); }, 60.0)) return failed("the clients did not report what they heard");
    std::vector<double> latencies, youngest;
    for (auto& c : clients) {
        std::vector<Receipt> receipts;
        receipts.reserve(static_cast<std::size_t>(total));
        for (const auto& l : c->lines) {
            if (l.rfind("R ", 0) != 0) continue;
            std::istringstream in(l.substr(2));
            Receipt rc;
            in >> rc.keypad >> rc.vote >> rc.receivedNs;
            receipts.push_back(rc);
        }
        ClientTally t = tally(plan, receipts, kAnswers);
        for (const auto& l : c->lines)
            if (l.rfind("M ", 0) == 0) t.unknown += std::stoi(l.substr(2));
        latencies.insert(latencies.end(), t.latencyMs.begin(), t.latencyMs.end());
        youngest.insert(youngest.end(), t.youngestMs.begin(), t.youngestMs.end());
        r.clients.push_back(std::move(t));
    }
    r.latency = summarise(latencies);
    r.youngest = summarise(youngest);

    control.call(method(bus::kTallixPath, bus::kTallixInterface, "PowerPointClosed", {}), QDBus::NoBlock);
    stopProcess(ctrl, 10000);
    return r;
}

std::string fixed(double v, int decimals) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
    return buf;
}

std::string describe(const RunResult& r, const LoadOptions& o) {
    if (!r.problem.empty()) return "could not run: " + r.problem;
    std::ostringstream s;
    if (o.startupOnly) {
        s << "start-up to bus ready " << fixed(r.startupMs, 1) << " ms (" << fixed(r.startupCpuMs, 0)
          << " ms of processor time); idle RSS " << fixed(r.idleRssMb, 1) << " MB";
        return s.str();
    }
    for (std::size_t i = 0; i < r.clients.size(); ++i) {
        const ClientTally& t = r.clients[i];
        s << "client " << i + 1 << ": " << t.delivered << "/" << o.bases * o.keypads;
        if (t.exactlyOnce())
            s << " exactly once";
        else
            s << " (missing " << t.missing << ", duplicates " << t.duplicates << ", unknown " << t.unknown
              << ", bad votes " << t.badVotes << ")";
        s << "; ";
    }
    s << "latency p50 " << fixed(r.latency.p50, 1) << " ms, p99 " << fixed(r.latency.p99, 1) << " ms, max "
      << fixed(r.latency.max, 1) << " ms (youngest of each batch: p50 " << fixed(r.youngest.p50, 1) << ", p99 "
      << fixed(r.youngest.p99, 1) << " ms); controller CPU " << fixed(r.cpuSeconds, 2) << " s; peak RSS +"
      << fixed(r.rssGrowthMb, 1) << " MB (from " << fixed(r.rssBeforeMb, 1) << " MB"
      << (r.peakReset ? "" : ", peak not reset") << "); start-up " << fixed(r.startupMs, 1) << " ms; idle RSS "
      << fixed(r.idleRssMb, 1) << " MB; burst calls answered within " << fixed(r.originWindowMs, 2) << " ms";
    return s.str();
}

int runDriver(const LoadOptions& o) {
    std::vector<RunResult> results;
    bool allOnce = true;
    for (int i = 0; i < o.runs; ++i) {
        results.push_back(runOnce(o));
        const RunResult& r = results.back();
        std::cout << "run " << i + 1 << " of " << o.runs << " (" << o.bases << "x" << o.keypads << "): " << describe(r, o)
                  << std::endl;
        if (!r.problem.empty()) return kExitSetUp;
        if (!o.startupOnly && !r.exactlyOnce()) allOnce = false;
    }
    auto med = [&](auto field) {
        std::vector<double> v;
        for (const auto& r : results) v.push_back(field(r));
        return median(v);
    };
    // One line for scripts: medians over the runs.
    std::cout << "RESULT bases=" << o.bases << " keypads=" << o.keypads << " runs=" << o.runs
              << " startup_ms=" << fixed(med([](const RunResult& r) { return r.startupMs; }), 1)
              << " startup_cpu_ms=" << fixed(med([](const RunResult& r) { return r.startupCpuMs; }), 0)
              << " idle_rss_mb=" << fixed(med([](const RunResult& r) { return r.idleRssMb; }), 1);
    if (!o.startupOnly)
        std::cout << " exactly_once=" << (allOnce ? "yes" : "no")
                  << " p50_ms=" << fixed(med([](const RunResult& r) { return r.latency.p50; }), 1)
                  << " p99_ms=" << fixed(med([](const RunResult& r) { return r.latency.p99; }), 1)
                  << " max_ms=" << fixed(med([](const RunResult& r) { return r.latency.max; }), 1)
                  << " cpu_s=" << fixed(med([](const RunResult& r) { return r.cpuSeconds; }), 2)
                  << " rss_growth_mb=" << fixed(med([](const RunResult& r) { return r.rssGrowthMb; }), 1);
    std::cout << std::endl;
    if (!o.startupOnly)
        std::cout << (allOnce ? "every vote reached every client exactly once" : "NOT every vote arrived exactly once")
                  << std::endl;
    return allOnce ? 0 : kExitNotExactlyOnce;
}

std::string besideMe(const char* name) {
    const fs::path here = fs::path(QCoreApplication::applicationDirPath().toStdString());
    for (const fs::path& p : {here / name, here / ".." / "src" / name})
        if (fs::exists(p)) return fs::weakly_canonical(p).string();
    return name;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    CLI::App cli{"tlx-load: the controller under a burst of key presses, on a private session bus"};
    LoadOptions o;
    cli.add_option("--bases", o.bases, "simulated bases")->check(CLI::Range(1, 10));
    cli.add_option("--keypads", o.keypads, "keypads per base, all voting")->check(CLI::Range(1, 4095));
    cli.add_option("--seconds", o.seconds, "the burst's length")->check(CLI::Range(0.01, 60.0));
    cli.add_option("--clients", o.clients, "bus clients listening")->check(CLI::Range(1, 8));
    cli.add_option("--runs", o.runs, "runs, each with a fresh controller; medians are reported")
        ->check(CLI::Range(1, 50));
    cli.add_option("--timeout", o.timeout, "seconds to wait for the last vote after the burst")
        ->check(CLI::Range(1.0, 600.0));
    cli.add_option("--tlxctrl", o.tlxctrl, "the controller program (default: the build's)");
    cli.add_flag("--keep", o.keep, "keep each run's files (set-up, controller output)");
    cli.add_flag("--startup", o.startupOnly, "only start-up to bus ready and idle memory");
    int expected = 0;
    auto* client = cli.add_subcommand("client", "(inside) one listening bus client")->group("");
    client->add_option("--expect", expected, "records to hear")->required();
    CLI11_PARSE(cli, argc, argv);
    if (*client) return runClient(expected);
    if (o.tlxctrl.empty()) o.tlxctrl = besideMe("tlxctrl");
    return runDriver(o);
}
