#include "core/BaseDrivers.h"

namespace tlx {

KeypadRange BaseDrivers::keypadRange(int baseIndex, const GlobalState& glo) const {
    KeypadRange r;
    if (glo.bases.empty()) return r;
    std::size_t i = 0;
    if (baseIndex >= 1 && static_cast<std::size_t>(baseIndex) <= glo.bases.size()) i = static_cast<std::size_t>(baseIndex - 1);
    r.offset = glo.bases[i].offset;
    r.highest = glo.bases[i].gridHi;
    return r;
}

}  // namespace tlx
