#include <gtest/gtest.h>

#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/SmallForms.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
std::vector<std::string> traceTexts(TestWorld& w) {
    std::vector<std::string> v;
    for (const auto& l : w.traceLines()) {
        const auto obj = l.find(" | [");
        v.push_back(l.substr(obj + 3));
    }
    return v;
}
// Whether the process has ended after waiting so long.
bool endedAfter(TestWorld& w, long long ms) {
    w.scheduler.advance(ms);
    return w.desktop.ended();
}
}  // namespace

TEST(Quit, WithThePresentationProgramClosedNothingIsAsked) {
    TestWorld w(false);
    w.start();
    w.main().TaskQuit();
    EXPECT_EQ(fields(w.dialogs.shown.empty(), w.glo().FullShutDownInitiated, w.glo().ShuttingDown), "1|1|1");
}

TEST(Quit, AnsweringNoLeavesTheControllerWorking) {
    TestWorld w;
    w.start();
    w.dialogs.answers = {false};
    w.main().TaskQuit();
    EXPECT_EQ(fields(w.dialogs.shown.size(), w.glo().ShuttingDown, w.glo().FullShutDownInitiated,
                     w.main().tmrCheck4PPT.enabled(), w.tray.icon),
              "1|0|0|1|1");
    EXPECT_FALSE(endedAfter(w, 10000));
    // Still serving: outgoing data goes out.
    std::string sent;
    w.main().FromCtrlForm.connect([&](const std::string& s) { sent = s; });
    w.main().AddDataToTxQueue("hello");
    w.scheduler.advance(50);
    EXPECT_EQ(sent, "hello");
}

TEST(Quit, YesShutsDownInOrderAndEndsTheProcessFromATimer) {
    TestWorld w;
    w.writeSettings("DEBUG", "LOGEVENTS TO FILE", "1");
    w.start();
    w.c().forms.load<FrmInit>(w.c());
    w.c().forms.load<BubbleMessageLogForm>(w.c());
    auto& main = w.main();
    w.dialogs.answers = {true};
    main.TaskQuit();
    // Only frm_CloseController is left; the caller returns before the process ends.
    EXPECT_EQ(fields(w.glo().ShuttingDown, w.tray.icon, w.c().mainForm() == nullptr, w.c().forms.all().size(), w.desktop.ended()),
              "1|0|1|1|0");
    EXPECT_FALSE(endedAfter(w, 99));
    EXPECT_TRUE(endedAfter(w, 1));

    // The other windows go newest first, before the main form (the whole order in a real
    // process: tests/reliability/BusFaultTest.cpp).
    const auto t = traceTexts(w);
    const auto start = std::find(t.begin(), t.end(), "[Controller] | [FullShutdown] | Function Start: glo.FullShutDownInitiated=True");
    ASSERT_GE(t.end() - start, 4);
    EXPECT_EQ(std::vector<std::string>(start + 1, start + 4),
              (std::vector<std::string>{"[Controller] | [FullShutDown] | Unload Forms(2):frmBubbleErrorMessageLog",
                                        "[Controller] | [FullShutDown] | Unload Forms(1):frmInit",
                                        "[Controller] | [FullShutdown] | controllerLoaded=True"}));
}

// Closing the ports may wait for a base's answer and let other events run meanwhile; by then
// none of the main form's timers may be left to run.
TEST(Shutdown, NoTimerOfTheMainFormRunsWhileThePortsClose) {
    TestWorld w;
    w.start();
    struct SlowToClose : NoBaseDrivers {
        explicit SlowToClose(Scheduler& s) : scheduler(s) {}
        void closePorts() override { scheduler.waitUntil([] { return false; }, 1.0); }
        Scheduler& scheduler;
    };
    w.c().drivers = std::make_unique<SlowToClose>(w.scheduler);
    MainForm& m = w.main();
    std::vector<std::string> ran;
    for (Timer* t : {&m.tmr_executeCommand, &m.tmr_SendData, &m.tmr_VotesRxBuffer, &m.tmrCheck4Vote, &m.tmrRunVote,
                     &m.tmrVKeyPressed, &m.tmrCheck4PPT, &m.tmrCheckSlideShow, &m.tmr_Check4TLXEdit,
                     &m.tmr_refreshLowLevelKeyboardHook, &m.tmr_simulateVotes, &m.tmr_IconAnimate}) {
        t->onTick = [&ran, t] { ran.push_back(t->name()); };
        t->setEnabled(true);
    }
    w.c().FullShutdown(false);
    EXPECT_TRUE(ran.empty()) << join(ran, ", ");
}

// A window that raises in its unload handler.
class FailingForm : public Form {
public:
    FailingForm() : Form("frmFailing") {}

protected:
    void unloading() override { throw AppError(5, "Invalid procedure call"); }
};

TEST(Shutdown, EveryStepRunsUnderItsOwnTrapSoAFailureSkipsNothing) {
    TestWorld w;
    w.start();
    w.c().forms.load<FailingForm>();
    w.c().FullShutdown(false);
    w.c().FullShutdown(false);  // a second request while shutting down is ignored
    EXPECT_EQ(fields(w.c().forms.count(), w.tray.icon, w.c().mainForm() == nullptr), "1|0|1");
    EXPECT_TRUE(endedAfter(w, 100));
    const std::string errLog = readFile(w.c().logs.errLogPath());
    EXPECT_TRUE(contains(errLog, "Description: Invalid procedure call\r\nModule: Controller\r\nProcedure: FullShutdown"));
}

TEST(Shutdown, TheAudioReferencesGoBeforeTheMainForm) {
    bool released = false, mainFormLoaded = false, over = false;
    TestWorld w;
    w.start();
    Controller* c = &w.c();
    w.c().audioReferences.push_back(std::shared_ptr<int>(new int(0), [&, c](int* p) {
        delete p;
        if (over) return;
        released = true;
        mainFormLoaded = c->mainForm() != nullptr;
    }));
    w.c().FullShutdown(false);
    EXPECT_EQ(fields(released, mainFormLoaded), "1|1");
    over = true;
}

TEST(Shutdown, WithTheMainFormAlreadyGoneTheProcessStillEnds) {
    TestWorld w;
    w.writeSettings("DEBUG", "LOGEVENTS TO FILE", "1");
    w.start();
    w.c().forms.unload(w.main());
    w.c().FullShutdown(false);
    EXPECT_TRUE(endedAfter(w, 100));
    const auto t = traceTexts(w);
    EXPECT_NE(std::find(t.begin(), t.end(), "[Controller] | [FullShutdown] | controllerLoaded=False"), t.end());
    EXPECT_EQ(std::find(t.begin(), t.end(), "[Controller] | [FullShutdown] | controllerLoaded=True"), t.end());
}

