#pragma once
// A started controller on the fake presentation program, with recording keypad drivers and
// command targets, for the command-channel tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/CommandTargets.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "support/FakePresentation.h"
#include "support/Fields.h"
#include "support/RecordingDrivers.h"
#include "support/TestWorld.h"

namespace tlx::test {

// The default operations, each call recorded first.
class RecordingTargets : public DefaultCommandTargets {
public:
    RecordingTargets(Controller& c, CallLog& log) : DefaultCommandTargets(c), log_(log) {}
    int voteStart() override {
        log_.push_back("voteStart");
        if (onVoteStart) onVoteStart();
        return 2;  // bases taking part
    }
    void voteEnd() override { log_.push_back("voteEnd"); }
    void voteNameParts(const std::vector<std::string>& parts) override {
        log_.push_back("voteNameParts(" + join(parts, "|") + ")");
    }
    void goToNextSlide() override { log_.push_back("goToNextSlide"); }
    void goToPreviousSlide() override { log_.push_back("goToPreviousSlide"); }
    void enablePowerPoint() override { log_.push_back("enablePowerPoint"); }
    void toggleTopMost() override { log_.push_back("toggleTopMost"); }
    void freeCursor() override { log_.push_back("freeCursor"); }
    void activeKeypads() override { log_.push_back("activeKeypads"); }
    void readActiveKeypads() override { log_.push_back("readActiveKeypads"); }
    void ctrlKeyPressed(const std::string& k) override { log_.push_back("ctrlKeyPressed(" + k + ")"); }
    void altKeyPressed(const std::string& k) override { log_.push_back("altKeyPressed(" + k + ")"); }
    void adminKeyPressed(const std::string& k) override { log_.push_back("adminKeyPressed(" + k + ")"); }
    void setHook() override { log_.push_back("setHook"); }
    void removeHook() override { log_.push_back("removeHook"); }
    bool showAudio() override { log_.push_back("showAudio"); return true; }
    void showTextVote() override { log_.push_back("showTextVote"); }
    void showDebug() override { log_.push_back("showDebug"); }
    void showBubbleMessageLog() override { log_.push_back("showBubbleMessageLog"); }
    void showWindowHandles() override { log_.push_back("showWindowHandles"); }
    void showProcessList() override { log_.push_back("showProcessList"); }
    void reReadConfiguration() override { log_.push_back("reReadConfiguration"); }

    std::function<void()> onVoteStart;

private:
    CallLog& log_;
};

class CommandChannel : public ::testing::Test {
protected:
    void SetUp() override {
        useFakePresentation(w, ppt);
        deck = &ppt.app.open((w.dir / "show").string(), 8);
        auto d = std::make_unique<RecordingDrivers>(calls);
        drivers = d.get();
        w.c().drivers = std::move(d);
        auto t = std::make_unique<RecordingTargets>(w.c(), calls);
        targets = t.get();
        w.c().targets = std::move(t);
        w.start();
        ASSERT_EQ(w.glo().InitialisedState, INIT_STATE_INITIALISED);
        w.main().FromCtrlForm.connect([this](const std::string& s) { sent.push_back(s); });
        calls.clear();
    }

    // Queues the text as a client would and lets the queue and the send timer run.
    void send(const std::string& text) {
        w.main().AddDataToCommandQueue(text);
        w.scheduler.advance(200);
    }
    // The calls of these lines alone.
    void sendAfresh(const std::string& text) {
        calls.clear();
        send(text);
    }
    // The vote name once the queue has had its time.
    std::string voteNameAfter(long long ms) {
        w.scheduler.advance(ms);
        return w.glo().voteName;
    }
    bool called(const std::string& call) const {
        return std::find(calls.begin(), calls.end(), call) != calls.end();
    }
    int count(const std::string& call) const {
        return static_cast<int>(std::count(calls.begin(), calls.end(), call));
    }
    // The queued text, the vote name, the run timer on.
    std::string queue() { return fields(w.main().txt_command, w.glo().voteName, w.main().tmr_executeCommand.enabled()); }

    FakePresentationApp ppt;  // outlives the world's controller
    TestWorld w;
    FakePresentation* deck = nullptr;
    CallLog calls;
    RecordingDrivers* drivers = nullptr;
    RecordingTargets* targets = nullptr;
    std::vector<std::string> sent;
};

}  // namespace tlx::test
