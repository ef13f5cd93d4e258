// The real tlx-display against a controller on a private session bus: the quick vote starts
// it, it configures and opens the vote, receives the batches, and ends the vote when told.
// The controller runs in this process on virtual time, which moves on while the loop turns.
#include <gtest/gtest.h>

#include <QProcess>

#include "app/BusTestSupport.h"
#include "core/MainForm.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/sim/basesim/SimBasesAdapter.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const char* kBase = "100100100100";

class DisplayProgram : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(bus.ok()) << bus.problem(); }
    void serve() {
        w.useSimBases();
        w.addSimBase(kBase, 40);
        w.writePortFile({{kBase, "KELVARIN COREHUB G2", 1, 40}});
        w.start();
        ASSERT_EQ(w.presentation.Open(std::string(TLX_SOURCE_DIR) + "/examples/decks/demo.pptx"), "");
        server = std::make_unique<DbusAutomationServer>(w.c(), bus.connect("controller"));
        server->serveSimulation(&w.presentation, &bases);
        ASSERT_EQ(server->start(), "");
    }
    // Lets the loop turn and virtual time run until the condition holds or the limit passes.
    bool until(const std::function<bool()>& condition, double seconds = 30.0) {
        return waitFor(
            [&] {
                w.scheduler.advance(10);
                if (display.isOpen()) out += display.readAllStandardOutput().toStdString();
                return condition();
            },
            seconds);
    }
    bool printed(const std::string& part) const { return out.find(part) != std::string::npos; }
    SimBaseStation& base() { return w.baseLibrary.station(0); }

    PrivateBus bus;
    TestWorld w;
    SimBasesAdapter bases{w.baseLibrary};
    std::unique_ptr<DbusAutomationServer> server;
    std::string out;
    OwnedProcess display;
};

}  // namespace

TEST_F(DisplayProgram, TheQuickVoteStartsItAndItRunsTheVoteToItsResult) {
    serve();
    std::string started;
    w.presentation.displays["TLXVOTE"] = {TLX_DISPLAY_PATH, "--plain --refresh 0.1"};
    w.presentation.launchDisplay = [&](const SimPresentationApp::Display& program, const std::string& process) {
        started = process;
        display.setProcessEnvironment(bus.programEnvironment());
        display.setProcessChannelMode(QProcess::SeparateChannels);
        display.start(QString::fromStdString(program.program),
                        QProcess::splitCommand(QString::fromStdString(program.arguments)));
        return display.waitForStarted(10000);
    };
    ASSERT_EQ(w.presentation.Begin(), "");
    ASSERT_EQ(w.presentation.Next(), "");
    w.presentation.KeyDown('V');
    w.presentation.KeyUp('V');
    ASSERT_TRUE(until([&] { return !started.empty(); }))
        << "the quick vote started no display program: " << testing::PrintToString(w.logLines());
    EXPECT_EQ(started, "CHARTIST.EXE");

    // It finds slide 2 and its tag, configures the vote and opens it.
    ASSERT_TRUE(until([&] { return base().voteOpen; })) << out << display.readAllStandardError().toStdString();
    // Single digits, answers 1 to 4.
    EXPECT_EQ(fields(w.glo().voteName, base().vote.KeyMask), "Which colour do you like best?|15");

    // Keypads vote; keypad 1 changes its answer.
    ASSERT_TRUE(w.baseLibrary.press(kBase, 1, "1"));
    ASSERT_TRUE(w.baseLibrary.press(kBase, 2, "2"));
    ASSERT_TRUE(w.baseLibrary.press(kBase, 3, "2"));
    ASSERT_TRUE(until([&] { return printed("3 voters"); })) << out;
    ASSERT_TRUE(w.baseLibrary.press(kBase, 1, "3"));
    ASSERT_TRUE(until([&] { return printed("4 votes, 1 changed"); })) << out;

    // A line on its input ends the vote.
    display.write("\n");
    ASSERT_TRUE(until([&] { return !base().voteOpen; })) << out;
    ASSERT_TRUE(until([&] { return display.state() == QProcess::NotRunning; })) << out;
    out += display.readAllStandardOutput().toStdString();
    EXPECT_EQ(display.exitCode(), 0) << display.readAllStandardError().toStdString();
    EXPECT_TRUE(printed("tlx-display: ending the vote (asked on standard input)\n")) << out;
    EXPECT_TRUE(printed("Result: Which colour do you like best?\n"
                          "(slide 2, TLXVOTE, SINGLEDIGIT, 4 options from 1)\n"))
        << out;
    EXPECT_TRUE(printed("      1  Red          0     0.0%\n"
                          "      2  Green        2    66.7%  ")) << out;
    EXPECT_TRUE(printed("      3  Blue         1    33.3%  ")) << out;
    EXPECT_EQ(fields(printed("votes received: 4 (1 changed answer)\n"), printed(" on 1 base station\n")), "1|1") << out;
}

TEST_F(DisplayProgram, EndsWithTheControllerAndSaysWhenThereIsNone) {
    // Nobody serves the class on this bus.
    const ProgramRun none =
        runProgram(TLX_DISPLAY_PATH, {"--wait", "0.5", "--slide", "2"}, bus.programEnvironment(), 30.0);
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_NE(none.err.find("tlx-display: no controller answers (waited 0.5 s): tallix_control.tallix does not answer"),
              std::string::npos)
        << none.err;

    // Given the slide and its configuration, it needs no simulated presentation program.
    serve();
    server->serveSimulation(nullptr, &bases);
    display.setProcessEnvironment(bus.programEnvironment());
    display.start(TLX_DISPLAY_PATH,
                    {"--plain", "--slide", "2", "--config", "<VoteType>SINGLEDIGIT</VoteType><Options>3</Options>",
                     "--question", "Pick one"});
    ASSERT_TRUE(display.waitForStarted(10000));
    ASSERT_TRUE(until([&] { return base().voteOpen; })) << out;
    ASSERT_TRUE(w.baseLibrary.press(kBase, 5, "3"));
    ASSERT_TRUE(until([&] { return printed("1 voter"); })) << out;
    // The controller leaves the bus: the display program shows what it has and ends.
    server->stop();
    ASSERT_TRUE(until([&] { return display.state() == QProcess::NotRunning; })) << out;
    out += display.readAllStandardOutput().toStdString();
    EXPECT_EQ(display.exitCode(), 0);
    EXPECT_TRUE(printed("tlx-display: the controller left the bus\nResult: Pick one\n")) << out;
    EXPECT_TRUE(printed("the controller left before the vote was ended")) << out;
}

TEST_F(DisplayProgram, InAWindowItRunsTheSameVoteAndKeepsTheResultUpUntilTold) {
    serve();
    QProcessEnvironment env = bus.programEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    display.setProcessEnvironment(env);
    display.start(TLX_DISPLAY_PATH, {"--window", "--slide", "2", "--refresh", "0.1"});
    ASSERT_TRUE(display.waitForStarted(10000));
    ASSERT_TRUE(until([&] { return base().voteOpen; })) << out << display.readAllStandardError().toStdString();
    ASSERT_TRUE(w.baseLibrary.press(kBase, 1, "2"));
    ASSERT_TRUE(w.baseLibrary.press(kBase, 2, "2"));
    ASSERT_TRUE(until([&] {
        for (const auto& l : w.logLines())
            if (l.find("[2;2],") != std::string::npos) return true;
        return false;
    }));

    // An interruption ends the vote as on the terminal; the result stays on screen.
    display.terminate();
    ASSERT_TRUE(until([&] { return printed("Result: Which colour do you like best?\n"); })) << out;
    EXPECT_FALSE(base().voteOpen);
    EXPECT_TRUE(printed("tlx-display: ending the vote (interrupted)\n")) << out;
    EXPECT_TRUE(printed("      2  Green        2   100.0%  ")) << out;
    EXPECT_EQ(display.state(), QProcess::Running) << "the window keeps the result up";
    // Told again, it goes.
    display.terminate();
    ASSERT_TRUE(until([&] { return display.state() == QProcess::NotRunning; })) << out;
    EXPECT_EQ(display.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(display.exitCode(), 0) << display.readAllStandardError().toStdString();
}

TEST_F(DisplayProgram, AVoteTagItCannotReadEndsItBeforeTheControllerHearsOfAVote) {
    serve();
    w.presentation.application().activePresentation()->slide(2)->tags().add("TLXVOTE", "<VoteType>SINGLEDIGIT<Options>4</Options>");
    const ProgramRun run = runProgram(TLX_DISPLAY_PATH, {"--plain", "--slide", "2"}, bus.programEnvironment(), 30.0);
    EXPECT_EQ(run.exitCode, 1) << run.out << run.err;
    EXPECT_NE(run.err.find("tlx-display: the TLXVOTE tag of slide 2 cannot be read: <VoteType> has no closing tag; "
                           "text outside an element: \"SINGLEDIGIT\"; no vote was sent\n"),
              std::string::npos)
        << run.err;
    until([] { return false; }, 0.5);  // whatever might have been queued runs
    EXPECT_EQ(fields(w.glo().voteRunning, base().voteOpen), "0|0");

    // --help and --version need no display, with or without --window.
    QProcessEnvironment bare = bus.programEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) bare.remove(name);
    const ProgramRun help = runProgram(TLX_DISPLAY_PATH, {"--window", "--help"}, bare, 30.0);
    EXPECT_EQ(help.exitCode, 0) << help.err;
    EXPECT_NE(help.out.find("--window"), std::string::npos);
    const ProgramRun noDisplay = runProgram(TLX_DISPLAY_PATH, {"--window", "--slide", "2"}, bare, 30.0);
    EXPECT_EQ(fields(noDisplay.exitCode, noDisplay.err), "2|tlx-display: --window needs a display (DISPLAY or WAYLAND_DISPLAY is not set)\n");
}
