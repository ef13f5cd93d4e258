#include "audio/clsSettings.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include "core/ErrorObject.h"
#include "core/Text.h"
#include "ports/AppError.h"

namespace tlx {

namespace {
constexpr int kTypeMismatch = 13;
constexpr int kOverflow = 6;
constexpr int kFileAccessError = 75;

// A field as a 32-bit whole number, rounded as a classic integer store rounds (halves to
// even); text that is no number, or a number beyond 32 bits, is an error.
std::int32_t toLong(const std::string& field) {
    if (!isNumeric(field)) throw AppError(kTypeMismatch, "Type mismatch");
    const double r = std::nearbyint(leadingNumber(trim(field)));
    if (!(r >= -2147483648.0 && r <= 2147483647.0)) throw AppError(kOverflow, "Overflow");
    return static_cast<std::int32_t>(r);
}
}  // namespace

clsSettings::clsSettings(ErrorEnv& errors, std::filesystem::path folder)
    : errors_(errors), folder_(std::move(folder)) {}

void clsSettings::LoadINIFile() {
    trap(errors_, "clsSettings_LoadINIFile", "LoadINIFile", [&] {
        std::error_code ec;
        if (!std::filesystem::exists(file(), ec)) return;
        std::ifstream in(file(), std::ios::binary);
        if (!in) throw AppError(kFileAccessError, "Path/File access error");
        std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        // The line's own end is not part of the last value.
        while (!content.empty() && (content.back() == '\n' || content.back() == '\r')) content.pop_back();
        const std::vector<std::string> f = split(content, "|");
        // Every field is read before any is taken, so a bad field leaves all five as they were.
        std::string hid = m_AudioTargetHID;
        std::int32_t logic = m_AudioMicLogic, talk = m_AudioMaxTalkTime, vol = m_AudioMicVol,
                     boost = m_AudioMicBoost;
        if (f.size() > 0) hid = f[0];
        if (f.size() > 1) logic = toLong(f[1]);
        if (f.size() > 2) talk = toLong(f[2]);
        if (f.size() > 3) vol = toLong(f[3]);
        if (f.size() > 4) boost = toLong(f[4]);
        m_AudioTargetHID = hid;
        m_AudioMicLogic = logic;
        m_AudioMaxTalkTime = talk;
        m_AudioMicVol = vol;
        m_AudioMicBoost = boost;
    });
}

void clsSettings::SaveINIFile() {
    trap(errors_, "clsSettings_SaveINIFile", "SaveINIFile", [&] {
        std::error_code ec;
        std::filesystem::remove(file(), ec);
        if (ec) throw AppError(kFileAccessError, "Path/File access error: " + ec.message());
        std::ofstream out(file(), std::ios::binary | std::ios::trunc);
        if (!out) throw AppError(kFileAccessError, "Path/File access error");
        out << m_AudioTargetHID << "|" << m_AudioMicLogic << "|" << m_AudioMaxTalkTime << "|" << m_AudioMicVol << "|"
            << m_AudioMicBoost << "\r\n";
        if (!out.flush()) throw AppError(kFileAccessError, "Path/File access error");
    });
}

}  // namespace tlx
