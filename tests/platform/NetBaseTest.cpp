// The network adapter against the emulator's hub over an in-memory connection, on virtual
// time: calls and events, the lost link (code 5, back-off, code 1, the vote restored), faults,
// bounds, and a broken peer closing only its own connection.
#include <gtest/gtest.h>

#include "platform/net/BaseHub.h"
#include "platform/net/CompositeBaseLibrary.h"
#include "platform/net/NetBaseLibrary.h"
#include "platform/sim/VirtualScheduler.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "platform/sim/basesim/SimBasesAdapter.h"

#include "NetBaseSupport.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// A connection to the hub whose bytes take 1 ms each way; with the emulator gone it is refused.
class MemoryTransport : public FrameTransport {
public:
    MemoryTransport(Scheduler& clock, std::unique_ptr<BaseHub>& hub) : clock_(clock), hub_(hub) {}
    void open() override {
        ++opens;
        const int gen = ++gen_;
        clock_.post(1, [this, gen] {
            if (gen != gen_) return;
            if (!hub_) {
                if (onClosed) onClosed("connection refused");
                return;
            }
            BaseHub::Link link;
            link.peer = "memory";
            link.send = [this, gen](const std::string& bytes) {
                clock_.post(1, [this, gen, bytes] {
                    if (gen == gen_ && onData) onData(bytes);
                });
            };
            link.close = [this, gen] {
                clock_.post(1, [this, gen] {
                    if (gen != gen_) return;
                    ++gen_;
                    if (onClosed) onClosed("closed by the emulator");
                });
            };
            conn_ = hub_->open(link);
            if (onOpen) onOpen();
        });
    }
    void close() override {
        ++gen_;
        if (hub_ && conn_) hub_->closed(conn_);
        conn_ = 0;
    }
    void send(const std::string& bytes) override {
        const int gen = gen_;
        const auto conn = conn_;
        clock_.post(1, [this, gen, conn, bytes] {
            if (gen == gen_ && hub_) hub_->data(conn, bytes);
        });
    }
    std::size_t unsent() const override { return unsentBytes; }
    std::string peer() const override { return "memory"; }
    // The emulator process dies: its connections go without a word.
    void serverDies() {
        hub_.reset();
        ++gen_;
        if (onClosed) onClosed("connection reset");
    }
    int opens = 0;
    std::size_t unsentBytes = 0;

private:
    Scheduler& clock_;
    std::unique_ptr<BaseHub>& hub_;
    int gen_ = 0;
    std::uint64_t conn_ = 0;
};

struct NetWorld {
    NetWorld() {
        startEmulator();
        auto t = std::make_unique<MemoryTransport>(clock, hub);
        transport = t.get();
        net = std::make_unique<NetBaseLibrary>(clock, std::move(t));
        net->replyTimeoutSeconds = 1.0;
    }
    void startEmulator() {
        emulated = std::make_unique<SimBaseLibrary>(clock);
        emulated->addBase(netBase(41, 50));
        hub = std::make_unique<BaseHub>(clock, *emulated);
    }
    // A base object bound to the network base, its votes and errors recorded.
    std::unique_ptr<KelvarinBase> bound() {
        auto b = net->createBase(LibraryGeneration::Prioritizer2);
        EXPECT_EQ(b->Connect("127.0.0.1|2020|1010"), 0);
        b->VoteReceived.connect([this](const KelvarinVote& v) { votes.push_back(std::to_string(v.SID) + ";" + v.VoteReplyData); });
        b->Error.connect([this](int code, const std::string&) { errors.push_back(code); });
        return b;
    }
    void run(int ms) { clock.advance(ms); }
    // The world after waiting so long, to read what came meanwhile.
    const NetWorld& after(int ms) {
        run(ms);
        return *this;
    }

    VirtualScheduler clock;
    std::unique_ptr<SimBaseLibrary> emulated;
    std::unique_ptr<BaseHub> hub;
    MemoryTransport* transport = nullptr;
    std::unique_ptr<NetBaseLibrary> net;
    std::vector<std::string> votes;
    std::vector<int> errors;
};

}  // namespace

TEST(NetBases, CallsReachTheEmulatedBaseAndItsVotesComeBackOnceEach) {
    NetWorld n;
    auto lister = n.net->createBase(LibraryGeneration::Prioritizer2);
    std::string list;
    ASSERT_EQ(lister->GetEthernetDevices(list), 0);
    EXPECT_EQ(list, kNetBase + ";127.0.0.1");
    auto b = n.bound();
    EXPECT_EQ(b->Connect("127.0.0.1|2020|1011"), BaseErrorCode::BaseNotFound);  // only the library's form
    std::string registry;
    ASSERT_EQ(b->GetRegistry(registry), 0);
    EXPECT_EQ(registry.substr(0, 23), "300300041;41|300300042;");
    ASSERT_EQ(b->StartVote(singleDigit()), 0);
    EXPECT_TRUE(n.emulated->station(0).voteOpen);
    EXPECT_EQ(n.hub->execute("crowd " + kNetBase + " 5 2 100").error, "");
    EXPECT_EQ(n.hub->execute("press " + kNetBase + " 48 3").error, "");
    EXPECT_EQ(n.after(200).votes, (std::vector<std::string>{"48;3", "41;2", "42;2", "43;2", "44;2", "45;2"}));
    EXPECT_EQ(b->EndVote("Thank you"), 0);
    EXPECT_EQ(fields(n.emulated->station(0).voteOpen, n.emulated->station(0).lastEndedText), "0|Thank you");
}

TEST(NetBases, ALostEmulatorIsCode5ThenRetriedWithGrowingPausesThenCode1WithTheVoteOpenAgain) {
    NetWorld n;
    auto b = n.bound();
    KelvarinSessionConfig session;
    session.PrimaryChannel = 24;
    ASSERT_EQ(b->SetSessionConfig(session), 0);
    ASSERT_EQ(b->StartVote(singleDigit()), 0);
    ASSERT_EQ(b->PauseVote(), 0);
    ASSERT_EQ(b->ResumeVote(), 0);
    n.hub->execute("press " + kNetBase + " 41 1");
    n.run(50);
    ASSERT_EQ(n.votes, (std::vector<std::string>{"41;1"}));

    n.transport->serverDies();
    EXPECT_EQ(n.after(5).errors, (std::vector<int>{BaseErrorCode::BaseDisconnectedReconnecting}));
    std::string registry;
    EXPECT_EQ(b->GetRegistry(registry), BaseErrorCode::BaseDisconnected);  // at once
    // Attempts at 100, 200, 400, 800 ms pauses (each refused), capped at 2 s.
    const int before = n.transport->opens;
    n.run(100 + 200 + 400 + 800 + 10);
    EXPECT_EQ(n.transport->opens - before, 4);
    n.run(1600 + 2000);
    EXPECT_EQ(fields(n.transport->opens - before, n.errors.size()), "6|1");  // reported once, not per attempt

    n.startEmulator();  // a fresh emulator: no vote open, nothing bound
    n.run(2100);
    EXPECT_EQ(fields(n.errors.size(), n.errors.back(), n.net->reconnects()), "2|1|1");
    const SimBaseStation& st = n.emulated->station(0);
    EXPECT_EQ(fields(st.voteOpen, st.setup.session.VoteAccepting, st.setup.session.PrimaryChannel, st.vote.VoteQuestionText),
              "1|1|24|Colours?");
    EXPECT_EQ(n.hub->execute("press " + kNetBase + " 42 4").error, "");
    EXPECT_EQ(n.after(50).votes, (std::vector<std::string>{"41;1", "42;4"}));
    // The pauses start small again after a good connection.
    n.transport->serverDies();
    n.startEmulator();
    EXPECT_EQ(n.after(150).errors, (std::vector<int>{5, 1, 5, 1}));
}

TEST(NetBases, AVotePausedWhenTheLinkWentIsPausedAgainAndAnEndedOneStaysEnded) {
    NetWorld n;
    auto paused = n.bound();
    ASSERT_EQ(paused->StartVote(singleDigit()), 0);
    ASSERT_EQ(paused->PauseVote(), 0);
    n.transport->serverDies();
    n.startEmulator();
    n.run(500);
    EXPECT_EQ(fields(n.emulated->station(0).voteOpen, n.emulated->station(0).setup.session.VoteAccepting), "1|0");
    ASSERT_EQ(paused->EndVote(""), 0);
    n.transport->serverDies();
    n.startEmulator();
    n.run(500);
    EXPECT_EQ(fields(n.emulated->station(0).voteOpen, n.emulated->station(0).callCount("StartVote")), "0|0");
    // A vote ended or replaced while the link is down is the driver's to catch up on: the
    // library must not open the old one again (a second start once the driver starts the new).
    for (bool replace : {false, true}) {
        ASSERT_EQ(paused->StartVote(singleDigit()), 0);
        n.transport->serverDies();
        n.run(5);
        EXPECT_EQ(replace ? paused->StartVote(singleDigit()) : paused->EndVote(""), BaseErrorCode::BaseDisconnected);
        n.startEmulator();
        n.run(500);
        EXPECT_EQ(fields(n.emulated->station(0).voteOpen, n.emulated->station(0).callCount("StartVote")), "0|0")
            << replace;
    }
}

TEST(NetBases, FaultsOfTheEmulatorReachTheCallerAsStatusCodes) {
    NetWorld n;
    auto b = n.bound();
    // A refused operation, once.
    EXPECT_EQ(n.hub->execute("refuse " + kNetBase + " StartVote 23").error, "");
    EXPECT_EQ(b->StartVote(singleDigit()), BaseErrorCode::BaseBusy);
    EXPECT_EQ(b->StartVote(singleDigit()), 0);
    EXPECT_NE(n.hub->execute("refuse " + kNetBase + " Explode 23").error, "");
    // Slow replies: within the reply limit they are waited for, beyond it the call times out.
    n.hub->execute("slow 500");
    std::string reg;
    EXPECT_EQ(b->GetRegistry(reg), 0);
    n.hub->execute("slow 1500");
    EXPECT_EQ(b->GetRegistry(reg), BaseErrorCode::RxCommsTimeOut);
    n.hub->execute("slow 0");
    n.run(1000);  // the late reply is dropped, the next call gets its own
    reg.clear();
    EXPECT_EQ(b->GetRegistry(reg), 0);
    EXPECT_FALSE(reg.empty());
    // A connection dropped on command is a lost link like any other.
    EXPECT_EQ(n.hub->execute("drop").error, "");
    EXPECT_EQ(n.after(20).errors, (std::vector<int>{5}));
    EXPECT_EQ(n.after(300).errors, (std::vector<int>{5, 1}));
    // More unwritten bytes than the bound: refused, not queued.
    n.transport->unsentBytes = n.net->maxUnsentBytes + 1;
    EXPECT_EQ(b->GetRegistry(reg), BaseErrorCode::TxCommsFailed);
}

TEST(NetBases, AMalformedOrForeignPeerIsDroppedAloneTheOthersServedOn) {
    NetWorld n;
    auto b = n.bound();
    ASSERT_EQ(n.hub->connections(), 1u);
    std::vector<std::string> toBad;
    bool badClosed = false;
    BaseHub::Link bad;
    bad.send = [&](const std::string& bytes) { toBad.push_back(bytes); };
    bad.close = [&] { badClosed = true; };
    const auto badId = n.hub->open(bad);
    ASSERT_EQ(n.hub->connections(), 2u);
    n.hub->data(badId, std::string("\0\0\0\x05garbage", 11));
    EXPECT_EQ(fields(badClosed, n.hub->connections()), "1|1");
    wire::FrameDecoder d;
    for (const auto& s : toBad) d.feed(s);
    wire::Frame f;
    ASSERT_EQ(d.next(f), wire::FrameDecoder::Status::Ready);  // the hello
    ASSERT_EQ(d.next(f), wire::FrameDecoder::Status::Ready);
    EXPECT_EQ(fields(f.kind == wire::Kind::Refused, f.fields.at(0).find("malformed frame") != std::string::npos), "1|1");
    // A request before the hello, and a request for no base object, are refused too.
    for (const wire::Frame& early : {wire::Frame{1, wire::Kind::Request, 1, 1, {"ResetBase"}}}) {
        bool closed = false;
        BaseHub::Link l;
        l.send = [](const std::string&) {};
        l.close = [&] { closed = true; };
        const auto id = n.hub->open(l);
        n.hub->data(id, wire::encodeFrame(early));
        EXPECT_TRUE(closed);
    }
    std::string reg;
    EXPECT_EQ(b->GetRegistry(reg), 0);
    EXPECT_TRUE(n.errors.empty());
}

TEST(NetBases, TheCompositeBindsUsbLocallyAndNetworkEntriesRemotelyAndDrivesBothKeypads) {
    NetWorld n;
    SimBaseLibrary local(n.clock);
    SimBaseSpec usb;
    usb.id = "100100100100";
    usb.keypads = {simDevice("300100001", 1)};
    local.addBase(usb);
    CompositeBaseLibrary composite(local, *n.net);
    auto lister = composite.createBase(LibraryGeneration::Prioritizer2);
    std::string usbList, netList;
    EXPECT_EQ(lister->GetUSBDevices(usbList), 0);
    EXPECT_EQ(lister->GetEthernetDevices(netList), 0);
    EXPECT_EQ(fields(usbList, netList), "100100100100|" + kNetBase + ";127.0.0.1");
    auto a = composite.createBase(LibraryGeneration::Prioritizer2);
    auto b = composite.createBase(LibraryGeneration::Prioritizer2);
    ASSERT_EQ(a->Connect("100 100 100 100"), 0);
    ASSERT_EQ(b->Connect("127.0.0.1|2020|1010"), 0);
    std::vector<std::string> got;
    for (auto* base : {a.get(), b.get()})
        base->VoteReceived.connect([&](const KelvarinVote& v) { got.push_back(v.HID + ";" + v.VoteReplyData); });
    ASSERT_EQ(a->StartVote(singleDigit()), 0);
    ASSERT_EQ(b->StartVote(singleDigit()), 0);
    EXPECT_TRUE(local.station(0).voteOpen && n.emulated->station(0).voteOpen);

    SimBasesAdapter localControl(local);
    RoutedBasesControl control(local, localControl, *n.net);
    EXPECT_EQ(control.Press("100100100100", 1, "1"), "");
    EXPECT_EQ(control.Press(kNetBase, 43, "2"), "");
    EXPECT_EQ(control.Text(kNetBase, 44, "two words"), "Keys two words not accepted by vote type 9");
    EXPECT_EQ(control.Press("999", 1, "1"), "Unknown base 999");
    const auto bases = control.Bases();
    EXPECT_EQ(bases.value, (std::vector<std::string>{"KELVARIN COREHUB G2;100100100100", "KELVARIN COREHUB G2;" + kNetBase}));
    n.run(50);
    EXPECT_EQ(got, (std::vector<std::string>{"300100001;1", "300300043;2"}));
}

TEST(BasesimScenario, LinesRunOnTimeAndAwaitMovesTheLaterOnesByTheTimeItWaited) {
    std::vector<std::string> problems;
    const auto lines = parseScenario(
        "# a vote\n1.5 crowd 100100100300 3 1 10\n0.5 await voteopen 10\nsoon press 1 1\n2 press 100100100300 50 4 # late\n",
        &problems);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(fields(lines[0].command, problems.size(), problems.at(0)), "await voteopen 10|1|line 4: soon press 1 1");

    std::vector<std::string> notes;  // outlives the hub, which reports into it to the end
    NetWorld n;
    n.hub->note = [&](const std::string& t) { notes.push_back(t); };
    n.hub->play(lines);
    auto b = n.bound();
    n.run(3000);
    EXPECT_TRUE(n.votes.empty());  // nothing while no vote is open
    ASSERT_EQ(b->StartVote(singleDigit()), 0);
    // The crowd starts 1 s after the vote opened.
    EXPECT_EQ(n.after(1000).votes, (std::vector<std::string>{}));
    EXPECT_EQ(n.after(300).votes.size(), 3u);
    n.run(600);
    EXPECT_EQ(fields(n.votes.back(), n.hub->scenarioFinished(), notes.back()),
              "50;4|1|scenario press 100100100300 50 4");
}
