#include <gtest/gtest.h>

#include "DriverWorld.h"
#include "drivers/DisplayTexts.h"
#include "drivers/PresenterKeys.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";
const std::string kPresenter = "300199901";

// A started world whose base 1 has a presenter keypad.
struct PresenterWorld : DriverWorld {
    PresenterWorld() : DriverWorld({kBase1}, 20, false) {
        station().setup.keypads.push_back(simDevice(kPresenter, 0, DeviceKind::Presenter));
        start();
    }
    std::vector<int> command(int command, int source = 0, int value = 0) {
        const auto before = w.desktop.keysSent().size();
        sim().presenterCommand(kBase1, command, source, value);
        settle();
        const auto& keys = w.desktop.keysSent();
        return std::vector<int>(keys.begin() + static_cast<std::ptrdiff_t>(before), keys.end());
    }
    const std::string& echo() { return station().presenterEcho; }
};
}  // namespace

TEST(DisplayTexts, SettingsOverrideTheDefaultsInEitherFileForm) {
    TempDir dir;
    writeFile(dir / "new.ini",
              "[KELVARIN CORE HUB OPTIONS]\r\nVOTE SUCCESS TEXT=Thanks!\r\nVOTE END TEXT TIME=15\r\n"
              "TEXT VOTE PAUSE ENABLED=1\r\n[KELVARIN AUDIO OPTIONS]\r\nKEYPAD PROMPT 01=Mic?\r\n"
              "[KELVARIN CORE HUB PRESENTER TEXT]\r\nNEXT SLIDE=Forward\r\nEND=Last\r\n");
    KeypadDisplayTexts t;
    t.load(dir / "new.ini");
    // What the file does not set keeps its default (the prevote text).
    EXPECT_EQ(fields(t.VoteSuccessText, t.VoteEndTextTime, t.TextVotePauseEnabled, t.KeypadPrompt01, t.PrevoteText),
              "Thanks!|15|1|Mic?|UNUSED");
    PresenterMenu m;
    m.load(dir / "new.ini");
    EXPECT_EQ(fields(m.labels[0], m.labels[5], m.labels[10]), "Forward|Last|  Resume");  // the last has no setting key

    writeFile(dir / "old.ini", "DETECTOR STATUS,0\r\nVOTE END TEXT,Done\r\nVOTE FAILED TEXT TIME,x\r\n");
    KeypadDisplayTexts o;
    o.load(dir / "old.ini");
    EXPECT_EQ(fields(o.VoteEndText, o.VoteFailedTextTime), "Done|0");  // unreadable numbers read as 0
    KeypadDisplayTexts missing;
    missing.load(dir / "none.ini");
    EXPECT_EQ(missing.VoteEndText, "   Vote Ended");
}

TEST(DisplayTexts, EachKeyComesFromItsSectionOfThePerUserFileThenTheSharedOne) {
    DriverWorld d({kBase1}, 5);
    const auto shared = d.w.programData() / "tallix" / "tlx.ini";
    writeFile(shared,
              "[KELVARIN CORE HUB OPTIONS]\r\nVOTE END TEXT=Shared end\r\nVOTED TEXT=Shared sending\r\n"
              "VOTE FAILED TEXT TIME=44\r\n[KELVARIN AUDIO OPTIONS]\r\nKEYPAD PROMPT 02=Shared prompt\r\n"
              "[KELVARIN CORE HUB PRESENTER TEXT]\r\nHOME=Start\r\n");
    d.w.writeSettings("KELVARIN CORE HUB OPTIONS", "VOTE END TEXT", "User end");
    // A key in another section is not the display text.
    d.w.writeSettings("KELVARIN AUDIO OPTIONS", "VOTED TEXT", "Wrong section");
    d.w.writeSettings("KELVARIN CORE HUB OPTIONS", "KEYPAD PROMPT 02", "Wrong section");
    d.singleDigit();
    d.g2().StartVote();  // texts are read afresh when a vote goes out
    const KeypadDisplayTexts& t = d.g2().displayTexts();
    EXPECT_EQ(fields(t.VoteEndText, t.VotedText, t.VoteFailedTextTime, t.KeypadPrompt02, d.g2().presenterMenu().labels[4]),
              "User end|Shared sending|44|Shared prompt|Start");
    EXPECT_EQ(fields(d.station().vote.VoteEndedText, d.station().vote.VotedText), "User end|Shared sending");
}

TEST(DisplayTexts, ReadAtLoadAndAgainSoAChangeReachesTheNextVoteAndTheWinner) {
    DriverWorld d({kBase1}, 5, false);
    d.w.writeSettings("KELVARIN CORE HUB OPTIONS", "WINNING KEYPAD MAIN MESSAGE", "** CHAMPION **");
    d.start();
    EXPECT_EQ(d.g2().displayTexts().WinningKeypadMainMessage, "** CHAMPION **");
    d.singleDigit();
    d.w.writeSettings("KELVARIN CORE HUB OPTIONS", "VOTE SUCCESS TEXT", "Thanks!");
    d.w.writeSettings("KELVARIN CORE HUB OPTIONS", "WINNING KEYPAD MAIN MESSAGE", "CHAMP");
    d.g2().SilentLoadVoteConfig(2);
    EXPECT_EQ(d.station().preparedVote.VoteText, "Thanks!");
    d.g2().ShowWinningKeypad(3, true);
    EXPECT_EQ(d.station().keypadBySid(3)->display, "You're a...|CHAMP");
}

TEST(PresenterKeypad, TheMenuLabelsGoToThePresenterWhenItRegistersAndTheGoToMenuAsGiven) {
    DriverWorld d({kBase1}, 5, false);
    d.station().setup.keypads.push_back(simDevice(kPresenter, 0, DeviceKind::Presenter));
    d.w.writeSettings("KELVARIN CORE HUB PRESENTER TEXT", "NEXT SLIDE", "Forward");
    d.start();  // the presenter announces itself once the radio is up
    EXPECT_EQ(d.station().presenterLabelsHid, kPresenter);
    const auto& labels = d.station().presenterLabels.Labels;
    EXPECT_EQ(fields(labels[0], d.g2().logged("0 - Corehub g2:   SetPresenterMenu = 0")), "Forward|1");

    d.g2().SetPresenterGotoMenu("Exit|1:Welcome|2:Slide 2");
    EXPECT_EQ(d.station().presenterMenu, "Exit|1:Welcome|2:Slide 2");
    d.g2().SetPresenterGotoMenu("Exit");  // a show of no slides is still its own menu
    EXPECT_EQ(d.station().presenterMenu, "Exit");
}

TEST(WinningKeypad, ShownThroughEveryBaseOrReportedWhenUnknown) {
    DriverWorld d;
    d.g2().ShowWinningKeypad(99, true);
    EXPECT_EQ(fields(d.w.logged(" - XX - Winning Keypad Not Loaded - KpadHID NULL"), d.glo().winningKeypadShown), "1|0");
    d.g2().ShowWinningKeypad(7, true);
    EXPECT_EQ(d.unlogged({"Winning Keypad Loaded - 7", "0 - Show Winning Keypad - Keypad: 7"}), "");
    EXPECT_EQ(fields(d.station().keypadBySid(7)->display, d.glo().winningKeypadShown), "You're a...|* WINNER *|1");
    d.sim().fail(kBase1, "ShowWinningKeypad", 11);
    d.g2().ShowWinningKeypad(7, false);
    EXPECT_TRUE(d.g2().logged("0 - Show Winning Keypad FAILED - 11: ACK time out"));
}

TEST(PresenterKeypad, KeysMenuAndGoToBecomeKeyStrokesAndEchoesThatDisplayProgramsChange) {
    PresenterWorld p;
    ASSERT_EQ(p.g2().GetFirstPresentersHID(), kPresenter);
    struct Row {
        const char* runs;  // a display program started before this command
        int command, source, value;
        std::vector<int> keys;
        const char* echo;
    };
    const int menu = kPresenterMenuSource;
    const Row rows[] = {
        {"", 3, 0, 0, {vk::V}, "Start Vote"},
        {"", 1, 0, 0, {vk::PageDown}, "Next"},
        {"", 2, 0, 0, {vk::PageUp}, "Back"},
        {"", 5, 0, 0, {vk::End}, "    End"},
        {"", 10, 0, 0, {vk::VolumeDown}, "Volume Down"},
        {"", 77, 0, 0, {}, "Volume Down"},  // not in the key map
        {"", 0, kPresenterGotoSource, 12, {'1', '2', vk::Enter}, "GoTo 12"},
        {"", 0, menu, 0, {vk::F5}, "Start Show"},
        {"", 2, menu, 0, {vk::B}, "Blank"},
        {"", 3, menu, 0, {vk::V}, "Revote"},
        {"", 9, menu, 0, {}, "Revote"},
        {"chartist.exe", 1, 0, 0, {vk::Space}, "Close Vote"},
        {"GRIDDER.EXE", 1, 0, 0, {vk::Enter}, "Close Vote"},  // the matrix program is tested first; no echo
        {"", 3, 0, 0, {vk::Clear}, "Start Vote"},
    };
    for (const Row& r : rows) {
        if (*r.runs) p.w.desktop.addProcess(r.runs);
        EXPECT_EQ(p.command(r.command, r.source, r.value), r.keys) << r.command << " from " << r.source;
        EXPECT_EQ(p.echo(), r.echo) << r.command << " from " << r.source;
    }
    EXPECT_TRUE(p.g2().logged("Presneter Cmd Rx: command=3,commandSource=0"));

    int toggles = 0;
    p.g2().ToggleAudioDialog.connect([&] { ++toggles; });
    EXPECT_EQ(fields(p.command(133).empty(), toggles), "1|1");
    const int reads = p.station().callCount("GetKeypadConfig");
    p.command(139);
    EXPECT_EQ(p.station().callCount("GetKeypadConfig"), reads + 1);
    EXPECT_EQ(p.g2().SetPresenterEchoMessage("Hello"), 0);
    EXPECT_EQ(p.echo(), "Hello");
}

TEST(PresenterKeypad, WithoutAPresenterNothingIsEchoed) {
    DriverWorld d;
    EXPECT_EQ(d.g2().GetFirstPresentersHID(), "");
    EXPECT_EQ(d.g2().SetPresenterEchoMessage("Hi"), 16);
    EXPECT_FALSE(d.sim().presenterCommand(kBase1, 3));
    d.g2().DecodePresenterCommand(3, 0);
    EXPECT_EQ(d.w.desktop.keysSent(), std::vector<int>{vk::V});
}
