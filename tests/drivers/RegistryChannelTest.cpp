#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "DriverWorld.h"
#include "drivers/LocalRegistry.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";

void setRegistry(SimBaseStation& st, std::vector<std::pair<std::string, int>> entries) {
    st.setup.keypads.clear();
    for (const auto& [hid, sid] : entries) st.setup.keypads.push_back(simDevice(hid, sid));
}
}  // namespace

TEST(RegistryText, MalformedEntriesAreSkipped) {
    const LocalRegistry r = parseRegistryText("100;1|101;2|102|103;4;5||;6| 104 ; 7 ");
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(fields(r.keyAt(0), r.keyAt(1), r.find("K:104")->SID, r.findSID(2)->HID), "K:100|K:101|7|101");
    EXPECT_EQ(fields(parseRegistryText("").size(), registryKey("300 100 007")), "0|K:300100007");
}

TEST(Registry, AReadFillsTheLocalCopyAndTheKeypadLimitsAndTheReadLogSavesASecondRead) {
    DriverWorld d;
    EXPECT_EQ(d.g2().registryReadLog(), "|100100100100");
    const int reads = d.station().callCount("GetRegistry");
    d.g2().GetRegistry("0", false);  // read at start-up: not again
    EXPECT_EQ(d.station().callCount("GetRegistry"), reads);
    setRegistry(d.station(), {{"100", 1}, {"101", 2}, {"102;9", 3}});  // the last reads "102;9;3"
    d.g2().ResetBaseGetRegistryLog();
    EXPECT_EQ(d.g2().registryReadLog(), "");
    EXPECT_EQ(d.g2().GetRegistry("0", false), 0);
    EXPECT_EQ(fields(d.station().callCount("GetRegistry") - reads, d.g2().registryReadLog(), d.g2().registryReading()),
              "1||100100100100|0");
    const auto& reg = d.g2().localRegistry(0);
    ASSERT_EQ(reg.size(), 2u);
    const auto limits = [&] { return fields(d.g2().baseTable()[0].lowestKeypad, d.g2().baseTable()[0].highestKeypad); };
    EXPECT_EQ(fields(reg.keyAt(0), reg.keyAt(1), limits()), "K:100|K:101|1|2");
    EXPECT_EQ(fields(d.g2().logged("0 - GetRegistry = 0"), d.g2().logged(" - GetKeypadRegistry:0 secs - 0")), "1|1");

    setRegistry(d.station(), {});
    EXPECT_EQ(d.g2().GetRegistry(kBase1, true), 0);  // forced; the serial number names the base too
    EXPECT_EQ(fields(d.station().callCount("GetRegistry") - reads, d.g2().localRegistry(0).size(), limits()), "2|0|0|0");
}

TEST(Registry, AFailedReadKeepsTheCopyAndSaysSo) {
    DriverWorld d;
    d.sim().fail(kBase1, "GetRegistry", 18);
    EXPECT_EQ(d.g2().GetRegistry("0", true), 18);
    EXPECT_EQ(fields(d.g2().localRegistry(0).size(), d.g2().logged("0 - GetKeypadRegister FAILED - 18: Dataflash read error")),
              "40|1");
    EXPECT_EQ(d.lastDialog(), "Kelvarin Corehub Error: Base Station 100 100 100 100\r\nGet Registry Error\r\nCode: "
                              "18\r\nDescription: Dataflash read error");
    d.sim().fail(kBase1, "GetBaseConfig", 4);
    d.g2().GetRegistry("0", true);
    EXPECT_EQ(d.lastDialog(), "USB Comms Error: Unable to connect to base station 100 100 100 100");
}

TEST(Registry, StaticLimitsAreWrittenBackWhenTheyDiffer) {
    DriverWorld d;
    EXPECT_EQ(d.station().callCount("SetBaseConfig"), 0);  // the base already reports 1..40
    std::tie(d.station().staticLowSid, d.station().staticHighSid) = std::pair(5, 10);
    d.g2().GetRegistry("0", true);
    EXPECT_EQ(fields(d.station().staticLowSid, d.station().staticHighSid), "1|40");

    d.station().staticLowSid = 5;
    d.sim().fail(kBase1, "SetBaseConfig", 19);
    d.g2().GetRegistry("0", true);
    EXPECT_TRUE(d.g2().logged("0 - UpdateStaticRegistryLimits - Error:19, Dataflash write error"));
    EXPECT_EQ(d.w.dialogs.shown.back().text,
              "Base Station 100 100 100 100\r\nUpdate Static Registry Limits Error\r\nCode: 19\r\nDescription: Dataflash write error");

    const int writes = d.station().callCount("SetBaseConfig");
    d.g2().PauseAutoUpdateOfSessionConfig(true);
    d.station().staticLowSid = 7;
    EXPECT_EQ(d.g2().UpdateStaticRegistryLimits(-1), 0);
    EXPECT_EQ(d.station().callCount("SetBaseConfig"), writes + 0);
}

TEST(Registry, RegistryOperationsKeepTheLocalCopyInStep) {
    DriverWorld d;
    EXPECT_EQ(fields(d.g2().GetHIDFromSID(7), d.g2().GetHIDFromSID(41), d.g2().GetHIDFromSID(0)), "300100007||");
    EXPECT_EQ(d.g2().AddKeypadToRegistry("0", "300100999", 41), 0);
    EXPECT_EQ(fields(d.g2().GetHIDFromSID(41), d.g2().logged("0 - Corehub g2:   AddKeypadToRegistry = 0")), "300100999|1");
    EXPECT_EQ(d.g2().DeleteKeypadFromRegistry("0", "300 100 999"), 0);
    EXPECT_EQ(d.g2().GetHIDFromSID(41), "");
    EXPECT_EQ(d.g2().DeleteKeypadFromRegistry("0", "1"), 16);
    EXPECT_EQ(d.w.dialogs.shown.back().text,
              "Base Station 100 100 100 100\r\nDelete Keypad From Registry Error\r\nCode: 16\r\nDescription: Registry: device not found");
    d.sim().fail(kBase1, "DeleteRegistry", 21);
    EXPECT_EQ(d.g2().DeleteRegistry("0"), 21);
    EXPECT_TRUE(contains(d.w.dialogs.shown.back().text, "Delete Registry Error"));
    ASSERT_EQ(d.g2().DeleteRegistry("0"), 0);
    EXPECT_EQ(d.g2().localRegistry(0).size(), 0u);
    EXPECT_EQ(d.g2().UpdateFlagOnBaseStations("300100001", 1), 16);
    EXPECT_TRUE(contains(d.w.dialogs.shown.back().text, "Update Flag On Base Station"));
    EXPECT_EQ(fields(d.g2().CheckIfMirroredReg(), d.g2().GetSimpleFirmwareVersion("0")), "0|2.00.01");
    EXPECT_EQ(d.g2().SetBaseConfig("7", KelvarinBaseConfig{}), 3);  // no such base
}

TEST(Registry, RegistrationsAreLoggedAndRaisedWithTheDevicesFirmware) {
    DriverWorld d({kBase1}, 10, false);
    for (auto [hid, kind, firmware] : {std::tuple{"300199901", DeviceKind::Presenter, "2.00.01.2103.2103"},
                                       std::tuple{"300199902", DeviceKind::Scanner, "2.00.01.1901.0101"}}) {
        d.station().setup.keypads.push_back(simDevice(hid, 0, kind));
        d.station().setup.keypads.back().firmware = firmware;
    }
    d.station().setup.keypads[2].firmware = "2.00.01.1712.1200";
    d.station().setup.keypads[3].present = false;  // registered, but not in the room
    d.w.start();
    std::vector<std::string> registered, presenters, scanners;
    d.g2().KeypadRegister.connect([&](const std::string& hid, int flag, int, const std::string& firmware) {
        registered.push_back(hid + "/" + std::to_string(flag) + "/" + firmware);
    });
    d.g2().PresenterValidated.connect(
        [&](const std::string& hid, const std::string& firmware) { presenters.push_back(hid + " " + firmware); });
    d.g2().ScannerValidated.connect(
        [&](const std::string& hid, const std::string& firmware) { scanners.push_back(hid + " " + firmware); });
    d.settle();  // presenter and scanner announce themselves once the radio is up
    EXPECT_EQ(registered, (std::vector<std::string>{"300199901/2/2.00.01.2103.2103", "300199902/3/2.00.01.1901.0101"}));
    EXPECT_EQ(fields(join(presenters, ","), join(scanners, ","), d.g2().GetFirstPresentersHID(),
                     d.g2().logged("0 - KeypadRegister Event - HID:300199901, Flag:2,Error:0")),
              "300199901 2.00.01.2103.2103|300199902 2.00.01.1901.0101|300199901|1");

    // Opening the registration makes every registered device in the room answer, one after
    // the other, with its own firmware.
    KelvarinSessionConfig s;
    d.g2().GetSessionConfig("0", s);
    s.RegistrationOpen = true;
    d.g2().SetSessionConfig("0", s);
    d.settle(500);
    ASSERT_EQ(registered.size(), 2u + 11u);  // keypad 4 is not there
    EXPECT_EQ(fields(registered[2], registered[4], registered[5]),
              "300100001/1/2.00.01.2103.2038|300100003/1/2.00.01.1712.1200|300100005/1/2.00.01.2103.2038");
}

TEST(ChannelScan, EightCandidatesOnEveryBaseOrTheNamedOneOncePerConnectedBase) {
    DriverWorld d({kBase1, "100100100200", "100100100300"});
    std::vector<int> replies;
    d.g2().ChannelScanReply.connect(
        [&](const KelvarinChannelScanReply& r, const std::string&) { replies.push_back(r.Channel); });
    EXPECT_EQ(d.g2().ScanForBestChannel(""), 0);
    ASSERT_EQ(replies.size(), 3u * 8);
    EXPECT_EQ(std::vector<int>(replies.begin(), replies.begin() + 8), (std::vector<int>{1, 3, 5, 7, 24, 45, 69, 77}));
    EXPECT_FALSE(d.g2().scanRunning());
    EXPECT_EQ(d.g2().ScanForBestChannel("x"), 0);  // not a base: nothing scanned
    EXPECT_EQ(d.g2().ScanForBestChannel("1"), 0);
    const auto scans = [&] {
        return fields(d.station(0).callCount("ChannelScan"), d.station(1).callCount("ChannelScan"),
                      d.station(2).callCount("ChannelScan"));
    };
    EXPECT_EQ(scans(), "8|32|8");
    EXPECT_EQ(d.g2().ScanForBestChannel("100 100 100 300"), 0);  // by serial number as well
    EXPECT_EQ(scans(), "8|32|32");
}

TEST(ChannelScan, ABaseThatNeverAnswersEndsTheScanAfterFiveSecondsAndOthersRepliesDoNotCount) {
    DriverWorld d({kBase1, "100100100200"});
    d.sim().neverReply("100100100200", "ChannelScan");
    // The first base answers a scan of its own while the second is being waited for.
    ASSERT_EQ(d.g2().baseObject(1)->ChannelScan(3, 3, 1, 100), 0);
    auto t0 = d.w.scheduler.elapsedMs();
    EXPECT_EQ(d.g2().ScanForBestChannel("1"), 9);
    EXPECT_EQ(fields(d.w.scheduler.elapsedMs() - t0, d.station(1).callCount("ChannelScan"),
                     d.g2().logged("1 - ScanForBestChannel - no reply within 5 secs on channel 1")),
              "5000|1|1");

    // Scanning every base stops at the silent one; the next is not scanned.
    d.sim().neverReply(kBase1, "ChannelScan");
    const int first = d.station(0).callCount("ChannelScan"), second = d.station(1).callCount("ChannelScan");
    t0 = d.w.scheduler.elapsedMs();
    EXPECT_EQ(d.g2().ScanForBestChannel(""), 9);
    EXPECT_EQ(fields(d.w.scheduler.elapsedMs() - t0, d.calls("ChannelScan"),
                     d.g2().logged("0 - ScanForBestChannel - no reply within 5 secs on channel 1")),
              fields(5000, fields(first + 1, second), 1));
}

TEST(ChannelScan, ARefusedChannelEndsTheScan) {
    DriverWorld d;
    d.sim().fail(kBase1, "ChannelScan", 23, -1);
    EXPECT_EQ(d.g2().ScanForBestChannel("0"), 23);
    EXPECT_EQ(d.station().callCount("ChannelScan"), 1);
}

TEST(Registry, BasesBelowTheRegistryVersionHaveNone) {
    TestWorld w;
    auto& drivers = w.useSimBases();
    w.addSimBase("100100100200", 5, "KELVARIN COREHUB G1").setup.firmware = "1.0.1.0108.0000";
    w.writePortFile({{"100100100200", "KELVARIN COREHUB G1", 1, 5}});
    w.start();
    auto* g1 = drivers.oKVv4();
    ASSERT_EQ(g1->connectedCount(), 1);
    // Start-up did not read it.
    EXPECT_EQ(fields(g1->localRegistry(0).size(), w.baseLibrary.station(0).callCount("GetRegistry")), "0|0");
    EXPECT_EQ(g1->GetRegistry("0", true), 14);
    EXPECT_EQ(w.dialogs.shown.back().title + ": " + w.dialogs.shown.back().text,
              "tallix: Registry is not available for this version of the base station\r\nBase Version: 1.0.1.0108.0000");
    w.glo().registryVersionOverride = true;
    ASSERT_EQ(g1->GetRegistry("0", true), 0);
    EXPECT_EQ(g1->localRegistry(0).size(), 5u);
}

TEST(PassThrough, TheSevenMembersReportAFailureInTheLogAndToTheUser) {
    DriverWorld d;
    struct Member {
        const char* operation;  // as the base library names it
        const char* member;
        const char* caption;
        std::function<int()> call;
    };
    KelvarinBaseConfig bc;
    KelvarinSessionConfig sc;
    KelvarinKeypadConfig kc;
    kc.HID = "300100001";
    auto& g2 = d.g2();
    const std::vector<Member> members = {
        {"SetBaseConfig", "SetBaseConfig", "Set Base Config Error", [&] { return g2.SetBaseConfig("0", bc); }},
        {"SetKeypadConfig", "SetKeypadConfig", "Set Keypad Config Error", [&] { return g2.SetKeypadConfig("0", kc); }},
        {"GetBaseConfig", "GetBaseConfig", "Get Base Config Error", [&] { return g2.GetBaseConfig("0", bc); }},
        {"ResetBase", "ResetBase", "Reset Base Error", [&] { return g2.ResetBase("0"); }},
        {"RebootRadio", "RebootBaseRadio", "Reboot Base Radio Error", [&] { return g2.RebootBaseRadio("0"); }},
        {"SetSessionConfig", "SetSessionConfig", "Set Session Config Error",
         [&] { return g2.SetSessionConfig("0", sc); }},
        {"GetSessionConfig", "GetSessionConfig", "Get Session Config Error",
         [&] { return g2.GetSessionConfig("0", sc); }},
    };
    for (const Member& m : members) {
        d.sim().fail(kBase1, m.operation, 6);
        EXPECT_EQ(m.call(), 6) << m.member;
        EXPECT_TRUE(g2.logged(std::string(" - ") + m.member + " FAILED - 6: TX Comms failed")) << m.member;
        EXPECT_TRUE(g2.logged(std::string("0 - Corehub g2:   ") + m.member + " = 6")) << m.member;
        EXPECT_EQ(d.lastDialog(), "Kelvarin Corehub Error: Base Station 100 100 100 100\r\n" + std::string(m.caption) +
                                      "\r\nCode: 6\r\nDescription: TX Comms failed");
        EXPECT_EQ(m.call(), 0) << m.member;  // the failure was once only
    }
    // A base that is not there: named as the caller named it.
    EXPECT_EQ(g2.ResetBase("7"), 3);
    EXPECT_TRUE(g2.logged(" - ResetBase FAILED - 3: Base station not found"));
    EXPECT_EQ(d.w.dialogs.shown.back().text,
              "Base Station 7\r\nReset Base Error\r\nCode: 3\r\nDescription: Base station not found");
}
