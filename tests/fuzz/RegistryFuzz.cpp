// Registry texts as a base reports them ("HID;SID" entries separated by "|"), with the
// firmware version the base reports beside them. The first line of the input is the firmware
// version, the rest the registry text. The text is read at start-up, read again on demand,
// and then decides the keypad range of every vote record.
#include "drivers/KelvarinDrivers.h"
#include "drivers/LocalRegistry.h"
#include "drivers/PrioritizerDriver.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.library.script.firmware = in.line();
    world.library.script.registry = in.rest();
    // The reader on its own: every entry it keeps has a HID and a key of its own.
    const LocalRegistry reg = parseRegistryText(world.library.script.registry);
    for (std::size_t i = 0; i < reg.size(); ++i)
        fuzz::require(!reg.entries()[i].HID.empty() && reg.find(reg.keyAt(i)) != nullptr);
    world.startWithDeck();
    if (auto* g2 = world.drivers->oKVv5()) {
        g2->GetRegistry("0", true);
        (void)g2->GetFirstPresentersHID();
        (void)g2->GetHIDFromSID(1);
        g2->UpdateStaticRegistryLimits(0);
        (void)world.drivers->keypadRange(0, world.w.glo());
    }
    world.send("GETVOTEINFO");
    world.send("STARTVOTE");
    if (KelvarinBase* base = world.library.firstConnected())
        for (const auto& e : reg.entries()) {
            KelvarinVote v;
            v.HID = e.HID;
            v.SID = e.SID;
            v.VoteReplyData = "1";
            base->VoteReceived(v);
        }
    world.run(100);
    world.send("ENDVOTE");
}
