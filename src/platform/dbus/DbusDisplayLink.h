#pragma once
// A display program's calls on the session bus: the automation class at /tallix and, when the
// simulation serves, the simulated presentation program at /sim/show.
#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>

#include "presentation/display/DisplayRun.h"

namespace tlx {

// How a failed call reads to a display program: the controller is not there (or not yet),
// the object or method is not there, or an error answer.
LinkStatus linkStatusOf(const QString& errorName);

class DbusDisplayLink : public DisplayLink {
public:
    DbusDisplayLink(QDBusConnection connection, int replyTimeoutMs);

    LinkResult<bool> init() override;
    LinkResult<int> currentSlide() override;
    LinkResult<bool> sendCommand(const std::string& line) override;
    LinkResult<int> showSlide() override;
    LinkResult<std::string> slideTag(int slide, const std::string& name) override;
    LinkResult<std::string> slideText(int slide, const std::string& shape) override;

private:
    QDBusMessage call(const char* path, const char* iface, const char* method, const QVariantList& args);
    template <class T, class Read>
    LinkResult<T> result(const QDBusMessage& reply, Read read);

    QDBusConnection conn_;
    int timeoutMs_;
};

}  // namespace tlx
