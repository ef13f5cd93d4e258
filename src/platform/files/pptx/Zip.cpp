#include "platform/files/pptx/Zip.h"

#include <zip.h>

#include <memory>

#include "platform/files/pptx/PptxError.h"

namespace tlx::pptx {
namespace {

struct ArchiveCloser {
    void operator()(zip_t* za) const { zip_discard(za); }
};
struct FileCloser {
    void operator()(zip_file_t* f) const { zip_fclose(f); }
};
struct SourceFreer {
    void operator()(zip_source_t* s) const { zip_source_free(s); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;
using ZipFile = std::unique_ptr<zip_file_t, FileCloser>;
using Source = std::unique_ptr<zip_source_t, SourceFreer>;

[[noreturn]] void notZip(const std::string& label, const std::string& why) {
    throw PptxError(Fault::NotZip, "'" + label + "' is not a readable zip package: " + why);
}

std::string errorText(zip_error_t* err) {
    std::string text = zip_error_strerror(err);
    zip_error_fini(err);
    return text;
}

std::string readEntry(zip_t* za, zip_uint64_t index, const std::string& name, std::uint64_t size,
                      const std::string& label) {
    ZipFile file(zip_fopen_index(za, index, 0));
    if (!file) notZip(label, "cannot read '" + name + "' (" + zip_strerror(za) + ")");
    std::string data(static_cast<std::size_t>(size), '\0');
    std::uint64_t got = 0;
    while (got < size) {
        zip_int64_t n = zip_fread(file.get(), data.data() + got, size - got);
        if (n < 0) notZip(label, "'" + name + "' is damaged (" + zip_file_strerror(file.get()) + ")");
        if (n == 0) break;
        got += static_cast<std::uint64_t>(n);
    }
    // Reading on to the end makes libzip check the CRC and catches a size that lies.
    char extra = 0;
    zip_int64_t tail = zip_fread(file.get(), &extra, 1);
    if (tail < 0) notZip(label, "'" + name + "' is damaged (" + zip_file_strerror(file.get()) + ")");
    if (got != size || tail != 0) notZip(label, "'" + name + "' does not have its recorded size");
    return data;
}

[[noreturn]] void fail(const std::string& why) {
    throw PptxError(Fault::Io, "Cannot write the zip package: " + why);
}

}  // namespace

std::vector<ZipEntry> readZip(std::string_view bytes, const std::string& label) {
    if (bytes.empty()) notZip(label, "the file is empty");
    zip_error_t err;
    zip_error_init(&err);
    Source src(zip_source_buffer_create(bytes.data(), bytes.size(), 0, &err));
    if (!src) notZip(label, errorText(&err));
    Archive za(zip_open_from_source(src.get(), ZIP_RDONLY | ZIP_CHECKCONS, &err));
    if (!za) notZip(label, errorText(&err));
    src.release();  // the archive owns the source now
    zip_error_fini(&err);

    zip_int64_t count = zip_get_num_entries(za.get(), 0);
    if (count < 0) notZip(label, zip_strerror(za.get()));
    if (static_cast<std::uint64_t>(count) > kMaxZipEntries) notZip(label, "too many entries");
    std::vector<ZipEntry> entries;
    entries.reserve(static_cast<std::size_t>(count));
    std::uint64_t total = 0;
    for (zip_uint64_t i = 0; i < static_cast<zip_uint64_t>(count); ++i) {
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat_index(za.get(), i, 0, &st) != 0 || !(st.valid & ZIP_STAT_NAME) ||
            !(st.valid & ZIP_STAT_SIZE))
            notZip(label, "entry " + std::to_string(i) + " cannot be listed");
        std::string name = st.name;
        if (st.size > kMaxEntryBytes) notZip(label, "'" + name + "' is too large");
        total += st.size;
        if (total > kMaxTotalBytes) notZip(label, "the content is too large");
        std::string data = readEntry(za.get(), i, name, st.size, label);
        entries.push_back({std::move(name), std::move(data)});
    }
    return entries;
}

std::string writeZip(const std::vector<ZipEntry>& entries) {
    zip_error_t err;
    zip_error_init(&err);
    Source out(zip_source_buffer_create(nullptr, 0, 0, &err));
    if (!out) fail(errorText(&err));
    zip_source_keep(out.get());  // read back after the archive is closed
    Archive za(zip_open_from_source(out.get(), ZIP_TRUNCATE, &err));
    if (!za) {
        zip_source_free(out.get());  // drop the extra reference taken above
        fail(errorText(&err));
    }
    zip_error_fini(&err);

    // 1 January 1980, 00:00, the first date a zip entry can carry.
    constexpr zip_uint16_t kDosTime = 0;
    constexpr zip_uint16_t kDosDate = (0 << 9) | (1 << 5) | 1;
    for (const ZipEntry& e : entries) {
        zip_int64_t idx;
        if (!e.name.empty() && e.name.back() == '/') {
            idx = zip_dir_add(za.get(), e.name.c_str(), ZIP_FL_ENC_UTF_8);
        } else {
            zip_source_t* s = zip_source_buffer(za.get(), e.data.data(), e.data.size(), 0);
            if (!s) fail(zip_strerror(za.get()));
            idx = zip_file_add(za.get(), e.name.c_str(), s, ZIP_FL_ENC_UTF_8);
            if (idx < 0) {
                zip_source_free(s);
            } else {
                zip_set_file_compression(za.get(), static_cast<zip_uint64_t>(idx), ZIP_CM_DEFLATE, 0);
            }
        }
        if (idx < 0) fail("'" + e.name + "': " + zip_strerror(za.get()));
        zip_file_set_dostime(za.get(), static_cast<zip_uint64_t>(idx), kDosTime, kDosDate, 0);
    }
    if (zip_close(za.get()) != 0) fail(zip_strerror(za.get()));
    za.release();  // closed

    std::string bytes;
    zip_stat_t st;
    zip_stat_init(&st);
    if (zip_source_stat(out.get(), &st) != 0 || zip_source_open(out.get()) != 0)
        fail("cannot read the archive back");
    bytes.resize(static_cast<std::size_t>(st.size));
    zip_int64_t n = zip_source_read(out.get(), bytes.data(), st.size);
    zip_source_close(out.get());
    if (n < 0 || static_cast<zip_uint64_t>(n) != st.size) fail("cannot read the archive back");
    return bytes;
}

}  // namespace tlx::pptx
