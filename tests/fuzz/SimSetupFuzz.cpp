// The simulation set-up file (tlxctrl --sim FILE) and its show script: the input up to a line
// "%%" is the set-up file, the rest the script. The simulated bases are built from the file.
#include "platform/sim/SimScript.h"
#include "platform/sim/SimSetup.h"
#include "platform/sim/VirtualScheduler.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "support/Harness.h"
#include "support/TestWorld.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    const std::string input = in.rest();
    const std::size_t cut = input.find("\n%%\n");
    const std::string script = cut == std::string::npos ? std::string() : input.substr(cut + 4);
    test::TempDir dir;
    const auto file = dir / "sim.ini";
    test::writeFile(file, input.substr(0, cut));
    test::writeFile(dir / "show.script", script);
    (void)readSimShowSetup(file);
    std::vector<std::string> problems;
    (void)parseScript(script, &problems);
    VirtualScheduler scheduler;
    SimBaseLibrary library(scheduler);
    (void)loadSimBases(library, file.string());
    (void)library.bases();
    scheduler.advance(100);
}
