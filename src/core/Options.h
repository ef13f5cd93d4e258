#pragma once
// The options the settings file "tlx.ini" keeps, with their built-in defaults, in the order
// SaveSettings writes them.
#include <string>
#include <string_view>
#include <vector>

namespace tlx {

namespace section {
inline constexpr const char* kKelvarinOptions = "KELVARIN OPTIONS";
inline constexpr const char* kCoreHubOptions = "KELVARIN CORE HUB OPTIONS";
inline constexpr const char* kAudioOptions = "KELVARIN AUDIO OPTIONS";
inline constexpr const char* kPresenterText = "KELVARIN CORE HUB PRESENTER TEXT";
inline constexpr const char* kDebug = "DEBUG";
inline constexpr const char* kTallixOptions = "TALLIX OPTIONS";
}  // namespace section

struct SettingDef {
    const char* section;
    const char* key;
    const char* defaultValue;
};

// Every key SaveSettings writes, in its order.
const std::vector<SettingDef>& savedSettingDefs();

class Options {
public:
    Options();
    // Value of a key of the table; "" for an unknown key.
    const std::string& text(std::string_view section, std::string_view key) const;
    double number(std::string_view section, std::string_view key) const;
    int integer(std::string_view section, std::string_view key) const;
    // On when the value reads as a number other than 0.
    bool flag(std::string_view section, std::string_view key) const;
    // Returns false for a key that is not in the table.
    bool set(std::string_view section, std::string_view key, std::string value);
    void setFlag(std::string_view section, std::string_view key, bool on) {
        set(section, key, on ? "1" : "0");
    }
    const std::vector<std::string>& values() const { return values_; }

private:
    int indexOf(std::string_view section, std::string_view key) const;
    std::vector<std::string> values_;
};

}  // namespace tlx
