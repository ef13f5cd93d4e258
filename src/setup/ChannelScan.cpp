#include "setup/ChannelScan.h"

#include <algorithm>
#include <cmath>

#include "core/Controller.h"
#include "core/Text.h"
#include "drivers/BaseStatus.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "ports/Dialogs.h"

namespace tlx {

namespace {

constexpr int kTimerMs = 100;
constexpr const char* kDebugHeader = "HID            | Ch | Vt | Acks";
constexpr const char* kCumulativeStatus = "Showing Cumulative Results...";

// Survey timing of a base: each channel takes a change-over, then one packet time per test
// vote of every keypad (the keypads send in turn).
constexpr double kChannelChangeSeconds = 0.25;
constexpr double kPacketSeconds = 0.02;

// Option ranges as the boxes are left, and as a saved option is restored. The two differ on
// purpose: a value the box takes is not always one the next opening brings back.
struct Range {
    int lo, hi;
};
constexpr Range kChannelLeft{1, 255}, kVotesLeft{10, 255}, kDelayLeft{1, 255};
constexpr Range kChannelRestore{1, 77}, kVotesRestore{10, 250}, kDelayRestore{1, 240};

bool within(long long v, Range r) { return v >= r.lo && v <= r.hi; }

// Whole numbers only: keypad numbers, channels, counts and seconds have no sign or fraction.
bool wholeNumber(const std::string& text, long long& value) {
    const std::string t = trim(text);
    if (t.empty() || t.size() > 9 || !std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; }))
        return false;
    value = std::stoll(t);
    return true;
}

std::vector<long long> channelList(const std::string& text, bool& ok) {
    std::vector<long long> out;
    ok = true;
    for (const auto& part : split(text, ",")) {
        if (trim(part).empty()) continue;
        long long v = 0;
        if (!wholeNumber(part, v) || !within(v, kChannelLeft)) {
            ok = false;
            return {};
        }
        out.push_back(v);
    }
    return out;
}

bool set(std::string& field, const std::string& value) {
    if (field == value) return false;
    field = value;
    return true;
}

}  // namespace

std::array<int, 3> bestThreeChannels(const ChannelScores& scores) {
    std::array<std::pair<double, int>, kScanChannelCount> pairs;
    for (int i = 0; i < kScanChannelCount; ++i) pairs[static_cast<std::size_t>(i)] = {scores[static_cast<std::size_t>(i)], i};
    // The exchange sort as the window has always done it: each place takes any later pair
    // with a strictly higher score. Equal scores are never swapped with each other directly,
    // but a swap with a higher score can carry one past its equal.
    for (std::size_t i = 0; i + 1 < pairs.size(); ++i)
        for (std::size_t j = i + 1; j < pairs.size(); ++j)
            if (pairs[i].first < pairs[j].first) std::swap(pairs[i], pairs[j]);
    return {pairs[0].second, pairs[1].second, pairs[2].second};
}

std::string channelIndexText(int index) { return index == 0 ? "-" : numText(index); }

int channelNumber(int index) { return 2400 + index; }

std::string hoursMinutesSeconds(long long seconds) {
    if (seconds < 0) seconds = 0;
    return numText(seconds / 3600) + "h " + numText(seconds % 3600 / 60) + "m " + numText(seconds % 60) + "s";
}

frmKelvarinCorehubChannelScan::frmKelvarinCorehubChannelScan(Controller& controller, std::string base)
    : Form(kName),
      baseHID(std::move(base)),
      tmrCalculateScanStartTime(controller.ports.scheduler, "tmrCalculateScanStartTime", kTimerMs),
      tmrShowScanTimeRemaining(controller.ports.scheduler, "tmrShowScanTimeRemaining", kTimerMs),
      c_(controller) {
    setCaption("Channel Scan");
    tmrCalculateScanStartTime.onTick = [this] { tmrCalculateScanStartTime_Timer(); };
    tmrShowScanTimeRemaining.onTick = [this] { tmrShowScanTimeRemaining_Timer(); };
    trap(c_.errors, kName, "Form_Load", [&] {
        restoreOptions();
        for (Option o : {Option::StartChannel, Option::EndChannel, Option::ChannelStep, Option::VotesPerChannel,
                         Option::StartDelay, Option::ChannelList})
            goodOptions_[static_cast<std::size_t>(o)] = optionText(o);
        if (auto* g1 = driver()) {
            replySub_ = g1->KeypadSurveyReply.connect(
                [this](const KelvarinSurveyReply& r, const std::string& b) { KeypadSurveyReply(r, b); });
            if (!trim(baseHID).empty()) g1->GetRegistry(baseHID, false);
        }
        txtDebugKpadResults = kDebugHeader;
        if (!results().empty()) {
            selectedScan = static_cast<int>(results().size());
            compileResults();
        }
        updateEstimate();
    });
}

kpdriver_KELVARIN_Prioritizer* frmKelvarinCorehubChannelScan::driver() const {
    auto* drivers = dynamic_cast<KelvarinDrivers*>(c_.drivers.get());
    return drivers ? drivers->oKVv4() : nullptr;
}

const std::vector<ChannelScanResult>& frmKelvarinCorehubChannelScan::results() const {
    return c_.glo.channelScan.results;
}

void frmKelvarinCorehubChannelScan::unloading() {
    tmrCalculateScanStartTime.setEnabled(false);
    tmrShowScanTimeRemaining.setEnabled(false);
    if (auto* g1 = driver(); g1 && replySub_) g1->KeypadSurveyReply.disconnect(replySub_);
    replySub_ = 0;
    saveOptions();
}

std::string& frmKelvarinCorehubChannelScan::optionText(Option option) {
    switch (option) {
        case Option::StartChannel: return txtStartChannel;
        case Option::EndChannel: return txtEndChannel;
        case Option::ChannelStep: return txtChannelStep;
        case Option::VotesPerChannel: return txtVotesPerChannel;
        case Option::StartDelay: return txtStartDelay;
        case Option::ChannelList: break;
    }
    return txtChannelList;
}

void frmKelvarinCorehubChannelScan::restoreOptions() {
    const ChannelScanMemory& m = c_.glo.channelScan;
    // Only values within their ranges come back; anything else keeps the window's default.
    if (within(m.startChannel, kChannelRestore)) txtStartChannel = numText(m.startChannel);
    if (within(m.endChannel, kChannelRestore)) txtEndChannel = numText(m.endChannel);
    if (within(m.channelStep, kChannelRestore)) txtChannelStep = numText(m.channelStep);
    if (within(m.votesPerChannel, kVotesRestore)) txtVotesPerChannel = numText(m.votesPerChannel);
    if (within(m.startDelay, kDelayRestore)) txtStartDelay = numText(m.startDelay);
    if (m.scanMode == 0 || m.scanMode == 1) optScanMode = m.scanMode;
    bool ok = false;
    const auto list = channelList(m.channelList, ok);
    if (ok) {
        std::vector<std::string> parts;
        for (long long c : list)
            if (within(c, kChannelRestore)) parts.push_back(numText(c));
        txtChannelList = join(parts, ",");
    }
}

void frmKelvarinCorehubChannelScan::saveOptions() {
    ChannelScanMemory& m = c_.glo.channelScan;
    long long v = 0;
    if (wholeNumber(txtStartChannel, v)) m.startChannel = static_cast<int>(v);
    if (wholeNumber(txtEndChannel, v)) m.endChannel = static_cast<int>(v);
    if (wholeNumber(txtChannelStep, v)) m.channelStep = static_cast<int>(v);
    if (wholeNumber(txtVotesPerChannel, v)) m.votesPerChannel = static_cast<int>(v);
    if (wholeNumber(txtStartDelay, v)) m.startDelay = static_cast<int>(v);
    m.scanMode = optScanMode;
    m.channelList = txtChannelList;
}

std::vector<int> frmKelvarinCorehubChannelScan::scanChannels() const {
    std::vector<int> out;
    if (optScanMode == 1) {
        bool ok = false;
        for (long long c : channelList(txtChannelList, ok)) out.push_back(static_cast<int>(c));
        return out;
    }
    long long from = 0, to = 0, step = 0;
    if (!wholeNumber(txtStartChannel, from) || !wholeNumber(txtEndChannel, to) || !wholeNumber(txtChannelStep, step) ||
        step < 1 || from < 1)
        return out;
    for (long long c = from; c <= to; c += step) out.push_back(static_cast<int>(c));
    return out;
}

long long frmKelvarinCorehubChannelScan::estimatedSeconds() const {
    // seconds = channels x (0.25 s change-over + votes per channel x keypads x 0.02 s per
    // packet), rounded up; the start delay is counted down on its own.
    const auto channels = static_cast<double>(scanChannels().size());
    long long votes = 0;
    if (lvwKeypads.empty() || channels == 0 || !wholeNumber(txtVotesPerChannel, votes)) return -1;
    const double keypads = static_cast<double>(lvwKeypads.size());
    return static_cast<long long>(
        std::ceil(channels * (kChannelChangeSeconds + static_cast<double>(votes) * keypads * kPacketSeconds) - 1e-9));
}

void frmKelvarinCorehubChannelScan::updateEstimate() {
    const long long s = estimatedSeconds();
    // Nothing to estimate: the time is shown as "-".
    lblEstimatedTime = "Estimated scan time... " + (s < 0 ? std::string("-") : hoursMinutesSeconds(s));
}

KelvarinSurveyOptions frmKelvarinCorehubChannelScan::surveyOptions() const {
    KelvarinSurveyOptions o;
    long long v = 0;
    if (wholeNumber(txtStartChannel, v)) o.StartChannel = static_cast<int>(v);
    if (wholeNumber(txtEndChannel, v)) o.EndChannel = static_cast<int>(v);
    if (wholeNumber(txtChannelStep, v)) o.ChannelStep = static_cast<int>(v);
    if (wholeNumber(txtVotesPerChannel, v)) o.VotesPerChannel = static_cast<int>(v);
    if (wholeNumber(txtStartDelay, v)) o.StartDelay = static_cast<int>(v);
    if (optScanMode == 1) o.Channels = scanChannels();
    return o;
}

std::string frmKelvarinCorehubChannelScan::axisTitle() const {
    return optGraphType == 1 ? "Channel Index" : "Channel Number";
}

void frmKelvarinCorehubChannelScan::error(const std::string& title, int code) {
    c_.ports.dialogs.message(title, "Error " + numText(code) + ": " + GetCPPErrorString(code), MsgIcon::Exclamation);
}

// ---- keypads ----

void frmKelvarinCorehubChannelScan::cmdAddKeypad_Click() {
    trap(c_.errors, kName, "cmdAddKeypad_Click", [&] {
        if (locked()) return;
        if (lvwKeypads.size() >= static_cast<std::size_t>(kMaxKeypads)) {
            c_.ports.dialogs.message("Max Allowed",
                                     numText(static_cast<long long>(lvwKeypads.size())) +
                                         " keypads already recorded for use in the scan",
                                     MsgIcon::Exclamation);
            return;
        }
        const std::string entered = trim(replaceAll(txtAddKeypad, " ", ""));
        const std::string unknown = "The keypad number entered does not exist in the local registry of the base station";
        long long keypad = 0;
        // Text that is not a keypad number names no keypad of the registry either.
        auto* g1 = driver();
        const std::string hid = g1 && wholeNumber(entered, keypad) && keypad >= 1 && keypad <= 4095
                                    ? g1->GetHIDFromSID(static_cast<int>(keypad))
                                    : std::string();
        if (hid.empty()) {
            c_.ports.dialogs.message("Unable to add keypad", unknown, MsgIcon::Exclamation);
            return;
        }
        // The number may belong to a keypad of another base: its serial number must be in this
        // base's registry.
        if (!g1->GetKeypadConfigFromLocalRegCollection(baseHID, hid)) {
            c_.ports.dialogs.message("Unable to add keypad",
                                     "This keypads serial number does not exist in the local registry of the base station",
                                     MsgIcon::Exclamation);
            return;
        }
        const std::string key = "K:" + numText(keypad);
        // A keypad already listed stays listed once.
        for (const auto& r : lvwKeypads)
            if (r.key == key) return;
        lvwKeypads.push_back({key, static_cast<int>(keypad), formatDigits(idText(hid), "### 000 000 000"), "NEW", ""});
        txtAddKeypad.clear();
        updateEstimate();
        changed();
    });
}

void frmKelvarinCorehubChannelScan::cmdRemoveKeypad_Click() {
    trap(c_.errors, kName, "cmdRemoveKeypad_Click", [&] {
        if (locked() || selectedKeypad < 0 || selectedKeypad >= static_cast<int>(lvwKeypads.size())) return;
        lvwKeypads.erase(lvwKeypads.begin() + selectedKeypad);
        selectedKeypad = -1;
        updateEstimate();
        changed();
    });
}

// ---- options ----

void frmKelvarinCorehubChannelScan::mnuOptions_Click() {
    if (locked()) return;
    fraOptionsVisible = true;
    changed();
}

bool frmKelvarinCorehubChannelScan::OptionLeft(Option option) {
    bool good = false;
    trap(c_.errors, kName, "OptionLeft", [&] {
        std::string& text = optionText(option);
        std::string message;
        long long v = 0;
        switch (option) {
            case Option::StartChannel:
            case Option::EndChannel:
            case Option::ChannelStep:
                // The channel boxes share the step's message.
                if (!wholeNumber(text, v) || !within(v, kChannelLeft)) message = "Invalid channel step entered";
                break;
            case Option::VotesPerChannel:
                if (!wholeNumber(text, v) || !within(v, kVotesLeft)) message = "Invalid votes per channel entered";
                break;
            case Option::StartDelay:
                if (!wholeNumber(text, v) || !within(v, kDelayLeft)) message = "Invalid start delay entered";
                break;
            case Option::ChannelList: {
                // The list's channels are channel boxes too.
                bool ok = false;
                if (channelList(text, ok).empty() || !ok) message = "Invalid channel step entered";
                break;
            }
        }
        if (!message.empty()) {
            c_.ports.dialogs.message("Error", message, MsgIcon::Exclamation);
            text = goodOptions_[static_cast<std::size_t>(option)];
        } else {
            text = trim(text);
            goodOptions_[static_cast<std::size_t>(option)] = text;
            good = true;
        }
        updateEstimate();
        changed();
    });
    return good;
}

void frmKelvarinCorehubChannelScan::optScanMode_Click(int mode) {
    if (locked() || (mode != 0 && mode != 1)) return;
    optScanMode = mode;
    updateEstimate();
    changed();
}

bool frmKelvarinCorehubChannelScan::cmdOptionsClose_Click() {
    bool closed = false;
    trap(c_.errors, kName, "cmdOptionsClose_Click", [&] {
        for (Option o : {Option::StartChannel, Option::EndChannel, Option::ChannelStep, Option::VotesPerChannel,
                         Option::StartDelay})
            if (!OptionLeft(o)) return;
        if (optScanMode == 1 && !OptionLeft(Option::ChannelList)) return;
        long long from = 0, to = 0;
        wholeNumber(txtStartChannel, from);
        wholeNumber(txtEndChannel, to);
        if (from > to) {
            c_.ports.dialogs.message("Error", "Start channel in the range cannot be greater than the end channel",
                                     MsgIcon::Exclamation);
            return;
        }
        fraOptionsVisible = false;
        saveOptions();
        closed = true;
        changed();
    });
    return closed;
}

// ---- scanning ----

void frmKelvarinCorehubChannelScan::cmdScan_Click() {
    trap(c_.errors, kName, "cmdScan_Click", [&] {
        if (locked()) return;
        if (lvwKeypads.empty()) {
            c_.ports.dialogs.message("Cannot prepare the scan", "You must select at least one keypad for use in a scan",
                                     MsgIcon::Exclamation);
            return;
        }
        state_ = ScanState::Preparing;
        lblStatus = "Preparing Scan...";
        fraOptionsVisible = false;
        for (auto& r : lvwKeypads) {
            r.icon = "WAITING";
            r.status = "Waiting for response";
        }
        replies_.clear();
        txtDebugKpadResults = kDebugHeader;
        changed();
        std::vector<std::string> hids;
        for (const auto& r : lvwKeypads) hids.push_back(idText(r.hid));
        auto* g1 = driver();
        const int rc = g1 ? g1->PrepareKeypadSurveyScan(baseHID, hids, surveyOptions()) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) {
            error("PrepareKeypadSurveyScan", rc);
            for (auto& r : lvwKeypads) {
                r.icon = "NEW";
                r.status.clear();
            }
            endScan("");
            return;
        }
        long long delay = 0;
        wholeNumber(txtStartDelay, delay);
        state_ = ScanState::WaitingForStart;
        startAt_ = c_.ports.scheduler.monotonicSeconds() + static_cast<double>(delay);
        lblKeypadResponse = "Waiting for keypads to respond";
        tmrCalculateScanStartTime.setEnabled(true);
        tmrCalculateScanStartTime_Timer();
    });
}

void frmKelvarinCorehubChannelScan::tmrCalculateScanStartTime_Timer() {
    trap(c_.errors, kName, "tmrCalculateScanStartTime_Timer", [&] {
        if (state_ != ScanState::WaitingForStart) {
            tmrCalculateScanStartTime.setEnabled(false);
            return;
        }
        const auto remaining =
            static_cast<long long>(std::ceil(startAt_ - c_.ports.scheduler.monotonicSeconds() - 1e-9));
        if (remaining <= 0) {
            tmrCalculateScanStartTime.setEnabled(false);
            beginScan();
            return;
        }
        bool change = set(lblStatus, "Scan starting in... " + numText(remaining));
        change = set(lblPrompt, "Click to Start Scan in " + numText(remaining)) || change;
        if (change) changed();
    });
}

void frmKelvarinCorehubChannelScan::lblPrompt_Click() {
    trap(c_.errors, kName, "lblPrompt_Click", [&] {
        if (state_ != ScanState::WaitingForStart) return;
        tmrCalculateScanStartTime.setEnabled(false);
        beginScan();
    });
}

void frmKelvarinCorehubChannelScan::beginScan() {
    auto* g1 = driver();
    const int rc = g1 ? g1->BeginKeypadSurveyScan(baseHID) : BaseErrorCode::BaseNotFound;
    if (rc != BaseErrorCode::Success) {
        error("BeginKeypadSurveyScan", rc);
        for (auto& r : lvwKeypads) {
            r.icon = "NEW";
            r.status.clear();
        }
        endScan("");
        return;
    }
    state_ = ScanState::Scanning;
    lblPrompt.clear();
    endAt_ = c_.ports.scheduler.monotonicSeconds() + static_cast<double>(std::max(0LL, estimatedSeconds()));
    tmrShowScanTimeRemaining.setEnabled(true);
    tmrShowScanTimeRemaining_Timer();
}

void frmKelvarinCorehubChannelScan::tmrShowScanTimeRemaining_Timer() {
    trap(c_.errors, kName, "tmrShowScanTimeRemaining_Timer", [&] {
        if (state_ != ScanState::Scanning) {
            tmrShowScanTimeRemaining.setEnabled(false);
            return;
        }
        const auto remaining = static_cast<long long>(std::ceil(endAt_ - c_.ports.scheduler.monotonicSeconds() - 1e-9));
        if (remaining <= 0) {
            // The base still sends its end-of-scan notice; the results follow it.
            tmrShowScanTimeRemaining.setEnabled(false);
            state_ = ScanState::Compiling;
            lblStatus = "Compiling Results...";
            changed();
            return;
        }
        if (set(lblStatus, "Scanning... " + hoursMinutesSeconds(remaining))) changed();
    });
}

void frmKelvarinCorehubChannelScan::KeypadSurveyReply(const KelvarinSurveyReply& reply, const std::string& base) {
    trap(c_.errors, kName, "oKVv4_KeypadSurveyReply", [&] {
        if (state_ != ScanState::Scanning && state_ != ScanState::Compiling) return;
        auto* g1 = driver();
        // Only the base that runs this scan speaks for it.
        if (!g1 || g1->slotOf(base) == 0 || g1->slotOf(base) != g1->slotOf(baseHID)) return;
        if (reply.EndOfScan) {
            ChannelScanResult result;
            for (const auto& f : replies_) {
                const int index = f.reply.ChannelIndex;
                if (index < 0 || index >= kScanChannelCount) continue;
                // The acknowledgements are what got through: they are the channel's score.
                result.scores[static_cast<std::size_t>(index)] += f.reply.Acks;
                ++result.replies;
            }
            c_.glo.channelScan.results.push_back(result);
            selectedScan = static_cast<int>(results().size());
            endScan("");
            compileResults();
            changed();
            return;
        }
        const std::string hid = idText(reply.HID);
        const std::string key = "K:" + hid + "|" + numText(reply.ChannelIndex);
        auto filed = std::find_if(replies_.begin(), replies_.end(), [&](const FiledReply& f) { return f.key == key; });
        if (filed != replies_.end())
            filed->reply = reply;
        else
            replies_.push_back({key, reply});
        std::string line = reply.HID;
        if (line.size() < 15) line += std::string(15 - line.size(), ' ');
        txtDebugKpadResults += "\r\n" + line + "| " + formatNumber(reply.ChannelIndex, "000") + " | " +
                               formatNumber(reply.VotesSent, "000") + " | " + formatNumber(reply.Acks, "000");
        bool waiting = false;
        for (auto& r : lvwKeypads) {
            if (idText(r.hid) == hid) {
                r.icon = "OK";
                r.status = "Ready";
            }
            waiting = waiting || r.icon == "WAITING";
        }
        if (!waiting) lblKeypadResponse.clear();
        changed();
    });
}

void frmKelvarinCorehubChannelScan::endScan(const std::string& status) {
    tmrCalculateScanStartTime.setEnabled(false);
    tmrShowScanTimeRemaining.setEnabled(false);
    state_ = ScanState::Idle;
    lblStatus = status;
    lblPrompt.clear();
    lblKeypadResponse.clear();
    changed();
}

void frmKelvarinCorehubChannelScan::cmdCancel_Click() {
    trap(c_.errors, kName, "cmdCancel_Click", [&] {
        if (!locked()) return;
        lblStatus = "Cancelling Scan";
        changed();
        auto* g1 = driver();
        const int rc = g1 ? g1->EndKeypadSurveyScan(baseHID) : BaseErrorCode::BaseNotFound;
        if (rc != BaseErrorCode::Success) error("EndKeypadSurveyScan", rc);
        endScan("Scan Ended");
    });
}

void frmKelvarinCorehubChannelScan::cmdStartAgain_Click() {
    trap(c_.errors, kName, "cmdStartAgain_Click", [&] {
        if (locked()) return;
        // The keypads are asked afresh; the kept scans stay.
        for (auto& r : lvwKeypads) {
            r.icon = "NEW";
            r.status.clear();
        }
        replies_.clear();
        txtDebugKpadResults = kDebugHeader;
        lblStatus.clear();
        changed();
    });
}

// ---- results ----

void frmKelvarinCorehubChannelScan::compileResults() {
    const auto& kept = results();
    const int m = static_cast<int>(kept.size());
    if (m == 0) {
        selectedScan = 0;
        shownScores.fill(0.0);
        shownReplies = 0;
        lblResults.clear();
        lblScanNumber.clear();
        if (lblStatus == kCumulativeStatus) lblStatus.clear();
        return;
    }
    selectedScan = std::clamp(selectedScan, 1, m);
    ChannelScores scores{};
    long long replies = 0;
    std::string basis;
    if (chkShowCumulativeGraph) {
        for (const auto& r : kept) {
            for (std::size_t i = 0; i < scores.size(); ++i) scores[i] += r.scores[i];
            replies += r.replies;
        }
        basis = "Based on the combined results of the " + numText(m) + " scan(s) performed";
        lblStatus = kCumulativeStatus;
        lblScanNumber = "Cumulative";
    } else {
        const ChannelScanResult& r = kept[static_cast<std::size_t>(selectedScan - 1)];
        scores = r.scores;
        replies = r.replies;
        basis = "Based on scan number " + numText(selectedScan) + " of " + numText(m);
        if (lblStatus == kCumulativeStatus) lblStatus.clear();
        lblScanNumber = "Scan " + numText(selectedScan) + " of " + numText(m);
    }
    const auto best = bestThreeChannels(scores);
    lblResults = basis + " the best 3 radio channels to use are " + channelIndexText(best[0]) + ", " +
                 channelIndexText(best[1]) + " and " + channelIndexText(best[2]);
    shownScores = scores;
    shownReplies = replies;
}

void frmKelvarinCorehubChannelScan::cmdRecompileResults_Click() {
    trap(c_.errors, kName, "cmdRecompileResults_Click", [&] {
        if (locked()) return;
        compileResults();
        changed();
    });
}

void frmKelvarinCorehubChannelScan::chkShowCumulativeGraph_Click(bool on) {
    trap(c_.errors, kName, "chkShowCumulativeGraph_Click", [&] {
        chkShowCumulativeGraph = on;
        if (!locked()) compileResults();
        changed();
    });
}

void frmKelvarinCorehubChannelScan::optGraphType_Click(int type) {
    if (type != 0 && type != 1) return;
    optGraphType = type;
    changed();
}

void frmKelvarinCorehubChannelScan::cmdScrollGraph_Click(int step) {
    trap(c_.errors, kName, "cmdScrollGraph_Click", [&] {
        const int m = static_cast<int>(results().size());
        if (locked() || m == 0 || step == 0) return;
        // Steps round the kept scans: after the last comes the first.
        selectedScan = ((selectedScan - 1 + step) % m + m) % m + 1;
        compileResults();
        changed();
    });
}

void frmKelvarinCorehubChannelScan::cmdDeleteResult_Click() {
    trap(c_.errors, kName, "cmdDeleteResult_Click", [&] {
        auto& kept = c_.glo.channelScan.results;
        const int m = static_cast<int>(kept.size());
        if (locked() || m == 0) return;
        if (m == 1) {
            c_.ports.dialogs.message("Delete Aborted", "You cannot remove the only remaining scan results",
                                     MsgIcon::Exclamation);
            return;
        }
        const int n = std::clamp(selectedScan, 1, m);
        if (!c_.ports.dialogs.askYesNo("Confirm Delete",
                                       "Remove scanning results " + numText(n) + " of " + numText(m) + "?",
                                       MsgIcon::Question))
            return;
        kept.erase(kept.begin() + (n - 1));
        selectedScan = std::min(n, m - 1);
        compileResults();
        changed();
    });
}

// ---- the window ----

void frmKelvarinCorehubChannelScan::mnuShowDebug_Click() {
    txtDebugVisible = true;
    changed();
}

void frmKelvarinCorehubChannelScan::cmdDebugHide_Click() {
    txtDebugVisible = false;
    changed();
}

void frmKelvarinCorehubChannelScan::cmdExit_Click() { RequestClose(); }

bool frmKelvarinCorehubChannelScan::RequestClose() {
    bool closed = false;
    trap(c_.errors, kName, "Form_QueryUnload", [&] {
        if (locked()) {
            cmdCancel_Click();
            // Shown after the cancel's own "Scan Ended", so that the refusal is what stays.
            lblStatus = "Cannot close whilst scanning";
            changed();
            return;
        }
        c_.forms.unload(*this);
        closed = true;
    });
    return closed;
}

frmKelvarinCorehubChannelScan& showChannelScan(Controller& controller) {
    auto* form = controller.forms.get<frmKelvarinCorehubChannelScan>(frmKelvarinCorehubChannelScan::kName);
    if (!form) {
        // The survey runs on the first connected base of the first Corehub generation.
        std::string base;
        if (auto* drivers = dynamic_cast<KelvarinDrivers*>(controller.drivers.get()))
            if (auto* g1 = drivers->oKVv4())
                for (const auto& r : g1->baseTable())
                    if (r.connected) {
                        base = r.identifier;
                        break;
                    }
        form = &controller.forms.load<frmKelvarinCorehubChannelScan>(controller, base);
    }
    form->Show();
    return *form;
}

}  // namespace tlx
