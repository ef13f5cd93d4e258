#include <gtest/gtest.h>

#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include "core/DebugForms.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/PortFile.h"
#include "core/SmallForms.h"
#include "support/QtTestApp.h"
#include "support/TestWorld.h"
#include "ui/Views.h"

using namespace tlx;
using namespace tlx::test;

TEST(Views, KeypadSetupShowsRowsAndItsChecks) {
    qtApp();
    TestWorld w;
    ViewManager views(w.c());
    w.start();
    auto& form = w.c().forms.load<FrmInit>(w.c());
    form.rows = {InitGridRow{"100100100100", "Kelvarin Corehub g2", "1", "40"},
                 InitGridRow{"200200200200", "Kelvarin Corehub g2", "41", "41"}};
    form.changed();
    form.Show();
    auto* view = dynamic_cast<FrmInitView*>(views.viewOf(FrmInit::kName));
    ASSERT_NE(view, nullptr);
    auto* grid = view->findChild<QTableWidget*>();
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->rowCount(), 2);
    EXPECT_EQ(grid->horizontalHeaderItem(2)->text().toStdString(), "Lowest Keypad Number");
    EXPECT_EQ(grid->item(1, 3)->text().toStdString(), "41");
    saveScreenshot(*view, "keypad-setup");
    // The user corrects the second row in the grid and presses OK: the model checks it.
    grid->item(1, 3)->setText("80");
    QPushButton* ok = nullptr;
    for (auto* b : view->findChildren<QPushButton*>())
        if (b->text() == "OK") ok = b;
    ASSERT_NE(ok, nullptr);
    ok->click();
    for (const auto& d : w.dialogs.shown) EXPECT_EQ(d.text.find("Keypad Setup"), std::string::npos) << d.text;
    EXPECT_EQ(readPortFile(w.appData() / "tallix" / "port.tlc").data.bases.at(1).gridHi, 80);
    // Accepted: the form closed itself, and its view goes once the click has returned.
    EXPECT_FALSE(w.c().forms.isLoaded(FrmInit::kName));
    EXPECT_EQ(views.viewOf(FrmInit::kName), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(Views, BubbleLogShowsTheBalloons) {
    qtApp();
    TestWorld w;
    ViewManager views(w.c());
    w.start();
    w.c().logs.balloon("Base Station 1\r\nBase station disconnected", 3);
    auto& form = w.c().forms.load<BubbleMessageLogForm>(w.c());
    form.Show();
    auto* view = dynamic_cast<BubbleLogView*>(views.viewOf(BubbleMessageLogForm::kName));
    ASSERT_NE(view, nullptr);
    auto* text = view->findChild<QPlainTextEdit*>();
    EXPECT_TRUE(text->toPlainText().contains("Base station disconnected"));
    saveScreenshot(*view, "bubble-message-log");
    // Unloading the form takes its view away.
    w.c().forms.unload(form);
    EXPECT_EQ(views.viewOf(BubbleMessageLogForm::kName), nullptr);
}

TEST(Views, DebugWindowsListTheirLines) {
    qtApp();
    TestWorld w;
    ViewManager views(w.c());
    w.start();
    w.main().AddDataToCommandQueue("SPL");
    w.scheduler.advance(60);
    auto* view = views.viewOf(DebugProcessListForm::kName);
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->isVisible());
    EXPECT_TRUE(view->findChild<QPlainTextEdit*>()->toPlainText().contains("POWERPNT.EXE"));
    saveScreenshot(*view, "debug-process-list");
}
