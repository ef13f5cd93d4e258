#pragma once
// `glo`: the one global state record of a controller. Each field is written only by the
// module that owns its feature; everyone may read it.
#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/KeypadList.h"
#include "core/Options.h"

namespace tlx {

namespace ppt {
class Application;
}

inline constexpr int INIT_STATE_NOT_STARTED = 0;
inline constexpr int INIT_STATE_INITIALISING = 1;
inline constexpr int INIT_STATE_INITIALISED = 2;

// One base station as the port file lists it.
struct PortEntry {
    std::string port;      // serial port number, or the base's serial number for USB bases
    std::string baseType;  // "KELVARIN COREHUB G2", "KBOARD", ...
    int gridLo = 1;
    int gridHi = 20;
    bool duplicate = false;
    int colourIndex = 0;
    int offset = 0;
};

// The not-voted pop-up and close-voting settings of the port file.
struct PopUpSettings {
    bool popUpOn = false;
    std::string popUp;  // "Auto PopUp when down to"
    std::string howMany;
    int lo = 0;
    int hi = 0;
    bool close = false;
    int closePercent = 100;
    bool scrollingDisplay = false;
};

// One completed channel scan: the score of each channel index (0 stands for no channel) and
// how many survey replies went into it.
struct ChannelScanResult {
    std::array<double, 78> scores{};
    long long replies = 0;
};

// The channel-scan window's options as last left (0 until then; restored only when within
// their ranges), and the scans kept while the controller runs.
struct ChannelScanMemory {
    int startChannel = 0;
    int endChannel = 0;
    int channelStep = 0;
    int votesPerChannel = 0;
    int startDelay = 0;
    int scanMode = 0;  // 0 a channel range, 1 a list of channels
    std::string channelList;
    std::vector<ChannelScanResult> results;
};

struct GlobalState {
    // Start-up and shutdown.
    int InitialisedState = INIT_STATE_NOT_STARTED;
    bool ShuttingDown = false;
    bool FullShutDownInitiated = false;
    ppt::Application* ppApp = nullptr;
    std::string pptVersion;

    // The three switches forced on at the start of initialisation.
    bool traceToFile = true;     // "LOGEVENTS TO FILE"
    bool usePowerPoint = true;   // off with "-noppt"
    bool hookAllowed = true;     // the low-level keyboard hook may be installed
    bool modeKeysEnabled = false; // base-station mode keys X/F/D/S (oldest bases only)
    bool showAllErrors = false;  // "SHOW ALL ERRORS"
    bool hotKeysSuspended = false;
    std::string commandLine;

    // Folders; each ends without a separator.
    std::filesystem::path localDataFolder;
    std::filesystem::path sharedDataFolder;
    std::filesystem::path installFolder;

    // Settings file and port file.
    Options options;
    std::vector<PortEntry> bases;
    PopUpSettings popUp;
    bool portFileRead = false;

    // The four tuning values of the vote intake, set at initialisation.
    int intakeTuning[4] = {0, 0, 0, 0};

    // Balloon messages shown since start-up.
    std::string bubbleMessageLog;

    // Presentation state.
    bool slideShowActive = false;
    // A vote is open on a Prioritizer-generation driver (ended when the show moves on).
    bool Voting = false;
    bool hookActive = false;
    KeypadList ActiveKeypads;

    // Vote configuration filled by the key lines of the command channel. The 16- and 32-bit
    // fields keep the widths the display programs were written against.
    std::string voteName;
    std::int16_t optionCount = 10;
    std::int16_t startFrom = 1;
    // Keypad display mode; 1 shows letters (A, B, C ...) for the answers of a single-digit vote.
    std::int16_t kelvarinDisplay = 0;
    std::string prevoteText, voteText, answerText, questionTextShort;
    std::string voteEndedText;
    // The answers a single-digit vote allows, comma-separated; empty means the option range.
    std::string validAnswers;
    // A type name ("SINGLEDIGIT") or its numeric code as decimal text; the drivers accept both.
    std::string voteType;
    std::int32_t allocation = 0, limits = 0, points = 0;
    std::int32_t kvpOptions = 0;
    std::vector<float> optionValues;
    std::string textVoteOptions;
    std::string savedBaseType;  // first base type saved by KBOARD

    // The vote as the command channel runs it.
    bool voteRunning = false;
    bool voteStartedByCommand = false;
    int voteMode = 0;             // "STARTVOTE," + n
    double voteStartTime = 0.0;   // seconds since midnight
    int votesReceived = 0;        // the received-votes counter
    int winningKeypad = 0;
    // Per-keypad vote arrays, indexed by keypad number, -1 where nothing arrived yet.
    std::vector<int> keypadVotes;
    std::vector<double> keypadVoteTimes;

    // The highest system keypad number of the configured bases (offset + highest keypad).
    int highestKeypad() const {
        long long highest = 0;
        for (const auto& b : bases) highest = std::max(highest, static_cast<long long>(b.offset) + b.gridHi);
        return static_cast<int>(std::clamp<long long>(highest, 0, 65535));
    }
    // Both per-keypad vote arrays sized to the configured keypads and emptied (-1).
    void resetKeypadVotes() {
        const auto size = static_cast<std::size_t>(highestKeypad()) + 1;
        keypadVotes.assign(size, -1);
        keypadVoteTimes.assign(size, -1.0);
    }

    // Participant list: keypad number (unique), name without double quotes, vote weighting.
    struct Participant {
        std::int16_t keypad = 0;
        std::string name;
        std::int32_t weighting = 1;
    };
    std::vector<Participant> participants;
    // Keypad drivers.
    bool registryVersionOverride = false;  // read registries whatever the base version
    bool winningKeypadShown = false;
    bool waitingForBase = false;           // cleared by the oldest base's code 20

    // Set-up tools.
    ChannelScanMemory channelScan;
};

}  // namespace tlx
