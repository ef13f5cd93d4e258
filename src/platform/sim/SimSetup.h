#pragma once
// The presentation side of a simulation set-up file (`tlxctrl --sim FILE`):
//
//   [presentation]
//   running=1                 the presentation program runs when the controller starts
//   deck=../decks/demo.pptx   a deck it has open (relative to the file)
//   addin=/opt/tallix         the add-in's folder (default: the controller's folder)
//   [displays]
//   TLXVOTE=/path/program args   the display program "DoRapidpoll" starts for a vote tag (a
//                                bare name such as tlx-display: from the controller's own folder
//                                when it is there, else from the PATH; empty: none)
//   [show]
//   script=demo.script        a scripted show (relative to the file)
//
// The base stations are read by the base-station simulation from the same file.
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/sim/SimPresentation.h"
#include "platform/sim/SimScript.h"

namespace tlx {

struct SimShowSetup {
    bool presentationRunning = true;
    std::filesystem::path deck;
    std::string addInFolder;
    std::map<std::string, SimPresentationApp::Display> displays;
    std::filesystem::path script;
};

SimShowSetup readSimShowSetup(const std::filesystem::path& file);
// Applies the set-up: starts the program, opens the deck, sets the add-in and displays.
// Returns what went wrong ("" when nothing did).
std::string applySimShowSetup(const SimShowSetup& setup, SimPresentationApp& app);
// Reads the script file; problems are reported line by line.
std::vector<ScriptStep> loadScript(const std::filesystem::path& file, std::vector<std::string>& problems);

}  // namespace tlx
