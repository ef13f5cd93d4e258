#pragma once
// `frmAudioSettings`: the dialog that edits the audio options of a microphone turn. It fills
// its controls from the options, checks every entry box on OK and writes them back (the
// settings store then keeps them), or closes without a change on Cancel.
#include <array>
#include <string>
#include <vector>

#include "core/Form.h"

namespace tlx {

class Controller;

struct AudioSlider {
    int min = 0;
    int max = 100;
    int value = 0;
};

struct AudioChoice {
    std::vector<std::string> items;
    int index = 0;
};

class frmAudioSettings : public Form {
public:
    static constexpr const char* kName = "frmAudioSettings";
    static constexpr const char* kDefaultImage = "[DEFAULT]";
    static constexpr const char* kImageFilter = "Image files (*.bmp, *.gif, *.jpg)|*.bmp; *.gif; *.jpg";
    static constexpr const char* kTitle = "Audio Settings";
    // Where OK and Cancel sit: below the basic options, or below the advanced frame too.
    static constexpr int kButtonsTopBasic = 236;
    static constexpr int kButtonsTopAdvanced = 566;

    explicit frmAudioSettings(Controller& controller);

    // Form_Load: every control from the options.
    void fill();
    // Checks every entry box; on bad text shows the dialog's message, changes nothing and
    // stays open (false). Otherwise writes the options, saves them and closes.
    bool cmdOK_Click();
    void cmdCancel_Click();
    void cmdAdvancedSettings_Click();
    void chkAudioRadioChannel_Click(bool checked);
    // Asks for an image file; a chosen file goes into the image box.
    void cmd_AudioImageBrowse_Click();

    AudioSlider sldAudioMINVL;
    AudioSlider sldAudioBOOVL;
    std::string txtAudioMaxTalkTime;
    AudioChoice cmbAudioMicSwitchLogic;
    std::string txtAudioWarning;
    std::string txtAudioMicKey, txtAudioEndKey, txtAudioMuteKey;
    AudioChoice optAudioRadioSpeed;
    bool chkAudioRadioChannel = false;
    std::string txtAudioRadioChannel;
    bool txtAudioRadioChannelEnabled = false;
    std::array<std::string, 2> txt_AudioPrompt;
    std::string txt_AudioImage;
    // The advanced frame and its toggle.
    bool fraAudio = false;
    std::string cmdAdvancedSettings = ">>";
    int cmdOK_Top = kButtonsTopBasic;
    int cmdCancel_Top = kButtonsTopBasic;

private:
    Controller& c_;
};

}  // namespace tlx
