#include "platform/dbus/DbusSignalTap.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QStringList>

namespace tlx {

DbusSignalTap::DbusSignalTap(QDBusConnection connection, Handler handler, QObject* parent)
    : QObject(parent), conn_(std::move(connection)), handler_(std::move(handler)) {}

DbusSignalTap::~DbusSignalTap() {
    for (const auto& h : hooks_)
        conn_.disconnect(QString(), h.path, h.iface, h.name, h.signature, this, SLOT(onSignal(QDBusMessage)));
}

bool DbusSignalTap::listen(const QString& path, const QString& iface, const std::vector<bus::Method>& signalList) {
    bool ok = true;
    for (const auto& s : signalList) {
        Hook h{path, iface, QLatin1String(s.name), QLatin1String(s.in)};
        // Any sender: the controller may start (or start again) after we began listening.
        if (conn_.connect(QString(), h.path, h.iface, h.name, h.signature, this, SLOT(onSignal(QDBusMessage))))
            hooks_.push_back(h);
        else
            ok = false;
    }
    return ok;
}

void DbusSignalTap::onSignal(const QDBusMessage& message) {
    if (handler_) handler_(message);
}

std::string quoteText(const QString& text) {
    QString out = QStringLiteral("\"");
    for (const QChar ch : text) {
        switch (ch.unicode()) {
            case '\\': out += QStringLiteral("\\\\"); break;
            case '"': out += QStringLiteral("\\\""); break;
            case '\r': out += QStringLiteral("\\r"); break;
            case '\n': out += QStringLiteral("\\n"); break;
            case '\t': out += QStringLiteral("\\t"); break;
            default: out += ch;
        }
    }
    out += QLatin1Char('"');
    return out.toStdString();
}

std::string describeSignal(const QDBusMessage& message) {
    std::string line = message.member().toStdString();
    for (const QVariant& v : message.arguments()) {
        line += ' ';
        if (v.typeId() == QMetaType::QString)
            line += quoteText(v.toString());
        else if (v.typeId() == QMetaType::Bool)
            line += v.toBool() ? "true" : "false";
        else if (v.typeId() == QMetaType::QStringList)
            for (int i = 0; const QString& s : v.toStringList()) line += (i++ ? " " : "") + quoteText(s);
        else
            line += v.toString().toStdString();
    }
    return line;
}

}  // namespace tlx
