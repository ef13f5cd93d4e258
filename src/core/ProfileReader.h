#pragma once
// Profile-string reads of one file, loaded once.
#include <filesystem>
#include <string>

namespace tlx {

// Many profile reads from one file, loaded once: what GetProfileString answers, without
// reading the file again for every key (a simulation set-up asks per keypad).
class ProfileReader {
public:
    explicit ProfileReader(const std::filesystem::path& file);
    ~ProfileReader();
    ProfileReader(const ProfileReader&) = delete;
    ProfileReader& operator=(const ProfileReader&) = delete;
    std::string get(const std::string& section, const std::string& key, const std::string& defaultValue) const;

private:
    struct Impl;
    Impl* impl_;
};

}  // namespace tlx
