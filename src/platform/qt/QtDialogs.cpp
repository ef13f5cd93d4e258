#include "platform/qt/QtDialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>

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

}  // namespace tlx
