// Command lines and key lines, as a display program sends them through the automation class.
// The first line of the input is the client's start-up argument text (init); every further
// line is one SendCommand call, in which "\r" stands for the "\r\n" between lines of one call.
// The controller runs the real wiring: presentation targets, vote run and intake, and drivers
// over scripted bases, with a deck open.
#include "core/Text.h"
#include "presentation/Tallix.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.startWithDeck();
    tallix client(world.w.c());
    client.init(in.line());
    for (int calls = 0; !in.empty() && calls < 64; ++calls) {
        client.SendCommand(replaceAll(in.line(), "\r", "\r\n"));
        world.run(120);
    }
    world.run(2000);
}
