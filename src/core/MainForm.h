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
    // The main form shows its debug view (SWITCHTODEBUGVIEW).
    bool debugView = false;

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
    Controller& c_;
};

}  // namespace tlx
