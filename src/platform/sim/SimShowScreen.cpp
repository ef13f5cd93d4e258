#include "platform/sim/SimShowScreen.h"

#include <algorithm>

#include "core/Text.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "platform/sim/SimPresentation.h"
#include "presentation/display/VoteSetup.h"

namespace tlx {

namespace {

// A shape's text when the slide has it and shows it; "" otherwise.
std::string shownText(ppt::Slide& slide, const char* name) {
    try {
        ppt::Shape* s = slide.shapeByName(name);
        if (!s || !s->hasTextFrame() || !s->visible()) return {};
        return s->text();
    } catch (const std::exception&) {
        return {};  // a shape deleted under us shows nothing
    }
}

std::vector<std::string> paragraphs(const std::string& text) {
    std::vector<std::string> v;
    for (std::string_view p : controllerLines(text))
        if (std::string t = trim(replaceAll(std::string(p), "\v", " ")); !t.empty()) v.push_back(std::move(t));
    return v;
}

}  // namespace

SimShowScreen::SimShowScreen(SimPresentationApp& app) : app_(app) {
    sub_ = app_.screenChanged.connect([this] { refresh(); });
    refresh();
}

SimShowScreen::~SimShowScreen() { app_.screenChanged.disconnect(sub_); }

std::string SimShowScreen::position() const {
    if (slide_.number <= 0) return {};
    return "Slide " + numText(slide_.number) + " of " + numText(slide_.count);
}

void SimShowScreen::readSlide(int number) {
    slide_ = {};
    SimDocument* doc = app_.active();
    if (!doc) return;
    ppt::Slide* s = doc->slide(number);
    if (!s) return;
    slide_.number = number;
    slide_.count = doc->slideCount();
    slide_.title = trim(replaceAll(replaceAll(shownText(*s, pptx::kTitleShape), "\r", " "), "\v", " "));
    slide_.question = trim(replaceAll(replaceAll(shownText(*s, pptx::kQuestionShape), "\r", "\n"), "\v", "\n"));
    slide_.answers = paragraphs(shownText(*s, pptx::kAnswersShape));
}

void SimShowScreen::refresh() {
    SimDocument* doc = app_.running() ? app_.active() : nullptr;
    SimShowWindow* show = app_.show();
    open_ = doc != nullptr;
    showRunning_ = show != nullptr;
    fullScreen_ = show && show->fullScreen;
    blanked_ = show && show->blanked;
    if (!doc) {
        caption_.clear();
        slide_ = {};
        voteSlide_ = 0;
    } else {
        caption_ = show ? "Slide Show - " + doc->name() : doc->name() + " - presentation";
        const int count = doc->slideCount();
        readSlide(show ? show->index() : std::clamp(app_.editSlide, 1, std::max(count, 1)));
    }
    changed();
}

void SimShowScreen::voteStarted() {
    // A vote belongs to the slide the show is on when it opens: its tag says how many options
    // it has, its answers box names them.
    vote_ = {};
    voteSlide_ = slide_.number;
    vote_.slide = slide_.number;
    if (SimDocument* doc = app_.running() ? app_.active() : nullptr)
        if (ppt::Slide* s = doc->slide(slide_.number))
            for (const char* tag : kDisplayVoteTags)
                if (const std::string config = s->tags().item(tag); !trim(config).empty()) {
                    vote_.setup = readVoteSetup(tag, config);
                    break;
                }
    vote_.question = vote_.setup.question.empty() ? slide_.question : vote_.setup.question;
    vote_.labels = slide_.answers;
    vote_.options = vote_.setup.options > 0 ? vote_.setup.options : static_cast<int>(vote_.labels.size());
    changed();
}

void SimShowScreen::forwarded(const std::string& text) {
    const VoteTally::Fed fed = vote_.tally.feed(text);
    if (fed.ballots || fed.skipped || !fed.messages.empty()) changed();
}

void SimShowScreen::keyDown(int vk) {
    held_.insert(vk);
    app_.KeyDown(vk);
}

void SimShowScreen::keyUp(int vk) {
    held_.erase(vk);
    app_.KeyUp(vk);
}

void SimShowScreen::activated() {
    // The desktop's foreground is the program's window in the role it plays now.
    if (SimShowWindow* show = app_.show())
        show->activate();
    else if (app_.running())
        app_.application().activateActiveWindow();
}

void SimShowScreen::deactivated() {
    // Keys let go of elsewhere never reach this window: release them here, or the hook would
    // go on believing Ctrl or Alt held and turn every later key into a hot key.
    const std::set<int> held = std::move(held_);
    held_.clear();
    for (int vk : held) app_.KeyUp(vk);
}

void SimShowScreen::beginShow() {
    if (app_.show()) return;
    app_.Begin();
}

void SimShowScreen::endShow() {
    if (app_.show()) app_.End();
}

void SimShowScreen::next() {
    if (app_.show()) app_.Next();
}

void SimShowScreen::previous() {
    if (app_.show()) app_.Previous();
}

void SimShowScreen::toggleFullScreen() {
    SimShowWindow* show = app_.show();
    if (!show) return;
    show->fullScreen = !show->fullScreen;
    refresh();
}

void SimShowScreen::closeProgram() {
    if (app_.running()) app_.Close();
}

}  // namespace tlx
