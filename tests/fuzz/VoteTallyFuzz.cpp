// The controller's texts as the display program reads them: vote batches ("[keypad;vote],")
// and other messages, tallied one answer per keypad. The input is split at NUL bytes into the
// texts of successive events; a text starting with "\x01" switches counting off, "\x02" on.
// The tally must stay consistent: the answers' keypad counts add up to the voters.
#include "presentation/display/VoteTally.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    const std::string input = in.rest();
    std::string_view rest(input);
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
        fuzz::require(keypads > 0 && tally.count(answer) == keypads);
        held += keypads;
    }
    fuzz::require(held == tally.voters() && tally.changes() <= tally.received());
    (void)tally.info("votes");
}
