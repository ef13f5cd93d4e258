// Serial numbers written into one worksheet of an existing workbook, in place.
#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include <fstream>
#include <iterator>

#include "core/Text.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/files/pptx/Package.h"
#include "ports/AppError.h"
#include "support/TestWorld.h"

using namespace tlx;
using tlx::test::fields;
namespace fs = std::filesystem;

namespace {

std::string bytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// An invoice workbook as an office would keep it: a styled invoice sheet first, then the
// serial-number sheet with a bold heading, old serial numbers in A2..A6 and notes in column B.
fs::path invoiceWorkbook(const fs::path& dir, const char* serialSheet = "Serial Numbers") {
    const fs::path file = dir / "invoice.xlsx";
    lxw_workbook* wb = workbook_new(file.string().c_str());
    lxw_format* bold = workbook_add_format(wb);
    format_set_bold(bold);
    lxw_format* boxed = workbook_add_format(wb);
    format_set_border(boxed, LXW_BORDER_THIN);
    lxw_worksheet* invoice = workbook_add_worksheet(wb, "Invoice");
    worksheet_write_string(invoice, 0, 0, "Invoice 2031", bold);
    worksheet_write_number(invoice, 1, 1, 1250.5, nullptr);
    lxw_worksheet* serials = workbook_add_worksheet(wb, serialSheet);
    worksheet_write_string(serials, 0, 0, "Serial Number", bold);
    worksheet_write_string(serials, 0, 1, "Note", bold);
    for (int r = 1; r <= 5; ++r) worksheet_write_string(serials, static_cast<lxw_row_t>(r), 0, "old", boxed);
    worksheet_write_string(serials, 2, 1, "returned in March", nullptr);
    worksheet_write_string(serials, 9, 2, "far below", nullptr);
    EXPECT_EQ(workbook_close(wb), LXW_NO_ERROR);
    return file;
}

}  // namespace

TEST(SerialWorkbook, FoundByNameWithoutRegardToCaseAndAFailedUpdateLeavesTheFileAsItWas) {
    test::TempDir dir;
    const fs::path file = invoiceWorkbook(dir.path(), "SERIAL numbers");
    EXPECT_EQ(fields(findXlsxWorksheet(file, "Serial Numbers"), findXlsxWorksheet(file, "Serials")), "invoice.xlsx|");
    // A missing file and a damaged one are errors of their own.
    auto errorOf = [](const fs::path& f) {
        try {
            findXlsxWorksheet(f, "Serial Numbers");
        } catch (const AppError& e) {
            return static_cast<long>(e.number());
        }
        return 0L;
    };
    EXPECT_EQ(errorOf(dir / "missing.xlsx"), err::kFileNotFound);
    test::writeFile(dir / "junk.xlsx", "not a zip at all");
    EXPECT_EQ(errorOf(dir / "junk.xlsx"), kWorkbookError);

    const std::string original = bytesOf(invoiceWorkbook(dir.path()));
    EXPECT_THROW(writeXlsxWorksheetColumn(file, "Serials", 1, 2, {"1"}), AppError);
    EXPECT_THROW(writeXlsxWorksheetColumn(file, "Serial Numbers", 0, 2, {"1"}), AppError);
    EXPECT_EQ(bytesOf(file), original);
    // A workbook that is not there is not made.
    EXPECT_THROW(writeXlsxWorksheetColumn(dir / "none.xlsx", "Serial Numbers", 1, 2, {"1"}), AppError);
    EXPECT_EQ(fields(fs::exists(dir / "none.xlsx"), fs::exists(dir / "invoice.xlsx.part")), "0|0");
}

TEST(SerialWorkbook, WritesTheColumnAndKeepsEverythingElse) {
    test::TempDir dir;
    const fs::path file = invoiceWorkbook(dir.path());
    const auto before = pptx::Package::fromBytes(bytesOf(file), "before");
    std::string sheetPart;
    for (const auto& p : before.partNames())
        if (contains(p, "sheet2.xml") && !contains(p, "_rels")) sheetPart = p;
    ASSERT_FALSE(sheetPart.empty());

    writeXlsxWorksheetColumn(file, "Serial Numbers", 1, 2, {"300 500 001", "300 500 002", " padded "});

    const auto rows = readXlsxSheet(file, "Serial Numbers");
    ASSERT_GE(rows.size(), 10u);
    EXPECT_EQ(rows[0], (std::vector<std::string>{"Serial Number", "Note"}));
    EXPECT_EQ(rows[2], (std::vector<std::string>{"300 500 002", "returned in March"}));
    EXPECT_EQ(fields(rows[1].at(0), rows[3].at(0)), "300 500 001| padded ") << "blanks at the ends are kept";
    // The old numbers below the new ones are emptied; the note and the far cell stay.
    EXPECT_EQ(fields(rows[4].empty() || rows[4][0].empty(), rows[5].empty() || rows[5][0].empty(), rows[9].at(2)),
              "1|1|far below");
    EXPECT_EQ(readXlsxFirstSheet(file)[0][0], "Invoice 2031");

    // Every part but the worksheet's own keeps its bytes: styles, shared strings, the other
    // sheet, the workbook and its relationships.
    const auto after = pptx::Package::fromBytes(bytesOf(file), "after");
    EXPECT_EQ(after.partNames(), before.partNames());
    for (const auto& p : before.partNames()) {
        if (p == sheetPart) continue;
        EXPECT_EQ(after.partData(p), before.partData(p)) << p;
    }
    // A written cell keeps its border style.
    const std::string sheet = after.partData(sheetPart);
    const auto a2 = sheet.find("r=\"A2\"");
    ASSERT_NE(a2, std::string::npos);
    const std::string cell = sheet.substr(a2, sheet.find("</c>", a2) - a2);
    EXPECT_EQ(fields(contains(cell, " s=\""), contains(cell, "inlineStr")), "1|1") << cell;
}

TEST(SerialWorkbook, MissingRowsAndCellsAreMadeInOrder) {
    test::TempDir dir;
    const fs::path file = dir / "sparse.xlsx";
    lxw_workbook* wb = workbook_new(file.string().c_str());
    lxw_worksheet* ws = workbook_add_worksheet(wb, "Serial Numbers");
    worksheet_write_string(ws, 0, 2, "C1", nullptr);
    worksheet_write_string(ws, 3, 2, "C4", nullptr);
    worksheet_write_string(ws, 6, 0, "A7", nullptr);
    ASSERT_EQ(workbook_close(wb), LXW_NO_ERROR);

    writeXlsxWorksheetColumn(file, "Serial Numbers", 2, 1, {"b1", "b2", "b3", "b4", "b5"});

    const auto rows = readXlsxSheet(file, "Serial Numbers");
    ASSERT_GE(rows.size(), 7u);
    EXPECT_EQ(rows[0], (std::vector<std::string>{"", "b1", "C1"}));
    EXPECT_EQ(rows[3], (std::vector<std::string>{"", "b4", "C4"}));
    EXPECT_EQ(fields(rows[1].at(1), rows[4].at(1), rows[6].at(0)), "b2|b5|A7");
    // Rows stay in ascending order and cells within a row too, as spreadsheet programs need.
    const auto pkg = pptx::Package::fromBytes(bytesOf(file), "sparse");
    const std::string sheet = pkg.partData("/xl/worksheets/sheet1.xml");
    std::size_t last = 0;
    for (const char* ref : {"\"B1\"", "\"C1\"", "\"B2\"", "\"B3\"", "\"B4\"", "\"C4\"", "\"B5\"", "\"A7\""}) {
        const auto at = sheet.find(ref);
        ASSERT_NE(at, std::string::npos) << ref;
        EXPECT_GT(at, last) << ref;
        last = at;
    }
    EXPECT_TRUE(contains(sheet, "<dimension ref=\"A1:C7\"")) << "the used range grows to the new cells";
}
