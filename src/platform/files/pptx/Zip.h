#pragma once
// Whole-archive zip reading and writing in memory (libzip). A package is small enough to hold
// in memory, and doing so lets a save overwrite the file it was read from.
#include <string>
#include <string_view>
#include <vector>

namespace tlx::pptx {

struct ZipEntry {
    std::string name;  // as stored, without a leading "/"; directories end in "/"
    std::string data;  // uncompressed bytes
};

// Limits that keep a hostile archive from exhausting memory.
inline constexpr std::size_t kMaxZipEntries = 20000;
inline constexpr std::uint64_t kMaxEntryBytes = 512ull << 20;
inline constexpr std::uint64_t kMaxTotalBytes = 1024ull << 20;

// Reads every entry in archive order. `label` names the archive in error messages.
// Throws PptxError (NotZip) for anything that is not a sound zip archive.
std::vector<ZipEntry> readZip(std::string_view bytes, const std::string& label);

// Writes the entries in the given order, deflated, with a fixed time stamp so that the same
// content always gives the same bytes.
std::string writeZip(const std::vector<ZipEntry>& entries);

}  // namespace tlx::pptx
