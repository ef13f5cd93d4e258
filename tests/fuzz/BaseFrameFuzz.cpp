// libFuzzer target for the network base protocol's decoder: frames fed in pieces, their fields
// read as every record and list the protocol carries.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/net/BaseCalls.h"
#include "platform/net/BaseProtocol.h"

using namespace tlx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    wire::FrameDecoder decoder;
    // Split at a point the input chooses, as a socket might.
    const std::size_t cut = size > 0 ? data[0] % (size + 1) : 0;
    decoder.feed(bytes.substr(0, cut));
    decoder.feed(bytes.substr(cut));
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
    return 0;
}
