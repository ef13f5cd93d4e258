#pragma once
// The protocol between the controller's network adapter (NetBaseLibrary) and the network base
// emulator (tlx-basesim): the base-library calls, their replies and the bases' events, framed
// over one TCP connection. Plain C++, no sockets: the codec can be fuzzed and tested alone.
//
// Grammar (every number big-endian):
//
//   stream   = *frame
//   frame    = size body                 ; size: 4 bytes, the length of body, 12 .. kMaxBodyBytes
//   body     = version kind id handle list
//   version  = 1 byte                    ; kBaseProtocolVersion
//   kind     = 1 byte                    ; 1 hello, 2 request, 3 reply, 4 event, 5 refused,
//                                        ; 6 control, 7 control-reply
//   id       = 4 bytes                   ; a request's (or control's) number; its reply echoes it
//   handle   = 4 bytes                   ; the base object the frame is about (0: none)
//   list     = count *field              ; count: 2 bytes, at most kMaxFields
//   field    = length *OCTET             ; length: 4 bytes; the fields fill the body exactly
//
//   hello          = "tallix-basesim" version-text program      ; both sides send it first
//   request        = operation *argument          ; a KelvarinBase operation by its name
//   reply          = status *result               ; status: the operation's BaseErrorCode
//   event          = event-name *argument         ; a KelvarinBase event by its name
//   refused        = reason                       ; the sender closes the connection after it
//   control        = command-line                 ; the emulator's own control language
//   control-reply  = reason output                ; reason "" when the command was carried out
//
// Values inside fields: integers in decimal; booleans "0" or "1"; real numbers as the shortest
// decimal text that reads back to the same number; records (KelvarinVote, KelvarinBaseConfig,
// ...) as a nested list of name, value pairs, names as the record's members are called; lists
// of texts as a nested list. A reader skips record members it does not know and leaves members
// that are not sent at their defaults, so either side may grow a record within one version.
//
// A frame whose version byte is not kBaseProtocolVersion is refused with a reason naming both
// versions; any malformed frame (a size out of range, fields that do not fill the body, an
// unknown kind) closes that connection only.
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/BaseLibrary.h"

namespace tlx::wire {

inline constexpr std::uint8_t kBaseProtocolVersion = 1;
inline constexpr const char* kHelloMagic = "tallix-basesim";
inline constexpr std::size_t kMaxBodyBytes = 1u << 20;  // 1 MiB: a registry of 4,095 keypads is ~60 KB
inline constexpr std::size_t kMaxFields = 4096;
inline constexpr std::size_t kFrameHeaderBytes = 4 + 1 + 1 + 4 + 4 + 2;  // size .. count

enum class Kind : std::uint8_t {
    Hello = 1,
    Request = 2,
    Reply = 3,
    Event = 4,
    Refused = 5,
    Control = 6,
    ControlReply = 7,
};

using Fields = std::vector<std::string>;

struct Frame {
    std::uint8_t version = kBaseProtocolVersion;
    Kind kind = Kind::Hello;
    std::uint32_t id = 0;
    std::uint32_t handle = 0;
    Fields fields;
};

// The bytes of one frame. Throws std::length_error when it would exceed the limits (a caller's
// fault: no frame the library builds comes near them).
std::string encodeFrame(const Frame& frame);

// Reads frames from a byte stream that arrives in pieces of any size. Holds at most one frame's
// bytes beyond what has been taken out.
class FrameDecoder {
public:
    enum class Status { NeedMore, Ready, Malformed, WrongVersion };
    // Appends bytes; nothing is read until next().
    void feed(std::string_view bytes);
    // The next complete frame, if any. After Malformed or WrongVersion the stream cannot be
    // read on (error() says why) and every later call answers the same.
    Status next(Frame& out);
    const std::string& error() const { return error_; }
    // The version byte of the frame refused with WrongVersion.
    std::uint8_t theirVersion() const { return theirVersion_; }
    // Bytes held that have not become a frame yet.
    std::size_t buffered() const { return buffer_.size() - read_; }

private:
    Status fail(Status s, std::string why);
    std::string buffer_;
    std::size_t read_ = 0;
    Status broken_ = Status::NeedMore;
    std::string error_;
    std::uint8_t theirVersion_ = 0;
};

// The reason a frame of another version is refused with.
std::string versionRefusal(std::uint8_t theirs, const std::string& who);

// Nested lists (records, lists of texts) inside one field: count + fields, as in a frame body.
std::string encodeList(const Fields& items);
bool decodeList(std::string_view bytes, Fields& items);

// Values.
std::string encodeValue(int v);
std::string encodeValue(long long v);
std::string encodeValue(bool v);
std::string encodeValue(double v);
std::string encodeValue(const std::string& v);
std::string encodeValue(const std::vector<std::string>& v);
std::string encodeValue(const std::vector<int>& v);
std::string encodeValue(const std::array<int, 8>& v);
std::string encodeValue(const std::array<std::string, 22>& v);
bool decodeValue(std::string_view s, int& v);
bool decodeValue(std::string_view s, long long& v);
bool decodeValue(std::string_view s, bool& v);
bool decodeValue(std::string_view s, double& v);
bool decodeValue(std::string_view s, std::string& v);
bool decodeValue(std::string_view s, std::vector<std::string>& v);
bool decodeValue(std::string_view s, std::vector<int>& v);
bool decodeValue(std::string_view s, std::array<int, 8>& v);
bool decodeValue(std::string_view s, std::array<std::string, 22>& v);

// Records of the base-library port.
#define TLX_WIRE_RECORD(R)                     \
    std::string encodeValue(const R& record);  \
    bool decodeValue(std::string_view s, R& record);
TLX_WIRE_RECORD(KelvarinBaseConfig)
TLX_WIRE_RECORD(KelvarinSessionConfig)
TLX_WIRE_RECORD(KelvarinKeypadConfig)
TLX_WIRE_RECORD(KelvarinChannelList)
TLX_WIRE_RECORD(KelvarinVote)
TLX_WIRE_RECORD(KelvarinAudioOptions)
TLX_WIRE_RECORD(KelvarinAudioStatus)
TLX_WIRE_RECORD(KelvarinWinnerMessage)
TLX_WIRE_RECORD(KelvarinPresenterMenu)
TLX_WIRE_RECORD(KelvarinSurveyOptions)
TLX_WIRE_RECORD(KelvarinSurveyReply)
TLX_WIRE_RECORD(KelvarinChannelScanReply)
#undef TLX_WIRE_RECORD

}  // namespace tlx::wire
