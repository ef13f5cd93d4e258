#pragma once
// Views of the set-up tools: the channel scan (keypads, options, the scan's progress and the
// results chart) and the system preparation (the base steps, the device lists and the
// programming). They show their models and forward the operator's actions.
#include <QWidget>
#include <cstdint>
#include <memory>

#include "ui/Views.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QPlainTextEdit;
class QGroupBox;
class QCheckBox;
class QRadioButton;
class QCloseEvent;
class QChart;
class QBarSet;
class QCategoryAxis;
class QValueAxis;

namespace tlx {

class frmKelvarinCorehubChannelScan;
class frmKelvarinCorehubSystemPrep;

class ChannelScanView : public QWidget, public ModelView {
    Q_OBJECT
public:
    explicit ChannelScanView(frmKelvarinCorehubChannelScan& model);
    ~ChannelScanView() override;
    void refresh();
    void detach() override;

protected:
    void closeEvent(QCloseEvent* e) override;

private:
    void refreshChart();
    frmKelvarinCorehubChannelScan& model_;
    std::uint64_t sub_ = 0;
    bool refreshing_ = false;
    QLineEdit* addKeypad_;
    QPushButton* add_;
    QPushButton* remove_;
    QTableWidget* keypads_;
    QLabel* estimate_;
    QLabel* status_;
    QPushButton* prompt_;
    QLabel* response_;
    QPushButton* scan_;
    QPushButton* cancel_;
    QPushButton* startAgain_;
    QPushButton* options_;
    QPushButton* debug_;
    QGroupBox* optionsBox_;
    QLineEdit* start_;
    QLineEdit* end_;
    QLineEdit* step_;
    QLineEdit* votes_;
    QLineEdit* delay_;
    QLineEdit* list_;
    QRadioButton* range_;
    QRadioButton* listMode_;
    QLabel* scanNumber_;
    QLabel* results_;
    QCheckBox* cumulative_;
    QRadioButton* byNumber_;
    QRadioButton* byIndex_;
    QPushButton* back_;
    QPushButton* forward_;
    QPushButton* deleteResult_;
    QPushButton* recompile_;
    QChart* chart_;
    QBarSet* bars_;
    QCategoryAxis* axisX_;
    QValueAxis* axisY_;
    int axisType_ = -1;
    QGroupBox* debugBox_;
    QPlainTextEdit* debugText_;
};

class SystemPrepView : public QWidget, public ModelView {
    Q_OBJECT
public:
    explicit SystemPrepView(frmKelvarinCorehubSystemPrep& model);
    ~SystemPrepView() override;
    void refresh();
    void detach() override;

protected:
    void closeEvent(QCloseEvent* e) override;

private:
    frmKelvarinCorehubSystemPrep& model_;
    std::uint64_t sub_ = 0;
    bool refreshing_ = false;
    QLabel* status_;
    QLabel* countdown_;
    QGroupBox* baseBox_;
    QLabel* baseName_;
    QLabel* reset_;
    QLabel* resetDone_;
    QLabel* unplug_;
    QPushButton* unplugDone_;
    QLabel* unplugged_;
    QLabel* checkFirmware_;
    QTableWidget* bases_;
    QTableWidget* keypads_;
    QTableWidget* presenters_;
    QLineEdit* hid_;
    QLineEdit* sid_;
    QLineEdit* presenterHid_;
    QPushButton* program_;
    QPushButton* deleteKeypads_;
    QPushButton* swap_;
    QPushButton* deletePresenters_;
    QPushButton* export_;
};

// The view of a set-up form, or nothing when the form is not one of them.
std::unique_ptr<QWidget> makeSetupView(Form& form);

}  // namespace tlx
