#pragma once
// What a scripted show drives: the simulated presentation program and the simulated base
// stations each offer one of these, and the automation server publishes them to its
// clients. A call that cannot be carried out says why in its error text (an empty text
// means it worked); the server hands that text back to the caller as an error.
#include <string>
#include <vector>

namespace tlx {

using SimError = std::string;

template <class T>
struct SimResult {
    T value{};
    SimError error;
};

class SimShowControl {
public:
    virtual ~SimShowControl() = default;
    // Opens a deck (.pptx) as the active presentation.
    virtual SimError Open(const std::string& path) = 0;
    virtual SimError Begin() = 0;
    virtual SimError Next() = 0;
    virtual SimError Previous() = 0;
    virtual SimError GoTo(int slide) = 0;
    virtual SimError End() = 0;
    // The presentation program quits.
    virtual SimError Close() = 0;
    // Keys typed on the foreground window (virtual-key codes).
    virtual SimError KeyDown(int vk) = 0;
    virtual SimError KeyUp(int vk) = 0;
    virtual SimResult<int> CurrentSlide() = 0;
    virtual SimResult<std::string> PresentationTag(const std::string& name) = 0;
    virtual SimResult<std::string> SlideTag(int slide, const std::string& name) = 0;
    // The text of a named shape on a slide (paragraphs joined by "\r"); "" when the slide has
    // no such shape. Display programs read a vote slide's question and answers this way.
    virtual SimResult<std::string> SlideText(int slide, const std::string& shape) {
        (void)slide;
        (void)shape;
        return {"", "slide texts cannot be read here"};
    }
};

class SimBasesControl {
public:
    virtual ~SimBasesControl() = default;
    // `base` is the base's PORT as the port file names it.
    virtual SimError Press(const std::string& base, int keypad, const std::string& keys) = 0;
    // Every keypad of the base's registry up to `keypads` presses one of the answers, at
    // `perSecond` presses a second.
    virtual SimError Crowd(const std::string& base, int keypads, const std::string& answers, int perSecond) = 0;
    virtual SimError MicRequest(const std::string& base, int keypad, bool withdraw) = 0;
    virtual SimError Text(const std::string& base, int keypad, const std::string& text) = 0;
    // The base's `operation` (as the base-station library names it) fails with status `code`.
    virtual SimError Fail(const std::string& base, const std::string& operation, int code) = 0;
    virtual SimError Disconnect(const std::string& base) = 0;
    virtual SimError Reconnect(const std::string& base) = 0;
    // Each simulated base as "TYPE;PORT", e.g. "KELVARIN COREHUB G2;100100100100".
    virtual SimResult<std::vector<std::string>> Bases() = 0;
    // What a keypad's display shows now ("|" between its lines).
    virtual SimResult<std::string> Screen(const std::string& base, int keypad) {
        (void)base;
        (void)keypad;
        return {"", "keypad screens cannot be read here"};
    }
};

}  // namespace tlx
