#pragma once
// Numbers read from text (commands, name lists) stored into 16- and 32-bit fields.
#include <cmath>
#include <cstdint>
#include <limits>

namespace tlx {

// Whole numbers with halves going to the even neighbour, as a classic integer store rounds.
// Values beyond the field's range are clamped to its ends rather than wrapped: a display
// program that asks for 70000 options means "as many as there can be", and wrapping would
// silently configure a different vote (4464 options).
template <class T>
T toIntField(double value) {
    const double r = std::nearbyint(value);
    if (!(r >= static_cast<double>(std::numeric_limits<T>::min()))) return std::numeric_limits<T>::min();
    if (r > static_cast<double>(std::numeric_limits<T>::max())) return std::numeric_limits<T>::max();
    return static_cast<T>(r);
}

inline std::int16_t toInt16Field(double value) { return toIntField<std::int16_t>(value); }
inline std::int32_t toInt32Field(double value) { return toIntField<std::int32_t>(value); }

}  // namespace tlx
