#pragma once
// The automation class on the session bus. Each bus client gets its own `tallix` object the
// first time it calls, released when the client leaves the bus. The class's events go out as
// broadcast signals, once per controller event however many clients hold objects. With a
// simulation serving, its control objects are published beside the class.
#include <QDBusConnection>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ports/AutomationServer.h"

class QDBusServiceWatcher;
class QDBusMessage;

namespace tlx {

class Controller;
class tallix;
class SimShowControl;
class SimBasesControl;

class DbusAutomationServer : public AutomationServer {
public:
    DbusAutomationServer(Controller& controller, QDBusConnection connection);
    ~DbusAutomationServer() override;
    DbusAutomationServer(const DbusAutomationServer&) = delete;
    DbusAutomationServer& operator=(const DbusAutomationServer&) = delete;

    // The simulation's control objects, published while the server serves; either may be
    // null. Call before or after start().
    void serveSimulation(SimShowControl* show, SimBasesControl* bases);

    std::string servedElsewhere() override;
    std::string start() override;
    void stop() override;
    bool serving() const override { return serving_; }
    std::size_t clientCount() const override;

    const QDBusConnection& connection() const { return conn_; }

private:
    struct Client;
    class TallixNode;
    class SimShowNode;
    class SimBasesNode;
    // Keeps a client's record alive while one of its calls runs.
    class CallScope;

    // The record of the calling client, created (with its object) on its first call.
    Client* enter(const QString& name);
    void leave(Client* client);
    Client* find(const QString& name) const;
    void clientLeft(const QString& name);
    void release(Client* client);
    void relayEvents(Client* client);
    // Sends the signal when `from` speaks for all clients: the first whose object exists
    // (and, for the main form's events, has subscribed to them), so each event goes out once.
    void broadcast(const Client* from, bool needsSubscription, const std::function<QDBusMessage()>& makeSignal);
    // Takes the objects off the bus and lets go of the clients' objects.
    void unpublish();
    bool registerSimulation();
    void unregisterSimulation();

    Controller& c_;
    QDBusConnection conn_;
    bool serving_ = false;
    std::vector<std::unique_ptr<Client>> clients_;  // in the order they first called
    std::unique_ptr<QDBusServiceWatcher> watcher_;
    std::unique_ptr<TallixNode> tallixNode_;
    SimShowControl* simShow_ = nullptr;
    SimBasesControl* simBases_ = nullptr;
    std::unique_ptr<SimShowNode> simShowNode_;
    std::unique_ptr<SimBasesNode> simBasesNode_;
};

}  // namespace tlx
