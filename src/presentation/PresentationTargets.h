#pragma once
// What the commands act on, served by the presentation side: the vote run, the slide show,
// the hot keys and the debug windows.
#include "core/CommandTargets.h"

namespace tlx {

class PresentationTargets : public DefaultCommandTargets {
public:
    explicit PresentationTargets(Controller& controller) : DefaultCommandTargets(controller) {}

    int voteStart() override;
    void voteEnd() override;
    void voteNameParts(const std::vector<std::string>& parts) override;
    void goToNextSlide() override;
    void goToPreviousSlide() override;
    void enablePowerPoint() override;
    void toggleTopMost() override;
    void readActiveKeypads() override;
    void setActiveKeypads(const std::string& list) override;
    bool showAudio() override;
    void showTextVote() override;
    void ctrlKeyPressed(const std::string& key) override;
    void altKeyPressed(const std::string& key) override;
    void setHook() override;
    void removeHook() override;
    void showDebug() override;
    void showWindowHandles() override;
    void showProcessList() override;
    void showChannelScan() override;
    void showSystemPrep() override;
};

}  // namespace tlx
