// Votes on the Corehub driver: building the vote object, pre-loading, starting, pausing,
// resuming and ending it on every base, microphone requests, and the votes that come back.
#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "drivers/BaseStatus.h"
#include "drivers/PrioritizerDriver.h"
#include "drivers/PrioritizerDriverInl.h"
#include "drivers/VoteConfig.h"

namespace tlx {

namespace {
std::string status(int rc) { return numText(rc) + ": " + GetCPPErrorString(rc); }
bool linkDown(int rc) {
    return rc == BaseErrorCode::BaseDisconnected || rc == BaseErrorCode::BaseDisconnectedReconnecting;
}
}  // namespace

bool KelvarinPrioritizerDriver::UpdateVoteObjectFromGlobalVariables(KelvarinVote& oVote) {
    return guard("UpdateVoteObjectFromGlobalVariables",
                 [&] { return tlx::UpdateVoteObjectFromGlobalVariables(c_.glo, texts_, oVote); });
}

void KelvarinPrioritizerDriver::SilentLoadVoteConfig(int slideNum) {
    guard("SilentLoadVoteConfig", [&] {
        if (m_AudioRequestsOn) {
            log("Silent Loading Vote Quit: m_AudioRequestsOn = True", "SilentLoadVoteConfig");
            return;
        }
        if (m_SilentVoteLoadedSlideNumber == slideNum) {
            log("Silent Loading Vote Quit: m_SilentVoteLoadedSlideNumber = " + numText(slideNum),
                "SilentLoadVoteConfig");
            return;
        }
        loadDisplaySettings();
        KelvarinVote oVote;
        if (!UpdateVoteObjectFromGlobalVariables(oVote)) {
            log("Silent Loading Vote Quit: UpdateVoteObjectFromGlobalVariables(oVote) = False", "SilentLoadVoteConfig");
            return;
        }
        forEachBase([&](int, const std::string& base, KelvarinBase& b) {
            const int rc = b.PrepareVote(oVote);
            if (rc != BaseErrorCode::Success)
                log(base + " - Start Vote FAILED - " + status(rc), "SilentLoadVoteConfig");
            else
                log(base + " - Prepare Vote - " + describeVote(oVote), "SilentLoadVoteConfig");
        });
        m_SilentVoteLoadedSlideNumber = slideNum;
        log("Silent Loading Vote Commpleted: slideNum = " + numText(slideNum), "SilentLoadVoteConfig");
    });
}

int KelvarinPrioritizerDriver::StartVote() {
    return guard("StartVote", [&]() -> int {
        if (m_AudioRequestsOn) EndAudioRequests();
        loadDisplaySettings();
        KelvarinVote oVote;
        if (!UpdateVoteObjectFromGlobalVariables(oVote)) {
            log(" - Start Vote - UpdateVoteObjectFromGlobalVariables(oVote) = False", "StartVote");
            return BaseErrorCode::UnknownError;
        }
        int result = BaseErrorCode::Success;
        m_RunningVote = oVote;
        m_StartMissed.fill(false);
        m_EndMissed.fill(false);
        forEachBase([&](int slot, const std::string& base, KelvarinBase& b) {
            if (m_SilentVoteLoadedSlideNumber != -1) {
                // Only the first base opens the pre-loaded configuration; the rest get it whole.
                const int rc = b.BeginLiveVote();
                if (rc != BaseErrorCode::Success) {
                    log(base + " - Begin Live Vote FAILED - " + status(rc), "StartVote");
                    c_.LogEvent(base + " - Begin Live Vote FAILED - " + status(rc), LOG_XX);
                    m_StartMissed[static_cast<std::size_t>(slot - 1)] = linkDown(rc);
                    result = rc;
                } else {
                    log(base + " - Begin Live Vote - m_SilentVoteLoadedSlideNumber:" +
                            numText(m_SilentVoteLoadedSlideNumber),
                        "StartVote");
                }
                m_SilentVoteLoadedSlideNumber = -1;
                return;
            }
            const int rc = b.StartVote(oVote);
            if (rc != BaseErrorCode::Success) {
                log(base + " - Start Vote FAILED - " + status(rc), "StartVote");
                c_.LogEvent(base + " - Start Vote FAILED - " + status(rc), LOG_XX);
                m_StartMissed[static_cast<std::size_t>(slot - 1)] = linkDown(rc);
                result = rc;
            } else {
                log(base + " - Start Live Vote - " + describeVote(oVote), "StartVote");
            }
        });
        m_VoteRunning = true;
        return result;
    });
}

void KelvarinPrioritizerDriver::PauseVote() {
    guard("PauseVote", [&] {
        if (!texts_.TextVotePauseEnabled) return;
        forEachBase([&](int slot, const std::string& base, KelvarinBase& b) {
            KelvarinSessionConfig session;
            int rc = b.GetSessionConfig(session);
            if (rc != BaseErrorCode::Success) {
                log(base + " - Pause Live Vote (GetSessionConfig) FAILED - " + status(rc), "PauseVote");
                return;
            }
            session.VoteAccepting = false;
            rc = b.SetSessionConfig(session);
            if (rc != BaseErrorCode::Success) {
                log(base + " - Pause Live Vote FAILED - " + status(rc), "PauseVote");
                return;
            }
            bases_[static_cast<std::size_t>(slot - 1)].session = session;
            log(base + " - Pause Live Vote", "PauseVote");
        });
    });
}

void KelvarinPrioritizerDriver::ResumeVote() {
    guard("ResumeVote", [&] {
        if (!texts_.TextVotePauseEnabled) return;
        forEachBase([&](int slot, const std::string& base, KelvarinBase& b) {
            KelvarinSessionConfig session;
            int rc = b.GetSessionConfig(session);
            if (rc != BaseErrorCode::Success) {
                log(base + " - Resume Live Vote (GetSessionConfig) FAILED - " + status(rc), "ResumeVote");
                return;
            }
            session.VoteAccepting = true;
            rc = b.SetSessionConfig(session);
            if (rc != BaseErrorCode::Success) {
                log(base + " - Resume Live Vote FAILED - " + status(rc), "ResumeVote");
                return;
            }
            bases_[static_cast<std::size_t>(slot - 1)].session = session;
            log(base + " - Resume Live Vote", "ResumeVote");
        });
    });
}

void KelvarinPrioritizerDriver::EndVote(bool noAudio, bool clearSettings) {
    guard("EndVote", [&] {
        m_SilentVoteLoadedSlideNumber = -1;
        // Ending a vote that never started is sent a single blank as its ended text.
        const std::string endedText = m_VoteRunning ? "" : " ";
        m_StartMissed.fill(false);
        forEachBase([&](int slot, const std::string& base, KelvarinBase& b) {
            const int rc = b.EndVote(endedText);
            if (rc != BaseErrorCode::Success)
                log(base + " - End Vote FAILED - " + status(rc), "EndVote");
            else
                log(base + " - End Vote", "EndVote");
            m_EndMissed[static_cast<std::size_t>(slot - 1)] = linkDown(rc);
        });
        m_VoteRunning = false;
        if (clearSettings) {
            // Every vote setting the vote object is built from: its texts and its numbers.
            GlobalState& g = c_.glo;
            g.voteType.clear();
            g.questionTextShort.clear();
            g.voteText.clear();
            g.voteEndedText.clear();
            g.prevoteText.clear();
            g.answerText.clear();
            g.validAnswers.clear();
            g.optionCount = 0;
            g.startFrom = 0;
            g.kelvarinDisplay = 0;
            g.allocation = 0;
            g.limits = 0;
            g.points = 0;
            g.kvpOptions = 0;
        }
        if (!m_AudioRequestsOn && c_.glo.options.flag(section::kAudioOptions, "AUDIO AUTO REQUESTS") && !noAudio &&
            !c_.forms.isLoaded(FrmInit::kName))
            StartAudioRequests("0,11");
    });
}

void KelvarinPrioritizerDriver::StartAudioRequests(const std::string& keys) {
    guard("StartAudioRequests", [&] {
        loadDisplaySettings();
        const auto mask = keyMaskOfList(keys);
        if (!mask) {
            failed("StartAudioRequests", BaseErrorCode::InvalidVoteCharacter, "request keys " + keys);
            return;
        }
        // Requests are a single-digit vote on the request keys, prompting on the keypads.
        KelvarinVote oVote;
        oVote.VoteType = kVoteTypeSingleDigit;
        oVote.ItemCount = 2;
        oVote.KeyMask = *mask;
        oVote.VoteQuestionText = texts_.KeypadPrompt01;
        oVote.VoteText = texts_.KeypadPrompt02;
        forEachBase([&](int, const std::string& base, KelvarinBase& b) {
            const int rc = b.StartVote(oVote);
            if (rc != BaseErrorCode::Success)
                log(base + " - Start Audio Requests FAILED - " + status(rc), "StartAudioRequests");
            else
                log(base + " - Start Audio Requests - Keys:" + keys, "StartAudioRequests");
        });
        m_AudioRequestsOn = true;
    });
}

void KelvarinPrioritizerDriver::EndAudioRequests() {
    guard("EndAudioRequests", [&] {
        forEachBase([&](int, const std::string& base, KelvarinBase& b) {
            const int rc = b.EndVote(" ");
            if (rc != BaseErrorCode::Success)
                log(base + " - End Audio Requests FAILED - " + status(rc), "EndAudioRequests");
            else
                log(base + " - End Audio Requests", "EndAudioRequests");
        });
        m_AudioRequestsOn = false;
    });
}

void KelvarinPrioritizerDriver::catchUpAfterReconnect(int slot) {
    guard("Error", [&] {
        const auto i = static_cast<std::size_t>(slot - 1);
        if (i >= m_StartMissed.size()) return;
        KelvarinBase* b = baseObject(slot);
        if (!b) return;
        const std::string base = baseText(slot);
        if (m_VoteRunning && m_StartMissed[i]) {
            KelvarinVote oVote = m_RunningVote;
            const int rc = b->StartVote(oVote);
            m_StartMissed[i] = rc != BaseErrorCode::Success && linkDown(rc);
            log(base + (rc == BaseErrorCode::Success ? " - Start Live Vote After Reconnect - " + describeVote(oVote)
                                                     : " - Start Vote FAILED - " + status(rc)),
                "Error");
        } else if (!m_VoteRunning && m_EndMissed[i]) {
            const int rc = b->EndVote("");
            m_EndMissed[i] = rc != BaseErrorCode::Success && linkDown(rc);
            log(base + (rc == BaseErrorCode::Success ? " - End Vote After Reconnect" : " - End Vote FAILED - " + status(rc)),
                "Error");
        }
    });
}

bool KelvarinPrioritizerDriver::isDuplicate(const KelvarinVote& v) const {
    if (m_AllowDuplicateVotes) return false;
    auto it = m_LastVotes.find(registryKey(v.HID));
    if (it == m_LastVotes.end()) return false;
    const LastVote& last = it->second;
    return last.replyData == v.VoteReplyData && last.questionText == v.VoteQuestionText &&
           last.replyId == v.VoteReplyID;
}

void KelvarinPrioritizerDriver::rememberVote(const KelvarinVote& v) {
    const std::string key = registryKey(v.HID);
    auto [it, fresh] = m_LastVotes.try_emplace(key);
    LastVote& last = it->second;
    if (fresh) {
        last = {v.VoteReplyData, v.VoteQuestionText, v.VoteReplyID};
    } else {
        // Fields the new vote leaves blank keep what the keypad sent last.
        if (!trim(v.VoteReplyData).empty()) last.replyData = v.VoteReplyData;
        if (!trim(v.VoteQuestionText).empty()) last.questionText = v.VoteQuestionText;
        if (v.VoteReplyID != 0) last.replyId = v.VoteReplyID;
    }
    for (auto& reg : localReg_)
        if (RegistryEntry* e = reg.find(key)) {
            if (v.BatteryStrength != 0) e->battery = v.BatteryStrength;
            if (v.SignalStrength != 0) e->signal = v.SignalStrength;
        }
}

void KelvarinPrioritizerDriver::onVote(int slot, const KelvarinVote& v) {
    guard("VoteReceived", [&] {
        const std::string base = baseText(slot);
        log(base + " - VoteReceived Event - HID:" + v.HID + ", VoteData:" + v.VoteReplyData, "VoteReceived");
        if (isDuplicate(v)) {
            log("Duplicate Vote Received " + v.HID + ": " + v.VoteReplyData, "VoteReceived");
            return;
        }
        rememberVote(v);
        // The keypad number as the base's registry holds it.
        int keypad = v.SID;
        if (const RegistryEntry* e = localReg_[static_cast<std::size_t>(slot - 1)].find(registryKey(v.HID));
            e && e->SID > 0)
            keypad = e->SID;
        VoteReceived(keypad, trim(v.VoteReplyData), numText(v.BatteryStrength), numText(v.SignalStrength), base,
                     v.HID, v.KeyPressTime);
        VoteReceivedObject(v, base);
        // Every accepted vote while requests are on is a request, the presenter keypad's too.
        if (m_AudioRequestsOn) MicRequest(v, base, false);
    });
}

}  // namespace tlx
