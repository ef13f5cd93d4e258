#pragma once
// A started controller whose keypad drivers run over simulated bases, with a vote intake
// that records what the drivers hand on.
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "support/DriverTestWorld.h"
#include "support/Fields.h"
#include "support/TestWorld.h"

namespace tlx::test {

struct IntakeRecord {
    std::vector<float> keypads;
    std::vector<std::string> votes;
    int base;
    double time;
};

class RecordingIntake : public VoteIntake {
public:
    void SendVotes(std::vector<float>& keypads, std::vector<std::string>& votes, double time,
                   int baseIndex) override {
        records.push_back({keypads, votes, baseIndex, time});
    }
    std::vector<IntakeRecord> records;
    std::vector<std::string> votes() const {
        std::vector<std::string> v;
        for (const auto& r : records) v.insert(v.end(), r.votes.begin(), r.votes.end());
        return v;
    }
};

// HIDs of base n (1-based) start at 300100001 + (n - 1) * 10000.
inline long long hidStart(int base) { return 300100001LL + (base - 1) * 10000LL; }

class DriverWorld {
public:
    // Corehub G2 bases with these serial numbers, each with `keypads` keypads, configured in
    // the port file and connected at start-up.
    explicit DriverWorld(std::vector<std::string> ids = {"100100100100"}, int keypads = 40,
                         bool start = true)
        : drivers(w.useSimBases()) {
        std::vector<PortEntry> entries;
        int n = 0;
        for (const auto& id : ids) {
            ++n;
            w.addSimBase(id, keypads, "KELVARIN COREHUB G2", hidStart(n));
            entries.push_back({id, "KELVARIN COREHUB G2", 1, keypads});
        }
        w.writePortFile(entries);
        if (start) this->start();
    }
    void start() {
        w.start();
        w.c().voteIntake = &intake;
        settle();
    }
    void settle(int ms = 100) { w.scheduler.advance(ms); }

    TestWorld w;
    KelvarinDrivers& drivers;
    RecordingIntake intake;
    SimBaseLibrary& sim() { return w.baseLibrary; }
    SimBaseStation& station(std::size_t i = 0) { return w.baseLibrary.station(i); }
    kpdriver_KELVARIN_Prioritizer_g2& g2() { return *drivers.oKVv5(); }
    GlobalState& glo() { return w.glo(); }
    // How often each station was asked for `operation`, "n0|n1|...".
    std::string calls(const std::string& operation) {
        std::string s;
        for (std::size_t i = 0; i < sim().baseCount(); ++i) s += (i ? "|" : "") + std::to_string(station(i).callCount(operation));
        return s;
    }
    // The parts the second-generation driver's log lacks, one a line ("" when it has them all).
    std::string unlogged(std::initializer_list<std::string> parts) {
        std::string out;
        for (const auto& p : parts) out += g2().logged(p) ? "" : p + "\n";
        return out;
    }
    // The last message box as "title: text".
    std::string lastDialog() const {
        return w.dialogs.shown.empty() ? "" : w.dialogs.shown.back().title + ": " + w.dialogs.shown.back().text;
    }
    // A single-digit vote with answers 1..n.
    void singleDigit(int options = 4) {
        glo().voteType = "SINGLEDIGIT";
        glo().startFrom = 1;
        glo().optionCount = options;
    }
};

}  // namespace tlx::test
