// Loading a list of 10,000 participants from the files beside the presentation: names.txt
// and the participant-list workbook (.xlsx), as GETNAMES and LOADNAMES do.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "core/Controller.h"
#include "core/ParticipantNames.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/headless/ConsoleAdapters.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/VirtualScheduler.h"
#include "presentation/PresentationModules.h"
#include "presentation/Tallix.h"

#ifndef TLX_BENCH_SOURCE_DIR
#define TLX_BENCH_SOURCE_DIR "."
#endif

namespace {

namespace fs = std::filesystem;
constexpr int kParticipants = 10000;

// A started controller whose presentation program has a deck open in a folder of its own,
// beside which the list lies.
struct Show {
    fs::path dir;
    tlx::VirtualScheduler scheduler;
    tlx::SimDesktop desktop;
    tlx::SimPresentationApp presentation{scheduler, desktop};
    std::ostringstream sink;
    tlx::ConsoleDialogs dialogs{sink, false};
    tlx::ConsoleTray tray{sink};
    tlx::FileSpreadsheet sheets;
    std::unique_ptr<tlx::Controller> c;

    explicit Show(const std::string& name) : dir(fs::temp_directory_path() / ("tlx-bench-names-" + name)) {
        fs::remove_all(dir);
        fs::create_directories(dir / "show");
        desktop.setEnvironment("APPDATA", (dir / "appdata").string());
        desktop.setEnvironment("PROGRAMDATA", (dir / "programdata").string());
        desktop.setEnvironment("TEMP", (dir / "temp").string());
        fs::copy_file(fs::path(TLX_BENCH_SOURCE_DIR) / "examples" / "decks" / "demo.pptx", dir / "show" / "demo.pptx");
        presentation.start();
        c = std::make_unique<tlx::Controller>(tlx::Ports{scheduler, desktop, dialogs, tray, presentation});
        tlx::installPresentationSide(*c);
        c->spreadsheet = &sheets;
        tlx::Main(*c);
        scheduler.runDue();
        presentation.Open((dir / "show" / "demo.pptx").string());
    }
    ~Show() {
        c.reset();
        std::error_code ec;
        fs::remove_all(dir, ec);
    }
};

void load(benchmark::State& state, Show& show) {
    std::string status;
    for (auto _ : state) {
        tlx::LoadParticipantNames(*show.c, status);
        benchmark::DoNotOptimize(show.c->glo.participants.data());
    }
    if (show.c->glo.participants.size() != kParticipants) state.SkipWithError(("read only: " + status).c_str());
    state.counters["participants"] = static_cast<double>(show.c->glo.participants.size());
}

void BM_LoadParticipants_NamesTxt(benchmark::State& state) {
    Show show("txt");
    {
        std::ofstream out(show.dir / "show" / "names.txt", std::ios::binary);
        for (int k = 1; k <= kParticipants; ++k) out << k << ",Participant Number " << k << "," << (k % 3 + 1) << "\r\n";
    }
    load(state, show);
}
BENCHMARK(BM_LoadParticipants_NamesTxt)->Unit(benchmark::kMillisecond);

void BM_LoadParticipants_Xlsx(benchmark::State& state) {
    Show show("xlsx");
    std::vector<tlx::SheetRow> rows;
    rows.push_back({std::string("Keypad"), std::string("Name"), std::string("Weighting")});
    for (int k = 1; k <= kParticipants; ++k)
        rows.push_back({static_cast<double>(k), "Participant Number " + std::to_string(k), static_cast<double>(k % 3 + 1)});
    tlx::writeXlsxWorkbook(show.dir / "show" / "tallix Participant list.xlsx", rows, false);
    load(state, show);
}
BENCHMARK(BM_LoadParticipants_Xlsx)->Unit(benchmark::kMillisecond);

}  // namespace
