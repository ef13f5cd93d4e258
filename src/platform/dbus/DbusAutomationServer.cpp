#include "platform/dbus/DbusAutomationServer.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QStringList>
#include <exception>

#include "core/Controller.h"
#include "platform/dbus/DbusNames.h"
#include "platform/sim/SimControls.h"
#include "presentation/Tallix.h"

namespace tlx {

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }
std::string ss(const QString& s) { return s.toStdString(); }

const QString kFailed = QStringLiteral("org.freedesktop.DBus.Error.Failed");
const QString kInvalidArgs = QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs");
const QString kUnknownMethod = QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod");
const QString kUnknownInterface = QStringLiteral("org.freedesktop.DBus.Error.UnknownInterface");
const QString kStarting = QStringLiteral("tallix_control.Error.Starting");

// "(s sCommand)" for the error texts.
QString describeArgs(const bus::Method& m) {
    QStringList parts;
    for (std::size_t i = 0; i < m.args.size(); ++i)
        parts << QString(QChar(m.in[i])) + QLatin1Char(' ') + QLatin1String(m.args[i]);
    return QLatin1Char('(') + parts.join(QStringLiteral(", ")) + QLatin1Char(')');
}

// The interface element of the introspection data. Our argument types are all single
// characters; results may be "as".
QString interfaceXml(const char* name, const std::vector<bus::Method>& methods,
                     const std::vector<bus::Method>& signalList) {
    QString x = QStringLiteral("  <interface name=\"%1\">\n").arg(QLatin1String(name));
    auto args = [&x](const bus::Method& m, bool withDirection) {
        for (std::size_t i = 0; i < m.args.size(); ++i)
            x += QStringLiteral("      <arg name=\"%1\" type=\"%2\"%3/>\n")
                     .arg(QLatin1String(m.args[i]), QChar(m.in[i]),
                          withDirection ? QStringLiteral(" direction=\"in\"") : QString());
    };
    for (const auto& m : methods) {
        x += QStringLiteral("    <method name=\"%1\">\n").arg(QLatin1String(m.name));
        args(m, true);
        if (*m.out) x += QStringLiteral("      <arg type=\"%1\" direction=\"out\"/>\n").arg(QLatin1String(m.out));
        x += QStringLiteral("    </method>\n");
    }
    for (const auto& s : signalList) {
        x += QStringLiteral("    <signal name=\"%1\">\n").arg(QLatin1String(s.name));
        args(s, false);
        x += QStringLiteral("    </signal>\n");
    }
    x += QStringLiteral("  </interface>\n");
    return x;
}

void answer(const QDBusConnection& conn, const QDBusMessage& call, const QVariantList& out = {}) {
    if (call.isReplyRequired()) conn.send(call.createReply(out));
}

void refuse(const QDBusConnection& conn, const QDBusMessage& call, const QString& name, const QString& text) {
    if (call.isReplyRequired()) conn.send(call.createErrorReply(name, text));
}

// Whether the call is for us rather than for the standard interfaces that Qt answers.
bool ours(const QDBusMessage& call, const std::vector<bus::Method>& methods) {
    if (call.type() != QDBusMessage::MethodCallMessage) return false;
    if (call.interface().isEmpty()) {
        for (const auto& m : methods)
            if (call.member() == QLatin1String(m.name)) return true;
        return false;
    }
    return !call.interface().startsWith(QStringLiteral("org.freedesktop.DBus."));
}

// The called method, or null when the caller has been answered with an error.
const bus::Method* resolve(const QDBusConnection& conn, const QDBusMessage& call, const char* iface,
                           const std::vector<bus::Method>& methods) {
    if (!call.interface().isEmpty() && call.interface() != QLatin1String(iface)) {
        refuse(conn, call, kUnknownInterface,
               QStringLiteral("No interface '%1' at object path '%2'").arg(call.interface(), call.path()));
        return nullptr;
    }
    const bus::Method* found = nullptr;
    for (const auto& m : methods)
        if (call.member() == QLatin1String(m.name)) found = &m;
    if (!found) {
        refuse(conn, call, kUnknownMethod,
               QStringLiteral("No method '%1' in interface '%2'").arg(call.member(), QLatin1String(iface)));
        return nullptr;
    }
    if (call.signature() != QLatin1String(found->in)) {
        refuse(conn, call, kInvalidArgs,
               QStringLiteral("%1 takes %2, not (%3)")
                   .arg(QLatin1String(found->name), describeArgs(*found), call.signature()));
        return nullptr;
    }
    return found;
}

// Runs one call of a control object, turning an exception into an error answer.
template <class Fn>
void guarded(const QDBusConnection& conn, const QDBusMessage& call, Fn&& fn) {
    try {
        fn();
    } catch (const std::exception& e) {
        refuse(conn, call, kFailed, QStringLiteral("%1 failed: %2").arg(call.member(), QString::fromUtf8(e.what())));
    } catch (...) {
        refuse(conn, call, kFailed, QStringLiteral("%1 failed").arg(call.member()));
    }
}

void done(const QDBusConnection& conn, const QDBusMessage& call, const SimError& error,
          const QVariantList& out = {}) {
    if (error.empty())
        answer(conn, call, out);
    else
        refuse(conn, call, kFailed, qs(error));
}

}  // namespace

struct DbusAutomationServer::Client {
    QString name;  // the client's unique bus name
    std::unique_ptr<tallix> object;
    int busy = 0;       // calls of this client under way (a nested wait may run others)
    bool gone = false;  // left the bus; released once its last call has returned
};

class DbusAutomationServer::CallScope {
public:
    CallScope(DbusAutomationServer& s, const QString& name) : s_(s), client_(s.enter(name)) {}
    ~CallScope() { s_.leave(client_); }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;
    tallix* object() const { return client_->object.get(); }

private:
    DbusAutomationServer& s_;
    Client* client_;
};

class DbusAutomationServer::TallixNode : public QDBusVirtualObject {
public:
    explicit TallixNode(DbusAutomationServer& server) : server_(server) {}

    QString introspect(const QString&) const override {
        return interfaceXml(bus::kTallixInterface, bus::tallixMethods(), bus::tallixSignals());
    }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& conn) override {
        if (!ours(call, bus::tallixMethods())) return false;
        const bus::Method* m = resolve(conn, call, bus::kTallixInterface, bus::tallixMethods());
        if (!m) return true;
        guarded(conn, call, [&] {
            CallScope scope(server_, call.service());
            tallix* t = scope.object();
            if (!t) {
                // Only while this client's first call is still starting the controller.
                refuse(conn, call, kStarting, QStringLiteral("The controller is starting; call again"));
                return;
            }
            const QVariantList a = call.arguments();
            const std::string name = m->name;
            if (name == "VoteLoaded") {
                t->VoteLoaded();
                answer(conn, call);
            } else if (name == "SlideShowBegin") {
                t->SlideShowBegin(static_cast<std::int64_t>(a.at(0).toInt()));
                answer(conn, call);
            } else if (name == "SlideShowEnd") {
                t->SlideShowEnd();
                answer(conn, call);
            } else if (name == "SlideShowNextSlide") {
                t->SlideShowNextSlide();
                answer(conn, call);
            } else if (name == "CurrentSlide") {
                answer(conn, call, {t->CurrentSlide()});
            } else if (name == "PowerPointClosed") {
                t->PowerPointClosed();
                answer(conn, call);
            } else if (name == "init") {
                t->init(ss(a.at(0).toString()));
                answer(conn, call);
            } else if (name == "SendCommand") {
                answer(conn, call, {t->SendCommand(ss(a.at(0).toString()))});
            }
        });
        return true;
    }

private:
    DbusAutomationServer& server_;
};

class DbusAutomationServer::SimShowNode : public QDBusVirtualObject {
public:
    explicit SimShowNode(SimShowControl& show) : show_(show) {}

    QString introspect(const QString&) const override {
        return interfaceXml(bus::kSimShowInterface, bus::simShowMethods(), {});
    }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& conn) override {
        if (!ours(call, bus::simShowMethods())) return false;
        const bus::Method* m = resolve(conn, call, bus::kSimShowInterface, bus::simShowMethods());
        if (!m) return true;
        const QVariantList a = call.arguments();
        const std::string name = m->name;
        guarded(conn, call, [&] {
            if (name == "Open") {
                done(conn, call, show_.Open(ss(a.at(0).toString())));
            } else if (name == "Begin") {
                done(conn, call, show_.Begin());
            } else if (name == "Next") {
                done(conn, call, show_.Next());
            } else if (name == "Previous") {
                done(conn, call, show_.Previous());
            } else if (name == "GoTo") {
                done(conn, call, show_.GoTo(a.at(0).toInt()));
            } else if (name == "End") {
                done(conn, call, show_.End());
            } else if (name == "Close") {
                done(conn, call, show_.Close());
            } else if (name == "KeyDown") {
                done(conn, call, show_.KeyDown(a.at(0).toInt()));
            } else if (name == "KeyUp") {
                done(conn, call, show_.KeyUp(a.at(0).toInt()));
            } else if (name == "CurrentSlide") {
                const auto r = show_.CurrentSlide();
                done(conn, call, r.error, {r.value});
            } else if (name == "PresentationTag") {
                const auto r = show_.PresentationTag(ss(a.at(0).toString()));
                done(conn, call, r.error, {qs(r.value)});
            } else if (name == "SlideTag") {
                const auto r = show_.SlideTag(a.at(0).toInt(), ss(a.at(1).toString()));
                done(conn, call, r.error, {qs(r.value)});
            } else if (name == "SlideText") {
                const auto r = show_.SlideText(a.at(0).toInt(), ss(a.at(1).toString()));
                done(conn, call, r.error, {qs(r.value)});
            }
        });
        return true;
    }

private:
    SimShowControl& show_;
};

class DbusAutomationServer::SimBasesNode : public QDBusVirtualObject {
public:
    explicit SimBasesNode(SimBasesControl& bases) : bases_(bases) {}

    QString introspect(const QString&) const override {
        return interfaceXml(bus::kSimBasesInterface, bus::simBasesMethods(), {});
    }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& conn) override {
        if (!ours(call, bus::simBasesMethods())) return false;
        const bus::Method* m = resolve(conn, call, bus::kSimBasesInterface, bus::simBasesMethods());
        if (!m) return true;
        const QVariantList a = call.arguments();
        auto s = [&a](int i) { return ss(a.at(i).toString()); };
        auto n = [&a](int i) { return a.at(i).toInt(); };
        const std::string name = m->name;
        guarded(conn, call, [&] {
            if (name == "Press") {
                done(conn, call, bases_.Press(s(0), n(1), s(2)));
            } else if (name == "Crowd") {
                done(conn, call, bases_.Crowd(s(0), n(1), s(2), n(3)));
            } else if (name == "MicRequest") {
                done(conn, call, bases_.MicRequest(s(0), n(1), a.at(2).toBool()));
            } else if (name == "Text") {
                done(conn, call, bases_.Text(s(0), n(1), s(2)));
            } else if (name == "Fail") {
                done(conn, call, bases_.Fail(s(0), s(1), n(2)));
            } else if (name == "Disconnect") {
                done(conn, call, bases_.Disconnect(s(0)));
            } else if (name == "Reconnect") {
                done(conn, call, bases_.Reconnect(s(0)));
            } else if (name == "Bases") {
                const auto r = bases_.Bases();
                QStringList list;
                for (const auto& b : r.value) list << qs(b);
                done(conn, call, r.error, {QVariant::fromValue(list)});
            } else if (name == "Screen") {
                const auto r = bases_.Screen(s(0), n(1));
                done(conn, call, r.error, {qs(r.value)});
            }
        });
        return true;
    }

private:
    SimBasesControl& bases_;
};

DbusAutomationServer::DbusAutomationServer(Controller& controller, QDBusConnection connection)
    : c_(controller), conn_(std::move(connection)) {}

DbusAutomationServer::~DbusAutomationServer() {
    stop();
    clients_.clear();
}

void DbusAutomationServer::serveSimulation(SimShowControl* show, SimBasesControl* bases) {
    if (serving_) unregisterSimulation();
    simShow_ = show;
    simBases_ = bases;
    if (serving_) registerSimulation();
}

std::string DbusAutomationServer::servedElsewhere() {
    if (!conn_.isConnected()) return {};
    QDBusConnectionInterface* bus = conn_.interface();
    const QDBusReply<bool> taken = bus->isServiceRegistered(QLatin1String(bus::kService));
    if (!taken.isValid() || !taken.value()) return {};
    // Our own connection owning it is not somebody else.
    const QDBusReply<QString> owner = bus->serviceOwner(QLatin1String(bus::kService));
    if (owner.isValid() && owner.value() == conn_.baseService()) return {};
    std::string who = std::string(bus::kService) + " is already served on the session bus by another controller";
    const QDBusReply<uint> pid = bus->servicePid(QLatin1String(bus::kService));
    if (pid.isValid()) who += " (process " + std::to_string(pid.value()) + ")";
    return who;
}

std::string DbusAutomationServer::start() {
    if (serving_) return {};
    if (!conn_.isConnected()) {
        const QString why = conn_.lastError().message();
        return "no session bus" + (why.isEmpty() ? std::string() : " (" + ss(why) + ")");
    }
    tallixNode_ = std::make_unique<TallixNode>(*this);
    if (!conn_.registerVirtualObject(QLatin1String(bus::kTallixPath), tallixNode_.get())) {
        tallixNode_.reset();
        return std::string("the object ") + bus::kTallixPath + " could not be published on this connection";
    }
    registerSimulation();

    watcher_ = std::make_unique<QDBusServiceWatcher>();
    watcher_->setConnection(conn_);
    watcher_->setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    QObject::connect(watcher_.get(), &QDBusServiceWatcher::serviceUnregistered, watcher_.get(),
                     [this](const QString& name) { clientLeft(name); });

    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> r = conn_.interface()->registerService(
        QLatin1String(bus::kService), QDBusConnectionInterface::DontQueueService,
        QDBusConnectionInterface::DontAllowReplacement);
    if (!r.isValid() || r.value() != QDBusConnectionInterface::ServiceRegistered) {
        std::string why = servedElsewhere();
        if (why.empty())
            why = std::string("the bus refused the name ") + bus::kService +
                  (r.isValid() ? std::string() : " (" + ss(r.error().message()) + ")");
        unpublish();
        return why;
    }
    serving_ = true;
    // A client that started us through the bus is listening by now; the controller finished
    // initialising before it could be reached, so it hears of that once the name is ours.
    if (c_.glo.InitialisedState == INIT_STATE_INITIALISED && !c_.glo.ShuttingDown)
        conn_.send(QDBusMessage::createSignal(QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface),
                                              QLatin1String("Initialised")));
    return {};
}

void DbusAutomationServer::stop() {
    if (!serving_) return;
    serving_ = false;
    conn_.interface()->unregisterService(QLatin1String(bus::kService));
    unpublish();
}

void DbusAutomationServer::unpublish() {
    unregisterSimulation();
    conn_.unregisterObject(QLatin1String(bus::kTallixPath));
    // Objects of clients whose call is still running go when it returns.
    for (auto& c : clients_) c->gone = true;
    std::erase_if(clients_, [](const auto& c) { return c->busy == 0; });
    watcher_.reset();
    tallixNode_.reset();
}

std::size_t DbusAutomationServer::clientCount() const {
    std::size_t n = 0;
    for (const auto& c : clients_)
        if (!c->gone) ++n;
    return n;
}

DbusAutomationServer::Client* DbusAutomationServer::find(const QString& name) const {
    for (const auto& c : clients_)
        if (!c->gone && c->name == name) return c.get();
    return nullptr;
}

DbusAutomationServer::Client* DbusAutomationServer::enter(const QString& name) {
    if (Client* c = find(name)) {
        ++c->busy;
        return c;
    }
    auto record = std::make_unique<Client>();
    Client* c = record.get();
    c->name = name;
    c->busy = 1;
    clients_.push_back(std::move(record));
    if (watcher_ && !name.isEmpty()) {
        watcher_->addWatchedService(name);
        // The client may have left before the watch was in place: ask the bus once, after it.
        auto* pending = new QDBusPendingCallWatcher(
            conn_.interface()->asyncCall(QStringLiteral("NameHasOwner"), name), watcher_.get());
        QObject::connect(pending, &QDBusPendingCallWatcher::finished, watcher_.get(),
                         [this, name](QDBusPendingCallWatcher* w) {
                             const QDBusPendingReply<bool> r = *w;
                             w->deleteLater();
                             if (!r.isError() && !r.value()) clientLeft(name);
                         });
    }
    // Creating the object starts the controller when nothing has yet; that may let other
    // calls run meanwhile.
    try {
        c->object = std::make_unique<tallix>(c_);
    } catch (...) {
        --c->busy;
        if (c->busy == 0) release(c);
        throw;
    }
    relayEvents(c);
    return c;
}

void DbusAutomationServer::leave(Client* client) {
    if (--client->busy == 0 && client->gone) release(client);
}

void DbusAutomationServer::clientLeft(const QString& name) {
    Client* c = find(name);
    if (!c) return;
    c->gone = true;
    if (watcher_) watcher_->removeWatchedService(name);
    if (c->busy == 0) release(c);
}

void DbusAutomationServer::release(Client* client) {
    std::erase_if(clients_, [client](const auto& c) { return c.get() == client; });
}

void DbusAutomationServer::relayEvents(Client* c) {
    auto signal = [](const char* name) {
        return QDBusMessage::createSignal(QLatin1String(bus::kTallixPath), QLatin1String(bus::kTallixInterface),
                                          QLatin1String(name));
    };
    // Every client's object raises each event, but only one sends it: the message (a batch of
    // votes can be long) is made by that one alone.
    tallix& t = *c->object;
    t.FromTLXCtrl.connect([this, c, signal](const std::string& sData) {
        broadcast(c, true, [&] { return signal("FromTLXCtrl") << qs(sData); });
    });
    t.Initialised.connect([this, c, signal] { broadcast(c, false, [&] { return signal("Initialised"); }); });
    t.FromCtrlFormBaseStationStartVoteCount.connect([this, c, signal](int baseCount) {
        broadcast(c, true, [&] { return signal("FromCtrlFormBaseStationStartVoteCount") << baseCount; });
    });
    t.FromTLXCtrlBaseError.connect([this, c, signal](int index, const std::string& msg) {
        broadcast(c, true, [&] { return signal("FromTLXCtrlBaseError") << index << qs(msg); });
    });
    t.FromTLXCtrlBaseFeedback.connect([this, c, signal](int index, const std::string& msg) {
        broadcast(c, true, [&] { return signal("FromTLXCtrlBaseFeedback") << index << qs(msg); });
    });
    t.VKeyPressed.connect([this, c, signal] { broadcast(c, true, [&] { return signal("VKeyPressed"); }); });
}

void DbusAutomationServer::broadcast(const Client* from, bool needsSubscription,
                                     const std::function<QDBusMessage()>& makeSignal) {
    if (!serving_) return;
    for (const auto& c : clients_) {
        if (!c->object) continue;
        if (needsSubscription && !c->object->subscribed()) continue;
        if (c.get() == from) conn_.send(makeSignal());
        return;
    }
}

bool DbusAutomationServer::registerSimulation() {
    bool ok = true;
    if (simShow_) {
        simShowNode_ = std::make_unique<SimShowNode>(*simShow_);
        ok = conn_.registerVirtualObject(QLatin1String(bus::kSimShowPath), simShowNode_.get()) && ok;
    }
    if (simBases_) {
        simBasesNode_ = std::make_unique<SimBasesNode>(*simBases_);
        ok = conn_.registerVirtualObject(QLatin1String(bus::kSimBasesPath), simBasesNode_.get()) && ok;
    }
    return ok;
}

void DbusAutomationServer::unregisterSimulation() {
    if (simShowNode_) conn_.unregisterObject(QLatin1String(bus::kSimShowPath));
    if (simBasesNode_) conn_.unregisterObject(QLatin1String(bus::kSimBasesPath));
    simShowNode_.reset();
    simBasesNode_.reset();
}

}  // namespace tlx
