#include "ui/Views.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "core/Controller.h"
#include "core/FrmInit.h"
#include "core/MainForm.h"
#include "core/SmallForms.h"
#include "core/Text.h"
#include "ui/MainWindowView.h"
#include "ui/SetupViews.h"
#include "ui/TextVoteView.h"
#include "ui/AudioViews.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {
QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }
}  // namespace

FrmInitView::FrmInitView(Controller& controller, FrmInit& model) : c_(controller), model_(model) {
    // Named after its form, as the debug window list shows it.
    setObjectName(FrmInit::kName);
    auto* lay = new QVBoxLayout(this);
    bar_ = new QLabel;
    grid_ = new QTableWidget(0, 4);
    QStringList cols;
    for (const auto& c : FrmInit::gridColumns()) cols << q(c);
    grid_->setHorizontalHeaderLabels(cols);
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    auto* scan = new QPushButton("Scan");
    auto* add = new QPushButton("Add base");
    popUp_ = new QCheckBox("Not-voted pop-up");
    popUpDownTo_ = new QLineEdit;
    popUpDownTo_->setPlaceholderText("Auto PopUp when down to");
    howMany_ = new QLineEdit;
    howMany_->setPlaceholderText("Show how many");
    close_ = new QCheckBox("Close voting automatically");
    closeSlider_ = new QSlider(Qt::Horizontal);
    closeSlider_->setRange(0, 100);
    closeLabel_ = new QLabel;
    auto* ok = new QPushButton("OK");
    auto* cancel = new QPushButton("Cancel");
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(scan);
    buttons->addWidget(add);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* pop = new QHBoxLayout;
    pop->addWidget(popUp_);
    pop->addWidget(popUpDownTo_);
    pop->addWidget(howMany_);
    lay->addWidget(bar_);
    lay->addWidget(grid_, 1);
    lay->addLayout(pop);
    lay->addWidget(close_);
    lay->addWidget(closeLabel_);
    lay->addWidget(closeSlider_);
    lay->addLayout(buttons);
    resize(640, 380);

    connect(scan, &QPushButton::clicked, this, [this] {
        pullRows();
        model_.ScanSystem();
    });
    connect(add, &QPushButton::clicked, this, [this] {
        pullRows();
        model_.rows.push_back(InitGridRow{"", "Kelvarin Corehub g2", "1", "20"});
        refresh();
    });
    connect(grid_, &QTableWidget::cellChanged, this, [this](int, int) {
        if (!refreshing_) pullRows();
    });
    connect(closeSlider_, &QSlider::valueChanged, this, [this](int v) {
        if (refreshing_) return;
        model_.sldClosePercent = v;
        closeLabel_->setText(q(model_.closeLabel()));
    });
    connect(ok, &QPushButton::clicked, this, [this] {
        pullRows();
        model_.cmdOK_Click();
    });
    connect(cancel, &QPushButton::clicked, this, [this] { model_.cmdCancel_Click(); });
    sub_ = model_.changed.connect([this] { refresh(); });
    refresh();
}

FrmInitView::~FrmInitView() { detach(); }

void FrmInitView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void FrmInitView::pullRows() {
    if (!sub_) return;
    for (int r = 0; r < grid_->rowCount() && r < static_cast<int>(model_.rows.size()); ++r) {
        auto& row = model_.rows[static_cast<std::size_t>(r)];
        if (auto* it = grid_->item(r, 0)) row.serialNumber = it->text().toStdString();
        if (auto* combo = qobject_cast<QComboBox*>(grid_->cellWidget(r, 1))) row.baseType = combo->currentText().toStdString();
        if (auto* it = grid_->item(r, 2)) row.lowest = it->text().toStdString();
        if (auto* it = grid_->item(r, 3)) row.highest = it->text().toStdString();
    }
    model_.chkPopUpOn = popUp_->isChecked();
    model_.txtPopUp = popUpDownTo_->text().toStdString();
    model_.txtHowMany = howMany_->text().toStdString();
    model_.chkClose = close_->isChecked();
    model_.sldClosePercent = closeSlider_->value();
}

void FrmInitView::refresh() {
    if (!sub_) return;
    refreshing_ = true;
    setWindowTitle(q(model_.Caption()));
    bar_->setText(q(model_.openingBar));
    const int rows = static_cast<int>(model_.rows.size());
    if (grid_->rowCount() != rows) grid_->setRowCount(rows);
    for (int r = 0; r < rows; ++r) {
        const auto& row = model_.rows[static_cast<std::size_t>(r)];
        auto setText = [&](int col, const std::string& text) {
            QTableWidgetItem* it = grid_->item(r, col);
            if (!it) grid_->setItem(r, col, it = new QTableWidgetItem);
            if (it->text() != q(text)) it->setText(q(text));
        };
        setText(0, row.serialNumber);
        setText(2, row.lowest);
        setText(3, row.highest);
        auto* combo = qobject_cast<QComboBox*>(grid_->cellWidget(r, 1));
        if (!combo) {
            combo = new QComboBox;
            for (const auto& t : FrmInit::baseTypeChoices()) combo->addItem(q(t));
            grid_->setCellWidget(r, 1, combo);
            connect(combo, &QComboBox::currentTextChanged, this, [this, r](const QString& t) {
                if (!refreshing_ && r < static_cast<int>(model_.rows.size()))
                    model_.rows[static_cast<std::size_t>(r)].baseType = t.toStdString();
            });
        }
        combo->setCurrentText(q(row.baseType));
    }
    popUp_->setChecked(model_.chkPopUpOn);
    popUpDownTo_->setText(q(model_.txtPopUp));
    howMany_->setText(q(model_.txtHowMany));
    close_->setChecked(model_.chkClose);
    closeSlider_->setValue(model_.sldClosePercent);
    closeLabel_->setText(q(model_.closeLabel()));
    refreshing_ = false;
}

BubbleLogView::BubbleLogView(BubbleMessageLogForm& model) : model_(model) {
    setObjectName(BubbleMessageLogForm::kName);
    auto* lay = new QVBoxLayout(this);
    text_ = new QPlainTextEdit;
    text_->setReadOnly(true);
    lay->addWidget(text_);
    resize(520, 360);
    sub_ = model_.changed.connect([this] { refresh(); });
    refresh();
}

BubbleLogView::~BubbleLogView() { detach(); }

void BubbleLogView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void BubbleLogView::refresh() {
    if (!sub_) return;
    setWindowTitle(q(model_.Caption()));
    text_->setPlainText(q(model_.txtLog));
}

ViewManager::ViewManager(Controller& controller) : c_(controller) {
    addViewFactory(makeAudioView);
    for (auto make : {makeSessionSettingsView, makeDebugFormView, makeWindowHandlesView, makeProcessListView,
                      makeHotKeyView, makeCloseControllerView})
        addViewFactory(make);
    loadedSub_ = c_.forms.loaded.connect([this](Form& f) { onLoaded(f); });
    unloadedSub_ = c_.forms.unloaded.connect([this](Form& f) { onUnloaded(f); });
    for (Form* f : c_.forms.all()) onLoaded(*f);
}

ViewManager::~ViewManager() {
    c_.forms.loaded.disconnect(loadedSub_);
    c_.forms.unloaded.disconnect(unloadedSub_);
    for (auto& [f, id] : subs_) f->changed.disconnect(id);
}

QWidget* ViewManager::viewOf(const std::string& formName) const {
    for (const auto& [f, v] : views_)
        if (f->Name() == formName) return v.get();
    return nullptr;
}

void ViewManager::onLoaded(Form& form) {
    std::unique_ptr<QWidget> view;
    if (auto* m = dynamic_cast<MainForm*>(&form))
        view = std::make_unique<MainWindowView>(c_, *m);
    else if (auto* i = dynamic_cast<FrmInit*>(&form))
        view = std::make_unique<FrmInitView>(c_, *i);
    else if (auto* b = dynamic_cast<BubbleMessageLogForm*>(&form))
        view = std::make_unique<BubbleLogView>(*b);
    if (!view) view = makeTextVoteView(form);
    if (!view) view = makeSetupView(form);
    for (const auto& make : factories_)
        if (!view) view = make(c_, form);
    if (!view) return;
    QWidget* w = view.get();
    views_[&form] = std::move(view);
    subs_[&form] = form.changed.connect([w, &form] { w->setVisible(form.Visible()); });
    w->setVisible(form.Visible());
}

void ViewManager::onUnloaded(Form& form) {
    if (auto it = subs_.find(&form); it != subs_.end()) {
        form.changed.disconnect(it->second);
        subs_.erase(it);
    }
    // The form may have unloaded itself from a click in this very view: let Qt finish the
    // event before the widgets go.
    if (auto it = views_.find(&form); it != views_.end()) {
        QWidget* w = it->second.release();
        views_.erase(it);
        if (auto* mv = dynamic_cast<ModelView*>(w)) mv->detach();
        w->hide();
        w->deleteLater();
    }
}

}  // namespace tlx
