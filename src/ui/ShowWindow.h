#pragma once
// The simulated presentation program's window: the current slide (title, question, answers)
// and the live chart of the vote opened on it. While the show runs it is the slide-show
// window, full screen unless switched to a window (F11 or its menu); F5 begins the show,
// Escape ends it. Every key typed on it goes to the keyboard as a virtual-key code, so the
// presenter's hot keys work from here.
#include <QWidget>
#include <cstdint>

class QLabel;
class QKeyEvent;
class QStackedLayout;
class QLayout;
class QChartView;
class QChart;
class QBarSet;
class QBarSeries;
class QBarCategoryAxis;
class QValueAxis;

namespace tlx {

class SimShowScreen;

// The virtual-key code of a key event (left and right Shift, Ctrl and Alt told apart where
// the platform says which); 0 for a key the presentation program has no code for.
int virtualKeyOf(const QKeyEvent& event);

class ShowWindow : public QWidget {
    Q_OBJECT
public:
    explicit ShowWindow(SimShowScreen& screen, QWidget* parent = nullptr);
    ~ShowWindow() override;
    // Shows what the model says now (changes arrive coalesced, a few times a second at most).
    void refresh();

protected:
    bool event(QEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;
    void keyReleaseEvent(QKeyEvent* e) override;
    void contextMenuEvent(QContextMenuEvent* e) override;
    void closeEvent(QCloseEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    // Tab is a key of the show, not a move between controls.
    bool focusNextPrevChild(bool) override { return false; }

private:
    void placeWindow();
    void fillChart();
    void scaleFonts();
    SimShowScreen& screen_;
    std::uint64_t sub_ = 0;
    bool refreshPending_ = false;
    bool wasRunning_ = false;
    QStackedLayout* pages_;
    QLayout* slideLayout_;
    QLabel* title_;
    QLabel* question_;
    QLabel* answers_;
    QLabel* status_;
    QChartView* chartView_;
    QChart* chart_;
    QBarSeries* series_;
    QBarSet* bars_;
    QBarCategoryAxis* axisX_;
    QValueAxis* axisY_;
};

}  // namespace tlx
