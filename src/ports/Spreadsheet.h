#pragma once
// Workbooks: the participant list and the serial-number exports. The adapter reads and
// writes the files itself; the logic sees rows of cells. Failures are thrown as AppError.
#include <filesystem>
#include <string>

#include "ports/AppError.h"
#include <variant>
#include <vector>

namespace tlx {

// A cell to write: text, or a number.
using SheetCell = std::variant<std::string, double>;
using SheetRow = std::vector<SheetCell>;

class Spreadsheet {
public:
    virtual ~Spreadsheet() = default;

    // The first worksheet of a workbook as text, from row 1 on: each row holds its cells from
    // column A up to its last one that is not empty (empty cells as ""); rows with nothing in
    // them are empty. Numbers come in their plain decimal form ("12", "0.5").
    virtual std::vector<std::vector<std::string>> readFirstSheet(const std::filesystem::path& file) = 0;

    // Writes a new workbook (replacing any file of that name) whose one worksheet holds the
    // rows from A1 on, with the columns fitted to their contents and A1 selected.
    virtual void writeWorkbook(const std::filesystem::path& file, const std::vector<SheetRow>& rows) = 0;

    // Serial-number exports edit a workbook the operator names, in place.
    // The workbook's name (as the spreadsheet program shows it) when it holds a worksheet of
    // this name (compared without regard to case), "" when it holds none. A file that is not
    // there throws err::kFileNotFound.
    virtual std::string findWorksheet(const std::filesystem::path& file, const std::string& sheet) {
        (void)file;
        (void)sheet;
        throw AppError(err::kCannotCreateObject, "ActiveX component can't create object");
    }
    // Writes the texts down one column of that worksheet from a row on (both from 1) and
    // empties the cells below them in that column; every other cell, sheet and part of the
    // workbook stays as it was.
    virtual void writeWorksheetColumn(const std::filesystem::path& file, const std::string& sheet, int column,
                                      int firstRow, const std::vector<std::string>& texts) {
        (void)file;
        (void)sheet;
        (void)column;
        (void)firstRow;
        (void)texts;
        throw AppError(err::kCannotCreateObject, "ActiveX component can't create object");
    }
};

}  // namespace tlx
