#pragma once
// The text-vote window's view: shows `frmTextVoteCollection` and forwards the presenter's
// clicks, keys and typing to it. Every widget carries its control's program name as its
// object name.
#include <QWidget>
#include <cstdint>
#include <memory>

#include "ui/Views.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QSlider;
class QTreeWidget;

namespace tlx {

class frmTextVoteCollection;

class TextVoteView : public QWidget, public ModelView {
    Q_OBJECT
public:
    explicit TextVoteView(frmTextVoteCollection& model);
    ~TextVoteView() override;
    void refresh();
    void detach() override;
    // The alert list's options menu (opened by cmdAlertListConfig).
    QMenu* alertListOptions() const { return menu_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* e) override;

private:
    void refreshAlerts();
    void scheduleRefresh();
    frmTextVoteCollection& model_;
    std::uint64_t sub_ = 0;
    std::uint64_t menuSub_ = 0;
    bool refreshing_ = false;
    bool refreshPending_ = false;
    QLineEdit* session_;
    QPushButton* startStop_;
    QPushButton* lock_;
    QListWidget* list_;
    QPlainTextEdit* selected_;
    QTreeWidget* alerts_;
    QMenu* menu_;
    QLabel* status_;
    QGroupBox* debug_;
    QCheckBox* generate_;
    QSlider* interval_;
    QLabel* intervalLabel_;
};

// The view of a text-vote window, or nothing for any other form (the view manager's hook).
std::unique_ptr<QWidget> makeTextVoteView(Form& form);

}  // namespace tlx
