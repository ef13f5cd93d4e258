#pragma once
// Names and call signatures of what the controller publishes on the session bus, shared by
// the server and its command-line client.
#include <string_view>
#include <vector>

namespace tlx::bus {

inline constexpr const char* kService = "tallix_control.tallix";
inline constexpr const char* kTallixPath = "/tallix";
inline constexpr const char* kTallixInterface = "tallix_control.tallix";
inline constexpr const char* kSimShowPath = "/sim/show";
inline constexpr const char* kSimShowInterface = "tallix_control.SimShow";
inline constexpr const char* kSimBasesPath = "/sim/bases";
inline constexpr const char* kSimBasesInterface = "tallix_control.SimBases";

// One method: D-Bus signatures of its arguments and result ("" for none), argument names.
struct Method {
    const char* name;
    const char* in;
    const char* out;
    std::vector<const char*> args;
};

// Methods in the order of their interface.
const std::vector<Method>& tallixMethods();
const std::vector<Method>& simShowMethods();
const std::vector<Method>& simBasesMethods();
// Signals of the tallix interface (arguments as for methods, in `in`).
const std::vector<Method>& tallixSignals();

// The method of the list whose name matches, compared without regard to case; nullptr if none.
const Method* findMethod(const std::vector<Method>& methods, std::string_view name);

}  // namespace tlx::bus
