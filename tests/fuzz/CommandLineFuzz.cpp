// Command lines and key lines, as a display program sends them through the automation class.
// The first line of the input is the client's start-up argument text (init); every further
// line is one SendCommand call, in which "\r" stands for the "\r\n" between lines of one call.
// The controller runs the real wiring: presentation targets, vote run and intake, and drivers
// over scripted bases, with a deck open.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/Text.h"
#include "presentation/Tallix.h"
#include "support/FuzzInput.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput in(data, size);
    fuzz::FuzzWorld world;
    world.openDeck();
    world.start();
    tallix client(world.w.c());
    client.init(in.line());
    for (int calls = 0; !in.empty() && calls < 64; ++calls) {
        client.SendCommand(replaceAll(in.line(), "\r", "\r\n"));
        world.run(120);
    }
    world.run(2000);
    return 0;
}
