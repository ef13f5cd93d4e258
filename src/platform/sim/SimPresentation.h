#pragma once
// The simulated presentation program: the process "POWERPNT.EXE" while it runs, and its
// application object.
#include <string>

#include "ports/PresentationApp.h"

namespace tlx {

class SimDesktop;

class SimApplication : public ppt::Application {
public:
    std::string version() const override { return "16.0"; }
    std::string name() const override { return "Microsoft PowerPoint"; }
    std::string addInPath(const std::string& addInName) const override;
    int presentationCount() const override { return 0; }
    ppt::Presentation* activePresentation() override { return nullptr; }
    int slideShowWindowCount() const override { return 0; }
    ppt::SlideShowWindow* slideShowWindow(int) override { return nullptr; }
    ppt::Slide* activeWindowSlide() override { return nullptr; }
    void activateActiveWindow() override {}
    void run(const std::string& macro, const std::vector<ppt::MacroArg>& args) override;
    bool menuBarControlExists(const std::string& caption) const override { return caption == "&Kelvarin"; }

    std::string addInFolder;
    std::vector<std::string> macrosRun;
};

class SimPresentationApp : public PresentationApp {
public:
    explicit SimPresentationApp(SimDesktop& desktop) : desktop_(desktop) {}
    ppt::Application* getActiveObject() override;

    // Starts and quits the simulated program.
    void start();
    void quit();
    bool running() const { return running_; }
    SimApplication& application() { return app_; }

private:
    SimDesktop& desktop_;
    SimApplication app_;
    bool running_ = false;
};

}  // namespace tlx
