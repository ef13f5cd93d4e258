#pragma once
// The public automation class `tallix`: a thin relay between its clients and the main form.
// Creating the first instance starts the controller.
#include <cstdint>
#include <string>

#include "core/Signal.h"

namespace tlx {

class Controller;
namespace ppt {
class SlideShowWindow;
}

class tallix {
public:
    // Class_Initialize: runs the controller's initial load when it has not run yet.
    explicit tallix(Controller& controller);
    ~tallix();
    tallix(const tallix&) = delete;
    tallix& operator=(const tallix&) = delete;

    // Methods, in the order of the interface.
    void VoteLoaded();
    void SlideShowBegin(ppt::SlideShowWindow* Wn);
    // The same, for clients that name the show window by its handle (or 1-based index).
    void SlideShowBegin(std::int64_t window);
    void SlideShowEnd();
    void SlideShowNextSlide();
    int CurrentSlide();
    void PowerPointClosed();
    void init(const std::string& NewArgs);
    bool SendCommand(const std::string& sCommand);

    // Whether `init` has subscribed this object to the main form's events.
    bool subscribed() const { return subscribed_; }

    // Events, relayed from the main form once `init` has subscribed.
    Signal<const std::string&> FromTLXCtrl;
    Signal<> Initialised;
    Signal<int> FromCtrlFormBaseStationStartVoteCount;
    Signal<int, const std::string&> FromTLXCtrlBaseError;
    Signal<int, const std::string&> FromTLXCtrlBaseFeedback;
    Signal<> VKeyPressed;

private:
    void subscribe();
    void unsubscribe();
    Controller& c_;
    bool subscribed_ = false;
    std::uint64_t subs_[5] = {0, 0, 0, 0, 0};
    std::uint64_t initSub_ = 0;
};

// Program entry: creates one instance of the class, which starts the controller, and
// releases it again; the controller lives on through its forms and timers.
void Main(Controller& controller);

}  // namespace tlx
