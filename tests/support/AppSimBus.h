#pragma once
// The controller in this process on virtual time, served on a private session bus beside the
// simulated bases (and, when given, the simulated presentation program). Bus clients play the
// add-in and the display program; the /sim objects play the keypads and the show.
#include <gtest/gtest.h>

#include "app/BusTestSupport.h"
#include "core/Text.h"
#include "platform/dbus/DbusAutomationServer.h"
#include "platform/dbus/DbusNames.h"
#include "platform/sim/basesim/SimBasesAdapter.h"

namespace tlx::test {

class SimBusTest : public ::testing::Test {
protected:
    // Starts the world as set up so far and serves it.
    void serve(SimShowControl* show = nullptr) {
        ASSERT_TRUE(bus.ok()) << bus.problem();
        w.start();
        server = std::make_unique<DbusAutomationServer>(w.c(), bus.connect(QStringLiteral("server")));
        server->serveSimulation(show, &simBases);
        ASSERT_EQ(server->start(), "");
    }
    QDBusMessage show(const char* method, const QVariantList& args = {}) {
        return callOn(control, QLatin1String(bus::kSimShowPath), QLatin1String(bus::kSimShowInterface),
                      QLatin1String(method), args);
    }
    QDBusMessage bases(const char* method, const QVariantList& args = {}) {
        return callOn(control, QLatin1String(bus::kSimBasesPath), QLatin1String(bus::kSimBasesInterface),
                      QLatin1String(method), args);
    }
    // A keypad's press through /sim/bases, then time for the base to pass it on.
    void press(const char* base, int keypad, const char* keys) {
        EXPECT_EQ(bases("Press", {QString::fromLatin1(base), keypad, QString::fromLatin1(keys)}).type(),
                  QDBusMessage::ReplyMessage);
        run(30);
    }
    bool send(BusClient& c, const char* line) {
        return c.call("SendCommand", {QString::fromLatin1(line)}).arguments().value(0).toBool();
    }
    // Lets the controller's time run, then the bus deliver what it sent.
    void run(int ms) {
        w.scheduler.advance(ms);
        QCoreApplication::processEvents();
    }
    // Runs the controller's time in 20 ms steps, at most `virtualMs` of it, while the bus
    // delivers in real time: on a loaded machine the bus is slow, and without the cap the
    // controller would live through seconds that a keypad's screen text does not last.
    bool until(const std::function<bool()>& condition, int virtualMs = 10000) {
        int spent = 0;
        return waitFor([&] {
            if (spent < virtualMs) {
                run(20);
                spent += 20;
            } else {
                QCoreApplication::processEvents();
            }
            return condition();
        });
    }
    bool voteOpen(std::size_t base) { return w.baseLibrary.station(base).voteOpen; }
    // Every record the client has heard, in order.
    static std::string records(const BusClient& c) {
        std::string all;
        for (const auto& line : c.heard)
            if (startsWith(line, "FromTLXCtrl \"")) all += replaceAll(line.substr(13, line.size() - 14), "\\r\\n", "");
        return all;
    }

    PrivateBus bus;
    TestWorld w;
    SimBasesAdapter simBases{w.baseLibrary};
    std::unique_ptr<DbusAutomationServer> server;
    QDBusConnection control = bus.connect(QStringLiteral("control"));
};

}  // namespace tlx::test
