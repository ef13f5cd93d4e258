// `frmDebugWindowHandles`: the program's own top-level windows as the window system has them
// (handle, class, caption, state) and the desktop's foreground window class.
#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

#include "core/Controller.h"
#include "core/DebugForms.h"
#include "ui/FormView.h"
#include "ui/ViewStyle.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {

// The application's windows: dialogs and main windows, not menus, tool tips or pop-ups.
std::vector<WindowHandleRow> qtTopLevelWindows() {
    std::vector<WindowHandleRow> rows;
    for (QWidget* w : QApplication::topLevelWidgets()) {
        const Qt::WindowType type = w->windowType();
        if (type != Qt::Window && type != Qt::Dialog) continue;
        WindowHandleRow r;
        // A window that was never shown has no handle yet; asking for one would create it.
        const WId id = w->internalWinId();
        r.handle = id ? "0x" + QString::number(static_cast<qulonglong>(id), 16).toStdString() : "-";
        r.className = w->objectName().isEmpty() ? w->metaObject()->className() : w->objectName().toStdString();
        r.caption = w->windowTitle().toStdString();
        r.visible = w->isVisible();
        r.topMost = w->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        rows.push_back(std::move(r));
    }
    return rows;
}

class WindowHandlesView : public FormView {
public:
    WindowHandlesView(Controller& controller, DebugWindowHandlesForm& model)
        : FormView(model), c_(controller), m_(model) {
        setObjectName(DebugWindowHandlesForm::kName);
        auto* lay = new QVBoxLayout(this);
        style::window(lay);
        windows_ = style::table({"Handle", "Class", "Caption", "State"}, "lvwWindows");
        for (int col : {0, 1, 3}) windows_->horizontalHeader()->setSectionResizeMode(col, QHeaderView::ResizeToContents);
        windows_->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
        windows_->horizontalHeader()->setStretchLastSection(false);
        lay->addWidget(windows_, 1);
        foreground_ = new QLabel;
        foreground_->setObjectName("lblForeground");
        lay->addWidget(foreground_);
        auto* refreshButton = style::button("Refresh", "cmdRefresh");
        auto* close = style::button("Close", "cmdClose");
        lay->addLayout(style::buttonRow({refreshButton}, {close}));
        connect(refreshButton, &QPushButton::clicked, this, [this] { m_.Refresh(); });
        connect(close, &QPushButton::clicked, this, [this] { this->close(); });
        resize(640, 360);
        m_.topLevelWindows = qtTopLevelWindows;
        bind();
        m_.Refresh();
    }
    ~WindowHandlesView() override { WindowHandlesView::detach(); }
    void detach() override {
        if (attached()) m_.topLevelWindows = nullptr;
        FormView::detach();
    }

protected:
    void draw() override {
        windows_->setRowCount(static_cast<int>(m_.rows.size()));
        for (int r = 0; r < windows_->rowCount(); ++r) {
            const auto& row = m_.rows[static_cast<std::size_t>(r)];
            style::setCell(windows_, r, 0, text(row.handle));
            style::setCell(windows_, r, 1, text(row.className));
            style::setCell(windows_, r, 2, text(row.caption));
            style::setCell(windows_, r, 3,
                           QString(row.visible ? "visible" : "hidden") + (row.topMost ? ", top-most" : ""));
        }
        foreground_->setText("Foreground window class: " + text(m_.foregroundClass));
    }
    void closeEvent(QCloseEvent* e) override {
        e->ignore();
        if (attached()) c_.forms.unload(m_);
    }

private:
    Controller& c_;
    DebugWindowHandlesForm& m_;
    QTableWidget* windows_;
    QLabel* foreground_;
};

}  // namespace

std::unique_ptr<QWidget> makeWindowHandlesView(Controller& controller, Form& form) {
    if (auto* h = dynamic_cast<DebugWindowHandlesForm*>(&form)) return std::make_unique<WindowHandlesView>(controller, *h);
    return nullptr;
}

}  // namespace tlx
