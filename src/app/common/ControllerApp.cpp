#include "app/common/ControllerApp.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QLocale>
#include <iostream>

#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/headless/ConsoleAdapters.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtScheduler.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimPresentation.h"
#include "presentation/Tallix.h"
#include "ui/Views.h"

namespace tlx {

namespace {

struct SimSetup {
    bool presentationRunning = true;
};

SimSetup readSimSetup(const std::string& file) {
    SimSetup s;
    if (file.empty()) return s;
    const std::string v = GetProfileString(file, "presentation", "running", "1");
    s.presentationRunning = ParseNumber(v) != 0;
    return s;
}

}  // namespace

int configureBases(Controller& controller, const std::vector<std::string>& specs, std::ostream& out) {
    controller.resolveDataFolders();
    controller.settings.loadOptions(controller.glo.options);
    auto& form = controller.forms.load<FrmInit>(controller);
    for (const auto& spec : specs) {
        const auto f = split(spec, ";");
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
    SimPresentationApp presentation(desktop);
    const SimSetup sim = readSimSetup(options.simFile);
    if (sim.presentationRunning) presentation.start();

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

    Controller controller(Ports{scheduler, desktop, *dialogs, *tray, presentation});

    if (!options.configureBases.empty()) return configureBases(controller, options.configureBases, out);

    // Before anything starts: a second controller would fight the first for the bases.
    auto secondController = [&](const std::string& why) {
        std::cerr << "tlxctrl: " << why << "; not starting a second controller" << std::endl;
        if (!options.headless)
            dialogs->message("tallix controller", why + "; not starting a second controller", MsgIcon::Exclamation);
    };
    std::unique_ptr<DbusAutomationServer> automation;
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
    if (automation && !controller.glo.ShuttingDown) {
        // The simulated presentation program and base stations publish their control objects
        // through automation->serveSimulation(show, bases) once they offer them.
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
    if (!options.headless)
        if (auto* m = controller.mainForm()) m->Show();
    if (options.quitAfterMs >= 0)
        scheduler.post(options.quitAfterMs, [&] {
            if (auto* m = controller.mainForm()) m->TaskQuit();
        });
    if (controller.glo.ShuttingDown && desktop.ended()) return desktop.exitCode();
    return QCoreApplication::exec();
}

}  // namespace tlx
