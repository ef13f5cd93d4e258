#include "support/QtTestApp.h"

#include <QPixmap>
#include <cstdlib>

namespace tlx::test {

QApplication& qtApp() {
    static int argc = 1;
    static char name[] = "tests_ui";
    static char* argv[] = {name, nullptr};
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    // Never destroyed: Qt tears down its own globals before static destructors would run.
    static QApplication* app = new QApplication(argc, argv);
    return *app;
}

std::filesystem::path screenshotFolder() {
    const char* chosen = std::getenv("TLX_SCREENSHOT_DIR");
    return chosen && *chosen ? std::filesystem::path(chosen) : std::filesystem::path(TLX_BINARY_DIR) / "screenshots";
}

std::filesystem::path saveScreenshot(QWidget& widget, const std::string& name) {
    const std::filesystem::path dir = screenshotFolder();
    std::filesystem::create_directories(dir);
    const QPixmap picture = widget.grab();
    // Pictures taken at a higher scale (QT_SCALE_FACTOR) are told apart as "name@2x.png".
    const qreal ratio = picture.devicePixelRatio();
    const std::string suffix = ratio > 1.01 ? "@" + QString::number(ratio).toStdString() + "x" : "";
    const auto file = dir / (name + suffix + ".png");
    picture.save(QString::fromStdString(file.string()));
    return file;
}

}  // namespace tlx::test
