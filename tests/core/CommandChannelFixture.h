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
#include "support/TestWorld.h"

namespace tlx::test {

// A configured base station as the port file would give it.
inline PortEntry base(const std::string& port, const std::string& type, int lo = 1, int hi = 20, int offset = 0,
                      bool duplicate = false) {
    PortEntry e;
    e.port = port;
    e.baseType = type;
    e.gridLo = lo;
    e.gridHi = hi;
    e.offset = offset;
    e.duplicate = duplicate;
    return e;
}

// Every call, as "name" or "name(args)".
using CallLog = std::vector<std::string>;

class RecordingKeypadDriver : public KeypadDriver {
public:
    RecordingKeypadDriver(std::string name, CallLog& log) : name_(std::move(name)), log_(log) {}
    void SilentLoadVoteConfig(int slideNum) override { rec("SilentLoadVoteConfig(" + numText(slideNum) + ")"); }
    int StartVote() override { rec("StartVote"); return 0; }
    void PauseVote() override { rec("PauseVote"); }
    void ResumeVote() override { rec("ResumeVote"); }
    void EndVote(bool noAudio, bool clearSettings) override {
        rec("EndVote(" + boolText(noAudio) + "," + boolText(clearSettings) + ")");
    }
    void ShowWinningKeypad(int keypad, bool flag) override {
        rec("ShowWinningKeypad(" + numText(keypad) + "," + boolText(flag) + ")");
    }
    void ClosePorts() override { rec("ClosePorts"); }
    bool voteRunning() const override { return false; }

private:
    void rec(const std::string& s) { log_.push_back(name_ + "." + s); }
    std::string name_;
    CallLog& log_;
};

class RecordingBlack3 : public Black3Driver {
public:
    explicit RecordingBlack3(CallLog& log) : log_(log) {}
    void StartVote(const std::string& port) override { log_.push_back("black3.StartVote(" + port + ")"); }
    void EndVote(const std::string& port) override { log_.push_back("black3.EndVote(" + port + ")"); }
    bool SetDetectMode(int mode) override {
        log_.push_back("black3.SetDetectMode(" + numText(mode) + ")");
        return mode == -1 || (mode >= 1 && mode <= 3);
    }

private:
    CallLog& log_;
};

class RecordingDrivers : public BaseDrivers {
public:
    explicit RecordingDrivers(CallLog& log) : log_(log), g1_("g1", log), g2_("g2", log), black3_(log) {}
    bool openBase(const PortEntry& base) override {
        log_.push_back("openBase(" + base.baseType + ")");
        return true;
    }
    std::vector<FoundBase> scanForBases() override { return {}; }
    void closePorts() override { log_.push_back("closePorts"); }
    KeypadDriver* corehubG1() override { return withG1 ? &g1_ : nullptr; }
    KeypadDriver* corehubG2() override { return withG2 ? &g2_ : nullptr; }
    Black3Driver* black3() override { return withBlack3 ? &black3_ : nullptr; }
    bool withG1 = true, withG2 = true, withBlack3 = false;

private:
    CallLog& log_;
    RecordingKeypadDriver g1_, g2_;
    RecordingBlack3 black3_;
};

// The default operations, each call recorded first.
class RecordingTargets : public DefaultCommandTargets {
public:
    RecordingTargets(Controller& c, CallLog& log) : DefaultCommandTargets(c), log_(log) {}
    int voteStart() override {
        log_.push_back("voteStart");
        if (onVoteStart) onVoteStart();
        return basesTakingPart;
    }
    void voteEnd() override { log_.push_back("voteEnd"); }
    void voteNameParts(const std::vector<std::string>& parts) override {
        log_.push_back("voteNameParts(" + join(parts, "|") + ")");
    }
    void goToNextSlide() override { log_.push_back("goToNextSlide"); }
    void goToPreviousSlide() override { log_.push_back("goToPreviousSlide"); }
    void enablePowerPoint() override { log_.push_back("enablePowerPoint"); }
    void toggleTopMost() override { log_.push_back("toggleTopMost"); }
    void freeCursor() override {
        log_.push_back("freeCursor");
        DefaultCommandTargets::freeCursor();
    }
    void activeKeypads() override {
        log_.push_back("activeKeypads");
        DefaultCommandTargets::activeKeypads();
    }
    void readActiveKeypads() override { log_.push_back("readActiveKeypads"); }
    void ctrlKeyPressed(const std::string& k) override { log_.push_back("ctrlKeyPressed(" + k + ")"); }
    void altKeyPressed(const std::string& k) override { log_.push_back("altKeyPressed(" + k + ")"); }
    void adminKeyPressed(const std::string& k) override { log_.push_back("adminKeyPressed(" + k + ")"); }
    void setHook() override { log_.push_back("setHook"); }
    void removeHook() override { log_.push_back("removeHook"); }
    bool showAudio() override {
        log_.push_back("showAudio");
        return true;
    }
    void showTextVote() override { log_.push_back("showTextVote"); }
    void showDebug() override { log_.push_back("showDebug"); }
    void showBubbleMessageLog() override {
        log_.push_back("showBubbleMessageLog");
        DefaultCommandTargets::showBubbleMessageLog();
    }
    void showWindowHandles() override { log_.push_back("showWindowHandles"); }
    void showProcessList() override { log_.push_back("showProcessList"); }
    void reReadConfiguration() override { log_.push_back("reReadConfiguration"); }

    int basesTakingPart = 2;
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
    bool called(const std::string& call) const {
        return std::find(calls.begin(), calls.end(), call) != calls.end();
    }
    int count(const std::string& call) const {
        return static_cast<int>(std::count(calls.begin(), calls.end(), call));
    }

    FakePresentationApp ppt;  // outlives the world's controller
    TestWorld w;
    FakePresentation* deck = nullptr;
    CallLog calls;
    RecordingDrivers* drivers = nullptr;
    RecordingTargets* targets = nullptr;
    std::vector<std::string> sent;
};

}  // namespace tlx::test
