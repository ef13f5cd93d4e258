#include "textvote/TextVoteCollection.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "core/BaseDrivers.h"
#include "core/Controller.h"
#include "core/Text.h"
#include "drivers/CorehubConstants.h"
#include "drivers/PrioritizerDriver.h"
#include "ports/AppError.h"
#include "ports/Desktop.h"
#include "ports/Dialogs.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

// Characters a file name cannot hold on the program's home platform (and "/" on this one).
constexpr std::string_view kBadNameCharacters = "\\/:*?\"<>|";
constexpr int kBadFileName = 52;

bool nameCanBeAFile(const std::string& name) {
    if (trim(name).empty()) return false;
    for (char ch : name)
        if (kBadNameCharacters.find(ch) != std::string_view::npos || static_cast<unsigned char>(ch) < 32) return false;
    return true;
}

// Alert-list sub-items (the columns after "Hard ID").
enum AlertColumn { kSoftId, kBattery, kSignal, kBase, kVoteId, kTimeStamp, kSlot, kGroup, kRid, kSubItems };

}  // namespace

frmTextVoteCollection::frmTextVoteCollection(Controller& controller)
    : Form(kName), tmrDebugGenerateVotes(controller.ports.scheduler, "tmrDebugGenerateVotes", 1000), c_(controller) {
    setCaption("Text Vote Collection");
    cmdStartStopVote = {"Start Vote", kIdle, true};
    cmdStartStopVoteLock = {kUnlockedGlyph, kUnlocked, true};
    lblStatus = "Idle";
    txtSessionName = formatDate(c_.ports.scheduler.now(), "YYYY-MM-DD") + " Text Votes";
    tmrDebugGenerateVotes.onTick = [this] { tmrDebugGenerateVotes_Timer(); };
    connectDrivers();
}

frmTextVoteCollection::~frmTextVoteCollection() { *alive_ = false; }

const std::vector<std::string>& frmTextVoteCollection::alertColumns() {
    static const std::vector<std::string> columns = {"Hard ID", "Soft ID",    "Battery", "Signal", "Base",
                                                     "VoteID",  "Time Stamp", "Slot",    "Group",  "RID"};
    return columns;
}

bool frmTextVoteCollection::accepting() const {
    return c_.glo.InitialisedState == INIT_STATE_INITIALISED && !c_.glo.ShuttingDown;
}

std::string frmTextVoteCollection::clockTime() const { return formatDate(c_.ports.scheduler.now(), "hh:nn:ss"); }

void frmTextVoteCollection::connectDrivers() {
    auto attach = [this](KeypadDriver* driver, KelvarinPrioritizerDriver*& mine, std::uint64_t& sub, bool older) {
        auto* d = dynamic_cast<KelvarinPrioritizerDriver*>(driver);
        if (!d || d == mine) return;
        mine = d;
        std::weak_ptr<bool> alive = alive_;
        sub = d->VoteReceivedObject.connect([this, alive, older](const KelvarinVote& v, const std::string& base) {
            const auto a = alive.lock();
            if (!a || !*a) return;
            if (older)
                oKVv4_VoteReceivedObject(v, base);
            else
                oKVv5_VoteReceivedObject(v, base);
        });
    };
    if (!c_.drivers) return;
    attach(c_.drivers->corehubG1(), g1_, g1Sub_, true);
    attach(c_.drivers->corehubG2(), g2_, g2Sub_, false);
}

void frmTextVoteCollection::disconnectDrivers() {
    // Only from drivers that are still the controller's: one that was replaced has gone.
    if (c_.drivers) {
        if (g1_ && dynamic_cast<KelvarinPrioritizerDriver*>(c_.drivers->corehubG1()) == g1_)
            g1_->VoteReceivedObject.disconnect(g1Sub_);
        if (g2_ && dynamic_cast<KelvarinPrioritizerDriver*>(c_.drivers->corehubG2()) == g2_)
            g2_->VoteReceivedObject.disconnect(g2Sub_);
    }
    g1_ = g2_ = nullptr;
    g1Sub_ = g2Sub_ = 0;
}

// ---- start, end and the lock ----

void frmTextVoteCollection::cmdStartStopVote_Click() {
    // A locked button takes no clicks: the lock keeps a stray click from ending the vote.
    if (!cmdStartStopVote.enabled) return;
    trap(c_.errors, kName, "cmdStartStopVote_Click", [&] {
        if (voting())
            EndTextVote();
        else
            StartTextVote();
    });
    changed();
}

void frmTextVoteCollection::StartTextVote() {
    // The global vote parameters the drivers build the vote object from. Type 12 takes free
    // key entry. Of the two further values the program writes, the second vote-type word is
    // the keypad display mode (0: keys as typed, never letters) and the parameter 7 goes into
    // the prioritizer options; neither changes what a type-12 vote object carries.
    GlobalState& g = c_.glo;
    g.voteType = "12";
    g.kelvarinDisplay = 0;
    g.kvpOptions = 7;
    g.voteName.clear();
    g.voteText = kThanksText;
    g.voteEndedText = kEndedText;
    connectDrivers();
    // Each driver's StartVote sets its own vote-running flag. The slide-driven run's flag
    // (glo.Voting) is left alone: the show moving on must not end a text vote.
    if (KeypadDriver* g1 = c_.drivers ? c_.drivers->corehubG1() : nullptr) g1->StartVote();
    if (KeypadDriver* g2 = c_.drivers ? c_.drivers->corehubG2() : nullptr) g2->StartVote();
    cmdStartStopVote.tag = kVoting;
    cmdStartStopVote.caption = "End Vote";
    lblStatus = "Voting";
    lockStartStop(true);
    txtSessionNameEnabled = false;
}

void frmTextVoteCollection::EndTextVote() {
    if (KeypadDriver* g1 = c_.drivers ? c_.drivers->corehubG1() : nullptr) g1->EndVote(false, true);
    if (KeypadDriver* g2 = c_.drivers ? c_.drivers->corehubG2() : nullptr) g2->EndVote(false, true);
    cmdStartStopVote.tag = kIdle;
    cmdStartStopVote.caption = "Start Vote";
    lblStatus = "Idle";
    txtSessionNameEnabled = true;
}

void frmTextVoteCollection::cmdStartStopVoteLock_Click() {
    lockStartStop(!locked());
    changed();
}

void frmTextVoteCollection::lockStartStop(bool lock) {
    cmdStartStopVoteLock.caption = lock ? kLockedGlyph : kUnlockedGlyph;
    cmdStartStopVoteLock.tag = lock ? kLocked : kUnlocked;
    cmdStartStopVote.enabled = !lock;
}

// ---- texts arriving ----

void frmTextVoteCollection::oKVv4_VoteReceivedObject(const KelvarinVote& vote, const std::string& base) {
    ProcessTextVote(vote, base, "oKVv4_VoteReceivedObject");
}

void frmTextVoteCollection::oKVv5_VoteReceivedObject(const KelvarinVote& vote, const std::string& base) {
    ProcessTextVote(vote, base, "oKVv5_VoteReceivedObject");
}

void frmTextVoteCollection::ProcessTextVote(const KelvarinVote& vote, const std::string& base, const char* procedure) {
    if (!accepting() || vote.VoteReplyData.empty()) return;
    trap(c_.errors, kName, procedure, [&] {
        lstTextVotes.push_back("[" + clockTime() + "] - " + vote.VoteReplyData);
        // A text the log cannot take stays in the list all the same.
        AddVoteDataToLogFile(vote);
        if (mnuShowAllKpadInfoAsVotesArrive || vote.BatteryStrength < kLowBattery) updateAlertRow(vote, base);
        setStatusTotal();
    });
    changed();
}

fs::path frmTextVoteCollection::sessionLogPath() const {
    return fs::path(c_.ports.desktop.environment("Temp")) / (txtSessionName + ".kvtxt");
}

void frmTextVoteCollection::AddVoteDataToLogFile(const KelvarinVote& vote) {
    trap(c_.errors, kName, "AddVoteDataToLogFile", [&] {
        if (c_.ports.desktop.environment("Temp").empty()) throw AppError(err::kPathNotFound, "Path not found");
        if (!nameCanBeAFile(txtSessionName)) throw AppError(kBadFileName, "Bad file name or number");
        const fs::path path = sessionLogPath();
        // One line per text: line breaks inside a text are written as blanks.
        std::string text = replaceAll(replaceAll(vote.VoteReplyData, "\r\n", " "), "\r", " ");
        text = replaceAll(text, "\n", " ");
        const DateTime now = c_.ports.scheduler.now();
        const std::string line = formatDate(now, "YYYY-MM-DD") + " " + formatDate(now, "hh:nn:ss") + "|" + vote.HID +
                                 "|" + numText(vote.SID) + "|" + text + "\r\n";
        std::ofstream out(path, std::ios::binary | std::ios::app);
        if (!out) throw AppError(err::kPathNotFound, "Path not found: " + path.string());
        out << line;
        out.flush();
        if (!out) throw AppError(err::kPermissionDenied, "Permission denied: " + path.string());
    });
}

void frmTextVoteCollection::updateAlertRow(const KelvarinVote& v, const std::string& base) {
    namespace K = KelvarinCorehubConstants;
    const std::string keypad = numText(v.SID);
    const std::string key = "K:" + keypad;
    ListViewRow* row = nullptr;
    for (auto& r : lvwKeypadAlerts)
        if (r.key == key) row = &r;
    if (!row) {
        ListViewRow fresh;
        fresh.key = key;
        fresh.subItems.resize(kSubItems);
        fresh.subItems[kBattery].key = "B:" + keypad;
        fresh.subItems[kSignal].key = "S:" + keypad;
        lvwKeypadAlerts.push_back(std::move(fresh));
        row = &lvwKeypadAlerts.back();
    }
    const std::string hid = formatDigits(v.HID, "### 000 000 000");
    row->text = hid;
    row->icon = v.BatteryStrength < kLowBattery ? "ALERT" : "OK";
    const std::string level = K::BatteryWord(v.BatteryStrength);
    row->subItems[kBattery].text = level + " (" + formatNumber(v.BatteryStrength / 100.0, "0.00") + "V)";
    row->subItems[kBattery].reportIcon = "BATT" + toUpper(level);
    // The bases report the signal as dB below the reference, as a negative reading (the
    // keypads' -45) or as its size; the window shows the size after a "-". A reading of 0
    // means none came, and the signal shown before stays.
    const int signal = std::abs(v.SignalStrength);
    if (signal > 0) {
        row->subItems[kSignal].text = "-" + numText(signal) + " dB";
        row->subItems[kSignal].reportIcon = "SIGNAL" + toUpper(K::SignalWord(K::SignalValue(signal)));
    }
    // The further columns, read from the right: "RID" the HID, "Group", "Slot", "Time Stamp"
    // and "VoteID" the base's number of the vote; "Base" names the base for people.
    row->subItems[kSoftId].text = keypad;
    row->subItems[kBase].text = baseName(c_.glo, static_cast<int>(ParseNumber(base)));
    row->subItems[kVoteId].text = numText(v.VoteReplyID);
    row->subItems[kTimeStamp].text = numText(v.KeyPressTimeStamp);
    row->subItems[kSlot].text = numText(v.PollSlotID);
    row->subItems[kGroup].text = numText(v.PollGroupID);
    row->subItems[kRid].text = hid;
}

void frmTextVoteCollection::setStatusTotal() { lblStatus = "Total: " + numText(static_cast<int>(lstTextVotes.size())); }

// ---- the list ----

void frmTextVoteCollection::lstTextVotes_Click(int index) {
    if (index < 0 || index >= static_cast<int>(lstTextVotes.size())) return;
    lstTextVotesIndex = index;
    txtSelectedVote = lstTextVotes[static_cast<std::size_t>(index)];
    lblStatus = "Selected: " + txtSelectedVote;
    changed();
}

void frmTextVoteCollection::lstTextVotes_KeyDown(int keyCode) {
    if (keyCode == kDeleteKey) cmdDeleteVote_Click();
}

void frmTextVoteCollection::removeEntry(int index) {
    if (index < 0 || index >= static_cast<int>(lstTextVotes.size())) return;
    lstTextVotes.erase(lstTextVotes.begin() + index);
    // As a list box does, nothing is chosen after a removal.
    lstTextVotesIndex = -1;
    setStatusTotal();
}

void frmTextVoteCollection::cmdDeleteVote_Click() {
    removeEntry(lstTextVotesIndex);
    changed();
}

void frmTextVoteCollection::cmdClearAllVotes_Click() {
    lstTextVotes.clear();
    lstTextVotesIndex = -1;
    changed();
}

void frmTextVoteCollection::cmdCopySelectedVote_Click() {
    trap(c_.errors, kName, "cmdCopySelectedVote_Click", [&] { c_.ports.desktop.setClipboardText(txtSelectedVote); });
}

void frmTextVoteCollection::cmdCopyAllNew_Click() {
    trap(c_.errors, kName, "cmdCopyAllNew_Click", [&] {
        // An entry begins with its arrival time, "[", so the only "*" it can begin with is the
        // copy mark: a text that itself begins with "*" is new like any other.
        std::string collected;
        for (auto& entry : lstTextVotes) {
            if (startsWith(entry, "*")) continue;
            collected += entry + "\r\n";
            entry.insert(0, "*");
        }
        txtSelectedVote = collected;
        c_.ports.desktop.setClipboardText(collected);
    });
    changed();
}

void frmTextVoteCollection::cmdResetVoteList_Click() {
    for (auto& entry : lstTextVotes)
        if (startsWith(entry, "*")) entry.erase(0, 1);
    changed();
}

// ---- the alert list ----

void frmTextVoteCollection::selectAlertRow(const std::string& key, bool selected) {
    for (auto& r : lvwKeypadAlerts)
        if (r.key == key) r.selected = selected;
    changed();
}

void frmTextVoteCollection::cmdDeleteKeypad_Click() {
    std::erase_if(lvwKeypadAlerts, [](const ListViewRow& r) { return r.selected; });
    changed();
}

void frmTextVoteCollection::cmdAlertListConfig_Click() { popupAlertListOptions(); }

void frmTextVoteCollection::mnuShowAllKpadInfoAsVotesArrive_Click() {
    mnuShowAllKpadInfoAsVotesArrive = !mnuShowAllKpadInfoAsVotesArrive;
    changed();
}

void frmTextVoteCollection::mnuShowFullKpadDetails_Click() {
    mnuShowFullKpadDetails = !mnuShowFullKpadDetails;
    changed();
}

bool frmTextVoteCollection::columnVisible(int column) const {
    // Without the full details the list shows who the keypad is and how it is doing.
    return column >= 0 && column < static_cast<int>(alertColumns().size()) &&
           (mnuShowFullKpadDetails || column < kBriefColumns);
}

// ---- session name ----

bool frmTextVoteCollection::txtSessionName_Validate(const std::string& text) {
    if (!txtSessionNameEnabled) return false;
    if (trim(text).empty()) {
        c_.ports.dialogs.message(Caption(), "Please enter a session name", MsgIcon::Exclamation);
        return false;
    }
    if (!nameCanBeAFile(text)) {
        c_.ports.dialogs.message(Caption(),
                                 "A session name cannot contain any of the following characters:\r\n"
                                 "\\ / : * ? \" < > |",
                                 MsgIcon::Exclamation);
        return false;
    }
    txtSessionName = text;
    changed();
    return true;
}

// ---- the debug panel ----

void frmTextVoteCollection::ShowDebugPanel() {
    debugPanelVisible = true;
    changed();
}

void frmTextVoteCollection::chkDebugGenerateRandomVotes_Click(bool checked) {
    chkDebugGenerateRandomVotes = checked;
    tmrDebugGenerateVotes.setEnabled(checked);
    changed();
}

void frmTextVoteCollection::sldDebugTimerInterval_Change(int milliseconds) {
    sldDebugTimerInterval = std::clamp(milliseconds, kDebugIntervalMin, kDebugIntervalMax);
    tmrDebugGenerateVotes.setInterval(sldDebugTimerInterval);
    changed();
}

void frmTextVoteCollection::cmdDebugClose_Click() {
    chkDebugGenerateRandomVotes = false;
    tmrDebugGenerateVotes.setEnabled(false);
    debugPanelVisible = false;
    changed();
}

void frmTextVoteCollection::tmrDebugGenerateVotes_Timer() {
    if (!accepting()) return;
    lstTextVotes.push_back("[" + clockTime() + "] - " + kDebugText);
    setStatusTotal();
    changed();
}

// ---- closing ----

void frmTextVoteCollection::Close() { c_.forms.unload(*this); }

void frmTextVoteCollection::unloading() {
    tmrDebugGenerateVotes.setEnabled(false);
    // A vote still running is ended on both drivers before the window goes.
    if (voting()) trap(c_.errors, kName, "Form_Unload", [&] { EndTextVote(); });
    disconnectDrivers();
    *alive_ = false;
}

std::string frmTextVoteCollection::click(const std::string& control) {
    const std::string c = toLower(trim(control));
    if (c == "cmdstartstopvote") {
        if (!cmdStartStopVote.enabled) return "cmdStartStopVote is locked";
        cmdStartStopVote_Click();
    } else if (c == "cmdstartstopvotelock") {
        cmdStartStopVoteLock_Click();
    } else if (c == "cmddeletevote") {
        cmdDeleteVote_Click();
    } else if (c == "cmdclearallvotes") {
        cmdClearAllVotes_Click();
    } else if (c == "cmdcopyselectedvote") {
        cmdCopySelectedVote_Click();
    } else if (c == "cmdcopyallnew") {
        cmdCopyAllNew_Click();
    } else if (c == "cmdresetvotelist") {
        cmdResetVoteList_Click();
    } else if (c == "cmddeletekeypad") {
        cmdDeleteKeypad_Click();
    } else if (c == "mnushowallkpadinfoasvotesarrive") {
        mnuShowAllKpadInfoAsVotesArrive_Click();
    } else if (c == "mnushowfullkpaddetails") {
        mnuShowFullKpadDetails_Click();
    } else if (c == "cmddebugclose") {
        cmdDebugClose_Click();
    } else if (c == "close") {
        Close();
    } else {
        return "no control " + control + " on " + Name();
    }
    return {};
}

frmTextVoteCollection& showTextVoteWindow(Controller& controller) {
    auto* f = controller.forms.get<frmTextVoteCollection>(frmTextVoteCollection::kName);
    if (!f) f = &controller.forms.load<frmTextVoteCollection>(controller);
    f->Show();
    return *f;
}

}  // namespace tlx
