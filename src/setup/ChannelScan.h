#pragma once
// `frmKelvarinCorehubChannelScan`: a few chosen keypads send test votes on a range (or a list)
// of radio channels through one base of the first Corehub generation; their survey replies
// are added up per channel and the best three channels are named. Scans are kept while the
// controller runs and can be combined.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "core/Form.h"
#include "core/GlobalState.h"
#include "ports/BaseLibrary.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;
class kpdriver_KELVARIN_Prioritizer;

// Channel indices 0..77; index 0 stands for no channel.
inline constexpr int kScanChannelCount = 78;
using ChannelScores = std::array<double, kScanChannelCount>;

// The three best channel indices: the scores paired with their indices in ascending order,
// sorted by score, highest first, with an exchange sort that swaps two pairs only when the
// earlier score is strictly smaller than the later one.
std::array<int, 3> bestThreeChannels(const ChannelScores& scores);
// A channel index as the results name it: "-" for index 0.
std::string channelIndexText(int index);
// The radio channel number of a channel index: the base numbers its channels by their
// centre frequency, 2400 MHz plus one per index.
int channelNumber(int index);
// "1h 2m 3s".
std::string hoursMinutesSeconds(long long seconds);

struct ScanKeypadRow {
    std::string key;     // "K:" + keypad number
    int keypad = 0;      // "Number"
    std::string hid;     // "Keypad": the serial number, "### 000 000 000"
    std::string icon;    // "NEW", "WAITING", "OK"
    std::string status;  // "", "Waiting for response", "Ready"
};

class frmKelvarinCorehubChannelScan : public Form {
public:
    static constexpr const char* kName = "frmKelvarinCorehubChannelScan";
    static constexpr int kMaxKeypads = 6;
    enum class ScanState { Idle, Preparing, WaitingForStart, Scanning, Compiling };
    enum class Option { StartChannel, EndChannel, ChannelStep, VotesPerChannel, StartDelay, ChannelList };

    // `baseHID` is the serial number of the base that runs the scans.
    frmKelvarinCorehubChannelScan(Controller& controller, std::string baseHID);

    std::string baseHID;

    // Keypads.
    std::string txtAddKeypad;
    std::vector<ScanKeypadRow> lvwKeypads;
    int selectedKeypad = -1;  // row index, -1 for none
    void cmdAddKeypad_Click();
    void cmdRemoveKeypad_Click();

    // Options (`fraOptions`).
    bool fraOptionsVisible = false;
    std::string txtStartChannel = "1";
    std::string txtEndChannel = "77";
    std::string txtChannelStep = "1";
    std::string txtVotesPerChannel = "50";
    std::string txtStartDelay = "10";
    std::string txtChannelList;  // "3,24,45" in list mode
    int optScanMode = 0;         // 0 a channel range, 1 a list of channels
    void mnuOptions_Click();     // mnuConfig as well: shows the options
    // Checks an option box as it is left; bad text is reported and the box gets its last
    // good value back. True when the text stands.
    bool OptionLeft(Option option);
    // Hides the options when they make a range; false (options stay open) otherwise.
    bool cmdOptionsClose_Click();
    void optScanMode_Click(int mode);

    // What the window shows.
    std::string lblStatus;
    std::string lblEstimatedTime;
    std::string lblPrompt;           // "Click to Start Scan in " + remaining
    std::string lblKeypadResponse;   // "Waiting for keypads to respond" while they have not
    std::string lblScanNumber;       // "Scan 1 of 2", "Cumulative"
    std::string lblResults;          // the best three channels
    std::string txtDebugKpadResults;
    bool txtDebugVisible = false;
    bool chkShowCumulativeGraph = false;
    int optGraphType = 0;  // 0 by "Channel Number", 1 by "Channel Index"
    // The chart `TChartResults`: the 78 scores shown, and its axis title.
    ChannelScores shownScores{};
    long long shownReplies = 0;  // the survey replies behind them
    std::string axisTitle() const;
    int selectedScan = 0;  // 1-based; 0 when no scan is kept

    // Buttons.
    void cmdScan_Click();
    // The prompt: a click starts the scan without waiting for the rest of the delay.
    void lblPrompt_Click();
    void cmdCancel_Click();
    void cmdStartAgain_Click();
    void cmdDeleteResult_Click();
    void cmdRecompileResults_Click();
    void chkShowCumulativeGraph_Click(bool on);
    void optGraphType_Click(int type);
    void cmdScrollGraph_Click(int step);
    void mnuShowDebug_Click();
    void cmdDebugHide_Click();
    void cmdExit_Click();
    // The window's close box (QueryUnload): refused while a scan runs, which it cancels.
    bool RequestClose();

    // `oKVv4_KeypadSurveyReply`: a reply record or the end-of-scan notice from a base.
    void KeypadSurveyReply(const KelvarinSurveyReply& reply, const std::string& base);

    Timer tmrCalculateScanStartTime;
    Timer tmrShowScanTimeRemaining;

    ScanState state() const { return state_; }
    bool locked() const { return state_ != ScanState::Idle; }
    // The channels the options name, in scan order.
    std::vector<int> scanChannels() const;
    // Estimated scan seconds, -1 when nothing can be estimated.
    long long estimatedSeconds() const;
    const std::vector<ChannelScanResult>& results() const;
    // The replies of the running (or last) scan, filed under "K:" + HID + "|" + channel.
    std::size_t replyCount() const { return replies_.size(); }

protected:
    void unloading() override;

private:
    struct FiledReply {
        std::string key;
        KelvarinSurveyReply reply;
    };
    kpdriver_KELVARIN_Prioritizer* driver() const;
    void restoreOptions();
    void saveOptions();
    KelvarinSurveyOptions surveyOptions() const;
    void updateEstimate();
    void compileResults();
    void endScan(const std::string& status);
    void tmrCalculateScanStartTime_Timer();
    void tmrShowScanTimeRemaining_Timer();
    void beginScan();
    void error(const std::string& title, int code);
    std::string& optionText(Option option);
    // Last good text of each option box.
    std::array<std::string, 6> goodOptions_;

    Controller& c_;
    ScanState state_ = ScanState::Idle;
    double startAt_ = 0.0;  // when the start delay runs out
    double endAt_ = 0.0;    // when the scan is expected to end
    std::vector<FiledReply> replies_;
    std::uint64_t replySub_ = 0;
};

// Opens the window (or brings it forward) over the first base of the first Corehub
// generation.
frmKelvarinCorehubChannelScan& showChannelScan(Controller& controller);

}  // namespace tlx
