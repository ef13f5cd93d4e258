// The road of a vote on a real (private) session bus. The controller, the simulated
// presentation program and the simulated bases serve in this process on virtual time; the
// add-in, the presenter's keyboard, the display program and the keypads are bus clients.
#include "core/MainForm.h"
#include "drivers/KelvarinDrivers.h"
#include "support/AppSimBus.h"

using namespace tlx;
using namespace tlx::test;

namespace {

class RoadOnTheBus : public SimBusTest {
protected:
    void SetUp() override {
        w.useSimBases();
        w.addSimBase("100100100100", 40, "KELVARIN COREHUB G2", 300100001);
        w.addSimBase("200200200200", 40, "KELVARIN COREHUB G2", 300200001);
        w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0},
                         {"200200200200", "KELVARIN COREHUB G2", 1, 40, false, 0, 100}});
        pptx::DeckPlan plan;
        plan.tags = {{"ActiveKeypads", "3,5,7,103"}};
        const pptx::SlidePlan after{"Thank you", "", {}, {}, {}};
        plan.slides = {
            {"Welcome", "", {}, {}, {}},
            {"Colours", "", {}, {}, {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}}},
            after,
            after};
        w.openDeck(plan);
        // The quick-vote macro starts the display program; here it only says so.
        w.presentation.displays["TLXVOTE"] = {"chartist", ""};
        w.presentation.launchDisplay = [this](const SimPresentationApp::Display&, const std::string&) {
            displayStarted = true;
            return true;
        };
        serve(&w.presentation);
    }
    bool displayStarted = false;
};

}  // namespace

TEST_F(RoadOnTheBus, AVoteFromTheShowsBeginToItsEnd) {
    BusClient addIn(bus, "addin");
    BusClient display(bus, "display");
    ASSERT_EQ(addIn.call("init", {""}).type(), QDBusMessage::ReplyMessage);
    ASSERT_EQ(display.call("init", {""}).type(), QDBusMessage::ReplyMessage);

    // The add-in reports the show's begin through the class.
    ASSERT_EQ(show("Begin").type(), QDBusMessage::ReplyMessage);
    const auto window = static_cast<int>(w.presentation.show()->hwnd());
    ASSERT_EQ(addIn.call("SlideShowBegin", {window}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(w.glo().slideShowActive);
    show("Next");

    // V typed on the show: the quick vote starts the display program.
    show("KeyDown", {86});
    show("KeyUp", {86});
    ASSERT_TRUE(until([&] { return displayStarted; }));
    EXPECT_EQ(w.presentation.macrosRun(), (std::vector<std::string>{"DoRapidpoll"}));
    EXPECT_EQ(display.call("CurrentSlide").arguments().value(0).toInt(), 2);

    // The display program configures the vote and opens it.
    for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "STARTVOTE"}) ASSERT_TRUE(send(display, line));
    ASSERT_TRUE(until([&] { return voteOpen(0) && voteOpen(1); }));

    // Keypads on both bases: one outside the active list, one pressing twice.
    press("100100100100", 3, "2");
    press("200200200200", 9, "1");  // keypad 109
    press("100100100100", 5, "1");
    press("100100100100", 5, "1");  // the same press again: passed on once
    press("200200200200", 3, "4");  // keypad 103
    press("100100100100", 5, "3");  // a changed answer travels again
    ASSERT_TRUE(until([&] { return records(display) == "[3;2],[5;1],[103;4],[5;3],"; })) << records(display);
    // Every client hears every batch.
    EXPECT_EQ(fields(records(addIn) == records(display), w.logged(" - TX - NOT SENT: [109;1],")), "1|1");

    // ENDVOTE ends the vote on both bases.
    ASSERT_TRUE(send(display, "ENDVOTE"));
    ASSERT_TRUE(until([&] { return !voteOpen(0) && !voteOpen(1); }));
    EXPECT_EQ(bases("Press", {"100100100100", 7, "2"}).type(), QDBusMessage::ErrorMessage);  // too late

    // A second vote, and the show moving on while it is open ends it.
    ASSERT_TRUE(send(display, "STARTVOTE"));
    ASSERT_TRUE(until([&] { return voteOpen(0); }));
    show("Next");
    ASSERT_EQ(addIn.call("SlideShowNextSlide").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(fields(voteOpen(0), voteOpen(1), w.glo().Voting), "0|0|0");

    // The simulation's own refusals come back as errors that say why.
    EXPECT_EQ(show("GoTo", {99}).type(), QDBusMessage::ErrorMessage);
    EXPECT_NE(bases("Press", {"999", 1, "1"}).errorMessage().toStdString().find("999"), std::string::npos);
    EXPECT_EQ(bases("Bases").arguments().value(0).toStringList(),
              (QStringList{"KELVARIN COREHUB G2;100100100100", "KELVARIN COREHUB G2;200200200200"}));
}
