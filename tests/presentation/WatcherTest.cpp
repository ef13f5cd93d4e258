#include "presentation/PresentationWatcher.h"

#include "platform/sim/SimPresentation.h"
#include "presentation/PresentationFixture.h"

using namespace tlx;
using namespace tlx::test;

TEST(GotoMenu, TitlesCutToTwentyCharactersNotBytesTheQuestionWinsAndUntitledSlidesAreNumbered) {
    // "é", "ü", "€" and "🎉" take two, two, three and four bytes.
    ShowWorld w({slide(""), slide("Colours", {}, "Which colour do you like best?"),
                 slide("A title of exactly twenty-one"), slide("Café crème, ou thé glacé?"),
                 slide("Grüße aus München — 2024"), slide("€€€€€€€€€€€€€€€€€€€€€€"),
                 slide("🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉"), slide("")});
    w.presentation.Begin();
    EXPECT_EQ(w.calls.back(),
              "g2.SetPresenterGotoMenu(Exit|1:Slide 1|2:Which colour do you |3:A title of exactly t|"
              "4:Café crème, ou thé g|5:Grüße aus München — |6:€€€€€€€€€€€€€€€€€€€€|"
              "7:🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉🎉|8:Slide 8)");
}

TEST(SlideShow, BeginMakesTheShowTopMostAndHidesTheTaskBar) {
    ShowWorld w({slide("One"), slide("Two")});
    w.writeSettings("DEBUG", "LOGEVENTS TO FILE", "1");
    w.glo().traceToFile = true;
    w.presentation.Begin();
    const auto hwnd = w.presentation.show()->hwnd();
    // Show active, the show on top, the task bar shown.
    const auto state = [&] { return fields(w.glo().slideShowActive, w.desktop.topMost(hwnd), w.desktop.taskBarVisible()); };
    EXPECT_EQ(state(), "1|1|0");
    EXPECT_EQ(fields(toUpper(w.desktop.foregroundWindowClass()), w.traced("SLIDE SHOW BEGIN")), "SCREENCLASS|1");
    EXPECT_FALSE(w.desktop.othersMinimized());  // a setting, off by default
    w.presentation.End();
    EXPECT_EQ(fields(state(), w.traced("SLIDE SHOW END")), "0|0|1|1");
}

TEST(SlideShow, MinimisingOtherWindowsIsASetting) {
    ShowWorld w({slide("One")});
    w.writeSettings("DEBUG", "MINIMIZE WINDOWS ON SLIDE SHOW START", "1");
    w.writeSettings("DEBUG", "DISABLE FORCE SLIDE SHOW TOPMOST", "1");
    w.presentation.Begin();
    // The show's place is left alone.
    EXPECT_EQ(fields(w.desktop.othersMinimized(), w.desktop.topMost(w.presentation.show()->hwnd())), "1|0");
    w.presentation.End();
    EXPECT_FALSE(w.desktop.othersMinimized());
}

TEST(SlideShow, MovingOnWithAVoteOpenEndsItOnce) {
    ShowWorld w({slide("One"), slide("Two"), slide("Three")});
    w.presentation.Begin();
    w.presentation.Next();
    EXPECT_EQ(w.count("g2.EndVote(False,False)"), 0);  // no vote open, nothing sent
    w.glo().Voting = true;
    w.presentation.Next();
    EXPECT_EQ(fields(w.count("g2.EndVote(False,False)"), w.glo().Voting), "1|0");
    w.presentation.Previous();
    EXPECT_EQ(w.count("g2.EndVote(False,False)"), 1);
    // A first-generation base in use takes the end instead.
    w.glo().bases = {base("1", "KELVARIN COREHUB G1")};
    w.glo().Voting = true;
    w.presentation.End();
    EXPECT_EQ(w.count("g1.EndVote(False,False)"), 1);
}

TEST(SlideShow, ToggleTopMostRemembersItsState) {
    ShowWorld w({slide("One")});
    w.presentation.Begin();
    const auto hwnd = w.presentation.show()->hwnd();
    w.c().watcher->TogglePPTSlideShowTopMost(-2, false);
    EXPECT_FALSE(w.desktop.topMost(hwnd));
    w.c().watcher->TogglePPTSlideShowTopMost(-2, false);
    EXPECT_TRUE(w.desktop.topMost(hwnd));
    w.writeSettings("DEBUG", "DISABLE FORCE SLIDE SHOW NOTOPMOST", "1");
    w.c().watcher->TogglePPTSlideShowTopMost(0, false);
    EXPECT_TRUE(w.desktop.topMost(hwnd));
    w.c().watcher->TogglePPTSlideShowTopMost(0, true);  // forced
    EXPECT_FALSE(w.desktop.topMost(hwnd));
}

TEST(SlideShow, ToggleTopMostWithoutAShowWindowChangesNothing) {
    ShowWorld w({slide("One")});
    w.glo().traceToFile = true;
    w.c().watcher->TogglePPTSlideShowTopMost(-2, false);
    EXPECT_EQ(fields(w.c().watcher->topMostState(), w.traced("Set Slide Show Window HWND_TOPMOST")), "0|0");
}

TEST(Poll, KeepsTheShowOnTopUnlessADisplayProgramRuns) {
    ShowWorld w({slide("One")});
    w.presentation.Begin();
    const auto hwnd = w.presentation.show()->hwnd();
    w.desktop.setTopMost(hwnd, false);  // something pushed it down
    w.desktop.addProcess("QUESTOR.EXE");
    w.scheduler.advance(2000);
    EXPECT_FALSE(w.desktop.topMost(hwnd));  // the display program arranges the screen
    w.desktop.removeProcess("QUESTOR.EXE");
    w.scheduler.advance(2000);
    EXPECT_TRUE(w.desktop.topMost(hwnd));
}

TEST(Poll, NoticesAShowThatEndedWithoutWord) {
    ShowWorld w({slide("One")});
    w.presentation.addIn.showEnd = nullptr;  // the add-in misses the end
    w.presentation.Begin();
    w.presentation.End();
    EXPECT_TRUE(w.glo().slideShowActive);
    w.scheduler.advance(2000);
    EXPECT_FALSE(w.glo().slideShowActive);
}

TEST(Attach, AForcedAttachReadsTheProcessListAgain) {
    ShowWorld w({slide("One")});
    EXPECT_TRUE(w.c().watcher->InitPPTObject(false));
    w.presentation.quit();
    EXPECT_TRUE(w.c().watcher->InitPPTObject(false));  // the remembered flag short-cuts
    EXPECT_FALSE(w.c().watcher->InitPPTObject(true));
    w.presentation.start();
    EXPECT_TRUE(w.c().watcher->InitPPTObject(true));
    EXPECT_EQ(w.glo().ppApp, w.presentation.getActiveObject());
}

TEST(Attach, ThePresentationProgramClosingTakesTheControllerWithIt) {
    ShowWorld w({slide("One")});
    w.presentation.Begin();
    w.presentation.Close();
    EXPECT_EQ(fields(w.glo().ShuttingDown, w.desktop.ended()), "1|0");
    w.scheduler.advance(100);
    EXPECT_EQ(fields(w.desktop.ended(), w.desktop.taskBarVisible()), "1|1");
    w.addIn->PowerPointClosed();  // the main form is gone: nothing more happens
}
