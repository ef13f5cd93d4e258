// The programs on a private session bus: the bus starting tlxctrl through the service file,
// and tlxctl against a server in this process.
#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QProcess>
#include <signal.h>

#include "app/BusTestSupport.h"
#include "core/MainForm.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"

using namespace tlx;
using namespace tlx::test;

TEST(ServiceActivation, ACallStartsTheControllerWhenNoneRuns) {
    busApp();
    TestWorld folders;  // only for its temporary folders
    PrivateBus bus(TLX_DBUS_SERVICE_DIR, folderEnvironment(folders));
    ASSERT_TRUE(bus.ok()) << bus.problem();
    QDBusConnection look = bus.connect("look");
    ASSERT_FALSE(nameOwned(look));

    BusClient a(bus, "a");
    const QDBusMessage init = a.call("init", {""});  // the bus starts tlxctrl to answer it
    uint pid = 0;
    if (nameOwned(look)) pid = look.interface()->servicePid(QLatin1String(bus::kService)).value();
    EXPECT_EQ(init.type(), QDBusMessage::ReplyMessage) << init.errorMessage().toStdString();
    EXPECT_NE(pid, 0u);
    const QDBusMessage sent = a.call("SendCommand", {"STARTVOTE"});
    EXPECT_TRUE(sent.arguments().value(0).toBool());
    EXPECT_TRUE(std::filesystem::exists(folders.appData() / "tallix")) << "the controller used other folders";

    // The presentation program closing ends the controller, which leaves the bus.
    a.call("PowerPointClosed");
    const bool gone = waitFor([&] { return !nameOwned(look); }, 30.0);
    EXPECT_TRUE(gone);
    if (!gone && pid != 0) ::kill(static_cast<pid_t>(pid), SIGKILL);  // the controller this test started
}

TEST(Tlxctl, PrintsSignalsAndResultsAndSaysWhenNoControllerAnswers) {
    PrivateBus bus;
    ASSERT_TRUE(bus.ok()) << bus.problem();
    const QProcessEnvironment env = bus.programEnvironment();

    // Nobody serves the class yet, and nothing can start a controller on this bus.
    const ProgramRun none = runProgram(TLXCTL_PATH, {"call", "CurrentSlide"}, env);
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_NE(none.err.find("tlxctl: no controller answers: tallix_control.tallix is not running"), std::string::npos)
        << none.err;

    TestWorld w;
    w.start();
    FakeSim bases;
    DbusAutomationServer server(w.c(), bus.connect("server"));
    server.serveSimulation(nullptr, &bases);
    ASSERT_EQ(server.start(), "");

    OwnedProcess listener;
    listener.setProcessEnvironment(env);
    listener.start(TLXCTL_PATH, {"listen", "--count", "3", "--seconds", "60"});
    ASSERT_TRUE(listener.waitForStarted(10000));
    // Its init has arrived, so its match rules are in place.
    ASSERT_TRUE(waitFor([&] { return server.clientCount() == 1; }));
    MainForm& m = w.main();
    m.AddDataToTxQueue("[1;A],");
    m.AddDataToTxQueue("VOTES=1");
    w.scheduler.advance(50);
    m.FromCtrlFormBaseStationError(2, "Base \"2\" timed out");
    m.VKeyPressed();
    ASSERT_TRUE(waitFor([&] { return listener.state() == QProcess::NotRunning; }, 60.0));
    EXPECT_EQ(listener.exitCode(), 0);
    EXPECT_EQ(listener.readAllStandardOutput().toStdString(),
              "FromTLXCtrl \"[1;A],\\r\\nVOTES=1\"\n"
              "FromTLXCtrlBaseError 2 \"Base \\\"2\\\" timed out\"\n"
              "VKeyPressed\n");

    const ProgramRun slide = runProgram(TLXCTL_PATH, {"call", "CurrentSlide"}, env);
    EXPECT_EQ(slide.exitCode, 0) << slide.err;
    EXPECT_EQ(slide.out, "0\n");
    const ProgramRun sent = runProgram(TLXCTL_PATH, {"send", "STARTVOTE", "options=4"}, env);
    EXPECT_EQ(sent.exitCode, 0) << sent.err;
    EXPECT_EQ(m.txt_command, "STARTVOTE\r\noptions=4");
    const ProgramRun called = runProgram(TLXCTL_PATH, {"call", "SendCommand", "ENDVOTE"}, env);
    EXPECT_EQ(called.out, "true\n");
    const ProgramRun init = runProgram(TLXCTL_PATH, {"init", "deck.pptx", "-NOPPT"}, env);
    EXPECT_EQ(init.exitCode, 0) << init.err;
    EXPECT_EQ(fields(w.glo().commandLine, w.glo().usePowerPoint), "deck.pptx -NOPPT|0");

    const ProgramRun list = runProgram(TLXCTL_PATH, {"sim", "bases", "Bases"}, env);
    EXPECT_EQ(list.out, "KELVARIN COREHUB G2;100100100100\nKELVARIN COREHUB G1;200200200200\n");
    const ProgramRun press = runProgram(TLXCTL_PATH, {"sim", "bases", "Press", "100100100100", "5", "3"}, env);
    EXPECT_EQ(press.exitCode, 0) << press.err;
    const ProgramRun screen = runProgram(TLXCTL_PATH, {"sim", "bases", "Screen", "100100100100", "5"}, env);
    EXPECT_EQ(screen.exitCode, 0) << screen.err;
    EXPECT_EQ(screen.out, "Keypad 5|of 100100100100\n");
    const ProgramRun failed = runProgram(TLXCTL_PATH, {"sim", "bases", "Press", "999", "5", "3"}, env);
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_NE(failed.err.find("tlxctl: Press failed: no simulated base 999"), std::string::npos) << failed.err;
    const ProgramRun noShow = runProgram(TLXCTL_PATH, {"sim", "show", "Begin"}, env);
    EXPECT_EQ(noShow.exitCode, 1);
    EXPECT_NE(noShow.err.find("has no /sim/show"), std::string::npos) << noShow.err;
    const ProgramRun usage = runProgram(TLXCTL_PATH, {"sim", "bases", "Press", "100100100100", "five", "3"}, env);
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_NE(usage.err.find("keypad must be a whole number, not \"five\""), std::string::npos) << usage.err;
}
