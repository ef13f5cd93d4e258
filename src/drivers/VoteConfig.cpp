#include "drivers/VoteConfig.h"

#include <array>
#include <cmath>

#include "core/GlobalState.h"
#include "core/Text.h"
#include "drivers/DisplayTexts.h"

namespace tlx {

namespace {

const std::array<VoteTypeInfo, 12> kTypes = {{
    {"SINGLEDIGIT", 9, 9},
    {"SINGLEITEM", 14, 14},
    {"MULTIDIGIT", 12, 12},
    {"NUMERIC", 99, 11},
    {"FRACTIONAL", 11, 11},
    {"TEXT", 7, 7},
    {"MESSAGE", 8, 8},
    {"EDIT", 2, 2},
    {"ALLOCATE", 6, 6},
    {"ORDER", 5, 5},
    {"SORT", 1, 1},
    {"TAG", 3, 3},
}};

// Key 0 sits above key 9, and answers 10 and 11 are swapped.
const std::array<int, 14> kKeyBits = {1024, 1, 2, 4, 8, 16, 32, 64, 128, 256, 2048, 512, 0, 0};

}  // namespace

const VoteTypeInfo* findVoteType(std::string_view text) {
    const std::string t = toUpper(trim(text));
    if (t.empty()) return nullptr;
    const bool numeric = isNumeric(t);
    const double code = numeric ? ParseNumber(t) : -1;
    for (const auto& v : kTypes)
        if (t == v.name || (numeric && code == v.alias)) return &v;
    return nullptr;
}

bool isSingleDigitVote(std::string_view voteType) {
    const VoteTypeInfo* t = findVoteType(voteType);
    return t && t->sent == kVoteTypeSingleDigit;
}

int keyBit(int answer) {
    return answer >= 0 && answer < static_cast<int>(kKeyBits.size()) ? kKeyBits[static_cast<std::size_t>(answer)] : 0;
}

std::optional<int> keyMaskOfList(std::string_view list) {
    // The bits are added, as the keypad library reads the mask: an answer listed twice
    // counts twice.
    int mask = 0;
    for (const auto& item : split(list, ",")) {
        if (!isNumeric(item)) continue;
        const double a = ParseNumber(item);
        if (a >= 14) return std::nullopt;
        mask += keyBit(static_cast<int>(a));
    }
    return mask;
}

std::optional<int> singleDigitKeyMask(const GlobalState& glo) {
    if (!trim(glo.validAnswers).empty()) return keyMaskOfList(glo.validAnswers);
    // The range form is never an error: answers beyond the keypad's keys add nothing.
    int mask = 0;
    for (int i = 0; i < glo.optionCount; ++i) mask += keyBit(glo.startFrom + i);
    return mask;
}

bool UpdateVoteObjectFromGlobalVariables(const GlobalState& glo, const KeypadDisplayTexts& texts,
                                         KelvarinVote& oVote) {
    oVote = KelvarinVote{};
    oVote.ItemCount = 1;
    const VoteTypeInfo* type = findVoteType(glo.voteType);
    if (!type) return false;
    KelvarinVote v;
    v.ItemCount = 1;
    v.VoteType = type->sent;
    const std::string name = type->name;
    if (name == "SINGLEDIGIT") {
        const auto mask = singleDigitKeyMask(glo);
        if (!mask) return false;
        v.ItemCount = 2;
        v.KeyMask = *mask;
    } else if (name == "NUMERIC") {
        v.AllowFraction = false;
    } else if (name == "FRACTIONAL") {
        v.AllowFraction = true;
    } else if (name == "ORDER" || name == "ALLOCATE") {
        v.ItemCount = glo.optionCount;
    } else if (name == "TEXT" || name == "MESSAGE") {
        v.MessageText = glo.voteText;
    }
    // Every keypad text goes out with the vote, before it opens: the keypads show most of them
    // at moments only the radio side sees (a press on its way, no acknowledgement, a lost link),
    // so the base must hold them already. The vote's own texts where its key lines gave them,
    // the settings' texts otherwise.
    v.VoteQuestionText = glo.questionTextShort;
    v.VoteText = glo.voteText.empty() ? texts.VoteSuccessText : glo.voteText;
    v.VoteEndedText = glo.voteEndedText.empty() ? texts.VoteEndText : glo.voteEndedText;
    v.PrevoteText = glo.prevoteText.empty() ? texts.PrevoteText : glo.prevoteText;
    v.AnswerText = glo.answerText;
    v.PrevoteTextTime = texts.PrevoteTextTime;
    v.VotedText = texts.VotedText;
    v.RevotedText = texts.RevotedText;
    v.VoteFailedText = texts.VoteFailedText;
    v.VoteFailedTextTime = texts.VoteFailedTextTime;
    v.VoteTextTime = texts.VoteSuccessTextTime;
    v.VoteEndedTextTime = texts.VoteEndTextTime;
    v.SignalLostDuringVoteText = texts.SignalLostDuringVoteText;
    v.SignalLostDuringVoteTextTime = texts.SignalLostDuringVoteTextTime;
    v.SignalLostDuringTransmitText = texts.SignalLostDuringTransmitText;
    v.SignalLostDuringTransmitTextTime = texts.SignalLostDuringTransmitTextTime;
    v.TextVoteFontSize = texts.TextVoteFontSize;
    v.ListVoteFontSize = texts.ListVoteFontSize;
    v.Limits = glo.limits;
    v.Points = glo.points;
    v.Allocation = glo.allocation;
    if (glo.kelvarinDisplay == 1) {
        v.DisplayLetters = false;
        v.DisplayLetters = true;
    } else if (glo.kelvarinDisplay == 2) {
        v.DisplayAnswerNumbers = false;
    }
    oVote = v;
    return true;
}

std::string describeVote(const KelvarinVote& v) {
    return "ovote.VoteType:" + numText(v.VoteType) + ", oVote.VoteQuestionText:" + v.VoteQuestionText +
           ", oVote.VoteText:" + v.VoteText + ", oVote.VoteEndedText:" + v.VoteEndedText +
           ", oVote.Limits:" + numText(v.Limits) + ", oVote.Points:" + numText(v.Points) +
           ", oVote.Allocation:" + numText(v.Allocation);
}

}  // namespace tlx
