#pragma once
// The slide program's object model as the controller uses it. Objects returned by pointer
// belong to the application and stay valid until the presentation closes; nullptr means
// "Nothing". Automation failures are thrown as AppError.
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tlx::ppt {

class Presentation;

class Tags {
public:
    virtual ~Tags() = default;
    // Value of a tag, "" when it is absent. Names compare without regard to case.
    virtual std::string item(const std::string& name) const = 0;
    virtual void add(const std::string& name, const std::string& value) = 0;
    virtual void remove(const std::string& name) = 0;
    virtual int count() const = 0;
    virtual std::string name(int index) const = 0;   // 1-based
    virtual std::string value(int index) const = 0;  // 1-based
};

class Shape {
public:
    virtual ~Shape() = default;
    virtual std::string name() const = 0;
    virtual bool hasTextFrame() const = 0;
    // TextFrame.TextRange.Text: paragraphs joined by "\r".
    virtual std::string text() const = 0;
    virtual void setText(const std::string& text) = 0;
    virtual int paragraphCount() const = 0;
    virtual std::string paragraph(int index) const = 0;  // 1-based, without its break
    virtual void setParagraph(int index, const std::string& text) = 0;
    virtual bool visible() const = 0;
    virtual void setVisible(bool visible) = 0;
    virtual void bringToFront() = 0;
    virtual void remove() = 0;
};

class Slide {
public:
    virtual ~Slide() = default;
    virtual int slideNumber() const = 0;
    virtual int slideIndex() const = 0;
    virtual Tags& tags() = 0;
    virtual int shapeCount() const = 0;
    virtual Shape* shape(int index) = 0;  // 1-based
    virtual Shape* shapeByName(const std::string& name) = 0;
    virtual Shape* addTextBox(const std::string& name, const std::string& text) = 0;
};

class SlideShowView {
public:
    virtual ~SlideShowView() = default;
    virtual Slide* slide() = 0;
    virtual void next() = 0;
    virtual void previous() = 0;
    virtual void gotoSlide(int index) = 0;
};

class SlideShowWindow {
public:
    virtual ~SlideShowWindow() = default;
    virtual bool isFullScreen() const = 0;
    virtual void activate() = 0;
    virtual std::intptr_t hwnd() const = 0;
    virtual SlideShowView& view() = 0;
    virtual Presentation& presentation() = 0;
};

class Presentation {
public:
    virtual ~Presentation() = default;
    virtual std::string name() const = 0;
    virtual std::string path() const = 0;  // folder of the file
    virtual std::string fullName() const = 0;
    virtual int slideCount() const = 0;
    virtual Slide* slide(int index) = 0;  // 1-based
    virtual Tags& tags() = 0;
    virtual SlideShowWindow* slideShowWindow() = 0;
    virtual int showType() const = 0;  // SlideShowSettings.ShowType
    // SlideShowSettings.ShowWithAnimation.
    virtual bool showWithAnimation() const { return true; }
    virtual void setShowWithAnimation(bool on) { (void)on; }
    virtual void save() = 0;
};

using MacroArg = std::variant<bool, int, std::string>;

class Application {
public:
    virtual ~Application() = default;
    virtual std::string version() const = 0;
    virtual std::string name() const = 0;
    // AddIns(name).Path; throws when no such add-in is loaded.
    virtual std::string addInPath(const std::string& addInName) const = 0;
    virtual int presentationCount() const = 0;
    virtual Presentation* activePresentation() = 0;
    virtual int slideShowWindowCount() const = 0;
    virtual SlideShowWindow* slideShowWindow(int index) = 0;  // 1-based
    // ActiveWindow.View.Slide of the editing window, nullptr without one.
    virtual Slide* activeWindowSlide() = 0;
    virtual void activateActiveWindow() = 0;
    virtual void run(const std::string& macro, const std::vector<MacroArg>& args) = 0;
    // CommandBars("Menu Bar").Controls(caption) exists.
    virtual bool menuBarControlExists(const std::string& caption) const = 0;
};

}  // namespace tlx::ppt

namespace tlx {

// Attaching to the running slide program (the get-object call; it never starts one).
class PresentationApp {
public:
    virtual ~PresentationApp() = default;
    // The running application's object, nullptr when it does not run.
    virtual ppt::Application* getActiveObject() = 0;
};

}  // namespace tlx
