// Workbook files: ".xlsx" written and read back, the ".xls" fixture, and files that are not
// what their names say.
#include <gtest/gtest.h>


#include "platform/files/FileSpreadsheet.h"
#include "platform/files/pptx/Zip.h"
#include "ports/AppError.h"
#include "support/TestWorld.h"
#include "support/TestPaths.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

using Sheet = std::vector<std::vector<std::string>>;

using tlx::test::sourceDir;

fs::path xlsFixture() { return sourceDir() / "tests" / "data" / "names" / "tallix Participant list.xls"; }

// The error number a read or write failed with; 0 when it did not fail.
template <class F>
int failure(F&& f) {
    try {
        f();
    } catch (const AppError& e) {
        return e.number();
    }
    return 0;
}

const std::vector<SheetRow> kRows = {
    {std::string("Keypad"), std::string("Name"), std::string("Weighting")},
    {5.0, std::string("Ann <&> \"Example\""), 2.0},
    {12.0, std::string("  Zoë Ω  "), 0.5},
    {},
    {7.0, std::string(), -3.0},
};

const Sheet kExpected = {
    {"Keypad", "Name", "Weighting"},
    {"5", "Ann <&> \"Example\"", "2"},
    {"12", "  Zoë Ω  ", "0.5"},
    {},
    {"7", "", "-3"},
};

}  // namespace

TEST(SpreadsheetFiles, XlsxWrittenIsReadBackWithSharedOrInlineStringsAndTheXlsFixtureWithFreexl) {
    TempDir dir;
    FileSpreadsheet sheets;
    sheets.writeWorkbook(dir / "shared.xlsx", kRows);
    EXPECT_EQ(sheets.readFirstSheet(dir / "shared.xlsx"), kExpected);
    writeXlsxWorkbook(dir / "inline.XLSX", kRows, true);
    EXPECT_EQ(sheets.readFirstSheet(dir / "inline.XLSX"), kExpected);
    EXPECT_FALSE(fs::exists(dir / "shared.xlsx.part"));

    // Writing again replaces the file.
    sheets.writeWorkbook(dir / "shared.xlsx", {{std::string("only")}});
    EXPECT_EQ(sheets.readFirstSheet(dir / "shared.xlsx"), (Sheet{{"only"}}));

    const Sheet xls = {
        {"Name", "Weighting", "Keypad"}, {"Ann Example", "2", "3"},   {"Bob", "1", "7"},
        {"\"Quoted Carol\"", "1", "12"}, {"Dup Dave", "4", "3"},      {"Zoë Ünïcode Ω", "5", "20"},
        {"No Keypad", "1"},              {"After The Gap", "1", "30"},
    };
    EXPECT_EQ(sheets.readFirstSheet(xlsFixture()), xls);
}

TEST(SpreadsheetFiles, FilesThatAreNotWorkbooksFailWithAnError) {
    TempDir dir;
    FileSpreadsheet sheets;
    for (const char* missing : {"missing.xlsx", "missing.xls"})
        EXPECT_EQ(failure([&] { sheets.readFirstSheet(dir / missing); }), err::kFileNotFound) << missing;

    for (const char* name : {"text.xlsx", "text.xls", "list.csv"}) {
        writeFile(dir / name, "Keypad,Name\r\n1,Ann\r\n");
        EXPECT_EQ(failure([&] { sheets.readFirstSheet(dir / name); }), kWorkbookError) << name;
    }

    // A zip that is not a workbook, and a workbook cut short.
    sheets.writeWorkbook(dir / "good.xlsx", kRows);
    const std::string good = readFile(dir / "good.xlsx");
    writeFile(dir / "cut.xlsx", good.substr(0, good.size() / 2));
    EXPECT_EQ(failure([&] { sheets.readFirstSheet(dir / "cut.xlsx"); }), kWorkbookError);
    const std::string xls = readFile(xlsFixture());
    writeFile(dir / "cut.xls", xls.substr(0, 1500));
    EXPECT_EQ(failure([&] { sheets.readFirstSheet(dir / "cut.xls"); }), kWorkbookError);
}

TEST(SpreadsheetFiles, WritingFailsCleanly) {
    TempDir dir;
    FileSpreadsheet sheets;
    EXPECT_EQ(failure([&] { sheets.writeWorkbook(dir / "no" / "such" / "folder.xlsx", kRows); }), kWorkbookError);
    EXPECT_FALSE(fs::exists(dir / "no"));
    EXPECT_EQ(failure([&] { sheets.writeWorkbook(dir / "old.xls", kRows); }), kWorkbookError);
    // A cell longer than a workbook allows: nothing half-written is left, the old file stays.
    sheets.writeWorkbook(dir / "keep.xlsx", kRows);
    EXPECT_EQ(failure([&] { sheets.writeWorkbook(dir / "keep.xlsx", {{std::string(40000, 'x')}}); }),
              kWorkbookError);
    EXPECT_EQ(sheets.readFirstSheet(dir / "keep.xlsx"), kExpected);
    EXPECT_FALSE(fs::exists(dir / "keep.xlsx.part"));
}

// A few kilobytes of compressed XML naming the last column in every row would become
// gigabytes of empty cells: such a sheet is refused before it is built.
TEST(SpreadsheetFiles, XlsxSheetThatWouldFillMemoryIsRefused) {
    TempDir dir;
    FileSpreadsheet sheets;
    sheets.writeWorkbook(dir / "good.xlsx", kRows);
    const auto good = pptx::readZip(readFile(dir / "good.xlsx"), "good.xlsx");
    // The workbook with a sheet of `count` rows, each naming only the last column.
    auto lastColumnRows = [&](int count) {
        std::string rows;
        for (int r = 1; r <= count; ++r) rows += "<row><c r=\"XFD" + std::to_string(r) + "\"><v>1</v></c></row>";
        auto entries = good;
        for (auto& e : entries)
            if (e.name == "xl/worksheets/sheet1.xml")
                e.data = "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><sheetData>" +
                         rows + "</sheetData></worksheet>";
        const fs::path file = dir / ("rows" + std::to_string(count) + ".xlsx");
        writeFile(file, pptx::writeZip(entries));
        return file;
    };
    EXPECT_EQ(failure([&] { sheets.readFirstSheet(lastColumnRows(70)); }), kWorkbookError);
    // The same last column in a few rows is a sheet like any other.
    const Sheet three = sheets.readFirstSheet(lastColumnRows(3));
    ASSERT_EQ(three.size(), 3u);
    EXPECT_EQ(fields(three[2].size(), three[2].back()), "16384|1");
}
