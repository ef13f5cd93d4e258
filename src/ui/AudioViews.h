#pragma once
// Views of the audio window and the audio settings dialog. They show their models and
// forward the presenter's clicks; the behaviour is the models'.
#include <QDialog>
#include <QWidget>
#include <cstdint>

#include "ui/Views.h"

class QLabel;
class QPushButton;
class QTreeWidget;
class QProgressBar;
class QCheckBox;
class QLineEdit;
class QListWidget;
class QComboBox;
class QSlider;
class QPlainTextEdit;
class QFrame;
class QRadioButton;

namespace tlx {

class frmAudio;
class frmAudioSettings;

class AudioWindowView : public QWidget, public ModelView {
    Q_OBJECT
public:
    AudioWindowView(Controller& controller, frmAudio& model);
    ~AudioWindowView() override;
    void refresh();
    void detach() override;

private:
    void refreshSoon();
    frmAudio& model_;
    std::uint64_t sub_ = 0;
    bool refreshing_ = false;
    bool refreshPending_ = false;
    QLabel* micIcon_;
    QPushButton* request_;
    QTreeWidget* list_;
    QPushButton *start_, *stop_, *clear_, *settings_, *hide_, *fullMode_;
    QLabel *speaker_, *timeRemaining_, *rssi_, *lqi_;
    QProgressBar *rssiBar_, *lqiBar_;
    QWidget* fullPanel_;
    QCheckBox *autoManage_, *clearOnHide_, *requestsOn_, *playthrough_, *constant_, *defaultOnly_, *logNext_,
        *debugMode_;
    QLineEdit* minLen_;
    QPushButton *startPlay_, *endPlay_, *refresh_;
    QListWidget *inputs_, *outputs_;
    QComboBox* input_;
    QSlider *inputLevel_, *outputLevel_;
    QLabel *cpu_, *latency_;
    QProgressBar* level_;
    QPlainTextEdit* debugLog_;
    QLabel* status_;
};

class AudioSettingsView : public QDialog, public ModelView {
    Q_OBJECT
public:
    AudioSettingsView(Controller& controller, frmAudioSettings& model);
    ~AudioSettingsView() override;
    void refresh();
    void detach() override;

private:
    // The boxes as typed, into the model, before OK checks them.
    void pull();
    frmAudioSettings& model_;
    std::uint64_t sub_ = 0;
    bool refreshing_ = false;
    bool refreshPending_ = false;
    QWidget* basic_;
    QFrame* advanced_;
    QSlider *micVolume_, *boost_;
    QLabel *micVolumeValue_, *boostValue_;
    QLineEdit *maxTalk_, *warning_, *micKey_, *endKey_, *muteKey_, *channel_, *prompt1_, *prompt2_, *image_;
    QComboBox* switchLogic_;
    QRadioButton* speeds_[3];
    QCheckBox* ownChannel_;
    QPushButton *advancedToggle_, *ok_, *cancel_;
};

// The view of an audio form, or nothing when the form is not one of them.
std::unique_ptr<QWidget> makeAudioView(Controller& controller, Form& form);

}  // namespace tlx
