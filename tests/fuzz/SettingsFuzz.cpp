// The settings file "tlx.ini" in both of its forms: sections of "KEY=value" lines, and the
// older comma form ("KEY,value", no sections). The first byte picks how far the file goes:
//   even: the readers alone (whole-file, key by key, the option table, the keypad texts),
//         then a save of the options over the same file;
//   odd:  a controller started with the file as its per-user settings.
#include "core/Options.h"
#include "core/Settings.h"
#include "drivers/DisplayTexts.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    const bool start = in.flag();
    fuzz::FuzzWorld world(std::vector<PortEntry>{});  // no port file
    const auto file = world.w.appData() / "tallix" / "tlx.ini";
    test::writeFile(file, in.rest());
    if (start) {
        world.startWithDeck();
        world.send("GETVOTEINFO");
        return;
    }
    bool comma = false;
    (void)readSettingsFileInFull(file, &comma);
    (void)GetProfileString(file, section::kTallixOptions, "LOGEVENTS TO FILE", "0");
    (void)HasProfileString(file, section::kDebug, "SHOW ALL ERRORS");
    SettingsFiles files({file, world.w.programData() / "tallix" / "tlx.ini"});
    KeypadDisplayTexts texts;
    texts.load(files);
    PresenterMenu menu;
    menu.load(files);
    Options options;
    world.w.c().settings.loadOptions(options);
    (void)world.w.c().settings.LogEventsToFile();
    (void)world.w.c().settings.ChartExportFormat();
    // Saving rewrites the file in the sectioned form; what was read must read back the same.
    if (!WriteProfileString(file, section::kTallixOptions, "LOGEVENTS TO FILE", "1")) return;
    fuzz::require(GetProfileString(file, section::kTallixOptions, "LOGEVENTS TO FILE", "0") == "1");
}
