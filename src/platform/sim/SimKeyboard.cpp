#include "platform/sim/SimKeyboard.h"

namespace tlx {

bool SimKeyboard::installHook(std::function<void(const KeyEvent&)> proc) {
    if (refuseHook) return false;
    proc_ = std::move(proc);
    return true;
}

bool SimKeyboard::registerHotKey(int id, int virtualKey, int modifiers) {
    for (const auto& [other, key] : hotKeys_)
        if (other != id && key == std::make_pair(virtualKey, modifiers)) return false;  // taken
    hotKeys_[id] = {virtualKey, modifiers};
    return true;
}

bool SimKeyboard::unregisterHotKey(int id) { return hotKeys_.erase(id) > 0; }

void SimKeyboard::deliver(int virtualKey, bool released, int timeMs) {
    if (proc_) {
        KeyEvent e;
        e.vkCode = virtualKey;
        e.flags = released ? 128 : 0;
        e.time = timeMs;
        // A copy: the hook procedure may remove or renew the hook.
        auto proc = proc_;
        proc(e);
    }
    // Registered hot keys fire on the key going down.
    if (!released && onHotKey)
        for (const auto& [id, key] : hotKeys_)
            if (key.first == virtualKey) {
                onHotKey(id);
                break;
            }
    if (foregroundWindow) foregroundWindow(virtualKey, released);
}

void SimKeyboard::keyDown(int virtualKey, int timeMs) { deliver(virtualKey, false, timeMs); }
void SimKeyboard::keyUp(int virtualKey, int timeMs) { deliver(virtualKey, true, timeMs); }

void SimKeyboard::tap(int virtualKey, int timeMs) {
    keyDown(virtualKey, timeMs);
    keyUp(virtualKey, timeMs + 50);
}

}  // namespace tlx
