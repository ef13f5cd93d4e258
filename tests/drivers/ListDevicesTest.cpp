#include <gtest/gtest.h>

#include "DriverWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(ListDevices, StartUpConnectsTheConfiguredBase) {
    DriverWorld d;
    ASSERT_EQ(d.glo().InitialisedState, INIT_STATE_INITIALISED);
    ASSERT_EQ(d.g2().baseTable().size(), 1u);
    const auto& r = d.g2().baseTable()[0];
    EXPECT_TRUE(r.connected);
    EXPECT_EQ(r.identifier, "100100100100");
    EXPECT_EQ(r.typeName, "Kelvarin Corehub g2");
    EXPECT_EQ(r.lowestKeypad, 1);
    EXPECT_EQ(r.highestKeypad, 40);
    EXPECT_FALSE(d.w.dialogs.any("Unable to initialise Kelvarin Base"));
    EXPECT_TRUE(d.g2().logged(" - Corehub g2: ListDevices: GetUSBDevices - 0"));
    EXPECT_TRUE(d.g2().logged("1 - Corehub g2: ListDevices: RadioEnable - 0"));
    EXPECT_TRUE(d.g2().logged(" - Corehub g2: ListDevices: OverallTime - 0"));
    EXPECT_TRUE(d.station().radioOn);
}
