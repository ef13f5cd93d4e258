#include <gtest/gtest.h>

#include "core/PortFile.h"
#include "core/Text.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {
PortFileData twoBases() {
    PortFileData d;
    d.bases.push_back({"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 2, 0});
    d.bases.push_back({"200200200200", "KELVARIN COREHUB G2", 1, 40, true, 3, 100});
    d.popUp = {true, "5", "10", 1, 140, true, 80, true};
    return d;
}
}  // namespace

TEST(PortFile, PlainTextInTheSetUpFormsOrder) {
    PortFileData d;
    d.bases.push_back({"7", "KBOARD", 1, 20, false, 0, 0});
    EXPECT_EQ(portFilePlainText(d),
              "Port=7\r\nBaseType=KBOARD\r\nGridLo=1\r\nGridHi=20\r\nDuplicate=False\r\nColourIndex=0\r\nOffSet=0\r\n"
              "PopUpOn=False\r\nPopup=\r\nHow many=\r\nLo=0\r\nHi=0\r\nClose=False\r\nClosePercent=100\r\n"
              "ScrollingDisplay=False");
}

TEST(PortFile, WriteThenReadRoundTripOverALongerOldFileAndAFolderItCannotWrite) {
    TempDir dir;
    const auto file = dir / "port.tlc";
    writeFile(file, std::string(5000, 'x'));
    ASSERT_EQ(writePortFile(file, twoBases()), PortFileWriteStatus::Ok);
    EXPECT_LT(readFile(file).size(), 5000u);
    // Nothing of the plain text is readable in the file.
    EXPECT_FALSE(contains(readFile(file), "BaseType"));
    const auto r = readPortFile(file);
    ASSERT_EQ(r.status, PortFileStatus::Ok);
    EXPECT_EQ(portFilePlainText(r.data), portFilePlainText(twoBases()));
    writeFile(dir / "blocker", "x");
    EXPECT_EQ(writePortFile(dir / "blocker" / "port.tlc", twoBases()), PortFileWriteStatus::WriteError);
}

TEST(PortFile, ReaderTakesKeysInAnyCase) {
    const auto d = parsePortFilePlainText("port=5\r\nBASETYPE=KELVARIN BASE V3\r\ngridhi=1,200\r\nOffset=3\r\n"
                                          "how MANY=4\r\npopupon=-1\r\nclose=True\r\nunknown=1\r\n");
    ASSERT_EQ(d.bases.size(), 1u);
    EXPECT_EQ(fields(d.bases[0].baseType, d.bases[0].gridHi, d.bases[0].offset, d.popUp.howMany, d.popUp.popUpOn, d.popUp.close),
              "KELVARIN BASE V3|1200|3|4|1|1");
}

// Damaged files: tests/reliability/FileFaultTest.cpp.
TEST(PortFile, MissingFileMeansKeyboardVoting) {
    TempDir dir;
    const auto r = readPortFile(dir / "port.tlc");
    ASSERT_EQ(fields(r.status == PortFileStatus::Missing, r.data.bases.size()), "1|1");
    EXPECT_EQ(r.data.bases[0].baseType, "KBOARD");
}
