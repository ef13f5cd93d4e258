#include "audio/AudioSettingsForm.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "audio/AudioOptions.h"
#include "core/Controller.h"
#include "core/NumberFields.h"
#include "core/Text.h"
#include "ports/Dialogs.h"

namespace tlx {

namespace {
constexpr const char* kObject = "frmAudioSettings";

// A whole number typed into a box: digits only (blanks around allowed), within the range.
std::optional<int> wholeNumber(const std::string& text, int lo, int hi) {
    const std::string t = trim(text);
    if (t.empty() || t.size() > 9 || !std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return std::nullopt;
    const int v = std::stoi(t);
    if (v < lo || v > hi) return std::nullopt;
    return v;
}

bool oneLine(const std::string& text) { return text.find_first_of("\r\n") == std::string::npos; }

bool imageFile(const std::string& path) {
    const std::string lower = toLower(path);
    if (!endsWith(lower, ".bmp") && !endsWith(lower, ".gif") && !endsWith(lower, ".jpg")) return false;
    std::error_code ec;
    return std::filesystem::is_regular_file(std::filesystem::path(path), ec);
}
}  // namespace

frmAudioSettings::frmAudioSettings(Controller& controller) : Form(kName), c_(controller) {
    setCaption(kTitle);
    cmbAudioMicSwitchLogic.items = {"Hold to talk", "Press to talk, press to end", "Open microphone"};
    optAudioRadioSpeed.items = {"250 kbps", "1 Mbps", "2 Mbps"};
    fill();
}

void frmAudioSettings::fill() {
    trap(c_.errors, kObject, "Form_Load", [&] {
        const Options& o = c_.glo.options;
        auto n = [&](const char* key) { return toInt32Field(o.number(section::kAudioOptions, key)); };
        auto t = [&](const char* key) { return o.text(section::kAudioOptions, key); };
        sldAudioMINVL.value = std::clamp(n(audiokey::kMicVolume), sldAudioMINVL.min, sldAudioMINVL.max);
        sldAudioBOOVL.value = std::clamp(n(audiokey::kBoostVolume), sldAudioBOOVL.min, sldAudioBOOVL.max);
        txtAudioMaxTalkTime = t(audiokey::kMaxTalkTime);
        cmbAudioMicSwitchLogic.index =
            std::clamp(n(audiokey::kMicSwitchLogic), 0, static_cast<int>(cmbAudioMicSwitchLogic.items.size()) - 1);
        txtAudioWarning = t(audiokey::kWarningTime);
        txtAudioMicKey = t(audiokey::kMicKey);
        txtAudioEndKey = t(audiokey::kEndKey);
        txtAudioMuteKey = t(audiokey::kMuteKey);
        optAudioRadioSpeed.index =
            std::clamp(n(audiokey::kRadioSpeed), 0, static_cast<int>(optAudioRadioSpeed.items.size()) - 1);
        chkAudioRadioChannel = o.flag(section::kAudioOptions, audiokey::kOwnRadioChannel);
        txtAudioRadioChannelEnabled = chkAudioRadioChannel;
        txtAudioRadioChannel = t(audiokey::kRadioChannel);
        txt_AudioPrompt[0] = t(audiokey::kPrompt1);
        txt_AudioPrompt[1] = t(audiokey::kPrompt2);
        const std::string image = t(audiokey::kImage);
        txt_AudioImage = trim(image).empty() ? kDefaultImage : image;
    });
    changed();
}

bool frmAudioSettings::cmdOK_Click() {
    bool accepted = false;
    trap(c_.errors, kObject, "cmdOK_Click", [&] {
        auto refuse = [&](const std::string& text) {
            c_.ports.dialogs.message(kTitle, text, MsgIcon::Exclamation);
            return false;
        };
        const auto talk = wholeNumber(txtAudioMaxTalkTime, 1, 3600);
        if (!talk) return refuse("Maximum talk time must be a whole number of seconds from 1 to 3600");
        const auto warning = wholeNumber(txtAudioWarning, 0, 3600);
        if (!warning) return refuse("Warning time must be a whole number of seconds from 0 to 3600");
        const auto mic = wholeNumber(txtAudioMicKey, 0, 13);
        if (!mic) return refuse("The microphone key must be a keypad key from 0 to 13");
        const auto end = wholeNumber(txtAudioEndKey, 0, 13);
        if (!end) return refuse("The end key must be a keypad key from 0 to 13");
        const auto mute = wholeNumber(txtAudioMuteKey, 0, 13);
        if (!mute) return refuse("The mute key must be a keypad key from 0 to 13");
        if (*mic == *end || *mic == *mute || *end == *mute)
            return refuse("The microphone, end and mute keys must be three different keys");
        std::optional<int> channel = wholeNumber(txtAudioRadioChannel, 1, 77);
        if (chkAudioRadioChannel && !channel) return refuse("The radio channel must be a whole number from 1 to 77");
        for (const auto& p : txt_AudioPrompt)
            if (!oneLine(p))
                return refuse("A keypad prompt must be a single line: use | to start a new line on the keypad");
        const std::string image = trim(txt_AudioImage);
        const bool defaultImage = image.empty() || image == kDefaultImage;
        if (!defaultImage && (!oneLine(image) || !imageFile(image)))
            return refuse("The image must be a .bmp, .gif or .jpg file that exists, or [DEFAULT]");

        Options& o = c_.glo.options;
        auto set = [&](const char* key, const std::string& value) { o.set(section::kAudioOptions, key, value); };
        set(audiokey::kMicVolume, numText(std::clamp(sldAudioMINVL.value, sldAudioMINVL.min, sldAudioMINVL.max)));
        set(audiokey::kBoostVolume, numText(std::clamp(sldAudioBOOVL.value, sldAudioBOOVL.min, sldAudioBOOVL.max)));
        set(audiokey::kMaxTalkTime, numText(*talk));
        set(audiokey::kMicSwitchLogic, numText(cmbAudioMicSwitchLogic.index));
        set(audiokey::kWarningTime, numText(*warning));
        set(audiokey::kMicKey, numText(*mic));
        set(audiokey::kEndKey, numText(*end));
        set(audiokey::kMuteKey, numText(*mute));
        set(audiokey::kRadioSpeed, numText(optAudioRadioSpeed.index));
        o.setFlag(section::kAudioOptions, audiokey::kOwnRadioChannel, chkAudioRadioChannel);
        // A channel box left unusable while switched off keeps the channel there was.
        if (channel) set(audiokey::kRadioChannel, numText(*channel));
        set(audiokey::kPrompt1, txt_AudioPrompt[0]);
        set(audiokey::kPrompt2, txt_AudioPrompt[1]);
        set(audiokey::kImage, defaultImage ? std::string() : image);
        c_.settings.SaveSettings(o);
        accepted = true;
        return true;
    });
    if (accepted)
        c_.forms.unload(*this);
    else
        changed();
    return accepted;
}

void frmAudioSettings::cmdCancel_Click() { c_.forms.unload(*this); }

void frmAudioSettings::cmdAdvancedSettings_Click() {
    fraAudio = !fraAudio;
    cmdAdvancedSettings = fraAudio ? "<<" : ">>";
    cmdOK_Top = cmdCancel_Top = fraAudio ? kButtonsTopAdvanced : kButtonsTopBasic;
    changed();
}

void frmAudioSettings::chkAudioRadioChannel_Click(bool on) {
    chkAudioRadioChannel = on;
    txtAudioRadioChannelEnabled = on;
    changed();
}

void frmAudioSettings::cmd_AudioImageBrowse_Click() {
    trap(c_.errors, kObject, "cmd_AudioImageBrowse_Click", [&] {
        if (auto file = c_.ports.dialogs.openFileName("Audio Image", kImageFilter)) txt_AudioImage = *file;
    });
    changed();
}

}  // namespace tlx
