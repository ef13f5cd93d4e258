// Bases of all three generations at once, and the first configured base missing, as a display
// program on the bus sees them: every keypad number is its own base's, the abstain key arrives
// as -2, base errors name the base by its row in the port file, and the keypads' screens can be
// read through /sim/bases.
#include "drivers/KelvarinDrivers.h"
#include "support/AppSimBus.h"
#include "support/DriverTestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const char* kG2 = "100100100100";
const char* kG1 = "100100100200";

class MixedBasesOnTheBus : public SimBusTest {
protected:
    void SetUp() override {
        w.useSimBases();
        w.addSimBase(kG2, 10, "KELVARIN COREHUB G2", 300100001);
        w.addSimBase(kG1, 10, "KELVARIN COREHUB G1", 300200001);
        w.baseLibrary.addBase(serialBase(5, 10, 501));
        // Row 0 is a base that is not plugged in.
        w.writePortFile({{"100100100900", "KELVARIN COREHUB G1", 1, 10, false, 0, 0},
                         {kG2, "KELVARIN COREHUB G2", 1, 10, false, 0, 100},
                         {kG1, "KELVARIN COREHUB G1", 1, 10, false, 0, 200},
                         {"5", "KELVARIN BASE V3", 1, 10, false, 0, 300}});
        serve();
    }
    bool heard(BusClient& c, const std::string& line) {
        return until([&] { return c.heardLine(line); });
    }
    std::string screen(const char* base, int keypad) {
        return bases("Screen", {QString::fromLatin1(base), keypad}).arguments().value(0).toString().toStdString();
    }
};

}  // namespace

TEST_F(MixedBasesOnTheBus, EachKeypadNumberAndEachBaseErrorIsItsOwnBasesAndAbstentionsArriveAsMinusTwo) {
    BusClient display(bus, "display");
    ASSERT_EQ(display.call("init", {""}).type(), QDBusMessage::ReplyMessage);
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "abstain=4", "questiontextshort=Pick one", "STARTVOTE"})
        ASSERT_TRUE(send(display, line));
    ASSERT_TRUE(until([&] { return voteOpen(0) && voteOpen(1) && voteOpen(2); }));
    press(kG2, 5, "1");
    press(kG1, 5, "2");
    press("5", 5, "3");
    press(kG1, 10, "4");
    ASSERT_TRUE(until([&] { return records(display) == "[105;1],[205;2],[305;3],[210;-2],"; }, 500))
        << records(display);
    EXPECT_EQ(screen(kG2, 5), "Vote Submitted|||   Press 10|  to  revote");
    EXPECT_EQ(screen(kG2, 6), "UNUSED");  // the default prevote text, shown as it stands for 3 s
    run(3100);
    EXPECT_EQ(fields(screen(kG2, 6), screen(kG2, 5)), "Pick one|Pick one");
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

    ASSERT_TRUE(send(display, "ENDVOTE"));
    ASSERT_TRUE(until([&] { return !voteOpen(0) && !voteOpen(1); }));
    EXPECT_EQ(screen(kG2, 5), "   Vote Ended");
}
