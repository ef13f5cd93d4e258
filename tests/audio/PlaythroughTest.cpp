// Playthrough as the window drives the sound card: the order of the calls, the monitor, the
// latency rule, and failures.
#include "AudioWorld.h"

#include "audio/AudioOptions.h"
#include "audio/AudioText.h"
#include "support/Fields.h"

using namespace tlx;
using namespace tlx::test;

TEST(Playthrough, StartsInOrderAndLogsTheDevices) {
    AudioWorld w;
    w.glo().options.set(section::kAudioOptions, audiokey::kInputDevice, "1");
    w.glo().options.set(section::kAudioOptions, audiokey::kOutputDevice, "0");
    frmAudio& a = w.audio();
    ASSERT_TRUE(a.PlayThroughStart());
    EXPECT_EQ(w.engine->calls, (std::vector<std::string>{"init 0 44100", "recordInit 1", "streamCreate 44100 2",
                                                          "recordStart 44100 2", "channelPlay"}));
    EXPECT_TRUE(w.debugLogged("PlayThroughStart - Success: input_device = 1, input_ = -1, output_ = 0"));
    // The input level is the master input's, the chosen input having none.
    EXPECT_EQ(fields(a.sld_inputLevel, a.sld_outputLevel, a.cmd_startPlaythrough.enabled, a.tmr_bassCPU.enabled()),
              "80|50|0|1");
    // The default-devices option overrides the chosen ones.
    a.PlayThroughStop();
    a.chk_Click(AudioCheck::DefaultDeviceOnly, true);
    w.engine->calls.clear();
    a.PlayThroughStart();
    EXPECT_EQ(fields(w.engine->calls.at(0), w.engine->calls.at(1)), "init -1 44100|recordInit -1");
}

TEST(Playthrough, FailureIsReportedWithItsTextAndLeavesNothingOpen) {
    AudioWorld w;
    frmAudio& a = w.audio();
    w.engine->failOn("streamCreate", 6);
    EXPECT_FALSE(a.PlayThroughStart());
    EXPECT_TRUE(w.debugLogged("PlayThroughStart - Failed: input_device = -1, input_ = -1, output_ = -1"));
    EXPECT_EQ(fields(a.playthroughRunning(), w.engine->count("recordFree"), w.engine->count("free"),
                     a.cmd_startPlaythrough.enabled),
              "0|1|1|1");
    EXPECT_EQ(fields(w.dialogs.any("Error 6: unsupported sample format"), w.dialogs.shown.back().title,
                     contains(w.errLog(), "Description: Error 6: unsupported sample format")),
              "1|Audio Error|1");
    // Codes the table lacks, and -1, read as unknown rather than past its end.
    for (int code : {-1, 10, 46, 1000}) EXPECT_EQ(bassErrorText(code), "Unkown BASS error") << code;
}

TEST(Playthrough, MonitorShowsLoadLevelAndLatencyAndRestartsAbove150ms) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.PlayThroughStart();
    w.engine->cpuLoad = 1.234;
    w.engine->level = 0.42;
    w.engine->buffered = 44100 * 4 * 150 / 1000;  // exactly 150 ms: still fine
    w.scheduler.advance(250);
    EXPECT_EQ(fields(a.lblCPU, a.pbar_channelLevel.value, a.lblLatency, w.engine->count("channelPlay")),
              "CPU: 1.23%|42|Latency: 150 ms|1");
    w.engine->buffered = 44100 * 4 * 151 / 1000;
    w.scheduler.advance(250);
    EXPECT_TRUE(w.debugLogged("Latency too high - playthrough restarting"));
    EXPECT_EQ(fields(w.engine->count("recordFree"), w.engine->count("channelPlay"), a.playthroughRunning()), "1|2|1");
}

TEST(Playthrough, VanishingDeviceStopsPlaythroughButNotTheTurn) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.chk_Click(AudioCheck::PlaythroughEnabled, true);
    a.MicRequest(w.keypadObject(1), "0", false);
    w.giveFloor(1);
    ASSERT_TRUE(a.playthroughRunning());
    w.engine->onFailure(AudioErrorCode::Device);
    EXPECT_EQ(fields(a.playthroughRunning(), w.dialogs.any("Error 23: illegal device number"), a.status, w.station().audioHid),
              "0|1|Streaming Audio|" + AudioWorld::hid(1));
    w.scheduler.advance(1000);
    EXPECT_EQ(a.status, "Streaming Audio - 59");
}

TEST(Playthrough, FollowsTheTurnUnlessKeptRunning) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.chk_Click(AudioCheck::PlaythroughEnabled, true);
    for (int k : {1, 2}) a.MicRequest(w.keypadObject(k), "0", false);
    w.giveFloor(1);
    EXPECT_TRUE(a.playthroughRunning());
    a.cmd_stopAudio_Click();
    EXPECT_FALSE(a.playthroughRunning());
    a.chk_Click(AudioCheck::RunPlaythroughConstantly, true);
    w.giveFloor(2);
    a.cmd_stopAudio_Click();
    EXPECT_EQ(fields(a.playthroughRunning(), w.engine->count("init")), "1|2");
    // A failed start leaves playthrough as it found it.
    a.PlayThroughStop();
    w.baseLibrary.fail(kBase, "StartAudio", 9);
    w.giveFloor(1);
    EXPECT_FALSE(a.playthroughRunning());
}

TEST(Playthrough, CallbackDiagnosticsAndTheirEntryBoxInTheDebugLog) {
    AudioWorld w;
    frmAudio& a = loadAudioWindow(w.c());
    a.LogEvent("first");  // the debug log is kept only in debug mode
    EXPECT_EQ(a.txt_DebugLog, "");
    a.mnu_debugMode_Click();
    a.LogEvent("second");
    EXPECT_EQ(a.txt_DebugLog, "second\r\n");
    a.PlayThroughStart();
    EXPECT_FALSE(a.txt_audioMinCallbackDataLen_Change("12x"));
    EXPECT_FALSE(a.txt_audioMinCallbackDataLen_Change("-4"));
    EXPECT_EQ(fields(w.dialogs.shown.size(), a.txt_audioMinCallbackDataLen), "2|0");
    ASSERT_TRUE(a.txt_audioMinCallbackDataLen_Change(" 1024 "));
    a.chk_Click(AudioCheck::CallBackLogNextEvent, true);
    char block[2048] = {};
    w.engine->onBlock(2048, block);
    w.engine->onBlock(2048, block);
    w.engine->onBlock(512, block);
    const std::string& log = a.txt_DebugLog;
    EXPECT_EQ(log.find("Audio Data CallBack Details: length = 2048, buffer = "),
              log.rfind("Audio Data CallBack Details: length = 2048, buffer = "));  // the next event only
    EXPECT_EQ(fields(a.checked(AudioCheck::CallBackLogNextEvent), w.debugLogged("Audio Data From CallBack To Low: length = 512\r\n"),
                     w.debugLogged("To Low: length = 2048")),
              "0|1|0");
}
