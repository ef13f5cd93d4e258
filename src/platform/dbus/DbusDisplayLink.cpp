#include "platform/dbus/DbusDisplayLink.h"

#include "platform/dbus/DbusNames.h"

namespace tlx {

LinkStatus linkStatusOf(const QString& name) {
    static const char* const kAbsent[] = {
        "org.freedesktop.DBus.Error.ServiceUnknown", "org.freedesktop.DBus.Error.NameHasNoOwner",
        "org.freedesktop.DBus.Error.NoReply",        "org.freedesktop.DBus.Error.Timeout",
        "org.freedesktop.DBus.Error.TimedOut",       "org.freedesktop.DBus.Error.Disconnected",
        "org.freedesktop.DBus.Error.NoServer",       "tallix_control.Error.Starting"};
    for (const char* a : kAbsent)
        if (name == QLatin1String(a)) return LinkStatus::NoController;
    if (name.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."))) return LinkStatus::NoController;
    if (name == QLatin1String("org.freedesktop.DBus.Error.UnknownObject") ||
        name == QLatin1String("org.freedesktop.DBus.Error.UnknownMethod") ||
        name == QLatin1String("org.freedesktop.DBus.Error.UnknownInterface"))
        return LinkStatus::Unavailable;
    return LinkStatus::Failed;
}

DbusDisplayLink::DbusDisplayLink(QDBusConnection connection, int replyTimeoutMs)
    : conn_(std::move(connection)), timeoutMs_(replyTimeoutMs) {}

QDBusMessage DbusDisplayLink::call(const char* path, const char* iface, const char* method, const QVariantList& args) {
    QDBusMessage msg = QDBusMessage::createMethodCall(QLatin1String(bus::kService), QLatin1String(path),
                                                      QLatin1String(iface), QLatin1String(method));
    msg.setArguments(args);
    return conn_.call(msg, QDBus::Block, timeoutMs_);
}

template <class T, class Read>
LinkResult<T> DbusDisplayLink::result(const QDBusMessage& reply, Read read) {
    LinkResult<T> r;
    if (reply.type() == QDBusMessage::ReplyMessage) {
        r.value = read(reply.arguments());
        return r;
    }
    r.status = reply.type() == QDBusMessage::ErrorMessage ? linkStatusOf(reply.errorName()) : LinkStatus::NoController;
    r.error = reply.errorMessage().toStdString();
    if (r.error.empty()) r.error = reply.errorName().toStdString();
    if (r.status == LinkStatus::NoController)
        r.error = std::string(bus::kService) + " does not answer on the session bus (" + r.error + ")";
    return r;
}

LinkResult<bool> DbusDisplayLink::init() {
    return result<bool>(call(bus::kTallixPath, bus::kTallixInterface, "init", {QString()}),
                        [](const QVariantList&) { return true; });
}

LinkResult<int> DbusDisplayLink::currentSlide() {
    return result<int>(call(bus::kTallixPath, bus::kTallixInterface, "CurrentSlide", {}),
                       [](const QVariantList& a) { return a.value(0).toInt(); });
}

LinkResult<bool> DbusDisplayLink::sendCommand(const std::string& line) {
    return result<bool>(call(bus::kTallixPath, bus::kTallixInterface, "SendCommand", {QString::fromStdString(line)}),
                        [](const QVariantList& a) { return a.value(0).toBool(); });
}

LinkResult<int> DbusDisplayLink::showSlide() {
    return result<int>(call(bus::kSimShowPath, bus::kSimShowInterface, "CurrentSlide", {}),
                       [](const QVariantList& a) { return a.value(0).toInt(); });
}

LinkResult<std::string> DbusDisplayLink::slideTag(int slide, const std::string& name) {
    return result<std::string>(
        call(bus::kSimShowPath, bus::kSimShowInterface, "SlideTag", {slide, QString::fromStdString(name)}),
        [](const QVariantList& a) { return a.value(0).toString().toStdString(); });
}

LinkResult<std::string> DbusDisplayLink::slideText(int slide, const std::string& shape) {
    return result<std::string>(
        call(bus::kSimShowPath, bus::kSimShowInterface, "SlideText", {slide, QString::fromStdString(shape)}),
        [](const QVariantList& a) { return a.value(0).toString().toStdString(); });
}

}  // namespace tlx
