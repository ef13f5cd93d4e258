#pragma once
// What the rest of the controller needs of the keypad drivers. The drivers module serves
// these interfaces; until a driver serves a base type, its bases simply do not come up.
#include <string>
#include <vector>

#include "core/GlobalState.h"

namespace tlx {

// A base station the drivers can see, as the set-up form lists it.
struct FoundBase {
    std::string baseType;  // stored form, e.g. "KELVARIN COREHUB G2"
    std::string port;      // serial number or port
};

// The vote members of a Prioritizer-generation driver form (g1 or g2), as the controller
// calls them. Every member logs and swallows its own failures.
class KeypadDriver {
public:
    virtual ~KeypadDriver() = default;
    virtual void SilentLoadVoteConfig(int slideNum) = 0;
    virtual int StartVote() = 0;
    virtual void PauseVote() = 0;
    virtual void ResumeVote() = 0;
    virtual void EndVote(bool noAudio, bool clearSettings) = 0;
    virtual void ShowWinningKeypad(int keypad, bool flag) = 0;
    // g2 only; the g1 driver has no presenter go-to menu.
    virtual void SetPresenterGotoMenu(const std::string& menu) { (void)menu; }
    virtual void ClosePorts() = 0;
    // A vote is open on this driver's bases.
    virtual bool voteRunning() const = 0;
};

// The oldest base generation, driven one port at a time.
class Black3Driver {
public:
    virtual ~Black3Driver() = default;
    virtual void StartVote(const std::string& port) = 0;
    virtual void EndVote(const std::string& port) = 0;
    // Keypad detect mode (-1 fall-back, 1, 2, 3); false when the value is not accepted.
    virtual bool SetDetectMode(int mode) = 0;
};

// Where a base's keypad numbers sit among the system's: its offset and its highest local
// keypad number.
struct KeypadRange {
    int offset = 0;
    int highest = 0;
};

class BaseDrivers {
public:
    virtual ~BaseDrivers() = default;
    // Loads the driver forms (start-up, with the other working forms).
    virtual void loadDriverForms() {}
    // Opens one configured base through the driver for its type; true when it came up.
    virtual bool openBase(const PortEntry& base) = 0;
    // The bases that can be found now.
    virtual std::vector<FoundBase> scanForBases() = 0;
    // Closes the ports of every driver (and the audio form).
    virtual void closePorts() = 0;
    // The loaded driver forms; nullptr when that driver is not in use.
    virtual KeypadDriver* corehubG1() { return nullptr; }  // `oKVv4`
    virtual KeypadDriver* corehubG2() { return nullptr; }  // `oKVv5`
    virtual Black3Driver* black3() { return nullptr; }
    // The range of the base that received votes (its number as the drivers report it). By
    // default the base of that position in the port file, counted from 1.
    virtual KeypadRange keypadRange(int baseIndex, const GlobalState& glo) const;
};

// No driver at all: every base stays down and keyboard voting remains.
class NoBaseDrivers : public BaseDrivers {
public:
    bool openBase(const PortEntry&) override { return false; }
    std::vector<FoundBase> scanForBases() override { return {}; }
    void closePorts() override {}
};

// Where the drivers deliver received votes: the main form's vote intake.
class VoteIntake {
public:
    virtual ~VoteIntake() = default;
    // Parallel arrays of keypad numbers and vote texts received by one base (index from 0).
    virtual void SendVotes(std::vector<float>& keypads, std::vector<std::string>& votes, double time,
                           int baseIndex) = 0;
};

}  // namespace tlx
