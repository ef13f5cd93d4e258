#pragma once
// The tray icon with its task menu and balloons. Where the desktop has no tray, balloons go
// out as desktop notifications on the session bus (org.freedesktop.Notifications) instead.
#include <QDBusConnection>
#include <QIcon>
#include <array>
#include <functional>
#include <memory>

#include "ports/Tray.h"

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace tlx {

class QtTray : public Tray {
public:
    explicit QtTray(QDBusConnection notifications = QDBusConnection::sessionBus());
    ~QtTray() override;
    void addIcon(const std::string& tooltip) override;
    void removeIcon() override;
    bool hasIcon() const override;
    void balloon(const std::string& title, const std::string& text, int iconKind) override;
    void setTasks(const std::vector<std::string>& tasks) override;
    void setIconFrame(int frame) override;

    // Menu entries call back into the main form.
    std::function<void(int)> onTask;
    std::function<void()> onAbout;
    std::function<void()> onQuit;
    std::function<void()> onShow;

    // The menu (entries named Task1 to Task5, TaskAbout, TaskQuit) and the picture shown now.
    QMenu* menu() const { return menu_.get(); }
    int frame() const { return frame_; }
    QIcon currentIcon() const { return frames_[static_cast<std::size_t>(frame_)]; }

private:
    void notify(const std::string& title, const std::string& text, int iconKind);
    QDBusConnection bus_;
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    std::array<QAction*, 5> taskActions_{};
    std::array<QIcon, Tray::kAnimationFrames + 1> frames_;
    int frame_ = 0;
};

}  // namespace tlx
