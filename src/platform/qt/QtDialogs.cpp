#include "platform/qt/QtDialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QStyle>

#include "core/Text.h"

namespace tlx {

namespace {
QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }

QMessageBox::Icon qIcon(MsgIcon icon) {
    switch (icon) {
        case MsgIcon::Information: return QMessageBox::Information;
        case MsgIcon::Exclamation: return QMessageBox::Warning;
        case MsgIcon::Critical: return QMessageBox::Critical;
        case MsgIcon::Question: return QMessageBox::Question;
        default: return QMessageBox::NoIcon;
    }
}
}  // namespace

void QtDialogs::message(const std::string& title, const std::string& text, MsgIcon icon) {
    QMessageBox box(qIcon(icon), q(title), q(text), QMessageBox::Ok);
    box.exec();
}

bool QtDialogs::askYesNo(const std::string& title, const std::string& text, MsgIcon icon) {
    QMessageBox box(qIcon(icon), q(title), q(text), QMessageBox::Yes | QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

std::optional<std::string> QtDialogs::inputBox(const std::string& title, const std::string& prompt,
                                               const std::string& initial) {
    bool ok = false;
    const QString v = QInputDialog::getText(nullptr, q(title), q(prompt), QLineEdit::Normal, q(initial), &ok);
    if (!ok) return std::nullopt;
    return v.toStdString();
}

std::optional<std::string> QtDialogs::openFileName(const std::string& title, const std::string& filter) {
    // "Name (*.a, *.b)|*.a; *.b" becomes Qt's "Name (*.a *.b)".
    const auto parts = split(filter, "|");
    QString qtFilter;
    if (parts.size() >= 2)
        qtFilter = q(parts[0].substr(0, parts[0].find('(')) + "(" + replaceAll(replaceAll(parts[1], ";", " "), "  ", " ") + ")");
    const QString file = QFileDialog::getOpenFileName(nullptr, q(title), QString(), qtFilter);
    if (file.isEmpty()) return std::nullopt;
    return file.toStdString();
}

QtTray::QtTray() = default;
QtTray::~QtTray() = default;

void QtTray::addIcon(const std::string& tooltip) {
    if (!icon_) {
        icon_ = std::make_unique<QSystemTrayIcon>();
        icon_->setIcon(QApplication::style()->standardIcon(QStyle::SP_ComputerIcon));
        menu_ = std::make_unique<QMenu>();
        rebuildMenu();
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
    if (!icon_) return;
    const auto kind = iconKind == 3   ? QSystemTrayIcon::Critical
                      : iconKind == 2 ? QSystemTrayIcon::Warning
                      : iconKind == 1 ? QSystemTrayIcon::Information
                                      : QSystemTrayIcon::NoIcon;
    icon_->showMessage(q(title), q(text), kind);
}

void QtTray::setTasks(const std::vector<std::string>& tasks) {
    tasks_ = tasks;
    rebuildMenu();
}

void QtTray::rebuildMenu() {
    if (!menu_) return;
    menu_->clear();
    menu_->addAction("Show controller", [this] {
        if (onShow) onShow();
    });
    for (std::size_t i = 0; i < tasks_.size() && i < 5; ++i)
        menu_->addAction(q(tasks_[i]), [this, i] {
            if (onTask) onTask(static_cast<int>(i + 1));
        });
    menu_->addSeparator();
    menu_->addAction("About", [this] {
        if (onAbout) onAbout();
    });
    menu_->addAction("Quit", [this] {
        if (onQuit) onQuit();
    });
}

}  // namespace tlx
