#include "ui/TextVoteView.h"
#include "ui/ViewStyle.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSlider>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <map>
#include <set>

#include "core/Text.h"
#include "textvote/TextVoteCollection.h"
#include "ui/Icons.h"

namespace tlx {

namespace {

QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }

QPushButton* button(const char* caption, const char* name) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    return b;
}

}  // namespace

TextVoteView::TextVoteView(frmTextVoteCollection& model) : model_(model) {
    setObjectName(frmTextVoteCollection::kName);
    auto* lay = new QVBoxLayout(this);
    style::window(lay);

    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel("Session Name"));
    session_ = new QLineEdit;
    session_->setObjectName("txtSessionName");
    top->addWidget(session_, 1);
    lock_ = button("", "cmdStartStopVoteLock");
    lock_->setFixedWidth(40);
    lock_->setIconSize(QSize(22, 22));
    startStop_ = button("Start Vote", "cmdStartStopVote");
    startStop_->setMinimumWidth(110);
    top->addWidget(lock_);
    top->addWidget(startStop_);
    lay->addLayout(top);

    auto* middle = new QHBoxLayout;
    list_ = new QListWidget;
    list_->setObjectName("lstTextVotes");
    list_->installEventFilter(this);
    middle->addWidget(list_, 1);
    auto* listButtons = new QVBoxLayout;
    auto* del = button("Delete", "cmdDeleteVote");
    auto* clear = button("Clear All", "cmdClearAllVotes");
    auto* copySel = button("Copy Selected", "cmdCopySelectedVote");
    auto* copyNew = button("Copy All New", "cmdCopyAllNew");
    auto* reset = button("Reset", "cmdResetVoteList");
    for (auto* b : {del, clear, copySel, copyNew, reset}) listButtons->addWidget(b);
    listButtons->addStretch();
    middle->addLayout(listButtons);
    lay->addLayout(middle, 3);

    selected_ = new QPlainTextEdit;
    selected_->setObjectName("txtSelectedVote");
    selected_->setMaximumHeight(70);
    lay->addWidget(selected_);

    auto* alertBar = new QHBoxLayout;
    alertBar->addWidget(new QLabel("Keypad Alerts"));
    alertBar->addStretch();
    auto* delKeypad = button("Delete Keypad", "cmdDeleteKeypad");
    auto* options = button("Options", "cmdAlertListConfig");
    alertBar->addWidget(delKeypad);
    alertBar->addWidget(options);
    lay->addLayout(alertBar);
    alerts_ = new QTreeWidget;
    alerts_->setObjectName("lvwKeypadAlerts");
    alerts_->setRootIsDecorated(false);
    alerts_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    alerts_->setColumnCount(static_cast<int>(frmTextVoteCollection::alertColumns().size()));
    QStringList headers;
    for (const auto& c : frmTextVoteCollection::alertColumns()) headers << q(c);
    alerts_->setHeaderLabels(headers);
    alerts_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    lay->addWidget(alerts_, 2);

    menu_ = new QMenu(this);
    menu_->setObjectName("mnuAlertListOptions");
    auto* showAll = menu_->addAction("Show All Keypad Info As Votes Arrive");
    showAll->setObjectName("mnuShowAllKpadInfoAsVotesArrive");
    showAll->setCheckable(true);
    auto* full = menu_->addAction("Show Full Keypad Details");
    full->setObjectName("mnuShowFullKpadDetails");
    full->setCheckable(true);

    debug_ = new QGroupBox("Debug");
    debug_->setObjectName("fraDebug");
    auto* dl = new QHBoxLayout(debug_);
    generate_ = new QCheckBox("Generate Random Votes");
    generate_->setObjectName("chkDebugGenerateRandomVotes");
    interval_ = new QSlider(Qt::Horizontal);
    interval_->setObjectName("sldDebugTimerInterval");
    interval_->setRange(frmTextVoteCollection::kDebugIntervalMin, frmTextVoteCollection::kDebugIntervalMax);
    intervalLabel_ = new QLabel;
    auto* debugClose = button("Close", "cmdDebugClose");
    dl->addWidget(generate_);
    dl->addWidget(interval_, 1);
    dl->addWidget(intervalLabel_);
    dl->addWidget(debugClose);
    lay->addWidget(debug_);

    status_ = new QLabel;
    status_->setObjectName("lblStatus");
    status_->setFrameShape(QFrame::StyledPanel);
    lay->addWidget(status_);
    resize(820, 560);  // wide enough for all ten alert columns without scrolling

    connect(startStop_, &QPushButton::clicked, this, [this] { model_.cmdStartStopVote_Click(); });
    connect(lock_, &QPushButton::clicked, this, [this] { model_.cmdStartStopVoteLock_Click(); });
    connect(session_, &QLineEdit::editingFinished, this, [this] {
        if (refreshing_ || session_->text().toStdString() == model_.txtSessionName) return;
        if (!model_.txtSessionName_Validate(session_->text().toStdString())) scheduleRefresh();
    });
    // A click, or a move with the arrow keys, chooses an entry.
    connect(list_, &QListWidget::itemClicked, this, [this](QListWidgetItem* it) {
        if (!refreshing_) model_.lstTextVotes_Click(list_->row(it));
    });
    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (!refreshing_ && row >= 0) model_.lstTextVotes_Click(row);
    });
    connect(del, &QPushButton::clicked, this, [this] { model_.cmdDeleteVote_Click(); });
    connect(clear, &QPushButton::clicked, this, [this] { model_.cmdClearAllVotes_Click(); });
    connect(copySel, &QPushButton::clicked, this, [this] { model_.cmdCopySelectedVote_Click(); });
    connect(copyNew, &QPushButton::clicked, this, [this] { model_.cmdCopyAllNew_Click(); });
    connect(reset, &QPushButton::clicked, this, [this] { model_.cmdResetVoteList_Click(); });
    // The presenter may edit the chosen text before copying it.
    connect(selected_, &QPlainTextEdit::textChanged, this, [this] {
        if (!refreshing_) model_.txtSelectedVote = replaceAll(selected_->toPlainText().toStdString(), "\n", "\r\n");
    });
    connect(delKeypad, &QPushButton::clicked, this, [this] {
        std::set<std::string> chosen;
        for (auto* it : alerts_->selectedItems()) chosen.insert(it->data(0, Qt::UserRole).toString().toStdString());
        for (auto& r : model_.lvwKeypadAlerts) r.selected = chosen.count(r.key) > 0;
        model_.cmdDeleteKeypad_Click();
    });
    connect(options, &QPushButton::clicked, this, [this] { model_.cmdAlertListConfig_Click(); });
    connect(showAll, &QAction::triggered, this, [this] { model_.mnuShowAllKpadInfoAsVotesArrive_Click(); });
    connect(full, &QAction::triggered, this, [this] { model_.mnuShowFullKpadDetails_Click(); });
    connect(generate_, &QCheckBox::toggled, this, [this](bool on) {
        if (!refreshing_) model_.chkDebugGenerateRandomVotes_Click(on);
    });
    connect(interval_, &QSlider::valueChanged, this, [this](int v) {
        if (!refreshing_) model_.sldDebugTimerInterval_Change(v);
    });
    connect(debugClose, &QPushButton::clicked, this, [this] { model_.cmdDebugClose_Click(); });
    // The debug panel is for whoever knows its keys.
    auto* debugKey = new QShortcut(QKeySequence("Ctrl+Shift+D"), this);
    connect(debugKey, &QShortcut::activated, this, [this] { model_.ShowDebugPanel(); });

    sub_ = model_.changed.connect([this] { scheduleRefresh(); });
    menuSub_ = model_.popupAlertListOptions.connect([this, options] {
        menu_->popup(options->mapToGlobal(QPoint(0, options->height())));
    });
    refresh();
}

TextVoteView::~TextVoteView() { detach(); }

void TextVoteView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    if (menuSub_) model_.popupAlertListOptions.disconnect(menuSub_);
    sub_ = menuSub_ = 0;
}

void TextVoteView::scheduleRefresh() {
    // Texts can arrive many at a time: redraw once the burst has been taken.
    if (refreshPending_) return;
    refreshPending_ = true;
    QTimer::singleShot(30, this, [this] {
        refreshPending_ = false;
        refresh();
    });
}

void TextVoteView::refresh() {
    if (!sub_) return;
    refreshing_ = true;
    setWindowTitle(q(model_.Caption()));
    if (session_->text().toStdString() != model_.txtSessionName) session_->setText(q(model_.txtSessionName));
    session_->setEnabled(model_.txtSessionNameEnabled);
    startStop_->setText(q(model_.cmdStartStopVote.caption));
    startStop_->setEnabled(model_.cmdStartStopVote.enabled);
    // The lock's glyph belongs to a symbol font this platform lacks: the padlock comes from the icon set.
    lock_->setIcon(ui::icon(model_.locked() ? "LOCKED" : "UNLOCKED"));
    lock_->setToolTip(model_.locked() ? "Locked: unlock to end the vote" : "Unlocked");
    lock_->setProperty("glyph", q(model_.cmdStartStopVoteLock.caption));

    const int n = static_cast<int>(model_.lstTextVotes.size());
    while (list_->count() > n) delete list_->takeItem(list_->count() - 1);
    for (int i = 0; i < n; ++i) {
        const QString text = q(model_.lstTextVotes[static_cast<std::size_t>(i)]);
        if (i < list_->count()) {
            if (list_->item(i)->text() != text) list_->item(i)->setText(text);
        } else {
            list_->addItem(text);
        }
    }
    list_->setCurrentRow(model_.lstTextVotesIndex);
    if (list_->count() > 0 && model_.lstTextVotesIndex < 0) list_->scrollToBottom();
    const QString chosen = q(model_.txtSelectedVote);
    if (selected_->toPlainText() != chosen) selected_->setPlainText(chosen);

    refreshAlerts();
    for (auto* a : menu_->actions()) {
        if (a->objectName() == "mnuShowAllKpadInfoAsVotesArrive") a->setChecked(model_.mnuShowAllKpadInfoAsVotesArrive);
        if (a->objectName() == "mnuShowFullKpadDetails") a->setChecked(model_.mnuShowFullKpadDetails);
    }
    debug_->setVisible(model_.debugPanelVisible);
    generate_->setChecked(model_.chkDebugGenerateRandomVotes);
    interval_->setValue(model_.sldDebugTimerInterval);
    intervalLabel_->setText(QString::number(model_.sldDebugTimerInterval) + " ms");
    status_->setText(q(model_.lblStatus));
    refreshing_ = false;
}

void TextVoteView::refreshAlerts() {
    const auto& rows = model_.lvwKeypadAlerts;
    bool same = alerts_->topLevelItemCount() == static_cast<int>(rows.size());
    for (int i = 0; same && i < alerts_->topLevelItemCount(); ++i)
        same = alerts_->topLevelItem(i)->data(0, Qt::UserRole).toString() == q(rows[static_cast<std::size_t>(i)].key);
    if (!same) {
        // Rows came or went: build the list again, keeping what the presenter had chosen.
        std::set<std::string> chosen;
        for (auto* it : alerts_->selectedItems()) chosen.insert(it->data(0, Qt::UserRole).toString().toStdString());
        alerts_->clear();
        for (const auto& r : rows) {
            auto* it = new QTreeWidgetItem(alerts_);
            it->setData(0, Qt::UserRole, q(r.key));
            it->setSelected(chosen.count(r.key) > 0);
        }
    }
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
        const ListViewRow& r = rows[static_cast<std::size_t>(i)];
        QTreeWidgetItem* it = alerts_->topLevelItem(i);
        it->setText(0, q(r.text));
        it->setIcon(0, ui::icon(r.icon));
        for (int s = 0; s < static_cast<int>(r.subItems.size()) && s + 1 < alerts_->columnCount(); ++s) {
            it->setText(s + 1, q(r.subItems[static_cast<std::size_t>(s)].text));
            const std::string& icon = r.subItems[static_cast<std::size_t>(s)].reportIcon;
            it->setIcon(s + 1, icon.empty() ? QIcon() : ui::icon(icon));
        }
    }
    for (int c = 0; c < alerts_->columnCount(); ++c) alerts_->setColumnHidden(c, !model_.columnVisible(c));
}

bool TextVoteView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list_ && event->type() == QEvent::KeyPress && sub_) {
        auto* k = static_cast<QKeyEvent*>(event);
        if (k->key() == Qt::Key_Delete) {
            model_.lstTextVotes_KeyDown(frmTextVoteCollection::kDeleteKey);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TextVoteView::closeEvent(QCloseEvent* e) {
    // Closing the window unloads its form (ending a running vote); the view goes with it.
    e->ignore();
    if (sub_) model_.Close();
}

std::unique_ptr<QWidget> makeTextVoteView(Form& form) {
    if (auto* t = dynamic_cast<frmTextVoteCollection*>(&form)) return std::make_unique<TextVoteView>(*t);
    return nullptr;
}

}  // namespace tlx
