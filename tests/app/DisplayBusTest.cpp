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

struct DisplayWorld {
    PrivateBus bus;
    TestWorld w;
    SimBasesAdapter bases{w.baseLibrary};
    std::unique_ptr<DbusAutomationServer> server;
    QProcess display;
    std::string out;

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
    ~DisplayWorld() {
        if (display.state() != QProcess::NotRunning) {
            display.kill();
            display.waitForFinished(5000);
        }
    }
};

}  // namespace

TEST(DisplayProgram, TheQuickVoteStartsItAndItRunsTheVoteToItsResult) {
    DisplayWorld d;
    ASSERT_TRUE(d.bus.ok()) << d.bus.problem();
    d.serve();
    std::string started;
    d.w.presentation.displays["TLXVOTE"] = {TLX_DISPLAY_PATH, "--plain --refresh 0.1"};
    d.w.presentation.launchDisplay = [&](const SimPresentationApp::Display& program, const std::string& process) {
        started = process;
        d.display.setProcessEnvironment(d.bus.programEnvironment());
        d.display.setProcessChannelMode(QProcess::SeparateChannels);
        d.display.start(QString::fromStdString(program.program),
                        QProcess::splitCommand(QString::fromStdString(program.arguments)));
        return d.display.waitForStarted(10000);
    };
    ASSERT_EQ(d.w.presentation.Begin(), "");
    ASSERT_EQ(d.w.presentation.Next(), "");
    d.w.presentation.KeyDown('V');
    d.w.presentation.KeyUp('V');
    ASSERT_TRUE(d.until([&] { return !started.empty(); }))
        << "the quick vote started no display program: " << testing::PrintToString(d.w.logLines());
    EXPECT_EQ(started, "CHARTIST.EXE");

    // It finds slide 2 and its tag, configures the vote and opens it.
    ASSERT_TRUE(d.until([&] { return d.base().voteOpen; })) << d.out << d.display.readAllStandardError().toStdString();
    EXPECT_EQ(d.w.glo().voteName, "Which colour do you like best?");
    EXPECT_EQ(d.base().vote.KeyMask, 15);  // single digits, answers 1 to 4

    // Keypads vote; keypad 1 changes its answer.
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 1, "1"));
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 2, "2"));
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 3, "2"));
    ASSERT_TRUE(d.until([&] { return d.printed("3 voters"); })) << d.out;
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 1, "3"));
    ASSERT_TRUE(d.until([&] { return d.printed("4 votes, 1 changed"); })) << d.out;

    // A line on its input ends the vote.
    d.display.write("\n");
    ASSERT_TRUE(d.until([&] { return !d.base().voteOpen; })) << d.out;
    ASSERT_TRUE(d.until([&] { return d.display.state() == QProcess::NotRunning; })) << d.out;
    d.out += d.display.readAllStandardOutput().toStdString();
    EXPECT_EQ(d.display.exitCode(), 0) << d.display.readAllStandardError().toStdString();
    EXPECT_TRUE(d.printed("tlx-display: ending the vote (asked on standard input)\n")) << d.out;
    EXPECT_TRUE(d.printed("Result: Which colour do you like best?\n"
                          "(slide 2, TLXVOTE, SINGLEDIGIT, 4 options from 1)\n"))
        << d.out;
    EXPECT_TRUE(d.printed("      1  Red          0     0.0%\n"
                          "      2  Green        2    66.7%  ")) << d.out;
    EXPECT_TRUE(d.printed("      3  Blue         1    33.3%  ")) << d.out;
    EXPECT_TRUE(d.printed("votes received: 4 (1 changed answer)\n")) << d.out;
    EXPECT_TRUE(d.printed(" on 1 base station\n")) << d.out;
}

TEST(DisplayProgram, EndsWithTheControllerAndSaysWhenThereIsNone) {
    DisplayWorld d;
    ASSERT_TRUE(d.bus.ok()) << d.bus.problem();
    // Nobody serves the class on this bus.
    const ProgramRun none =
        runProgram(TLX_DISPLAY_PATH, {"--wait", "0.5", "--slide", "2"}, d.bus.programEnvironment(), 30.0);
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_NE(none.err.find("tlx-display: no controller answers (waited 0.5 s): tallix_control.tallix does not answer"),
              std::string::npos)
        << none.err;

    // Given the slide and its configuration, it needs no simulated presentation program.
    d.serve();
    d.server->serveSimulation(nullptr, &d.bases);
    d.display.setProcessEnvironment(d.bus.programEnvironment());
    d.display.start(TLX_DISPLAY_PATH,
                    {"--plain", "--slide", "2", "--config", "<VoteType>SINGLEDIGIT</VoteType><Options>3</Options>",
                     "--question", "Pick one"});
    ASSERT_TRUE(d.display.waitForStarted(10000));
    ASSERT_TRUE(d.until([&] { return d.base().voteOpen; })) << d.out;
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 5, "3"));
    ASSERT_TRUE(d.until([&] { return d.printed("1 voter"); })) << d.out;
    // The controller leaves the bus: the display program shows what it has and ends.
    d.server->stop();
    ASSERT_TRUE(d.until([&] { return d.display.state() == QProcess::NotRunning; })) << d.out;
    d.out += d.display.readAllStandardOutput().toStdString();
    EXPECT_EQ(d.display.exitCode(), 0);
    EXPECT_TRUE(d.printed("tlx-display: the controller left the bus\nResult: Pick one\n")) << d.out;
    EXPECT_TRUE(d.printed("the controller left before the vote was ended")) << d.out;
}

TEST(DisplayProgram, InAWindowItRunsTheSameVoteAndKeepsTheResultUpUntilTold) {
    DisplayWorld d;
    ASSERT_TRUE(d.bus.ok()) << d.bus.problem();
    d.serve();
    QProcessEnvironment env = d.bus.programEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    d.display.setProcessEnvironment(env);
    d.display.start(TLX_DISPLAY_PATH, {"--window", "--slide", "2", "--refresh", "0.1"});
    ASSERT_TRUE(d.display.waitForStarted(10000));
    ASSERT_TRUE(d.until([&] { return d.base().voteOpen; })) << d.out << d.display.readAllStandardError().toStdString();
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 1, "2"));
    ASSERT_TRUE(d.w.baseLibrary.press(kBase, 2, "2"));
    ASSERT_TRUE(d.until([&] {
        for (const auto& l : d.w.logLines())
            if (l.find("[2;2],") != std::string::npos) return true;
        return false;
    }));

    // An interruption ends the vote as on the terminal; the result stays on screen.
    d.display.terminate();
    ASSERT_TRUE(d.until([&] { return d.printed("Result: Which colour do you like best?\n"); })) << d.out;
    EXPECT_FALSE(d.base().voteOpen);
    EXPECT_TRUE(d.printed("tlx-display: ending the vote (interrupted)\n")) << d.out;
    EXPECT_TRUE(d.printed("      2  Green        2   100.0%  ")) << d.out;
    EXPECT_EQ(d.display.state(), QProcess::Running) << "the window keeps the result up";
    // Told again, it goes.
    d.display.terminate();
    ASSERT_TRUE(d.until([&] { return d.display.state() == QProcess::NotRunning; })) << d.out;
    EXPECT_EQ(d.display.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(d.display.exitCode(), 0) << d.display.readAllStandardError().toStdString();
}

TEST(DisplayProgram, AVoteTagItCannotReadEndsItBeforeTheControllerHearsOfAVote) {
    DisplayWorld d;
    ASSERT_TRUE(d.bus.ok()) << d.bus.problem();
    d.serve();
    d.w.presentation.application().activePresentation()->slide(2)->tags().add("TLXVOTE", "<VoteType>SINGLEDIGIT<Options>4</Options>");
    const ProgramRun run = runProgram(TLX_DISPLAY_PATH, {"--plain", "--slide", "2"}, d.bus.programEnvironment(), 30.0);
    EXPECT_EQ(run.exitCode, 1) << run.out << run.err;
    EXPECT_NE(run.err.find("tlx-display: the TLXVOTE tag of slide 2 cannot be read: <VoteType> has no closing tag; "
                           "text outside an element: \"SINGLEDIGIT\"; no vote was sent\n"),
              std::string::npos)
        << run.err;
    d.until([] { return false; }, 0.5);  // whatever might have been queued runs
    EXPECT_FALSE(d.w.glo().voteRunning);
    EXPECT_FALSE(d.base().voteOpen);
    for (const auto& l : d.w.logLines()) {
        EXPECT_EQ(l.find(" - RX - "), std::string::npos) << "the controller received " << l;
    }

    // --help and --version need no display, with or without --window.
    QProcessEnvironment bare = d.bus.programEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) bare.remove(name);
    const ProgramRun help = runProgram(TLX_DISPLAY_PATH, {"--window", "--help"}, bare, 30.0);
    EXPECT_EQ(help.exitCode, 0) << help.err;
    EXPECT_NE(help.out.find("--window"), std::string::npos);
    const ProgramRun noDisplay = runProgram(TLX_DISPLAY_PATH, {"--window", "--slide", "2"}, bare, 30.0);
    EXPECT_EQ(noDisplay.exitCode, 2);
    EXPECT_EQ(noDisplay.err, "tlx-display: --window needs a display (DISPLAY or WAYLAND_DISPLAY is not set)\n");
}
