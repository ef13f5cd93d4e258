#include "core/Settings.h"

// Settings files are byte text, as the profile functions read them.
#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <fstream>
#include <sstream>

#include "core/FileSafety.h"
#include "core/GlobalState.h"
#include "core/Options.h"
#include "core/ProfileReader.h"
#include "core/Text.h"
#include "ports/Desktop.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

bool loadIni(CSimpleIniA& ini, const fs::path& file) {
    ini.SetUnicode(false);
    ini.SetMultiKey(false);
    ini.SetSpaces(false);
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) return false;
    try {
        std::ifstream in(file, std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        const std::string data = ss.str();
        return ini.LoadData(data.data(), data.size()) >= 0;
    } catch (...) {
        return false;
    }
}

std::string unquote(std::string v) {
    if (v.size() >= 2 && v.front() == '"' && v.back() == '"') return v.substr(1, v.size() - 2);
    return v;
}

// Values with blanks at either end keep them only inside quotes.
std::string quoteIfNeeded(const std::string& v) {
    if (!v.empty() && (v.front() == ' ' || v.back() == ' ' || v.front() == '"')) return '"' + v + '"';
    return v;
}

}  // namespace

std::string GetProfileString(const fs::path& file, const std::string& section, const std::string& key,
                             const std::string& defaultValue) {
    CSimpleIniA ini;
    if (!loadIni(ini, file)) return defaultValue;
    const char* v = ini.GetValue(section.c_str(), key.c_str(), nullptr);
    return v ? unquote(v) : defaultValue;
}

bool HasProfileString(const fs::path& file, const std::string& section, const std::string& key) {
    CSimpleIniA ini;
    if (!loadIni(ini, file)) return false;
    return ini.GetValue(section.c_str(), key.c_str(), nullptr) != nullptr;
}

struct ProfileReader::Impl {
    CSimpleIniA ini;
    bool loaded = false;
};

ProfileReader::ProfileReader(const fs::path& file) : impl_(new Impl) { impl_->loaded = loadIni(impl_->ini, file); }

ProfileReader::~ProfileReader() { delete impl_; }

std::string ProfileReader::get(const std::string& section, const std::string& key,
                               const std::string& defaultValue) const {
    if (!impl_->loaded) return defaultValue;
    const char* v = impl_->ini.GetValue(section.c_str(), key.c_str(), nullptr);
    return v ? unquote(v) : defaultValue;
}

struct ProfileWriter::Impl {
    fs::path file;
    CSimpleIniA ini;
};

ProfileWriter::ProfileWriter(fs::path file) : impl_(new Impl) {
    impl_->file = std::move(file);
    if (!loadIni(impl_->ini, impl_->file)) impl_->ini.Reset();
}

ProfileWriter::~ProfileWriter() { delete impl_; }

void ProfileWriter::set(const std::string& section, const std::string& key, const std::string& value) {
    impl_->ini.SetValue(section.c_str(), key.c_str(), quoteIfNeeded(value).c_str());
}

bool ProfileWriter::save() {
    try {
        std::error_code ec;
        if (impl_->file.has_parent_path()) fs::create_directories(impl_->file.parent_path(), ec);
        std::string data;
        if (impl_->ini.Save(data) < 0) return false;
        // A damaged file is kept aside before it is replaced: it may be all there is of the
        // user's settings.
        std::string old;
        if (fs::is_regular_file(impl_->file, ec)) {
            std::ifstream in(impl_->file, std::ios::binary);
            std::ostringstream ss;
            ss << in.rdbuf();
            old = ss.str();
            if (settingsTextLooksDamaged(old)) keepDamagedCopy(impl_->file);
        }
        return replaceFileContent(impl_->file, data);
    } catch (...) {
        return false;
    }
}

bool WriteProfileString(const fs::path& file, const std::string& section, const std::string& key,
                        const std::string& value) {
    ProfileWriter w(file);
    w.set(section, key, value);
    return w.save();
}

std::vector<std::pair<std::string, std::string>> readSettingsFileInFull(const fs::path& file,
                                                                      bool* commaForm) {
    std::vector<std::pair<std::string, std::string>> out;
    if (commaForm) *commaForm = false;
    try {
        std::ifstream in(file, std::ios::binary);
        if (!in) return out;
        std::stringstream ss;
        ss << in.rdbuf();
        std::string text = replaceAll(ss.str(), "\r\n", "\n");
        const bool comma = contains(text, "DETECTOR STATUS,");
        if (commaForm) *commaForm = comma;
        const std::string sep = comma ? "," : "=";
        for (auto& line : split(text, "\n")) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (line.empty() || line.front() == '[' || !contains(line, sep)) continue;
            auto [k, v] = splitOnce(line, sep);
            out.emplace_back(trim(k), unquote(trim(v)));
        }
    } catch (...) {
    }
    return out;
}

struct SettingsFiles::Layer {
    bool commaForm = false;
    std::vector<std::pair<std::string, std::string>> pairs;  // comma form: upper-cased keys
    CSimpleIniA ini;
};

SettingsFiles::SettingsFiles(const std::vector<fs::path>& files) {
    for (const auto& f : files) {
        std::error_code ec;
        if (!fs::is_regular_file(f, ec)) continue;
        auto* layer = new Layer;
        layer->pairs = readSettingsFileInFull(f, &layer->commaForm);
        if (layer->commaForm) {
            for (auto& [k, v] : layer->pairs) k = toUpper(k);
        } else {
            layer->pairs.clear();
            if (!loadIni(layer->ini, f)) {
                delete layer;
                continue;
            }
        }
        layers_.push_back(layer);
    }
}

SettingsFiles::~SettingsFiles() {
    for (auto* l : layers_) delete l;
}

bool SettingsFiles::get(const std::string& section, const std::string& key, std::string& value) const {
    for (const Layer* l : layers_) {
        if (l->commaForm) {
            const std::string k = toUpper(key);
            for (const auto& [pk, pv] : l->pairs)
                if (pk == k) {
                    value = pv;
                    return true;
                }
            continue;
        }
        if (const char* v = l->ini.GetValue(section.c_str(), key.c_str(), nullptr)) {
            value = unquote(v);
            return true;
        }
    }
    return false;
}

fs::path Settings::userFile() const {
    return fs::path(desktop_.environment("APPDATA")) / "tallix" / "tlx.ini";
}

fs::path Settings::allUsersFile() const {
    return fs::path(desktop_.environment("ALLUSERSPROFILE")) / "tallix" / "tlx.ini";
}

fs::path Settings::dataFolderFile() const { return glo_.localDataFolder / "tlx.ini"; }

std::string Settings::readSwitchText(const std::string& section, const std::string& key,
                                     const std::string& defaultValue) const {
    const fs::path user = userFile();
    if (HasProfileString(user, section, key)) return GetProfileString(user, section, key, defaultValue);
    return GetProfileString(allUsersFile(), section, key, defaultValue);
}

bool Settings::readSwitch(const std::string& section, const std::string& key,
                          const std::string& defaultValue) const {
    return ParseNumber(readSwitchText(section, key, defaultValue)) != 0;
}

bool Settings::LogEventsToFile() const { return readSwitch("DEBUG", "LOGEVENTS TO FILE", "0"); }
bool Settings::ShowAllErrors() const { return readSwitch("DEBUG", "SHOW ALL ERRORS", "0"); }
bool Settings::DisableParticipantList() const {
    return readSwitch("DEBUG", "DISABLE PARTICIPANT LIST", "0");
}
bool Settings::DisableForceSlideShowNoTopMost() const {
    return readSwitch("DEBUG", "DISABLE FORCE SLIDE SHOW NOTOPMOST", "0");
}
bool Settings::DisableForceSlideShowTopMost() const {
    return readSwitch("DEBUG", "DISABLE FORCE SLIDE SHOW TOPMOST", "0");
}
bool Settings::MinimizeWindowsOnSlideShowStart() const {
    return readSwitch("DEBUG", "MINIMIZE WINDOWS ON SLIDE SHOW START", "0");
}
bool Settings::DisableDisablingPptWindows() const {
    return readSwitch("DEBUG", "DISABLE DISABLING PPT WINDOWS", "1");
}
bool Settings::DisablePptSaveAfterVoteClose() const {
    return readSwitch("DEBUG", "DISABLE PPT SAVE AFTER VOTE CLOSE", "1");
}
bool Settings::HidePptEditWindowsInSetResultsDisplayMode() const {
    return readSwitch("DEBUG", "HIDE PPT EDIT WINDOWS IN SET RESULTS DISPLAY MODE", "0");
}
bool Settings::DebugAcceptDetectAsVotes() const {
    return readSwitch("KELVARIN OPTIONS", "DEBUG ACCEPT DETECT AS VOTES", "0");
}
bool Settings::ShowBaseStatusDuringLiveVote() const {
    return readSwitch("KELVARIN OPTIONS", "SHOW BASE STATUS DURING LIVE VOTE", "0");
}
std::string Settings::ChartExportFormat() const {
    return readSwitchText("TALLIX OPTIONS", "CHART EXPORT FORMAT", "EMF");
}

std::vector<fs::path> Settings::readFiles() const {
    // A folder variable that is not set gives a relative path: no file, not one beside us.
    std::vector<fs::path> files;
    const fs::path user = glo_.localDataFolder.empty() ? userFile() : dataFolderFile();
    const fs::path shared = allUsersFile();
    if (user.is_absolute()) files.push_back(user);
    if (shared.is_absolute() && shared != user) files.push_back(shared);
    return files;
}

void Settings::loadOptions(Options& options) const {
    const SettingsFiles files(readFiles());
    std::string v;
    for (const auto& def : savedSettingDefs())
        if (files.get(def.section, def.key, v)) options.set(def.section, def.key, v);
}

bool Settings::SaveSettings(const Options& options) const {
    ProfileWriter w(dataFolderFile());
    const auto& defs = savedSettingDefs();
    for (std::size_t i = 0; i < defs.size(); ++i) w.set(defs[i].section, defs[i].key, options.values()[i]);
    return w.save();
}

}  // namespace tlx
