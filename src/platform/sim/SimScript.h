#pragma once
// A scripted show: timed steps that open a deck, run the show, type keys, let keypads vote
// and send display-program commands, read from the simulation set-up file's script.
//
//   # seconds  step           arguments
//   0.5        Open           ../decks/demo.pptx
//   1.0        Begin
//   2.0        Key            V          (a letter, or a virtual-key code)
//   3.0        Command        STARTVOTE  (a display program's command line)
//   3.5        Crowd          100100100100 40 1,2,3,4 20
//   3.6        Await          VoteClosed 30
//
// Steps: Open, Begin, Next, Previous, GoTo, End, Close, Key, KeyDown, KeyUp, Press, Crowd,
// MicRequest, Text, Fail, Disconnect, Reconnect, Command, Click, Note, Await.
// "Click WINDOW CONTROL" presses a control of an open window by its program name
// ("Click frmTextVoteCollection cmdStartStopVote"), as the operator would.
//
// Steps run in the order of their times (the order of the file for equal times). "Await
// CONDITION [SECONDS]" waits until the condition holds, at most SECONDS (default 30), and
// every later step moves on by the time it waited, so the steps after it keep their distance
// from the moment it held. What a condition means is the wiring's (`condition`).
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/SimControls.h"

namespace tlx {

class Scheduler;

struct ScriptStep {
    double at = 0;  // seconds after the script starts
    std::string verb;
    std::vector<std::string> args;  // the rest of the line, split at blanks
    std::string rest;               // the rest of the line as written
    int line = 0;
};

// Reads a script; lines it cannot read are reported in `problems` and left out.
std::vector<ScriptStep> parseScript(const std::string& text, std::vector<std::string>* problems = nullptr);

class SimScript {
public:
    SimScript(Scheduler& scheduler, SimShowControl* show, SimBasesControl* bases);
    ~SimScript();
    // Paths in Open steps are taken relative to this folder.
    std::filesystem::path folder;
    // A display program's command line (the script plays the display program).
    std::function<bool(const std::string&)> command;
    // Presses a window's control (the script plays the operator); the failure text, "" when done.
    std::function<std::string(const std::string& window, const std::string& control)> click;
    // What the script reports: each step as it runs, and failures.
    std::function<void(const std::string&)> report;
    // Whether a condition of an Await step holds now; nullopt for a condition it does not know.
    std::function<std::optional<bool>(const std::string&)> condition;
    // How often an Await step looks at its condition.
    int awaitPollMs = 50;

    void load(std::vector<ScriptStep> steps) { steps_ = std::move(steps); }
    void start();
    // Runs one step now; returns the failure text ("" when it worked).
    std::string run(const ScriptStep& step);
    bool finished() const { return done_ == steps_.size(); }
    // How far the steps have moved on because of Await steps, in milliseconds.
    std::int64_t delayMs() const { return shiftMs_; }

private:
    void scheduleNext();
    void runNext();
    void await(const ScriptStep& step, double startedMs);
    double elapsedMs() const;

    Scheduler& scheduler_;
    SimShowControl* show_;
    SimBasesControl* bases_;
    std::vector<ScriptStep> steps_;
    std::uint64_t post_ = 0;
    std::size_t done_ = 0;
    double startMs_ = 0;
    std::int64_t shiftMs_ = 0;
};

// The virtual-key code of a key name in a script: a letter or digit, a number, or one of
// Enter, Space, PageUp, PageDown, End, Home, Left, Up, Right, Down, Escape.
int scriptKey(const std::string& name);

}  // namespace tlx
