// The automation class on a real (private) session bus: the server in this process on a
// connection of its own, clients on theirs, the controller on virtual time.
#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QXmlStreamReader>

#include "app/BusTestSupport.h"
#include "core/MainForm.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// Drivers that let other calls run while a base opens, as a real base's reply wait does.
class WaitingDrivers : public NoBaseDrivers {
public:
    bool openBase(const PortEntry&) override {
        if (whileOpening) whileOpening();
        return true;
    }
    std::function<void()> whileOpening;
};

void oneBase(TestWorld& w) { w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}}); }

std::string errorOf(const QDBusMessage& m) {
    if (m.type() != QDBusMessage::ErrorMessage) return "no error";
    return m.errorName().toStdString() + ": " + m.errorMessage().toStdString();
}

QVariant answerOf(const QDBusMessage& m) {
    EXPECT_EQ(m.type(), QDBusMessage::ReplyMessage) << errorOf(m);
    return m.arguments().value(0);
}

class AutomationBus : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.ok()) << bus.problem(); }
    void serve() {
        server = std::make_unique<DbusAutomationServer>(w.c(), bus.connect(QStringLiteral("server")));
        ASSERT_EQ(server->start(), "");
    }
    // Raises a last event and waits until every client has heard it: a duplicate of any
    // earlier signal, sent before it on the same connection, would have arrived by then.
    void settle(std::vector<BusClient*> clients) {
        w.main().AddDataToTxQueue("END");
        w.scheduler.advance(50);
        for (BusClient* c : clients) ASSERT_TRUE(waitFor([&] { return c->heardLine("FromTLXCtrl \"END\""); }));
    }

    PrivateBus bus;
    TestWorld w;
    std::unique_ptr<DbusAutomationServer> server;
};

}  // namespace

TEST_F(AutomationBus, IntrospectionGivesTheMethodsInOrderWithTheirArgumentNames) {
    w.start();
    serve();
    BusClient a(bus, "a");
    const QDBusMessage xml = callOn(bus.connect("look"), QLatin1String(bus::kTallixPath),
                                    QStringLiteral("org.freedesktop.DBus.Introspectable"), QStringLiteral("Introspect"));
    QXmlStreamReader r(answerOf(xml).toString());
    std::vector<std::string> found;
    std::string member;
    bool ours = false;
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement() && r.name() == QLatin1String("interface"))
            ours = r.attributes().value("name") == QLatin1String("tallix_control.tallix");
        if (!ours || !r.isStartElement()) continue;
        if (r.name() == QLatin1String("method") || r.name() == QLatin1String("signal"))
            found.push_back(r.name().toString().toStdString() + " " + r.attributes().value("name").toString().toStdString());
        if (r.name() == QLatin1String("arg"))
            found.back() += " " + r.attributes().value("direction").toString().toStdString() + ":" +
                            r.attributes().value("type").toString().toStdString() + ":" +
                            r.attributes().value("name").toString().toStdString();
    }
    const std::vector<std::string> expected = {
        "method VoteLoaded",
        "method SlideShowBegin in:i:window",
        "method SlideShowEnd",
        "method SlideShowNextSlide",
        "method CurrentSlide out:i:",
        "method PowerPointClosed",
        "method init in:s:NewArgs",
        "method SendCommand in:s:sCommand out:b:",
        "signal FromTLXCtrl :s:sData",
        "signal Initialised",
        "signal FromCtrlFormBaseStationStartVoteCount :i:baseCount",
        "signal FromTLXCtrlBaseError :i:BaseIndex :s:errorMsg",
        "signal FromTLXCtrlBaseFeedback :i:BaseIndex :s:feedbackMsg",
        "signal VKeyPressed",
    };
    EXPECT_EQ(found, expected);
}

TEST_F(AutomationBus, CommandsAreRefusedUntilTheControllerHasInitialisedThenQueued) {
    oneBase(w);
    auto drivers = std::make_unique<WaitingDrivers>();
    WaitingDrivers& waiting = *drivers;
    w.c().drivers = std::move(drivers);
    serve();  // before the controller has started: the first client's object starts it
    BusClient a(bus, "a"), b(bus, "b");
    QVariant during;
    waiting.whileOpening = [&] { during = answerOf(b.call("SendCommand", {"STARTVOTE"})); };
    const QDBusMessage init = a.call("init", {""});
    EXPECT_EQ(init.type(), QDBusMessage::ReplyMessage) << errorOf(init);
    ASSERT_TRUE(during.isValid()) << "no call was served while initialising";
    EXPECT_EQ(fields(during.toBool(), w.glo().InitialisedState == INIT_STATE_INITIALISED, w.main().txt_command), "0|1|");

    EXPECT_TRUE(answerOf(b.call("SendCommand", {"STARTVOTE"})).toBool());
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"options=4"})).toBool());
    EXPECT_EQ(fields(w.main().txt_command, w.main().tmr_executeCommand.enabled(), server->clientCount()),
              "STARTVOTE\r\noptions=4|1|2");
}

TEST_F(AutomationBus, EveryClientHearsEachEventOnce) {
    w.start();
    serve();
    BusClient quiet(bus, "quiet"), a(bus, "a"), b(bus, "b");
    answerOf(quiet.call("CurrentSlide"));  // the first object, never subscribed
    a.call("init", {""});
    b.call("init", {""});

    MainForm& m = w.main();
    m.AddDataToTxQueue("[1;A],[2;B],");
    m.AddDataToTxQueue("VOTES=2");
    w.scheduler.advance(50);
    m.FromCtrlFormBaseStationStartVoteCount(3);
    m.FromCtrlFormBaseStationError(2, "Base \"2\" timed out");
    m.FromCtrlFormBaseStationFeedback(1, "Scanning 5%");
    m.VKeyPressed();
    settle({&a, &b, &quiet});
    const std::vector<std::string> expected = {
        "FromTLXCtrl \"[1;A],[2;B],\\r\\nVOTES=2\"",
        "FromCtrlFormBaseStationStartVoteCount 3",
        "FromTLXCtrlBaseError 2 \"Base \\\"2\\\" timed out\"",
        "FromTLXCtrlBaseFeedback 1 \"Scanning 5%\"",
        "VKeyPressed",
        "FromTLXCtrl \"END\"",
    };
    // Broadcast: every listener hears them.
    for (const auto* listener : {&a, &b, &quiet}) EXPECT_EQ(listener->heard, expected);
}

TEST_F(AutomationBus, AClientThatLeavesChangesNothingForTheOthers) {
    w.start();
    serve();
    BusClient b(bus, "b");
    {
        BusClient a(bus, "a");
        a.call("init", {""});  // the first: its object relays for everybody
        b.call("init", {""});
        EXPECT_TRUE(answerOf(a.call("SendCommand", {"STARTVOTE"})).toBool());
        w.glo().Voting = true;
        a.leave();
        ASSERT_TRUE(waitFor([&] { return server->clientCount() == 1; }));
    }
    // The leaver's object let go of the form.
    EXPECT_EQ(fields(w.main().FromCtrlForm.size(), w.glo().Voting, w.main().txt_command), "1|1|STARTVOTE");
    w.main().AddDataToTxQueue("[5;C],");
    w.scheduler.advance(50);
    settle({&b});
    // The leaver's command still ran, and the other client heard what followed.
    EXPECT_TRUE(w.glo().voteRunning);
    EXPECT_EQ(b.heard, (std::vector<std::string>{"FromCtrlFormBaseStationStartVoteCount 0", "FromTLXCtrl \"[5;C],\"",
                                                 "FromTLXCtrl \"END\""}));
    ASSERT_TRUE(answerOf(b.call("SendCommand", {"ENDVOTE"})).toBool());
    EXPECT_EQ(w.main().txt_command, "ENDVOTE");
}

TEST_F(AutomationBus, AClientMayLeaveWhileItsOwnCallIsStillRunning) {
    oneBase(w);
    auto drivers = std::make_unique<WaitingDrivers>();
    WaitingDrivers& waiting = *drivers;
    w.c().drivers = std::move(drivers);
    serve();
    auto a = std::make_unique<BusClient>(bus, "a");
    bool left = false;
    waiting.whileOpening = [&] {
        a->leave();
        left = waitFor([&] { return server->clientCount() == 0; });
    };
    a->post("init", {""});  // its object starts the controller; the client is gone before it is done
    ASSERT_TRUE(waitFor([&] { return w.glo().InitialisedState == INIT_STATE_INITIALISED; }));
    EXPECT_TRUE(left);
    // Its object went when the call returned, with its subscriptions.
    ASSERT_TRUE(waitFor([&] { return w.main().FromCtrlForm.size() == 0; }));
    BusClient b(bus, "b");
    EXPECT_TRUE(answerOf(b.call("SendCommand", {"STARTVOTE"})).toBool());
    EXPECT_EQ(server->clientCount(), 1u);
}

TEST_F(AutomationBus, ArgumentsArriveAndWrongOnesGetAnErrorAndTheServerCarriesOn) {
    w.start();
    serve();
    BusClient a(bus, "a");
    EXPECT_EQ(errorOf(a.call("SendCommand", {5})),
              "org.freedesktop.DBus.Error.InvalidArgs: SendCommand takes (s sCommand), not (i)");
    EXPECT_EQ(errorOf(a.call("SendCommand", {"A", "B"})),
              "org.freedesktop.DBus.Error.InvalidArgs: SendCommand takes (s sCommand), not (ss)");
    EXPECT_EQ(errorOf(a.call("SlideShowBegin", {"first"})),
              "org.freedesktop.DBus.Error.InvalidArgs: SlideShowBegin takes (i window), not (s)");
    EXPECT_EQ(errorOf(a.call("SendCommand")), "org.freedesktop.DBus.Error.InvalidArgs: SendCommand takes (s sCommand), not ()");
    EXPECT_EQ(errorOf(a.call("sendcommand", {"X"})),
              "org.freedesktop.DBus.Error.UnknownMethod: No method 'sendcommand' in interface 'tallix_control.tallix'");
    EXPECT_EQ(errorOf(callOn(bus.connect("x"), "/tallix", "tallix_control.other", "SendCommand", {"X"})),
              "org.freedesktop.DBus.Error.UnknownInterface: No interface 'tallix_control.other' at object path '/tallix'");
    EXPECT_EQ(fields(server->clientCount(), w.main().txt_command), "0|");  // refused calls create no object
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"STARTVOTE"})).toBool());
    EXPECT_EQ(w.main().txt_command, "STARTVOTE");
    a.call("init", {"C:\\decks\\show.pptx -NOPPT"});
    EXPECT_EQ(w.glo().commandLine, "C:\\decks\\show.pptx -NOPPT");
    const QVariant slide = answerOf(a.call("CurrentSlide"));  // no "tlxCurrentSlide" tag
    EXPECT_EQ(fields(slide.typeId() == QMetaType::Int, slide.toInt()), "1|0");
}

TEST_F(AutomationBus, ASecondControllerIsToldTheNameIsTakenAndDoesNotStart) {
    w.start();
    serve();
    TestWorld other;
    DbusAutomationServer second(other.c(), bus.connect("second"));
    const std::string who = second.servedElsewhere();
    EXPECT_NE(who.find("tallix_control.tallix is already served on the session bus by another controller (process "),
              std::string::npos)
        << who;
    EXPECT_EQ(second.start(), who);
    // Its own name is not somebody else's.
    EXPECT_EQ(fields(second.serving(), server->servedElsewhere()), "0|");

    // The real program says so and exits before it initialises anything.
    const ProgramRun run =
        runProgram(TLXCTRL_PATH, {"--headless", "--automation"}, folderEnvironment(other, bus.programEnvironment()));
    ASSERT_EQ(fields(run.finished, run.exitCode), "1|3");
    EXPECT_NE(run.err.find("already served on the session bus by another controller"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("not starting a second controller"), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("INITIAL LOAD TIME TAKEN"), std::string::npos) << run.out;

    BusClient a(bus, "a");  // the first carries on
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"STARTVOTE"})).toBool());
}

TEST_F(AutomationBus, SimulationObjectsRelayToTheSimulationAndReportItsFailures) {
    w.start();
    FakeSim sim;
    serve();
    QDBusConnection c = bus.connect("sim");
    auto s = [&](const QString& m, const QVariantList& a = {}) { return callOn(c, "/sim/show", "tallix_control.SimShow", m, a); };
    auto b = [&](const QString& m, const QVariantList& a = {}) { return callOn(c, "/sim/bases", "tallix_control.SimBases", m, a); };
    auto root = [&] { return answerOf(callOn(c, "/", "org.freedesktop.DBus.Introspectable", "Introspect")).toString(); };
    // Without a simulation serving there are no control objects.
    EXPECT_TRUE(root().contains("<node name=\"tallix\"/>")) << root().toStdString();
    EXPECT_FALSE(root().contains("sim"));
    EXPECT_EQ(s("Begin").errorName(), "org.freedesktop.DBus.Error.UnknownObject");
    server->serveSimulation(&sim, &sim);  // published at once while serving
    EXPECT_TRUE(root().contains("\"sim\""));
    for (const auto& m :
         {s("Open", {"/decks/vote.pptx"}), s("Begin"), s("GoTo", {3}), s("KeyDown", {86}), s("KeyUp", {86}), s("Next"),
          s("Previous"), s("End"), b("Press", {"100100100100", 5, "3"}), b("Crowd", {"200200200200", 40, "ABCD", 20}),
          b("MicRequest", {"100100100100", 7, true}), b("Text", {"100100100100", 8, "hello there"}),
          b("Fail", {"100100100100", "StartVote", 6}), b("Disconnect", {"200200200200"}), b("Reconnect", {"200200200200"})})
        EXPECT_EQ(m.type(), QDBusMessage::ReplyMessage) << errorOf(m);
    EXPECT_EQ(sim.calls, (std::vector<std::string>{
                             "Open /decks/vote.pptx", "Begin", "GoTo 3", "KeyDown 86", "KeyUp 86", "Next", "Previous", "End",
                             "Press 100100100100 5 3", "Crowd 200200200200 40 ABCD 20", "MicRequest 100100100100 7 true",
                             "Text 100100100100 8 hello there", "Fail 100100100100 StartVote 6", "Disconnect 200200200200",
                             "Reconnect 200200200200"}));
    EXPECT_EQ(answerOf(s("PresentationTag", {"tlxCurrentSlide"})).toString(), "tlxCurrentSlide=4");
    EXPECT_EQ(answerOf(s("SlideTag", {2, "TLXVOTE"})).toString(), "TLXVOTE@2");
    EXPECT_EQ(answerOf(s("SlideText", {2, "tlx_Question"})).toString(), "tlx_Question#2\r2nd");
    EXPECT_EQ(errorOf(s("SlideText", {10, "tlx_Question"})), "org.freedesktop.DBus.Error.Failed: no slide 10");
    EXPECT_EQ(b("Bases").signature(), "as");  // the lists and the base errors: the tlxctl test
    EXPECT_EQ(errorOf(s("GoTo", {0})), "org.freedesktop.DBus.Error.Failed: no slide 0");
    EXPECT_EQ(errorOf(s("Close")), "org.freedesktop.DBus.Error.Failed: Close failed: the program is not running");
    EXPECT_EQ(errorOf(s("GoTo", {"3"})), "org.freedesktop.DBus.Error.InvalidArgs: GoTo takes (i slide), not (s)");

    // Withdrawn with the simulation; the class stays.
    server->serveSimulation(nullptr, nullptr);
    EXPECT_EQ(s("Begin").errorName(), "org.freedesktop.DBus.Error.UnknownObject");
    EXPECT_FALSE(root().contains("sim"));
    BusClient a(bus, "a");
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"X"})).toBool());
}
