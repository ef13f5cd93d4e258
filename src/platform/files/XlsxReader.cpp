// The first worksheet of an ".xlsx" workbook: the workbook part names the sheets in order,
// its relationships lead to the sheet's part, and text cells point into the shared strings
// (or carry their text inline).
#include <zip.h>

#include <pugixml.hpp>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/FileSpreadsheet.h"
#include "ports/AppError.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

// Far beyond any participant list; a part larger than this is not read into memory.
constexpr zip_uint64_t kMaxPartBytes = 256u * 1024u * 1024u;
// The sheet grid of the format.
constexpr std::size_t kMaxRows = 1048576;
constexpr std::size_t kMaxColumns = 16384;
// What one sheet may become in memory: a few kilobytes of compressed XML can name the last
// column in every row, or one long shared string in every cell.
constexpr std::size_t kMaxCells = 1u << 20;
constexpr std::size_t kMaxTextBytes = 64u * 1024u * 1024u;

[[noreturn]] void fail(const fs::path& file, const std::string& why) {
    throw AppError(kWorkbookError, "Cannot read workbook '" + file.filename().string() + "': " + why);
}

class ZipParts {
public:
    explicit ZipParts(const fs::path& file) : file_(file) {
        int code = 0;
        zip_ = zip_open(file.c_str(), ZIP_RDONLY, &code);
        if (!zip_) {
            if (code == ZIP_ER_NOENT) throw AppError(err::kFileNotFound, "File not found: " + file.string());
            zip_error_t error;
            zip_error_init_with_code(&error, code);
            const std::string text = zip_error_strerror(&error);
            zip_error_fini(&error);
            fail(file, text);
        }
    }
    ~ZipParts() {
        if (zip_) zip_discard(zip_);
    }
    ZipParts(const ZipParts&) = delete;
    ZipParts& operator=(const ZipParts&) = delete;

    // The part's bytes; nothing when the archive has no such part.
    std::optional<std::string> read(const std::string& name) {
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat(zip_, name.c_str(), 0, &st) != 0) return std::nullopt;
        if (!(st.valid & ZIP_STAT_SIZE) || st.size > kMaxPartBytes) fail(file_, "part " + name + " is too large");
        zip_file_t* f = zip_fopen(zip_, name.c_str(), 0);
        if (!f) fail(file_, "part " + name + " cannot be opened");
        std::string data(static_cast<std::size_t>(st.size), '\0');
        zip_uint64_t done = 0;
        while (done < st.size) {
            const zip_int64_t n = zip_fread(f, data.data() + done, st.size - done);
            if (n <= 0) break;
            done += static_cast<zip_uint64_t>(n);
        }
        zip_fclose(f);
        if (done != st.size) fail(file_, "part " + name + " is damaged");
        return data;
    }

private:
    fs::path file_;
    zip_t* zip_ = nullptr;
};

// Element and attribute names without their namespace prefix ("x:row" is "row").
std::string_view localName(const char* name) {
    std::string_view n(name);
    const auto colon = n.find(':');
    return colon == std::string_view::npos ? n : n.substr(colon + 1);
}

pugi::xml_node child(pugi::xml_node node, std::string_view name) {
    for (pugi::xml_node c : node.children())
        if (c.type() == pugi::node_element && localName(c.name()) == name) return c;
    return {};
}

const char* attribute(pugi::xml_node node, std::string_view name) {
    for (pugi::xml_attribute a : node.attributes())
        if (localName(a.name()) == name) return a.value();
    return "";
}

void parse(pugi::xml_document& doc, const std::string& data, const fs::path& file, const std::string& part) {
    const auto result = doc.load_buffer(data.data(), data.size(), pugi::parse_default | pugi::parse_ws_pcdata_single);
    if (!result) fail(file, "part " + part + " is not well-formed (" + result.description() + ")");
}

// The text of a string item: its own <t>, or the <t> of each rich-text run (phonetic
// guides left out).
std::string itemText(pugi::xml_node item) {
    std::string text;
    for (pugi::xml_node c : item.children()) {
        const std::string_view n = localName(c.name());
        if (n == "t")
            text += c.text().get();
        else if (n == "r")
            text += child(c, "t").text().get();
    }
    return text;
}

// A part named by a relationship target, relative to the "xl" folder unless absolute.
std::string partName(std::string target) {
    if (!target.empty() && target.front() == '/') return target.substr(1);
    std::string base = "xl/";
    while (target.rfind("../", 0) == 0) {
        target.erase(0, 3);
        base.clear();
    }
    return base + target;
}

// "BC12" -> column 54 (0-based), row 11 (0-based); false when it is not a cell reference.
bool cellReference(std::string_view ref, std::size_t& column, std::size_t& row) {
    std::size_t i = 0, col = 0, r = 0;
    while (i < ref.size() && ref[i] >= 'A' && ref[i] <= 'Z' && i < 3) col = col * 26 + static_cast<std::size_t>(ref[i++] - 'A' + 1);
    if (col == 0 || i == ref.size()) return false;
    for (; i < ref.size(); ++i) {
        if (ref[i] < '0' || ref[i] > '9' || r > kMaxRows) return false;
        r = r * 10 + static_cast<std::size_t>(ref[i] - '0');
    }
    if (r == 0) return false;
    column = col - 1;
    row = r - 1;
    return true;
}

}  // namespace

std::vector<std::vector<std::string>> readXlsxFirstSheet(const fs::path& file) { return readXlsxSheet(file, ""); }

std::vector<std::vector<std::string>> readXlsxSheet(const fs::path& file, const std::string& sheetName) {
    ZipParts zip(file);

    // The sheet (the first in the workbook's order, or the one named), and where its part is.
    const auto workbookXml = zip.read("xl/workbook.xml");
    if (!workbookXml) fail(file, "it is not a workbook");
    pugi::xml_document workbook;
    parse(workbook, *workbookXml, file, "xl/workbook.xml");
    pugi::xml_node firstSheet = child(child(child(workbook, "workbook"), "sheets"), "sheet");
    if (!sheetName.empty()) {
        auto lower = [](std::string s) {
            for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            return s;
        };
        for (; firstSheet; firstSheet = firstSheet.next_sibling())
            if (firstSheet.type() == pugi::node_element && localName(firstSheet.name()) == "sheet" &&
                lower(attribute(firstSheet, "name")) == lower(sheetName))
                break;
    }
    if (!firstSheet) fail(file, sheetName.empty() ? "it has no worksheet" : "it has no worksheet '" + sheetName + "'");
    const std::string sheetId = attribute(firstSheet, "id");

    std::string sheetPart = "xl/worksheets/sheet1.xml";
    std::string stringsPart = "xl/sharedStrings.xml";
    if (const auto relsXml = zip.read("xl/_rels/workbook.xml.rels")) {
        pugi::xml_document rels;
        parse(rels, *relsXml, file, "xl/_rels/workbook.xml.rels");
        for (pugi::xml_node r : child(rels, "Relationships").children()) {
            if (localName(r.name()) != "Relationship") continue;
            const std::string type = attribute(r, "Type");
            if (!sheetId.empty() && sheetId == attribute(r, "Id")) sheetPart = partName(attribute(r, "Target"));
            if (type.size() >= 14 && type.compare(type.size() - 14, 14, "/sharedStrings") == 0)
                stringsPart = partName(attribute(r, "Target"));
        }
    }

    std::vector<std::string> shared;
    if (const auto stringsXml = zip.read(stringsPart)) {
        pugi::xml_document strings;
        parse(strings, *stringsXml, file, stringsPart);
        for (pugi::xml_node si : child(strings, "sst").children())
            if (localName(si.name()) == "si") shared.push_back(itemText(si));
    }

    const auto sheetXml = zip.read(sheetPart);
    if (!sheetXml) fail(file, "its first worksheet is missing");
    pugi::xml_document sheet;
    parse(sheet, *sheetXml, file, sheetPart);

    std::vector<std::vector<std::string>> rows;
    std::size_t cellCount = 0, textBytes = 0;
    std::size_t nextRow = 0;
    for (pugi::xml_node row : child(child(sheet, "worksheet"), "sheetData").children()) {
        if (localName(row.name()) != "row") continue;
        std::size_t r = nextRow;
        if (const char* number = attribute(row, "r"); *number) {
            const long long v = std::atoll(number);
            if (v < 1 || static_cast<std::size_t>(v) > kMaxRows) continue;
            r = static_cast<std::size_t>(v - 1);
        }
        nextRow = r + 1;
        std::size_t nextColumn = 0;
        for (pugi::xml_node c : row.children()) {
            if (localName(c.name()) != "c") continue;
            std::size_t column = nextColumn, refRow = r;
            if (const char* ref = attribute(c, "r"); *ref && !cellReference(ref, column, refRow)) continue;
            nextColumn = column + 1;
            if (column >= kMaxColumns) continue;

            const std::string type = attribute(c, "t");
            std::string value;
            if (type == "inlineStr") {
                value = itemText(child(c, "is"));
            } else if (type == "s") {
                const char* index = child(c, "v").text().get();
                char* end = nullptr;
                const unsigned long i = std::strtoul(index, &end, 10);
                if (end == index || i >= shared.size()) fail(file, std::string("cell refers to a missing string"));
                value = shared[i];
            } else {
                // Numbers as the workbook stores them, formula results, booleans (0/1), errors.
                value = child(c, "v").text().get();
            }
            if (value.empty()) continue;
            if (rows.size() <= r) rows.resize(r + 1);
            auto& cells = rows[r];
            if (cells.size() <= column) {
                cellCount += column + 1 - cells.size();
                if (cellCount > kMaxCells) fail(file, "it holds more cells than a participant list can");
                cells.resize(column + 1);
            }
            textBytes += value.size() - cells[column].size();
            if (textBytes > kMaxTextBytes) fail(file, "it holds more text than a participant list can");
            cells[column] = std::move(value);
        }
    }
    return rows;
}

}  // namespace tlx
