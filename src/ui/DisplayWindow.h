#pragma once
// The display program's window: the question, a live bar per answer with its count and share,
// the voters so far, the final table once the vote is closed, and the "Close vote" button. It
// shows a DisplayScreen and forwards the button and the window's closing to it.
#include <QWidget>

class QBarCategoryAxis;
class QBarSet;
class QChart;
class QChartView;
class QCloseEvent;
class QHorizontalBarSeries;
class QLabel;
class QPushButton;
class QTableWidget;
class QValueAxis;

namespace tlx {

class DisplayScreen;

class DisplayWindow : public QWidget {
    Q_OBJECT
public:
    explicit DisplayWindow(DisplayScreen& screen, QWidget* parent = nullptr);
    ~DisplayWindow() override;

    void refresh();
    QPushButton* closeVoteButton() const { return button_; }

protected:
    void closeEvent(QCloseEvent* e) override;

private:
    void refreshChart();
    void refreshTable();

    DisplayScreen& screen_;
    QLabel* heading_;
    QLabel* title_;
    QLabel* description_;
    QLabel* voters_;
    QLabel* status_;
    QChart* chart_;
    QChartView* chartView_;
    QHorizontalBarSeries* series_;
    QBarSet* counts_;
    QBarCategoryAxis* answers_;
    QValueAxis* scale_;
    QTableWidget* table_;
    QLabel* summary_;
    QPushButton* button_;
};

}  // namespace tlx
