#include "platform/net/NetBaseLibrary.h"

#include <algorithm>
#include <optional>

#include "platform/net/BaseCalls.h"
#include "ports/Scheduler.h"

namespace tlx {

using wire::Fields;
using wire::Kind;

// A base object whose calls go to the emulator. It remembers what the controller set on its
// base so that the library can restore it after a reconnection.
class RemoteBase : public KelvarinBase {
public:
    RemoteBase(NetBaseLibrary& lib, std::uint32_t handle) : lib_(&lib), alive_(lib.alive_), handle_(handle) {
        lib.bases_[handle] = this;
    }
    ~RemoteBase() override {
        if (alive_.expired()) return;
        lib_->bases_.erase(handle_);
        // The emulator lets go of its object; nobody waits for the reply.
        if (lib_->state_ == NetBaseLibrary::State::Up) lib_->send(Kind::Request, 0, handle_, {"Disconnect"});
    }

    int GetUSBDevices(std::string& list) override { return call("GetUSBDevices", &KelvarinBase::GetUSBDevices, list); }
    int GetEthernetDevices(std::string& list) override {
        return call("GetEthernetDevices", &KelvarinBase::GetEthernetDevices, list);
    }
    int Connect(const std::string& connection) override {
        const int rc = call("Connect", &KelvarinBase::Connect, connection);
        if (rc == BaseErrorCode::Success) {
            forget();
            connection_ = connection;
        }
        return rc;
    }
    int Disconnect() override {
        const int rc = call("Disconnect", &KelvarinBase::Disconnect);
        connection_.reset();
        forget();
        return rc;
    }
    int GetBaseConfig(KelvarinBaseConfig& c) override { return call("GetBaseConfig", &KelvarinBase::GetBaseConfig, c); }
    int SetBaseConfig(const KelvarinBaseConfig& c) override {
        return remember(call("SetBaseConfig", &KelvarinBase::SetBaseConfig, c), [&] { baseConfig_ = c; });
    }
    int GetSessionConfig(KelvarinSessionConfig& c) override {
        return call("GetSessionConfig", &KelvarinBase::GetSessionConfig, c);
    }
    int SetSessionConfig(const KelvarinSessionConfig& c) override {
        return remember(call("SetSessionConfig", &KelvarinBase::SetSessionConfig, c), [&] { session_ = c; });
    }
    int RadioEnable(bool enable) override {
        return remember(call("RadioEnable", &KelvarinBase::RadioEnable, enable), [&] { radio_ = enable; });
    }
    int RadioStatus(int& status) override { return call("RadioStatus", &KelvarinBase::RadioStatus, status); }
    int ResetBase() override {
        return remember(call("ResetBase", &KelvarinBase::ResetBase), [&] {
            session_.reset();
            vote_.reset();
            prepared_.reset();
        });
    }
    int RebootRadio() override { return call("RebootRadio", &KelvarinBase::RebootRadio); }

    int GetKeypadConfig(const std::string& hid, KelvarinKeypadConfig& c) override {
        return call("GetKeypadConfig", &KelvarinBase::GetKeypadConfig, hid, c);
    }
    int SetKeypadConfig(const KelvarinKeypadConfig& c) override {
        return call("SetKeypadConfig", &KelvarinBase::SetKeypadConfig, c);
    }
    int GetRegistry(std::string& registry) override { return call("GetRegistry", &KelvarinBase::GetRegistry, registry); }
    int GetKeypadFromRegistry(int sid, KelvarinKeypadConfig& c) override {
        return call("GetKeypadFromRegistry", &KelvarinBase::GetKeypadFromRegistry, sid, c);
    }
    int AddKeypadToRegistry(const std::string& hid, int sid) override {
        return call("AddKeypadToRegistry", &KelvarinBase::AddKeypadToRegistry, hid, sid);
    }
    int DeleteKeypadFromRegistry(const std::string& hid) override {
        return call("DeleteKeypadFromRegistry", &KelvarinBase::DeleteKeypadFromRegistry, hid);
    }
    int DeleteRegistry() override { return call("DeleteRegistry", &KelvarinBase::DeleteRegistry); }
    int UpdateRegistryFlashRIT(const std::string& hid, int flag) override {
        return call("UpdateRegistryFlashRIT", &KelvarinBase::UpdateRegistryFlashRIT, hid, flag);
    }

    int StartAudio(const std::string& hid, const KelvarinAudioOptions& o) override {
        return call("StartAudio", &KelvarinBase::StartAudio, hid, o);
    }
    int StopAudio() override { return call("StopAudio", &KelvarinBase::StopAudio); }

    int PrepareKeypadSurveyScan(const std::vector<std::string>& hids, const KelvarinSurveyOptions& o) override {
        return call("PrepareKeypadSurveyScan", &KelvarinBase::PrepareKeypadSurveyScan, hids, o);
    }
    int BeginKeypadSurveyScan() override { return call("BeginKeypadSurveyScan", &KelvarinBase::BeginKeypadSurveyScan); }
    int EndKeypadSurveyScan() override { return call("EndKeypadSurveyScan", &KelvarinBase::EndKeypadSurveyScan); }

    int StartVote(const KelvarinVote& v) override {
        return rememberVote(call("StartVote", &KelvarinBase::StartVote, v), [&] {
            vote_ = v;
            paused_ = false;
        });
    }
    int PrepareVote(const KelvarinVote& v) override {
        return rememberVote(call("PrepareVote", &KelvarinBase::PrepareVote, v), [&] { prepared_ = v; });
    }
    int BeginLiveVote() override {
        return rememberVote(call("BeginLiveVote", &KelvarinBase::BeginLiveVote), [&] {
            vote_ = prepared_;
            prepared_.reset();
            paused_ = false;
        });
    }
    int PauseVote() override { return remember(call("PauseVote", &KelvarinBase::PauseVote), [&] { paused_ = true; }); }
    int ResumeVote() override {
        return remember(call("ResumeVote", &KelvarinBase::ResumeVote), [&] { paused_ = false; });
    }
    int EndVote(const std::string& endedText) override {
        return rememberVote(call("EndVote", &KelvarinBase::EndVote, endedText), [&] { vote_.reset(); });
    }

    int GetChannelList(KelvarinChannelList& list) override {
        return call("GetChannelList", &KelvarinBase::GetChannelList, list);
    }
    int ChannelScan(int from, int to, int passes, int parameter) override {
        return call("ChannelScan", &KelvarinBase::ChannelScan, from, to, passes, parameter);
    }
    int ShowWinningKeypad(const std::string& hid, const KelvarinWinnerMessage& m) override {
        return call("ShowWinningKeypad", &KelvarinBase::ShowWinningKeypad, hid, m);
    }
    int SetPresenterEchoMessage(const std::string& hid, const std::string& text) override {
        return call("SetPresenterEchoMessage", &KelvarinBase::SetPresenterEchoMessage, hid, text);
    }
    int SetPresenterGotoMenu(const std::string& hid, const std::string& menu) override {
        return call("SetPresenterGotoMenu", &KelvarinBase::SetPresenterGotoMenu, hid, menu);
    }
    int SetPresenterMenu(const std::string& hid, const KelvarinPresenterMenu& menu) override {
        return call("SetPresenterMenu", &KelvarinBase::SetPresenterMenu, hid, menu);
    }

    bool bound() const { return connection_.has_value(); }
    bool voting() const { return vote_.has_value(); }

    // Binds the base again on a new connection and puts back what the controller had set.
    int restore() {
        if (!connection_) return BaseErrorCode::Success;
        const std::string connection = *connection_;
        int rc = call("Connect", &KelvarinBase::Connect, connection);
        if (rc == BaseErrorCode::Success && baseConfig_)
            rc = call("SetBaseConfig", &KelvarinBase::SetBaseConfig, *baseConfig_);
        if (rc == BaseErrorCode::Success && session_)
            rc = call("SetSessionConfig", &KelvarinBase::SetSessionConfig, *session_);
        if (rc == BaseErrorCode::Success && radio_) {
            const bool on = true;
            rc = call("RadioEnable", &KelvarinBase::RadioEnable, on);
        }
        if (rc == BaseErrorCode::Success && prepared_)
            rc = call("PrepareVote", &KelvarinBase::PrepareVote, *prepared_);
        if (rc == BaseErrorCode::Success && vote_) rc = call("StartVote", &KelvarinBase::StartVote, *vote_);
        if (rc == BaseErrorCode::Success && vote_ && paused_) rc = call("PauseVote", &KelvarinBase::PauseVote);
        return rc;
    }

private:
    template <class... A, class... P>
    int call(const char* operation, int (KelvarinBase::*fn)(A...), P&... args) {
        if (alive_.expired()) return BaseErrorCode::BaseNotFound;
        const std::string op = operation;
        const bool listing = op == "GetUSBDevices" || op == "GetEthernetDevices" || op == "Connect";
        Fields reply;
        const int rc = lib_->transact(handle_, wire::requestOf(operation, fn, args...), reply, listing);
        if (rc != BaseErrorCode::Success) return rc;
        int status = BaseErrorCode::UnknownError;
        if (reply.empty() || !wire::decodeValue(reply[0], status)) return BaseErrorCode::UnknownError;
        if (status == BaseErrorCode::Success && !wire::readResults(reply, fn, args...))
            return BaseErrorCode::UnknownError;
        return status;
    }
    template <class F>
    static int remember(int rc, F&& keep) {
        if (rc == BaseErrorCode::Success) keep();
        return rc;
    }
    // A vote started, prepared or ended while the link is down is not put back by restore():
    // the driver starts or ends it itself once the base is back, so restoring the vote before
    // it would open one nobody runs any more, or start the new one a second time.
    template <class F>
    int rememberVote(int rc, F&& keep) {
        if (rc == BaseErrorCode::BaseDisconnected || rc == BaseErrorCode::BaseDisconnectedReconnecting) {
            vote_.reset();
            prepared_.reset();
            paused_ = false;
        }
        return remember(rc, keep);
    }
    void forget() {
        baseConfig_.reset();
        session_.reset();
        radio_ = false;
        vote_.reset();
        prepared_.reset();
        paused_ = false;
    }

    NetBaseLibrary* lib_;
    std::weak_ptr<bool> alive_;
    std::uint32_t handle_;
    std::optional<std::string> connection_;
    std::optional<KelvarinBaseConfig> baseConfig_;
    std::optional<KelvarinSessionConfig> session_;
    bool radio_ = false;
    std::optional<KelvarinVote> vote_;
    std::optional<KelvarinVote> prepared_;
    bool paused_ = false;
};

NetBaseLibrary::NetBaseLibrary(Scheduler& scheduler, std::unique_ptr<FrameTransport> transport)
    : scheduler_(scheduler), transport_(std::move(transport)) {
    retryMs_ = firstRetryMs;
    transport_->onOpen = [this] { onOpen(); };
    transport_->onData = [this](std::string_view bytes) { onData(bytes); };
    transport_->onClosed = [this](const std::string& why) { lost(why); };
}

NetBaseLibrary::~NetBaseLibrary() {
    alive_.reset();
    if (retryPost_) scheduler_.cancel(retryPost_);
    if (drainPost_) scheduler_.cancel(drainPost_);
    transport_->onOpen = nullptr;
    transport_->onData = nullptr;
    transport_->onClosed = nullptr;
    transport_->close();
}

std::unique_ptr<KelvarinBase> NetBaseLibrary::createBase(LibraryGeneration) {
    return std::make_unique<RemoteBase>(*this, ++nextHandle_);
}

void NetBaseLibrary::start() {
    if (state_ != State::Idle) return;
    state_ = State::Connecting;
    transport_->open();
}

std::size_t NetBaseLibrary::boundBases() const {
    return static_cast<std::size_t>(std::count_if(bases_.begin(), bases_.end(), [](const auto& b) { return b.second->bound(); }));
}

std::size_t NetBaseLibrary::basesVoting() const {
    return static_cast<std::size_t>(std::count_if(bases_.begin(), bases_.end(), [](const auto& b) {
        return b.second->bound() && b.second->voting();
    }));
}

void NetBaseLibrary::send(Kind kind, std::uint32_t id, std::uint32_t handle, Fields fields) {
    wire::Frame f;
    f.kind = kind;
    f.id = id;
    f.handle = handle;
    f.fields = std::move(fields);
    transport_->send(wire::encodeFrame(f));
}

int NetBaseLibrary::transact(std::uint32_t handle, Fields request, Fields& reply, bool listing) {
    start();
    if (state_ != State::Up && !everUp_ && state_ != State::Waiting)
        scheduler_.waitUntil([this] { return state_ == State::Up || state_ == State::Waiting; }, connectTimeoutSeconds);
    if (state_ != State::Up) return listing ? BaseErrorCode::BaseNotFound : BaseErrorCode::BaseDisconnected;
    if (transport_->unsent() > maxUnsentBytes) return BaseErrorCode::TxCommsFailed;
    const std::uint32_t id = ++nextId_;
    const std::uint64_t epoch = epoch_;
    waiting_.insert(id);
    send(Kind::Request, id, handle, std::move(request));
    scheduler_.waitUntil([&] { return replies_.count(id) != 0 || epoch_ != epoch; }, replyTimeoutSeconds);
    waiting_.erase(id);
    const auto it = replies_.find(id);
    if (it == replies_.end()) return epoch_ != epoch ? BaseErrorCode::RxCommsFailed : BaseErrorCode::RxCommsTimeOut;
    reply = std::move(it->second);
    replies_.erase(it);
    return BaseErrorCode::Success;
}

std::string NetBaseLibrary::control(const std::string& line, std::string* output) {
    start();
    if (state_ != State::Up && !everUp_)
        scheduler_.waitUntil([this] { return state_ == State::Up || state_ == State::Waiting; }, connectTimeoutSeconds);
    if (state_ != State::Up) return "the network base emulator at " + transport_->peer() + " is not connected";
    const std::uint32_t id = ++nextId_;
    const std::uint64_t epoch = epoch_;
    waiting_.insert(id);
    send(Kind::Control, id, 0, {line});
    scheduler_.waitUntil([&] { return replies_.count(id) != 0 || epoch_ != epoch; }, replyTimeoutSeconds);
    waiting_.erase(id);
    const auto it = replies_.find(id);
    if (it == replies_.end()) return "the network base emulator did not answer";
    const Fields r = std::move(it->second);
    replies_.erase(it);
    if (output && r.size() > 1) *output = r[1];
    return r.empty() ? "the network base emulator gave no answer" : r[0];
}

void NetBaseLibrary::onOpen() {
    state_ = State::Greeting;
    decoder_ = wire::FrameDecoder{};
    send(Kind::Hello, 0, 0, {wire::kHelloMagic, std::to_string(wire::kBaseProtocolVersion), "tlxctrl"});
}

void NetBaseLibrary::onData(std::string_view bytes) {
    decoder_.feed(bytes);
    wire::Frame f;
    while (true) {
        const auto status = decoder_.next(f);
        if (status == wire::FrameDecoder::Status::NeedMore) return;
        if (status != wire::FrameDecoder::Status::Ready) {
            if (status == wire::FrameDecoder::Status::WrongVersion)
                send(Kind::Refused, 0, 0, {wire::versionRefusal(decoder_.theirVersion(), "tlxctrl")});
            lost("the emulator sent a frame that cannot be read: " + decoder_.error());
            return;
        }
        switch (f.kind) {
            case Kind::Hello:
                if (f.fields.empty() || f.fields[0] != wire::kHelloMagic) {
                    lost("the peer is not a network base emulator");
                    return;
                }
                if (state_ == State::Greeting) {
                    state_ = State::Up;
                    everUp_ = true;
                    retryMs_ = firstRetryMs;
                    say("connected to the network base emulator at " + transport_->peer());
                    if (lostWhileUp_) {
                        lostWhileUp_ = false;
                        ++reconnects_;
                        // Not inside this read: restoring makes calls that wait for replies.
                        scheduler_.post(0, [this, alive = std::weak_ptr<bool>(alive_)] {
                            if (!alive.expired()) restore();
                        });
                    }
                }
                break;
            case Kind::Reply:
            case Kind::ControlReply:
                if (waiting_.count(f.id)) replies_[f.id] = std::move(f.fields);
                break;
            case Kind::Event:
                queueEvent(f.handle, std::move(f.fields));
                if (events_.size() > maxQueuedEvents) {
                    events_.clear();
                    lost("more than " + std::to_string(maxQueuedEvents) + " events waiting");
                    return;
                }
                break;
            case Kind::Refused:
                lost("the emulator refused the connection: " + (f.fields.empty() ? std::string() : f.fields[0]));
                return;
            case Kind::Request:
            case Kind::Control:
                break;  // the emulator asks nothing of us
        }
    }
}

void NetBaseLibrary::lost(const std::string& why) {
    if (state_ == State::Idle || state_ == State::Waiting) return;
    const bool wasUp = state_ == State::Up;
    transport_->close();
    ++epoch_;
    replies_.clear();
    state_ = State::Waiting;
    if (wasUp) {
        lostWhileUp_ = true;
        say("lost the network base emulator at " + transport_->peer() + ": " + why);
        for (const auto& [handle, base] : bases_)
            if (base->bound())
                queueEvent(handle, {"Error", wire::encodeValue(BaseErrorCode::BaseDisconnectedReconnecting), ""});
    }
    retryPost_ = scheduler_.post(retryMs_, [this] {
        retryPost_ = 0;
        retry();
    });
    retryMs_ = std::min(maxRetryMs, retryMs_ * 2);
}

void NetBaseLibrary::retry() {
    if (state_ != State::Waiting) return;
    state_ = State::Connecting;
    transport_->open();
}

void NetBaseLibrary::restore() {
    if (state_ != State::Up) return;
    std::vector<std::uint32_t> handles;
    for (const auto& [handle, base] : bases_)
        if (base->bound()) handles.push_back(handle);
    for (std::uint32_t h : handles) {
        auto it = bases_.find(h);
        if (it == bases_.end()) continue;
        const int rc = it->second->restore();
        if (state_ != State::Up) return;  // lost again: the next greeting restores
        if (rc == BaseErrorCode::Success)
            queueEvent(h, {"Error", wire::encodeValue(BaseErrorCode::AutoReconnectSuccess), ""});
        else
            queueEvent(h, {"Error", wire::encodeValue(rc), "reconnect"});
    }
}

void NetBaseLibrary::queueEvent(std::uint32_t handle, Fields event) {
    events_.emplace_back(handle, std::move(event));
    if (drainPost_) return;
    drainPost_ = scheduler_.post(0, [this] {
        drainPost_ = 0;
        drain();
    });
}

void NetBaseLibrary::drain() {
    const std::weak_ptr<bool> alive = alive_;
    while (!events_.empty() && !alive.expired()) {
        auto [handle, event] = std::move(events_.front());
        events_.pop_front();
        const auto it = bases_.find(handle);
        if (it != bases_.end()) wire::raiseEvent(*it->second, event);
    }
}

}  // namespace tlx
