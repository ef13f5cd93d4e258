// The automation class on a real (private) session bus: the server in this process on a
// connection of its own, clients on theirs, the controller on virtual time.
#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QXmlStreamReader>

#include "app/BusTestSupport.h"
#include "core/MainForm.h"
#include "core/PortFile.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"
#include "platform/sim/SimControls.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// A presentation carrying only tags, for the class's CurrentSlide.
class TaggedPresentation : public ppt::Presentation, public ppt::Tags {
public:
    std::string name() const override { return "deck.pptx"; }
    std::string path() const override { return "/decks"; }
    std::string fullName() const override { return "/decks/deck.pptx"; }
    int slideCount() const override { return 0; }
    ppt::Slide* slide(int) override { return nullptr; }
    ppt::Tags& tags() override { return *this; }
    ppt::SlideShowWindow* slideShowWindow() override { return nullptr; }
    int showType() const override { return 1; }
    void save() override {}
    std::string item(const std::string& n) const override { return n == "tlxCurrentSlide" ? current : ""; }
    void add(const std::string&, const std::string& v) override { current = v; }
    void remove(const std::string&) override { current.clear(); }
    int count() const override { return current.empty() ? 0 : 1; }
    std::string name(int) const override { return "tlxCurrentSlide"; }
    std::string value(int) const override { return current; }
    std::string current;
};

class TaggedApplication : public SimApplication {
public:
    ppt::Presentation* activePresentation() override { return &deck; }
    int presentationCount() const override { return 1; }
    TaggedPresentation deck;
};

// Drivers that let other calls run while a base opens, as a real base's reply wait does.
class WaitingDrivers : public NoBaseDrivers {
public:
    bool openBase(const PortEntry&) override {
        if (whileOpening) whileOpening();
        return true;
    }
    std::function<void()> whileOpening;
};

void oneBase(TestWorld& w) {
    PortFileData d;
    d.bases = {{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}};
    ASSERT_EQ(writePortFile(w.appData() / "tallix" / "port.tlc", d), PortFileWriteStatus::Ok);
}

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

    // Without a simulation serving there are no control objects.
    const QString root = answerOf(callOn(bus.connect("look"), "/", "org.freedesktop.DBus.Introspectable", "Introspect")).toString();
    EXPECT_TRUE(root.contains("<node name=\"tallix\"/>")) << root.toStdString();
    EXPECT_FALSE(root.contains("sim"));
    const QDBusMessage sim = callOn(bus.connect("look"), QLatin1String(bus::kSimShowPath),
                                    QLatin1String(bus::kSimShowInterface), "Begin");
    EXPECT_EQ(sim.errorName(), "org.freedesktop.DBus.Error.UnknownObject");
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
    EXPECT_FALSE(during.toBool());
    EXPECT_EQ(w.glo().InitialisedState, INIT_STATE_INITIALISED);
    EXPECT_EQ(w.main().txt_command, "");

    EXPECT_TRUE(answerOf(b.call("SendCommand", {"STARTVOTE"})).toBool());
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"options=4"})).toBool());
    EXPECT_EQ(w.main().txt_command, "STARTVOTE\r\noptions=4");
    EXPECT_TRUE(w.main().tmr_executeCommand.enabled());
    EXPECT_EQ(server->clientCount(), 2u);
}

TEST_F(AutomationBus, InitArgumentsAndTheCurrentSlide) {
    w.start();
    serve();
    BusClient a(bus, "a");
    a.call("init", {"C:\\decks\\show.pptx -NOPPT"});
    EXPECT_FALSE(w.glo().usePowerPoint);
    EXPECT_EQ(w.glo().commandLine, "C:\\decks\\show.pptx -NOPPT");
    a.call("init", {""});  // an empty text leaves the command line alone
    EXPECT_FALSE(w.glo().usePowerPoint);
    a.call("init", {"-show"});
    EXPECT_TRUE(w.glo().usePowerPoint);

    TaggedApplication app;
    w.glo().ppApp = &app;
    EXPECT_EQ(answerOf(a.call("CurrentSlide")).toInt(), 0);
    app.deck.current = "7";
    const QVariant slide = answerOf(a.call("CurrentSlide"));
    EXPECT_EQ(slide.typeId(), QMetaType::Int);
    EXPECT_EQ(slide.toInt(), 7);
    w.glo().ppApp = nullptr;
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
    EXPECT_EQ(a.heard, expected);
    EXPECT_EQ(b.heard, expected);
    EXPECT_EQ(quiet.heard, expected);  // broadcast: every listener hears them
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
    EXPECT_EQ(w.main().FromCtrlForm.size(), 1u);  // the leaver's object let go of the form
    EXPECT_TRUE(w.glo().Voting);
    EXPECT_EQ(w.main().txt_command, "STARTVOTE");
    w.main().AddDataToTxQueue("[5;C],");
    w.scheduler.advance(50);
    settle({&b});
    EXPECT_EQ(b.heard, (std::vector<std::string>{"FromTLXCtrl \"[5;C],\"", "FromTLXCtrl \"END\""}));
    EXPECT_TRUE(answerOf(b.call("SendCommand", {"ENDVOTE"})).toBool());
    EXPECT_EQ(w.main().txt_command, "STARTVOTE\r\nENDVOTE");
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

TEST_F(AutomationBus, WrongArgumentsGetAnErrorAndTheServerCarriesOn) {
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
    EXPECT_EQ(server->clientCount(), 0u);  // refused calls create no object
    EXPECT_EQ(w.main().txt_command, "");
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"STARTVOTE"})).toBool());
    EXPECT_EQ(w.main().txt_command, "STARTVOTE");
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
    EXPECT_FALSE(second.serving());
    EXPECT_EQ(server->servedElsewhere(), "");  // its own name is not somebody else's

    // The real program says so and exits before it initialises anything.
    QProcessEnvironment env = bus.programEnvironment();
    env.insert("APPDATA", QString::fromStdString(other.appData().string()));
    env.insert("PROGRAMDATA", QString::fromStdString(other.programData().string()));
    env.insert("TEMP", QString::fromStdString(other.temp().string()));
    const ProgramRun run = runProgram(TLXCTRL_PATH, {"--headless", "--automation"}, env);
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("already served on the session bus by another controller"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("not starting a second controller"), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("INITIAL LOAD TIME TAKEN"), std::string::npos) << run.out;

    BusClient a(bus, "a");  // the first carries on
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"STARTVOTE"})).toBool());
}

namespace {

class FakeShow : public SimShowControl {
public:
    SimError Open(const std::string& path) override { return did("Open " + path); }
    SimError Begin() override { return did("Begin"); }
    SimError Next() override { return did("Next"); }
    SimError Previous() override { return did("Previous"); }
    SimError GoTo(int slide) override {
        if (slide < 1) return "no slide " + std::to_string(slide);
        return did("GoTo " + std::to_string(slide));
    }
    SimError End() override { return did("End"); }
    SimError Close() override { throw std::runtime_error("the program is not running"); }
    SimError KeyDown(int vk) override { return did("KeyDown " + std::to_string(vk)); }
    SimError KeyUp(int vk) override { return did("KeyUp " + std::to_string(vk)); }
    SimResult<int> CurrentSlide() override { return {4, ""}; }
    SimResult<std::string> PresentationTag(const std::string& name) override {
        return {name == "tlxCurrentSlide" ? "4" : "", ""};
    }
    SimResult<std::string> SlideTag(int slide, const std::string& name) override {
        if (slide > 9) return {"", "no slide " + std::to_string(slide)};
        return {name + "@" + std::to_string(slide), ""};
    }
    std::vector<std::string> calls;

private:
    SimError did(std::string what) {
        calls.push_back(std::move(what));
        return {};
    }
};

class FakeBases : public SimBasesControl {
public:
    SimError Press(const std::string& base, int keypad, const std::string& keys) override {
        return did(base, "Press " + base + " " + std::to_string(keypad) + " " + keys);
    }
    SimError Crowd(const std::string& base, int keypads, const std::string& answers, int perSecond) override {
        return did(base, "Crowd " + base + " " + std::to_string(keypads) + " " + answers + " " + std::to_string(perSecond));
    }
    SimError MicRequest(const std::string& base, int keypad, bool withdraw) override {
        return did(base, "MicRequest " + base + " " + std::to_string(keypad) + (withdraw ? " withdraw" : " ask"));
    }
    SimError Text(const std::string& base, int keypad, const std::string& text) override {
        return did(base, "Text " + base + " " + std::to_string(keypad) + " " + text);
    }
    SimError Fail(const std::string& base, const std::string& operation, int code) override {
        return did(base, "Fail " + base + " " + operation + " " + std::to_string(code));
    }
    SimError Disconnect(const std::string& base) override { return did(base, "Disconnect " + base); }
    SimError Reconnect(const std::string& base) override { return did(base, "Reconnect " + base); }
    SimResult<std::vector<std::string>> Bases() override {
        return {{"KELVARIN COREHUB G2;100100100100", "KELVARIN COREHUB G1;200200200200"}, ""};
    }
    std::vector<std::string> calls;

private:
    SimError did(const std::string& base, std::string what) {
        if (base != "100100100100" && base != "200200200200") return "no simulated base " + base;
        calls.push_back(std::move(what));
        return {};
    }
};

QDBusMessage simCall(PrivateBus& bus, const char* path, const char* iface, const QString& method,
                     const QVariantList& args = {}) {
    return callOn(bus.connect("sim"), QLatin1String(path), QLatin1String(iface), method, args);
}

}  // namespace

TEST_F(AutomationBus, SimulationObjectsRelayToTheSimulationAndReportItsFailures) {
    w.start();
    FakeShow show;
    FakeBases bases;
    serve();
    server->serveSimulation(&show, &bases);  // published at once while serving
    auto s = [&](const QString& m, const QVariantList& a = {}) {
        return simCall(bus, bus::kSimShowPath, bus::kSimShowInterface, m, a);
    };
    auto b = [&](const QString& m, const QVariantList& a = {}) {
        return simCall(bus, bus::kSimBasesPath, bus::kSimBasesInterface, m, a);
    };
    for (const auto& m : {s("Open", {"/decks/vote.pptx"}), s("Begin"), s("GoTo", {3}), s("KeyDown", {86}),
                          s("KeyUp", {86}), s("Next"), s("Previous"), s("End")})
        EXPECT_EQ(m.type(), QDBusMessage::ReplyMessage) << errorOf(m);
    EXPECT_EQ(show.calls, (std::vector<std::string>{"Open /decks/vote.pptx", "Begin", "GoTo 3", "KeyDown 86", "KeyUp 86",
                                                    "Next", "Previous", "End"}));
    EXPECT_EQ(answerOf(s("CurrentSlide")).toInt(), 4);
    EXPECT_EQ(answerOf(s("PresentationTag", {"tlxCurrentSlide"})).toString(), "4");
    EXPECT_EQ(answerOf(s("SlideTag", {2, "TLXVOTE"})).toString(), "TLXVOTE@2");
    EXPECT_EQ(errorOf(s("SlideTag", {12, "TLXVOTE"})), "org.freedesktop.DBus.Error.Failed: no slide 12");
    EXPECT_EQ(errorOf(s("GoTo", {0})), "org.freedesktop.DBus.Error.Failed: no slide 0");
    EXPECT_EQ(errorOf(s("Close")), "org.freedesktop.DBus.Error.Failed: Close failed: the program is not running");
    EXPECT_EQ(errorOf(s("GoTo", {"3"})), "org.freedesktop.DBus.Error.InvalidArgs: GoTo takes (i slide), not (s)");

    for (const auto& m : {b("Press", {"100100100100", 5, "3"}), b("Crowd", {"200200200200", 40, "ABCD", 20}),
                          b("MicRequest", {"100100100100", 7, true}), b("Text", {"100100100100", 8, "hello there"}),
                          b("Fail", {"100100100100", "StartVote", 6}), b("Disconnect", {"200200200200"}),
                          b("Reconnect", {"200200200200"})})
        EXPECT_EQ(m.type(), QDBusMessage::ReplyMessage) << errorOf(m);
    EXPECT_EQ(bases.calls, (std::vector<std::string>{"Press 100100100100 5 3", "Crowd 200200200200 40 ABCD 20",
                                                     "MicRequest 100100100100 7 withdraw", "Text 100100100100 8 hello there",
                                                     "Fail 100100100100 StartVote 6", "Disconnect 200200200200",
                                                     "Reconnect 200200200200"}));
    EXPECT_EQ(errorOf(b("Press", {"999", 1, "A"})), "org.freedesktop.DBus.Error.Failed: no simulated base 999");
    const QDBusMessage list = b("Bases");
    EXPECT_EQ(list.signature(), "as");
    EXPECT_EQ(answerOf(list).toStringList(),
              (QStringList{"KELVARIN COREHUB G2;100100100100", "KELVARIN COREHUB G1;200200200200"}));

    // Withdrawn with the simulation; the class stays.
    server->serveSimulation(nullptr, nullptr);
    EXPECT_EQ(s("Begin").errorName(), "org.freedesktop.DBus.Error.UnknownObject");
    BusClient a(bus, "a");
    EXPECT_TRUE(answerOf(a.call("SendCommand", {"X"})).toBool());
}
