// The request queue of the audio window: who joins, who keeps a place, who leaves.
#include "AudioWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(RequestQueue, RequestsJoinTheEndWithTheirReadingsAndARepeatedOneKeepsItsPlace) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.MicRequest(w.keypadObject(3, "0", 420, -45), "0", false);
    a.MicRequest(w.keypadObject(2, "0", 330, -80), "0", false);
    a.MicRequest(w.keypadObject(1, "0", 300, 0), "0", false);
    a.MicRequest(w.keypadObject(2, "0", 390, -52), "0", false);
    ASSERT_EQ(w.rowTexts(), (std::vector<std::string>{"3 QUEUED", "2 QUEUED", "1 QUEUED"}));
    const AudioRequestRow& r = a.lvw_keypadRequests.rows[0];
    EXPECT_EQ(fields(r.text, r.tag, r.battery.text, r.signal.text), "100 300 100 003|" + AudioWorld::hid(3) + "|100%|-45dB");
    // No signal reading: a dash; an empty battery: 0%.
    EXPECT_EQ(fields(a.lvw_keypadRequests.rows[2].signal.text, a.lvw_keypadRequests.rows[2].battery.text), "-|0%");
    // Asked again: the place kept, the readings fresh.
    EXPECT_EQ(fields(a.lvw_keypadRequests.rows[1].battery.text, a.lvw_keypadRequests.rows[1].signal.text), "75%|-52dB");
    // A keypad that has spoken asks again: it stays where it was, its turn marked done.
    w.giveFloor(2);
    a.cmd_stopAudio_Click();
    a.MicRequest(w.keypadObject(2), "0", false);
    EXPECT_EQ(w.rowTexts(), (std::vector<std::string>{"3 QUEUED", "2 DONE", "1 QUEUED"}));
}

TEST(RequestQueue, WithdrawalRemovesOnlyAQueuedKeypadComparedAsNumbersAndStrangersStayOut) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.MicRequest(w.keypadObject(1), "0", false);
    a.MicRequest(w.keypadObject(2), "0", false);
    w.select(2);
    // Not queued: nothing changes, not even the selection.
    a.MicRequest(w.keypadObject(7, "*"), "0", false);
    EXPECT_EQ(fields(join(w.rowTexts(), ","), a.lvw_keypadRequests.selected), "1 QUEUED,2 QUEUED|1");
    // The HID may come in another spacing: the digits decide.
    KelvarinVote spaced = w.keypadObject(1, "*");
    spaced.HID = "100 300 100 001";
    a.MicRequest(spaced, "0", false);
    EXPECT_EQ(fields(join(w.rowTexts(), ","), a.lvw_keypadRequests.selected), "2 QUEUED|0");  // the selection follows its row
    KelvarinVote stranger = w.keypadObject(1);
    stranger.HID = "999888777666";
    a.MicRequest(stranger, "0", false);
    EXPECT_EQ(fields(join(w.rowTexts(), ","), w.logged("MicRequest - Keypad not in the registry - HID:999888777666")), "2 QUEUED|1");
}

TEST(RequestQueue, RequestsThroughTheBaseReachTheWindowAndEndVoteLeavesThemOn) {
    AudioWorld w;
    frmAudio& a = w.audio();
    a.cmd_audioRequest_Click();
    EXPECT_EQ(fields(a.cmd_audioRequest.caption, a.status, w.g2().audioRequestsOn(), a.imgMicIcon == MicIcon::Active),
              "Disable Requests|Requests Enabled|1|1");
    ASSERT_TRUE(w.station().voteOpen);  // requests run as the bases' open vote
    w.request(4);
    w.request(6);
    w.request(4, true);
    EXPECT_EQ(w.rowTexts(), (std::vector<std::string>{"6 QUEUED"}));
    // A vote's end does not take the requests away by itself.
    w.g2().EndVote(true, false);
    EXPECT_TRUE(w.g2().audioRequestsOn());
    a.cmd_audioRequest_Click();
    EXPECT_EQ(fields(a.cmd_audioRequest.caption, a.status, w.g2().audioRequestsOn()), "Enable Requests|Requests Disabled|0");
}

TEST(RequestQueue, DeleteAndClearTakeRowsOut) {
    AudioWorld w;
    frmAudio& a = w.audio();
    for (int k : {1, 2, 3}) a.MicRequest(w.keypadObject(k), "0", false);
    w.select(2);
    a.mnu_audioRequestDelete_Click();
    EXPECT_EQ(fields(join(w.rowTexts(), ","), a.lvw_keypadRequests.selected), "1 QUEUED,3 QUEUED|-1");
    a.mnu_audioRequestDelete_Click();  // nothing selected: nothing goes
    EXPECT_EQ(a.lvw_keypadRequests.rows.size(), 2u);
    a.cmd_clearList_Click();
    EXPECT_TRUE(a.lvw_keypadRequests.rows.empty());
}
