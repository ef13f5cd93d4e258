#include <gtest/gtest.h>

#include <functional>

#include "DriverWorld.h"
#include "core/Settings.h"
#include "drivers/SessionSettings.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct SettingsWorld {
    SettingsWorld() {
        w.start();
        form = &w.c().forms.load<frmPrioritizerSessionSettings>(w.c());
    }
    TestWorld w;
    frmPrioritizerSessionSettings* form;
    std::filesystem::path file() const { return form->defaultsFile(); }
};
}  // namespace

TEST(SessionSettings, NumbersAreReadThroughTheSharedReader) {
    SettingsWorld s;
    writeFile(s.file(), "[POWER SAVE]\r\nAUTO OFF NO KEYPRESS=1,000\r\n[ENVIRONMENTAL]\r\nPACKET RETRY COUNT=abc\r\n"
                        "[RADIO]\r\nALT CHANNEL 2=33\r\n");
    s.form->loadDefaults();
    EXPECT_EQ(fields(s.form->txtAutoOffKeyPress, s.form->txtPacketRetryCount, s.form->txtSessionChannel[2],
                     s.form->txtSessionChannel[1]),
              "1000|0|33|1");
}

TEST(SessionSettings, LoadingWithoutAFileGivesTheBuiltInsAndSavingAsksAndRoundTrips) {
    SettingsWorld s;
    auto& f = *s.form;
    f.txtName.clear();
    f.cmdLoadDefault();
    EXPECT_EQ(fields(s.w.dialogs.shown.back().text, f.txtName), "Load in settings with default values?|tallix Session");
    f.txtName = "Hall B";
    f.txtSessionChannel[3] = "11";
    f.chkHighNoiseMode = true;
    s.w.dialogs.answers = {false};
    f.cmdSaveAsDefault();
    EXPECT_EQ(fields(std::filesystem::exists(s.file()), s.w.dialogs.shown.back().title), "0|Save Default Confirm");
    EXPECT_EQ(s.w.dialogs.shown.back().text,
              "Overwrite default tallix settings for base station with currently loaded settings?");
    f.cmdSaveAsDefault();
    EXPECT_EQ(fields(GetProfileString(s.file(), "RADIO", "ALT CHANNEL 3", ""),
                     GetProfileString(s.file(), "ENVIRONMENTAL", "HIGH NOISE MODE", "")),
              "11|1");

    f.txtName.clear();
    f.txtSessionChannel[3].clear();
    s.w.dialogs.answers = {false};
    f.cmdLoadDefault();  // "No" changes nothing
    EXPECT_EQ(f.txtName, "");
    f.cmdLoadDefault();
    EXPECT_EQ(fields(f.txtName, f.txtSessionChannel[3], f.chkHighNoiseMode), "Hall B|11|1");
}

TEST(SessionSettings, EditsABasesSession) {
    DriverWorld d;
    d.station().setup.session.PrimaryChannel = 24;
    auto& f = d.w.c().forms.load<frmPrioritizerSessionSettings>(d.w.c(), &d.g2(), "0");
    f.Form_Load();
    EXPECT_EQ(f.txtChannel, "24");
    f.txtChannel = "45";
    f.txtVoteSleepTimer = "-5";  // a negative time becomes 0
    d.sim().fail("100100100100", "SetSessionConfig", 8);
    EXPECT_FALSE(f.cmdOK());
    EXPECT_EQ(fields(d.w.c().forms.isLoaded(frmPrioritizerSessionSettings::kName), d.w.dialogs.any("Set Session Config Error")),
              "1|1");
    EXPECT_TRUE(f.cmdOK());
    EXPECT_EQ(fields(d.station().setup.session.PrimaryChannel, d.station().setup.session.VoteSleepTimer,
                     d.w.c().forms.isLoaded(frmPrioritizerSessionSettings::kName)),
              "45|0|0");
}

TEST(SessionSettings, OkRefusesABadValueWithItsMessageAndSendsNothing) {
    DriverWorld d;
    auto& f = d.w.c().forms.load<frmPrioritizerSessionSettings>(d.w.c(), &d.g2(), "0");
    f.Form_Load();
    const KelvarinSessionConfig before = d.station().setup.session;
    // Each case spoils one control of a good form; the first bad control is the one named.
    const std::vector<std::pair<std::function<void()>, std::string>> cases = {
        {[&] { f.txtID = "0"; }, "Session ID must be a whole number from 1 to 65535"},
        {[&] { f.txtID = "2.5"; }, "Session ID must be a whole number from 1 to 65535"},
        {[&] { f.txtName = "  "; }, "Please enter a session name"},
        {[&] { f.txtChannel = "78"; }, "Primary Channel must be a whole number from 1 to 77"},
        {[&] { f.txtSessionChannel[8] = "abc"; }, "Alternative Channel 8 must be a whole number from 1 to 77"},
        {[&] { f.cmbRegistryMode = 2; }, "Static Registry Maximum Keypads must be a whole number from 1 to 4095"},
        {[&] { f.txtVoteSleepTimer = "soon"; }, "Vote Sleep Timer must be a number"},
    };
    for (const auto& [spoil, message] : cases) {
        f.Form_Load();
        spoil();
        d.w.dialogs.shown.clear();
        EXPECT_FALSE(f.cmdOK()) << message;
        ASSERT_EQ(d.w.dialogs.shown.size(), 1u) << message;
        EXPECT_EQ(d.lastDialog(), "Session Settings: " + message);
        EXPECT_TRUE(d.w.c().forms.isLoaded(frmPrioritizerSessionSettings::kName));
        const auto& now = d.station().setup.session;
        EXPECT_EQ(std::tie(now.SessionID, now.PrimaryChannel, now.AltChannels, now.RegistryMode),
                  std::tie(before.SessionID, before.PrimaryChannel, before.AltChannels, before.RegistryMode));
    }
    // Times and counts out of range are corrected, not refused; a thousands comma reads.
    f.Form_Load();
    f.cmbRegistryMode = 2;
    f.txtStaticRegSIDOffset = "100";
    f.txtStaticRegSIDMax = "1,000";
    f.txtAutoOffKeyPress = "99999";
    EXPECT_TRUE(f.cmdOK());
    EXPECT_EQ(fields(d.station().setup.session.StaticRegSIDMax, d.station().setup.session.AutoOffNoKeypress), "1000|65535");
}
