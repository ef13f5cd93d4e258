#pragma once
// The desktop on this platform when no real slide program runs beside us: the environment
// and folders are real (with this platform's folders standing in for the Windows ones), the
// process list, windows and key strokes are simulated.
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "ports/Desktop.h"

namespace tlx {

class SimDesktop : public Desktop {
public:
    SimDesktop();

    std::string environment(const std::string& name) const override;
    std::filesystem::path installFolder() const override { return installFolder_; }
    std::string programName() const override { return programName_; }
    std::string osVersion() const override;
    std::string servicePack() const override;
    std::vector<std::string> processes() const override { return processes_; }
    bool startProgram(const std::filesystem::path& program, const std::string& arguments,
                      WindowStyle style) override;
    void endProcess(int exitCode) override;
    std::string foregroundWindowClass() const override { return foregroundClass_; }
    bool setTopMost(std::intptr_t window, bool topMost) override;
    void showTaskBar(bool show) override { taskBarVisible_ = show; }
    bool taskBarVisible() const override { return taskBarVisible_; }
    void minimizeAllWindows() override { othersMinimized_ = true; }
    void restoreAllWindows() override { othersMinimized_ = false; }
    void sendKey(int virtualKey) override;
    void sendKeys(const std::string& keys) override;
    void clipCursor(bool clip) override { cursorClipped_ = clip; }
    void enableProcessWindows(const std::string& process, bool enabled) override;
    // The simulated clipboard keeps the text.
    void setClipboardText(const std::string& text) override { clipboard_ = text; }
    std::string clipboardText() const override { return clipboard_; }
    bool processWindowsEnabled(const std::string& process) const;

    // Simulation controls.
    void setEnvironment(const std::string& name, const std::string& value) { env_[name] = value; }
    void setInstallFolder(std::filesystem::path p) { installFolder_ = std::move(p); }
    void setProgramName(std::string n) { programName_ = std::move(n); }
    void addProcess(const std::string& name);
    void removeProcess(const std::string& name);
    void setForegroundWindowClass(std::string c) { foregroundClass_ = std::move(c); }
    bool topMost(std::intptr_t window) const;
    bool othersMinimized() const { return othersMinimized_; }
    bool cursorClipped() const { return cursorClipped_; }

    struct Started {
        std::filesystem::path program;
        std::string arguments;
        WindowStyle style;
    };
    const std::vector<Started>& started() const { return started_; }
    const std::vector<int>& keysSent() const { return keysSent_; }
    bool ended() const { return ended_; }
    int exitCode() const { return exitCode_; }

    // Who else hears about key strokes and starts (the simulated show, the wiring).
    std::function<void(int virtualKey)> onKey;
    std::function<bool(const Started&)> onStart;
    std::function<void(int exitCode)> onEndProcess;

private:
    std::map<std::string, std::string> env_;
    std::filesystem::path installFolder_;
    std::string programName_ = "tlxctrl";
    std::vector<std::string> processes_;
    std::string foregroundClass_ = "Progman";
    std::map<std::intptr_t, bool> topMost_;
    bool taskBarVisible_ = true;
    bool othersMinimized_ = false;
    bool cursorClipped_ = false;
    std::vector<Started> started_;
    std::map<std::string, bool> windowsEnabled_;
    std::vector<int> keysSent_;
    bool ended_ = false;
    int exitCode_ = 0;
    std::string clipboard_;
};

}  // namespace tlx
