// The radio-session defaults file "CorehubDefaults.ini", loaded into the session settings
// form, written to a base, and saved again. What is saved must load back the same.
#include "core/Controller.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "drivers/SessionSettings.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.start();
    Controller& c = world.w.c();
    auto& form = c.forms.load<frmPrioritizerSessionSettings>(c, world.drivers->oKVv5(), std::string("0"));
    test::writeFile(form.defaultsFile(), in.rest());
    form.loadDefaults();
    (void)form.staticRegistryFieldsVisible();
    const KelvarinSessionConfig loaded = form.toSession(KelvarinSessionConfig{});
    if (form.saveDefaults()) {
        form.loadDefaults();
        const KelvarinSessionConfig again = form.toSession(KelvarinSessionConfig{});
        fuzz::require(again.SessionID == loaded.SessionID && again.SessionName == loaded.SessionName &&
                      again.RegistryMode == loaded.RegistryMode && again.PrimaryChannel == loaded.PrimaryChannel &&
                      again.AltChannels == loaded.AltChannels && again.AutoOffNoKeypress == loaded.AutoOffNoKeypress &&
                      again.PacketRetryCount == loaded.PacketRetryCount && again.HighNoiseMode == loaded.HighNoiseMode);
    }
    form.cmdOK();
}
