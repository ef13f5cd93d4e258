#pragma once
// The presentation side of the controller: the watcher, the vote run, the vote intake and the
// hot keys, behind the face the core calls (core/PresentationSide.h).
namespace tlx {

class Controller;

// Creates the four modules, hands the core their face, the drivers their vote intake and the
// command dispatcher its targets. Call once, right after the controller is made.
void installPresentationSide(Controller& controller);

}  // namespace tlx
