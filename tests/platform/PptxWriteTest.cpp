// Changing and saving decks: tags stored the way the presentation program stores them, text,
// visibility, deleted and added shapes, new slides; untouched parts keep their bytes.
#include "PptxTestSupport.h"

namespace tlx::test::pptx {
namespace {

const char* kDecks[] = {"prs-notes.pptx", "shp-shapes.pptx", "sld-slides.pptx", "test.pptx", "txt-text.pptx"};

pugi::xml_document parse(const std::string& data) {
    pugi::xml_document doc;
    EXPECT_TRUE(doc.load_buffer(data.data(), data.size()));
    return doc;
}

TEST(PptxSave, UnchangedDeckKeepsEveryPartByteForByte) {
    for (const char* name : kDecks) {
        SCOPED_TRACE(name);
        std::string original = deckBytes(name);
        Deck deck = Deck::fromBytes(original);
        EXPECT_FALSE(deck.modified());
        EXPECT_EQ(entriesOf(deck.toBytes()), entriesOf(original));
    }
}

TEST(PptxSave, TagsRoundTripTheWayThePresentationProgramStoresThem) {
    TempDir dir;
    std::string original = deckBytes("txt-text.pptx");
    Deck deck = Deck::fromBytes(original);
    const std::string config = "<VoteType>SINGLEDIGIT</VoteType>\r\n<Options>4</Options> & \"more\"";
    deck.slide(2).tags().add("TlxVote", config);
    deck.tags().add("tlxCurrentSlide", "2");
    deck.tags().add("ActiveKeypads", "3,7");
    EXPECT_TRUE(deck.modified());
    // Names are kept upper-cased and compare without regard to case.
    EXPECT_EQ(fields(deck.slide(2).tags().name(1), deck.tags().item("TLXCURRENTSLIDE")), "TLXVOTE|2");
    deck.saveAs(dir / "tagged.pptx");
    EXPECT_FALSE(deck.modified());

    Deck reopened = Deck::open(dir / "tagged.pptx");
    EXPECT_EQ(reopened.slide(2).tags().item("tlxvote"), config);
    const auto& tags = reopened.tags();
    EXPECT_EQ(fields(reopened.slide(2).tags().count(), reopened.slide(1).tags().count(), tags.count()), "1|0|2");
    EXPECT_EQ(fields(tags.name(1), tags.name(2), tags.value(2)), "TLXCURRENTSLIDE|ACTIVEKEYPADS|3,7");
    EXPECT_THROW(reopened.tags().name(3), PptxError);

    // Control characters cannot be written in XML: tag values keep them through the "_xHHHH_"
    // escape (a literal escape text survives too), text and names drop them.
    const std::string odd = std::string("a\vb\x01" "c _x000B_ \xC3\xA9");
    reopened.slide(1).tags().add("ODD", odd);
    reopened.slide(1).shape("TextBox 2")->setText("x\x01" "y\tz");
    reopened.slide(1).shape("TextBox 2")->setName("Box\x02");
    Deck odder = Deck::fromBytes(reopened.toBytes());
    EXPECT_EQ(fields(odder.slide(1).tags().item("odd") == odd, odder.slide(1).shape("Box")->text()), "1|xy\tz");
    for (const std::string& part : odder.package().partNames())
        for (const char* ref : {"&#01;", "&#11;", "&#02;"}) EXPECT_EQ(odder.package().partData(part).find(ref), std::string::npos) << part;
    const Relationship* oddRel = odder.package().relationships("/ppt/slides/slide1.xml").firstOfType(rel::kTags);
    ASSERT_NE(oddRel, nullptr);
    std::string oddXml = odder.package().partData(odder.package().targetPart("/ppt/slides/slide1.xml", *oddRel));
    EXPECT_NE(oddXml.find("a_x000B_b_x0001_c _x005F_x000B_"), std::string::npos) << oddXml;

    // The package: tags parts with their content type, a tags relationship from the owner,
    // and the reference in custDataLst at the place the schema gives it.
    Package& pkg = reopened.package();
    expectSoundPackage(pkg);
    const Relationship* slideTags = pkg.relationships("/ppt/slides/slide2.xml").firstOfType(rel::kTags);
    ASSERT_NE(slideTags, nullptr);
    EXPECT_TRUE(slideTags->target.starts_with("../tags/tag"));
    std::string tagPart = pkg.targetPart("/ppt/slides/slide2.xml", *slideTags);
    EXPECT_EQ(pkg.contentType(tagPart), ct::kTags);
    pugi::xml_document tagDoc = parse(pkg.partData(tagPart));
    EXPECT_STREQ(tagDoc.document_element().name(), "p:tagLst");
    EXPECT_STREQ(tagDoc.document_element().child("p:tag").attribute("name").value(), "TLXVOTE");

    pugi::xml_document slide = parse(pkg.partData("/ppt/slides/slide2.xml"));
    pugi::xml_node cSld = slide.document_element().child("p:cSld");
    EXPECT_EQ(childNames(cSld), (std::vector<std::string>{"p:spTree", "p:custDataLst", "p:extLst"}));
    EXPECT_EQ(std::string(cSld.child("p:custDataLst").child("p:tags").attribute("r:id").value()), slideTags->id);

    pugi::xml_document pres = parse(pkg.partData("/ppt/presentation.xml"));
    std::vector<std::string> order = childNames(pres.document_element());
    auto at = std::find(order.begin(), order.end(), "p:custDataLst");
    ASSERT_NE(at, order.end());
    EXPECT_EQ(fields(*(at - 1), *(at + 1)), "p:notesSz|p:defaultTextStyle");

    // Only the parts that had to change were written again.
    std::map<std::string, std::string> before = entriesOf(original);
    std::map<std::string, std::string> after = entriesOf(readFile(dir / "tagged.pptx"));
    std::set<std::string> changed;
    for (const auto& [name, data] : after)
        if (!before.contains(name) || before[name] != data) changed.insert(name);
    EXPECT_EQ(changed, (std::set<std::string>{"[Content_Types].xml", "ppt/presentation.xml", "ppt/_rels/presentation.xml.rels",
                                              "ppt/slides/slide2.xml", "ppt/slides/_rels/slide2.xml.rels",
                                              "ppt/tags/tag1.xml", "ppt/tags/tag2.xml"}));
    EXPECT_EQ(after.size(), before.size() + 2);
}

TEST(PptxSave, ChangingAndRemovingTagsReusesAndThenDropsTheirParts) {
    Deck deck = Deck::open(deckFile("test.pptx"));
    deck.slide(1).tags().add("MURMELO", "True");
    deck.slide(1).tags().add("TLXVOTE", "a");
    Deck second = Deck::fromBytes(deck.toBytes());
    std::size_t parts = second.package().partNames().size();

    second.slide(1).tags().add("tlxvote", "b");  // same tag, new value
    second.slide(1).tags().remove("murmelo");
    second.slide(1).tags().remove("absent");
    Deck third = Deck::fromBytes(second.toBytes());
    EXPECT_EQ(fields(third.package().partNames().size() - parts, third.slide(1).tags().count(), third.slide(1).tags().item("TLXVOTE")),
              "0|1|b");

    // The last tag gone: part, relationship, reference and content type go with it.
    third.slide(1).tags().remove("TLXVOTE");
    Deck fourth = Deck::fromBytes(third.toBytes());
    EXPECT_EQ(fourth.slide(1).tags().count(), 0);
    Package& pkg = fourth.package();
    EXPECT_EQ(fields(parts - pkg.partNames().size(), pkg.relationships("/ppt/slides/slide1.xml").firstOfType(rel::kTags) == nullptr,
                     contains(pkg.partData("/ppt/slides/slide1.xml"), "custDataLst"),
                     contains(pkg.partData("[Content_Types].xml"), "tags+xml")),
              "1|1|0|0");
    expectSoundPackage(pkg);
}

TEST(PptxSave, TagsWhereOtherWritersPutThemAndSharedTagParts) {
    std::string deck = deckBytes("sld-slides.pptx");
    std::string tagXml =
        "<?xml version=\"1.0\"?><p:tagLst xmlns:p=\"http://schemas.openxmlformats.org/presentationml/2006/main\">"
        "<p:tag name=\"TLXVOTE\" val=\"shared\"/></p:tagLst>";
    std::string tagRel = "<Relationship Id=\"rId9\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/"
                         "relationships/tags\" Target=\"../tags/tag1.xml\"/></Relationships>";
    std::map<std::string, std::string> e = entriesOf(deck);
    // Slide 1 names the part from the slide root, slide 2 only through its relationships;
    // both share one tags part.
    std::string s1 = replaced(e["ppt/slides/slide1.xml"], "<p:clrMapOvr>",
                              "<p:custDataLst><p:tags r:id=\"rId9\"/></p:custDataLst><p:clrMapOvr>");
    deck = withEntry(deck, "ppt/slides/slide1.xml", s1);
    deck = withEntry(deck, "ppt/slides/_rels/slide1.xml.rels", replaced(e["ppt/slides/_rels/slide1.xml.rels"], "</Relationships>", tagRel));
    deck = withEntry(deck, "ppt/slides/_rels/slide2.xml.rels", replaced(e["ppt/slides/_rels/slide2.xml.rels"], "</Relationships>", tagRel));
    deck = withEntry(deck, "[Content_Types].xml",
                     replaced(e["[Content_Types].xml"], "</Types>",
                              "<Override PartName=\"/ppt/tags/tag1.xml\" ContentType=\"" + std::string(ct::kTags) + "\"/></Types>"));
    deck = withEntry(deck, "ppt/tags/tag1.xml", tagXml);

    Deck d = Deck::fromBytes(deck);
    EXPECT_EQ(fields(d.slide(1).tags().item("TLXVOTE"), d.slide(2).tags().item("tlxvote"), d.slide(3).tags().count()),
              "shared|shared|0");

    // Changing one slide's tags leaves the other slide's tags alone.
    d.slide(2).tags().add("TLXVOTE", "own");
    Deck saved = Deck::fromBytes(d.toBytes());
    EXPECT_EQ(fields(saved.slide(1).tags().item("TLXVOTE"), saved.slide(2).tags().item("TLXVOTE")), "shared|own");
    expectSoundPackage(saved.package());
}

TEST(PptxSave, TextChangesKeepParagraphAndRunProperties) {
    Deck deck = Deck::open(deckFile("shp-shapes.pptx"));
    DeckShape* content = deck.slide(1).shape("Content Placeholder 4");
    content->setText("One\rTwo\r\nThree\nFour\vand a half");
    DeckShape* rect = deck.slide(2).shape("Rectangle 8");  // centred, no runs yet
    rect->setText("Hi");
    DeckShape* title = deck.slide(1).shape("Title 3");
    title->setText("");
    EXPECT_THROW(deck.slide(1).shape("Picture 5")->setText("x"), PptxError);

    Deck saved = Deck::fromBytes(deck.toBytes());
    DeckShape* c = saved.slide(1).shape("Content Placeholder 4");
    EXPECT_EQ(c->paragraphs(), (std::vector<std::string>{"One", "Two", "Three", "Four\vand a half"}));
    EXPECT_EQ(fields(saved.slide(1).shape("Title 3")->paragraphs().size(), saved.slide(1).shape("Title 3")->text(),
                     saved.slide(2).shape("Rectangle 8")->text()),
              "1||Hi");

    pugi::xml_document slide = parse(saved.package().partData("/ppt/slides/slide1.xml"));
    pugi::xml_node body = slide.select_node("//p:sp[p:nvSpPr/p:cNvPr/@name='Content Placeholder 4']/p:txBody").node();
    int runs = 0;
    for (pugi::xml_node p : body.children("a:p"))
        for (pugi::xml_node r : p.children("a:r")) {
            ++runs;
            EXPECT_STREQ(r.child("a:rPr").attribute("sz").value(), "2000");
            EXPECT_FALSE(r.child("a:rPr").attribute("err"));
        }
    EXPECT_EQ(fields(runs, body.select_nodes(".//a:br").size(), body.child("a:bodyPr").child("a:normAutofit").empty()),
              "5|1|0");

    pugi::xml_document slide2 = parse(saved.package().partData("/ppt/slides/slide2.xml"));
    pugi::xml_node p = slide2.select_node("//p:sp[p:nvSpPr/p:cNvPr/@name='Rectangle 8']/p:txBody/a:p").node();
    EXPECT_EQ(childNames(p), (std::vector<std::string>{"a:pPr", "a:r", "a:endParaRPr"}));
    EXPECT_STREQ(p.child("a:pPr").attribute("algn").value(), "ctr");
    EXPECT_STREQ(p.child("a:r").child("a:rPr").attribute("lang").value(), "en-US");
}

TEST(PptxSave, SettingSingleParagraphs) {
    Deck deck = Deck::open(deckFile("txt-text.pptx"));
    DeckShape* box = deck.slide(1).shape("TextBox 2");
    box->setParagraph(2, "Keypad 7 - Active");
    EXPECT_EQ(box->paragraphs(), (std::vector<std::string>{"abc", "Keypad 7 - Active"}));
    box->setParagraph(4, "four");
    EXPECT_EQ(box->paragraphs(), (std::vector<std::string>{"abc", "Keypad 7 - Active", "", "four"}));
    box->setParagraph(1, "x\ry");
    EXPECT_EQ(box->paragraphs(), (std::vector<std::string>{"x", "y", "Keypad 7 - Active", "", "four"}));
    EXPECT_THROW(box->setParagraph(0, "no"), PptxError);
    Deck saved = Deck::fromBytes(deck.toBytes());
    EXPECT_EQ(saved.slide(1).shape("TextBox 2")->text(), "x\ry\rKeypad 7 - Active\r\rfour");

    // A shape without a text body gets one on the first write.
    std::string bytes = deckBytes("test.pptx");
    std::string slide = entriesOf(bytes)["ppt/slides/slide1.xml"];
    auto from = slide.rfind("<p:txBody>");
    slide.erase(from, slide.find("</p:txBody>", from) + 11 - from);
    Deck bare = Deck::fromBytes(withEntry(bytes, "ppt/slides/slide1.xml", slide));
    EXPECT_EQ(bare.slide(1).shape("Subtitle 2")->paragraphCount(), 0);
    bare.slide(1).shape("Subtitle 2")->setParagraph(2, "second");
    Deck filled = Deck::fromBytes(bare.toBytes());
    EXPECT_EQ(filled.slide(1).shape("Subtitle 2")->paragraphs(), (std::vector<std::string>{"", "second"}));
}

TEST(PptxSave, VisibilityDeletionOrderAndNewTextBoxes) {
    TempDir dir;
    std::filesystem::copy_file(deckFile("shp-shapes.pptx"), dir / "deck.pptx");
    Deck deck = Deck::open(dir / "deck.pptx");
    DeckSlide& one = deck.slide(1);
    one.shape("Picture 5")->setVisible(false);
    one.shape("Title 3")->bringToFront();
    DeckShape* table = one.shape("Table 1");
    table->remove();
    EXPECT_EQ(fields(table->removed(), table->name()), "1|Table 1");
    EXPECT_THROW(table->setVisible(false), PptxError);
    EXPECT_THROW(table->text(), PptxError);
    EXPECT_EQ(one.shape("Table 1"), nullptr);

    DeckShape* group = deck.slide(2).shape("Group 4");
    DeckShape* oval = deck.slide(2).shape("Oval 2");
    group->remove();
    EXPECT_EQ(fields(oval->removed(), deck.slide(2).allShapes().size()), "1|3");

    DeckShape& added = one.addTextBox("tlx_Question", "Which colour?\rRed or blue", {100, 200, 3000000, 600000}, 28);
    EXPECT_EQ(fields(added.id(), added.hasTextFrame()), "9|1");  // one above the highest id on the slide
    deck.save();

    Deck saved = Deck::open(dir / "deck.pptx");
    DeckSlide& s = saved.slide(1);
    EXPECT_EQ(shapeNames(s.shapes()), (std::vector<std::string>{"Content Placeholder 4", "Picture 5", "Chart 2",
                                                                "Diagram 7", "Title 3", "tlx_Question"}));
    EXPECT_FALSE(s.shape("Picture 5")->visible());
    EXPECT_NE(saved.package().partData("/ppt/slides/slide1.xml").find("name=\"Picture 5\" descr=\"python-powered.png\" hidden=\"1\""),
              std::string::npos);
    EXPECT_EQ(s.shape("tlx_Question")->paragraphs(), (std::vector<std::string>{"Which colour?", "Red or blue"}));
    EXPECT_EQ(shapeNames(saved.slide(2).shapes()),
              (std::vector<std::string>{"Straight Arrow Connector 6", "Picture 7", "Rectangle 8"}));
    expectSoundPackage(saved.package());

    s.shape("Picture 5")->setVisible(true);
    Deck shown = Deck::fromBytes(saved.toBytes());
    EXPECT_EQ(fields(shown.slide(1).shape("Picture 5")->visible(), contains(shown.package().partData("/ppt/slides/slide1.xml"), "hidden=")),
              "1|0");
}

TEST(PptxSave, AddedSlidesFollowTheLastSlidesLayout) {
    Deck deck = Deck::open(deckFile("prs-notes.pptx"));
    DeckSlide& added = deck.addSlide();
    EXPECT_EQ(fields(added.index(), added.id()), "2|257");
    added.addTitle("Title 1", "Added");
    added.tags().add("TLXVOTE", "x");
    Deck saved = Deck::fromBytes(deck.toBytes());
    ASSERT_EQ(saved.slideCount(), 2);
    EXPECT_EQ(fields(saved.slide(2).title(), saved.slide(2).tags().item("TLXVOTE")), "Added|x");
    Package& pkg = saved.package();
    const Relationship* layout = pkg.relationships(saved.slide(2).partName()).firstOfType(rel::kSlideLayout);
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(pkg.targetPart(saved.slide(2).partName(), *layout), "/ppt/slideLayouts/slideLayout1.xml");
    expectSoundPackage(pkg);
}

TEST(PptxSave, SaveNeedsAFileAndFailsCleanly) {
    Deck deck = Deck::fromBytes(deckBytes("test.pptx"));
    EXPECT_THROW(deck.save(), PptxError);
    TempDir dir;
    try {
        deck.saveAs(dir / "no-such-folder" / "deck.pptx");
        ADD_FAILURE() << "saved into a missing folder";
    } catch (const PptxError& e) {
        EXPECT_EQ(e.fault(), Fault::Io);
    }
    EXPECT_TRUE(deck.path().empty());
}

}  // namespace
}  // namespace tlx::test::pptx
