#include "platform/net/CompositeBaseLibrary.h"

#include "core/Text.h"
#include "platform/net/NetBaseLibrary.h"
#include "platform/sim/basesim/SimBaseLibrary.h"

namespace tlx {

namespace {

class CompositeBase : public KelvarinBase {
public:
    CompositeBase(std::unique_ptr<KelvarinBase> local, std::unique_ptr<KelvarinBase> network)
        : local_(std::move(local)), network_(std::move(network)) {
        for (KelvarinBase* inner : {local_.get(), network_.get()}) {
            if (!inner) continue;
            relay(*inner, &KelvarinBase::Error);
            relay(*inner, &KelvarinBase::KeypadChannelScanReply);
            relay(*inner, &KelvarinBase::KeypadConfig);
            relay(*inner, &KelvarinBase::KeypadRegister);
            relay(*inner, &KelvarinBase::VoteReceived);
            relay(*inner, &KelvarinBase::AudioStatus);
            relay(*inner, &KelvarinBase::DebugRx);
            relay(*inner, &KelvarinBase::DebugTx);
            relay(*inner, &KelvarinBase::PresenterCommandReceived);
            relay(*inner, &KelvarinBase::ScannerCommandReceived);
            relay(*inner, &KelvarinBase::ChannelScanReply);
            relay(*inner, &KelvarinBase::KeypadSurveyReply);
        }
        bound_ = local_.get();
    }

    int GetUSBDevices(std::string& list) override { return local_->GetUSBDevices(list); }
    int GetEthernetDevices(std::string& list) override {
        std::string here, there;
        const int rc = local_->GetEthernetDevices(here);
        // An emulator that cannot be reached lists nothing; the local bases still count.
        if (network_->GetEthernetDevices(there) != BaseErrorCode::Success) there.clear();
        list = here.empty() ? there : there.empty() ? here : here + "|" + there;
        return rc;
    }
    int Connect(const std::string& connection) override {
        if (contains(connection, "|")) {
            const int rc = network_->Connect(connection);
            if (rc == BaseErrorCode::Success) return bind(*network_);
            if (local_->Connect(connection) == BaseErrorCode::Success) return bind(*local_);
            return rc;
        }
        const int rc = local_->Connect(connection);
        return rc == BaseErrorCode::Success ? bind(*local_) : rc;
    }
    int Disconnect() override { return bound_->Disconnect(); }

    int GetBaseConfig(KelvarinBaseConfig& c) override { return bound_->GetBaseConfig(c); }
    int SetBaseConfig(const KelvarinBaseConfig& c) override { return bound_->SetBaseConfig(c); }
    int GetSessionConfig(KelvarinSessionConfig& c) override { return bound_->GetSessionConfig(c); }
    int SetSessionConfig(const KelvarinSessionConfig& c) override { return bound_->SetSessionConfig(c); }
    int RadioEnable(bool enable) override { return bound_->RadioEnable(enable); }
    int RadioStatus(int& status) override { return bound_->RadioStatus(status); }
    int ResetBase() override { return bound_->ResetBase(); }
    int RebootRadio() override { return bound_->RebootRadio(); }
    int GetKeypadConfig(const std::string& hid, KelvarinKeypadConfig& c) override { return bound_->GetKeypadConfig(hid, c); }
    int SetKeypadConfig(const KelvarinKeypadConfig& c) override { return bound_->SetKeypadConfig(c); }
    int GetRegistry(std::string& registry) override { return bound_->GetRegistry(registry); }
    int GetKeypadFromRegistry(int sid, KelvarinKeypadConfig& c) override { return bound_->GetKeypadFromRegistry(sid, c); }
    int AddKeypadToRegistry(const std::string& hid, int sid) override { return bound_->AddKeypadToRegistry(hid, sid); }
    int DeleteKeypadFromRegistry(const std::string& hid) override { return bound_->DeleteKeypadFromRegistry(hid); }
    int DeleteRegistry() override { return bound_->DeleteRegistry(); }
    int UpdateRegistryFlashRIT(const std::string& hid, int flag) override { return bound_->UpdateRegistryFlashRIT(hid, flag); }
    int StartAudio(const std::string& hid, const KelvarinAudioOptions& o) override { return bound_->StartAudio(hid, o); }
    int StopAudio() override { return bound_->StopAudio(); }
    int PrepareKeypadSurveyScan(const std::vector<std::string>& hids, const KelvarinSurveyOptions& o) override {
        return bound_->PrepareKeypadSurveyScan(hids, o);
    }
    int BeginKeypadSurveyScan() override { return bound_->BeginKeypadSurveyScan(); }
    int EndKeypadSurveyScan() override { return bound_->EndKeypadSurveyScan(); }
    int StartVote(const KelvarinVote& v) override { return bound_->StartVote(v); }
    int PrepareVote(const KelvarinVote& v) override { return bound_->PrepareVote(v); }
    int BeginLiveVote() override { return bound_->BeginLiveVote(); }
    int PauseVote() override { return bound_->PauseVote(); }
    int ResumeVote() override { return bound_->ResumeVote(); }
    int EndVote(const std::string& endedText) override { return bound_->EndVote(endedText); }
    int GetChannelList(KelvarinChannelList& list) override { return bound_->GetChannelList(list); }
    int ChannelScan(int from, int to, int passes, int parameter) override {
        return bound_->ChannelScan(from, to, passes, parameter);
    }
    int ShowWinningKeypad(const std::string& hid, const KelvarinWinnerMessage& m) override {
        return bound_->ShowWinningKeypad(hid, m);
    }
    int SetPresenterEchoMessage(const std::string& hid, const std::string& text) override {
        return bound_->SetPresenterEchoMessage(hid, text);
    }
    int SetPresenterGotoMenu(const std::string& hid, const std::string& menu) override {
        return bound_->SetPresenterGotoMenu(hid, menu);
    }
    int SetPresenterMenu(const std::string& hid, const KelvarinPresenterMenu& menu) override {
        return bound_->SetPresenterMenu(hid, menu);
    }

private:
    template <class... A>
    void relay(KelvarinBase& from, BaseEvent<A...> KelvarinBase::*event) {
        (from.*event).connect([this, event](A... args) { (this->*event)(args...); });
    }
    int bind(KelvarinBase& to) {
        // One binding at a time: the other side lets go of what it held.
        KelvarinBase& other = &to == local_.get() ? *network_ : *local_;
        if (bound_ == &other && &other != &to) other.Disconnect();
        bound_ = &to;
        return BaseErrorCode::Success;
    }

    std::unique_ptr<KelvarinBase> local_;
    std::unique_ptr<KelvarinBase> network_;
    KelvarinBase* bound_ = nullptr;
};

}  // namespace

std::unique_ptr<KelvarinBase> CompositeBaseLibrary::createBase(LibraryGeneration generation) {
    auto local = local_.createBase(generation);
    if (!local) return network_.createBase(generation);
    return std::make_unique<CompositeBase>(std::move(local), network_.createBase(generation));
}

bool RoutedBasesControl::isLocal(const std::string& base) { return local_.find(base) != nullptr; }

SimError RoutedBasesControl::remote(const std::string& line, std::string* output) {
    return network_.control(line, output);
}

SimError RoutedBasesControl::Press(const std::string& base, int keypad, const std::string& keys) {
    if (isLocal(base)) return localControl_.Press(base, keypad, keys);
    return remote("press " + base + " " + std::to_string(keypad) + " " + keys);
}

SimError RoutedBasesControl::Crowd(const std::string& base, int keypads, const std::string& answers, int perSecond) {
    if (isLocal(base)) return localControl_.Crowd(base, keypads, answers, perSecond);
    return remote("crowd " + base + " " + std::to_string(keypads) + " " + replaceAll(answers, " ", "") + " " +
                  std::to_string(perSecond));
}

SimError RoutedBasesControl::MicRequest(const std::string& base, int keypad, bool withdraw) {
    if (isLocal(base)) return localControl_.MicRequest(base, keypad, withdraw);
    return remote(std::string(withdraw ? "withdraw " : "mic ") + base + " " + std::to_string(keypad));
}

SimError RoutedBasesControl::Text(const std::string& base, int keypad, const std::string& text) {
    if (isLocal(base)) return localControl_.Text(base, keypad, text);
    return remote("text " + base + " " + std::to_string(keypad) + " " + text);
}

SimError RoutedBasesControl::Fail(const std::string& base, const std::string& operation, int code) {
    if (isLocal(base)) return localControl_.Fail(base, operation, code);
    return remote("refuse " + base + " " + operation + " " + std::to_string(code));
}

SimError RoutedBasesControl::Disconnect(const std::string& base) {
    if (isLocal(base)) return localControl_.Disconnect(base);
    return remote("disconnect " + base);
}

SimError RoutedBasesControl::Reconnect(const std::string& base) {
    if (isLocal(base)) return localControl_.Reconnect(base);
    return remote("reconnect " + base);
}

SimResult<std::vector<std::string>> RoutedBasesControl::Bases() {
    auto all = localControl_.Bases();
    std::string there;
    if (remote("bases", &there).empty())
        for (const auto& b : split(there, "\n"))
            if (!b.empty()) all.value.push_back(b);
    return all;
}

SimResult<std::string> RoutedBasesControl::Screen(const std::string& base, int keypad) {
    if (isLocal(base)) return localControl_.Screen(base, keypad);
    std::string shown;
    const SimError e = remote("screen " + base + " " + std::to_string(keypad), &shown);
    return {e.empty() ? shown : "", e};
}

}  // namespace tlx
