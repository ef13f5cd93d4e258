#include "ui/SetupViews.h"
#include "ui/ViewStyle.h"

#include <QCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QValueAxis>
#include <QVBoxLayout>
#include <algorithm>

#include "core/Text.h"
#include "setup/ChannelScan.h"
#include "setup/SystemPrep.h"
#include "ui/Icons.h"

namespace tlx {

namespace {

QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }

QTableWidget* table(const std::vector<std::string>& columns) {
    auto* t = new QTableWidget(0, static_cast<int>(columns.size()));
    QStringList heads;
    for (const auto& c : columns) heads << q(c);
    t->setHorizontalHeaderLabels(heads);
    t->verticalHeader()->hide();
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->horizontalHeader()->setStretchLastSection(true);
    // Serial numbers ("### 000 000 000") on one line.
    if (columns.size() > 1) t->setColumnWidth(0, 150);
    return t;
}

void setCell(QTableWidget* t, int row, int column, const std::string& text) {
    auto* item = t->item(row, column);
    if (!item) {
        item = new QTableWidgetItem;
        t->setItem(row, column, item);
    }
    if (item->text() != q(text)) item->setText(q(text));
}

void setText(QLineEdit* e, const std::string& text) {
    if (e->text() != q(text)) e->setText(q(text));
}

QPushButton* button(const char* caption, QWidget* parent = nullptr) { return new QPushButton(caption, parent); }

}  // namespace

// ---- channel scan ----

ChannelScanView::ChannelScanView(frmKelvarinCorehubChannelScan& model) : model_(model) {
    using Option = frmKelvarinCorehubChannelScan::Option;
    auto* lay = new QHBoxLayout(this);
    style::window(lay);
    auto* left = new QVBoxLayout;
    auto* right = new QVBoxLayout;
    lay->addLayout(left, 2);
    lay->addLayout(right, 3);

    auto* keypadBox = new QGroupBox("Keypads");
    auto* kl = new QVBoxLayout(keypadBox);
    auto* entry = new QHBoxLayout;
    addKeypad_ = new QLineEdit;
    addKeypad_->setPlaceholderText("Keypad number");
    add_ = button("Add");
    remove_ = button("Remove");
    entry->addWidget(addKeypad_);
    entry->addWidget(add_);
    entry->addWidget(remove_);
    kl->addLayout(entry);
    keypads_ = table({"Keypad", "Number", "Status"});
    keypads_->setSelectionMode(QAbstractItemView::SingleSelection);
    kl->addWidget(keypads_);
    left->addWidget(keypadBox, 1);

    estimate_ = new QLabel;
    status_ = new QLabel;
    QFont bold = status_->font();
    bold.setBold(true);
    status_->setFont(bold);
    prompt_ = button("");
    prompt_->setFlat(true);
    prompt_->setStyleSheet("text-align: left; color: #1a5fb4; text-decoration: underline;");
    response_ = new QLabel;
    left->addWidget(estimate_);
    left->addWidget(status_);
    left->addWidget(prompt_);
    left->addWidget(response_);
    auto* buttons = new QGridLayout;
    scan_ = button("Scan");
    cancel_ = button("Cancel");
    startAgain_ = button("Start Again");
    options_ = button("Options...");
    debug_ = button("Debug...");
    auto* exit = button("Exit");
    buttons->addWidget(scan_, 0, 0);
    buttons->addWidget(cancel_, 0, 1);
    buttons->addWidget(startAgain_, 0, 2);
    buttons->addWidget(options_, 1, 0);
    buttons->addWidget(debug_, 1, 1);
    buttons->addWidget(exit, 1, 2);
    left->addLayout(buttons);

    optionsBox_ = new QGroupBox("Scan Options");
    auto* ol = new QGridLayout(optionsBox_);
    start_ = new QLineEdit;
    end_ = new QLineEdit;
    step_ = new QLineEdit;
    votes_ = new QLineEdit;
    delay_ = new QLineEdit;
    list_ = new QLineEdit;
    range_ = new QRadioButton("Channel range");
    listMode_ = new QRadioButton("Channel list");
    ol->addWidget(range_, 0, 0, 1, 2);
    ol->addWidget(new QLabel("Start channel"), 1, 0);
    ol->addWidget(start_, 1, 1);
    ol->addWidget(new QLabel("End channel"), 2, 0);
    ol->addWidget(end_, 2, 1);
    ol->addWidget(new QLabel("Channel step"), 3, 0);
    ol->addWidget(step_, 3, 1);
    ol->addWidget(listMode_, 4, 0, 1, 2);
    ol->addWidget(list_, 5, 0, 1, 2);
    ol->addWidget(new QLabel("Votes per channel"), 6, 0);
    ol->addWidget(votes_, 6, 1);
    ol->addWidget(new QLabel("Start delay (seconds)"), 7, 0);
    ol->addWidget(delay_, 7, 1);
    auto* closeOptions = button("Close");
    ol->addWidget(closeOptions, 8, 1);
    left->addWidget(optionsBox_);

    // Results.
    auto* resultsBox = new QGroupBox("Results");
    auto* rl = new QVBoxLayout(resultsBox);
    auto* nav = new QHBoxLayout;
    back_ = button("<");
    forward_ = button(">");
    scanNumber_ = new QLabel;
    scanNumber_->setAlignment(Qt::AlignCenter);
    nav->addWidget(back_);
    nav->addWidget(scanNumber_, 1);
    nav->addWidget(forward_);
    rl->addLayout(nav);
    chart_ = new QChart;
    chart_->legend()->hide();
    bars_ = new QBarSet("Score");
    bars_->setColor(QColor(40, 100, 200));
    for (int i = 0; i < kScanChannelCount; ++i) *bars_ << 0.0;
    auto* series = new QBarSeries;
    series->setBarWidth(0.9);
    series->append(bars_);
    chart_->addSeries(series);
    // Bars stand at their channel index; every tenth one is labelled with its number or index.
    axisX_ = new QCategoryAxis;
    axisX_->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    axisX_->setRange(-0.5, kScanChannelCount - 0.5);
    axisX_->setGridLineVisible(false);
    axisY_ = new QValueAxis;
    axisY_->setLabelFormat("%d");
    chart_->addAxis(axisX_, Qt::AlignBottom);
    chart_->addAxis(axisY_, Qt::AlignLeft);
    series->attachAxis(axisX_);
    series->attachAxis(axisY_);
    auto* chartView = new QChartView(chart_);
    chartView->setRenderHint(QPainter::Antialiasing);
    chartView->setMinimumHeight(260);
    rl->addWidget(chartView, 1);
    results_ = new QLabel;
    results_->setWordWrap(true);
    rl->addWidget(results_);
    auto* graph = new QHBoxLayout;
    cumulative_ = new QCheckBox("Show cumulative results");
    byNumber_ = new QRadioButton("Channel Number");
    byIndex_ = new QRadioButton("Channel Index");
    deleteResult_ = button("Delete");
    recompile_ = button("Recompile");
    graph->addWidget(cumulative_);
    graph->addWidget(byNumber_);
    graph->addWidget(byIndex_);
    graph->addStretch(1);
    graph->addWidget(deleteResult_);
    graph->addWidget(recompile_);
    rl->addLayout(graph);
    right->addWidget(resultsBox, 1);

    debugBox_ = new QGroupBox("Keypad replies");
    auto* dl = new QVBoxLayout(debugBox_);
    debugText_ = new QPlainTextEdit;
    debugText_->setReadOnly(true);
    debugText_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* hide = button("Hide");
    dl->addWidget(debugText_);
    dl->addWidget(hide, 0, Qt::AlignRight);
    right->addWidget(debugBox_);

    connect(addKeypad_, &QLineEdit::textEdited, this, [this](const QString& t) { model_.txtAddKeypad = t.toStdString(); });
    connect(addKeypad_, &QLineEdit::returnPressed, this, [this] { model_.cmdAddKeypad_Click(); });
    connect(add_, &QPushButton::clicked, this, [this] { model_.cmdAddKeypad_Click(); });
    connect(remove_, &QPushButton::clicked, this, [this] { model_.cmdRemoveKeypad_Click(); });
    connect(keypads_, &QTableWidget::itemSelectionChanged, this, [this] {
        if (refreshing_) return;
        const auto rows = keypads_->selectionModel()->selectedRows();
        model_.selectedKeypad = rows.isEmpty() ? -1 : rows.first().row();
    });
    connect(scan_, &QPushButton::clicked, this, [this] { model_.cmdScan_Click(); });
    connect(prompt_, &QPushButton::clicked, this, [this] { model_.lblPrompt_Click(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { model_.cmdCancel_Click(); });
    connect(startAgain_, &QPushButton::clicked, this, [this] { model_.cmdStartAgain_Click(); });
    connect(options_, &QPushButton::clicked, this, [this] { model_.mnuOptions_Click(); });
    connect(debug_, &QPushButton::clicked, this, [this] { model_.mnuShowDebug_Click(); });
    connect(hide, &QPushButton::clicked, this, [this] { model_.cmdDebugHide_Click(); });
    connect(exit, &QPushButton::clicked, this, [this] { model_.cmdExit_Click(); });
    connect(closeOptions, &QPushButton::clicked, this, [this] { model_.cmdOptionsClose_Click(); });
    const std::pair<QLineEdit*, Option> boxes[] = {{start_, Option::StartChannel}, {end_, Option::EndChannel},
                                                   {step_, Option::ChannelStep},   {votes_, Option::VotesPerChannel},
                                                   {delay_, Option::StartDelay},   {list_, Option::ChannelList}};
    for (const auto& [box, option] : boxes) {
        connect(box, &QLineEdit::textEdited, this, [this, option = option](const QString& t) {
            using O = frmKelvarinCorehubChannelScan::Option;
            const std::string v = t.toStdString();
            switch (option) {
                case O::StartChannel: model_.txtStartChannel = v; break;
                case O::EndChannel: model_.txtEndChannel = v; break;
                case O::ChannelStep: model_.txtChannelStep = v; break;
                case O::VotesPerChannel: model_.txtVotesPerChannel = v; break;
                case O::StartDelay: model_.txtStartDelay = v; break;
                case O::ChannelList: model_.txtChannelList = v; break;
            }
        });
        connect(box, &QLineEdit::editingFinished, this, [this, box = box, option = option] {
            if (!refreshing_ && box->isModified()) {
                box->setModified(false);
                model_.OptionLeft(option);
            }
        });
    }
    connect(range_, &QRadioButton::clicked, this, [this] { model_.optScanMode_Click(0); });
    connect(listMode_, &QRadioButton::clicked, this, [this] { model_.optScanMode_Click(1); });
    connect(cumulative_, &QCheckBox::clicked, this, [this](bool on) { model_.chkShowCumulativeGraph_Click(on); });
    connect(byNumber_, &QRadioButton::clicked, this, [this] { model_.optGraphType_Click(0); });
    connect(byIndex_, &QRadioButton::clicked, this, [this] { model_.optGraphType_Click(1); });
    connect(back_, &QPushButton::clicked, this, [this] { model_.cmdScrollGraph_Click(-1); });
    connect(forward_, &QPushButton::clicked, this, [this] { model_.cmdScrollGraph_Click(1); });
    connect(deleteResult_, &QPushButton::clicked, this, [this] { model_.cmdDeleteResult_Click(); });
    connect(recompile_, &QPushButton::clicked, this, [this] { model_.cmdRecompileResults_Click(); });

    resize(1100, 640);
    sub_ = model_.changed.connect([this] { refresh(); });
    refresh();
}

ChannelScanView::~ChannelScanView() { detach(); }

void ChannelScanView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void ChannelScanView::closeEvent(QCloseEvent* e) {
    // The model decides; when it unloads, its view goes with it.
    e->ignore();
    if (sub_) model_.RequestClose();
}

void ChannelScanView::refresh() {
    if (!sub_ || refreshing_) return;
    refreshing_ = true;
    const auto& m = model_;
    setWindowTitle(q(m.Caption()));
    const bool idle = !m.locked();
    setText(addKeypad_, m.txtAddKeypad);
    keypads_->setRowCount(static_cast<int>(m.lvwKeypads.size()));
    for (int r = 0; r < static_cast<int>(m.lvwKeypads.size()); ++r) {
        const auto& row = m.lvwKeypads[static_cast<std::size_t>(r)];
        setCell(keypads_, r, 0, row.hid);
        keypads_->item(r, 0)->setIcon(ui::icon(row.icon));
        setCell(keypads_, r, 1, numText(row.keypad));
        setCell(keypads_, r, 2, row.status.empty() ? row.icon : row.status);
    }
    keypads_->clearSelection();
    if (m.selectedKeypad >= 0 && m.selectedKeypad < keypads_->rowCount()) keypads_->selectRow(m.selectedKeypad);
    estimate_->setText(q(m.lblEstimatedTime));
    status_->setText(q(m.lblStatus));
    prompt_->setText(q(m.lblPrompt));
    prompt_->setVisible(!m.lblPrompt.empty());
    response_->setText(q(m.lblKeypadResponse));
    for (QWidget* w : std::initializer_list<QWidget*>{addKeypad_, add_, remove_, scan_, startAgain_, options_})
        w->setEnabled(idle);
    cancel_->setEnabled(!idle);
    optionsBox_->setVisible(m.fraOptionsVisible);
    setText(start_, m.txtStartChannel);
    setText(end_, m.txtEndChannel);
    setText(step_, m.txtChannelStep);
    setText(votes_, m.txtVotesPerChannel);
    setText(delay_, m.txtStartDelay);
    setText(list_, m.txtChannelList);
    range_->setChecked(m.optScanMode == 0);
    listMode_->setChecked(m.optScanMode == 1);
    scanNumber_->setText(q(m.lblScanNumber));
    results_->setText(q(m.lblResults));
    cumulative_->setChecked(m.chkShowCumulativeGraph);
    byNumber_->setChecked(m.optGraphType == 0);
    byIndex_->setChecked(m.optGraphType == 1);
    const bool kept = !m.results().empty();
    for (QWidget* w : std::initializer_list<QWidget*>{back_, forward_, deleteResult_, recompile_}) w->setEnabled(idle && kept);
    debugBox_->setVisible(m.txtDebugVisible);
    if (debugText_->toPlainText() != q(m.txtDebugKpadResults)) debugText_->setPlainText(q(m.txtDebugKpadResults));
    refreshChart();
    // Boxes shown or hidden take or give their room now, not on the next event.
    layout()->activate();
    refreshing_ = false;
}

void ChannelScanView::refreshChart() {
    const auto& m = model_;
    if (axisType_ != m.optGraphType) {
        axisType_ = m.optGraphType;
        for (const QString& label : axisX_->categoriesLabels()) axisX_->remove(label);
        axisX_->setStartValue(-0.5);
        for (int i = 0; i < kScanChannelCount; i += 10)
            axisX_->append(QString::number(m.optGraphType == 1 ? i : channelNumber(i)), i);
        axisX_->setRange(-0.5, kScanChannelCount - 0.5);
        axisX_->setTitleText(q(m.axisTitle()));
    }
    double top = 0.0;
    for (int i = 0; i < kScanChannelCount; ++i) {
        const double v = m.shownScores[static_cast<std::size_t>(i)];
        if (bars_->at(i) != v) bars_->replace(i, v);
        top = std::max(top, v);
    }
    axisY_->setRange(0.0, top > 0.0 ? top * 1.1 : 10.0);
    axisY_->applyNiceNumbers();
    chart_->setTitle(q(m.lblScanNumber));
}

// ---- system preparation ----

SystemPrepView::SystemPrepView(frmKelvarinCorehubSystemPrep& model) : model_(model) {
    auto* lay = new QVBoxLayout(this);
    style::window(lay);
    auto* top = new QHBoxLayout;
    status_ = new QLabel;
    QFont bold = status_->font();
    bold.setBold(true);
    status_->setFont(bold);
    countdown_ = new QLabel;
    countdown_->setFont(bold);
    countdown_->setMinimumWidth(60);
    countdown_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    top->addWidget(status_, 1);
    top->addWidget(countdown_);
    lay->addLayout(top);

    auto* upper = new QHBoxLayout;
    bases_ = table({"Base Stations"});
    bases_->setSelectionMode(QAbstractItemView::SingleSelection);
    bases_->setMaximumWidth(220);
    upper->addWidget(bases_);
    baseBox_ = new QGroupBox("Base Station Preparation");
    auto* bl = new QGridLayout(baseBox_);
    baseName_ = new QLabel;
    baseName_->setFont(bold);
    reset_ = new QLabel("Resetting the base station");
    resetDone_ = new QLabel("Done");
    unplug_ = new QLabel("Unplug the base station, plug it in again and click Done");
    unplugDone_ = button("Done");
    unplugged_ = new QLabel("Radio restarted");
    checkFirmware_ = new QLabel("Checking the base station firmware");
    bl->addWidget(baseName_, 0, 0, 1, 2);
    bl->addWidget(reset_, 1, 0);
    bl->addWidget(resetDone_, 1, 1);
    bl->addWidget(unplug_, 2, 0);
    bl->addWidget(unplugDone_, 2, 1);
    bl->addWidget(unplugged_, 3, 0);
    bl->addWidget(checkFirmware_, 4, 0);
    upper->addWidget(baseBox_, 1);
    upper->addStretch(0);  // keeps the base list on the left once the preparation box goes
    lay->addLayout(upper);

    auto* lists = new QHBoxLayout;
    auto* keypadBox = new QGroupBox("Keypads");
    auto* kl = new QVBoxLayout(keypadBox);
    keypads_ = table(frmKelvarinCorehubSystemPrep::keypadColumns());
    keypads_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    kl->addWidget(keypads_, 1);
    auto* entry = new QHBoxLayout;
    hid_ = new QLineEdit;
    hid_->setPlaceholderText("Keypad HID");
    sid_ = new QLineEdit;
    sid_->setPlaceholderText("Starting SID");
    sid_->setMaximumWidth(110);
    entry->addWidget(hid_);
    entry->addWidget(sid_);
    kl->addLayout(entry);
    auto* kb = new QHBoxLayout;
    program_ = button("Program Keypads");
    deleteKeypads_ = button("Delete");
    swap_ = button("Swap");
    kb->addWidget(program_);
    kb->addWidget(deleteKeypads_);
    kb->addWidget(swap_);
    kl->addLayout(kb);
    lists->addWidget(keypadBox, 3);

    auto* presenterBox = new QGroupBox("Presenters and Scanners");
    auto* pl = new QVBoxLayout(presenterBox);
    presenters_ = table(frmKelvarinCorehubSystemPrep::presenterScannerColumns());
    presenters_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    presenters_->setColumnWidth(0, 130);
    presenters_->setColumnWidth(1, 80);
    pl->addWidget(presenters_, 1);
    presenterHid_ = new QLineEdit;
    presenterHid_->setPlaceholderText("Presenter or scanner HID");
    pl->addWidget(presenterHid_);
    deletePresenters_ = button("Delete");
    pl->addWidget(deletePresenters_, 0, Qt::AlignRight);
    lists->addWidget(presenterBox, 2);
    lay->addLayout(lists, 1);

    auto* bottom = new QHBoxLayout;
    export_ = button("Export to Excel");
    auto* close = button("Close");
    bottom->addWidget(export_);
    bottom->addStretch(1);
    bottom->addWidget(close);
    lay->addLayout(bottom);

    connect(unplugDone_, &QPushButton::clicked, this, [this] { model_.cmdSetupBaseUnplug_Click(); });
    connect(bases_, &QTableWidget::itemSelectionChanged, this, [this] {
        if (refreshing_) return;
        const auto rows = bases_->selectionModel()->selectedRows();
        if (!rows.isEmpty()) model_.lvwBaseStations_Click(rows.first().row());
    });
    auto selection = [this](QTableWidget* t, std::vector<PrepDeviceRow>& rows) {
        connect(t, &QTableWidget::itemSelectionChanged, this, [this, t, &rows] {
            if (refreshing_) return;
            for (auto& r : rows) r.selected = false;
            for (const auto& index : t->selectionModel()->selectedRows())
                if (index.row() < static_cast<int>(rows.size())) rows[static_cast<std::size_t>(index.row())].selected = true;
        });
    };
    selection(keypads_, model_.lvwKeypadRegister);
    selection(presenters_, model_.lvwPresenterScannerRegister);
    connect(hid_, &QLineEdit::textEdited, this, [this](const QString& t) { model_.txtKeypadHID = t.toStdString(); });
    connect(sid_, &QLineEdit::textEdited, this, [this](const QString& t) { model_.txtStartingSID = t.toStdString(); });
    connect(presenterHid_, &QLineEdit::textEdited, this,
            [this](const QString& t) { model_.txtPresenterScannerHID = t.toStdString(); });
    connect(hid_, &QLineEdit::returnPressed, this, [this] { model_.txtKeypadHID_Enter(); });
    connect(sid_, &QLineEdit::returnPressed, this, [this] { model_.txtKeypadHID_Enter(); });
    connect(presenterHid_, &QLineEdit::returnPressed, this, [this] { model_.txtPresenterScannerHID_Enter(); });
    connect(program_, &QPushButton::clicked, this, [this] { model_.cmdProgramKeypads_Click(); });
    connect(deleteKeypads_, &QPushButton::clicked, this, [this] { model_.cmdScanKeypadDelete_Click(); });
    connect(swap_, &QPushButton::clicked, this, [this] { model_.cmdScanKeypadSwap_Click(); });
    connect(deletePresenters_, &QPushButton::clicked, this, [this] { model_.cmdPresenterScannerDelete_Click(); });
    connect(export_, &QPushButton::clicked, this, [this] { model_.cmdExportToExcel_Click(); });
    connect(close, &QPushButton::clicked, this, [this] { model_.RequestClose(); });

    resize(900, 620);
    sub_ = model_.changed.connect([this] { refresh(); });
    refresh();
}

SystemPrepView::~SystemPrepView() { detach(); }

void SystemPrepView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void SystemPrepView::closeEvent(QCloseEvent* e) {
    e->ignore();
    if (sub_) model_.RequestClose();
}

void SystemPrepView::refresh() {
    if (!sub_ || refreshing_) return;
    refreshing_ = true;
    const auto& m = model_;
    setWindowTitle(q(m.Caption()));
    status_->setText(q(m.lblStatus));
    countdown_->setText(q(m.lblCountdown));
    const bool preparing = m.prepStep < frmKelvarinCorehubSystemPrep::kStepBaseList && !m.lblSetupBase.empty();
    baseBox_->setVisible(preparing);
    baseName_->setText(q("Base station " + m.lblSetupBase));
    reset_->setVisible(m.lblSetupBaseReset);
    resetDone_->setVisible(m.lblSetupBaseResetDone);
    unplug_->setVisible(m.lblSetupBaseUnplug);
    unplugDone_->setVisible(m.lblSetupBaseUnplug);
    unplugDone_->setEnabled(m.cmdSetupBaseUnplugEnabled);
    unplugged_->setVisible(m.lblSetupBaseUnplugDone);
    checkFirmware_->setVisible(m.lblSetupBaseCheckFW);

    bases_->setRowCount(static_cast<int>(m.lvwBaseStations.size()));
    for (int r = 0; r < bases_->rowCount(); ++r) {
        const auto& row = m.lvwBaseStations[static_cast<std::size_t>(r)];
        setCell(bases_, r, 0, row.text);
        bases_->item(r, 0)->setIcon(ui::icon(row.icon));
    }
    bases_->clearSelection();
    if (m.selectedBase >= 0 && m.selectedBase < bases_->rowCount()) bases_->selectRow(m.selectedBase);

    auto fill = [](QTableWidget* t, const std::vector<PrepDeviceRow>& rows) {
        t->setRowCount(static_cast<int>(rows.size()));
        t->clearSelection();
        for (int r = 0; r < t->rowCount(); ++r) {
            const auto& row = rows[static_cast<std::size_t>(r)];
            setCell(t, r, 0, row.hid);
            t->item(r, 0)->setIcon(ui::icon(row.icon));
            setCell(t, r, 1, row.sid);
            setCell(t, r, 2, row.status);
            if (row.selected)
                for (int c = 0; c < t->columnCount(); ++c) t->item(r, c)->setSelected(true);
        }
    };
    fill(keypads_, m.lvwKeypadRegister);
    fill(presenters_, m.lvwPresenterScannerRegister);
    setText(hid_, m.txtKeypadHID);
    setText(sid_, m.txtStartingSID);
    setText(presenterHid_, m.txtPresenterScannerHID);
    program_->setEnabled(m.cmdProgramKeypadsEnabled);
    const bool free = !m.programming();
    deleteKeypads_->setEnabled(free);
    swap_->setEnabled(free);
    deletePresenters_->setEnabled(free);
    layout()->activate();
    refreshing_ = false;
}

std::unique_ptr<QWidget> makeSetupView(Form& form) {
    if (auto* scan = dynamic_cast<frmKelvarinCorehubChannelScan*>(&form)) return std::make_unique<ChannelScanView>(*scan);
    if (auto* prep = dynamic_cast<frmKelvarinCorehubSystemPrep*>(&form)) return std::make_unique<SystemPrepView>(*prep);
    return nullptr;
}

}  // namespace tlx
