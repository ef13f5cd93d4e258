// The simulation set-up file (tlxctrl --sim FILE) and its show script. The first line of the
// input picks nothing; the input up to a line "%%" is the set-up file, the rest the script.
// The simulated bases are built from the file and connected through the keypad drivers.
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/sim/SimScript.h"
#include "platform/sim/SimSetup.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "platform/sim/VirtualScheduler.h"

#include "support/TestWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t cut = input.find("\n%%\n");
    const std::string setupText = input.substr(0, cut);
    const std::string script = cut == std::string::npos ? std::string() : input.substr(cut + 4);
    test::TempDir dir;
    const auto file = dir / "sim.ini";
    test::writeFile(file, setupText);
    test::writeFile(dir / "show.script", script);
    (void)readSimShowSetup(file);
    std::vector<std::string> problems;
    (void)parseScript(script, &problems);
    VirtualScheduler scheduler;
    SimBaseLibrary library(scheduler);
    (void)loadSimBases(library, file.string());
    (void)library.bases();
    scheduler.advance(100);
    return 0;
}
