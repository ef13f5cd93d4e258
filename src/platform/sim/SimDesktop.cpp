#include "platform/sim/SimDesktop.h"

#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>

namespace tlx {

namespace fs = std::filesystem;

namespace {

std::string getenvOr(const char* name, const std::string& fallback = {}) {
    const char* v = std::getenv(name);
    return v && *v ? std::string(v) : fallback;
}

std::string upper(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// The first folder of the XDG data dirs we may write to, else the user's own data folder.
std::string sharedDataFolder() {
    const std::string dirs = getenvOr("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    std::size_t pos = 0;
    while (pos <= dirs.size()) {
        const std::size_t end = std::min(dirs.find(':', pos), dirs.size());
        const std::string d = dirs.substr(pos, end - pos);
        if (!d.empty() && ::access(d.c_str(), W_OK) == 0) return d;
        pos = end + 1;
    }
    return getenvOr("XDG_DATA_HOME", getenvOr("HOME", "/tmp") + "/.local/share");
}

// The per-user temporary folder, as %TEMP% is on the original platform: the trace files go
// there, and a folder every user can write to (/tmp) would let another user read them or
// plant a file in their place. $TMPDIR when the user names one; otherwise the session's
// runtime folder (private by design), else a private folder in the user's cache.
std::string privateTempFolder(const std::string& home) {
    const std::string chosen = getenvOr("TMPDIR");
    if (!chosen.empty()) return chosen;
    const std::string runtime = getenvOr("XDG_RUNTIME_DIR");
    struct stat st {};
    if (!runtime.empty() && ::stat(runtime.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == ::getuid() &&
        (st.st_mode & 077) == 0)
        return runtime;
    const std::string cache = getenvOr("XDG_CACHE_HOME", home + "/.cache") + "/tallix/temp";
    std::error_code ec;
    fs::create_directories(cache, ec);
    fs::permissions(cache, fs::perms::owner_all, fs::perm_options::replace, ec);
    return cache;
}

}  // namespace

SimDesktop::SimDesktop() {
    std::error_code ec;
    const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    installFolder_ = ec ? fs::current_path() : exe.parent_path();
}

std::string SimDesktop::environment(const std::string& name) const {
    if (auto it = env_.find(name); it != env_.end()) return it->second;
    // The program's names are Windows ones, where "Temp" and "TEMP" are one variable: an
    // exact match first, then the name in any case.
    for (const auto& [key, value] : env_)
        if (upper(key) == upper(name)) return value;
    std::string real = getenvOr(name.c_str());
    if (real.empty()) real = getenvOr(upper(name).c_str());
    if (!real.empty()) return real;
    const std::string home = getenvOr("HOME", "/tmp");
    if (name == "APPDATA") return getenvOr("XDG_CONFIG_HOME", home + "/.config");
    if (name == "PROGRAMDATA" || name == "ALLUSERSPROFILE") return sharedDataFolder();
    if (name == "TEMP" || name == "Temp" || name == "TMP") return privateTempFolder(home);
    return {};
}

std::string SimDesktop::osVersion() const {
    std::ifstream in("/etc/os-release");
    std::string line;
    while (std::getline(in, line))
        if (line.rfind("PRETTY_NAME=", 0) == 0) {
            std::string v = line.substr(12);
            v.erase(std::remove(v.begin(), v.end(), '"'), v.end());
            return v;
        }
    return "Linux";
}

std::string SimDesktop::servicePack() const {
    utsname u{};
    if (::uname(&u) != 0) return {};
    return std::string(u.sysname) + " " + u.release;
}

bool SimDesktop::startProgram(const fs::path& program, const std::string& arguments, WindowStyle style) {
    Started s{program, arguments, style};
    started_.push_back(s);
    if (onStart) return onStart(s);
    return true;
}

void SimDesktop::endProcess(int exitCode) {
    ended_ = true;
    exitCode_ = exitCode;
    if (onEndProcess) onEndProcess(exitCode);
}

bool SimDesktop::setTopMost(std::intptr_t window, bool topMost) {
    topMost_[window] = topMost;
    return true;
}

bool SimDesktop::topMost(std::intptr_t window) const {
    auto it = topMost_.find(window);
    return it != topMost_.end() && it->second;
}

void SimDesktop::sendKey(int virtualKey) {
    keysSent_.push_back(virtualKey);
    if (onKey) onKey(virtualKey);
}

void SimDesktop::sendKeys(const std::string& keys) {
    std::size_t i = 0;
    while (i < keys.size()) {
        if (keys.compare(i, 7, "{ENTER}") == 0) {
            sendKey(13);
            i += 7;
            continue;
        }
        const char c = keys[i++];
        sendKey(std::toupper(static_cast<unsigned char>(c)));
    }
}

void SimDesktop::addProcess(const std::string& name) {
    if (std::find(processes_.begin(), processes_.end(), upper(name)) == processes_.end())
        processes_.push_back(upper(name));
}

void SimDesktop::removeProcess(const std::string& name) {
    processes_.erase(std::remove(processes_.begin(), processes_.end(), upper(name)), processes_.end());
}

}  // namespace tlx

namespace tlx {

void SimDesktop::enableProcessWindows(const std::string& process, bool enabled) {
    windowsEnabled_[upper(process)] = enabled;
}

bool SimDesktop::processWindowsEnabled(const std::string& process) const {
    auto it = windowsEnabled_.find(upper(process));
    return it == windowsEnabled_.end() || it->second;
}

}  // namespace tlx
