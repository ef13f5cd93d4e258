#pragma once
// What the rest of the controller needs of the keypad drivers. The drivers module serves
// these interfaces; until a driver serves a base type, its bases simply do not come up.
#include <string>
#include <string_view>
#include <vector>

#include "core/GlobalState.h"

namespace tlx {

// A base station's identity, as every event and the vote intake carry it: its row in the port
// file (glo.bases), counted from 0 as the vote-information reply numbers the rows ("offset=" +
// index + ...). Drivers number the bases they hold in slots of their own; a slot never leaves
// its driver. A base the port file does not list has no row and reports as -1.
inline constexpr int kUnlistedBase = -1;
// Serial numbers compare as whole numbers: blanks and leading zeros do not count.
bool sameSerialNumber(std::string_view a, std::string_view b);
// The row of the Corehub base (G1 or G2) with this serial number.
int corehubBaseIndex(const GlobalState& glo, std::string_view serial);
// The row of the oldest generation's base ("KELVARIN BASE V3") on this serial port.
int serialPortBaseIndex(const GlobalState& glo, int port);
// Bases on a serial port (the oldest generation and the older serial types) are named by
// their port; Corehub bases by their serial number.
bool onSerialPort(const PortEntry& base);
// A base as people are told about it: its serial number "### 000 000 000", or its port number.
std::string baseName(const PortEntry& base);
// The name of the base with this identity, or the identity itself when no row has it.
std::string baseName(const GlobalState& glo, int baseIndex);

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
    // The range of the base that received votes, by its identity: that row of the port file.
    // A base with no row has no keypads (every vote from it is rejected).
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
    // Parallel arrays of keypad numbers and vote texts received by one base (index from 0),
    // the time the base reported with them (seconds since midnight) and the base's identity.
    virtual void SendVotes(std::vector<float>& keypads, std::vector<std::string>& votes, double time,
                           int baseIndex) = 0;
};

}  // namespace tlx
