#include "platform/sim/SimScript.h"

#include <algorithm>
#include <cctype>

#include "core/Text.h"
#include "ports/Scheduler.h"

namespace tlx {

namespace {
std::vector<std::string> words(const std::string& s) {
    std::vector<std::string> w;
    std::string cur;
    for (char c : s) {
        if (c == ' ' || c == '\t') {
            if (!cur.empty()) w.push_back(cur);
            cur.clear();
        } else {
            cur += c;
        }
    }
    if (!cur.empty()) w.push_back(cur);
    return w;
}

int toInt(const std::string& s) {
    const double d = ParseNumber(s);
    return d > 1e9 || d < -1e9 ? 0 : static_cast<int>(d);
}
}  // namespace

int scriptKey(const std::string& name) {
    const std::string u = toUpper(name);
    if (u.size() == 1 && std::isalnum(static_cast<unsigned char>(u[0]))) return u[0];
    static const std::pair<const char*, int> named[] = {
        {"ENTER", 13}, {"SPACE", 32}, {"PAGEUP", 33}, {"PAGEDOWN", 34}, {"END", 35}, {"HOME", 36},
        {"LEFT", 37},  {"UP", 38},    {"RIGHT", 39},  {"DOWN", 40},     {"ESCAPE", 27}, {"LSHIFT", 160},
        {"RSHIFT", 161}, {"LCTRL", 162}, {"RCTRL", 163}, {"LALT", 164}, {"RALT", 165}};
    for (const auto& [n, code] : named)
        if (u == n) return code;
    if (isNumeric(u)) return toInt(u);
    return 0;
}

std::vector<ScriptStep> parseScript(const std::string& text, std::vector<std::string>* problems) {
    std::vector<ScriptStep> steps;
    int lineNo = 0;
    for (std::string line : split(replaceAll(text, "\r\n", "\n"), "\n")) {
        ++lineNo;
        if (const auto hash = line.find('#'); hash != std::string::npos && line.find_first_not_of(" \t") == hash)
            continue;
        // A comment may also close a line: blanks, then "#".
        for (std::size_t i = 1; i < line.size(); ++i)
            if (line[i] == '#' && (line[i - 1] == ' ' || line[i - 1] == '\t')) {
                line.resize(i);
                break;
            }
        const std::string t = trim(line);
        if (t.empty()) continue;
        const auto w = words(t);
        if (w.size() < 2 || !isNumeric(w[0]) || ParseNumber(w[0]) < 0) {
            if (problems) problems->push_back("line " + numText(lineNo) + ": " + t);
            continue;
        }
        ScriptStep s;
        s.at = ParseNumber(w[0]);
        s.verb = w[1];
        s.args.assign(w.begin() + 2, w.end());
        const auto verbAt = t.find(w[1], w[0].size());
        s.rest = trim(t.substr(verbAt + w[1].size()));
        s.line = lineNo;
        steps.push_back(std::move(s));
    }
    return steps;
}

SimScript::SimScript(Scheduler& scheduler, SimShowControl* show, SimBasesControl* bases)
    : scheduler_(scheduler), show_(show), bases_(bases) {}

SimScript::~SimScript() {
    if (post_) scheduler_.cancel(post_);
}

double SimScript::elapsedMs() const { return scheduler_.monotonicSeconds() * 1000.0 - startMs_; }

void SimScript::start() {
    if (post_) scheduler_.cancel(post_);
    post_ = 0;
    std::stable_sort(steps_.begin(), steps_.end(), [](const ScriptStep& a, const ScriptStep& b) { return a.at < b.at; });
    done_ = 0;
    shiftMs_ = 0;
    startMs_ = scheduler_.monotonicSeconds() * 1000.0;
    scheduleNext();
}

void SimScript::scheduleNext() {
    post_ = 0;
    if (done_ >= steps_.size()) return;
    const double due = steps_[done_].at * 1000.0 + static_cast<double>(shiftMs_);
    const int delay = static_cast<int>(std::max(0.0, due - elapsedMs()) + 0.5);
    post_ = scheduler_.post(delay, [this] { runNext(); });
}

void SimScript::runNext() {
    post_ = 0;
    const ScriptStep& step = steps_[done_++];
    if (report) report("step " + numText(step.line) + ": " + step.verb + (step.rest.empty() ? "" : " " + step.rest));
    if (iequals(step.verb, "await")) {
        await(step, elapsedMs());
        return;
    }
    const std::string failure = run(step);
    if (!failure.empty() && report) report("step " + numText(step.line) + " failed: " + failure);
    scheduleNext();
}

void SimScript::await(const ScriptStep& step, double startedMs) {
    post_ = 0;
    const std::string what = step.args.empty() ? std::string() : step.args[0];
    const double limit = step.args.size() > 1 && isNumeric(step.args[1]) ? ParseNumber(step.args[1]) : 30.0;
    auto moveOn = [this, &step](const std::string& failure) {
        if (!failure.empty() && report) report("step " + numText(step.line) + " failed: " + failure);
        // Later steps keep their distance from this moment.
        shiftMs_ = std::max(shiftMs_, static_cast<std::int64_t>(elapsedMs() - step.at * 1000.0 + 0.5));
        scheduleNext();
    };
    if (what.empty()) return moveOn("Await needs a condition");
    const std::optional<bool> holds = condition ? condition(what) : std::nullopt;
    if (!holds) return moveOn("no condition \"" + what + "\" to wait for");
    if (*holds) return moveOn({});
    if (elapsedMs() - startedMs >= limit * 1000.0)
        return moveOn(what + " did not come within " + numText(limit) + " seconds");
    post_ = scheduler_.post(awaitPollMs, [this, &step, startedMs] { await(step, startedMs); });
}

std::string SimScript::run(const ScriptStep& s) {
    const std::string v = toLower(s.verb);
    auto arg = [&](std::size_t i) { return i < s.args.size() ? s.args[i] : std::string(); };
    auto need = [&](std::size_t n) { return s.args.size() >= n; };
    if (v == "note") return {};
    if (v == "await") return "Await waits only in a started script";
    if (v == "command") {
        if (!command) return "no display program connection";
        return command(s.rest) ? std::string() : "the controller refused the command";
    }
    if (v == "click") {
        if (!click) return "no windows to click";
        return need(2) ? click(arg(0), arg(1)) : "Click needs a window and a control";
    }
    if (v == "open" || v == "begin" || v == "next" || v == "previous" || v == "goto" || v == "end" || v == "close" ||
        v == "key" || v == "keydown" || v == "keyup") {
        if (!show_) return "no simulated presentation program";
        if (v == "open") {
            std::filesystem::path p = s.rest;
            if (p.is_relative()) p = folder / p;
            return show_->Open(p.string());
        }
        if (v == "begin") return show_->Begin();
        if (v == "next") return show_->Next();
        if (v == "previous") return show_->Previous();
        if (v == "goto") return need(1) ? show_->GoTo(toInt(arg(0))) : "GoTo needs a slide";
        if (v == "end") return show_->End();
        if (v == "close") return show_->Close();
        const int key = scriptKey(arg(0));
        if (!key) return "not a key: " + arg(0);
        if (v == "keydown") return show_->KeyDown(key);
        if (v == "keyup") return show_->KeyUp(key);
        if (auto e = show_->KeyDown(key); !e.empty()) return e;
        return show_->KeyUp(key);
    }
    if (!bases_) return "no simulated base stations";
    if (v == "press") return need(3) ? bases_->Press(arg(0), toInt(arg(1)), arg(2)) : "Press needs base, keypad, keys";
    if (v == "crowd")
        return need(4) ? bases_->Crowd(arg(0), toInt(arg(1)), arg(2), toInt(arg(3))) : "Crowd needs base, keypads, answers, rate";
    if (v == "micrequest")
        return need(2) ? bases_->MicRequest(arg(0), toInt(arg(1)), iequals(arg(2), "withdraw")) : "MicRequest needs base, keypad";
    if (v == "text") {
        if (!need(3)) return "Text needs base, keypad, text";
        const auto pos = s.rest.find(arg(2), s.rest.find(arg(1), arg(0).size()) + arg(1).size());
        return bases_->Text(arg(0), toInt(arg(1)), s.rest.substr(pos));
    }
    if (v == "fail") return need(3) ? bases_->Fail(arg(0), arg(1), toInt(arg(2))) : "Fail needs base, operation, code";
    if (v == "disconnect") return need(1) ? bases_->Disconnect(arg(0)) : "Disconnect needs a base";
    if (v == "reconnect") return need(1) ? bases_->Reconnect(arg(0)) : "Reconnect needs a base";
    return "unknown step " + s.verb;
}

}  // namespace tlx
