#include "ui/AudioViews.h"
#include "ui/ViewStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QIcon>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "audio/AudioSettingsForm.h"
#include "audio/AudioWindow.h"
#include "core/Controller.h"
#include "core/Text.h"
#include "ui/Icons.h"

namespace tlx {

namespace {

QString q(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }

QPushButton* button(const QString& text) { return new QPushButton(text); }

void bar(QProgressBar* b, const AudioProgressBar& m) {
    b->setRange(m.min, m.max);
    b->setValue(m.value);
}

}  // namespace

// ---- the audio window ----

AudioWindowView::AudioWindowView(Controller&, frmAudio& model) : model_(model) {
    auto* lay = new QVBoxLayout(this);
    style::window(lay);

    auto* top = new QHBoxLayout;
    micIcon_ = new QLabel;
    micIcon_->setToolTip("Microphone requests");
    request_ = button("");
    top->addWidget(micIcon_);
    top->addWidget(request_);
    top->addStretch(1);
    fullMode_ = button("");
    fullMode_->setMaximumWidth(40);
    top->addWidget(fullMode_);
    lay->addLayout(top);

    list_ = new QTreeWidget;
    list_->setRootIsDecorated(false);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->setMinimumHeight(120);
    lay->addWidget(list_, 1);

    auto* buttons = new QHBoxLayout;
    start_ = button("Start");
    stop_ = button("Stop");
    clear_ = button("Clear List");
    settings_ = button("Settings");
    hide_ = button("Hide");
    for (auto* b : {start_, stop_, clear_, settings_, hide_}) buttons->addWidget(b);
    lay->addLayout(buttons);

    auto* speakerBox = new QGroupBox("Speaker");
    auto* sg = new QGridLayout(speakerBox);
    speaker_ = new QLabel;
    timeRemaining_ = new QLabel;
    QFont big = timeRemaining_->font();
    big.setPointSize(big.pointSize() + 8);
    big.setBold(true);
    timeRemaining_->setFont(big);
    timeRemaining_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // Room for a countdown gone well below zero.
    timeRemaining_->setMinimumWidth(QFontMetrics(big).horizontalAdvance("-0000") + 4);
    rssi_ = new QLabel;
    lqi_ = new QLabel;
    rssiBar_ = new QProgressBar;
    lqiBar_ = new QProgressBar;
    for (auto* b : {rssiBar_, lqiBar_}) {
        b->setTextVisible(false);
        b->setMaximumHeight(12);
    }
    sg->addWidget(speaker_, 0, 0, 1, 2);
    sg->addWidget(timeRemaining_, 0, 2, 2, 1);
    sg->addWidget(new QLabel("RSSI"), 1, 0);
    sg->addWidget(rssi_, 1, 1);
    sg->addWidget(rssiBar_, 2, 0, 1, 2);
    sg->addWidget(new QLabel("LQI"), 3, 0);
    sg->addWidget(lqi_, 3, 1);
    sg->addWidget(lqiBar_, 4, 0, 1, 2);
    sg->setColumnStretch(1, 1);
    lay->addWidget(speakerBox);

    // The full window: options, playthrough and the debug log.
    fullPanel_ = new QWidget;
    auto* fl = new QGridLayout(fullPanel_);
    fl->setContentsMargins(0, 0, 0, 0);
    auto* options = new QGroupBox("Options");
    auto* ol = new QVBoxLayout(options);
    autoManage_ = new QCheckBox("Remove a keypad when its turn ends");
    clearOnHide_ = new QCheckBox("Clear the list when hidden");
    requestsOn_ = new QCheckBox("Keep requests on");
    playthrough_ = new QCheckBox("Play through the PC while streaming");
    constant_ = new QCheckBox("Keep playthrough running between turns");
    defaultOnly_ = new QCheckBox("Default devices only");
    logNext_ = new QCheckBox("Log the next callback");
    debugMode_ = new QCheckBox("Debug mode");
    for (auto* c : {autoManage_, clearOnHide_, requestsOn_, playthrough_, constant_, defaultOnly_, logNext_, debugMode_})
        ol->addWidget(c);
    auto* minRow = new QHBoxLayout;
    minRow->addWidget(new QLabel("Shortest callback block"));
    minLen_ = new QLineEdit;
    minLen_->setMaximumWidth(70);
    minRow->addWidget(minLen_);
    ol->addLayout(minRow);
    fl->addWidget(options, 0, 0, 2, 1);

    auto* play = new QGroupBox("Playthrough");
    auto* pl = new QGridLayout(play);
    startPlay_ = button("Start Playthrough");
    endPlay_ = button("End Playthrough");
    refresh_ = button("Refresh");
    inputs_ = new QListWidget;
    outputs_ = new QListWidget;
    for (auto* l : {inputs_, outputs_}) l->setMaximumHeight(70);
    input_ = new QComboBox;
    inputLevel_ = new QSlider(Qt::Horizontal);
    outputLevel_ = new QSlider(Qt::Horizontal);
    for (auto* s : {inputLevel_, outputLevel_}) s->setRange(0, 100);
    cpu_ = new QLabel;
    latency_ = new QLabel;
    level_ = new QProgressBar;
    level_->setTextVisible(false);
    level_->setMaximumHeight(12);
    pl->addWidget(startPlay_, 0, 0);
    pl->addWidget(endPlay_, 0, 1);
    pl->addWidget(refresh_, 0, 2);
    pl->addWidget(new QLabel("Input devices"), 1, 0);
    pl->addWidget(new QLabel("Output devices"), 1, 1, 1, 2);
    pl->addWidget(inputs_, 2, 0);
    pl->addWidget(outputs_, 2, 1, 1, 2);
    pl->addWidget(new QLabel("Input"), 3, 0);
    pl->addWidget(input_, 3, 1, 1, 2);
    pl->addWidget(new QLabel("Input level"), 4, 0);
    pl->addWidget(inputLevel_, 4, 1, 1, 2);
    pl->addWidget(new QLabel("Output level"), 5, 0);
    pl->addWidget(outputLevel_, 5, 1, 1, 2);
    pl->addWidget(cpu_, 6, 0);
    pl->addWidget(latency_, 6, 1);
    pl->addWidget(level_, 6, 2);
    fl->addWidget(play, 0, 1);
    debugLog_ = new QPlainTextEdit;
    debugLog_->setReadOnly(true);
    debugLog_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    debugLog_->setMaximumHeight(90);
    fl->addWidget(debugLog_, 1, 1);
    lay->addWidget(fullPanel_);

    status_ = new QLabel;
    status_->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    lay->addWidget(status_);

    frmAudio& m = model_;
    connect(request_, &QPushButton::clicked, this, [&m] { m.cmd_audioRequest_Click(); });
    connect(fullMode_, &QPushButton::clicked, this, [&m] { m.cmd_fullMode_Click(); });
    connect(start_, &QPushButton::clicked, this, [&m] { m.cmd_startAudio_Click(); });
    connect(stop_, &QPushButton::clicked, this, [&m] { m.cmd_stopAudio_Click(); });
    connect(clear_, &QPushButton::clicked, this, [&m] { m.cmd_clearList_Click(); });
    connect(settings_, &QPushButton::clicked, this, [&m] { m.cmd_settings_Click(); });
    connect(hide_, &QPushButton::clicked, this, [&m] { m.cmd_hide_Click(); });
    connect(list_, &QTreeWidget::currentItemChanged, this, [this] {
        if (!refreshing_) model_.lvw_keypadRequests_Click(list_->indexOfTopLevelItem(list_->currentItem()));
    });
    connect(list_, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem* item, int) { model_.lvw_keypadRequests_DblClick(list_->indexOfTopLevelItem(item)); });
    connect(list_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        if (!list_->itemAt(at)) return;
        QMenu menu;
        QAction* remove = menu.addAction("Delete");
        if (menu.exec(list_->viewport()->mapToGlobal(at)) == remove) model_.mnu_audioRequestDelete_Click();
    });
    const std::pair<QCheckBox*, AudioCheck> checks[] = {
        {autoManage_, AudioCheck::AutoManageRequests},     {clearOnHide_, AudioCheck::ClearRequestsOnHide},
        {requestsOn_, AudioCheck::AudioRequestsOn},        {playthrough_, AudioCheck::PlaythroughEnabled},
        {constant_, AudioCheck::RunPlaythroughConstantly}, {defaultOnly_, AudioCheck::DefaultDeviceOnly},
        {logNext_, AudioCheck::CallBackLogNextEvent}};
    for (const auto& [box, which] : checks) {
        const AudioCheck w = which;
        connect(box, &QCheckBox::toggled, this, [this, w](bool on) {
            if (!refreshing_) model_.chk_Click(w, on);
        });
    }
    connect(debugMode_, &QCheckBox::toggled, this, [this](bool on) {
        if (!refreshing_ && on != model_.mnu_debugMode) model_.mnu_debugMode_Click();
    });
    connect(minLen_, &QLineEdit::editingFinished, this, [this] {
        if (!refreshing_) model_.txt_audioMinCallbackDataLen_Change(minLen_->text().toStdString());
    });
    connect(startPlay_, &QPushButton::clicked, this, [&m] { m.cmd_startPlaythrough_Click(); });
    connect(endPlay_, &QPushButton::clicked, this, [&m] { m.cmd_endPlaythrough_Click(); });
    connect(refresh_, &QPushButton::clicked, this, [&m] { m.cmd_bassRefresh_Click(); });
    connect(inputs_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (!refreshing_) model_.lvw_inputDevices_Click(row);
    });
    connect(outputs_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (!refreshing_) model_.lvw_outputDevices_Click(row);
    });
    connect(input_, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (!refreshing_) model_.cmb_input_Click(i);
    });
    connect(inputLevel_, &QSlider::valueChanged, this, [this](int v) {
        if (!refreshing_) model_.sld_inputLevel_Change(v);
    });
    connect(outputLevel_, &QSlider::valueChanged, this, [this](int v) {
        if (!refreshing_) model_.sld_outputLevel_Change(v);
    });

    sub_ = model_.changed.connect([this] { refreshSoon(); });
    refresh();
}

void AudioWindowView::refreshSoon() {
    // Redrawn once the current event is over: a click's own list must not be rebuilt under it.
    if (refreshPending_) return;
    refreshPending_ = true;
    QTimer::singleShot(0, this, [this] {
        refreshPending_ = false;
        refresh();
    });
}

AudioWindowView::~AudioWindowView() { detach(); }

void AudioWindowView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void AudioWindowView::refresh() {
    if (!sub_) return;
    refreshing_ = true;
    const frmAudio& m = model_;
    setWindowTitle(q(m.Caption()));
    micIcon_->setPixmap(ui::pixmap(m.imgMicIcon == MicIcon::Inactive ? "MIC_OFF"
                                   : m.imgMicIcon == MicIcon::Active ? "MIC_ON"
                                                                     : "MIC_STREAMING",
                                   28, devicePixelRatioF()));
    auto buttonFrom = [](QPushButton* b, const AudioButton& s) {
        b->setText(q(s.caption));
        b->setEnabled(s.enabled);
    };
    buttonFrom(request_, m.cmd_audioRequest);
    buttonFrom(start_, m.cmd_startAudio);
    buttonFrom(stop_, m.cmd_stopAudio);
    buttonFrom(clear_, m.cmd_clearList);
    buttonFrom(settings_, m.cmd_settings);
    buttonFrom(hide_, m.cmd_hide);
    buttonFrom(fullMode_, m.cmd_fullMode);
    buttonFrom(startPlay_, m.cmd_startPlaythrough);
    buttonFrom(endPlay_, m.cmd_endPlaythrough);
    buttonFrom(refresh_, m.cmd_bassRefresh);

    const auto& l = m.lvw_keypadRequests;
    QStringList headers;
    for (const auto& c : l.columns) headers << q(c);
    list_->setColumnCount(static_cast<int>(headers.size()));
    list_->setHeaderLabels(headers);
    list_->clear();
    for (const auto& r : l.rows) {
        auto* item = new QTreeWidgetItem(list_);
        item->setText(0, q(r.text));
        item->setIcon(0, ui::icon(r.icon));
        item->setText(1, q(r.number));
        item->setText(2, q(r.battery.text));
        item->setIcon(2, ui::icon(r.battery.icon));
        item->setText(3, q(r.signal.text));
        item->setIcon(3, ui::icon(r.signal.icon));
    }
    if (l.selected >= 0 && l.selected < list_->topLevelItemCount())
        list_->setCurrentItem(list_->topLevelItem(l.selected));
    list_->setEnabled(l.enabled);
    for (int c = 0; c < list_->columnCount(); ++c) list_->resizeColumnToContents(c);

    std::string speaker = "-";
    if (const int i = l.indexOf(m.currentSpeakerKey()); i >= 0)
        speaker = "Keypad " + l.rows[static_cast<std::size_t>(i)].number + "  " + l.rows[static_cast<std::size_t>(i)].text;
    speaker_->setText(q(speaker));
    timeRemaining_->setText(q(m.lblTimeRemaining));
    rssi_->setText(q(m.lblRSSI));
    lqi_->setText(q(m.lblLQI));
    bar(rssiBar_, m.pbarRSSI);
    bar(lqiBar_, m.pbarLQI);

    fullPanel_->setVisible(m.Mode() == AudioWindowMode::Full);
    autoManage_->setChecked(m.checked(AudioCheck::AutoManageRequests));
    clearOnHide_->setChecked(m.checked(AudioCheck::ClearRequestsOnHide));
    requestsOn_->setChecked(m.checked(AudioCheck::AudioRequestsOn));
    playthrough_->setChecked(m.checked(AudioCheck::PlaythroughEnabled));
    constant_->setChecked(m.checked(AudioCheck::RunPlaythroughConstantly));
    defaultOnly_->setChecked(m.checked(AudioCheck::DefaultDeviceOnly));
    logNext_->setChecked(m.checked(AudioCheck::CallBackLogNextEvent));
    debugMode_->setChecked(m.mnu_debugMode);
    minLen_->setText(q(m.txt_audioMinCallbackDataLen));
    inputs_->clear();
    for (const auto& d : m.lvw_inputDevices) inputs_->addItem(q(d));
    outputs_->clear();
    for (const auto& d : m.lvw_outputDevices) outputs_->addItem(q(d));
    input_->clear();
    input_->addItem("Master");
    for (const auto& i : m.cmb_input) input_->addItem(q(i));
    input_->setCurrentIndex(m.cmb_inputIndex + 1);
    inputLevel_->setValue(m.sld_inputLevel);
    outputLevel_->setValue(m.sld_outputLevel);
    cpu_->setText(q(m.lblCPU));
    latency_->setText(q(m.lblLatency));
    bar(level_, m.pbar_channelLevel);
    debugLog_->setVisible(m.mnu_debugMode);
    debugLog_->setPlainText(q(m.txt_DebugLog));
    status_->setText(q(m.status));
    adjustSize();
    refreshing_ = false;
}

// ---- the audio settings dialog ----

AudioSettingsView::AudioSettingsView(Controller&, frmAudioSettings& model) : model_(model) {
    constexpr int width = 440;
    basic_ = new QWidget(this);
    basic_->setGeometry(10, 10, width - 20, frmAudioSettings::kButtonsTopBasic - 20);
    auto* bl = new QGridLayout(basic_);
    micVolume_ = new QSlider(Qt::Horizontal);
    boost_ = new QSlider(Qt::Horizontal);
    micVolumeValue_ = new QLabel;
    boostValue_ = new QLabel;
    maxTalk_ = new QLineEdit;
    warning_ = new QLineEdit;
    bl->addWidget(new QLabel("Microphone volume"), 0, 0);
    bl->addWidget(micVolume_, 0, 1);
    bl->addWidget(micVolumeValue_, 0, 2);
    bl->addWidget(new QLabel("Boost volume"), 1, 0);
    bl->addWidget(boost_, 1, 1);
    bl->addWidget(boostValue_, 1, 2);
    bl->addWidget(new QLabel("Maximum talk time (s)"), 2, 0);
    bl->addWidget(maxTalk_, 2, 1, 1, 2);
    bl->addWidget(new QLabel("Warning at (s)"), 3, 0);
    bl->addWidget(warning_, 3, 1, 1, 2);

    advanced_ = new QFrame(this);
    advanced_->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    advanced_->setGeometry(10, frmAudioSettings::kButtonsTopBasic - 6, width - 20,
                           frmAudioSettings::kButtonsTopAdvanced - frmAudioSettings::kButtonsTopBasic - 4);
    auto* al = new QGridLayout(advanced_);
    switchLogic_ = new QComboBox;
    micKey_ = new QLineEdit;
    endKey_ = new QLineEdit;
    muteKey_ = new QLineEdit;
    auto* speedRow = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) {
        speeds_[i] = new QRadioButton;
        speedRow->addWidget(speeds_[i]);
    }
    ownChannel_ = new QCheckBox("Own radio channel");
    channel_ = new QLineEdit;
    prompt1_ = new QLineEdit;
    prompt2_ = new QLineEdit;
    image_ = new QLineEdit;
    auto* browse = new QPushButton("...");
    browse->setMaximumWidth(32);
    auto* imageRow = new QHBoxLayout;
    imageRow->addWidget(image_);
    imageRow->addWidget(browse);
    int row = 0;
    al->addWidget(new QLabel("Microphone switch"), row, 0);
    al->addWidget(switchLogic_, row++, 1);
    al->addWidget(new QLabel("Microphone key"), row, 0);
    al->addWidget(micKey_, row++, 1);
    al->addWidget(new QLabel("End key"), row, 0);
    al->addWidget(endKey_, row++, 1);
    al->addWidget(new QLabel("Mute key"), row, 0);
    al->addWidget(muteKey_, row++, 1);
    al->addWidget(new QLabel("Radio speed"), row, 0);
    al->addLayout(speedRow, row++, 1);
    al->addWidget(ownChannel_, row, 0);
    al->addWidget(channel_, row++, 1);
    al->addWidget(new QLabel("Keypad prompt, first line"), row, 0);
    al->addWidget(prompt1_, row++, 1);
    al->addWidget(new QLabel("Keypad prompt, second line"), row, 0);
    al->addWidget(prompt2_, row++, 1);
    al->addWidget(new QLabel("Image"), row, 0);
    al->addLayout(imageRow, row++, 1);

    advancedToggle_ = new QPushButton(this);
    ok_ = new QPushButton("OK", this);
    cancel_ = new QPushButton("Cancel", this);
    ok_->setDefault(true);
    setFixedWidth(width);

    frmAudioSettings& m = model_;
    connect(micVolume_, &QSlider::valueChanged, this, [this](int v) {
        micVolumeValue_->setText(QString::number(v));
        if (!refreshing_) model_.sldAudioMINVL.value = v;
    });
    connect(boost_, &QSlider::valueChanged, this, [this](int v) {
        boostValue_->setText(QString::number(v));
        if (!refreshing_) model_.sldAudioBOOVL.value = v;
    });
    connect(ownChannel_, &QCheckBox::toggled, this, [this](bool on) {
        if (refreshing_) return;
        pull();
        model_.chkAudioRadioChannel_Click(on);
    });
    connect(browse, &QPushButton::clicked, this, [this] {
        pull();
        model_.cmd_AudioImageBrowse_Click();
    });
    connect(advancedToggle_, &QPushButton::clicked, this, [this] {
        pull();
        model_.cmdAdvancedSettings_Click();
    });
    connect(ok_, &QPushButton::clicked, this, [this] {
        pull();
        model_.cmdOK_Click();
    });
    connect(cancel_, &QPushButton::clicked, this, [&m] { m.cmdCancel_Click(); });
    sub_ = model_.changed.connect([this] {
        if (refreshPending_) return;
        refreshPending_ = true;
        QTimer::singleShot(0, this, [this] {
            refreshPending_ = false;
            refresh();
        });
    });
    refresh();
}

AudioSettingsView::~AudioSettingsView() { detach(); }

void AudioSettingsView::detach() {
    if (sub_) model_.changed.disconnect(sub_);
    sub_ = 0;
}

void AudioSettingsView::pull() {
    if (!sub_) return;
    frmAudioSettings& m = model_;
    m.sldAudioMINVL.value = micVolume_->value();
    m.sldAudioBOOVL.value = boost_->value();
    m.txtAudioMaxTalkTime = maxTalk_->text().toStdString();
    m.txtAudioWarning = warning_->text().toStdString();
    m.cmbAudioMicSwitchLogic.index = switchLogic_->currentIndex();
    m.txtAudioMicKey = micKey_->text().toStdString();
    m.txtAudioEndKey = endKey_->text().toStdString();
    m.txtAudioMuteKey = muteKey_->text().toStdString();
    for (int i = 0; i < 3; ++i)
        if (speeds_[i]->isChecked()) m.optAudioRadioSpeed.index = i;
    m.chkAudioRadioChannel = ownChannel_->isChecked();
    m.txtAudioRadioChannel = channel_->text().toStdString();
    m.txt_AudioPrompt[0] = prompt1_->text().toStdString();
    m.txt_AudioPrompt[1] = prompt2_->text().toStdString();
    m.txt_AudioImage = image_->text().toStdString();
}

void AudioSettingsView::refresh() {
    if (!sub_) return;
    refreshing_ = true;
    const frmAudioSettings& m = model_;
    setWindowTitle(q(m.Caption()));
    micVolume_->setRange(m.sldAudioMINVL.min, m.sldAudioMINVL.max);
    micVolume_->setValue(m.sldAudioMINVL.value);
    micVolumeValue_->setText(QString::number(m.sldAudioMINVL.value));
    boost_->setRange(m.sldAudioBOOVL.min, m.sldAudioBOOVL.max);
    boost_->setValue(m.sldAudioBOOVL.value);
    boostValue_->setText(QString::number(m.sldAudioBOOVL.value));
    maxTalk_->setText(q(m.txtAudioMaxTalkTime));
    warning_->setText(q(m.txtAudioWarning));
    switchLogic_->clear();
    for (const auto& i : m.cmbAudioMicSwitchLogic.items) switchLogic_->addItem(q(i));
    switchLogic_->setCurrentIndex(m.cmbAudioMicSwitchLogic.index);
    micKey_->setText(q(m.txtAudioMicKey));
    endKey_->setText(q(m.txtAudioEndKey));
    muteKey_->setText(q(m.txtAudioMuteKey));
    for (int i = 0; i < 3; ++i) {
        const bool has = i < static_cast<int>(m.optAudioRadioSpeed.items.size());
        speeds_[i]->setVisible(has);
        if (has) speeds_[i]->setText(q(m.optAudioRadioSpeed.items[static_cast<std::size_t>(i)]));
        speeds_[i]->setChecked(i == m.optAudioRadioSpeed.index);
    }
    ownChannel_->setChecked(m.chkAudioRadioChannel);
    channel_->setText(q(m.txtAudioRadioChannel));
    channel_->setEnabled(m.txtAudioRadioChannelEnabled);
    prompt1_->setText(q(m.txt_AudioPrompt[0]));
    prompt2_->setText(q(m.txt_AudioPrompt[1]));
    image_->setText(q(m.txt_AudioImage));
    advanced_->setVisible(m.fraAudio);
    advancedToggle_->setText(q(m.cmdAdvancedSettings));
    // The buttons sit where the model puts them, below what is visible.
    advancedToggle_->setGeometry(10, m.cmdOK_Top, 40, 28);
    ok_->setGeometry(width() - 190, m.cmdOK_Top, 85, 28);
    cancel_->setGeometry(width() - 95, m.cmdCancel_Top, 85, 28);
    setFixedHeight(m.cmdOK_Top + 40);
    refreshing_ = false;
}

std::unique_ptr<QWidget> makeAudioView(Controller& controller, Form& form) {
    if (auto* a = dynamic_cast<frmAudio*>(&form)) return std::make_unique<AudioWindowView>(controller, *a);
    if (auto* s = dynamic_cast<frmAudioSettings*>(&form)) return std::make_unique<AudioSettingsView>(controller, *s);
    return nullptr;
}

}  // namespace tlx
