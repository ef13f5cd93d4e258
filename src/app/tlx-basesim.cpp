// tlx-basesim: the network base-station emulator. Serves the simulated bases of a world file
// (the [bases] part of a --sim file) and their keypads over TCP, to the controller's network
// adapter, and takes control commands from a scenario file, standard input and its clients.
#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QHostAddress>
#include <QSocketNotifier>
#include <QTcpServer>
#include <QTcpSocket>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <unistd.h>

#include "core/Text.h"
#include "platform/net/BaseHub.h"
#include "platform/qt/QtScheduler.h"
#include "platform/qt/TcpFrameTransport.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "tlx/Version.h"

using namespace tlx;

namespace {

void say(const std::string& line) { std::cout << "tlx-basesim: " << line << std::endl; }

}  // namespace

int main(int argc, char** argv) {
    CLI::App cli{"tlx-basesim: network base-station emulator. Serves simulated network bases and their keypads "
                 "to the controller's network adapter, on loopback unless --listen says otherwise."};
    cli.set_version_flag("--version", std::string("tlx-basesim ") + version::kText);
    std::string listen = "127.0.0.1:2020";
    std::string world, scenario;
    bool logVotes = false;
    unsigned seed = 0;
    bool seedGiven = false;
    cli.add_option("--listen", listen,
                   "address and port to serve on: HOST:PORT, [IPv6]:PORT or PORT (127.0.0.1); port 0 picks a free "
                   "one; default 127.0.0.1:2020")
        ->capture_default_str();
    cli.add_option("--world", world, "the bases and keypads: a file with [bases] and [baseN] sections (as --sim files)")
        ->required()
        ->check(CLI::ExistingFile);
    cli.add_option("--scenario", scenario, "timed control commands: \"SECONDS COMMAND\" a line")->check(CLI::ExistingFile);
    cli.add_option("--seed", seed, "seed of the keypads' answers (default: the world file's)")->each([&](const std::string&) {
        seedGiven = true;
    });
    cli.add_flag("--log-votes", logVotes, "print every key press a base reports: \"sent BASE vote N keypad K: DATA\"");
    cli.footer(
        "Control commands (standard input, scenario lines, or a client's control frames):\n"
        "  press BASE KEYPAD KEYS | crowd BASE N ANSWERS PER-SECOND | mic BASE KEYPAD | withdraw BASE KEYPAD\n"
        "  text BASE KEYPAD TEXT | screen BASE KEYPAD | bases | connections\n"
        "  refuse BASE OPERATION CODE [TIMES] | silent BASE OPERATION on|off | slow MS | drop [MS]\n"
        "  disconnect BASE | reconnect BASE | error BASE CODE [TEXT]\n"
        "Scenario lines may also be \"SECONDS await voteopen [LIMIT]\".");
    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return cli.exit(e);
    }
    QString host;
    quint16 port = 0;
    if (!parseEndpoint(listen, host, port)) {
        std::cerr << "tlx-basesim: --listen takes HOST:PORT, [IPv6]:PORT or PORT, not \"" << listen << "\"" << std::endl;
        return 2;
    }
    QHostAddress address;
    if (!address.setAddress(host)) {
        std::cerr << "tlx-basesim: \"" << host.toStdString() << "\" is not an IP address" << std::endl;
        return 2;
    }

    QCoreApplication app(argc, argv);
    QtScheduler scheduler;
    SimBaseLibrary library(scheduler);
    const int bases = loadSimBases(library, world);
    if (bases == 0) {
        std::cerr << "tlx-basesim: " << world << " holds no bases ([bases] count=N and [baseN] sections)" << std::endl;
        return 2;
    }
    if (seedGiven) library.setSeed(seed);
    if (logVotes)
        library.onVoteSent = [](const SimBaseStation& st, const KelvarinVote& v) {
            say("sent " + st.port() + " vote " + std::to_string(v.VoteReplyID) + " keypad " + std::to_string(v.SID) +
                ": " + v.VoteReplyData);
        };
    BaseHub hub(scheduler, library);
    hub.note = say;

    QTcpServer server;
    if (!server.listen(address, port)) {
        std::cerr << "tlx-basesim: cannot listen on " << listen << ": " << server.errorString().toStdString()
                  << std::endl;
        return 1;
    }
    const std::string shownHost = address.protocol() == QAbstractSocket::IPv6Protocol
                                      ? "[" + server.serverAddress().toString().toStdString() + "]"
                                      : server.serverAddress().toString().toStdString();
    // The first line: a program that started us on port 0 reads the port from it.
    say("listening on " + shownHost + ":" + std::to_string(server.serverPort()));
    for (std::size_t i = 0; i < library.baseCount(); ++i) {
        const SimBaseStation& st = library.station(i);
        say("base " + st.setup.type + ";" + st.port() +
            (st.setup.connection == SimConnection::Ethernet ? " at " + st.setup.address : " (not a network base)") +
            ", " + std::to_string(st.setup.keypads.size()) + " keypads");
    }
    if (!address.isLoopback()) say("warning: serving on " + shownHost + ", which is not a loopback address");

    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        while (QTcpSocket* s = server.nextPendingConnection()) {
            s->setSocketOption(QAbstractSocket::LowDelayOption, 1);
            auto gone = std::make_shared<bool>(false);
            BaseHub::Link link;
            link.peer = s->peerAddress().toString().toStdString() + ":" + std::to_string(s->peerPort());
            link.send = [s, gone](const std::string& bytes) {
                if (!*gone) s->write(bytes.data(), static_cast<qint64>(bytes.size()));
            };
            link.close = [s, gone] {
                if (*gone) return;
                *gone = true;
                // What is written still goes out (a refusal's reason); the socket goes once it has.
                s->disconnectFromHost();
                if (s->state() == QAbstractSocket::UnconnectedState) s->deleteLater();
            };
            const std::uint64_t id = hub.open(link);
            QObject::connect(s, &QTcpSocket::readyRead, s, [&hub, s, id] {
                const QByteArray bytes = s->readAll();
                hub.data(id, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
            });
            QObject::connect(s, &QTcpSocket::disconnected, s, [&hub, s, id, gone] {
                if (!*gone) {
                    *gone = true;
                    hub.closed(id);
                }
                s->deleteLater();
            });
        }
    });

    // Control commands typed on standard input, one a line.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    std::string pending;
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buf[4096];
        const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
        if (n <= 0) {
            input.setEnabled(false);  // no more commands; serving goes on
            return;
        }
        pending.append(buf, static_cast<std::size_t>(n));
        std::size_t nl;
        while ((nl = pending.find('\n')) != std::string::npos) {
            const std::string line = trim(pending.substr(0, nl));
            pending.erase(0, nl + 1);
            if (line.empty() || line[0] == '#') continue;
            const BaseHub::Result r = hub.execute(line);
            if (!r.error.empty())
                say(line + ": " + r.error);
            else if (!r.output.empty())
                say(line + ": " + r.output);
            else
                say(line + ": done");
        }
    });

    if (!scenario.empty()) {
        std::ifstream in(scenario, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        std::vector<std::string> problems;
        auto lines = parseScenario(text.str(), &problems);
        for (const auto& p : problems) say("scenario cannot read " + p);
        hub.play(std::move(lines));
    }
    return QCoreApplication::exec();
}
