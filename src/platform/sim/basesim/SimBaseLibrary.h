#pragma once
// Simulated base stations and keypads behind the base-library port. Bases of all three
// generations, USB, network or serial, with serial numbers, firmware versions, registries and
// radio sessions; keypads that vote only while a vote is open and accepting, obey the vote
// type and key mask, send texts, microphone requests and withdrawals; presenter and scanner
// devices; survey and channel-scan replies; and faults on demand. Everything a base reports
// arrives later through the scheduler, never inside the operation that caused it, so a test on
// the virtual scheduler is deterministic. Crowds draw their answers from a seeded generator.
//
// The driving calls (press, crowd, micRequest, text, fail, disconnect, reconnect, bases,
// screen) take the base as the port file names it: the serial number, or the serial port of
// the oldest bases.
//
// Each keypad keeps what its display shows (`screen`), as the base library shows the texts a
// vote carries: when the vote opens, its prevote text for the prevote time and then its
// question; on a press, the voted text (the revoted text for a keypad that has voted in this
// vote); once the press reaches the base, the vote text for its time; keys the vote does not
// take, the failed text; at the end, the ended text for its time and then nothing; when the
// link to the base is lost, the signal-lost text (during the vote, or for a press on its way).
// Times are tenths of a second; a text shown for a time gives way to the question while the
// vote is open and to an empty screen once it is not. An empty text leaves the screen as it is.
// Connect takes exactly the library's forms: "000 000 000 000" for a USB base,
// "address|2020|1010" for a network base.
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ports/BaseLibrary.h"

namespace tlx {

class Scheduler;
class SimKelvarinBase;
class SimVPanel;

inline constexpr const char* kSimKeypadFirmware = "2.00.01.2103.2038";

struct SimKeypad {
    std::string hid;
    int sid = 0;
    int kind = DeviceKind::Keypad;
    int battery = 385;
    int signal = -45;
    // Empty for the keypads' usual firmware (kSimKeypadFirmware): a base of 4,095 keypads then
    // keeps no copy of it per keypad.
    std::string firmware;
    std::string firmwareVersion() const { return firmware.empty() ? kSimKeypadFirmware : firmware; }
    // What the keypad's display shows, and until when (ms; -1: until something else is shown).
    // A timed text gives way to the question while the vote is open and to nothing once it is
    // not. The change is worked out when the screen is read, so a crowd's presses leave no
    // scheduler entry per keypad behind.
    std::string display;
    long long displayUntilMs = -1;
    void showNow(const std::string& text) {
        display = text;
        displayUntilMs = -1;
    }
    int votedIn = 0;       // the base's number of the last vote this keypad answered
    // The device is in the room and answers: a registry entry without a device stays silent.
    bool present = true;
};

enum class SimConnection { Usb, Ethernet, Serial };

struct SimBaseSpec {
    std::string type = "KELVARIN COREHUB G2";
    std::string id;  // serial number, digits
    std::string firmware = "2.00.01.1801.1545";
    SimConnection connection = SimConnection::Usb;
    std::string address;  // network bases
    int serialPort = 0;   // the oldest bases
    std::vector<SimKeypad> keypads;  // the registry, in its order
    // Devices in the room that no registry lists yet: added to the registry, they answer.
    std::vector<SimKeypad> spares;
    KelvarinSessionConfig session;
    // Radio noise: the share of test packets (percent) lost on every channel, and on single
    // channels (by channel index). Survey replies and channel-scan qualities follow it.
    int noise = 20;
    std::map<int, int> channelNoise;
    int noiseOn(int channel) const;
};

// Outcome of a driving call; the message says why a call did nothing.
struct SimOutcome {
    bool ok = true;
    std::string message;
    explicit operator bool() const { return ok; }
};

class SimBaseStation {
public:
    explicit SimBaseStation(SimBaseSpec s) : setup(std::move(s)) {}

    SimBaseSpec setup;
    bool linkUp = true;
    bool radioOn = false;
    bool voteOpen = false;
    bool votePrepared = false;
    KelvarinVote vote;
    KelvarinVote preparedVote;
    int voteId = 0;
    std::string lastEndedText;
    // The keypad whose microphone streams now ("" when none), and the options it was given.
    std::string audioHid;
    KelvarinAudioOptions audioOptions;
    std::string presenterEcho;
    std::string presenterMenu;
    KelvarinPresenterMenu presenterLabels;  // the presenter keypad's menu labels as last sent
    std::string presenterLabelsHid;         // "" until they were sent
    int detectMode = 0;
    // The registry limits the driver wrote into the base's configuration (-1 until written).
    int staticLowSid = -1;
    int staticHighSid = -1;

    // The base as the port file names it.
    std::string port() const;
    bool oldest() const;  // "KELVARIN BASE V3" on a serial port
    SimKeypad* keypadBySid(int sid);
    SimKeypad* keypadByHid(const std::string& hid);
    std::string registryText() const;
    // How often an operation was called.
    int callCount(const std::string& operation) const;
    // Base objects connected to this base now.
    std::size_t attachedObjects() const { return handles_.size(); }

private:
    friend class SimBaseLibrary;
    friend class SimKelvarinBase;
    friend class SimVPanel;
    std::vector<SimKelvarinBase*> handles_;
    std::map<std::string, int> calls_;
    struct Failure {
        int code = 0;
        int times = 1;  // < 0: until cleared
    };
    std::map<std::string, Failure> failures_;
    std::set<std::string> silent_;
    std::vector<std::string> surveyHids_;
    KelvarinSurveyOptions surveyOptions_;
    bool surveyPrepared_ = false;
    int surveyRun_ = 0;
    int audioRun_ = 0;
    long long voteOpenedMs_ = 0;
    long long voteClosedMs_ = -1;  // -1 while a vote is open or none has closed
};

class SimBaseLibrary : public BaseLibrary {
public:
    explicit SimBaseLibrary(Scheduler& scheduler, unsigned seed = 1);
    ~SimBaseLibrary() override;
    SimBaseLibrary(const SimBaseLibrary&) = delete;
    SimBaseLibrary& operator=(const SimBaseLibrary&) = delete;

    std::unique_ptr<KelvarinBase> createBase(LibraryGeneration generation) override;
    std::unique_ptr<KelvarinVPanel> createVPanel() override;

    // Set-up.
    SimBaseStation& addBase(SimBaseSpec setup);
    std::size_t baseCount() const { return stations_.size(); }
    SimBaseStation& station(std::size_t index) { return *stations_.at(index); }
    SimBaseStation* find(const std::string& base);
    void setSeed(unsigned seed) { rng_.seed(seed); }
    int eventDelayMs = 10;
    int scanReplyDelayMs = 250;
    // A keypad survey: each channel takes the change-over plus one packet time per test vote
    // and keypad.
    int surveyChannelMs = 250;
    int surveyPacketMs = 20;
    // Each key press a base takes and reports (the vote as it goes out), for logs and checks.
    std::function<void(const SimBaseStation&, const KelvarinVote&)> onVoteSent;

    // Driving.
    // Each base's "TYPE;PORT", e.g. "KELVARIN COREHUB G2;100100100100".
    std::vector<std::string> bases() const;
    // Keypad number `keypad` of the base presses `keys`.
    SimOutcome press(const std::string& base, int keypad, const std::string& keys);
    // The first `keypads` keypads of the base's registry each press one of the answers ("1,2,3"
    // or "123"), `perSecond` presses a second: keypad i (from 0) presses i * 1000 / perSecond
    // ms (rounded) after the call. One pending step per crowd paces the presses, so a crowd
    // of thousands costs no more to keep than a crowd of one.
    SimOutcome crowd(const std::string& base, int keypads, const std::string& answers, int perSecond);
    // The microphone key, or the withdrawal key (reported as "*").
    SimOutcome micRequest(const std::string& base, int keypad, bool withdraw);
    SimOutcome text(const std::string& base, int keypad, const std::string& text);
    // The next `times` calls of the operation ("StartVote", "GetRegistry", ...) return `code`;
    // code 0 clears it, times < 0 keeps failing until cleared.
    SimOutcome fail(const std::string& base, const std::string& operation, int code, int times = 1);
    // The base loses its link (code 5); the library reports it back (code 1) on reconnect, or
    // by itself after reconnectAfterMs when that is not negative.
    SimOutcome disconnect(const std::string& base, int reconnectAfterMs = -1);
    SimOutcome reconnect(const std::string& base);
    // The reply an operation causes ("ChannelScan", "BeginKeypadSurveyScan") never comes.
    SimOutcome neverReply(const std::string& base, const std::string& operation, bool on = true);
    // An error event from the base ("Alternate base on same channel" is 10).
    SimOutcome error(const std::string& base, int code, const std::string& extra = "");
    SimOutcome alternateBase(const std::string& base) { return error(base, BaseErrorCode::AlternateBaseOnSameChannel); }
    // The presenter keypad sends a command (source 0 keys, 1 menu, 2 go-to with the slide in value).
    SimOutcome presenterCommand(const std::string& base, int command, int source = 0, int value = 0);
    SimOutcome scannerCommand(const std::string& base, const std::string& data);
    // The oldest bases: a configuration report and a presenter key name.
    SimOutcome reportConfig(const std::string& port, const VPanelBaseConfig& config);
    SimOutcome presenterKey(const std::string& port, const std::string& keyName);
    // What keypad number `keypad` of the base shows now.
    SimOutcome screen(const std::string& base, int keypad, std::string& shown);
    // Stops crowds that have not finished.
    void stopCrowds() { ++crowdRun_; }
    // Raw entries the device lists report besides the bases (malformed ones, say).
    void addListEntries(const std::string& usb, const std::string& ethernet) {
        extraUsb_ = usb;
        extraEthernet_ = ethernet;
    }

private:
    friend class SimKelvarinBase;
    friend class SimVPanel;
    void later(int delayMs, std::function<void()> fn);
    void toHandles(SimBaseStation& st, int delayMs, std::function<void(SimKelvarinBase&)> fn);
    void toPanels(SimBaseStation& st, int delayMs, std::function<void(SimVPanel&)> fn);
    // Counts the call and applies injected failures and a lost link.
    int enter(SimBaseStation* st, const char* operation);
    // `known` is the keypad when the caller has it at hand (checked, not trusted).
    SimOutcome keyPress(SimBaseStation& st, int keypad, const std::string& keys, bool isText, bool withdraw,
                        std::size_t known = static_cast<std::size_t>(-1));
    struct CrowdRun;
    void crowdStep(const std::shared_ptr<CrowdRun>& c);
    void openVote(SimBaseStation& st, const KelvarinVote& vote);
    void closeVote(SimBaseStation& st);
    // While a keypad streams: its link status every second, until the turn's maximum talk
    // time has run out, when the base ends the stream itself.
    void audioTick(SimBaseStation& st, int run, int elapsedSeconds);
    // Shows a text on a keypad, for a time (tenths of a second) when it is above 0.
    void show(SimBaseStation& st, SimKeypad& keypad, const std::string& text, int tenths);
    long long nowMs() const;

    Scheduler& scheduler_;
    std::mt19937 rng_;
    std::vector<std::unique_ptr<SimBaseStation>> stations_;
    std::vector<SimVPanel*> panels_;
    std::map<std::uint64_t, std::uint64_t> pending_;  // our key -> scheduler id
    std::uint64_t nextKey_ = 0;
    int crowdRun_ = 0;
    std::string extraUsb_;
    std::string extraEthernet_;
};

// Reads the base section of a simulation set-up file into the library:
//   [bases]  count=2  seed=7
//   [base1]  type=KELVARIN COREHUB G2  id=100100100100  firmware=2.00.01.1801.1545
//            keypads=1-40  connection=usb|ethernet|serial  address=127.0.0.1  port=3
//            hidstart=300100001  presenter=300199901  scanner=300199902  channel=69  session=1
//            registry=300100001;1|300100002;2 (instead of keypads and hidstart)
//            battery=385  signal=-45 (every keypad's readings; hundredths of a volt, dB)
//            batteries=12:355,14:362  signals=12:-80 (keypads whose readings differ)
//            keypadfirmware=2.00.01.2103.2038  firmware.300100003=2.00.01.1901.1200 (any device)
//            spares=300100050-300100053  (in the room, not registered: they answer once added)
//            absent=300100004  (registered, but not in the room: never answers)
//            noise=20  channelnoise=24:0,1-10:60  (percent of test packets lost)
// Returns how many bases were added.
int loadSimBases(SimBaseLibrary& library, const std::string& file);

// "1-40", "1-20,25,30-32": the keypad numbers of a list, in order (malformed parts skipped).
std::vector<int> parseKeypadList(const std::string& list);

}  // namespace tlx
