#pragma once
// The base-library operations and events as protocol fields, on both sides: the emulator turns
// a request into a call on a KelvarinBase and its results into a reply; the adapter turns a
// call into a request and the reply back into the results; events go the same way. One table
// of operations and one of events serve both sides, worked out from the KelvarinBase members
// themselves: arguments passed by value or const reference travel in the request, those passed
// by plain reference come back in the reply, in their order.
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/net/BaseProtocol.h"
#include "ports/BaseLibrary.h"

namespace tlx::wire {

template <class A>
inline constexpr bool isResult = std::is_lvalue_reference_v<A> && !std::is_const_v<std::remove_reference_t<A>>;

// The request fields of a call: the operation's name, then the arguments that go in.
template <class... A, class... P>
Fields requestOf(const char* operation, int (KelvarinBase::*)(A...), const P&... args) {
    Fields f{operation};
    [[maybe_unused]] auto add = [&](auto tag, const auto& value) {
        if constexpr (!isResult<typename decltype(tag)::type>) f.push_back(encodeValue(value));
    };
    (add(std::type_identity<A>{}, args), ...);
    return f;
}

// Reads the results of a reply (after its status field) into the arguments passed by
// reference. False when the reply does not hold them.
template <class... A, class... P>
bool readResults(const Fields& reply, int (KelvarinBase::*)(A...), P&... args) {
    std::size_t at = 1;
    bool ok = true;
    [[maybe_unused]] auto take = [&](auto tag, auto& value) {
        if constexpr (isResult<typename decltype(tag)::type>) {
            if (!ok) return;
            if (at >= reply.size()) {
                ok = false;
                return;
            }
            std::decay_t<decltype(value)> v{};
            ok = decodeValue(reply[at++], v);
            if (ok) value = std::move(v);
        }
    };
    (take(std::type_identity<A>{}, args), ...);
    return ok;
}

// Carries out a request on a base object. `reply` gets the status and the results. False (and
// nothing called) when the operation is unknown or its arguments do not read.
bool serveRequest(KelvarinBase& base, const Fields& request, Fields& reply);

// Whether the operation is one a base object is bound by (Connect) or listed with (the
// device lists): the emulator serves these on any object.
bool knownOperation(const std::string& name);

// Hands every event the object raises to `emit` as event fields (name, arguments).
void forwardEvents(KelvarinBase& base, std::function<void(Fields)> emit);

// Raises the event the fields describe on the object. False when the event is unknown or its
// arguments do not read (nothing is raised then).
bool raiseEvent(KelvarinBase& base, const Fields& event);

}  // namespace tlx::wire
