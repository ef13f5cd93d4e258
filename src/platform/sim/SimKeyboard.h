#pragma once
// Keys typed on the simulated desktop: the low-level hook sees each one first, then it
// reaches the foreground window (the slide show, while it has the focus).
#include <functional>
#include <map>

#include "ports/KeyboardSource.h"

namespace tlx {

class SimKeyboard : public KeyboardSource {
public:
    bool installHook(std::function<void(const KeyEvent&)> proc) override;
    void removeHook() override { proc_ = nullptr; }
    bool hookInstalled() const override { return static_cast<bool>(proc_); }
    bool registerHotKey(int id, int virtualKey, int modifiers) override;
    bool unregisterHotKey(int id) override;

    // Types a key: down, or up (released). Time is the event's millisecond stamp.
    void keyDown(int virtualKey, int timeMs);
    void keyUp(int virtualKey, int timeMs);
    // Presses and releases a key, 50 ms apart.
    void tap(int virtualKey, int timeMs);

    // Refuse the hook, as a system may.
    bool refuseHook = false;
    // The window with the focus receives every key after the hook has seen it.
    std::function<void(int virtualKey, bool released)> foregroundWindow;
    int hotKeyCount() const { return static_cast<int>(hotKeys_.size()); }

private:
    void deliver(int virtualKey, bool released, int timeMs);
    std::function<void(const KeyEvent&)> proc_;
    std::map<int, std::pair<int, int>> hotKeys_;  // id -> key, modifiers
};

}  // namespace tlx
