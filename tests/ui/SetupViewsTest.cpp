// Views of the channel scan and the system preparation over simulated bases.
#include <gtest/gtest.h>

#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include "setup/ChannelScan.h"
#include "setup/SetupWorld.h"
#include "setup/SystemPrep.h"
#include "support/QtTestApp.h"
#include "ui/SetupViews.h"

using namespace tlx;
using namespace tlx::test;

namespace {

QPushButton* buttonOf(QWidget& view, const char* caption, int nth = 0) {
    for (auto* b : view.findChildren<QPushButton*>())
        if (b->text() == caption && nth-- == 0) return b;
    return nullptr;
}

bool showsLabel(QWidget& view, const std::string& text) {
    for (auto* l : view.findChildren<QLabel*>())
        if (l->isVisible() && l->text().toStdString() == text) return true;
    return false;
}

QTableWidget* tableWithHeading(QWidget& view, const char* heading) {
    for (auto* t : view.findChildren<QTableWidget*>())
        if (t->horizontalHeaderItem(0) && t->horizontalHeaderItem(0)->text() == heading) return t;
    return nullptr;
}

}  // namespace

TEST(SetupViews, ChannelScanOptionsScanningAndResultsChart) {
    qtApp();
    SetupWorld s(R"([bases]
count=1
seed=5
[base1]
type=KELVARIN COREHUB G1
id=100100100500
keypads=1-8
hidstart=300500001
noise=45
channelnoise=24:0,45:10,60-77:80
)");
    ViewManager views(s.w.c());
    auto& scan = showChannelScan(s.w.c());
    auto* view = dynamic_cast<ChannelScanView*>(views.viewOf(frmKelvarinCorehubChannelScan::kName));
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->isVisible());

    // Keypads are typed in and added through the view.
    QLineEdit* entry = nullptr;
    for (auto* e : view->findChildren<QLineEdit*>())
        if (e->placeholderText() == "Keypad number") entry = e;
    ASSERT_NE(entry, nullptr);
    for (const char* k : {"3", "5"}) {
        QTest::keyClicks(entry, k);
        QTest::keyClick(entry, Qt::Key_Return);
    }
    ASSERT_EQ(scan.lvwKeypads.size(), 2u);
    auto* keypads = tableWithHeading(*view, "Keypad");
    ASSERT_NE(keypads, nullptr);
    EXPECT_EQ(keypads->rowCount(), 2);
    EXPECT_EQ(keypads->item(1, 0)->text().toStdString(), "300 500 005");
    EXPECT_EQ(keypads->item(1, 1)->text().toStdString(), "5");

    // The options, with a bad votes count refused by the model when the box is left.
    buttonOf(*view, "Options...")->click();
    auto* options = view->findChild<QGroupBox*>();
    for (auto* g : view->findChildren<QGroupBox*>())
        if (g->title() == "Scan Options") options = g;
    ASSERT_TRUE(options->isVisible());
    scan.txtVotesPerChannel = "30";
    scan.OptionLeft(frmKelvarinCorehubChannelScan::Option::VotesPerChannel);
    EXPECT_TRUE(showsLabel(*view, "Estimated scan time... 0h 1m 52s"));
    saveScreenshot(*view, "frmKelvarinCorehubChannelScan-options");
    buttonOf(*view, "Close")->click();
    EXPECT_FALSE(options->isVisible());

    buttonOf(*view, "Scan")->click();
    s.w.scheduler.advanceSeconds(10 + 40);
    ASSERT_EQ(scan.state(), frmKelvarinCorehubChannelScan::ScanState::Scanning);
    EXPECT_FALSE(buttonOf(*view, "Scan")->isEnabled());
    EXPECT_TRUE(buttonOf(*view, "Cancel")->isEnabled());
    EXPECT_EQ(keypads->item(0, 2)->text().toStdString(), "Ready");
    scan.mnuShowDebug_Click();
    saveScreenshot(*view, "frmKelvarinCorehubChannelScan-scanning");
    // The close box is refused while scanning, and cancels the scan.
    view->close();
    EXPECT_TRUE(showsLabel(*view, "Cannot close whilst scanning"));
    EXPECT_TRUE(s.w.c().forms.isLoaded(frmKelvarinCorehubChannelScan::kName));
    scan.cmdDebugHide_Click();

    buttonOf(*view, "Scan")->click();
    s.w.scheduler.advanceSeconds(10 + scan.estimatedSeconds() + 1);
    ASSERT_EQ(scan.results().size(), 1u);
    auto* chartView = view->findChild<QChartView*>();
    ASSERT_NE(chartView, nullptr);
    auto* series = qobject_cast<QBarSeries*>(chartView->chart()->series().at(0));
    ASSERT_NE(series, nullptr);
    QBarSet* bars = series->barSets().at(0);
    ASSERT_EQ(bars->count(), kScanChannelCount);
    for (int i : {0, 24, 45, 70}) EXPECT_EQ(bars->at(i), scan.shownScores[static_cast<std::size_t>(i)]) << i;
    EXPECT_GT(bars->at(24), bars->at(70));
    const auto axes = chartView->chart()->axes(Qt::Horizontal);
    ASSERT_FALSE(axes.isEmpty());
    EXPECT_EQ(axes.at(0)->titleText().toStdString(), "Channel Number");
    EXPECT_TRUE(showsLabel(*view, scan.lblResults));
    EXPECT_TRUE(showsLabel(*view, "Scan 1 of 1"));
    saveScreenshot(*view, "frmKelvarinCorehubChannelScan-results");

    scan.optGraphType_Click(1);
    EXPECT_EQ(chartView->chart()->axes(Qt::Horizontal).at(0)->titleText().toStdString(), "Channel Index");
    buttonOf(*view, "Exit")->click();
    EXPECT_FALSE(s.w.c().forms.isLoaded(frmKelvarinCorehubChannelScan::kName));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST(SetupViews, SystemPrepStepsAndProgrammedRows) {
    qtApp();
    SetupWorld s(R"([bases]
count=1
[base1]
type=KELVARIN COREHUB G2
id=100100100700
keypads=1-3
hidstart=300700001
presenter=300799901
scanner=300799902
spares=300700010
firmware.300700002=2.00.01.1901.1200
)");
    ViewManager views(s.w.c());
    auto& prep = showSystemPrep(s.w.c());
    auto* view = dynamic_cast<SystemPrepView*>(views.viewOf(frmKelvarinCorehubSystemPrep::kName));
    ASSERT_NE(view, nullptr);
    s.settle();
    EXPECT_TRUE(showsLabel(*view, "PROGRAMMING BASE"));
    EXPECT_TRUE(showsLabel(*view, "Base station 100 100 100 700"));
    QPushButton* replugged = buttonOf(*view, "Done");
    ASSERT_NE(replugged, nullptr);
    EXPECT_TRUE(replugged->isVisible());
    EXPECT_TRUE(replugged->isEnabled());
    saveScreenshot(*view, "frmKelvarinCorehubSystemPrep-steps");
    replugged->click();
    s.settle();
    EXPECT_EQ(prep.prepStep, frmKelvarinCorehubSystemPrep::kStepDeviceLists);

    auto* keypads = tableWithHeading(*view, "HID");
    ASSERT_NE(keypads, nullptr);
    EXPECT_EQ(keypads->rowCount(), 3);

    QLineEdit* hid = nullptr;
    for (auto* e : view->findChildren<QLineEdit*>())
        if (e->placeholderText() == "Keypad HID") hid = e;
    ASSERT_NE(hid, nullptr);
    QTest::keyClicks(hid, "300 700 010");
    QTest::keyClick(hid, Qt::Key_Return);
    ASSERT_EQ(keypads->rowCount(), 4);
    EXPECT_EQ(keypads->item(3, 0)->text().toStdString(), "300 700 010");
    EXPECT_EQ(keypads->item(3, 1)->text().toStdString(), "4");

    buttonOf(*view, "Program Keypads")->click();
    s.w.scheduler.advanceSeconds(1);
    EXPECT_EQ(keypads->item(1, 2)->text().toStdString(), "Old Firmware Detected");
    EXPECT_EQ(keypads->item(3, 2)->text().toStdString(), "Programmed");
    EXPECT_TRUE(showsLabel(*view, "3 of 4 keypads responded OK, 1 errors"));
    EXPECT_TRUE(showsLabel(*view, "29s"));
    EXPECT_FALSE(buttonOf(*view, "Swap")->isEnabled()) << "no swapping while the base takes registrations";
    saveScreenshot(*view, "frmKelvarinCorehubSystemPrep-programmed");

    s.w.scheduler.advanceSeconds(30);
    EXPECT_TRUE(buttonOf(*view, "Swap")->isEnabled());
    // Leaving with one keypad in error asks; "No" keeps the window.
    s.w.dialogs.answers = {false};
    view->close();
    EXPECT_EQ(s.lastTitle(), "Confirm");
    EXPECT_TRUE(s.w.c().forms.isLoaded(frmKelvarinCorehubSystemPrep::kName));
    s.w.dialogs.answers = {true};
    buttonOf(*view, "Close")->click();
    EXPECT_FALSE(s.w.c().forms.isLoaded(frmKelvarinCorehubSystemPrep::kName));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
