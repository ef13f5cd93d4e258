// `frm_CloseController`: the last window of the program, saying that it is closing while its
// timer ends the process.
#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

#include "core/SmallForms.h"
#include "ui/FormView.h"
#include "ui/ViewStyle.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {

class CloseControllerView : public FormView {
public:
    explicit CloseControllerView(CloseControllerForm& model) : FormView(model), m_(model) {
        setObjectName(CloseControllerForm::kName);
        setWindowFlag(Qt::WindowCloseButtonHint, false);
        auto* lay = new QVBoxLayout(this);
        style::window(lay);
        lay->setSizeConstraint(QLayout::SetFixedSize);
        status_ = new QLabel;
        status_->setObjectName("lblStatus");
        style::heading(status_);
        lay->addWidget(status_);
        auto* busy = new QProgressBar;
        busy->setObjectName("barClosing");
        busy->setRange(0, 0);  // no steps to count: it ends when the process does
        busy->setTextVisible(false);
        busy->setMinimumWidth(320);
        lay->addWidget(busy);
        bind();
    }

protected:
    void draw() override { status_->setText(text(m_.lblStatus)); }
    // The process is ending: there is nothing a close could change.
    void closeEvent(QCloseEvent* e) override { e->ignore(); }

private:
    CloseControllerForm& m_;
    QLabel* status_;
};

}  // namespace

std::unique_ptr<QWidget> makeCloseControllerView(Controller&, Form& form) {
    if (auto* f = dynamic_cast<CloseControllerForm*>(&form)) return std::make_unique<CloseControllerView>(*f);
    return nullptr;
}

}  // namespace tlx
