// Deck descriptions (tlx-mkdeck's input): sections, keys and escapes, made into a deck that
// is written and opened again.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/files/pptx/DeckBuilder.h"
#include "platform/files/pptx/PptxError.h"

using namespace tlx::pptx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    DeckPlan plan;
    try {
        plan = parseDeckDescription(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const PptxError&) {
        return 0;  // refused, naming the line
    }
    if (plan.slides.size() > 50) return 0;  // a deck this big says nothing more about the reader
    Deck deck = buildDeck(plan);
    Deck again = Deck::fromBytes(deck.toBytes(), "description");
    if (again.slideCount() != static_cast<int>(plan.slides.size())) __builtin_trap();
    return 0;
}
