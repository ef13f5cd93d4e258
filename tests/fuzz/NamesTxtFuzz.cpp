// "names.txt" beside the presentation: read at start-up, and again by LOADNAMES and GETNAMES.
// The GETNAMES reply must keep one participant a line whatever the file held.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/GlobalState.h"
#include "core/Text.h"
#include "support/FuzzInput.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzWorld world;
    test::writeFile(world.w.dir / "names.txt", std::string(reinterpret_cast<const char*>(data), size));
    world.openDeck();
    world.start();
    world.sent.clear();
    world.send("GETNAMES");
    std::string reply;
    for (const auto& s : world.sent)
        if (startsWith(s, "StartListOfNames")) reply = s;
    if (reply.empty()) __builtin_trap();
    // "StartListOfNames", a line per participant, "EndListOfNames".
    if (split(reply, "\r\n").size() != world.w.glo().participants.size() + 2) __builtin_trap();
    return 0;
}
