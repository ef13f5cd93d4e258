#pragma once
// Vote types by name and code, the key mask of single-digit votes, and the vote object built
// from the controller's current vote settings.
#include <optional>
#include <string>
#include <string_view>

#include "ports/BaseLibrary.h"

namespace tlx {

struct GlobalState;
struct KeypadDisplayTexts;

struct VoteTypeInfo {
    const char* name;
    int alias;  // the code callers write
    int sent;   // the code written into VoteType
};

inline constexpr int kVoteTypeSingleDigit = 9;

// The type a text names (type name, upper-cased, or its code); nullptr when none.
const VoteTypeInfo* findVoteType(std::string_view text);
bool isSingleDigitVote(std::string_view voteType);

// Key bit of one answer (0..13); 0 for answers without a key.
int keyBit(int answer);
// Mask of the allowed answers (the sum of their key bits): the valid-answer list when set,
// otherwise the option range. Nothing when a listed answer is 14 or more.
std::optional<int> singleDigitKeyMask(const GlobalState& glo);
// Mask of a "," list of answers (the request keys "0,11", say); non-numeric entries skipped,
// nothing when an entry is 14 or more.
std::optional<int> keyMaskOfList(std::string_view list);

// Fills a vote object from the vote settings and the keypad display texts; false (object
// unconfigured) for an unknown type or an out-of-range answer in the list.
bool UpdateVoteObjectFromGlobalVariables(const GlobalState& glo, const KeypadDisplayTexts& texts,
                                         KelvarinVote& oVote);

// "ovote.VoteType:9, oVote.VoteQuestionText:..., ..., oVote.Allocation:0"
std::string describeVote(const KelvarinVote& oVote);

}  // namespace tlx
