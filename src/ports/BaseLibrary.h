#pragma once
// The keypad maker's base-station library, as the keypad drivers use it: base objects with
// operations that return a status code, the vote object, the configuration, keypad and
// channel-list records, the events a base raises, and the control that drives the oldest
// base generation. Results come back through out-arguments; events arrive on the one thread,
// later than the operation that caused them.
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tlx {

// Status of every base operation (0 is success). Codes 15 and 20 are unused on purpose.
namespace BaseErrorCode {
inline constexpr int Success = 0;
inline constexpr int AutoReconnectSuccess = 1;
inline constexpr int UnknownError = 2;
inline constexpr int BaseNotFound = 3;
inline constexpr int BaseDisconnected = 4;
inline constexpr int BaseDisconnectedReconnecting = 5;
inline constexpr int TxCommsFailed = 6;
inline constexpr int RxCommsFailed = 7;
inline constexpr int TxCommsTimeOut = 8;
inline constexpr int RxCommsTimeOut = 9;
inline constexpr int AlternateBaseOnSameChannel = 10;
inline constexpr int AckTimeOut = 11;
inline constexpr int OfflineVoteLimitReached = 12;
inline constexpr int InvalidVoteCharacter = 13;
inline constexpr int RegistryNoDataFound = 14;
inline constexpr int RegistryDeviceNotFound = 16;
inline constexpr int DataflashEraseError = 17;
inline constexpr int DataflashReadError = 18;
inline constexpr int DataflashWriteError = 19;
inline constexpr int RegistryModeFixed = 21;
inline constexpr int UnsupportedBase = 22;
inline constexpr int BaseBusy = 23;
inline constexpr int ActionCompleted = 24;
}  // namespace BaseErrorCode

// A library event: handlers run in the order they connected. A handler may disconnect
// handlers, or destroy the object that raised the event, while it runs.
template <class... Args>
class BaseEvent {
public:
    using Handler = std::function<void(Args...)>;
    std::uint64_t connect(Handler h) {
        slots_->push_back({++next_, std::make_shared<Handler>(std::move(h))});
        return next_;
    }
    void disconnect(std::uint64_t id) {
        for (auto it = slots_->begin(); it != slots_->end(); ++it)
            if (it->id == id) {
                slots_->erase(it);
                return;
            }
    }
    void operator()(Args... args) const {
        const auto keep = slots_;  // survives the owner going away inside a handler
        const auto snapshot = *keep;
        for (const auto& s : snapshot) {
            bool live = false;
            for (const auto& k : *keep) live = live || k.id == s.id;
            if (live) (*s.handler)(args...);
        }
    }
    std::size_t size() const { return slots_->size(); }

private:
    struct Slot {
        std::uint64_t id;
        std::shared_ptr<Handler> handler;
    };
    std::shared_ptr<std::vector<Slot>> slots_ = std::make_shared<std::vector<Slot>>();
    std::uint64_t next_ = 0;
};

// The base's own configuration.
struct KelvarinBaseConfig {
    std::string BaseName;         // e.g. "KELVARIN COREHUB G2"
    std::string BaseID;           // the base's serial number, digits
    std::string FirmwareVersion;  // dotted, e.g. "2.00.01.1801.1545"
    // Lowest and highest keypad numbers of the registry (reported from 1.01.00.1607.1819 on,
    // and written back as the static registry limits).
    int RegistryLowSID = 0;
    int RegistryHighSID = 0;
    int RadioChannel = 69;
};

// The radio session a base runs.
struct KelvarinSessionConfig {
    int SessionID = 1;
    std::string SessionName = "tallix Session";
    int RegistryMode = 1;  // 0 fixed (read only), 1 dynamic, 2 static
    int PrimaryChannel = 69;
    std::array<int, 8> AltChannels{1, 3, 5, 7, 24, 45, 69, 77};
    bool AutoScanEnabled = true;
    bool AutoScanAllChannels = false;
    int AutoOffNoKeypress = 500;
    int AutoOffNoSignal = 30;
    int VoteSleepTimer = 2;
    int PacketRetryCount = 20;
    bool HighNoiseMode = false;
    int StaticRegSIDOffset = 0;
    int StaticRegSIDMax = 0;
    // Whether an open vote takes key presses (cleared to pause a vote).
    bool VoteAccepting = true;
    // Keypads not yet registered may join (keypad programming).
    bool RegistrationOpen = false;
};

// Kinds of registered device (the flag of a registration).
namespace DeviceKind {
inline constexpr int Keypad = 1;
inline constexpr int Presenter = 2;
inline constexpr int Scanner = 3;
}  // namespace DeviceKind

struct KelvarinKeypadConfig {
    std::string HID;
    int SID = 0;
    int Flag = 0;
    int Kind = DeviceKind::Keypad;
    std::string FirmwareVersion;
    int BatteryStrength = 0;  // hundredths of a volt
    int SignalStrength = 0;   // dB, negative
};

// The eight candidate channels of a base's session.
struct KelvarinChannelList {
    std::array<int, 8> Channel{};
};

// A vote: what the driver configures, and what a base reports for every key press.
struct KelvarinVote {
    // Configuration.
    int VoteType = 0;
    int ItemCount = 1;       // the count parameter
    int KeyMask = 0;         // allowed keys of a single-digit vote
    bool AllowFraction = false;
    bool DisplayLetters = false;      // keypads show A, B, C ... instead of 1, 2, 3 ...
    bool DisplayAnswerNumbers = true;
    std::string VoteQuestionText;
    std::string VoteText;       // shown once a key press has reached the base
    std::string VoteEndedText;
    std::string MessageText;  // text and message votes
    int Limits = 0;
    int Points = 0;
    int Allocation = 0;
    // What the keypads show at the other moments of the vote, and for how long (in the
    // library's display-time units, tenths of a second): before the vote, while a press is
    // on its way (a first one, or a changed answer), when it did not get through, once it
    // did, at the end, and when the radio link to the base is lost (while voting or while
    // sending). The fonts are those of text and list votes.
    std::string PrevoteText;
    int PrevoteTextTime = 0;
    std::string VotedText;
    std::string RevotedText;
    std::string VoteFailedText;
    int VoteFailedTextTime = 0;
    int VoteTextTime = 0;
    int VoteEndedTextTime = 0;
    std::string SignalLostDuringVoteText;
    int SignalLostDuringVoteTextTime = 0;
    std::string SignalLostDuringTransmitText;
    int SignalLostDuringTransmitTextTime = 0;
    std::string AnswerText;
    int TextVoteFontSize = 0;
    int ListVoteFontSize = 0;
    // A received vote.
    std::string HID;
    int SID = 0;
    std::string VoteReplyData;
    int BatteryStrength = 0;
    int SignalStrength = 0;
    int PollGroupID = 0;
    int PollSlotID = 0;
    long long KeyPressTimeStamp = 0;  // milliseconds since the vote opened
    double KeyPressTime = 0.0;        // when the base took the press, seconds since midnight
    int VoteReplyID = 0;              // the base's number of the vote answered
};

// The audio options record of StartAudio, in its order.
struct KelvarinAudioOptions {
    int MicVolume = 30;
    int BoostVolume = 0;
    int MaxTalkTime = 60;
    int MicSwitchLogic = 1;
    int WarningTime = 10;
    int MicKey = 0;
    int EndKey = 11;
    int MuteKey = 10;
    int RadioSpeed = 0;
    bool UseOwnRadioChannel = false;
    int RadioChannel = 69;
};

struct KelvarinAudioStatus {
    bool Streaming = false;
    int RSSI = 0;
    int LQI = 0;
};

struct KelvarinWinnerMessage {
    std::string LoadMessage;
    std::string MainMessage;
    int MainMessageFont = 2;
    int LedEffect = 1;
    bool Flag = false;
};

// The presenter keypad's menu: its 22 labels in index order and the record's two further
// numbers.
struct KelvarinPresenterMenu {
    std::array<std::string, 22> Labels;
    int Value1 = 20;
    int Value2 = 20;
};

struct KelvarinSurveyOptions {
    int StartChannel = 1;
    int EndChannel = 77;
    int ChannelStep = 1;
    int VotesPerChannel = 50;
    int StartDelay = 10;
    std::vector<int> Channels;  // a list of channels instead of the range, when not empty
};

// One keypad's survey result on one channel, or the end-of-scan notice.
struct KelvarinSurveyReply {
    std::string HID;
    int ChannelIndex = 0;
    int VotesSent = 0;
    int Acks = 0;
    bool EndOfScan = false;
};

struct KelvarinChannelScanReply {
    int Channel = 0;
    int Quality = 0;  // 0 (unusable) .. 100 (clear)
};

// A base object: first a temporary one that lists the attached bases, then one per base,
// bound to it by Connect.
class KelvarinBase {
public:
    virtual ~KelvarinBase() = default;

    // "|"-separated lists: USB bases by serial number, network bases as "id;address".
    virtual int GetUSBDevices(std::string& list) = 0;
    virtual int GetEthernetDevices(std::string& list) = 0;
    // "000 000 000 000" for a USB base, "address|port|port" for a network base.
    virtual int Connect(const std::string& connection) = 0;
    virtual int Disconnect() = 0;

    virtual int GetBaseConfig(KelvarinBaseConfig& config) = 0;
    virtual int SetBaseConfig(const KelvarinBaseConfig& config) = 0;
    virtual int GetSessionConfig(KelvarinSessionConfig& config) = 0;
    virtual int SetSessionConfig(const KelvarinSessionConfig& config) = 0;
    virtual int RadioEnable(bool enable) = 0;
    virtual int RadioStatus(int& status) = 0;
    virtual int ResetBase() = 0;
    virtual int RebootRadio() = 0;

    virtual int GetKeypadConfig(const std::string& hid, KelvarinKeypadConfig& config) = 0;
    virtual int SetKeypadConfig(const KelvarinKeypadConfig& config) = 0;
    // Registry text: "HID;SID" entries separated by "|".
    virtual int GetRegistry(std::string& registry) = 0;
    virtual int GetKeypadFromRegistry(int sid, KelvarinKeypadConfig& config) = 0;
    virtual int AddKeypadToRegistry(const std::string& hid, int sid) = 0;
    virtual int DeleteKeypadFromRegistry(const std::string& hid) = 0;
    virtual int DeleteRegistry() = 0;
    virtual int UpdateRegistryFlashRIT(const std::string& hid, int flag) = 0;

    virtual int StartAudio(const std::string& hid, const KelvarinAudioOptions& options) = 0;
    virtual int StopAudio() = 0;

    virtual int PrepareKeypadSurveyScan(const std::vector<std::string>& hids,
                                        const KelvarinSurveyOptions& options) = 0;
    virtual int BeginKeypadSurveyScan() = 0;
    virtual int EndKeypadSurveyScan() = 0;

    // Configures and opens a vote.
    virtual int StartVote(const KelvarinVote& vote) = 0;
    // Configures a vote without opening it; BeginLiveVote opens it.
    virtual int PrepareVote(const KelvarinVote& vote) = 0;
    virtual int BeginLiveVote() = 0;
    virtual int PauseVote() = 0;
    virtual int ResumeVote() = 0;
    virtual int EndVote(const std::string& endedText) = 0;

    virtual int GetChannelList(KelvarinChannelList& list) = 0;
    // Scans channels from..to; the reply comes as KeypadChannelScanReply.
    virtual int ChannelScan(int fromChannel, int toChannel, int passes, int parameter) = 0;

    virtual int ShowWinningKeypad(const std::string& hid, const KelvarinWinnerMessage& message) = 0;
    virtual int SetPresenterEchoMessage(const std::string& hid, const std::string& text) = 0;
    virtual int SetPresenterGotoMenu(const std::string& hid, const std::string& menu) = 0;
    virtual int SetPresenterMenu(const std::string& hid, const KelvarinPresenterMenu& menu) = 0;

    // Events.
    BaseEvent<int, const std::string&> Error;  // code, extra text
    BaseEvent<const KelvarinChannelScanReply&> KeypadChannelScanReply;
    BaseEvent<const KelvarinKeypadConfig&> KeypadConfig;
    // HID, flag (device kind), error, and the firmware version the device reported.
    BaseEvent<const std::string&, int, int, const std::string&> KeypadRegister;
    BaseEvent<const KelvarinVote&> VoteReceived;
    BaseEvent<const KelvarinAudioStatus&> AudioStatus;
    BaseEvent<const std::string&> DebugRx;
    BaseEvent<const std::string&> DebugTx;
    // Presenter keypad: HID, command, command source, value (a slide number for go-to).
    BaseEvent<const std::string&, int, int, int> PresenterCommandReceived;
    BaseEvent<const std::string&, const std::string&> ScannerCommandReceived;  // HID, data
    BaseEvent<const KelvarinChannelScanReply&> ChannelScanReply;
    BaseEvent<const KelvarinSurveyReply&> KeypadSurveyReply;
};

// What the oldest base reports about its configuration.
struct VPanelBaseConfig {
    int Port = 0;
    int BaseNumber = 0;
    int SessionID = 0;
    int RadioChannel = 75;
    int Third = 32;        // must read 32
    bool ResetFlag = false;
    int Speed = 0;         // 0 = 256 kbps, 1 = 1 Mbps
    bool Beep = false;
    bool AutoOff = false;
};

// The control `vPanel` that drives bases of the oldest generation on serial ports.
class KelvarinVPanel {
public:
    virtual ~KelvarinVPanel() = default;
    // Serial ports on which a base answers.
    virtual std::vector<int> AvailablePorts() = 0;
    virtual int OpenPort(int port) = 0;
    virtual int ClosePort(int port) = 0;
    virtual int StartVote(int port, const KelvarinVote& vote) = 0;
    virtual int EndVote(int port) = 0;
    // Keypad detect mode: -1 fall-back, 1, 2, 3.
    virtual int SetDetectMode(int mode) = 0;

    BaseEvent<int, int> ErrorMessage;                      // port, code
    BaseEvent<int, const std::string&> KeypadScan;         // port, "Keypad Group Scanned" ...
    BaseEvent<const VPanelBaseConfig&> BaseConfigReport;
    BaseEvent<int, const std::string&> PresenterKey;       // port, key name ("V", "GOTO12", ...)
    // Port, keypad, data, and when the base took the press (seconds since midnight).
    BaseEvent<int, int, const std::string&, double> VoteReceived;
};

// Which library generation a base object comes from.
enum class LibraryGeneration { Prioritizer, Prioritizer2 };

class BaseLibrary {
public:
    virtual ~BaseLibrary() = default;
    // A new, unbound base object; nullptr when the library is not installed.
    virtual std::unique_ptr<KelvarinBase> createBase(LibraryGeneration generation) = 0;
    virtual std::unique_ptr<KelvarinVPanel> createVPanel() = 0;
};

}  // namespace tlx
