#pragma once
// `frmAudio`: the audio window's model. The request queue, talk time and playthrough belong
// to the microphone feature; what the rest of the controller needs today is a window to load,
// its control panel, and the slide-driven turn a presenter's digit asks for.
#include <vector>

#include "core/Form.h"

namespace tlx {

class Controller;

class frmAudio : public Form {
public:
    static constexpr const char* kName = "frmAudio";
    explicit frmAudio(Controller& controller);

    // Gives the floor to the keypad on the given line of the current question slide.
    void RunFromSlide(int paragraph);
    // The presenter's control panel of the window.
    void ShowControlPanel(bool show);

    bool controlPanelVisible = false;
    // Every slide-driven turn asked for, in order.
    std::vector<int> slideTurns;
};

// Loads the audio window when it is not loaded, shows it and makes it top-most.
frmAudio& showAudioWindow(Controller& controller);

}  // namespace tlx
