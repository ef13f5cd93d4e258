#include "platform/sim/SimPresentation.h"

#include "platform/sim/SimDesktop.h"
#include "ports/AppError.h"

namespace tlx {

std::string SimApplication::addInPath(const std::string& addInName) const {
    if (addInFolder.empty()) throw AppError(err::kSubscriptOutOfRange, "AddIns(\"" + addInName + "\"): not loaded");
    return addInFolder;
}

void SimApplication::run(const std::string& macro, const std::vector<ppt::MacroArg>&) {
    macrosRun.push_back(macro);
}

ppt::Application* SimPresentationApp::getActiveObject() { return running_ ? &app_ : nullptr; }

void SimPresentationApp::start() {
    running_ = true;
    desktop_.addProcess("POWERPNT.EXE");
}

void SimPresentationApp::quit() {
    running_ = false;
    desktop_.removeProcess("POWERPNT.EXE");
}

}  // namespace tlx
