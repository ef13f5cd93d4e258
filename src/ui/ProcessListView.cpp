// `frmDebugProcessList`: the running processes by name, with their count.
#include <QCloseEvent>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

#include "core/Controller.h"
#include "core/DebugForms.h"
#include "ui/FormView.h"
#include "ui/ViewStyle.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {

class ProcessListView : public FormView {
public:
    ProcessListView(Controller& controller, DebugProcessListForm& model) : FormView(model), c_(controller), m_(model) {
        setObjectName(DebugProcessListForm::kName);
        auto* lay = new QVBoxLayout(this);
        style::window(lay);
        processes_ = new QListWidget;
        processes_->setObjectName("lstProcesses");
        style::fixedPitch(processes_);
        lay->addWidget(processes_, 1);
        count_ = new QLabel;
        count_->setObjectName("lblCount");
        auto* refreshButton = style::button("Refresh", "cmdRefresh");
        auto* close = style::button("Close", "cmdClose");
        lay->addLayout(style::buttonRow({refreshButton, count_}, {close}));
        connect(refreshButton, &QPushButton::clicked, this, [this] { m_.Refresh(); });
        connect(close, &QPushButton::clicked, this, [this] { this->close(); });
        resize(360, 420);
        bind();
    }

protected:
    void draw() override {
        processes_->clear();
        for (const auto& p : m_.lines) processes_->addItem(text(p));
        count_->setText(QString::number(m_.lines.size()) + (m_.lines.size() == 1 ? " process" : " processes"));
    }
    void closeEvent(QCloseEvent* e) override {
        e->ignore();
        if (attached()) c_.forms.unload(m_);
    }

private:
    Controller& c_;
    DebugProcessListForm& m_;
    QListWidget* processes_;
    QLabel* count_;
};

}  // namespace

std::unique_ptr<QWidget> makeProcessListView(Controller& controller, Form& form) {
    if (auto* p = dynamic_cast<DebugProcessListForm*>(&form)) return std::make_unique<ProcessListView>(controller, *p);
    return nullptr;
}

}  // namespace tlx
