#include "core/DebugForms.h"

#include "core/Controller.h"
#include "core/Text.h"
#include "ports/Desktop.h"

namespace tlx {

DebugForm::DebugForm(Controller& controller) : Form(kName), c_(controller) {
    setCaption("Debug");
    Refresh();
}

void DebugForm::Refresh() {
    const GlobalState& g = c_.glo;
    lines = {
        "InitialisedState=" + numText(g.InitialisedState),
        "ShuttingDown=" + boolText(g.ShuttingDown),
        "slideShowActive=" + boolText(g.slideShowActive),
        "hookActive=" + boolText(g.hookActive),
        "Voting=" + boolText(g.Voting),
        "ActiveKeypads=" + g.ActiveKeypads.text(),
        "voteType=" + g.voteType,
        "options=" + numText(static_cast<int>(g.optionCount)),
        "bases=" + numText(static_cast<long long>(g.bases.size())),
        "localDataFolder=" + g.localDataFolder.string(),
        "sharedDataFolder=" + g.sharedDataFolder.string(),
    };
    changed();
}

DebugWindowHandlesForm::DebugWindowHandlesForm(Controller& controller) : Form(kName), c_(controller) {
    setCaption("Window Handles");
    Refresh();
}

void DebugWindowHandlesForm::Refresh() {
    rows.clear();
    if (topLevelWindows) {
        rows = topLevelWindows();
    } else {
        int i = 0;
        for (Form* f : c_.forms.all())
            rows.push_back(WindowHandleRow{numText(i++), f->Name(), f->Caption(), f->Visible(), f->topMost});
    }
    foregroundClass = c_.ports.desktop.foregroundWindowClass();
    lines.clear();
    for (const auto& r : rows)
        lines.push_back(r.handle + ": " + r.className + " \"" + r.caption + "\"" + (r.visible ? " visible" : " hidden") +
                        (r.topMost ? " top-most" : ""));
    lines.push_back("foreground: " + foregroundClass);
    changed();
}

DebugProcessListForm::DebugProcessListForm(Controller& controller) : Form(kName), c_(controller) {
    setCaption("Process List");
    Refresh();
}

void DebugProcessListForm::Refresh() {
    lines = c_.ports.desktop.processes();
    changed();
}

}  // namespace tlx
