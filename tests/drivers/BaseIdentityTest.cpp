// Every base is known by its row in the port file, never by its slot in its driver (the bus
// test over mixed bases shows each base's offset and errors end to end).
#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "drivers/Black3Driver.h"
#include "presentation/VoteIntake.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const std::string kG2 = "100100100100";
const std::string kG1 = "100100100200";
const std::string kAbsent = "100100100900";

// A started controller with the real vote intake over simulated bases; every outgoing
// batch is kept.
struct MixedWorld {
    explicit MixedWorld(const std::vector<PortEntry>& rows) : drivers(w.useSimBases()) {
        w.addSimBase(kG2, 10, "KELVARIN COREHUB G2", 300100001);
        w.addSimBase(kG1, 10, "KELVARIN COREHUB G1", 300200001);
        w.baseLibrary.addBase(serialBase(5, 10, 501));
        w.writePortFile(rows);
        w.start();
        w.main().FromCtrlForm.connect([this](const std::string& s) { sent += s; });
        w.scheduler.advance(100);
        w.glo().voteType = "SINGLEDIGIT";
        w.glo().startFrom = 1;
        w.glo().optionCount = 4;
    }
    void startVotes() {
        if (auto* g2 = drivers.oKVv5(); g2 && g2->connectedCount()) g2->StartVote();
        if (auto* g1 = drivers.oKVv4(); g1 && g1->connectedCount()) g1->StartVote();
        drivers.v3()->StartVote("5");
        w.c().intake->resetForVote();
    }
    void press(const std::string& base, int keypad, const std::string& keys) {
        ASSERT_TRUE(w.baseLibrary.press(base, keypad, keys)) << base << " " << keypad;
        w.scheduler.advance(100);
    }
    TestWorld w;
    KelvarinDrivers& drivers;
    std::string sent;
};

}  // namespace

TEST(BaseIdentity, TheFirstConfiguredBaseAbsentMovesNobodyElse) {
    MixedWorld m({{kAbsent, "KELVARIN COREHUB G1", 1, 10, false, 0, 0},
                  {kG2, "KELVARIN COREHUB G2", 1, 10, false, 0, 100},
                  {"5", "KELVARIN BASE V3", 1, 10, false, 0, 200}});
    EXPECT_FALSE(m.w.dialogs.any("Unable to initialise"));  // other bases came up
    m.startVotes();
    m.press(kG2, 7, "2");
    m.press("5", 7, "3");
    EXPECT_EQ(m.sent, "[107;2],[207;3],");
    // The base the port file does not list (the G1 driver found it on its scan) has no keypads.
    ASSERT_EQ(m.drivers.oKVv4()->connectedCount(), 1);
    EXPECT_EQ(m.drivers.oKVv4()->baseText(1), "-1");
    m.drivers.oKVv4()->StartVote();
    m.press(kG1, 3, "1");
    EXPECT_EQ(fields(m.sent, m.w.logged(" - TX - NOT SENT: [3;1],"), m.w.logged(" - XX - MAX KPAD NUM: 0")),
              "[107;2],[207;3],|1|1");
}

TEST(BaseIdentity, MembersTakeTheIdentityOrTheSerialNumberNeverTheSlot) {
    MixedWorld m({{kG1, "KELVARIN COREHUB G1", 1, 10}, {kG2, "KELVARIN COREHUB G2", 1, 10}});
    auto* g2 = m.drivers.oKVv5();
    // Row 1 is the G2 base, in the G2 driver's slot 1; row 0 is the G1 base, not this driver's; there is no
    // row 2, and no base has that serial number.
    EXPECT_EQ(fields(g2->slotOf("1"), g2->slotOf("0"), g2->slotOf(kG2), g2->slotOf("100 100 100 100"), g2->slotOf("2")), "1|0|1|1|0");
    EXPECT_EQ(g2->GetRegistry("1", true), 0);
    EXPECT_TRUE(g2->logged("1 - GetRegistry = 0"));
    EXPECT_EQ(m.drivers.oKVv4()->GetRegistry("0", true), 0);
    // The registry read log names the bases by serial number, in the order they were read.
    EXPECT_EQ(fields(g2->registryReadLog(), m.drivers.oKVv4()->registryReadLog()), "|" + kG2 + "||" + kG1);
}

TEST(BaseIdentity, SerialNumbersCompareAsNumbers) {
    EXPECT_EQ(fields(sameSerialNumber("100 100 100 100", "100100100100"), sameSerialNumber("000 000 000 123", "123"),
                     sameSerialNumber("1001001001000", "100100100100"), sameSerialNumber("", ""),
                     sameSerialNumber("000", "0"), sameSerialNumber("abc", "abc")),
              "1|1|0|0|0|0");
    GlobalState g;
    g.bases = {{"3", "KELVARIN BASE V3"}, {"000 000 000 300", "KELVARIN COREHUB G2"}, {"3", "KELVARIN COREHUB"}};
    EXPECT_EQ(fields(corehubBaseIndex(g, "300"), corehubBaseIndex(g, "3"), serialPortBaseIndex(g, 3)), "1|2|0");
    EXPECT_EQ(fields(serialPortBaseIndex(g, 4) == kUnlistedBase, baseName(g, 0), baseName(g, 1), baseName(g, 7)), "1|3|000 000 300|7");
}
