#include "audio/AudioWindow.h"

#include "core/Controller.h"

namespace tlx {

frmAudio::frmAudio(Controller&) : Form(kName) { setCaption("Audio"); }

void frmAudio::RunFromSlide(int paragraph) {
    slideTurns.push_back(paragraph);
    changed();
}

void frmAudio::ShowControlPanel(bool show) {
    controlPanelVisible = show;
    changed();
}

frmAudio& showAudioWindow(Controller& c) {
    auto* f = c.forms.get<frmAudio>(frmAudio::kName);
    if (!f) f = &c.forms.load<frmAudio>(c);
    f->topMost = true;
    f->Show();
    return *f;
}

}  // namespace tlx
