// The one-line audio trial file "TestApp.ini": whatever it holds, loading never crashes, and a
// file that loaded saves and loads back to the same five values.
#include <cstddef>
#include <cstdint>
#include <string>

#include "audio/clsSettings.h"
#include "core/Controller.h"
#include "support/FuzzWorld.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzWorld world;
    Controller& c = world.w.c();
    clsSettings s(c.errors, world.w.install());
    test::writeFile(s.file(), std::string(reinterpret_cast<const char*>(data), size));
    s.LoadINIFile();
    s.SaveINIFile();
    clsSettings again(c.errors, world.w.install());
    again.LoadINIFile();
    if (again.AudioMicLogic() != s.AudioMicLogic() || again.AudioMaxTalkTime() != s.AudioMaxTalkTime() ||
        again.AudioMicVol() != s.AudioMicVol() || again.AudioMicBoost() != s.AudioMicBoost())
        __builtin_trap();
    return 0;
}
