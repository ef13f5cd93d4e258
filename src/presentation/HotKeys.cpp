#include "presentation/HotKeys.h"

#include <cctype>

#include "audio/AudioWindow.h"
#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "ports/Desktop.h"
#include "ports/PresentationApp.h"
#include "presentation/PresentationWatcher.h"

namespace tlx {

namespace {
constexpr const char* kModule = "KeyboardHook";
constexpr int kHookActiveColour = 65280;  // green
constexpr int kHookDisabledColour = 255;  // red
const char* const kFrameClasses[] = {"PP14FrameClass", "PP12FrameClass", "PP11FrameClass",
                                     "PP10FrameClass", "PP9FrameClass",  "PP7FrameClass"};

std::string keyChar(int code) { return std::string(1, static_cast<char>(code)); }
bool tagSet(ppt::Tags& tags, const char* name) { return !tags.item(name).empty(); }
}  // namespace

KeyboardHook::KeyboardHook(Controller& controller) : c_(controller) {}

KeyboardHook::~KeyboardHook() = default;

void KeyboardHook::queue(const std::string& command) {
    if (MainForm* m = c_.mainForm()) m->AddDataToCommandQueue(command);
}

void KeyboardHook::LowLevelKeyboardProc(const KeyEvent& key) {
    MainForm* m = c_.mainForm();
    if (!m) return;
    // Only notes and queued commands happen here: no presentation work inside the hook.
    trap(c_.errors, kModule, "LowLevelKeyboardProc", [&] {
        if (m->chkRepeatFilter && haveLast_ && key.vkCode == last_.vkCode && key.flags == last_.flags &&
            key.time - last_.time < kRepeatFilterMs)
            return;
        last_ = key;
        haveLast_ = true;

        const int code = key.vkCode;
        const bool up = key.released();
        if (code >= vk::kLShift && code <= vk::kRAlt) {
            held_[code - vk::kLShift] = !up;
            m->modifierIndicators[code - vk::kLShift] = !up;
            m->changed();
        }

        if (code == 'V' && up) {
            if (!processRunning(c_.ports.desktop, "CHARTIST.EXE") && !processRunning(c_.ports.desktop, "GRIDDER.EXE")) {
                c_.LogEvent("V Down", LOG_XX);
                c_.trace("V Down", "LowLevelKeyboardProc", kModule);
                m->tmrCheck4Vote.setEnabled(true);
            } else {
                c_.LogEvent("V Down - Matrix/Vote already running", LOG_XX);
                c_.trace("V Down - Matrix/Vote already running", "LowLevelKeyboardProc", kModule);
            }
        }

        if (c_.glo.hotKeysSuspended) return;

        if (up && code >= 65 && code <= 122 && held_[2] && held_[3]) queue("ADMIN KEYDOWN=" + keyChar(code));

        const bool shift = shiftHeld(), ctrl = ctrlHeld(), alt = altHeld();
        if (!(shift && ctrl && alt)) {
            if (!up) return;
            // "0" is left out on purpose: the digit range starts at "1".
            const bool navigation = code >= vk::kPageUp && code <= vk::kHome;
            const bool character = (code >= '1' && code <= '9') || (code >= 'A' && code <= 'z');
            if (ctrl) {
                if (navigation)
                    queue("CTRL KEYDOWN=" + numText(code));
                else if (character)
                    queue("CTRL KEYDOWN=" + keyChar(code));
            }
            if (alt) {
                if (navigation)
                    queue("ALT KEYDOWN=" + numText(code));
                else if (character)
                    queue("ALT KEYDOWN=" + keyChar(code));
            }
            if (!shift && !ctrl && !alt && c_.glo.modeKeysEnabled) {
                switch (code) {
                    case 'X': queue("Detect Mode=-1"); break;
                    case 'F': queue("Detect Mode=1"); break;
                    case 'D': queue("Detect Mode=2"); break;
                    case 'S': queue("Detect Mode=3"); break;
                    default: break;
                }
            }
            return;
        }
        if (!up) return;
        switch (std::toupper(code)) {
            case 'F': queue("FreeCursor"); break;
            case 'D': queue("SwitchToDebugView"); break;
            case 'E': queue("EnablePPT"); break;
            case 'X': queue("Exit"); break;
            case 'T': queue("ToggleTopMost"); break;
            default: break;
        }
    });
}

void KeyboardHook::SetHook() {
    MainForm* m = c_.mainForm();
    if (!m || !c_.keyboard) {
        if (m) {
            m->lblHookStatus = "Hot Key Disabled";
            m->chkLowLevelKeyboardHook = false;
            m->changed();
        }
        return;
    }
    const bool ok = c_.keyboard->installHook([this](const KeyEvent& k) { LowLevelKeyboardProc(k); });
    c_.glo.hookActive = ok;
    if (ok) {
        m->lblHookStatus = "Hook Active";
        m->lblHookStatusColour = kHookActiveColour;
        m->chkLowLevelKeyboardHook = true;
    } else {
        m->lblHookStatus = "Hot Key Disabled";
        m->chkLowLevelKeyboardHook = false;
    }
    m->changed();
}

void KeyboardHook::RemoveHook() {
    if (c_.keyboard) c_.keyboard->removeHook();
    c_.glo.hookActive = false;
    if (MainForm* m = c_.mainForm()) {
        m->lblHookStatus = "Hook Disabled";
        m->lblHookStatusColour = kHookDisabledColour;
        m->chkLowLevelKeyboardHook = false;
        m->changed();
    }
}

void KeyboardHook::tmr_refreshLowLevelKeyboardHook_Timer() {
    MainForm* m = c_.mainForm();
    if (!m || c_.glo.ShuttingDown || !m->chkLowLevelKeyboardHook) return;
    // A hook the system dropped is renewed.
    RemoveHook();
    SetHook();
}

void KeyboardHook::returnHotKeysToController() {
    if (auto* f = c_.forms.get<frmHotKey>(frmHotKey::kName)) f->m_cHotKey.Attach(0);
}

void KeyboardHook::attachHotKeysToShow() {
    auto* f = c_.forms.get<frmHotKey>(frmHotKey::kName);
    if (!f) return;
    f->m_cHotKey.Attach(c_.watcher->showWindowHandle());
}

void KeyboardHook::registerHotKeys() {
    auto* f = c_.forms.get<frmHotKey>(frmHotKey::kName);
    if (!f) f = &c_.forms.load<frmHotKey>(c_);
    f->RegisterPresenterKeys(0);
}

void KeyboardHook::reactivateShow() {
    ppt::Application* app = c_.glo.ppApp;
    if (!app) return;
    ppt::Presentation* active = app->activePresentation();
    for (int i = 1; i <= app->slideShowWindowCount(); ++i) {
        ppt::SlideShowWindow* w = app->slideShowWindow(i);
        if (w && &w->presentation() == active) {
            w->activate();
            return;
        }
    }
    app->activateActiveWindow();
}

bool KeyboardHook::guards(bool ctrl, const std::string& key, ppt::Slide*& slide, ppt::Presentation*& presentation) {
    const std::string who = ctrl ? "CTRL KEY PRESSED EXIT - " : "ALT KEY PRESSED EXIT - ";
    const char* proc = ctrl ? "CtrlKeyPressed" : "AltKeyPressed";
    auto log = [&](const std::string& t) {
        c_.LogEvent(t, LOG_XX);
        c_.trace(t, proc, kModule);
    };
    if (ctrl && altHeld()) {
        log("AltKeyPressed=True");
        log(who + "Alt Key also pressed");
        return false;
    }
    if (!ctrl && ctrlHeld()) {
        log("CtrlKeyPressed=True");
        log(who + "Ctrl Key also pressed");
        return false;
    }
    // A failed attach stops Ctrl and Alt alike. Alt's exit line names the empty program object
    // when there is none, and the failed attach when an old object is still held.
    if (!c_.watcher->InitPPTObject(false)) {
        log("InitPPTObject FAILED");
        log(who + (ctrl || c_.glo.ppApp ? "Not InitPPTObject" : "glo.ppApp Is Nothing"));
        return false;
    }
    if (!ctrl && !c_.glo.ppApp) {
        log(who + "glo.ppApp Is Nothing");
        return false;
    }
    if (!c_.glo.ppApp) {
        log("glo.ppApp.Presentations Is Nothing");
        log(who + "glo.ppApp.Presentations Is Nothing");
        return false;
    }
    if (c_.glo.ppApp->presentationCount() == 0) {
        log("glo.ppApp.Presentations.count = 0");
        log(who + "glo.ppApp.Presentations.count = 0");
        return false;
    }
    presentation = c_.glo.ppApp->activePresentation();
    slide = nullptr;
    if (presentation && c_.glo.ppApp->slideShowWindowCount() > 0 && presentation->slideShowWindow())
        slide = presentation->slideShowWindow()->view().slide();
    if (!slide) slide = c_.glo.ppApp->activeWindowSlide();
    const std::string cls = c_.ports.desktop.foregroundWindowClass();
    bool pptFocus = false;
    for (const char* f : kFrameClasses)
        if (cls == f) pptFocus = true;
    const bool showFocus = toUpper(cls) == "SCREENCLASS";
    log(", ShiftKeyPressed=" + boolText(shiftHeld()) + "Key=" + key + ", pptHasFocus=" + boolText(pptFocus) +
        ", pptSlideShowHasFocus=" + boolText(showFocus));
    if (!showFocus && !shiftHeld()) {
        log("SlideShow not focus, or Shift not held");
        return false;
    }
    return slide != nullptr && presentation != nullptr;
}

void KeyboardHook::actioned(bool ctrl, const std::string& key) {
    const char* proc = ctrl ? "CtrlKeyPressed" : "AltKeyPressed";
    const std::string a = "ACTIONED - '" + key + "'";
    const std::string b = std::string(ctrl ? "CTRL" : "ALT") + " KEY PRESSED ACTIONED - '" + key + "'";
    c_.LogEvent(a, LOG_XX);
    c_.trace(a, proc, kModule);
    c_.LogEvent(b, LOG_XX);
    c_.trace(b, proc, kModule);
}

void KeyboardHook::ctrlDigit(ppt::Slide& slide, ppt::Presentation& p, int digit) {
    if (tagSet(slide.tags(), "Murmelo")) {
        // Microphone slide: the digit picks the speaker's line on the slide.
        frmAudio& audio = showAudioWindow(c_);
        if (contains(slide.tags().item("TLXVOTE"), "<MurmeloControlPanel>True</MurmeloControlPanel>"))
            audio.ShowControlPanel(true);
        audio.RunFromSlide(digit);
        return;
    }
    if (tagSet(slide.tags(), "tlxvote") && tagSet(slide.tags(), "tlxvotes") && tagSet(p.tags(), "tlx_DefaultGroup")) {
        std::string folder;
        try {
            folder = c_.glo.ppApp->addInPath("tallix");
        } catch (...) {
            folder = c_.watcher->addInPath();
        }
        c_.ports.desktop.startProgram(std::filesystem::path(folder) / "chartist.exe",
                                      "tlxgroup," + numText(slide.slideIndex()) + "," + numText(digit),
                                      WindowStyle::MinimizedFocus);
        reactivateShow();
    }
}

void KeyboardHook::ctrlCharts(ppt::Slide& slide) {
    bool charts = tagSet(slide.tags(), "tlxReshow");
    for (int i = 1; i <= slide.shapeCount() && !charts; ++i)
        if (ppt::Shape* s = slide.shape(i); s && s->visible() && icontains(s->name(), "tallix chart")) charts = true;
    if (!charts) return;
    // Each chart is made visible and pasted again: put back on top of the slide, as a fresh
    // paste lands, so that nothing added after it covers it. (The object model has no
    // clipboard; bringing the shape to the front is what the paste does to it.)
    std::vector<ppt::Shape*> found;
    for (int i = 1; i <= slide.shapeCount(); ++i) {
        ppt::Shape* s = slide.shape(i);
        if (!s) continue;
        const std::string n = toLower(s->name());
        if (contains(n, " tallix chart ") || contains(n, " tallix chart 0") || startsWith(n, "reshow ")) found.push_back(s);
    }
    for (ppt::Shape* s : found) {
        s->setVisible(true);
        s->bringToFront();
    }
}

void KeyboardHook::ctrlSequence(ppt::Slide& slide) {
    if (!tagSet(slide.tags(), "SequenceVote")) return;
    auto log = [&](const std::string& t) {
        c_.LogEvent(t, LOG_XX);
        c_.trace(t, "CtrlKeyPressed", kModule);
    };
    log("CTRL T Pressed: .tags('SequenceVote') <> ''");
    auto chart = [&](int j) -> ppt::Shape* {
        if (ppt::Shape* s = slide.shapeByName(" tallix chart " + numText(j))) return s;
        return slide.shapeByName("reshow " + numText(j));
    };
    const bool found = chart(1) != nullptr;
    log("CTRL T Pressed: sequenceChartFound = " + boolText(found));
    for (int j = 1; found && j <= slide.shapeCount(); ++j) {
        ppt::Shape* s = chart(j);
        if (!s) break;
        if (s->visible()) continue;
        log("CTRL T Pressed: .Shapes(" + s->name() + ").Visible = msoFalse");
        log("CTRL T Pressed: Select Case j, j = " + numText(j));
        s->setVisible(true);
        break;
    }
}

void KeyboardHook::answerDisplay(ppt::Slide& slide, int navKey) {
    const std::vector<std::string> answers = split(slide.tags().item("tlx_answers"), "|");
    const double countTag = ParseNumber(slide.tags().item("tlx_answers_count"));
    const int count = countTag > 0 && countTag <= static_cast<double>(answers.size()) ? static_cast<int>(countTag)
                                                                                     : static_cast<int>(answers.size());
    const double visibleTag = ParseNumber(slide.tags().item("tlx_answers_visible"));
    int visible = visibleTag > 0 && visibleTag <= 1e6 ? static_cast<int>(visibleTag) : 0;
    switch (navKey) {
        case vk::kPageDown: ++visible; break;
        case vk::kPageUp: --visible; break;
        case vk::kHome: visible = 0; break;
        default: visible = count; break;  // End, and W: every answer
    }
    visible = std::clamp(visible, 0, count);
    // The answer shapes are made anew, in order, on top of everything else on the slide.
    for (int i = slide.shapeCount(); i >= 1; --i)
        if (ppt::Shape* s = slide.shape(i); s && startsWith(s->name(), "tlx_answer ")) s->remove();
    for (int i = 1; i <= visible; ++i) {
        ppt::Shape* s = slide.addTextBox("tlx_answer " + numText(i), answers[static_cast<std::size_t>(i - 1)]);
        if (s) s->bringToFront();
    }
    slide.tags().add("tlx_answers_visible", numText(visible));
}

void KeyboardHook::altRank(ppt::Slide& slide, bool next) {
    std::vector<ppt::Shape*> markers;
    for (int j = 1;; ++j) {
        ppt::Shape* s = slide.shapeByName("tallix rank marker " + numText(j));
        if (!s) break;
        markers.push_back(s);
    }
    if (next) {
        for (ppt::Shape* s : markers)
            if (!s->visible()) {
                s->setVisible(true);
                return;
            }
    } else {
        for (auto it = markers.rbegin(); it != markers.rend(); ++it)
            if ((*it)->visible()) {
                (*it)->setVisible(false);
                return;
            }
    }
}

void KeyboardHook::CtrlKeyPressed(const std::string& keyText) {
    trap(c_.errors, kModule, "CtrlKeyPressed", [&] {
        ppt::Slide* slide = nullptr;
        ppt::Presentation* p = nullptr;
        if (!guards(true, keyText, slide, p)) return;
        const std::string key = toUpper(trim(keyText));
        if (key.size() == 1 && key[0] >= '0' && key[0] <= '9') {
            ctrlDigit(*slide, *p, key[0] - '0');
            actioned(true, key);
        } else if (key == "G") {
            ctrlCharts(*slide);
            actioned(true, key);
        } else if (key == "R") {
            c_.watcher->TogglePPTSlideShowTopMost(0, false);
            std::string folder;
            try {
                folder = c_.glo.ppApp->addInPath("tallix");
            } catch (...) {
                folder = c_.watcher->addInPath();
            }
            c_.ports.desktop.startProgram(std::filesystem::path(folder) / "questor.exe", "ResultsTable",
                                          WindowStyle::Normal);
            c_.LogEvent("Show Results Table", LOG_XX);
            actioned(true, key);
        } else if (key == "T") {
            ctrlSequence(*slide);
            actioned(true, key);
        } else if (key == "W" || key == "A") {
            if (tagSet(slide->tags(), "TLXQUIZ")) answerDisplay(*slide, vk::kEnd);
            actioned(true, key);
        } else if (isNumeric(key) && ParseNumber(key) >= vk::kPageUp && ParseNumber(key) <= vk::kHome) {
            answerDisplay(*slide, static_cast<int>(ParseNumber(key)));
            actioned(true, key);
        }
    });
}

void KeyboardHook::AltKeyPressed(const std::string& keyText) {
    trap(c_.errors, kModule, "AltKeyPressed", [&] {
        ppt::Slide* slide = nullptr;
        ppt::Presentation* p = nullptr;
        if (!guards(false, keyText, slide, p)) return;
        const std::string key = toUpper(trim(keyText));
        if (key != "A" && key != "Z") return;
        ppt::Tags& tags = slide->tags();
        if (!tagSet(tags, "RankVote") && !tagSet(tags, "MultiDigitVote") && !tagSet(tags, "tlxReshow")) return;
        altRank(*slide, key == "A");
        actioned(false, key);
    });
}

cRegHotKey::cRegHotKey(Controller& controller) : c_(controller) {
    if (c_.keyboard) c_.keyboard->onHotKey = [this](int id) { onHotKey(id); };
}

cRegHotKey::~cRegHotKey() {
    Clear();
    if (c_.keyboard) c_.keyboard->onHotKey = nullptr;
}

void cRegHotKey::Attach(std::intptr_t window) { window_ = window; }

bool cRegHotKey::RegisterKey(const std::string& name, int key, int modifiers) {
    auto fail = [&](const std::string& text) {
        const AppError e(err::kInvalidProcedureCall, text);
        reportError(c_.errors, "cRegHotKey", "RegisterKey", &e);
        return false;
    };
    if (name.size() > 32) return fail("Key Name too long (max 32 characters).");
    if (keys_.count(name)) return fail("The Key Name '" + name + "' is already registered.");
    if (nextAtom_ > 0xFFFF) return fail("Failed to add GlobalAtom");
    const int atom = nextAtom_++;
    if (!c_.keyboard || !c_.keyboard->registerHotKey(atom, key, modifiers)) return fail("Failed to Register Hot Key");
    keys_[name] = atom;
    return true;
}

bool cRegHotKey::UnregisterKey(const std::string& name) {
    auto it = keys_.find(name);
    if (it == keys_.end()) {
        const AppError e(err::kInvalidProcedureCall, "No hot key registered under the name '" + name + "'");
        reportError(c_.errors, "cRegHotKey", "UnregisterKey", &e);
        return false;
    }
    if (c_.keyboard) c_.keyboard->unregisterHotKey(it->second);
    keys_.erase(it);
    return true;
}

void cRegHotKey::Clear() {
    for (const auto& [name, atom] : keys_)
        if (c_.keyboard) c_.keyboard->unregisterHotKey(atom);
    keys_.clear();
}

void cRegHotKey::RestoreAndActivate(std::intptr_t window) { c_.ports.desktop.setTopMost(window, false); }

std::string cRegHotKey::nameOf(int id) const {
    if (id == -2) return "Desktop Snapshot";
    if (id == -1) return "Window Snapshot";
    for (const auto& [name, atom] : keys_)
        if (atom == id) return name;
    return "Unknown HotKey";
}

void cRegHotKey::onHotKey(int id) {
    if (HotKeyPress) HotKeyPress(nameOf(id));
}

frmHotKey::frmHotKey(Controller& controller) : Form(kName), m_cHotKey(controller), c_(controller) {
    m_cHotKey.HotKeyPress = [this](const std::string& name) { HotKeyPress(name); };
    setCaption("Hot Key");
    lblStatus = "Hot Key Disabled";  // until the keys are registered
}

void frmHotKey::RegisterPresenterKeys(std::intptr_t window) {
    m_cHotKey.Clear();
    m_cHotKey.Attach(window);
    const bool ok = m_cHotKey.RegisterKey("V", 'V', 0) && m_cHotKey.RegisterKey("X", 'X', 0);
    lblStatus = ok ? "Hot Key Enabled" : "Hot Key Disabled";
    changed();
}

void frmHotKey::HotKeyPress(const std::string& name) {
    MainForm* m = c_.mainForm();
    if (!m || c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
    if (name == "V") {
        if (processRunning(c_.ports.desktop, "GRIDDER.EXE")) return;
        c_.LogEvent("V Down (HotKey - Win 98/ME)", LOG_XX);
        m->tmrCheck4Vote.setEnabled(true);
        return;
    }
    if (name == "X") {
        // X arms the three base-station mode keys for one press.
        modeKeysArmed_ = m_cHotKey.RegisterKey("F", 'F', 0) && m_cHotKey.RegisterKey("D", 'D', 0) &&
                         m_cHotKey.RegisterKey("S", 'S', 0);
        return;
    }
    if (!modeKeysArmed_) return;
    if (name == "F") {
        c_.LogEvent("KV3 FallBack Mode Enabled 254s (HotKey - Win 98/ME)", LOG_XX);
        m->AddDataToCommandQueue("Detect Mode=1");
    } else if (name == "D") {
        c_.LogEvent("KV3 Detect Mode Enabled 30s (HotKey - Win 98/ME)", LOG_XX);
        m->AddDataToCommandQueue("Detect Mode=2");
    } else if (name == "S") {
        c_.LogEvent("KV3 Sentry Mode Enabled 5s (HotKey - Win 98/ME)", LOG_XX);
        m->AddDataToCommandQueue("Detect Mode=3");
    } else {
        return;
    }
    modeKeysArmed_ = false;
    for (const char* k : {"F", "D", "S"}) m_cHotKey.UnregisterKey(k);
}

}  // namespace tlx
