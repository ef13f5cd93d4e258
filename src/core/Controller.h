#pragma once
// The controller context: the ports it runs on, `glo`, the logs and the loaded forms.
// The wiring creates one; tests create as many as they like.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/ErrorObject.h"
#include "core/Form.h"
#include "core/GlobalState.h"
#include "core/Logs.h"
#include "core/PresentationSide.h"
#include "core/Settings.h"
#include "core/Signal.h"

namespace tlx {

class Scheduler;
class Desktop;
class Dialogs;
class Tray;
class PresentationApp;
class MainForm;
class PresentationWatcher;
class VoteRun;
class VoteIntakeModule;
class KeyboardHook;
class KeyboardSource;
class Spreadsheet;
class CommandTargets;
class CommandDispatcher;
namespace ppt {
class Application;
}

struct Ports {
    Scheduler& scheduler;
    Desktop& desktop;
    Dialogs& dialogs;
    Tray& tray;
    PresentationApp& presentation;
};

class Controller {
public:
    explicit Controller(Ports ports);
    ~Controller();
    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    Ports ports;
    GlobalState glo;
    Logs logs;
    ErrorEnv errors;
    Settings settings;
    FormRegistry forms;
    std::unique_ptr<BaseDrivers> drivers;
    // The vote intake that the drivers hand received votes to (the main form's SendVotes).
    VoteIntake* voteIntake = nullptr;
    // Where the presenter's keys come from (set by the wiring; none means no hot keys).
    KeyboardSource* keyboard = nullptr;
    // The layer above: following the show, the vote run, vote intake, hot keys. The core calls
    // it only through this face; the wiring replaces the empty default.
    std::unique_ptr<PresentationSide> presentationSide;
    // Its modules, owned by `presentationSide` and set when it is installed, for the modules
    // of that layer to reach each other (the core never calls through them).
    PresentationWatcher* watcher = nullptr;
    VoteRun* voteRun = nullptr;
    VoteIntakeModule* intake = nullptr;
    KeyboardHook* hotKeys = nullptr;
    // The participant-list workbooks; set by the wiring (without it a workbook beside the
    // presentation is reported as unreadable).
    Spreadsheet* spreadsheet = nullptr;
    // What commands act on beyond the core; the modules that own those parts replace it.
    std::unique_ptr<CommandTargets> targets;
    // Drains the main form's command queue.
    std::unique_ptr<CommandDispatcher> dispatcher;
    // What the audio feature keeps alive beyond its window (the playthrough engine and its
    // streams); shutdown lets go of them before the main form and the drivers go.
    std::vector<std::shared_ptr<void>> audioReferences;

    // The main form, nullptr when it is not loaded.
    MainForm* mainForm() const;
    // The running presentation program's object (the get-object call); nullptr when none
    // runs or while its use is switched off. Every attach goes through here.
    ppt::Application* getPowerPointObject();
    // "-noppt" switches the presentation program's use off: the controller lets go of an
    // attached program and stays away from it until it is switched on again.
    void setUsePowerPoint(bool on);

    // LogEvent on the main form, when it is loaded.
    void LogEvent(std::string_view text, int kind);
    // Trace helpers (object "Controller" unless given).
    void trace(std::string_view text, std::string_view procedure, std::string_view object = "Controller") {
        logs.trace(text, object, procedure);
    }

    // One-time initialisation; acts only while InitialisedState is 0.
    void GlobalInitSub();
    // Orderly shutdown; ends the process from frm_CloseController's timer.
    void FullShutdown(bool showCloseForm);

    // Steps of start-up, callable on their own.
    void attachPresentation();
    void loadMainForm();
    void resolveDataFolders();
    void readPortFile();
    void connectBases();
    void autoUpdateCheck();
    void loadParticipantNames();
    // A settings file that is not one (cut, garbled) is reported and a copy kept aside; the
    // keys that can be read still serve, defaults the rest.
    void checkSettingsFile();
    // Keeps a copy of a damaged file of ours aside and says so in the log.
    void keepAside(const std::filesystem::path& file);

    // Raised when InitialisedState reaches 2.
    Signal<> initialised;

private:
    bool fullShutdownRunning_ = false;
};

}  // namespace tlx
