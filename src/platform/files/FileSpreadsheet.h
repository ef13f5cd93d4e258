#pragma once
// Workbooks as files: ".xlsx" read from its zip parts and written with libxlsxwriter, ".xls"
// (the older binary format) read with freexl. No spreadsheet program is needed.
#include "ports/Spreadsheet.h"

namespace tlx {

class FileSpreadsheet : public Spreadsheet {
public:
    // Chosen by the file's extension (".xlsx" or ".xls", in any case).
    std::vector<std::vector<std::string>> readFirstSheet(const std::filesystem::path& file) override;
    // Only ".xlsx" can be written.
    void writeWorkbook(const std::filesystem::path& file, const std::vector<SheetRow>& rows) override;
    // ".xlsx" workbooks only, whatever the file is called.
    std::string findWorksheet(const std::filesystem::path& file, const std::string& sheet) override;
    void writeWorksheetColumn(const std::filesystem::path& file, const std::string& sheet, int column, int firstRow,
                              const std::vector<std::string>& texts) override;
};

// The ".xlsx" writer on its own. With inlineStrings the text is kept in the cells themselves
// (as streaming writers do) instead of in the shared-strings part.
void writeXlsxWorkbook(const std::filesystem::path& file, const std::vector<SheetRow>& rows, bool inlineStrings);

// The readers on their own, whatever the file is called.
std::vector<std::vector<std::string>> readXlsxFirstSheet(const std::filesystem::path& file);
// The worksheet of that name (compared without regard to case), read as the first one is.
std::vector<std::vector<std::string>> readXlsxSheet(const std::filesystem::path& file, const std::string& sheet);

// One worksheet of an ".xlsx" workbook edited in place (the Spreadsheet members of the same
// names).
std::string findXlsxWorksheet(const std::filesystem::path& file, const std::string& sheet);
void writeXlsxWorksheetColumn(const std::filesystem::path& file, const std::string& sheet, int column, int firstRow,
                              const std::vector<std::string>& texts);
std::vector<std::vector<std::string>> readXlsFirstSheet(const std::filesystem::path& file);

// Error number of a workbook that cannot be read or written (as the spreadsheet program's
// automation reports its own failures).
inline constexpr int kWorkbookError = 1004;

}  // namespace tlx
