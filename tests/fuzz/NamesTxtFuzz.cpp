// "names.txt" beside the presentation: read at start-up, and again by LOADNAMES and GETNAMES.
// The GETNAMES reply must keep one participant a line whatever the file held.
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    test::writeFile(world.w.dir / "names.txt", in.rest());
    world.startWithDeck();
    world.checkNamesReply();
}
