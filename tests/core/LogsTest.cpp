#include <gtest/gtest.h>

#include <filesystem>

#include "core/Controller.h"
#include "core/Logs.h"
#include "core/MainForm.h"
#include "core/SmallForms.h"
#include "core/TextLog.h"
#include "core/Text.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {
struct TracingWorld : TestWorld {
    TracingWorld() {
        glo().traceToFile = true;
        scheduler.setWallClock(DateTime{2026, 11, 22, 9, 30, 0, 0});
    }
};
}  // namespace

TEST(TraceFile, LineFormatsAndDailyNamesOfTheTraceVoteTraceAndDebugFiles) {
    TracingWorld w;
    w.c().logs.trace(1.5f, "hello", "Controller", "GlobalInitSub");
    w.scheduler.advance(2500);
    w.c().logs.trace(0.0f, "again", "frmInit", "cmdOK_Click");
    const fs::path file = w.temp() / "tlx_debug_2026_11_22.log";
    ASSERT_TRUE(fs::exists(file));
    const auto lines = split(readFile(file), "\r\n");
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0],
              "[22/11/26 09:30:00.000]  | 000.000 | tlxctrl.exe (1.0.0) | 1.500 | [Controller] | [GlobalInitSub] | hello");
    EXPECT_EQ(lines[1],
              "[22/11/26 09:30:02.500]  | 002.500 | tlxctrl.exe (1.0.0) | 0.000 | [frmInit] | [cmdOK_Click] | again");
    // A new day starts a new file.
    w.scheduler.setWallClock(DateTime{2026, 11, 23, 0, 0, 1, 0});
    w.c().logs.trace("tomorrow", "Controller", "Main");
    EXPECT_TRUE(fs::exists(w.temp() / "tlx_debug_2026_11_23.log"));
    // The vote data trace and the debug file: a stamp and the line.
    w.c().logs.voteTrace("VOTE RX - ACCEPTED [1;2],");
    EXPECT_EQ(readFile(w.temp() / "tlx_vote_data_debug_2026_11_23.log"),
              "[23/11/26 00:00:01.000]  | VOTE RX - ACCEPTED [1;2],\r\n");
    w.c().resolveDataFolders();
    w.c().logs.debugFile("first");
    w.c().logs.debugFile("second");
    const auto debug = split(readFile(w.appData() / "tallix" / "debug.log"), "\r\n");
    ASSERT_GE(debug.size(), 2u);
    EXPECT_EQ(fields(endsWith(debug[0], "] - first"), endsWith(debug[1], "] - second")), "1|1");
}

// Main forces the switch on before anything can read the setting, so the lines before
// GlobalInitSub reads it are traced on every start; from then on the switch decides.
TEST(TraceFile, WithTheSwitchOffOrAbsentOnlyTheForcedLinesBeforeTheSettingIsReadAreWritten) {
    for (const char* value : std::initializer_list<const char*>{"0", nullptr, "7"}) {
        TestWorld w;
        if (value) w.writeSettings("DEBUG", "LOGEVENTS TO FILE", value);
        w.start();
        w.c().logs.voteTrace("x");
        std::vector<std::string> texts;
        for (const auto& l : w.traceLines()) texts.push_back(l.substr(l.rfind("] | ") + 4));
        const bool on = value && std::string(value) == "7";  // any number but 0 switches it on
        EXPECT_EQ(fields(w.glo().traceToFile, fs::exists(w.c().logs.voteTraceFilePath())), fields(on, on));
        if (on) {
            EXPECT_GT(texts.size(), 3u);
            continue;
        }
        EXPECT_EQ(texts, (std::vector<std::string>{"Initial Load from Main Sub - BEGIN, glo.InitialisedState=0",
                                                   "Set oTLX = New tallix, glo.InitialisedState=0",
                                                   "Begin - glo.InitialisedState = 0"}))
            << (value ? value : "absent");
    }
}

TEST(Balloons, KeypadSetupTitleTheMessageLogAndItsWindowRefreshedWhenItGrows) {
    TestWorld w;
    w.start();
    w.c().logs.balloon("Base gone\r\nIt may be necessary to remove and plug", 3);
    w.c().logs.balloon("Hello", 1);
    ASSERT_EQ(w.tray.balloons.size(), 2u);
    EXPECT_EQ(fields(w.tray.balloons[0].title, w.tray.balloons[0].iconKind), "KEYPAD SETUP|3");
    EXPECT_NE(w.tray.balloons[1].title, "KEYPAD SETUP");
    const std::string rule(67, '-');
    EXPECT_EQ(w.glo().bubbleMessageLog, "Base gone\r\nIt may be necessary to remove and plug\r\n" + rule +
                                            "\r\nHello\r\n" + rule + "\r\n");
    auto& form = w.c().forms.load<BubbleMessageLogForm>(w.c());
    EXPECT_EQ(form.txtLog, w.glo().bubbleMessageLog);
    int refreshes = 0;
    form.changed.connect([&] { ++refreshes; });
    w.scheduler.advance(2000);
    EXPECT_EQ(refreshes, 0);  // nothing new, nothing redrawn
    w.c().logs.balloon("second", 2);
    w.scheduler.advance(500);
    EXPECT_EQ(fields(refreshes, contains(form.txtLog, "second\r\n" + rule)), "1|1");
}

TEST(TextLog, CutToItsFirstFiftyThousandCharacters) {
    TextLog log;
    const std::string line(98, 'x');  // 100 characters with its break
    for (int i = 0; i < 500; ++i) log.prepend(line);
    EXPECT_EQ(fields(log.size(), log.text().size()), "50000|50000");
    // The 50,001st character is dropped after the next change: the oldest line falls away
    // from its end, and the text begins with the newest line.
    log.prepend("newest");
    const std::string t = log.text();
    EXPECT_EQ(fields(t.size(), t.substr(0, 8), t.substr(8, 100)), "50000|newest\r\n|" + line + "\r\n");
    // Lines that lie wholly beyond the cap are not kept at all.
    EXPECT_LE(log.lineCount(), 502u);
}

TEST(LogEvent, OneLinePerEventWithItsMarker) {
    TestWorld w;
    w.start();
    auto& m = w.main();
    w.scheduler.setWallClock(DateTime{2026, 11, 22, 10, 15, 30, 250});
    m.LogEvent("got", LOG_RX);
    m.LogEvent("first\r\nsecond", LOG_XX);
    EXPECT_EQ(fields(m.txt_log.newest(), m.txt_log.line(1)), "[10:15:30.250] - XX - first \\n second|[10:15:30.250] - RX - got");
}
