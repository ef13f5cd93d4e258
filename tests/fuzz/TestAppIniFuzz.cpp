// The one-line audio trial file "TestApp.ini": whatever it holds, loading never crashes, and a
// file that loaded saves and loads back to the same values.
#include "audio/clsSettings.h"
#include "core/Controller.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    Controller& c = world.w.c();
    clsSettings s(c.errors, world.w.install());
    test::writeFile(s.file(), in.rest());
    s.LoadINIFile();
    s.SaveINIFile();
    clsSettings again(c.errors, world.w.install());
    again.LoadINIFile();
    fuzz::require(again.AudioMicLogic() == s.AudioMicLogic() && again.AudioMaxTalkTime() == s.AudioMaxTalkTime() &&
                  again.AudioMicVol() == s.AudioMicVol() && again.AudioMicBoost() == s.AudioMicBoost());
}
