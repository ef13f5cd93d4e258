#pragma once
// What start-up, shutdown and the main form ask of the layer above the core: following the
// presentation program, the vote run, vote intake and the hot keys. The core knows only this
// face; the wiring installs the real side (`installPresentationSide`, src/presentation), and
// a controller without one runs the core alone (attaching, hooks and show events do nothing).
namespace tlx {

class MainForm;
namespace ppt {
class SlideShowWindow;
}

class PresentationSide {
public:
    virtual ~PresentationSide() = default;
    // Start-up step 5: attach to a running presentation program.
    virtual void attach() {}
    // "-noppt": let go of the attached program.
    virtual void forgetAttachment() {}
    // Start-up step 6 (hidden only over a full-screen show running now).
    virtual void showHideTaskBar(bool) {}
    // Gives the main form's timers their handlers when it loads.
    virtual void wireMainForm(MainForm&) {}
    virtual void setHook() {}
    virtual void removeHook() {}
    // The add-in's slide-show notifications, relayed through the main form.
    virtual void slideShowBegin(ppt::SlideShowWindow*) {}
    virtual void slideShowNextSlide() {}
    virtual void slideShowEnd() {}
};

}  // namespace tlx
