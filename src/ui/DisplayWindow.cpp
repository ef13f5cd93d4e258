#include "ui/DisplayWindow.h"

#include <QBarCategoryAxis>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHorizontalBarSeries>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QValueAxis>
#include <QVBoxLayout>
#include <algorithm>

#include "presentation/display/DisplayScreen.h"

namespace tlx {

namespace {

QString qs(const std::string& s) { return QString::fromStdString(s); }

QLabel* label(QWidget* parent, int pointDelta, bool bold) {
    auto* l = new QLabel(parent);
    QFont f = l->font();
    f.setPointSize(f.pointSize() + pointDelta);
    f.setBold(bold);
    l->setFont(f);
    l->setWordWrap(true);
    return l;
}

}  // namespace

DisplayWindow::DisplayWindow(DisplayScreen& screen, QWidget* parent) : QWidget(parent), screen_(screen) {
    setObjectName("tlxDisplayWindow");
    resize(760, 620);
    auto* layout = new QVBoxLayout(this);

    heading_ = label(this, 0, true);
    title_ = label(this, 6, true);
    description_ = label(this, 0, false);
    layout->addWidget(heading_);
    layout->addWidget(title_);
    layout->addWidget(description_);

    counts_ = new QBarSet(QStringLiteral("votes"));
    series_ = new QHorizontalBarSeries;
    series_->append(counts_);
    chart_ = new QChart;
    chart_->addSeries(series_);
    counts_->setLabelColor(Qt::black);
    series_->setLabelsPosition(QAbstractBarSeries::LabelsOutsideEnd);
    series_->setLabelsFormat(QStringLiteral("@value"));
    series_->setLabelsVisible(true);
    chart_->legend()->hide();
    chart_->setAnimationOptions(QChart::NoAnimation);
    chart_->setMargins(QMargins(4, 4, 12, 4));
    answers_ = new QBarCategoryAxis;
    scale_ = new QValueAxis;
    scale_->setLabelFormat(QStringLiteral("%d"));
    scale_->setTickType(QValueAxis::TicksDynamic);
    scale_->setTickAnchor(0);
    chart_->addAxis(answers_, Qt::AlignLeft);
    chart_->addAxis(scale_, Qt::AlignBottom);
    series_->attachAxis(answers_);
    series_->attachAxis(scale_);
    chartView_ = new QChartView(chart_, this);
    chartView_->setRenderHint(QPainter::Antialiasing);
    chartView_->setMinimumHeight(220);
    layout->addWidget(chartView_, 3);
    // Takes the chart's room while there is no chart (before the vote is known, or no vote).
    layout->addStretch(0);

    voters_ = label(this, 2, true);
    layout->addWidget(voters_);

    table_ = new QTableWidget(0, 4, this);
    table_->setHorizontalHeaderLabels({"Answer", "Option", "Votes", "Share"});
    table_->verticalHeader()->hide();
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    table_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    layout->addWidget(table_);
    summary_ = label(this, 0, false);
    summary_->setWordWrap(false);
    layout->addWidget(summary_);

    auto* bottom = new QHBoxLayout;
    status_ = label(this, 0, false);
    bottom->addWidget(status_, 1);
    button_ = new QPushButton(this);
    button_->setDefault(true);
    bottom->addWidget(button_);
    layout->addLayout(bottom);
    connect(button_, &QPushButton::clicked, this, [this] { screen_.pressButton(); });

    screen_.changed = [this] { refresh(); };
    refresh();
}

DisplayWindow::~DisplayWindow() { screen_.changed = nullptr; }

void DisplayWindow::refresh() {
    const QString title = qs(screen_.title());
    setWindowTitle(title == QLatin1String("tlx-display") ? title : title + QStringLiteral(" - tlx-display"));
    heading_->setText(qs(screen_.heading()));
    title_->setText(title);
    description_->setText(qs(screen_.description()));
    description_->setVisible(!description_->text().isEmpty());
    voters_->setText(qs(screen_.voters()));
    voters_->setVisible(!voters_->text().isEmpty());
    status_->setText(qs(screen_.status()));
    status_->setStyleSheet(screen_.problem() ? QStringLiteral("color: #b00020; font-weight: bold") : QString());
    button_->setText(qs(screen_.buttonCaption()));
    button_->setEnabled(screen_.buttonEnabled());
    refreshChart();
    refreshTable();
}

void DisplayWindow::refreshChart() {
    // The chart stacks its bars from the bottom up: the last answer goes in first, so that the
    // first answer is on top, as on the slide.
    auto bars = screen_.bars();
    std::reverse(bars.begin(), bars.end());
    QStringList captions;
    for (const auto& b : bars) captions << qs(b.caption);
    if (answers_->categories() != captions) {
        counts_->remove(0, counts_->count());
        answers_->setCategories(captions);
        for (const auto& b : bars) counts_->append(static_cast<qreal>(b.count));
    } else {
        for (int i = 0; i < static_cast<int>(bars.size()); ++i)
            if (counts_->at(i) != static_cast<qreal>(bars[i].count)) counts_->replace(i, static_cast<qreal>(bars[i].count));
    }
    const long long top = screen_.barsTop();
    scale_->setRange(0, static_cast<qreal>(top));
    scale_->setTickInterval(static_cast<qreal>(scaleStep(top)));
    chartView_->setVisible(!bars.empty());
    auto* box = static_cast<QBoxLayout*>(layout());
    box->setStretch(box->indexOf(chartView_) + 1, bars.empty() ? 1 : 0);
}

void DisplayWindow::refreshTable() {
    const bool final = screen_.final();
    table_->setVisible(final);
    summary_->setVisible(final);
    if (!final) return;
    const auto rows = screen_.tableRows();
    table_->setRowCount(static_cast<int>(rows.size()));
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        const ResultRow& r = rows[static_cast<std::size_t>(i)];
        const QString cells[] = {qs((r.correct ? "* " : "") + r.answer), qs(r.label), QString::number(r.count),
                                 qs(shareText(r.share))};
        for (int col = 0; col < 4; ++col) {
            auto* item = new QTableWidgetItem(cells[col]);
            if (col != 1) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (r.correct) {
                QFont f = item->font();
                f.setBold(true);
                item->setFont(f);
            }
            table_->setItem(i, col, item);
        }
    }
    table_->resizeColumnsToContents();
    table_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    // As tall as its rows, up to ten of them; the chart keeps the rest of the window.
    int height = table_->horizontalHeader()->height() + 2 * table_->frameWidth();
    for (int i = 0; i < std::min(table_->rowCount(), 10); ++i) height += table_->rowHeight(i);
    table_->setFixedHeight(height);
    QStringList lines;
    for (const auto& l : screen_.summary()) lines << qs(l);
    summary_->setText(lines.join('\n'));
}

void DisplayWindow::closeEvent(QCloseEvent* e) {
    screen_.windowClosed();
    e->accept();
}

}  // namespace tlx
