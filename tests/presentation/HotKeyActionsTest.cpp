// The Ctrl and Alt actions on the current slide's shapes and tags.
#include "audio/AudioWindow.h"
#include "presentation/HotKeys.h"

#include "platform/sim/SimPresentation.h"
#include "presentation/PresentationFixture.h"

using namespace tlx;
using namespace tlx::test;

namespace {
pptx::SlidePlan withBoxes(std::string title, pptx::TagPairs tags, std::vector<std::string> boxes) {
    pptx::SlidePlan s = slide(std::move(title), std::move(tags));
    for (auto& b : boxes) s.boxes.push_back({b, b});
    return s;
}

struct ActionWorld : ShowWorld {
    using ShowWorld::ShowWorld;
    ppt::Slide& current() { return *presentation.show()->slide(); }
    bool visible(const std::string& name) {
        ppt::Shape* s = current().shapeByName(name);
        return s && s->visible();
    }
    void hide(const std::string& name) { current().shapeByName(name)->setVisible(false); }
    void ctrl(const std::string& key) { c().hotKeys->CtrlKeyPressed(key); }
};
}  // namespace

TEST(CtrlActions, GShowsTheChartsOfAReplaySlide) {
    ActionWorld w({withBoxes("Results", {{"tlxReshow", "1"}}, {" tallix chart 1", " tallix chart 02", "reshow 1", "other"})});
    w.presentation.Begin();
    for (const char* n : {" tallix chart 1", " tallix chart 02", "reshow 1", "other"}) w.hide(n);
    w.ctrl("G");
    EXPECT_EQ(fields(w.visible(" tallix chart 1"), w.visible(" tallix chart 02"), w.visible("reshow 1"), w.visible("other")),
              "1|1|1|0");
    EXPECT_TRUE(w.logged("CTRL KEY PRESSED ACTIONED - 'G'"));
    // Pasted again, the charts lie on top of what was added after them.
    std::vector<std::string> order;
    for (int i = 1; i <= w.current().shapeCount(); ++i) order.push_back(w.current().shape(i)->name());
    const std::vector<std::string> top(order.end() - 3, order.end());
    EXPECT_EQ(top, (std::vector<std::string>{" tallix chart 1", " tallix chart 02", "reshow 1"}));
}

TEST(CtrlActions, DigitsOnAMicrophoneSlideReachTheAudioWindow) {
    ActionWorld w({slide("Floor", {{"Murmelo", "True"}}),
                   slide("Panel", {{"Murmelo", "True"}, {"TLXVOTE", "<MurmeloControlPanel>True</MurmeloControlPanel>"}})});
    w.presentation.Begin();
    w.ctrl("3");
    auto* audio = w.c().forms.get<frmAudio>(frmAudio::kName);
    ASSERT_NE(audio, nullptr);
    EXPECT_EQ(fields(audio->Visible(), audio->controlPanelVisible, audio->Mode() == AudioWindowMode::Compact,
                     w.logged("CTRL KEY PRESSED ACTIONED - '3'")),
              "1|0|1|1");
    w.presentation.Next();
    w.ctrl("0");
    // Loaded once; nothing queued: no chart program either.
    EXPECT_EQ(fields(w.c().forms.get<frmAudio>(frmAudio::kName) == audio, audio->controlPanelVisible,
                     audio->Mode() == AudioWindowMode::Full, w.main().txt_command),
              "1|1|1|");
}

TEST(CtrlActions, TStepsThroughASequenceChartByChart) {
    ActionWorld w({withBoxes("Sequence", {{"SequenceVote", "1"}}, {" tallix chart 1", " tallix chart 2"})});
    w.presentation.Begin();
    w.hide(" tallix chart 1");
    w.hide(" tallix chart 2");
    w.ctrl("T");
    EXPECT_EQ(fields(w.visible(" tallix chart 1"), w.visible(" tallix chart 2"), w.logged("CTRL T Pressed: Select Case j, j = 1")),
              "1|0|1");
    w.ctrl("T");
    EXPECT_EQ(fields(w.visible(" tallix chart 2"), w.logged("CTRL T Pressed: Select Case j, j = 2")), "1|1");
}

TEST(CtrlActions, NavigationKeysRevealTheAnswersOneByOne) {
    ActionWorld w({slide("Quiz", {{"TLXQUIZ", "x"}, {"tlx_answers", "Red|Green|Blue"}, {"tlx_answers_count", "3"}})});
    w.presentation.Begin();
    auto shown = [&] {
        std::vector<std::string> v;
        for (int i = 1; i <= w.current().shapeCount(); ++i)
            if (startsWith(w.current().shape(i)->name(), "tlx_answer ")) v.push_back(w.current().shape(i)->text());
        return v;
    };
    w.ctrl("34");  // Page Down
    EXPECT_EQ(shown(), (std::vector<std::string>{"Red"}));
    w.ctrl("34");
    EXPECT_EQ(fields(join(shown(), ","), w.current().tags().item("tlx_answers_visible")), "Red,Green|2");
    w.ctrl("33");  // Page Up
    EXPECT_EQ(shown(), (std::vector<std::string>{"Red"}));
    w.ctrl("35");  // End
    EXPECT_EQ(shown(), (std::vector<std::string>{"Red", "Green", "Blue"}));
    w.ctrl("34");  // nothing beyond the last
    EXPECT_EQ(shown().size(), 3u);
    w.ctrl("36");  // Home
    EXPECT_TRUE(shown().empty());
    w.ctrl("W");  // the quiz's answers all at once
    EXPECT_EQ(fields(shown().size(), w.logged("CTRL KEY PRESSED ACTIONED - 'W'")), "3|1");
    // The answers are on top of every other shape.
    EXPECT_EQ(w.current().shape(w.current().shapeCount())->name(), "tlx_answer 3");
}

TEST(CtrlActions, RAndDigitsStartTheDisplayPrograms) {
    ActionWorld w({slide("One"), slide("Group", {{"tlxvote", "x"}, {"tlxvotes", "y"}})}, {{"tlx_DefaultGroup", "A"}});
    w.presentation.addInFolder = "/opt/tallix";
    w.presentation.Begin();
    const auto hwnd = w.presentation.show()->hwnd();
    w.ctrl("R");
    ASSERT_EQ(w.desktop.started().size(), 1u);
    EXPECT_EQ(fields(w.desktop.started()[0].program.string(), w.desktop.started()[0].arguments, w.desktop.topMost(hwnd)),
              "/opt/tallix/questor.exe|ResultsTable|0");
    EXPECT_TRUE(w.logged("Show Results Table"));
    w.ctrl("5");  // slide 1 has no group tags
    EXPECT_EQ(w.desktop.started().size(), 1u);
    w.presentation.Next();
    w.ctrl("5");
    ASSERT_EQ(w.desktop.started().size(), 2u);
    EXPECT_EQ(fields(w.desktop.started()[1].program.string(), w.desktop.started()[1].arguments),
              "/opt/tallix/chartist.exe|tlxgroup,2,5");
    EXPECT_EQ(w.desktop.started()[1].style, WindowStyle::MinimizedFocus);
    EXPECT_EQ(toUpper(w.desktop.foregroundWindowClass()), "SCREENCLASS");  // the show has the focus back
}

TEST(CtrlActions, ThroughTheHookOnlyWithTheShowFocusedOrShiftHeld) {
    ActionWorld w({withBoxes("Results", {{"tlxReshow", "1"}}, {" tallix chart 1"})});
    w.presentation.Begin();
    w.hide(" tallix chart 1");
    w.desktop.setForegroundWindowClass("Notepad");
    w.ctrl("G");
    EXPECT_TRUE(w.logged(", ShiftKeyPressed=FalseKey=G, pptHasFocus=False, pptSlideShowHasFocus=False"));
    EXPECT_FALSE(w.visible(" tallix chart 1"));
    // Shift held, Ctrl+G typed: the hook queues it and the command queue runs it.
    w.keyboard.keyDown(vk::kLShift, 5);
    w.keyboard.keyDown(vk::kLCtrl, 10);
    w.keyboard.keyDown('G', 20);
    w.keyboard.keyUp('G', 30);
    w.keyboard.keyUp(vk::kLCtrl, 40);
    w.scheduler.advance(100);
    EXPECT_EQ(fields(w.logged(" - RX - CTRL KEYDOWN=G"), w.visible(" tallix chart 1")), "1|1");
}

TEST(AltActions, RankMarkersOneAtATime) {
    ActionWorld w({withBoxes("Ranking", {{"RankVote", "1"}},
                             {"tallix rank marker 1", "tallix rank marker 2", "tallix rank marker 3"})});
    w.presentation.Begin();
    for (const char* n : {"tallix rank marker 1", "tallix rank marker 2", "tallix rank marker 3"}) w.hide(n);
    w.c().hotKeys->AltKeyPressed("A");
    w.c().hotKeys->AltKeyPressed("A");
    EXPECT_EQ(fields(w.visible("tallix rank marker 1"), w.visible("tallix rank marker 2"), w.visible("tallix rank marker 3")),
              "1|1|0");
    w.c().hotKeys->AltKeyPressed("Z");
    EXPECT_EQ(fields(w.visible("tallix rank marker 2"), w.logged("ALT KEY PRESSED ACTIONED - 'Z'")), "0|1");
}
