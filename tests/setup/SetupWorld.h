#pragma once
// A started controller over simulated bases read from a world file, for the set-up tools.
#include <string>
#include <vector>

#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "support/TestWorld.h"

namespace tlx::test {

class SetupWorld {
public:
    // The bases of the world file's [bases] part, each listed in the port file, and the
    // controller started over them.
    explicit SetupWorld(const std::string& world) : drivers(w.useSimBases()) {
        writeFile(w.dir / "world.ini", world);
        loadSimBases(w.baseLibrary, (w.dir / "world.ini").string());
        std::vector<PortEntry> entries;
        for (const auto& b : w.baseLibrary.bases()) {
            const auto [type, port] = splitOnce(b, ";");
            entries.push_back({port, type, 1, 40});
        }
        w.writePortFile(entries);
        w.start();
        settle();
    }
    void settle(int ms = 100) { w.scheduler.advance(ms); }
    SimBaseStation& station(std::size_t i = 0) { return w.baseLibrary.station(i); }
    // The last message box, "" when none was shown; box() as "title: text".
    std::string lastText() const { return w.dialogs.shown.empty() ? "" : w.dialogs.shown.back().text; }
    std::string lastTitle() const { return w.dialogs.shown.empty() ? "" : w.dialogs.shown.back().title; }
    std::string box() const { return lastTitle() + ": " + lastText(); }

    TestWorld w;
    KelvarinDrivers& drivers;
};

}  // namespace tlx::test
