#pragma once
// Message boxes, questions and the input box as Qt dialogs, and the tray icon.
#include <QSystemTrayIcon>
#include <memory>

#include "ports/Dialogs.h"
#include "ports/Tray.h"

namespace tlx {

class QtDialogs : public Dialogs {
public:
    void message(const std::string& title, const std::string& text, MsgIcon icon) override;
    bool askYesNo(const std::string& title, const std::string& text, MsgIcon icon) override;
    std::optional<std::string> inputBox(const std::string& title, const std::string& prompt,
                                        const std::string& initial) override;
    std::optional<std::string> openFileName(const std::string& title, const std::string& filter) override;
};

class QtTray : public Tray {
public:
    QtTray();
    ~QtTray() override;
    void addIcon(const std::string& tooltip) override;
    void removeIcon() override;
    bool hasIcon() const override;
    void balloon(const std::string& title, const std::string& text, int iconKind) override;
    void setTasks(const std::vector<std::string>& tasks) override;

    // Menu entries call back into the main form.
    std::function<void(int)> onTask;
    std::function<void()> onAbout;
    std::function<void()> onQuit;
    std::function<void()> onShow;

private:
    void rebuildMenu();
    std::unique_ptr<QSystemTrayIcon> icon_;
    std::unique_ptr<class QMenu> menu_;
    std::vector<std::string> tasks_;
};

}  // namespace tlx
