#pragma once
// The desktop around the controller: environment, folders, processes, windows, keys and the
// clipboard.
#include <filesystem>
#include <string>
#include <vector>

namespace tlx {

enum class WindowStyle { Normal, Hidden, Minimized, MinimizedNoFocus, MinimizedFocus, Maximized };

class Desktop {
public:
    virtual ~Desktop() = default;

    // Environment variable, "" when unset. The adapter answers APPDATA, PROGRAMDATA,
    // ALLUSERSPROFILE and TEMP with this platform's folders when they are not set.
    virtual std::string environment(const std::string& name) const = 0;
    // Folder of the program file, and the program file's name without extension.
    virtual std::filesystem::path installFolder() const = 0;
    virtual std::string programName() const = 0;
    // Text of the operating-system version and of its service pack.
    virtual std::string osVersion() const = 0;
    virtual std::string servicePack() const = 0;

    // Names of the running processes, as the process list shows them (e.g. "POWERPNT.EXE").
    virtual std::vector<std::string> processes() const = 0;
    // Starts a program; false when it could not be started.
    virtual bool startProgram(const std::filesystem::path& program, const std::string& arguments,
                              WindowStyle style) = 0;
    // Ends this process (after the current event has returned).
    virtual void endProcess(int exitCode) = 0;

    // Windows.
    virtual std::string foregroundWindowClass() const = 0;
    virtual bool setTopMost(std::intptr_t window, bool topMost) = 0;
    virtual void showTaskBar(bool show) = 0;
    virtual bool taskBarVisible() const = 0;
    virtual void minimizeAllWindows() = 0;
    virtual void restoreAllWindows() = 0;
    // Synthetic key strokes to the foreground window (virtual-key codes).
    virtual void sendKey(int virtualKey) = 0;
    // Typed text as key strokes, "{ENTER}" standing for the Enter key.
    virtual void sendKeys(const std::string& keys) = 0;
    virtual void clipCursor(bool clip) = 0;
    // Enables or disables every top-level window of a program (by process name).
    virtual void enableProcessWindows(const std::string& process, bool enabled) = 0;

    // The clipboard's text: setting it replaces whatever the clipboard held; "" when it holds
    // no text.
    virtual void setClipboardText(const std::string& text) = 0;
    virtual std::string clipboardText() const = 0;
};

// True when a process of that name runs (compared without regard to case).
bool processRunning(const Desktop& desktop, const std::string& name);

}  // namespace tlx
