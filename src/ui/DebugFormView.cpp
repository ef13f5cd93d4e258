// `frm_DEBUG`: the controller's state, one field a row, read again on Refresh.
#include <QCloseEvent>
#include <QHeaderView>
#include <QVBoxLayout>

#include "core/Controller.h"
#include "core/DebugForms.h"
#include "ui/FormView.h"
#include "ui/ViewStyle.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {

class DebugFormView : public FormView {
public:
    DebugFormView(Controller& controller, DebugForm& model) : FormView(model), c_(controller), m_(model) {
        setObjectName(DebugForm::kName);
        auto* lay = new QVBoxLayout(this);
        style::window(lay);
        state_ = style::table({"Field", "Value"}, "lvwState");
        state_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
        style::fixedPitch(state_);
        lay->addWidget(state_, 1);
        auto* refreshButton = style::button("Refresh", "cmdRefresh");
        auto* close = style::button("Close", "cmdClose");
        lay->addLayout(style::buttonRow({refreshButton}, {close}));
        connect(refreshButton, &QPushButton::clicked, this, [this] { m_.Refresh(); });
        connect(close, &QPushButton::clicked, this, [this] { this->close(); });
        resize(560, 420);
        bind();
    }

protected:
    void draw() override {
        state_->setRowCount(static_cast<int>(m_.lines.size()));
        for (int r = 0; r < state_->rowCount(); ++r) {
            // Each line is "name=value".
            const std::string& line = m_.lines[static_cast<std::size_t>(r)];
            const auto eq = line.find('=');
            style::setCell(state_, r, 0, text(line.substr(0, eq)));
            style::setCell(state_, r, 1, eq == std::string::npos ? QString() : text(line.substr(eq + 1)));
        }
    }
    void closeEvent(QCloseEvent* e) override {
        e->ignore();
        if (attached()) c_.forms.unload(m_);
    }

private:
    Controller& c_;
    DebugForm& m_;
    QTableWidget* state_;
};

}  // namespace

std::unique_ptr<QWidget> makeDebugFormView(Controller& controller, Form& form) {
    if (auto* d = dynamic_cast<DebugForm*>(&form)) return std::make_unique<DebugFormView>(controller, *d);
    return nullptr;
}

}  // namespace tlx
