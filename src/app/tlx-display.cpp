// tlx-display: the reference display program. Started by the presentation add-in's quick vote
// for a vote slide (or by hand), it configures and opens the vote through the controller's
// automation class, draws the live result on the terminal or in a window, and ends the vote.
#include <CLI/CLI.hpp>
#include <QApplication>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusServiceWatcher>
#include <QSocketNotifier>
#include <QTimer>
#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "core/Text.h"
#include "platform/dbus/DbusDisplayLink.h"
#include "platform/dbus/DbusNames.h"
#include "platform/dbus/DbusSignalTap.h"
#include "platform/qt/QtScheduler.h"
#include "presentation/display/DisplayRun.h"
#include "presentation/display/DisplayScreen.h"
#include "tlx/Version.h"
#include "ui/DisplayWindow.h"

namespace {

using namespace tlx;

constexpr int kExitUsage = 2;

// What the program prints: notes and one line per update (plain), or a chart redrawn in place.
class Terminal {
public:
    Terminal(bool chart, int width) : chart_(chart), width_(width) {}

    void note(const std::string& text) {
        erase();
        std::cout << "tlx-display: " << printable(text) << std::endl;
    }
    void problem(const std::string& text) {
        erase();
        std::cerr << "tlx-display: " << printable(text) << std::endl;
    }
    void live(const DisplayModel& m) {
        if (!chart_) {
            std::cout << "tlx-display: " << liveLine(m) << std::endl;
            return;
        }
        erase();
        const auto lines = chartLines(m, width_);
        for (const auto& l : lines) std::cout << l << "\n";
        std::cout.flush();
        drawn_ = static_cast<int>(lines.size());
    }
    void result(const DisplayModel& m) {
        erase();
        for (const auto& l : resultTable(m, width_)) std::cout << l << "\n";
        std::cout.flush();
    }

private:
    // Takes the chart off the screen: up to its first line, and clear to the end.
    void erase() {
        if (drawn_ <= 0) return;
        std::cout << "\x1b[" << drawn_ << "F\x1b[J";
        drawn_ = 0;
    }
    bool chart_;
    int width_;
    int drawn_ = 0;
};

int terminalWidth() {
    winsize ws{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &ws) == 0 && ws.ws_col >= 40) return ws.ws_col;
    return 80;
}

// SIGINT and SIGTERM reach the loop through a pipe.
int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char c = 1;
    [[maybe_unused]] const auto n = ::write(signalPipe[1], &c, 1);
}

bool catchSignals() {
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    struct sigaction sa {};
    sa.sa_handler = onSignal;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_RESTART;
    return ::sigaction(SIGINT, &sa, nullptr) == 0 && ::sigaction(SIGTERM, &sa, nullptr) == 0;
}

// A line typed on standard input ends the vote; reading from a terminal only in the foreground
// (a background read would stop the program).
bool watchInput() {
    if (::fcntl(STDIN_FILENO, F_GETFD) < 0) return false;
    if (::isatty(STDIN_FILENO) && ::tcgetpgrp(STDIN_FILENO) != ::getpgrp()) return false;
    return true;
}

// Whether a window can be shown: Qt would otherwise end the program on its own, with a less
// helpful message.
bool displayAvailable() {
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* v = std::getenv(name);
        if (v && *v) return true;
    }
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    // The command line is read before Qt starts, so that --help and --version need no display.
    CLI::App cli{
        "tlx-display: the reference display program. It finds the vote slide the controller names (the "
        "presentation tag tlxCurrentSlide) and its vote tag, sends the vote's configuration and STARTVOTE "
        "through the automation class on the session bus, shows the live result, and ends the vote with "
        "ENDVOTE after --seconds, on a line typed on standard input, on SIGINT or SIGTERM, from the window's "
        "Close vote button, or when the controller goes. Exit codes: 0 done; 1 no vote to run; 2 bad command line "
        "(or --window with no display); 3 no controller answers."};
    DisplayOptions opt;
    int slide = 0, options = 0;
    bool plain = false, window = false;
    std::string address;
    double replyTimeout = 10;
    cli.add_option("--slide", slide, "the vote slide (default: the one the controller names)")
        ->check(CLI::Range(1, 100000));
    cli.add_option("--config", opt.config,
                   "the vote tag's configuration text, e.g. \"<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>\" "
                   "(default: read from the slide)");
    cli.add_option("--tag", opt.tag, "the vote tag --config belongs to (default TLXVOTE)")
        ->check(CLI::IsMember({"TLXVOTE", "TLXQUIZ", "TLXTEAM", "TLXRESHOW", "TLXMATRIX"}, CLI::ignore_case));
    cli.add_option("--question", opt.question, "the question (default: the slide's tlx_Question text)");
    cli.add_option("--name", opt.voteName, "the vote's name (default: the question)");
    cli.add_option("--keypads", opt.keypadsActive, "the keypads allowed to vote, e.g. 3,7,12");
    cli.add_option("--options", options, "the option count (default: the tag's, else the slide's answers)")
        ->check(CLI::Range(1, 1000));
    cli.add_option("--seconds", opt.seconds, "end the vote after this many seconds (default: when told)")
        ->check(CLI::Range(0.001, 86400.0));
    cli.set_version_flag("--version", std::string("tlx-display ") + tlx::version::kText);
    cli.add_flag("--plain", plain, "one line per update instead of a chart (the default when not on a terminal)");
    cli.add_flag("--window", window,
                 "show the vote in a window: live bars with counts and shares, the voters so far, the final table, "
                 "and a Close vote button (the terminal still gets the notes and the result)");
    cli.add_option("--refresh", opt.refreshSeconds, "seconds between redraws at most (default 0.25)")
        ->check(CLI::Range(0.05, 10.0));
    cli.add_option("--wait", opt.connectSeconds, "seconds to wait for the controller (default 10)")
        ->check(CLI::Range(0.0, 600.0));
    cli.add_option("--reply-timeout", replyTimeout, "seconds to wait for an answer to one call (default 10)")
        ->check(CLI::Range(0.1, 600.0));
    cli.add_option("--bus", address, "a bus address to use instead of the session bus");
    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int rc = cli.exit(e);
        return rc == 0 ? 0 : kExitUsage;
    }
    if (slide > 0) opt.slide = slide;
    if (options > 0) opt.options = options;
    if (!opt.keypadsActive.empty()) {
        const auto list = keypadListText(opt.keypadsActive);
        if (!list) {
            std::cerr << "tlx-display: --keypads takes keypad numbers separated by commas, not \"" << opt.keypadsActive
                      << "\"" << std::endl;
            return kExitUsage;
        }
        opt.keypadsActive = *list;
    }
    opt.tag = toUpper(opt.tag);
    if (window && !displayAvailable()) {
        std::cerr << "tlx-display: --window needs a display (DISPLAY or WAYLAND_DISPLAY is not set)" << std::endl;
        return kExitUsage;
    }
    std::unique_ptr<QCoreApplication> app;
    if (window) {
        auto gui = std::make_unique<QApplication>(argc, argv);
        // The run decides when the program ends (its result stays on screen until closed).
        gui->setQuitOnLastWindowClosed(false);
        app = std::move(gui);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }

    QDBusConnection bus = address.empty() ? QDBusConnection::sessionBus()
                                          : QDBusConnection::connectToBus(QString::fromStdString(address),
                                                                          QStringLiteral("tlx-display"));
    if (!bus.isConnected()) {
        std::cerr << "tlx-display: no controller answers: there is no session bus ("
                  << bus.lastError().message().toStdString() << ")" << std::endl;
        return DisplayRun::kExitNoController;
    }

    Terminal term(!window && !plain && ::isatty(STDOUT_FILENO), terminalWidth());
    QtScheduler scheduler;
    DbusDisplayLink link(bus, static_cast<int>(replyTimeout * 1000.0));
    DisplayRun run(scheduler, link, opt);
    run.note = [&](const std::string& t) { term.note(t); };
    run.problem = [&](const std::string& t) { term.problem(t); };
    // With a window, the window draws the live tally; the terminal keeps a record.
    if (!window) run.live = [&](const DisplayModel& m) { term.live(m); };
    run.result = [&](const DisplayModel& m) { term.result(m); };
    std::unique_ptr<DisplayScreen> screen;
    std::unique_ptr<DisplayWindow> view;
    if (window) {
        screen = std::make_unique<DisplayScreen>(run);
        screen->quit = [](int code) { QCoreApplication::exit(code); };
        view = std::make_unique<DisplayWindow>(*screen);
        view->show();
    } else {
        run.finished = [](int code) { QCoreApplication::exit(code); };
    }
    // An interruption ends the vote; with the window still showing the result, it ends the program.
    auto interrupt = [&] {
        if (window && run.phase() == DisplayRun::Phase::Done)
            QCoreApplication::exit(run.exitCode());
        else
            run.requestEnd("interrupted");
    };

    // The controller's events; the match rules are in place before our first call.
    DbusSignalTap tap(bus, [&run](const QDBusMessage& m) {
        const QVariantList a = m.arguments();
        const QString name = m.member();
        if (name == QLatin1String("FromTLXCtrl"))
            run.onData(a.value(0).toString().toStdString());
        else if (name == QLatin1String("FromCtrlFormBaseStationStartVoteCount"))
            run.onStartVoteCount(a.value(0).toInt());
        else if (name == QLatin1String("FromTLXCtrlBaseError"))
            run.onBaseError(a.value(0).toInt(), a.value(1).toString().toStdString());
        else if (name == QLatin1String("FromTLXCtrlBaseFeedback"))
            run.onBaseFeedback(a.value(0).toInt(), a.value(1).toString().toStdString());
    });
    if (!tap.listen(QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface), bus::tallixSignals())) {
        std::cerr << "tlx-display: cannot listen on the session bus (" << bus.lastError().message().toStdString()
                  << ")" << std::endl;
        return DisplayRun::kExitNoController;
    }
    QDBusServiceWatcher gone(QLatin1String(bus::kService), bus, QDBusServiceWatcher::WatchForUnregistration);
    QObject::connect(&gone, &QDBusServiceWatcher::serviceUnregistered, [&run] { run.onControllerGone(); });
    // The bus itself may go (the session ends): the controller has gone with it.
    QTimer busCheck;
    QObject::connect(&busCheck, &QTimer::timeout, [&] {
        if (!bus.isConnected()) run.onControllerGone();
    });
    busCheck.start(500);

    std::unique_ptr<QSocketNotifier> interrupts;
    if (catchSignals()) {
        interrupts = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
        QObject::connect(interrupts.get(), &QSocketNotifier::activated, [&interrupt] {
            char buf[16];
            while (::read(signalPipe[0], buf, sizeof buf) > 0) {
            }
            interrupt();
        });
    }
    std::unique_ptr<QSocketNotifier> input;
    if (watchInput()) {
        input = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
        QObject::connect(input.get(), &QSocketNotifier::activated, [&run, &input] {
            char buf[256];
            const auto n = ::read(STDIN_FILENO, buf, sizeof buf);
            if (n <= 0) {
                // End of input ends nothing: the vote then ends by time or signal.
                input->setEnabled(false);
                return;
            }
            if (std::string_view(buf, static_cast<std::size_t>(n)).find('\n') != std::string_view::npos)
                run.requestEnd("asked on standard input");
        });
    }

    // Inside the loop, so that an early end reaches it.
    QTimer::singleShot(0, [&run] { run.start(); });
    const int code = QCoreApplication::exec();
    // The window and its model go before the run they show.
    view.reset();
    screen.reset();
    return code;
}
