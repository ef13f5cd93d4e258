#pragma once
// How the controller writes its own files: settings and the port file replaced in one step,
// log lines appended only to plain files, everything readable by this user alone.
#include <filesystem>
#include <string>
#include <string_view>

namespace tlx {

// Creates the folder (and its parents) when missing and gives the folder itself mode 0700.
// False when it is not a folder afterwards.
bool makePrivateFolder(const std::filesystem::path& folder);

// Replaces the file's content in one step: the data goes to a temporary file beside it, which
// is then renamed over it. A reader, or a process killed half-way, sees the old file or the
// new one, never a mix. The file gets mode 0600; a symbolic link in its place is replaced, not
// followed. False when the file could not be written (the old one is then untouched).
bool replaceFileContent(const std::filesystem::path& file, std::string_view data);

// Appends to a log file, created with mode 0600 when new. Anything but a plain file in its
// place (a symbolic link, a pipe, a device, a folder) is left alone and the text dropped: a
// link planted in a temporary folder must not make us write into another file, and a pipe
// with no reader would block us. False when nothing was written.
bool appendToPrivateFile(const std::filesystem::path& file, std::string_view data);

// Keeps a copy of a damaged file beside it, as NAME.bad (NAME.bad1 to NAME.bad9 when that is
// taken by different bytes), so that writing the file again later cannot destroy the only copy.
// Gives the copy's path; the existing one when the same bytes are already kept; empty when
// none could be made. The file itself is not changed.
std::filesystem::path keepDamagedCopy(const std::filesystem::path& file);

// A settings text that is not a settings file: NUL bytes, or a line that is neither a
// section, a comment, nor "KEY=value" (or the older "KEY,value"), as a cut or garbled file has.
bool settingsTextLooksDamaged(std::string_view text);

}  // namespace tlx
