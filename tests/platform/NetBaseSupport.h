#pragma once
// The network base the protocol and adapter tests serve, and the vote they open on it.
#include <string>

#include "platform/sim/basesim/SimBaseLibrary.h"
#include "support/DriverTestWorld.h"
#include "support/Fields.h"

namespace tlx::test {

inline const std::string kNetBase = "100100100300";

// At 127.0.0.1, keypads first..last with HIDs 300300000 + their number.
inline SimBaseSpec netBase(int first, int last) {
    SimBaseSpec base;
    base.id = kNetBase;
    base.connection = SimConnection::Ethernet;
    base.address = "127.0.0.1";
    for (int k = first; k <= last; ++k) base.keypads.push_back(simDevice(std::to_string(300300000 + k), k));
    return base;
}

inline KelvarinVote singleDigit() {
    KelvarinVote v;
    v.VoteType = 9;
    v.VoteQuestionText = "Colours?";
    return v;
}

}  // namespace tlx::test
