#pragma once
// The base-station library for network bases: every call on a base object goes to the network
// base emulator as a request and waits for its reply with the loop turning (Scheduler::
// waitUntil), and the bases' events come back as frames and are raised on the loop, never inside
// the read that brought them. The connection is a FrameTransport (Qt sockets in the programs,
// an in-memory pair in tests).
//
// When the connection goes, every bound base reports code 5 ("disconnected - attempting auto
// reconnect") and the library tries again with growing pauses (firstRetryMs doubling up to
// maxRetryMs). Once the emulator answers again it binds each base afresh, restores what the
// controller had set on it (base and session configuration, radio, an open or prepared vote
// and its pause) and reports code 1 ("Auto reconnect success"), as a real library does after a
// lost base. Calls made while the link is down return code 4 at once.
//
// Bounded: a call is refused with code 6 while more than maxUnsentBytes wait to be written,
// the decoder holds one frame (wire::kMaxBodyBytes) at most, and more than maxQueuedEvents
// events not yet raised count as a broken link.
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "platform/net/BaseProtocol.h"
#include "ports/BaseLibrary.h"

namespace tlx {

class Scheduler;

// One stream connection to the emulator, opened and reopened on demand.
class FrameTransport {
public:
    virtual ~FrameTransport() = default;
    // Starts connecting; onOpen or onClosed follows later, on the loop.
    virtual void open() = 0;
    // Closes at once, without a callback.
    virtual void close() = 0;
    virtual void send(const std::string& bytes) = 0;
    // Bytes handed to send() that have not been written yet.
    virtual std::size_t unsent() const = 0;
    // Where it connects to, for messages.
    virtual std::string peer() const = 0;

    std::function<void()> onOpen;
    std::function<void(std::string_view)> onData;
    std::function<void(const std::string&)> onClosed;
};

class RemoteBase;

class NetBaseLibrary : public BaseLibrary {
public:
    NetBaseLibrary(Scheduler& scheduler, std::unique_ptr<FrameTransport> transport);
    ~NetBaseLibrary() override;
    NetBaseLibrary(const NetBaseLibrary&) = delete;
    NetBaseLibrary& operator=(const NetBaseLibrary&) = delete;

    std::unique_ptr<KelvarinBase> createBase(LibraryGeneration generation) override;
    // Bases on serial ports are never on the network.
    std::unique_ptr<KelvarinVPanel> createVPanel() override { return nullptr; }

    double connectTimeoutSeconds = 3.0;
    double replyTimeoutSeconds = 5.0;
    int firstRetryMs = 100;
    int maxRetryMs = 2000;
    std::size_t maxUnsentBytes = 1u << 20;
    std::size_t maxQueuedEvents = 100000;

    // One line of the emulator's control language; "" when it was carried out, else why not.
    // `output` gets what the command printed.
    std::string control(const std::string& line, std::string* output = nullptr);
    // Connects now (it connects by itself on the first call otherwise).
    void start();
    bool connected() const { return state_ == State::Up; }
    // How often the link came back after a loss.
    int reconnects() const { return reconnects_; }
    // Bound bases, and those of them with a vote open.
    std::size_t boundBases() const;
    std::size_t basesVoting() const;
    // What happens to the link, for the program's log.
    std::function<void(const std::string&)> note;

private:
    friend class RemoteBase;
    enum class State { Idle, Connecting, Greeting, Up, Waiting };

    // A request on a base object (handle 0: none); the reply's fields, or a status code.
    int transact(std::uint32_t handle, wire::Fields request, wire::Fields& reply, bool listing);
    void send(wire::Kind kind, std::uint32_t id, std::uint32_t handle, wire::Fields fields);
    void onOpen();
    void onData(std::string_view bytes);
    void lost(const std::string& why);
    void retry();
    void restore();
    void queueEvent(std::uint32_t handle, wire::Fields event);
    void drain();
    void say(const std::string& text) {
        if (note) note(text);
    }

    Scheduler& scheduler_;
    std::unique_ptr<FrameTransport> transport_;
    wire::FrameDecoder decoder_;
    State state_ = State::Idle;
    bool everUp_ = false;
    bool lostWhileUp_ = false;  // the next greeting is a reconnection
    int retryMs_ = 0;
    int reconnects_ = 0;
    std::uint64_t epoch_ = 0;  // counts connections; a reply of an older one is not waited for
    std::uint64_t retryPost_ = 0;
    std::uint64_t drainPost_ = 0;
    std::uint32_t nextId_ = 0;
    std::uint32_t nextHandle_ = 0;
    std::set<std::uint32_t> waiting_;
    std::map<std::uint32_t, wire::Fields> replies_;
    std::map<std::uint32_t, RemoteBase*> bases_;
    std::deque<std::pair<std::uint32_t, wire::Fields>> events_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tlx
