#pragma once
// Receives the signals of one interface at one object path, from whichever connection sends
// them, and hands each to a function: how bus clients listen to the automation class.
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <functional>
#include <string>
#include <vector>

#include "platform/dbus/DbusNames.h"

namespace tlx {

class DbusSignalTap : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void(const QDBusMessage&)>;
    DbusSignalTap(QDBusConnection connection, Handler handler, QObject* parent = nullptr);
    ~DbusSignalTap() override;

    // Listens to each of the signals. The match rules go out before any later call on the
    // same connection, so a call made after this returns is answered after they are in place.
    bool listen(const QString& path, const QString& iface, const std::vector<bus::Method>& signalList);

private slots:
    void onSignal(const QDBusMessage& message);

private:
    QDBusConnection conn_;
    Handler handler_;
    struct Hook {
        QString path, iface, name, signature;
    };
    std::vector<Hook> hooks_;
};

// One line for a signal or a method's result: the name, then each argument; texts in double
// quotes with \\, \", \r, \n and \t escaped, so that a line never breaks.
std::string describeSignal(const QDBusMessage& message);
std::string quoteText(const QString& text);

}  // namespace tlx
