// The session settings of a Corehub base: every field of its radio session, the static
// registry fields for the "Static" mode, and the advanced part (power save, environment).
// Each edit goes straight into the form; the buttons are the form's operations.
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "drivers/SessionSettings.h"
#include "ui/FormView.h"
#include "ui/ViewStyle.h"
#include "ui/WindowViews.h"

namespace tlx {

namespace {

class SessionSettingsView : public FormView {
public:
    explicit SessionSettingsView(frmPrioritizerSessionSettings& model) : FormView(model), m_(model) {
        setObjectName(frmPrioritizerSessionSettings::kName);
        auto* lay = new QVBoxLayout(this);
        style::window(lay);
        // The window is as large as what it shows, with or without the advanced part.
        lay->setSizeConstraint(QLayout::SetFixedSize);

        auto* session = new QGroupBox("Session");
        auto* sl = new QFormLayout(session);
        sl->addRow("Session ID", edit(m_.txtID, "txtID"));
        sl->addRow("Session Name", edit(m_.txtName, "txtName"));
        registryMode_ = new QComboBox;
        registryMode_->setObjectName("cmbRegistryMode");
        for (const auto& mode : frmPrioritizerSessionSettings::registryModes()) registryMode_->addItem(text(mode));
        sl->addRow("Registry Mode", registryMode_);
        offsetLabel_ = label("Keypad Number Offset", "lblStaticRegSIDOffset");
        maxLabel_ = label("Maximum Keypads", "lblStaticRegSIDMax");
        offset_ = edit(m_.txtStaticRegSIDOffset, "txtStaticRegSIDOffset");
        max_ = edit(m_.txtStaticRegSIDMax, "txtStaticRegSIDMax");
        sl->addRow(offsetLabel_, offset_);
        sl->addRow(maxLabel_, max_);
        lay->addWidget(session);

        auto* radio = new QGroupBox("Radio");
        auto* rl = new QGridLayout(radio);
        // Channel boxes as wide as a channel number; the label beside its box.
        auto narrow = [](QLineEdit* e) {
            e->setFixedWidth(e->fontMetrics().horizontalAdvance("0000") + 16);
            return e;
        };
        rl->addWidget(new QLabel("Primary Channel"), 0, 0, 1, 3);
        rl->addWidget(narrow(edit(m_.txtChannel, "txtChannel")), 0, 3);
        rl->addWidget(new QLabel("Alternative Channels"), 1, 0, 1, 8);
        for (int i = 1; i <= 8; ++i) {
            const int row = 2 + (i - 1) / 4, column = 2 * ((i - 1) % 4);
            rl->addWidget(new QLabel(QString::number(i)), row, column, Qt::AlignRight);
            rl->addWidget(narrow(edit(m_.txtSessionChannel[static_cast<std::size_t>(i)],
                                      ("txtSessionChannel_" + std::to_string(i)).c_str())),
                          row, column + 1);
        }
        rl->setColumnStretch(8, 1);
        autoScan_ = check("Auto Scan Enabled", "chkAutoScanEnabled", m_.chkAutoScanEnabled);
        scanAll_ = check("Scan All Channels", "chkScanAllChannels", m_.chkScanAllChannels);
        rl->addWidget(autoScan_, 4, 0, 1, 4);
        rl->addWidget(scanAll_, 4, 4, 1, 5);
        lay->addWidget(radio);

        advanced_ = new QWidget;
        advanced_->setObjectName("fraAdvanced");
        auto* al = new QHBoxLayout(advanced_);
        style::nested(al);
        auto* power = new QGroupBox("Power Save");
        auto* pl = new QFormLayout(power);
        pl->addRow("Auto Off - No Key Press", edit(m_.txtAutoOffKeyPress, "txtAutoOffKeyPress"));
        pl->addRow("Auto Off - No Signal", edit(m_.txtAutoOffNoSignal, "txtAutoOffNoSignal"));
        pl->addRow("Vote Sleep Timer", edit(m_.txtVoteSleepTimer, "txtVoteSleepTimer"));
        auto* environment = new QGroupBox("Environmental");
        auto* el = new QFormLayout(environment);
        retry_ = edit(m_.txtPacketRetryCount, "txtPacketRetryCount");
        el->addRow("Packet Retry Count", retry_);
        noise_ = check("High Noise Mode", "chkHighNoiseMode", m_.chkHighNoiseMode);
        el->addRow(noise_);
        environmentButton_ = style::button("Environment", "cmdEnvironment");
        environmentButton_->setCheckable(true);
        el->addRow(environmentButton_);
        al->addWidget(power);
        al->addWidget(environment);
        lay->addWidget(advanced_);

        auto* load = style::button("Load Default", "cmdLoadDefault");
        auto* save = style::button("Save As Default", "cmdSaveAsDefault");
        advancedButton_ = style::button("", "cmdAdvancedOptions");
        auto* ok = style::button("OK", "cmdOK");
        auto* cancel = style::button("Cancel", "cmdCancel");
        ok->setDefault(true);
        lay->addLayout(style::buttonRow({load, save, advancedButton_}, {ok, cancel}));

        connect(registryMode_, &QComboBox::currentIndexChanged, this, [this](int i) {
            if (refreshing() || i < 0) return;
            m_.cmbRegistryMode = i;
            m_.changed();
        });
        connect(load, &QPushButton::clicked, this, [this] { m_.cmdLoadDefault(); });
        connect(save, &QPushButton::clicked, this, [this] { m_.cmdSaveAsDefault(); });
        connect(advancedButton_, &QPushButton::clicked, this, [this] { m_.cmdAdvancedOptions(); });
        connect(environmentButton_, &QPushButton::clicked, this, [this] { m_.cmdEnvironment(); });
        connect(ok, &QPushButton::clicked, this, [this] { m_.cmdOK(); });
        connect(cancel, &QPushButton::clicked, this, [this] { m_.cmdCancel(); });
        bind();
    }

protected:
    void draw() override {
        for (auto& [e, field] : edits_)
            if (e->text() != text(*field)) e->setText(text(*field));
        for (auto& [c, field] : checks_) c->setChecked(*field);
        if (m_.cmbRegistryMode >= 0 && m_.cmbRegistryMode < registryMode_->count())
            registryMode_->setCurrentIndex(m_.cmbRegistryMode);
        else
            registryMode_->setCurrentIndex(-1);
        const bool isStatic = m_.staticRegistryFieldsVisible();
        for (QWidget* w : std::initializer_list<QWidget*>{offsetLabel_, maxLabel_, offset_, max_})
            w->setVisible(isStatic);
        scanAll_->setEnabled(m_.scanAllChannelsEnabled());
        retry_->setEnabled(m_.environmentFieldsEnabled());
        noise_->setEnabled(m_.environmentFieldsEnabled());
        environmentButton_->setChecked(m_.EnvironmentModeSelected);
        advanced_->setVisible(m_.advancedVisible);
        advancedButton_->setText(text(m_.cmdAdvancedOptionsCaption));
    }

    void closeEvent(QCloseEvent* e) override {
        // Closing the window is Cancel; the form unloads and takes its view with it.
        e->ignore();
        if (attached()) m_.cmdCancel();
    }

private:
    QLineEdit* edit(std::string& field, const char* name) {
        auto* e = new QLineEdit;
        e->setObjectName(name);
        edits_.emplace_back(e, &field);
        connect(e, &QLineEdit::textEdited, this, [&field](const QString& t) { field = t.toStdString(); });
        return e;
    }
    QCheckBox* check(const char* caption, const char* name, bool& field) {
        auto* c = new QCheckBox(caption);
        c->setObjectName(name);
        checks_.emplace_back(c, &field);
        connect(c, &QCheckBox::toggled, this, [this, &field](bool on) {
            if (refreshing()) return;
            field = on;
            m_.changed();  // other controls' enabled states follow some boxes
        });
        return c;
    }
    static QLabel* label(const char* caption, const char* name) {
        auto* l = new QLabel(caption);
        l->setObjectName(name);
        return l;
    }

    frmPrioritizerSessionSettings& m_;
    std::vector<std::pair<QLineEdit*, std::string*>> edits_;
    std::vector<std::pair<QCheckBox*, bool*>> checks_;
    QComboBox* registryMode_;
    QLabel* offsetLabel_;
    QLabel* maxLabel_;
    QLineEdit* offset_;
    QLineEdit* max_;
    QCheckBox* autoScan_;
    QCheckBox* scanAll_;
    QWidget* advanced_;
    QLineEdit* retry_;
    QCheckBox* noise_;
    QPushButton* environmentButton_;
    QPushButton* advancedButton_;
};

}  // namespace

std::unique_ptr<QWidget> makeSessionSettingsView(Controller&, Form& form) {
    if (auto* s = dynamic_cast<frmPrioritizerSessionSettings*>(&form)) return std::make_unique<SessionSettingsView>(*s);
    return nullptr;
}

}  // namespace tlx
