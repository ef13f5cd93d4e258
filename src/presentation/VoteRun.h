#pragma once
// Vote slides and the vote run: V on a tagged slide starts the quick vote, and the vote is
// opened and closed on the keypads of every configured base.
#include <string>

namespace tlx {

class Controller;

inline constexpr const char* kVoteTags = "TLXVOTE,TLXQUIZ,TLXTEAM,TLXRESHOW,TLXMATRIX";

class VoteRun {
public:
    explicit VoteRun(Controller& controller);

    void tmrCheck4Vote_Timer();
    void tmrRunVote_Timer();
    void tmrVKeyPressed_Timer();

    void ReadActiveKeypads();
    void SetActiveKeypads(const std::string& list);
    void GoToNextSlide();
    void GoToPreviousSlide();

    // Opens the vote on every configured base; returns how many bases take part.
    int VoteStart();
    // Closes it on the oldest bases (the Prioritizer drivers are ended by their own call).
    void VoteEnd();

    // What a display program added to the vote name after "@@".
    std::string voteNameDetail;
    const std::string& startedPorts() const { return startedPorts_; }

private:
    void logCheck(const std::string& text, bool toScreen = true);
    void moveSlide(const char* macro);
    Controller& c_;
    bool slideShowHasFocus_ = false;
    std::string startedPorts_;
};

}  // namespace tlx
