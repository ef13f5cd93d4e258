#include "core/FileSafety.h"

#include <fstream>
#include <sstream>

namespace tlx {

namespace fs = std::filesystem;

namespace {

constexpr fs::perms kPrivateFile = fs::perms::owner_read | fs::perms::owner_write;

bool readAll(const fs::path& file, std::string& out) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return false;
    std::ostringstream ss;
    ss << in.rdbuf();
    out = ss.str();
    return !in.bad();
}

}  // namespace

bool makePrivateFolder(const fs::path& folder) {
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) fs::create_directories(folder, ec);
    if (!fs::is_directory(folder, ec)) return false;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::replace, ec);
    return true;
}

bool replaceFileContent(const fs::path& file, std::string_view data) {
    try {
        std::error_code ec;
        const fs::path temp = file.parent_path() / ("." + file.filename().string() + ".new");
        // A leftover of a run that was killed while writing, or anything else in the way.
        fs::remove(temp, ec);
        {
            std::ofstream out(temp, std::ios::binary | std::ios::trunc);
            if (!out) return false;
            // Private before the first byte goes in.
            fs::permissions(temp, kPrivateFile, fs::perm_options::replace, ec);
            out.write(data.data(), static_cast<std::streamsize>(data.size()));
            out.flush();
            if (!out) {
                out.close();
                fs::remove(temp, ec);
                return false;
            }
        }
        fs::rename(temp, file, ec);
        if (ec) {
            fs::remove(temp, ec);
            return false;
        }
        return true;
    } catch (...) {
        return false;
    }
}

bool appendToPrivateFile(const fs::path& file, std::string_view data) {
    try {
        std::error_code ec;
        const fs::file_status st = fs::symlink_status(file, ec);
        const bool fresh = st.type() == fs::file_type::not_found;
        if (!fresh && st.type() != fs::file_type::regular) return false;
        std::ofstream out(file, std::ios::binary | std::ios::app);
        if (!out) return false;
        if (fresh) fs::permissions(file, kPrivateFile, fs::perm_options::replace, ec);
        out.write(data.data(), static_cast<std::streamsize>(data.size()));
        out.flush();
        return static_cast<bool>(out);
    } catch (...) {
        return false;
    }
}

fs::path keepDamagedCopy(const fs::path& file) {
    try {
        std::string bytes;
        if (!readAll(file, bytes)) return {};
        for (int i = 0; i < 10; ++i) {
            const fs::path aside =
                file.parent_path() / (file.filename().string() + ".bad" + (i ? std::to_string(i) : std::string()));
            std::error_code ec;
            const fs::file_status st = fs::symlink_status(aside, ec);
            if (st.type() == fs::file_type::not_found) return replaceFileContent(aside, bytes) ? aside : fs::path();
            std::string kept;
            if (st.type() == fs::file_type::regular && readAll(aside, kept) && kept == bytes) return aside;
        }
    } catch (...) {
    }
    return {};
}

bool settingsTextLooksDamaged(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return true;
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.remove_suffix(1);
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
        if (line.empty() || line.front() == ';' || line.front() == '#') continue;
        if (line.front() == '[') {
            if (line.back() != ']') return true;
            continue;
        }
        if (line.find('=') == std::string_view::npos && line.find(',') == std::string_view::npos) return true;
    }
    return false;
}

}  // namespace tlx
