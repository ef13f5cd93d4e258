// The session settings, the debug windows, the hot-key status and the closing window on the
// offscreen platform: what a user sees, and a user's edits reaching the forms' rules.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include "../drivers/DriverWorld.h"
#include "core/DebugForms.h"
#include "core/SmallForms.h"
#include "drivers/SessionSettings.h"
#include "presentation/HotKeys.h"
#include "support/QtTestApp.h"
#include "ui/Views.h"

using namespace tlx;
using namespace tlx::test;

namespace {
template <class W>
W* child(QWidget* view, const char* name) {
    auto* w = view ? view->findChild<W*>(name) : nullptr;
    EXPECT_NE(w, nullptr) << name;
    return w;
}

void type(QLineEdit* edit, const QString& text) {
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

std::vector<QString> column(QTableWidget* t, int c) {
    std::vector<QString> v;
    for (int r = 0; r < t->rowCount(); ++r) v.push_back(t->item(r, c) ? t->item(r, c)->text() : QString());
    return v;
}
}  // namespace

TEST(WindowViews, SessionSettingsShowEveryFieldAndOkGoesThroughTheFormsChecks) {
    qtApp();
    DriverWorld d;
    ViewManager views(d.w.c());
    d.station().setup.session.PrimaryChannel = 24;
    auto& form = d.w.c().forms.load<frmPrioritizerSessionSettings>(d.w.c(), &d.g2(), "0");
    form.Form_Load();
    form.Show();
    QWidget* view = views.viewOf(frmPrioritizerSessionSettings::kName);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->windowTitle(), "Session Settings");
    EXPECT_EQ(child<QLineEdit>(view, "txtChannel")->text(), "24");
    EXPECT_EQ(child<QLineEdit>(view, "txtSessionChannel_5")->text(), "24");
    EXPECT_EQ(child<QLineEdit>(view, "txtName")->text(), "tallix Session");
    EXPECT_EQ(child<QComboBox>(view, "cmbRegistryMode")->currentText(), "Dynamic");
    EXPECT_FALSE(child<QLineEdit>(view, "txtStaticRegSIDMax")->isVisible());
    EXPECT_FALSE(child<QLabel>(view, "lblStaticRegSIDMax")->isVisible());
    EXPECT_FALSE(child<QWidget>(view, "fraAdvanced")->isVisible());
    EXPECT_EQ(child<QPushButton>(view, "cmdAdvancedOptions")->text(), ">>");
    saveScreenshot(*view, "frmPrioritizerSessionSettings-basic");

    // The static registry mode brings its two fields; the advanced part opens on ">>"; the
    // environmental fields wait for the environment button; "Scan All" needs the auto scan.
    child<QComboBox>(view, "cmbRegistryMode")->setCurrentText("Static");
    EXPECT_EQ(form.cmbRegistryMode, 2);
    EXPECT_TRUE(child<QLineEdit>(view, "txtStaticRegSIDMax")->isVisible());
    EXPECT_TRUE(child<QLabel>(view, "lblStaticRegSIDOffset")->isVisible());
    QTest::mouseClick(child<QPushButton>(view, "cmdAdvancedOptions"), Qt::LeftButton);
    EXPECT_TRUE(child<QWidget>(view, "fraAdvanced")->isVisible());
    EXPECT_EQ(child<QPushButton>(view, "cmdAdvancedOptions")->text(), "<<");
    EXPECT_FALSE(child<QLineEdit>(view, "txtPacketRetryCount")->isEnabled());
    QTest::mouseClick(child<QPushButton>(view, "cmdEnvironment"), Qt::LeftButton);
    EXPECT_TRUE(child<QLineEdit>(view, "txtPacketRetryCount")->isEnabled());
    EXPECT_TRUE(child<QCheckBox>(view, "chkHighNoiseMode")->isEnabled());
    EXPECT_TRUE(child<QCheckBox>(view, "chkScanAllChannels")->isEnabled());
    child<QCheckBox>(view, "chkAutoScanEnabled")->click();
    EXPECT_FALSE(form.chkAutoScanEnabled);
    EXPECT_FALSE(child<QCheckBox>(view, "chkScanAllChannels")->isEnabled());
    type(child<QLineEdit>(view, "txtStaticRegSIDMax"), "200");
    saveScreenshot(*view, "frmPrioritizerSessionSettings-advanced");

    // A channel the radio does not have: the form's message, nothing sent, the form stays.
    type(child<QLineEdit>(view, "txtChannel"), "90");
    QTest::mouseClick(child<QPushButton>(view, "cmdOK"), Qt::LeftButton);
    ASSERT_FALSE(d.w.dialogs.shown.empty());
    EXPECT_EQ(d.w.dialogs.shown.back().text, "Primary Channel must be a whole number from 1 to 77");
    EXPECT_EQ(d.station().setup.session.PrimaryChannel, 24);
    EXPECT_EQ(d.station().setup.session.RegistryMode, 1);
    EXPECT_EQ(views.viewOf(frmPrioritizerSessionSettings::kName), view);

    type(child<QLineEdit>(view, "txtChannel"), "45");
    QTest::mouseClick(child<QPushButton>(view, "cmdOK"), Qt::LeftButton);
    EXPECT_EQ(d.station().setup.session.PrimaryChannel, 45);
    EXPECT_EQ(d.station().setup.session.RegistryMode, 2);
    EXPECT_EQ(d.station().setup.session.StaticRegSIDMax, 200);
    EXPECT_FALSE(d.station().setup.session.AutoScanEnabled);
    EXPECT_FALSE(d.w.c().forms.isLoaded(frmPrioritizerSessionSettings::kName));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(WindowViews, DebugWindowsShowStateWindowsAndProcessesAndCloseThroughTheirForms) {
    qtApp();
    TestWorld w;
    ViewManager views(w.c());
    w.start();
    for (const char* command : {"SHOWDEBUG", "SWH", "SPL"}) {
        w.main().AddDataToCommandQueue(command);
        w.scheduler.advance(60);
    }

    QWidget* debug = views.viewOf(DebugForm::kName);
    ASSERT_NE(debug, nullptr);
    EXPECT_TRUE(debug->isVisible());
    EXPECT_EQ(debug->windowTitle(), "Debug");
    auto* state = child<QTableWidget>(debug, "lvwState");
    const auto names = column(state, 0);
    const auto at = std::find(names.begin(), names.end(), "InitialisedState");
    ASSERT_NE(at, names.end());
    EXPECT_EQ(state->item(static_cast<int>(at - names.begin()), 1)->text(), "2");
    saveScreenshot(*debug, "frm_DEBUG");

    QWidget* processes = views.viewOf(DebugProcessListForm::kName);
    ASSERT_NE(processes, nullptr);
    auto* list = child<QListWidget>(processes, "lstProcesses");
    EXPECT_FALSE(list->findItems("POWERPNT.EXE", Qt::MatchExactly).isEmpty());
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(child<QLabel>(processes, "lblCount")->text().toStdString(), "1 process");
    saveScreenshot(*processes, "frmDebugProcessList");

    // The program's own windows as the window system has them, read again on Refresh.
    QWidget* handles = views.viewOf(DebugWindowHandlesForm::kName);
    ASSERT_NE(handles, nullptr);
    QTest::mouseClick(child<QPushButton>(handles, "cmdRefresh"), Qt::LeftButton);
    auto* windows = child<QTableWidget>(handles, "lvwWindows");
    const auto classes = column(windows, 1);
    for (const char* shown : {DebugForm::kName, DebugProcessListForm::kName, DebugWindowHandlesForm::kName}) {
        const auto row = std::find(classes.begin(), classes.end(), shown);
        ASSERT_NE(row, classes.end()) << shown;
        const int r = static_cast<int>(row - classes.begin());
        EXPECT_EQ(windows->item(r, 3)->text(), "visible") << shown;
        EXPECT_NE(windows->item(r, 0)->text(), "-") << shown;  // a shown window has a handle
    }
    EXPECT_TRUE(child<QLabel>(handles, "lblForeground")->text().startsWith("Foreground window class: "));
    saveScreenshot(*handles, "frmDebugWindowHandles");

    // Closing a window unloads its form; once it is gone the headless listing stands in.
    auto* form = w.c().forms.get<DebugWindowHandlesForm>(DebugWindowHandlesForm::kName);
    EXPECT_TRUE(static_cast<bool>(form->topLevelWindows));
    debug->close();
    EXPECT_FALSE(w.c().forms.isLoaded(DebugForm::kName));
    EXPECT_EQ(views.viewOf(DebugForm::kName), nullptr);
    handles->close();
    EXPECT_FALSE(w.c().forms.isLoaded(DebugWindowHandlesForm::kName));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(WindowViews, HotKeyStatusAndTheClosingWindow) {
    qtApp();
    TestWorld w;
    ViewManager views(w.c());
    w.start();
    auto& hotKeys = w.c().forms.load<frmHotKey>(w.c());
    hotKeys.Show();
    QWidget* view = views.viewOf(frmHotKey::kName);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->windowTitle(), "Hot Key");
    auto* status = child<QLabel>(view, "lblStatus");
    EXPECT_EQ(status->text(), "Hot Key Disabled");
    EXPECT_TRUE(status->styleSheet().contains("#b00020"));
    saveScreenshot(*view, "frmHotKey-disabled");
    hotKeys.RegisterPresenterKeys(0);
    EXPECT_EQ(status->text(), "Hot Key Enabled");
    EXPECT_TRUE(status->styleSheet().contains("#1e7b34"));
    EXPECT_EQ(child<QLabel>(view, "lblWindow")->text(), "Attached to the controller window");
    saveScreenshot(*view, "frmHotKey-enabled");
    // Closing the status window keeps the keys.
    view->close();
    EXPECT_FALSE(hotKeys.Visible());
    EXPECT_TRUE(w.c().forms.isLoaded(frmHotKey::kName));
    EXPECT_EQ(hotKeys.lblStatus, "Hot Key Enabled");

    auto& closing = w.c().forms.load<CloseControllerForm>(w.c());
    closing.Show();
    QWidget* last = views.viewOf(CloseControllerForm::kName);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->windowTitle(), "tallix controller");
    EXPECT_EQ(child<QLabel>(last, "lblStatus")->text(), "Closing the tallix controller ...");
    saveScreenshot(*last, "frm_CloseController");
}
