#include "core/Options.h"

#include <cmath>

#include "core/Text.h"

namespace tlx {

const std::vector<SettingDef>& savedSettingDefs() {
    using namespace section;
    static const std::vector<SettingDef> defs = {
        {kKelvarinOptions, "DETECTOR STATUS", "0"},
        {kKelvarinOptions, "DEBUG ACCEPT DETECT AS VOTES", "0"},
        {kKelvarinOptions, "KEYPAD BEEP", "1"},
        {kKelvarinOptions, "AUTO OFF", "0"},
        {kKelvarinOptions, "CONTROL KEYPAD", "0"},
        {kKelvarinOptions, "ADVANCED MENU", "0"},
        {kKelvarinOptions, "SHOW BASE STATUS DURING LIVE VOTE", "0"},

        {kCoreHubOptions, "ETHERNET ENABLED", "0"},
        {kCoreHubOptions, "REVOTE ENABLED", "1"},
        {kCoreHubOptions, "REVOTE PAUSE", "0"},
        {kCoreHubOptions, "REVOTED TEXT", "Sending Re-vote."},
        {kCoreHubOptions, "PREVOTE TEXT", "UNUSED"},
        {kCoreHubOptions, "PREVOTE TEXT TIME", "30"},
        {kCoreHubOptions, "VOTED TEXT", "Sending Vote..."},
        {kCoreHubOptions, "VOTE FAILED TEXT", "**Vote Failed**||Please try again"},
        {kCoreHubOptions, "VOTE FAILED TEXT TIME", "30"},
        {kCoreHubOptions, "VOTE END TEXT", "   Vote Ended"},
        {kCoreHubOptions, "VOTE END TEXT TIME", "20"},
        {kCoreHubOptions, "VOTE SUCCESS TEXT", "Vote Submitted|||   Press 10|  to  revote"},
        {kCoreHubOptions, "VOTE SUCCESS TEXT TIME", "20"},
        {kCoreHubOptions, "TEXT VOTE FONT SIZE", "2"},
        {kCoreHubOptions, "TEXT VOTE PAUSE ENABLED", "0"},
        {kCoreHubOptions, "LIST VOTE FONT SIZE", "3"},
        {kCoreHubOptions, "SIGNAL LOST DURING VOTE TEXT", "Base Signal Lost||Attempting to|reconnect"},
        {kCoreHubOptions, "SIGNAL LOST DURING VOTE TEXT TIME", "50"},
        {kCoreHubOptions, "SIGNAL LOST DURING TRANSMIT TEXT", "Base Signal Lost||Attempting to|reconnect"},
        {kCoreHubOptions, "SIGNAL LOST DURING TRANSMIT TEXT TIME", "50"},
        {kCoreHubOptions, "WINNING KEYPAD LOAD MESSAGE", "You're a..."},
        {kCoreHubOptions, "WINNING KEYPAD MAIN MESSAGE", "* WINNER *"},
        {kCoreHubOptions, "WINNING KEYPAD MAIN MESSAGE FONT", "2"},
        {kCoreHubOptions, "WINNING KEYPAD LED EFFECT", "1"},
        {kCoreHubOptions, "COREHUB DEBUG", "0"},
        {kCoreHubOptions, "COREHUB DEBUG POLL INTERVAL", "1000"},
        {kCoreHubOptions, "COREHUB DEBUG READ INTERVAL", "1000"},

        {kAudioOptions, "BOOVL", "0"},
        {kAudioOptions, "KEY END", "11"},
        {kAudioOptions, "KEY MIC", "0"},
        {kAudioOptions, "KEY MUTE", "10"},
        {kAudioOptions, "KEYPAD PROMPT 01", "  Press 0 to||  request mic"},
        {kAudioOptions, "KEYPAD PROMPT 02", "    Request||   Submitted"},
        {kAudioOptions, "MAX TALK TIME", "60"},
        {kAudioOptions, "MIC SWITCH LOGIC", "1"},
        {kAudioOptions, "MINVL", "30"},
        {kAudioOptions, "RADIO CHANNEL", "69"},
        {kAudioOptions, "RADIO CHANNEL CHANGE", "0"},
        {kAudioOptions, "RADIO SPEED", "0"},
        {kAudioOptions, "WARNING AT", "10"},
        {kAudioOptions, "AUDIO INPUT DEVICE", "-1"},
        {kAudioOptions, "AUDIO OUTPUT DEVICE", "-1"},
        {kAudioOptions, "AUDIO AUTO REQUESTS", "0"},
        {kAudioOptions, "AUDIO IMAGE", ""},
        {kAudioOptions, "PLAYTHROUGH ENABLED", "0"},
        {kAudioOptions, "PLAYTHROUGH CONSTANT", "0"},
        {kAudioOptions, "AUTO MANAGE REQUESTS", "0"},
        {kAudioOptions, "CLEAR LIST ON HIDE", "0"},

        {kPresenterText, "AUDIO DIALOG HIDE", "Hide Audio"},
        {kPresenterText, "AUDIO DIALOG SHOW", "Show Audio"},
        {kPresenterText, "END", "   End"},
        {kPresenterText, "GOTO SLIDE X", " GoTo [x]"},
        {kPresenterText, "HOME", "   Home"},
        {kPresenterText, "KEYPADS FIND ME OFF", "FindMe Off"},
        {kPresenterText, "KEYPADS FIND ME ON", "FindMe On"},
        {kPresenterText, "KEYPADS STRONGEST SIG SEARCH ALL", "Search All"},
        {kPresenterText, "KEYPADS STRONGEST SIG SEARCH SESSION", "Search"},
        {kPresenterText, "KEYPADS TURN ALL OFF", "Kpads Off"},
        {kPresenterText, "NEXT SLIDE", "   Next"},
        {kPresenterText, "PAUSE VOTE", "Pause Vote"},
        {kPresenterText, "PREVIOUS SLIDE", "   Back"},
        {kPresenterText, "REVOTE", "  Revote"},
        {kPresenterText, "SCROLL DOWN", "   Down"},
        {kPresenterText, "SCROLL UP", "    Up"},
        {kPresenterText, "START VOTE", "Start Vote"},
        {kPresenterText, "VOLUME DOWN", " Vol Down"},
        {kPresenterText, "VOLUME MUTE", " Vol Mute"},
        {kPresenterText, "VOLUME UP", " Vol Up"},
    };
    return defs;
}

Options::Options() {
    for (const auto& d : savedSettingDefs()) values_.emplace_back(d.defaultValue);
}

int Options::indexOf(std::string_view sec, std::string_view key) const {
    const auto& defs = savedSettingDefs();
    for (std::size_t i = 0; i < defs.size(); ++i)
        if (iequals(defs[i].section, sec) && iequals(defs[i].key, key)) return static_cast<int>(i);
    return -1;
}

const std::string& Options::text(std::string_view sec, std::string_view key) const {
    static const std::string empty;
    const int i = indexOf(sec, key);
    return i < 0 ? empty : values_[static_cast<std::size_t>(i)];
}

double Options::number(std::string_view sec, std::string_view key) const {
    return ParseNumber(text(sec, key));
}

int Options::integer(std::string_view sec, std::string_view key) const {
    const double v = number(sec, key);
    if (v > 2147483647.0 || v < -2147483648.0) return 0;
    return static_cast<int>(std::lround(v));
}

bool Options::flag(std::string_view sec, std::string_view key) const {
    return number(sec, key) != 0;
}

bool Options::set(std::string_view sec, std::string_view key, std::string value) {
    const int i = indexOf(sec, key);
    if (i < 0) return false;
    values_[static_cast<std::size_t>(i)] = std::move(value);
    return true;
}

}  // namespace tlx
