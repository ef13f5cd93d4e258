#include "audio/AudioWindow.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "audio/AudioOptions.h"
#include "audio/AudioSettingsForm.h"
#include "audio/AudioText.h"
#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/NumberFields.h"
#include "core/Text.h"
#include "ports/AudioEngine.h"
#include "ports/Dialogs.h"
#include "ports/PresentationApp.h"

namespace tlx {

namespace {
constexpr const char* kObject = "frmAudio";
constexpr const char* kControlPanelTag = "<MurmeloControlPanel>True</MurmeloControlPanel>";
constexpr double kSecondsPerDay = 86400.0;
}  // namespace

int AudioRequestList::indexOf(const std::string& key) const {
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i].key == key) return static_cast<int>(i);
    return -1;
}

frmAudio::frmAudio(Controller& controller)
    : Form(kName),
      tmrTimeRemaining(controller.ports.scheduler, "tmrTimeRemaining", 200),
      tmr_bassCPU(controller.ports.scheduler, "tmr_bassCPU", 250),
      tmrSlideWait(controller.ports.scheduler, "tmrSlideWait", kSlideRetryMs),
      c_(controller),
      driver_(corehubMicrophoneDriver(controller)) {
    setCaption("Murmelo");
    tmrTimeRemaining.onTick = [this] { tmrTimeRemaining_Timer(); };
    tmr_bassCPU.onTick = [this] { tmr_bassCPU_Timer(); };
    tmrSlideWait.onTick = [this] {
        tmrSlideWait.setEnabled(false);
        trap(c_.errors, kObject, "RunFromSlide", [&] { runFromSlide(waitParagraph_, true); });
        changed();
    };
    // Form_Load: the list's columns, and the check boxes as the settings store keeps them.
    lvw_keypadRequests.columns = {"Keypad HID", "Num", "Batt", "Signal"};
    status = "Requests Disabled";
}

frmAudio::~frmAudio() {
    if (engine_) {
        engine_->onBlock = nullptr;
        engine_->onFailure = nullptr;
    }
}

void frmAudio::setDriver(std::unique_ptr<MicrophoneDriver> driver) { driver_ = std::move(driver); }

void frmAudio::setEngine(std::shared_ptr<AudioEngine> engine) {
    if (engine_) {
        engine_->onBlock = nullptr;
        engine_->onFailure = nullptr;
    }
    engine_ = std::move(engine);
    if (engine_) {
        engine_->onBlock = [this](std::size_t length, const void* buffer) { blockRecorded(length, buffer); };
        engine_->onFailure = [this](int code) { engineFailed(code); };
    }
    // The devices are listed when the full window shows them, not before.
    if (mode_ == AudioWindowMode::Full) cmd_bassRefresh_Click();
}

// ---- small helpers ----

void frmAudio::setStatus(std::string text) { status = std::move(text); }

bool frmAudio::voteRunning() const { return c_.glo.voteRunning || c_.glo.Voting; }

int frmAudio::optionInt(const char* key) const {
    return toInt32Field(c_.glo.options.number(section::kAudioOptions, key));
}

void frmAudio::saveOptions() { c_.settings.SaveSettings(c_.glo.options); }

bool frmAudio::checked(AudioCheck box) const {
    const Options& o = c_.glo.options;
    switch (box) {
        case AudioCheck::AutoManageRequests: return o.flag(section::kAudioOptions, audiokey::kAutoManage);
        case AudioCheck::ClearRequestsOnHide: return o.flag(section::kAudioOptions, audiokey::kClearOnHide);
        case AudioCheck::AudioRequestsOn: return o.flag(section::kAudioOptions, audiokey::kRequestsOn);
        case AudioCheck::PlaythroughEnabled: return o.flag(section::kAudioOptions, audiokey::kPlaythrough);
        case AudioCheck::RunPlaythroughConstantly:
            return o.flag(section::kAudioOptions, audiokey::kPlaythroughConstant);
        case AudioCheck::DefaultDeviceOnly: return chkDefaultDeviceOnly_;
        case AudioCheck::CallBackLogNextEvent: return chkCallBackLogNextEvent_;
    }
    return false;
}

void frmAudio::chk_Click(AudioCheck box, bool on) {
    trap(c_.errors, kObject, "chk_Click", [&] {
        const char* key = nullptr;
        switch (box) {
            case AudioCheck::AutoManageRequests: key = audiokey::kAutoManage; break;
            case AudioCheck::ClearRequestsOnHide: key = audiokey::kClearOnHide; break;
            case AudioCheck::AudioRequestsOn: key = audiokey::kRequestsOn; break;
            case AudioCheck::PlaythroughEnabled: key = audiokey::kPlaythrough; break;
            case AudioCheck::RunPlaythroughConstantly: key = audiokey::kPlaythroughConstant; break;
            case AudioCheck::DefaultDeviceOnly: chkDefaultDeviceOnly_ = on; break;
            case AudioCheck::CallBackLogNextEvent: chkCallBackLogNextEvent_ = on; break;
        }
        if (key) {
            c_.glo.options.setFlag(section::kAudioOptions, key, on);
            saveOptions();
        }
    });
    changed();
}

bool frmAudio::txt_audioMinCallbackDataLen_Change(const std::string& text) {
    const std::string t = trim(text);
    const bool whole = !t.empty() && std::all_of(t.begin(), t.end(), [](char ch) { return ch >= '0' && ch <= '9'; });
    if (!whole || t.size() > 9) {
        c_.ports.dialogs.message("Murmelo", "The shortest callback block must be a whole number of bytes (0 or more)",
                                 MsgIcon::Exclamation);
        changed();
        return false;
    }
    txt_audioMinCallbackDataLen = t;
    minCallbackDataLen_ = std::stoi(t);
    changed();
    return true;
}

void frmAudio::LogEvent(const std::string& text) {
    c_.trace(text, "LogEvent", kObject);
    if (!mnu_debugMode) return;
    txt_DebugLog += text + "\r\n";
    changed();
}

void frmAudio::mnu_debugMode_Click() {
    mnu_debugMode = !mnu_debugMode;
    changed();
}

void frmAudio::setMode(AudioWindowMode mode) {
    const bool listDevices = mode == AudioWindowMode::Full && mode_ != mode;
    mode_ = mode;
    cmd_fullMode.caption = mode == AudioWindowMode::Full ? "<<" : ">>";
    if (listDevices) cmd_bassRefresh_Click();
    changed();
}

void frmAudio::cmd_fullMode_Click() {
    setMode(mode_ == AudioWindowMode::Full ? AudioWindowMode::Compact : AudioWindowMode::Full);
}

void frmAudio::ShowControlPanel(bool show) {
    controlPanelVisible = show;
    setMode(show ? AudioWindowMode::Full : AudioWindowMode::Compact);
}

void frmAudio::LaunchSettings() {
    trap(c_.errors, kObject, "LaunchSettings", [&] {
        auto* f = c_.forms.get<frmAudioSettings>(frmAudioSettings::kName);
        if (!f) f = &c_.forms.load<frmAudioSettings>(c_);
        f->Show();
    });
}

// ---- A: requests on and off ----

void frmAudio::requestsOn(bool on) {
    if (on) {
        driver_->StartAudioRequests(kRequestKeys);
        cmd_audioRequest.caption = "Disable Requests";
        imgMicIcon = MicIcon::Active;
        setStatus("Requests Enabled");
    } else {
        driver_->EndAudioRequests();
        cmd_audioRequest.caption = "Enable Requests";
        imgMicIcon = MicIcon::Inactive;
        setStatus("Requests Disabled");
    }
}

void frmAudio::cmd_audioRequest_Click() {
    trap(c_.errors, kObject, "cmd_audioRequest_Click",
         [&] { requestsOn(cmd_audioRequest.caption == "Enable Requests"); });
    changed();
}

// ---- B: a request arrives ----

void frmAudio::MicRequest(const KelvarinVote& keypad, const std::string& base, bool startNow) {
    trap(c_.errors, kObject, "MicRequest", [&] {
        if (trim(keypad.VoteReplyData) == "*") {
            // A withdrawal takes the keypad's first row out of the queue, whatever its state.
            for (std::size_t i = 0; i < lvw_keypadRequests.rows.size(); ++i)
                if (sameHid(lvw_keypadRequests.rows[i].text, keypad.HID)) {
                    LogEvent("MicRequest - Withdrawn - HID:" + keypad.HID);
                    removeRow(static_cast<int>(i));
                    break;
                }
            return;
        }
        const auto known = driver_->registeredKeypad(keypad.HID);
        if (!known) {
            // Only keypads of the registry can be given the floor: the request is noted and dropped.
            const std::string line = "MicRequest - Keypad not in the registry - HID:" + keypad.HID + ", Base:" + base;
            c_.LogEvent(line, LOG_XX);
            LogEvent(line);
            return;
        }
        const int number = known->number > 0 ? known->number : keypad.SID;
        const std::string key = "K:" + numText(number);
        colKeyapds[key] = keypad;
        AudioRequestRow& row = ensureRow(number, keypad.HID, keypad.BatteryStrength, keypad.SignalStrength);
        row.tag = keypad.HID;
        LogEvent("MicRequest - Keypad:" + numText(number) + ", HID:" + keypad.HID);
        if (startNow) {
            lvw_keypadRequests.selected = lvw_keypadRequests.indexOf(key);
            changed();
            cmd_startAudio_Click();
        }
    });
    changed();
}

AudioRequestRow& frmAudio::ensureRow(int keypad, const std::string& hid, int battery, int signal) {
    const std::string n = numText(keypad);
    const std::string key = "K:" + n;
    int i = lvw_keypadRequests.indexOf(key);
    if (i < 0) {
        // A keypad's first request joins the end of the queue; a repeated one keeps its place.
        AudioRequestRow row;
        row.key = key;
        row.text = formatHid(hid);
        row.icon = "QUEUED";
        row.tag = hid;
        row.number = n;
        lvw_keypadRequests.rows.push_back(row);
        i = static_cast<int>(lvw_keypadRequests.rows.size()) - 1;
    }
    AudioRequestRow& row = lvw_keypadRequests.rows[static_cast<std::size_t>(i)];
    row.battery = {"B:" + n, batteryText(battery), "BATT"};
    row.signal = {"S:" + n, signalText(signal), "SIGNAL"};
    return row;
}

void frmAudio::removeRow(int index) {
    auto& rows = lvw_keypadRequests.rows;
    if (index < 0 || index >= static_cast<int>(rows.size())) return;
    rows.erase(rows.begin() + index);
    int& sel = lvw_keypadRequests.selected;
    if (sel == index)
        sel = -1;
    else if (sel > index)
        --sel;
}

void frmAudio::lvw_keypadRequests_Click(int row) {
    if (!lvw_keypadRequests.enabled) return;
    lvw_keypadRequests.selected = row >= 0 && row < static_cast<int>(lvw_keypadRequests.rows.size()) ? row : -1;
    changed();
}

void frmAudio::lvw_keypadRequests_DblClick(int row) {
    trap(c_.errors, kObject, "lvw_keypadRequests_DblClick", [&] {
        if (row < 0 || row >= static_cast<int>(lvw_keypadRequests.rows.size())) return;
        const std::string key = lvw_keypadRequests.rows[static_cast<std::size_t>(row)].key;
        if (turnRunning()) cmd_stopAudio_Click();
        lvw_keypadRequests.selected = lvw_keypadRequests.indexOf(key);
        cmd_startAudio_Click();
    });
    changed();
}

void frmAudio::mnu_audioRequestDelete_Click() {
    removeRow(lvw_keypadRequests.selected);
    changed();
}

void frmAudio::cmd_clearList_Click() {
    lvw_keypadRequests.rows.clear();
    lvw_keypadRequests.selected = -1;
    changed();
}

// ---- C: giving the floor ----

void frmAudio::cmd_startAudio_Click() {
    trap(c_.errors, kObject, "cmd_startAudio_Click", [&] {
        const int sel = lvw_keypadRequests.selected;
        if (sel < 0 || sel >= static_cast<int>(lvw_keypadRequests.rows.size())) {
            c_.ports.dialogs.message("Murmelo", "Nothing selected", MsgIcon::Exclamation);
            return;
        }
        const std::string key = lvw_keypadRequests.rows[static_cast<std::size_t>(sel)].key;
        if (checked(AudioCheck::AudioRequestsOn) && cmd_audioRequest.caption == "Enable Requests") requestsOn(true);
        // Until the turn runs (or the attempt fails) the start button is busy; a slide-driven
        // turn waits for it.
        const std::string before = status;
        setStatus("Starting Audio");
        cmd_startAudio.enabled = false;
        changed();
        auto giveUp = [&](std::string text) {
            setStatus(std::move(text));
            cmd_startAudio.enabled = true;
        };
        if (voteRunning()) {
            if (MainForm* m = c_.mainForm()) m->AddDataToCommandQueue("ENDVOTE");
            c_.ports.scheduler.waitUntil([this] { return !voteRunning(); }, kVoteEndWaitSeconds);
            if (voteRunning()) {
                giveUp("Unable to stop vote, please try again");
                return;
            }
        }
        // Other events ran while the vote ended: the row may have gone.
        const int index = lvw_keypadRequests.indexOf(key);
        if (index < 0) {
            giveUp(before);
            c_.ports.dialogs.message("Murmelo", "Nothing selected", MsgIcon::Exclamation);
            return;
        }
        bool startedPlaythrough = false;
        if (checked(AudioCheck::PlaythroughEnabled) && !playthrough_) startedPlaythrough = PlayThroughStart();
        const std::string hid = lvw_keypadRequests.rows[static_cast<std::size_t>(index)].tag;
        const int rc = driver_->StartAudio(hid, audioOptionsRecord(c_.glo.options));
        if (rc != BaseErrorCode::Success) {
            clsError e(c_.errors);
            e.StoreErrInfo(0, rc, "Unable to initialize audio, ensure base is connected");
            e.StoreAppInfo(kObject, "cmd_startAudio_Click", "StartAudio HID:" + hid + ", Code:" + numText(rc), false);
            e.Show();
            // The window stays as it was before the attempt.
            if (startedPlaythrough) PlayThroughStop();
            giveUp(before);
            return;
        }
        AudioRequestRow& row = lvw_keypadRequests.rows[static_cast<std::size_t>(index)];
        row.icon = "SPEAKING";
        cmd_startAudio.enabled = false;
        cmd_stopAudio.enabled = true;
        lvw_keypadRequests.enabled = false;
        cmd_audioRequest.enabled = false;
        cmd_clearList.enabled = false;
        cmd_settings.enabled = false;
        cmd_hide.enabled = false;
        imgMicIcon = MicIcon::Streaming;
        setStatus("Streaming Audio");
        speakerHid_ = hid;
        speakerKey_ = row.key;
        startTime_ = c_.ports.scheduler.now().secondsSinceMidnight();
        tmrTimeRemaining.setEnabled(true);
        LogEvent("StartAudio - HID:" + hid);
    });
    changed();
}

// ---- D: ending the turn ----

void frmAudio::cmd_stopAudio_Click() {
    trap(c_.errors, kObject, "cmd_stopAudio_Click", [&] { stopTurn(); });
    changed();
}

void frmAudio::stopTurn() {
    setStatus("Ending Audio");
    // A question slide stays up, with its animation applied again.
    if (ppt::Slide* slide = currentSlide())
        if (ppt::Shape* q = slide->shapeByName("tlx_Question"); q && !q->text().empty())
            if (ppt::Presentation* p = c_.glo.ppApp ? c_.glo.ppApp->activePresentation() : nullptr)
                p->setShowWithAnimation(true);
    if (!checked(AudioCheck::RunPlaythroughConstantly)) PlayThroughStop();
    driver_->StopAudio();
    const int i = lvw_keypadRequests.indexOf(speakerKey_);
    if (i >= 0) {
        if (checked(AudioCheck::AutoManageRequests))
            removeRow(i);
        else
            lvw_keypadRequests.rows[static_cast<std::size_t>(i)].icon = "DONE";
    }
    LogEvent("StopAudio - HID:" + speakerHid_);
    speakerHid_.clear();
    speakerKey_.clear();
    setStatus("Ready");
    cmd_startAudio.enabled = true;
    lvw_keypadRequests.enabled = true;
    cmd_audioRequest.enabled = true;
    cmd_clearList.enabled = true;
    cmd_settings.enabled = true;
    cmd_hide.enabled = true;
    cmd_stopAudio.enabled = false;
    tmrTimeRemaining.setEnabled(false);
    imgMicIcon = cmd_audioRequest.caption == "Disable Requests" ? MicIcon::Active : MicIcon::Inactive;
    lblRSSI.clear();
    lblLQI.clear();
    lblTimeRemaining.clear();
    pbarRSSI.value = pbarRSSI.min;
    pbarLQI.value = pbarLQI.min;
    if (checked(AudioCheck::AudioRequestsOn)) driver_->StartAudioRequests(kRequestKeys);
}

// ---- E: hiding the window ----

void frmAudio::cmd_hide_Click() {
    trap(c_.errors, kObject, "cmd_hide_Click", [&] {
        if (turnRunning()) stopTurn();
        PlayThroughStop();
        if (cmd_audioRequest.caption == "Disable Requests") requestsOn(false);
        if (checked(AudioCheck::ClearRequestsOnHide)) {
            lvw_keypadRequests.rows.clear();
            lvw_keypadRequests.selected = -1;
        }
    });
    Hide();
}

void frmAudio::unloading() {
    // The window closes with the drivers' ports: a running turn and playthrough end first.
    trap(c_.errors, kObject, "Form_Unload", [&] {
        tmrTimeRemaining.setEnabled(false);
        tmr_bassCPU.setEnabled(false);
        tmrSlideWait.setEnabled(false);
        if (turnRunning()) stopTurn();
        PlayThroughStop();
        if (cmd_audioRequest.caption == "Disable Requests") requestsOn(false);
    });
}

// ---- F: the talk-time countdown ----

void frmAudio::tmrTimeRemaining_Timer() {
    trap(c_.errors, kObject, "tmrTimeRemaining_Timer", [&] {
        if (!turnRunning()) return;
        double elapsed = c_.ports.scheduler.now().secondsSinceMidnight() - startTime_;
        if (elapsed < 0) elapsed += kSecondsPerDay;  // the turn went past midnight
        const double maxTalk = c_.glo.options.number(section::kAudioOptions, audiokey::kMaxTalkTime);
        // The countdown only informs: it goes on below zero until the turn is ended.
        const long long remaining = static_cast<long long>(std::nearbyint(maxTalk - elapsed));
        lblTimeRemaining = numText(remaining);
        setStatus("Streaming Audio - " + lblTimeRemaining);
    });
    changed();
}

// ---- G: the link's status ----

void frmAudio::oKVv5_AudioStatus(const KelvarinAudioStatus& s, const std::string& text) {
    trap(c_.errors, kObject, "oKVv5_AudioStatus", [&] {
        (void)text;
        if (s.Streaming) cmd_stopAudio.enabled = true;
        // Readings that do not fit a byte are not readings.
        if (s.RSSI <= 255) {
            lblRSSI = s.RSSI == 0 ? "- " : numText(s.RSSI) + " dB";
            pbarRSSI.value = std::clamp(s.RSSI, pbarRSSI.min, pbarRSSI.max);
        }
        if (s.LQI <= 255) {
            lblLQI = formatNumber(s.LQI, "###,###,###,##0");
            pbarLQI.value = std::clamp(s.LQI, pbarLQI.min, pbarLQI.max);
        }
    });
    changed();
}

// ---- H: slide-driven turns ----

ppt::Slide* frmAudio::currentSlide() const {
    ppt::Application* app = c_.glo.ppApp;
    if (!app) return nullptr;
    if (app->slideShowWindowCount() > 0)
        if (ppt::SlideShowWindow* w = app->slideShowWindow(1)) return w->view().slide();
    return app->activeWindowSlide();
}

void frmAudio::RunFromSlide(int paragraph) {
    trap(c_.errors, kObject, "RunFromSlide", [&] {
        // A new line replaces one still waiting; the waiting line gets its text back.
        if (tmrSlideWait.enabled()) {
            tmrSlideWait.setEnabled(false);
            if (ppt::Slide* slide = currentSlide())
                if (ppt::Shape* answers = slide->shapeByName("tlx_Answers");
                    answers && waitParagraph_ <= answers->paragraphCount())
                    answers->setParagraph(waitParagraph_, waitLine_);
        }
        runFromSlide(paragraph, false);
    });
    changed();
}

void frmAudio::runFromSlide(int paragraph, bool retry) {
    ppt::Slide* slide = currentSlide();
    if (!slide) return;
    if (ppt::Shape* q = slide->shapeByName("tlx_Question"); q && !retry) LogEvent("RunFromSlide - Question:" + q->text());
    ppt::Shape* answers = slide->shapeByName("tlx_Answers");
    if (!answers || paragraph < 1 || paragraph > answers->paragraphCount()) return;
    const std::string raw = retry ? waitLine_ : answers->paragraph(paragraph);
    const std::string line = replaceAll(raw, "\r\n", "");
    const double n = leadingNumber(trim(replaceAll(line, "Keypad ", "")));
    const int keypad = toInt32Field(n);
    const std::string hid = driver_->GetHIDFromSID(keypad);
    // Only a full identifier (the 15 characters of "### 000 000 000") is a keypad.
    if (formatHid(hid).size() != 15) {
        LogEvent("RunFromSlide - No HID for keypad " + numText(keypad));
        return;
    }
    if (turnRunning()) {
        if (sameHid(speakerHid_, hid)) return;
        stopTurn();
        changed();
    }
    slideKeypad_ = keypad;
    if (!cmd_startAudio.enabled) {
        // The start button is busy (a start waits for a vote to end). Waiting here, inside that
        // start's own wait, could never see it finish: the line is marked and tried again from
        // a timer until the button is free, for kStartWaitSeconds at most.
        const double now = c_.ports.scheduler.now().secondsSinceMidnight();
        if (!retry) {
            waitParagraph_ = paragraph;
            waitLine_ = raw;
            waitDeadline_ = now + kStartWaitSeconds;
            answers->setParagraph(paragraph, line + " - Wait ");
        }
        if (now < waitDeadline_)
            tmrSlideWait.setEnabled(true);
        else
            answers->setParagraph(paragraph, raw);  // given up: the line as it was
        return;
    }
    // The slide may name a keypad that has not asked: it joins the queue to be given the floor.
    const auto known = driver_->registeredKeypad(hid);
    ensureRow(keypad, hid, known ? known->battery : 0, known ? known->signal : 0);
    lvw_keypadRequests.selected = lvw_keypadRequests.indexOf("K:" + numText(keypad));
    cmd_startAudio_Click();
    if (turnRunning() && sameHid(speakerHid_, hid))
        answers->setParagraph(paragraph, line + " - Active");
    else if (retry)
        answers->setParagraph(paragraph, raw);
}

// ---- playthrough ----

void frmAudio::reportAudioError(int code, const char* procedure) {
    const std::string text = audioErrorMessage(code);
    LogEvent(std::string(procedure) + " - Audio Error - " + text);
    clsError e(c_.errors);
    e.StoreErrInfo(0, code, text);
    e.StoreAppInfo(kObject, procedure, "Audio Error", false);
    e.Show();
    c_.ports.dialogs.message("Audio Error", text, MsgIcon::Exclamation);
}

bool frmAudio::PlayThroughStart() {
    bool ok = false;
    trap(c_.errors, kObject, "PlayThroughStart", [&] {
        if (playthrough_) {
            ok = true;
            return;
        }
        const int inDevice = chkDefaultDeviceOnly_ ? -1 : optionInt(audiokey::kInputDevice);
        const int outDevice = chkDefaultDeviceOnly_ ? -1 : optionInt(audiokey::kOutputDevice);
        const std::string line = "input_device = " + numText(inDevice) + ", input_ = " + numText(cmb_inputIndex) +
                                 ", output_ = " + numText(outDevice);
        AudioEngine* e = engine_.get();
        const bool started = e && e->init(outDevice, kFrequency) && e->recordInit(inDevice) &&
                             e->streamCreate(kFrequency, kChannels) && e->recordStart(kFrequency, kChannels) &&
                             e->channelPlay();
        if (!started) {
            const int code = e ? e->errorGetCode() : AudioErrorCode::NoFreeDriver;
            if (e) {
                e->recordFree();
                e->free();
            }
            LogEvent("PlayThroughStart - Failed: " + line);
            reportAudioError(code, "PlayThroughStart");
            return;
        }
        playthrough_ = true;
        fillInputs();
        // The chosen input's level, or the master input's when the input cannot be read.
        auto level = e->recordGetInput(cmb_inputIndex);
        if (!level) level = e->recordGetInput(-1);
        if (level) sld_inputLevel = static_cast<int>(std::lround(*level * 100.0));
        sld_outputLevel = static_cast<int>(std::lround(e->getVolume() * 100.0));
        cmd_startPlaythrough.enabled = false;
        cmd_endPlaythrough.enabled = true;
        tmr_bassCPU.setEnabled(true);
        LogEvent("PlayThroughStart - Success: " + line);
        ok = true;
    });
    changed();
    return ok;
}

void frmAudio::PlayThroughStop() {
    trap(c_.errors, kObject, "PlayThroughStop", [&] {
        tmr_bassCPU.setEnabled(false);
        if (!playthrough_) return;
        playthrough_ = false;
        if (engine_) {
            engine_->recordFree();
            engine_->free();
        }
        cmd_startPlaythrough.enabled = true;
        cmd_endPlaythrough.enabled = false;
        pbar_channelLevel.value = 0;
        lblCPU.clear();
        lblLatency.clear();
        LogEvent("PlayThroughStop");
    });
    changed();
}

void frmAudio::tmr_bassCPU_Timer() {
    trap(c_.errors, kObject, "tmr_bassCPU_Timer", [&] {
        if (!playthrough_ || !engine_) return;
        AudioEngine& e = *engine_;
        lblCPU = "CPU: " + formatNumber(e.cpu(), "0.00") + "%";
        pbar_channelLevel.value = std::clamp(static_cast<int>(std::lround(e.channelLevel() * 100.0)), 0, 100);
        const std::int64_t perSecond = e.channelSeconds2Bytes(1.0);
        const long long latency =
            perSecond > 0 ? std::llround(static_cast<double>(e.channelBufferedBytes()) * 1000.0 / static_cast<double>(perSecond))
                          : 0;
        lblLatency = "Latency: " + numText(latency) + " ms";
        if (latency > kMaxLatencyMs) {
            LogEvent("Latency too high - playthrough restarting");
            PlayThroughStop();
            PlayThroughStart();
        }
    });
    changed();
}

void frmAudio::blockRecorded(std::size_t length, const void* buffer) {
    if (chkCallBackLogNextEvent_) {
        chkCallBackLogNextEvent_ = false;
        char address[32];
        std::snprintf(address, sizeof address, "%p", buffer);
        LogEvent("Audio Data CallBack Details: length = " + numText(static_cast<long long>(length)) +
                 ", buffer = " + address + ", user = 0");
    }
    if (static_cast<long long>(length) < minCallbackDataLen_)
        LogEvent("Audio Data From CallBack To Low: length = " + numText(static_cast<long long>(length)));
}

void frmAudio::engineFailed(int code) {
    // The sound card gave up (a device went away): playthrough stops, the turn goes on.
    if (!playthrough_) return;
    PlayThroughStop();
    reportAudioError(code, "PlayThrough");
}

void frmAudio::fillInputs() {
    cmb_input = engine_ && playthrough_ ? engine_->recordInputNames() : std::vector<std::string>{};
    if (cmb_inputIndex >= static_cast<int>(cmb_input.size())) cmb_inputIndex = -1;
}

void frmAudio::cmd_bassRefresh_Click() {
    trap(c_.errors, kObject, "cmd_bassRefresh_Click", [&] {
        lvw_inputDevices.clear();
        lvw_outputDevices.clear();
        if (!engine_) return;
        for (const auto& d : engine_->recordDevices()) {
            lvw_inputDevices.push_back(d.name);
            LogEvent("Input Device - " + d.name);
        }
        for (const auto& d : engine_->playbackDevices()) {
            lvw_outputDevices.push_back(d.name);
            LogEvent("Output Device - " + d.name);
        }
        fillInputs();
    });
    changed();
}

void frmAudio::lvw_inputDevices_Click(int device) {
    trap(c_.errors, kObject, "lvw_inputDevices_Click", [&] {
        if (device < -1 || device >= static_cast<int>(lvw_inputDevices.size())) return;
        c_.glo.options.set(section::kAudioOptions, audiokey::kInputDevice, numText(device));
        saveOptions();
        if (playthrough_) {
            PlayThroughStop();
            PlayThroughStart();
        }
    });
    changed();
}

void frmAudio::lvw_outputDevices_Click(int device) {
    trap(c_.errors, kObject, "lvw_outputDevices_Click", [&] {
        if (device < -1 || device >= static_cast<int>(lvw_outputDevices.size())) return;
        c_.glo.options.set(section::kAudioOptions, audiokey::kOutputDevice, numText(device));
        saveOptions();
        if (playthrough_) {
            PlayThroughStop();
            PlayThroughStart();
        }
    });
    changed();
}

void frmAudio::cmb_input_Click(int input) {
    trap(c_.errors, kObject, "cmb_input_Click", [&] {
        if (input < -1 || input >= static_cast<int>(cmb_input.size())) return;
        cmb_inputIndex = input;
        if (!playthrough_ || !engine_) return;
        auto level = engine_->recordGetInput(input);
        if (!level) level = engine_->recordGetInput(-1);
        if (level) sld_inputLevel = static_cast<int>(std::lround(*level * 100.0));
    });
    changed();
}

void frmAudio::sld_inputLevel_Change(int level) {
    trap(c_.errors, kObject, "sld_inputLevel_Change", [&] {
        sld_inputLevel = std::clamp(level, 0, 100);
        if (!playthrough_ || !engine_) return;
        if (!engine_->recordSetInput(cmb_inputIndex, sld_inputLevel / 100.0)) engine_->recordSetInput(-1, sld_inputLevel / 100.0);
    });
    changed();
}

void frmAudio::sld_outputLevel_Change(int level) {
    trap(c_.errors, kObject, "sld_outputLevel_Change", [&] {
        sld_outputLevel = std::clamp(level, 0, 100);
        if (playthrough_ && engine_) engine_->setVolume(sld_outputLevel / 100.0);
    });
    changed();
}

// ---- opening the window ----

frmAudio& loadAudioWindow(Controller& c) {
    auto* f = c.forms.get<frmAudio>(frmAudio::kName);
    if (!f) f = &c.forms.load<frmAudio>(c);
    return *f;
}

frmAudio& showAudioWindow(Controller& c) {
    frmAudio& f = loadAudioWindow(c);
    f.topMost = true;
    f.Show();
    return f;
}

bool showAudioControlPanelFor(Controller& c, ppt::Slide& slide) {
    if (!contains(slide.tags().item("TLXVOTE"), kControlPanelTag)) return false;
    showAudioWindow(c).ShowControlPanel(true);
    return true;
}

}  // namespace tlx
