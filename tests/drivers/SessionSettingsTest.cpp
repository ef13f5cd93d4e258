#include <gtest/gtest.h>

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
    EXPECT_EQ(s.form->txtAutoOffKeyPress, "1000");
    EXPECT_EQ(s.form->txtPacketRetryCount, "0");
    EXPECT_EQ(s.form->txtSessionChannel[2], "33");
    EXPECT_EQ(s.form->txtSessionChannel[1], "1");
}

TEST(SessionSettings, LoadingWithoutAFileGivesTheBuiltInsAndSavingAsksAndRoundTrips) {
    SettingsWorld s;
    auto& f = *s.form;
    f.txtName.clear();
    f.cmdLoadDefault();
    EXPECT_EQ(s.w.dialogs.shown.back().text, "Load in settings with default values?");
    EXPECT_EQ(f.txtName, "tallix Session");
    f.txtName = "Hall B";
    f.txtSessionChannel[3] = "11";
    f.chkHighNoiseMode = true;
    s.w.dialogs.answers = {false};
    f.cmdSaveAsDefault();
    EXPECT_FALSE(std::filesystem::exists(s.file()));
    EXPECT_EQ(s.w.dialogs.shown.back().title, "Save Default Confirm");
    EXPECT_EQ(s.w.dialogs.shown.back().text,
              "Overwrite default tallix settings for base station with currently loaded settings?");
    f.cmdSaveAsDefault();
    EXPECT_EQ(GetProfileString(s.file(), "RADIO", "ALT CHANNEL 3", ""), "11");
    EXPECT_EQ(GetProfileString(s.file(), "ENVIRONMENTAL", "HIGH NOISE MODE", ""), "1");

    f.txtName.clear();
    f.txtSessionChannel[3].clear();
    s.w.dialogs.answers = {false};
    f.cmdLoadDefault();  // "No" changes nothing
    EXPECT_EQ(f.txtName, "");
    f.cmdLoadDefault();
    EXPECT_EQ(f.txtName, "Hall B");
    EXPECT_EQ(f.txtSessionChannel[3], "11");
    EXPECT_TRUE(f.chkHighNoiseMode);
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
    EXPECT_TRUE(d.w.c().forms.isLoaded(frmPrioritizerSessionSettings::kName));
    EXPECT_TRUE(d.w.dialogs.any("Set Session Config Error"));
    EXPECT_TRUE(f.cmdOK());
    EXPECT_EQ(d.station().setup.session.PrimaryChannel, 45);
    EXPECT_EQ(d.station().setup.session.VoteSleepTimer, 0);
    EXPECT_FALSE(d.w.c().forms.isLoaded(frmPrioritizerSessionSettings::kName));
}
