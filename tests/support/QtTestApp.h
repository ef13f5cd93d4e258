#pragma once
// One QApplication for every view test in the process, on the offscreen platform.
#include <QApplication>
#include <QWidget>
#include <filesystem>
#include <string>

namespace tlx::test {

QApplication& qtApp();
// Where pictures go: $TLX_SCREENSHOT_DIR, else the build tree's screenshots folder.
std::filesystem::path screenshotFolder();
// Saves a picture of the widget as "name.png" there ("name@2x.png" at twice the scale);
// returns the path. Names are the window's and its state's: "frmAudio-full".
std::filesystem::path saveScreenshot(QWidget& widget, const std::string& name);

}  // namespace tlx::test
