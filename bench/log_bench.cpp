// The on-screen log over a whole event: adding a line must cost the same whether the log
// is empty or full at its 50,000-character cap.
#include <benchmark/benchmark.h>

#include <sstream>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/TextLog.h"
#include "platform/headless/ConsoleAdapters.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/VirtualScheduler.h"
#include "presentation/PresentationModules.h"
#include "presentation/Tallix.h"

namespace {

void BM_TextLogPrepend(benchmark::State& state) {
    tlx::TextLog log;
    const std::string line(static_cast<std::size_t>(state.range(1)), 'x');
    for (int i = 0; i < state.range(0); ++i) log.prepend(line);
    for (auto _ : state) {
        log.prepend(line);
        benchmark::DoNotOptimize(log.size());
    }
    state.counters["logChars"] = static_cast<double>(log.size());
}
// Empty log versus a log at its cap, short and long lines.
BENCHMARK(BM_TextLogPrepend)->Args({0, 60})->Args({2000, 60})->Args({0, 600})->Args({2000, 600});

void BM_LogEvent(benchmark::State& state) {
    tlx::VirtualScheduler scheduler;
    tlx::SimDesktop desktop;
    desktop.setEnvironment("APPDATA", "/tmp/tlx-bench/appdata");
    desktop.setEnvironment("PROGRAMDATA", "/tmp/tlx-bench/programdata");
    desktop.setEnvironment("TEMP", "/tmp/tlx-bench/temp");
    tlx::SimPresentationApp presentation(scheduler, desktop);
    std::ostringstream sink;
    tlx::ConsoleDialogs dialogs(sink, false);
    tlx::ConsoleTray tray(sink);
    tlx::Controller c(tlx::Ports{scheduler, desktop, dialogs, tray, presentation});
    tlx::installPresentationSide(c);
    tlx::Main(c);
    auto& main = *c.mainForm();
    for (int i = 0; i < state.range(0); ++i) main.LogEvent("[12;3],[7;1],[45;-2],", tlx::LOG_TX);
    for (auto _ : state) main.LogEvent("[12;3],[7;1],[45;-2],", tlx::LOG_TX);
    state.SetItemsProcessed(state.iterations());
    // However many lines went in, the log holds at most its window.
    state.counters["log_chars"] = static_cast<double>(main.txt_log.size());
}
BENCHMARK(BM_LogEvent)->Arg(0)->Arg(5000);

}  // namespace
