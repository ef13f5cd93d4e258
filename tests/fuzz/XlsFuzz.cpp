// ".xls" workbooks (the older binary format): the participant list read with freexl. With the
// first byte odd the workbook is read as the controller reads its participant list, beside
// the presentation at start-up; otherwise the reader alone.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/ParticipantNames.h"
#include "platform/files/FileSpreadsheet.h"
#include "ports/AppError.h"
#include "support/FuzzInput.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput in(data, size);
    const bool throughNames = in.flag();
    const std::string bytes = in.rest();
    if (throughNames) {
        fuzz::FuzzWorld world;
        FileSpreadsheet spreadsheet;
        world.w.c().spreadsheet = &spreadsheet;
        test::writeFile(world.w.dir / kParticipantListXls, bytes);
        world.openDeck();
        world.start();
        world.send("GETNAMES");
        return 0;
    }
    test::TempDir dir;
    const auto file = dir / "list.xls";
    test::writeFile(file, bytes);
    try {
        (void)readXlsFirstSheet(file);
    } catch (const AppError&) {
        // Refused with a message: the expected outcome for a damaged workbook.
    }
    return 0;
}
