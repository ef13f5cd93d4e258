#include <gtest/gtest.h>

#include <sstream>

#include "app/common/ControllerApp.h"
#include "core/PortFile.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

TEST(ConfigureBases, AFailedCheckExitsNonZeroAndWritesNothingElseThePortFileIsWritten) {
    TestWorld w;
    std::ostringstream out;
    EXPECT_EQ(configureBases(w.c(), {"KELVARIN COREHUB G2;100100100100;40;1"}, out), 1);
    EXPECT_TRUE(w.dialogs.any("Lowest Keypad Number equal to or greater than Highest"));
    EXPECT_FALSE(std::filesystem::exists(w.appData() / "tallix" / "port.tlc"));
    EXPECT_EQ(configureBases(w.c(), {"TOASTER;1;1;20"}, out), 1);
    EXPECT_TRUE(w.dialogs.any("No base type selected"));

    EXPECT_EQ(configureBases(w.c(), {"KELVARIN COREHUB G2;100100100100;1;40", "Kelvarin Corehub g2;200200200200;41;80"}, out),
              0);
    const auto r = readPortFile(w.appData() / "tallix" / "port.tlc");
    ASSERT_EQ(fields(r.status == PortFileStatus::Ok, r.data.bases.size()), "1|2");
    EXPECT_EQ(fields(r.data.bases[1].baseType, r.data.bases[1].gridHi), "KELVARIN COREHUB G2|80");
    EXPECT_NE(out.str().find("2 bases"), std::string::npos);
}
