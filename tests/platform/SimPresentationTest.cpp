#include <gtest/gtest.h>

#include "core/Text.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimKeyboard.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/SimScript.h"
#include "platform/sim/VirtualScheduler.h"
#include "support/Fields.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct Sim {
    Sim() {
        pptx::DeckPlan plan;
        for (int i = 1; i <= 12; ++i) {
            plan.slides.push_back({"Slide title " + numText(i), "", {}, {}, {}});
            if (i == 2) plan.slides.back().tags = {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType>"}};
            if (i == 3) plan.slides.back().tags = {{"TLXMATRIX", "x"}};
        }
        deck = dir / "show.pptx";
        pptx::buildDeck(plan).saveAs(deck);
        app.addIn.showBegin = [this](std::int64_t w) { events.push_back("begin " + numText(static_cast<long long>(w))); };
        app.addIn.nextSlide = [this] { events.push_back("slide " + numText(app.CurrentSlide().value)); };
        app.addIn.showEnd = [this] { events.push_back("end"); };
        app.addIn.closing = [this] { events.push_back("closing"); };
    }
    // The slide the show is on after typing the key.
    int key(int vk) {
        app.KeyDown(vk);
        app.KeyUp(vk);
        return app.CurrentSlide().value;
    }
    TempDir dir;
    VirtualScheduler scheduler;
    SimDesktop desktop;
    SimKeyboard keyboard;
    SimPresentationApp app{scheduler, desktop, &keyboard};
    std::filesystem::path deck;
    std::vector<std::string> events;
};
}  // namespace

TEST(SimPresentation, TheShowAndWhatTheAddInReports) {
    Sim s;
    EXPECT_EQ(s.app.Begin(), "The presentation program is not running");
    // A broken deck is refused with a message naming it, and the program goes on working.
    writeFile(s.dir / "broken.pptx", "PK\x03\x04 this is no presentation");
    EXPECT_NE(s.app.Open((s.dir / "broken.pptx").string()).find("broken.pptx"), std::string::npos);
    EXPECT_FALSE(s.app.Open((s.dir / "missing.pptx").string()).empty());
    EXPECT_EQ(s.app.Open(s.deck.string()), "");
    EXPECT_TRUE(processRunning(s.desktop, "POWERPNT.EXE"));
    EXPECT_EQ(s.app.Next(), "No slide show is running");
    ASSERT_EQ(s.app.Begin(), "");
    EXPECT_EQ(s.app.Begin(), "The slide show is already running");
    EXPECT_EQ(toUpper(s.desktop.foregroundWindowClass()), "SCREENCLASS");
    s.app.Next();
    s.app.GoTo(12);
    EXPECT_EQ(s.app.GoTo(13), "No slide 13 in this presentation");
    s.app.Previous();
    s.app.End();
    ASSERT_EQ(s.events.size(), 5u);
    EXPECT_EQ(std::vector(s.events.begin() + 1, s.events.end()), (std::vector<std::string>{"slide 2", "slide 12", "slide 11", "end"}));
    EXPECT_EQ(s.desktop.foregroundWindowClass(), kFrameWindowClass);
    EXPECT_EQ(s.app.Close(), "");
    EXPECT_EQ(fields(s.events.back(), processRunning(s.desktop, "POWERPNT.EXE"), s.app.getActiveObject() == nullptr),
              "closing|0|1");
}

TEST(SimPresentation, KeysTypedOnTheShowMoveIt) {
    Sim s;
    s.app.Open(s.deck.string());
    s.app.Begin();
    s.app.GoTo(12);  // the view test types Page Down, Page Up and digits with Enter
    EXPECT_EQ(s.key(36), 1);  // Home
    EXPECT_EQ(s.key(33), 1);  // Page Up on the first slide: nothing
    // Keys typed elsewhere do not reach the show.
    s.desktop.setForegroundWindowClass("Notepad");
    EXPECT_EQ(s.key(34), 1);
    s.desktop.setForegroundWindowClass(kShowWindowClass);
    s.key(27);  // Escape
    EXPECT_EQ(fields(s.app.show() == nullptr, s.app.KeyDown(0)), "1|Not a key code: 0");
}

TEST(SimPresentation, TagsAreSavedIntoThePackageAndShapesChangeThroughTheObjectModel) {
    Sim s;
    s.app.Open(s.deck.string());
    ppt::Presentation* p = s.app.application().activePresentation();
    ASSERT_NE(p, nullptr);
    p->tags().add("tlxCurrentSlide", "2");
    p->slide(4)->tags().add("ActiveKeypads", "3,7");
    p->save();
    Sim again;
    ASSERT_EQ(again.app.Open(s.deck.string()), "");
    EXPECT_EQ(fields(again.app.PresentationTag("TLXCURRENTSLIDE").value, again.app.SlideTag(4, "activekeypads").value,
                     again.app.SlideTag(2, "TLXVOTE").value),
              "2|3,7|<VoteType>SINGLEDIGIT</VoteType>");
    EXPECT_EQ(again.app.SlideTag(40, "x").error, "No slide 40 in this presentation");

    ppt::Slide* slide = p->slide(1);
    ASSERT_NE(slide->shapeByName("Title 1"), nullptr);
    EXPECT_EQ(slide->shapeByName("Title 1")->text(), "Slide title 1");
    ppt::Shape* box = slide->addTextBox("tlx_answer 1", "Red\rGreen");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->paragraph(2), "Green");
    const int before = slide->shapeCount();
    box->remove();
    EXPECT_EQ(fields(before - slide->shapeCount(), slide->shapeByName("tlx_answer 1") == nullptr), "1|1");
    EXPECT_THROW(box->text(), std::exception);  // a deleted shape is an error, not a crash
}

TEST(SimPresentation, QuickVoteStartsTheDisplayProgramOfTheSlidesTag) {
    Sim s;
    s.app.Open(s.deck.string());
    std::vector<std::string> started;
    s.app.launchDisplay = [&](const SimPresentationApp::Display& d, const std::string& name) {
        started.push_back(d.program + " " + d.arguments + " as " + name);
        return true;
    };
    s.app.displays["TLXVOTE"] = {"/opt/chart", "--vote"};
    s.app.Begin();
    s.app.application().run("DoRapidpoll", {true});  // slide 1: no vote
    EXPECT_TRUE(started.empty());
    s.app.Next();
    s.app.application().run("DoRapidpoll", {true});
    EXPECT_EQ(fields(join(started, ","), processRunning(s.desktop, "CHARTIST.EXE")), "/opt/chart --vote as CHARTIST.EXE|1");
    s.app.displayEnded("CHARTIST.EXE");
    EXPECT_FALSE(processRunning(s.desktop, "CHARTIST.EXE"));
    s.app.Next();  // the matrix slide has no display program configured: nothing starts
    s.app.application().run("DoRapidpoll", {true});
    EXPECT_EQ(fields(started.size(), processRunning(s.desktop, "GRIDDER.EXE")), "1|0");
    s.app.application().run("GoToNextSlide", {0});
    EXPECT_EQ(s.app.CurrentSlide().value, 4);
}

TEST(SimScript, RunsOnTimeAndReportsFailures) {
    Sim s;
    SimScript script(s.scheduler, &s.app, nullptr);
    script.folder = s.dir.path();
    std::vector<std::string> reports, commands;
    script.report = [&](const std::string& t) { reports.push_back(t); };
    script.command = [&](const std::string& c) {
        commands.push_back(c);
        return true;
    };
    script.load(parseScript("1 Open show.pptx\n2 Begin\n3 Key PageDown\n4 Command STARTVOTE\n5 Press 1 2 3\n6 GoTo 99\n"));
    script.start();
    s.scheduler.advance(2500);
    EXPECT_EQ(fields(s.app.CurrentSlide().value, script.finished()), "1|0");
    s.scheduler.advance(5000);
    EXPECT_EQ(fields(script.finished(), s.app.CurrentSlide().value), "1|2");
    EXPECT_EQ(join(commands, ","), "STARTVOTE");
    for (const char* failed : {"step 5 failed: no simulated base stations", "step 6 failed: No slide 99 in this presentation"})
        EXPECT_NE(std::find(reports.begin(), reports.end(), failed), reports.end()) << failed;
}
