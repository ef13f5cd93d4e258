// A show against tlx-basesim as a real second process: the controller (its own process, on a
// private session bus) runs one USB base in its simulation and one network base served by the
// emulator; a display program on the bus hears the votes. The emulator is killed and restarted
// in the middle of the vote.
#include <gtest/gtest.h>

#include <QProcess>
#include <map>
#include <regex>

#include "app/BusTestSupport.h"
#include "core/Text.h"
#include "platform/dbus/DbusNames.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const char* kNetBase = "100100100300";
const char* kUsbBase = "100100100100";

// The emulator, its output read as it comes, commands written to its standard input.
class Emulator {
public:
    explicit Emulator(const std::filesystem::path& world) : world_(world) {}
    ~Emulator() { kill(); }

    // Starts on `port` (0: any free one) and returns the port it serves on, or 0.
    quint16 start(quint16 port = 0) {
        out_.clear();
        p_ = std::make_unique<OwnedProcess>();
        p_->setProcessChannelMode(QProcess::MergedChannels);
        QObject::connect(p_.get(), &QProcess::readyRead, [this] { out_ += p_->readAll().toStdString(); });
        p_->start(TLX_BASESIM_PATH, {"--listen", QString("127.0.0.1:%1").arg(port), "--world",
                                      QString::fromStdString(world_.string())});
        std::smatch m;
        const std::regex listening("listening on 127\\.0\\.0\\.1:([0-9]+)");
        if (!waitFor([&] { return std::regex_search(out_, m, listening); }, 20.0)) return 0;
        return static_cast<quint16>(std::stoi(m[1].str()));
    }
    // Killed and waited for while p_ still serves its output slot.
    void kill() {
        if (!p_) return;
        p_->kill();
        p_->waitForFinished(5000);
        p_.reset();
    }
    // Runs a control command and returns what the emulator said about it ("done" or why not).
    std::string command(const std::string& line) {
        const std::size_t from = out_.size();
        p_->write((line + "\n").c_str());
        const std::string mark = "tlx-basesim: " + line + ": ";
        std::size_t at = std::string::npos;
        waitFor([&] { return (at = out_.find(mark, from)) != std::string::npos && out_.find('\n', at) != std::string::npos; },
                10.0);
        if (at == std::string::npos) return "no answer";
        const auto end = out_.find('\n', at);
        return out_.substr(at + mark.size(), end - at - mark.size());
    }
    const std::string& output() const { return out_; }

private:
    std::filesystem::path world_;
    std::unique_ptr<OwnedProcess> p_;
    std::string out_;
};

// How often each "[keypad;answer]" record reached the display program.
std::map<std::string, int> records(const BusClient& c) {
    std::map<std::string, int> seen;
    const std::regex record("\\[([0-9]+;[^\\]]*)\\]");
    for (const auto& line : c.heard) {
        if (!startsWith(line, "FromTLXCtrl \"")) continue;
        for (std::sregex_iterator it(line.begin(), line.end(), record), end; it != end; ++it) ++seen[(*it)[1].str()];
    }
    return seen;
}

bool heardPart(const BusClient& c, const std::string& part) {
    return std::any_of(c.heard.begin(), c.heard.end(), [&](const std::string& l) { return contains(l, part); });
}

class BasesimShow : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(bus.ok()) << bus.problem();
        writeFile(dir / "world.ini",
                  "[bases]\ncount=1\n[base1]\ntype=KELVARIN COREHUB G2\nid=100100100300\nconnection=ethernet\n"
                  "address=127.0.0.1\nkeypads=41-60\nhidstart=300300041\n");
        writeFile(dir / "sim.ini",
                  "[presentation]\nrunning=1\n[bases]\ncount=1\n[base1]\ntype=KELVARIN COREHUB G2\nid=100100100100\n"
                  "connection=usb\nkeypads=1-20\n");
        std::filesystem::create_directories(dir / "appdata" / "tallix");
        std::filesystem::create_directories(dir / "temp");
        writeFile(dir / "appdata" / "tallix" / "tlx.ini", "[KELVARIN CORE HUB OPTIONS]\r\nETHERNET ENABLED=1\r\n");
        env = bus.programEnvironment();
        env.insert("APPDATA", QString::fromStdString((dir / "appdata").string()));
        env.insert("PROGRAMDATA", QString::fromStdString((dir / "programdata").string()));
        env.insert("ALLUSERSPROFILE", QString::fromStdString((dir / "programdata").string()));
        env.insert("TEMP", QString::fromStdString((dir / "temp").string()));
        const ProgramRun setup = runProgram(TLXCTRL_PATH,
                                            {"--configure-bases", QString("KELVARIN COREHUB G2;%1;1;20").arg(kUsbBase),
                                             QString("KELVARIN COREHUB G2;%1;41;60").arg(kNetBase)},
                                            env);
        ASSERT_TRUE(setup.finished && setup.exitCode == 0) << setup.out << setup.err;
        port = emulator.start();
        ASSERT_NE(port, 0) << emulator.output();
    }
    void startController() {
        controller.setProcessEnvironment(env);
        controller.setProcessChannelMode(QProcess::MergedChannels);
        QObject::connect(&controller, &QProcess::readyRead, [this] { log += controller.readAll().toStdString(); });
        controller.start(TLXCTRL_PATH, {"--headless", "--automation", "--sim", QString::fromStdString((dir / "sim.ini").string()),
                                        "--basesim", QString("127.0.0.1:%1").arg(port)});
    }
    // Presses on the emulator until the vote is open there (the controller opens it a little
    // after STARTVOTE's answer), then returns what the press said.
    std::string pressWhenOpen(int keypad, const std::string& keys) {
        std::string said;
        waitFor([&] { return (said = emulator.command("press " + std::string(kNetBase) + " " + std::to_string(keypad) + " " + keys)) != "No vote open on base 100100100300"; },
                20.0);
        return said;
    }

    TempDir dir;
    PrivateBus bus;
    QProcessEnvironment env;
    Emulator emulator{dir / "world.ini"};
    quint16 port = 0;
    std::string log;  // before the controller, whose output fills it to its last breath
    OwnedProcess controller;
};

TEST_F(BasesimShow, VotesArriveOnceAndAfterTheEmulatorIsKilledAndRestartedTheBaseErrorThenVotesAgain) {
    startController();
    BusClient display(bus, "display");
    ASSERT_TRUE(waitFor([&] { return display.call("init", {""}).type() == QDBusMessage::ReplyMessage; }, 30.0)) << log;
    ASSERT_TRUE(waitFor([&] { return contains(log, "connected to the network base emulator"); }, 30.0)) << log;
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "startfrom=1"})
        ASSERT_EQ(display.call("SendCommand", {line}).type(), QDBusMessage::ReplyMessage);
    ASSERT_EQ(display.call("SendCommand", {"STARTVOTE"}).type(), QDBusMessage::ReplyMessage);

    // Before the emulator goes: the network base and the USB base.
    ASSERT_EQ(pressWhenOpen(41, "1"), "done") << log << emulator.output();
    for (int k = 42; k <= 45; ++k) EXPECT_EQ(emulator.command("press 100100100300 " + std::to_string(k) + " 2"), "done");
    QDBusConnection control = bus.connect("control");
    const QDBusMessage usb = callOn(control, bus::kSimBasesPath, bus::kSimBasesInterface, "Press", {kUsbBase, 3, "4"});
    EXPECT_EQ(usb.type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(waitFor([&] { return records(display).count("45;2") && records(display).count("3;4"); }, 20.0))
        << log;

    // The emulator dies in the middle of the vote: the base error of a lost network base.
    emulator.kill();
    ASSERT_TRUE(waitFor([&] {
        return heardPart(display, "FromTLXCtrlBaseError 1 ") &&
               heardPart(display, "Base station disconnected - attempting auto reconnect");
    }, 20.0)) << log;
    // A press on the USB base still arrives while the network base is away.
    callOn(control, bus::kSimBasesPath, bus::kSimBasesInterface, "Press", {kUsbBase, 4, "1"});
    ASSERT_TRUE(waitFor([&] { return records(display).count("4;1") != 0; }, 20.0)) << log;

    // Back on the same port: reconnected, the vote opened again, and votes delivered again.
    ASSERT_EQ(emulator.start(port), port) << emulator.output();
    ASSERT_TRUE(waitFor([&] { return heardPart(display, "Auto reconnect success"); }, 30.0)) << log;
    EXPECT_TRUE(heardPart(display, "FromTLXCtrlBaseFeedback 1 ")) << log;
    ASSERT_EQ(pressWhenOpen(46, "3"), "done") << emulator.output();
    for (int k = 47; k <= 50; ++k) EXPECT_EQ(emulator.command("press 100100100300 " + std::to_string(k) + " 4"), "done");
    ASSERT_TRUE(waitFor([&] { return records(display).count("50;4") != 0; }, 20.0)) << log;
    EXPECT_EQ(display.call("SendCommand", {"ENDVOTE"}).type(), QDBusMessage::ReplyMessage);
    waitFor([] { return false; }, 0.5);  // anything sent twice would have arrived by now

    const std::map<std::string, int> expected = {{"41;1", 1}, {"42;2", 1}, {"43;2", 1}, {"44;2", 1}, {"45;2", 1},
                                                 {"46;3", 1}, {"47;4", 1}, {"48;4", 1}, {"49;4", 1}, {"50;4", 1},
                                                 {"3;4", 1},  {"4;1", 1}};
    EXPECT_EQ(records(display), expected) << log;
}

}  // namespace
