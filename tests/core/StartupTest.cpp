#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(Startup, SmokeReachesInitialised) {
    TestWorld w;
    w.start();
    EXPECT_EQ(w.glo().InitialisedState, INIT_STATE_INITIALISED);
    EXPECT_TRUE(w.logged("INITIAL LOAD TIME TAKEN = "));
}
