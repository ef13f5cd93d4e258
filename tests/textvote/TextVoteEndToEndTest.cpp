// A whole text vote on virtual time: the simulated world read from a set-up file, the window
// opened by command, the operator's clicks played by a script, three keypads texting (one
// with a weak battery), the vote ended, the texts copied, the window closed.
#include <gtest/gtest.h>

#include "TextVoteWorld.h"
#include "platform/sim/SimScript.h"
#include "platform/sim/basesim/SimBasesAdapter.h"
#include "presentation/Tallix.h"

using namespace tlx;
using namespace tlx::test;

namespace {

const char* kWorld = R"(
[bases]
count=1

[base1]
type=KELVARIN COREHUB G2
id=100100100100
keypads=1-10
hidstart=300100001
battery=385
signal=-45
batteries=7:355,9:not-a-reading
signals=7:-72
)";

const char* kScript = R"(
0.5  Command  TEXTVOTE
1.0  Click    frmTextVoteCollection cmdStartStopVote
2.0  Text     100100100100 3 Coffee please
2.5  Text     100100100100 7 Louder microphone
3.0  Text     100100100100 9 Great talk
4.0  Click    frmTextVoteCollection cmdStartStopVote
4.1  Click    frmTextVoteCollection cmdStartStopVoteLock
4.2  Click    frmTextVoteCollection cmdStartStopVote
4.5  Click    frmTextVoteCollection cmdCopyAllNew
5.0  Click    frmTextVoteCollection Close
)";

}  // namespace

TEST(TextVoteEndToEnd, ThreeKeypadsOneWithAWeakBatteryFromOpeningToClosing) {
    TestWorld w;
    w.useSimBases();
    writeFile(w.dir / "world.ini", kWorld);
    ASSERT_EQ(loadSimBases(w.baseLibrary, (w.dir / "world.ini").string()), 1);
    SimBaseStation& st = w.baseLibrary.station(0);
    // A reading that is not a number is left out.
    EXPECT_EQ(fields(st.keypadBySid(7)->battery, st.keypadBySid(7)->signal, st.keypadBySid(9)->battery), "355|-72|385");
    w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 10}});
    w.start();

    tallix display(w.c());
    display.init("");
    SimBasesAdapter bases(w.baseLibrary);
    SimScript script(w.scheduler, nullptr, &bases);
    script.command = [&](const std::string& line) { return display.SendCommand(line); };
    script.click = [&](const std::string& window, const std::string& control) -> std::string {
        if (auto* t = w.c().forms.get<frmTextVoteCollection>(window)) return t->click(control);
        return "no window " + window + " is open";
    };
    std::vector<std::string> failures;
    script.report = [&](const std::string& r) {
        if (contains(r, "failed")) failures.push_back(r);
    };
    std::vector<std::string> problems;
    script.load(parseScript(kScript, &problems));
    ASSERT_TRUE(problems.empty());
    script.start();

    w.scheduler.advanceSeconds(3.5);
    auto* f = w.c().forms.get<frmTextVoteCollection>(frmTextVoteCollection::kName);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(fields(f->Visible(), f->voting(), st.voteOpen), "1|1|1");
    EXPECT_EQ(f->lstTextVotes, (std::vector<std::string>{"[09:00:02] - Coffee please", "[09:00:02] - Louder microphone",
                                                         "[09:00:03] - Great talk"}));
    EXPECT_EQ(f->lblStatus, "Total: 3");
    ASSERT_EQ(f->lvwKeypadAlerts.size(), 1u);
    EXPECT_EQ(f->lvwKeypadAlerts[0].subItems[1].text + "|" + f->lvwKeypadAlerts[0].subItems[2].text,
              "Low (3.55V)|-72 dB");  // keypad 7's readings from the set-up file
    const std::filesystem::path log = f->sessionLogPath();

    w.scheduler.advanceSeconds(1.0);  // 4.5 s: the stray click was refused, the vote ended, texts copied
    EXPECT_EQ(fields(f->voting(), st.voteOpen), "0|0");
    EXPECT_EQ(w.desktop.clipboardText(),
              "[09:00:02] - Coffee please\r\n[09:00:02] - Louder microphone\r\n[09:00:03] - Great talk\r\n");
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_TRUE(contains(failures[0], "cmdStartStopVote is locked")) << failures[0];

    w.scheduler.advanceSeconds(1.0);
    EXPECT_EQ(fields(w.c().forms.isLoaded(frmTextVoteCollection::kName), script.finished()), "0|1");
    // The session log keeps every text of the session after the window has gone.
    EXPECT_EQ(readFile(log), "2026-11-22 09:00:02|300100003|3|Coffee please\r\n"
                             "2026-11-22 09:00:02|300100007|7|Louder microphone\r\n"
                             "2026-11-22 09:00:03|300100009|9|Great talk\r\n");
    EXPECT_EQ(readFile(w.appData() / "tallix" / "Err.log"), "");
}

TEST(TextVoteEndToEnd, AScriptClickWithoutWindowsOrAControlIsReported) {
    TextVoteWorld t;
    auto& f = t.open();
    SimScript script(t.w.scheduler, nullptr, nullptr);
    EXPECT_EQ(script.run(parseScript("1 Click frmTextVoteCollection cmdCopyAllNew").at(0)), "no windows to click");
    script.click = [&](const std::string&, const std::string& control) { return f.click(control); };
    EXPECT_EQ(script.run(parseScript("1 Click frmTextVoteCollection").at(0)), "Click needs a window and a control");
    EXPECT_EQ(script.run(parseScript("1 Click frmTextVoteCollection cmdStartStopVote").at(0)), "");
    EXPECT_TRUE(f.voting());
}
