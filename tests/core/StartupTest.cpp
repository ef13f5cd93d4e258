#include <gtest/gtest.h>

#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "support/FakePresentation.h"
#include "support/Fields.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

// Drivers that bring up the bases whose ports are listed, and remember what the opening
// bar showed while each was opened.
class FakeDrivers : public BaseDrivers {
public:
    FakeDrivers(Controller& c, std::vector<std::string> up) : c_(c), up_(std::move(up)) {}
    bool openBase(const PortEntry& base) override {
        if (auto* f = c_.forms.get<FrmInit>(FrmInit::kName)) bars.push_back(f->openingBar);
        opened.push_back(base.port);
        return std::find(up_.begin(), up_.end(), base.port) != up_.end();
    }
    std::vector<FoundBase> scanForBases() override { return found; }
    void closePorts() override { ++closed; }
    std::vector<std::string> bars, opened;
    std::vector<FoundBase> found;
    int closed = 0;

private:
    Controller& c_;
    std::vector<std::string> up_;
};

}  // namespace

TEST(Startup, StateMovesOnlyForwardAndASecondCallChangesNothing) {
    TestWorld w;
    std::vector<int> seen;
    w.c().forms.loaded.connect([&](Form&) { seen.push_back(w.glo().InitialisedState); });
    w.start();
    EXPECT_EQ(w.glo().InitialisedState, INIT_STATE_INITIALISED);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front(), INIT_STATE_INITIALISING);  // the main form loads during initialisation
    const auto forms = w.c().forms.count();
    const auto lines = w.logLines().size();
    w.c().GlobalInitSub();
    EXPECT_EQ(fields(w.glo().InitialisedState == INIT_STATE_INITIALISED, w.c().forms.count() - forms,
                     w.logLines().size() - lines),
              "1|0|0");
    EXPECT_EQ(fields(w.logged("INITIAL LOAD TIME TAKEN = "), endsWith(w.logLines().front(), " secs")), "1|1");
}

TEST(Startup, TheMainFormAttachesThePresentationProgramOnlyWhenItRuns) {
    for (const bool running : {true, false}) {
        TestWorld w(running);
        w.start();
        EXPECT_EQ(fields(w.glo().InitialisedState == INIT_STATE_INITIALISED, w.main().tmrCheck4PPT.enabled(), w.tray.icon,
                         w.tray.balloons.size(), w.logged("glo.ppApp GetObject Done")),
                  fields(1, 1, 1, 0, running));
        EXPECT_EQ(w.glo().ppApp, running ? w.presentation.getActiveObject() : nullptr);
        // The data folders are made and the probe file is cleared away again.
        EXPECT_EQ(fields(w.glo().localDataFolder, w.glo().sharedDataFolder),
                  fields(w.appData() / "tallix", w.programData() / "tallix"));
        EXPECT_FALSE(fs::exists(w.glo().localDataFolder / "PermissionCheck"));
    }
}

TEST(Startup, UnwritableAppDataFallsBackToTheInstallFolderWithOneBalloon) {
    TestWorld w;
    // APPDATA names a file: nothing can be created inside it, whoever we run as.
    writeFile(w.dir / "appdata-file", "x");
    w.desktop.setEnvironment("APPDATA", (w.dir / "appdata-file").string());
    w.start();
    EXPECT_EQ(w.glo().localDataFolder, w.install());
    ASSERT_EQ(w.tray.balloons.size(), 1u);
    const std::string& text = w.tray.balloons[0].text;
    EXPECT_EQ(fields(endsWith(text, "\r\nLocal App Path Error"), contains(text, "(" + (w.dir / "appdata-file" / "tallix").string() + ")"),
                     w.glo().InitialisedState == INIT_STATE_INITIALISED),
              "1|1|1");
}

TEST(Startup, SharedFolderFallsBackThroughItsVariables) {
    TestWorld w;
    w.desktop.setEnvironment("PROGRAMDATA", "");
    w.desktop.setEnvironment("ALLUSERAPPDATA", "");
    w.desktop.setEnvironment("ALLUSERSPROFILE", (w.dir / "allusers" / "profile").string());
    w.c().resolveDataFolders();
    EXPECT_EQ(w.glo().sharedDataFolder, w.dir / "allusers" / "tallix");
    writeFile(w.dir / "blocked", "x");
    w.desktop.setEnvironment("ALLUSERAPPDATA", (w.dir / "blocked").string());
    w.c().resolveDataFolders();
    EXPECT_EQ(w.glo().sharedDataFolder, w.install());
    ASSERT_EQ(w.tray.balloons.size(), 1u);
    EXPECT_TRUE(endsWith(w.tray.balloons[0].text, "All User App Path Error"));
}

TEST(AutoUpdate, RunsTheUpdaterWhenDueAndSchedulesTheNextButNotBeforeOrWhenSwitchedOff) {
    for (const std::string stored : {"20261122", "20261123", "AUTO UPDATE OFF"}) {
        TestWorld w;
        w.scheduler.setWallClock(DateTime{2026, 11, 22, 9, 0, 0, 0});
        writeFile(w.install() / "AutoUpdate" / "Update.exe", "updater");
        const auto dte = w.programData() / "tallix" / "AutoUpdate" / "AutoUpdate.dte";
        writeFile(dte, stored);
        w.start();
        if (stored != "20261122") {
            EXPECT_TRUE(w.desktop.started().empty()) << stored;
            EXPECT_EQ(readFile(dte), stored);
            continue;
        }
        ASSERT_EQ(w.desktop.started().size(), 1u);
        EXPECT_EQ(fields(w.desktop.started()[0].program, w.desktop.started()[0].arguments, readFile(dte)),
                  fields(w.install() / "AutoUpdate" / "Update.exe", " AUTO", "20261129"));
        EXPECT_TRUE(w.logged("Next Update Check Scheduled For 29/11/2026"));
    }
}

TEST(BaseConnection, OpeningBarTextsAndNoMessageWhenABaseCameUp) {
    TestWorld w;
    w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0},
                     {"3", "ELDER SERIAL", 1, 30, false, 0, 40},
                     {"", "KBOARD", 1, 20, false, 0, 0}});
    auto drivers = std::make_unique<FakeDrivers>(w.c(), std::vector<std::string>{"100100100100"});
    auto* d = drivers.get();
    w.c().drivers = std::move(drivers);
    w.start();
    EXPECT_EQ(d->bars, (std::vector<std::string>{"Connecting to Base 100 100 100 100", "Opening Port 3"}));
    // Keyboard voting opens nothing.
    EXPECT_EQ(fields(d->opened.size(), w.dialogs.any("Unable to initialise"), w.c().forms.isLoaded(FrmInit::kName)), "2|0|0");
    // The vote buffers fit the configured keypads (0..70) before any vote.
    EXPECT_EQ(std::tie(w.glo().keypadVotes, w.glo().keypadVoteTimes), std::tuple(std::vector<int>(71, -1), std::vector<double>(71, -1.0)));
}

TEST(BaseConnection, NoBaseUpIsReportedAndThePresenterKeypadWarnsEitherWay) {
    for (const std::vector<std::string>& up : {std::vector<std::string>{"100100100100"}, std::vector<std::string>{}}) {
        TestWorld w;
        w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}});
        w.writeSettings("KELVARIN OPTIONS", "CONTROL KEYPAD", "1");
        w.c().drivers = std::make_unique<FakeDrivers>(w.c(), up);
        w.start();
        ASSERT_FALSE(w.dialogs.shown.empty());
        EXPECT_EQ(w.dialogs.shown.back().title, "Presenter Keypad Enabled");
        EXPECT_EQ(w.dialogs.shown.back().text,
                  "With the presenter keypad enabled it is very important to close\r\n"
                  " all instances of PowerPoint before unplugging the Kelvarin Base Station");
        ASSERT_EQ(w.dialogs.shown.size(), up.empty() ? 2u : 1u);
        if (up.empty()) {
            EXPECT_EQ(w.dialogs.shown[0].title + ": " + w.dialogs.shown[0].text,
                      "tallix Controller: Unable to initialise Kelvarin Base 100 100 100 100\r\n\r\n"
                      "Please ensure that the base station is plugged in and the drivers are installed\r\n\r\n"
                      "It may be necessary to remove and plug\r\nthe base station back into the USB port before continuing");
        }
        EXPECT_EQ(w.glo().InitialisedState, INIT_STATE_INITIALISED);
    }
}

TEST(Startup, AShowAlreadyRunningKeepsTheTaskBarHidden) {
    TestWorld w;
    pptx::DeckPlan plan;
    plan.slides.resize(2);
    w.openDeck(plan);
    w.presentation.Begin();
    w.desktop.showTaskBar(false);
    w.start();
    EXPECT_FALSE(w.desktop.taskBarVisible());
    TestWorld without;
    without.desktop.showTaskBar(false);
    without.start();
    EXPECT_TRUE(without.desktop.taskBarVisible());
}

// Programs from Office 2000 on report their slide-show events; older ones are polled.
TEST(Startup, TheSlideShowPollRunsOnlyForAProgramOlderThanOffice2000) {
    for (const std::string version : {"8.0", "9.0", "16.0"}) {
        FakePresentationApp ppt;
        ppt.app.versionText = version;
        TestWorld w;
        useFakePresentation(w, ppt);
        w.start();
        EXPECT_EQ(w.main().tmrCheckSlideShow.enabled(), version == "8.0") << version;
    }
}

TEST(Startup, ShuttingDownDuringInitialisationStopsTheRestAndShutsDown) {
    TestWorld w;
    w.writePortFile({{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}});
    // A fatal driver error while the bases are opened.
    struct FatalDrivers : NoBaseDrivers {
        explicit FatalDrivers(GlobalState& g) : glo(g) {}
        bool openBase(const PortEntry&) override {
            glo.ShuttingDown = true;
            return false;
        }
        GlobalState& glo;
    };
    w.c().drivers = std::make_unique<FatalDrivers>(w.glo());
    w.start();
    // The last step never ran.
    EXPECT_EQ(fields(w.glo().InitialisedState == INIT_STATE_INITIALISING, w.logged("INITIAL LOAD TIME TAKEN"),
                     fs::exists(w.programData() / "tallix" / "AutoUpdate"), w.c().mainForm() == nullptr),
              "1|0|0|1");
    w.scheduler.advance(100);
    EXPECT_TRUE(w.desktop.ended());
}
