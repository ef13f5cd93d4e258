// The road of a vote on a real (private) session bus. The controller, the simulated
// presentation program and the simulated bases serve in this process on virtual time; the
// add-in, the presenter's keyboard, the display program and the keypads are bus clients.
#include <gtest/gtest.h>

#include "app/BusTestSupport.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"
#include "platform/sim/basesim/SimBasesAdapter.h"

using namespace tlx;
using namespace tlx::test;

namespace {

int answerOfCurrentSlide(const QDBusMessage& m) { return m.arguments().value(0).toInt(); }

class RoadOnTheBus : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(bus.ok()) << bus.problem();
        w.useSimBases();
        w.addSimBase("100100100100", 40, "KELVARIN COREHUB G2", 300100001);
        w.addSimBase("200200200200", 40, "KELVARIN COREHUB G2", 300200001);
        w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0},
                         {"200200200200", "KELVARIN COREHUB G2", 1, 40, false, 0, 100}});
        pptx::DeckPlan plan;
        plan.tags = {{"ActiveKeypads", "3,5,7,103"}};
        pptx::SlidePlan welcome, vote, after;
        welcome.title = "Welcome";
        vote.title = "Colours";
        vote.tags = {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}};
        after.title = "Thank you";
        plan.slides = {welcome, vote, after, after};
        w.openDeck(plan);
        // The quick-vote macro starts the display program; here it only says so.
        w.presentation.displays["TLXVOTE"] = {"chartist", ""};
        w.presentation.launchDisplay = [this](const SimPresentationApp::Display&, const std::string&) {
            displayStarted = true;
            return true;
        };
        w.start();
        server = std::make_unique<DbusAutomationServer>(w.c(), bus.connect(QStringLiteral("server")));
        server->serveSimulation(&w.presentation, &simBases);
        ASSERT_EQ(server->start(), "");
    }
    QDBusMessage show(const char* method, const QVariantList& args = {}) {
        return callOn(control, QLatin1String(bus::kSimShowPath), QLatin1String(bus::kSimShowInterface),
                      QLatin1String(method), args);
    }
    QDBusMessage bases(const char* method, const QVariantList& args) {
        return callOn(control, QLatin1String(bus::kSimBasesPath), QLatin1String(bus::kSimBasesInterface),
                      QLatin1String(method), args);
    }
    // Lets the controller's time run, then the bus deliver what it sent.
    void run(int ms) {
        w.scheduler.advance(ms);
        QCoreApplication::processEvents();
    }
    // Every record the display program has heard, in order.
    std::string records(BusClient& c) {
        std::string all;
        for (const auto& line : c.heard)
            if (startsWith(line, "FromTLXCtrl \""))
                all += replaceAll(line.substr(13, line.size() - 14), "\\r\\n", "");
        return all;
    }
    bool waitRecords(BusClient& c, const std::string& expected) {
        return waitFor([&] {
            run(20);
            return records(c) == expected;
        }, 20.0);
    }

    PrivateBus bus;
    TestWorld w;
    SimBasesAdapter simBases{w.baseLibrary};
    std::unique_ptr<DbusAutomationServer> server;
    QDBusConnection control = bus.connect(QStringLiteral("control"));
    bool displayStarted = false;
};

}  // namespace

TEST_F(RoadOnTheBus, AVoteFromTheShowsBeginToItsEnd) {
    BusClient addIn(bus, "addin");
    BusClient display(bus, "display");
    ASSERT_EQ(addIn.call("init", {""}).type(), QDBusMessage::ReplyMessage);
    ASSERT_EQ(display.call("init", {""}).type(), QDBusMessage::ReplyMessage);

    // The add-in reports the show's begin through the class.
    ASSERT_EQ(show("Begin").type(), QDBusMessage::ReplyMessage);
    const auto window = static_cast<int>(w.presentation.show()->hwnd());
    ASSERT_EQ(addIn.call("SlideShowBegin", {window}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(w.glo().slideShowActive);
    show("Next");

    // V typed on the show: the quick vote starts the display program.
    show("KeyDown", {86});
    show("KeyUp", {86});
    ASSERT_TRUE(waitFor([&] {
        run(10);
        return displayStarted;
    }));
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"DoRapidpoll"}));
    EXPECT_EQ(answerOfCurrentSlide(display.call("CurrentSlide")), 2);

    // The display program configures the vote and opens it.
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "STARTVOTE"})
        ASSERT_TRUE(display.call("SendCommand", {QString::fromLatin1(line)}).arguments().value(0).toBool());
    ASSERT_TRUE(waitFor([&] {
        run(20);
        return w.baseLibrary.station(0).voteOpen && w.baseLibrary.station(1).voteOpen;
    }));

    // Keypads on both bases: one outside the active list, one pressing twice.
    auto press = [&](const char* base, int keypad, const char* keys) {
        EXPECT_EQ(bases("Press", {QString::fromLatin1(base), keypad, QString::fromLatin1(keys)}).type(),
                  QDBusMessage::ReplyMessage);
        run(30);
    };
    press("100100100100", 3, "2");
    press("200200200200", 9, "1");  // keypad 109
    press("100100100100", 5, "1");
    press("100100100100", 5, "1");  // the same press again: passed on once
    press("200200200200", 3, "4");  // keypad 103
    ASSERT_TRUE(waitRecords(display, "[3;2],[5;1],[103;4],")) << records(display);
    EXPECT_EQ(records(addIn), records(display));  // every client hears every batch
    EXPECT_TRUE(w.logged(" - TX - NOT SENT: [109;1],"));

    // ENDVOTE ends the vote on both bases.
    ASSERT_TRUE(display.call("SendCommand", {QStringLiteral("ENDVOTE")}).arguments().value(0).toBool());
    ASSERT_TRUE(waitFor([&] {
        run(20);
        return !w.baseLibrary.station(0).voteOpen && !w.baseLibrary.station(1).voteOpen;
    }));

    // A second vote, and the show moving on while it is open ends it.
    ASSERT_TRUE(display.call("SendCommand", {QStringLiteral("STARTVOTE")}).arguments().value(0).toBool());
    ASSERT_TRUE(waitFor([&] {
        run(20);
        return w.baseLibrary.station(0).voteOpen;
    }));
    show("Next");
    ASSERT_EQ(addIn.call("SlideShowNextSlide").type(), QDBusMessage::ReplyMessage);
    EXPECT_FALSE(w.baseLibrary.station(0).voteOpen);
    EXPECT_FALSE(w.baseLibrary.station(1).voteOpen);
    EXPECT_FALSE(w.glo().Voting);
}

TEST_F(RoadOnTheBus, SimulationCallsThatFailSayWhy) {
    const QDBusMessage r = show("GoTo", {99});
    EXPECT_EQ(r.type(), QDBusMessage::ErrorMessage);
    const QDBusMessage p = bases("Press", {QStringLiteral("999"), 1, QStringLiteral("1")});
    EXPECT_EQ(p.type(), QDBusMessage::ErrorMessage);
    EXPECT_NE(p.errorMessage().toStdString().find("999"), std::string::npos);
    const QDBusMessage list = callOn(control, QLatin1String(bus::kSimBasesPath), QLatin1String(bus::kSimBasesInterface),
                                     QStringLiteral("Bases"));
    EXPECT_EQ(list.arguments().value(0).toStringList(),
              (QStringList{"KELVARIN COREHUB G2;100100100100", "KELVARIN COREHUB G2;200200200200"}));
}
