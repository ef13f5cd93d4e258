#pragma once
// The texts Corehub keypads show at fixed moments of a vote, the winner message, the
// presenter keypad's menu labels, and their defaults. "|" starts a new display line and
// leading blanks centre a line; texts are sent as they stand.
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tlx {

class SettingsFiles;

// One record per Corehub generation; both start from the same defaults.
struct KeypadDisplayTexts {
    KeypadDisplayTexts();

    std::string RevotedText;
    std::string PrevoteText;
    int PrevoteTextTime = 0;
    int TextVoteFontSize = 0;
    bool TextVotePauseEnabled = false;
    int ListVoteFontSize = 0;
    std::string VotedText;
    std::string VoteEndText;
    int VoteEndTextTime = 0;
    std::string VoteFailedText;
    int VoteFailedTextTime = 0;
    std::string VoteSuccessText;
    int VoteSuccessTextTime = 0;
    std::string SignalLostDuringVoteText;
    int SignalLostDuringVoteTextTime = 0;
    std::string SignalLostDuringTransmitText;
    int SignalLostDuringTransmitTextTime = 0;
    std::string WinningKeypadLoadMessage;
    std::string WinningKeypadMainMessage;
    int WinningKeypadMainMessageFont = 0;
    int WinningKeypadLedEffect = 0;
    std::string KeypadPrompt01;
    std::string KeypadPrompt02;

    // Overwrites the fields whose keys the files have, each from its own section (the core
    // hub options; the two prompts from the audio options).
    void load(const SettingsFiles& files);
    void load(const std::filesystem::path& settingsFile);
};

// The display lines of a text: split at every "|".
std::vector<std::string> displayLines(std::string_view text);

// The same messages for single-line displays; runs of blanks stand for line breaks.
namespace singleline {
inline constexpr const char* kPrevote = "Get Ready To Vote!";
inline constexpr const char* kVoteSuccess = "Vote Submitted                Change vote?";
inline constexpr const char* kVoteFailed = "**Vote Failed**                Please try again";
inline constexpr const char* kVoteEnd = "Vote Ended";
inline constexpr const char* kSignalLostDuringVote = "Base Signal Lost, attempting to reconnect";
inline constexpr const char* kSignalLostDuringTransmit = "Base Signal Lost, attempting to reconnect";
inline constexpr const char* kPrompt01 = "Press 0 to request mic";
inline constexpr const char* kPrompt02 = "Request Submitted";
}  // namespace singleline

// The presenter keypad's 22 menu labels and their setting keys ("" where none).
struct PresenterMenu {
    PresenterMenu();
    static constexpr std::size_t kCount = 22;
    std::array<std::string, kCount> labels;
    int value1 = 20;
    int value2 = 20;
    static const char* settingKey(std::size_t index);
    // Overwrites the labels whose keys the files have in the presenter text section.
    void load(const SettingsFiles& files);
    void load(const std::filesystem::path& settingsFile);
    // The labels joined with "|".
    std::string menuText() const;
};

}  // namespace tlx
