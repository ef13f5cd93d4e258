#pragma once
// A started controller whose keypad drivers run over simulated Corehub bases (a G2 base, and
// a G1 base when asked), with the text-vote window at hand.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "support/TestWorld.h"
#include "textvote/TextVoteCollection.h"

namespace tlx::test {

inline const std::string kG2Base = "100100100100";
inline const std::string kG1Base = "100100100300";

struct TextVoteWorld {
    explicit TextVoteWorld(bool withG1 = false) : drivers(w.useSimBases()) {
        w.addSimBase(kG2Base, 5, "KELVARIN COREHUB G2", 300100001);
        std::vector<PortEntry> entries{{kG2Base, "KELVARIN COREHUB G2", 1, 5}};
        if (withG1) {
            w.addSimBase(kG1Base, 5, "KELVARIN COREHUB G1", 300300001);
            entries.push_back({kG1Base, "KELVARIN COREHUB G1", 1, 5});
        }
        w.writePortFile(entries);
        w.start();
        w.scheduler.advance(100);
    }
    frmTextVoteCollection& open() { return showTextVoteWindow(w.c()); }
    frmTextVoteCollection& startVote() {
        auto& f = open();
        f.cmdStartStopVote_Click();
        w.scheduler.advance(100);
        return f;
    }
    // A keypad's text through the simulated base and the drivers.
    void text(const std::string& base, int sid, const std::string& text) {
        ASSERT_TRUE(w.baseLibrary.text(base, sid, text).ok) << text;
        w.scheduler.advance(100);
    }
    // A vote object straight from the g2 driver, as a base reports it.
    void raise(int sid, const std::string& text, int battery = 385, int signal = -45) {
        KelvarinVote v;
        v.HID = std::to_string(300100000 + sid);
        v.SID = sid;
        v.VoteReplyData = text;
        v.BatteryStrength = battery;
        v.SignalStrength = signal;
        v.PollGroupID = 2;
        v.PollSlotID = 17;
        v.KeyPressTimeStamp = 98765;
        v.VoteReplyID = 6;
        drivers.oKVv5()->VoteReceivedObject(v, "0");
    }
    SimKeypad& keypad(int sid) { return *w.baseLibrary.find(kG2Base)->keypadBySid(sid); }
    std::string screen(const std::string& base, int sid) {
        std::string shown;
        w.baseLibrary.screen(base, sid, shown);
        return shown;
    }
    std::string errLog() { return readFile(w.appData() / "tallix" / "Err.log"); }

    TestWorld w;
    KelvarinDrivers& drivers;
};

}  // namespace tlx::test
