// Device lists as the base library reports them: USB bases by serial number, network bases
// as "id;address", "|" between entries. The first line of the input is the USB list, the rest
// the network list (network bases are switched on in the settings). Start-up lists the bases
// and connects those of the port file; a re-scan lists them again.
#include "core/Options.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.library.script.usbDevices = in.line();
    world.library.script.ethernetDevices = in.rest();
    world.w.writeSettings(section::kCoreHubOptions, "ETHERNET ENABLED", "1");
    world.startWithDeck();
    if (auto* g2 = world.drivers->oKVv5()) {
        g2->ListDevices();
        // At most ten bases, and every one listed as connected is one the driver can name.
        fuzz::require(g2->baseTable().size() <= 10);
        for (std::size_t slot = 1; slot <= g2->baseTable().size(); ++slot)
            fuzz::require(g2->baseObject(static_cast<int>(slot)) != nullptr);
    }
    (void)world.drivers->scanForBases();
    world.send("GETVOTEINFO");
}
