// The simulated bases at full size. A crowd of a whole base's keypads: each presses at its own
// time, and keeping the crowd going costs a step or two on the scheduler rather than an entry
// per keypad.
#include <gtest/gtest.h>

#include <cmath>

#include "drivers/DriverWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
const char* kBase = "100100100100";

// Presses a crowd of `count` at `perSecond` has made `ms` after it began.
int pressedBy(int count, int perSecond, int ms) {
    int n = 0;
    for (int i = 0; i < count; ++i)
        if (std::lround(i * 1000.0 / perSecond) <= ms) ++n;
    return n;
}
}  // namespace

TEST(CrowdPacing, AFullBaseVotesOnTimeWithFewEntriesPending) {
    DriverWorld d({kBase}, 4095);
    d.singleDigit(4);
    d.g2().StartVote();
    d.settle(100);
    const std::size_t before = d.w.scheduler.pending();
    ASSERT_TRUE(d.sim().crowd(kBase, 4095, "1234", 4095));
    EXPECT_LE(d.w.scheduler.pending(), before + 1);
    // The base reports each press 10 ms after it; step through the second and count.
    const auto began = d.w.scheduler.elapsedMs();
    std::size_t peak = 0;
    for (int t = 1; t <= 1020; ++t) {
        d.w.scheduler.advance(1);
        peak = std::max(peak, d.w.scheduler.pending());
        const int since = static_cast<int>(d.w.scheduler.elapsedMs() - began);
        if (t % 97 == 0 || t == 1020) {
            ASSERT_EQ(static_cast<int>(d.intake.records.size()), pressedBy(4095, 4095, since - 10)) << "at " << since;
        }
    }
    d.settle(100);
    EXPECT_EQ(d.intake.records.size(), 4095u);
    // The pending presses' reports (10 ms worth, about 41) and one step: never the whole crowd.
    EXPECT_LT(peak, before + 100);
}

TEST(CrowdPacing, StoppedCrowdsPressNoMoreAndTheSameSeedGivesTheSameAnswers) {
    std::vector<std::string> first;
    for (const char* answers : {"1,2", "12"}) {  // both forms of the answer list
        DriverWorld d({kBase}, 200);
        d.singleDigit(4);
        d.g2().StartVote();
        d.settle(100);
        ASSERT_TRUE(d.sim().crowd(kBase, 200, answers, 100));
        d.settle(505);  // presses at 0, 10, ... 500 ms have been made; those up to 490 ms reported
        EXPECT_EQ(d.intake.records.size(), 50u);
        d.sim().stopCrowds();
        d.settle(5000);
        EXPECT_EQ(d.intake.records.size(), 51u);  // the press at 500 ms was already on its way
        for (const auto& v : d.intake.votes()) EXPECT_TRUE(v == "1" || v == "2") << v;
        EXPECT_EQ(d.station().keypadBySid(1)->display, d.station().vote.VoteText);
        if (first.empty()) first = d.intake.votes();
        EXPECT_EQ(d.intake.votes(), first);
    }
}
