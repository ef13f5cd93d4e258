// The .pptx reader: any bytes either open as a deck or give a PptxError. The first byte picks
// what the rest is: a whole .pptx file, or the XML of the slide part or of the slide's tags
// part inside an otherwise sound deck (so that mutations reach the XML, which the zip's
// compression would otherwise hide). A deck that opens is walked completely, changed, saved
// and opened again.
#include "platform/files/pptx/DeckBuilder.h"
#include "platform/files/pptx/Zip.h"
#include "support/Harness.h"

namespace {

using namespace tlx::pptx;

std::string withPart(const std::string& name, const std::string& xml) {
    static const std::vector<ZipEntry> base = [] {
        DeckPlan plan;
        plan.slides.push_back({"Title", "Question", {"One", "Two"}, {}, {{"TLXVOTE", "x"}}});
        return readZip(buildDeck(plan).toBytes(), "base");
    }();
    std::vector<ZipEntry> entries = base;
    for (ZipEntry& e : entries)
        if (e.name == name) e.data = xml;
    return writeZip(entries);
}

void exercise(const std::string& bytes) {
    Deck deck = Deck::fromBytes(bytes, "fuzz");
    for (int i = 1; i <= deck.tags().count(); ++i) (void)deck.tags().value(i);
    for (DeckSlide* slide : deck.slides()) {
        (void)slide->title();
        (void)slide->tags().item("TLXVOTE");
        for (DeckShape* shape : slide->allShapes()) {
            (void)shape->text();
            (void)shape->visible();
            (void)shape->placeholderType();
        }
    }
    if (deck.slideCount() > 0) {
        DeckSlide& first = deck.slide(1);
        first.tags().add("TLXVOTE", "<Options>4</Options>");
        if (!first.shapes().empty()) {
            DeckShape* shape = first.shapes().front();
            if (shape->hasTextFrame()) shape->setText("a\rb\vc");
            shape->setVisible(false);
            shape->bringToFront();
        }
        first.addTextBox("tlx_Question", "Question");
        if (first.shapes().size() > 1) first.shapes().front()->remove();
    }
    deck.tags().add("ActiveKeypads", "3,7");
    int slides = deck.slideCount();
    Deck again = Deck::fromBytes(deck.toBytes(), "fuzz again");
    tlx::fuzz::require(again.slideCount() == slides && again.tags().item("ACTIVEKEYPADS") == "3,7");
}

}  // namespace

TLX_FUZZ_HARNESS(in) {
    if (in.empty()) return;
    const std::uint8_t mode = in.byte();
    const std::string rest = in.rest();
    tlx::fuzz::readOrRefuse<PptxError>([&] {
        switch (mode % 3) {
            case 0: exercise(rest); break;
            case 1: exercise(withPart("ppt/slides/slide1.xml", rest)); break;
            default: exercise(withPart("ppt/tags/tag1.xml", rest)); break;
        }
    });
}
