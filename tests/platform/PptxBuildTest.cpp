// New decks from scratch: the builder's package must be complete and consistent, read back by
// the reader, and the committed example decks must match their descriptions.
#include "PptxTestSupport.h"
#include "platform/files/pptx/DeckBuilder.h"

namespace tlx::test::pptx {
namespace {

TEST(PptxBuild, SlidesWithTitlesQuestionsAnswersAndTagsInACompletePackage) {
    EXPECT_EQ(newDeck("Empty", false).slideCount(), 0);
    DeckPlan plan;
    plan.tags = {{"ActiveKeypads", ""}, {"tlx_DefaultGroup", "A & B"}};
    plan.slides.push_back({"Welcome", "", {}, {{"Subtitle", "Line one\rLine two"}}, {}});
    plan.slides.push_back({"Colours", "Which colour do you like best?", {"Red", "Green", "Blue"}, {},
                           {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>3</Options>"}}});
    plan.slides.push_back({"", "", {}, {}, {}});
    Deck built = buildDeck(plan);
    Deck deck = Deck::fromBytes(built.toBytes(), "built");
    ASSERT_EQ(deck.slideCount(), 3);

    DeckSlide& welcome = deck.slide(1);
    EXPECT_EQ(shapeNames(welcome.shapes()), (std::vector<std::string>{"Title 1", "Subtitle"}));
    EXPECT_EQ(fields(welcome.shape("Title 1")->placeholderType(), welcome.title(), welcome.tags().count(),
                     welcome.shape("Subtitle")->text()),
              "title|Welcome|0|Line one\rLine two");

    DeckSlide& vote = deck.slide(2);
    EXPECT_EQ(shapeNames(vote.shapes()), (std::vector<std::string>{"Title 1", "tlx_Question", "tlx_Answers"}));
    EXPECT_EQ(fields(vote.shape("tlx_Question")->text(), vote.shape("tlx_Answers")->text(), vote.tags().item("TLXVOTE")),
              "Which colour do you like best?|Red\rGreen\rBlue|<VoteType>SINGLEDIGIT</VoteType><Options>3</Options>");
    // Shape ids are unique on a slide.
    std::set<unsigned> ids;
    for (DeckShape* s : vote.allShapes()) EXPECT_TRUE(ids.insert(s->id()).second);

    EXPECT_TRUE(deck.slide(3).shapes().empty());
    EXPECT_EQ(fields(deck.tags().has("activekeypads"), deck.tags().item("ActiveKeypads"), deck.tags().item("TLX_DEFAULTGROUP")),
              "1||A & B");
    EXPECT_NE(deck.package().partData("/docProps/app.xml").find("<Slides>3</Slides>"), std::string::npos);

    Package& pkg = deck.package();
    expectSoundPackage(pkg);
    for (const char* part : {"/ppt/slideMasters/slideMaster1.xml", "/ppt/theme/theme1.xml", "/ppt/presProps.xml",
                             "/ppt/viewProps.xml", "/ppt/tableStyles.xml", "/docProps/core.xml"})
        EXPECT_TRUE(pkg.hasPart(part)) << part;  // a presentation program needs them all
    EXPECT_NE(pkg.contentType("/ppt/presentation.xml").find("presentation.main+xml"), std::string::npos);
    // Every slide is listed once, with its own id, and uses the layout.
    std::set<unsigned> slideIds;
    for (DeckSlide* s : deck.slides()) {
        EXPECT_TRUE(slideIds.insert(s->id()).second);
        EXPECT_NE(pkg.relationships(s->partName()).firstOfType(rel::kSlideLayout), nullptr);
        EXPECT_EQ(pkg.contentType(s->partName()), ct::kSlide);
    }
}

TEST(PptxBuild, DescriptionsAreReadLineByLine) {
    DeckPlan plan = parseDeckDescription(
        "# comment\r\n"
        "[presentation]\n"
        "title = Demo\n"
        "wide = no\n"
        "tag ActiveKeypads =\n"
        "\n"
        "[slide]\n"
        "title = First\\vline\n"
        "question = Pick one\n"
        "answer = A\n"
        "answer = B\n"
        "box = Notes | one\\rtwo \\\\ three\n"
        "tag TLXVOTE = <Options>2</Options>\\r\\n<VoteType>SINGLEDIGIT</VoteType>\n"
        "[Slide]\n");
    EXPECT_EQ(fields(plan.title, plan.wide), "Demo|0");
    EXPECT_EQ(plan.tags, (TagPairs{{"ActiveKeypads", ""}}));
    ASSERT_EQ(plan.slides.size(), 2u);
    const SlidePlan& s = plan.slides[0];
    EXPECT_EQ(s.answers, (std::vector<std::string>{"A", "B"}));
    ASSERT_EQ(s.boxes.size(), 1u);
    EXPECT_EQ(fields(s.title, s.question, s.boxes[0].name, s.boxes[0].text), "First\vline|Pick one|Notes|one\rtwo \\ three");
    EXPECT_EQ(s.tags, (TagPairs{{"TLXVOTE", "<Options>2</Options>\r\n<VoteType>SINGLEDIGIT</VoteType>"}}));

    auto error = [](const std::string& text) {
        try {
            parseDeckDescription(text);
        } catch (const PptxError& e) {
            return std::string(e.what());
        }
        return std::string("no error");
    };
    EXPECT_EQ(error("title = x"), "Line 1: \"title\" comes before any [presentation] or [slide]");
    EXPECT_EQ(error("[slide]\ncolour = red"), "Line 2: unknown key \"colour\" in [slide]");
    EXPECT_EQ(error("[slides]"), "Line 1: unknown section [slides]");
    EXPECT_EQ(error("[slide]\njust text"), "Line 2: expected key = value");
    EXPECT_EQ(error("[slide]\nbox = no bar"), "Line 2: a box is written as: box = NAME | text");
    EXPECT_EQ(error("[slide]\ntitle = a\\qb"), "Line 2: unknown escape \"\\q\"");
    EXPECT_EQ(error("[slide]\ntag = x"), "Line 2: unknown key \"tag\" in [slide]");
}

TEST(PptxBuild, ExampleDecksMatchTheirDescriptions) {
    for (const char* name : {"demo", "votes"}) {
        SCOPED_TRACE(name);
        std::filesystem::path dir = sourceDir() / "examples/decks";
        Deck rebuilt = buildDeck(parseDeckDescription(readFile(dir / (std::string(name) + ".ini"))));
        std::string committed = readFile(dir / (std::string(name) + ".pptx"));
        EXPECT_EQ(rebuilt.toBytes(), committed) << "run scripts/make-example-decks";
    }
    expectSoundPackage(Deck::open(sourceDir() / "examples/decks/demo.pptx").package());
}

}  // namespace
}  // namespace tlx::test::pptx
