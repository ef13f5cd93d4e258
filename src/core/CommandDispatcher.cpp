#include "core/CommandDispatcher.h"

#include <algorithm>
#include <cctype>
#include <cfloat>

#include "core/CommandTargets.h"
#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/NumberFields.h"
#include "core/ParticipantNames.h"
#include "core/PortFile.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "ports/PresentationApp.h"
#include "ports/Scheduler.h"
#include "ports/Tray.h"

namespace tlx {

namespace {

constexpr const char* kObject = "tallix_controller";
constexpr const char* kProcedure = "tmr_executeCommand_Timer";
// The tray menu has five task entries (Task1 to Task5).
constexpr std::size_t kMaxTasks = 5;

// Blanks a client may leave around a line: spaces, tabs and stray line-break characters.
std::string trimLine(std::string_view s) {
    auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!s.empty() && blank(s.front())) s.remove_prefix(1);
    while (!s.empty() && blank(s.back())) s.remove_suffix(1);
    return std::string(s);
}

float toSingle(double v) { return static_cast<float>(std::clamp(v, -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX))); }

// How many keypads the configured bases serve.
long long keypadCount(const GlobalState& glo) {
    long long n = 0;
    for (const auto& b : glo.bases) n += std::max(0LL, static_cast<long long>(b.gridHi) - b.gridLo + 1);
    return n;
}

bool offsetsInUse(const GlobalState& glo) {
    return std::any_of(glo.bases.begin(), glo.bases.end(), [](const PortEntry& b) { return b.offset != 0; });
}

ppt::Application& presentationProgram(Controller& c) {
    if (!c.glo.ppApp) throw AppError(err::kObjectRequired, "Object required");
    return *c.glo.ppApp;
}

}  // namespace

const std::vector<std::string>& debugCommandList() {
    static const std::vector<std::string> list = {
        "FreeCursor (fc): free cursor",
        "ActiveKeypads (ak): show list of active keypads",
        "Exit: exit the controller safely",
        "Init: load keypad setup",
        "EnablePPT: enable PowerPoint",
        "ShowAudio: loads the audio form",
        "ShowBubbleMessageLog (sbml): shows all bubble messages displayed",
        "ShowWindowHandles (swh): shows debug screen of window handles",
        "SowProcessList (spl): shows debug screen of running processes",
    };
    return list;
}

CommandDispatcher::CommandDispatcher(Controller& controller) : c_(controller) {
    loadedSub_ = c_.forms.loaded.connect([this](Form& f) {
        if (auto* m = dynamic_cast<MainForm*>(&f)) m->tmr_executeCommand.onTick = [this] { tmr_executeCommand_Timer(); };
    });
    if (MainForm* m = c_.mainForm()) m->tmr_executeCommand.onTick = [this] { tmr_executeCommand_Timer(); };
}

CommandDispatcher::~CommandDispatcher() {
    c_.forms.loaded.disconnect(loadedSub_);
    if (MainForm* m = c_.mainForm()) m->tmr_executeCommand.onTick = nullptr;
}

CommandTargets& CommandDispatcher::targets() const { return *c_.targets; }

std::vector<KeypadDriver*> CommandDispatcher::corehubDrivers() const {
    std::vector<KeypadDriver*> v;
    if (KeypadDriver* g1 = c_.drivers->corehubG1()) v.push_back(g1);
    if (KeypadDriver* g2 = c_.drivers->corehubG2()) v.push_back(g2);
    return v;
}

void CommandDispatcher::tmr_executeCommand_Timer() {
    MainForm* form = c_.mainForm();
    if (!form) return;
    // Until the controller is up the queue waits; the timer stays on and tries again.
    if (c_.glo.ShuttingDown || c_.glo.InitialisedState != INIT_STATE_INITIALISED) return;
    form->tmr_executeCommand.setEnabled(false);

    trap(c_.errors, kObject, kProcedure, [&] {
        std::string queue = form->txt_command;
        if (queue.empty()) return;
        form->LogEvent(queue, LOG_RX);
        // Display programs that send a start or an end twice mean it once.
        const std::string upper = toUpper(queue);
        if (upper == "STARTVOTE\r\nSTARTVOTE")
            queue = "STARTVOTE";
        else if (upper == "ENDVOTE\r\nENDVOTE")
            queue = "ENDVOTE";
        const std::vector<std::string> lines = split(queue, "\r\n");
        form->txt_command.clear();
        if (!form->IsPowerPointRunning()) return;
        for (const auto& line : lines)
            if (!runLine(*form, line)) break;
    });

    // Lines queued while this run went on get a run of their own.
    if (c_.glo.ShuttingDown) return;
    if (MainForm* m = c_.mainForm(); m && !m->txt_command.empty()) m->tmr_executeCommand.setEnabled(true);
}

bool CommandDispatcher::runLine(MainForm& form, const std::string& raw) {
    const std::string line = trimLine(raw);
    if (line.empty()) return true;
    const std::string upper = toUpper(line);
    if (!wholeLine(form, upper) && !prefixedLine(form, line, upper) && contains(line, "="))
        keyLine(form, line);
    return !c_.glo.ShuttingDown;
}

bool CommandDispatcher::wholeLine(MainForm& form, const std::string& u) {
    GlobalState& glo = c_.glo;
    // In the order in which they are tested.
    if (u == "BASEINFO") {
        // Reserved: matched only so that it is never read as a key line.
    } else if (u == "CLOSEPORTS") {
        c_.drivers->closePorts();
    } else if (u == "END" || u == "EXIT") {
        form.TaskQuit();
    } else if (u == "GETVOTEINFO") {
        glo.textVoteOptions.clear();
        form.AddDataToTxQueue(voteInfoReply());
    } else if (u == "CLEAR") {
        form.txt_data.clear();
    } else if (u == "ENABLEPPT") {
        targets().enablePowerPoint();
    } else if (u == "TOGGLETOPMOST") {
        targets().toggleTopMost();
    } else if (u == "ENDCONVERT") {
        presentationProgram(c_).run("EndShowEdit", {});
        presentationProgram(c_).run("ExtAskAboutConvertAnotherSlide", {});
    } else if (u == "ENDVOTE") {
        endVote();
    } else if (u == "ENDWIZARD") {
        presentationProgram(c_).run("EndShowEdit", {});
        presentationProgram(c_).run("ExtAskAboutAnotherSlide", {});
    } else if (u == "ACTIVEKEYPADS" || u == "AK") {
        targets().activeKeypads();
    } else if (u == "FREECURSOR" || u == "FC") {
        targets().freeCursor();
    } else if (u == "KBOARD") {
        keyboardVoting(true);
    } else if (u == "KBOARD-OFF") {
        keyboardVoting(false);
    } else if (u == "INIT") {
        keyboardVoting(false);
        auto* init = c_.forms.get<FrmInit>(FrmInit::kName);
        if (!init) init = &c_.forms.load<FrmInit>(c_);
        init->loadFromGlobals();
        init->Show();
    } else if (u == "INSERTCHARTS") {
        presentationProgram(c_).run("insertAllVotingResultsAuto", {});
    } else if (u == "TEXTVOTE" || u == "TEXTVOTES" || u == "TV") {
        targets().showTextVote();
    } else if (u == "GETNAMES") {
        std::string status;
        LoadParticipantNames(c_, status);
        form.AddDataToTxQueue(participantNamesReply(glo));
    } else if (u == "LOADNAMES") {
        std::string status;
        LoadParticipantNames(c_, status);
    } else if (u == "PAUSEVOTE") {
        for (KeypadDriver* d : corehubDrivers()) d->PauseVote();
    } else if (u == "READACTIVEKEYPADS") {
        targets().readActiveKeypads();
    } else if (u == "RESUMEVOTE") {
        for (KeypadDriver* d : corehubDrivers()) d->ResumeVote();
    } else if (u == "POWERPOINTCLOSED") {
        c_.FullShutdown(false);
    } else if (u == "PPA_STARTSHOWEDIT") {
        form.tmr_Check4TLXEdit.setEnabled(true);
    } else if (u == "PPA_ENDSHOWEDIT") {
        form.tmr_Check4TLXEdit.setEnabled(false);
    } else if (u == "REMOVEHOOK") {
        targets().removeHook();
        form.LogEvent("Hook Removed", LOG_RX);
    } else if (u == "SETHOOK") {
        targets().setHook();
        form.LogEvent("Hook Set", LOG_RX);
    } else if (u == "SHOWAUDIO") {
        const bool kelvarin = std::any_of(glo.bases.begin(), glo.bases.end(), [](const PortEntry& b) {
            return startsWith(toUpper(b.baseType), "KELVARIN");
        });
        if (kelvarin && targets().showAudio()) form.LogEvent("Audio Form Loaded and made TopMost", LOG_XX);
    } else if (u == "SHOWDEBUG") {
        targets().showDebug();
    } else if (u == "SHOWBUBBLEMESSAGELOG" || u == "SBML") {
        targets().showBubbleMessageLog();
    } else if (u == "SHOWWINDOWHANDLES" || u == "SWH") {
        targets().showWindowHandles();
    } else if (u == "SHOWPROCESSLIST" || u == "SPL") {
        targets().showProcessList();
    } else if (u == "CHANNELSCAN") {
        targets().showChannelScan();
    } else if (u == "SYSTEMPREP") {
        targets().showSystemPrep();
    } else if (u == "STARTVOTE") {
        startVote(form);
    } else if (u == "SWITCHTODEBUGVIEW") {
        form.debugView = true;
        form.changed();
    } else {
        return false;
    }
    return true;
}

bool CommandDispatcher::prefixedLine(MainForm& form, const std::string& line, const std::string& u) {
    GlobalState& glo = c_.glo;
    if (u == "NEXTSLIDE" || startsWith(u, "NEXTSLIDE,")) {
        moveSlide(u, true);
    } else if (u == "PREVIOUSSLIDE" || startsWith(u, "PREVIOUSSLIDE,")) {
        moveSlide(u, false);
    } else if (startsWith(u, "SILENTLOADVOTECONFIG,")) {
        const auto fields = split(line, ",");
        const int slide = toInt32Field(ParseNumber(fields.size() > 1 ? fields[1] : ""));
        for (const auto& b : glo.bases) {
            if (toUpper(b.baseType) != "KELVARIN COREHUB") continue;
            if (KeypadDriver* g1 = c_.drivers->corehubG1()) g1->SilentLoadVoteConfig(slide);
            break;
        }
    } else if (startsWith(u, "STARTVOTE,")) {
        glo.voteMode = toInt32Field(ParseNumber(line.substr(10)));
        glo.voteStartedByCommand = true;
        form.tmr_executeCommand.setEnabled(true);
    } else if (startsWith(u, "WINNING KEYPAD") && contains(u, "=") &&
               trim(u.substr(14, u.find('=') - 14)).empty()) {
        glo.winningKeypad = toInt32Field(ParseNumber(line.substr(line.find('=') + 1)));
        for (KeypadDriver* d : corehubDrivers()) d->ShowWinningKeypad(glo.winningKeypad, true);
    } else if (startsWith(u, "VOTE-STATUS:")) {
        form.lblVotesCast = line.substr(12);
        form.changed();
    } else if (startsWith(u, "PCAOPTIONS") && line.size() > 10 &&
               !std::isalnum(static_cast<unsigned char>(line[10]))) {
        std::string list = line.substr(11);
        if (endsWith(list, ",")) list.pop_back();
        glo.textVoteOptions = list.empty() ? std::string() : list + ",";
    } else {
        return false;
    }
    return true;
}

void CommandDispatcher::moveSlide(const std::string& u, bool forward) {
    const char* direction = forward ? " - Next Slide" : " - Previous Slide";
    const auto fields = split(u, ",");
    if (fields.size() != 2) {
        c_.LogEvent(std::string("Current - X") + direction, LOG_XX);
    } else {
        // Only when the show still stands on the slide the sender saw: a repeated or late
        // command must not skip a slide.
        const double wanted = ParseNumber(fields[1]);
        ppt::Application* app = c_.glo.ppApp;
        if (!app) return;
        ppt::SlideShowWindow* window = nullptr;
        if (ppt::Presentation* p = app->activePresentation()) window = p->slideShowWindow();
        if (!window && app->slideShowWindowCount() > 0) window = app->slideShowWindow(1);
        if (!window) return;
        ppt::Slide* slide = window->view().slide();
        if (!slide || slide->slideNumber() != wanted) return;
        c_.LogEvent("Current - " + numText(slide->slideNumber()) + direction, LOG_XX);
    }
    if (forward)
        targets().goToNextSlide();
    else
        targets().goToPreviousSlide();
}

void CommandDispatcher::keyboardVoting(bool on) {
    GlobalState& glo = c_.glo;
    if (on) {
        if (glo.bases.empty()) glo.bases = keyboardVotingPortData().bases;
        if (toUpper(glo.bases.front().baseType) != kKeyboardBaseType) {
            glo.savedBaseType = glo.bases.front().baseType;
            glo.bases.front().baseType = kKeyboardBaseType;
        }
        targets().reReadConfiguration();
        return;
    }
    if (glo.savedBaseType.empty()) return;
    if (glo.bases.empty()) glo.bases = keyboardVotingPortData().bases;
    glo.bases.front().baseType = glo.savedBaseType;
    glo.savedBaseType.clear();
    targets().reReadConfiguration();
}

void CommandDispatcher::startVote(MainForm& form) {
    GlobalState& glo = c_.glo;
    glo.voteStartTime = c_.ports.scheduler.now().secondsSinceMidnight();
    glo.voteRunning = true;
    glo.voteStartedByCommand = true;
    glo.resetKeypadVotes();
    // The per-option values start each vote at -1. The vote's configuration lines come before
    // its STARTVOTE, so a display program that wants values for this vote sends its
    // randomvotestring after the start; the values of the vote that ended stay readable until
    // the next one starts.
    std::fill(glo.optionValues.begin(), glo.optionValues.end(), -1.0f);
    const int bases = targets().voteStart();
    form.FromCtrlFormBaseStationStartVoteCount(bases);
}

void CommandDispatcher::endVote() {
    GlobalState& glo = c_.glo;
    glo.votesReceived = 0;
    glo.textVoteOptions.clear();
    glo.voteStartedByCommand = false;
    glo.voteRunning = false;
    targets().voteEnd();
    for (KeypadDriver* d : corehubDrivers()) d->EndVote(false, false);
}

void CommandDispatcher::keyLine(MainForm& form, const std::string& line) {
    GlobalState& glo = c_.glo;
    const auto [rawKey, value] = splitOnce(line, "=");
    const std::string key = toLower(trim(rawKey));
    auto number = [&value = value] { return ParseNumber(value); };

    if (key == "detect mode") {
        Black3Driver* black3 = c_.drivers->black3();
        const bool accepted = black3 && black3->SetDetectMode(toInt32Field(number()));
        form.LogEvent(accepted ? "Detect Mode Updated" : "Detect Mode Not Update", LOG_XX);
    } else if (key == "admin keydown") {
        targets().adminKeyPressed(value);
    } else if (key == "ctrl keydown") {
        targets().ctrlKeyPressed(value);
    } else if (key == "alt keydown") {
        targets().altKeyPressed(value);
    } else if (key == "balloonhelp") {
        c_.logs.balloon(value, 1);
    } else if (key == "votename") {
        glo.voteName = value;
        if (contains(value, "@@")) targets().voteNameParts(split(value, "@@"));
    } else if (key == "randomvotestring") {
        const auto fields = split(value, ";");
        const std::size_t n = std::min(fields.size(), glo.optionValues.size());
        for (std::size_t i = 0; i < n; ++i) glo.optionValues[i] = toSingle(ParseNumber(fields[i]));
    } else if (key == "options") {
        glo.optionCount = toInt16Field(number());
        glo.optionValues.resize(static_cast<std::size_t>(std::max<int>(glo.optionCount, 0)), -1.0f);
    } else if (key == "startfrom") {
        glo.startFrom = toInt16Field(number());
    } else if (key == "kelvarindisplay") {
        glo.kelvarinDisplay = toInt16Field(number());
    } else if (key == "keypadsactive") {
        // Through the vote run, so that the presentation's tag and the intake's list agree.
        targets().setActiveKeypads(value);
    } else if (key == "abstain") {
        // The key that means "abstain"; 0 turns the conversion off.
        form.key_Abstain = toInt16Field(number());
        form.Opt_Abstain = form.key_Abstain != 0;
    } else if (key == "prevotetext") {
        glo.prevoteText = value;
    } else if (key == "votetext") {
        glo.voteText = value;
    } else if (key == "answertext") {
        glo.answerText = value;
    } else if (key == "questiontextshort") {
        glo.questionTextShort = value;
    } else if (key == "postvotedtext") {
        // Accepted and ignored.
    } else if (key == "votetype") {
        // A numeric code is kept as a 32-bit whole number; a type name as it was sent.
        const std::string t = trim(value);
        const bool numeric = !t.empty() && (std::isdigit(static_cast<unsigned char>(t[0])) || t[0] == '-' ||
                                             t[0] == '+' || t[0] == '.');
        glo.voteType = numeric ? numText(toInt32Field(number())) : t;
    } else if (key == "allocation") {
        glo.allocation = toInt32Field(number());
    } else if (key == "limits") {
        glo.limits = toInt32Field(number());
    } else if (key == "points") {
        glo.points = toInt32Field(number());
    } else if (key == "kvpoptions") {
        glo.kvpOptions = toInt32Field(number());
    } else if (key == "addtask" || key == "deletetask") {
        taskLine(form, key, value);
    }
    // Any other key is not ours to know: ignored.
}

void CommandDispatcher::taskLine(MainForm& form, const std::string& key, const std::string& value) {
    const std::string task = trim(value);
    if (task.empty()) return;
    auto& tasks = form.tasks;
    const auto at = std::find(tasks.begin(), tasks.end(), task);
    if (key == "addtask") {
        if (at != tasks.end()) return;
        if (tasks.size() >= kMaxTasks) {
            form.LogEvent("Task Not Added (Task List Full): " + task, LOG_XX);
            return;
        }
        tasks.push_back(task);
    } else {
        if (at == tasks.end()) return;
        tasks.erase(at);
    }
    c_.ports.tray.setTasks(tasks);
}

std::string CommandDispatcher::voteInfoReply() const {
    const GlobalState& glo = c_.glo;
    const PopUpSettings& p = glo.popUp;
    const bool offsets = offsetsInUse(glo);
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < glo.bases.size(); ++i) {
        const PortEntry& b = glo.bases[i];
        lines.push_back("baseType=" + b.baseType);
        if (offsets)
            lines.push_back("offset=" + numText(static_cast<long long>(i)) + "," + numText(b.offset) + "," +
                            numText(b.gridLo) + "," + numText(b.gridHi) + "," + boolText(b.duplicate));
    }
    // Without offsets the display programs take the one default range.
    if (!offsets) lines.emplace_back("offset=0,0,1,20,False");
    lines.push_back("keypadsNotVotedLo=" + numText(p.lo));
    lines.push_back("keypadsNotVotedHi=" + numText(p.hi));
    lines.push_back("keypadsNotVotedPopupOn=" + boolText(p.popUpOn));
    lines.push_back("keypadsNotVotedHowManyToShow=" + p.howMany);
    lines.push_back("keypadsNotVotedClose=" + boolText(p.close));
    lines.push_back("keypadsNotVotedClosePercent=" + numText(p.closePercent));
    lines.push_back("numKeypads=" + numText(keypadCount(glo)));
    // The two switches travel as 0/1, which every display program reads as a number.
    lines.push_back(std::string("scrollingDisplay=") + (p.scrollingDisplay ? "1" : "0"));
    lines.push_back(std::string("useOffsets=") + (offsets ? "1" : "0"));
    lines.push_back("maxKeypads=" + numText(glo.highestKeypad()));
    return join(lines, "\r\n");
}

}  // namespace tlx
