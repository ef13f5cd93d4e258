#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "ports/AppError.h"

using namespace tlx;
using namespace tlx::test;

namespace {
int countLogged(const KelvarinPrioritizerDriver& d, const std::string& part) {
    int n = 0;
    for (std::size_t i = 0; i < d.txtDebug.lineCount(); ++i) n += contains(d.txtDebug.line(i), part) ? 1 : 0;
    return n;
}

}  // namespace

TEST(ListDevices, EachDriverListsOnceHoweverManyOfItsBasesAreConfigured) {
    DriverWorld d({"100100100100", "100100100200", "100100100300"});
    EXPECT_EQ(countLogged(d.g2(), "ListDevices: OverallTime"), 1);
    ASSERT_EQ(d.g2().connectedCount(), 3);
    const auto& r = d.g2().baseTable()[2];
    EXPECT_EQ(fields(r.connected, r.identifier, r.typeName, r.highestKeypad), "1|100100100300|Kelvarin Corehub g2|40");
    EXPECT_EQ(fields(d.calls("RadioEnable"), d.station(2).radioOn,
                     d.g2().logged("2 - Corehub g2: ListDevices: GetSessionConfig - 0")),
              "1|1|1|1|1");
}

TEST(ListDevices, NetworkBasesNeedBothFieldsAndTheEthernetSettingAndMalformedEntriesAreSkipped) {
    DriverWorld d;
    SimBaseSpec net = usbBase("100100100500", "2.00.01.1801.1545");
    net.connection = SimConnection::Ethernet;
    net.address = "127.0.0.1";
    d.sim().addBase(net);
    net.id = "100100100600";
    net.address = "";  // listed as "100100100600;" with nothing to connect to
    d.sim().addBase(net);

    d.g2().ListDevices();
    EXPECT_EQ(d.g2().baseTable().size(), 1u);
    d.glo().options.set(section::kCoreHubOptions, "ETHERNET ENABLED", "1");
    d.g2().ListDevices();
    ASSERT_EQ(d.g2().baseTable().size(), 2u);
    const auto& r = d.g2().baseTable()[1];
    EXPECT_EQ(fields(r.isEthernet, r.identifier, r.address, d.g2().logged(" - Corehub g2: ListDevices: GetEthernetDevices - 0")),
              "1|100100100500|127.0.0.1|1");

    d.sim().addListEntries("| |abc|;|100100100999", "100100100700|;|100100100800;|x;10.9.9.9;extra");
    EXPECT_EQ(d.g2().ListDevices(), 0);
    ASSERT_EQ(d.g2().baseTable().size(), 2u);
    EXPECT_EQ(fields(d.g2().baseTable()[0].identifier, d.g2().baseTable()[1].identifier), "100100100100|100100100500");
}

TEST(ListDevices, FirmwareDecidesWhichDriverTakesABase) {
    TestWorld w;
    auto& drivers = w.useSimBases();
    w.baseLibrary.addBase(usbBase("100100100100", "2.00.01.1801.1545"));
    w.baseLibrary.addBase(usbBase("100100100200", "1.01.00.1607.1819"));
    w.baseLibrary.addBase(usbBase("100100100300", "1.00.05.0101.0001"));
    w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 5},
                     {"100100100200", "KELVARIN COREHUB G1", 1, 5},
                     {"100100100300", "KELVARIN COREHUB G1", 1, 5}});
    w.start();
    auto* g1 = drivers.oKVv4();
    ASSERT_EQ(fields(drivers.oKVv5()->baseTable().size(), g1->baseTable().size()), "1|2");
    // The third is too old, reported, and still set up.
    EXPECT_EQ(fields(g1->baseTable()[0].typeName, g1->baseTable()[1].connected, g1->logged(" - Corehub: ListDevices: OverallTime")),
              "Kelvarin Corehub g1|1|1");
    ASSERT_FALSE(w.tray.balloons.empty());
    EXPECT_EQ(w.tray.balloons.back().text,
              "Kelvarin Corehub Error\r\nBase station 100 100 100 300 is incompatible with this version of tallix and must be "
              "upgraded\r\nYour Version: 1.00.05.0101.0001\r\nMinimum Allowed Version: 1.01.00");
    EXPECT_EQ(fields(w.tray.balloons.back().iconKind, w.dialogs.any("Unable to initialise")), "3|0");
}

TEST(ListDevices, KeypadLimitsCarryOverByIdentifier) {
    TestWorld w;
    auto& drivers = w.useSimBases();
    // Below 1.01.00.1607.1819 the base does not report its limits itself.
    w.baseLibrary.addBase(usbBase("100100100200", "1.01.00.1506.0000", 40));
    w.writePortFile({{"100100100200", "KELVARIN COREHUB G1", 1, 40}});
    w.start();
    auto* g1 = drivers.oKVv4();
    ASSERT_EQ(g1->baseTable().size(), 1u);
    const auto limits = [&] {
        return fields(g1->baseTable()[0].lowestKeypad, g1->baseTable()[0].highestKeypad, g1->localRegistry(0).size());
    };
    EXPECT_EQ(limits(), "1|40|40");
    g1->PauseAutoUpdateOfSessionConfig(true);
    w.baseLibrary.station(0).setup.keypads.resize(3);
    g1->ListDevices();  // a re-scan keeps the registry copy it has read
    EXPECT_EQ(limits(), "1|40|40");
    g1->ResetBaseGetRegistryLog();
    g1->ListDevices();
    EXPECT_EQ(limits(), "1|40|3");
}

TEST(ListDevices, SkipsWhatCannotBeConnectedAndStopsWhenShuttingDown) {
    DriverWorld d({"100100100100", "100100100200"});
    d.sim().fail("100100100100", "Connect", 3);
    d.g2().ListDevices();
    ASSERT_EQ(d.g2().baseTable().size(), 1u);
    EXPECT_EQ(d.g2().baseTable()[0].identifier, "100100100200");

    for (int i = 3; i <= 11; ++i) d.sim().addBase(usbBase("1001001003" + std::to_string(10 + i), "2.00.01.1801.1545"));
    d.g2().ListDevices();
    EXPECT_EQ(fields(d.g2().baseTable().size(), d.g2().logged("more than 10 bases")), "10|1");

    const int radio = d.station(1).callCount("RadioEnable");
    d.glo().ShuttingDown = true;
    d.g2().ListDevices();
    EXPECT_EQ(d.station(1).callCount("RadioEnable"), radio);
}

TEST(KelvarinDrivers, SetUpScanClosePortsAndReopen) {
    DriverWorld d({"100100100100", "100100100200"});
    d.sim().addBase(serialBase(3, 0));
    const auto found = d.drivers.scanForBases();
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(fields(found[0].baseType, found[1].port, found[2].baseType, found[2].port),
              "KELVARIN COREHUB G2|100100100200|KELVARIN BASE V3|3");
    EXPECT_EQ(d.sim().bases(), (std::vector<std::string>{"KELVARIN COREHUB G2;100100100100",
                                                         "KELVARIN COREHUB G2;100100100200",
                                                         "KELVARIN BASE V3;3"}));

    d.drivers.closePorts();
    EXPECT_EQ(fields(d.g2().connectedCount(), d.station(0).attachedObjects()), "0|0");
    EXPECT_TRUE(d.drivers.openBase({"100100100200", "KELVARIN COREHUB G2", 1, 40}));
    EXPECT_EQ(d.g2().connectedCount(), 2);
    EXPECT_TRUE(d.drivers.openBase({"3", "KELVARIN BASE V3", 1, 40}));
    for (const PortEntry& missing : {PortEntry{"4", "KELVARIN BASE V3", 1, 40}, PortEntry{"1", "SOME SERIAL BASE", 1, 40},
                                     PortEntry{"100100100999", "KELVARIN COREHUB G2", 1, 40}})
        EXPECT_FALSE(d.drivers.openBase(missing)) << missing.port;
    EXPECT_EQ(fields(d.drivers.corehubG2() == &d.g2(), d.drivers.black3() != nullptr), "1|1");
}

namespace {
// A library whose component cannot be created.
struct MissingLibrary : BaseLibrary {
    std::unique_ptr<KelvarinBase> createBase(LibraryGeneration) override {
        throw AppError(429, "ActiveX component can't create object");
    }
    std::unique_ptr<KelvarinVPanel> createVPanel() override { return nullptr; }
};
}  // namespace

TEST(ListDevices, ALibraryThatThrowsIsLoggedNotRaised) {
    MissingLibrary lib;
    TestWorld w;
    auto drivers = std::make_unique<KelvarinDrivers>(w.c(), lib);
    KelvarinDrivers& d = *drivers;
    w.c().drivers = std::move(drivers);
    w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40}, {"3", "KELVARIN BASE V3", 1, 10}});
    w.start();
    EXPECT_EQ(fields(w.glo().InitialisedState == INIT_STATE_INITIALISED,
                     d.oKVv5()->logged(" - ListDevices FAILED - 429: ActiveX component can't create object"),
                     w.dialogs.any("Unable to initialise Kelvarin Base 100 100 100 100")),
              "1|1|1");
    EXPECT_EQ(d.oKVv5()->ListDevices(), 2);
    EXPECT_TRUE(d.scanForBases().empty());
}

TEST(ListDevices, ARescanKeepsTheRegistryReadLogAndReadsOnlyNewBases) {
    DriverWorld d({"100100100100"});
    EXPECT_EQ(d.g2().registryReadLog(), "|100100100100");
    const int reads = d.station(0).callCount("GetRegistry");
    // Connected bases, reads on each station since start-up, the read log, the copies' sizes.
    const auto state = [&] {
        const auto& g2 = d.g2();
        return fields(g2.connectedCount(), d.station(0).callCount("GetRegistry") - reads,
                      d.station(1).callCount("GetRegistry"), g2.registryReadLog(), g2.localRegistry(0).size(),
                      g2.connectedCount() > 1 ? g2.localRegistry(1).size() : 0u);
    };
    d.sim().addBase(usbBase("100100100200", "2.00.01.1801.1545"));
    d.g2().ListDevices();
    EXPECT_EQ(state(), "2|0|1||100100100100|100100100200|40|5");  // read before: not again
    EXPECT_EQ(d.g2().GetHIDFromSID(7), "300100007");
    // A base found in another slot keeps its copy; one not found is read again when it is back.
    d.sim().fail("100100100100", "Connect", 3);
    d.g2().ListDevices();
    ASSERT_EQ(state(), "1|0|1||100100100200|5|0");
    EXPECT_EQ(d.g2().baseTable()[0].identifier, "100100100200");
    d.g2().ListDevices();
    EXPECT_EQ(state(), "2|1|1||100100100200|100100100100|40|5");
}

TEST(ListDevices, BasesNotFoundAreNamedByPortOrSerialNumberAndLeaveAnEmptyTable) {
    TestWorld w;
    auto& drivers = w.useSimBases();
    w.writePortFile({{"5", "KELVARIN BASE V3", 1, 10}, {"100100100100", "KELVARIN COREHUB G2", 1, 10}});
    w.start();
    EXPECT_EQ(fields(drivers.oKVv5()->baseTable().size(), w.dialogs.any("Unable to initialise Kelvarin Base 5\r\n\r\nPlease ensure"),
                     w.dialogs.any("Unable to initialise Kelvarin Base 100 100 100 100\r\n\r\nPlease ensure"),
                     w.dialogs.any("000 000 005")),
              "0|1|1|0");
    EXPECT_EQ(drivers.oKVv5()->ListDevices(), 0);
}

TEST(ListDevices, ConnectStringsAreTheLibrarysExactForms) {
    DriverWorld d({"123"}, 5);  // a short serial number is padded to twelve digits
    ASSERT_EQ(d.g2().connectedCount(), 1);
    SimBaseSpec net = usbBase("100100100500", "2.00.01.1801.1545");
    net.connection = SimConnection::Ethernet;
    net.address = "127.0.0.1";
    d.sim().addBase(net);
    // The library takes nothing but these forms (the driver's network form is checked above).
    auto base = d.sim().createBase(LibraryGeneration::Prioritizer2);
    EXPECT_EQ(base->Connect("000 000 000 123"), 0);
    for (const char* wrong : {"123", "000000000123", "000 000 000 0123", "000-000-000-123", " 000 000 000 123",
                              "127.0.0.1", "127.0.0.1|2020", "127.0.0.1|2020|1011", "127.0.0.1|1010|2020",
                              "|2020|1010", "127.0.0.1|2020|1010|"})
        EXPECT_EQ(base->Connect(wrong), BaseErrorCode::BaseNotFound) << wrong;
    EXPECT_EQ(base->Connect("127.0.0.1|2020|1010"), 0);
    EXPECT_EQ(base->Connect("000 100 100 500"), BaseErrorCode::BaseNotFound);  // a network base
}
