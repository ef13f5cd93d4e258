// Editing one worksheet of an existing ".xlsx" workbook in place: the package is read whole,
// only the worksheet's own part is written again, and every other part keeps its bytes.
// Texts go into the cells as inline strings, so the shared-strings part is never touched, and
// a cell that is written or emptied keeps its style.
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileSpreadsheet.h"
#include "platform/files/pptx/Package.h"
#include "platform/files/pptx/PptxError.h"
#include "platform/files/pptx/Xml.h"
#include "ports/AppError.h"

namespace tlx {

namespace fs = std::filesystem;
namespace xml = pptx::xml;

namespace {

constexpr long kMaxRow = 1048576;
constexpr int kMaxColumn = 16384;

[[noreturn]] void fail(const fs::path& file, const std::string& why) {
    throw AppError(kWorkbookError, "Cannot update workbook '" + file.filename().string() + "': " + why);
}

bool sameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto x = static_cast<unsigned char>(a[i]);
        const auto y = static_cast<unsigned char>(b[i]);
        if (std::tolower(x) != std::tolower(y)) return false;
    }
    return true;
}

pptx::Package openWorkbook(const fs::path& file) {
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) throw AppError(err::kFileNotFound, "File not found: " + file.string());
    std::ifstream in(file, std::ios::binary);
    if (!in) throw AppError(err::kPermissionDenied, "Permission denied: " + file.string());
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    try {
        return pptx::Package::fromBytes(bytes, file.filename().string());
    } catch (const pptx::PptxError& e) {
        fail(file, e.what());
    }
}

// The part of the worksheet with this name, "" when the workbook has none.
std::string worksheetPart(pptx::Package& pkg, const std::string& sheet, const fs::path& file) {
    try {
        const pptx::Relationship* doc = pkg.relationships("/").firstOfType(pptx::rel::kOfficeDocument);
        if (!doc) fail(file, "it is not a workbook");
        const std::string workbook = pkg.targetPart("/", *doc);
        pugi::xml_node sheets = xml::child(xml::child(pkg.xml(workbook), "workbook"), "sheets");
        for (pugi::xml_node s = sheets.first_child(); s; s = s.next_sibling()) {
            if (s.type() != pugi::node_element || xml::localName(s) != "sheet") continue;
            if (!sameName(xml::plainAttr(s, "name").value(), sheet)) continue;
            const pptx::Relationship* r = pkg.relationships(workbook).byId(xml::prefixedAttr(s, "id").value());
            if (!r || r->external) fail(file, "the worksheet '" + sheet + "' has no part");
            const std::string part = pkg.targetPart(workbook, *r);
            if (!pkg.hasPart(part)) fail(file, "the worksheet '" + sheet + "' has no part");
            return part;
        }
        return "";
    } catch (const pptx::PptxError& e) {
        fail(file, e.what());
    }
}

std::string columnLetters(int column) {
    std::string s;
    for (int c = column; c > 0; c = (c - 1) / 26) s.insert(s.begin(), static_cast<char>('A' + (c - 1) % 26));
    return s;
}

// "BC12" -> column 55, row 12 (both from 1); false when it is not a cell reference.
bool cellReference(std::string_view ref, int& column, long& row) {
    std::size_t i = 0;
    int col = 0;
    while (i < ref.size() && i < 3 && ref[i] >= 'A' && ref[i] <= 'Z') col = col * 26 + (ref[i++] - 'A' + 1);
    if (col == 0 || col > kMaxColumn || i == ref.size() || ref.size() - i > 7) return false;
    long r = 0;
    for (; i < ref.size(); ++i) {
        if (ref[i] < '0' || ref[i] > '9') return false;
        r = r * 10 + (ref[i] - '0');
    }
    if (r < 1 || r > kMaxRow) return false;
    column = col;
    row = r;
    return true;
}

class SheetEditor {
public:
    SheetEditor(pugi::xml_document& doc, const fs::path& file) : file_(file) {
        worksheet_ = doc.document_element();
        if (xml::localName(worksheet_) != "worksheet") fail(file, "its worksheet part holds no worksheet");
        prefix_ = std::string(xml::prefixOf(worksheet_.name()));
        data_ = xml::child(worksheet_, "sheetData");
        if (!data_) fail(file, "its worksheet has no cell data");
    }

    void write(int column, long row, const std::string& text) {
        pugi::xml_node c = cell(column, row, true);
        clearValue(c);
        c.append_attribute("t") = "inlineStr";
        pugi::xml_node t = c.append_child(q("is").c_str()).append_child(q("t").c_str());
        // Blanks at either end would be dropped without this.
        if (!text.empty() && (text.front() == ' ' || text.back() == ' ')) t.append_attribute("xml:space") = "preserve";
        t.text().set(text.c_str());
        extend(column, row);
    }

    // Empties the column's cells from this row down (their styles stay).
    void clearFrom(int column, long firstRow) {
        for (pugi::xml_node r = data_.first_child(); r; r = r.next_sibling()) {
            if (r.type() != pugi::node_element || xml::localName(r) != "row") continue;
            const long number = std::atol(xml::plainAttr(r, "r").value());
            if (number < firstRow) continue;
            for (pugi::xml_node c = r.first_child(); c; c = c.next_sibling()) {
                int col = 0;
                long at = 0;
                if (c.type() == pugi::node_element && xml::localName(c) == "c" &&
                    cellReference(xml::plainAttr(c, "r").value(), col, at) && col == column)
                    clearValue(c);
            }
        }
    }

private:
    std::string q(std::string_view local) const { return prefix_.empty() ? std::string(local) : prefix_ + ":" + std::string(local); }

    static void clearValue(pugi::xml_node c) {
        c.remove_attribute("t");
        while (pugi::xml_node k = c.first_child()) c.remove_child(k);
    }

    // The row's element, made where rows are ordered when it is missing. Rows without a
    // number follow the one before them, as the format has it.
    pugi::xml_node rowOf(long row, bool make) {
        long previous = 0;
        for (pugi::xml_node r = data_.first_child(); r; r = r.next_sibling()) {
            if (r.type() != pugi::node_element || xml::localName(r) != "row") continue;
            const char* n = xml::plainAttr(r, "r").value();
            const long number = *n ? std::atol(n) : previous + 1;
            if (number < 1) fail(file_, "a row of its worksheet has a bad number");
            if (number == row) {
                if (!*n) r.append_attribute("r") = std::to_string(row).c_str();
                return r;
            }
            if (number > row) {
                if (!make) return {};
                pugi::xml_node fresh = data_.insert_child_before(q("row").c_str(), r);
                fresh.append_attribute("r") = std::to_string(row).c_str();
                return fresh;
            }
            previous = number;
        }
        if (!make) return {};
        pugi::xml_node fresh = data_.append_child(q("row").c_str());
        fresh.append_attribute("r") = std::to_string(row).c_str();
        return fresh;
    }

    pugi::xml_node cell(int column, long row, bool make) {
        pugi::xml_node r = rowOf(row, make);
        if (!r) return {};
        const std::string ref = columnLetters(column) + std::to_string(row);
        int next = 1;
        for (pugi::xml_node c = r.first_child(); c; c = c.next_sibling()) {
            if (c.type() != pugi::node_element || xml::localName(c) != "c") continue;
            int col = next;
            long at = row;
            if (const char* cr = xml::plainAttr(c, "r").value(); *cr && !cellReference(cr, col, at))
                fail(file_, "a cell of its worksheet has a bad reference");
            next = col + 1;
            if (col == column) {
                if (!*xml::plainAttr(c, "r").value()) c.append_attribute("r") = ref.c_str();
                return c;
            }
            if (col > column) {
                if (!make) return {};
                pugi::xml_node fresh = r.insert_child_before(q("c").c_str(), c);
                fresh.append_attribute("r") = ref.c_str();
                return fresh;
            }
        }
        if (!make) return {};
        // After the last cell, but before anything that is not a cell (extension lists).
        pugi::xml_node after;
        for (pugi::xml_node c = r.last_child(); c; c = c.previous_sibling())
            if (c.type() == pugi::node_element && xml::localName(c) == "c") {
                after = c;
                break;
            }
        pugi::xml_node fresh = after ? r.insert_child_after(q("c").c_str(), after) : r.prepend_child(q("c").c_str());
        fresh.append_attribute("r") = ref.c_str();
        // A row's span hint no longer holds once it gains a cell outside it.
        r.remove_attribute("spans");
        return fresh;
    }

    // Keeps the sheet's used range (when it states one) around the cells written.
    void extend(int column, long row) {
        pugi::xml_node dim = xml::child(worksheet_, "dimension");
        if (!dim) return;
        pugi::xml_attribute ref = xml::plainAttr(dim, "ref");
        const std::string text = ref.value();
        const auto colon = text.find(':');
        int c1 = 0, c2 = 0;
        long r1 = 0, r2 = 0;
        if (!cellReference(text.substr(0, colon), c1, r1)) return;
        if (colon == std::string::npos) {
            c2 = c1;
            r2 = r1;
        } else if (!cellReference(text.substr(colon + 1), c2, r2)) {
            return;
        }
        const int lc = std::min(c1, column), hc = std::max(c2, column);
        const long lr = std::min(r1, row), hr = std::max(r2, row);
        const std::string wanted = columnLetters(lc) + std::to_string(lr) + ":" + columnLetters(hc) + std::to_string(hr);
        if (wanted != text) ref.set_value(wanted.c_str());
    }

    fs::path file_;
    pugi::xml_node worksheet_;
    pugi::xml_node data_;
    std::string prefix_;
};

void saveWorkbook(pptx::Package& pkg, const fs::path& file) {
    const std::string bytes = pkg.toBytes();
    // Written beside the workbook and moved over it once complete: a failed save leaves the
    // operator's file as it was.
    fs::path part = file;
    part += ".part";
    {
        std::ofstream out(part, std::ios::binary | std::ios::trunc);
        if (!out || !out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) || !out.flush()) {
            std::error_code ignore;
            fs::remove(part, ignore);
            fail(file, "it cannot be written");
        }
    }
    std::error_code ec;
    fs::rename(part, file, ec);
    if (ec) {
        fs::remove(part, ec);
        fail(file, "it cannot be replaced (" + ec.message() + ")");
    }
}

}  // namespace

std::string findXlsxWorksheet(const fs::path& file, const std::string& sheet) {
    pptx::Package pkg = openWorkbook(file);
    return worksheetPart(pkg, sheet, file).empty() ? std::string() : file.filename().string();
}

void writeXlsxWorksheetColumn(const fs::path& file, const std::string& sheet, int column, int firstRow,
                              const std::vector<std::string>& texts) {
    if (column < 1 || column > kMaxColumn || firstRow < 1 ||
        static_cast<long>(firstRow) + static_cast<long>(texts.size()) - 1 > kMaxRow)
        fail(file, "the cells lie outside the worksheet");
    pptx::Package pkg = openWorkbook(file);
    const std::string part = worksheetPart(pkg, sheet, file);
    if (part.empty()) fail(file, "it has no worksheet '" + sheet + "'");
    try {
        pugi::xml_document& doc = pkg.xml(part);
        SheetEditor editor(doc, file);
        for (std::size_t i = 0; i < texts.size(); ++i) editor.write(column, firstRow + static_cast<long>(i), texts[i]);
        editor.clearFrom(column, firstRow + static_cast<long>(texts.size()));
        pkg.touch(part);
    } catch (const pptx::PptxError& e) {
        fail(file, e.what());
    }
    saveWorkbook(pkg, file);
}

std::string FileSpreadsheet::findWorksheet(const fs::path& file, const std::string& sheet) {
    return findXlsxWorksheet(file, sheet);
}

void FileSpreadsheet::writeWorksheetColumn(const fs::path& file, const std::string& sheet, int column, int firstRow,
                                           const std::vector<std::string>& texts) {
    writeXlsxWorksheetColumn(file, sheet, column, firstRow, texts);
}

}  // namespace tlx
