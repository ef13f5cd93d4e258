#include "drivers/DisplayTexts.h"

#include <cmath>

#include "core/Options.h"
#include "core/Settings.h"
#include "core/Text.h"

namespace tlx {

namespace {

// Defaults live in the settings table; the records start from them.
std::string def(const char* key) {
    for (const auto& d : savedSettingDefs())
        if (iequals(d.key, key)) return d.defaultValue;
    return {};
}

int toInt(std::string_view s) {
    const double v = ParseNumber(s);
    return std::fabs(v) < 2e9 ? static_cast<int>(std::lround(v)) : 0;
}

struct TextField {
    const char* key;
    std::string KeypadDisplayTexts::*field;
    const char* section = section::kCoreHubOptions;
};
struct IntField {
    const char* key;
    int KeypadDisplayTexts::*field;
};

const TextField kTextFields[] = {
    {"REVOTED TEXT", &KeypadDisplayTexts::RevotedText},
    {"PREVOTE TEXT", &KeypadDisplayTexts::PrevoteText},
    {"VOTED TEXT", &KeypadDisplayTexts::VotedText},
    {"VOTE END TEXT", &KeypadDisplayTexts::VoteEndText},
    {"VOTE FAILED TEXT", &KeypadDisplayTexts::VoteFailedText},
    {"VOTE SUCCESS TEXT", &KeypadDisplayTexts::VoteSuccessText},
    {"SIGNAL LOST DURING VOTE TEXT", &KeypadDisplayTexts::SignalLostDuringVoteText},
    {"SIGNAL LOST DURING TRANSMIT TEXT", &KeypadDisplayTexts::SignalLostDuringTransmitText},
    {"WINNING KEYPAD LOAD MESSAGE", &KeypadDisplayTexts::WinningKeypadLoadMessage},
    {"WINNING KEYPAD MAIN MESSAGE", &KeypadDisplayTexts::WinningKeypadMainMessage},
    {"KEYPAD PROMPT 01", &KeypadDisplayTexts::KeypadPrompt01, section::kAudioOptions},
    {"KEYPAD PROMPT 02", &KeypadDisplayTexts::KeypadPrompt02, section::kAudioOptions},
};
const IntField kIntFields[] = {
    {"PREVOTE TEXT TIME", &KeypadDisplayTexts::PrevoteTextTime},
    {"TEXT VOTE FONT SIZE", &KeypadDisplayTexts::TextVoteFontSize},
    {"LIST VOTE FONT SIZE", &KeypadDisplayTexts::ListVoteFontSize},
    {"VOTE END TEXT TIME", &KeypadDisplayTexts::VoteEndTextTime},
    {"VOTE FAILED TEXT TIME", &KeypadDisplayTexts::VoteFailedTextTime},
    {"VOTE SUCCESS TEXT TIME", &KeypadDisplayTexts::VoteSuccessTextTime},
    {"SIGNAL LOST DURING VOTE TEXT TIME", &KeypadDisplayTexts::SignalLostDuringVoteTextTime},
    {"SIGNAL LOST DURING TRANSMIT TEXT TIME", &KeypadDisplayTexts::SignalLostDuringTransmitTextTime},
    {"WINNING KEYPAD MAIN MESSAGE FONT", &KeypadDisplayTexts::WinningKeypadMainMessageFont},
    {"WINNING KEYPAD LED EFFECT", &KeypadDisplayTexts::WinningKeypadLedEffect},
};
constexpr const char* kPauseKey = "TEXT VOTE PAUSE ENABLED";

// The presenter menu in index order: each entry's setting key, whose default in the settings
// table is its label, or the label itself for the two entries without a key.
struct MenuItem {
    const char* key;
    const char* keylessLabel;
};
const MenuItem kMenu[PresenterMenu::kCount] = {
    {"NEXT SLIDE", ""},
    {"PREVIOUS SLIDE", ""},
    {"SCROLL UP", ""},
    {"SCROLL DOWN", ""},
    {"HOME", ""},
    {"END", ""},
    {"GOTO SLIDE X", ""},
    {"START VOTE", ""},
    {"REVOTE", ""},
    {"PAUSE VOTE", ""},
    {"", "  Resume"},
    {"VOLUME UP", ""},
    {"VOLUME DOWN", ""},
    {"VOLUME MUTE", ""},
    {"AUDIO DIALOG SHOW", ""},
    {"AUDIO DIALOG HIDE", ""},
    {"", "Mic Active"},
    {"KEYPADS TURN ALL OFF", ""},
    {"KEYPADS FIND ME ON", ""},
    {"KEYPADS FIND ME OFF", ""},
    {"KEYPADS STRONGEST SIG SEARCH SESSION", ""},
    {"KEYPADS STRONGEST SIG SEARCH ALL", ""},
};

}  // namespace

KeypadDisplayTexts::KeypadDisplayTexts() {
    for (const auto& f : kTextFields) this->*f.field = def(f.key);
    for (const auto& f : kIntFields) this->*f.field = toInt(def(f.key));
    TextVotePauseEnabled = ParseNumber(def(kPauseKey)) != 0;
}

void KeypadDisplayTexts::load(const SettingsFiles& files) {
    std::string v;
    for (const auto& f : kTextFields)
        if (files.get(f.section, f.key, v)) this->*f.field = v;
    for (const auto& f : kIntFields)
        if (files.get(section::kCoreHubOptions, f.key, v)) this->*f.field = toInt(v);
    if (files.get(section::kCoreHubOptions, kPauseKey, v)) TextVotePauseEnabled = ParseNumber(v) != 0;
}

void KeypadDisplayTexts::load(const std::filesystem::path& settingsFile) { load(SettingsFiles({settingsFile})); }

std::vector<std::string> displayLines(std::string_view text) { return split(text, "|"); }

PresenterMenu::PresenterMenu() {
    const Options defaults;
    for (std::size_t i = 0; i < kCount; ++i)
        labels[i] = *kMenu[i].key ? defaults.text(section::kPresenterText, kMenu[i].key) : kMenu[i].keylessLabel;
}

const char* PresenterMenu::settingKey(std::size_t index) { return index < kCount ? kMenu[index].key : ""; }

void PresenterMenu::load(const SettingsFiles& files) {
    std::string v;
    for (std::size_t i = 0; i < kCount; ++i)
        if (*kMenu[i].key && files.get(section::kPresenterText, kMenu[i].key, v)) labels[i] = v;
}

void PresenterMenu::load(const std::filesystem::path& settingsFile) { load(SettingsFiles({settingsFile})); }

std::string PresenterMenu::menuText() const {
    return join(std::vector<std::string>(labels.begin(), labels.end()), "|");
}

}  // namespace tlx
