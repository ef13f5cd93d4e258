// The network base protocol's decoder: frames fed in pieces, their fields read as every record
// and list the protocol carries.
#include "platform/net/BaseCalls.h"
#include "platform/net/BaseProtocol.h"
#include "support/Harness.h"

using namespace tlx;

TLX_FUZZ_HARNESS(in) {
    const std::string bytes = in.rest();
    const std::string_view all(bytes);
    wire::FrameDecoder decoder;
    // Split at a point the input chooses, as a socket might.
    const std::size_t cut = bytes.empty() ? 0 : static_cast<std::uint8_t>(bytes[0]) % (bytes.size() + 1);
    decoder.feed(all.substr(0, cut));
    decoder.feed(all.substr(cut));
    wire::Frame f;
    while (decoder.next(f) == wire::FrameDecoder::Status::Ready) {
        for (const auto& field : f.fields) {
            KelvarinVote vote;
            (void)wire::decodeValue(field, vote);
            KelvarinSessionConfig session;
            (void)wire::decodeValue(field, session);
            KelvarinPresenterMenu menu;
            (void)wire::decodeValue(field, menu);
            KelvarinSurveyOptions survey;
            (void)wire::decodeValue(field, survey);
            double d = 0;
            (void)wire::decodeValue(field, d);
        }
        // Frames re-encode to what was read.
        (void)wire::encodeFrame(f);
    }
}
