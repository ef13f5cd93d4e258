#include "presentation/display/DisplayRun.h"

#include <fmt/format.h>

#include <cmath>

#include "core/Text.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {

constexpr const char* kQuestionShape = "tlx_Question";
constexpr const char* kAnswersShape = "tlx_Answers";
// After ENDVOTE and the reply to the GETVOTEINFO behind it: batches still on their way come
// within this quiet time.
constexpr double kQuietSeconds = 0.3;

std::string seconds(double s) { return fmt::format("{:g} s", s); }

std::string tagList() {
    std::string s;
    for (const char* t : kDisplayVoteTags) s += std::string(s.empty() ? "" : ", ") + t;
    return s;
}

}  // namespace

DisplayRun::DisplayRun(Scheduler& scheduler, DisplayLink& link, DisplayOptions options)
    : scheduler_(scheduler), link_(link), opt_(std::move(options)) {
    model_.tally.setCounting(false);
}

DisplayRun::~DisplayRun() { cancelAll(); }

double DisplayRun::now() const { return scheduler_.monotonicSeconds(); }

void DisplayRun::after(double s, std::function<void()> fn, std::uint64_t& slot) {
    const int ms = static_cast<int>(std::lround(std::max(s, 0.0) * 1000.0));
    if (slot) scheduler_.cancel(slot);
    std::uint64_t* target = &slot;
    slot = scheduler_.post(ms, [fn = std::move(fn), target] {
        *target = 0;
        fn();
    });
}

void DisplayRun::cancelAll() {
    for (std::uint64_t* slot : {&retryPost_, &endPost_, &tickPost_, &quietPost_})
        if (*slot) {
            scheduler_.cancel(*slot);
            *slot = 0;
        }
}

void DisplayRun::start() {
    if (phase_ != Phase::Idle) return;
    phase_ = Phase::Connecting;
    deadline_ = now() + opt_.connectSeconds;
    tryConnect();
}

void DisplayRun::tryConnect() {
    if (phase_ != Phase::Connecting) return;
    const LinkResult<bool> r = link_.init();
    if (r.ok()) {
        locate();
        return;
    }
    if (r.status == LinkStatus::NoController && now() < deadline_) {
        // Not on the bus yet, or still starting: ask again shortly.
        after(0.25, [this] { tryConnect(); }, retryPost_);
        return;
    }
    if (r.status == LinkStatus::NoController)
        fail(kExitNoController, "no controller answers (waited " + seconds(opt_.connectSeconds) + "): " + r.error);
    else
        fail(kExitNoController, "the controller did not take init: " + r.error);
}

void DisplayRun::locate() {
    int slide = opt_.slide.value_or(0);
    if (!opt_.slide) {
        const LinkResult<int> r = link_.currentSlide();
        if (r.status == LinkStatus::NoController) return fail(kExitNoController, "the controller stopped answering: " + r.error);
        if (r.ok()) slide = r.value;
        if (slide <= 0 && opt_.config.empty()) {
            const LinkResult<int> s = link_.showSlide();
            if (s.ok() && s.value > 0) {
                slide = s.value;
                if (note) note("the controller names no vote slide (tlxCurrentSlide is not set); the show is on slide " + numText(slide));
            }
        }
    }
    if (slide <= 0 && opt_.config.empty())
        return fail(kExitNoVote,
                    "no vote slide: the controller names none (the presentation tag tlxCurrentSlide is not set); give "
                    "--slide N, or --config TEXT");
    model_.slide = std::max(slide, 0);
    if (!readSetup(model_.slide)) return;
    VoteSetup& s = model_.setup;
    if (!s.problems.empty()) {
        // A vote configured otherwise than the slide asks would count the wrong thing: better
        // none, and the author told what to fix.
        const std::string source = opt_.config.empty()
                                       ? "the " + s.tag + " tag of slide " + numText(model_.slide)
                                       : std::string("the configuration given with --config");
        return fail(kExitNoVote, source + " cannot be read: " + join(s.problems, "; ") + "; no vote was sent");
    }
    if (s.reshowOf > 0) {
        if (note)
            note("slide " + numText(model_.slide) + " shows again the results of slide " + numText(s.reshowOf) +
                 "; this display keeps no results of earlier votes, so there is no vote to run");
        return done(0);
    }
    readSlideTexts(model_.slide);
    if (!opt_.voteName.empty()) s.voteName = keyLineValue(opt_.voteName);
    if (!opt_.keypadsActive.empty()) s.keypadsActive = opt_.keypadsActive;
    if (s.voteName.empty()) {
        // The keypads and the controller's log name the vote; "@@" would split the name.
        const std::string base = model_.question.empty() ? "Slide " + numText(model_.slide) : model_.question;
        s.voteName = replaceAll(keyLineValue(left(base, 60)), "@@", "@");
    }
    if (opt_.options)
        model_.options = *opt_.options;
    else if (s.options > 0)
        model_.options = s.options;
    else
        model_.options = model_.labels.empty() ? kDefaultOptionCount : static_cast<int>(model_.labels.size());
    if (note) note("vote: " + voteTitle(model_) + " (" + voteDescription(model_) + ")");

    queue_.clear();
    queue_.push_back("GETVOTEINFO");
    for (auto& line : setupLines(s, model_.options)) queue_.push_back(std::move(line));
    queue_.push_back("STARTVOTE");
    nextLine_ = 0;
    phase_ = Phase::Configuring;
    deadline_ = now() + opt_.connectSeconds;
    sendNext();
}

bool DisplayRun::readSetup(int slide) {
    if (!opt_.config.empty()) {
        model_.setup = readVoteSetup(opt_.tag.empty() ? "TLXVOTE" : opt_.tag, opt_.config);
        return true;
    }
    for (const char* tag : kDisplayVoteTags) {
        const LinkResult<std::string> r = link_.slideTag(slide, tag);
        if (r.status == LinkStatus::NoController) {
            fail(kExitNoController, "the controller stopped answering: " + r.error);
            return false;
        }
        if (r.status == LinkStatus::Unavailable) {
            fail(kExitNoVote, "cannot read the vote tags of slide " + numText(slide) +
                                  ": no simulated presentation program serves them here; give --config TEXT");
            return false;
        }
        if (!r.ok()) {
            fail(kExitNoVote, "cannot read the vote tags of slide " + numText(slide) + ": " + r.error);
            return false;
        }
        if (!trim(r.value).empty()) {
            model_.setup = readVoteSetup(tag, r.value);
            return true;
        }
    }
    fail(kExitNoVote, "slide " + numText(slide) + " is not a vote slide (it carries none of " + tagList() + ")");
    return false;
}

void DisplayRun::readSlideTexts(int slide) {
    model_.question = keyLineValue(opt_.question.empty() ? model_.setup.question : opt_.question);
    if (slide <= 0) return;
    if (model_.question.empty()) {
        const LinkResult<std::string> q = link_.slideText(slide, kQuestionShape);
        if (q.ok()) model_.question = keyLineValue(replaceAll(replaceAll(q.value, "\r", " "), "\v", " "));
    }
    const LinkResult<std::string> a = link_.slideText(slide, kAnswersShape);
    if (!a.ok()) return;
    for (const std::string_view p : controllerLines(a.value)) {
        const std::string t = trim(p);
        if (!t.empty()) model_.labels.push_back(t);
    }
}

void DisplayRun::sendNext() {
    if (phase_ != Phase::Configuring) return;
    while (nextLine_ < queue_.size()) {
        const std::string& line = queue_[nextLine_];
        const LinkResult<bool> r = link_.sendCommand(line);
        if (r.status == LinkStatus::NoController)
            return fail(kExitNoController, "the controller stopped answering: " + r.error);
        if (!r.ok()) return fail(kExitNoVote, "the controller did not take \"" + line + "\": " + r.error);
        if (!r.value) {
            // The controller has not finished initialising: it takes commands once it has.
            if (now() < deadline_) {
                after(0.2, [this] { sendNext(); }, retryPost_);
                return;
            }
            return fail(kExitNoController,
                        "the controller did not finish initialising within " + seconds(opt_.connectSeconds));
        }
        sent_.push_back(line);
        ++nextLine_;
        if (line == "GETVOTEINFO") ++infoAsked_;
        if (line == "STARTVOTE") return voteOpened();
    }
}

void DisplayRun::voteOpened() {
    phase_ = Phase::Running;
    openedAt_ = now();
    model_.tally.setCounting(true);
    const double limit = opt_.seconds > 0 ? opt_.seconds : model_.setup.seconds;
    if (note) note("vote open" + (limit > 0 ? "; it ends after " + seconds(limit) : std::string("; it ends when told")));
    if (limit > 0) after(limit, [this] { requestEnd("time is up"); }, endPost_);
    changed_ = true;
    after(opt_.refreshSeconds, [this] { tick(); }, tickPost_);
}

void DisplayRun::tick() {
    if (phase_ != Phase::Running) return;
    model_.seconds = now() - openedAt_;
    if (changed_ && live) live(model_);
    changed_ = false;
    after(opt_.refreshSeconds, [this] { tick(); }, tickPost_);
}

void DisplayRun::onData(const std::string& sData) {
    if (phase_ == Phase::Done) return;
    const VoteTally::Fed fed = model_.tally.feed(sData);
    if (fed.ballots > 0 || fed.skipped > 0) changed_ = true;
    if (phase_ != Phase::Ending) return;
    // Ending: done once the reply to our last GETVOTEINFO is in and the batches have gone quiet.
    if (model_.tally.infoCount("maxKeypads") >= infoAsked_ && (fed.ballots > 0 || !fed.messages.empty()))
        after(kQuietSeconds, [this] { finishVote(); }, quietPost_);
}

void DisplayRun::onStartVoteCount(int bases) {
    if (phase_ == Phase::Done) return;
    model_.bases = bases;
    if (note) note(bases > 0 ? "the vote is open on " + numText(bases) + (bases == 1 ? " base station" : " base stations")
                             : "no base station took the vote");
}

void DisplayRun::onBaseError(int base, const std::string& message) {
    if (note && phase_ != Phase::Done) note("base " + numText(base) + " error: " + printable(message));
}

void DisplayRun::onBaseFeedback(int base, const std::string& message) {
    if (note && phase_ != Phase::Done) note("base " + numText(base) + ": " + printable(message));
}

void DisplayRun::onControllerGone() {
    switch (phase_) {
        case Phase::Idle:
        case Phase::Connecting:
        case Phase::Done:
            return;  // not reached yet (it may still come), or over
        case Phase::Configuring:
            return fail(kExitNoController, "the controller left the bus before the vote opened");
        case Phase::Running:
        case Phase::Ending:
            model_.controllerGone = true;
            if (note) note("the controller left the bus");
            return finishVote();
    }
}

void DisplayRun::requestEnd(const std::string& why) {
    switch (phase_) {
        case Phase::Idle:
        case Phase::Done:
            return;
        case Phase::Connecting:
        case Phase::Configuring:
            if (note) note("stopped before the vote opened (" + why + ")");
            return done(0);
        case Phase::Ending:
            return finishVote();
        case Phase::Running:
            break;
    }
    phase_ = Phase::Ending;
    model_.seconds = now() - openedAt_;
    if (note) note("ending the vote (" + why + ")");
    const LinkResult<bool> r = link_.sendCommand("ENDVOTE");
    if (r.status == LinkStatus::NoController) {
        model_.controllerGone = true;
        return finishVote();
    }
    model_.ended = true;
    if (r.ok() && r.value) sent_.push_back("ENDVOTE");
    else if (note) note("the controller did not take ENDVOTE" + (r.error.empty() ? std::string() : ": " + r.error));
    // The reply to GETVOTEINFO comes behind every batch queued before it.
    const LinkResult<bool> info = link_.sendCommand("GETVOTEINFO");
    if (info.ok() && info.value) {
        sent_.push_back("GETVOTEINFO");
        ++infoAsked_;
    }
    after(opt_.settleSeconds, [this] { finishVote(); }, endPost_);
    if (model_.tally.infoCount("maxKeypads") >= infoAsked_) after(kQuietSeconds, [this] { finishVote(); }, quietPost_);
}

void DisplayRun::finishVote() {
    if (phase_ == Phase::Done) return;
    if (phase_ == Phase::Running) model_.seconds = now() - openedAt_;
    model_.tally.setCounting(false);
    phase_ = Phase::Done;
    cancelAll();
    if (result) result(model_);
    done(0);
}

void DisplayRun::fail(int code, const std::string& why) {
    if (problem) problem(why);
    done(code);
}

void DisplayRun::done(int code) {
    cancelAll();
    phase_ = Phase::Done;
    if (exitCode_ >= 0) return;
    exitCode_ = code;
    if (finished) finished(code);
}

}  // namespace tlx
