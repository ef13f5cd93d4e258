#include "support/FakePresentation.h"

#include "core/Text.h"
#include "ports/AppError.h"
#include "presentation/PresentationModules.h"
#include "support/TestWorld.h"

namespace tlx::test {

std::string FakeTags::item(const std::string& name) const {
    for (const auto& [n, v] : items_)
        if (iequals(n, name)) return v;
    return {};
}

void FakeTags::add(const std::string& name, const std::string& value) {
    for (auto& [n, v] : items_)
        if (iequals(n, name)) {
            v = value;
            return;
        }
    items_.emplace_back(toUpper(name), value);
}

void FakeTags::remove(const std::string& name) {
    for (auto it = items_.begin(); it != items_.end(); ++it)
        if (iequals(it->first, name)) {
            items_.erase(it);
            return;
        }
}

std::string FakeTags::name(int index) const { return items_.at(static_cast<std::size_t>(index - 1)).first; }
std::string FakeTags::value(int index) const { return items_.at(static_cast<std::size_t>(index - 1)).second; }

ppt::Presentation& FakeShowWindow::presentation() { return p_; }
ppt::Slide* FakeShowWindow::slide() { return p_.slide(current_); }

FakePresentation::FakePresentation(std::string path, int slides) : path_(std::move(path)) {
    for (int i = 1; i <= slides; ++i) slides_.push_back(std::make_unique<FakeSlide>(i));
}

ppt::Slide* FakePresentation::slide(int index) {
    if (index < 1 || index > slideCount()) throw AppError(err::kSubscriptOutOfRange, "Slide index out of range");
    return slides_[static_cast<std::size_t>(index - 1)].get();
}

std::string FakeApplication::addInPath(const std::string& addInName) const {
    throw AppError(err::kSubscriptOutOfRange, "AddIns(\"" + addInName + "\"): not loaded");
}

ppt::Presentation* FakeApplication::activePresentation() {
    if (active < 0 || active >= presentationCount()) return nullptr;
    return presentations[static_cast<std::size_t>(active)].get();
}

int FakeApplication::slideShowWindowCount() const {
    int n = 0;
    for (const auto& p : presentations)
        if (p->slideShowWindow()) ++n;
    return n;
}

ppt::SlideShowWindow* FakeApplication::slideShowWindow(int index) {
    int n = 0;
    for (const auto& p : presentations)
        if (p->slideShowWindow() && ++n == index) return p->slideShowWindow();
    throw AppError(err::kSubscriptOutOfRange, "SlideShowWindows index out of range");
}

void FakeApplication::run(const std::string& macro, const std::vector<ppt::MacroArg>& args) {
    if (!failingMacro.empty() && macro == failingMacro)
        throw AppError(err::kAutomationServerFault, "Macro '" + macro + "' cannot be found.");
    macrosRun.push_back({macro, args});
}

FakePresentation& FakeApplication::open(const std::string& path, int slides) {
    presentations.push_back(std::make_unique<FakePresentation>(path, slides));
    active = presentationCount() - 1;
    return *presentations.back();
}

void useFakePresentation(TestWorld& world, FakePresentationApp& presentation) {
    world.controller.reset();
    world.controller = std::make_unique<Controller>(
        Ports{world.scheduler, world.desktop, world.dialogs, world.tray, presentation});
    installPresentationSide(*world.controller);
}

}  // namespace tlx::test
