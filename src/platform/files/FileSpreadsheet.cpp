#include "platform/files/FileSpreadsheet.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "ports/AppError.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

std::string upperExtension(const fs::path& file) {
    std::string e = file.extension().string();
    for (char& c : e) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return e;
}

[[noreturn]] void writeFailed(const fs::path& file, const std::string& why) {
    throw AppError(kWorkbookError, "Cannot write workbook '" + file.filename().string() + "': " + why);
}

// Characters a cell shows, counting each UTF-8 sequence once.
std::size_t shownLength(const std::string& text) {
    std::size_t n = 0;
    for (unsigned char c : text)
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}

std::string cellText(const SheetCell& cell) {
    if (const auto* s = std::get_if<std::string>(&cell)) return *s;
    std::string t = std::to_string(std::get<double>(cell));
    // "12.000000" is shown as "12".
    if (t.find('.') != std::string::npos) {
        while (!t.empty() && t.back() == '0') t.pop_back();
        if (!t.empty() && (t.back() == '.' || t.back() == ',')) t.pop_back();
    }
    return t;
}

}  // namespace

std::vector<std::vector<std::string>> FileSpreadsheet::readFirstSheet(const fs::path& file) {
    const std::string ext = upperExtension(file);
    if (ext == ".XLSX" || ext == ".XLSM") return readXlsxFirstSheet(file);
    if (ext == ".XLS") return readXlsFirstSheet(file);
    throw AppError(kWorkbookError, "Cannot read workbook '" + file.filename().string() + "': unknown file type");
}

void FileSpreadsheet::writeWorkbook(const fs::path& file, const std::vector<SheetRow>& rows) {
    if (upperExtension(file) != ".XLSX") writeFailed(file, "only .xlsx workbooks can be written");
    writeXlsxWorkbook(file, rows, false);
}

void writeXlsxWorkbook(const fs::path& file, const std::vector<SheetRow>& rows, bool inlineStrings) {
    if (rows.size() > 1048576) writeFailed(file, "too many rows");
    // Written beside the target and moved over it once complete, so that a failed write never
    // costs the list that was there.
    fs::path part = file;
    part += ".part";
    lxw_workbook_options options{};
    options.constant_memory = inlineStrings ? LXW_TRUE : LXW_FALSE;
    lxw_workbook* workbook = workbook_new_opt(part.c_str(), &options);
    if (!workbook) writeFailed(file, "the workbook cannot be created");
    lxw_worksheet* sheet = workbook_add_worksheet(workbook, nullptr);
    std::string problem;
    std::vector<std::size_t> widths;
    for (std::size_t r = 0; r < rows.size() && problem.empty(); ++r) {
        const SheetRow& row = rows[r];
        if (row.size() > 16384) {
            problem = "too many columns";
            break;
        }
        if (widths.size() < row.size()) widths.resize(row.size(), 0);
        for (std::size_t c = 0; c < row.size(); ++c) {
            const auto rr = static_cast<lxw_row_t>(r);
            const auto cc = static_cast<lxw_col_t>(c);
            lxw_error e = LXW_NO_ERROR;
            if (const auto* s = std::get_if<std::string>(&row[c]))
                e = s->empty() ? LXW_NO_ERROR : worksheet_write_string(sheet, rr, cc, s->c_str(), nullptr);
            else
                e = worksheet_write_number(sheet, rr, cc, std::get<double>(row[c]), nullptr);
            if (e != LXW_NO_ERROR) {
                problem = lxw_strerror(e);
                break;
            }
            widths[c] = std::max(widths[c], shownLength(cellText(row[c])));
        }
    }
    // Each column as wide as its widest cell, as fitting the columns would make it.
    for (std::size_t c = 0; c < widths.size() && problem.empty(); ++c) {
        const double width = std::clamp(static_cast<double>(widths[c]) * 1.1 + 1.0, 8.43, 255.0);
        worksheet_set_column(sheet, static_cast<lxw_col_t>(c), static_cast<lxw_col_t>(c), width, nullptr);
    }
    worksheet_set_selection(sheet, 0, 0, 0, 0);
    const lxw_error closed = workbook_close(workbook);  // writes the file and frees the workbook
    std::error_code ec;
    if (problem.empty() && closed != LXW_NO_ERROR) problem = lxw_strerror(closed);
    if (problem.empty()) {
        fs::rename(part, file, ec);
        if (ec) problem = ec.message();
    }
    if (!problem.empty()) {
        fs::remove(part, ec);
        writeFailed(file, problem);
    }
}

}  // namespace tlx
