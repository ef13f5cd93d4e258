// The radio-session defaults file "CorehubDefaults.ini", loaded into the session settings
// form, written to a base, and saved again. What is saved must load back the same.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/Controller.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "drivers/SessionSettings.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzWorld world;
    world.start();
    Controller& c = world.w.c();
    auto& form = c.forms.load<frmPrioritizerSessionSettings>(c, world.drivers->oKVv5(), std::string("0"));
    test::writeFile(form.defaultsFile(), std::string(reinterpret_cast<const char*>(data), size));
    form.loadDefaults();
    (void)form.staticRegistryFieldsVisible();
    const KelvarinSessionConfig loaded = form.toSession(KelvarinSessionConfig{});
    if (form.saveDefaults()) {
        form.loadDefaults();
        const KelvarinSessionConfig again = form.toSession(KelvarinSessionConfig{});
        if (again.SessionID != loaded.SessionID || again.SessionName != loaded.SessionName ||
            again.RegistryMode != loaded.RegistryMode || again.PrimaryChannel != loaded.PrimaryChannel ||
            again.AltChannels != loaded.AltChannels || again.AutoOffNoKeypress != loaded.AutoOffNoKeypress ||
            again.PacketRetryCount != loaded.PacketRetryCount || again.HighNoiseMode != loaded.HighNoiseMode)
            __builtin_trap();
    }
    form.cmdOK();
    return 0;
}
