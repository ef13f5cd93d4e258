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

std::filesystem::path saveScreenshot(QWidget& widget, const std::string& name) {
    const std::filesystem::path dir = std::filesystem::path(TLX_BINARY_DIR) / "screenshots";
    std::filesystem::create_directories(dir);
    const auto file = dir / (name + ".png");
    widget.grab().save(QString::fromStdString(file.string()));
    return file;
}

}  // namespace tlx::test
