#pragma once
// The command dispatcher: drains the main form's command queue `txt_command` from the timer
// `tmr_executeCommand` and carries out each line: whole-line commands, prefixed commands and
// the "key=value" lines that configure a vote.
#include <cstdint>
#include <string>
#include <vector>

namespace tlx {

class Controller;
class MainForm;
class CommandTargets;
class KeypadDriver;

class CommandDispatcher {
public:
    // Attaches itself to `tmr_executeCommand` of every main form the controller loads.
    explicit CommandDispatcher(Controller& controller);
    ~CommandDispatcher();
    CommandDispatcher(const CommandDispatcher&) = delete;
    CommandDispatcher& operator=(const CommandDispatcher&) = delete;

    // The timer's handler: one run over the lines queued when it starts.
    void tmr_executeCommand_Timer();

    // The vote-information reply (GETVOTEINFO).
    std::string voteInfoReply() const;

private:
    // Carries out one line; false when the run must stop (the controller is going down).
    bool runLine(MainForm& form, const std::string& line);
    bool wholeLine(MainForm& form, const std::string& upper);
    bool prefixedLine(MainForm& form, const std::string& line, const std::string& upper);
    void keyLine(MainForm& form, const std::string& line);

    void startVote(MainForm& form);
    void endVote();
    void moveSlide(const std::string& upper, bool forward);
    void keyboardVoting(bool on);
    void taskLine(MainForm& form, const std::string& key, const std::string& value);
    std::vector<KeypadDriver*> corehubDrivers() const;
    CommandTargets& targets() const;

    Controller& c_;
    std::uint64_t loadedSub_ = 0;
};

// The lines `cmd_manualCommandList` writes under the heading "Debug Commands".
const std::vector<std::string>& debugCommandList();

}  // namespace tlx
