// The port file "port.tlc". The first byte picks what the rest is:
//   0: the file's bytes as they lie on disk (the cipher must refuse what it did not seal);
//   1: the plain text, sealed as the set-up form would seal it, then read back;
//   2: the plain text, sealed, and a whole controller started on it (the base table sizes
//      the per-keypad arrays and picks the drivers).
#include "core/PortFile.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

namespace {

using namespace tlx;

void read(const std::string& bytes) {
    test::TempDir dir;
    const auto file = dir / "port.tlc";
    test::writeFile(file, bytes);
    const PortFileRead r = readPortFile(file);
    // Whatever the file, the controller gets a base table to run on.
    fuzz::require(!r.data.bases.empty());
    // A table read back writes and reads again to the same table.
    if (r.status == PortFileStatus::Ok)
        fuzz::require(parsePortFilePlainText(portFilePlainText(r.data)).bases.size() == r.data.bases.size());
}

}  // namespace

TLX_FUZZ_HARNESS(in) {
    const int mode = in.byte() % 3;
    const std::string rest = in.rest();
    if (mode == 0) return read(rest);
    const auto sealed = encryptPortText(rest);
    fuzz::require(sealed.has_value());
    if (mode == 1) return read(*sealed);
    fuzz::FuzzWorld world(std::vector<PortEntry>{});  // no port file
    test::writeFile(world.w.appData() / "tallix" / "port.tlc", *sealed);
    world.startWithDeck();
    for (const char* command : {"GETVOTEINFO", "STARTVOTE", "ENDVOTE"}) world.send(command);
}
