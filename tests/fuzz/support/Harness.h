#pragma once
// What every harness starts from. A harness is written as
//     TLX_FUZZ_HARNESS(in) { ... }
// where `in` is the input as a FuzzInput; the macro defines the entry point that libFuzzer and
// the replay program call. Returning early ends the run.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/FuzzInput.h"

namespace tlx::fuzz {

// A property the harness checks does not hold: stop as a crash would, so the fuzzer keeps
// the input.
inline void require(bool holds) {
    if (!holds) __builtin_trap();
}

// Runs a reader over input that may be damaged: a refusal with exception E is the expected
// outcome. True when the reader took the input.
template <class E, class F>
bool readOrRefuse(F&& read) {
    try {
        read();
        return true;
    } catch (const E&) {
        return false;
    }
}

}  // namespace tlx::fuzz

#define TLX_FUZZ_HARNESS(in)                                                            \
    static void tlxFuzzHarness(::tlx::fuzz::FuzzInput& in);                             \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        ::tlx::fuzz::FuzzInput input(data, size);                                       \
        tlxFuzzHarness(input);                                                          \
        return 0;                                                                       \
    }                                                                                   \
    static void tlxFuzzHarness(::tlx::fuzz::FuzzInput& in)
