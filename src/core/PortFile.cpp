#include "core/PortFile.h"

#include <sodium.h>

#include <array>
#include <cmath>
#include <fstream>
#include <mutex>
#include <sstream>

#include "core/FileSafety.h"
#include "core/Text.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

constexpr char kMagic[4] = {'T', 'L', 'X', 'C'};
constexpr unsigned char kFormat = 1;
constexpr const char* kPassPhrase = "tallix controller - keypad port table - 7f3a91";

const std::array<unsigned char, crypto_secretbox_KEYBYTES>* portKey() {
    static std::array<unsigned char, crypto_secretbox_KEYBYTES> key{};
    static bool ok = false;
    static std::once_flag once;
    std::call_once(once, [] {
        if (sodium_init() < 0) return;
        // A fixed salt: the key must come out the same on every machine and every run.
        std::array<unsigned char, crypto_pwhash_SALTBYTES> salt{};
        const char* saltText = "tlx-port-file-01";
        for (std::size_t i = 0; i < salt.size(); ++i) salt[i] = static_cast<unsigned char>(saltText[i % 16]);
        ok = crypto_pwhash(key.data(), key.size(), kPassPhrase, std::char_traits<char>::length(kPassPhrase),
                           salt.data(), crypto_pwhash_OPSLIMIT_MIN, crypto_pwhash_MEMLIMIT_MIN,
                           crypto_pwhash_ALG_ARGON2ID13) == 0;
    });
    return ok ? &key : nullptr;
}

bool readBool(const std::string& v) {
    if (iequals(trim(v), "True")) return true;
    if (iequals(trim(v), "False")) return false;
    return ParseNumber(v) != 0;
}

int readInt(const std::string& v) {
    const double d = ParseNumber(v);
    if (d > 2147483647.0 || d < -2147483648.0) return 0;
    return static_cast<int>(std::lround(d));
}

}  // namespace

std::string portFilePlainText(const PortFileData& data) {
    std::vector<std::string> lines;
    for (const auto& b : data.bases) {
        lines.push_back("Port=" + b.port);
        lines.push_back("BaseType=" + b.baseType);
        lines.push_back("GridLo=" + numText(b.gridLo));
        lines.push_back("GridHi=" + numText(b.gridHi));
        lines.push_back("Duplicate=" + boolText(b.duplicate));
        lines.push_back("ColourIndex=" + numText(b.colourIndex));
        lines.push_back("OffSet=" + numText(b.offset));
    }
    const auto& p = data.popUp;
    lines.push_back("PopUpOn=" + boolText(p.popUpOn));
    lines.push_back("Popup=" + p.popUp);
    lines.push_back("How many=" + p.howMany);
    lines.push_back("Lo=" + numText(p.lo));
    lines.push_back("Hi=" + numText(p.hi));
    lines.push_back("Close=" + boolText(p.close));
    lines.push_back("ClosePercent=" + numText(p.closePercent));
    lines.push_back("ScrollingDisplay=" + boolText(p.scrollingDisplay));
    return join(lines, "\r\n");
}

PortFileData parsePortFilePlainText(const std::string& text) {
    PortFileData d;
    auto current = [&d]() -> PortEntry& {
        if (d.bases.empty()) d.bases.emplace_back();
        return d.bases.back();
    };
    for (const auto& line : split(text, "\r\n")) {
        if (!contains(line, "=")) continue;
        auto [rawKey, value] = splitOnce(line, "=");
        const std::string key = toUpper(trim(rawKey));
        if (key == "PORT") {
            d.bases.emplace_back();
            d.bases.back().port = value;
        } else if (key == "BASETYPE") {
            current().baseType = value;
        } else if (key == "GRIDLO") {
            current().gridLo = readInt(value);
        } else if (key == "GRIDHI") {
            current().gridHi = readInt(value);
        } else if (key == "DUPLICATE") {
            current().duplicate = readBool(value);
        } else if (key == "COLOURINDEX") {
            current().colourIndex = readInt(value);
        } else if (key == "OFFSET") {
            current().offset = readInt(value);
        } else if (key == "POPUP") {
            d.popUp.popUp = value;
        } else if (key == "POPUPON") {
            d.popUp.popUpOn = readBool(value);
        } else if (key == "HOW MANY") {
            d.popUp.howMany = value;
        } else if (key == "LO") {
            d.popUp.lo = readInt(value);
        } else if (key == "HI") {
            d.popUp.hi = readInt(value);
        } else if (key == "CLOSE") {
            d.popUp.close = readBool(value);
        } else if (key == "CLOSEPERCENT") {
            d.popUp.closePercent = readInt(value);
        } else if (key == "SCROLLINGDISPLAY") {
            d.popUp.scrollingDisplay = readBool(value);
        }
    }
    return d;
}

std::optional<std::string> encryptPortText(const std::string& plain) {
    const auto* key = portKey();
    if (!key) return std::nullopt;
    std::string out(kMagic, sizeof kMagic);
    out += static_cast<char>(kFormat);
    std::array<unsigned char, crypto_secretbox_NONCEBYTES> nonce{};
    randombytes_buf(nonce.data(), nonce.size());
    out.append(reinterpret_cast<const char*>(nonce.data()), nonce.size());
    std::string box(plain.size() + crypto_secretbox_MACBYTES, '\0');
    crypto_secretbox_easy(reinterpret_cast<unsigned char*>(box.data()),
                          reinterpret_cast<const unsigned char*>(plain.data()), plain.size(), nonce.data(),
                          key->data());
    out += box;
    return out;
}

std::optional<std::string> decryptPortText(const std::string& cipher) {
    const auto* key = portKey();
    if (!key) return std::nullopt;
    const std::size_t head = sizeof kMagic + 1 + crypto_secretbox_NONCEBYTES;
    if (cipher.size() < head + crypto_secretbox_MACBYTES) return std::nullopt;
    if (cipher.compare(0, sizeof kMagic, kMagic, sizeof kMagic) != 0) return std::nullopt;
    if (static_cast<unsigned char>(cipher[sizeof kMagic]) != kFormat) return std::nullopt;
    const auto* nonce = reinterpret_cast<const unsigned char*>(cipher.data() + sizeof kMagic + 1);
    const std::size_t boxLen = cipher.size() - head;
    std::string plain(boxLen - crypto_secretbox_MACBYTES, '\0');
    if (crypto_secretbox_open_easy(reinterpret_cast<unsigned char*>(plain.data()),
                                   reinterpret_cast<const unsigned char*>(cipher.data() + head), boxLen, nonce,
                                   key->data()) != 0)
        return std::nullopt;
    return plain;
}

PortFileData keyboardVotingPortData() {
    PortFileData d;
    PortEntry e;
    e.baseType = kKeyboardBaseType;
    d.bases.push_back(e);
    return d;
}

PortFileRead readPortFile(const fs::path& file) {
    PortFileRead r;
    std::error_code ec;
    if (!fs::exists(file, ec)) {
        r.status = PortFileStatus::Missing;
        r.data = keyboardVotingPortData();
        return r;
    }
    std::string cipher;
    try {
        std::ifstream in(file, std::ios::binary);
        if (!in) throw std::runtime_error("open");
        std::stringstream ss;
        ss << in.rdbuf();
        cipher = ss.str();
    } catch (...) {
        r.status = PortFileStatus::ReadError;
        r.data = keyboardVotingPortData();
        return r;
    }
    const auto plain = decryptPortText(cipher);
    if (!plain) {
        r.status = PortFileStatus::DecryptError;
        r.data = keyboardVotingPortData();
        return r;
    }
    r.status = PortFileStatus::Ok;
    r.data = parsePortFilePlainText(*plain);
    if (r.data.bases.empty()) r.data.bases = keyboardVotingPortData().bases;
    return r;
}

PortFileWriteStatus writePortFile(const fs::path& file, const PortFileData& data) {
    const auto cipher = encryptPortText(portFilePlainText(data));
    if (!cipher) return PortFileWriteStatus::EncryptionError;
    try {
        // The new file replaces the old one in one step (rather than deleting it first), so
        // a failed or interrupted write leaves the old table in place.
        std::error_code ec;
        if (file.has_parent_path()) fs::create_directories(file.parent_path(), ec);
        return replaceFileContent(file, *cipher) ? PortFileWriteStatus::Ok : PortFileWriteStatus::WriteError;
    } catch (...) {
        return PortFileWriteStatus::WriteError;
    }
}

}  // namespace tlx
