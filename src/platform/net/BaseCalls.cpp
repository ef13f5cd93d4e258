#include "platform/net/BaseCalls.h"

#include <map>

namespace tlx::wire {

namespace {

using Server = std::function<bool(KelvarinBase&, const Fields&, Fields&)>;

// Decodes the inputs of a member, calls it and encodes its status and results.
template <class... A>
Server serve(int (KelvarinBase::*fn)(A...)) {
    return [fn](KelvarinBase& base, const Fields& request, Fields& reply) {
        std::tuple<std::decay_t<A>...> values;
        std::size_t at = 1;
        bool ok = true;
        auto read = [&]<std::size_t... I>(std::index_sequence<I...>) {
            [[maybe_unused]] auto one = [&](auto tag, auto& value) {
                if constexpr (!isResult<typename decltype(tag)::type>) {
                    if (!ok) return;
                    if (at >= request.size()) {
                        ok = false;
                        return;
                    }
                    ok = decodeValue(request[at++], value);
                }
            };
            (one(std::type_identity<A>{}, std::get<I>(values)), ...);
        };
        read(std::index_sequence_for<A...>{});
        if (!ok || at != request.size()) return false;
        const int status = std::apply([&](auto&... v) { return (base.*fn)(v...); }, values);
        reply = {encodeValue(status)};
        auto write = [&]<std::size_t... I>(std::index_sequence<I...>) {
            [[maybe_unused]] auto one = [&](auto tag, const auto& value) {
                if constexpr (isResult<typename decltype(tag)::type>) reply.push_back(encodeValue(value));
            };
            (one(std::type_identity<A>{}, std::get<I>(values)), ...);
        };
        write(std::index_sequence_for<A...>{});
        return true;
    };
}

#define OP(name) {#name, serve(&KelvarinBase::name)}

const std::map<std::string, Server>& operations() {
    static const std::map<std::string, Server> table = {
        OP(GetUSBDevices),
        OP(GetEthernetDevices),
        OP(Connect),
        OP(Disconnect),
        OP(GetBaseConfig),
        OP(SetBaseConfig),
        OP(GetSessionConfig),
        OP(SetSessionConfig),
        OP(RadioEnable),
        OP(RadioStatus),
        OP(ResetBase),
        OP(RebootRadio),
        OP(GetKeypadConfig),
        OP(SetKeypadConfig),
        OP(GetRegistry),
        OP(GetKeypadFromRegistry),
        OP(AddKeypadToRegistry),
        OP(DeleteKeypadFromRegistry),
        OP(DeleteRegistry),
        OP(UpdateRegistryFlashRIT),
        OP(StartAudio),
        OP(StopAudio),
        OP(PrepareKeypadSurveyScan),
        OP(BeginKeypadSurveyScan),
        OP(EndKeypadSurveyScan),
        OP(StartVote),
        OP(PrepareVote),
        OP(BeginLiveVote),
        OP(PauseVote),
        OP(ResumeVote),
        OP(EndVote),
        OP(GetChannelList),
        OP(ChannelScan),
        OP(ShowWinningKeypad),
        OP(SetPresenterEchoMessage),
        OP(SetPresenterGotoMenu),
        OP(SetPresenterMenu),
    };
    return table;
}

#undef OP

// ---- events ----

using Raiser = std::function<bool(KelvarinBase&, const Fields&)>;

template <class... A>
Raiser raiser(BaseEvent<A...> KelvarinBase::*event) {
    return [event](KelvarinBase& base, const Fields& f) {
        if (f.size() != 1 + sizeof...(A)) return false;
        std::tuple<std::decay_t<A>...> values;
        bool ok = true;
        auto read = [&]<std::size_t... I>(std::index_sequence<I...>) {
            ((ok = ok && decodeValue(f[1 + I], std::get<I>(values))), ...);
        };
        read(std::index_sequence_for<A...>{});
        if (!ok) return false;
        std::apply([&](const auto&... v) { (base.*event)(v...); }, values);
        return true;
    };
}

template <class... A>
void forward(KelvarinBase& base, BaseEvent<A...> KelvarinBase::*event, const char* name,
             const std::function<void(Fields)>& emit) {
    (base.*event).connect([name, emit](A... args) {
        Fields f{name};
        (f.push_back(encodeValue(args)), ...);
        emit(std::move(f));
    });
}

#define EVENTS(X)                 \
    X(Error)                      \
    X(KeypadChannelScanReply)     \
    X(KeypadConfig)               \
    X(KeypadRegister)             \
    X(VoteReceived)               \
    X(AudioStatus)                \
    X(DebugRx)                    \
    X(DebugTx)                    \
    X(PresenterCommandReceived)   \
    X(ScannerCommandReceived)     \
    X(ChannelScanReply)           \
    X(KeypadSurveyReply)

const std::map<std::string, Raiser>& events() {
#define RAISER(name) {#name, raiser(&KelvarinBase::name)},
    static const std::map<std::string, Raiser> table = {EVENTS(RAISER)};
#undef RAISER
    return table;
}

}  // namespace

bool serveRequest(KelvarinBase& base, const Fields& request, Fields& reply) {
    if (request.empty()) return false;
    const auto it = operations().find(request[0]);
    return it != operations().end() && it->second(base, request, reply);
}

bool knownOperation(const std::string& name) { return operations().count(name) != 0; }

void forwardEvents(KelvarinBase& base, std::function<void(Fields)> emit) {
#define FORWARD(name) forward(base, &KelvarinBase::name, #name, emit);
    EVENTS(FORWARD)
#undef FORWARD
}

bool raiseEvent(KelvarinBase& base, const Fields& event) {
    if (event.empty()) return false;
    const auto it = events().find(event[0]);
    return it != events().end() && it->second(base, event);
}

}  // namespace tlx::wire
