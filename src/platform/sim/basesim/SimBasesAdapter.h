#pragma once
// The simulated bases as a scripted show drives them (and the `/sim/bases` object publishes
// them): a thin layer over the library's own driving calls.
#include "platform/sim/SimControls.h"
#include "platform/sim/basesim/SimBaseLibrary.h"

namespace tlx {

class SimBasesAdapter : public SimBasesControl {
public:
    explicit SimBasesAdapter(SimBaseLibrary& library) : lib_(library) {}
    SimError Press(const std::string& base, int keypad, const std::string& keys) override {
        return said(lib_.press(base, keypad, keys));
    }
    SimError Crowd(const std::string& base, int keypads, const std::string& answers, int perSecond) override {
        return said(lib_.crowd(base, keypads, answers, perSecond));
    }
    SimError MicRequest(const std::string& base, int keypad, bool withdraw) override {
        return said(lib_.micRequest(base, keypad, withdraw));
    }
    SimError Text(const std::string& base, int keypad, const std::string& text) override {
        return said(lib_.text(base, keypad, text));
    }
    SimError Fail(const std::string& base, const std::string& operation, int code) override {
        return said(lib_.fail(base, operation, code));
    }
    SimError Disconnect(const std::string& base) override { return said(lib_.disconnect(base)); }
    SimError Reconnect(const std::string& base) override { return said(lib_.reconnect(base)); }
    SimResult<std::vector<std::string>> Bases() override { return {lib_.bases(), {}}; }
    SimResult<std::string> Screen(const std::string& base, int keypad) override {
        std::string shown;
        const SimOutcome o = lib_.screen(base, keypad, shown);
        return {shown, said(o)};
    }

private:
    static SimError said(const SimOutcome& o) { return o.ok ? SimError{} : (o.message.empty() ? SimError{"failed"} : o.message); }
    SimBaseLibrary& lib_;
};

}  // namespace tlx
