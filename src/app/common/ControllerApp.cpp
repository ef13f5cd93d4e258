#include "app/common/ControllerApp.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QLocale>
#include <QProcess>
#include <iostream>

#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/headless/ConsoleAdapters.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtScheduler.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimKeyboard.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/SimScript.h"
#include "platform/sim/SimSetup.h"
#include "platform/sim/basesim/SimBasesAdapter.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "presentation/Tallix.h"
#include "ui/Views.h"

namespace tlx {

int configureBases(Controller& controller, const std::vector<std::string>& entries, std::ostream& out) {
    controller.resolveDataFolders();
    controller.settings.loadOptions(controller.glo.options);
    auto& form = controller.forms.load<FrmInit>(controller);
    for (const auto& entry : entries) {
        const auto f = split(entry, ";");
        InitGridRow row;
        row.baseType = f.size() > 0 ? f[0] : "";
        if (!FrmInit::storedBaseType(row.baseType).empty())
            row.baseType = FrmInit::shownBaseType(FrmInit::storedBaseType(row.baseType));
        row.serialNumber = f.size() > 1 ? f[1] : "";
        row.lowest = f.size() > 2 ? f[2] : "";
        row.highest = f.size() > 3 ? f[3] : "";
        form.rows.push_back(row);
    }
    if (!form.cmdOK_Click()) {
        out << "Keypad set-up not saved" << std::endl;
        return 1;
    }
    out << "Keypad set-up saved to " << (controller.glo.localDataFolder / "port.tlc").string() << " ("
        << controller.glo.bases.size() << " base" << (controller.glo.bases.size() == 1 ? "" : "s") << ")"
        << std::endl;
    return 0;
}

int runController(int argc, char** argv, const ControllerOptions& options, std::ostream& out) {
    std::unique_ptr<QCoreApplication> qapp;
    if (options.headless)
        qapp = std::make_unique<QCoreApplication>(argc, argv);
    else
        qapp = std::make_unique<QApplication>(argc, argv);
    QCoreApplication::setApplicationName("tallix controller");
    const QString dec = QLocale().decimalPoint();
    if (!dec.isEmpty()) setSystemDecimalSeparator(dec.at(0).toLatin1());

    QtScheduler scheduler;
    SimDesktop desktop;
    desktop.onEndProcess = [](int code) { QCoreApplication::exit(code); };
    SimKeyboard keyboard;
    // Synthetic key strokes (the presenter keypad's) pass the hook and reach the show, as typed ones do.
    desktop.onKey = [&](int vk) {
        keyboard.tap(vk, static_cast<int>(scheduler.monotonicSeconds() * 1000.0));
    };
    SimPresentationApp presentation(scheduler, desktop, &keyboard);
    if (options.headless) presentation.note = [&out](const std::string& t) { out << "[presentation] " << t << std::endl; };
    const SimShowSetup sim = readSimShowSetup(options.simFile);
    if (presentation.addInFolder.empty()) presentation.addInFolder = desktop.installFolder().string();
    if (const std::string problem = applySimShowSetup(sim, presentation); !problem.empty())
        out << "[presentation] " << problem << std::endl;
    std::unique_ptr<DbusAutomationServer> automation;
    // Display programs started by "DoRapidpoll" run as real processes, their output beside
    // ours; they leave the process list when they exit.
    std::vector<QProcess*> displays;  // those still running
    presentation.launchDisplay = [&](const SimPresentationApp::Display& d, const std::string& name) {
        if (!automation || !automation->serving())
            out << "[presentation] " << d.program
                << " cannot reach this controller: its automation class is not served on the session bus"
                << " (--automation)" << std::endl;
        auto* p = new QProcess;
        QObject::connect(p, &QProcess::finished, [p, &presentation, &displays, name](int, QProcess::ExitStatus) {
            std::erase(displays, p);
            presentation.displayEnded(name);
            p->deleteLater();
        });
        QStringList args = QProcess::splitCommand(QString::fromStdString(d.arguments));
        p->setProcessChannelMode(QProcess::ForwardedChannels);
        p->start(QString::fromStdString(d.program), args);
        if (!p->waitForStarted(5000)) {
            p->deleteLater();
            return false;
        }
        displays.push_back(p);
        return true;
    };

    std::unique_ptr<Dialogs> dialogs;
    std::unique_ptr<Tray> tray;
    QtTray* qtTray = nullptr;
    if (options.headless) {
        dialogs = std::make_unique<ConsoleDialogs>(out, options.answerYes);
        tray = std::make_unique<ConsoleTray>(out);
    } else {
        dialogs = std::make_unique<QtDialogs>();
        auto t = std::make_unique<QtTray>();
        qtTray = t.get();
        tray = std::move(t);
    }

    FileSpreadsheet spreadsheet;
    // The simulated base stations and keypads of the set-up file serve the keypad drivers.
    SimBaseLibrary baseLibrary(scheduler);
    if (!options.simFile.empty()) loadSimBases(baseLibrary, options.simFile);

    Controller controller(Ports{scheduler, desktop, *dialogs, *tray, presentation});
    controller.keyboard = &keyboard;
    controller.spreadsheet = &spreadsheet;
    controller.drivers = std::make_unique<KelvarinDrivers>(controller, baseLibrary);

    if (!options.configureBases.empty()) return configureBases(controller, options.configureBases, out);

    // Before anything starts: a second controller would fight the first for the bases.
    auto secondController = [&](const std::string& why) {
        std::cerr << "tlxctrl: " << why << "; not starting a second controller" << std::endl;
        if (!options.headless)
            dialogs->message("tallix controller", why + "; not starting a second controller", MsgIcon::Exclamation);
    };
    if (options.automation.value_or(!options.headless)) {
        QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected()) {
            std::cerr << "tlxctrl: no session bus (" << bus.lastError().message().toStdString()
                      << "), so other programs cannot reach the automation class" << std::endl;
            if (options.automation.value_or(false)) return kExitAutomationUnavailable;
        } else {
            automation = std::make_unique<DbusAutomationServer>(controller, bus);
            if (const std::string who = automation->servedElsewhere(); !who.empty()) {
                secondController(who);
                return kExitAutomationUnavailable;
            }
        }
    }

    std::unique_ptr<ViewManager> views;
    if (options.headless) {
        controller.forms.loaded.connect([&out](Form& f) {
            if (auto* m = dynamic_cast<MainForm*>(&f))
                m->logLine.connect([&out](const std::string& line) { out << line << std::endl; });
            if (auto* i = dynamic_cast<FrmInit*>(&f)) {
                auto last = std::make_shared<std::string>();
                i->changed.connect([&out, i, last] {
                    if (!i->openingBar.empty() && i->openingBar != *last) out << "[frmInit] " << i->openingBar << std::endl;
                    *last = i->openingBar;
                });
            }
        });
    } else {
        views = std::make_unique<ViewManager>(controller);
        qtTray->onQuit = [&] {
            if (auto* m = controller.mainForm()) m->TaskQuit();
        };
        qtTray->onAbout = [&] {
            if (auto* m = controller.mainForm()) m->TaskAbout();
        };
        qtTray->onTask = [&](int i) {
            if (auto* m = controller.mainForm()) m->DoTaskMenu(i);
        };
        qtTray->onShow = [&] {
            if (auto* m = controller.mainForm()) m->Show();
        };
    }

    Main(controller);
    SimBasesAdapter simBases(baseLibrary);
    if (automation && !controller.glo.ShuttingDown) {
        // The simulated presentation program and base stations are driven on the same bus name.
        automation->serveSimulation(&presentation, &simBases);
        if (const std::string why = automation->start(); !why.empty()) {
            if (contains(why, "another controller"))
                secondController(why);
            else
                std::cerr << "tlxctrl: cannot serve the automation class: " << why << std::endl;
            return kExitAutomationUnavailable;
        }
    }
    if (!options.commandLine.empty()) {
        tallix client(controller);
        client.init(options.commandLine);
    }
    // The presentation program's add-in reports the show through its own instance of the class.
    auto addIn = std::make_unique<tallix>(controller);
    addIn->init("");
    presentation.addIn.showBegin = [&](std::int64_t window) { addIn->SlideShowBegin(window); };
    presentation.addIn.nextSlide = [&] { addIn->SlideShowNextSlide(); };
    presentation.addIn.showEnd = [&] { addIn->SlideShowEnd(); };
    presentation.addIn.closing = [&] { addIn->PowerPointClosed(); };
    // A scripted show plays the presenter, the keypads and the display program.
    std::unique_ptr<tallix> display;
    std::unique_ptr<SimScript> script;
    if (!sim.script.empty()) {
        std::vector<std::string> problems;
        auto steps = loadScript(sim.script, problems);
        for (const auto& p : problems) out << "[script] cannot read " << p << std::endl;
        display = std::make_unique<tallix>(controller);
        display->init("");
        script = std::make_unique<SimScript>(scheduler, &presentation, &simBases);
        script->folder = sim.script.parent_path();
        script->command = [&](const std::string& line) { return display->SendCommand(line); };
        script->report = [&out](const std::string& t) { out << "[script] " << t << std::endl; };
        // What an Await step can wait for: the vote open on every connected simulated base, or
        // closed on all of them; every display program the quick vote started has ended.
        script->condition = [&](const std::string& what) -> std::optional<bool> {
            const std::string w = toLower(what);
            if (w == "voteopen" || w == "voteclosed") {
                std::size_t connected = 0, open = 0;
                for (std::size_t i = 0; i < baseLibrary.baseCount(); ++i) {
                    const SimBaseStation& st = baseLibrary.station(i);
                    if (st.attachedObjects() == 0) continue;
                    ++connected;
                    if (st.voteOpen) ++open;
                }
                return w == "voteopen" ? connected > 0 && open == connected : open == 0;
            }
            if (w == "displayended") return displays.empty();
            return std::nullopt;
        };
        script->load(std::move(steps));
        script->start();
    }
    if (!options.headless)
        if (auto* m = controller.mainForm()) m->Show();
    if (options.quitAfterMs >= 0)
        scheduler.post(options.quitAfterMs, [&] {
            if (auto* m = controller.mainForm()) m->TaskQuit();
        });
    if (controller.glo.ShuttingDown && desktop.ended()) return desktop.exitCode();
    const int code = QCoreApplication::exec();
    if (!displays.empty()) {
        // Display programs end with the presentation program that started them. Leaving the bus
        // tells them the controller has gone: they print their result and exit.
        if (automation) automation->stop();
        for (QProcess* p : displays) {
            QObject::disconnect(p, nullptr, nullptr, nullptr);
            if (!p->waitForFinished(3000)) {
                p->terminate();
                if (!p->waitForFinished(3000)) {
                    p->kill();
                    p->waitForFinished(1000);
                }
            }
            delete p;
        }
        displays.clear();
    }
    // The objects of clients still on the bus hold the controller: they go (and the bus name
    // with them) while it is still there.
    automation.reset();
    return code;
}

}  // namespace tlx
