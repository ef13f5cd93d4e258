#pragma once
// The Corehub driver forms `kpdriver_KELVARIN_Prioritizer_g2` (the reference) and
// `kpdriver_KELVARIN_Prioritizer` (the older library generation). Both share one
// implementation; the older form differs only by its flavour: its log name, the type name of
// its bases, which firmware it serves, and that it has no radio status, no presenter
// members and raises keypad-survey replies.
//
// A driver owns up to ten base objects (`oKV01` .. `oKV10`, slots 1..10) and one temporary
// object `oKV` that lists the attached bases. Slots stay inside the driver: outside it a base
// is named by its "base text", the base's identity (its row in the port file, from 0; -1 for a
// base the port file does not list), which every event carries and every member taking a base
// accepts, as it accepts the base's serial number. Messages for people name a base by its
// serial number. Every member logs and swallows its own failures.
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/Form.h"
#include "core/Signal.h"
#include "core/TextLog.h"
#include "drivers/DisplayTexts.h"
#include "drivers/LocalRegistry.h"
#include "ports/BaseLibrary.h"

namespace tlx {

class Controller;

// One connected base.
struct BaseStationRecord {
    int isEthernet = 0;          // 1 for a network base
    std::string identifier;      // the USB serial number or the number of the network entry
    std::string address;         // network bases only
    std::string typeName;        // "Kelvarin Corehub g2"
    bool connected = false;
    KelvarinBaseConfig config;   // as last read with GetBaseConfig
    KelvarinSessionConfig session;
    std::string firmwareVersion;
    int lowestKeypad = 0;
    int highestKeypad = 0;
};

// What sets the two generations apart.
struct CorehubFlavour {
    const char* formName;
    const char* logName;      // pass-through lines: " - Corehub g2:   " + operation + " = " + status
    const char* stepLogName;  // " - Corehub g2: " + "ListDevices: " + step
    const char* typeName;     // "Kelvarin Corehub g2"
    const char* baseType;     // the port file's type, "KELVARIN COREHUB G2"
    LibraryGeneration generation;
    bool newerFirmwareFamily;  // serves bases from 2.00.00.0101.0001 on; otherwise those below
    bool presenterMembers;     // radio status, presenter echo and menu, presenter and scanner commands
    bool surveyReplies;        // raises keypad-survey replies
};

// Where a presenter command came from.
inline constexpr int kPresenterKeySource = 0;
inline constexpr int kPresenterMenuSource = 1;
inline constexpr int kPresenterGotoSource = 2;

class KelvarinPrioritizerDriver : public Form, public KeypadDriver {
public:
    static constexpr int kMaxBases = 10;
    static constexpr int kLastSlot = 11;  // walked to, never holds a base

    KelvarinPrioritizerDriver(Controller& controller, BaseLibrary& library, const CorehubFlavour& flavour);
    ~KelvarinPrioritizerDriver() override;

    // Members, in slot order.
    bool AllowDuplicateVotes() const { return m_AllowDuplicateVotes; }
    void AllowDuplicateVotes(bool allow) { m_AllowDuplicateVotes = allow; }
    void PauseAutoUpdateOfSessionConfig(bool pause) { m_PauseAutoUpdate = pause; }
    void ResetBaseGetRegistryLog();
    int ScanForBestChannel(const std::string& base);
    bool CheckIfMirroredReg();
    int UpdateFlagOnBaseStations(const std::string& hid, int flag);
    void UpdateGlobalKpadLoAndHi(int baseIndex);
    int UpdateStaticRegistryLimits(int baseIndex);
    std::string GetSimpleFirmwareVersion(const std::string& base);
    std::string GetCPPErrorString(int code) const;
    int SetBaseConfig(const std::string& base, const KelvarinBaseConfig& config);
    int SetKeypadConfig(const std::string& base, const KelvarinKeypadConfig& config);
    int GetBaseConfig(const std::string& base, KelvarinBaseConfig& config);
    int ResetBase(const std::string& base);
    int RebootBaseRadio(const std::string& base);
    int SetSessionConfig(const std::string& base, const KelvarinSessionConfig& config);
    int GetSessionConfig(const std::string& base, KelvarinSessionConfig& config);
    int GetRegistry(const std::string& base, bool forceReadFromBase);
    int DeleteRegistry(const std::string& base);
    int DeleteKeypadFromRegistry(const std::string& base, const std::string& hid);
    int UpdateRegistryFlashRIT(const std::string& base, const std::string& hid, int flag);
    int AddKeypadToRegistry(const std::string& base, const std::string& hid, int sid);
    std::optional<RegistryEntry> GetKeypadConfigFromLocalRegCollection(const std::string& base,
                                                                       const std::string& hid) const;
    int GetKeypadConfig(const std::string& base, const std::string& hid, KelvarinKeypadConfig& config);
    int StopAudio();
    int StartAudio(const std::string& hid, const KelvarinAudioOptions& options);
    // Opens the bases for microphone requests with the request keys ("0,11").
    void StartAudioRequests(const std::string& keys);
    void EndAudioRequests();
    void ShowWinningKeypad(int keypad, bool flag) override;
    int PrepareKeypadSurveyScan(const std::string& base, const std::vector<std::string>& hids,
                                const KelvarinSurveyOptions& options);
    int BeginKeypadSurveyScan(const std::string& base);
    int EndKeypadSurveyScan(const std::string& base);
    void SilentLoadVoteConfig(int slideNum) override;
    int StartVote() override;
    void PauseVote() override;
    void ResumeVote() override;
    void EndVote(bool noAudio, bool clearSettings) override;
    void Disconnect();
    int ListDevices();
    std::string GetFirstPresentersHID();
    std::string GetHIDFromSID(int sid);

    void ClosePorts() override { Disconnect(); }
    bool voteRunning() const override { return m_VoteRunning; }

    bool UpdateVoteObjectFromGlobalVariables(KelvarinVote& oVote);
    // A received presenter command as an action and an echo text.
    void DecodePresenterCommand(int command, int commandSource, int value = 0);

    // Events.
    // Keypad, vote data, field 3, field 4, base, HID, and the time the base took the press
    // (seconds since midnight).
    Signal<int, const std::string&, const std::string&, const std::string&, const std::string&, const std::string&,
           double>
        VoteReceived;
    Signal<const KelvarinVote&, const std::string&> VoteReceivedObject;
    Signal<const KelvarinVote&, const std::string&, bool> MicRequest;
    Signal<const KelvarinVote&, const std::string&, bool> PresenterMicRequest;
    Signal<> ToggleAudioDialog;
    Signal<const std::string&, int, const std::string&> BaseError;  // base, code, extra
    Signal<const KelvarinAudioStatus&, const std::string&> AudioStatus;
    // HID, flag (device kind), error, and the firmware the device reported.
    Signal<const std::string&, int, int, const std::string&> KeypadRegister;
    Signal<const std::string&, const std::string&> PresenterValidated;  // HID, firmware
    Signal<const std::string&, const std::string&> ScannerValidated;    // HID, firmware
    Signal<const std::string&, const std::string&> ScannerCommand;  // HID, data
    Signal<const KelvarinChannelScanReply&, const std::string&> ChannelScanReply;
    Signal<const KelvarinKeypadConfig&, const std::string&> KeypadConfigReceived;

    // State, for the set-up tools and for tests.
    const CorehubFlavour& flavour() const { return f_; }
    const std::vector<BaseStationRecord>& baseTable() const { return bases_; }
    int connectedCount() const;
    // True when a connected base has this serial number (the port file's PORT).
    bool isConnected(const std::string& identifier) const;
    // Slot of a base text (the base's identity or its serial number); 0 when none.
    int slotOf(const std::string& base) const;
    // The identity of the base in a slot, as text ("-1" when the port file does not list it).
    std::string baseText(int slot) const;
    // The base in a slot as people are told about it: its serial number "### 000 000 000".
    std::string baseName(int slot) const;
    KelvarinBase* baseObject(int slot) const;
    const LocalRegistry& localRegistry(int baseIndex) const { return localReg_.at(static_cast<std::size_t>(baseIndex)); }
    const std::string& registryReadLog() const { return m_RegistryReadLog; }
    bool registryReading() const { return m_RegistryReading; }
    int silentVoteLoadedSlideNumber() const { return m_SilentVoteLoadedSlideNumber; }
    bool audioRequestsOn() const { return m_AudioRequestsOn; }
    bool scanRunning() const { return m_ScanRunning; }
    KeypadDisplayTexts& displayTexts() { return texts_; }
    PresenterMenu& presenterMenu() { return menu_; }
    // Re-reads the display texts and presenter labels from the settings files (done whenever
    // a vote, the requests or the winner message are sent, so set-up changes take effect).
    void loadDisplaySettings();
    // Sends the presenter keypad its 22 menu labels (when it has registered).
    int SendPresenterMenu(const std::string& hid);

    // The driver's own log, newest first.
    TextLog txtDebug{20000};
    bool logged(const std::string& part) const;

protected:
    int radioStatus(const std::string& base, int& status);
    int presenterEcho(const std::string& text);
    int presenterGotoMenu(const std::string& menu);
    virtual void surveyReply(int slot, const KelvarinSurveyReply& reply);
    void log(const std::string& text, const char* procedure = "");
    Controller& c_;

private:
    template <class F>
    auto guard(const char* member, F&& body) -> decltype(body());
    void failed(const char* member, int code, const std::string& text);
    // Runs one operation on one base, logs it and shows the failure caption when given.
    // A failure is logged as " - " + operation + " FAILED - " + code + ": " + text.
    int passThrough(const std::string& base, const char* operation, const char* caption,
                    const std::function<int(KelvarinBase&)>& op);
    int passThroughSlot(int slot, const std::string& base, const char* operation, const char* caption,
                        const std::function<int(KelvarinBase&)>& op);
    // "Kelvarin Corehub Error": the base named for people, the caption, code and status text.
    void corehubError(int slot, const std::string& base, const std::string& caption, int code);
    template <class F>
    void forEachBase(F&& fn);
    void attach(int slot, KelvarinBase& base);
    bool takesFirmware(const std::string& version) const;
    int readRegistry(int slot, bool forceReadFromBase, bool interactive);
    void updateStaticLimits(int index, bool& anyFailure, int& status);

    // Base-object events.
    void onError(int slot, int code, const std::string& extra);
    void onVote(int slot, const KelvarinVote& vote);
    void onKeypadRegister(int slot, const std::string& hid, int flag, int error, const std::string& firmware);
    void onKeypadConfig(int slot, const KelvarinKeypadConfig& config);
    void onScanReply(int slot, const KelvarinChannelScanReply& reply, const char* event);
    bool isDuplicate(const KelvarinVote& vote) const;
    // A base that was away when a vote started or ended is brought in line when the library
    // reports it back (code 1): it joins the running vote, or ends the one it kept open.
    void catchUpAfterReconnect(int slot);
    void rememberVote(const KelvarinVote& vote);

    BaseLibrary& lib_;
    CorehubFlavour f_;
    std::unique_ptr<KelvarinBase> oKV;  // the temporary object
    std::array<std::unique_ptr<KelvarinBase>, kMaxBases> oKVs_;
    std::vector<BaseStationRecord> bases_;
    std::array<LocalRegistry, kMaxBases> localReg_;
    std::string m_RegistryReadLog;  // "|" + serial number of every base read since the reset
    bool m_RegistryReading = false;
    bool m_AllowDuplicateVotes = false;
    bool m_PauseAutoUpdate = false;
    bool m_AudioRequestsOn = false;
    bool m_VoteRunning = false;
    int m_SilentVoteLoadedSlideNumber = -1;
    bool m_ScanReplyReceived = false;
    int m_ScanSlot = 0;  // the base whose channel-scan reply is awaited
    bool m_ScanRunning = false;
    int m_AudioSlot = 1;
    // What the duplicate check compares of each keypad's last vote ("K:" + HID): only these,
    // since a whole vote object per keypad of a full system is tens of megabytes.
    struct LastVote {
        std::string replyData;
        std::string questionText;
        int replyId = 0;
    };
    std::map<std::string, LastVote> m_LastVotes;
    // Per slot: the base missed the start (or the end) of the current vote because its link
    // was down; the vote object it missed.
    std::array<bool, kMaxBases> m_StartMissed{};
    std::array<bool, kMaxBases> m_EndMissed{};
    KelvarinVote m_RunningVote;
    std::vector<std::string> m_Presenters;
    KeypadDisplayTexts texts_;
    PresenterMenu menu_;
};

// The reference driver, for "KELVARIN COREHUB G2" bases.
class kpdriver_KELVARIN_Prioritizer_g2 : public KelvarinPrioritizerDriver {
public:
    static constexpr const char* kName = "kpdriver_KELVARIN_Prioritizer_g2";
    static const CorehubFlavour& flavourG2();
    kpdriver_KELVARIN_Prioritizer_g2(Controller& controller, BaseLibrary& library);

    int RadioStatus(const std::string& base, int& status) { return radioStatus(base, status); }
    int SetPresenterEchoMessage(const std::string& text) { return presenterEcho(text); }
    void SetPresenterGotoMenu(const std::string& menu) override { presenterGotoMenu(menu); }
};

// The older library generation, for "KELVARIN COREHUB G1" bases.
class kpdriver_KELVARIN_Prioritizer : public KelvarinPrioritizerDriver {
public:
    static constexpr const char* kName = "kpdriver_KELVARIN_Prioritizer";
    static const CorehubFlavour& flavourG1();
    kpdriver_KELVARIN_Prioritizer(Controller& controller, BaseLibrary& library);

    // A keypad's survey result, or the end of the survey, with the text of the base that
    // ran it.
    Signal<const KelvarinSurveyReply&, const std::string&> KeypadSurveyReply;

protected:
    void surveyReply(int slot, const KelvarinSurveyReply& reply) override;
};

}  // namespace tlx
