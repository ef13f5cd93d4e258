#pragma once
// The desktop of the windowed program: the simulated desktop of this platform with the real
// clipboard of the session (QClipboard). Without a GUI application (headless) the clipboard
// stays the simulated one.
#include "platform/sim/SimDesktop.h"

namespace tlx {

class QtDesktop : public SimDesktop {
public:
    void setClipboardText(const std::string& text) override;
    std::string clipboardText() const override;
};

}  // namespace tlx
