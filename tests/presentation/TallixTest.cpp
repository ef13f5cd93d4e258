#include "presentation/Tallix.h"

#include "presentation/HotKeys.h"
#include "presentation/PresentationFixture.h"

using namespace tlx;
using namespace tlx::test;

TEST(AutomationClass, NoPptAnywhereInTheArgumentsInAnyCase) {
    TestWorld w;
    w.start();
    tallix t(w.c());
    t.init("/x -NOPPT /y");
    EXPECT_FALSE(w.glo().usePowerPoint);
    t.init("plain");
    EXPECT_TRUE(w.glo().usePowerPoint);
    t.init("a-noppt");
    EXPECT_FALSE(w.glo().usePowerPoint);
    t.init("");  // an empty text keeps what was stored
    EXPECT_FALSE(w.glo().usePowerPoint);
}

TEST(AutomationClass, NoPptKeepsTheControllerAwayFromAnAttachedProgram) {
    ShowWorld w({slide("One"), slide("Vote", {{"TLXVOTE", "x"}})});
    w.presentation.Begin();
    w.presentation.Next();
    w.presentation.active()->tags().add("tlxCurrentSlide", "2");
    EXPECT_EQ(w.addIn->CurrentSlide(), 2);
    w.addIn->init("-noppt");
    EXPECT_EQ(w.addIn->CurrentSlide(), 0);
    w.pressV();
    EXPECT_TRUE(w.logged("V Down: tmrCheck4Vote_Timer: InitPPTObject=FALSE"));
    w.c().hotKeys->CtrlKeyPressed("G");
    EXPECT_TRUE(w.logged("CTRL KEY PRESSED EXIT - Not InitPPTObject"));
    w.main().AddDataToCommandQueue("NEXTSLIDE\r\nkeypadsactive=3");
    w.scheduler.advance(100);
    EXPECT_EQ(fields(w.presentation.CurrentSlide().value, w.presentation.PresentationTag("ActiveKeypads").value,
                     w.presentation.macrosRun().size()),
              "2||0");
    // Switched on again, the check that V armed finds its vote.
    w.addIn->init("plain");
    w.scheduler.advance(100);
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"DoRapidpoll"}));
    w.presentation.active()->tags().add("tlxCurrentSlide", "rubbish");
    EXPECT_EQ(w.addIn->CurrentSlide(), 0);
}

TEST(AutomationClass, VoteLoadedAndSlideShowBeginDoNothingWithoutARunningShow) {
    ShowWorld w({slide("One")});
    w.glo().traceToFile = true;
    w.addIn->VoteLoaded();
    w.addIn->SlideShowBegin(nullptr);
    w.addIn->SlideShowBegin(std::int64_t{1});
    EXPECT_EQ(fields(w.glo().slideShowActive, w.count("g2.SetPresenterGotoMenu(Exit|1:One)"), w.traced("SLIDE SHOW BEGIN"),
                     w.desktop.taskBarVisible()),
              "0|0|0|1");
}

TEST(AutomationClass, VoteLoadedStartsAShowTheControllerMissed) {
    ShowWorld w({slide("One"), slide("Two")});
    w.glo().traceToFile = true;
    w.presentation.addIn.showBegin = nullptr;  // the add-in missed the show's begin
    w.presentation.Begin();
    EXPECT_FALSE(w.glo().slideShowActive);
    w.addIn->VoteLoaded();
    EXPECT_EQ(fields(w.glo().slideShowActive, w.traced("glo.slideShowActive=False")), "1|1");
    const auto menus = w.count("g2.SetPresenterGotoMenu(Exit|1:One|2:Two)");
    EXPECT_EQ(menus, 1);
    w.addIn->VoteLoaded();  // during the show: nothing
    EXPECT_EQ(w.count("g2.SetPresenterGotoMenu(Exit|1:One|2:Two)"), 1);
}

// Broadcast to every client is checked on the bus; here, that a client hears nothing before init.
TEST(AutomationClass, OnlyClientsThatCalledInitHearTheEvents) {
    TestWorld w;
    w.start();
    tallix a(w.c()), c(w.c());
    a.init("");
    int heardA = 0, heardC = 0;
    a.FromTLXCtrl.connect([&](const std::string&) { ++heardA; });
    c.FromTLXCtrl.connect([&](const std::string&) { ++heardC; });
    w.main().AddDataToTxQueue("x");
    w.scheduler.advance(50);
    EXPECT_EQ(fields(heardA, heardC), "1|0");
}
