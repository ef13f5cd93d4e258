#pragma once
// A started controller on virtual time with one simulated Corehub base whose keypads carry
// full 12-digit HIDs, a show with a vote slide and two microphone slides, a display program's
// connection, the audio feature over a stand-in sound card, and the audio window.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "audio/AudioFeature.h"
#include "audio/AudioWindow.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "platform/sim/SimPresentation.h"
#include "ports/AudioEngine.h"
#include "support/TestWorld.h"

namespace tlx::test {

// A sound card that does what it is told, records the calls, and fails on request.
class FakeAudioEngine : public AudioEngine {
public:
    std::vector<AudioDeviceInfo> recordDevices() override { return {{"Microphone", true}, {"Line In", false}}; }
    std::vector<AudioDeviceInfo> playbackDevices() override { return {{"Speakers", true}, {"Headphones", false}}; }
    bool init(int device, int frequency) override { return call("init " + numText(device) + " " + numText(frequency)); }
    bool recordInit(int device) override { return call("recordInit " + numText(device)); }
    std::vector<std::string> recordInputNames() override { return inputs; }
    std::optional<double> recordGetInput(int input) override {
        return input == -1 ? std::optional<double>(masterLevel) : std::nullopt;
    }
    bool recordSetInput(int input, double level) override {
        if (input != -1) return false;
        masterLevel = level;
        return true;
    }
    bool streamCreate(int frequency, int channels) override {
        return call("streamCreate " + numText(frequency) + " " + numText(channels));
    }
    bool recordStart(int frequency, int channels) override {
        return call("recordStart " + numText(frequency) + " " + numText(channels));
    }
    bool channelPlay() override { return call("channelPlay"); }
    double getVolume() override { return volume; }
    bool setVolume(double v) override {
        volume = v;
        return true;
    }
    double cpu() override { return cpuLoad; }
    double channelLevel() override { return level; }
    std::int64_t channelBufferedBytes() override { return buffered; }
    std::int64_t channelSeconds2Bytes(double s) override { return static_cast<std::int64_t>(s * 44100) * 4; }
    void recordFree() override { calls.push_back("recordFree"); }
    void free() override { calls.push_back("free"); }
    int errorGetCode() override { return lastError; }

    // The named call ("streamCreate", ...) fails with this code from now on.
    void failOn(const std::string& name, int code) {
        failName = name;
        failCode = code;
    }
    int count(const std::string& prefix) const {
        return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string& c) { return startsWith(c, prefix); }));
    }

    std::vector<std::string> calls;
    std::vector<std::string> inputs;
    std::string failName;
    int failCode = 0;
    int lastError = 0;
    double masterLevel = 0.8, volume = 0.5, cpuLoad = 0.0, level = 0.0;
    std::int64_t buffered = 0;

private:
    bool call(const std::string& text) {
        calls.push_back(text);
        if (!failName.empty() && startsWith(text, failName)) {
            lastError = failCode;
            return false;
        }
        lastError = 0;
        return true;
    }
};

inline constexpr const char* kBase = "100100100100";
inline constexpr long long kFirstHid = 100300100001LL;  // keypad k has kFirstHid + k - 1

struct AudioWorld : TestWorld {
    // Slides: 1 welcome, 2 a vote, 3 a microphone slide with a question and the keypads 1, 2,
    // 3, 20 and 30 on its lines (20 has a short HID, 30 none), 4 a microphone slide that asks
    // for the control panel.
    AudioWorld() {
        useSimBases();
        SimBaseStation& st = addSimBase(kBase, 10, "KELVARIN COREHUB G2", kFirstHid);
        SimKeypad shortHid;
        shortHid.hid = "300100020";
        shortHid.sid = 20;
        st.setup.keypads.push_back(shortHid);
        writePortFile({{kBase, "KELVARIN COREHUB G2", 1, 40}});
        pptx::DeckPlan plan;
        plan.slides = {
            {"Welcome", "", {}, {}, {}},
            {"Colours", "", {}, {}, {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}}},
            {"Open floor", "Questions?", {"Keypad 1", "Keypad 2", "Keypad 3", "Keypad 20", "Keypad 30"}, {},
             {{"MURMELO", "True"}}},
            {"Panel", "", {"Keypad 4"}, {},
             {{"MURMELO", "True"}, {"TLXVOTE", "<MurmeloControlPanel>True</MurmeloControlPanel>"}}}};
        openDeck(plan);
        start();
        wireAddIn();
        display = std::make_unique<tallix>(c());
        display->init("");
        engine = std::make_shared<FakeAudioEngine>();
        feature = &installAudioFeature(c(), engine);
        settle();
    }
    void settle(int ms = 100) { scheduler.advance(ms); }
    frmAudio& audio() {
        frmAudio& a = loadAudioWindow(c());
        a.mnu_debugMode = true;
        return a;
    }
    SimBaseStation& station() { return baseLibrary.station(0); }
    SimKeypad& keypad(int k) { return *station().keypadBySid(k); }
    static std::string hid(int k) { return std::to_string(kFirstHid + k - 1); }
    kpdriver_KELVARIN_Prioritizer_g2& g2() { return *dynamic_cast<KelvarinDrivers&>(*c().drivers).oKVv5(); }
    // A keypad presses its microphone (or withdrawal) key on the base.
    void request(int k, bool withdraw = false) {
        ASSERT_TRUE(baseLibrary.micRequest(kBase, k, withdraw).ok) << k;
        settle(50);
    }
    // The keypad object a request carries.
    KelvarinVote keypadObject(int k, const std::string& data = "0", int battery = 385, int signal = -45) {
        KelvarinVote v;
        v.HID = hid(k);
        v.SID = k;
        v.VoteReplyData = data;
        v.BatteryStrength = battery;
        v.SignalStrength = signal;
        return v;
    }
    std::vector<std::string> rowTexts() {
        std::vector<std::string> v;
        for (const auto& r : audio().lvw_keypadRequests.rows) v.push_back(r.number + " " + r.icon);
        return v;
    }
    void select(int k) { audio().lvw_keypadRequests_Click(audio().lvw_keypadRequests.indexOf("K:" + numText(k))); }
    void giveFloor(int k) {
        select(k);
        audio().cmd_startAudio_Click();
    }
    void command(const std::string& line) {
        display->SendCommand(line);
        settle();
    }
    void openVote() {
        for (const char* line : {"votetype=SINGLEDIGIT", "options=4", "startfrom=1", "STARTVOTE"})
            display->SendCommand(line);
        settle();
        ASSERT_TRUE(station().voteOpen);
        ASSERT_TRUE(glo().voteRunning);
    }
    std::string paragraph(int slide, int line) {
        return presentation.getActiveObject()->activePresentation()->slide(slide)->shapeByName("tlx_Answers")->paragraph(line);
    }
    std::string ini() { return readFile(glo().localDataFolder / "tlx.ini"); }
    std::string errLog() { return readFile(c().logs.errLogPath()); }
    bool debugLogged(const std::string& part) { return contains(audio().txt_DebugLog, part); }

    std::unique_ptr<tallix> display;
    std::shared_ptr<FakeAudioEngine> engine;
    AudioFeature* feature = nullptr;
};

}  // namespace tlx::test
