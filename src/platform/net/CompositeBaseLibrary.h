#pragma once
// USB bases in this process, network bases behind the network adapter, as one base library:
// a base object lists the USB bases of the local library and the network bases of both, and
// binds to whichever library accepts its connection text ("address|2020|1010" tries the
// network first). The simulated keypads are driven the same way: a base the local simulation
// does not know is driven through the emulator's control language.
#include <memory>

#include "platform/sim/SimControls.h"
#include "ports/BaseLibrary.h"

namespace tlx {

class NetBaseLibrary;
class SimBaseLibrary;

class CompositeBaseLibrary : public BaseLibrary {
public:
    CompositeBaseLibrary(BaseLibrary& local, NetBaseLibrary& network) : local_(local), network_(network) {}
    std::unique_ptr<KelvarinBase> createBase(LibraryGeneration generation) override;
    std::unique_ptr<KelvarinVPanel> createVPanel() override { return local_.createVPanel(); }

private:
    BaseLibrary& local_;
    NetBaseLibrary& network_;
};

class RoutedBasesControl : public SimBasesControl {
public:
    RoutedBasesControl(SimBaseLibrary& local, SimBasesControl& localControl, NetBaseLibrary& network)
        : local_(local), localControl_(localControl), network_(network) {}
    SimError Press(const std::string& base, int keypad, const std::string& keys) override;
    SimError Crowd(const std::string& base, int keypads, const std::string& answers, int perSecond) override;
    SimError MicRequest(const std::string& base, int keypad, bool withdraw) override;
    SimError Text(const std::string& base, int keypad, const std::string& text) override;
    SimError Fail(const std::string& base, const std::string& operation, int code) override;
    SimError Disconnect(const std::string& base) override;
    SimError Reconnect(const std::string& base) override;
    SimResult<std::vector<std::string>> Bases() override;
    SimResult<std::string> Screen(const std::string& base, int keypad) override;

private:
    bool isLocal(const std::string& base);
    SimError remote(const std::string& line, std::string* output = nullptr);
    SimBaseLibrary& local_;
    SimBasesControl& localControl_;
    NetBaseLibrary& network_;
};

}  // namespace tlx
