#pragma once
// `clsSettings`: a target keypad and four microphone values for stand-alone audio trials,
// kept in the one-line file "TestApp.ini" in the program's folder: the five values in order,
// separated by "|", without section or key names.
#include <cstdint>
#include <filesystem>
#include <string>

namespace tlx {

struct ErrorEnv;

class clsSettings {
public:
    static constexpr const char* kFileName = "TestApp.ini";

    // `folder` is the program's folder.
    clsSettings(ErrorEnv& errors, std::filesystem::path folder);

    const std::string& AudioTargetHID() const { return m_AudioTargetHID; }
    void AudioTargetHID(std::string v) { m_AudioTargetHID = std::move(v); }
    std::int32_t AudioMicLogic() const { return m_AudioMicLogic; }
    void AudioMicLogic(std::int32_t v) { m_AudioMicLogic = v; }
    std::int32_t AudioMaxTalkTime() const { return m_AudioMaxTalkTime; }
    void AudioMaxTalkTime(std::int32_t v) { m_AudioMaxTalkTime = v; }
    std::int32_t AudioMicVol() const { return m_AudioMicVol; }
    void AudioMicVol(std::int32_t v) { m_AudioMicVol = v; }
    std::int32_t AudioMicBoost() const { return m_AudioMicBoost; }
    void AudioMicBoost(std::int32_t v) { m_AudioMicBoost = v; }

    // Takes the fields the file has, in order; fields it lacks keep their values, and a
    // missing file changes nothing. A field that is not a 32-bit whole number is an error
    // (reported, and no property changes).
    void LoadINIFile();
    // Writes the five values as one line, replacing the file.
    void SaveINIFile();

    std::filesystem::path file() const { return folder_ / kFileName; }

private:
    ErrorEnv& errors_;
    std::filesystem::path folder_;
    std::string m_AudioTargetHID = "100 100 100 100";
    std::int32_t m_AudioMicLogic = 1;
    std::int32_t m_AudioMaxTalkTime = 60;
    std::int32_t m_AudioMicVol = 30;
    std::int32_t m_AudioMicBoost = 0;
};

}  // namespace tlx
