#pragma once
// The audio options the settings store keeps in "KELVARIN AUDIO OPTIONS", by their keys, and
// the options record a microphone turn hands to the base station.
#include "ports/BaseLibrary.h"

namespace tlx {

class Options;

namespace audiokey {
inline constexpr const char* kMicVolume = "MINVL";
inline constexpr const char* kBoostVolume = "BOOVL";
inline constexpr const char* kMaxTalkTime = "MAX TALK TIME";
inline constexpr const char* kMicSwitchLogic = "MIC SWITCH LOGIC";
inline constexpr const char* kWarningTime = "WARNING AT";
inline constexpr const char* kMicKey = "KEY MIC";
inline constexpr const char* kEndKey = "KEY END";
inline constexpr const char* kMuteKey = "KEY MUTE";
inline constexpr const char* kRadioSpeed = "RADIO SPEED";
inline constexpr const char* kOwnRadioChannel = "RADIO CHANNEL CHANGE";
inline constexpr const char* kRadioChannel = "RADIO CHANNEL";
inline constexpr const char* kPrompt1 = "KEYPAD PROMPT 01";
inline constexpr const char* kPrompt2 = "KEYPAD PROMPT 02";
inline constexpr const char* kImage = "AUDIO IMAGE";
inline constexpr const char* kInputDevice = "AUDIO INPUT DEVICE";
inline constexpr const char* kOutputDevice = "AUDIO OUTPUT DEVICE";
// The audio window's check boxes.
inline constexpr const char* kRequestsOn = "AUDIO AUTO REQUESTS";          // chk_audioRequestsOn
inline constexpr const char* kPlaythrough = "PLAYTHROUGH ENABLED";         // chk_playthroughEnabled
inline constexpr const char* kPlaythroughConstant = "PLAYTHROUGH CONSTANT"; // chk_audioRunPlaythroughConstantly
inline constexpr const char* kAutoManage = "AUTO MANAGE REQUESTS";         // chk_AutoManageRequests
inline constexpr const char* kClearOnHide = "CLEAR LIST ON HIDE";          // chk_ClearRequestsOnHide
}  // namespace audiokey

// A fresh record from the eleven options, in their order.
KelvarinAudioOptions audioOptionsRecord(const Options& options);

}  // namespace tlx
