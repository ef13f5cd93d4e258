#pragma once
// The port file "port.tlc": the base stations and keypad ranges, stored enciphered with an
// authenticated secret-key box under a key derived from the program's built-in pass phrase.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/GlobalState.h"

namespace tlx {

struct PortFileData {
    std::vector<PortEntry> bases;
    PopUpSettings popUp;
};

// Plain form: "\r\n"-separated "key=value" lines in the set-up form's order.
std::string portFilePlainText(const PortFileData& data);
PortFileData parsePortFilePlainText(const std::string& text);

// The cipher; decrypt gives nothing for anything that does not decrypt and verify.
std::optional<std::string> encryptPortText(const std::string& plain);
std::optional<std::string> decryptPortText(const std::string& cipher);

enum class PortFileStatus { Ok, Missing, DecryptError, ReadError };

struct PortFileRead {
    PortFileStatus status = PortFileStatus::Missing;
    PortFileData data;
};

// Reads the file. A missing file, or one that fails, gives keyboard voting ("KBOARD").
PortFileRead readPortFile(const std::filesystem::path& file);

enum class PortFileWriteStatus { Ok, EncryptionError, WriteError };
// Writes the enciphered text in one piece and puts it in the old file's place in one step
// (mode 0600): an interrupted write leaves the old file as it was.
PortFileWriteStatus writePortFile(const std::filesystem::path& file, const PortFileData& data);

// The base table used for keyboard voting.
PortFileData keyboardVotingPortData();

inline constexpr const char* kKeyboardBaseType = "KBOARD";

}  // namespace tlx
