#include <gtest/gtest.h>

#include "core/FrmInit.h"
#include "DriverWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const std::string kBase1 = "100100100100";
const std::string kBase2 = "100100100200";
}  // namespace

TEST(StartVote, AFailingBaseIsLoggedAndTheNextStillStarts) {
    DriverWorld d({kBase1, kBase2});
    d.singleDigit();
    d.sim().fail(kBase1, "StartVote", 8);
    EXPECT_EQ(d.g2().StartVote(), 8);
    EXPECT_EQ(fields(d.station(0).voteOpen, d.station(1).voteOpen, d.station(1).vote.KeyMask, d.g2().voteRunning()),
              "0|1|15|1");
    EXPECT_EQ(d.unlogged({"1 - Start Live Vote - ovote.VoteType:9, oVote.VoteQuestionText:",
                          "0 - Start Vote FAILED - 8: TX Comms time out"}),
              "");
    EXPECT_TRUE(d.w.logged(" - XX - 0 - Start Vote FAILED - 8: TX Comms time out"));
}

TEST(StartVote, AnUnknownVoteTypeTouchesNoBase) {
    DriverWorld d;
    d.glo().voteType = "POLL";
    d.g2().SilentLoadVoteConfig(3);
    d.g2().StartVote();
    EXPECT_EQ(d.calls("PrepareVote") + d.calls("StartVote") + d.calls("BeginLiveVote"), "000");
    EXPECT_EQ(fields(d.g2().voteRunning(),
                     d.g2().logged("Silent Loading Vote Quit: UpdateVoteObjectFromGlobalVariables(oVote) = False")),
              "0|1");
}

TEST(SilentLoad, ARepeatedLoadConfiguresOnceAndOnlyTheFirstBaseBeginsIt) {
    DriverWorld d({kBase1, kBase2});
    d.singleDigit();
    d.g2().SilentLoadVoteConfig(3);
    d.g2().SilentLoadVoteConfig(3);
    EXPECT_EQ(d.calls("PrepareVote"), "1|1");
    EXPECT_EQ(d.unlogged({"Silent Loading Vote Commpleted: slideNum = 3",
                          "Silent Loading Vote Quit: m_SilentVoteLoadedSlideNumber = 3", "0 - Prepare Vote - ovote.VoteType:9"}),
              "");

    d.g2().StartVote();
    EXPECT_EQ(fields(d.calls("BeginLiveVote"), d.calls("StartVote"), d.g2().silentVoteLoadedSlideNumber(),
                     d.station(0).voteOpen && d.station(1).voteOpen,
                     d.g2().logged("0 - Begin Live Vote - m_SilentVoteLoadedSlideNumber:3")),
              "1|0|0|1|-1|1|1");

    // A failed preparation is logged as a failed start; the slide still counts as loaded.
    d.sim().fail(kBase1, "PrepareVote", 6);
    d.g2().SilentLoadVoteConfig(2);
    EXPECT_EQ(fields(d.g2().logged("0 - Start Vote FAILED - 6: TX Comms failed"), d.g2().silentVoteLoadedSlideNumber()), "1|2");
}

TEST(PauseResume, OnlyActWhenThePauseSettingIsOn) {
    DriverWorld d;
    d.singleDigit();
    d.g2().StartVote();
    d.g2().PauseVote();
    EXPECT_EQ(d.station().callCount("SetSessionConfig"), 0);

    d.g2().displayTexts().TextVotePauseEnabled = true;
    d.g2().PauseVote();
    EXPECT_TRUE(d.g2().logged("0 - Pause Live Vote"));
    EXPECT_FALSE(d.sim().press(kBase1, 1, "2"));
    d.g2().ResumeVote();
    EXPECT_TRUE(d.g2().logged("0 - Resume Live Vote"));
    EXPECT_TRUE(d.sim().press(kBase1, 1, "2"));
    d.settle();
    EXPECT_EQ(d.intake.votes(), std::vector<std::string>{"2"});

    d.sim().fail(kBase1, "GetSessionConfig", 7);
    d.g2().PauseVote();
    d.sim().fail(kBase1, "SetSessionConfig", 9);
    d.g2().ResumeVote();
    EXPECT_EQ(d.unlogged({"0 - Pause Live Vote (GetSessionConfig) FAILED - 7: RX Comms failed",
                          "0 - Resume Live Vote FAILED - 9: RX Comms time out"}),
              "");
}

TEST(EndVote, EndedTextIsEmptyForARunningVoteAndRequestsRestartUnlessToldOtherwise) {
    DriverWorld d;
    d.glo().options.set(section::kAudioOptions, "AUDIO AUTO REQUESTS", "1");
    d.singleDigit();
    d.g2().EndVote(true, false);
    EXPECT_EQ(d.station().lastEndedText, " ");  // no vote running: a blank
    d.g2().StartVote();
    d.g2().EndVote(true, false);  // noAudio
    // Ended text, vote running, vote open on the base, microphone requests, the base's key mask.
    const auto state = [&] {
        return fields(d.station().lastEndedText, d.g2().voteRunning(), d.station().voteOpen,
                      d.g2().audioRequestsOn(), d.station().vote.KeyMask);
    };
    EXPECT_EQ(fields(state(), d.g2().logged("0 - End Vote")), "|0|0|0|15|1");
    d.g2().EndVote(false, false);
    EXPECT_EQ(state(), " |0|1|1|1536");  // nothing was running: a blank; keys 0 and 11
    EXPECT_EQ(d.station().vote.VoteQuestionText, "  Press 0 to||  request mic");

    // A vote ends the requests first.
    d.g2().StartVote();
    EXPECT_EQ(state(), " |1|1|0|15");
    // Not while the keypad set-up is open.
    d.w.c().forms.load<FrmInit>(d.w.c());
    d.g2().EndVote(false, false);
    EXPECT_FALSE(d.g2().audioRequestsOn());
}

TEST(VoteOps, WithNoBaseConnectedEverythingCompletesQuietly) {
    TestWorld w;
    auto& drivers = w.useSimBases();
    w.start();
    auto* g2 = drivers.oKVv5();
    ASSERT_NE(g2, nullptr);
    w.glo().voteType = "SINGLEDIGIT";
    g2->SilentLoadVoteConfig(1);
    EXPECT_EQ(g2->StartVote(), 0);
    g2->PauseVote();
    g2->ResumeVote();
    g2->EndVote(false, true);
    g2->ShowWinningKeypad(3, true);
    EXPECT_EQ(g2->ScanForBestChannel(""), 0);
    EXPECT_EQ(g2->GetRegistry("1", false), 3);
    EXPECT_EQ(fields(w.dialogs.any("Unable to connect to base station 1"), g2->baseTable().size()), "1|0");
}

TEST(EndVote, ClearingTheSettingsClearsEveryVoteSettingAndDropsAPreload) {
    DriverWorld d;
    GlobalState& g = d.glo();
    const std::vector<std::string*> texts = {&g.questionTextShort, &g.voteText,   &g.voteEndedText,
                                             &g.prevoteText,       &g.answerText, &g.validAnswers};
    const std::vector<std::int16_t*> shorts = {&g.optionCount, &g.startFrom, &g.kelvarinDisplay};
    const std::vector<std::int32_t*> longs = {&g.allocation, &g.limits, &g.points, &g.kvpOptions};
    d.singleDigit();
    for (std::string* t : texts) *t = "1,2";
    for (std::int16_t* n : shorts) *n = 4;
    for (std::int32_t* n : longs) *n = 5;
    d.g2().StartVote();
    d.g2().EndVote(true, false);
    EXPECT_EQ(fields(g.voteType, g.optionCount), "SINGLEDIGIT|4");  // kept unless asked
    d.g2().SilentLoadVoteConfig(4);
    d.g2().EndVote(true, true);
    EXPECT_EQ(fields(d.g2().silentVoteLoadedSlideNumber(), g.voteType), "-1|");  // the preload goes too
    for (const std::string* t : texts) EXPECT_EQ(*t, "");
    for (const std::int16_t* n : shorts) EXPECT_EQ(*n, 0);
    for (const std::int32_t* n : longs) EXPECT_EQ(*n, 0);
}
