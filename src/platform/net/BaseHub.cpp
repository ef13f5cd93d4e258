#include "platform/net/BaseHub.h"

#include <algorithm>
#include <charconv>

#include "core/Text.h"
#include "platform/net/BaseCalls.h"
#include "platform/sim/basesim/SimBaseLibrary.h"
#include "ports/Scheduler.h"

namespace tlx {

using wire::Fields;
using wire::Kind;

struct BaseHub::Session {
    std::uint64_t id = 0;
    Link link;
    wire::FrameDecoder decoder;
    bool greeted = false;
    std::map<std::uint32_t, std::unique_ptr<KelvarinBase>> objects;
};

namespace {

bool readInt(const std::string& s, int& v) { return wire::decodeValue(s, v); }

std::string restAfter(const std::string& line, std::size_t words) {
    std::size_t at = 0;
    for (std::size_t w = 0; w < words; ++w) {
        at = line.find_first_not_of(" \t", at);
        if (at == std::string::npos) return "";
        at = line.find_first_of(" \t", at);
        if (at == std::string::npos) return "";
    }
    const auto from = line.find_first_not_of(" \t", at);
    return from == std::string::npos ? "" : line.substr(from);
}

}  // namespace

std::vector<ScenarioLine> parseScenario(const std::string& text, std::vector<std::string>* problems) {
    std::vector<ScenarioLine> out;
    int n = 0;
    for (std::string raw : split(replaceAll(text, "\r", ""), "\n")) {
        ++n;
        if (const auto hash = raw.find('#'); hash != std::string::npos) raw.erase(hash);
        const std::string line = trim(raw);
        if (line.empty()) continue;
        const auto [first, rest] = splitOnce(line, " ");
        double at = 0;
        const auto [p, ec] = std::from_chars(first.data(), first.data() + first.size(), at);
        if (ec != std::errc() || p != first.data() + first.size() || at < 0 || trim(rest).empty()) {
            if (problems) problems->push_back("line " + std::to_string(n) + ": " + line);
            continue;
        }
        out.push_back({at, trim(rest), n});
    }
    std::stable_sort(out.begin(), out.end(), [](const ScenarioLine& a, const ScenarioLine& b) { return a.at < b.at; });
    return out;
}

BaseHub::BaseHub(Scheduler& scheduler, SimBaseLibrary& library) : scheduler_(scheduler), lib_(library) {}

BaseHub::~BaseHub() {
    alive_.reset();
    sessions_.clear();
}

std::uint64_t BaseHub::open(Link link) {
    auto s = std::make_unique<Session>();
    s->id = ++nextSession_;
    s->link = std::move(link);
    Session& ref = *s;
    sessions_[ref.id] = std::move(s);
    say("connection " + std::to_string(ref.id) + " from " + ref.link.peer);
    send(ref, Kind::Hello, 0, 0, {wire::kHelloMagic, std::to_string(wire::kBaseProtocolVersion), "tlx-basesim"});
    return ref.id;
}

void BaseHub::closed(std::uint64_t connection) {
    if (sessions_.erase(connection)) say("connection " + std::to_string(connection) + " closed");
}

void BaseHub::drop(std::uint64_t connection, const std::string& why) {
    const auto it = sessions_.find(connection);
    if (it == sessions_.end()) return;
    say("connection " + std::to_string(connection) + " dropped: " + why);
    auto close = it->second->link.close;
    sessions_.erase(it);  // its base objects let go of their bases
    if (close) close();
}

void BaseHub::dropAll() {
    std::vector<std::uint64_t> ids;
    for (const auto& [id, s] : sessions_) ids.push_back(id);
    for (auto id : ids) drop(id, "dropped on command");
}

void BaseHub::send(Session& s, Kind kind, std::uint32_t id, std::uint32_t handle, Fields fields) {
    wire::Frame f;
    f.kind = kind;
    f.id = id;
    f.handle = handle;
    f.fields = std::move(fields);
    if (s.link.send) s.link.send(wire::encodeFrame(f));
}

void BaseHub::reply(std::uint64_t connection, Kind kind, std::uint32_t id, std::uint32_t handle, Fields fields) {
    auto sendNow = [this, connection, kind, id, handle](Fields f) {
        const auto it = sessions_.find(connection);
        if (it != sessions_.end()) send(*it->second, kind, id, handle, std::move(f));
    };
    if (replyDelayMs <= 0) {
        sendNow(std::move(fields));
        return;
    }
    later(replyDelayMs, [sendNow, f = std::move(fields)]() mutable { sendNow(std::move(f)); });
}

void BaseHub::data(std::uint64_t connection, std::string_view bytes) {
    auto it = sessions_.find(connection);
    if (it == sessions_.end()) return;
    Session& s = *it->second;
    s.decoder.feed(bytes);
    wire::Frame f;
    while (true) {
        const auto status = s.decoder.next(f);
        if (status == wire::FrameDecoder::Status::NeedMore) return;
        if (status == wire::FrameDecoder::Status::WrongVersion) {
            const std::string why = wire::versionRefusal(s.decoder.theirVersion(), "tlx-basesim");
            send(s, Kind::Refused, 0, 0, {why});
            drop(connection, why);
            return;
        }
        if (status == wire::FrameDecoder::Status::Malformed) {
            const std::string why = "malformed frame: " + s.decoder.error();
            send(s, Kind::Refused, 0, 0, {why});
            drop(connection, why);
            return;
        }
        handle(s, f);
        // The command may have closed this very connection.
        if (!sessions_.count(connection)) return;
    }
}

void BaseHub::handle(Session& s, wire::Frame& f) {
    const std::uint64_t connection = s.id;
    switch (f.kind) {
        case Kind::Hello:
            if (f.fields.empty() || f.fields[0] != wire::kHelloMagic) {
                send(s, Kind::Refused, 0, 0, {"not a tallix base-library client"});
                drop(connection, "not a tallix base-library client");
                return;
            }
            s.greeted = true;
            return;
        case Kind::Request: {
            if (!s.greeted || f.handle == 0) {
                send(s, Kind::Refused, 0, 0, {"request before hello or without a base object"});
                drop(connection, "request before hello or without a base object");
                return;
            }
            auto& object = s.objects[f.handle];
            if (!object) {
                object = lib_.createBase(LibraryGeneration::Prioritizer2);
                const std::uint32_t handle = f.handle;
                wire::forwardEvents(*object, [this, connection, handle](Fields event) {
                    const auto it = sessions_.find(connection);
                    if (it != sessions_.end()) send(*it->second, Kind::Event, 0, handle, std::move(event));
                });
            }
            Fields answer;
            if (!wire::serveRequest(*object, f.fields, answer)) {
                const std::string why =
                    "cannot carry out " + (f.fields.empty() ? std::string("an empty request") : "\"" + f.fields[0] + "\"");
                send(s, Kind::Refused, 0, 0, {why});
                drop(connection, why);
                return;
            }
            // A released object lets go of its base.
            if (f.fields[0] == "Disconnect") s.objects.erase(f.handle);
            reply(connection, Kind::Reply, f.id, f.handle, std::move(answer));
            return;
        }
        case Kind::Control: {
            const Result r = f.fields.size() == 1 ? execute(f.fields[0]) : Result{"a control frame holds one line", ""};
            reply(connection, Kind::ControlReply, f.id, 0, {r.error, r.output});
            return;
        }
        case Kind::Reply:
        case Kind::Event:
        case Kind::ControlReply:
        case Kind::Refused:
            return;  // nothing the emulator waits for
    }
}

bool BaseHub::votesOpen() const {
    std::size_t bound = 0, open = 0;
    for (std::size_t i = 0; i < lib_.baseCount(); ++i) {
        const SimBaseStation& st = const_cast<SimBaseLibrary&>(lib_).station(i);
        if (st.attachedObjects() == 0) continue;
        ++bound;
        if (st.voteOpen) ++open;
    }
    return bound > 0 && open == bound;
}

BaseHub::Result BaseHub::execute(const std::string& line) {
    const auto w = split(trim(replaceAll(line, "\t", " ")), " ");
    std::vector<std::string> a;
    for (const auto& x : w)
        if (!x.empty()) a.push_back(x);
    if (a.empty()) return {"empty command", ""};
    const std::string verb = toLower(a[0]);
    auto said = [](const SimOutcome& o) { return Result{o.ok ? "" : (o.message.empty() ? "failed" : o.message), o.ok ? o.message : ""}; };
    auto need = [&](std::size_t n, const char* usage) -> std::optional<Result> {
        if (a.size() < n) return Result{std::string("usage: ") + usage, ""};
        return std::nullopt;
    };
    int k = 0, n = 0;
    if (verb == "press") {
        if (auto u = need(4, "press BASE KEYPAD KEYS")) return *u;
        if (!readInt(a[2], k)) return {"not a keypad number: " + a[2], ""};
        return said(lib_.press(a[1], k, restAfter(line, 3)));
    }
    if (verb == "crowd") {
        if (auto u = need(5, "crowd BASE N ANSWERS PER-SECOND")) return *u;
        if (!readInt(a[2], n) || !readInt(a[4], k)) return {"usage: crowd BASE N ANSWERS PER-SECOND", ""};
        return said(lib_.crowd(a[1], n, a[3], k));
    }
    if (verb == "mic" || verb == "withdraw") {
        if (auto u = need(3, "mic|withdraw BASE KEYPAD")) return *u;
        if (!readInt(a[2], k)) return {"not a keypad number: " + a[2], ""};
        return said(lib_.micRequest(a[1], k, verb == "withdraw"));
    }
    if (verb == "text") {
        if (auto u = need(4, "text BASE KEYPAD TEXT")) return *u;
        if (!readInt(a[2], k)) return {"not a keypad number: " + a[2], ""};
        return said(lib_.text(a[1], k, restAfter(line, 3)));
    }
    if (verb == "screen") {
        if (auto u = need(3, "screen BASE KEYPAD")) return *u;
        if (!readInt(a[2], k)) return {"not a keypad number: " + a[2], ""};
        std::string shown;
        const SimOutcome o = lib_.screen(a[1], k, shown);
        return o.ok ? Result{"", shown} : said(o);
    }
    if (verb == "bases") return {"", join(lib_.bases(), "\n")};
    if (verb == "connections") return {"", std::to_string(sessions_.size())};
    if (verb == "refuse") {
        if (auto u = need(4, "refuse BASE OPERATION CODE [TIMES]")) return *u;
        int times = 1;
        if (!readInt(a[3], n) || (a.size() > 4 && !readInt(a[4], times)))
            return {"usage: refuse BASE OPERATION CODE [TIMES]", ""};
        if (!wire::knownOperation(a[2])) return {"no operation " + a[2], ""};
        return said(lib_.fail(a[1], a[2], n, times));
    }
    if (verb == "silent") {
        if (auto u = need(4, "silent BASE OPERATION on|off")) return *u;
        return said(lib_.neverReply(a[1], a[2], toLower(a[3]) == "on"));
    }
    if (verb == "slow") {
        if (auto u = need(2, "slow MS")) return *u;
        if (!readInt(a[1], n) || n < 0) return {"usage: slow MS", ""};
        replyDelayMs = n;
        return {};
    }
    if (verb == "drop") {
        if (a.size() > 1 && (!readInt(a[1], n) || n < 0)) return {"usage: drop [MS]", ""};
        // Never inside the frame being read: the answer to a control frame goes out first.
        later(a.size() == 1 ? 0 : n, [this] { dropAll(); });
        return {};
    }
    if (verb == "disconnect") {
        if (auto u = need(2, "disconnect BASE")) return *u;
        return said(lib_.disconnect(a[1]));
    }
    if (verb == "reconnect") {
        if (auto u = need(2, "reconnect BASE")) return *u;
        return said(lib_.reconnect(a[1]));
    }
    if (verb == "error") {
        if (auto u = need(3, "error BASE CODE [TEXT]")) return *u;
        if (!readInt(a[2], n)) return {"usage: error BASE CODE [TEXT]", ""};
        return said(lib_.error(a[1], n, restAfter(line, 3)));
    }
    return {"unknown command " + a[0], ""};
}

void BaseHub::play(std::vector<ScenarioLine> lines) {
    scenario_ = std::move(lines);
    next_ = 0;
    shiftMs_ = 0;
    scenarioStartMs_ = scheduler_.monotonicSeconds() * 1000.0;
    runScenario();
}

void BaseHub::later(int delayMs, std::function<void()> fn) {
    scheduler_.post(delayMs, [alive = std::weak_ptr<bool>(alive_), fn = std::move(fn)] {
        if (!alive.expired()) fn();
    });
}

void BaseHub::runScenario() {
    while (next_ < scenario_.size()) {
        const ScenarioLine& step = scenario_[next_];
        const double elapsed = scheduler_.monotonicSeconds() * 1000.0 - scenarioStartMs_;
        const double due = step.at * 1000.0 + shiftMs_;
        if (due > elapsed + 0.5) {
            later(static_cast<int>(due - elapsed + 0.5), [this] { runScenario(); });
            return;
        }
        const auto words = split(step.command, " ");
        if (!words.empty() && toLower(words[0]) == "await") {
            double limit = 30;
            if (words.size() > 2) limit = ParseNumber(words[2]);
            const double startedMs = scheduler_.monotonicSeconds() * 1000.0;
            const std::string what = words.size() > 1 ? toLower(words[1]) : "";
            if (what != "voteopen") {
                say("scenario line " + std::to_string(step.line) + ": cannot await \"" + what + "\"");
                ++next_;
                continue;
            }
            // Polls, and moves the later lines on by the time it waited. Only the pending post
            // holds the poll, so nothing is left behind when the hub goes first.
            auto poll = std::make_shared<std::function<void()>>();
            *poll = [this, startedMs, limit, weak = std::weak_ptr<std::function<void()>>(poll)] {
                const auto self = weak.lock();
                const double waited = scheduler_.monotonicSeconds() * 1000.0 - startedMs;
                if (votesOpen() || waited >= limit * 1000.0) {
                    if (!votesOpen()) say("await voteopen: no vote opened within " + numText(limit) + " s");
                    shiftMs_ += waited;
                    ++next_;
                    runScenario();
                    return;
                }
                later(50, [self] { (*self)(); });
            };
            later(0, [poll] { (*poll)(); });
            return;
        }
        ++next_;
        const Result r = execute(step.command);
        say("scenario " + step.command + (r.error.empty() ? "" : ": " + r.error));
    }
}

}  // namespace tlx
