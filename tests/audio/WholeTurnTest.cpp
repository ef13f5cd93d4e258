// A whole microphone turn through the simulated bases on virtual time.
#include "AudioWorld.h"

#include "audio/AudioOptions.h"

using namespace tlx;
using namespace tlx::test;

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
    w.select(2);
    a.cmd_startAudio_Click();
    EXPECT_FALSE(w.glo().voteRunning);
    EXPECT_FALSE(w.station().voteOpen);
    EXPECT_EQ(w.station().audioHid, AudioWorld::hid(2));
    EXPECT_EQ(a.status, "Streaming Audio");

    // The base reports the link every second; the countdown runs on past zero.
    w.scheduler.advance(2000);
    EXPECT_EQ(a.lblRSSI, numText(w.keypad(2).signal) + " dB");
    EXPECT_FALSE(a.lblLQI.empty());
    EXPECT_EQ(a.status, "Streaming Audio - 3");
    w.scheduler.advance(5000);
    EXPECT_EQ(a.lblTimeRemaining, "-2");
    EXPECT_TRUE(w.station().audioHid.empty());  // the base ended the stream at the talk time

    // The presenter ends the turn.
    a.cmd_stopAudio_Click();
    EXPECT_EQ(a.status, "Ready");
    EXPECT_EQ(w.rowTexts(), (std::vector<std::string>{"7 QUEUED", "2 DONE"}));
    EXPECT_TRUE(w.debugLogged("StartAudio - HID:" + AudioWorld::hid(2)));
    EXPECT_TRUE(w.debugLogged("StopAudio - HID:" + AudioWorld::hid(2)));
    // The next keypad in the queue gets the floor.
    w.select(7);
    a.cmd_startAudio_Click();
    EXPECT_EQ(w.station().audioHid, AudioWorld::hid(7));
}
