#pragma once
// Wiring of the controller program: which adapter serves which port.
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tlx {

struct ControllerOptions {
    bool headless = false;
    std::string simFile;
    bool answerYes = false;
    int quitAfterMs = -1;  // headless demo: quit from the tray after this long
    std::vector<std::string> configureBases;
    std::string commandLine;  // passed to the automation class's init
    // Where tlx-basesim serves network bases ("HOST:PORT"); empty: the --sim file's
    // [network] basesim=, else no network bases.
    std::string basesim;
    // Serve the automation class on the session bus. Unset: on for the windowed program, off
    // with --headless (scripted runs and tests ask for it with --automation).
    std::optional<bool> automation;
};

// Exit code when the automation class cannot be served as asked: another controller already
// serves it, or (with --automation) there is no session bus.
inline constexpr int kExitAutomationUnavailable = 3;

// Why no window can open on this machine: "" when one can (or the toolkit's platform is one
// this check leaves to the toolkit), else the reason, such as "DISPLAY is not set".
std::string noDisplayReason();

// Builds the object graph and runs the program; returns the process exit code. A windowed
// program that finds no display goes on headless and says so on standard error.
int runController(int argc, char** argv, const ControllerOptions& options, std::ostream& out);

// The non-interactive keypad set-up: "TYPE;PORT;LO;HI" per base.
int configureBases(class Controller& controller, const std::vector<std::string>& entries, std::ostream& out);

}  // namespace tlx
