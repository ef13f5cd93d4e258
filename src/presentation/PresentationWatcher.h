#pragma once
// Following the presentation program: attaching to it, its slide show's begin, moves and end,
// the desktop around a show (task bar, other windows, the show window's top-most state), and
// ending a running vote when the show moves on.
#include <cstdint>
#include <string>

namespace tlx {

class Controller;
namespace ppt {
class Presentation;
class SlideShowWindow;
}  // namespace ppt

class PresentationWatcher {
public:
    explicit PresentationWatcher(Controller& controller);

    // Attaches to the running program (never starts one); a set found-flag short-cuts it
    // unless force is given.
    bool InitPPTObject(bool force);
    // Lets go of the attachment ("-noppt"): the next attach starts from the process list.
    void forgetAttachment();
    bool IsPowerPointRunning() const;

    void SlideShowBegin(ppt::SlideShowWindow* Wn);
    void SlideShowNextSlide();
    void SlideShowEnd();
    // The presentation program has closed: the controller goes with it.
    void PowerPointClosed();

    // mode: -1 (true) top-most, 0 not top-most, -2 toggle the remembered state.
    void TogglePPTSlideShowTopMost(int mode, bool force);
    // eventActive: a show may run that the controller has not been told of (start-up).
    void ShowHideTaskBar(bool eventActive = false, bool forceShow = false);

    void tmrCheck4PPT_Timer();
    void tmrCheckSlideShow_Timer();

    // The go-to menu built at show begin: "Exit|1:Welcome|2:...".
    std::string buildGotoMenu(ppt::Presentation& presentation) const;
    // Ends the vote open on a Prioritizer-generation driver (slide moved on, show ended).
    void endRunningVote();

    ppt::Presentation* presentation() const { return presentation_; }
    const std::string& addInPath() const { return addInPath_; }
    bool topMostState() const { return topMost_; }
    std::intptr_t showWindowHandle() const { return showWindow_; }

private:
    void keepWindowOrder();
    void showAudioPanelOnCurrentSlide();
    Controller& c_;
    ppt::Presentation* presentation_ = nullptr;
    bool pptFound_ = false;
    std::string addInPath_;
    std::intptr_t showWindow_ = 0;
    bool topMost_ = false;
    bool taskBarHidden_ = false;
};

}  // namespace tlx
