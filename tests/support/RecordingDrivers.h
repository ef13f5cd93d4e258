#pragma once
// Keypad drivers that record every call the controller makes of them.
#include <string>
#include <vector>

#include "core/BaseDrivers.h"
#include "core/Text.h"

namespace tlx::test {

// A configured base station as the port file would give it.
inline PortEntry base(const std::string& port, const std::string& type, int lo = 1, int hi = 20, int offset = 0,
                      bool duplicate = false) {
    return PortEntry{port, type, lo, hi, duplicate, 0, offset};
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
    void SetPresenterGotoMenu(const std::string& menu) override { rec("SetPresenterGotoMenu(" + menu + ")"); }
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

}  // namespace tlx::test
