#pragma once
// A started controller whose keypad drivers run over simulated Corehub bases (a G2 base, and
// a G1 base when asked), with the text-vote window at hand.
#include <filesystem>
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
inline constexpr long long kG2Hids = 300100001;
inline constexpr long long kG1Hids = 300300001;

class TextVoteWorld {
public:
    explicit TextVoteWorld(bool withG1 = false, int keypads = 5) : drivers(w.useSimBases()) {
        std::vector<PortEntry> entries;
        w.addSimBase(kG2Base, keypads, "KELVARIN COREHUB G2", kG2Hids);
        entries.push_back({kG2Base, "KELVARIN COREHUB G2", 1, keypads});
        if (withG1) {
            w.addSimBase(kG1Base, keypads, "KELVARIN COREHUB G1", kG1Hids);
            entries.push_back({kG1Base, "KELVARIN COREHUB G1", 1, keypads});
        }
        w.writePortFile(entries);
        w.start();
        settle();
    }
    frmTextVoteCollection& open() { return showTextVoteWindow(w.c()); }
    void settle(int ms = 100) { w.scheduler.advance(ms); }
    SimBaseLibrary& sim() { return w.baseLibrary; }
    SimBaseStation& station(const std::string& base) { return *w.baseLibrary.find(base); }
    SimKeypad& keypad(const std::string& base, int sid) { return *station(base).keypadBySid(sid); }
    // Opens the window and starts a text vote on it.
    frmTextVoteCollection& startVote() {
        auto& f = open();
        f.cmdStartStopVote_Click();
        settle();
        return f;
    }
    // A keypad's text, delivered through the simulated base and the drivers.
    void text(const std::string& base, int sid, const std::string& text) {
        const SimOutcome o = sim().text(base, sid, text);
        if (!o) throw std::runtime_error(o.message);
        settle();
    }
    // The session log's lines (without their breaks).
    std::vector<std::string> logLines(const frmTextVoteCollection& f) {
        std::vector<std::string> v;
        for (auto& l : split(readFile(f.sessionLogPath()), "\r\n"))
            if (!l.empty()) v.push_back(l);
        return v;
    }
    std::string errLog() { return readFile(w.appData() / "tallix" / "Err.log"); }

    TestWorld w;
    KelvarinDrivers& drivers;
};

// A vote object as a base reports it.
inline KelvarinVote textVote(const std::string& hid, int sid, const std::string& text, int battery = 385,
                             int signal = -45) {
    KelvarinVote v;
    v.VoteType = 12;
    v.HID = hid;
    v.SID = sid;
    v.VoteReplyData = text;
    v.BatteryStrength = battery;
    v.SignalStrength = signal;
    v.PollGroupID = 1;
    v.PollSlotID = sid;
    v.KeyPressTimeStamp = 1234;
    v.VoteReplyID = 3;
    return v;
}

}  // namespace tlx::test
