// The vote intake's hot path on the largest system, 10 bases of 4,095 keypads: SendVotes must
// cost the same per vote however many keypads have voted so far and however long the
// active-keypad list is, and handing the buffer on must not copy the votes again.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "platform/headless/ConsoleAdapters.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/VirtualScheduler.h"
#include "presentation/PresentationModules.h"
#include "presentation/Tallix.h"
#include "presentation/VoteIntake.h"

namespace {

constexpr int kBases = 10;
constexpr int kKeypadsPerBase = 4095;
constexpr int kAllKeypads = kBases * kKeypadsPerBase;  // 40,950
constexpr int kTimedKeypads = 950;

// A started controller on virtual time whose port data lists enough bases of up to 4,095
// keypads for `systemKeypads` (ten for 40,950), keypad offsets 0, 4095, 8190, ...; every data
// folder in a temporary directory.
struct Intake {
    std::filesystem::path dir = std::filesystem::temp_directory_path() / "tlx-bench-intake";
    tlx::VirtualScheduler scheduler;
    tlx::SimDesktop desktop;
    tlx::SimPresentationApp presentation{scheduler, desktop};
    std::ostringstream sink;
    tlx::ConsoleDialogs dialogs{sink, false};
    tlx::ConsoleTray tray{sink};
    std::unique_ptr<tlx::Controller> c;

    explicit Intake(int systemKeypads = kAllKeypads) {
        desktop.setEnvironment("APPDATA", (dir / "appdata").string());
        desktop.setEnvironment("PROGRAMDATA", (dir / "programdata").string());
        desktop.setEnvironment("TEMP", (dir / "temp").string());
        c = std::make_unique<tlx::Controller>(tlx::Ports{scheduler, desktop, dialogs, tray, presentation});
        tlx::installPresentationSide(*c);
        tlx::Main(*c);
        scheduler.runDue();
        c->glo.bases.clear();
        for (int b = 0; b * kKeypadsPerBase < systemKeypads; ++b) {
            tlx::PortEntry e;
            e.port = std::to_string(100100100100LL + 100 * b);
            e.baseType = "KELVARIN COREHUB G2";
            e.gridLo = 1;
            e.gridHi = std::min(kKeypadsPerBase, systemKeypads - b * kKeypadsPerBase);
            e.offset = b * kKeypadsPerBase;
            c->glo.bases.push_back(e);
        }
        intake().resetForVote();
    }
    tlx::VoteIntakeModule& intake() { return static_cast<tlx::VoteIntakeModule&>(*c->voteIntake); }
    // The controller's timers hand the buffer on and send the transmit queue.
    void flush() { scheduler.advance(60); }
    // One SendVotes call: `count` votes from consecutive system keypads from `first` (wrapping
    // round all 40,950), as the base that holds the first of them delivers them.
    void send(int first, int count, const std::string& vote = "3") {
        std::vector<float> keypads;
        std::vector<std::string> votes;
        int base = (first - 1) / kKeypadsPerBase;
        for (int i = 0; i < count; ++i) {
            const int system = (first - 1 + i) % kAllKeypads + 1;
            if ((system - 1) / kKeypadsPerBase != base) {
                deliver(keypads, votes, base);
                base = (system - 1) / kKeypadsPerBase;
            }
            keypads.push_back(static_cast<float>(system - base * kKeypadsPerBase));
            votes.push_back(vote);
        }
        deliver(keypads, votes, base);
    }
    void deliver(std::vector<float>& keypads, std::vector<std::string>& votes, int base) {
        if (keypads.empty()) return;
        intake().SendVotes(keypads, votes, 0.0, base);
        keypads.clear();
        votes.clear();
    }
};

// ",1,2,...,n,"
std::string keypadsList(int n) {
    std::string s = ",";
    for (int k = 1; k <= n; ++k) s += std::to_string(k) + ",";
    return s;
}

// A batch as a driver hands it over. The timed votes come from the first base (identity 0),
// whose keypad offset is 0, so that SendVotes (which adds the offset in place) leaves the
// arrays as they were and they serve again without being made anew.
struct Batch {
    std::vector<float> keypads;
    std::vector<std::string> votes;
};

// Batches of `size` votes from the first base's keypads 1..kTimedKeypads, in turn.
std::vector<Batch> batches(int size) {
    std::vector<Batch> v;
    const int count = std::max(1, kTimedKeypads / size);
    for (int b = 0; b < count; ++b) {
        Batch batch;
        for (int i = 0; i < size; ++i) {
            batch.keypads.push_back(static_cast<float>((b * size + i) % kTimedKeypads + 1));
            batch.votes.push_back(std::to_string((b + i) % 4 + 1));
        }
        v.push_back(std::move(batch));
    }
    return v;
}

void perVote(benchmark::State& state, std::int64_t votes) {
    state.SetItemsProcessed(votes);
    state.counters["per_vote"] =
        benchmark::Counter(static_cast<double>(votes), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// range(0): keypads that voted before the timing starts (system keypads 951 and up, never
// the timed ones); range(1): the active-keypad list is empty (0), names only the 950 timed
// keypads (1), or all 40,950 (2); range(2): votes per SendVotes call. Each call's records go on to the transmit queue as the buffer
// fills (at 500 characters); the queue is emptied after each call, as the send timer does.
void BM_SendVotes(benchmark::State& state) {
    Intake in;
    const int before = static_cast<int>(state.range(0));
    const int size = static_cast<int>(state.range(2));
    if (state.range(1)) in.c->glo.ActiveKeypads = keypadsList(state.range(1) == 1 ? kTimedKeypads : kAllKeypads);
    for (int k = 0; k < before; k += 500) {
        in.send(kTimedKeypads + 1 + k, std::min(500, before - k));
        in.flush();
    }
    tlx::MainForm& form = *in.c->mainForm();
    auto work = batches(size);
    std::size_t next = 0;
    std::int64_t votes = 0;
    for (auto _ : state) {
        Batch& b = work[next];
        in.intake().SendVotes(b.keypads, b.votes, 0.0, 0);
        form.txt_data.clear();
        votes += size;
        if (++next == work.size()) next = 0;
    }
    in.flush();
    perVote(state, votes);
    state.counters["voters"] = static_cast<double>(in.intake().distinctVoters());
    state.counters["active_list_chars"] = static_cast<double>(in.c->glo.ActiveKeypads.text().size());
}
// 0 versus 40,000 voters so far; no active list, one of 950 keypads, one of all 40,950;
// batches of 1, 10, 100 and 1,000 votes.
BENCHMARK(BM_SendVotes)
    ->ArgNames({"voters_before", "active_list", "batch"})
    ->Args({0, 0, 10})
    ->Args({40000, 0, 10})
    ->Args({0, 1, 10})
    ->Args({0, 2, 10})
    ->Args({40000, 2, 10})
    ->Args({0, 0, 1})
    ->Args({0, 0, 100})
    ->Args({0, 0, 1000})
    ->Args({40000, 2, 1})
    ->Args({40000, 2, 1000});

// The whole road of a batch: SendVotes, the buffer timer, the transmit timer raising the
// outgoing-data event (which the automation class relays) and the TX log lines.
void BM_VoteToDisplayEvent(benchmark::State& state) {
    Intake in;
    const int size = static_cast<int>(state.range(0));
    std::size_t received = 0;
    in.c->mainForm()->FromCtrlForm.connect([&received](const std::string& sData) { received += sData.size(); });
    auto work = batches(size);
    std::size_t next = 0;
    std::int64_t votes = 0;
    for (auto _ : state) {
        Batch& b = work[next];
        in.intake().SendVotes(b.keypads, b.votes, 0.0, 0);
        in.flush();
        votes += size;
        if (++next == work.size()) next = 0;
    }
    perVote(state, votes);
    state.SetBytesProcessed(static_cast<std::int64_t>(received));
}
BENCHMARK(BM_VoteToDisplayEvent)->ArgName("batch")->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

// ---- the voter and active lists as plain text, searched literally (kept only here) ----

// SendVotes' checks with the voter list and the active list held as the texts they are shown
// as ("|12|" per voter, ",3,7,12,"), each test a search of the whole text: what the intake's
// sets stand in for.
struct LiteralIntake {
    std::string voters;
    std::string active;
    std::string buffer;
    std::string counter;
    long long accepted = 0;
    long long voterCount = 0;

    void SendVotes(std::vector<float>& keypads, std::vector<std::string>& votes, int offset, int highest) {
        std::string rejected;
        for (std::size_t i = 0; i < keypads.size(); ++i) {
            keypads[i] += static_cast<float>(offset);
            const std::string kp = tlx::numText(static_cast<double>(keypads[i]));
            if (keypads[i] > static_cast<float>(highest) ||
                (!active.empty() && active.find("," + kp + ",") == std::string::npos)) {
                rejected += "[" + kp + ";" + votes[i] + "],";
                continue;
            }
            ++accepted;
            buffer += "[" + kp + ";" + votes[i] + "],";
            if (voters.find("|" + kp + "|") == std::string::npos) {
                voters += "|" + kp + "|";
                counter = tlx::formatNumber(static_cast<double>(++voterCount), "###,##0");
            }
        }
        if (buffer.size() >= 500) buffer.clear();
        benchmark::DoNotOptimize(rejected.data());
    }
};

// Batches of 10 votes from keypads spread over the whole system, each batch from one base:
// (base index 0-based, local keypad numbers).
std::vector<std::pair<int, std::vector<float>>> spreadBatches(int systemKeypads) {
    std::vector<std::pair<int, std::vector<float>>> out;
    for (int j = 0; j < 1000; ++j) {
        const int first = static_cast<int>((static_cast<long long>(j) * 7919) % systemKeypads);
        const int base = first / kKeypadsPerBase;
        const int size = std::min(kKeypadsPerBase, systemKeypads - base * kKeypadsPerBase);
        std::vector<float> keypads;
        for (int i = 0; i < 10; ++i)
            keypads.push_back(static_cast<float>((first - base * kKeypadsPerBase + i * 37) % size + 1));
        out.emplace_back(base, std::move(keypads));
    }
    return out;
}

// range(0): keypads in the system, every one of them active (the active list names them all)
// and every one a voter already; the timed votes come from keypads spread over the system,
// 10 per SendVotes call. The cost per vote must not depend on the system's size.
void BM_IntakeOfAWholeSystem(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    Intake in(n);
    in.c->glo.ActiveKeypads = keypadsList(n);
    for (int k = 1; k <= n; k += 500) {
        in.send(k, std::min(500, n - k + 1));
        in.flush();
    }
    tlx::MainForm& form = *in.c->mainForm();
    auto work = spreadBatches(n);
    std::vector<std::string> votes(10, "2");
    std::size_t next = 0;
    std::int64_t count = 0;
    for (auto _ : state) {
        auto& [base, keypads] = work[next];
        in.intake().SendVotes(keypads, votes, 0.0, base);
        // SendVotes moved the keypads on by the base's offset; move them back for the next round.
        for (float& k : keypads) k -= static_cast<float>(base * kKeypadsPerBase);
        form.txt_data.clear();
        count += 10;
        if (++next == work.size()) next = 0;
    }
    in.flush();
    // A refused vote is logged with the whole active list: a figure with refusals in it
    // measures the log, not the intake (bases and port rows out of step).
    if (in.intake().acceptedTotal() != in.intake().receivedTotal())
        state.SkipWithError("votes were refused: the batches' bases do not match the port data");
    perVote(state, count);
    state.counters["voters"] = static_cast<double>(in.intake().distinctVoters());
}
BENCHMARK(BM_IntakeOfAWholeSystem)->ArgName("keypads")->Arg(100)->Arg(kAllKeypads);

void BM_LiteralIntakeOfAWholeSystem(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    LiteralIntake in;
    in.active = keypadsList(n);
    for (int k = 1; k <= n; ++k) in.voters += "|" + std::to_string(k) + "|";
    in.voterCount = n;
    auto work = spreadBatches(n);
    std::vector<std::string> votes(10, "2");
    std::size_t next = 0;
    std::int64_t count = 0;
    for (auto _ : state) {
        auto& [base, keypads] = work[next];
        const int offset = base * kKeypadsPerBase;
        in.SendVotes(keypads, votes, offset, offset + std::min(kKeypadsPerBase, n - offset));
        for (float& k : keypads) k -= static_cast<float>(offset);
        count += 10;
        if (++next == work.size()) next = 0;
    }
    perVote(state, count);
    state.counters["voters"] = static_cast<double>(in.voterCount);
}
BENCHMARK(BM_LiteralIntakeOfAWholeSystem)->ArgName("keypads")->Arg(100)->Arg(kAllKeypads);

}  // namespace
