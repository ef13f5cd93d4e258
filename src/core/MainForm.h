#pragma once
// The main form `tallix_controller`: the on-screen log, the command and outgoing queues, the
// labels, the tray icon and the timers that carry the controller's deferred work.
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Form.h"
#include "core/Signal.h"
#include "core/TextLog.h"
#include "ports/Scheduler.h"

namespace tlx {

class Controller;
namespace ppt {
class SlideShowWindow;
}

inline constexpr int LOG_TX = 0;
inline constexpr int LOG_RX = 1;
inline constexpr int LOG_XX = 2;

class MainForm : public Form {
public:
    static constexpr const char* kName = "tallix_controller";
    explicit MainForm(Controller& controller);
    ~MainForm() override;

    // Labels.
    std::string lblOS, lblOffice, lblBuild, lblVersion, lblVotesCast;
    // The on-screen log and the two queues ("\r\n" between entries).
    TextLog txt_log;
    std::string txt_command;
    std::string txt_data;
    // Tray task list (entries added by the display programs).
    std::vector<std::string> tasks;
    // The main form shows its debug view (SWITCHTODEBUGVIEW): the outgoing queue, the debug
    // and simulation buttons, the hook and abstain options and the modifier indicators.
    bool debugView = false;
    // The tray icon's frame: 0 at rest, 1 to Tray::kAnimationFrames while a vote runs.
    int trayIconFrame = 0;

    // Timers, by their program names.
    Timer tmr_executeCommand;
    Timer tmr_SendData;
    Timer tmr_VotesRxBuffer;
    Timer tmrCheck4Vote;
    Timer tmrRunVote;
    Timer tmrVKeyPressed;
    Timer tmrCheck4PPT;
    Timer tmrCheckSlideShow;
    Timer tmr_Check4TLXEdit;
    Timer tmr_refreshLowLevelKeyboardHook;
    Timer tmr_simulateVotes;
    Timer tmr_IconAnimate;
    // Every control whose name starts with "tmr".
    std::vector<Timer*> timers();

    void Form_Load();
    void LogEvent(std::string_view text, int kind);
    void AddDataToCommandQueue(std::string_view text);
    void RunCommandQueueNow();
    void AddDataToTxQueue(std::string_view text);
    // AddDataToTxQueue for a text the caller gives up: an empty queue takes it over without
    // copying it (the vote buffer's batches).
    void MoveDataToTxQueue(std::string&& text);
    // Enter (13) without Shift, Ctrl or Alt in `txt_command` runs the queue.
    void txt_command_KeyDown(int keyCode, bool shift, bool ctrl, bool alt);
    bool IsPowerPointRunning() const;

    // Debug buttons: run the queue, and list the debug commands in the log.
    void cmd_executeCommand_Click();
    void cmd_manualCommandList_Click();
    // Simulation buttons: start a test vote with simulated votes, and end it.
    void cmd_start_Click();
    void cmd_Stop_Click();
    // The "Simulate Votes" tick box switches the simulator on its own, without a vote.
    void chk_simulateVotes_Click(bool on);
    void txt_simulateVotesMaxKpadNum_Change(std::string_view text);
    void txt_simulateVotesCount_Change(std::string_view text);

    // What the operator changes in the window.
    void SwitchToDebugView(bool on);
    // The command box as typed; the window's "\n" line breaks become the queue's "\r\n".
    void txt_command_Change(std::string_view text);
    // Ticking installs the keyboard hook, clearing removes it (as SETHOOK and REMOVEHOOK).
    void chkLowLevelKeyboardHook_Click(bool checked);
    void chkRepeatFilter_Click(bool checked);
    void Opt_Abstain_Click(bool on);
    // A whole number from 0 to 32767 becomes the abstain key; anything else is refused
    // (false) and the key stays as it was.
    bool key_Abstain_Change(std::string_view text);

    // Tray.
    void DownToTray();
    void RemoveFromTray();
    void ModifyIcon(const std::string& tooltip);
    void DoTaskMenu(int index);
    void Task1() { DoTaskMenu(1); }
    void Task2() { DoTaskMenu(2); }
    void Task3() { DoTaskMenu(3); }
    void Task4() { DoTaskMenu(4); }
    void Task5() { DoTaskMenu(5); }
    void TaskAbout();
    void TaskQuit();

    // The add-in's slide-show notifications, relayed by the automation class.
    void SlideShowBegin(ppt::SlideShowWindow* Wn);
    void SlideShowNextSlide();
    void SlideShowEnd();
    // The presentation program has closed: stop every timer and shut down.
    void PowerPointClosed();
    void stopTimers();

    // Events the automation class relays to its clients.
    Signal<const std::string&> FromCtrlForm;
    Signal<int> FromCtrlFormBaseStationStartVoteCount;
    Signal<int, const std::string&> FromCtrlFormBaseStationError;
    Signal<int, const std::string&> FromCtrlFormBaseStationFeedback;
    Signal<> VKeyPressed;
    // Each new line of the on-screen log, as written.
    Signal<const std::string&> logLine;

    // Vote intake: counter boxes (0 accepted, 1 received, 2 distinct voters), the abstain
    // option and its key (set by the key line "abstain"), the keypad-test flag (set while
    // the keypad test window `ktest` is loaded), and the vote simulator's two boxes.
    std::string txt_VoteCounter[3] = {"0", "0", "0"};
    bool Opt_Abstain = false;
    int key_Abstain = 0;
    bool keypadTestActive = false;
    std::string txt_simulateVotesMaxKpadNum = "100";
    std::string txt_simulateVotesCount = "5";

    // Presenter hot keys: hook state, the repeat filter and the modifier indicators
    // (left Shift, right Shift, left Ctrl, right Ctrl, left Alt, right Alt).
    std::string lblHookStatus;
    int lblHookStatusColour = 0;
    bool chkLowLevelKeyboardHook = false;
    bool chkRepeatFilter = true;
    bool modifierIndicators[6] = {false, false, false, false, false, false};

private:
    void tmr_SendData_Timer();
    void tmr_IconAnimate_Timer();
    Controller& c_;
};

}  // namespace tlx
