// Presenter commands: the presenter keypad's commands on a Corehub base (command, source and
// value), its registrations, scanner data, and the oldest base's presenter key names
// ("V", "GOTO12", ...). Each record starts with a byte choosing which, then its fields.
#include "drivers/Black3Driver.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "support/FuzzWorld.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    fuzz::FuzzWorld world;
    world.startWithDeck();
    world.w.presentation.Begin();
    world.run(100);
    auto* v3 = world.drivers->v3();
    for (int records = 0; !in.empty() && records < 100; ++records) {
        const std::uint8_t kind = in.byte();
        KelvarinBase* base = world.library.firstConnected();
        switch (kind % 5) {
            case 0: {
                const int command = in.number(-2, 300);
                const int source = in.byte() % 4;
                const int value = in.number(-5, 100000);
                const std::string hid = in.line();
                if (base) base->PresenterCommandReceived(hid, command, source, value);
                break;
            }
            case 1: {
                const int flag = in.byte() % 5;
                const int error = in.byte() % 3;
                const std::string hid = in.line();
                if (base) base->KeypadRegister(hid, flag, error, in.line());
                break;
            }
            case 2: {
                const std::string hid = in.line();
                const std::string scanned = in.line();
                if (base) base->ScannerCommandReceived(hid, scanned);
                break;
            }
            case 3:
                if (v3) v3->vPanel_PresenterKey(1, in.line());
                break;
            default:
                world.run(kind);
                break;
        }
        world.run(60);
    }
    world.run(1000);
}
