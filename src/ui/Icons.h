#pragma once
// The windows' one icon set: SVG resources under :/icons, drawn sharp at any size and scale.
#include <QIcon>
#include <QPixmap>
#include <string>

namespace tlx::ui {

// The icon a model names ("OK", "QUEUED", "BATTLOW", "SIGNALHIGH", "MIC_ON", "TRAY2" ...);
// a null icon when the set has none of that name. The same picture enabled or disabled, so
// the states in a locked list stay readable.
QIcon icon(const std::string& name);
// The picture at a size in device-independent pixels, for the screen's scale.
QPixmap pixmap(const std::string& name, int size, qreal devicePixelRatio = 1.0);

}  // namespace tlx::ui
