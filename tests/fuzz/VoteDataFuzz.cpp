// Received vote data: key presses as the bases report them, during a vote the input itself
// configures. The first line holds the key lines sent before STARTVOTE ("\r" between lines).
// Then records, each: a byte choosing the source (a Corehub base's vote event, the oldest
// base's control, a press while microphone requests are on, or a pause in time), a keypad
// number, battery and signal readings, the HID line and the vote data line.
#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/Black3Driver.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.startWithDeck();
    world.send(replaceAll(in.line(), "\r", "\r\n"));
    world.send("STARTVOTE");
    auto* g2 = world.drivers->oKVv5();
    auto* v3 = world.drivers->v3();
    for (int records = 0; !in.empty() && records < 200; ++records) {
        const std::uint8_t kind = in.byte();
        const int keypad = in.number(-10, 5000);
        const int battery = static_cast<std::int8_t>(in.byte());
        const int signal = static_cast<std::int8_t>(in.byte());
        KelvarinVote v;
        v.SID = keypad;
        v.BatteryStrength = battery;
        v.SignalStrength = signal;
        v.VoteReplyID = kind >> 4;
        v.HID = in.line();
        v.VoteReplyData = in.line();
        switch (kind % 4) {
            case 0:
                if (KelvarinBase* base = world.library.firstConnected()) base->VoteReceived(v);
                break;
            case 1:
                if (v3) v3->vPanel_VoteReceived(1, keypad, v.VoteReplyData, 0.0);
                break;
            case 2:
                if (g2) {
                    if (!g2->audioRequestsOn()) g2->StartAudioRequests("0,11");
                    if (KelvarinBase* base = world.library.firstConnected()) base->VoteReceived(v);
                }
                break;
            default:
                world.run(kind >> 2);
                break;
        }
    }
    world.run(100);
    world.send("ENDVOTE");
}
