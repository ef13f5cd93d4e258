// Turns asked for from a question slide, and the ways the window comes up.
#include "AudioWorld.h"

#include "presentation/HotKeys.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct SlideWorld : AudioWorld {
    SlideWorld() {
        presentation.Begin();
        presentation.GoTo(3);
        settle();
    }
};
}  // namespace

TEST(SlideTurn, DigitGivesTheFloorToTheKeypadOnThatLineAndMarksIt) {
    SlideWorld w;
    w.c().hotKeys->CtrlKeyPressed("2");
    frmAudio* a = w.c().forms.get<frmAudio>(frmAudio::kName);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(fields(a->Visible(), w.station().audioHid, w.paragraph(3, 2), a->slideKeypad()),
              "1|" + AudioWorld::hid(2) + "|Keypad 2 - Active|2");
    // The keypad had not asked: it joins the queue to be given the floor.
    EXPECT_EQ(w.rowTexts(), (std::vector<std::string>{"2 SPEAKING"}));
    // Another line ends the running turn first.
    a->RunFromSlide(1);
    EXPECT_EQ(fields(w.station().audioHid, join(w.rowTexts(), ","), w.paragraph(3, 1)),
              AudioWorld::hid(1) + "|2 DONE,1 SPEAKING|Keypad 1 - Active");
}

TEST(SlideTurn, TheCurrentSpeakersLineAndLinesWithoutAFullHidOrOutOfRangeChangeNothing) {
    SlideWorld w;
    frmAudio& a = w.audio();
    a.RunFromSlide(4);  // keypad 20: a 9-digit HID
    a.RunFromSlide(5);  // keypad 30: not registered
    a.RunFromSlide(0);
    a.RunFromSlide(6);
    EXPECT_EQ(fields(a.lvw_keypadRequests.rows.size(), w.station().audioHid, w.paragraph(3, 4), w.paragraph(3, 5)),
              "0||Keypad 20|Keypad 30");
    a.RunFromSlide(3);
    const double started = a.startTime();
    w.settle(2000);
    a.RunFromSlide(3);
    // Marked once.
    EXPECT_EQ(fields(a.startTime() == started, w.debugLogged("StopAudio"), join(w.rowTexts(), ","), w.paragraph(3, 3)),
              "1|0|3 SPEAKING|Keypad 3 - Active");
}

TEST(SlideTurn, WaitsWhileTheStartButtonIsBusy) {
    SlideWorld w;
    w.openVote();
    frmAudio& a = w.audio();
    a.MicRequest(w.keypadObject(1), "0", false);
    w.select(1);
    // Giving keypad 1 the floor waits for the vote to end; meanwhile the presenter asks for line 2.
    bool asked = false;
    std::string marked;
    w.scheduler.post(20, [&] {
        asked = true;
        a.RunFromSlide(2);
    });
    w.scheduler.post(30, [&] { marked = w.paragraph(3, 2); });
    a.cmd_startAudio_Click();
    ASSERT_TRUE(asked);
    EXPECT_EQ(marked, "Keypad 2 - Wait ");
    w.settle(500);
    EXPECT_EQ(fields(w.paragraph(3, 2), w.station().audioHid), "Keypad 2 - Active|" + AudioWorld::hid(2));
}

TEST(Opening, PresenterToggleShowsAndHidesTheWindow) {
    AudioWorld w;
    w.g2().ToggleAudioDialog();
    frmAudio* a = w.c().forms.get<frmAudio>(frmAudio::kName);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(fields(a->Visible(), w.logged("Show Audio")), "1|1");
    w.g2().ToggleAudioDialog();
    EXPECT_EQ(fields(a->Visible(), w.logged("Hide Audio")), "0|1");
}

TEST(Opening, ControlPanelSlideBringsUpTheFullWindow) {
    AudioWorld w;
    w.presentation.Begin();
    w.settle();
    EXPECT_EQ(w.c().forms.get<frmAudio>(frmAudio::kName), nullptr);
    w.presentation.GoTo(4);
    w.settle();
    frmAudio* a = w.c().forms.get<frmAudio>(frmAudio::kName);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(fields(a->Visible(), a->controlPanelVisible, a->Mode() == AudioWindowMode::Full), "1|1|1");
    // The full window lists the sound card's devices.
    EXPECT_EQ(fields(join(a->lvw_inputDevices, ","), join(a->lvw_outputDevices, ",")), "Microphone,Line In|Speakers,Headphones");
}

TEST(Opening, EventsWaitForTheControllerToBeReady) {
    AudioWorld w;
    w.glo().ShuttingDown = true;
    w.g2().ToggleAudioDialog();
    w.g2().MicRequest(w.keypadObject(1), "0", false);
    w.glo().ShuttingDown = false;
    EXPECT_EQ(w.c().forms.get<frmAudio>(frmAudio::kName), nullptr);
}
