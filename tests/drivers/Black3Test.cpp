#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "core/FrmInit.h"
#include "drivers/Black3Driver.h"
#include "drivers/PresenterKeys.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kCommsMessage =
    "Communication Error - Base Station 3\r\nIt may be necessary to remove and reconnect the base station before "
    "continuing";
const std::string kRecovery =
    "Base station 7 has recovered from a configuration error and been reset to the following factory "
    "defaults\r\n\r\n\tRadio Channel = 75\r\n\tSession ID = 0\r\n\r\nPlease ensure these settings match your "
    "keypad system before attempting to vote";

struct OldBaseWorld {
    OldBaseWorld() : drivers(w.useSimBases()) {
        w.baseLibrary.addBase(serialBase(3, 10));
        w.writePortFile({{"3", "KELVARIN BASE V3", 1, 10}});
        w.start();
        w.c().voteIntake = &intake;
    }
    kpdriver_KELVARIN_BLACK_3& v3() { return *drivers.v3(); }
    void settle() { w.scheduler.advance(100); }
    void startVote() {
        w.main().AddDataToCommandQueue("STARTVOTE");
        settle();
    }
    std::size_t messages(const std::string& text) {
        std::size_t n = 0;
        for (const auto& s : w.dialogs.shown) n += s.text == text ? 1 : 0;
        return n;
    }
    void report(int channel, int session = 1, int third = 32, bool reset = false) {
        w.baseLibrary.reportConfig("3", VPanelBaseConfig{3, 7, session, channel, third, reset});
        settle();
    }
    TestWorld w;
    KelvarinDrivers& drivers;
    RecordingIntake intake;
};
}  // namespace

TEST(Black3, ConfigurationRecoveryCheck) {
    OldBaseWorld o;
    EXPECT_FALSE(o.w.dialogs.any("Unable to initialise"));
    o.report(6);
    o.report(77);
    EXPECT_EQ(fields(o.messages(kRecovery), o.v3().speedText), "0|256 kbps");
    o.report(5);
    EXPECT_EQ(fields(o.messages(kRecovery), o.w.dialogs.shown.back().title), "1|Kelvarin Base Station Error Recovery");
    o.report(78);
    o.report(40, 256);
    o.report(40, 1, 31);
    o.report(40, 1, 32, true);
    EXPECT_EQ(o.messages(kRecovery), 5u);
    o.report(40, 255);
    o.report(40, 0);
    EXPECT_EQ(o.messages(kRecovery), 5u);
}

TEST(Black3, EveryCommsErrorDuringAVoteEndsItWithTheMessageOutsideOneOnlyTheMessage) {
    OldBaseWorld o;
    std::vector<std::pair<int, std::string>> errors;
    o.w.main().FromCtrlFormBaseStationError.connect(
        [&](int base, const std::string& text) { errors.emplace_back(base, text); });
    o.w.baseLibrary.error("3", 1);
    o.settle();
    EXPECT_EQ(fields(o.messages(kCommsMessage), o.w.logged("Base Station Failure")), "1|0");
    o.startVote();
    o.w.baseLibrary.error("3", 1);
    o.settle();
    EXPECT_EQ(o.v3().CommsErrorCounter("3"), 0);
    o.w.baseLibrary.error("3", 1);
    o.settle();
    EXPECT_EQ(fields(o.v3().CommsErrorCounter("3"), o.messages(kCommsMessage), o.w.dialogs.shown.back().title),
              "0|3|tallix");
    EXPECT_EQ(fields(o.v3().logged("glo.Voting = TRUE, CommsErrorCounter = 0"), o.v3().logged("Auto Restart Vote Failed"),
                     o.v3().logged("Controller.StartVote"), o.w.logged("Base Station Failure - Port 3"),
                     o.v3().logged(" Base Station ERROR: 3, 1")),
              "1|1|0|1|1");
    ASSERT_EQ(errors.size(), 2u);  // during the vote only; the base by its port-file row, not its port
    EXPECT_EQ(errors[0], (std::pair<int, std::string>{0, "Communication Error - Base Station 3"}));

    // While the keypad set-up is open nothing is shown; waiting for the base ends on an error.
    o.w.c().forms.load<FrmInit>(o.w.c());
    o.startVote();
    o.w.baseLibrary.error("3", 1);
    o.w.glo().waitingForBase = true;
    o.w.baseLibrary.error("3", 20);
    o.w.baseLibrary.error("3", 9);  // only logged
    o.settle();
    EXPECT_EQ(fields(o.w.glo().waitingForBase, o.messages(kCommsMessage)), "0|3");
}

TEST(Black3, PresenterKeys) {
    OldBaseWorld o;
    o.w.baseLibrary.presenterKey("3", "GOTO12");
    o.w.baseLibrary.presenterKey("3", "V");
    o.w.baseLibrary.presenterKey("3", "GOTOx");
    o.w.desktop.addProcess("CHARTIST.EXE");
    o.w.baseLibrary.presenterKey("3", "PageDown");
    o.settle();
    EXPECT_EQ(o.w.desktop.keysSent(), (std::vector<int>{'1', '2', vk::Enter, vk::V, vk::Space}));
    EXPECT_TRUE(o.v3().SetDetectMode(2));
    EXPECT_FALSE(o.v3().SetDetectMode(5));
}

TEST(Black3, VotesCarryTheConfiguredTextsAndTheBasesIdentity) {
    OldBaseWorld o;
    o.w.writeSettings("KELVARIN CORE HUB OPTIONS", "VOTE SUCCESS TEXT", "Got it");
    o.w.writeSettings("KELVARIN CORE HUB OPTIONS", "VOTE END TEXT", "All done");
    o.w.writeSettings("KELVARIN CORE HUB OPTIONS", "PREVOTE TEXT", "");
    o.w.glo().voteType = "UNKNOWN";
    o.v3().StartVote("3");
    EXPECT_EQ(o.w.baseLibrary.station(0).callCount("StartVote"), 0);
    o.w.glo().voteType = "SINGLEDIGIT";
    o.v3().StartVote("3");
    SimBaseStation& st = o.w.baseLibrary.station(0);
    EXPECT_EQ(fields(st.vote.VoteText, st.vote.VoteEndedText, st.vote.VotedText), "Got it|All done|Sending Vote...");
    ASSERT_TRUE(o.w.baseLibrary.press("3", 2, "1"));
    o.settle();
    std::string shown;
    ASSERT_TRUE(o.w.baseLibrary.screen("3", 2, shown));
    ASSERT_EQ(fields(shown, o.intake.records.size()), "Got it|1");
    const auto& got = o.intake.records[0];
    // The base is the port file's first row, not its port.
    EXPECT_EQ(fields(got.votes[0], got.keypads[0], got.base, o.v3().logged("0 - VoteReceived Event - Port:3, Keypad:2, VoteData:1")),
              "1|2|0|1");
    o.v3().EndVote("3");
    ASSERT_TRUE(o.w.baseLibrary.screen("3", 2, shown));
    EXPECT_EQ(shown, "All done");
    EXPECT_FALSE(o.w.baseLibrary.press("3", 4, "2"));
}
