#pragma once
// The settings file "tlx.ini": profile strings read and written as the platform's profile
// functions do, the switches read one at a time with their defaults, and SaveSettings.
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tlx {

struct GlobalState;
class Desktop;
class Options;

// Profile-string access to one file. A missing file or key gives the default; a value in
// double quotes is read without them. Reading never throws.
std::string GetProfileString(const std::filesystem::path& file, const std::string& section,
                             const std::string& key, const std::string& defaultValue);
// True when the key is present in the file.
bool HasProfileString(const std::filesystem::path& file, const std::string& section,
                      const std::string& key);
bool WriteProfileString(const std::filesystem::path& file, const std::string& section,
                        const std::string& key, const std::string& value);

// Several profile writes to one file, loaded once and saved once.
class ProfileWriter {
public:
    explicit ProfileWriter(std::filesystem::path file);
    ~ProfileWriter();
    void set(const std::string& section, const std::string& key, const std::string& value);
    bool save();

private:
    struct Impl;
    Impl* impl_;
};

// Reads a settings file in full as key and value pairs, in either form: "KEY=value" lines, or
// the older "KEY,value" form (recognised by "DETECTOR STATUS,"). Section lines are skipped.
std::vector<std::pair<std::string, std::string>> readSettingsFileInFull(
    const std::filesystem::path& file, bool* commaForm = nullptr);

// The settings files as the controller reads its options and texts: each key in its section,
// from the first file that has it (the per-user file before the shared one). A file in the
// older comma form has no sections, so its keys are matched by name alone. Files are read
// once, when the reader is made; missing or unreadable files have no keys.
class SettingsFiles {
public:
    explicit SettingsFiles(const std::vector<std::filesystem::path>& files);
    ~SettingsFiles();
    SettingsFiles(const SettingsFiles&) = delete;
    SettingsFiles& operator=(const SettingsFiles&) = delete;
    // The value, or false when no file has the key.
    bool get(const std::string& section, const std::string& key, std::string& value) const;
    std::string text(const std::string& section, const std::string& key, const std::string& defaultValue) const {
        std::string v;
        return get(section, key, v) ? v : defaultValue;
    }

private:
    struct Layer;
    std::vector<Layer*> layers_;
};

class Settings {
public:
    Settings(GlobalState& glo, Desktop& desktop) : glo_(glo), desktop_(desktop) {}

    // %APPDATA%/tallix/tlx.ini and %ALLUSERSPROFILE%/tallix/tlx.ini.
    std::filesystem::path userFile() const;
    std::filesystem::path allUsersFile() const;
    // The per-user data folder's tlx.ini, which SaveSettings writes.
    std::filesystem::path dataFolderFile() const;

    // A switch's text: the per-user file, then the all-users file, then the default.
    std::string readSwitchText(const std::string& section, const std::string& key,
                               const std::string& defaultValue) const;
    // On when the value reads as a number other than 0.
    bool readSwitch(const std::string& section, const std::string& key,
                    const std::string& defaultValue) const;

    bool LogEventsToFile() const;
    bool ShowAllErrors() const;
    bool DisableParticipantList() const;
    bool DisableForceSlideShowNoTopMost() const;
    bool DisableForceSlideShowTopMost() const;
    bool MinimizeWindowsOnSlideShowStart() const;
    bool DisableDisablingPptWindows() const;
    bool DisablePptSaveAfterVoteClose() const;
    bool HidePptEditWindowsInSetResultsDisplayMode() const;
    bool DebugAcceptDetectAsVotes() const;
    bool ShowBaseStatusDuringLiveVote() const;
    std::string ChartExportFormat() const;

    // The per-user file (the data folder's, or %APPDATA%'s before the folders are resolved)
    // and the shared one, in that order of precedence.
    std::vector<std::filesystem::path> readFiles() const;
    // Reads every option of the table from its section of both files (either form), keeping
    // the defaults for what neither has.
    void loadOptions(Options& options) const;
    // Writes every option, in order, to the data folder's file.
    bool SaveSettings(const Options& options) const;

private:
    GlobalState& glo_;
    Desktop& desktop_;
};

}  // namespace tlx
