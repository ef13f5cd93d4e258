// Texts arriving: the list, the session log, the status and the alert list.
#include <gtest/gtest.h>

#include "TextVoteWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace fs = std::filesystem;

TEST(TextVoteIntake, ATextIsListedWithItsArrivalTimeLoggedAndCounted) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.w.scheduler.advance(5000);  // 09:00:05 and a little
    t.text(kG2Base, 3, "Coffee please");
    t.w.scheduler.advance(60000);
    t.text(kG2Base, 4, "More questions");
    ASSERT_EQ(f.lstTextVotes.size(), 2u);
    EXPECT_EQ(f.lstTextVotes[0], "[09:00:05] - Coffee please");
    EXPECT_EQ(f.lstTextVotes[1], "[09:01:05] - More questions");
    EXPECT_EQ(f.lblStatus, "Total: 2");
    // The log sits in "Temp" (here only TEMP is set: the names are one on the program's home
    // platform) and takes one "|" line per text: time of writing, HID, keypad, text.
    EXPECT_EQ(f.sessionLogPath(), t.w.temp() / "2026-11-22 Text Votes.kvtxt");
    EXPECT_EQ(t.logLines(f), (std::vector<std::string>{"2026-11-22 09:00:05|300100003|3|Coffee please",
                                                       "2026-11-22 09:01:05|300100004|4|More questions"}));
    EXPECT_TRUE(endsWith(readFile(f.sessionLogPath()), "More questions\r\n"));
}

TEST(TextVoteIntake, AnEmptyTextAddsNothingAnywhere) {
    TextVoteWorld t;
    auto& f = t.startVote();
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100002", 2, "", 300), "0");
    EXPECT_TRUE(f.lstTextVotes.empty());
    EXPECT_TRUE(f.lvwKeypadAlerts.empty());
    EXPECT_EQ(f.lblStatus, "Voting");
    EXPECT_FALSE(fs::exists(f.sessionLogPath()));
}

TEST(TextVoteIntake, TheSessionNameChosenNamesTheLogAndEarlierFilesStay) {
    TextVoteWorld t;
    auto& f = t.open();
    ASSERT_TRUE(f.txtSessionName_Validate("Morning session"));
    f.cmdStartStopVote_Click();
    t.settle();
    t.text(kG2Base, 1, "first");
    EXPECT_EQ(t.logLines(f).size(), 1u);
    EXPECT_TRUE(fs::exists(t.w.temp() / "Morning session.kvtxt"));
    // A set "Temp" wins over TEMP.
    const fs::path other = t.w.dir / "other-temp";
    fs::create_directories(other);
    t.w.desktop.setEnvironment("Temp", other.string());
    t.text(kG2Base, 2, "second");
    EXPECT_EQ(readFile(other / "Morning session.kvtxt").find("|300100002|2|second\r\n") != std::string::npos, true);
    EXPECT_EQ(t.logLines(f).size(), 1u);
    EXPECT_EQ(split(readFile(t.w.temp() / "Morning session.kvtxt"), "\r\n").size(), 2u);
}

TEST(TextVoteIntake, ATextTheLogCannotTakeStaysInTheListAndTheErrorIsLogged) {
    TextVoteWorld t;
    auto& f = t.startVote();
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.w.desktop.setEnvironment("TEMP", (t.w.dir / "no-such-folder").string());
    t.text(kG2Base, 2, "Keep me");
    ASSERT_EQ(f.lstTextVotes.size(), 1u);
    EXPECT_TRUE(endsWith(f.lstTextVotes[0], "] - Keep me"));
    EXPECT_EQ(f.lblStatus, "Total: 1");
    EXPECT_EQ(f.lvwKeypadAlerts.size(), 1u);
    EXPECT_NE(t.errLog().find("AddVoteDataToLogFile"), std::string::npos);
    EXPECT_NE(t.errLog().find("frmTextVoteCollection"), std::string::npos);
    // With the folder back, the next text is written and the earlier one is not lost.
    fs::create_directories(t.w.dir / "no-such-folder");
    t.text(kG2Base, 3, "And me");
    EXPECT_EQ(f.lstTextVotes.size(), 2u);
    EXPECT_EQ(t.logLines(f).size(), 1u);
}

TEST(TextVoteIntake, WithNoTempFolderNamedNothingIsWrittenBesideTheProgram) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.w.desktop.setEnvironment("TEMP", "");
    t.w.desktop.setEnvironment("Temp", "");
    const fs::path here = fs::current_path() / (f.txtSessionName + ".kvtxt");
    t.text(kG2Base, 1, "nowhere");
    EXPECT_EQ(f.lstTextVotes.size(), 1u);
    EXPECT_FALSE(fs::exists(here));
    EXPECT_NE(t.errLog().find("AddVoteDataToLogFile"), std::string::npos);
}

TEST(TextVoteIntake, LineBreaksInsideATextKeepTheLogToOneLinePerText) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100001", 1, "two\r\nlines|and a bar"), "0");
    EXPECT_EQ(f.lstTextVotes.back(), "[09:00:00] - two\r\nlines|and a bar");
    EXPECT_EQ(t.logLines(f), std::vector<std::string>{"2026-11-22 09:00:00|300100001|1|two lines|and a bar"});
}

TEST(TextVoteIntake, ABatteryOf370IsOkAndStaysOffTheAlertList) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.keypad(kG2Base, 1).battery = 370;
    t.keypad(kG2Base, 2).battery = 369;
    t.keypad(kG2Base, 3).battery = 355;
    t.text(kG2Base, 1, "fine");
    EXPECT_TRUE(f.lvwKeypadAlerts.empty());
    t.text(kG2Base, 2, "weak");
    t.text(kG2Base, 3, "weaker");
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 2u);
    const ListViewRow& r = f.lvwKeypadAlerts[0];
    EXPECT_EQ(r.key, "K:2");
    EXPECT_EQ(r.icon, "ALERT");
    EXPECT_EQ(r.subItems[1].key, "B:2");
    EXPECT_EQ(r.subItems[1].text, "Med (3.69V)");
    EXPECT_EQ(r.subItems[1].reportIcon, "BATTMED");
    EXPECT_EQ(f.lvwKeypadAlerts[1].subItems[1].text, "Low (3.55V)");
    EXPECT_EQ(f.lvwKeypadAlerts[1].subItems[1].reportIcon, "BATTLOW");
    // Listing every sender shows the 370 keypad as "OK".
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.text(kG2Base, 1, "fine again");
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 3u);
    EXPECT_EQ(f.lvwKeypadAlerts[2].icon, "OK");
    EXPECT_EQ(f.lvwKeypadAlerts[2].subItems[1].text, "High (3.70V)");
    EXPECT_EQ(f.lvwKeypadAlerts[2].subItems[1].reportIcon, "BATTHIGH");
}

TEST(TextVoteIntake, AnAlertRowFillsItsTenColumnsInOrder) {
    TextVoteWorld t;
    auto& f = t.startVote();
    KelvarinVote v = textVote("300100004", 4, "hello", 361, -62);
    v.PollGroupID = 2;
    v.PollSlotID = 17;
    v.KeyPressTimeStamp = 98765;
    v.VoteReplyID = 6;
    t.drivers.oKVv5()->VoteReceivedObject(v, "0");
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 1u);
    const ListViewRow& r = f.lvwKeypadAlerts[0];
    EXPECT_EQ(frmTextVoteCollection::alertColumns(),
              (std::vector<std::string>{"Hard ID", "Soft ID", "Battery", "Signal", "Base", "VoteID", "Time Stamp",
                                        "Slot", "Group", "RID"}));
    EXPECT_EQ(r.text, "300 100 004");
    std::vector<std::string> cells;
    for (const auto& s : r.subItems) cells.push_back(s.text);
    EXPECT_EQ(cells, (std::vector<std::string>{"4", "Med (3.61V)", "-62 dB", "100 100 100 100", "6", "98765", "17", "2",
                                               "300 100 004"}));
    EXPECT_EQ(r.subItems[2].key, "S:4");
    EXPECT_EQ(r.subItems[2].reportIcon, "SIGNALHIGH");
}

TEST(TextVoteIntake, ASignalOf0LeavesThePreviousSignalInPlace) {
    TextVoteWorld t;
    auto& f = t.startVote();
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100005", 5, "one", 385, -45), "0");
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 1u);
    EXPECT_EQ(f.lvwKeypadAlerts[0].subItems[2].text, "-45 dB");
    EXPECT_EQ(f.lvwKeypadAlerts[0].subItems[2].reportIcon, "SIGNALLOW");
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100005", 5, "two", 360, 0), "0");
    // One row per keypad: the battery follows, the signal stays.
    ASSERT_EQ(f.lvwKeypadAlerts.size(), 1u);
    EXPECT_EQ(f.lvwKeypadAlerts[0].subItems[1].text, "Med (3.60V)");
    EXPECT_EQ(f.lvwKeypadAlerts[0].icon, "ALERT");
    EXPECT_EQ(f.lvwKeypadAlerts[0].subItems[2].text, "-45 dB");
    // A first reading of 0 leaves the cell empty rather than claiming "-0 dB".
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100001", 1, "three", 385, 0), "0");
    EXPECT_EQ(f.lvwKeypadAlerts[1].subItems[2].text, "");
}

TEST(TextVoteIntake, ASignalReadingIsShownByItsSizeWhetherTheBaseSignsItOrNot) {
    TextVoteWorld t;
    auto& f = t.startVote();
    f.mnuShowAllKpadInfoAsVotesArrive_Click();
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100001", 1, "signed", 385, -75), "0");
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100002", 2, "unsigned", 385, 75), "0");
    EXPECT_EQ(f.lvwKeypadAlerts[0].subItems[2].text, "-75 dB");
    EXPECT_EQ(f.lvwKeypadAlerts[1].subItems[2].text, "-75 dB");
    EXPECT_EQ(f.lvwKeypadAlerts[0].subItems[2].reportIcon, f.lvwKeypadAlerts[1].subItems[2].reportIcon);
}

TEST(TextVoteIntake, NothingIsTakenWhileShuttingDown) {
    TextVoteWorld t;
    auto& f = t.startVote();
    t.w.glo().ShuttingDown = true;
    t.drivers.oKVv5()->VoteReceivedObject(textVote("300100001", 1, "late"), "0");
    EXPECT_TRUE(f.lstTextVotes.empty());
    t.w.glo().ShuttingDown = false;
}
