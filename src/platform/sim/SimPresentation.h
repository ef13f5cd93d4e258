#pragma once
// The simulated presentation program: the process "POWERPNT.EXE" while it runs, real .pptx
// decks as its presentations, a slide show whose window has the focus while it runs, the
// add-in's macros, and, in the add-in's role, the show's notifications to the controller.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/Signal.h"
#include "platform/files/pptx/Deck.h"
#include "platform/sim/SimControls.h"
#include "ports/PresentationApp.h"

namespace tlx {

class Scheduler;
class SimDesktop;
class SimKeyboard;
class SimPresentationApp;
class SimDocument;

inline constexpr const char* kShowWindowClass = "screenClass";
inline constexpr const char* kFrameWindowClass = "PP14FrameClass";
// Keys of the program's own: F5 begins the show from its window, F11 switches the show
// between full screen and a window.
inline constexpr int kVkF5 = 116;
inline constexpr int kVkF11 = 122;

class SimTags : public ppt::Tags {
public:
    explicit SimTags(pptx::TagList& list) : list_(list) {}
    std::string item(const std::string& name) const override { return list_.item(name); }
    void add(const std::string& name, const std::string& value) override { list_.add(name, value); }
    void remove(const std::string& name) override { list_.remove(name); }
    int count() const override { return list_.count(); }
    std::string name(int index) const override;
    std::string value(int index) const override;

private:
    pptx::TagList& list_;
};

class SimShape : public ppt::Shape {
public:
    explicit SimShape(pptx::DeckShape& shape) : s_(shape) {}
    std::string name() const override { return s_.name(); }
    bool hasTextFrame() const override { return s_.hasTextFrame(); }
    std::string text() const override;
    void setText(const std::string& text) override;
    int paragraphCount() const override;
    std::string paragraph(int index) const override;
    void setParagraph(int index, const std::string& text) override;
    bool visible() const override;
    void setVisible(bool visible) override;
    void bringToFront() override;
    void remove() override;

private:
    void check() const;
    pptx::DeckShape& s_;
};

class SimSlide : public ppt::Slide {
public:
    explicit SimSlide(pptx::DeckSlide& slide) : s_(slide), tags_(slide.tags()) {}
    int slideNumber() const override { return s_.number(); }
    int slideIndex() const override { return s_.index(); }
    ppt::Tags& tags() override { return tags_; }
    int shapeCount() const override;
    ppt::Shape* shape(int index) override;
    ppt::Shape* shapeByName(const std::string& name) override;
    ppt::Shape* addTextBox(const std::string& name, const std::string& text) override;
    pptx::DeckSlide& deckSlide() { return s_; }

private:
    ppt::Shape* wrap(pptx::DeckShape* shape);
    std::vector<pptx::DeckShape*> live() const;
    pptx::DeckSlide& s_;
    SimTags tags_;
    std::map<pptx::DeckShape*, std::unique_ptr<SimShape>> shapes_;
};

class SimShowWindow : public ppt::SlideShowWindow, public ppt::SlideShowView {
public:
    SimShowWindow(SimPresentationApp& app, SimDocument& doc, std::intptr_t hwnd, int index);
    bool isFullScreen() const override { return fullScreen; }
    void activate() override;
    std::intptr_t hwnd() const override { return hwnd_; }
    ppt::SlideShowView& view() override { return *this; }
    ppt::Presentation& presentation() override;
    ppt::Slide* slide() override;
    void next() override;
    void previous() override;
    void gotoSlide(int index) override;

    int index() const { return index_; }
    bool fullScreen = true;
    bool blanked = false;

private:
    SimPresentationApp& app_;
    SimDocument& doc_;
    std::intptr_t hwnd_;
    int index_;
};

class SimDocument : public ppt::Presentation {
public:
    SimDocument(SimPresentationApp& app, pptx::Deck deck);
    std::string name() const override;
    std::string path() const override;
    std::string fullName() const override;
    int slideCount() const override { return deck_.slideCount(); }
    ppt::Slide* slide(int index) override;
    ppt::Tags& tags() override { return tags_; }
    ppt::SlideShowWindow* slideShowWindow() override;
    int showType() const override { return 1; }  // presented by a speaker, full screen
    bool showWithAnimation() const override { return showWithAnimation_; }
    void setShowWithAnimation(bool on) override {
        showWithAnimation_ = on;
        ++showWithAnimationSets;
    }
    // How often the show's animation setting was applied.
    int showWithAnimationSets = 0;
    void save() override;
    pptx::Deck& deck() { return deck_; }
    SimSlide* simSlide(int index);

private:
    SimPresentationApp& app_;
    pptx::Deck deck_;
    SimTags tags_;
    std::vector<std::unique_ptr<SimSlide>> slides_;
    bool showWithAnimation_ = true;
};

class SimApplication : public ppt::Application {
public:
    explicit SimApplication(SimPresentationApp& app) : app_(app) {}
    std::string version() const override { return "16.0"; }
    std::string name() const override { return "Microsoft PowerPoint"; }
    std::string addInPath(const std::string& addInName) const override;
    int presentationCount() const override;
    ppt::Presentation* activePresentation() override;
    int slideShowWindowCount() const override;
    ppt::SlideShowWindow* slideShowWindow(int index) override;
    ppt::Slide* activeWindowSlide() override;
    void activateActiveWindow() override;
    void run(const std::string& macro, const std::vector<ppt::MacroArg>& args) override;
    bool menuBarControlExists(const std::string& caption) const override { return caption == "&Kelvarin"; }

private:
    SimPresentationApp& app_;
};

class SimPresentationApp : public PresentationApp, public SimShowControl {
public:
    SimPresentationApp(Scheduler& scheduler, SimDesktop& desktop, SimKeyboard* keyboard = nullptr);
    ~SimPresentationApp() override;

    ppt::Application* getActiveObject() override;

    // The program starts and quits (quitting closes its presentations without a word).
    void start();
    void quit();
    bool running() const { return running_; }
    SimApplication& application() { return app_; }

    // The scripted show.
    SimError Open(const std::string& path) override;
    SimError Begin() override;
    SimError Next() override;
    SimError Previous() override;
    SimError GoTo(int slide) override;
    SimError End() override;
    SimError Close() override;
    SimError KeyDown(int vk) override;
    SimError KeyUp(int vk) override;
    SimResult<int> CurrentSlide() override;
    SimResult<std::string> PresentationTag(const std::string& name) override;
    SimResult<std::string> SlideTag(int slide, const std::string& name) override;
    SimResult<std::string> SlideText(int slide, const std::string& shape) override;

    // In the add-in's role: what the add-in tells the controller about the show.
    struct AddIn {
        std::function<void(std::int64_t window)> showBegin;
        std::function<void()> nextSlide;
        std::function<void()> showEnd;
        std::function<void()> closing;
    } addIn;

    // The add-in's folder (AddIns("tallix").Path).
    std::string addInFolder;
    // The display program each vote tag starts ("DoRapidpoll"): program and arguments.
    struct Display {
        std::string program;
        std::string arguments;
    };
    std::map<std::string, Display> displays;
    // Starts a display program under its process name and calls displayEnded when it has
    // gone; without it the program is started through the desktop and stays listed.
    std::function<bool(const Display&, const std::string& processName)> launchDisplay;
    // The simulated program's own notes (macros run, show moves).
    std::function<void(const std::string&)> note;
    const std::vector<std::string>& macrosRun() const { return macrosRun_; }
    // A display program that was started has ended: it leaves the process list.
    void displayEnded(const std::string& processName);

    SimDocument* active();
    SimShowWindow* show() { return show_.get(); }
    int editSlide = 1;

    // What a window of the program would draw has changed: a presentation opened, the show
    // began, moved, was blanked, changed its full-screen state or ended, the program quit.
    Signal<> screenChanged;

private:
    friend class SimApplication;
    friend class SimShowWindow;
    void log(const std::string& text);
    void slideChanged();
    void runMacro(const std::string& macro, const std::vector<ppt::MacroArg>& args);
    void doRapidpoll();
    void onForegroundKey(int vk, bool released);
    SimError needShow();
    // The active presentation's slide, or why there is none.
    ppt::Slide* slideOrError(int slide, SimError& error);

    Scheduler& scheduler_;
    SimDesktop& desktop_;
    SimKeyboard* keyboard_;
    SimApplication app_;
    bool running_ = false;
    std::vector<std::unique_ptr<SimDocument>> documents_;
    std::unique_ptr<SimShowWindow> show_;
    std::intptr_t nextHwnd_ = 0x10010;
    std::string typedDigits_;
    std::vector<std::string> macrosRun_;
    int keyTime_ = 0;
};

// The program name a display program of each vote tag runs under.
std::string displayProcessName(const std::string& voteTag);

}  // namespace tlx
