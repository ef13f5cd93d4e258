// ".xlsx" workbooks: the participant list read from its zip parts. The first byte picks what
// the rest is: a whole file, or the XML of the worksheet, the shared strings, the workbook or
// its relationships inside an otherwise sound workbook (so that mutations reach the XML,
// which the compression would otherwise hide). With its bit 4 set the workbook is read as
// the controller reads its participant list, beside the presentation at start-up.
#include "core/ParticipantNames.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/files/pptx/Zip.h"
#include "ports/AppError.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

namespace {

using namespace tlx;

std::string withPart(const std::string& name, const std::string& xml) {
    static const std::vector<pptx::ZipEntry> base = [] {
        test::TempDir dir;
        const auto file = dir / "base.xlsx";
        writeXlsxWorkbook(file, {{std::string("Keypad"), std::string("Name"), std::string("Weighting")},
                                 {1.0, std::string("Ann"), 2.0},
                                 {2.0, std::string("Bob"), 1.0}},
                          false);
        return pptx::readZip(test::readFile(file), "base");
    }();
    std::vector<pptx::ZipEntry> entries = base;
    for (auto& e : entries)
        if (e.name == name) e.data = xml;
    return pptx::writeZip(entries);
}

}  // namespace

TLX_FUZZ_HARNESS(in) {
    const std::uint8_t mode = in.byte();
    const std::string rest = in.rest();
    static const char* const kParts[] = {"xl/worksheets/sheet1.xml", "xl/sharedStrings.xml", "xl/workbook.xml",
                                         "xl/_rels/workbook.xml.rels"};
    const std::string bytes = mode % 5 == 0 ? rest : withPart(kParts[mode % 5 - 1], rest);
    if (mode & 8) return fuzz::startWithParticipantList(kParticipantListXlsx, bytes);
    test::TempDir dir;
    test::writeFile(dir / "list.xlsx", bytes);
    fuzz::readOrRefuse<AppError>([&] { (void)readXlsxFirstSheet(dir / "list.xlsx"); });
}
