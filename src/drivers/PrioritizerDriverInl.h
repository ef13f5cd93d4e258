#pragma once
// The Corehub driver's error guard and base walk, shared by its source files.
#include <exception>
#include <type_traits>

#include "core/Controller.h"
#include "core/Text.h"
#include "drivers/PrioritizerDriver.h"
#include "ports/AppError.h"

namespace tlx {

// Runs a member's body; a thrown error is logged as " - " + member + " FAILED - " + code +
// ": " + text and reported to the error log, and the member returns "Unkown error" (2).
template <class F>
auto KelvarinPrioritizerDriver::guard(const char* member, F&& body) -> decltype(body()) {
    using R = decltype(body());
    try {
        return body();
    } catch (const AppError& e) {
        failed(member, e.number(), e.what());
        reportError(c_.errors, Name(), member, &e);
    } catch (const std::exception& e) {
        failed(member, BaseErrorCode::UnknownError, e.what());
        reportError(c_.errors, Name(), member, &e);
    } catch (...) {
        failed(member, BaseErrorCode::UnknownError, "Unknown error");
        reportError(c_.errors, Name(), member, nullptr);
    }
    if constexpr (std::is_same_v<R, int>)
        return BaseErrorCode::UnknownError;
    else if constexpr (!std::is_void_v<R>)
        return R{};
}

// Every base slot from 1 up to and including 11; slot 11 never holds a base and slots
// without a connected base are passed over. The body gets the slot and the base's text.
template <class F>
void KelvarinPrioritizerDriver::forEachBase(F&& fn) {
    for (int slot = 1; slot <= kLastSlot; ++slot) {
        if (slot == kLastSlot) continue;
        if (slot > static_cast<int>(bases_.size())) continue;
        if (!bases_[static_cast<std::size_t>(slot - 1)].connected) continue;
        KelvarinBase* base = oKVs_[static_cast<std::size_t>(slot - 1)].get();
        if (!base) continue;
        fn(slot, baseText(slot), *base);
    }
}

}  // namespace tlx
