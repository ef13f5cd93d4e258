#include <gtest/gtest.h>

#include "core/Options.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {
struct SettingsWorld : TestWorld {
    SettingsWorld() { c().resolveDataFolders(); }
    fs::path userIni() { return appData() / "tallix" / "tlx.ini"; }
    fs::path allUsersIni() { return programData() / "tallix" / "tlx.ini"; }
};
}  // namespace

TEST(Settings, SaveSettingsWritesEveryKeyInOrderReadsBackAndKeepsOtherSections) {
    SettingsWorld w;
    WriteProfileString(w.userIni(), "DEBUG", "LOGEVENTS TO FILE", "1");
    Options o;
    o.set(section::kCoreHubOptions, "VOTE END TEXT", "   Vote Ended");
    o.set(section::kCoreHubOptions, "REVOTE PAUSE", "12");
    o.set(section::kAudioOptions, "MAX TALK TIME", "90");
    o.set(section::kPresenterText, "NEXT SLIDE", "  Forward");
    ASSERT_TRUE(w.c().settings.SaveSettings(o));

    const std::string text = readFile(w.userIni());
    // Sections and keys in SaveSettings order.
    std::size_t pos = 0;
    for (const auto& d : savedSettingDefs()) {
        const auto at = text.find(std::string(d.key) + "=", pos);
        ASSERT_NE(at, std::string::npos) << d.key;
        pos = at;
    }
    EXPECT_LT(text.find("[KELVARIN OPTIONS]"), text.find("[KELVARIN CORE HUB OPTIONS]"));
    EXPECT_LT(text.find("[KELVARIN AUDIO OPTIONS]"), text.find("[KELVARIN CORE HUB PRESENTER TEXT]"));

    Options back;
    w.c().settings.loadOptions(back);
    EXPECT_EQ(back.values(), o.values());
    EXPECT_EQ(fields(back.text(section::kCoreHubOptions, "VOTE END TEXT"), GetProfileString(w.userIni(), "DEBUG", "LOGEVENTS TO FILE", "0")),
              "   Vote Ended|1");
}

TEST(Settings, SwitchValuesAnyNonZeroNumberIsOnUnreadableIsOff) {
    SettingsWorld w;
    const Settings& s = w.c().settings;
    for (const auto& [value, on] : std::vector<std::pair<std::string, bool>>{
             {"1", true}, {"-1", true}, {"25", true}, {"0", false}, {"yes", false}, {"", false}, {"0.0", false}}) {
        WriteProfileString(w.userIni(), "DEBUG", "SHOW ALL ERRORS", value);
        EXPECT_EQ(s.ShowAllErrors(), on) << value;
    }
    WriteProfileString(w.userIni(), "DEBUG", "DISABLE PPT SAVE AFTER VOTE CLOSE", "0");  // on by default
    EXPECT_FALSE(s.DisablePptSaveAfterVoteClose());
    WriteProfileString(w.userIni(), "TALLIX OPTIONS", "CHART EXPORT FORMAT", "PNG");
    EXPECT_EQ(s.ChartExportFormat(), "PNG");
}

TEST(Settings, PerUserFileFirstThenAllUsers) {
    SettingsWorld w;
    const Settings& s = w.c().settings;
    WriteProfileString(w.allUsersIni(), "DEBUG", "MINIMIZE WINDOWS ON SLIDE SHOW START", "1");
    EXPECT_TRUE(s.MinimizeWindowsOnSlideShowStart());
    WriteProfileString(w.userIni(), "DEBUG", "MINIMIZE WINDOWS ON SLIDE SHOW START", "0");
    EXPECT_FALSE(s.MinimizeWindowsOnSlideShowStart());
    // A per-user file without the key still lets the all-users value through.
    WriteProfileString(w.allUsersIni(), "DEBUG", "DISABLE PARTICIPANT LIST", "1");
    EXPECT_TRUE(s.DisableParticipantList());
}

TEST(Settings, TheOlderCommaFormIsReadAndBothFormsReadInFull) {
    SettingsWorld w;
    writeFile(w.userIni(),
              "DETECTOR STATUS,1\r\nKEYPAD BEEP,0\r\nVOTE END TEXT,Over and out\r\nREVOTE PAUSE,4\r\nMAX TALK TIME,45\r\n");
    const auto pairs = readSettingsFileInFull(w.userIni());
    ASSERT_EQ(pairs.size(), 5u);
    EXPECT_EQ(fields(pairs[2].first, pairs[2].second), "VOTE END TEXT|Over and out");
    Options o;
    w.c().settings.loadOptions(o);
    // The voted text keeps its default.
    EXPECT_EQ(fields(o.text(section::kKelvarinOptions, "DETECTOR STATUS"), o.flag(section::kKelvarinOptions, "KEYPAD BEEP"),
                     o.text(section::kCoreHubOptions, "VOTE END TEXT"), o.integer(section::kAudioOptions, "MAX TALK TIME"),
                     o.text(section::kCoreHubOptions, "VOTED TEXT")),
              "1|0|Over and out|45|Sending Vote...");
    // Read in full, the equals form skips its section lines.
    writeFile(w.userIni(), "[KELVARIN OPTIONS]\r\nDETECTOR STATUS=1\r\n[X]\r\nA=b=c\r\nnoseparator\r\n");
    EXPECT_EQ(readSettingsFileInFull(w.userIni()),
              (std::vector<std::pair<std::string, std::string>>{{"DETECTOR STATUS", "1"}, {"A", "b=c"}}));
}

// Damaged files: tests/reliability/FileFaultTest.cpp.
TEST(Settings, AFolderWhereTheFileShouldBeGivesTheDefaults) {
    SettingsWorld w;
    fs::create_directories(w.userIni());
    Options o;
    w.c().settings.loadOptions(o);
    EXPECT_EQ(o.values(), Options{}.values());
    auto& s = w.c().settings;  // the switches that default to on stay on
    EXPECT_EQ(fields(s.LogEventsToFile(), s.DisableDisablingPptWindows(), s.DisablePptSaveAfterVoteClose(), s.ChartExportFormat()),
              "0|1|1|EMF");
}
