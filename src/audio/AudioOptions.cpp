#include "audio/AudioOptions.h"

#include "core/NumberFields.h"
#include "core/Options.h"

namespace tlx {

KelvarinAudioOptions audioOptionsRecord(const Options& o) {
    auto n = [&](const char* key) { return toInt32Field(o.number(section::kAudioOptions, key)); };
    KelvarinAudioOptions r;
    r.MicVolume = n(audiokey::kMicVolume);
    r.BoostVolume = n(audiokey::kBoostVolume);
    r.MaxTalkTime = n(audiokey::kMaxTalkTime);
    r.MicSwitchLogic = n(audiokey::kMicSwitchLogic);
    r.WarningTime = n(audiokey::kWarningTime);
    r.MicKey = n(audiokey::kMicKey);
    r.EndKey = n(audiokey::kEndKey);
    r.MuteKey = n(audiokey::kMuteKey);
    r.RadioSpeed = n(audiokey::kRadioSpeed);
    r.UseOwnRadioChannel = o.flag(section::kAudioOptions, audiokey::kOwnRadioChannel);
    r.RadioChannel = n(audiokey::kRadioChannel);
    return r;
}

}  // namespace tlx
