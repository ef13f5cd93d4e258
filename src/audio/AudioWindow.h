#pragma once
// `frmAudio`: the audio window. Keypads ask for the floor; their requests wait in a queue the
// presenter sees; the presenter (or a digit on a microphone slide) gives the floor, the base
// station streams that keypad's microphone, the talk time counts down, and the sound may be
// played through the PC's sound card (playthrough).
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "audio/MicrophoneDriver.h"
#include "core/Form.h"
#include "ports/BaseLibrary.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;
class AudioEngine;
namespace ppt {
class Slide;
}

enum class MicIcon { Inactive, Active, Streaming };
enum class AudioWindowMode { Compact, Full };

struct AudioButton {
    std::string caption;
    bool enabled = true;
};

struct AudioSubItem {
    std::string key;
    std::string text;
    std::string icon;
};

// One keypad in the queue.
struct AudioRequestRow {
    std::string key;     // "K:" + keypad number
    std::string text;    // the HID, "### 000 000 000"
    std::string icon;    // "QUEUED", "SPEAKING", "DONE"
    std::string tag;     // the HID as the driver gave it: what StartAudio is given
    std::string number;  // the "Num" column
    AudioSubItem battery;  // "B:" + number, "71%", "BATT"
    AudioSubItem signal;   // "S:" + number, "-45dB", "SIGNAL"
};

struct AudioRequestList {
    std::vector<std::string> columns;
    std::vector<AudioRequestRow> rows;
    int selected = -1;
    bool enabled = true;
    int indexOf(const std::string& key) const;
};

struct AudioProgressBar {
    int min = 0;
    int max = 100;
    int value = 0;
};

// The window's check boxes.
enum class AudioCheck {
    AutoManageRequests,        // chk_AutoManageRequests
    ClearRequestsOnHide,       // chk_ClearRequestsOnHide
    AudioRequestsOn,           // chk_audioRequestsOn
    PlaythroughEnabled,        // chk_playthroughEnabled
    RunPlaythroughConstantly,  // chk_audioRunPlaythroughConstantly
    DefaultDeviceOnly,         // chk_audioDefaultDeviceOnly
    CallBackLogNextEvent,      // chk_audioCallBackLogNextEvent
};

class frmAudio : public Form {
public:
    static constexpr const char* kName = "frmAudio";
    static constexpr const char* kRequestKeys = "0,11";
    static constexpr int kFrequency = 44100;
    static constexpr int kChannels = 2;
    static constexpr int kMaxLatencyMs = 150;
    // How long giving the floor waits for a running vote to end, and a slide-driven turn for
    // the start button to come back (trying again every kSlideRetryMs), before giving up.
    static constexpr double kVoteEndWaitSeconds = 5.0;
    static constexpr double kStartWaitSeconds = 10.0;
    static constexpr int kSlideRetryMs = 100;

    explicit frmAudio(Controller& controller);
    ~frmAudio() override;

    // The driver calls go here (the Corehub drivers unless a stand-in is given).
    void setDriver(std::unique_ptr<MicrophoneDriver> driver);
    // The sound card for playthrough; none means playthrough cannot start.
    void setEngine(std::shared_ptr<AudioEngine> engine);
    AudioEngine* engine() const { return engine_.get(); }

    // ---- operations called by the driver form and the controller ----
    // A keypad asked for (or, with the data "*", withdrew) the floor.
    void MicRequest(const KelvarinVote& keypad, const std::string& base, bool startNow);
    void oKVv5_AudioStatus(const KelvarinAudioStatus& status, const std::string& text);
    // Gives the floor to the keypad on line `paragraph` of the current slide's answers.
    void RunFromSlide(int paragraph);
    void LaunchSettings();
    // The window's debug log; only in debug mode.
    void LogEvent(const std::string& text);
    AudioWindowMode Mode() const { return mode_; }
    void setMode(AudioWindowMode mode);
    // The presenter's control panel: the full window.
    void ShowControlPanel(bool show);

    // ---- user controls ----
    void cmd_audioRequest_Click();
    void imgMicIcon_Click() { cmd_audioRequest_Click(); }
    void cmd_startAudio_Click();
    void cmd_stopAudio_Click();
    void lvw_keypadRequests_Click(int row);
    void lvw_keypadRequests_DblClick(int row);
    void mnu_audioRequestDelete_Click();
    void cmd_clearList_Click();
    void cmd_hide_Click();
    void cmd_settings_Click() { LaunchSettings(); }
    void mnu_deviceSettings_Click() { LaunchSettings(); }
    void cmd_fullMode_Click();
    void mnu_debugMode_Click();
    void chk_Click(AudioCheck box, bool checked);
    bool checked(AudioCheck box) const;
    // The shortest recorded block that is not reported as short; false (and a message) for
    // text that is not a whole number of 0 or more.
    bool txt_audioMinCallbackDataLen_Change(const std::string& text);
    void cmd_startPlaythrough_Click() { PlayThroughStart(); }
    void cmd_endPlaythrough_Click() { PlayThroughStop(); }
    void cmd_bassRefresh_Click();
    void lvw_inputDevices_Click(int device);
    void lvw_outputDevices_Click(int device);
    void cmb_input_Click(int input);
    void sld_inputLevel_Change(int level);
    void sld_outputLevel_Change(int level);

    // ---- timers ----
    void tmrTimeRemaining_Timer();
    void tmr_bassCPU_Timer();

    // ---- playthrough ----
    bool PlayThroughStart();
    void PlayThroughStop();
    bool playthroughRunning() const { return playthrough_; }

    // ---- controls ----
    AudioRequestList lvw_keypadRequests;
    // The keypad objects seen in requests, keyed "K:" + keypad number.
    std::map<std::string, KelvarinVote> colKeyapds;
    AudioButton cmd_audioRequest{"Enable Requests"};
    AudioButton cmd_startAudio{"Start"};
    AudioButton cmd_stopAudio{"Stop", false};
    AudioButton cmd_clearList{"Clear List"};
    AudioButton cmd_settings{"Settings"};
    AudioButton cmd_hide{"Hide"};
    AudioButton cmd_startPlaythrough{"Start Playthrough"};
    AudioButton cmd_endPlaythrough{"End Playthrough", false};
    AudioButton cmd_bassRefresh{"Refresh"};
    AudioButton cmd_fullMode{">>"};
    MicIcon imgMicIcon = MicIcon::Inactive;
    std::string status;  // the status bar
    std::string lblRSSI, lblLQI, lblTimeRemaining;
    AudioProgressBar pbarRSSI{-100, 0, -100};
    AudioProgressBar pbarLQI{0, 255, 0};
    std::string lblCPU, lblLatency;
    AudioProgressBar pbar_channelLevel{0, 100, 0};
    std::vector<std::string> lvw_inputDevices, lvw_outputDevices;
    std::vector<std::string> cmb_input;
    int cmb_inputIndex = -1;  // -1: the master input
    int sld_inputLevel = 0;
    int sld_outputLevel = 0;
    std::string txt_audioMinCallbackDataLen = "0";
    std::string txt_DebugLog;
    bool mnu_debugMode = false;
    bool controlPanelVisible = false;

    Timer tmrTimeRemaining;
    Timer tmr_bassCPU;
    // A slide-driven turn waiting for the start button (one-shot).
    Timer tmrSlideWait;

    // The turn now running: the speaker's HID (empty when none), row key, and start time
    // (seconds since midnight).
    const std::string& currentSpeaker() const { return speakerHid_; }
    const std::string& currentSpeakerKey() const { return speakerKey_; }
    double startTime() const { return startTime_; }
    // The keypad number a slide-driven turn asked for last (0 when none).
    int slideKeypad() const { return slideKeypad_; }

protected:
    void unloading() override;

private:
    void setStatus(std::string text);
    bool voteRunning() const;
    bool turnRunning() const { return !speakerHid_.empty(); }
    void stopTurn();
    void requestsOn(bool on);
    void removeRow(int index);
    AudioRequestRow& ensureRow(int keypad, const std::string& hid, int battery, int signal);
    ppt::Slide* currentSlide() const;
    void runFromSlide(int paragraph, bool retry);
    void reportAudioError(int code, const char* procedure);
    void blockRecorded(std::size_t length, const void* buffer);
    void engineFailed(int code);
    void fillInputs();
    void saveOptions();
    int optionInt(const char* key) const;

    Controller& c_;
    std::unique_ptr<MicrophoneDriver> driver_;
    std::shared_ptr<AudioEngine> engine_;
    AudioWindowMode mode_ = AudioWindowMode::Compact;
    bool chkDefaultDeviceOnly_ = false;
    bool chkCallBackLogNextEvent_ = false;
    int minCallbackDataLen_ = 0;
    bool playthrough_ = false;
    std::string speakerHid_;
    std::string speakerKey_;
    double startTime_ = 0.0;
    int slideKeypad_ = 0;
    // The slide-driven turn that waits: its line number, the line as it was, when it gives up.
    int waitParagraph_ = 0;
    std::string waitLine_;
    double waitDeadline_ = 0.0;
};

// Loads the audio window when it is not loaded (it stays hidden).
frmAudio& loadAudioWindow(Controller& controller);
// Loads the audio window when it is not loaded, shows it and makes it top-most.
frmAudio& showAudioWindow(Controller& controller);
// A slide whose "TLXVOTE" tag asks for the microphone control panel brings the window up
// with it; other slides change nothing. True when the slide asked.
bool showAudioControlPanelFor(Controller& controller, ppt::Slide& slide);

}  // namespace tlx
