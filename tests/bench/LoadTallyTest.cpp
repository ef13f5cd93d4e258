// The load driver's judgement: when each key was pressed, what a client heard, and whether
// every vote reached it exactly once. A driver that miscounted would pass a broken controller.
#include <gtest/gtest.h>

#include "load/LoadTally.h"
#include "support/Fields.h"

using namespace tlx::load;
using tlx::test::fields;

namespace {

constexpr std::int64_t kMs = 1000000;

BurstPlan plan(int bases, int keypads, int perSecond) {
    BurstPlan p;
    p.bases = bases;
    p.keypads = keypads;
    p.perSecond = perSecond;
    for (int b = 0; b < bases; ++b) p.originNs.push_back((b + 1) * 1000 * kMs);
    return p;
}

}  // namespace

TEST(LoadPlan, PressTimesFollowEachBasesKeypadsInRegistryOrder) {
    const BurstPlan p = plan(2, 4095, 4095);
    EXPECT_EQ(p.total(), 8190);
    // In milliseconds: keypad 2 at 0.24 ms rounds to the same as keypad 1, keypad 4 at 0.73 ms to the
    // next; keypad 4096 is the second base's first, at its own origin; 0 and 8191 are no keypads.
    const auto ms = [&](int keypad) { return p.pressNs(keypad) < 0 ? -1 : p.pressNs(keypad) / kMs; };
    EXPECT_EQ(fields(ms(1), ms(2), ms(4), ms(4095), ms(4096), ms(8190), ms(0), ms(8191)),
              "1000|1000|1001|2000|2000|3000|-1|-1");
    const BurstPlan slow = plan(1, 1000, 1000);
    EXPECT_EQ(slow.pressNs(1000), (1000 + 999) * kMs);
}

TEST(LoadRecords, EventsSplitIntoRecordsAndRepliesAreSkipped) {
    const ParsedEvent e = parseVoteEvent("[12;3],[7;1],\r\n[45;-2],\r\nVOTES=1\r\n[3;1;2],");
    ASSERT_EQ(e.records.size(), 4u);
    EXPECT_EQ(fields(e.records[0].first, e.records[0].second, e.records[2].first, e.records[2].second, e.records[3].first,
                     e.records[3].second, e.malformed),
              "12|3|45|-2|3|1;2|0");
    EXPECT_TRUE(parseVoteEvent("").records.empty());
    // Broken batches are counted, and none of their records is taken as heard.
    for (const char* bad : {"[12;3],[7", "[1;2]", "[x;1],", "[1;2],junk", "[5],", "[;3],"}) {
        const ParsedEvent b = parseVoteEvent(bad);
        EXPECT_EQ(fields(b.malformed, b.records.empty()), "1|1") << bad;
    }
}

TEST(LoadTally, MissingRepeatedStrangeAndWrongVotesAreEachCounted) {
    const BurstPlan p = plan(1, 5, 1000);  // keypad k pressed at 1000 + (k-1) ms
    const std::vector<Receipt> heard = {
        {1, "1", 1030 * kMs}, {2, "4", 1041 * kMs}, {2, "4", 1500 * kMs},
        {4, "7", 1063 * kMs}, {9, "1", 1070 * kMs},
    };
    const ClientTally t = tally(p, heard, "1234");
    EXPECT_EQ(fields(t.delivered, t.missing, t.duplicates, t.unknown, t.badVotes, t.exactlyOnce()), "3|2|1|1|1|0");
    // Latency from each keypad's first receipt: the repeat does not count.
    EXPECT_EQ(t.latencyMs, (std::vector<double>{30.0, 40.0, 60.0}));
    // Four events heard (the stranger's is not the burst's): each one's youngest vote.
    EXPECT_EQ(t.youngestMs, (std::vector<double>{30.0, 40.0, 60.0, 499.0}));

    std::vector<Receipt> all;
    for (int k = 1; k <= 5; ++k) all.push_back({k, "2", 1050 * kMs});  // one batch
    const ClientTally once = tally(p, all, "1234");
    EXPECT_TRUE(once.exactlyOnce());
    EXPECT_EQ(once.youngestMs, (std::vector<double>{46.0}));
}

TEST(LoadTally, PercentilesAreNearestRankAndMediansAverageTheMiddle) {
    std::vector<double> v;
    for (int i = 100; i >= 1; --i) v.push_back(i);
    const LatencySummary s = summarise(v);
    EXPECT_EQ(fields(s.p50, s.p99, s.max), "50|99|100");
    EXPECT_EQ(fields(percentile({7}, 99), percentile({}, 50), percentile({1, 2, 3}, 0)), "7|0|1");
    EXPECT_EQ(fields(median({5, 1, 3}), median({4, 1, 3, 2}), summarise({}).max), "3|2.5|0");
}
