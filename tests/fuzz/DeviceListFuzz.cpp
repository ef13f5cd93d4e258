// Device lists as the base library reports them: USB bases by serial number, network bases
// as "id;address", "|" between entries. The first line of the input is the USB list, the rest
// the network list (network bases are switched on in the settings). Start-up lists the bases
// and connects those of the port file; a re-scan lists them again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/Options.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "support/FuzzInput.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput in(data, size);
    fuzz::FuzzWorld world;
    world.library.script.usbDevices = in.line();
    world.library.script.ethernetDevices = in.rest();
    world.w.writeSettings(section::kCoreHubOptions, "ETHERNET ENABLED", "1");
    world.openDeck();
    world.start();
    if (auto* g2 = world.drivers->oKVv5()) {
        g2->ListDevices();
        // At most ten bases, and every one listed as connected is one the driver can name.
        if (g2->baseTable().size() > 10) __builtin_trap();
        for (std::size_t slot = 1; slot <= g2->baseTable().size(); ++slot)
            if (!g2->baseObject(static_cast<int>(slot))) __builtin_trap();
    }
    (void)world.drivers->scanForBases();
    world.send("GETVOTEINFO");
    return 0;
}
