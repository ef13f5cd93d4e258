// Commands whose work the presentation side does, each proven by its effect.
#include "audio/AudioWindow.h"
#include "core/DebugForms.h"
#include "platform/sim/SimPresentation.h"
#include "presentation/PresentationFixture.h"
#include "presentation/VoteIntake.h"
#include "presentation/VoteRun.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct CommandWorld : ShowWorld {
    CommandWorld() : ShowWorld({slide("One"), slide("Two"), slide("Three")}, {{"ActiveKeypads", "4,8"}}) {
        presentation.Begin();
    }
    void send(const std::string& line) {
        main().AddDataToCommandQueue(line);
        scheduler.advance(60);
    }
};
}  // namespace

TEST(WiredCommands, SlideMoves) {
    CommandWorld w;
    w.send("NEXTSLIDE");
    EXPECT_EQ(w.presentation.CurrentSlide().value, 2);
    w.send("NEXTSLIDE,2");  // which slide the sender saw: CommandSetTest
    EXPECT_EQ(w.presentation.CurrentSlide().value, 3);
    w.send("previousslide");
    EXPECT_EQ(w.presentation.CurrentSlide().value, 2);
}

TEST(WiredCommands, VoteStartAndEndReachTheDriversAndTheIntake) {
    CommandWorld w;
    w.glo().bases = {base("100", "KELVARIN COREHUB G2")};
    std::vector<float> keypads{1};
    std::vector<std::string> votes{"1"};
    w.c().intake->SendVotes(keypads, votes, 0, 0);
    EXPECT_EQ(w.c().intake->distinctVoters(), 1);
    w.calls.clear();
    w.send("STARTVOTE");
    // A new vote, a new voter list.
    EXPECT_EQ(fields(join(w.calls, ","), w.c().intake->distinctVoters(), w.glo().ActiveKeypads.text(), w.glo().voteRunning),
              "g2.StartVote|0|,4,8,|1");
    w.send("ENDVOTE");
    EXPECT_EQ(fields(w.calls.back(), w.glo().voteRunning), "g2.EndVote(False,False)|0");
    w.send("votename=Colours@@slide 2");
    EXPECT_EQ(fields(w.glo().voteName, w.c().voteRun->voteNameDetail), "Colours|slide 2");
}

TEST(WiredCommands, KeypadsActiveSetsTheTagAndTheListTheIntakeHonours) {
    CommandWorld w;
    w.glo().bases = {base("100", "KELVARIN COREHUB G2", 1, 40)};
    std::vector<std::string> sent;
    w.main().FromCtrlForm.connect([&](const std::string& s) { sent.push_back(s); });
    w.send("keypadsactive=3,7,12");
    EXPECT_EQ(fields(w.presentation.PresentationTag("ActiveKeypads").value, w.glo().ActiveKeypads.text()), "3,7,12|,3,7,12,");
    w.send("STARTVOTE");
    std::vector<float> keypads{4, 7};
    std::vector<std::string> votes{"1", "2"};
    w.c().intake->SendVotes(keypads, votes, 0, 0);
    w.scheduler.advance(100);
    EXPECT_EQ(sent, (std::vector<std::string>{"[7;2],"}));
}

TEST(WiredCommands, WindowsDesktopAndHook) {
    CommandWorld w;
    w.glo().bases = {base("100", "KELVARIN COREHUB G2")};
    w.send("SHOWAUDIO");
    auto* audio = w.c().forms.get<frmAudio>(frmAudio::kName);
    ASSERT_NE(audio, nullptr);
    EXPECT_EQ(fields(audio->Visible(), audio->topMost), "1|1");

    const auto hwnd = w.presentation.show()->hwnd();
    ASSERT_TRUE(w.desktop.topMost(hwnd));
    w.send("TOGGLETOPMOST");
    EXPECT_FALSE(w.desktop.topMost(hwnd));
    w.desktop.enableProcessWindows("POWERPNT.EXE", false);
    w.send("ENABLEPPT");
    EXPECT_TRUE(w.desktop.processWindowsEnabled("POWERPNT.EXE"));
    w.desktop.clipCursor(true);
    w.send("FC");
    EXPECT_FALSE(w.desktop.cursorClipped());

    w.send("REMOVEHOOK");
    EXPECT_FALSE(w.keyboard.hookInstalled());
    w.send("SETHOOK");
    EXPECT_TRUE(w.keyboard.hookInstalled());

    w.presentation.active()->tags().add("ActiveKeypads", "1,2,3");
    w.send("READACTIVEKEYPADS");
    EXPECT_EQ(w.glo().ActiveKeypads.text(), ",1,2,3,");
}

TEST(WiredCommands, DebugWindows) {
    CommandWorld w;
    w.send("SHOWDEBUG");
    auto* debug = w.c().forms.get<DebugForm>(DebugForm::kName);
    ASSERT_NE(debug, nullptr);
    EXPECT_TRUE(debug->Visible());
    EXPECT_NE(std::find(debug->lines.begin(), debug->lines.end(), "slideShowActive=True"), debug->lines.end());
    w.send("SPL");
    auto* processes = w.c().forms.get<DebugProcessListForm>(DebugProcessListForm::kName);
    ASSERT_NE(processes, nullptr);
    EXPECT_NE(std::find(processes->lines.begin(), processes->lines.end(), "POWERPNT.EXE"), processes->lines.end());
    w.send("SWH");
    auto* handles = w.c().forms.get<DebugWindowHandlesForm>(DebugWindowHandlesForm::kName);
    ASSERT_NE(handles, nullptr);
    EXPECT_EQ(handles->lines.back(), "foreground: screenClass");
}
