// Faults on the session bus: a display program that vanishes mid-vote, a client that never
// reads, a burst of malformed calls, and the presentation program closed mid-vote in a real
// controller process.
#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>

#include <QDBusPendingCall>
#include <QProcess>

#include "EventWorld.h"
#include "app/BusTestSupport.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"
#include "platform/files/pptx/DeckBuilder.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }

// What a bus client has heard, counted by record.
Display tally(const BusClient& c, Controller& controller) {
    Display d(controller);
    for (const auto& line : c.heard)
        if (line.rfind("FromTLXCtrl ", 0) == 0) d.take(line);
    return d;
}

struct BusEvent : ::testing::Test {
    void SetUp() override {
        ASSERT_TRUE(bus.ok()) << bus.problem();
        server = std::make_unique<DbusAutomationServer>(w.c(), bus.connect("server"));
        ASSERT_EQ(server->start(), "");
    }
    // Lets the controller run `ms` of virtual time, the bus turning in between.
    void run(int ms) {
        for (int t = 0; t < ms; t += 50) {
            w.scheduler.advance(50);
            QCoreApplication::processEvents();
        }
    }
    // Raises a last line and waits until each client has heard it: anything sent before it
    // has arrived by then.
    void settle(std::vector<BusClient*> clients, const std::string& mark) {
        w.main().AddDataToTxQueue(mark);
        run(100);
        for (BusClient* c : clients) ASSERT_TRUE(waitFor([&] { return c->heardLine("FromTLXCtrl \"" + mark + "\""); }));
    }
    void openVote(BusClient& c) {
        for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "startfrom=1", "STARTVOTE"})
            c.call("SendCommand", {QString::fromLatin1(line)});
        run(300);
    }
    PrivateBus bus;
    EventWorld w{1, 400};
    std::unique_ptr<DbusAutomationServer> server;
};

}  // namespace

TEST_F(BusEvent, ADisplayProgramThatVanishesMidVoteLeavesTheOtherReceivingEverything) {
    BusClient keeps(bus, "keeps");
    keeps.call("init", {""});
    {
        BusClient vanishes(bus, "vanishes");
        vanishes.call("init", {""});
        openVote(vanishes);  // the one that opened the vote goes
        ASSERT_TRUE(w.baseLibrary.crowd(w.ids[0], 200, "2", 400).ok);
        run(200);
        vanishes.leave();
        ASSERT_TRUE(waitFor([&] { return server->clientCount() == 1; }));
    }
    run(1000);
    EXPECT_TRUE(w.glo().voteRunning);
    ASSERT_TRUE(w.baseLibrary.crowd(w.ids[0], 400, "2", 400).ok);  // the rest, and the first 200 again
    run(1500);
    settle({&keeps}, "MARK");
    const Display heard = tally(keeps, w.c());
    EXPECT_EQ(heard.records.size(), 400u);
    EXPECT_TRUE(heard.doubled().empty()) << heard.doubled().front();
    EXPECT_TRUE(keeps.call("SendCommand", {"ENDVOTE"}).arguments().value(0).toBool());
    run(300);
    EXPECT_FALSE(w.baseLibrary.station(0).voteOpen);
}

TEST_F(BusEvent, AClientThatNeverReadsLeavesTheControllersMemoryFlatAndTheOthersServed) {
    // A listener that subscribes and then stops reading: its process is frozen.
    OwnedProcess frozen;
    frozen.setProcessEnvironment(bus.programEnvironment());
    frozen.start(TLXCTL_PATH, {"listen", "--count", "1000000", "--seconds", "600"});
    ASSERT_TRUE(frozen.waitForStarted(10000));
    ASSERT_TRUE(waitFor([&] { return server->clientCount() == 1; }));
    ::kill(static_cast<pid_t>(frozen.processId()), SIGSTOP);
    BusClient reader(bus, "reader");
    reader.call("init", {""});

    std::vector<std::size_t> heap;
    long expected = 0;
    for (int vote = 0; vote < 8; ++vote) {
        openVote(reader);
        ASSERT_TRUE(w.baseLibrary.crowd(w.ids[0], 400, "1,2,3,4", 2000).ok);
        run(500);
        reader.call("SendCommand", {"ENDVOTE"});
        run(300);
        expected += 400;
        settle({&reader}, "VOTE " + std::to_string(vote));
        heap.push_back(mallinfo2().uordblks);
    }
    ::kill(static_cast<pid_t>(frozen.processId()), SIGKILL);
    frozen.waitForFinished(10000);
    const Display d = tally(reader, w.c());
    EXPECT_EQ(d.total, expected);
    // What the frozen client has not read waits in the bus daemon, not in the controller.
    EXPECT_LE(heap.back(), heap[2] + 512 * 1024) << "heap after votes 3 and 8: " << heap[2] << ", " << heap.back();
}

TEST_F(BusEvent, ABurstOfMalformedCallsAndCommandLinesChangesNothing) {
    BusClient bad(bus, "bad");
    QDBusConnection raw = bus.connect("raw");
    const std::string huge(1 << 20, 'A');
    const std::vector<QString> lines = {"", "=", "==", "votetype", "votetype=", "options=x", "options=-99999999999",
                                        "startfrom=1e999", "STARTVOTE STARTVOTE", "\x01\x02\x7f", qs(huge),
                                        "ENDVOTE=ENDVOTE",
                                        qs("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"), "[1;2],[3;4],"};
    for (int round = 0; round < 20; ++round) {
        for (const auto& l : lines) bad.post("SendCommand", {l});
        bad.post("SendCommand", {round});
        bad.post("SendCommand", {"a", "b"});
        bad.post("SlideShowBegin", {"x"});
        bad.post("NoSuchMethod", {});
        raw.asyncCall(QDBusMessage::createMethodCall(QLatin1String(bus::kService), "/tallix", "no.such.Interface", "X"));
        raw.asyncCall(QDBusMessage::createMethodCall(QLatin1String(bus::kService), "/elsewhere", QLatin1String(bus::kTallixInterface), "init"));
        run(100);
    }
    // Calls from one connection are handled in order: once this one is answered, the whole
    // burst has been.
    EXPECT_EQ(bad.call("CurrentSlide").type(), QDBusMessage::ReplyMessage);
    run(3000);
    EXPECT_EQ(fields(w.glo().InitialisedState == INIT_STATE_INITIALISED, w.glo().ShuttingDown,
                     w.baseLibrary.station(0).voteOpen, w.main().txt_command),
              "1|0|0|");
    // The log keeps no more than it shows, however long the line.
    EXPECT_LE(w.main().txt_log.size(), 50000u);
    for (std::size_t i = 0; i < w.main().txt_log.lineCount(); ++i) EXPECT_LE(w.main().txt_log.line(i).size(), 50000u);
    // And then a vote runs as ever.
    BusClient good(bus, "good");
    good.call("init", {""});
    openVote(good);
    ASSERT_TRUE(w.baseLibrary.crowd(w.ids[0], 50, "2", 500).ok);
    run(500);
    settle({&good}, "MARK");
    const Display d = tally(good, w.c());
    EXPECT_EQ(fields(d.total, d.doubled().empty()), "50|1");
}

TEST(ControllerProcess, ClosingThePresentationMidVoteShutsDownInOrderAndLeavesTheBus) {
    busApp();
    PrivateBus session, system;
    ASSERT_TRUE(session.ok()) << session.problem();
    ASSERT_TRUE(system.ok()) << system.problem();
    TestWorld folders;
    pptx::DeckPlan plan;
    plan.slides = {{"Question", "", {}, {}, {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}}}};
    const fs::path deck = folders.dir / "deck.pptx";
    pptx::buildDeck(plan).saveAs(deck);
    const fs::path sim = folders.dir / "sim.ini";
    writeFile(sim, "[presentation]\nrunning=1\ndeck=" + deck.string() +
                       "\n[bases]\ncount=1\n[base1]\ntype=KELVARIN COREHUB G2\nid=100100100100\n"
                       "firmware=2.00.01.1801.1545\nconnection=usb\nkeypads=1-40\nhidstart=300100001\n");
    writeFile(folders.appData() / "tallix" / "tlx.ini", "[DEBUG]\r\nLOGEVENTS TO FILE=1\r\n");
    folders.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}});

    QProcessEnvironment env = folderEnvironment(folders, session.programEnvironment());
    // A system bus is there too: the controller must not offer itself on it.
    env.insert("DBUS_SYSTEM_BUS_ADDRESS", system.programEnvironment().value("DBUS_SESSION_BUS_ADDRESS"));
    OwnedProcess ctrl;
    ctrl.setProcessEnvironment(env);
    ctrl.start(TLXCTRL_PATH, {"--headless", "--automation", "--sim", qs(sim.string())});
    ASSERT_TRUE(ctrl.waitForStarted(10000));
    QDBusConnection look = session.connect("look");
    ASSERT_TRUE(waitFor([&] { return nameOwned(look); }, 30.0)) << ctrl.readAllStandardError().toStdString();
    EXPECT_FALSE(nameOwned(system.connect("look")));
    EXPECT_EQ(callOn(system.connect("look"), "/tallix", QLatin1String(bus::kTallixInterface), "CurrentSlide").type(),
              QDBusMessage::ErrorMessage);

    BusClient display(session, "display");
    display.call("init", {""});
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "startfrom=1", "STARTVOTE"})
        display.call("SendCommand", {QString::fromLatin1(line)});
    QDBusConnection driver = session.connect("driver");
    // The keypad presses once the vote is open on its base.
    EXPECT_TRUE(waitFor([&] {
        return callOn(driver, "/sim/bases", "tallix_control.SimBases", "Press", {"100100100100", 3, "2"}).type() ==
               QDBusMessage::ReplyMessage;
    }));
    ASSERT_TRUE(waitFor([&] {
        for (const auto& l : display.heard)
            if (l.find("[3;2],") != std::string::npos) return true;
        return false;
    }));
    // The presentation program quits while the vote is open.
    driver.asyncCall(QDBusMessage::createMethodCall(QLatin1String(bus::kService), "/sim/show", "tallix_control.SimShow", "Close"));
    ASSERT_TRUE(waitFor([&] { return ctrl.state() == QProcess::NotRunning; }, 30.0));
    EXPECT_EQ(ctrl.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(ctrl.exitCode(), 0) << ctrl.readAllStandardError().toStdString();
    EXPECT_TRUE(waitFor([&] { return !nameOwned(look); }, 10.0));

    std::string trace;
    for (const auto& e : fs::directory_iterator(folders.temp()))
        if (e.path().filename().string().rfind("tlx_debug_", 0) == 0) trace += readFile(e.path());
    const std::vector<std::string> steps = {
        "[Controller] | [FullShutdown] | Function Start: glo.FullShutDownInitiated=False",
        "[Controller] | [FullShutdown] | controllerLoaded=True", "[tallix_controller] | [PowerPointClosed] | Function End",
        "[kpdriver_KELVARIN_Prioritizer_g2] | [Disconnect] |", "[frm_CloseController] | [tmr_CloseApp_Timer] | End"};
    std::size_t at = 0;
    for (const auto& s : steps) {
        const std::size_t found = trace.find(s, at);
        EXPECT_NE(found, std::string::npos) << "missing or out of order: " << s;
        if (found != std::string::npos) at = found;
    }
    EXPECT_NE(trace.find("VoteReceived Event - HID:300100003, VoteData:2"), std::string::npos);
}
