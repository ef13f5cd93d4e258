// Giving the floor, the talk time, the link's readings, ending and hiding; and a whole turn
// through the simulated bases on virtual time.
#include "AudioWorld.h"

#include "audio/AudioOptions.h"
#include "support/Fields.h"

using namespace tlx;
using namespace tlx::test;

namespace {
void queue(AudioWorld& w, std::initializer_list<int> keypads) {
    for (int k : keypads) w.audio().MicRequest(w.keypadObject(k), "0", false);
}
// Status; start, stop, hide and list enabled; the speaker; the countdown running.
std::string window(frmAudio& a) {
    return fields(a.status, a.cmd_startAudio.enabled, a.cmd_stopAudio.enabled, a.cmd_hide.enabled,
                  a.lvw_keypadRequests.enabled, a.currentSpeaker(), a.tmrTimeRemaining.enabled());
}
}  // namespace

TEST(Turn, GivingTheFloorStreamsTheRowLocksTheWindowAndADoubleClickMovesIt) {
    AudioWorld w;
    w.glo().options.set(section::kAudioOptions, audiokey::kMaxTalkTime, "45");
    w.glo().options.set(section::kAudioOptions, audiokey::kMicVolume, "70");
    queue(w, {1, 2});
    frmAudio& a = w.audio();
    w.giveFloor(2);
    const auto& st = w.station();
    EXPECT_EQ(fields(st.audioHid, st.audioOptions.MaxTalkTime, st.audioOptions.MicVolume), AudioWorld::hid(2) + "|45|70");
    EXPECT_EQ(fields(join(w.rowTexts(), ","), a.imgMicIcon == MicIcon::Streaming), "1 QUEUED,2 SPEAKING|1");
    EXPECT_EQ(window(a), "Streaming Audio|0|1|0|0|" + AudioWorld::hid(2) + "|1");
    for (const AudioButton* b : {&a.cmd_audioRequest, &a.cmd_clearList, &a.cmd_settings})
        EXPECT_FALSE(b->enabled) << b->caption;
    // A double click ends the running turn and gives the floor to the row.
    a.lvw_keypadRequests_DblClick(0);
    EXPECT_EQ(fields(join(w.rowTexts(), ","), w.station().audioHid), "1 SPEAKING,2 DONE|" + AudioWorld::hid(1));
}

TEST(Turn, StartingWithRequestsOffTurnsThemOnWhenAskedTo) {
    AudioWorld w;
    queue(w, {1});
    frmAudio& a = w.audio();
    a.chk_Click(AudioCheck::AudioRequestsOn, true);
    ASSERT_EQ(a.cmd_audioRequest.caption, "Enable Requests");
    w.giveFloor(1);
    EXPECT_EQ(fields(a.cmd_audioRequest.caption, w.g2().audioRequestsOn(), a.status), "Disable Requests|1|Streaming Audio");
    // The option is kept by the settings store.
    EXPECT_TRUE(contains(w.ini(), "AUDIO AUTO REQUESTS=1"));
    // The turn's end opens the requests again for the next speakers.
    w.g2().EndAudioRequests();
    a.cmd_stopAudio_Click();
    EXPECT_TRUE(w.g2().audioRequestsOn());
}

TEST(Turn, AStartThatCannotGoAheadLeavesTheWindowAsItWas) {
    AudioWorld w;
    queue(w, {1});
    frmAudio& a = w.audio();
    a.cmd_startAudio_Click();  // nothing selected
    ASSERT_EQ(w.dialogs.shown.size(), 1u);
    EXPECT_EQ(fields(w.dialogs.shown[0].title, w.dialogs.shown[0].text), "Murmelo|Nothing selected");
    // The base refuses: the buttons stay as they were and the reason is logged.
    w.select(1);
    w.baseLibrary.fail(kBase, "StartAudio", 9);
    a.cmd_startAudio_Click();
    EXPECT_EQ(window(a), "Requests Disabled|1|0|1|1||0");
    EXPECT_EQ(fields(join(w.rowTexts(), ","), contains(w.errLog(), "Description: Unable to initialize audio, ensure base is connected")),
              "1 QUEUED|1");
    // A vote that will not end keeps the floor closed: the command channel is stuck, so the
    // queued ENDVOTE never runs.
    w.openVote();
    w.select(1);
    w.glo().ShuttingDown = true;
    a.cmd_startAudio_Click();
    w.glo().ShuttingDown = false;
    EXPECT_EQ(fields(a.status, w.station().audioHid.empty(), a.cmd_startAudio.enabled), "Unable to stop vote, please try again|1|1");
}

TEST(Turn, LinkReadingsIgnoreValuesBeyondAByte) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.oKVv5_AudioStatus(KelvarinAudioStatus{true, -61, 1234}, "0");
    EXPECT_EQ(fields(a.cmd_stopAudio.enabled, a.lblRSSI, a.pbarRSSI.value, a.lblLQI), "1|-61 dB|-61|");
    a.oKVv5_AudioStatus(KelvarinAudioStatus{false, 300, 0}, "0");
    EXPECT_EQ(fields(a.lblRSSI, a.lblLQI), "-61 dB|0");  // 300 is no reading
    a.oKVv5_AudioStatus(KelvarinAudioStatus{true, 0, 255}, "0");
    EXPECT_EQ(fields(a.lblRSSI, a.lblLQI, a.pbarLQI.value), "- |255|255");
    a.oKVv5_AudioStatus(KelvarinAudioStatus{true, -150, 0}, "0");
    EXPECT_EQ(a.pbarRSSI.value, a.pbarRSSI.min);  // clamped to the bar
}

TEST(Turn, EndingRestoresTheWindowKeepsAQuestionSlideAndMarksOrRemovesTheRow) {
    AudioWorld w;
    w.presentation.Begin();
    w.presentation.GoTo(3);  // the slide with a question
    w.settle();
    queue(w, {1, 2});
    frmAudio& a = w.audio();
    w.giveFloor(1);
    w.settle(1500);
    EXPECT_FALSE(a.lblRSSI.empty());  // the base reported the link
    auto* deck = dynamic_cast<SimDocument*>(w.presentation.getActiveObject()->activePresentation());
    ASSERT_NE(deck, nullptr);
    const int before = deck->showWithAnimationSets;
    a.cmd_stopAudio_Click();
    EXPECT_EQ(fields(deck->showWithAnimationSets - before, w.presentation.CurrentSlide().value, w.station().audioHid),
              "1|3|");
    EXPECT_EQ(w.rowTexts(), (std::vector<std::string>{"1 DONE", "2 QUEUED"}));
    for (const AudioButton* b : {&a.cmd_startAudio, &a.cmd_audioRequest, &a.cmd_clearList, &a.cmd_settings, &a.cmd_hide})
        EXPECT_TRUE(b->enabled) << b->caption;
    EXPECT_EQ(fields(a.cmd_stopAudio.enabled, a.lblRSSI, a.lblLQI, a.pbarLQI.value == a.pbarLQI.min), "0|||1");
    // Managed automatically, a finished speaker leaves the queue.
    a.chk_Click(AudioCheck::AutoManageRequests, true);
    w.giveFloor(2);
    w.presentation.GoTo(1);  // no question here: the show's setting is left alone
    w.settle();
    a.cmd_stopAudio_Click();
    EXPECT_EQ(fields(deck->showWithAnimationSets - before, join(w.rowTexts(), ",")), "1|1 DONE");
}

TEST(Turn, HidingWithTheClearOptionLeavesAnEmptyQueueAndRequestsOff) {
    AudioWorld w;
    frmAudio& a = showAudioWindow(w.c());
    a.cmd_audioRequest_Click();
    queue(w, {1, 2});
    w.giveFloor(1);
    a.chk_Click(AudioCheck::ClearRequestsOnHide, true);
    a.cmd_hide_Click();
    EXPECT_EQ(fields(a.Visible(), a.lvw_keypadRequests.rows.size(), a.cmd_audioRequest.caption,
                     w.g2().audioRequestsOn(), w.station().audioHid, a.currentSpeaker()),
              "0|0|Enable Requests|0||");
    // Without the option the queue stays for the next time.
    showAudioWindow(w.c());
    a.chk_Click(AudioCheck::ClearRequestsOnHide, false);
    queue(w, {3});
    a.cmd_hide_Click();
    EXPECT_EQ(w.rowTexts(), (std::vector<std::string>{"3 QUEUED"}));
}

TEST(WholeTurn, RequestShowAudioFloorDuringAVoteCountdownPastZeroAndEnd) {
    AudioWorld w;
    w.glo().options.set(section::kAudioOptions, audiokey::kMaxTalkTime, "5");
    // The presenter opens the window and the requests; two keypads ask for the floor.
    w.command("SHOWAUDIO");
    frmAudio& a = *w.c().forms.get<frmAudio>(frmAudio::kName);
    a.mnu_debugMode = true;
    a.cmd_audioRequest_Click();
    w.keypad(7).battery = 336;
    w.request(7);
    w.request(2);
    ASSERT_EQ(w.rowTexts(), (std::vector<std::string>{"7 QUEUED", "2 QUEUED"}));
    EXPECT_EQ(a.lvw_keypadRequests.rows[0].battery.text, "30%");

    // A vote opens on the display program's word; the presenter gives keypad 2 the floor.
    w.openVote();
    w.giveFloor(2);
    EXPECT_EQ(fields(w.glo().voteRunning, w.station().voteOpen, w.station().audioHid, a.status),
              "0|0|" + AudioWorld::hid(2) + "|Streaming Audio");

    // The base reports the link every second; the countdown runs on past zero.
    w.scheduler.advance(2000);
    EXPECT_EQ(a.lblRSSI, numText(w.keypad(2).signal) + " dB");
    EXPECT_EQ(fields(a.lblLQI.empty(), a.status), "0|Streaming Audio - 3");
    w.scheduler.advance(5000);
    // The base ended the stream at the talk time.
    EXPECT_EQ(fields(a.lblTimeRemaining, w.station().audioHid), "-2|");

    // The presenter ends the turn.
    EXPECT_EQ(a.status, "Streaming Audio - -2");
    a.cmd_stopAudio_Click();
    EXPECT_EQ(fields(a.status, a.lblTimeRemaining), "Ready|");
    w.scheduler.advance(1000);
    // The countdown stopped with the turn.
    EXPECT_EQ(fields(a.status, join(w.rowTexts(), ","), w.debugLogged("StartAudio - HID:" + AudioWorld::hid(2)),
                     w.debugLogged("StopAudio - HID:" + AudioWorld::hid(2))),
              "Ready|7 QUEUED,2 DONE|1|1");
    // A request flagged to start now gets the floor at once.
    a.MicRequest(w.keypadObject(5), "0", true);
    EXPECT_EQ(fields(join(w.rowTexts(), ","), w.station().audioHid), "7 QUEUED,2 DONE,5 SPEAKING|" + AudioWorld::hid(5));
}
