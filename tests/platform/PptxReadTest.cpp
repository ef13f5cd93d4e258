// Reading real decks: slides in show order, shapes by name and kind, text as paragraphs; and
// damaged input, which must give a PptxError naming the fault, never a crash.
#include "PptxTestSupport.h"

namespace tlx::test::pptx {
namespace {

TEST(PptxRead, SlidesComeInShowOrderWithIdsAndNumbers) {
    Deck deck = Deck::open(deckFile("sld-slides.pptx"));
    ASSERT_EQ(deck.slideCount(), 3);
    EXPECT_EQ(fields(deck.slide(3).number(), deck.slideById(257) == &deck.slide(2)), "3|1");

    // The slide list decides the order, not the part names; the first slide number shifts numbers.
    std::string bytes = deckBytes("sld-slides.pptx");
    std::string pres = entriesOf(bytes)["ppt/presentation.xml"];
    pres = replaced(pres, "<p:sldId id=\"256\" r:id=\"rId2\"/><p:sldId id=\"257\" r:id=\"rId3\"/><p:sldId id=\"258\" r:id=\"rId4\"/>",
                    "<p:sldId id=\"258\" r:id=\"rId4\"/><p:sldId id=\"256\" r:id=\"rId2\"/><p:sldId id=\"257\" r:id=\"rId3\"/>");
    pres = replaced(pres, "saveSubsetFonts=\"1\"", "saveSubsetFonts=\"1\" firstSlideNum=\"10\"");
    Deck reordered = Deck::fromBytes(withEntry(bytes, "ppt/presentation.xml", pres));
    EXPECT_EQ(fields(reordered.slide(1).partName(), reordered.slide(2).partName(), reordered.slide(3).partName()),
              "/ppt/slides/slide3.xml|/ppt/slides/slide1.xml|/ppt/slides/slide2.xml");
    EXPECT_EQ(fields(reordered.slide(1).number(), reordered.slide(3).number()), "10|12");

    for (int outside : {0, 4}) EXPECT_THROW(deck.slide(outside), PptxError) << outside;
}

TEST(PptxRead, TitlesAndPlaceholders) {
    Deck deck = Deck::open(deckFile("test.pptx"));
    ASSERT_EQ(deck.slideCount(), 1);
    DeckSlide& s = deck.slide(1);
    EXPECT_EQ(shapeNames(s.shapes()), (std::vector<std::string>{"Title 1", "Subtitle 2"}));
    ASSERT_NE(s.shape("Title 1"), nullptr);
    EXPECT_EQ(fields(s.shape("Title 1")->text(), s.shape("Title 1")->placeholderType(),
                     s.shape("Subtitle 2")->placeholderType(), s.title()),
              "Presentation Title Text|ctrTitle|subTitle|Presentation Title Text");
    EXPECT_EQ(s.shape("title 1"), nullptr);  // names match exactly

    // Notes pages are not slides.
    Deck notes = Deck::open(deckFile("prs-notes.pptx"));
    EXPECT_EQ(notes.slideCount(), 1);
}

TEST(PptxRead, TextAsParagraphsWithBreaksAndFields) {
    Deck deck = Deck::open(deckFile("txt-text.pptx"));
    ASSERT_EQ(deck.slideCount(), 2);
    DeckShape* first = deck.slide(1).shape("TextBox 1");
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->hasTextFrame());
    // Runs join, a line break reads as "\v", a field as its current text.
    EXPECT_EQ(fields(join(first->paragraphs(), "/"), first->text()), " Foo Bar \v Baz Zoo \v1/yahoo.com| Foo Bar \v Baz Zoo \v1\ryahoo.com");
    EXPECT_EQ(fields(first->paragraphCount(), first->paragraph(2), first->paragraph(3), first->paragraph(0)), "2|yahoo.com||");

    DeckShape* second = deck.slide(1).shape("TextBox 2");
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(fields(join(second->paragraphs(), "/"), second->id()), "abc/a\vb\vc|3");

    // A table is a graphic frame: no text frame of its own.
    DeckShape* table = deck.slide(2).shape("Table 1");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(fields(table->kind() == ShapeKind::GraphicFrame, table->hasTextFrame(), table->text(), table->paragraphCount()),
              "1|0||0");
}

TEST(PptxRead, ShapeKindsGroupsAndVisibility) {
    Deck deck = Deck::open(deckFile("shp-shapes.pptx"));
    ASSERT_EQ(deck.slideCount(), 2);
    DeckSlide& one = deck.slide(1);
    EXPECT_EQ(shapeNames(one.shapes()), (std::vector<std::string>{"Title 3", "Content Placeholder 4", "Picture 5",
                                                                  "Table 1", "Chart 2", "Diagram 7"}));
    const DeckShape* content = one.shape("Content Placeholder 4");
    const DeckShape* picture = one.shape("Picture 5");
    EXPECT_EQ(fields(one.title(), content->placeholderType(), join(content->paragraphs(), "/"),
                     picture->kind() == ShapeKind::Picture, picture->hasTextFrame(), picture->placeholderType(),
                     one.shape("Chart 2")->kind() == ShapeKind::GraphicFrame),
              "shapes[0]|obj|shapes[1]/Picture is shapes[2]|1|0||1");

    DeckSlide& two = deck.slide(2);
    EXPECT_EQ(shapeNames(two.shapes()),
              (std::vector<std::string>{"Straight Arrow Connector 6", "Picture 7", "Rectangle 8", "Group 4"}));
    DeckShape* group = two.shape("Group 4");
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(fields(two.shape("Straight Arrow Connector 6")->kind() == ShapeKind::Connector, group->kind() == ShapeKind::Group),
              "1|1");
    EXPECT_EQ(shapeNames(group->children()), (std::vector<std::string>{"Rectangle 1", "Oval 2", "Isosceles Triangle 3"}));
    // Group members are found by name too, and know their group.
    ASSERT_NE(two.shape("Oval 2"), nullptr);
    EXPECT_EQ(fields(two.shape("Oval 2")->parent() == group, two.allShapes().size()), "1|7");
    // An empty autoshape has a text frame with one empty paragraph.
    const DeckShape* rectangle = two.shape("Rectangle 8");
    EXPECT_EQ(fields(rectangle->hasTextFrame(), rectangle->paragraphs().size(), rectangle->paragraph(1)), "1|1|");
    for (DeckShape* s : two.allShapes()) EXPECT_TRUE(s->visible()) << s->name();
}

TEST(PptxRead, HiddenShapesAndSlidesOtherWritersAndPrefixes) {
    std::string bytes = deckBytes("test.pptx");
    std::string slide = entriesOf(bytes)["ppt/slides/slide1.xml"];
    slide = replaced(slide, "name=\"Subtitle 2\"", "name=\"Subtitle 2\" hidden=\"true\"");
    slide = replaced(slide, "<p:sld ", "<p:sld show=\"0\" ");
    Deck deck = Deck::fromBytes(withEntry(bytes, "ppt/slides/slide1.xml", slide));
    EXPECT_EQ(fields(deck.slide(1).shape("Subtitle 2")->visible(), deck.slide(1).shape("Title 1")->visible(),
                     deck.slide(1).hiddenInShow()),
              "0|1|1");

    // Another writer's prefixes and a shape wrapped in alternate content.
    std::string other =
        "<?xml version=\"1.0\"?><ns0:sld xmlns:ns0=\"http://schemas.openxmlformats.org/presentationml/2006/main\" "
        "xmlns:d=\"http://schemas.openxmlformats.org/drawingml/2006/main\" "
        "xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\"><ns0:cSld><ns0:spTree>"
        "<ns0:nvGrpSpPr><ns0:cNvPr id=\"1\" name=\"\"/><ns0:cNvGrpSpPr/><ns0:nvPr/></ns0:nvGrpSpPr><ns0:grpSpPr/>"
        "<mc:AlternateContent><mc:Choice Requires=\"x\"><ns0:sp><ns0:nvSpPr><ns0:cNvPr id=\"5\" name=\"Title 1\"/>"
        "<ns0:cNvSpPr/><ns0:nvPr/></ns0:nvSpPr><ns0:spPr/><ns0:txBody><d:bodyPr/><d:p><d:r><d:t>Hello</d:t></d:r>"
        "</d:p></ns0:txBody></ns0:sp></mc:Choice><mc:Fallback/></mc:AlternateContent></ns0:spTree></ns0:cSld></ns0:sld>";
    Deck foreign = Deck::fromBytes(withEntry(bytes, "ppt/slides/slide1.xml", other));
    ASSERT_NE(foreign.slide(1).shape("Title 1"), nullptr);
    EXPECT_EQ(foreign.slide(1).shape("Title 1")->text(), "Hello");
    foreign.slide(1).shape("Title 1")->setText("Hi\rthere");
    foreign.slide(1).addTextBox("Box", "More");
    Deck again = Deck::fromBytes(foreign.toBytes());
    EXPECT_EQ(again.slide(1).shape("Title 1")->paragraphs(), (std::vector<std::string>{"Hi", "there"}));
    EXPECT_EQ(again.slide(1).shape("Box")->text(), "More");
    EXPECT_EQ(again.slide(1).shape("Box")->id(), 6u);
}

// ---------------------------------------------------------------- damaged input

Fault faultOf(const std::string& bytes, std::string* message = nullptr) {
    try {
        Deck::fromBytes(bytes, "bad.pptx");
    } catch (const PptxError& e) {
        if (message) *message = e.what();
        return e.fault();
    }
    ADD_FAILURE() << "the deck opened";
    return Fault::Usage;
}

TEST(PptxBadInput, FilesThatAreNotZipPackages) {
    std::string message;
    EXPECT_EQ(faultOf("", &message), Fault::NotZip);
    EXPECT_NE(message.find("'bad.pptx' is not a readable zip package"), std::string::npos) << message;

    std::string deck = deckBytes("txt-text.pptx");
    EXPECT_EQ(faultOf(deck.substr(0, deck.size() / 2)), Fault::NotZip);
    EXPECT_EQ(faultOf(deck.substr(0, deck.size() - 10)), Fault::NotZip);

    try {
        Deck::open(sourceDir() / "tests/data/decks/no-such-deck.pptx");
        ADD_FAILURE() << "opened a missing file";
    } catch (const PptxError& e) {
        EXPECT_EQ(e.fault(), Fault::Io);
        EXPECT_NE(std::string(e.what()).find("does not exist"), std::string::npos);
    }
    EXPECT_THROW(Deck::open(sourceDir() / "tests/data/decks"), PptxError);
}

TEST(PptxBadInput, ZipsThatAreNotPresentations) {
    std::string message;
    EXPECT_EQ(faultOf(writeZip({{"readme.txt", "hello"}}), &message), Fault::NotPresentation);
    EXPECT_NE(message.find("no [Content_Types].xml"), std::string::npos) << message;

    // A word-processing document is a package, but not a presentation.
    std::string types =
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"><Default Extension=\"xml\" "
        "ContentType=\"application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml\"/></Types>";
    std::string rels =
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"><Relationship Id=\"rId1\" "
        "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" "
        "Target=\"word/document.xml\"/></Relationships>";
    std::string word = writeZip({{"[Content_Types].xml", types}, {"_rels/.rels", rels}, {"word/document.xml", "<w/>"}});
    EXPECT_EQ(faultOf(word, &message), Fault::NotPresentation);
    EXPECT_NE(message.find("wordprocessingml"), std::string::npos) << message;

    std::string noMain = writeZip({{"[Content_Types].xml", types}});
    EXPECT_EQ(faultOf(noMain, &message), Fault::NotPresentation);
    EXPECT_NE(message.find("names no main document"), std::string::npos) << message;
}

TEST(PptxBadInput, MissingAndBrokenParts) {
    std::string deck = deckBytes("sld-slides.pptx");
    std::string message;

    EXPECT_EQ(faultOf(withEntry(deck, "ppt/slides/slide2.xml", "<p:sld><p:cSld>"), &message), Fault::BrokenPart);
    EXPECT_NE(message.find("part /ppt/slides/slide2.xml is not well-formed XML"), std::string::npos) << message;

    EXPECT_EQ(faultOf(withEntry(deck, "ppt/slides/slide3.xml", nullptr), &message), Fault::MissingPart);
    EXPECT_NE(message.find("slide 3 refers to the missing part /ppt/slides/slide3.xml"), std::string::npos) << message;

    std::string pres = replaced(entriesOf(deck)["ppt/presentation.xml"], "r:id=\"rId3\"", "r:id=\"rId99\"");
    EXPECT_EQ(faultOf(withEntry(deck, "ppt/presentation.xml", pres), &message), Fault::BrokenPart);
    EXPECT_NE(message.find("slide 2 names the relationship 'rId99'"), std::string::npos) << message;

    EXPECT_EQ(faultOf(withEntry(deck, "ppt/_rels/presentation.xml.rels", "<Relationships"), &message), Fault::BrokenPart);
    EXPECT_EQ(faultOf(withEntry(deck, "[Content_Types].xml", "<Types"), &message), Fault::BrokenPart);
    EXPECT_EQ(faultOf(withEntry(deck, "ppt/presentation.xml", nullptr), &message), Fault::MissingPart);
    EXPECT_EQ(faultOf(withEntry(deck, "ppt/slides/slide1.xml", "<?xml version=\"1.0\"?><notASlide/>"), &message),
              Fault::BrokenPart);
    EXPECT_NE(message.find("is not a slide"), std::string::npos) << message;

    // Tags that point nowhere, or that are not XML.
    std::string slide = entriesOf(deck)["ppt/slides/slide1.xml"];
    slide = replaced(slide, "</p:spTree>", "</p:spTree><p:custDataLst><p:tags r:id=\"rId7\"/></p:custDataLst>");
    std::string tagged = withEntry(deck, "ppt/slides/slide1.xml", slide);
    EXPECT_EQ(faultOf(tagged, &message), Fault::BrokenPart);
    EXPECT_NE(message.find("names the tags relationship 'rId7'"), std::string::npos) << message;
    std::string slideRels = replaced(entriesOf(deck)["ppt/slides/_rels/slide1.xml.rels"], "</Relationships>",
                                     "<Relationship Id=\"rId7\" Type=\"http://schemas.openxmlformats.org/officeDocument/"
                                     "2006/relationships/tags\" Target=\"../tags/tag1.xml\"/></Relationships>");
    tagged = withEntry(tagged, "ppt/slides/_rels/slide1.xml.rels", slideRels);
    EXPECT_EQ(faultOf(tagged, &message), Fault::MissingPart);
    EXPECT_NE(message.find("missing part /ppt/tags/tag1.xml"), std::string::npos) << message;
    EXPECT_EQ(faultOf(withEntry(tagged, "ppt/tags/tag1.xml", "<p:tagLst><p:tag"), &message), Fault::BrokenPart);
}

}  // namespace
}  // namespace tlx::test::pptx
