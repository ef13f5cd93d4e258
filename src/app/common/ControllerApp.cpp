#include "app/common/ControllerApp.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QLocale>
#include <QProcess>
#include <iostream>
#include <map>
#include <memory>
#include <xcb/xcb.h>

#include "audio/AudioFeature.h"
#include "audio/AudioWindow.h"
#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/audio/QtAudioEngine.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/headless/ConsoleAdapters.h"
#include "platform/qt/QtDesktop.h"
#include "platform/net/CompositeBaseLibrary.h"
#include "platform/net/NetBaseLibrary.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtScheduler.h"
#include "platform/qt/QtTray.h"
#include "platform/qt/TcpFrameTransport.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimKeyboard.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/SimScript.h"
#include "platform/sim/SimSetup.h"
#include "platform/sim/SimShowScreen.h"
#include "platform/sim/basesim/SimBasesAdapter.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "presentation/PresentationModules.h"
#include "presentation/Tallix.h"
#include "textvote/TextVoteCollection.h"
#include "ui/ShowWindow.h"
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

namespace {

// Headless, the text-vote window shows in the output: its status, each new text, and each
// alert row as it changes.
void printTextVotes(frmTextVoteCollection& t, std::ostream& out) {
    struct Seen {
        std::string status;
        std::size_t entries = 0;
        std::map<std::string, std::string> rows;
    };
    auto seen = std::make_shared<Seen>();
    const std::string tag = std::string("[") + frmTextVoteCollection::kName + "] ";
    t.changed.connect([&t, &out, seen, tag] {
        if (t.lstTextVotes.size() < seen->entries) seen->entries = t.lstTextVotes.size();
        for (; seen->entries < t.lstTextVotes.size(); ++seen->entries)
            out << tag << t.lstTextVotes[seen->entries] << std::endl;
        if (t.lblStatus != seen->status) out << tag << t.lblStatus << std::endl;
        seen->status = t.lblStatus;
        for (const auto& r : t.lvwKeypadAlerts) {
            std::string line = "alert " + r.key + " " + r.text + " " + r.icon;
            for (std::size_t i = 0; i < 3 && i < r.subItems.size(); ++i) line += " | " + r.subItems[i].text;
            if (seen->rows[r.key] != line) out << tag << line << std::endl;
            seen->rows[r.key] = line;
        }
    });
}

// Headless, the audio window's status bar and its queue show in the output, each time they
// say something new.
void printAudio(frmAudio& a, std::ostream& out) {
    auto last = std::make_shared<std::pair<std::string, std::string>>();
    a.changed.connect([&out, &a, last] {
        std::string queue;
        for (const auto& r : a.lvw_keypadRequests.rows) queue += (queue.empty() ? "" : ", ") + r.number + " " + r.icon;
        if (a.status != last->first) out << "[frmAudio] " << a.status << std::endl;
        if (queue != last->second) out << "[frmAudio] queue: " << (queue.empty() ? "empty" : queue) << std::endl;
        *last = {a.status, queue};
    });
}

}  // namespace

std::string noDisplayReason() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const QByteArray first = platform.split(';').first().split(':').first().trimmed().toLower();
    // Other platforms (offscreen, wayland, vnc ...) are Qt's to judge; so is a Wayland session
    // that names no platform.
    if (!first.isEmpty() && first != "xcb") return {};
    if (first.isEmpty() && !qgetenv("WAYLAND_DISPLAY").isEmpty()) return {};
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) return "DISPLAY is not set";
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    const bool failed = xcb_connection_has_error(c) != 0;
    xcb_disconnect(c);
    return failed ? "cannot open display " + display.toStdString() : std::string();
}

int runController(int argc, char** argv, const ControllerOptions& requested, std::ostream& out) {
    ControllerOptions options = requested;
    if (!options.headless) {
        // Without a display the program would end in the toolkit; it goes on without windows.
        if (const std::string why = noDisplayReason(); !why.empty()) {
            std::cerr << "tlxctrl: no display (" << why << "): going on headless, log lines on standard output"
                      << std::endl;
            options.headless = true;
        }
    }
    std::unique_ptr<QCoreApplication> qapp;
    if (options.headless)
        qapp = std::make_unique<QCoreApplication>(argc, argv);
    else
        qapp = std::make_unique<QApplication>(argc, argv);
    QCoreApplication::setApplicationName("tallix controller");
    const QString dec = QLocale().decimalPoint();
    if (!dec.isEmpty()) setSystemDecimalSeparator(dec.at(0).toLatin1());

    QtScheduler scheduler;
    QtDesktop desktop;
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
    if (!options.simFile.empty() && GetProfileString(options.simFile, "bases", "logvotes", "0") == "1")
        baseLibrary.onVoteSent = [&out](const SimBaseStation& st, const KelvarinVote& v) {
            out << "[bases] sent " << st.port() << " vote " << v.VoteReplyID << " keypad " << v.SID << ": "
                << v.VoteReplyData << std::endl;
        };
    // Network bases served by tlx-basesim: the network adapter beside the simulation.
    std::string basesim = options.basesim;
    if (basesim.empty() && !options.simFile.empty()) basesim = trim(GetProfileString(options.simFile, "network", "basesim", ""));
    std::unique_ptr<NetBaseLibrary> netLibrary;
    std::unique_ptr<CompositeBaseLibrary> composite;
    BaseLibrary* library = &baseLibrary;
    if (!basesim.empty()) {
        QString host;
        quint16 port = 0;
        if (!parseEndpoint(basesim, host, port)) {
            std::cerr << "tlxctrl: the network base emulator's address \"" << basesim
                      << "\" is not HOST:PORT, [IPv6]:PORT or PORT" << std::endl;
            return 2;
        }
        netLibrary = std::make_unique<NetBaseLibrary>(scheduler, std::make_unique<TcpFrameTransport>(host, port));
        netLibrary->note = [&out](const std::string& t) { out << "[network] " << t << std::endl; };
        composite = std::make_unique<CompositeBaseLibrary>(baseLibrary, *netLibrary);
        library = composite.get();
    }

    Controller controller(Ports{scheduler, desktop, *dialogs, *tray, presentation});
    installPresentationSide(controller);
    controller.keyboard = &keyboard;
    controller.spreadsheet = &spreadsheet;
    controller.drivers = std::make_unique<KelvarinDrivers>(controller, *library);
    // Microphone requests and their turns; playthrough on the sound card through Qt Multimedia.
    installAudioFeature(controller, std::make_shared<QtAudioEngine>());

    if (!options.configureBases.empty()) return configureBases(controller, options.configureBases, out);

    // Before anything starts: a second controller would fight the first for the bases.
    auto secondController = [&](const std::string& why) {
        std::cerr << "tlxctrl: " << why << "; not starting a second controller" << std::endl;
        if (!options.headless)
            dialogs->message("tallix controller", why + "; not starting a second controller", MsgIcon::Exclamation);
    };
    // A windowed program that went on headless still serves the bus as a windowed one does.
    if (options.automation.value_or(!requested.headless)) {
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
    // The presentation program's window, and the texts the controller forwards for its chart.
    std::unique_ptr<SimShowScreen> screen;
    std::unique_ptr<ShowWindow> showWindow;
    std::unique_ptr<tallix> screenFeed;
    if (options.headless) {
        controller.forms.loaded.connect([&out](Form& f) {
            if (auto* m = dynamic_cast<MainForm*>(&f))
                m->logLine.connect([&out](const std::string& line) { out << line << std::endl; });
            if (auto* a = dynamic_cast<frmAudio*>(&f)) printAudio(*a, out);
            if (auto* i = dynamic_cast<FrmInit*>(&f)) {
                auto last = std::make_shared<std::string>();
                i->changed.connect([&out, i, last] {
                    if (!i->openingBar.empty() && i->openingBar != *last) out << "[frmInit] " << i->openingBar << std::endl;
                    *last = i->openingBar;
                });
            }
            if (auto* t = dynamic_cast<frmTextVoteCollection*>(&f)) printTextVotes(*t, out);
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
        screen = std::make_unique<SimShowScreen>(presentation);
        showWindow = std::make_unique<ShowWindow>(*screen);
    }

    Main(controller);
    SimBasesAdapter localBases(baseLibrary);
    std::unique_ptr<RoutedBasesControl> routed;
    if (netLibrary) routed = std::make_unique<RoutedBasesControl>(baseLibrary, localBases, *netLibrary);
    SimBasesControl& simBases = routed ? static_cast<SimBasesControl&>(*routed) : localBases;
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
    if (screen) {
        // The window's chart hears what every display program hears, in this process.
        screenFeed = std::make_unique<tallix>(controller);
        screenFeed->init("");
        screenFeed->FromTLXCtrl.connect([&](const std::string& text) { screen->forwarded(text); });
        screenFeed->FromCtrlFormBaseStationStartVoteCount.connect([&](int) { screen->voteStarted(); });
    }
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
        // The operator's clicks on the windows that take them.
        script->click = [&](const std::string& window, const std::string& control) -> std::string {
            if (auto* t = controller.forms.get<frmTextVoteCollection>(window)) return t->click(control);
            return "no window " + window + " is open";
        };
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
                if (netLibrary) {
                    connected += netLibrary->boundBases();
                    open += netLibrary->basesVoting();
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
