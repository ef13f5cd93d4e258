#pragma once
// The network base emulator's side of the protocol: each connection's base objects are objects
// of the simulated base library (the same bases and keypads the controller simulates in its own
// process), their events go back as frames, and a small control language drives the keypads and
// injects faults. Plain C++ on the Scheduler: the program adds the listening socket.
//
// Control language, one command a line (from a scenario file, standard input or a control
// frame; verbs are case-insensitive, BASE is the base's serial number):
//   press BASE KEYPAD KEYS            crowd BASE N ANSWERS PER-SECOND
//   mic BASE KEYPAD                   withdraw BASE KEYPAD
//   text BASE KEYPAD TEXT...          screen BASE KEYPAD
//   bases                             connections
//   refuse BASE OPERATION CODE [TIMES]   the operation returns CODE (0 clears; TIMES < 0: always)
//   silent BASE OPERATION on|off      the replies an operation causes never come (surveys, scans)
//   slow MS                           every reply waits MS milliseconds (0: none)
//   drop [MS]                         every connection is closed (after MS milliseconds)
//   disconnect BASE                   the base loses its link (code 5), reconnect BASE brings it back
//   error BASE CODE [TEXT...]         the base reports an error
//
// A scenario file has one "SECONDS COMMAND" a line, seconds after the start; "#" begins a
// comment. "SECONDS await voteopen [LIMIT]" waits until a vote is open on every base a
// connection has bound (at most LIMIT seconds, 30 by default) and moves the later lines on
// by the time it waited.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/net/BaseProtocol.h"

namespace tlx {

class Scheduler;
class SimBaseLibrary;

struct ScenarioLine {
    double at = 0;
    std::string command;
    int line = 0;
};

// Reads a scenario; lines it cannot read are reported in `problems` and left out.
std::vector<ScenarioLine> parseScenario(const std::string& text, std::vector<std::string>* problems = nullptr);

class BaseHub {
public:
    BaseHub(Scheduler& scheduler, SimBaseLibrary& library);
    ~BaseHub();
    BaseHub(const BaseHub&) = delete;
    BaseHub& operator=(const BaseHub&) = delete;

    // A connection: how to write to it and how to close it (without a callback).
    struct Link {
        std::function<void(const std::string&)> send;
        std::function<void()> close;
        std::string peer;
    };
    // A new connection; the hub greets it. Returns its number.
    std::uint64_t open(Link link);
    // Bytes read from a connection.
    void data(std::uint64_t connection, std::string_view bytes);
    // The peer closed the connection.
    void closed(std::uint64_t connection);
    std::size_t connections() const { return sessions_.size(); }

    struct Result {
        std::string error;   // "" when the command was carried out
        std::string output;  // what it prints
    };
    Result execute(const std::string& line);

    // Plays a scenario on the scheduler, starting now.
    void play(std::vector<ScenarioLine> lines);
    bool scenarioFinished() const { return next_ >= scenario_.size(); }

    int replyDelayMs = 0;
    // What the emulator reports (connections, refused frames, scenario steps).
    std::function<void(const std::string&)> note;

private:
    struct Session;
    void handle(Session& s, wire::Frame& f);
    void send(Session& s, wire::Kind kind, std::uint32_t id, std::uint32_t handle, wire::Fields fields);
    void reply(std::uint64_t connection, wire::Kind kind, std::uint32_t id, std::uint32_t handle, wire::Fields fields);
    void drop(std::uint64_t connection, const std::string& why);
    void dropAll();
    bool votesOpen() const;
    void runScenario();
    // Runs fn later on the loop; it does nothing once the hub has gone.
    void later(int delayMs, std::function<void()> fn);
    void say(const std::string& text) {
        if (note) note(text);
    }

    Scheduler& scheduler_;
    SimBaseLibrary& lib_;
    std::map<std::uint64_t, std::unique_ptr<Session>> sessions_;
    std::uint64_t nextSession_ = 0;
    std::vector<ScenarioLine> scenario_;
    std::size_t next_ = 0;
    double scenarioStartMs_ = 0;
    double shiftMs_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tlx
