#include "platform/net/BaseProtocol.h"

#include <charconv>
#include <stdexcept>
#include <variant>

namespace tlx::wire {

namespace {

void put32(std::string& out, std::uint32_t v) {
    out += static_cast<char>((v >> 24) & 0xFF);
    out += static_cast<char>((v >> 16) & 0xFF);
    out += static_cast<char>((v >> 8) & 0xFF);
    out += static_cast<char>(v & 0xFF);
}

void put16(std::string& out, std::uint16_t v) {
    out += static_cast<char>((v >> 8) & 0xFF);
    out += static_cast<char>(v & 0xFF);
}

std::uint32_t get32(std::string_view s, std::size_t at) {
    auto b = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(s[at + i])); };
    return (b(0) << 24) | (b(1) << 16) | (b(2) << 8) | b(3);
}

std::uint16_t get16(std::string_view s, std::size_t at) {
    return static_cast<std::uint16_t>((static_cast<unsigned char>(s[at]) << 8) | static_cast<unsigned char>(s[at + 1]));
}

void appendList(std::string& out, const Fields& items) {
    if (items.size() > kMaxFields) throw std::length_error("too many fields");
    put16(out, static_cast<std::uint16_t>(items.size()));
    for (const auto& f : items) {
        if (f.size() > kMaxBodyBytes) throw std::length_error("field too long");
        put32(out, static_cast<std::uint32_t>(f.size()));
        out += f;
    }
}

// Reads count + fields that must fill `bytes` exactly.
bool readList(std::string_view bytes, Fields& items) {
    items.clear();
    if (bytes.size() < 2) return false;
    const std::size_t count = get16(bytes, 0);
    if (count > kMaxFields) return false;
    std::size_t at = 2;
    items.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (bytes.size() - at < 4) return false;
        const std::size_t len = get32(bytes, at);
        at += 4;
        if (len > bytes.size() - at) return false;
        items.emplace_back(bytes.substr(at, len));
        at += len;
    }
    return at == bytes.size();
}

template <class T>
bool readInteger(std::string_view s, T& v) {
    if (s.empty()) return false;
    T x{};
    const auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), x);
    if (ec != std::errc() || p != s.data() + s.size()) return false;
    v = x;
    return true;
}

// ---- records: one table of members per record type ----

template <class R>
using Member = std::variant<int R::*, long long R::*, bool R::*, double R::*, std::string R::*,
                            std::vector<int> R::*, std::array<int, 8> R::*, std::array<std::string, 22> R::*>;

template <class R>
struct MemberOf {
    const char* name;
    Member<R> member;
};

template <class R, std::size_t N>
std::string encodeRecord(const R& r, const MemberOf<R> (&table)[N]) {
    Fields f;
    f.reserve(2 * N);
    for (const auto& m : table) {
        f.emplace_back(m.name);
        std::visit([&](auto p) { f.push_back(encodeValue(r.*p)); }, m.member);
    }
    return encodeList(f);
}

template <class R, std::size_t N>
bool decodeRecord(std::string_view s, R& r, const MemberOf<R> (&table)[N]) {
    Fields f;
    if (!decodeList(s, f) || f.size() % 2 != 0) return false;
    R out = r;
    for (std::size_t i = 0; i < f.size(); i += 2)
        for (const auto& m : table)
            if (f[i] == m.name) {
                bool ok = false;
                std::visit([&](auto p) { ok = decodeValue(f[i + 1], out.*p); }, m.member);
                if (!ok) return false;
                break;
            }
    r = std::move(out);
    return true;
}

#define M(R, name) MemberOf<R> { #name, &R::name }

const MemberOf<KelvarinBaseConfig> kBaseConfig[] = {
    M(KelvarinBaseConfig, BaseName),       M(KelvarinBaseConfig, BaseID),
    M(KelvarinBaseConfig, FirmwareVersion), M(KelvarinBaseConfig, RegistryLowSID),
    M(KelvarinBaseConfig, RegistryHighSID), M(KelvarinBaseConfig, RadioChannel),
};
const MemberOf<KelvarinSessionConfig> kSessionConfig[] = {
    M(KelvarinSessionConfig, SessionID),          M(KelvarinSessionConfig, SessionName),
    M(KelvarinSessionConfig, RegistryMode),       M(KelvarinSessionConfig, PrimaryChannel),
    M(KelvarinSessionConfig, AltChannels),        M(KelvarinSessionConfig, AutoScanEnabled),
    M(KelvarinSessionConfig, AutoScanAllChannels), M(KelvarinSessionConfig, AutoOffNoKeypress),
    M(KelvarinSessionConfig, AutoOffNoSignal),    M(KelvarinSessionConfig, VoteSleepTimer),
    M(KelvarinSessionConfig, PacketRetryCount),   M(KelvarinSessionConfig, HighNoiseMode),
    M(KelvarinSessionConfig, StaticRegSIDOffset), M(KelvarinSessionConfig, StaticRegSIDMax),
    M(KelvarinSessionConfig, VoteAccepting),      M(KelvarinSessionConfig, RegistrationOpen),
};
const MemberOf<KelvarinKeypadConfig> kKeypadConfig[] = {
    M(KelvarinKeypadConfig, HID),  M(KelvarinKeypadConfig, SID),
    M(KelvarinKeypadConfig, Flag), M(KelvarinKeypadConfig, Kind),
    M(KelvarinKeypadConfig, FirmwareVersion), M(KelvarinKeypadConfig, BatteryStrength),
    M(KelvarinKeypadConfig, SignalStrength),
};
const MemberOf<KelvarinChannelList> kChannelList[] = {M(KelvarinChannelList, Channel)};
const MemberOf<KelvarinVote> kVote[] = {
    M(KelvarinVote, VoteType),
    M(KelvarinVote, ItemCount),
    M(KelvarinVote, KeyMask),
    M(KelvarinVote, AllowFraction),
    M(KelvarinVote, DisplayLetters),
    M(KelvarinVote, DisplayAnswerNumbers),
    M(KelvarinVote, VoteQuestionText),
    M(KelvarinVote, VoteText),
    M(KelvarinVote, VoteEndedText),
    M(KelvarinVote, MessageText),
    M(KelvarinVote, Limits),
    M(KelvarinVote, Points),
    M(KelvarinVote, Allocation),
    M(KelvarinVote, PrevoteText),
    M(KelvarinVote, PrevoteTextTime),
    M(KelvarinVote, VotedText),
    M(KelvarinVote, RevotedText),
    M(KelvarinVote, VoteFailedText),
    M(KelvarinVote, VoteFailedTextTime),
    M(KelvarinVote, VoteTextTime),
    M(KelvarinVote, VoteEndedTextTime),
    M(KelvarinVote, SignalLostDuringVoteText),
    M(KelvarinVote, SignalLostDuringVoteTextTime),
    M(KelvarinVote, SignalLostDuringTransmitText),
    M(KelvarinVote, SignalLostDuringTransmitTextTime),
    M(KelvarinVote, AnswerText),
    M(KelvarinVote, TextVoteFontSize),
    M(KelvarinVote, ListVoteFontSize),
    M(KelvarinVote, HID),
    M(KelvarinVote, SID),
    M(KelvarinVote, VoteReplyData),
    M(KelvarinVote, BatteryStrength),
    M(KelvarinVote, SignalStrength),
    M(KelvarinVote, PollGroupID),
    M(KelvarinVote, PollSlotID),
    M(KelvarinVote, KeyPressTimeStamp),
    M(KelvarinVote, KeyPressTime),
    M(KelvarinVote, VoteReplyID),
};
const MemberOf<KelvarinAudioOptions> kAudioOptions[] = {
    M(KelvarinAudioOptions, MicVolume),    M(KelvarinAudioOptions, BoostVolume),
    M(KelvarinAudioOptions, MaxTalkTime),  M(KelvarinAudioOptions, MicSwitchLogic),
    M(KelvarinAudioOptions, WarningTime),  M(KelvarinAudioOptions, MicKey),
    M(KelvarinAudioOptions, EndKey),       M(KelvarinAudioOptions, MuteKey),
    M(KelvarinAudioOptions, RadioSpeed),   M(KelvarinAudioOptions, UseOwnRadioChannel),
    M(KelvarinAudioOptions, RadioChannel),
};
const MemberOf<KelvarinAudioStatus> kAudioStatus[] = {
    M(KelvarinAudioStatus, Streaming), M(KelvarinAudioStatus, RSSI), M(KelvarinAudioStatus, LQI)};
const MemberOf<KelvarinWinnerMessage> kWinner[] = {
    M(KelvarinWinnerMessage, LoadMessage), M(KelvarinWinnerMessage, MainMessage),
    M(KelvarinWinnerMessage, MainMessageFont), M(KelvarinWinnerMessage, LedEffect),
    M(KelvarinWinnerMessage, Flag),
};
const MemberOf<KelvarinPresenterMenu> kPresenterMenu[] = {
    M(KelvarinPresenterMenu, Labels), M(KelvarinPresenterMenu, Value1), M(KelvarinPresenterMenu, Value2)};
const MemberOf<KelvarinSurveyOptions> kSurveyOptions[] = {
    M(KelvarinSurveyOptions, StartChannel),    M(KelvarinSurveyOptions, EndChannel),
    M(KelvarinSurveyOptions, ChannelStep),     M(KelvarinSurveyOptions, VotesPerChannel),
    M(KelvarinSurveyOptions, StartDelay),      M(KelvarinSurveyOptions, Channels),
};
const MemberOf<KelvarinSurveyReply> kSurveyReply[] = {
    M(KelvarinSurveyReply, HID),  M(KelvarinSurveyReply, ChannelIndex), M(KelvarinSurveyReply, VotesSent),
    M(KelvarinSurveyReply, Acks), M(KelvarinSurveyReply, EndOfScan),
};
const MemberOf<KelvarinChannelScanReply> kScanReply[] = {
    M(KelvarinChannelScanReply, Channel), M(KelvarinChannelScanReply, Quality)};

#undef M

}  // namespace

std::string encodeFrame(const Frame& frame) {
    std::string body;
    body += static_cast<char>(frame.version);
    body += static_cast<char>(frame.kind);
    put32(body, frame.id);
    put32(body, frame.handle);
    appendList(body, frame.fields);
    if (body.size() > kMaxBodyBytes) throw std::length_error("frame too long");
    std::string out;
    out.reserve(4 + body.size());
    put32(out, static_cast<std::uint32_t>(body.size()));
    out += body;
    return out;
}

void FrameDecoder::feed(std::string_view bytes) {
    if (broken_ != Status::NeedMore) return;
    // Drop what has been read before growing, so the buffer holds one frame at most.
    if (read_ > 0 && read_ == buffer_.size()) {
        buffer_.clear();
        read_ = 0;
    } else if (read_ > 4096 && read_ * 2 > buffer_.size()) {
        buffer_.erase(0, read_);
        read_ = 0;
    }
    buffer_.append(bytes.data(), bytes.size());
}

FrameDecoder::Status FrameDecoder::fail(Status s, std::string why) {
    broken_ = s;
    error_ = std::move(why);
    buffer_.clear();
    read_ = 0;
    return s;
}

FrameDecoder::Status FrameDecoder::next(Frame& out) {
    if (broken_ != Status::NeedMore) return broken_;
    const std::string_view rest = std::string_view(buffer_).substr(read_);
    if (rest.size() < 4) return Status::NeedMore;
    const std::size_t size = get32(rest, 0);
    if (size < kFrameHeaderBytes - 4 || size > kMaxBodyBytes)
        return fail(Status::Malformed, "frame size " + std::to_string(size) + " out of range");
    // The version is checked as soon as it is there, whatever else the frame holds.
    if (rest.size() >= 5 && static_cast<std::uint8_t>(rest[4]) != kBaseProtocolVersion) {
        theirVersion_ = static_cast<std::uint8_t>(rest[4]);
        return fail(Status::WrongVersion, versionRefusal(theirVersion_, "this end"));
    }
    if (rest.size() - 4 < size) return Status::NeedMore;
    const std::string_view body = rest.substr(4, size);
    const auto kind = static_cast<std::uint8_t>(body[1]);
    if (kind < static_cast<std::uint8_t>(Kind::Hello) || kind > static_cast<std::uint8_t>(Kind::ControlReply))
        return fail(Status::Malformed, "unknown frame kind " + std::to_string(kind));
    Frame f;
    f.version = static_cast<std::uint8_t>(body[0]);
    f.kind = static_cast<Kind>(kind);
    f.id = get32(body, 2);
    f.handle = get32(body, 6);
    if (!readList(body.substr(10), f.fields)) return fail(Status::Malformed, "fields do not fill the frame");
    read_ += 4 + size;
    out = std::move(f);
    return Status::Ready;
}

std::string versionRefusal(std::uint8_t theirs, const std::string& who) {
    return "protocol version " + std::to_string(theirs) + " refused: " + who + " speaks version " +
           std::to_string(kBaseProtocolVersion);
}

std::string encodeList(const Fields& items) {
    std::string out;
    appendList(out, items);
    return out;
}

bool decodeList(std::string_view bytes, Fields& items) { return readList(bytes, items); }

std::string encodeValue(int v) { return std::to_string(v); }
std::string encodeValue(long long v) { return std::to_string(v); }
std::string encodeValue(bool v) { return v ? "1" : "0"; }
std::string encodeValue(double v) {
    char buf[64];
    const auto [p, ec] = std::to_chars(buf, buf + sizeof buf, v);
    return ec == std::errc() ? std::string(buf, p) : "0";
}
std::string encodeValue(const std::string& v) { return v; }
std::string encodeValue(const std::vector<std::string>& v) { return encodeList(v); }
std::string encodeValue(const std::vector<int>& v) {
    Fields f;
    for (int x : v) f.push_back(encodeValue(x));
    return encodeList(f);
}
std::string encodeValue(const std::array<int, 8>& v) { return encodeValue(std::vector<int>(v.begin(), v.end())); }
std::string encodeValue(const std::array<std::string, 22>& v) { return encodeList(Fields(v.begin(), v.end())); }

bool decodeValue(std::string_view s, int& v) { return readInteger(s, v); }
bool decodeValue(std::string_view s, long long& v) { return readInteger(s, v); }
bool decodeValue(std::string_view s, bool& v) {
    if (s != "0" && s != "1") return false;
    v = s == "1";
    return true;
}
bool decodeValue(std::string_view s, double& v) {
    if (s.empty()) return false;
    double x = 0;
    const auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), x);
    if (ec != std::errc() || p != s.data() + s.size()) return false;
    v = x;
    return true;
}
bool decodeValue(std::string_view s, std::string& v) {
    v.assign(s);
    return true;
}
bool decodeValue(std::string_view s, std::vector<std::string>& v) { return decodeList(s, v); }
bool decodeValue(std::string_view s, std::vector<int>& v) {
    Fields f;
    if (!decodeList(s, f)) return false;
    std::vector<int> out(f.size());
    for (std::size_t i = 0; i < f.size(); ++i)
        if (!decodeValue(f[i], out[i])) return false;
    v = std::move(out);
    return true;
}
bool decodeValue(std::string_view s, std::array<int, 8>& v) {
    std::vector<int> x;
    if (!decodeValue(s, x) || x.size() != v.size()) return false;
    std::copy(x.begin(), x.end(), v.begin());
    return true;
}
bool decodeValue(std::string_view s, std::array<std::string, 22>& v) {
    Fields f;
    if (!decodeList(s, f) || f.size() != v.size()) return false;
    std::move(f.begin(), f.end(), v.begin());
    return true;
}

#define TLX_WIRE_RECORD(R, table)                                                               \
    std::string encodeValue(const R& record) { return encodeRecord(record, table); }           \
    bool decodeValue(std::string_view s, R& record) { return decodeRecord(s, record, table); }
TLX_WIRE_RECORD(KelvarinBaseConfig, kBaseConfig)
TLX_WIRE_RECORD(KelvarinSessionConfig, kSessionConfig)
TLX_WIRE_RECORD(KelvarinKeypadConfig, kKeypadConfig)
TLX_WIRE_RECORD(KelvarinChannelList, kChannelList)
TLX_WIRE_RECORD(KelvarinVote, kVote)
TLX_WIRE_RECORD(KelvarinAudioOptions, kAudioOptions)
TLX_WIRE_RECORD(KelvarinAudioStatus, kAudioStatus)
TLX_WIRE_RECORD(KelvarinWinnerMessage, kWinner)
TLX_WIRE_RECORD(KelvarinPresenterMenu, kPresenterMenu)
TLX_WIRE_RECORD(KelvarinSurveyOptions, kSurveyOptions)
TLX_WIRE_RECORD(KelvarinSurveyReply, kSurveyReply)
TLX_WIRE_RECORD(KelvarinChannelScanReply, kScanReply)
#undef TLX_WIRE_RECORD

}  // namespace tlx::wire
