// The controller's texts as the display program reads them: vote batches ("[keypad;vote],")
// and other messages, tallied one answer per keypad. The input is split at NUL bytes into the
// texts of successive events; a text starting with "\x01" switches counting off, "\x02" on.
// The tally must stay consistent: the answers' keypad counts add up to the voters.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "presentation/display/VoteTally.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    VoteTally tally;
    while (true) {
        const std::size_t nul = rest.find('\0');
        std::string_view text = rest.substr(0, nul);
        if (!text.empty() && text.front() == '\x01') tally.setCounting(false);
        if (!text.empty() && text.front() == '\x02') tally.setCounting(true);
        for (std::string_view line : controllerLines(text))
            if (isVoteBatch(line)) (void)readVoteBatch(line);
        (void)tally.feed(text);
        if (nul == std::string_view::npos) break;
        rest.remove_prefix(nul + 1);
    }
    long long held = 0;
    for (const auto& [answer, keypads] : tally.answers()) {
        if (keypads <= 0 || tally.count(answer) != keypads) __builtin_trap();
        held += keypads;
    }
    if (held != tally.voters() || tally.changes() > tally.received()) __builtin_trap();
    (void)tally.info("votes");
    return 0;
}
