#pragma once
// `frmTextVoteCollection`: the text-vote window. The presenter starts and ends a free-text
// vote on the Corehub drivers of both generations from here, apart from the slide-driven vote
// run. Texts arrive as the drivers' vote objects; each is listed with its arrival time,
// written to the session log, and can be picked, copied and deleted. Keypads with a weak
// battery (or every keypad that sends, when asked) are listed as alerts.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/Form.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;
class KelvarinPrioritizerDriver;
struct KelvarinVote;

// A button: its caption, its tag and whether it takes clicks.
struct CommandButton {
    std::string caption;
    std::string tag;
    bool enabled = true;
};

// A list-view row: its key, its text (the first column) and icon, and one sub-item per
// further column, each with a key and a report icon where the program gives them.
struct ListSubItem {
    std::string key;
    std::string text;
    std::string reportIcon;
};
struct ListViewRow {
    std::string key;
    std::string text;
    std::string icon;
    std::vector<ListSubItem> subItems;
    bool selected = false;
};

class frmTextVoteCollection : public Form {
public:
    static constexpr const char* kName = "frmTextVoteCollection";
    // Readings below this (hundredths of a volt) are a weak battery.
    static constexpr int kLowBattery = 370;
    static constexpr const char* kIdle = "IDLE";
    static constexpr const char* kVoting = "VOTING";
    static constexpr const char* kLocked = "LOCKED";
    static constexpr const char* kUnlocked = "UNLOCKED";
    // The lock button's captions: glyphs of its symbol font (a closed and an open padlock).
    static constexpr const char* kLockedGlyph = "\u00CF";
    static constexpr const char* kUnlockedGlyph = "\u00D0";
    // The vote the keypads are given.
    static constexpr const char* kThanksText = "Text Submitted|| Thanks for|     voting";
    static constexpr const char* kEndedText = "Texting finished";
    static constexpr const char* kDebugText = "Vote Text Data Appears Here";
    // Bounds of the debug panel's interval slider (milliseconds).
    static constexpr int kDebugIntervalMin = 100;
    static constexpr int kDebugIntervalMax = 5000;
    static constexpr int kDeleteKey = 46;
    // Alert-list columns shown without the full details.
    static constexpr int kBriefColumns = 4;

    explicit frmTextVoteCollection(Controller& controller);
    ~frmTextVoteCollection() override;

    // "Hard ID", "Soft ID", "Battery", "Signal", "Base", "VoteID", "Time Stamp", "Slot",
    // "Group", "RID".
    static const std::vector<std::string>& alertColumns();

    // Controls.
    CommandButton cmdStartStopVote;
    CommandButton cmdStartStopVoteLock;
    std::string txtSessionName;
    bool txtSessionNameEnabled = true;
    std::vector<std::string> lstTextVotes;
    int lstTextVotesIndex = -1;  // the chosen entry, -1 for none
    std::string txtSelectedVote;
    std::string lblStatus;
    std::vector<ListViewRow> lvwKeypadAlerts;
    bool mnuShowAllKpadInfoAsVotesArrive = false;
    bool mnuShowFullKpadDetails = false;
    // The debug panel.
    bool debugPanelVisible = false;
    bool chkDebugGenerateRandomVotes = false;
    int sldDebugTimerInterval = 1000;
    Timer tmrDebugGenerateVotes;

    // The vote state (the tag of cmdStartStopVote) and the lock state.
    bool voting() const { return cmdStartStopVote.tag == kVoting; }
    bool locked() const { return cmdStartStopVoteLock.tag == kLocked; }

    // User actions.
    void cmdStartStopVote_Click();
    void cmdStartStopVoteLock_Click();
    void lstTextVotes_Click(int index);
    void lstTextVotes_KeyDown(int keyCode);
    void cmdDeleteVote_Click();
    void cmdClearAllVotes_Click();
    void cmdCopySelectedVote_Click();
    void cmdCopyAllNew_Click();
    void cmdResetVoteList_Click();
    void cmdDeleteKeypad_Click();
    void cmdAlertListConfig_Click();
    void mnuShowAllKpadInfoAsVotesArrive_Click();
    void mnuShowFullKpadDetails_Click();
    void ShowDebugPanel();
    void chkDebugGenerateRandomVotes_Click(bool checked);
    void sldDebugTimerInterval_Change(int milliseconds);
    void cmdDebugClose_Click();
    // The session name as typed; refused with the window's message when it cannot name a file,
    // and while a vote runs. True when taken.
    bool txtSessionName_Validate(const std::string& text);
    // Marks an alert row chosen or not (by key).
    void selectAlertRow(const std::string& key, bool selected);
    // Whether an alert-list column (0 = "Hard ID") is shown.
    bool columnVisible(int column) const;
    // Closes the window (ending a running vote first).
    void Close();

    // The drivers' `VoteReceivedObject` events; both go to the one intake.
    void oKVv4_VoteReceivedObject(const KelvarinVote& vote, const std::string& base);
    void oKVv5_VoteReceivedObject(const KelvarinVote& vote, const std::string& base);

    // The session log: the "Temp" folder, the session name + ".kvtxt".
    std::filesystem::path sessionLogPath() const;
    // Presses a control by its program name (a scripted show's presenter); "" when done,
    // otherwise why not.
    std::string click(const std::string& control);

    // Raised when the pop-up menu `mnuAlertListOptions` is to open.
    Signal<> popupAlertListOptions;

protected:
    void unloading() override;

private:
    void ProcessTextVote(const KelvarinVote& vote, const std::string& base, const char* procedure);
    void AddVoteDataToLogFile(const KelvarinVote& vote);
    void updateAlertRow(const KelvarinVote& vote, const std::string& base);
    void StartTextVote();
    void EndTextVote();
    void lockStartStop(bool lock);
    void setStatusTotal();
    void removeEntry(int index);
    void tmrDebugGenerateVotes_Timer();
    std::string clockTime() const;
    bool accepting() const;
    void connectDrivers();
    void disconnectDrivers();

    Controller& c_;
    // The driver forms whose votes come here, with our subscriptions.
    KelvarinPrioritizerDriver* g1_ = nullptr;
    KelvarinPrioritizerDriver* g2_ = nullptr;
    std::uint64_t g1Sub_ = 0;
    std::uint64_t g2Sub_ = 0;
    // Cleared when the window goes, so that no late event reaches it.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

// Loads the text-vote window when it is not loaded, and shows it (TEXTVOTE, TEXTVOTES, TV).
frmTextVoteCollection& showTextVoteWindow(Controller& controller);

}  // namespace tlx
