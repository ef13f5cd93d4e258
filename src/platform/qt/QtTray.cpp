#include "platform/qt/QtTray.h"

#include <QDBusMessage>
#include <QMenu>
#include <QSystemTrayIcon>

#include "core/Text.h"
#include "ui/Icons.h"

namespace tlx {

namespace {
QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }
}  // namespace

QtTray::QtTray(QDBusConnection notifications) : bus_(std::move(notifications)), menu_(std::make_unique<QMenu>()) {
    frames_[0] = ui::icon("TRAY");
    for (int i = 1; i <= Tray::kAnimationFrames; ++i)
        frames_[static_cast<std::size_t>(i)] = ui::icon("TRAY" + std::to_string(i));

    menu_->addAction("Show controller", [this] {
        if (onShow) onShow();
    })->setObjectName("TaskShow");
    for (int i = 0; i < 5; ++i) {
        QAction* a = menu_->addAction(QString(), [this, i] {
            if (onTask) onTask(i + 1);
        });
        a->setObjectName(QStringLiteral("Task%1").arg(i + 1));
        a->setVisible(false);
        taskActions_[static_cast<std::size_t>(i)] = a;
    }
    menu_->addSeparator();
    menu_->addAction("About", [this] {
        if (onAbout) onAbout();
    })->setObjectName("TaskAbout");
    menu_->addAction("Quit", [this] {
        if (onQuit) onQuit();
    })->setObjectName("TaskQuit");
}

QtTray::~QtTray() = default;

void QtTray::addIcon(const std::string& tooltip) {
    if (!icon_) {
        icon_ = std::make_unique<QSystemTrayIcon>(currentIcon());
        icon_->setContextMenu(menu_.get());
        QObject::connect(icon_.get(), &QSystemTrayIcon::activated, [this](QSystemTrayIcon::ActivationReason r) {
            if (r == QSystemTrayIcon::DoubleClick && onShow) onShow();
        });
    }
    icon_->setToolTip(q(tooltip));
    icon_->show();
}

void QtTray::removeIcon() {
    if (icon_) icon_->hide();
}

bool QtTray::hasIcon() const { return icon_ && icon_->isVisible(); }

void QtTray::balloon(const std::string& title, const std::string& text, int iconKind) {
    if (hasIcon() && QSystemTrayIcon::isSystemTrayAvailable() && QSystemTrayIcon::supportsMessages()) {
        const auto kind = iconKind == 3   ? QSystemTrayIcon::Critical
                          : iconKind == 2 ? QSystemTrayIcon::Warning
                          : iconKind == 1 ? QSystemTrayIcon::Information
                                          : QSystemTrayIcon::NoIcon;
        icon_->showMessage(q(title), q(text), kind);
        return;
    }
    notify(title, text, iconKind);
}

void QtTray::notify(const std::string& title, const std::string& text, int iconKind) {
    // Sent without waiting for the answer: with no notification service the call fails on
    // the bus, and the balloon is still in the bubble message log.
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QString appIcon = iconKind == 3   ? QStringLiteral("dialog-error")
                            : iconKind == 2 ? QStringLiteral("dialog-warning")
                            : iconKind == 1 ? QStringLiteral("dialog-information")
                                            : QStringLiteral("org.tallix.Controller");
    QVariantMap hints;
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(iconKind == 3 ? 2 : 1));
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("org.tallix.Controller"));
    call << QStringLiteral("tallix controller") << 0u << appIcon << q(title) << q(text) << QStringList() << hints
         << -1;
    bus_.send(call);
}

void QtTray::setTasks(const std::vector<std::string>& tasks) {
    for (std::size_t i = 0; i < taskActions_.size(); ++i) {
        QAction* a = taskActions_[i];
        a->setVisible(i < tasks.size());
        a->setText(i < tasks.size() ? q(tasks[i]) : QString());
    }
}

void QtTray::setIconFrame(int frame) {
    frame_ = frame >= 0 && frame <= Tray::kAnimationFrames ? frame : 0;
    if (icon_) icon_->setIcon(currentIcon());
}

}  // namespace tlx
