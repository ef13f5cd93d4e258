#include <gtest/gtest.h>

#include "core/SmallForms.h"
#include "core/Text.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(BubbleMessageLog, RefreshCopiesTheLogWhenItsLengthChanges) {
    TestWorld w;
    w.start();
    w.c().logs.balloon("first", 1);
    auto& form = w.c().forms.load<BubbleMessageLogForm>(w.c());
    EXPECT_TRUE(startsWith(form.txtLog, "first\r\n"));
    int refreshes = 0;
    form.changed.connect([&] { ++refreshes; });
    w.scheduler.advance(2000);
    EXPECT_EQ(refreshes, 0);  // nothing new, nothing redrawn
    w.c().logs.balloon("second", 2);
    w.scheduler.advance(500);
    EXPECT_EQ(refreshes, 1);
    EXPECT_TRUE(contains(form.txtLog, "second\r\n" + std::string(67, '-')));
}
