#pragma once
// Qt Widgets views of the window models. A view shows its model and forwards user actions;
// it holds no behaviour of its own.
#include <QDialog>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QLabel;
class QPlainTextEdit;
class QLineEdit;
class QTableWidget;
class QSlider;
class QCheckBox;
class QCloseEvent;

namespace tlx {

class Controller;
class Form;

// A view lets go of its model when the form unloads; the widget itself may live a little
// longer (it is deleted once Qt has finished the current event).
class ModelView {
public:
    virtual ~ModelView() = default;
    virtual void detach() = 0;
};
class MainForm;
class FrmInit;
class BubbleMessageLogForm;

class FrmInitView : public QDialog, public ModelView {
    Q_OBJECT
public:
    FrmInitView(Controller& controller, FrmInit& model);
    ~FrmInitView() override;
    void refresh();
    void detach() override;

private:
    void pullRows();
    Controller& c_;
    FrmInit& model_;
    QLabel* bar_;
    QTableWidget* grid_;
    QLabel* closeLabel_;
    QSlider* closeSlider_;
    QCheckBox* close_;
    QCheckBox* popUp_;
    QLineEdit* popUpDownTo_;
    QLineEdit* howMany_;
    std::uint64_t sub_ = 0;
    bool refreshing_ = false;
};

class BubbleLogView : public QWidget, public ModelView {
    Q_OBJECT
public:
    explicit BubbleLogView(BubbleMessageLogForm& model);
    ~BubbleLogView() override;
    void refresh();
    void detach() override;

private:
    BubbleMessageLogForm& model_;
    QPlainTextEdit* text_;
    std::uint64_t sub_ = 0;
};

// Creates a view when a form with one loads and shows it when the form is shown.
class ViewManager {
public:
    explicit ViewManager(Controller& controller);
    ~ViewManager();
    QWidget* viewOf(const std::string& formName) const;
    // Views of other areas' forms: a factory gives the view of a form it knows, or nothing.
    using ViewFactory = std::function<std::unique_ptr<QWidget>(Controller&, Form&)>;
    void addViewFactory(ViewFactory factory) { factories_.push_back(std::move(factory)); }

private:
    void onLoaded(Form& form);
    void onUnloaded(Form& form);
    Controller& c_;
    std::map<Form*, std::unique_ptr<QWidget>> views_;
    std::map<Form*, std::uint64_t> subs_;
    std::vector<ViewFactory> factories_;
    std::uint64_t loadedSub_ = 0, unloadedSub_ = 0;
};

}  // namespace tlx
