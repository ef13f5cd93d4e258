// The port file "port.tlc". The first byte picks what the rest is:
//   0: the file's bytes as they lie on disk (the cipher must refuse what it did not seal);
//   1: the plain text, sealed as the set-up form would seal it, then read back;
//   2: the plain text, sealed, and a whole controller started on it (the base table sizes
//      the per-keypad arrays and picks the drivers).
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/PortFile.h"
#include "support/FuzzInput.h"
#include "support/FuzzWorld.h"

namespace {

using namespace tlx;

void read(const std::string& bytes) {
    test::TempDir dir;
    const auto file = dir / "port.tlc";
    test::writeFile(file, bytes);
    const PortFileRead r = readPortFile(file);
    // Whatever the file, the controller gets a base table to run on.
    if (r.data.bases.empty()) __builtin_trap();
    // A table read back writes and reads again to the same table.
    if (r.status == PortFileStatus::Ok) {
        const PortFileData again = parsePortFilePlainText(portFilePlainText(r.data));
        if (again.bases.size() != r.data.bases.size()) __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput in(data, size);
    const int mode = in.byte() % 3;
    const std::string rest = in.rest();
    if (mode == 0) {
        read(rest);
        return 0;
    }
    const auto sealed = encryptPortText(rest);
    if (!sealed) __builtin_trap();
    if (mode == 1) {
        read(*sealed);
        return 0;
    }
    fuzz::FuzzWorld world(std::vector<PortEntry>{});  // no port file
    test::writeFile(world.w.appData() / "tallix" / "port.tlc", *sealed);
    world.openDeck();
    world.start();
    world.send("GETVOTEINFO");
    world.send("STARTVOTE");
    world.send("ENDVOTE");
    return 0;
}
