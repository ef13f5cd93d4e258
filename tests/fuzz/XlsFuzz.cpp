// ".xls" workbooks (the older binary format): the participant list read with freexl. With the
// first byte odd the workbook is read as the controller reads its participant list, beside
// the presentation at start-up; otherwise the reader alone.
#include "core/ParticipantNames.h"
#include "platform/files/FileSpreadsheet.h"
#include "ports/AppError.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    const bool throughNames = in.flag();
    const std::string bytes = in.rest();
    if (throughNames) return fuzz::startWithParticipantList(kParticipantListXls, bytes);
    test::TempDir dir;
    test::writeFile(dir / "list.xls", bytes);
    fuzz::readOrRefuse<AppError>([&] { (void)readXlsFirstSheet(dir / "list.xls"); });
}
