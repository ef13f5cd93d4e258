#include "core/Controller.h"

#include <fstream>
#include <sstream>

#include "core/CommandDispatcher.h"
#include "core/CommandTargets.h"
#include "core/FileSafety.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/ParticipantNames.h"
#include "core/PortFile.h"
#include "core/SmallForms.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "ports/Desktop.h"
#include "ports/Dialogs.h"
#include "ports/PresentationApp.h"
#include "ports/Scheduler.h"
#include "ports/Tray.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {
constexpr const char* kObject = "Controller";

bool isKelvarinType(const std::string& type) {
    const std::string u = toUpper(type);
    return u == "KELVARIN BASE V3" || u == "KELVARIN COREHUB G1" || u == "KELVARIN COREHUB G2";
}

// Creates the folder when missing and proves it writable with a scratch file. The per-user
// folder is made private (0700): it holds the port file, the settings and the logs.
bool createAndProbe(const fs::path& folder, int& errNumber, std::string& errText, bool makePrivate) {
    std::error_code ec;
    if (makePrivate) makePrivateFolder(folder);
    if (!fs::is_directory(folder, ec)) {
        fs::create_directories(folder, ec);
        if (ec || !fs::is_directory(folder, ec)) {
            errNumber = err::kPathNotFound;
            errText = "Path not found";
            return false;
        }
    }
    const fs::path probe = folder / "PermissionCheck";
    fs::remove(probe, ec);  // whatever is in the way, a link included, is not written through
    {
        std::ofstream out(probe, std::ios::binary | std::ios::trunc);
        if (!out || !(out << "x")) {
            errNumber = err::kPermissionDenied;
            errText = "Permission denied";
            return false;
        }
    }
    fs::remove(probe, ec);
    if (ec) {
        errNumber = err::kPermissionDenied;
        errText = "Permission denied";
        return false;
    }
    return true;
}
}  // namespace

Controller::Controller(Ports p)
    : ports(p),
      logs(glo, p.scheduler, p.desktop, p.tray),
      errors{glo, p.scheduler, p.desktop, p.dialogs, logs},
      settings(glo, p.desktop),
      forms(p.scheduler),
      drivers(std::make_unique<NoBaseDrivers>()),
      presentationSide(std::make_unique<PresentationSide>()),
      targets(std::make_unique<DefaultCommandTargets>(*this)),
      dispatcher(std::make_unique<CommandDispatcher>(*this)) {
    glo.installFolder = p.desktop.installFolder();
}

Controller::~Controller() = default;

MainForm* Controller::mainForm() const { return forms.get<MainForm>(MainForm::kName); }

void Controller::LogEvent(std::string_view text, int kind) {
    if (auto* m = mainForm()) m->LogEvent(text, kind);
}

ppt::Application* Controller::getPowerPointObject() {
    return glo.usePowerPoint ? ports.presentation.getActiveObject() : nullptr;
}

void Controller::setUsePowerPoint(bool on) {
    glo.usePowerPoint = on;
    if (on) return;  // attaching again is lazy, as at start-up
    glo.ppApp = nullptr;
    presentationSide->forgetAttachment();
}

void Controller::attachPresentation() { presentationSide->attach(); }

void Controller::loadMainForm() {
    if (mainForm()) return;
    MainForm& main = forms.load<MainForm>(*this);
    presentationSide->wireMainForm(main);
    main.Form_Load();
}

void Controller::resolveDataFolders() {
    trap(errors, kObject, "GetAppDataFolders", [&] {
        int number = 0;
        std::string text;
        const std::string appData = ports.desktop.environment("APPDATA");
        fs::path local = fs::path(appData) / "tallix";
        if (appData.empty() || !createAndProbe(local, number, text, true)) {
            if (appData.empty()) {
                number = err::kPathNotFound;
                text = "Path not found";
            }
            logs.balloon(numText(number) + ": " + text + " (" + local.string() + ")\r\nLocal App Path Error", 2);
            local = glo.installFolder;
        }
        glo.localDataFolder = local;

        std::string shared = ports.desktop.environment("PROGRAMDATA");
        if (shared.empty()) shared = ports.desktop.environment("ALLUSERAPPDATA");
        if (shared.empty()) {
            const std::string all = ports.desktop.environment("ALLUSERSPROFILE");
            const auto cut = all.find_last_of("/\\");
            shared = cut == std::string::npos ? std::string() : all.substr(0, cut);
        }
        fs::path sharedFolder = fs::path(shared) / "tallix";
        // The shared folder is shared on purpose (an administrator's settings for every
        // user): its mode is left as it is.
        if (shared.empty() || !createAndProbe(sharedFolder, number, text, false)) {
            if (shared.empty()) {
                number = err::kPathNotFound;
                text = "Path not found";
            }
            logs.balloon(numText(number) + ": " + text + " (" + sharedFolder.string() +
                             ")\r\nAll User App Path Error",
                         2);
            sharedFolder = glo.installFolder;
        }
        glo.sharedDataFolder = sharedFolder;
    });
}

void Controller::readPortFile() {
    trap(errors, kObject, "ReadPortFile", [&] {
        const PortFileRead r = tlx::readPortFile(glo.localDataFolder / "port.tlc");
        glo.bases = r.data.bases;
        glo.popUp = r.data.popUp;
        glo.portFileRead = r.status == PortFileStatus::Ok;
        // The base-station mode keys only mean something to the oldest bases.
        glo.modeKeysEnabled = false;
        for (const auto& b : glo.bases)
            if (toUpper(trim(b.baseType)) == "KELVARIN BASE V3") glo.modeKeysEnabled = true;
        if (r.status == PortFileStatus::DecryptError)
            ports.dialogs.message("tallix controller", "Decrypt Error", MsgIcon::Exclamation);
        else if (r.status == PortFileStatus::ReadError)
            ports.dialogs.message("tallix controller", "Error reading data from the port file",
                                  MsgIcon::Exclamation);
        // The damaged file stays where it is, and a copy is kept aside: the next keypad set-up
        // writes the file anew, and the copy may be all that is left of the old table.
        if (r.status == PortFileStatus::DecryptError || r.status == PortFileStatus::ReadError)
            keepAside(glo.localDataFolder / "port.tlc");
    });
    connectBases();
}

void Controller::keepAside(const fs::path& file) {
    const fs::path copy = keepDamagedCopy(file);
    if (copy.empty())
        LogEvent(file.filename().string() + " is damaged: defaults used where it cannot be read; no copy could be kept",
                 2);
    else
        LogEvent(file.filename().string() + " is damaged: defaults used where it cannot be read; a copy is kept as " +
                     copy.string(),
                 2);
}

void Controller::checkSettingsFile() {
    trap(errors, kObject, "CheckSettingsFile", [&] {
        const fs::path file = settings.dataFolderFile();
        std::error_code ec;
        if (glo.localDataFolder.empty() || !fs::is_regular_file(file, ec)) return;
        std::ifstream in(file, std::ios::binary);
        std::ostringstream ss;
        ss << in.rdbuf();
        if (settingsTextLooksDamaged(ss.str())) keepAside(file);
    });
}

void Controller::connectBases() {
    trap(errors, kObject, "ConnectBases", [&] {
        FrmInit* bar = forms.get<FrmInit>(FrmInit::kName);
        const bool ownBar = bar == nullptr;
        if (ownBar) bar = &forms.load<FrmInit>(*this);
        bool anyUp = false;
        std::vector<const PortEntry*> failed;
        for (const auto& base : glo.bases) {
            if (glo.ShuttingDown) break;
            if (toUpper(base.baseType) == kKeyboardBaseType || trim(base.baseType).empty()) continue;
            if (isKelvarinType(base.baseType))
                bar->openingBar = "Connecting to Base " + formatDigits(base.port, "### 000 000 000");
            else
                bar->openingBar = "Opening Port " + base.port;
            bar->changed();
            if (drivers->openBase(base)) {
                anyUp = true;
            } else {
                failed.push_back(&base);
            }
        }
        if (ownBar && forms.find(FrmInit::kName) == bar) forms.unload(*bar);
        if (!anyUp) {
            for (const PortEntry* b : failed)
                ports.dialogs.message(
                    "tallix Controller",
                    "Unable to initialise Kelvarin Base " + baseName(*b) +
                        "\r\n\r\nPlease ensure that the base station is plugged in and the drivers are installed"
                        "\r\n\r\nIt may be necessary to remove and plug\r\nthe base station back into the USB "
                        "port before continuing",
                    MsgIcon::Critical);
        }
        // Whatever came up: the warning is about unplugging a base while the program runs.
        if (glo.options.flag(section::kKelvarinOptions, "CONTROL KEYPAD"))
            ports.dialogs.message("Presenter Keypad Enabled",
                                  "With the presenter keypad enabled it is very important to close\r\n"
                                  " all instances of PowerPoint before unplugging the Kelvarin Base Station",
                                  MsgIcon::Exclamation);
    });
}

void Controller::autoUpdateCheck() {
    trap(errors, kObject, "AutoUpdateCheck", [&] {
        const fs::path folder = glo.sharedDataFolder / "AutoUpdate";
        std::error_code ec;
        if (!fs::is_directory(folder, ec)) fs::create_directories(folder, ec);
        const fs::path dte = folder / "AutoUpdate.dte";
        std::string stored;
        if (std::ifstream in(dte, std::ios::binary); in) {
            std::stringstream ss;
            ss << in.rdbuf();
            stored = trim(replaceAll(replaceAll(ss.str(), "\r", ""), "\n", ""));
        }
        if (toUpper(stored) == "AUTO UPDATE OFF") return;

        const DateTime today = ports.scheduler.now();
        const std::string todayText = formatDate(today, "YYYYMMDD");
        const bool validDate = stored.size() == 8 && isNumeric(stored);
        if (validDate && todayText < stored) {
            LogEvent("Next Update Check Scheduled For " + stored.substr(6, 2) + "/" + stored.substr(4, 2) + "/" +
                         stored.substr(0, 4),
                     2);
            return;
        }
        const fs::path updater = glo.installFolder / "AutoUpdate" / "Update.exe";
        if (fs::is_regular_file(updater, ec)) ports.desktop.startProgram(updater, " AUTO", WindowStyle::Normal);
        // The updater checks weekly.
        const DateTime next = today.addDays(7);
        replaceFileContent(dte, formatDate(next, "YYYYMMDD"));
        LogEvent("Next Update Check Scheduled For " + formatDate(next, "DD/MM/YYYY"), 2);
    });
}

void Controller::loadParticipantNames() {
    std::string status;
    LoadParticipantNames(*this, status);
}

void Controller::GlobalInitSub() {
    glo.traceToFile = true;
    glo.usePowerPoint = true;
    glo.hookAllowed = true;
    trap(errors, kObject, "GlobalInitSub", [&] {
        glo.traceToFile = settings.LogEventsToFile();
        glo.showAllErrors = settings.ShowAllErrors();
        trace("Begin - glo.InitialisedState = " + numText(glo.InitialisedState), "GlobalInitSub");
        if (glo.InitialisedState != INIT_STATE_NOT_STARTED) return;
        glo.InitialisedState = INIT_STATE_INITIALISING;
        trace("Mid - glo.InitialisedState = " + numText(glo.InitialisedState), "GlobalInitSub");
        const double start = ports.scheduler.now().secondsSinceMidnight();
        const double startCounter = ports.scheduler.monotonicSeconds();

        // Each step may have set ShuttingDown; then the rest is not done.
        auto stopped = [&] {
            if (!glo.ShuttingDown) return false;
            FullShutdown(true);
            return true;
        };

        attachPresentation();  // 5
        if (stopped()) return;
        presentationSide->showHideTaskBar(true);  // 6: hidden only over a full-screen show running now
        glo.intakeTuning[0] = 1;
        glo.intakeTuning[1] = 2;
        glo.intakeTuning[2] = 256;
        glo.intakeTuning[3] = 1;
        if (stopped()) return;
        loadMainForm();  // 7
        if (stopped()) return;
        resolveDataFolders();  // 8
        settings.loadOptions(glo.options);
        checkSettingsFile();
        if (stopped()) return;
        drivers->loadDriverForms();  // 9
        if (glo.ppApp) trap(errors, kObject, "GlobalInitSub", [&] { glo.pptVersion = glo.ppApp->version(); });
        if (stopped()) return;
        readPortFile();  // 10
        if (stopped()) return;
        autoUpdateCheck();  // 11
        if (stopped()) return;
        loadParticipantNames();  // 12
        if (stopped()) return;
        glo.optionCount = 10;  // 13
        glo.optionValues.assign(static_cast<std::size_t>(glo.optionCount), -1.0f);
        glo.resetKeypadVotes();
        if (auto* m = mainForm()) {
            m->tmrCheck4PPT.setEnabled(true);
            m->tmr_refreshLowLevelKeyboardHook.setEnabled(true);
            // Programs before Office 2000 (version 9) raise no slide-show events: their shows
            // are found by polling.
            const double version = ParseNumber(glo.pptVersion);
            m->tmrCheckSlideShow.setEnabled(version > 0 && version < 9);
        }
        if (glo.hookAllowed && keyboard) presentationSide->setHook();
        if (stopped()) return;
        (void)start;
        const double elapsed = ports.scheduler.monotonicSeconds() - startCounter;  // 14
        LogEvent("INITIAL LOAD TIME TAKEN = " + numText(static_cast<float>(elapsed)) + " secs",
                 2);
        if (glo.traceToFile)
            logs.trace(static_cast<float>(elapsed), "Full Load Time Taken", kObject, "GlobalInitSub");
        glo.InitialisedState = INIT_STATE_INITIALISED;  // 15
    });
    if (glo.InitialisedState == INIT_STATE_INITIALISED && !glo.ShuttingDown) initialised();
}

void Controller::FullShutdown(bool showCloseForm) {
    (void)showCloseForm;
    if (fullShutdownRunning_) return;
    fullShutdownRunning_ = true;
    glo.ShuttingDown = true;
    // Each step under its own trap: a step that fails is reported and the next one still runs,
    // so the process always ends and lets go of what it holds.
    auto step = [this](auto&& body) { trap(errors, kObject, "FullShutdown", body); };
    step([&] {
        trace("Function Start: glo.FullShutDownInitiated=" + boolText(glo.FullShutDownInitiated), "FullShutdown");
    });
    step([&] { ports.desktop.showTaskBar(true); });
    step([&] {
        if (glo.hookActive) presentationSide->removeHook();
    });
    const auto loaded = forms.all();
    for (std::size_t i = loaded.size(); i-- > 0;) {
        Form* f = loaded[i];
        if (f->Name() == MainForm::kName) continue;
        step([&] {
            trace("Unload Forms(" + numText(static_cast<long long>(i)) + "):" + f->Name(), "FullShutDown");
            forms.unload(*f);
        });
    }
    step([&] { audioReferences.clear(); });
    MainForm* main = mainForm();
    if (!main) {
        step([&] { trace("controllerLoaded=False", "FullShutdown"); });
    } else {
        step([&] { trace("controllerLoaded=True", "FullShutdown"); });
        step([&] { main->PowerPointClosed(); });
        step([&] { main->RemoveFromTray(); });
        step([&] { drivers->closePorts(); });
        step([&] {
            if (MainForm* m = mainForm()) forms.unload(*m);
        });
    }
    step([&] { forms.load<CloseControllerForm>(*this).tmr_CloseApp.setEnabled(true); });
}

}  // namespace tlx
