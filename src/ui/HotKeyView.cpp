// `frmHotKey`: whether the registered hot keys are on, which window they are attached to, and
// what each key does.
#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "presentation/HotKeys.h"
#include "ui/FormView.h"
#include "ui/ViewStyle.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {

class HotKeyView : public FormView {
public:
    explicit HotKeyView(frmHotKey& model) : FormView(model), m_(model) {
        setObjectName(frmHotKey::kName);
        auto* lay = new QVBoxLayout(this);
        style::window(lay);
        lay->setSizeConstraint(QLayout::SetFixedSize);
        status_ = new QLabel;
        status_->setObjectName("lblStatus");
        style::heading(status_);
        lay->addWidget(status_);
        window_ = new QLabel;
        window_->setObjectName("lblWindow");
        lay->addWidget(window_);
        auto* keys = new QGridLayout;
        style::nested(keys);
        keys->setHorizontalSpacing(3 * style::kSpacing);
        const char* rows[][2] = {{"V", "check the slide for a vote"},
                                 {"X", "arm the base-station mode keys"},
                                 {"X, then F", "fall-back mode"},
                                 {"X, then D", "detect mode"},
                                 {"X, then S", "sentry mode"}};
        int r = 0;
        for (const auto& row : rows) {
            auto* key = new QLabel(row[0]);
            style::bold(key);
            keys->addWidget(key, r, 0);
            keys->addWidget(new QLabel(row[1]), r++, 1);
        }
        lay->addLayout(keys);
        auto* close = style::button("Close", "cmdClose");
        lay->addLayout(style::buttonRow({}, {close}));
        connect(close, &QPushButton::clicked, this, [this] { this->close(); });
        bind();
    }

protected:
    void draw() override {
        status_->setText(text(m_.lblStatus));
        style::tone(status_, m_.lblStatus == "Hot Key Enabled"    ? style::Tone::Good
                             : m_.lblStatus == "Hot Key Disabled" ? style::Tone::Bad
                                                                  : style::Tone::Plain);
        const auto window = m_.m_cHotKey.attachedWindow();
        window_->setText(window ? "Attached to the slide-show window (0x" + QString::number(window, 16) + ")"
                                : QString("Attached to the controller window"));
    }
    void closeEvent(QCloseEvent* e) override {
        // The form keeps the keys registered: closing the window only hides it.
        e->ignore();
        if (attached()) m_.Hide();
    }

private:
    frmHotKey& m_;
    QLabel* status_;
    QLabel* window_;
};

}  // namespace

std::unique_ptr<QWidget> makeHotKeyView(Controller&, Form& form) {
    if (auto* h = dynamic_cast<frmHotKey*>(&form)) return std::make_unique<HotKeyView>(*h);
    return nullptr;
}

}  // namespace tlx
