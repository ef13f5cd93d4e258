// The first worksheet of an ".xls" workbook (the older binary format), through freexl.
#include <freexl.h>

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

#include "platform/files/FileSpreadsheet.h"
#include "ports/AppError.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

// The binary format's grid.
constexpr unsigned int kMaxRows = 65536;
constexpr unsigned int kMaxColumns = 256;
// What one sheet may become in memory: a small file can put one long shared string in every
// cell of the grid.
constexpr std::size_t kMaxCells = 1u << 20;
constexpr std::size_t kMaxTextBytes = 64u * 1024u * 1024u;

[[noreturn]] void fail(const fs::path& file, const std::string& why) {
    throw AppError(kWorkbookError, "Cannot read workbook '" + file.filename().string() + "': " + why);
}

std::string errorText(int code) {
    switch (code) {
        case FREEXL_INVALID_CFBF_HEADER:
        case FREEXL_CFBF_INVALID_SIGNATURE:
            return "it is not a workbook";
        case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
            return "it holds no workbook";
        case FREEXL_INSUFFICIENT_MEMORY:
            return "out of memory";
        case FREEXL_CRAFTED_FILE:
            return "it is severely damaged";
        default:
            return "it is damaged (freexl error " + std::to_string(code) + ")";
    }
}

class XlsHandle {
public:
    explicit XlsHandle(const fs::path& file) {
        const int rc = freexl_open(file.c_str(), &handle_);
        if (rc == FREEXL_OK) return;
        // freexl asks for a close even after a failed open; no destructor runs for us here.
        close();
        if (rc == FREEXL_FILE_NOT_FOUND) throw AppError(err::kFileNotFound, "File not found: " + file.string());
        fail(file, errorText(rc));
    }
    ~XlsHandle() { close(); }
    XlsHandle(const XlsHandle&) = delete;
    XlsHandle& operator=(const XlsHandle&) = delete;
    const void* get() const { return handle_; }

private:
    void close() {
        if (handle_) freexl_close(handle_);
        handle_ = nullptr;
    }
    const void* handle_ = nullptr;
};

// Plain decimal text independent of the process locale ("5", "0.5", "1e+20").
std::string numberText(double v) {
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, r.ptr);
}

}  // namespace

std::vector<std::vector<std::string>> readXlsFirstSheet(const fs::path& file) {
    XlsHandle xls(file);
    unsigned int password = 0;
    if (freexl_get_info(xls.get(), FREEXL_BIFF_PASSWORD, &password) == FREEXL_OK && password == FREEXL_BIFF_OBFUSCATED)
        fail(file, "it is protected by a password");
    unsigned int sheets = 0;
    if (freexl_get_info(xls.get(), FREEXL_BIFF_SHEET_COUNT, &sheets) != FREEXL_OK || sheets == 0)
        fail(file, "it has no worksheet");
    if (const int rc = freexl_select_active_worksheet(xls.get(), 0); rc != FREEXL_OK) fail(file, errorText(rc));
    unsigned int rowCount = 0;
    unsigned short columnCount = 0;
    if (const int rc = freexl_worksheet_dimensions(xls.get(), &rowCount, &columnCount); rc != FREEXL_OK)
        fail(file, errorText(rc));

    std::vector<std::vector<std::string>> rows;
    std::size_t cellCount = 0, textBytes = 0;
    const unsigned int lastRow = std::min(rowCount, kMaxRows);
    const unsigned int lastColumn = std::min<unsigned int>(columnCount, kMaxColumns);
    for (unsigned int r = 0; r < lastRow; ++r) {
        std::vector<std::string> cells;
        for (unsigned int c = 0; c < lastColumn; ++c) {
            FreeXL_CellValue cell;
            const int rc = freexl_get_cell_value(xls.get(), r, static_cast<unsigned short>(c), &cell);
            if (rc == FREEXL_ILLEGAL_CELL_ROW_COL) break;
            if (rc != FREEXL_OK) fail(file, errorText(rc));
            std::string value;
            switch (cell.type) {
                case FREEXL_CELL_INT:
                    value = std::to_string(cell.value.int_value);
                    break;
                case FREEXL_CELL_DOUBLE:
                    value = numberText(cell.value.double_value);
                    break;
                case FREEXL_CELL_TEXT:
                case FREEXL_CELL_SST_TEXT:
                case FREEXL_CELL_DATE:
                case FREEXL_CELL_DATETIME:
                case FREEXL_CELL_TIME:
                    if (cell.value.text_value) value = cell.value.text_value;
                    break;
                default:
                    break;
            }
            if (value.empty()) continue;
            cellCount += c + 1 - cells.size();
            textBytes += value.size();
            if (cellCount > kMaxCells || textBytes > kMaxTextBytes)
                fail(file, "it holds more than a participant list can");
            cells.resize(c + 1);
            cells[c] = std::move(value);
        }
        if (cells.empty()) {
            rows.emplace_back();
            continue;
        }
        rows.push_back(std::move(cells));
    }
    while (!rows.empty() && rows.back().empty()) rows.pop_back();
    return rows;
}

}  // namespace tlx
