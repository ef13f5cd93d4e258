#pragma once
// The main form `tallix_controller`: status labels, vote counters, the on-screen log, the
// command box and, in its debug view, the outgoing queue and the debug, hook, abstain and
// vote-simulation controls. Each widget is named after its control.
#include <QWidget>
#include <array>
#include <string>

#include "ui/Views.h"

class QCheckBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace tlx {

class Controller;
class MainForm;

class MainWindowView : public QWidget, public ModelView {
    Q_OBJECT
public:
    MainWindowView(Controller& controller, MainForm& model);
    ~MainWindowView() override;
    void refresh();
    void detach() override;

protected:
    void closeEvent(QCloseEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildDebugPanel();
    MainForm& model_;
    bool refreshPending_ = false;
    bool refreshing_ = false;
    std::string shownLog_;
    QLabel* caption_;
    QFormLayout* info_;
    QLabel* lblOS_;
    QLabel* lblOffice_;
    QLabel* lblBuild_;
    QLabel* lblVersion_;
    QLabel* lblVotesCast_;
    QLabel* lblHookStatus_;
    std::array<QLineEdit*, 3> counters_{};
    QPlainTextEdit* log_;
    QPlainTextEdit* command_;
    QWidget* debugPanel_;
    QPlainTextEdit* data_ = nullptr;
    QCheckBox* hook_ = nullptr;
    QCheckBox* repeatFilter_ = nullptr;
    std::array<QCheckBox*, 6> modifiers_{};
    QCheckBox* abstain_ = nullptr;
    QLineEdit* abstainKey_ = nullptr;
    QCheckBox* simulate_ = nullptr;
    QLineEdit* simulateMax_ = nullptr;
    QLineEdit* simulateCount_ = nullptr;
    std::uint64_t sub_ = 0;
};

}  // namespace tlx
