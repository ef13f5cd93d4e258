#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "support/TestPaths.h"

using namespace tlx;
using namespace tlx::test;

TEST(SimSetup, TheDemoHasAUsbBaseHereAndANetworkBaseOnLoopbackForTheEmulator) {
    const std::filesystem::path sourceDir = tlx::test::sourceDir();
    VirtualScheduler s;
    SimBaseLibrary lib(s);
    ASSERT_EQ(loadSimBases(lib, (sourceDir / "examples" / "sim" / "demo.ini").string()), 1);
    EXPECT_EQ(lib.bases(), (std::vector<std::string>{"KELVARIN COREHUB G2;100100100100"}));
    SimBaseStation& b1 = lib.station(0);
    EXPECT_EQ(b1.keypadByHid("100 300 199 901")->kind, DeviceKind::Presenter);
    SimBaseLibrary net(s);
    ASSERT_EQ(loadSimBases(net, (sourceDir / "examples" / "sim" / "demo-network.ini").string()), 1);
    SimBaseStation& b2 = net.station(0);
    // Its keypads follow the first base's.
    EXPECT_EQ(fields(b2.setup.connection == SimConnection::Ethernet, b2.setup.address, b2.keypadBySid(80)->hid,
                     b2.keypadBySid(1) == nullptr),
              "1|127.0.0.1|100300200080|1");
}

TEST(SimSetup, OddEntriesAreReadSensiblyOrSkipped) {
    TempDir dir;
    writeFile(dir / "sim.ini",
              "[bases]\r\ncount=3\r\n"
              "[base1]\r\ntype=kelvarin base v3\r\nport=4\r\nkeypads=1-3,x,5-4,7\r\n"
              "[base2]\r\nconnection=ethernet\r\naddress=::1\r\nregistry=500;1|bad|501;2;3|502;x|503;4\r\n"
              "[base3]\r\n");
    VirtualScheduler s;
    SimBaseLibrary lib(s);
    ASSERT_EQ(loadSimBases(lib, (dir / "sim.ini").string()), 3);
    EXPECT_EQ(fields(lib.bases()[0], lib.station(0).setup.keypads.size()), "KELVARIN BASE V3;4|4");
    EXPECT_EQ(fields(lib.station(1).registryText(), lib.station(1).setup.address), "500;1|503;4|::1");
    EXPECT_EQ(fields(lib.bases()[2], lib.station(2).setup.keypads.size()), "KELVARIN COREHUB G2;100100100102|20");
    EXPECT_EQ(parseKeypadList("1-3, 9 ,4096,0,-2,3-1"), (std::vector<int>{1, 2, 3, 9}));

    writeFile(dir / "none.ini", "[bases]\r\ncount=lots\r\n");
    for (const char* file : {"none.ini", "missing.ini"}) EXPECT_EQ(loadSimBases(lib, (dir / file).string()), 0) << file;
}

TEST(SimFaults, EventsArriveAfterTheOperationNotInsideIt) {
    DriverWorld d;
    d.singleDigit();
    d.g2().StartVote();
    d.sim().press("100100100100", 1, "1");
    EXPECT_TRUE(d.intake.records.empty());
    d.w.scheduler.advance(d.sim().eventDelayMs);
    EXPECT_EQ(d.intake.records.size(), 1u);
    // A driver that goes away with events still in flight is not called.
    d.sim().press("100100100100", 2, "1");
    d.drivers.closePorts();
    d.settle();
    EXPECT_EQ(d.intake.records.size(), 1u);
}
