// Texts arriving: the list, the status, the session log and the weak-battery alert list.
#include "TextVoteWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

TEST(TextVoteIntake, TextsAreListedTimedCountedAndLoggedOneLineEach) {
    TextVoteWorld t;
    auto& f = t.startVote();
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.raise(2, "");  // an empty text adds nothing anywhere
    EXPECT_EQ(fields(f.lstTextVotes.empty() && f.lvwKeypadAlerts.empty(), f.lblStatus, fs::exists(f.sessionLogPath())),
              "1|Voting|0");
    t.w.scheduler.advance(5000);
    t.text(kG2Base, 3, "Coffee please");
    t.w.scheduler.advance(60000);
    t.raise(1, "two\r\nlines|and a bar");
    EXPECT_EQ(fields(join(f.lstTextVotes, ","), f.lblStatus), "[09:00:05] - Coffee please,[09:01:05] - two\r\nlines|and a bar|Total: 2");
    // In "Temp" (only TEMP is set here: one variable on the program's home platform), one "|"
    // line per text, breaks inside a text written as blanks.
    EXPECT_EQ(f.sessionLogPath(), t.w.temp() / "2026-11-22 Text Votes.kvtxt");
    EXPECT_EQ(readFile(f.sessionLogPath()), "2026-11-22 09:00:05|300100003|3|Coffee please\r\n"
                                            "2026-11-22 09:01:05|300100001|1|two lines|and a bar\r\n");
    t.w.glo().ShuttingDown = true;
    t.raise(4, "late");
    EXPECT_EQ(f.lstTextVotes.size(), 2u);
    t.w.glo().ShuttingDown = false;
}

TEST(TextVoteIntake, ATextTheLogCannotTakeStaysInTheListAndTheLogFollowsTemp) {
    TextVoteWorld t;
    auto& f = t.open();
    ASSERT_TRUE(f.txtSessionName_Validate("Morning"));
    f.cmdStartStopVote_Click();
    t.w.desktop.setEnvironment("TEMP", (t.w.dir / "missing").string());
    t.text(kG2Base, 2, "Keep me");
    EXPECT_EQ(fields(join(f.lstTextVotes, ","), f.lblStatus), "[09:00:00] - Keep me|Total: 1");
    EXPECT_NE(t.errLog().find("frmTextVoteCollection"), std::string::npos);
    EXPECT_NE(t.errLog().find("AddVoteDataToLogFile"), std::string::npos);
    // No folder named at all: nothing is written beside the program either.
    t.w.desktop.setEnvironment("TEMP", "");
    t.text(kG2Base, 3, "nowhere");
    EXPECT_FALSE(fs::exists(fs::current_path() / "Morning.kvtxt"));
    const fs::path other = t.w.dir / "other";
    fs::create_directories(other);
    t.w.desktop.setEnvironment("Temp", other.string());
    t.text(kG2Base, 4, "written");
    EXPECT_EQ(fields(f.lstTextVotes.size(), readFile(other / "Morning.kvtxt")), "3|2026-11-22 09:00:00|300100004|4|written\r\n");
}

TEST(TextVoteAlerts, ABatteryOf370IsOkBelowItARowFillsItsTenColumnsAndOneRowPerKeypadKeepsItsSignal) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.keypad(1).battery = 370;
    t.text(kG2Base, 1, "fine");
    EXPECT_TRUE(f.lvwKeypadAlerts.empty());
    t.raise(4, "weak", 369, -62);
    t.raise(3, "weaker", 355, 0);
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 2u);
    const ListViewRow& r = f.lvwKeypadAlerts[0];
    EXPECT_EQ(r.key + "|" + r.text + "|" + r.icon, "K:4|300 100 004|ALERT");
    Lines cells;
    for (const auto& s : r.subItems) cells.push_back(s.text);
    EXPECT_EQ(cells, (Lines{"4", "Med (3.69V)", "-62 dB", "100 100 100 100", "6", "98765", "17", "2", "300 100 004"}));
    EXPECT_EQ(r.subItems[1].key + r.subItems[1].reportIcon + r.subItems[2].key + r.subItems[2].reportIcon,
              "B:4BATTMEDS:4SIGNALHIGH");
    const ListViewRow& low = f.lvwKeypadAlerts[1];
    // A reading of 0 is none: never "-0 dB".
    EXPECT_EQ(fields(low.subItems[1].text, low.subItems[1].reportIcon, low.subItems[2].text), "Low (3.55V)|BATTLOW|");
    // Listing every sender shows the 370 keypad as OK.
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.text(kG2Base, 1, "fine again");
    EXPECT_EQ(f.lvwKeypadAlerts.back().icon + "|" + f.lvwKeypadAlerts.back().subItems[1].text, "OK|High (3.70V)");
    // One row per keypad: a signal of 0 keeps the last reading; either sign shows its size.
    t.raise(5, "one", 385, -75);
    t.raise(5, "two", 360, 0);
    t.raise(2, "unsigned", 385, 75);
    const ListViewRow& five = f.lvwKeypadAlerts[f.lvwKeypadAlerts.size() - 2];
    EXPECT_EQ(five.key + "|" + five.icon + "|" + five.subItems[1].text + "|" + five.subItems[2].text,
              "K:5|ALERT|Med (3.60V)|-75 dB");
    EXPECT_EQ(fields(f.lvwKeypadAlerts.back().subItems[2].text, f.lvwKeypadAlerts.back().subItems[2].reportIcon),
              "-75 dB|" + five.subItems[2].reportIcon);
}

TEST(TextVoteAlerts, DeleteKeypadRemovesTheChosenRowsAndTheMenuTogglesItsOptions) {
    TextVoteWorld t;
    auto& f = t.startVote();
    for (int k = 1; k <= 3; ++k) t.raise(k, "low", 350);
    f.cmdDeleteKeypad_Click();  // none chosen
    EXPECT_EQ(f.lvwKeypadAlerts.size(), 3u);
    f.selectAlertRow("K:1", true);
    f.selectAlertRow("K:3", true);
    f.cmdDeleteKeypad_Click();
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 1u);
    EXPECT_EQ(f.lvwKeypadAlerts[0].key, "K:2");
    t.raise(1, "still low", 350);  // a deleted keypad comes back with its next weak text
    EXPECT_EQ(f.lvwKeypadAlerts.size(), 2u);

    int popups = 0;
    f.popupAlertListOptions.connect([&] { ++popups; });
    f.cmdAlertListConfig_Click();
    EXPECT_EQ(popups, 1);
    for (int c = 0; c < 10; ++c) EXPECT_EQ(f.columnVisible(c), c < 4) << c;
    f.mnuShowFullKpadDetails_Click();
    for (int c = 0; c < 10; ++c) EXPECT_TRUE(f.columnVisible(c)) << c;
    EXPECT_FALSE(f.columnVisible(10));
}
