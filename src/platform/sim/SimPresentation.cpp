#include "platform/sim/SimPresentation.h"

#include <algorithm>
#include <filesystem>

#include "core/Text.h"
#include "platform/sim/SimDesktop.h"
#include "platform/sim/SimKeyboard.h"
#include "ports/AppError.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {
const char* const kVoteTagList[] = {"TLXVOTE", "TLXQUIZ", "TLXTEAM", "TLXRESHOW", "TLXMATRIX"};

[[noreturn]] void gone() { throw AppError(err::kObjectRequired, "The shape has been deleted"); }
}  // namespace

std::string displayProcessName(const std::string& voteTag) {
    const std::string t = toUpper(voteTag);
    if (t == "TLXVOTE") return "CHARTIST.EXE";
    if (t == "TLXQUIZ") return "QUESTOR.EXE";
    if (t == "TLXTEAM") return "CREWBOARD.EXE";
    if (t == "TLXRESHOW") return "REPLAYER.EXE";
    if (t == "TLXMATRIX") return "GRIDDER.EXE";
    return "TLX-DISPLAY";
}

// ---- tags, shapes, slides ---------------------------------------------------------------

std::string SimTags::name(int index) const {
    if (index < 1 || index > list_.count()) throw AppError(err::kSubscriptOutOfRange, "Subscript out of range");
    return list_.name(index);
}

std::string SimTags::value(int index) const {
    if (index < 1 || index > list_.count()) throw AppError(err::kSubscriptOutOfRange, "Subscript out of range");
    return list_.value(index);
}

void SimShape::check() const {
    if (s_.removed()) gone();
}
std::string SimShape::text() const {
    check();
    return s_.text();
}
void SimShape::setText(const std::string& text) {
    check();
    s_.setText(text);
}
int SimShape::paragraphCount() const {
    check();
    return s_.paragraphCount();
}
std::string SimShape::paragraph(int index) const {
    check();
    return s_.paragraph(index);
}
void SimShape::setParagraph(int index, const std::string& text) {
    check();
    s_.setParagraph(index, text);
}
bool SimShape::visible() const {
    check();
    return s_.visible();
}
void SimShape::setVisible(bool visible) {
    check();
    s_.setVisible(visible);
}
void SimShape::bringToFront() {
    check();
    s_.bringToFront();
}
void SimShape::remove() {
    check();
    s_.remove();
}

std::vector<pptx::DeckShape*> SimSlide::live() const {
    std::vector<pptx::DeckShape*> v;
    for (auto* s : s_.shapes())
        if (!s->removed()) v.push_back(s);
    return v;
}

int SimSlide::shapeCount() const { return static_cast<int>(live().size()); }

ppt::Shape* SimSlide::wrap(pptx::DeckShape* shape) {
    if (!shape || shape->removed()) return nullptr;
    auto& slot = shapes_[shape];
    if (!slot) slot = std::make_unique<SimShape>(*shape);
    return slot.get();
}

ppt::Shape* SimSlide::shape(int index) {
    const auto v = live();
    if (index < 1 || index > static_cast<int>(v.size())) return nullptr;
    return wrap(v[static_cast<std::size_t>(index - 1)]);
}

ppt::Shape* SimSlide::shapeByName(const std::string& name) { return wrap(s_.shape(name)); }

ppt::Shape* SimSlide::addTextBox(const std::string& name, const std::string& text) {
    return wrap(&s_.addTextBox(name, text));
}

// ---- the document and its show ------------------------------------------------------------

SimDocument::SimDocument(SimPresentationApp& app, pptx::Deck deck)
    : app_(app), deck_(std::move(deck)), tags_(deck_.tags()) {
    for (auto* s : deck_.slides()) slides_.push_back(std::make_unique<SimSlide>(*s));
}

std::string SimDocument::name() const { return deck_.path().filename().string(); }
std::string SimDocument::path() const { return deck_.path().parent_path().string(); }
std::string SimDocument::fullName() const { return deck_.path().string(); }

ppt::Slide* SimDocument::slide(int index) { return simSlide(index); }

SimSlide* SimDocument::simSlide(int index) {
    if (index < 1 || index > static_cast<int>(slides_.size())) return nullptr;
    return slides_[static_cast<std::size_t>(index - 1)].get();
}

ppt::SlideShowWindow* SimDocument::slideShowWindow() {
    SimShowWindow* w = app_.show();
    return w && &w->presentation() == this ? w : nullptr;
}

void SimDocument::save() { deck_.save(); }

SimShowWindow::SimShowWindow(SimPresentationApp& app, SimDocument& doc, std::intptr_t hwnd, int index)
    : app_(app), doc_(doc), hwnd_(hwnd), index_(index) {}

void SimShowWindow::activate() { app_.desktop_.setForegroundWindowClass(kShowWindowClass); }

ppt::Presentation& SimShowWindow::presentation() { return doc_; }

ppt::Slide* SimShowWindow::slide() { return doc_.simSlide(index_); }

void SimShowWindow::next() {
    if (index_ >= doc_.slideCount()) {
        // Past the last slide the show is over.
        app_.End();
        return;
    }
    ++index_;
    app_.slideChanged();
}

void SimShowWindow::previous() {
    if (index_ <= 1) return;
    --index_;
    app_.slideChanged();
}

void SimShowWindow::gotoSlide(int index) {
    if (index < 1 || index > doc_.slideCount() || index == index_) return;
    index_ = index;
    app_.slideChanged();
}

// ---- the application object -----------------------------------------------------------------

std::string SimApplication::addInPath(const std::string& addInName) const {
    if (!app_.addInFolder.empty() && (iequals(addInName, "tallix") || iequals(addInName, "tallix.ppa")))
        return app_.addInFolder;
    throw AppError(err::kSubscriptOutOfRange, "Item " + addInName + " not found in the AddIns collection");
}

int SimApplication::presentationCount() const { return static_cast<int>(app_.documents_.size()); }

ppt::Presentation* SimApplication::activePresentation() { return app_.active(); }

int SimApplication::slideShowWindowCount() const { return app_.show_ ? 1 : 0; }

ppt::SlideShowWindow* SimApplication::slideShowWindow(int index) {
    if (index != 1 || !app_.show_) throw AppError(err::kSubscriptOutOfRange, "SlideShowWindows(" + numText(index) + ")");
    return app_.show_.get();
}

ppt::Slide* SimApplication::activeWindowSlide() {
    SimDocument* d = app_.active();
    if (!d || d->slideCount() == 0) return nullptr;
    return d->slide(std::clamp(app_.editSlide, 1, d->slideCount()));
}

void SimApplication::activateActiveWindow() {
    if (!app_.show_) app_.desktop_.setForegroundWindowClass(kFrameWindowClass);
}

void SimApplication::run(const std::string& macro, const std::vector<ppt::MacroArg>& args) {
    app_.runMacro(macro, args);
}

// ---- the program ------------------------------------------------------------------------------

SimPresentationApp::SimPresentationApp(Scheduler& scheduler, SimDesktop& desktop, SimKeyboard* keyboard)
    : scheduler_(scheduler), desktop_(desktop), keyboard_(keyboard), app_(*this) {
    if (keyboard_) keyboard_->foregroundWindow = [this](int vk, bool released) { onForegroundKey(vk, released); };
}

SimPresentationApp::~SimPresentationApp() {
    if (keyboard_) keyboard_->foregroundWindow = nullptr;
}

ppt::Application* SimPresentationApp::getActiveObject() { return running_ ? &app_ : nullptr; }

void SimPresentationApp::log(const std::string& text) {
    if (note) note(text);
}

void SimPresentationApp::start() {
    if (running_) return;
    running_ = true;
    desktop_.addProcess("POWERPNT.EXE");
    desktop_.setForegroundWindowClass(kFrameWindowClass);
}

void SimPresentationApp::quit() {
    show_.reset();
    documents_.clear();
    running_ = false;
    desktop_.removeProcess("POWERPNT.EXE");
    desktop_.setForegroundWindowClass("Progman");
    screenChanged();
}

SimDocument* SimPresentationApp::active() { return documents_.empty() ? nullptr : documents_.back().get(); }

SimError SimPresentationApp::Open(const std::string& path) {
    try {
        pptx::Deck deck = pptx::Deck::open(path);
        start();
        documents_.push_back(std::make_unique<SimDocument>(*this, std::move(deck)));
        editSlide = 1;
        log("Opened " + path);
        screenChanged();
        return {};
    } catch (const std::exception& e) {
        return e.what();
    }
}

SimError SimPresentationApp::needShow() { return show_ ? SimError{} : SimError{"No slide show is running"}; }

SimError SimPresentationApp::Begin() {
    if (!running_) return "The presentation program is not running";
    SimDocument* d = active();
    if (!d) return "No presentation is open";
    if (d->slideCount() == 0) return "The presentation has no slides";
    if (show_) return "The slide show is already running";
    show_ = std::make_unique<SimShowWindow>(*this, *d, nextHwnd_++, 1);
    show_->activate();
    typedDigits_.clear();
    log("Slide show begins on slide 1 of " + numText(d->slideCount()));
    screenChanged();
    if (addIn.showBegin) addIn.showBegin(show_->hwnd());
    return {};
}

void SimPresentationApp::slideChanged() {
    if (!show_) return;
    log("Slide show on slide " + numText(show_->index()));
    screenChanged();
    if (addIn.nextSlide) addIn.nextSlide();
}

SimError SimPresentationApp::Next() {
    if (auto e = needShow(); !e.empty()) return e;
    show_->next();
    return {};
}

SimError SimPresentationApp::Previous() {
    if (auto e = needShow(); !e.empty()) return e;
    show_->previous();
    return {};
}

SimError SimPresentationApp::GoTo(int slide) {
    if (auto e = needShow(); !e.empty()) return e;
    if (slide < 1 || slide > active()->slideCount()) return "No slide " + numText(slide) + " in this presentation";
    show_->gotoSlide(slide);
    return {};
}

SimError SimPresentationApp::End() {
    if (auto e = needShow(); !e.empty()) return e;
    editSlide = show_->index();
    show_.reset();
    desktop_.setForegroundWindowClass(kFrameWindowClass);
    log("Slide show ends");
    screenChanged();
    if (addIn.showEnd) addIn.showEnd();
    return {};
}

SimError SimPresentationApp::Close() {
    if (!running_) return "The presentation program is not running";
    if (show_) End();
    log("The presentation program closes");
    if (addIn.closing) addIn.closing();
    quit();
    return {};
}

SimError SimPresentationApp::KeyDown(int vk) {
    if (vk <= 0 || vk > 254) return "Not a key code: " + numText(vk);
    keyTime_ = static_cast<int>(scheduler_.monotonicSeconds() * 1000.0);
    if (keyboard_)
        keyboard_->keyDown(vk, keyTime_);
    else
        onForegroundKey(vk, false);
    return {};
}

SimError SimPresentationApp::KeyUp(int vk) {
    if (vk <= 0 || vk > 254) return "Not a key code: " + numText(vk);
    keyTime_ = static_cast<int>(scheduler_.monotonicSeconds() * 1000.0);
    if (keyboard_)
        keyboard_->keyUp(vk, keyTime_);
    else
        onForegroundKey(vk, true);
    return {};
}

SimResult<int> SimPresentationApp::CurrentSlide() {
    SimResult<int> r;
    if (!running_) {
        r.error = "The presentation program is not running";
        return r;
    }
    r.value = show_ ? show_->index() : (active() ? editSlide : 0);
    return r;
}

SimResult<std::string> SimPresentationApp::PresentationTag(const std::string& name) {
    SimResult<std::string> r;
    if (SimDocument* d = active())
        r.value = d->tags().item(name);
    else
        r.error = "No presentation is open";
    return r;
}

ppt::Slide* SimPresentationApp::slideOrError(int slide, SimError& error) {
    SimDocument* d = active();
    if (!d) {
        error = "No presentation is open";
        return nullptr;
    }
    ppt::Slide* s = d->slide(slide);
    if (!s) error = "No slide " + numText(slide) + " in this presentation";
    return s;
}

SimResult<std::string> SimPresentationApp::SlideTag(int slide, const std::string& name) {
    SimResult<std::string> r;
    if (ppt::Slide* s = slideOrError(slide, r.error)) r.value = s->tags().item(name);
    return r;
}

SimResult<std::string> SimPresentationApp::SlideText(int slide, const std::string& shape) {
    SimResult<std::string> r;
    if (ppt::Slide* s = slideOrError(slide, r.error))
        if (ppt::Shape* sh = s->shapeByName(shape); sh && sh->hasTextFrame()) r.value = sh->text();
    return r;
}

void SimPresentationApp::onForegroundKey(int vk, bool released) {
    if (released) return;
    // F5 in the program's own window begins the show, as the real program does.
    if (!show_ && vk == kVkF5 && running_ && desktop_.foregroundWindowClass() == kFrameWindowClass) {
        Begin();
        return;
    }
    if (!show_ || toUpper(desktop_.foregroundWindowClass()) != "SCREENCLASS") return;
    if (vk >= '0' && vk <= '9') {
        typedDigits_ += static_cast<char>(vk);
        return;
    }
    const std::string digits = typedDigits_;
    typedDigits_.clear();
    switch (vk) {
        case 13:
            if (!digits.empty())
                show_->gotoSlide(static_cast<int>(ParseNumber(digits)));
            else
                show_->next();
            break;
        case 32: case 34: case 39: case 40: case 'N': show_->next(); break;
        case 8: case 33: case 37: case 38: case 'P': show_->previous(); break;
        case 36: show_->gotoSlide(1); break;
        case 35: show_->gotoSlide(active()->slideCount()); break;
        case 27: End(); break;
        case 'B': case 190:
            show_->blanked = !show_->blanked;
            screenChanged();
            break;
        case kVkF11:
            show_->fullScreen = !show_->fullScreen;
            screenChanged();
            break;
        default: break;
    }
}

void SimPresentationApp::runMacro(const std::string& macro, const std::vector<ppt::MacroArg>& args) {
    (void)args;
    macrosRun_.push_back(macro);
    if (macro == "DoRapidpoll") {
        doRapidpoll();
    } else if (macro == "GoToNextSlide") {
        if (show_)
            show_->next();
        else
            ++editSlide;
        log("Macro GoToNextSlide run");
    } else if (macro == "GoToPreviousSlide") {
        if (show_)
            show_->previous();
        else if (editSlide > 1)
            --editSlide;
        log("Macro GoToPreviousSlide run");
    } else {
        log("Macro " + macro + " run");
    }
}

void SimPresentationApp::doRapidpoll() {
    ppt::Slide* slide = show_ ? show_->slide() : app_.activeWindowSlide();
    if (!slide) {
        log("Macro DoRapidpoll run: no slide");
        return;
    }
    std::string tag;
    for (const char* t : kVoteTagList)
        if (!slide->tags().item(t).empty()) {
            tag = t;
            break;
        }
    if (tag.empty()) {
        log("Macro DoRapidpoll run: slide " + numText(slide->slideNumber()) + " has no vote");
        return;
    }
    Display d;
    if (auto it = displays.find(tag); it != displays.end()) {
        d = it->second;
        // A bare name: the program installed beside the controller, when it is there.
        const fs::path beside = desktop_.installFolder() / d.program;
        std::error_code ec;
        if (!d.program.empty() && fs::path(d.program).filename().string() == d.program &&
            fs::is_regular_file(beside, ec))
            d.program = beside.string();
    } else {
        // The reference display program, when it is installed beside the controller.
        const fs::path reference = desktop_.installFolder() / "tlx-display";
        std::error_code ec;
        if (fs::is_regular_file(reference, ec)) d.program = reference.string();
    }
    if (d.program.empty()) {
        log("Macro DoRapidpoll run: no display program for " + tag + " (nothing started)");
        return;
    }
    const std::string process = displayProcessName(tag);
    const bool started = launchDisplay ? launchDisplay(d, process)
                                       : desktop_.startProgram(d.program, d.arguments, WindowStyle::Normal);
    if (started) {
        desktop_.addProcess(process);
        log("Macro DoRapidpoll run: " + process + " started for slide " + numText(slide->slideNumber()));
    } else {
        log("Macro DoRapidpoll run: " + d.program + " could not be started");
    }
}

void SimPresentationApp::displayEnded(const std::string& processName) { desktop_.removeProcess(processName); }

}  // namespace tlx
