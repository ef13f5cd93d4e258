// The channel-scan window over simulated bases of the first Corehub generation.
#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "SetupWorld.h"
#include "core/MainForm.h"
#include "setup/ChannelScan.h"
#include "support/Fields.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// One G1 base with eight keypads; channel 24 is clear, 45 nearly so, the rest noisy.
const std::string kWorld = R"([bases]
count=1
seed=3
[base1]
type=KELVARIN COREHUB G1
id=100100100500
keypads=1-8
hidstart=300500001
noise=40
channelnoise=24:0,45:10
)";

// The same base and a second one.
const std::string kTwoBases = replaceAll(kWorld, "count=1", "count=2") + R"([base2]
type=KELVARIN COREHUB G1
id=100100100600
keypads=20-22
hidstart=300600020
)";

using Scan = frmKelvarinCorehubChannelScan;

struct ScanWorld : SetupWorld {
    explicit ScanWorld(const std::string& world = kWorld) : SetupWorld(world) {}
    // The window, with these keypads listed.
    Scan& open(std::initializer_list<const char*> keypads = {}) {
        Scan& s = showChannelScan(w.c());
        for (const char* k : keypads) add(s, k);
        return s;
    }
    void add(Scan& s, const std::string& keypad) {
        s.txtAddKeypad = keypad;
        s.cmdAddKeypad_Click();
    }
    // A scan of the listed keypads run to its end.
    void runScan(Scan& s) {
        s.cmdScan_Click();
        w.scheduler.advanceSeconds(10 + s.estimatedSeconds() + 1);
    }
};

ChannelScores scores(std::initializer_list<std::pair<int, double>> set) {
    ChannelScores s{};
    for (auto [i, v] : set) s[static_cast<std::size_t>(i)] = v;
    return s;
}

}  // namespace

TEST(ChannelScanResults, TheExchangeSortSwapsOnlyOnAStrictlyHigherScore) {
    // Equal scores keep their channel order...
    EXPECT_EQ(bestThreeChannels(scores({{30, 5}, {10, 5}, {20, 5}})), (std::array<int, 3>{10, 20, 30}));
    // ...unless a higher score is exchanged past one of them: channel 3 takes channel 1's
    // place, and channel 1 lands behind its equal, channel 2.
    EXPECT_EQ(bestThreeChannels(scores({{1, 4}, {2, 4}, {3, 9}})), (std::array<int, 3>{3, 2, 1}));
    EXPECT_EQ(bestThreeChannels(scores({{77, 1}, {76, 3}, {5, 2}})), (std::array<int, 3>{76, 5, 77}));
    EXPECT_EQ(hoursMinutesSeconds(3 * 3600 + 59), "3h 0m 59s");  // scans of many channels run for hours
}

TEST(ChannelScanKeypads, RegistryChecksAndTheSeventhKeypad) {
    ScanWorld s(kTwoBases);
    Scan& scan = s.open();
    ASSERT_EQ(scan.baseHID, "100100100500");
    s.add(scan, "20");  // a keypad of the other base
    EXPECT_EQ(s.box(), "Unable to add keypad: "
                       "This keypads serial number does not exist in the local registry of the base station");
    EXPECT_EQ(scan.lblEstimatedTime, "Estimated scan time... -");
    // Blanks are removed: "1 2" is keypad 12, which this registry does not have; nor does
    // text that is no keypad number name one of it.
    for (const char* missing : {" 1 2 ", "3a"}) {
        s.add(scan, missing);
        EXPECT_EQ(s.box(), "Unable to add keypad: "
                           "The keypad number entered does not exist in the local registry of the base station");
    }
    EXPECT_TRUE(scan.lvwKeypads.empty());
    EXPECT_EQ(scan.txtAddKeypad, "3a");

    s.add(scan, " 3 ");
    ASSERT_EQ(scan.lvwKeypads.size(), 1u);
    EXPECT_EQ(fields(scan.lvwKeypads[0].hid, scan.lvwKeypads[0].icon, scan.txtAddKeypad), "300 500 003|NEW|");
    // One keypad, 77 channels, 50 votes: 77 x (0.25 + 50 x 0.02) = 96.25 s.
    EXPECT_EQ(scan.lblEstimatedTime, "Estimated scan time... 0h 1m 37s");
    s.add(scan, "3");  // listed once only
    EXPECT_EQ(scan.lvwKeypads.size(), 1u);

    for (const char* k : {"1", "2", "4", "5", "6"}) s.add(scan, k);
    const auto shown = s.w.dialogs.shown.size();
    s.add(scan, "7");
    ASSERT_EQ(s.w.dialogs.shown.size(), shown + 1);
    EXPECT_EQ(fields(s.box(), scan.lvwKeypads.size()), "Max Allowed: 6 keypads already recorded for use in the scan|6");

    scan.selectedKeypad = 0;
    scan.cmdRemoveKeypad_Click();
    ASSERT_EQ(scan.lvwKeypads.size(), 5u);
    EXPECT_EQ(scan.lvwKeypads[0].hid, "300 500 001");
}

TEST(ChannelScanOptions, BoxesAreCheckedAsTheyAreLeft) {
    ScanWorld s;
    Scan& scan = s.open();
    using O = Scan::Option;
    const std::tuple<O, std::string Scan::*, std::string, std::string> cases[] = {
        {O::StartChannel, &Scan::txtStartChannel, "0", "Invalid channel step entered"},
        {O::EndChannel, &Scan::txtEndChannel, "256", "Invalid channel step entered"},
        {O::ChannelStep, &Scan::txtChannelStep, "x", "Invalid channel step entered"},
        {O::VotesPerChannel, &Scan::txtVotesPerChannel, "9", "Invalid votes per channel entered"},
        {O::VotesPerChannel, &Scan::txtVotesPerChannel, "256", "Invalid votes per channel entered"},
        {O::StartDelay, &Scan::txtStartDelay, "0", "Invalid start delay entered"},
        {O::StartDelay, &Scan::txtStartDelay, "2.5", "Invalid start delay entered"},
        {O::ChannelList, &Scan::txtChannelList, "3,x", "Invalid channel step entered"},
    };
    for (const auto& [option, field, bad, message] : cases) {
        std::string& box = scan.*field;
        const std::string before = box;
        box = bad;
        EXPECT_FALSE(scan.OptionLeft(option)) << bad;
        EXPECT_EQ(s.lastTitle() + ": " + s.lastText(), "Error: " + message) << bad;
        EXPECT_EQ(box, before) << "the last good value comes back";
    }
    // The boxes take up to 255 although a reopened window brings back less.
    scan.txtEndChannel = "200";
    EXPECT_TRUE(scan.OptionLeft(O::EndChannel));
    scan.txtStartChannel = "201";
    EXPECT_TRUE(scan.OptionLeft(O::StartChannel));
    scan.mnuOptions_Click();
    EXPECT_FALSE(scan.cmdOptionsClose_Click());
    EXPECT_EQ(fields(s.lastText(), scan.fraOptionsVisible),
              "Start channel in the range cannot be greater than the end channel|1");
    scan.txtStartChannel = "10";
    scan.txtChannelStep = "5";
    EXPECT_TRUE(scan.cmdOptionsClose_Click());
    // 10, 15, ... 200
    EXPECT_EQ(fields(scan.fraOptionsVisible, scan.scanChannels().size(), s.w.glo().channelScan.endChannel), "0|39|200");

    // A list of channels instead of the range.
    scan.optScanMode_Click(1);
    scan.txtChannelList = "24, 45,69";
    EXPECT_TRUE(scan.OptionLeft(O::ChannelList));
    EXPECT_EQ(scan.scanChannels(), (std::vector<int>{24, 45, 69}));
}

TEST(ChannelScanOptions, RestoredOnlyWithinTheirRangesAndKeptOnClosing) {
    ScanWorld s;
    auto& kept = s.w.glo().channelScan;
    // What the boxes show when the window opens with these kept: start, end, step, votes, delay.
    auto reopened = [&](std::array<int, 5> k) {
        kept = {};
        std::tie(kept.startChannel, kept.endChannel, kept.channelStep, kept.votesPerChannel, kept.startDelay) =
            std::tuple(k[0], k[1], k[2], k[3], k[4]);
        Scan& scan = s.open();
        std::vector<std::string> shown{scan.txtStartChannel, scan.txtEndChannel, scan.txtChannelStep,
                                       scan.txtVotesPerChannel, scan.txtStartDelay};
        scan.cmdExit_Click();
        s.settle();
        return shown;
    };
    // Channels 1..77, step 1..77, votes 10..250, delay 1..240: one past gives the default.
    EXPECT_EQ(reopened({78, 77, 0, 251, 241}), (std::vector<std::string>{"1", "77", "1", "50", "10"}));
    EXPECT_EQ(reopened({77, 1, 77, 10, 240}), (std::vector<std::string>{"77", "1", "77", "10", "240"}));
    EXPECT_EQ(reopened({1, 77, 1, 250, 1}), (std::vector<std::string>{"1", "77", "1", "250", "1"}));
    // Closing kept what the boxes held.
    Scan& scan = s.open();
    scan.txtStartChannel = "5";
    EXPECT_TRUE(scan.OptionLeft(Scan::Option::StartChannel));
    scan.cmdExit_Click();
    s.settle();
    EXPECT_EQ(fields(kept.startChannel, kept.votesPerChannel), "5|250");
}

TEST(ChannelScanRun, TwoKeypadsFindTheChannelTheNoiseProfileFavours) {
    ScanWorld s;
    s.w.main().AddDataToCommandQueue("CHANNELSCAN");
    s.settle();
    auto* opened = s.w.c().forms.get<Scan>(Scan::kName);
    ASSERT_NE(opened, nullptr);
    Scan& scan = *opened;
    EXPECT_TRUE(scan.Visible());
    for (const char* k : {"3", "5"}) s.add(scan, k);
    // 77 channels x (0.25 s + 50 votes x 2 keypads x 0.02 s) = 173.25 s.
    EXPECT_EQ(scan.estimatedSeconds(), 174);

    std::vector<std::string> statuses;
    scan.changed.connect([&] {
        if (statuses.empty() || statuses.back() != scan.lblStatus) statuses.push_back(scan.lblStatus);
    });
    scan.cmdScan_Click();
    ASSERT_GE(statuses.size(), 2u);
    EXPECT_EQ(fields(statuses[0], scan.lblStatus, scan.lblKeypadResponse),
              "Preparing Scan...|Scan starting in... 10|Waiting for keypads to respond");
    EXPECT_EQ(fields(scan.lvwKeypads[0].icon, scan.lvwKeypads[0].status), "WAITING|Waiting for response");

    // Locked while it counts down: nothing can be added or started.
    EXPECT_TRUE(scan.locked());
    s.add(scan, "6");
    scan.cmdScan_Click();
    EXPECT_EQ(scan.lvwKeypads.size(), 2u);
    EXPECT_EQ(s.station().callCount("PrepareKeypadSurveyScan"), 1);

    s.w.scheduler.advanceSeconds(4.05);
    EXPECT_EQ(fields(scan.lblStatus, scan.lblPrompt, s.station().callCount("BeginKeypadSurveyScan")),
              "Scan starting in... 6|Click to Start Scan in 6|0");
    s.w.scheduler.advanceSeconds(6.0);
    EXPECT_EQ(fields(s.station().callCount("BeginKeypadSurveyScan"), scan.lblStatus), "1|Scanning... 0h 2m 54s");
    s.w.scheduler.advanceSeconds(60);
    EXPECT_EQ(fields(scan.lblStatus, scan.lvwKeypads[1].icon, scan.lvwKeypads[1].status, scan.lblKeypadResponse),
              "Scanning... 0h 1m 54s|OK|Ready|");
    EXPECT_TRUE(startsWith(scan.txtDebugKpadResults, "HID            | Ch | Vt | Acks\r\n300500003      | 001 | 050 | 0"));

    s.w.scheduler.advanceSeconds(120);
    EXPECT_EQ(scan.state(), Scan::ScanState::Idle);
    ASSERT_EQ(scan.results().size(), 1u);
    EXPECT_EQ(fields(scan.locked(), scan.results()[0].replies, scan.lblScanNumber), "0|154|Scan 1 of 1");  // 2 x 77
    // Channel 24 loses nothing to noise, 45 a tenth, every other channel two fifths.
    EXPECT_TRUE(startsWith(scan.lblResults,
                           "Based on scan number 1 of 1 the best 3 radio channels to use are 24, 45 and "))
        << scan.lblResults;
    EXPECT_GE(scan.shownScores[24], 95.0);
    EXPECT_LE(scan.shownScores[2], 60.0);
    EXPECT_EQ(scan.shownScores[0], 0.0);

    EXPECT_TRUE(scan.RequestClose());
    s.settle();
    EXPECT_FALSE(s.w.c().forms.isLoaded(Scan::kName));
    // The results last while the controller runs.
    EXPECT_TRUE(startsWith(s.open().lblResults, "Based on scan number 1 of 1"));
}

TEST(ChannelScanRun, ABaseSlowerThanTheEstimateShowsCompiling) {
    ScanWorld s;
    s.w.baseLibrary.surveyChannelMs = 400;
    Scan& scan = s.open({"3"});
    scan.txtStartDelay = "1";
    scan.OptionLeft(Scan::Option::StartDelay);
    scan.cmdScan_Click();
    s.w.scheduler.advanceSeconds(1 + 97 + 0.2);  // the estimate is 97 s
    EXPECT_EQ(fields(scan.lblStatus, scan.results().size()), "Compiling Results...|0");
    s.w.scheduler.advanceSeconds(20);
    EXPECT_EQ(fields(scan.results().size(), scan.locked()), "1|0");
}

TEST(ChannelScanRun, NoRepliesGiveZeroScoresNamedDashOneAndTwo) {
    ScanWorld s(kWorld + "absent=300500003\n");
    Scan& scan = s.open({"3"});
    s.runScan(scan);
    ASSERT_EQ(scan.results().size(), 1u);
    EXPECT_EQ(fields(scan.results()[0].replies, scan.lvwKeypads[0].icon), "0|WAITING");  // it never answered
    EXPECT_EQ(scan.lblResults, "Based on scan number 1 of 1 the best 3 radio channels to use are -, 1 and 2");
}

TEST(ChannelScanRun, RepliesOfAnotherBasesSurveyAreNotCounted) {
    ScanWorld s(kTwoBases);
    auto* g1 = s.drivers.oKVv4();
    Scan& scan = s.open({"3"});
    scan.txtChannelList = "24";
    scan.OptionLeft(Scan::Option::ChannelList);
    scan.optScanMode_Click(1);
    scan.cmdScan_Click();
    s.w.scheduler.advanceSeconds(10.05);
    // The other base surveys its own keypad at the same time, and ends first.
    KelvarinSurveyOptions o;
    o.Channels = {24};
    o.VotesPerChannel = 10;
    ASSERT_EQ(g1->PrepareKeypadSurveyScan("100100100600", {"300600020"}, o), 0);
    ASSERT_EQ(g1->BeginKeypadSurveyScan("100100100600"), 0);
    s.w.scheduler.advanceSeconds(0.6);
    EXPECT_EQ(fields(scan.state() == Scan::ScanState::Scanning, scan.replyCount()), "1|0");
    s.w.scheduler.advanceSeconds(5);
    ASSERT_EQ(scan.results().size(), 1u);
    EXPECT_EQ(scan.results()[0].replies, 1);
    EXPECT_EQ(scan.txtDebugKpadResults.find("300600020"), std::string::npos);
}

TEST(ChannelScanRun, FailuresOfTheBaseAreShownAndTheWindowGoesOn) {
    ScanWorld s;
    Scan& scan = s.open();
    scan.cmdScan_Click();
    EXPECT_EQ(s.box(), "Cannot prepare the scan: You must select at least one keypad for use in a scan");
    s.add(scan, "3");
    s.w.baseLibrary.fail("100100100500", "PrepareKeypadSurveyScan", 6);
    scan.cmdScan_Click();
    EXPECT_EQ(fields(s.box(), scan.locked()), "PrepareKeypadSurveyScan: Error 6: TX Comms failed|0");

    s.w.baseLibrary.fail("100100100500", "BeginKeypadSurveyScan", 23);
    scan.cmdScan_Click();
    s.w.scheduler.advanceSeconds(2);
    EXPECT_EQ(scan.lblPrompt, "Click to Start Scan in 8");
    scan.lblPrompt_Click();  // the operator does not wait for the rest of the delay
    EXPECT_EQ(fields(s.box(), scan.locked()),
              "BeginKeypadSurveyScan: Error 23: Requested action error - base busy (Addon Message)|0");
    s.w.scheduler.advanceSeconds(10);
    EXPECT_EQ(s.station().callCount("BeginKeypadSurveyScan"), 1) << "the countdown ended with the click";

    // And then a scan that works.
    s.runScan(scan);
    EXPECT_EQ(scan.results().size(), 1u);
}

TEST(ChannelScanRun, CancellingAndClosingWhileScanning) {
    ScanWorld s;
    Scan& scan = s.open({"3"});
    scan.cmdScan_Click();
    s.w.scheduler.advanceSeconds(12);  // scanning, some replies in
    ASSERT_EQ(scan.state(), Scan::ScanState::Scanning);
    std::vector<std::string> statuses;
    scan.changed.connect([&] { statuses.push_back(scan.lblStatus); });
    scan.cmdCancel_Click();
    ASSERT_FALSE(statuses.empty());
    EXPECT_EQ(fields(statuses.front(), scan.lblStatus, s.station().callCount("EndKeypadSurveyScan")),
              "Cancelling Scan|Scan Ended|1");
    s.w.scheduler.advanceSeconds(200);
    EXPECT_TRUE(scan.results().empty()) << "a cancelled scan adds no result";

    // Closing during a scan is refused and cancels it; the failing end is reported.
    scan.cmdScan_Click();
    s.w.scheduler.advanceSeconds(3);
    s.w.baseLibrary.fail("100100100500", "EndKeypadSurveyScan", 9);
    EXPECT_FALSE(scan.RequestClose());
    EXPECT_EQ(s.box(), "EndKeypadSurveyScan: Error 9: RX Comms time out");
    EXPECT_EQ(fields(scan.lblStatus, scan.locked()), "Cannot close whilst scanning|0");
    s.w.scheduler.advanceSeconds(200);
    EXPECT_TRUE(scan.results().empty());
    EXPECT_TRUE(scan.RequestClose());
}

TEST(ChannelScanResultsKept, DeletingTheOnlyAndOneOfTwoAndTheCumulativeView) {
    ScanWorld s;
    Scan& scan = s.open({"3"});
    scan.txtStartChannel = "20";
    scan.txtEndChannel = "30";
    scan.cmdOptionsClose_Click();
    s.runScan(scan);
    ASSERT_EQ(scan.results().size(), 1u);

    scan.cmdDeleteResult_Click();
    EXPECT_EQ(fields(s.box(), scan.results().size()),
              "Delete Aborted: You cannot remove the only remaining scan results|1");

    // A second scan where channel 24 is jammed and 26 is clear.
    s.station().setup.channelNoise = {{24, 100}, {26, 0}};
    s.runScan(scan);
    ASSERT_EQ(fields(scan.results().size(), scan.lblScanNumber), "2|Scan 2 of 2");
    EXPECT_TRUE(startsWith(scan.lblResults, "Based on scan number 2 of 2 the best 3 radio channels to use are 26, "));

    scan.chkShowCumulativeGraph_Click(true);
    EXPECT_EQ(fields(scan.lblScanNumber, scan.shownReplies), "Cumulative|22");
    EXPECT_EQ(scan.shownScores[24], scan.results()[0].scores[24] + scan.results()[1].scores[24]);
    EXPECT_TRUE(startsWith(scan.lblResults,
                           "Based on the combined results of the 2 scan(s) performed the best 3 radio channels to use are "));
    scan.chkShowCumulativeGraph_Click(false);
    EXPECT_EQ(scan.lblStatus, "");

    scan.cmdScrollGraph_Click(1);  // round to the first
    EXPECT_EQ(scan.lblScanNumber, "Scan 1 of 2");
    s.w.dialogs.answers = {false};
    scan.cmdDeleteResult_Click();
    EXPECT_EQ(fields(s.box(), scan.results().size()), "Confirm Delete: Remove scanning results 1 of 2?|2");
    s.w.dialogs.answers = {true};
    scan.cmdDeleteResult_Click();
    // What is left is the second scan, compiled again.
    ASSERT_EQ(fields(scan.results().size(), scan.lblScanNumber), "1|Scan 1 of 1");
    EXPECT_TRUE(startsWith(scan.lblResults, "Based on scan number 1 of 1 the best 3 radio channels to use are 26, "));
    EXPECT_EQ(scan.shownScores[24], 0.0);
}
