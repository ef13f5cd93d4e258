#pragma once
// A private session bus per test, bus clients on connections of their own, and programs run
// against it, all with time limits and nothing left running afterwards.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QVariantList>
#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/sim/SimControls.h"
#include "support/TestWorld.h"

namespace tlx {
class DbusSignalTap;
}

namespace tlx::test {

QCoreApplication& busApp();

// Lets the Qt loop turn until the condition holds or the limit passes.
bool waitFor(const std::function<bool()>& condition, double seconds = 20.0);

// Whether some connection on the bus owns the automation class's name.
bool nameOwned(const QDBusConnection& c);

// dbus-daemon of our own, stopped with the object. Activated services inherit `env`.
class PrivateBus {
public:
    explicit PrivateBus(const QString& serviceDir = {},
                        const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment());
    ~PrivateBus();
    bool ok() const { return !address_.isEmpty(); }
    std::string problem() const { return problem_; }
    // A connection of its own, closed with the bus unless closed before.
    QDBusConnection connect(const QString& name);
    void close(const QString& name);
    // The environment of a program that should find this bus as its session bus.
    QProcessEnvironment programEnvironment(QProcessEnvironment env = QProcessEnvironment::systemEnvironment()) const;

private:
    TempDir dir_;
    QProcess daemon_;
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
    std::vector<std::string> heard;  // signals, one line each
    bool heardLine(const std::string& line) const {
        return std::find(heard.begin(), heard.end(), line) != heard.end();
    }

private:
    PrivateBus& bus_;
    QString name_;
    std::optional<QDBusConnection> conn_;
    std::unique_ptr<DbusSignalTap> tap_;
};

// Children die with the test, whatever becomes of it.
void dieWithParent(QProcess& p);

// A program of the test's own, killed with the object if it is still running.
struct OwnedProcess : QProcess {
    OwnedProcess() { dieWithParent(*this); }
    ~OwnedProcess() override {
        if (state() == QProcess::NotRunning) return;
        kill();
        waitForFinished(5000);
    }
};

// `env` with the world's folders as the program's APPDATA, PROGRAMDATA and TEMP.
QProcessEnvironment folderEnvironment(const TestWorld& folders,
                                      QProcessEnvironment env = QProcessEnvironment::systemEnvironment());

struct ProgramRun {
    bool finished = false;
    int exitCode = -1;
    std::string out, err;
};

// Runs a program to its end, the Qt loop turning meanwhile (it may call back into us).
ProgramRun runProgram(const QString& program, const QStringList& args, const QProcessEnvironment& env,
                      double seconds = 60.0);

// Both simulation controls, recording each call as "Method arg ...". Bases other than
// 100100100100 and 200200200200 and slides below 1 or above 9 fail; Close throws.
class FakeSim : public SimShowControl, public SimBasesControl {
public:
    SimError Open(const std::string& path) override { return rec("Open", path); }
    SimError Begin() override { return rec("Begin"); }
    SimError Next() override { return rec("Next"); }
    SimError Previous() override { return rec("Previous"); }
    SimError GoTo(int slide) override { return slideOk(slide) ? rec("GoTo", slide) : noSlide(slide); }
    SimError End() override { return rec("End"); }
    SimError Close() override { throw std::runtime_error("the program is not running"); }
    SimError KeyDown(int vk) override { return rec("KeyDown", vk); }
    SimError KeyUp(int vk) override { return rec("KeyUp", vk); }
    SimResult<int> CurrentSlide() override { return {4, ""}; }
    SimResult<std::string> PresentationTag(const std::string& name) override { return {name + "=4", ""}; }
    SimResult<std::string> SlideTag(int slide, const std::string& name) override {
        if (!slideOk(slide)) return {"", noSlide(slide)};
        return {name + "@" + std::to_string(slide), ""};
    }
    SimResult<std::string> SlideText(int slide, const std::string& shape) override {
        if (!slideOk(slide)) return {"", noSlide(slide)};
        return {shape + "#" + std::to_string(slide) + "\r2nd", ""};
    }
    SimError Press(const std::string& b, int k, const std::string& keys) override { return onBase(b, "Press", b, k, keys); }
    SimError Crowd(const std::string& b, int n, const std::string& answers, int rate) override {
        return onBase(b, "Crowd", b, n, answers, rate);
    }
    SimError MicRequest(const std::string& b, int k, bool withdraw) override { return onBase(b, "MicRequest", b, k, withdraw); }
    SimError Text(const std::string& b, int k, const std::string& text) override { return onBase(b, "Text", b, k, text); }
    SimError Fail(const std::string& b, const std::string& op, int code) override { return onBase(b, "Fail", b, op, code); }
    SimError Disconnect(const std::string& b) override { return onBase(b, "Disconnect", b); }
    SimError Reconnect(const std::string& b) override { return onBase(b, "Reconnect", b); }
    SimResult<std::vector<std::string>> Bases() override {
        return {{"KELVARIN COREHUB G2;100100100100", "KELVARIN COREHUB G1;200200200200"}, ""};
    }
    SimResult<std::string> Screen(const std::string& b, int k) override {
        const SimError e = onBase(b, "Screen", b, k);
        return {e.empty() ? "Keypad " + std::to_string(k) + "|of " + b : "", e};
    }
    std::vector<std::string> calls;

private:
    static std::string text(const std::string& s) { return s; }
    static std::string text(int n) { return std::to_string(n); }
    static std::string text(bool b) { return b ? "true" : "false"; }
    template <class... A>
    SimError rec(const char* method, const A&... args) {
        std::string line = method;
        ((line += " " + text(args)), ...);
        calls.push_back(line);
        return {};
    }
    template <class... A>
    SimError onBase(const std::string& base, const char* method, const A&... args) {
        if (base != "100100100100" && base != "200200200200") return "no simulated base " + base;
        return rec(method, args...);
    }
    static bool slideOk(int slide) { return slide >= 1 && slide <= 9; }
    static SimError noSlide(int slide) { return "no slide " + std::to_string(slide); }
};

}  // namespace tlx::test
