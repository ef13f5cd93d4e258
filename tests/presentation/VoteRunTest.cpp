#include "presentation/VoteIntake.h"
#include "presentation/VoteRun.h"
#include "presentation/PresentationWatcher.h"

#include "platform/sim/SimPresentation.h"
#include "presentation/PresentationFixture.h"

using namespace tlx;
using namespace tlx::test;

namespace {
std::vector<pptx::SlidePlan> voteDeck() {
    return {slide("Welcome"),
            slide("Colours", {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}}, "Which colour?"),
            slide("Floor", {{"MURMELO", "True"}}),
            slide("Both", {{"TLXQUIZ", "x"}, {"MURMELO", "True"}}),
            slide("Plain")};
}
}  // namespace

TEST(VKey, OnAVoteSlideTheQuickVoteRuns) {
    ShowWorld w(voteDeck());
    w.glo().traceToFile = true;
    int vKeys = 0;
    w.addIn->VKeyPressed.connect([&] { ++vKeys; });
    w.presentation.Begin();
    w.presentation.Next();
    w.pressV();
    EXPECT_TRUE(w.logged("tmrCheck4Vote_Timer: Vote Found"));
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"DoRapidpoll"}));
    EXPECT_EQ(fields(w.presentation.PresentationTag("tlxCurrentSlide").value, vKeys, w.addIn->CurrentSlide()), "2|1|2");
    // One press, one check, one quick vote.
    w.scheduler.advance(1000);
    EXPECT_EQ(w.presentation.macrosRun().size(), 1u);
}

TEST(VKey, WithTheFocusElsewhereNoVoteStartsAndTheClassIsNamed) {
    ShowWorld w(voteDeck());
    w.presentation.Begin();
    w.presentation.Next();
    w.desktop.setForegroundWindowClass(kFrameWindowClass);
    w.pressV();
    EXPECT_EQ(fields(w.logged("V Down: tmrCheck4Vote_Timer: Slide Show NOT focus (PP14FrameClass)"),
                     w.presentation.macrosRun().size(), w.main().tmrCheck4Vote.enabled()),
              "1|0|0");
}

TEST(VKey, WithoutAShowOrAPresentationProgram) {
    ShowWorld w(voteDeck());
    w.pressV();
    EXPECT_TRUE(w.logged("V Down: tmrCheck4Vote_Timer: Slide Show NOT found"));
    w.presentation.quit();
    w.c().watcher->InitPPTObject(true);
    w.main().tmrCheck4Vote.setEnabled(true);
    w.scheduler.advance(100);
    EXPECT_TRUE(w.logged("V Down: tmrCheck4Vote_Timer: InitPPTObject=FALSE"));
    // A refusal before the check proper tries again on the next tick, until the check runs.
    EXPECT_TRUE(w.main().tmrCheck4Vote.enabled());
    w.presentation.start();
    w.scheduler.advance(100);
    EXPECT_FALSE(w.main().tmrCheck4Vote.enabled());
}

TEST(VKey, AMicrophoneSlideAsksForTheAudioWindow) {
    ShowWorld w(voteDeck());
    w.glo().traceToFile = true;
    w.presentation.Begin();
    w.presentation.GoTo(3);
    w.typeKey('V');
    w.scheduler.advance(25);
    EXPECT_EQ(fields(w.traced("V Down: tmrCheck4Vote_Timer: Murmelo Found"), w.main().txt_command, w.presentation.macrosRun().size()),
              "1|SHOWAUDIO|0");
    // A vote tag beside it makes it a vote slide.
    w.scheduler.advance(100);
    w.presentation.GoTo(4);
    w.pressV();
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"DoRapidpoll"}));
}

TEST(VKey, ASlideWithoutTagsOrWithAnEmptyOneHasNothing) {
    ShowWorld w(voteDeck());
    w.glo().traceToFile = true;
    w.presentation.Begin();
    w.presentation.GoTo(5);
    w.pressV();
    // The trace file only.
    EXPECT_EQ(fields(w.traced("V Down: tmrCheck4Vote_Timer: Nothing Found on current slide"), w.logged("Nothing Found")), "1|0");
    w.presentation.active()->slide(5)->tags().add("TLXVOTE", "");
    w.pressV();
    EXPECT_TRUE(w.presentation.macrosRun().empty());
}

TEST(ActiveKeypads, ReadWithCommasAroundAtEveryStartAndWrittenWithout) {
    ShowWorld w({slide("One")}, {{"ActiveKeypads", "3,7"}});
    w.c().voteRun->VoteStart();
    EXPECT_EQ(fields(w.glo().ActiveKeypads.text(), w.glo().ActiveKeypads.contains("7"), w.glo().ActiveKeypads.contains("37")),
              ",3,7,|1|0");
    w.c().voteRun->SetActiveKeypads(",3,7,12,");
    EXPECT_EQ(w.presentation.PresentationTag("ActiveKeypads").value, "3,7,12");
    w.presentation.active()->tags().add("ActiveKeypads", "5");
    w.c().voteRun->VoteStart();  // read again
    EXPECT_EQ(w.glo().ActiveKeypads.text(), ",5,");
    w.c().voteRun->SetActiveKeypads("");
    w.c().voteRun->ReadActiveKeypads();
    EXPECT_EQ(w.glo().ActiveKeypads.text(), "");
}

TEST(SlideMoves, TheShowStaysWhileAQuickVoteIsOpen) {
    ShowWorld w({slide("One"), slide("Two"), slide("Three")});
    w.presentation.Begin();
    w.presentation.active()->tags().add("tlxCurrentSlide", "1");
    w.presentation.active()->tags().add("rapidQactive", "True");
    w.c().voteRun->GoToNextSlide();
    // The slide is forgotten all the same.
    EXPECT_EQ(fields(w.presentation.CurrentSlide().value, w.presentation.PresentationTag("tlxCurrentSlide").value), "1|");
    w.presentation.active()->tags().add("rapidQactive", "False");
    w.c().voteRun->GoToNextSlide();
    EXPECT_EQ(w.presentation.CurrentSlide().value, 2);
    w.c().voteRun->GoToPreviousSlide();
    EXPECT_EQ(w.presentation.CurrentSlide().value, 1);
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"GoToNextSlide", "GoToPreviousSlide"}));
}

TEST(VoteStart, EveryBaseTypeOnItsDriverAndEachOldPortOnce) {
    ShowWorld w({slide("One")});
    w.drivers->withBlack3 = true;
    w.glo().bases = {base("3", "KELVARIN BASE V3"), base("3", "KELVARIN BASE V3"), base("4", "kelvarin base v3"),
                     base("100", "KELVARIN COREHUB G1"), base("200", "KELVARIN COREHUB G2"),
                     base("201", "KELVARIN COREHUB G2"), base("", "KBOARD")};
    w.calls.clear();
    const int taking = w.c().voteRun->VoteStart();
    EXPECT_EQ(w.calls, (CallLog{"black3.StartVote(3)", "black3.StartVote(4)", "g1.StartVote", "g2.StartVote"}));
    EXPECT_EQ(fields(w.c().voteRun->startedPorts(), taking, w.glo().Voting), ":3::4:|5|1");
    w.calls.clear();
    w.c().voteRun->VoteEnd();
    EXPECT_EQ(fields(join(w.calls, ","), w.glo().Voting), "black3.EndVote(3),black3.EndVote(4)|0");
    // A vote on the oldest bases alone is a vote running too.
    w.glo().bases = {base("3", "KELVARIN BASE V3")};
    w.c().voteRun->VoteStart();
    EXPECT_TRUE(w.glo().Voting);
}

// The vote-data trace is written only while "LOGEVENTS TO FILE" is on, as every trace file
// is: with it off a busy vote would open and close a file for every key press.
TEST(VoteDataTrace, OnlyWithLogEventsToFileOnAndEachVoteFramedInIt) {
    ShowWorld w({slide("One")});
    w.glo().bases = {base("100", "KELVARIN COREHUB G2", 1, 40)};
    auto vote = [&] {
        w.c().voteRun->VoteStart();
        std::vector<float> keypads{1, 99};
        std::vector<std::string> votes{"2", "3"};
        w.c().intake->SendVotes(keypads, votes, 0, 0);
        w.c().voteRun->VoteEnd();
    };
    vote();
    const auto file = w.c().logs.voteTraceFilePath();
    EXPECT_FALSE(std::filesystem::exists(file));
    w.glo().traceToFile = true;
    vote();
    std::vector<std::string> texts;
    for (const auto& line : split(readFile(file), "\r\n"))
        if (!line.empty()) texts.push_back(line.substr(line.find(" | ") + 3));
    EXPECT_EQ(texts, (std::vector<std::string>{"*** VOTE STARTED ***", "VOTE RX - ACCEPTED: [1;2],",
                                               "VOTE RX - REJECTED: [99;3],", "ACTIVE KPADS: ", "MAX KPAD NUM: 40",
                                               "*** VOTE ENDED ***"}));
}

TEST(VoteStart, WindowsAndSavingFollowTheirSettings) {
    ShowWorld w({slide("One")});
    w.c().voteRun->VoteStart();
    EXPECT_TRUE(w.desktop.processWindowsEnabled("POWERPNT.EXE"));  // by default left alone
    w.presentation.active()->tags().add("tlxCurrentSlide", "1");
    w.c().voteRun->VoteEnd();
    EXPECT_EQ(pptx::Deck::open(w.deck).tags().item("tlxCurrentSlide"), "");  // not saved by default

    w.writeSettings("DEBUG", "DISABLE DISABLING PPT WINDOWS", "0");
    w.writeSettings("DEBUG", "DISABLE PPT SAVE AFTER VOTE CLOSE", "0");
    w.c().voteRun->VoteStart();
    EXPECT_FALSE(w.desktop.processWindowsEnabled("POWERPNT.EXE"));
    w.c().voteRun->VoteEnd();
    EXPECT_EQ(fields(w.desktop.processWindowsEnabled("POWERPNT.EXE"), pptx::Deck::open(w.deck).tags().item("tlxCurrentSlide")), "1|1");
}
