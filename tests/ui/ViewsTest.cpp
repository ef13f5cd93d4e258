#include <gtest/gtest.h>

#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/PortFile.h"
#include "core/SmallForms.h"
#include "support/QtTestApp.h"
#include "support/TestWorld.h"
#include "ui/Views.h"

using namespace tlx;
using namespace tlx::test;

namespace {
// A started controller whose forms have their views.
class Views : public ::testing::Test {
protected:
    Views() { w.start(); }
    QApplication& app = qtApp();  // before any view
    TestWorld w;
    ViewManager views{w.c()};
};
}  // namespace

TEST_F(Views, KeypadSetupShowsRowsAndItsChecks) {
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
    EXPECT_EQ(grid->item(1, 3)->text().toStdString(), "41");
    saveScreenshot(*view, "frmInit");
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

TEST_F(Views, BubbleLogShowsTheBalloons) {
    w.c().logs.balloon("Base Station 1\r\nBase station disconnected", 3);
    auto& form = w.c().forms.load<BubbleMessageLogForm>(w.c());
    form.Show();
    auto* view = dynamic_cast<BubbleLogView*>(views.viewOf(BubbleMessageLogForm::kName));
    ASSERT_NE(view, nullptr);
    auto* text = view->findChild<QPlainTextEdit*>();
    EXPECT_TRUE(text->toPlainText().contains("Base station disconnected"));
    saveScreenshot(*view, "frmBubbleErrorMessageLog");
    // Unloading the form takes its view away.
    w.c().forms.unload(form);
    EXPECT_EQ(views.viewOf(BubbleMessageLogForm::kName), nullptr);
}
