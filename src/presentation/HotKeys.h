#pragma once
// The presenter's hot keys: the low-level keyboard hook that turns key combinations into
// commands, the Ctrl and Alt actions on the current slide, and the registered hot keys of
// `frmHotKey` for systems without the hook.
#include <cstdint>
#include <map>
#include <string>

#include "core/Form.h"
#include "ports/KeyboardSource.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;
namespace ppt {
class Slide;
class Presentation;
}  // namespace ppt

// Virtual-key codes the hook knows by name.
namespace vk {
inline constexpr int kEnter = 13, kSpace = 32, kPageUp = 33, kPageDown = 34, kEnd = 35, kHome = 36;
inline constexpr int kLShift = 160, kRShift = 161, kLCtrl = 162, kRCtrl = 163, kLAlt = 164, kRAlt = 165;
}  // namespace vk

class KeyboardHook {
public:
    explicit KeyboardHook(Controller& controller);
    ~KeyboardHook();

    // The hook procedure: acts on the key and always passes it on.
    void LowLevelKeyboardProc(const KeyEvent& key);
    void SetHook();
    void RemoveHook();
    void tmr_refreshLowLevelKeyboardHook_Timer();

    void CtrlKeyPressed(const std::string& key);
    void AltKeyPressed(const std::string& key);

    // The registered hot keys of `frmHotKey`, for systems without the hook: hand them back to
    // the controller window, attach them to the show window, or register them.
    void returnHotKeysToController();
    void attachHotKeysToShow();
    void registerHotKeys();

    bool shiftHeld() const { return held_[0] || held_[1]; }
    bool ctrlHeld() const { return held_[2] || held_[3]; }
    bool altHeld() const { return held_[4] || held_[5]; }
    // A key event arriving this soon after an identical one is a repeat.
    static constexpr int kRepeatFilterMs = 250;

private:
    void queue(const std::string& command);
    bool guards(bool ctrl, const std::string& key, ppt::Slide*& slide, ppt::Presentation*& presentation);
    void actioned(bool ctrl, const std::string& key);
    void ctrlDigit(ppt::Slide& slide, ppt::Presentation& p, int digit);
    void ctrlCharts(ppt::Slide& slide);
    void ctrlSequence(ppt::Slide& slide);
    void answerDisplay(ppt::Slide& slide, int navKey);
    void altRank(ppt::Slide& slide, bool next);
    void reactivateShow();

    Controller& c_;
    bool held_[6] = {false, false, false, false, false, false};
    KeyEvent last_;
    bool haveLast_ = false;
};

// `cRegHotKey`: named hot keys registered with the system.
class cRegHotKey {
public:
    explicit cRegHotKey(Controller& controller);
    ~cRegHotKey();
    void Attach(std::intptr_t window);
    bool RegisterKey(const std::string& name, int key, int modifiers);
    bool UnregisterKey(const std::string& name);
    void Clear();
    void RestoreAndActivate(std::intptr_t window);
    // A system hot key arrived: its name, or the system's own names.
    std::string nameOf(int id) const;
    std::intptr_t attachedWindow() const { return window_; }

    std::function<void(const std::string& name)> HotKeyPress;

private:
    void onHotKey(int id);
    Controller& c_;
    std::intptr_t window_ = 0;
    std::map<std::string, int> keys_;  // name -> atom
    int nextAtom_ = 0xC000;
};

// `frmHotKey`: the registered hot keys V, X and, once X has armed them, F, D and S.
class frmHotKey : public Form {
public:
    static constexpr const char* kName = "frmHotKey";
    explicit frmHotKey(Controller& controller);
    void RegisterPresenterKeys(std::intptr_t window);
    std::string lblStatus;
    cRegHotKey m_cHotKey;

private:
    void HotKeyPress(const std::string& name);
    Controller& c_;
    bool modeKeysArmed_ = false;
};

}  // namespace tlx
