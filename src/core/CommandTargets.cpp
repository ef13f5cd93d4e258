#include "core/CommandTargets.h"

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/SmallForms.h"
#include "core/Text.h"
#include "ports/Desktop.h"

namespace tlx {

int DefaultCommandTargets::voteStart() {
    // Without the vote run every configured base station counts as taking part.
    int n = 0;
    for (const auto& b : c_.glo.bases)
        if (!trim(b.baseType).empty()) ++n;
    return n;
}

void DefaultCommandTargets::freeCursor() { c_.ports.desktop.clipCursor(false); }

void DefaultCommandTargets::activeKeypads() { c_.LogEvent(c_.glo.ActiveKeypads.text(), LOG_XX); }

void DefaultCommandTargets::setActiveKeypads(const std::string& list) {
    // Without the vote run there is no presentation tag to keep: only the intake's list.
    c_.glo.ActiveKeypads = activeKeypadsText(list);
}

void DefaultCommandTargets::showBubbleMessageLog() {
    auto* f = c_.forms.get<BubbleMessageLogForm>(BubbleMessageLogForm::kName);
    if (!f) f = &c_.forms.load<BubbleMessageLogForm>(c_);
    f->Show();
}

void DefaultCommandTargets::reReadConfiguration() {
    c_.drivers->closePorts();
    c_.connectBases();
}

}  // namespace tlx
