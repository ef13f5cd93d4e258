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
};

// The ".xlsx" writer on its own. With inlineStrings the text is kept in the cells themselves
// (as streaming writers do) instead of in the shared-strings part.
void writeXlsxWorkbook(const std::filesystem::path& file, const std::vector<SheetRow>& rows, bool inlineStrings);

// The readers on their own, whatever the file is called.
std::vector<std::vector<std::string>> readXlsxFirstSheet(const std::filesystem::path& file);
std::vector<std::vector<std::string>> readXlsFirstSheet(const std::filesystem::path& file);

// Error number of a workbook that cannot be read or written (as the spreadsheet program's
// automation reports its own failures).
inline constexpr int kWorkbookError = 1004;

}  // namespace tlx
