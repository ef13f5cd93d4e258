#include "core/MainForm.h"

#include <algorithm>
#include <filesystem>

#include "core/CommandDispatcher.h"
#include "core/CommandTargets.h"
#include "core/Controller.h"
#include "core/PresentationSide.h"
#include "core/SmallForms.h"
#include "core/Text.h"
#include "ports/Desktop.h"
#include "ports/Dialogs.h"
#include "ports/PresentationApp.h"
#include "ports/Tray.h"
#include "tlx/Version.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {
constexpr const char* kObject = "tallix_controller";
}

MainForm::MainForm(Controller& controller)
    : Form(kName),
      tmr_executeCommand(controller.ports.scheduler, "tmr_executeCommand", 50),
      tmr_SendData(controller.ports.scheduler, "tmr_SendData", 50),
      tmr_VotesRxBuffer(controller.ports.scheduler, "tmr_VotesRxBuffer", 10),
      tmrCheck4Vote(controller.ports.scheduler, "tmrCheck4Vote", 20),
      tmrRunVote(controller.ports.scheduler, "tmrRunVote", 20),
      tmrVKeyPressed(controller.ports.scheduler, "tmrVKeyPressed", 20),
      tmrCheck4PPT(controller.ports.scheduler, "tmrCheck4PPT", 2000),
      tmrCheckSlideShow(controller.ports.scheduler, "tmrCheckSlideShow", 1000),
      tmr_Check4TLXEdit(controller.ports.scheduler, "tmr_Check4TLXEdit", 500),
      tmr_refreshLowLevelKeyboardHook(controller.ports.scheduler, "tmr_refreshLowLevelKeyboardHook", 5000,
                                      true),
      tmr_simulateVotes(controller.ports.scheduler, "tmr_simulateVotes", 25),
      tmr_IconAnimate(controller.ports.scheduler, "tmr_IconAnimate", 250),
      c_(controller) {
    tmr_SendData.onTick = [this] { tmr_SendData_Timer(); };
    tmr_IconAnimate.onTick = [this] { tmr_IconAnimate_Timer(); };
    // Every vote start raises this event, whoever started it: the tray icon moves until it ends.
    FromCtrlFormBaseStationStartVoteCount.connect([this](int) {
        if (!c_.glo.ShuttingDown) tmr_IconAnimate.setEnabled(true);
    });
}

MainForm::~MainForm() = default;

std::vector<Timer*> MainForm::timers() {
    return {&tmr_executeCommand, &tmr_SendData,     &tmr_VotesRxBuffer, &tmrCheck4Vote,
            &tmrRunVote,         &tmrVKeyPressed,   &tmrCheck4PPT,      &tmrCheckSlideShow,
            &tmr_Check4TLXEdit,  &tmr_refreshLowLevelKeyboardHook,      &tmr_simulateVotes,
            &tmr_IconAnimate};
}

void MainForm::Form_Load() {
    trap(c_.errors, kObject, "Form_Load", [&] {
        Desktop& desktop = c_.ports.desktop;
        lblOS = desktop.osVersion() + " (" + desktop.servicePack() + ")";
        lblOffice = "Office 2000 or later detected";

        if (IsPowerPointRunning()) {
            c_.glo.ppApp = c_.getPowerPointObject();
            LogEvent("glo.ppApp GetObject Done", LOG_XX);
        }

        // Started from inside the presentation program's folder tree, the add-in knows where we live.
        std::string folder = c_.glo.installFolder.string();
        const auto at = toUpper(folder).find("CONTROLLER");
        if ((folder.empty() || (at != std::string::npos && at >= 1)) && c_.glo.ppApp) {
            trap(c_.errors, kObject, "Form_Load", [&] { folder = c_.glo.ppApp->addInPath("tallix"); });
        }
        std::error_code ec;
        const fs::path program = fs::path(folder) / desktop.programName();
        if (!folder.empty() && fs::is_regular_file(program, ec)) {
            const auto stamp = fs::last_write_time(program, ec);
            if (!ec) {
                const auto sys = std::chrono::file_clock::to_sys(stamp);
                const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(sys.time_since_epoch());
                lblBuild = "Built on " + formatDate(DateTime::fromMillis(ms.count()), "DD/MM/YYYY");
            }
        }

        lblVersion = version::kText;
        setCaption(std::string("tallix controller v") + version::kText);
        txt_command.clear();
        txt_data.clear();

        if (c_.glo.ppApp) {
            // The add-in's menu; nothing on it needs changing on this platform.
            trap(c_.errors, kObject, "Form_Load", [&] { (void)c_.glo.ppApp->menuBarControlExists("&Kelvarin"); });
        }

        tmrCheck4PPT.setEnabled(true);
        DownToTray();
    });
}

void MainForm::LogEvent(std::string_view text, int kind) {
    try {
        std::string line = timeStamp(c_.ports.scheduler.now().secondsSinceMidnight());
        line += kind == LOG_TX ? " - TX - " : kind == LOG_RX ? " - RX - " : " - XX - ";
        line += replaceAll(std::string(text), "\r\n", " \\n ");
        txt_log.prepend(line);
        logLine(txt_log.newest());
        changed();
    } catch (...) {
        // The log never raises into the procedure that logs.
    }
}

void MainForm::AddDataToCommandQueue(std::string_view text) {
    if (!txt_command.empty()) txt_command += "\r\n";
    txt_command += text;
    tmr_executeCommand.setEnabled(true);
}

void MainForm::RunCommandQueueNow() {
    if (tmr_executeCommand.onTick) tmr_executeCommand.onTick();
}

void MainForm::AddDataToTxQueue(std::string_view text) {
    if (!txt_data.empty()) txt_data += "\r\n";
    txt_data += text;
    tmr_SendData.setEnabled(true);
}

void MainForm::MoveDataToTxQueue(std::string&& text) {
    if (txt_data.empty()) {
        txt_data = std::move(text);
        tmr_SendData.setEnabled(true);
        return;
    }
    AddDataToTxQueue(std::string_view(text));
}

void MainForm::txt_command_KeyDown(int keyCode, bool shift, bool ctrl, bool alt) {
    if (keyCode == 13 && !shift && !ctrl && !alt) tmr_executeCommand.setEnabled(true);
}

void MainForm::cmd_executeCommand_Click() { tmr_executeCommand.setEnabled(true); }

void MainForm::cmd_manualCommandList_Click() {
    LogEvent("Debug Commands", LOG_XX);
    for (const auto& line : debugCommandList()) LogEvent(line, LOG_XX);
}

void MainForm::cmd_start_Click() {
    AddDataToCommandQueue("PCAOPTIONS=");
    AddDataToCommandQueue("OPTIONS=11");
    AddDataToCommandQueue("STARTVOTE");
    tmr_simulateVotes.setEnabled(true);
    LogEvent("Simulating Votes", LOG_XX);
}

void MainForm::cmd_Stop_Click() {
    AddDataToCommandQueue("ENDVOTE");
    tmr_simulateVotes.setEnabled(false);
}

void MainForm::chk_simulateVotes_Click(bool on) {
    tmr_simulateVotes.setEnabled(on);
    changed();
}

void MainForm::txt_simulateVotesMaxKpadNum_Change(std::string_view text) {
    txt_simulateVotesMaxKpadNum = text;
    changed();
}

void MainForm::txt_simulateVotesCount_Change(std::string_view text) {
    txt_simulateVotesCount = text;
    changed();
}

void MainForm::SwitchToDebugView(bool on) {
    debugView = on;
    changed();
}

void MainForm::txt_command_Change(std::string_view text) {
    txt_command = replaceAll(replaceAll(std::string(text), "\r\n", "\n"), "\n", "\r\n");
}

void MainForm::chkLowLevelKeyboardHook_Click(bool checked) {
    trap(c_.errors, kObject, "chkLowLevelKeyboardHook_Click", [&] {
        if (checked)
            c_.targets->setHook();
        else
            c_.targets->removeHook();
    });
    changed();
}

void MainForm::chkRepeatFilter_Click(bool checked) {
    chkRepeatFilter = checked;
    changed();
}

void MainForm::Opt_Abstain_Click(bool on) {
    Opt_Abstain = on;
    changed();
}

bool MainForm::key_Abstain_Change(std::string_view text) {
    const std::string t = trim(std::string(text));
    const bool digits = !t.empty() && t.size() <= 5 &&
                        std::all_of(t.begin(), t.end(), [](char ch) { return ch >= '0' && ch <= '9'; });
    const bool accepted = digits && std::stoi(t) <= 32767;
    if (accepted) key_Abstain = std::stoi(t);
    changed();  // a refused text shows the key as it was again
    return accepted;
}

void MainForm::tmr_IconAnimate_Timer() {
    trap(c_.errors, kObject, "tmr_IconAnimate_Timer", [&] {
        if (c_.glo.ShuttingDown || !(c_.glo.voteRunning || c_.glo.Voting)) {
            tmr_IconAnimate.setEnabled(false);
            trayIconFrame = 0;
        } else {
            trayIconFrame = trayIconFrame % Tray::kAnimationFrames + 1;
        }
        c_.ports.tray.setIconFrame(trayIconFrame);
    });
}

void MainForm::tmr_SendData_Timer() {
    trap(c_.errors, kObject, "tmr_SendData_Timer", [&] {
        if (c_.glo.InitialisedState != INIT_STATE_INITIALISED || c_.glo.ShuttingDown) return;
        tmr_SendData.setEnabled(false);
        std::string sData;
        sData.swap(txt_data);
        // A queue emptied by CLEAR after it was enabled leaves nothing to send.
        if (sData.empty()) return;
        if (keypadTestActive)
            if (auto* ktest = c_.forms.get<KeypadTestForm>(KeypadTestForm::kName)) ktest->ReceiveData(sData);
        FromCtrlForm(sData);
        for (const auto& line : split(sData, "\r\n")) {
            const std::string t = trim(line);
            if (!t.empty()) LogEvent(t, LOG_TX);
        }
    });
}

bool MainForm::IsPowerPointRunning() const { return processRunning(c_.ports.desktop, "POWERPNT.EXE"); }

void MainForm::DownToTray() { c_.ports.tray.addIcon(std::string("tallix controller v") + version::kText); }

void MainForm::RemoveFromTray() { c_.ports.tray.removeIcon(); }

void MainForm::ModifyIcon(const std::string& tooltip) {
    c_.ports.tray.removeIcon();
    c_.ports.tray.addIcon(tooltip);
}

void MainForm::DoTaskMenu(int index) {
    trap(c_.errors, kObject, "DoTaskMenu", [&] {
        if (index < 1 || index > static_cast<int>(tasks.size())) return;
        // The display program that added the task carries it out.
        AddDataToTxQueue("Task=" + tasks[static_cast<std::size_t>(index - 1)]);
    });
}

void MainForm::TaskAbout() {
    c_.ports.dialogs.message("tallix controller", std::string("tallix controller v") + version::kText,
                             MsgIcon::Information);
}

void MainForm::TaskQuit() {
    trap(c_.errors, kObject, "TaskQuit", [&] {
        if (IsPowerPointRunning()) {
            if (!c_.ports.dialogs.askYesNo("tallix controller",
                                           "Closing the controller will disable voting - are you sure?",
                                           MsgIcon::Question))
                return;
        }
        c_.glo.FullShutDownInitiated = true;
        c_.FullShutdown(false);
    });
}

void MainForm::SlideShowBegin(ppt::SlideShowWindow* Wn) { c_.presentationSide->slideShowBegin(Wn); }
void MainForm::SlideShowNextSlide() { c_.presentationSide->slideShowNextSlide(); }
void MainForm::SlideShowEnd() { c_.presentationSide->slideShowEnd(); }

void MainForm::stopTimers() {
    for (Timer* t : timers()) t->setEnabled(false);
}

void MainForm::PowerPointClosed() {
    c_.trace("Function Start", "PowerPointClosed", kObject);
    stopTimers();
    c_.FullShutdown(false);
    c_.trace("Function End", "PowerPointClosed", kObject);
}

}  // namespace tlx
