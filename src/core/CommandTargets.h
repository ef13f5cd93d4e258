#pragma once
// What the command dispatcher acts on beyond the controller core: the vote run, the slide
// show, the presenter hot keys and several windows. The dispatcher decides *whether* and
// *with what* to call; these operations do the work. `DefaultCommandTargets` does what the
// core can do on its own; the modules that own the rest derive from it and replace
// `Controller::targets`.
#include <string>
#include <vector>

namespace tlx {

class Controller;

class CommandTargets {
public:
    virtual ~CommandTargets() = default;

    // The vote run's start step (STARTVOTE, after the command's own state is set); returns
    // the number of base stations taking part, which the start-vote event reports.
    virtual int voteStart() = 0;
    // The vote run's end step (ENDVOTE), before the Corehub drivers are told to end.
    virtual void voteEnd() = 0;
    // The parts of a vote name that holds "@@".
    virtual void voteNameParts(const std::vector<std::string>& parts) = 0;

    // Move the slide show one slide on or back.
    virtual void goToNextSlide() = 0;
    virtual void goToPreviousSlide() = 0;

    // ENABLEPPT: every window of the presentation program enabled again.
    virtual void enablePowerPoint() = 0;
    // TOGGLETOPMOST: the show window's top-most state.
    virtual void toggleTopMost() = 0;
    // FREECURSOR: release the cursor clip set during a show.
    virtual void freeCursor() = 0;

    // ACTIVEKEYPADS (AK): report the active-keypad list.
    virtual void activeKeypads() = 0;
    // READACTIVEKEYPADS: read the list from the active presentation.
    virtual void readActiveKeypads() = 0;
    // The key line "keypadsactive": the vote's active-keypad list ("3,7,12"; empty: all).
    virtual void setActiveKeypads(const std::string& list) = 0;

    // The presenter hot-key procedures, with the key text of the key line.
    virtual void ctrlKeyPressed(const std::string& key) = 0;
    virtual void altKeyPressed(const std::string& key) = 0;
    virtual void adminKeyPressed(const std::string& key) = 0;
    // Install and remove the low-level keyboard hook (the dispatcher logs the command).
    virtual void setHook() = 0;
    virtual void removeHook() = 0;

    // Loads the audio window and makes it top-most; true when it is now shown.
    virtual bool showAudio() = 0;
    virtual void showTextVote() = 0;
    virtual void showDebug() = 0;
    virtual void showBubbleMessageLog() = 0;
    virtual void showWindowHandles() = 0;
    virtual void showProcessList() = 0;
    // The set-up tools, opened by the debug commands CHANNELSCAN and SYSTEMPREP.
    virtual void showChannelScan() = 0;
    virtual void showSystemPrep() = 0;

    // The keyboard-voting switch changed the first base type: apply the configuration again.
    virtual void reReadConfiguration() = 0;
};

class DefaultCommandTargets : public CommandTargets {
public:
    explicit DefaultCommandTargets(Controller& controller) : c_(controller) {}

    int voteStart() override;
    void voteEnd() override {}
    void voteNameParts(const std::vector<std::string>&) override {}
    void goToNextSlide() override {}
    void goToPreviousSlide() override {}
    void enablePowerPoint() override {}
    void toggleTopMost() override {}
    void freeCursor() override;
    void activeKeypads() override;
    void readActiveKeypads() override {}
    void setActiveKeypads(const std::string& list) override;
    void ctrlKeyPressed(const std::string&) override {}
    void altKeyPressed(const std::string&) override {}
    void adminKeyPressed(const std::string&) override {}
    void setHook() override {}
    void removeHook() override {}
    bool showAudio() override { return false; }
    void showTextVote() override {}
    void showDebug() override {}
    void showBubbleMessageLog() override;
    void showWindowHandles() override {}
    void showProcessList() override {}
    void showChannelScan() override {}
    void showSystemPrep() override {}
    void reReadConfiguration() override;

protected:
    Controller& c_;
};

}  // namespace tlx
