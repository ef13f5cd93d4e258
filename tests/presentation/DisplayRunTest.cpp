// A display program's run against a scripted controller, on virtual time: what it sends and
// when, how long it waits for what, and how it ends.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "platform/sim/VirtualScheduler.h"
#include "presentation/display/DisplayRun.h"
#include "support/FakeDisplayLink.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::FakeLink;
using tlx::test::fields;

namespace {

const char* kColours = "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>";
const char* kInfoReply = "baseType=KELVARIN COREHUB G2\r\noffset=0,0,1,20,False\r\nnumKeypads=80\r\nmaxKeypads=80";

class Display : public ::testing::Test {
protected:
    void SetUp() override {
        link.tags[{2, "TLXVOTE"}] = kColours;
        link.texts[{2, "tlx_Question"}] = "Which colour\rdo you like best?";
        link.texts[{2, "tlx_Answers"}] = "1. Red\r2. Green\r3. Blue\r4. Yellow";
    }
    // A fresh run: what an earlier one sent and how it ended are forgotten.
    DisplayRun& make() {
        link.sent.clear();
        exitCode.reset();
        run = std::make_unique<DisplayRun>(scheduler, link, options);
        run->note = [this](const std::string& t) { notes.push_back(t); };
        run->problem = [this](const std::string& t) { problems.push_back(t); };
        run->live = [this](const DisplayModel& m) { lives.push_back(m.tally.voters()); };
        run->result = [this](const DisplayModel& m) { results.push_back(m); };
        run->finished = [this](int code) {
            EXPECT_FALSE(exitCode) << "finished twice";
            exitCode = code;
        };
        return *run;
    }
    DisplayRun& started() {
        make().start();
        return *run;
    }
    // The exit code after waiting so long.
    std::optional<int> exitAfter(long long ms) {
        scheduler.advance(ms);
        return exitCode;
    }
    std::size_t redrawsAfter(long long ms) {
        scheduler.advance(ms);
        return lives.size();
    }
    bool noted(const std::string& part) const {
        for (const auto& n : notes)
            if (n.find(part) != std::string::npos) return true;
        return false;
    }

    VirtualScheduler scheduler;
    FakeLink link;
    DisplayOptions options;
    std::unique_ptr<DisplayRun> run;
    std::vector<std::string> notes, problems;
    std::vector<long long> lives;
    std::vector<DisplayModel> results;
    std::optional<int> exitCode;
};

}  // namespace

TEST_F(Display, ConfiguresOpensTalliesAndEndsTheVoteAfterItsTime) {
    options.seconds = 5;
    DisplayRun& r = started();
    EXPECT_EQ(link.sent, (std::vector<std::string>{"GETVOTEINFO", "votetype=SINGLEDIGIT", "options=4", "startfrom=1",
                                                   "votename=Which colour do you like best?", "STARTVOTE"}));
    EXPECT_TRUE(noted("vote: Which colour do you like best? (slide 2, TLXVOTE, SINGLEDIGIT, 4 options from 1)"));

    r.onStartVoteCount(2);
    r.onData(kInfoReply);
    r.onData("[1;1],[2;2],\r\n[3;2],");
    scheduler.advance(250);
    EXPECT_EQ(lives, (std::vector<long long>{3}));
    r.onData("[1;4],");
    scheduler.advance(4700);
    EXPECT_EQ(link.sent.back(), "STARTVOTE");
    scheduler.advance(50);  // five seconds after STARTVOTE
    EXPECT_EQ(std::vector<std::string>(link.sent.end() - 2, link.sent.end()),
              (std::vector<std::string>{"ENDVOTE", "GETVOTEINFO"}));
    // Batches still on their way count; the reply to GETVOTEINFO comes behind them.
    r.onData("[4;3],");
    r.onData(kInfoReply);
    EXPECT_FALSE(exitAfter(290));
    scheduler.advance(20);
    ASSERT_EQ(fields(exitCode, results.size()), "0|1");
    const DisplayModel& m = results[0];
    EXPECT_EQ(fields(m.tally.voters(), m.tally.changes(), m.tally.count("2"), m.bases, m.seconds, m.ended), "4|1|2|2|5|1");
    // Once over, nothing more happens.
    r.onData("[9;1],");
    r.requestEnd("again");
    scheduler.advance(10000);
    EXPECT_EQ(results.size(), 1u);
}

TEST_F(Display, WaitsForTheControllerAndItsInitialisationWithinItsLimit) {
    options.connectSeconds = 2;
    link.initAbsent = 4;  // on the bus after a second
    link.refuse = 3;      // and initialised 0.6 s later
    DisplayRun& r = started();
    scheduler.advance(1000);
    EXPECT_EQ(fields(link.inits, link.sent.empty()), "5|1");
    scheduler.advance(600);
    EXPECT_EQ(fields(r.phase() == DisplayRun::Phase::Running, link.sent.size()), "1|6");

    link.refuse = 1000;
    started();
    EXPECT_EQ(exitAfter(2100), DisplayRun::kExitNoController);
    EXPECT_EQ(problems.back(), "the controller did not finish initialising within 2 s");

    link.absent = true;
    started();
    EXPECT_FALSE(exitAfter(1900));
    EXPECT_EQ(exitAfter(400), DisplayRun::kExitNoController);
    EXPECT_EQ(problems.back(), "no controller answers (waited 2 s): tallix_control.tallix does not answer");
    EXPECT_TRUE(results.empty());
}

TEST_F(Display, AReshowRunsNoVoteAndAnOptionCountFallsBackToTheAnswers) {
    link.tags[{2, "TLXVOTE"}] = "";
    link.tags[{2, "TLXRESHOW"}] = "1";
    started();
    EXPECT_EQ(fields(exitCode, link.sent.empty(), noted("slide 2 shows again the results of slide 1")), "0|1|1");

    // No <Options>: as many as the slide has answers; no answers either: the controller's default.
    link.tags[{2, "TLXRESHOW"}] = "";
    link.tags[{2, "TLXQUIZ"}] = "<VoteType>SINGLEDIGIT</VoteType>";
    started();
    EXPECT_EQ(link.sent[2], "options=4");
    link.texts.clear();
    started();
    EXPECT_EQ(fields(link.sent[2], link.sent[4]), "options=10|votename=Slide 2");
}

TEST_F(Display, EndingWaitsForTheLastBatchesAtMostItsLimitAndASecondRequestNotAtAll) {
    options.settleSeconds = 2;
    DisplayRun& r = started();
    r.onData("[5;1],");
    scheduler.advance(60000);
    EXPECT_EQ(r.phase(), DisplayRun::Phase::Running) << "without --seconds it runs until told";
    r.requestEnd("interrupted");
    EXPECT_TRUE(noted("ending the vote (interrupted)"));
    // The reply to the first GETVOTEINFO never came: two replies are due.
    r.onData(kInfoReply);
    EXPECT_FALSE(exitAfter(1990));
    EXPECT_EQ(exitAfter(10), 0);
    EXPECT_EQ(results.at(0).tally.voters(), 1);

    DisplayRun& again = started();
    again.requestEnd("interrupted");
    again.requestEnd("interrupted");
    EXPECT_EQ(fields(exitCode, results.size()), "0|2");
}

TEST_F(Display, TheControllerLeavingEndsTheRunWithWhatCame) {
    DisplayRun& r = started();
    r.onData("[5;1],[6;3],");
    link.absent = true;
    r.onControllerGone();
    ASSERT_EQ(fields(exitCode, results.size()), "0|1");
    EXPECT_TRUE(results[0].controllerGone);
    EXPECT_NE(link.sent.back(), "ENDVOTE");

    // Gone before the vote opened: nothing to show, and the controller is not there.
    link.absent = false;
    link.refuse = 1000;
    DisplayRun& early = started();
    early.onControllerGone();
    EXPECT_EQ(exitCode, DisplayRun::kExitNoController);
    EXPECT_EQ(problems.back(), "the controller left the bus before the vote opened");

    // An end asked for before the vote opened ends without ENDVOTE.
    DisplayRun& stopped = started();
    stopped.requestEnd("interrupted");
    EXPECT_EQ(fields(exitCode, link.sent.empty()), "0|1");
    EXPECT_TRUE(noted("stopped before the vote opened (interrupted)"));
}

TEST_F(Display, BatchesBeforeTheVoteDoNotCountAndRedrawsComeAtMostOncePerPeriod) {
    link.onSend = [this](const std::string& line) {
        // An earlier vote's batch arrives while this one is being configured.
        if (line == "options=4") run->onData("[1;3],[2;3],");
    };
    options.refreshSeconds = 0.5;
    DisplayRun& r = make();
    r.start();
    EXPECT_EQ(fields(r.model().tally.voters(), r.model().tally.ignored()), "0|2");
    scheduler.advance(500);
    EXPECT_EQ(lives, (std::vector<long long>{0}));  // the empty chart, once
    for (int i = 1; i <= 40; ++i) {
        r.onData("[" + std::to_string(i) + ";1],");
        scheduler.advance(20);
    }
    // 800 ms of batches: one redraw per half second.
    EXPECT_EQ(lives.size(), 2u);
    scheduler.advance(500);
    EXPECT_EQ(fields(lives.size(), lives.back()), "3|40");
    EXPECT_EQ(redrawsAfter(5000), 3u) << "no redraw without a change";
    r.onData("[2;x\x01],");
    EXPECT_EQ(redrawsAfter(500), 4u) << "a skipped record shows in the count";
    EXPECT_EQ(r.model().tally.skipped(), 1);
}

TEST_F(Display, FindsTheVoteSlideFromTheShowAndRunsWithElementsItDoesNotKnow) {
    // No tlxCurrentSlide: the slide the show is on.
    link.current = 0;
    link.showing = 2;
    link.tags[{2, "TLXVOTE"}] = "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options><Rows>3</Rows>";
    started();
    EXPECT_TRUE(noted("the controller names no vote slide (tlxCurrentSlide is not set); the show is on slide 2"));
    EXPECT_EQ(run->phase(), DisplayRun::Phase::Running);
}

TEST_F(Display, WithoutAVoteItCanRunItSaysWhySendsNothingAndEndsWithNoVote) {
    const std::pair<std::function<void()>, const char*> faults[] = {
        {[&] { link.current = 0; },
         "no vote slide: the controller names none (the presentation tag tlxCurrentSlide is not set); give "
         "--slide N, or --config TEXT"},
        {[&] { options.slide = 3; },
         "slide 3 is not a vote slide (it carries none of TLXVOTE, TLXQUIZ, TLXTEAM, TLXRESHOW, TLXMATRIX)"},
        // Without the simulation the tags cannot be read (the command line can give them).
        {[&] { link.simulation = false; },
         "cannot read the vote tags of slide 2: no simulated presentation program serves them here; give "
         "--config TEXT"},
        {[&] { link.tags[{2, "TLXVOTE"}] = "<VoteType>SINGLEDIGIT</VoteType><Options>x</Options>"; },
         "the TLXVOTE tag of slide 2 cannot be read: <Options> \"x\" is not an option count from 1 to 1000; no vote "
         "was sent"},
        {[&] { link.tags[{2, "TLXVOTE"}] = "SINGLEDIGIT"; },
         "the TLXVOTE tag of slide 2 cannot be read: text outside an element: \"SINGLEDIGIT\"; no vote was sent"},
        {[&] { link.tags[{2, "TLXVOTE"}] = "<Options>0</Options><Seconds>-5</Seconds>"; },
         "the TLXVOTE tag of slide 2 cannot be read: <Options> \"0\" is not an option count from 1 to 1000; "
         "<Seconds> \"-5\" is not a number of seconds above 0; no vote was sent"},
        {[&] { options.config = "<Options>four</Options>"; },
         "the configuration given with --config cannot be read: <Options> \"four\" is not an option count from 1 "
         "to 1000; no vote was sent"},
    };
    for (const auto& [fault, message] : faults) {
        link.current = 2;
        link.simulation = true;
        link.tags[{2, "TLXVOTE"}] = kColours;
        options = DisplayOptions{};
        fault();
        DisplayRun& r = started();
        EXPECT_EQ(exitCode, DisplayRun::kExitNoVote) << message;
        EXPECT_EQ(problems.back(), message);
        EXPECT_EQ(r.phase(), DisplayRun::Phase::Done);
        scheduler.advance(30000);
        EXPECT_TRUE(link.sent.empty()) << message << ": " << testing::PrintToString(link.sent);
        EXPECT_TRUE(results.empty());
    }
}
