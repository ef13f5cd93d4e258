// The command queue: how lines reach the dispatcher, when a run happens, what a run does
// with its lines, and the outgoing queue.
#include <gtest/gtest.h>

#include "CommandChannelFixture.h"
#include "core/Controller.h"
#include "core/Logs.h"
#include "core/SmallForms.h"

using namespace tlx;
using namespace tlx::test;

TEST_F(CommandChannel, QueueJoinsLinesAndRunsOnlyFromItsTimer) {
    MainForm& m = w.main();
    m.AddDataToCommandQueue("votename=A");
    m.AddDataToCommandQueue("options=4");
    EXPECT_EQ(queue(), "votename=A\r\noptions=4||1");  // nothing runs inside the call

    EXPECT_EQ(voteNameAfter(49), "");
    w.scheduler.advance(1);
    EXPECT_EQ(queue(), "|A|0");  // one run per enabling
    EXPECT_EQ(w.glo().optionCount, 4);
    // The whole queue is logged as one received line.
    EXPECT_TRUE(w.logged(" - RX - votename=A \\n options=4"));
}

TEST_F(CommandChannel, EnterAndTheDebugButtonRunWhatIsTyped) {
    MainForm& m = w.main();
    m.txt_command = "votename=typed";
    m.txt_command_KeyDown(13, true, false, false);  // Shift+Enter is a line break, not a send
    m.txt_command_KeyDown(13, false, true, false);
    m.txt_command_KeyDown(65, false, false, false);
    EXPECT_EQ(voteNameAfter(200), "");
    m.txt_command_KeyDown(13, false, false, false);
    EXPECT_EQ(voteNameAfter(200), "typed");

    m.txt_command = "votename=button";
    m.cmd_executeCommand_Click();
    EXPECT_EQ(voteNameAfter(200), "button");

    m.txt_command = "votename=now";
    m.RunCommandQueueNow();
    EXPECT_EQ(w.glo().voteName, "now");
}

TEST_F(CommandChannel, DoubledStartOrEndRunsOnceButThreeRunThrice) {
    int events = 0, reported = -1;
    w.main().FromCtrlFormBaseStationStartVoteCount.connect([&](int n) { ++events; reported = n; });
    send("startvote\r\nStartVote");  // in any case
    // Two bases reported, as the vote run reports the bases taking part.
    EXPECT_EQ(fields(count("voteStart"), w.glo().voteRunning && w.glo().voteStartedByCommand, events, reported), "1|1|1|2");
    sendAfresh("STARTVOTE\r\nSTARTVOTE\r\nSTARTVOTE");
    EXPECT_EQ(count("voteStart"), 3);
    sendAfresh("ENDVOTE\r\nENDVOTE");
    EXPECT_EQ(count("voteEnd"), 1);
    calls.clear();
    // Only a queue that is exactly the doubled command is folded.
    send("STARTVOTE\r\nSTARTVOTE\r\n");
    EXPECT_EQ(count("voteStart"), 2);
}

TEST(CommandQueueStartUp, ACommandQueuedDuringStartUpRunsOnceInitialisationCompletes) {
    TestWorld w;
    w.c().loadMainForm();
    MainForm& m = w.main();
    int starts = 0;
    m.FromCtrlFormBaseStationStartVoteCount.connect([&](int) { ++starts; });
    m.AddDataToCommandQueue("startvote");
    // The starts and the queued text after a wait.
    const auto after = [&](long long ms) {
        w.scheduler.advance(ms);
        return fields(starts, m.txt_command);
    };
    EXPECT_EQ(after(1000), "0|startvote");  // not started yet: the queue waits
    w.glo().InitialisedState = INIT_STATE_INITIALISING;
    EXPECT_EQ(after(1000), "0|startvote");
    w.glo().InitialisedState = INIT_STATE_NOT_STARTED;

    w.start();  // the real start-up, which keeps the loaded main form
    ASSERT_EQ(w.glo().InitialisedState, INIT_STATE_INITIALISED);
    EXPECT_EQ(after(200), "1|");
    EXPECT_EQ(after(5000), "1|");
}

TEST_F(CommandChannel, WithoutThePresentationProgramTheLinesAreDropped) {
    w.desktop.removeProcess("POWERPNT.EXE");
    send("votename=dropped\r\nSTARTVOTE");
    EXPECT_EQ(queue(), "||0");  // dropped, not kept for later
    EXPECT_FALSE(called("voteStart"));
    EXPECT_TRUE(w.logged(" - RX - votename=dropped \\n STARTVOTE"));
    w.desktop.addProcess("POWERPNT.EXE");
    send("votename=kept");
    EXPECT_EQ(w.glo().voteName, "kept");
}

TEST_F(CommandChannel, AnErrorIsReportedAndDropsTheRestOfThatRunOnly) {
    ppt.app.failingMacro = "EndShowEdit";
    send("votename=before\r\nENDCONVERT\r\nvotename=after");
    EXPECT_EQ(w.glo().voteName, "before");
    const std::string errLog = readFile(w.c().logs.errLogPath());
    for (const char* part : {"Module: tallix_controller", "Procedure: tmr_executeCommand_Timer",
                             "Macro 'EndShowEdit' cannot be found."})
        EXPECT_NE(errLog.find(part), std::string::npos) << part;
    send("votename=next run");
    EXPECT_EQ(w.glo().voteName, "next run");

    // A macro command with no presentation program attached is an error too, not a crash.
    w.glo().ppApp = nullptr;
    send("INSERTCHARTS\r\nvotename=not reached");
    EXPECT_EQ(w.glo().voteName, "next run");
}

TEST_F(CommandChannel, LinesQueuedDuringARunGetARunOfTheirOwn) {
    targets->onVoteStart = [this] { w.main().AddDataToCommandQueue("votename=queued inside"); };
    w.main().AddDataToCommandQueue("STARTVOTE\r\nvotename=same run");
    w.scheduler.advance(50);
    EXPECT_EQ(queue(), "votename=queued inside|same run|1");
    EXPECT_EQ(voteNameAfter(50), "queued inside");
}

TEST_F(CommandChannel, PowerPointClosedShutsDownAndStopsTheRun) {
    send("votename=first\r\nPOWERPOINTCLOSED\r\nvotename=never");
    EXPECT_EQ(fields(w.glo().ShuttingDown, w.glo().voteName, w.c().mainForm() == nullptr), "1|first|1");
}

TEST_F(CommandChannel, ExitAsksWhileThePresentationRunsAndNoKeepsEverything) {
    w.dialogs.answers = {false};
    send("EXIT\r\nvotename=still here");
    ASSERT_EQ(w.dialogs.shown.size(), 1u);
    EXPECT_EQ(w.dialogs.shown[0].title + ": " + w.dialogs.shown[0].text,
              "tallix controller: Closing the controller will disable voting - are you sure?");
    const auto state = [&] { return fields(w.glo().ShuttingDown, w.glo().FullShutDownInitiated, w.glo().voteName); };
    EXPECT_EQ(state(), "0|0|still here");
    w.dialogs.answers = {true};
    send("end\r\nvotename=gone");
    EXPECT_EQ(state(), "1|1|still here");
}

TEST_F(CommandChannel, StartVoteWithAnArgumentStoresTheModeAndRunsAgain) {
    w.main().AddDataToCommandQueue("STARTVOTE,3");
    w.scheduler.advance(50);
    // Only marks; the vote itself starts with STARTVOTE.
    EXPECT_EQ(fields(w.glo().voteMode, w.glo().voteStartedByCommand, w.glo().voteRunning, called("voteStart")), "3|1|0|0");
    EXPECT_EQ(queue(), "||1");
    w.scheduler.advance(50);
    EXPECT_EQ(queue(), "||0");
}

TEST_F(CommandChannel, SendTimerRaisesTheWholeTextAndLogsEachLine) {
    MainForm& m = w.main();
    m.AddDataToTxQueue("[1;2],");
    m.AddDataToTxQueue("  [3;4],  ");
    m.AddDataToTxQueue("");
    EXPECT_EQ(m.txt_data, "[1;2],\r\n  [3;4],  \r\n");
    w.scheduler.advance(50);
    EXPECT_EQ(fields(sent.size(), sent.empty() ? "" : sent[0], m.txt_data), "1|[1;2],\r\n  [3;4],  \r\n|");
    const auto lines = w.logLines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_NE(lines[0].find(" - TX - [3;4],"), std::string::npos);
    EXPECT_EQ(lines[0].substr(lines[0].size() - 6), "[3;4],");
    EXPECT_NE(lines[1].find(" - TX - [1;2],"), std::string::npos);

    // CLEAR drops what was not sent yet, and an empty queue sends nothing.
    send("GETVOTEINFO\r\nCLEAR");
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(CommandChannel, NothingLeavesBeforeInitialisationAndNothingRunsWhileShuttingDown) {
    w.glo().InitialisedState = INIT_STATE_INITIALISING;
    w.main().AddDataToTxQueue("early");
    w.scheduler.advance(500);
    EXPECT_TRUE(sent.empty());
    w.glo().InitialisedState = INIT_STATE_INITIALISED;
    w.scheduler.advance(50);
    EXPECT_EQ(sent, (std::vector<std::string>{"early"}));
    // Going down, nothing more leaves and no command runs.
    w.main().AddDataToTxQueue("late");
    w.main().AddDataToCommandQueue("votename=late");
    w.glo().ShuttingDown = true;
    w.scheduler.advance(500);
    EXPECT_EQ(fields(sent.size(), w.glo().voteName, w.main().txt_command), "1||votename=late");
}

TEST_F(CommandChannel, TheKeypadTestWindowAlsoGetsTheOutgoingDataWhileLoaded) {
    auto& ktest = w.c().forms.load<KeypadTestForm>(w.c());
    EXPECT_TRUE(w.main().keypadTestActive);
    w.main().AddDataToTxQueue("[1;2],");
    w.main().AddDataToTxQueue("[3;4],");
    w.scheduler.advance(50);
    EXPECT_EQ(ktest.received, (std::vector<std::string>{"[1;2],\r\n[3;4],"}));
    EXPECT_EQ(sent, ktest.received);
    w.c().forms.unload(ktest);
    EXPECT_FALSE(w.main().keypadTestActive);
}

// Random command bytes: the command_lines fuzz harness.
