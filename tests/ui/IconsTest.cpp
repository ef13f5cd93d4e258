#include <gtest/gtest.h>

#include <QImage>
#include <set>

#include "core/Text.h"
#include "drivers/CorehubConstants.h"
#include "ports/Tray.h"
#include "support/QtTestApp.h"
#include "ui/Icons.h"

using namespace tlx;
using namespace tlx::test;
namespace K = tlx::KelvarinCorehubConstants;

namespace {

int drawnPixels(const QIcon& icon, int size) {
    const QImage img = icon.pixmap(size).toImage();
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) n += img.pixelColor(x, y).alpha() > 0 ? 1 : 0;
    return n;
}

}  // namespace

// Every key a window model can put on a row or a picture box, the battery and signal words
// from the readings the drivers turn into them, and the tray's frames: each has a picture
// that draws something, so a missing or broken resource shows here rather than as a blank.
TEST(Icons, EveryNameTheModelsGiveHasAPicture) {
    qtApp();
    std::set<std::string> names = {
        "QUEUED", "SPEAKING", "DONE", "BATT", "SIGNAL",  // the microphone queue
        "OK", "ERROR", "UNKNOWN", "BUSY",                // system preparation
        "NEW", "WAITING",                                // channel scan
        "ALERT",                                         // text-vote alerts
        "MIC_OFF", "MIC_ON", "MIC_STREAMING", "LOCKED", "UNLOCKED", "TRAY"};
    for (int reading = 1; reading <= 500; ++reading) names.insert("BATT" + toUpper(K::BatteryWord(reading)));
    for (int signal = 1; signal <= 120; ++signal)
        names.insert("SIGNAL" + toUpper(K::SignalWord(K::SignalValue(signal))));
    for (int frame = 1; frame <= Tray::kAnimationFrames; ++frame) names.insert("TRAY" + std::to_string(frame));
    ASSERT_GE(names.size(), 30u);  // the words were found

    for (const auto& name : names) {
        const QIcon icon = ui::icon(name);
        ASSERT_FALSE(icon.isNull()) << name;
        EXPECT_GT(drawnPixels(icon, 16), 40) << name;
        // Drawn for the screen's scale, not blown up from a small picture.
        EXPECT_EQ(ui::pixmap(name, 16, 2.0).size(), QSize(32, 32)) << name;
    }
    EXPECT_TRUE(ui::icon("NO SUCH PICTURE").isNull());
    EXPECT_TRUE(ui::icon("").isNull());
}
