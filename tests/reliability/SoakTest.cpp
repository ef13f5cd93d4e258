// An eight-hour event on virtual time: a vote every two minutes with 4,095 keypads on three
// bases, the show moving between a title slide and the vote slide, display programs joining
// and leaving. Every vote reaches every display program that stays through it exactly once,
// and what the controller holds (heap, containers, log files, open files, pending timers) is
// the same at the end of the day as after its first hour.
#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <functional>

#include "EventWorld.h"
#include "platform/files/pptx/DeckBuilder.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

constexpr int kBases = 3;
constexpr int kPerBase = 1365;  // 4,095 keypads in all
constexpr int kVotes = 240;    // eight hours, one vote every two minutes
constexpr int kVoteEveryMs = 120000;

// A display program that counts what it hears by keypad, cheaply enough for a whole day.
struct CountingDisplay {
    explicit CountingDisplay(Controller& c) : client(std::make_unique<tallix>(c)), heard(kBases * kPerBase + 1, 0) {
        client->init("");
        client->FromTLXCtrl.connect([this](const std::string& s) {
            std::size_t pos = 0;
            while ((pos = s.find('[', pos)) != std::string::npos) {
                const std::size_t semi = s.find(';', pos);
                if (semi == std::string::npos) break;
                const int keypad = std::atoi(s.c_str() + pos + 1);
                if (keypad >= 1 && keypad < static_cast<int>(heard.size())) ++heard[static_cast<std::size_t>(keypad)];
                pos = semi;
            }
        });
    }
    void clear() { std::fill(heard.begin(), heard.end(), 0); }
    // Keypads heard other than exactly once.
    int wrong() const {
        int n = 0;
        for (std::size_t k = 1; k < heard.size(); ++k) n += heard[k] != 1;
        return n;
    }
    std::unique_ptr<tallix> client;
    std::vector<int> heard;
};

struct Figures {
    std::size_t heapBytes = 0;  // in use by the allocator (0 where it cannot tell: sanitizers)
    std::size_t logText = 0, bubbleLog = 0, driverLog = 0, commandBox = 0, dataBox = 0;
    std::size_t subscribers = 0, pendingTimers = 0, openFiles = 0;
    std::map<std::string, std::uintmax_t> files;  // data and temporary folders: name -> size
};

std::size_t openFiles() {
    std::size_t n = 0;
    for ([[maybe_unused]] const auto& e : fs::directory_iterator("/proc/self/fd")) ++n;
    return n;
}

void sizes(const fs::path& folder, std::map<std::string, std::uintmax_t>& out) {
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(folder, ec); it != fs::recursive_directory_iterator(); ++it)
        if (it->is_regular_file()) out[it->path().string()] = it->file_size();
}

// Other activities of an event run between the votes: each gets the world and the vote's
// number. The microphone requests and the text votes join here as their features arrive.
using Activity = std::function<void(EventWorld&, int vote)>;

}  // namespace

TEST(Soak, AnEightHourEventStaysFlatAndDeliversEveryVoteOnce) {
    const auto began = std::chrono::steady_clock::now();
    EventWorld w(kBases, kPerBase);
    pptx::DeckPlan plan;
    plan.slides = {{"Between the questions", "", {}, {}, {}},
                   {"Question", "Which one?", {}, {},
                    {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>4</Options>"}}}};
    w.openDeck(plan);
    w.wireAddIn();
    ASSERT_EQ(w.presentation.Begin(), "");
    const std::vector<Activity> activities;  // microphone requests and text votes: none yet

    std::vector<std::unique_ptr<CountingDisplay>> displays;
    displays.push_back(std::make_unique<CountingDisplay>(w.c()));
    Figures first, last;
    long long delivered = 0;
    auto measure = [&](Figures& f) {
        f.heapBytes = mallinfo2().uordblks;
        f.logText = w.main().txt_log.size();
        f.bubbleLog = w.glo().bubbleMessageLog.size();
        f.driverLog = w.kelvarin->oKVv5()->txtDebug.size();
        f.commandBox = w.main().txt_command.size();
        f.dataBox = w.main().txt_data.size();
        f.subscribers = w.main().FromCtrlForm.size();
        f.pendingTimers = w.scheduler.pending();
        f.openFiles = openFiles();
        f.files.clear();
        sizes(w.appData(), f.files);
        sizes(w.temp(), f.files);
    };

    const double dayBegan = w.scheduler.monotonicSeconds();
    for (int v = 0; v < kVotes; ++v) {
        // Display programs come and go: one joins every third vote, the oldest leaves when
        // four are there.
        if (v % 3 == 1) displays.push_back(std::make_unique<CountingDisplay>(w.c()));
        if (displays.size() > 3) displays.erase(displays.begin());
        for (auto& d : displays) d->clear();

        ASSERT_EQ(w.presentation.GoTo(2), "");
        w.scheduler.advance(100);
        w.openVote(*displays.back()->client);
        for (const auto& id : w.ids) ASSERT_TRUE(w.baseLibrary.crowd(id, kPerBase, "1,2,3,4", 300).ok);
        w.scheduler.advance(6000);
        w.closeVote(*displays.back()->client);
        w.scheduler.advance(500);
        for (auto& d : displays) {
            ASSERT_EQ(d->wrong(), 0) << "vote " << v << ": keypads not heard exactly once";
            delivered += kBases * kPerBase;
        }
        ASSERT_EQ(w.presentation.GoTo(1), "");
        for (const auto& a : activities) a(w, v);
        const double next = dayBegan + (v + 1) * (kVoteEveryMs / 1000.0);
        w.scheduler.advance(static_cast<int>((next - w.scheduler.monotonicSeconds()) * 1000.0));
        if (v == 29) measure(first);  // after the first hour
        if (v == kVotes - 1) measure(last);
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    EXPECT_GE(w.scheduler.monotonicSeconds() - dayBegan, 8 * 3600.0);
    EXPECT_FALSE(w.glo().ShuttingDown);

    EXPECT_LE(last.heapBytes, first.heapBytes + 256 * 1024) << "heap grew from " << first.heapBytes;
    EXPECT_LE(last.logText, 50000u);
    EXPECT_LE(last.driverLog, 20000u);
    EXPECT_EQ(fields(last.bubbleLog, last.commandBox, last.dataBox, last.subscribers, last.pendingTimers, last.openFiles),
              fields(first.bubbleLog, first.commandBox, first.dataBox, first.subscribers, first.pendingTimers,
                     first.openFiles));
    EXPECT_EQ(last.files, first.files);
    std::cout << "soak: " << kVotes << " votes of " << kBases * kPerBase << " keypads, " << delivered
              << " deliveries in " << seconds << " s; heap " << first.heapBytes << " -> " << last.heapBytes
              << " bytes, on-screen log " << last.logText << ", pending timers " << last.pendingTimers
              << ", open files " << last.openFiles << "\n";
}
