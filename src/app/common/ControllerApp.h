#pragma once
// Wiring of the controller program: which adapter serves which port.
#include <memory>
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
};

// Builds the object graph and runs the program; returns the process exit code.
int runController(int argc, char** argv, const ControllerOptions& options, std::ostream& out);

// The non-interactive keypad set-up: "TYPE;PORT;LO;HI" per base.
int configureBases(class Controller& controller, const std::vector<std::string>& specs, std::ostream& out);

}  // namespace tlx
