#pragma once
// A window bound to one form: it redraws when the form changes and lets go of it when the
// form unloads (the widget itself may live a little longer).
#include <QWidget>
#include <cstdint>

#include "core/Form.h"
#include "core/Text.h"
#include "ui/Views.h"

namespace tlx {

class FormView : public QWidget, public ModelView {
public:
    explicit FormView(Form& form) : form_(form) {}
    ~FormView() override { FormView::detach(); }
    void detach() override {
        if (sub_) form_.changed.disconnect(sub_);
        sub_ = 0;
    }
    // Draws the form as it is now; nothing once detached.
    void refresh() {
        if (!sub_ || refreshing_) return;
        refreshing_ = true;
        setWindowTitle(text(form_.Caption()));
        draw();
        refreshing_ = false;
    }
    static QString text(const std::string& s) { return QString::fromStdString(replaceAll(s, "\r\n", "\n")); }

protected:
    virtual void draw() = 0;
    // Called last by the derived constructor: from here on the view follows its form.
    void bind() {
        sub_ = form_.changed.connect([this] { refresh(); });
        refresh();
    }
    bool attached() const { return sub_ != 0; }
    // True while the view writes its widgets, so their change signals are not the user's.
    bool refreshing() const { return refreshing_; }

private:
    Form& form_;
    std::uint64_t sub_ = 0;
    bool refreshing_ = false;
};

}  // namespace tlx
