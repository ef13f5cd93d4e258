// The network base protocol's frames, values and records, and the calls built on them.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "platform/net/BaseCalls.h"
#include "platform/net/BaseProtocol.h"
#include "platform/sim/VirtualScheduler.h"
#include "platform/sim/basesim/SimBaseLibrary.h"

#include "NetBaseSupport.h"

using namespace tlx;
using namespace tlx::wire;
using tlx::test::fields;

namespace {

std::string bytesOf(std::initializer_list<int> b) {
    std::string s;
    for (int x : b) s += static_cast<char>(x);
    return s;
}

}  // namespace

TEST(BaseFrames, FramesComeOutWholeHoweverTheBytesArriveAndInOrder) {
    const std::string binary("a\0b|\r\n\xff", 7);
    const Frame a{kBaseProtocolVersion, Kind::Request, 7, 3, {"GetRegistry"}};
    const Frame b{kBaseProtocolVersion, Kind::Event, 0, 0xFFFFFFFFu, {"DebugRx", binary, ""}};
    const Frame c{kBaseProtocolVersion, Kind::Hello, 0, 0, {}};
    const std::string stream = encodeFrame(a) + encodeFrame(b) + encodeFrame(c);
    for (std::size_t piece : {stream.size(), std::size_t{1}, std::size_t{5}}) {
        FrameDecoder d;
        std::vector<Frame> got;
        for (std::size_t at = 0; at < stream.size(); at += piece) {
            d.feed(std::string_view(stream).substr(at, piece));
            Frame f;
            while (d.next(f) == FrameDecoder::Status::Ready) got.push_back(f);
        }
        ASSERT_EQ(got.size(), 3u) << "pieces of " << piece;
        EXPECT_EQ(fields(got[0].kind == Kind::Request, got[0].id, got[0].handle, got[1].handle, got[2].fields.size(),
                         d.buffered()),
                  "1|7|3|4294967295|0|0");
        EXPECT_EQ(std::tie(got[0].fields, got[1].fields), std::tie(a.fields, b.fields));
    }
}

TEST(BaseFrames, MalformedFramesStopTheStreamAndYieldNothing) {
    const std::string good = encodeFrame(Frame{kBaseProtocolVersion, Kind::Reply, 1, 1, {"0"}});
    struct Case {
        const char* what;
        std::string bytes;
    };
    const std::vector<Case> cases = {
        {"size below a header", bytesOf({0, 0, 0, 3, 1, 2, 0})},
        {"size above the limit", bytesOf({0, 0x20, 0, 0, 1, 2})},
        {"unknown kind", bytesOf({0, 0, 0, 12, 1, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})},
        {"kind 0", bytesOf({0, 0, 0, 12, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})},
        {"field longer than the body", bytesOf({0, 0, 0, 16, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 9})},
        {"bytes after the fields", bytesOf({0, 0, 0, 13, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7})},
        {"more fields than allowed", bytesOf({0, 0, 0, 12, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0x10, 0x01})},
    };
    for (const auto& c : cases) {
        FrameDecoder d;
        d.feed(c.bytes + good);  // nothing after a broken frame is read
        Frame f;
        EXPECT_EQ(d.next(f), FrameDecoder::Status::Malformed) << c.what;
        EXPECT_FALSE(d.error().empty()) << c.what;
        d.feed(good);
        EXPECT_EQ(d.next(f), FrameDecoder::Status::Malformed) << c.what;
    }
}

TEST(BaseFrames, AnotherVersionIsRefusedAsSoonAsItsByteArrivesNamingBothVersions) {
    FrameDecoder d;
    d.feed(bytesOf({0, 0, 0, 12, 2}));  // the rest has not come yet
    Frame f;
    EXPECT_EQ(d.next(f), FrameDecoder::Status::WrongVersion);
    EXPECT_EQ(fields(int{d.theirVersion()}, d.error()), "2|protocol version 2 refused: this end speaks version 1");
}

TEST(BaseValues, RecordsAndValuesReadBackExactly) {
    KelvarinVote v;
    v.VoteType = 9;
    v.KeyMask = 1024 | 2;
    v.AllowFraction = true;
    v.VoteQuestionText = "Colours?|line two";
    v.PrevoteText = std::string("tab\tand\0nul", 11);
    v.KeyPressTimeStamp = -123456789012LL;
    v.KeyPressTime = 43210.123456789;
    v.SignalStrength = -45;
    KelvarinVote back;
    ASSERT_TRUE(decodeValue(encodeValue(v), back));
    // The time exactly, not nearly.
    EXPECT_EQ(std::tie(back.VoteType, back.KeyMask, back.AllowFraction, back.VoteQuestionText, back.PrevoteText,
                       back.KeyPressTimeStamp, back.KeyPressTime, back.SignalStrength),
              std::tie(v.VoteType, v.KeyMask, v.AllowFraction, v.VoteQuestionText, v.PrevoteText, v.KeyPressTimeStamp,
                       v.KeyPressTime, v.SignalStrength));

    KelvarinPresenterMenu m;
    for (std::size_t i = 0; i < m.Labels.size(); ++i) m.Labels[i] = "label " + std::to_string(i);
    m.Value2 = 7;
    KelvarinPresenterMenu mb;
    ASSERT_TRUE(decodeValue(encodeValue(m), mb));
    EXPECT_EQ(std::tie(mb.Labels, mb.Value2), std::tie(m.Labels, m.Value2));

    KelvarinSessionConfig s;
    s.AltChannels = {2, 4, 6, 8, 10, 12, 14, 16};
    s.VoteAccepting = false;
    KelvarinSessionConfig sb;
    ASSERT_TRUE(decodeValue(encodeValue(s), sb));
    EXPECT_EQ(std::tie(sb.AltChannels, sb.VoteAccepting), std::tie(s.AltChannels, s.VoteAccepting));
}

TEST(BaseValues, AReaderSkipsUnknownMembersButRefusesBadValuesLeavingTheRecordAsItWas) {
    KelvarinChannelScanReply r{5, 60};
    // A newer peer's extra member, and a member not sent at all.
    ASSERT_TRUE(decodeValue(encodeList({"Quality", "80", "NoiseFloor", "-90"}), r));
    EXPECT_EQ(fields(r.Channel, r.Quality), "5|80");
    for (const Fields& bad : std::vector<Fields>{{"Quality", "8O"},
                                                 {"Quality", ""},
                                                 {"Quality", "99999999999"},
                                                 {"Channel", "1", "Quality"},
                                                 {"Quality", " 8"}}) {
        KelvarinChannelScanReply keep{5, 60};
        EXPECT_FALSE(decodeValue(encodeList(bad), keep));
        EXPECT_EQ(fields(keep.Channel, keep.Quality), "5|60");
    }
    bool flag = false;
    EXPECT_FALSE(decodeValue("true", flag));
    std::array<int, 8> channels{};
    EXPECT_FALSE(decodeValue(encodeValue(std::vector<int>{1, 2, 3}), channels));  // eight or nothing
}

TEST(BaseCalls, ARequestCarriesTheInputsAndItsReplyTheResultsOfTheSameMember) {
    VirtualScheduler clock;
    SimBaseLibrary lib(clock);
    lib.addBase(test::netBase(41, 42));
    auto served = lib.createBase(LibraryGeneration::Prioritizer2);

    const std::string connection = "127.0.0.1|2020|1010";
    Fields reply;
    ASSERT_TRUE(serveRequest(*served, requestOf("Connect", &KelvarinBase::Connect, connection), reply));
    EXPECT_EQ(reply, (Fields{"0"}));

    std::string hid = "300300042";
    KelvarinKeypadConfig config;
    const Fields request = requestOf("GetKeypadConfig", &KelvarinBase::GetKeypadConfig, hid, config);
    EXPECT_EQ(request, (Fields{"GetKeypadConfig", "300300042"}));  // the result does not travel
    ASSERT_TRUE(serveRequest(*served, request, reply));
    ASSERT_TRUE(readResults(reply, &KelvarinBase::GetKeypadConfig, hid, config));
    EXPECT_EQ(fields(config.SID, config.HID), "42|300300042");

    // Unknown operations and wrong arguments call nothing.
    for (const Fields& wrong : std::vector<Fields>{
             {"FormatDisk"}, {"AddKeypadToRegistry", "300300099"}, {"AddKeypadToRegistry", "300300099", "x"}, {"ResetBase", "extra"}})
        EXPECT_FALSE(serveRequest(*served, wrong, reply)) << wrong.at(0);
    EXPECT_EQ(lib.station(0).callCount("AddKeypadToRegistry") + lib.station(0).callCount("ResetBase"), 0);
    // A reply without the result it should carry does not read.
    EXPECT_FALSE(readResults(Fields{"0"}, &KelvarinBase::GetKeypadConfig, hid, config));
}

TEST(BaseCalls, EventsTravelAsFieldsAndAreRaisedWithTheSameArguments) {
    VirtualScheduler clock;
    SimBaseLibrary lib(clock);
    auto from = lib.createBase(LibraryGeneration::Prioritizer2);
    auto to = lib.createBase(LibraryGeneration::Prioritizer2);
    std::vector<Fields> sent;
    forwardEvents(*from, [&](Fields f) { sent.push_back(std::move(f)); });
    std::vector<std::string> heard;
    to->Error.connect([&](int code, const std::string& extra) { heard.push_back(std::to_string(code) + ":" + extra); });
    to->PresenterCommandReceived.connect([&](const std::string& hid, int c, int s, int v) {
        heard.push_back(hid + "/" + std::to_string(c) + "/" + std::to_string(s) + "/" + std::to_string(v));
    });
    from->Error(5, "link");
    from->PresenterCommandReceived("300199901", 3, 2, 12);
    ASSERT_EQ(sent.size(), 2u);
    for (const auto& f : sent) EXPECT_TRUE(raiseEvent(*to, f));
    EXPECT_EQ(heard, (std::vector<std::string>{"5:link", "300199901/3/2/12"}));
    // An argument missing, not a number, no such event.
    for (const Fields& wrong : std::vector<Fields>{{"Error", "5"}, {"Error", "five", ""}, {"SelfDestruct"}})
        EXPECT_FALSE(raiseEvent(*to, wrong)) << wrong.size();
    EXPECT_EQ(heard.size(), 2u);
}
