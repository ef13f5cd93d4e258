#pragma once
// Several fields of one record as one text, "a|b|c", so that a single comparison shows every
// field when it fails (bools read 0 or 1, an empty optional "none"). The arguments are
// evaluated in no set order: pass values to compare, never calls that change what the others
// read.
#include <optional>
#include <sstream>
#include <string>

namespace tlx::test {

template <class T>
void putField(std::ostream& s, const T& v) {
    s << v;
}
template <class T>
void putField(std::ostream& s, const std::optional<T>& v) {
    if (v) s << *v;
    else s << "none";
}

template <class... T>
std::string fields(const T&... v) {
    std::ostringstream s;
    const char* sep = "";
    ((s << sep, putField(s, v), sep = "|"), ...);
    return s.str();
}

}  // namespace tlx::test
