// The "Participant Names" presentation tag: records separated by "|", fields by "^^". Read at
// start-up and by GETNAMES; a tag wins over any file beside the presentation.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/GlobalState.h"
#include "core/ParticipantNames.h"
#include "core/Text.h"
#include "ports/PresentationApp.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzWorld world;
    world.openDeck();
    world.start();
    const std::string tag(reinterpret_cast<const char*>(data), size);
    ppt::Application* app = world.w.glo().ppApp;
    if (!app || !app->activePresentation()) __builtin_trap();
    app->activePresentation()->tags().add(kParticipantNamesTag, tag);
    world.sent.clear();
    world.send("GETNAMES");
    std::string reply;
    for (const auto& s : world.sent)
        if (startsWith(s, "StartListOfNames")) reply = s;
    if (reply.empty()) __builtin_trap();
    if (split(reply, "\r\n").size() != world.w.glo().participants.size() + 2) __builtin_trap();
    return 0;
}
