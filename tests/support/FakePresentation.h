#pragma once
// A tiny presentation program for tests that need a presentation with a folder, tags,
// slides and a running show, without reading any deck.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ports/PresentationApp.h"

namespace tlx::test {

class TestWorld;
class FakePresentation;

class FakeTags : public ppt::Tags {
public:
    std::string item(const std::string& name) const override;
    void add(const std::string& name, const std::string& value) override;
    void remove(const std::string& name) override;
    int count() const override { return static_cast<int>(items_.size()); }
    std::string name(int index) const override;
    std::string value(int index) const override;

private:
    std::vector<std::pair<std::string, std::string>> items_;
};

class FakeSlide : public ppt::Slide {
public:
    explicit FakeSlide(int number) : number_(number) {}
    int slideNumber() const override { return number_; }
    int slideIndex() const override { return number_; }
    ppt::Tags& tags() override { return tags_; }
    int shapeCount() const override { return 0; }
    ppt::Shape* shape(int) override { return nullptr; }
    ppt::Shape* shapeByName(const std::string&) override { return nullptr; }
    ppt::Shape* addTextBox(const std::string&, const std::string&) override { return nullptr; }

private:
    int number_;
    FakeTags tags_;
};

class FakeShowWindow : public ppt::SlideShowWindow, private ppt::SlideShowView {
public:
    FakeShowWindow(FakePresentation& p, int slide) : p_(p), current_(slide) {}
    bool isFullScreen() const override { return true; }
    void activate() override {}
    std::intptr_t hwnd() const override { return 4242; }
    ppt::SlideShowView& view() override { return *this; }
    ppt::Presentation& presentation() override;
    int current() const { return current_; }

private:
    ppt::Slide* slide() override;
    void next() override { ++current_; }
    void previous() override { if (current_ > 1) --current_; }
    void gotoSlide(int index) override { current_ = index; }
    FakePresentation& p_;
    int current_;
};

class FakePresentation : public ppt::Presentation {
public:
    FakePresentation(std::string path, int slides);
    std::string name() const override { return "deck.pptx"; }
    std::string path() const override { return path_; }
    std::string fullName() const override { return path_.empty() ? name() : path_ + "/" + name(); }
    int slideCount() const override { return static_cast<int>(slides_.size()); }
    ppt::Slide* slide(int index) override;
    ppt::Tags& tags() override { return tags_; }
    ppt::SlideShowWindow* slideShowWindow() override { return show_.get(); }
    int showType() const override { return 1; }
    void save() override { ++saves; }

    // Starts a show on a slide; ends it.
    void beginShow(int slide) { show_ = std::make_unique<FakeShowWindow>(*this, slide); }
    void endShow() { show_.reset(); }
    FakeShowWindow* show() { return show_.get(); }
    int saves = 0;

private:
    std::string path_;
    std::vector<std::unique_ptr<FakeSlide>> slides_;
    FakeTags tags_;
    std::unique_ptr<FakeShowWindow> show_;
};

struct MacroCall {
    std::string macro;
    std::vector<ppt::MacroArg> args;
};

class FakeApplication : public ppt::Application {
public:
    std::string version() const override { return versionText; }
    std::string name() const override { return "Microsoft PowerPoint"; }
    std::string versionText = "16.0";
    std::string addInPath(const std::string& addInName) const override;
    int presentationCount() const override { return static_cast<int>(presentations.size()); }
    ppt::Presentation* activePresentation() override;
    int slideShowWindowCount() const override;
    ppt::SlideShowWindow* slideShowWindow(int index) override;
    ppt::Slide* activeWindowSlide() override { return nullptr; }
    void activateActiveWindow() override {}
    void run(const std::string& macro, const std::vector<ppt::MacroArg>& args) override;
    bool menuBarControlExists(const std::string&) const override { return true; }

    // Opens a presentation (it becomes the active one).
    FakePresentation& open(const std::string& path, int slides = 5);
    std::vector<std::unique_ptr<FakePresentation>> presentations;
    int active = -1;  // index into presentations, -1: none active
    std::vector<MacroCall> macrosRun;
    // A macro of this name fails as the program would report it.
    std::string failingMacro;
};

class FakePresentationApp : public PresentationApp {
public:
    ppt::Application* getActiveObject() override { return running ? &app : nullptr; }
    FakeApplication app;
    bool running = true;
};

// Builds the world's controller again on the fake program (before the world starts). The
// fake must outlive the world.
void useFakePresentation(TestWorld& world, FakePresentationApp& presentation);

}  // namespace tlx::test
