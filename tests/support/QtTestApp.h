#pragma once
// One QApplication for every view test in the process, on the offscreen platform.
#include <QApplication>
#include <QWidget>
#include <filesystem>
#include <string>

namespace tlx::test {

QApplication& qtApp();
// Saves a picture of the widget under the build tree's screenshots folder; returns the path.
std::filesystem::path saveScreenshot(QWidget& widget, const std::string& name);

}  // namespace tlx::test
