#include "drivers/PresenterKeys.h"

#include "ports/Desktop.h"

namespace tlx {

PresenterKeyResult performPresenterKey(Desktop& desktop, std::string_view keyName) {
    auto stroke = [&](int key, const char* echo) {
        desktop.sendKey(key);
        return PresenterKeyResult{true, echo};
    };
    if (keyName == "VOL-") return stroke(vk::VolumeDown, "Volume Down");
    if (keyName == "VOL+") return stroke(vk::VolumeUp, "Volume Up");
    if (keyName == "MUTE") return stroke(vk::VolumeMute, "Mute");
    if (keyName == "V") {
        // The matrix program starts its vote on Clear rather than V.
        return stroke(processRunning(desktop, kGridderProcess) ? vk::Clear : vk::V, "Start Vote");
    }
    if (keyName == "PageUp") return stroke(vk::PageUp, "Back");
    if (keyName == "PageDown") {
        if (processRunning(desktop, kGridderProcess)) return stroke(vk::Enter, "");
        if (processRunning(desktop, kChartistProcess)) return stroke(vk::Space, "Close Vote");
        return stroke(vk::PageDown, "Next");
    }
    if (keyName == "End") return stroke(vk::End, "    End");
    if (keyName == "Home") return stroke(vk::Home, "   Home");
    if (keyName == "F5") return stroke(vk::F5, "Start Show");
    if (keyName == "B") return stroke(vk::B, " Blank");
    if (keyName == "Escape") return stroke(vk::Escape, "Escape");
    return {};
}

std::string presenterKeyName(int command) {
    switch (command) {
        case 1: return "PageDown";
        case 2: return "PageUp";
        case 3: return "V";
        case 4: return "Home";
        case 5: return "End";
        case 6: return "F5";
        case 7: return "B";
        case 8: return "Escape";
        case 9: return "VOL+";
        case 10: return "VOL-";
        case 11: return "MUTE";
        default: return "";
    }
}

}  // namespace tlx
