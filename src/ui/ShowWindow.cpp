#include "ui/ShowWindow.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QStackedLayout>
#include <QTimer>
#include <QValueAxis>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "core/Text.h"
#include "platform/sim/SimPresentation.h"
#include "platform/sim/SimShowScreen.h"

namespace tlx {

namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

// X11 key symbols of the right-hand modifier keys (what the platform gives as the native key).
constexpr quint32 kXkShiftR = 0xffe2;
constexpr quint32 kXkControlR = 0xffe4;
constexpr quint32 kXkAltR = 0xffea;

constexpr const char* kSlideColour = "#10243e";
constexpr const char* kTextColour = "#f4f6fa";
constexpr const char* kDimColour = "#a9b8cc";

// A bar chart's top: the largest count rounded up to a step that reads well, at least 1.
int axisTop(long long largest) {
    if (largest <= 4) return 4;
    const double step = std::pow(10.0, std::floor(std::log10(static_cast<double>(largest))));
    for (double m : {1.0, 2.0, 5.0, 10.0})
        if (m * step >= static_cast<double>(largest)) return static_cast<int>(m * step);
    return static_cast<int>(largest);
}

}  // namespace

int virtualKeyOf(const QKeyEvent& e) {
    const int k = e.key();
    if (k >= Qt::Key_A && k <= Qt::Key_Z) return k;  // the same codes as the virtual keys
    if (k >= Qt::Key_0 && k <= Qt::Key_9) return k;
    if (k >= Qt::Key_F1 && k <= Qt::Key_F24) return 112 + (k - Qt::Key_F1);
    const quint32 native = e.nativeVirtualKey();
    switch (k) {
        case Qt::Key_Backspace: return 8;
        case Qt::Key_Tab: return 9;
        case Qt::Key_Return:
        case Qt::Key_Enter: return 13;
        case Qt::Key_Escape: return 27;
        case Qt::Key_Space: return 32;
        case Qt::Key_PageUp: return 33;
        case Qt::Key_PageDown: return 34;
        case Qt::Key_End: return 35;
        case Qt::Key_Home: return 36;
        case Qt::Key_Left: return 37;
        case Qt::Key_Up: return 38;
        case Qt::Key_Right: return 39;
        case Qt::Key_Down: return 40;
        case Qt::Key_Insert: return 45;
        case Qt::Key_Delete: return 46;
        case Qt::Key_Period: return 190;
        case Qt::Key_Shift: return native == kXkShiftR ? 161 : 160;
        case Qt::Key_Control: return native == kXkControlR ? 163 : 162;
        case Qt::Key_Alt: return native == kXkAltR ? 165 : 164;
        case Qt::Key_AltGr: return 165;
        default: return 0;
    }
}

ShowWindow::ShowWindow(SimShowScreen& screen, QWidget* parent) : QWidget(parent), screen_(screen) {
    setObjectName("showWindow");
    setFocusPolicy(Qt::StrongFocus);
    setAutoFillBackground(true);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, QColor(kSlideColour));
    pal.setColor(QPalette::WindowText, QColor(kTextColour));
    setPalette(pal);

    auto* slide = new QWidget;
    auto* lay = new QVBoxLayout(slide);
    slideLayout_ = lay;
    lay->setContentsMargins(48, 32, 48, 24);
    lay->setSpacing(16);
    auto label = [](const char* name, Qt::Alignment align) {
        auto* l = new QLabel;
        l->setObjectName(name);
        l->setAlignment(align);
        l->setWordWrap(true);
        l->setTextFormat(Qt::PlainText);
        l->setFocusPolicy(Qt::NoFocus);
        return l;
    };
    title_ = label("title", Qt::AlignHCenter | Qt::AlignTop);
    question_ = label("question", Qt::AlignLeft | Qt::AlignTop);
    answers_ = label("answers", Qt::AlignLeft | Qt::AlignTop);
    status_ = label("status", Qt::AlignRight | Qt::AlignBottom);
    status_->setStyleSheet(QString("color: %1").arg(kDimColour));

    bars_ = new QBarSet("Votes");
    bars_->setColor(QColor("#f2b134"));
    bars_->setBorderColor(QColor("#f2b134"));
    bars_->setLabelColor(QColor(kTextColour));
    series_ = new QBarSeries;
    series_->append(bars_);
    series_->setLabelsVisible(true);
    series_->setLabelsPosition(QAbstractBarSeries::LabelsOutsideEnd);
    chart_ = new QChart;
    chart_->addSeries(series_);
    chart_->setBackgroundVisible(false);
    chart_->setPlotAreaBackgroundVisible(false);
    chart_->legend()->hide();
    chart_->setAnimationOptions(QChart::NoAnimation);
    axisX_ = new QBarCategoryAxis;
    axisY_ = new QValueAxis;
    // Each bar carries its count: the scale itself is not drawn, as on a results slide.
    axisY_->setVisible(false);
    for (QAbstractAxis* a : {static_cast<QAbstractAxis*>(axisX_), static_cast<QAbstractAxis*>(axisY_)}) {
        a->setLabelsColor(QColor(kTextColour));
        a->setLinePenColor(QColor(kDimColour));
        a->setGridLineVisible(false);
    }
    chart_->addAxis(axisX_, Qt::AlignBottom);
    chart_->addAxis(axisY_, Qt::AlignLeft);
    series_->attachAxis(axisX_);
    series_->attachAxis(axisY_);
    chartView_ = new QChartView(chart_);
    chartView_->setObjectName("chart");
    chartView_->setRenderHint(QPainter::Antialiasing);
    chartView_->setFocusPolicy(Qt::NoFocus);
    chartView_->setStyleSheet("background: transparent");
    chartView_->setMinimumHeight(160);

    auto* body = new QHBoxLayout;
    body->setSpacing(32);
    body->addWidget(answers_, 2);
    body->addWidget(chartView_, 3);
    lay->addWidget(title_);
    lay->addWidget(question_);
    lay->addLayout(body, 1);
    lay->addWidget(status_);

    // A blanked show is a black screen.
    auto* black = new QWidget;
    black->setObjectName("blank");
    black->setAutoFillBackground(true);
    QPalette bp = black->palette();
    bp.setColor(QPalette::Window, Qt::black);
    black->setPalette(bp);

    pages_ = new QStackedLayout(this);
    pages_->addWidget(slide);
    pages_->addWidget(black);

    resize(960, 540);
    sub_ = screen_.changed.connect([this] {
        if (refreshPending_) return;
        refreshPending_ = true;
        // A busy vote changes the tally with every batch: redraw at most about 20 times a second.
        QTimer::singleShot(50, this, [this] { refresh(); });
    });
    refresh();
}

ShowWindow::~ShowWindow() { screen_.changed.disconnect(sub_); }

void ShowWindow::refresh() {
    refreshPending_ = false;
    placeWindow();
    if (!screen_.open()) return;
    setWindowTitle(q(screen_.caption()));
    pages_->setCurrentIndex(screen_.blanked() ? 1 : 0);
    const ShownSlide& s = screen_.slide();
    title_->setText(q(s.title));
    title_->setVisible(!s.title.empty());
    question_->setText(q(s.question));
    question_->setVisible(!s.question.empty());
    QStringList answers;
    for (const auto& a : s.answers) answers << q(a);
    answers_->setText(answers.join('\n'));
    std::string status = screen_.position();
    if (screen_.chartShown()) status = screen_.chartSummary() + "   " + status;
    status_->setText(q(status));
    fillChart();
    scaleFonts();
    // Lay out now, not on the next turn of the loop: a picture taken at once shows it right.
    slideLayout_->activate();
    layout()->activate();
}

void ShowWindow::placeWindow() {
    if (!screen_.open()) {
        wasRunning_ = false;
        hide();
        return;
    }
    const bool running = screen_.showRunning();
    if (running && !wasRunning_) {
        // The show begins: the window comes to the front with the focus, as the real one does.
        if (screen_.fullScreen())
            showFullScreen();
        else
            showNormal();
        raise();
        activateWindow();
    } else if (running && screen_.fullScreen() != isFullScreen()) {
        if (screen_.fullScreen())
            showFullScreen();
        else
            showNormal();
    } else if (!running && (wasRunning_ || isFullScreen())) {
        showNormal();
    } else if (!isVisible()) {
        show();
    }
    wasRunning_ = running;
}

void ShowWindow::fillChart() {
    const bool shown = screen_.chartShown();
    chartView_->setVisible(shown);
    if (!shown) return;
    QStringList categories;
    QList<qreal> counts;
    long long largest = 0;
    for (const ResultRow& r : screen_.chartRows()) {
        QString name = q(r.answer);
        if (!r.label.empty()) name += (name.isEmpty() ? "" : " ") + q(r.label);
        categories << name;
        counts << static_cast<qreal>(r.count);
        largest = std::max(largest, r.count);
    }
    if (axisX_->categories() != categories) {
        axisX_->clear();
        axisX_->append(categories);
    }
    bars_->remove(0, bars_->count());
    bars_->append(counts);
    // Room above the longest bar for its count.
    const int top = axisTop(largest + std::max(1LL, largest / 8));
    axisY_->setRange(0, top);
}

void ShowWindow::scaleFonts() {
    // Text follows the window's height, so a full-screen show reads from the back of the room.
    const int h = std::max(height(), 240);
    auto px = [h](QLabel* l, int divisor, bool bold) {
        QFont f = l->font();
        f.setPixelSize(std::max(h / divisor, 10));
        f.setBold(bold);
        l->setFont(f);
    };
    px(title_, 11, true);
    px(question_, 17, false);
    px(answers_, 20, false);
    px(status_, 34, false);
    QFont axis = chart_->font();
    axis.setPixelSize(std::max(h / 34, 10));
    axisX_->setLabelsFont(axis);
    axisY_->setLabelsFont(axis);
    bars_->setLabelFont(axis);
}

void ShowWindow::resizeEvent(QResizeEvent* e) {
    QWidget::resizeEvent(e);
    scaleFonts();
}

bool ShowWindow::event(QEvent* e) {
    if (e->type() == QEvent::WindowActivate)
        screen_.activated();
    else if (e->type() == QEvent::WindowDeactivate)
        screen_.deactivated();
    return QWidget::event(e);
}

void ShowWindow::keyPressEvent(QKeyEvent* e) {
    const int vk = virtualKeyOf(*e);
    if (vk == 0) return QWidget::keyPressEvent(e);
    // A held key repeats as further key-downs, as the hook sees it.
    screen_.keyDown(vk);
}

void ShowWindow::keyReleaseEvent(QKeyEvent* e) {
    const int vk = virtualKeyOf(*e);
    if (vk == 0) return QWidget::keyReleaseEvent(e);
    // The platform's auto-repeat sends a release before each repeated press: not a real one.
    if (e->isAutoRepeat()) return;
    screen_.keyUp(vk);
}

void ShowWindow::contextMenuEvent(QContextMenuEvent* e) {
    QMenu menu(this);
    const bool running = screen_.showRunning();
    menu.addAction("Begin slide show\tF5", [this] { screen_.beginShow(); })->setEnabled(!running);
    menu.addAction("Next\tPage Down", [this] { screen_.next(); })->setEnabled(running);
    menu.addAction("Previous\tPage Up", [this] { screen_.previous(); })->setEnabled(running);
    QAction* full = menu.addAction("Full screen\tF11", [this] { screen_.toggleFullScreen(); });
    full->setCheckable(true);
    full->setChecked(screen_.fullScreen());
    full->setEnabled(running);
    menu.addAction("End slide show\tEsc", [this] { screen_.endShow(); })->setEnabled(running);
    menu.addSeparator();
    menu.addAction("Close the presentation program", [this] { screen_.closeProgram(); });
    menu.exec(e->globalPos());
}

void ShowWindow::closeEvent(QCloseEvent* e) {
    // The window stays while the program runs: closing it ends a running show (as Escape
    // does); quitting the program is on its menu, because the controller follows it out.
    e->ignore();
    if (screen_.showRunning()) screen_.endShow();
}

}  // namespace tlx
