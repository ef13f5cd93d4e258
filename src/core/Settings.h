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

    // Reads every option of the table from the data folder's file (either form), keeping
    // the defaults for what is missing or unreadable.
    void loadOptions(Options& options) const;
    // Writes every option, in order, to the data folder's file.
    bool SaveSettings(const Options& options) const;

private:
    GlobalState& glo_;
    Desktop& desktop_;
};

}  // namespace tlx
