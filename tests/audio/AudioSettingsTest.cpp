// The audio settings dialog and the stand-alone trial settings file.
#include "AudioWorld.h"

#include <filesystem>
#include <functional>

#include "audio/AudioOptions.h"
#include "audio/AudioSettingsForm.h"
#include "audio/clsSettings.h"

using namespace tlx;
using namespace tlx::test;

namespace {
std::string opt(AudioWorld& w, const char* key) { return w.glo().options.text(section::kAudioOptions, key); }

frmAudioSettings& openSettings(AudioWorld& w) {
    w.audio().LaunchSettings();
    auto* f = w.c().forms.get<frmAudioSettings>(frmAudioSettings::kName);
    EXPECT_NE(f, nullptr);
    return *f;
}
}  // namespace

TEST(AudioSettingsDialog, OkWritesTheBoxesToTheStoreAndTheNextTurnCancelWritesNothing) {
    AudioWorld w;
    frmAudioSettings& c = openSettings(w);
    c.txtAudioMaxTalkTime = "5";
    c.cmdCancel_Click();
    EXPECT_EQ(opt(w, audiokey::kMaxTalkTime), "60");
    frmAudioSettings& f = openSettings(w);
    EXPECT_EQ(f.txtAudioMaxTalkTime, "60");
    f.cmd_AudioImageBrowse_Click();  // a cancelled file dialog keeps the box
    EXPECT_EQ(f.txt_AudioImage, "[DEFAULT]");
    f.sldAudioMINVL.value = 55;
    f.txtAudioMaxTalkTime = " 90 ";
    f.cmbAudioMicSwitchLogic.index = 2;
    f.txtAudioMuteKey = "9";
    f.optAudioRadioSpeed.index = 1;
    f.chkAudioRadioChannel_Click(true);
    f.txtAudioRadioChannel = "12";
    f.txt_AudioPrompt[1] = "Go ahead";
    ASSERT_TRUE(f.cmdOK_Click());
    // "[DEFAULT]" is no image.
    EXPECT_EQ(fields(w.c().forms.get<frmAudioSettings>(frmAudioSettings::kName) == nullptr, opt(w, audiokey::kImage)), "1|");
    const std::string ini = w.ini();
    for (const char* line : {"[KELVARIN AUDIO OPTIONS]", "MAX TALK TIME=90", "KEYPAD PROMPT 02=Go ahead"})
        EXPECT_TRUE(contains(ini, line)) << line;
    // The next turn carries them, in their order.
    const KelvarinAudioOptions r = audioOptionsRecord(w.glo().options);
    EXPECT_EQ(fields(r.MicVolume, r.MaxTalkTime, r.MicSwitchLogic, r.MuteKey, r.RadioSpeed, r.UseOwnRadioChannel, r.RadioChannel),
              "55|90|2|9|1|1|12");
}

TEST(AudioSettingsDialog, EveryEntryBoxRejectsBadTextAndChangesNothing) {
    AudioWorld w;
    const std::string image = (w.dir / "logo.gif").string();
    writeFile(image, "GIF89a");
    using Edit = std::function<void(frmAudioSettings&)>;
    const std::vector<std::pair<std::string, Edit>> cases = {
        {"talk time text", [](frmAudioSettings& f) { f.txtAudioMaxTalkTime = "1 minute"; }},
        {"talk time zero", [](frmAudioSettings& f) { f.txtAudioMaxTalkTime = "0"; }},
        {"talk time empty", [](frmAudioSettings& f) { f.txtAudioMaxTalkTime = ""; }},
        {"warning negative", [](frmAudioSettings& f) { f.txtAudioWarning = "-5"; }},
        {"mic key beyond the keys", [](frmAudioSettings& f) { f.txtAudioMicKey = "14"; }},
        {"end key fraction", [](frmAudioSettings& f) { f.txtAudioEndKey = "1.5"; }},
        {"mute key text", [](frmAudioSettings& f) { f.txtAudioMuteKey = "M"; }},
        {"same key twice", [](frmAudioSettings& f) { f.txtAudioEndKey = "0"; }},
        {"channel out of range", [](frmAudioSettings& f) {
             f.chkAudioRadioChannel_Click(true);
             f.txtAudioRadioChannel = "78";
         }},
        {"prompt of two lines", [](frmAudioSettings& f) { f.txt_AudioPrompt[0] = "one\r\ntwo"; }},
        {"image that is no image", [](frmAudioSettings& f) { f.txt_AudioImage = "notes.txt"; }},
        {"image that does not exist", [](frmAudioSettings& f) { f.txt_AudioImage = "/no/such/logo.jpg"; }},
    };
    const std::string before = w.ini();
    for (const auto& [name, edit] : cases) {
        frmAudioSettings& f = openSettings(w);
        f.txt_AudioImage = image;  // a good image, so only the case's box is wrong
        f.sldAudioBOOVL.value = 7;
        edit(f);
        const std::size_t shown = w.dialogs.shown.size();
        EXPECT_FALSE(f.cmdOK_Click()) << name;
        EXPECT_EQ(w.dialogs.shown.size(), shown + 1) << name;
        EXPECT_EQ(w.dialogs.shown.back().title, "Audio Settings") << name;
        EXPECT_TRUE(f.Visible()) << name;  // still open, to be corrected
        EXPECT_EQ(fields(opt(w, audiokey::kBoostVolume), opt(w, audiokey::kImage)), "0|") << name;
        f.cmdCancel_Click();
    }
    EXPECT_EQ(w.ini(), before);
    // A good image is kept as typed.
    frmAudioSettings& f = openSettings(w);
    f.txt_AudioImage = image;
    ASSERT_TRUE(f.cmdOK_Click());
    EXPECT_EQ(opt(w, audiokey::kImage), image);
    EXPECT_EQ(openSettings(w).txt_AudioImage, image);
}

namespace {
// The five values of the one-line trial file, joined as the file would hold them.
std::string fields(clsSettings& s) {
    return s.AudioTargetHID() + "|" + numText(s.AudioMicLogic()) + "|" + numText(s.AudioMaxTalkTime()) + "|" +
           numText(s.AudioMicVol()) + "|" + numText(s.AudioMicBoost());
}
}  // namespace

TEST(TrialSettingsFile, PartialFilesSetOnlyTheFieldsTheyHaveAndABadOneChangesNothing) {
    TestWorld w;
    std::filesystem::create_directories(w.install());
    clsSettings s(w.c().errors, w.install());
    s.LoadINIFile();  // no file: the defaults stay
    EXPECT_EQ(fields(s), "100 100 100 100|1|60|30|0");
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"", "100 100 100 100|1|60|30|0"},  // no fields
             {"60", "60|1|60|30|0"},              // alone, the first field: the target keypad
             {"200 100 100 007|2|45\r\n", "200 100 100 007|2|45|30|0"},
             {"9|x|30", "200 100 100 007|2|45|30|0"}}) {  // a bad field takes none of the others either
        writeFile(s.file(), text);
        s.LoadINIFile();
        EXPECT_EQ(fields(s), expected) << text;
    }
    EXPECT_TRUE(contains(readFile(w.c().logs.errLogPath()), "Module: clsSettings_LoadINIFile"));
    // A folder that cannot be written.
    clsSettings nowhere(w.c().errors, w.dir / "no" / "such" / "folder");
    nowhere.SaveINIFile();
    EXPECT_EQ(fields(contains(readFile(w.c().logs.errLogPath()), "Module: clsSettings_SaveINIFile"), std::filesystem::exists(nowhere.file())),
              "1|0");
}

TEST(TrialSettingsFile, SavesOneLineThatLoadsBackAndABarInTheTargetShiftsTheFields) {
    TestWorld w;
    std::filesystem::create_directories(w.install());
    clsSettings s(w.c().errors, w.install());
    s.AudioTargetHID("300 100 100 042");
    s.AudioMicLogic(0);
    s.AudioMaxTalkTime(120);
    s.AudioMicVol(75);
    s.AudioMicBoost(3);
    s.SaveINIFile();
    EXPECT_EQ(readFile(w.install() / "TestApp.ini"), "300 100 100 042|0|120|75|3\r\n");
    clsSettings t(w.c().errors, w.install());
    t.LoadINIFile();
    EXPECT_EQ(fields(t), "300 100 100 042|0|120|75|3");
    // Not guarded against: the target's own "|" moves every later value one place on.
    s.AudioTargetHID("1|2");
    s.SaveINIFile();
    t.LoadINIFile();
    EXPECT_EQ(fields(t), "1|2|0|120|75");
}
