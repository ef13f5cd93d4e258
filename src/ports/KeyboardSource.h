#pragma once
// Raw key events for the presenter's hot keys: a system-wide low-level hook, and registered
// hot keys for systems without one. Every key always reaches its window afterwards.
#include <functional>

namespace tlx {

// The hook's key structure.
struct KeyEvent {
    int vkCode = 0;
    int scanCode = 0;
    int flags = 0;  // bit 7 (128) set when the key is released
    int time = 0;   // milliseconds
    int extraInfo = 0;
    bool released() const { return (flags & 128) != 0; }
};

class KeyboardSource {
public:
    virtual ~KeyboardSource() = default;
    // Installs the low-level hook; false when the system refuses it.
    virtual bool installHook(std::function<void(const KeyEvent&)> proc) = 0;
    virtual void removeHook() = 0;
    virtual bool hookInstalled() const = 0;
    // Registered hot keys; id is the global atom of the key's name.
    virtual bool registerHotKey(int id, int virtualKey, int modifiers) = 0;
    virtual bool unregisterHotKey(int id) = 0;
    // A registered hot key was pressed.
    std::function<void(int id)> onHotKey;
};

}  // namespace tlx
