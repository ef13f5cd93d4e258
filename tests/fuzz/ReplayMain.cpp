// Runs a fuzz harness over saved inputs without libFuzzer, so that the ordinary test suite
// (any compiler, with or without sanitizers) replays every seed and every regression input.
// Usage: replay_<harness> DIR|FILE ...   Folders are read recursively; a missing folder counts
// as empty, but finding no input at all is a failure (a mistyped folder would pass silently).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const fs::path p = argv[i];
        std::error_code ec;
        if (fs::is_regular_file(p, ec)) {
            inputs.push_back(p);
            continue;
        }
        if (!fs::is_directory(p, ec)) continue;
        for (auto it = fs::recursive_directory_iterator(p, ec); !ec && it != fs::recursive_directory_iterator();
             it.increment(ec))
            if (it->is_regular_file(ec) && it->path().filename().string().front() != '.') inputs.push_back(it->path());
    }
    std::sort(inputs.begin(), inputs.end());
    if (inputs.empty()) {
        std::cerr << "no inputs found\n";
        return 2;
    }
    for (const auto& p : inputs) {
        std::ifstream in(p, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (!in.good() && !in.eof()) {
            std::cerr << "cannot read " << p << "\n";
            return 2;
        }
        std::cout << "replay " << p.string() << " (" << bytes.size() << " bytes)" << std::endl;
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::cout << inputs.size() << " inputs replayed" << std::endl;
    return 0;
}
