#pragma once
// Workbooks: the participant list and the serial-number exports. The adapter reads and
// writes the files itself; the logic sees rows of cells. Failures are thrown as AppError.
#include <filesystem>
#include <string>
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
};

}  // namespace tlx
