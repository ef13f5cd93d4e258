#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "core/TextLog.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(TextLog, NewestFirstWithABreakAfterEveryLine) {
    TextLog log;
    log.prepend("one");
    log.prepend("two");
    EXPECT_EQ(log.text(), "two\r\none\r\n");
}

TEST(TextLog, CutToItsFirstFiftyThousandCharacters) {
    TextLog log;
    const std::string line(98, 'x');  // 100 characters with its break
    for (int i = 0; i < 500; ++i) log.prepend(line);
    EXPECT_EQ(log.size(), 50000u);
    EXPECT_EQ(log.text().size(), 50000u);
    // The 50,001st character is dropped after the next change: the oldest line falls away
    // from its end, and the text begins with the newest line.
    log.prepend("newest");
    const std::string t = log.text();
    EXPECT_EQ(t.size(), 50000u);
    EXPECT_EQ(t.substr(0, 8), "newest\r\n");
    EXPECT_EQ(t.substr(8, 100), line + "\r\n");
    // Lines that lie wholly beyond the cap are not kept at all.
    EXPECT_LE(log.lineCount(), 502u);
}

TEST(LogEvent, OneLinePerEventWithItsMarker) {
    TestWorld w;
    w.start();
    auto& m = w.main();
    w.scheduler.setWallClock(DateTime{2026, 11, 22, 10, 15, 30, 250});
    m.LogEvent("sent", LOG_TX);
    EXPECT_EQ(m.txt_log.newest(), "[10:15:30.250] - TX - sent");
    m.LogEvent("got", LOG_RX);
    EXPECT_EQ(m.txt_log.newest(), "[10:15:30.250] - RX - got");
    m.LogEvent("first\r\nsecond", LOG_XX);
    EXPECT_EQ(m.txt_log.newest(), "[10:15:30.250] - XX - first \\n second");
    EXPECT_EQ(m.txt_log.line(1), "[10:15:30.250] - RX - got");
}
