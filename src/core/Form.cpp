#include "core/Form.h"

#include <algorithm>
#include <exception>

#include "ports/Scheduler.h"

namespace tlx {

FormRegistry::~FormRegistry() {
    if (sweep_) scheduler_.cancel(sweep_);
}

void FormRegistry::unload(Form& form) {
    auto it = std::find_if(forms_.begin(), forms_.end(), [&](const auto& f) { return f.get() == &form; });
    if (it == forms_.end()) return;
    std::unique_ptr<Form> owned = std::move(*it);
    forms_.erase(it);
    // A form whose own unload work fails is gone all the same (its views are told); the
    // failure then goes to the caller's trap.
    std::exception_ptr failure;
    try {
        owned->unloading();
    } catch (...) {
        failure = std::current_exception();
    }
    owned->Hide();
    unloaded(*owned);
    graveyard_.push_back(std::move(owned));
    if (!sweep_)
        sweep_ = scheduler_.post(0, [this] {
            sweep_ = 0;
            graveyard_.clear();
        });
    if (failure) std::rethrow_exception(failure);
}

Form* FormRegistry::find(const std::string& name) const {
    for (const auto& f : forms_)
        if (f->Name() == name) return f.get();
    return nullptr;
}

std::vector<Form*> FormRegistry::all() const {
    std::vector<Form*> v;
    for (const auto& f : forms_) v.push_back(f.get());
    return v;
}

}  // namespace tlx
