#pragma once
// A controller on the virtual scheduler and the simulated desktop, with every data folder
// in a temporary directory of its own.
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Controller.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "presentation/Tallix.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimKeyboard.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/VirtualScheduler.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "ports/Dialogs.h"
#include "ports/Tray.h"
#include "support/Fields.h"

namespace tlx {
class KelvarinDrivers;
}

namespace tlx::test {

// A fresh temporary directory, removed with the object.
class TempDir {
public:
    TempDir();
    ~TempDir();
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& p) const { return path_ / p; }

private:
    std::filesystem::path path_;
};

struct DialogRecord {
    std::string kind;  // "message", "question", "input"
    std::string title;
    std::string text;
};

class FakeDialogs : public Dialogs {
public:
    void message(const std::string& title, const std::string& text, MsgIcon icon) override;
    bool askYesNo(const std::string& title, const std::string& text, MsgIcon icon) override;
    std::optional<std::string> inputBox(const std::string& title, const std::string& prompt,
                                        const std::string& initial) override;
    std::vector<DialogRecord> shown;
    // Answers to the next questions, in order; Yes when none is left.
    std::vector<bool> answers;
    std::vector<std::optional<std::string>> inputs;
    // Texts of the message boxes shown.
    std::vector<std::string> texts() const;
    bool any(const std::string& text) const;
};

struct BalloonRecord {
    std::string title;
    std::string text;
    int iconKind;
};

class FakeTray : public Tray {
public:
    void addIcon(const std::string& tooltip) override {
        icon = true;
        this->tooltip = tooltip;
    }
    void removeIcon() override { icon = false; }
    bool hasIcon() const override { return icon; }
    void balloon(const std::string& title, const std::string& text, int iconKind) override {
        balloons.push_back({title, text, iconKind});
    }
    void setTasks(const std::vector<std::string>& t) override { tasks = t; }
    void setIconFrame(int frame) override { frames.push_back(frame); }
    bool icon = false;
    std::string tooltip;
    std::vector<BalloonRecord> balloons;
    std::vector<std::string> tasks;
    std::vector<int> frames;  // every frame the icon was given, in order
};

class TestWorld {
public:
    // The simulated presentation program runs unless told otherwise.
    explicit TestWorld(bool presentationRunning = true);
    ~TestWorld();

    TempDir dir;
    VirtualScheduler scheduler;
    SimDesktop desktop;
    SimKeyboard keyboard;
    SimPresentationApp presentation{scheduler, desktop, &keyboard};
    FakeDialogs dialogs;
    FakeTray tray;
    // Simulated base stations; they serve the controller once useSimBases() is called.
    SimBaseLibrary baseLibrary{scheduler};
    std::unique_ptr<Controller> controller;

    Controller& c() { return *controller; }
    GlobalState& glo() { return controller->glo; }
    class MainForm& main();
    // Runs start-up as the program does, then lets the first timers run.
    void start();
    // The on-screen log, newest first.
    std::vector<std::string> logLines();
    bool logged(const std::string& part);
    std::filesystem::path appData() const { return dir / "appdata"; }
    std::filesystem::path programData() const { return dir / "programdata"; }
    std::filesystem::path temp() const { return dir / "temp"; }
    std::filesystem::path install() const { return dir / "install"; }
    // Lines of the trace file of the current day ("" lines not included).
    std::vector<std::string> traceLines();
    void writeSettings(const std::string& section, const std::string& key, const std::string& value);
    // The keypad drivers over the simulated bases take the controller's drivers' place.
    KelvarinDrivers& useSimBases();
    // A simulated USB base with keypads 1..keypads (HIDs counting up from hidStart).
    SimBaseStation& addSimBase(const std::string& id, int keypads, const std::string& type = "KELVARIN COREHUB G2",
                               long long hidStart = 300100001);
    // Writes the port file listing these bases, as the keypad set-up would.
    void writePortFile(const std::vector<PortEntry>& bases);
    // Builds a deck, saves it in the temporary folder and opens it in the presentation program.
    std::filesystem::path openDeck(const pptx::DeckPlan& setup, const std::string& name = "deck.pptx");
    // The presentation program's add-in reports the show to the controller through its own
    // instance of the automation class (after start()).
    void wireAddIn();
    std::unique_ptr<tallix> addIn;
};

std::string readFile(const std::filesystem::path& p);
void writeFile(const std::filesystem::path& p, const std::string& content);

}  // namespace tlx::test
