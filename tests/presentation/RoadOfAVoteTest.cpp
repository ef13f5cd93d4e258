// The road of a vote, in one process on virtual time: a deck with a vote slide, the show
// begun through the automation class, V typed on the show, the quick-vote macro, a display
// program that configures and starts the vote, keypads on two simulated bases, batches at
// the display program, and ENDVOTE. (The show moving on ends a vote: WatcherTest and the bus test.)
#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "presentation/VoteIntake.h"
#include "platform/sim/SimPresentation.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {

struct Road : TestWorld {
    Road() {
        useSimBases();
        addSimBase("100100100100", 40, "KELVARIN COREHUB G2", 300100001);
        addSimBase("200200200200", 40, "KELVARIN COREHUB G2", 300200001);
        PortEntry a{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0};
        PortEntry b{"200200200200", "KELVARIN COREHUB G2", 1, 40, false, 0, 100};
        writePortFile({a, b});
        pptx::DeckPlan plan;
        plan.tags = {{"ActiveKeypads", "3,5,7,103,105"}};
        pptx::SlidePlan welcome, vote, after;
        welcome.title = "Welcome";
        vote.title = "Colours";
        vote.question = "Which colour do you like best?";
        vote.tags = {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}};
        after.title = "Thank you";
        plan.slides = {welcome, vote, after, after};
        openDeck(plan);
        start();
        wireAddIn();
        // The display program: started by the quick-vote macro, it configures the vote and
        // opens it, and hears every batch.
        display = std::make_unique<tallix>(c());
        display->init("");
        display->FromTLXCtrl.connect([this](const std::string& s) { received.push_back(s); });
        presentation.launchDisplay = [this](const SimPresentationApp::Display&, const std::string&) {
            for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "startfrom=1", "STARTVOTE"})
                display->SendCommand(line);
            return true;
        };
        presentation.displays["TLXVOTE"] = {"chartist", ""};
    }
    void press(const std::string& base, int keypad, const std::string& keys) {
        ASSERT_TRUE(baseLibrary.press(base, keypad, keys).ok);
        scheduler.advance(40);
    }
    std::string records() {
        std::string all;
        for (const auto& r : received) all += replaceAll(r, "\r\n", "");
        return all;
    }
    bool voteOpen(std::size_t base) { return baseLibrary.station(base).voteOpen; }
    std::unique_ptr<tallix> display;
    std::vector<std::string> received;
};

}  // namespace

TEST(RoadOfAVote, FromTheVKeyToTheLastBatch) {
    Road w;
    ASSERT_EQ(w.glo().bases.size(), 2u);
    ASSERT_EQ(w.presentation.Begin(), "");
    EXPECT_TRUE(w.glo().slideShowActive);
    w.presentation.Next();
    w.presentation.KeyDown('V');
    w.presentation.KeyUp('V');
    w.scheduler.advance(200);
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"DoRapidpoll"}));
    EXPECT_TRUE(w.voteOpen(0));
    EXPECT_TRUE(w.voteOpen(1));
    EXPECT_TRUE(w.glo().Voting);

    w.press("100100100100", 3, "2");
    w.press("200200200200", 9, "1");   // system keypad 109: not in the active list
    w.press("100100100100", 5, "1");
    w.press("100100100100", 5, "1");   // pressed twice: the base passes it on once
    w.press("200200200200", 3, "4");   // system keypad 103
    w.press("100100100100", 5, "3");   // a changed answer travels again
    w.scheduler.advance(200);
    EXPECT_EQ(w.records(), "[3;2],[5;1],[103;4],[5;3],");
    EXPECT_TRUE(w.logged(" - TX - NOT SENT: [109;1],"));
    EXPECT_TRUE(w.logged("KPADS ACTIVE: ,3,5,7,103,105,"));
    EXPECT_EQ(w.c().intake->distinctVoters(), 3);

    w.display->SendCommand("ENDVOTE");
    w.scheduler.advance(100);
    EXPECT_FALSE(w.voteOpen(0));
    EXPECT_FALSE(w.voteOpen(1));
    EXPECT_FALSE(w.baseLibrary.press("100100100100", 7, "2").ok);  // too late: the keypad is refused
    w.scheduler.advance(200);
    EXPECT_EQ(w.records(), "[3;2],[5;1],[103;4],[5;3],");
}
