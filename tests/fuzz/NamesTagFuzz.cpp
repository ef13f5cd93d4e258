// The "Participant Names" presentation tag: records separated by "|", fields by "^^". Read at
// start-up and by GETNAMES; a tag wins over any file beside the presentation.
#include "core/GlobalState.h"
#include "core/ParticipantNames.h"
#include "ports/PresentationApp.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.startWithDeck();
    ppt::Application* app = world.w.glo().ppApp;
    fuzz::require(app && app->activePresentation());
    app->activePresentation()->tags().add(kParticipantNamesTag, in.rest());
    world.checkNamesReply();
}
