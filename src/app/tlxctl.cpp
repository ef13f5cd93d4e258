// tlxctl: command-line client of the controller's automation class on the session bus.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "core/Text.h"
#include "platform/dbus/DbusNames.h"
#include "platform/dbus/DbusSignalTap.h"
#include "tlx/Version.h"

namespace {

using namespace tlx;

constexpr int kExitRefused = 1;
constexpr int kExitUsage = 2;
constexpr int kExitNoController = 3;

const char* kUsage =
    "tlxctl: client of the tallix controller's automation class (tallix_control.tallix on the\n"
    "session bus). Calling the class starts the controller when it is not running and its\n"
    "service file is installed.\n"
    "\n"
    "usage: tlxctl [--bus ADDRESS] [--reply-timeout SECONDS] COMMAND ...\n"
    "       tlxctl --help | --version\n"
    "\n"
    "  call METHOD [ARG...]       call a method of the class and print its result\n"
    "  send LINE...               SendCommand for each line in turn\n"
    "  init [ARG...]              init with the arguments joined by blanks (\"-noppt\" ...)\n"
    "  listen [--count N] [--seconds T] [--no-init]\n"
    "                             print the class's signals as they arrive, one line each: the\n"
    "                             name, then the arguments (texts quoted, \\r \\n escaped). It\n"
    "                             calls init first, as every client does, unless --no-init. It\n"
    "                             ends after N signals, after T seconds, or when the controller\n"
    "                             leaves the bus.\n"
    "  sim show METHOD [ARG...]   drive the simulated presentation program\n"
    "  sim bases METHOD [ARG...]  drive the simulated base stations\n"
    "  methods                    list the methods and their arguments\n"
    "\n"
    "A text argument takes the rest of the words when it comes last. Whole numbers are\n"
    "decimal; booleans are true/false, yes/no or 1/0.\n"
    "\n"
    "Exit codes: 0 done; 1 the call was refused or failed (SendCommand answered false, an\n"
    "error from the controller, listen ended before N signals); 2 bad command line; 3 no\n"
    "controller answers, or no session bus.\n";

struct Target {
    const char* path;
    const char* iface;
    const std::vector<bus::Method>& methods;
};

Target tallixTarget() { return {bus::kTallixPath, bus::kTallixInterface, bus::tallixMethods()}; }

struct Usage {
    std::string text;
};

std::string signatureText(const bus::Method& m) {
    std::string s = m.name;
    for (const char* a : m.args) s += std::string(" ") + toUpper(a);
    if (*m.out) s += std::string(" -> ") + m.out;
    return s;
}

QVariant convert(const bus::Method& m, std::size_t i, const std::string& word) {
    const char type = m.in[i];
    if (type == 's') return QString::fromStdString(word);
    if (type == 'i') {
        int v = 0;
        const char* end = word.data() + word.size();
        auto [p, ec] = std::from_chars(word.data(), end, v);
        if (ec != std::errc() || p != end || word.empty())
            throw Usage{std::string(m.name) + ": " + m.args[i] + " must be a whole number, not \"" + word + "\""};
        return v;
    }
    if (type == 'b') {
        const std::string w = toLower(word);
        if (w == "true" || w == "yes" || w == "1") return true;
        if (w == "false" || w == "no" || w == "0") return false;
        throw Usage{std::string(m.name) + ": " + m.args[i] + " must be true or false, not \"" + word + "\""};
    }
    throw Usage{std::string(m.name) + ": unsupported argument type"};
}

QVariantList arguments(const bus::Method& m, std::vector<std::string> words) {
    const std::size_t n = m.args.size();
    if (words.size() > n && n > 0 && m.in[n - 1] == 's') {
        // The last text takes the rest of the words.
        std::vector<std::string> rest(words.begin() + static_cast<std::ptrdiff_t>(n - 1), words.end());
        words.resize(n - 1);
        words.push_back(join(rest, " "));
    }
    if (words.size() > n)
        throw Usage{std::string(m.name) + " takes " + std::to_string(n) + " argument" + (n == 1 ? "" : "s") +
                    ": " + signatureText(m)};
    if (words.size() < n) {
        // init may go without its arguments.
        if (words.empty() && std::string_view(m.name) == "init")
            words.emplace_back();
        else
            throw Usage{std::string(m.name) + " needs " + signatureText(m)};
    }
    QVariantList args;
    for (std::size_t i = 0; i < n; ++i) args << convert(m, i, words[i]);
    return args;
}

void printResult(const QDBusMessage& reply) {
    for (const QVariant& v : reply.arguments()) {
        if (v.typeId() == QMetaType::QStringList) {
            for (const QString& s : v.toStringList()) std::cout << s.toStdString() << "\n";
        } else if (v.typeId() == QMetaType::Bool) {
            std::cout << (v.toBool() ? "true" : "false") << "\n";
        } else {
            std::cout << v.toString().toStdString() << "\n";
        }
    }
    std::cout.flush();
}

// Prints why a call failed and gives the exit code.
int reportError(const QDBusMessage& reply, const Target& t, const bus::Method& m, int timeoutMs) {
    const QString name = reply.errorName();
    const std::string text = reply.errorMessage().toStdString();
    if (name == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
        name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
        name.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."))) {
        std::cerr << "tlxctl: no controller answers: " << bus::kService
                  << " is not running on the session bus and could not be started (" << text << ")" << std::endl;
        return kExitNoController;
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.NoReply") ||
        name == QLatin1String("org.freedesktop.DBus.Error.Timeout") ||
        name == QLatin1String("org.freedesktop.DBus.Error.TimedOut")) {
        std::cerr << "tlxctl: the controller did not answer " << m.name << " within " << timeoutMs / 1000.0
                  << " seconds" << std::endl;
        return kExitNoController;
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.Disconnected")) {
        std::cerr << "tlxctl: lost the session bus (" << text << ")" << std::endl;
        return kExitNoController;
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.UnknownObject")) {
        std::cerr << "tlxctl: the controller has no " << t.path << " (it runs without the simulation)" << std::endl;
        return kExitRefused;
    }
    std::cerr << "tlxctl: " << m.name << " failed: " << text << " [" << name.toStdString() << "]" << std::endl;
    return kExitRefused;
}

// Calls the method; on success *reply holds the answer. Returns the exit code.
int call(QDBusConnection& bus, const Target& t, const bus::Method& m, const QVariantList& args, int timeoutMs,
         QDBusMessage* answer = nullptr) {
    QDBusMessage msg = QDBusMessage::createMethodCall(QLatin1String(bus::kService), QLatin1String(t.path),
                                                      QLatin1String(t.iface), QLatin1String(m.name));
    msg.setArguments(args);
    const QDBusMessage reply = bus.call(msg, QDBus::Block, timeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage) return reportError(reply, t, m, timeoutMs);
    if (answer) *answer = reply;
    return 0;
}

const bus::Method& method(const Target& t, const std::string& name) {
    const bus::Method* m = bus::findMethod(t.methods, name);
    if (!m) {
        std::string known;
        for (const auto& x : t.methods) known += std::string(known.empty() ? "" : ", ") + x.name;
        throw Usage{"no method \"" + name + "\" in " + t.iface + " (" + known + ")"};
    }
    return *m;
}

int callAndPrint(QDBusConnection& bus, const Target& t, const std::vector<std::string>& words, int timeoutMs) {
    if (words.empty()) throw Usage{"which method? (tlxctl methods lists them)"};
    const bus::Method& m = method(t, words[0]);
    const QVariantList args = arguments(m, {words.begin() + 1, words.end()});
    QDBusMessage reply;
    if (const int rc = call(bus, t, m, args, timeoutMs, &reply)) return rc;
    printResult(reply);
    return 0;
}

int send(QDBusConnection& bus, const std::vector<std::string>& lines, int timeoutMs) {
    if (lines.empty()) throw Usage{"send needs at least one command line"};
    const Target t = tallixTarget();
    const bus::Method& m = method(t, "SendCommand");
    for (const auto& line : lines) {
        QDBusMessage reply;
        if (const int rc = call(bus, t, m, {QString::fromStdString(line)}, timeoutMs, &reply)) return rc;
        if (reply.arguments().value(0).toBool()) continue;
        std::cerr << "tlxctl: the controller refused \"" << line << "\" (it has not finished initialising)"
                  << std::endl;
        return kExitRefused;
    }
    return 0;
}

int listen(QDBusConnection& bus, std::vector<std::string> words, int timeoutMs) {
    std::optional<long> count;
    std::optional<double> seconds;
    bool init = true;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& w = words[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= words.size()) throw Usage{w + " needs a value"};
            return words[++i];
        };
        if (w == "--count" || w == "-n") {
            const std::string v = value();
            long n = 0;
            auto [p, ec] = std::from_chars(v.data(), v.data() + v.size(), n);
            if (ec != std::errc() || p != v.data() + v.size() || n < 1)
                throw Usage{"--count must be a whole number above 0"};
            count = n;
        } else if (w == "--seconds" || w == "-t") {
            const std::string v = value();
            if (!isNumeric(v) || ParseNumber(v) <= 0) throw Usage{"--seconds must be a number above 0"};
            seconds = ParseNumber(v);
        } else if (w == "--no-init") {
            init = false;
        } else {
            throw Usage{"listen: unknown option \"" + w + "\""};
        }
    }

    long seen = 0;
    DbusSignalTap tap(bus, [&](const QDBusMessage& m) {
        if (count && seen >= *count) return;
        std::cout << describeSignal(m) << std::endl;
        if (count && ++seen >= *count) QCoreApplication::exit(0);
    });
    if (!tap.listen(QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface), bus::tallixSignals())) {
        std::cerr << "tlxctl: cannot listen on the session bus (" << bus.lastError().message().toStdString() << ")"
                  << std::endl;
        return kExitNoController;
    }
    const int endCode = count ? kExitRefused : 0;
    QDBusServiceWatcher left(QLatin1String(bus::kService), bus, QDBusServiceWatcher::WatchForUnregistration);
    QObject::connect(&left, &QDBusServiceWatcher::serviceUnregistered, [endCode] {
        std::cerr << "tlxctl: the controller left the bus" << std::endl;
        QCoreApplication::exit(endCode);
    });
    if (init) {
        // Our match rules went out first, so nothing raised after init can pass us by.
        const Target t = tallixTarget();
        if (const int rc = call(bus, t, method(t, "init"), {QString()}, timeoutMs)) return rc;
    }
    if (seconds) QTimer::singleShot(static_cast<int>(*seconds * 1000.0), [endCode] { QCoreApplication::exit(endCode); });
    return QCoreApplication::exec();
}

void listMethods() {
    const std::pair<const char*, const std::vector<bus::Method>*> groups[] = {
        {"call", &bus::tallixMethods()}, {"sim show", &bus::simShowMethods()}, {"sim bases", &bus::simBasesMethods()}};
    for (const auto& [prefix, methods] : groups)
        for (const auto& m : *methods) std::cout << prefix << " " << signatureText(m) << "\n";
    std::cout << "signals:";
    for (const auto& s : bus::tallixSignals()) std::cout << " " << s.name;
    std::cout << std::endl;
}

int run(int argc, char** argv) {
    std::vector<std::string> words(argv + 1, argv + argc);
    std::string address;
    int timeoutMs = 30000;
    std::size_t i = 0;
    for (; i < words.size(); ++i) {
        const std::string& w = words[i];
        if (w == "-h" || w == "--help") {
            std::cout << kUsage;
            return 0;
        }
        if (w == "--version") {
            std::cout << "tlxctl " << version::kText << "\n";
            return 0;
        }
        if (w == "--bus" || w == "--reply-timeout") {
            if (i + 1 >= words.size()) throw Usage{w + " needs a value"};
            const std::string v = words[++i];
            if (w == "--bus") {
                address = v;
            } else {
                if (!isNumeric(v) || ParseNumber(v) <= 0) throw Usage{"--reply-timeout must be a number above 0"};
                timeoutMs = static_cast<int>(ParseNumber(v) * 1000.0);
            }
            continue;
        }
        if (startsWith(w, "-")) throw Usage{"unknown option \"" + w + "\""};
        break;
    }
    if (i >= words.size()) throw Usage{"which command?"};
    const std::string command = words[i++];
    std::vector<std::string> rest(words.begin() + static_cast<std::ptrdiff_t>(i), words.end());

    if (command == "methods") {
        listMethods();
        return 0;
    }

    QDBusConnection bus = address.empty() ? QDBusConnection::sessionBus()
                                          : QDBusConnection::connectToBus(QString::fromStdString(address),
                                                                          QStringLiteral("tlxctl"));
    if (!bus.isConnected()) {
        std::cerr << "tlxctl: cannot reach the session bus (" << bus.lastError().message().toStdString() << ")"
                  << std::endl;
        return kExitNoController;
    }

    if (command == "call") return callAndPrint(bus, tallixTarget(), rest, timeoutMs);
    if (command == "send") return send(bus, rest, timeoutMs);
    if (command == "init") {
        const Target t = tallixTarget();
        return call(bus, t, method(t, "init"), {QString::fromStdString(join(rest, " "))}, timeoutMs);
    }
    if (command == "listen") return listen(bus, rest, timeoutMs);
    if (command == "sim") {
        if (rest.empty()) throw Usage{"sim needs \"show\" or \"bases\""};
        const std::string which = rest[0];
        rest.erase(rest.begin());
        if (which == "show")
            return callAndPrint(bus, {bus::kSimShowPath, bus::kSimShowInterface, bus::simShowMethods()}, rest,
                                timeoutMs);
        if (which == "bases")
            return callAndPrint(bus, {bus::kSimBasesPath, bus::kSimBasesInterface, bus::simBasesMethods()}, rest,
                                timeoutMs);
        throw Usage{"sim needs \"show\" or \"bases\", not \"" + which + "\""};
    }
    throw Usage{"unknown command \"" + command + "\""};
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    try {
        return run(argc, argv);
    } catch (const Usage& u) {
        std::cerr << "tlxctl: " << u.text << "\n(tlxctl --help tells how to use it)" << std::endl;
        return kExitUsage;
    }
}
