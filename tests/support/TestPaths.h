#pragma once
// Where tests find the source tree's data and the build tree: paths fixed when the build was
// configured, so the suite passes from any build folder and any working directory.
#include <filesystem>

namespace tlx::test {

inline std::filesystem::path sourceDir() { return TLX_SOURCE_DIR; }
inline std::filesystem::path binaryDir() { return TLX_BINARY_DIR; }

}  // namespace tlx::test
