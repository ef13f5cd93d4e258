#pragma once
// `glo`: the one global state record of a controller. Each field is written only by the
// module that owns its feature; everyone may read it.
#include <filesystem>
#include <string>
#include <vector>

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
    bool modeKeysEnabled = true; // base-station mode keys X/F/D/S of the keyboard hook
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
    bool hookActive = false;
    std::string ActiveKeypads;

    // Vote configuration filled by the key lines of the command channel.
    std::string voteName;
    int optionCount = 10;
    int startFrom = 1;
    // Keypad display mode; 1 shows letters (A, B, C ...) for the answers of a single-digit vote.
    int kelvarinDisplay = 0;
    std::string keypadsActive;
    std::string prevoteText, voteText, answerText, questionTextShort;
    std::string voteEndedText;
    // The answers a single-digit vote allows, comma-separated; empty means the option range.
    std::string validAnswers;
    std::string voteType;  // a type name ("SINGLEDIGIT") or its code as text ("9")
    int allocation = 0, limits = 0, points = 0;
    int kvpOptions = 0;
    std::vector<float> optionValues;
    std::string textVoteOptions;
    std::string savedBaseType;  // first base type saved by KBOARD

    // Keypad drivers.
    bool Voting = false;                   // a vote is running
    bool extendedVoteData = false;         // votes carry ";" + their two numeric attributes
    bool registryVersionOverride = false;  // read registries whatever the base version
    bool winningKeypadShown = false;
    bool waitingForBase = false;           // cleared by the oldest base's code 20
};

}  // namespace tlx
