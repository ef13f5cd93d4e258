#include "platform/qt/QtDesktop.h"

#include <QClipboard>
#include <QGuiApplication>

namespace tlx {

namespace {
QClipboard* sessionClipboard() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) ? QGuiApplication::clipboard() : nullptr;
}
}  // namespace

void QtDesktop::setClipboardText(const std::string& text) {
    if (QClipboard* c = sessionClipboard())
        c->setText(QString::fromStdString(text));
    else
        SimDesktop::setClipboardText(text);
}

std::string QtDesktop::clipboardText() const {
    if (QClipboard* c = sessionClipboard()) return c->text().toStdString();
    return SimDesktop::clipboardText();
}

}  // namespace tlx
