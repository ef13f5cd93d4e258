#pragma once
// Simulated bases and devices the driver tests (and the bus tests over mixed bases) build.
#include <string>

#include "platform/sim/basesim/SimBaseLibrary.h"

namespace tlx::test {

// A device of the registry: `hid`, registry number `sid` (0: none yet), of this kind.
inline SimKeypad simDevice(const std::string& hid, int sid = 0, int kind = DeviceKind::Keypad) {
    SimKeypad k;
    k.hid = hid;
    k.sid = sid;
    k.kind = kind;
    return k;
}

// Keypads 1..keypads whose HIDs count up from hidFrom.
inline void addKeypads(SimBaseSpec& base, int keypads, long long hidFrom) {
    for (int k = 1; k <= keypads; ++k) base.keypads.push_back(simDevice(std::to_string(hidFrom + k - 1), k));
}

// An oldest-generation base on a serial port.
inline SimBaseSpec serialBase(int port, int keypads, long long hidFrom = 1) {
    SimBaseSpec s;
    s.type = "KELVARIN BASE V3";
    s.connection = SimConnection::Serial;
    s.serialPort = port;
    addKeypads(s, keypads, hidFrom);
    return s;
}

// A USB base of this firmware, its keypads' HIDs from 400000001.
inline SimBaseSpec usbBase(const std::string& id, const std::string& firmware, int keypads = 5) {
    SimBaseSpec s;
    s.id = id;
    s.firmware = firmware;
    addKeypads(s, keypads, 400000001);
    return s;
}

}  // namespace tlx::test
