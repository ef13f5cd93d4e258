#pragma once
// One run of a display program: reach the controller, find the vote slide and its
// configuration, configure and open the vote, tally what arrives, end the vote (after a time,
// when told, or when the controller goes) and show the result. Every wait has a time limit;
// nothing here blocks: the run reacts to its link's answers, the controller's events and the
// scheduler's posts.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "presentation/display/ResultView.h"

namespace tlx {

class Scheduler;

// How a call to the controller (or to the simulated presentation program beside it) went.
enum class LinkStatus {
    Ok,
    NoController,  // nobody answers on the bus name, or not in time
    Unavailable,   // the object or method is not there (no simulation serves)
    Failed,        // the call was answered with an error
};

template <class T>
struct LinkResult {
    T value{};
    LinkStatus status = LinkStatus::Ok;
    std::string error;
    bool ok() const { return status == LinkStatus::Ok; }
};

// The display program's calls: the automation class, and the simulated presentation program
// (the only way to read a slide's tags on this platform).
class DisplayLink {
public:
    virtual ~DisplayLink() = default;
    virtual LinkResult<bool> init() = 0;
    virtual LinkResult<int> currentSlide() = 0;
    virtual LinkResult<bool> sendCommand(const std::string& line) = 0;
    virtual LinkResult<int> showSlide() = 0;
    virtual LinkResult<std::string> slideTag(int slide, const std::string& name) = 0;
    // The text of a named shape on the slide, paragraphs separated by "\r".
    virtual LinkResult<std::string> slideText(int slide, const std::string& shape) = 0;
};

struct DisplayOptions {
    std::optional<int> slide;  // else the controller's current vote slide
    std::string config;        // the tag's configuration text; else read from the slide
    std::string tag;           // the vote tag `config` belongs to (default TLXVOTE)
    std::string question;
    std::string voteName;
    std::string keypadsActive;
    std::optional<int> options;
    double seconds = 0;           // end the vote after this long; 0: when told
    double connectSeconds = 10;   // how long to wait for the controller
    double refreshSeconds = 0.25; // at most this often a redraw
    double settleSeconds = 2;     // after ENDVOTE: at most this long for the last batches
};

class DisplayRun {
public:
    enum class Phase { Idle, Connecting, Configuring, Running, Ending, Done };

    DisplayRun(Scheduler& scheduler, DisplayLink& link, DisplayOptions options);
    ~DisplayRun();
    DisplayRun(const DisplayRun&) = delete;
    DisplayRun& operator=(const DisplayRun&) = delete;

    // What the run has to say (progress, the controller's other messages, problems).
    std::function<void(const std::string&)> note;
    // A redraw of the live tally (at most once per refresh period, only after a change).
    std::function<void(const DisplayModel&)> live;
    // The final result, once.
    std::function<void(const DisplayModel&)> result;
    // Why the run cannot go on (before the vote opened).
    std::function<void(const std::string&)> problem;
    // The program ends with this code; called once, last.
    std::function<void(int)> finished;

    void start();

    // The controller's events.
    void onData(const std::string& sData);
    void onStartVoteCount(int bases);
    void onBaseError(int base, const std::string& message);
    void onBaseFeedback(int base, const std::string& message);
    void onControllerGone();
    // Ends the vote (a line typed, a signal). A second request while ending ends at once.
    void requestEnd(const std::string& why);

    Phase phase() const { return phase_; }
    const DisplayModel& model() const { return model_; }
    int exitCode() const { return exitCode_; }
    // The lines sent with SendCommand, in order.
    const std::vector<std::string>& sent() const { return sent_; }

    // Exit codes.
    static constexpr int kExitNoVote = 1;
    static constexpr int kExitNoController = 3;

private:
    void tryConnect();
    void locate();
    bool readSetup(int slide);
    void readSlideTexts(int slide);
    void sendNext();
    void voteOpened();
    void tick();
    void finishVote();
    void fail(int code, const std::string& why);
    void done(int code);
    // Runs fn after the time, in place of whatever the slot held.
    void after(double seconds, std::function<void()> fn, std::uint64_t& slot);
    void cancelAll();
    double now() const;

    Scheduler& scheduler_;
    DisplayLink& link_;
    DisplayOptions opt_;
    DisplayModel model_;
    Phase phase_ = Phase::Idle;
    int exitCode_ = -1;
    double deadline_ = 0;
    double openedAt_ = 0;
    std::vector<std::string> queue_;  // lines still to send
    std::size_t nextLine_ = 0;
    std::vector<std::string> sent_;
    bool changed_ = false;
    long long infoAsked_ = 0;  // GETVOTEINFO sent
    std::uint64_t retryPost_ = 0;  // connecting, or sending the configuration
    std::uint64_t endPost_ = 0;    // the vote's time, then the limit of ending
    std::uint64_t tickPost_ = 0;   // the next redraw
    std::uint64_t quietPost_ = 0;  // ending: the last batches are in
};

}  // namespace tlx
