// ".xlsx" workbooks: the participant list read from its zip parts. The first byte picks what
// the rest is: a whole file, or the XML of the worksheet, the shared strings, the workbook or
// its relationships inside an otherwise sound workbook (so that mutations reach the XML,
// which the compression would otherwise hide). With its bit 4 set the workbook is read as
// the controller reads its participant list, beside the presentation at start-up.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/ParticipantNames.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/files/pptx/PptxError.h"
#include "platform/files/pptx/Zip.h"
#include "ports/AppError.h"
#include "support/FuzzInput.h"
#include "support/FuzzWorld.h"

namespace {

using namespace tlx;

const std::vector<pptx::ZipEntry>& baseEntries() {
    static const std::vector<pptx::ZipEntry> entries = [] {
        test::TempDir dir;
        const auto file = dir / "base.xlsx";
        writeXlsxWorkbook(file, {{std::string("Keypad"), std::string("Name"), std::string("Weighting")},
                                 {1.0, std::string("Ann"), 2.0},
                                 {2.0, std::string("Bob"), 1.0}},
                          false);
        return pptx::readZip(test::readFile(file), "base");
    }();
    return entries;
}

std::string withPart(const std::string& name, const std::string& xml) {
    std::vector<pptx::ZipEntry> entries = baseEntries();
    for (auto& e : entries)
        if (e.name == name) e.data = xml;
    return pptx::writeZip(entries);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput in(data, size);
    const std::uint8_t mode = in.byte();
    const std::string rest = in.rest();
    std::string bytes;
    switch (mode % 5) {
        case 0: bytes = rest; break;
        case 1: bytes = withPart("xl/worksheets/sheet1.xml", rest); break;
        case 2: bytes = withPart("xl/sharedStrings.xml", rest); break;
        case 3: bytes = withPart("xl/workbook.xml", rest); break;
        default: bytes = withPart("xl/_rels/workbook.xml.rels", rest); break;
    }
    if (mode & 8) {
        fuzz::FuzzWorld world;
        FileSpreadsheet spreadsheet;
        world.w.c().spreadsheet = &spreadsheet;
        test::writeFile(world.w.dir / kParticipantListXlsx, bytes);
        world.openDeck();
        world.start();
        world.send("GETNAMES");
        return 0;
    }
    test::TempDir dir;
    const auto file = dir / "list.xlsx";
    test::writeFile(file, bytes);
    try {
        (void)readXlsxFirstSheet(file);
    } catch (const AppError&) {
        // Refused with a message: the expected outcome for a damaged workbook.
    }
    return 0;
}
