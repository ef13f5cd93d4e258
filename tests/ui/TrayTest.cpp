#include <gtest/gtest.h>

#include <QAction>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVirtualObject>
#include <QMenu>
#include <QSystemTrayIcon>

#include "app/BusTestSupport.h"
#include "platform/qt/QtTray.h"
#include "support/QtTestApp.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// A desktop's notification service as far as the tray uses it: Notify, answered with an id.
class FakeNotifications : public QDBusVirtualObject {
public:
    explicit FakeNotifications(QDBusConnection conn) : conn_(std::move(conn)) {}
    struct Call {
        QString app, icon, summary, body;
        int urgency = -1;
    };
    std::vector<Call> calls;

    bool handleMessage(const QDBusMessage& m, const QDBusConnection&) override {
        if (m.member() != QLatin1String("Notify") || m.arguments().size() != 8) return false;
        const QVariantList a = m.arguments();
        const auto hints = qdbus_cast<QVariantMap>(a[6]);
        calls.push_back({a[0].toString(), a[2].toString(), a[3].toString(), a[4].toString(),
                         hints.value(QStringLiteral("urgency"), -1).toInt()});
        conn_.send(m.createReply(QVariantList{QVariant::fromValue(static_cast<uint>(calls.size()))}));
        return true;
    }
    QString introspect(const QString&) const override { return {}; }

private:
    QDBusConnection conn_;
};

QImage picture(const QIcon& icon) { return icon.pixmap(32).toImage(); }

}  // namespace

// Without a tray on the desktop (the offscreen platform has none) balloons become desktop
// notifications on the session bus, each with its title, text and icon kind.
TEST(Tray, BalloonsWithoutATrayBecomeDesktopNotifications) {
    qtApp();
    ASSERT_FALSE(QSystemTrayIcon::isSystemTrayAvailable());
    PrivateBus bus;
    if (!bus.ok()) GTEST_SKIP() << "no private session bus could start: " << bus.problem();
    QDBusConnection service = bus.connect(QStringLiteral("notifications"));
    FakeNotifications fake(service);
    ASSERT_TRUE(service.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), &fake));
    ASSERT_TRUE(service.registerService(QStringLiteral("org.freedesktop.Notifications")));

    QtTray tray(bus.connect(QStringLiteral("tray")));
    tray.addIcon("tallix controller v1.0.0");
    tray.balloon("KEYPAD SETUP", "Base 1\r\nIt may be necessary to remove and plug", 3);
    tray.balloon("tallix controller", "Press V to vote", 1);
    tray.balloon("tallix controller", "Local App Path Error", 2);
    ASSERT_TRUE(waitFor([&] { return fake.calls.size() >= 3; }, 10.0));
    EXPECT_EQ(fake.calls[0].app, "tallix controller");
    EXPECT_EQ(fake.calls[0].summary, "KEYPAD SETUP");
    EXPECT_EQ(fake.calls[0].body, "Base 1\nIt may be necessary to remove and plug");
    EXPECT_EQ(fake.calls[0].icon, "dialog-error");
    EXPECT_EQ(fake.calls[0].urgency, 2);
    EXPECT_EQ(fake.calls[1].icon, "dialog-information");
    EXPECT_EQ(fake.calls[1].urgency, 1);
    EXPECT_EQ(fake.calls[2].icon, "dialog-warning");
    service.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
}

// The task menu follows the display programs' tasks and calls back with the entry's number;
// each animation frame is a picture of its own, and a frame out of range is the resting icon.
TEST(Tray, TaskMenuAndAnimationFrames) {
    qtApp();
    QtTray tray(QDBusConnection(QStringLiteral("no bus")));
    int task = 0, about = 0, quit = 0;
    tray.onTask = [&](int i) { task = i; };
    tray.onAbout = [&] { ++about; };
    tray.onQuit = [&] { ++quit; };
    tray.setTasks({"Show Results", "Next Question"});
    auto entry = [&](const char* name) { return tray.menu()->findChild<QAction*>(name); };
    for (const char* name : {"Task1", "Task2", "Task3", "Task4", "Task5", "TaskAbout", "TaskQuit"})
        ASSERT_NE(entry(name), nullptr) << name;
    EXPECT_EQ(entry("Task1")->text(), "Show Results");
    EXPECT_TRUE(entry("Task2")->isVisible());
    EXPECT_FALSE(entry("Task3")->isVisible());
    entry("Task2")->trigger();
    entry("TaskAbout")->trigger();
    entry("TaskQuit")->trigger();
    EXPECT_EQ(task, 2);
    EXPECT_EQ(about, 1);
    EXPECT_EQ(quit, 1);
    tray.setTasks({"Next Question"});
    EXPECT_EQ(entry("Task1")->text(), "Next Question");
    EXPECT_FALSE(entry("Task2")->isVisible());

    tray.addIcon("tallix controller v1.0.0");
    std::vector<QImage> frames;
    for (int f = 0; f <= Tray::kAnimationFrames; ++f) {
        tray.setIconFrame(f);
        frames.push_back(picture(tray.currentIcon()));
        ASSERT_FALSE(frames.back().isNull());
        for (int g = 0; g < f; ++g) EXPECT_NE(frames[static_cast<std::size_t>(g)], frames.back()) << g << " and " << f;
    }
    tray.setIconFrame(Tray::kAnimationFrames + 1);
    EXPECT_EQ(tray.frame(), 0);
    EXPECT_EQ(picture(tray.currentIcon()), frames[0]);
}
