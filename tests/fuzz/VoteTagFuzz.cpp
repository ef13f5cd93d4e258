// The vote tag as the display program reads it from a slide ("TLXVOTE" and its kin): the
// configuration text becomes the key lines sent to the controller before STARTVOTE. The first
// byte picks the tag; the rest is its text. Each key line must stay one line, or a tag could
// smuggle further commands into the controller.
#include "presentation/display/VoteSetup.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    const char* tag = kDisplayVoteTags[in.byte() % 5];
    const std::string text = in.rest();
    std::vector<std::string> problems;
    (void)configElements(text, &problems);
    const VoteSetup setup = readVoteSetup(tag, text);
    for (int options : {0, setup.options, kDefaultOptionCount})
        for (const std::string& line : setupLines(setup, options))
            fuzz::require(line.find_first_of("\r\n") == std::string::npos);
    (void)keypadListText(setup.keypadsActive);
}
