// The command set: whole-line commands with their short forms, the prefixed commands, the
// key lines of a vote's configuration, the replies and the buttons of the main form.
#include <gtest/gtest.h>

#include <cfloat>

#include "CommandChannelFixture.h"
#include "core/CommandDispatcher.h"
#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/SmallForms.h"

using namespace tlx;
using namespace tlx::test;

TEST_F(CommandChannel, WholeLineCommandsReachTheirOperationsInAnyCase) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"ENABLEPPT", "enablePowerPoint"},     {"toggletopmost", "toggleTopMost"},
        {"FREECURSOR", "freeCursor"},          {"fc", "freeCursor"},
        {"ACTIVEKEYPADS", "activeKeypads"},    {"Ak", "activeKeypads"},
        {"READACTIVEKEYPADS", "readActiveKeypads"},
        {"TEXTVOTE", "showTextVote"},          {"TEXTVOTES", "showTextVote"},
        {"tv", "showTextVote"},                {"SHOWDEBUG", "showDebug"},
        {"SHOWBUBBLEMESSAGELOG", "showBubbleMessageLog"}, {"sbml", "showBubbleMessageLog"},
        {"SHOWWINDOWHANDLES", "showWindowHandles"},      {"SWH", "showWindowHandles"},
        {"SHOWPROCESSLIST", "showProcessList"},          {"spl", "showProcessList"},
        {"SETHOOK", "setHook"},                {"REMOVEHOOK", "removeHook"},
        {"CLOSEPORTS", "closePorts"},          {"PAUSEVOTE", "g1.PauseVote"},
        {"RESUMEVOTE", "g2.ResumeVote"},
    };
    for (const auto& [line, call] : cases) {
        sendAfresh(line);
        EXPECT_TRUE(called(call)) << line;
    }
}

TEST_F(CommandChannel, DefaultOperationsDoWhatTheCoreCan) {
    w.c().targets = std::make_unique<DefaultCommandTargets>(w.c());
    w.desktop.clipCursor(true);
    send("keypadsactive=,3,7,\r\nFC\r\nAK\r\nSBML");
    EXPECT_EQ(fields(w.desktop.cursorClipped(), w.logged(" - XX - ,3,7,")), "0|1");
    auto* log = w.c().forms.get<BubbleMessageLogForm>(BubbleMessageLogForm::kName);
    ASSERT_NE(log, nullptr);
    EXPECT_TRUE(log->Visible());
    send("SETHOOK\r\nREMOVEHOOK\r\nSHOWAUDIO");
    // No audio window to show yet.
    EXPECT_EQ(fields(w.logged(" - RX - Hook Set"), w.logged(" - RX - Hook Removed"), w.logged("Audio Form Loaded")), "1|1|0");
}

TEST_F(CommandChannel, ShowAudioNeedsAKelvarinBase) {
    const auto shown = [&] { return fields(called("showAudio"), w.logged(" - XX - Audio Form Loaded and made TopMost")); };
    send("SHOWAUDIO");  // keyboard voting only
    EXPECT_EQ(shown(), "0|0");
    w.glo().bases.push_back(base("100100100100", "Kelvarin Corehub G2"));
    send("SHOWAUDIO");
    EXPECT_EQ(shown(), "1|1");
}

TEST_F(CommandChannel, MacroCommandsRunTheAddInMacrosInOrder) {
    send("ENDCONVERT\r\nENDWIZARD\r\nINSERTCHARTS");
    std::vector<std::string> macros;
    for (const auto& m : ppt.app.macrosRun) macros.push_back(m.macro);
    EXPECT_EQ(macros, (std::vector<std::string>{"EndShowEdit", "ExtAskAboutConvertAnotherSlide", "EndShowEdit",
                                                "ExtAskAboutAnotherSlide", "insertAllVotingResultsAuto"}));
}

TEST_F(CommandChannel, StartAndEndVote) {
    w.glo().bases = {base("1", "KELVARIN COREHUB G2", 1, 40), base("2", "KELVARIN COREHUB G2", 1, 30, 40)};
    w.scheduler.advanceSeconds(3600);
    send("STARTVOTE");
    ASSERT_TRUE(w.glo().voteRunning);
    EXPECT_NEAR(w.glo().voteStartTime, 10 * 3600, 1.0);
    // Indexed by keypad number: the highest is the second base's 40 + 30.
    ASSERT_EQ(fields(w.glo().keypadVotes.size(), w.glo().keypadVoteTimes.size()), "71|71");
    EXPECT_EQ(fields(w.glo().keypadVotes[70], w.glo().keypadVoteTimes[0]), "-1|-1");

    w.glo().votesReceived = 12;
    send("PCAOPTIONS=1,2\r\nENDVOTE");
    EXPECT_EQ(fields(w.glo().votesReceived, w.glo().textVoteOptions, w.glo().voteStartedByCommand, w.glo().voteRunning),
              "0||0|0");
    // The vote run's end step first, then every loaded Corehub driver.
    const std::vector<std::string> expected = {"voteStart", "voteEnd", "g1.EndVote(False,False)",
                                               "g2.EndVote(False,False)"};
    EXPECT_EQ(calls, expected);

    calls.clear();
    drivers->withG1 = false;
    send("ENDVOTE");
    EXPECT_EQ(calls, (std::vector<std::string>{"voteEnd", "g2.EndVote(False,False)"}));
}

TEST_F(CommandChannel, KeyboardVotingSwitchSavesAndRestoresTheFirstBaseType) {
    w.glo().bases = {base("100100100100", "KELVARIN COREHUB G2"), base("7", "KELVARIN BASE V3")};
    send("KBOARD");
    EXPECT_EQ(fields(w.glo().bases[0].baseType, w.glo().bases[1].baseType, w.glo().savedBaseType, count("reReadConfiguration")),
              "KBOARD|KELVARIN BASE V3|KELVARIN COREHUB G2|1");
    send("kboard");  // already on: the saved type stays
    EXPECT_EQ(w.glo().savedBaseType, "KELVARIN COREHUB G2");

    sendAfresh("KBOARD-OFF");
    EXPECT_EQ(fields(w.glo().bases[0].baseType, w.glo().savedBaseType, count("reReadConfiguration")),
              "KELVARIN COREHUB G2||1");
    sendAfresh("KBOARD-OFF");  // nothing saved: nothing to do
    EXPECT_TRUE(calls.empty());

    send("KBOARD\r\nINIT");
    EXPECT_EQ(w.glo().bases[0].baseType, "KELVARIN COREHUB G2");
    auto* init = w.c().forms.get<FrmInit>(FrmInit::kName);
    ASSERT_NE(init, nullptr);
    EXPECT_TRUE(init->Visible());
}

TEST_F(CommandChannel, ShowEditTimerAndDebugView) {
    int ticks = 0;
    w.main().tmr_Check4TLXEdit.onTick = [&] { ++ticks; };
    send("PPA_STARTSHOWEDIT");  // enabled 50 ms in, when the queue runs
    EXPECT_TRUE(w.main().tmr_Check4TLXEdit.enabled());
    const auto ticksAfter = [&](long long ms) {
        w.scheduler.advance(ms);
        return ticks;
    };
    EXPECT_EQ(ticksAfter(349), 0);
    EXPECT_EQ(ticksAfter(1), 1);  // every half second
    send("ppa_endshowedit");
    EXPECT_EQ(fields(w.main().tmr_Check4TLXEdit.enabled(), w.main().debugView), "0|0");
    send("SwitchToDebugView");
    EXPECT_TRUE(w.main().debugView);
}

TEST_F(CommandChannel, GetVoteInfoWithAndWithoutOffsets) {
    w.glo().textVoteOptions = "1,2,";
    send("GETVOTEINFO");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0], "baseType=KBOARD\r\noffset=0,0,1,20,False\r\nkeypadsNotVotedLo=0\r\nkeypadsNotVotedHi=0\r\n"
                       "keypadsNotVotedPopupOn=False\r\nkeypadsNotVotedHowManyToShow=\r\nkeypadsNotVotedClose=False\r\n"
                       "keypadsNotVotedClosePercent=100\r\nnumKeypads=20\r\nscrollingDisplay=0\r\nuseOffsets=0\r\n"
                       "maxKeypads=20");
    EXPECT_EQ(w.glo().textVoteOptions, "");

    w.glo().bases = {base("100100100100", "KELVARIN COREHUB G2", 1, 50),
                     base("200200200200", "KELVARIN COREHUB G2", 1, 30, 50, true)};
    w.glo().popUp = PopUpSettings{true, "5", "10", 1, 80, true, 90, true};
    send("GETVOTEINFO");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1], "baseType=KELVARIN COREHUB G2\r\noffset=0,0,1,50,False\r\nbaseType=KELVARIN COREHUB G2\r\n"
                       "offset=1,50,1,30,True\r\nkeypadsNotVotedLo=1\r\nkeypadsNotVotedHi=80\r\n"
                       "keypadsNotVotedPopupOn=True\r\nkeypadsNotVotedHowManyToShow=10\r\nkeypadsNotVotedClose=True\r\n"
                       "keypadsNotVotedClosePercent=90\r\nnumKeypads=80\r\nscrollingDisplay=1\r\nuseOffsets=1\r\n"
                       "maxKeypads=80");
}

TEST_F(CommandChannel, NextSlideWithANumberMovesOnlyFromThatSlide) {
    deck->beginShow(4);
    // Not exactly one argument counts as none.
    send("NEXTSLIDE,5\r\nNEXTSLIDE,4\r\nnextslide\r\nNEXTSLIDE,9,9\r\nPREVIOUSSLIDE,3\r\nPREVIOUSSLIDE,4\r\n"
         "PREVIOUSSLIDE");
    EXPECT_EQ(calls, (std::vector<std::string>{"goToNextSlide", "goToNextSlide", "goToNextSlide",
                                               "goToPreviousSlide", "goToPreviousSlide"}));
    for (const char* line : {"Current - 4 - Next Slide", "Current - X - Next Slide", "Current - 4 - Previous Slide",
                             "Current - X - Previous Slide"})
        EXPECT_TRUE(w.logged(std::string(" - XX - ") + line)) << line;
    // Without a show a numbered move does nothing; a bare one still asks to move.
    deck->endShow();
    sendAfresh("NEXTSLIDE,4\r\nNEXTSLIDE");
    EXPECT_EQ(calls, (std::vector<std::string>{"goToNextSlide"}));
}

TEST_F(CommandChannel, SilentLoadGoesToTheFirstGenerationDriverForCorehubBases) {
    send("SILENTLOADVOTECONFIG,3");
    EXPECT_TRUE(calls.empty());  // keyboard voting
    w.glo().bases = {base("1", "KELVARIN COREHUB G2")};
    send("SILENTLOADVOTECONFIG,3");
    EXPECT_TRUE(calls.empty());  // only the plain Corehub type qualifies
    w.glo().bases = {base("1", "KELVARIN COREHUB G2"), base("2", "Kelvarin Corehub"), base("3", "KELVARIN COREHUB")};
    send("silentloadvoteconfig,3.6");
    EXPECT_EQ(calls, (std::vector<std::string>{"g1.SilentLoadVoteConfig(4)"}));
    sendAfresh("SILENTLOADVOTECONFIG,abc");
    EXPECT_EQ(calls, (std::vector<std::string>{"g1.SilentLoadVoteConfig(0)"}));
}

TEST_F(CommandChannel, WinningKeypadVoteStatusAndAbstain) {
    send("WINNING KEYPAD=17");
    EXPECT_EQ(fields(w.glo().winningKeypad, join(calls, " ")), "17|g1.ShowWinningKeypad(17,True) g2.ShowWinningKeypad(17,True)");
    send("Vote-Status:12 of 30 Voted");
    EXPECT_EQ(w.main().lblVotesCast, "12 of 30 Voted");
    send("abstain=5");
    EXPECT_EQ(fields(w.main().Opt_Abstain, w.main().key_Abstain), "1|5");
    send("ABSTAIN=0");
    EXPECT_FALSE(w.main().Opt_Abstain);
}

TEST_F(CommandChannel, PcaOptionsStoreOneTrailingComma) {
    for (const auto& [line, stored] : std::vector<std::pair<std::string, std::string>>{
             {"PCAOPTIONS=1,2,", "1,2,"}, {"PCAOPTIONS=1,2", "1,2,"}, {"pcaoptions,7", "7,"}, {"PCAOPTIONS=", ""},
             {"PCAOPTIONS=4\r\nGETVOTEINFO", ""}}) {
        send(line);
        EXPECT_EQ(w.glo().textVoteOptions, stored) << line;
    }
}

TEST_F(CommandChannel, KeysInAnyCaseAndValuesKeepTheirCase) {
    send("VOTENAME=Q1\r\nVoteText=Pick One = Or Two\r\nPREVOTETEXT=Get Ready\r\nAnswerText=A|B\r\n"
         "QuestionTextShort=Lunch?\r\nKeypadsActive=,3,7,\r\nVoteType=SingleDigit\r\nPostVotedText=ignored");
    const GlobalState& g = w.glo();
    EXPECT_EQ((std::vector<std::string>{g.voteName, g.voteText, g.prevoteText, g.answerText, g.questionTextShort,
                                        g.ActiveKeypads.text(), g.voteType}),
              (std::vector<std::string>{"Q1", "Pick One = Or Two", "Get Ready", "A|B", "Lunch?", ",3,7,", "SingleDigit"}));
    send("votetype=9.0");
    EXPECT_EQ(w.glo().voteType, "9");
    // A name in parts goes to the vote run as its parts.
    sendAfresh("votename=Quiz@@Round 2@@Q7");
    EXPECT_EQ(fields(w.glo().voteName, join(calls, " ")), "Quiz@@Round 2@@Q7|voteNameParts(Quiz|Round 2|Q7)");
}

TEST_F(CommandChannel, NumbersFillTheirFieldsAndClampAtTheirEnds) {
    send("options=12\r\nstartfrom=0\r\nkelvarindisplay=2\r\nallocation=100\r\nlimits=3\r\n"
         "points=1,000\r\nkvpoptions=7");
    const GlobalState& g = w.glo();
    auto fields = [&] {
        return std::vector<long long>{g.optionCount, g.startFrom, g.kelvarinDisplay, g.allocation, g.limits, g.points,
                                      g.kvpOptions};
    };
    EXPECT_EQ(fields(), (std::vector<long long>{12, 0, 2, 100, 3, 1000, 7}));

    // 16-bit fields: beyond the range they stay at its ends; halves go to the even side.
    for (const std::string& big : {std::string("70000"), std::string(300, '9')}) {  // 1e300 too
        send("OPTIONS=" + big);
        EXPECT_EQ(w.glo().optionCount, 32767);
    }
    // 32-bit fields too.
    send("options=-70000\r\nstartfrom=2.5\r\nkelvarindisplay=3.5\r\nallocation=3000000000\r\nlimits=-3000000000\r\npoints=2147483647");
    EXPECT_EQ(fields(), (std::vector<long long>{-32768, 2, 4, 2147483647, -2147483648LL, 2147483647, 7}));
    // Malformed numbers read as 0.
    send("options=lots\r\nkvpoptions=\r\nallocation=#%");
    EXPECT_EQ(fields(), (std::vector<long long>{0, 2, 4, 0, -2147483648LL, 2147483647, 0}));
}

TEST_F(CommandChannel, RandomVoteStringFillsTheOptionValuesUpToTheirEnd) {
    send("options=3\r\nrandomvotestring=10;2.5;x;99;100");
    EXPECT_EQ(w.glo().optionValues, (std::vector<float>{10.0f, 2.5f, 0.0f}));
    send("options=5\r\nrandomvotestring=7");
    EXPECT_EQ(w.glo().optionValues, (std::vector<float>{7.0f, 2.5f, 0.0f, -1.0f, -1.0f}));
    send("randomvotestring=1e300");
    EXPECT_EQ(w.glo().optionValues[0], FLT_MAX);
    // The values stay after the vote ends and are reset when the next one starts.
    send("options=3\r\nrandomvotestring=1;2;3\r\nENDVOTE");
    EXPECT_EQ(w.glo().optionValues, (std::vector<float>{1.0f, 2.0f, 3.0f}));
    send("STARTVOTE");
    EXPECT_EQ(w.glo().optionValues, (std::vector<float>{-1.0f, -1.0f, -1.0f}));
}

TEST_F(CommandChannel, HotKeyDetectModeAndBalloonLines) {
    send("CTRL KEYDOWN=5\r\nalt keydown=A\r\nAdmin KeyDown=q");
    EXPECT_EQ(calls, (std::vector<std::string>{"ctrlKeyPressed(5)", "altKeyPressed(A)", "adminKeyPressed(q)"}));

    send("Detect Mode=2");
    EXPECT_TRUE(w.logged(" - XX - Detect Mode Not Update"));  // no oldest-generation driver
    drivers->withBlack3 = true;
    sendAfresh("Detect Mode=-1");
    EXPECT_EQ(fields(join(calls, " "), w.logged(" - XX - Detect Mode Updated")), "black3.SetDetectMode(-1)|1");

    send("BalloonHelp=Press V to vote");
    ASSERT_FALSE(w.tray.balloons.empty());
    EXPECT_EQ(fields(w.tray.balloons.back().text, w.tray.balloons.back().iconKind), "Press V to vote|1");
}

TEST_F(CommandChannel, UnknownLinesAndKeysAreIgnored) {
    const std::string before = w.glo().voteName;
    // Close to a command is not the command.
    send("HELLO\r\nnosuchkey=3\r\n=5\r\n   \r\n\r\nvotename\r\nFREECURSORS\r\nF C\r\nAK2\r\nBASEINFO");
    EXPECT_EQ(fields(calls.size(), w.glo().voteName == before, sent.size()), "0|1|0");
    // Blanks a client leaves around a line do not hide the command.
    send("  STARTVOTE \t");
    EXPECT_EQ(count("voteStart"), 1);
}

TEST_F(CommandChannel, TaskLinesMaintainTheTrayTaskList) {
    send("AddTask=Show Results\r\nADDTASK=Next Question\r\naddtask=Show Results");
    EXPECT_EQ(w.main().tasks, (std::vector<std::string>{"Show Results", "Next Question"}));
    EXPECT_EQ(w.tray.tasks, w.main().tasks);
    send("DeleteTask=Show Results\r\nDeleteTask=Not There");
    EXPECT_EQ(w.tray.tasks, (std::vector<std::string>{"Next Question"}));
    send("AddTask=3\r\nAddTask=4\r\nAddTask=5\r\nAddTask=6\r\nAddTask=7");
    // The tray menu holds five.
    EXPECT_EQ(fields(w.tray.tasks.size(), w.logged("Task Not Added (Task List Full): 7")), "5|1");
    // The task menu hands the chosen task back to the display programs.
    w.main().Task1();
    w.scheduler.advance(100);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent.back(), "Task=Next Question");
}

TEST_F(CommandChannel, SimulationButtonsStartAndEndATestVote) {
    MainForm& m = w.main();
    m.cmd_start_Click();
    EXPECT_EQ(fields(m.txt_command, m.tmr_simulateVotes.enabled(), w.logged("Simulating Votes")),
              "PCAOPTIONS=\r\nOPTIONS=11\r\nSTARTVOTE|1|1");
    w.glo().textVoteOptions = "9,";
    w.scheduler.advance(50);
    EXPECT_EQ(fields(w.glo().optionCount, w.glo().textVoteOptions, count("voteStart")), "11||1");

    m.cmd_Stop_Click();
    EXPECT_EQ(fields(m.txt_command, m.tmr_simulateVotes.enabled()), "ENDVOTE|0");
    w.scheduler.advance(50);
    EXPECT_EQ(count("voteEnd"), 1);
}
