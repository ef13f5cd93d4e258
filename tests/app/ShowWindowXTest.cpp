// tlxctrl with its windows under a real X server: keys typed into the show window as X key
// events reach the hook and the show, seen from a client on a private session bus. And
// without a display the controller goes on headless, saying why.
#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QStandardPaths>

#include "app/BusTestSupport.h"
#include "app/common/ControllerApp.h"
#include "core/Text.h"
#include "platform/dbus/DbusNames.h"

using namespace tlx;
using namespace tlx::test;

namespace {

QString text(const std::filesystem::path& p) { return QString::fromStdString(p.string()); }

// An X server of our own on a display number it picks itself (-displayfd), stopped with the
// object.
class XServer {
public:
    XServer() {
        busApp();
        const QString exe = QStandardPaths::findExecutable("Xvfb");
        if (exe.isEmpty()) {
            problem_ = "Xvfb is not installed (scripts/install-deps installs it)";
            return;
        }
        x_.setProcessChannelMode(QProcess::SeparateChannels);
        dieWithParent(x_);
        x_.start(exe, {"-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"});
        if (!x_.waitForStarted(10000)) {
            problem_ = "Xvfb did not start: " + x_.errorString().toStdString();
            return;
        }
        QByteArray out;
        QDeadlineTimer deadline(20000);
        while (!out.contains('\n') && !deadline.hasExpired() && x_.state() != QProcess::NotRunning)
            if (x_.waitForReadyRead(static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1))))
                out += x_.readAllStandardOutput();
        if (!out.contains('\n')) {
            problem_ = "Xvfb named no display: " + x_.readAllStandardError().toStdString();
            return;
        }
        display_ = ":" + QString::fromLatin1(out.trimmed());
    }
    ~XServer() {
        if (x_.state() == QProcess::NotRunning) return;
        x_.terminate();
        if (!x_.waitForFinished(5000)) {
            x_.kill();
            x_.waitForFinished(5000);
        }
    }
    bool ok() const { return !display_.isEmpty(); }
    const std::string& problem() const { return problem_; }
    const QString& display() const { return display_; }

private:
    QProcess x_;
    QString display_;
    std::string problem_;
};

const char* kBase = "100100100100";

// The simulated world of these tests: the example deck (slide 2 is a vote), one base, the
// reference display program for the quick vote.
std::filesystem::path writeSimFile(const std::filesystem::path& dir) {
    const auto file = dir / "show.ini";
    writeFile(file, std::string("[presentation]\nrunning=1\ndeck=") + TLX_SOURCE_DIR + "/examples/decks/demo.pptx\n" +
                        "[displays]\nTLXVOTE=" + TLX_DISPLAY_PATH + " --plain --seconds 60\n" +
                        "[bases]\ncount=1\nseed=7\n[base1]\ntype=KELVARIN COREHUB G2\nid=" + kBase +
                        "\nfirmware=2.00.01.1801.1545\nconnection=usb\nkeypads=1-40\nhidstart=300100001\n");
    return file;
}

// The folders of a throw-away world, and no display but the one the test gives.
QProcessEnvironment windowedEnvironment(TestWorld& folders) {
    QProcessEnvironment env = folderEnvironment(folders);
    env.remove("QT_QPA_PLATFORM");
    env.remove("WAYLAND_DISPLAY");
    return env;
}

}  // namespace

TEST(ShowWindowOnX, VAndPageDownTypedOnTheShowWindowOpenTheVoteAndMoveTheSlide) {
    const QString xdotool = QStandardPaths::findExecutable("xdotool");
    if (xdotool.isEmpty()) GTEST_SKIP() << "xdotool is not installed (scripts/install-deps installs it)";
    XServer x;
    if (!x.ok()) GTEST_SKIP() << "no X server for this test: " << x.problem();
    TestWorld folders;  // only for its temporary folders
    QProcessEnvironment env = windowedEnvironment(folders);
    env.insert("DISPLAY", x.display());
    env.insert("QT_QPA_PLATFORM", "xcb");
    PrivateBus bus({}, env);
    ASSERT_TRUE(bus.ok()) << bus.problem();
    env = bus.programEnvironment(env);

    const ProgramRun setup =
        runProgram(TLXCTRL_PATH, {"--configure-bases", QString("KELVARIN COREHUB G2;") + kBase + ";1;40"}, env);
    ASSERT_EQ(setup.exitCode, 0) << setup.out << setup.err;

    OwnedProcess ctrl;
    ctrl.setProcessEnvironment(env);
    ctrl.setProcessChannelMode(QProcess::MergedChannels);
    ctrl.start(TLXCTRL_PATH, {"--sim", text(writeSimFile(folders.dir.path())), "--automation"});
    ASSERT_TRUE(ctrl.waitForStarted(10000));
    std::string log;
    auto output = [&] {
        log += ctrl.readAll().toStdString();
        return log;
    };

    // A client of the automation class, once the controller serves it.
    BusClient client(bus, "presenter-watch");
    ASSERT_TRUE(waitFor([&] { return client.call("init", {""}).type() == QDBusMessage::ReplyMessage; }, 30.0))
        << output();
    QDBusConnection control = bus.connect("control");
    auto show = [&](const char* method, const QVariantList& args = {}) {
        return callOn(control, QLatin1String(bus::kSimShowPath), QLatin1String(bus::kSimShowInterface),
                      QLatin1String(method), args);
    };
    auto slide = [&] { return show("CurrentSlide").arguments().value(0).toInt(); };
    ASSERT_EQ(show("Begin").type(), QDBusMessage::ReplyMessage) << output();
    ASSERT_EQ(show("GoTo", {2}).type(), QDBusMessage::ReplyMessage);

    // The show window, as the X server knows it; the X keys go to it.
    auto xdo = [&](const QStringList& args) { return runProgram(xdotool, args, env, 20.0); };
    const ProgramRun found = xdo({"search", "--sync", "--onlyvisible", "--name", "^Slide Show - demo\\.pptx$"});
    ASSERT_TRUE(found.finished && found.exitCode == 0) << found.out << found.err << output();
    const QString window = QString::fromStdString(trim(split(found.out, "\n").front()));
    const ProgramRun typed = xdo({"windowfocus", "--sync", window, "key", "--delay", "50", "v"});
    ASSERT_EQ(typed.exitCode, 0) << typed.err;

    // V: the quick vote starts the display program, which opens the vote on the base.
    ASSERT_TRUE(waitFor([&] { return client.heardLine("FromCtrlFormBaseStationStartVoteCount 1"); }, 30.0))
        << testing::PrintToString(client.heard) << output();
    EXPECT_EQ(slide(), 2);

    // Page Down: the show moves on.
    ASSERT_EQ(xdo({"windowfocus", "--sync", window, "key", "Next"}).exitCode, 0);
    ASSERT_TRUE(waitFor([&] { return slide() == 3; }, 20.0)) << output();

    // The presentation program closes; the controller follows it out.
    show("Close");
    EXPECT_TRUE(waitFor([&] { return ctrl.state() == QProcess::NotRunning; }, 30.0)) << output();
}

TEST(NoDisplay, TheWindowedControllerGoesOnHeadlessAndSaysWhy) {
    busApp();
    TestWorld folders;
    QProcessEnvironment env = windowedEnvironment(folders);
    env.remove("DISPLAY");
    const ProgramRun run = runProgram(
        TLXCTRL_PATH, {"--sim", text(writeSimFile(folders.dir.path())), "--no-automation", "--quit-after", "1500",
                       "--answer", "yes"}, env,
        60.0);
    ASSERT_TRUE(run.finished) << run.out << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(contains(run.err, "tlxctrl: no display (DISPLAY is not set): going on headless, log lines on standard output"))
        << run.err;
    // Headless, it prints its log lines and the simulated program's notes.
    EXPECT_TRUE(contains(run.out, " - XX - glo.ppApp GetObject Done")) << run.out;
    EXPECT_TRUE(contains(run.out, "[presentation] Opened ")) << run.out;
}

TEST(NoDisplay, ADisplayThatCannotBeOpenedIsNamed) {
    const QByteArray display = qgetenv("DISPLAY"), platform = qgetenv("QT_QPA_PLATFORM");
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("QT_QPA_PLATFORM", "xcb");
    qunsetenv("DISPLAY");
    EXPECT_EQ(noDisplayReason(), "DISPLAY is not set");
    // No X server listens on this socket: a path that cannot exist.
    qputenv("DISPLAY", "/nonexistent/tallix-test:0");
    EXPECT_EQ(noDisplayReason(), "cannot open display /nonexistent/tallix-test:0");
    // Other platforms are the toolkit's to judge.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    EXPECT_EQ(noDisplayReason(), "");
    qputenv("DISPLAY", display);
    qputenv("QT_QPA_PLATFORM", platform);
}
