// Deck descriptions (tlx-mkdeck's input): sections, keys and escapes, made into a deck that
// is written and opened again.
#include "platform/files/pptx/DeckBuilder.h"
#include "platform/files/pptx/PptxError.h"
#include "support/Harness.h"

using namespace tlx::pptx;

TLX_FUZZ_HARNESS(in) {
    DeckPlan plan;
    const std::string text = in.rest();
    // Refused, naming the line; a deck this big says nothing more about the reader.
    if (!tlx::fuzz::readOrRefuse<PptxError>([&] { plan = parseDeckDescription(text); })) return;
    if (plan.slides.size() > 50) return;
    Deck deck = buildDeck(plan);
    Deck again = Deck::fromBytes(deck.toBytes(), "description");
    tlx::fuzz::require(again.slideCount() == static_cast<int>(plan.slides.size()));
}
