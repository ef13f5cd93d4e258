#include "ui/MainWindowView.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QVBoxLayout>

#include "core/MainForm.h"
#include "core/Text.h"
#include "ui/Icons.h"

namespace tlx {

namespace {

QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }

template <class W>
W* named(W* w, const char* name) {
    w->setObjectName(name);
    return w;
}

QPushButton* button(const char* caption, const char* name) { return named(new QPushButton(caption), name); }

// Colours come as the program's colour values: red in the low byte, then green, then blue.
QColor fromColourValue(int v) { return QColor(v & 0xFF, (v >> 8) & 0xFF, (v >> 16) & 0xFF); }

void setText(QLineEdit* e, const std::string& text) {
    if (e->text() != q(text)) e->setText(q(text));
}

void setText(QPlainTextEdit* e, const std::string& text) {
    if (e->toPlainText() != q(text)) {
        e->setPlainText(q(text));
        e->moveCursor(QTextCursor::End);
    }
}

}  // namespace

MainWindowView::MainWindowView(Controller&, MainForm& model) : model_(model) {
    setObjectName(MainForm::kName);
    setWindowIcon(ui::icon("TRAY"));
    auto* lay = new QVBoxLayout(this);

    caption_ = named(new QLabel, "caption");
    QFont big = caption_->font();
    big.setPointSize(big.pointSize() + 3);
    big.setBold(true);
    caption_->setFont(big);
    lay->addWidget(caption_);

    // The system on the left; the hook and the vote on the right.
    auto* top = new QHBoxLayout;
    info_ = new QFormLayout;
    auto* info = info_;
    info->addRow("System:", lblOS_ = named(new QLabel, "lblOS"));
    info->addRow("Office:", lblOffice_ = named(new QLabel, "lblOffice"));
    info->addRow("Build:", lblBuild_ = named(new QLabel, "lblBuild"));
    info->addRow("Version:", lblVersion_ = named(new QLabel, "lblVersion"));
    top->addLayout(info, 1);

    auto* votes = new QGroupBox("Votes");
    auto* votesLay = new QGridLayout(votes);
    static constexpr const char* kCounterNames[3] = {"txt_VoteCounter(0)", "txt_VoteCounter(1)", "txt_VoteCounter(2)"};
    static constexpr const char* kCounterCaptions[3] = {"Accepted", "Received", "Voters"};
    for (int i = 0; i < 3; ++i) {
        auto* box = named(new QLineEdit, kCounterNames[i]);
        box->setReadOnly(true);
        box->setAlignment(Qt::AlignRight);
        box->setMinimumWidth(box->fontMetrics().horizontalAdvance("0,000,000") + 16);
        votesLay->addWidget(new QLabel(kCounterCaptions[i]), 0, i);
        votesLay->addWidget(box, 1, i);
        counters_[static_cast<std::size_t>(i)] = box;
    }
    lblVotesCast_ = named(new QLabel, "lblVotesCast");
    votesLay->addWidget(lblVotesCast_, 2, 0, 1, 3);
    lblHookStatus_ = named(new QLabel, "lblHookStatus");
    lblHookStatus_->setAutoFillBackground(true);
    lblHookStatus_->setAlignment(Qt::AlignCenter);
    lblHookStatus_->setMargin(3);
    QFont bold = lblHookStatus_->font();
    bold.setBold(true);
    lblHookStatus_->setFont(bold);
    auto* right = new QVBoxLayout;
    right->addWidget(votes);
    right->addWidget(lblHookStatus_);
    top->addLayout(right);
    lay->addLayout(top);

    log_ = named(new QPlainTextEdit, "txt_log");
    log_->setReadOnly(true);
    log_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    log_->setLineWrapMode(QPlainTextEdit::NoWrap);
    log_->setMinimumHeight(log_->fontMetrics().lineSpacing() * 10);
    lay->addWidget(log_, 1);

    command_ = named(new QPlainTextEdit, "txt_command");
    command_->setPlaceholderText("Command (Enter runs the queue)");
    command_->setTabChangesFocus(true);
    command_->setFixedHeight(command_->fontMetrics().lineSpacing() * 3 + 12);
    command_->installEventFilter(this);
    lay->addWidget(command_);
    connect(command_, &QPlainTextEdit::textChanged, this, [this] {
        if (!refreshing_) model_.txt_command_Change(command_->toPlainText().toStdString());
    });

    debugPanel_ = buildDebugPanel();
    lay->addWidget(debugPanel_);

    resize(820, 540);
    // The log changes with every line; redraw at most ten times a second.
    sub_ = model_.changed.connect([this] {
        if (refreshPending_) return;
        refreshPending_ = true;
        QTimer::singleShot(100, this, [this] {
            refreshPending_ = false;
            refresh();
        });
    });
    refresh();
}

QWidget* MainWindowView::buildDebugPanel() {
    auto* panel = named(new QWidget, "debugPanel");
    auto* lay = new QVBoxLayout(panel);
    lay->setContentsMargins(0, 0, 0, 0);

    auto* outgoing = new QGroupBox("Outgoing data");
    auto* outLay = new QVBoxLayout(outgoing);
    data_ = named(new QPlainTextEdit, "txt_data");
    data_->setReadOnly(true);
    data_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    data_->setFixedHeight(data_->fontMetrics().lineSpacing() * 3 + 12);
    outLay->addWidget(data_);
    lay->addWidget(outgoing);

    auto* row = new QHBoxLayout;
    auto* debug = new QGroupBox("Debug");
    auto* debugLay = new QVBoxLayout(debug);
    auto* list = button("Command List", "cmd_manualCommandList");
    auto* execute = button("Execute Command", "cmd_executeCommand");
    auto* normal = button("Normal View", "cmd_normalView");
    debugLay->addWidget(list);
    debugLay->addWidget(execute);
    debugLay->addWidget(normal);
    debugLay->addStretch();
    connect(list, &QPushButton::clicked, this, [this] { model_.cmd_manualCommandList_Click(); });
    connect(execute, &QPushButton::clicked, this, [this] { model_.cmd_executeCommand_Click(); });
    connect(normal, &QPushButton::clicked, this, [this] {
        model_.SwitchToDebugView(false);
        refresh();
    });
    row->addWidget(debug);

    auto* keys = new QGroupBox("Keyboard");
    auto* keysLay = new QGridLayout(keys);
    hook_ = named(new QCheckBox("Keyboard Hook"), "chkLowLevelKeyboardHook");
    repeatFilter_ = named(new QCheckBox("Repeat Filter"), "chkRepeatFilter");
    keysLay->addWidget(hook_, 0, 0, 1, 2);
    keysLay->addWidget(repeatFilter_, 1, 0, 1, 2);
    static constexpr const char* kModifierCaptions[6] = {"L Shift", "R Shift", "L Ctrl", "R Ctrl", "L Alt", "R Alt"};
    for (int i = 0; i < 6; ++i) {
        auto* box = new QCheckBox(kModifierCaptions[i]);
        box->setObjectName(QStringLiteral("chkModifier(%1)").arg(i));
        // Indicators only: the hook sets them.
        box->setAttribute(Qt::WA_TransparentForMouseEvents);
        box->setFocusPolicy(Qt::NoFocus);
        keysLay->addWidget(box, 2 + i / 2, i % 2);
        modifiers_[static_cast<std::size_t>(i)] = box;
    }
    connect(hook_, &QCheckBox::clicked, this, [this](bool on) {
        model_.chkLowLevelKeyboardHook_Click(on);
        refresh();
    });
    connect(repeatFilter_, &QCheckBox::clicked, this, [this](bool on) { model_.chkRepeatFilter_Click(on); });
    row->addWidget(keys);

    auto* abstain = new QGroupBox("Abstain");
    auto* abstainLay = new QFormLayout(abstain);
    abstain_ = named(new QCheckBox("Abstain on"), "Opt_Abstain");
    abstainKey_ = named(new QLineEdit, "key_Abstain");
    abstainKey_->setMaximumWidth(abstainKey_->fontMetrics().horizontalAdvance("000000") + 12);
    abstainLay->addRow(abstain_);
    abstainLay->addRow("Key:", abstainKey_);
    connect(abstain_, &QCheckBox::clicked, this, [this](bool on) { model_.Opt_Abstain_Click(on); });
    connect(abstainKey_, &QLineEdit::editingFinished, this, [this] {
        model_.key_Abstain_Change(abstainKey_->text().toStdString());
        refresh();
    });
    row->addWidget(abstain);

    auto* simulation = new QGroupBox("Simulation");
    auto* simLay = new QGridLayout(simulation);
    simulate_ = named(new QCheckBox("Simulate Votes"), "chk_simulateVotes");
    simulateMax_ = named(new QLineEdit, "txt_simulateVotesMaxKpadNum");
    simulateCount_ = named(new QLineEdit, "txt_simulateVotesCount");
    auto* start = button("Start", "cmd_start");
    auto* stop = button("Stop", "cmd_Stop");
    simLay->addWidget(simulate_, 0, 0, 1, 2);
    simLay->addWidget(new QLabel("Highest keypad:"), 1, 0);
    simLay->addWidget(simulateMax_, 1, 1);
    simLay->addWidget(new QLabel("Votes per tick:"), 2, 0);
    simLay->addWidget(simulateCount_, 2, 1);
    simLay->addWidget(start, 3, 0);
    simLay->addWidget(stop, 3, 1);
    connect(simulate_, &QCheckBox::clicked, this, [this](bool on) { model_.chk_simulateVotes_Click(on); });
    connect(simulateMax_, &QLineEdit::textEdited, this,
            [this](const QString& t) { model_.txt_simulateVotesMaxKpadNum_Change(t.toStdString()); });
    connect(simulateCount_, &QLineEdit::textEdited, this,
            [this](const QString& t) { model_.txt_simulateVotesCount_Change(t.toStdString()); });
    connect(start, &QPushButton::clicked, this, [this] {
        model_.cmd_start_Click();
        refresh();
    });
    connect(stop, &QPushButton::clicked, this, [this] {
        model_.cmd_Stop_Click();
        refresh();
    });
    row->addWidget(simulation);
    lay->addLayout(row);
    return panel;
}

MainWindowView::~MainWindowView() { detach(); }

void MainWindowView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void MainWindowView::refresh() {
    if (!sub_) return;
    refreshing_ = true;
    const MainForm& m = model_;
    setWindowTitle(q(m.Caption()));
    caption_->setText(q(m.Caption()));
    lblOS_->setText(q(m.lblOS));
    lblOffice_->setText(q(m.lblOffice));
    lblBuild_->setText(q(m.lblBuild));
    // A program file without a date leaves no empty "Build:" line.
    info_->setRowVisible(lblBuild_, !m.lblBuild.empty());
    lblVersion_->setText(q(m.lblVersion));
    lblVotesCast_->setText(q(m.lblVotesCast));
    lblVotesCast_->setVisible(!m.lblVotesCast.empty());
    for (std::size_t i = 0; i < counters_.size(); ++i) setText(counters_[i], m.txt_VoteCounter[i]);

    // The hook's state on its own colour, in black or white, whichever reads better on it.
    lblHookStatus_->setText(q(m.lblHookStatus));
    lblHookStatus_->setVisible(!m.lblHookStatus.empty());
    const QColor colour = fromColourValue(m.lblHookStatusColour);
    QPalette pal = lblHookStatus_->palette();
    pal.setColor(QPalette::Window, colour);
    pal.setColor(QPalette::WindowText, colour.lightnessF() > 0.45 ? Qt::black : Qt::white);
    lblHookStatus_->setPalette(pal);

    if (const std::string text = m.txt_log.text(); text != shownLog_) {
        shownLog_ = text;
        log_->setPlainText(q(text));
    }
    setText(command_, m.txt_command);

    const bool wasShown = !debugPanel_->isHidden();
    debugPanel_->setVisible(m.debugView);
    if (m.debugView) {
        setText(data_, m.txt_data);
        hook_->setChecked(m.chkLowLevelKeyboardHook);
        repeatFilter_->setChecked(m.chkRepeatFilter);
        for (std::size_t i = 0; i < modifiers_.size(); ++i) modifiers_[i]->setChecked(m.modifierIndicators[i]);
        abstain_->setChecked(m.Opt_Abstain);
        if (!abstainKey_->hasFocus()) setText(abstainKey_, std::to_string(m.key_Abstain));
        simulate_->setChecked(m.tmr_simulateVotes.enabled());
        setText(simulateMax_, m.txt_simulateVotesMaxKpadNum);
        setText(simulateCount_, m.txt_simulateVotesCount);
    }
    if (m.debugView != wasShown) {
        // The debug controls need room; the normal view gives it back.
        if (layout()) layout()->activate();
        const QSize hint = sizeHint();
        resize(std::max(width(), hint.width()), m.debugView ? std::max(height(), hint.height()) : 540);
    }
    refreshing_ = false;
}

bool MainWindowView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == command_ && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            const auto mods = key->modifiers();
            model_.txt_command_KeyDown(13, mods & Qt::ShiftModifier, mods & Qt::ControlModifier, mods & Qt::AltModifier);
            // Enter runs the queue rather than starting a line; Shift+Enter starts one.
            return !(mods & Qt::ShiftModifier);
        }
    }
    return QWidget::eventFilter(watched, event);
}

void MainWindowView::closeEvent(QCloseEvent* e) {
    e->ignore();
    // Closing sends the controller to the tray, where Quit is. A desktop without a tray
    // leaves no way back to a hidden window: there closing is the tray's Quit, question and all.
    if (QSystemTrayIcon::isSystemTrayAvailable())
        model_.Hide();
    else
        model_.TaskQuit();
}

}  // namespace tlx
