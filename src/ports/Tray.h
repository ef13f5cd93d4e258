#pragma once
// The notification-area icon, its balloons and its task menu.
#include <string>
#include <vector>

namespace tlx {

class Tray {
public:
    virtual ~Tray() = default;
    virtual void addIcon(const std::string& tooltip) = 0;
    virtual void removeIcon() = 0;
    virtual bool hasIcon() const = 0;
    // iconKind: 0 none, 1 information, 2 warning, 3 error.
    virtual void balloon(const std::string& title, const std::string& text, int iconKind) = 0;
    // Entries of the task menu (display programs add their own tasks).
    virtual void setTasks(const std::vector<std::string>& tasks) = 0;
    // The icon's animation while a vote runs: frame 0 is the resting icon, 1 to
    // kAnimationFrames the moving ones.
    static constexpr int kAnimationFrames = 4;
    virtual void setIconFrame(int frame) = 0;
};

}  // namespace tlx
