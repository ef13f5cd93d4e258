#pragma once
// Views of the session settings, the debug windows, the hot-key status and the closing
// window; each file answers for its own form.
#include <QWidget>
#include <memory>

namespace tlx {

class Controller;
class Form;

std::unique_ptr<QWidget> makeSessionSettingsView(Controller& controller, Form& form);
std::unique_ptr<QWidget> makeDebugFormView(Controller& controller, Form& form);
std::unique_ptr<QWidget> makeWindowHandlesView(Controller& controller, Form& form);
std::unique_ptr<QWidget> makeProcessListView(Controller& controller, Form& form);
std::unique_ptr<QWidget> makeHotKeyView(Controller& controller, Form& form);
std::unique_ptr<QWidget> makeCloseControllerView(Controller& controller, Form& form);

}  // namespace tlx
