#include "ports/Desktop.h"

#include <algorithm>
#include <cctype>

namespace tlx {

bool processRunning(const Desktop& desktop, const std::string& name) {
    auto upper = [](std::string s) {
        std::transform(s.begin(), s.end(), s.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        return s;
    };
    const std::string wanted = upper(name);
    for (const auto& p : desktop.processes())
        if (upper(p) == wanted) return true;
    return false;
}

}  // namespace tlx
