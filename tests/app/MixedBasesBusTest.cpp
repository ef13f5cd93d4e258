// Bases of all three generations at once, and the first configured base missing, as a display
// program on the bus sees them: every keypad number is its own base's, the abstain key arrives
// as -2, base errors name the base by its row in the port file, and the keypads' screens can be
// read through /sim/bases.
#include <gtest/gtest.h>

#include "app/BusTestSupport.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"
#include "platform/sim/basesim/SimBasesAdapter.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const char* kG2 = "100100100100";
const char* kG1 = "100100100200";

class MixedBasesOnTheBus : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(bus.ok()) << bus.problem();
        w.useSimBases();
        w.addSimBase(kG2, 10, "KELVARIN COREHUB G2", 300100001);
        w.addSimBase(kG1, 10, "KELVARIN COREHUB G1", 300200001);
        SimBaseSpec v3;
        v3.type = "KELVARIN BASE V3";
        v3.connection = SimConnection::Serial;
        v3.serialPort = 5;
        for (int k = 1; k <= 10; ++k) {
            SimKeypad kp;
            kp.hid = std::to_string(500 + k);
            kp.sid = k;
            v3.keypads.push_back(kp);
        }
        w.baseLibrary.addBase(v3);
        // Row 0 is a base that is not plugged in.
        w.writePortFile({{"100100100900", "KELVARIN COREHUB G1", 1, 10, false, 0, 0},
                         {kG2, "KELVARIN COREHUB G2", 1, 10, false, 0, 100},
                         {kG1, "KELVARIN COREHUB G1", 1, 10, false, 0, 200},
                         {"5", "KELVARIN BASE V3", 1, 10, false, 0, 300}});
        w.start();
        server = std::make_unique<DbusAutomationServer>(w.c(), bus.connect(QStringLiteral("server")));
        server->serveSimulation(nullptr, &simBases);
        ASSERT_EQ(server->start(), "");
    }
    QDBusMessage bases(const char* method, const QVariantList& args) {
        return callOn(control, QLatin1String(bus::kSimBasesPath), QLatin1String(bus::kSimBasesInterface),
                      QLatin1String(method), args);
    }
    void run(int ms) {
        w.scheduler.advance(ms);
        QCoreApplication::processEvents();
    }
    std::string records(BusClient& c) {
        std::string all;
        for (const auto& line : c.heard)
            if (startsWith(line, "FromTLXCtrl \"")) all += replaceAll(line.substr(13, line.size() - 14), "\\r\\n", "");
        return all;
    }
    bool heard(BusClient& c, const std::string& line) {
        return waitFor([&] {
            run(20);
            return c.heardLine(line);
        });
    }
    std::string screen(const char* base, int keypad) {
        return bases("Screen", {QString::fromLatin1(base), keypad}).arguments().value(0).toString().toStdString();
    }

    PrivateBus bus;
    TestWorld w;
    SimBasesAdapter simBases{w.baseLibrary};
    std::unique_ptr<DbusAutomationServer> server;
    QDBusConnection control = bus.connect(QStringLiteral("control"));
};

}  // namespace

TEST_F(MixedBasesOnTheBus, EachKeypadNumberAndEachBaseErrorIsItsOwnBasesAndAbstentionsArriveAsMinusTwo) {
    BusClient display(bus, "display");
    ASSERT_EQ(display.call("init", {""}).type(), QDBusMessage::ReplyMessage);
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "abstain=4", "questiontextshort=Pick one", "STARTVOTE"})
        ASSERT_TRUE(display.call("SendCommand", {QString::fromLatin1(line)}).arguments().value(0).toBool());
    ASSERT_TRUE(waitFor([&] {
        run(20);
        return w.baseLibrary.station(0).voteOpen && w.baseLibrary.station(1).voteOpen &&
               w.baseLibrary.station(2).voteOpen;
    }));
    for (auto [base, keypad, keys] : {std::tuple{kG2, 5, "1"}, std::tuple{kG1, 5, "2"}, std::tuple{"5", 5, "3"},
                                      std::tuple{kG1, 10, "4"}}) {
        EXPECT_EQ(bases("Press", {QString::fromLatin1(base), keypad, QString::fromLatin1(keys)}).type(),
                  QDBusMessage::ReplyMessage);
        run(30);
    }
    ASSERT_TRUE(waitFor([&] {
        run(20);
        return records(display) == "[105;1],[205;2],[305;3],[210;-2],";
    })) << records(display);
    EXPECT_EQ(screen(kG2, 5), "Vote Submitted|||   Press 10|  to  revote");
    EXPECT_EQ(screen(kG2, 6), "UNUSED");  // the default prevote text, shown as it stands for 3 s
    run(3100);
    EXPECT_EQ(screen(kG2, 6), "Pick one");
    EXPECT_EQ(screen(kG2, 5), "Pick one");
    const QDBusMessage unknown = bases("Screen", {QStringLiteral("100100100200"), 77});
    EXPECT_EQ(unknown.type(), QDBusMessage::ErrorMessage);
    EXPECT_NE(unknown.errorMessage().toStdString().find("Keypad 77 is not registered"), std::string::npos);

    // The G1 base loses its link and gets it back: the display hears which row it is.
    ASSERT_EQ(bases("Disconnect", {QString::fromLatin1(kG1)}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(heard(display, "FromTLXCtrlBaseError 2 \"Base Station 100 100 100 200\\r\\nBase station "
                               "disconnected - attempting auto reconnect\""));
    EXPECT_EQ(screen(kG1, 3), "Base Signal Lost||Attempting to|reconnect");
    ASSERT_EQ(bases("Reconnect", {QString::fromLatin1(kG1)}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(
        heard(display, "FromTLXCtrlBaseFeedback 2 \"Base Station 100 100 100 200\\r\\nAuto reconnect success\""));

    ASSERT_TRUE(display.call("SendCommand", {QStringLiteral("ENDVOTE")}).arguments().value(0).toBool());
    ASSERT_TRUE(waitFor([&] {
        run(20);
        return !w.baseLibrary.station(0).voteOpen && !w.baseLibrary.station(1).voteOpen;
    }));
    EXPECT_EQ(screen(kG2, 5), "   Vote Ended");
}
