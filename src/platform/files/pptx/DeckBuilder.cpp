#include "platform/files/pptx/DeckBuilder.h"

#include "core/Text.h"
#include "platform/files/pptx/Package.h"
#include "platform/files/pptx/Zip.h"

namespace tlx::pptx {
namespace {

constexpr const char* kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n";
constexpr const char* kNs =
    "xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\" "
    "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\" "
    "xmlns:p=\"http://schemas.openxmlformats.org/presentationml/2006/main\"";
constexpr const char* kRelsNs = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr const char* kRelBase = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
constexpr const char* kCtBase = "application/vnd.openxmlformats-officedocument.";
constexpr const char* kAppCt = "application/vnd.openxmlformats-officedocument.extended-properties+xml";

// A fixed date keeps generated decks identical from run to run.
constexpr const char* kDate = "2024-01-01T00:00:00Z";

std::string escape(std::string_view text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

std::string rels(std::initializer_list<std::pair<std::string, std::string>> items) {
    std::string s = std::string(kDecl) + "<Relationships xmlns=\"" + kRelsNs + "\">";
    int n = 0;
    for (const auto& [type, target] : items) {
        s += "<Relationship Id=\"rId" + std::to_string(++n) + "\" Type=\"" +
             (type.starts_with("http") ? type : kRelBase + type) + "\" Target=\"" + target + "\"/>";
    }
    return s + "</Relationships>";
}

std::string contentTypes() {
    std::string s = std::string(kDecl) +
                    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
                    "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
                    "<Default Extension=\"xml\" ContentType=\"application/xml\"/>";
    const std::pair<const char*, std::string> overrides[] = {
        {"/ppt/presentation.xml", "presentationml.presentation.main+xml"},
        {"/ppt/slideMasters/slideMaster1.xml", "presentationml.slideMaster+xml"},
        {"/ppt/slideLayouts/slideLayout1.xml", "presentationml.slideLayout+xml"},
        {"/ppt/theme/theme1.xml", "theme+xml"},
        {"/ppt/presProps.xml", "presentationml.presProps+xml"},
        {"/ppt/viewProps.xml", "presentationml.viewProps+xml"},
        {"/ppt/tableStyles.xml", "presentationml.tableStyles+xml"},
        {"/docProps/app.xml", "extended-properties+xml"},
    };
    for (const auto& [part, type] : overrides)
        s += std::string("<Override PartName=\"") + part + "\" ContentType=\"" + kCtBase + type + "\"/>";
    s += "<Override PartName=\"/docProps/core.xml\" "
         "ContentType=\"application/vnd.openxmlformats-package.core-properties+xml\"/>";
    return s + "</Types>";
}

constexpr const char* kGroupProps =
    "<p:nvGrpSpPr><p:cNvPr id=\"1\" name=\"\"/><p:cNvGrpSpPr/><p:nvPr/></p:nvGrpSpPr>"
    "<p:grpSpPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"0\" cy=\"0\"/><a:chOff x=\"0\" y=\"0\"/>"
    "<a:chExt cx=\"0\" cy=\"0\"/></a:xfrm></p:grpSpPr>";

constexpr const char* kFonts =
    "<a:latin typeface=\"+mn-lt\"/><a:ea typeface=\"+mn-ea\"/><a:cs typeface=\"+mn-cs\"/>";

std::string level(int lvl, int marL, int indent, int size, bool bullet) {
    std::string s = "<a:lvl" + std::to_string(lvl) + "pPr marL=\"" + std::to_string(marL) + "\"";
    if (indent != 0) s += " indent=\"" + std::to_string(indent) + "\"";
    s += " algn=\"l\" defTabSz=\"914400\" rtl=\"0\" eaLnBrk=\"1\" latinLnBrk=\"0\" hangingPunct=\"1\">";
    if (bullet)
        s += "<a:lnSpc><a:spcPct val=\"90000\"/></a:lnSpc><a:spcBef><a:spcPts val=\"1000\"/></a:spcBef>"
             "<a:buFont typeface=\"Arial\"/><a:buChar char=\"\xE2\x80\xA2\"/>";
    s += "<a:defRPr sz=\"" + std::to_string(size) + "\" kern=\"1200\"><a:solidFill><a:schemeClr val=\"tx1\"/>"
         "</a:solidFill>" + kFonts + "</a:defRPr></a:lvl" + std::to_string(lvl) + "pPr>";
    return s;
}

std::string presentation(long cx, long cy, bool wide) {
    std::string s = std::string(kDecl) + "<p:presentation " + kNs + " saveSubsetFonts=\"1\">"
                    "<p:sldMasterIdLst><p:sldMasterId id=\"2147483648\" r:id=\"rId1\"/></p:sldMasterIdLst>"
                    "<p:sldSz cx=\"" + std::to_string(cx) + "\" cy=\"" + std::to_string(cy) + "\"" +
                    (wide ? "" : " type=\"screen4x3\"") + "/><p:notesSz cx=\"6858000\" cy=\"9144000\"/>"
                    "<p:defaultTextStyle><a:defPPr><a:defRPr lang=\"en-US\"/></a:defPPr>";
    for (int lvl = 1; lvl <= 9; ++lvl) s += level(lvl, 457200 * (lvl - 1), 0, 1800, false);
    return s + "</p:defaultTextStyle></p:presentation>";
}

std::string placeholder(int id, const char* name, const char* ph, long x, long y, long cx, long cy, const char* prompt,
                        const char* bodyPr) {
    return "<p:sp><p:nvSpPr><p:cNvPr id=\"" + std::to_string(id) + "\" name=\"" + name +
           "\"/><p:cNvSpPr><a:spLocks noGrp=\"1\"/></p:cNvSpPr><p:nvPr>" + ph +
           "</p:nvPr></p:nvSpPr><p:spPr><a:xfrm><a:off x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) +
           "\"/><a:ext cx=\"" + std::to_string(cx) + "\" cy=\"" + std::to_string(cy) +
           "\"/></a:xfrm><a:prstGeom prst=\"rect\"><a:avLst/></a:prstGeom></p:spPr><p:txBody>" + bodyPr +
           "<a:lstStyle/><a:p><a:r><a:rPr lang=\"en-US\"/><a:t>" + prompt +
           "</a:t></a:r><a:endParaRPr lang=\"en-US\"/></a:p></p:txBody></p:sp>";
}

std::string master(long cx) {
    long x = cx * 11 / 160;
    long w = cx - 2 * x;
    const char* body = "<a:bodyPr vert=\"horz\" lIns=\"91440\" tIns=\"45720\" rIns=\"91440\" bIns=\"45720\" rtlCol=\"0\">"
                       "<a:normAutofit/></a:bodyPr>";
    const char* titleBody = "<a:bodyPr vert=\"horz\" lIns=\"91440\" tIns=\"45720\" rIns=\"91440\" bIns=\"45720\" "
                            "rtlCol=\"0\" anchor=\"ctr\"><a:normAutofit/></a:bodyPr>";
    std::string s = std::string(kDecl) + "<p:sldMaster " + kNs + "><p:cSld><p:bg><p:bgRef idx=\"1001\">"
                    "<a:schemeClr val=\"bg1\"/></p:bgRef></p:bg><p:spTree>" + kGroupProps +
                    placeholder(2, "Title Placeholder 1", "<p:ph type=\"title\"/>", x, 365125, w, 1325563,
                                "Click to edit Master title style", titleBody) +
                    placeholder(3, "Text Placeholder 2", "<p:ph type=\"body\" idx=\"1\"/>", x, 1825625, w, 4351338,
                                "Click to edit Master text styles", body) +
                    "</p:spTree></p:cSld>"
                    "<p:clrMap bg1=\"lt1\" tx1=\"dk1\" bg2=\"lt2\" tx2=\"dk2\" accent1=\"accent1\" accent2=\"accent2\" "
                    "accent3=\"accent3\" accent4=\"accent4\" accent5=\"accent5\" accent6=\"accent6\" hlink=\"hlink\" "
                    "folHlink=\"folHlink\"/>"
                    "<p:sldLayoutIdLst><p:sldLayoutId id=\"2147483649\" r:id=\"rId1\"/></p:sldLayoutIdLst>"
                    "<p:txStyles><p:titleStyle><a:lvl1pPr algn=\"l\" defTabSz=\"914400\" rtl=\"0\" eaLnBrk=\"1\" "
                    "latinLnBrk=\"0\" hangingPunct=\"1\"><a:lnSpc><a:spcPct val=\"90000\"/></a:lnSpc><a:spcBef>"
                    "<a:spcPct val=\"0\"/></a:spcBef><a:buNone/><a:defRPr sz=\"4400\" kern=\"1200\"><a:solidFill>"
                    "<a:schemeClr val=\"tx1\"/></a:solidFill><a:latin typeface=\"+mj-lt\"/><a:ea typeface=\"+mj-ea\"/>"
                    "<a:cs typeface=\"+mj-cs\"/></a:defRPr></a:lvl1pPr></p:titleStyle><p:bodyStyle>";
    for (int lvl = 1; lvl <= 9; ++lvl)
        s += level(lvl, 228600 + 457200 * (lvl - 1), -228600, lvl == 1 ? 2800 : lvl == 2 ? 2400 : 2000, true);
    s += "</p:bodyStyle><p:otherStyle><a:defPPr><a:defRPr lang=\"en-US\"/></a:defPPr>";
    for (int lvl = 1; lvl <= 9; ++lvl) s += level(lvl, 457200 * (lvl - 1), 0, 1800, false);
    return s + "</p:otherStyle></p:txStyles></p:sldMaster>";
}

std::string layout() {
    return std::string(kDecl) + "<p:sldLayout " + kNs + " type=\"titleOnly\" preserve=\"1\"><p:cSld name=\"Title Only\">"
           "<p:spTree>" + kGroupProps +
           "<p:sp><p:nvSpPr><p:cNvPr id=\"2\" name=\"Title 1\"/><p:cNvSpPr><a:spLocks noGrp=\"1\"/></p:cNvSpPr>"
           "<p:nvPr><p:ph type=\"title\"/></p:nvPr></p:nvSpPr><p:spPr/><p:txBody><a:bodyPr/><a:lstStyle/><a:p>"
           "<a:r><a:rPr lang=\"en-US\"/><a:t>Click to edit Master title style</a:t></a:r><a:endParaRPr lang=\"en-US\"/>"
           "</a:p></p:txBody></p:sp></p:spTree></p:cSld><p:clrMapOvr><a:masterClrMapping/></p:clrMapOvr></p:sldLayout>";
}

std::string theme() {
    auto colour = [](const char* slot, const char* rgb) {
        return std::string("<a:") + slot + "><a:srgbClr val=\"" + rgb + "\"/></a:" + slot + ">";
    };
    auto three = [](const std::string& item) { return item + item + item; };
    return std::string(kDecl) +
           "<a:theme xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\" name=\"tallix\">"
           "<a:themeElements><a:clrScheme name=\"tallix\">"
           "<a:dk1><a:sysClr val=\"windowText\" lastClr=\"000000\"/></a:dk1>"
           "<a:lt1><a:sysClr val=\"window\" lastClr=\"FFFFFF\"/></a:lt1>" +
           colour("dk2", "1F3A5F") + colour("lt2", "E8ECF1") + colour("accent1", "2E75B6") + colour("accent2", "ED7D31") +
           colour("accent3", "70AD47") + colour("accent4", "FFC000") + colour("accent5", "5B9BD5") +
           colour("accent6", "A5A5A5") + colour("hlink", "0563C1") + colour("folHlink", "954F72") +
           "</a:clrScheme><a:fontScheme name=\"tallix\">"
           "<a:majorFont><a:latin typeface=\"Calibri Light\"/><a:ea typeface=\"\"/><a:cs typeface=\"\"/></a:majorFont>"
           "<a:minorFont><a:latin typeface=\"Calibri\"/><a:ea typeface=\"\"/><a:cs typeface=\"\"/></a:minorFont>"
           "</a:fontScheme><a:fmtScheme name=\"tallix\"><a:fillStyleLst>" +
           three("<a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill>") + "</a:fillStyleLst><a:lnStyleLst>" +
           "<a:ln w=\"6350\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:ln>"
           "<a:ln w=\"12700\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:ln>"
           "<a:ln w=\"19050\"><a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill></a:ln>"
           "</a:lnStyleLst><a:effectStyleLst>" +
           three("<a:effectStyle><a:effectLst/></a:effectStyle>") + "</a:effectStyleLst><a:bgFillStyleLst>" +
           three("<a:solidFill><a:schemeClr val=\"phClr\"/></a:solidFill>") +
           "</a:bgFillStyleLst></a:fmtScheme></a:themeElements><a:objectDefaults/><a:extraClrSchemeLst/></a:theme>";
}

std::string appProperties(int slides, bool wide) {
    return std::string(kDecl) +
           "<Properties xmlns=\"http://schemas.openxmlformats.org/officeDocument/2006/extended-properties\" "
           "xmlns:vt=\"http://schemas.openxmlformats.org/officeDocument/2006/docPropsVTypes\">"
           "<TotalTime>0</TotalTime><Application>tallix</Application><PresentationFormat>" +
           (wide ? "Widescreen" : "On-screen Show (4:3)") + "</PresentationFormat><Slides>" + std::to_string(slides) +
           "</Slides><Notes>0</Notes><HiddenSlides>0</HiddenSlides></Properties>";
}

std::string coreProperties(const std::string& title) {
    return std::string(kDecl) +
           "<cp:coreProperties xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
           "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:dcterms=\"http://purl.org/dc/terms/\" "
           "xmlns:dcmitype=\"http://purl.org/dc/dcmitype/\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
           "<dc:title>" + escape(title) + "</dc:title><dc:creator>tallix</dc:creator>"
           "<cp:lastModifiedBy>tallix</cp:lastModifiedBy><cp:revision>1</cp:revision>"
           "<dcterms:created xsi:type=\"dcterms:W3CDTF\">" + kDate + "</dcterms:created>"
           "<dcterms:modified xsi:type=\"dcterms:W3CDTF\">" + kDate + "</dcterms:modified></cp:coreProperties>";
}

// "\r", "\n", "\v", "\t", "\\" in a description value.
std::string unescape(std::string_view s, int line) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '\\') {
            out += s[i];
            continue;
        }
        if (++i == s.size())
            throw PptxError(Fault::Usage, "Line " + std::to_string(line) + ": a \"\\\" ends the line");
        switch (s[i]) {
            case 'r': out += '\r'; break;
            case 'n': out += '\n'; break;
            case 'v': out += '\v'; break;
            case 't': out += '\t'; break;
            case '\\': out += '\\'; break;
            default:
                throw PptxError(Fault::Usage, "Line " + std::to_string(line) + ": unknown escape \"\\" +
                                                  std::string(1, s[i]) + "\"");
        }
    }
    return out;
}

}  // namespace

Deck newDeck(const std::string& title, bool wide) {
    long cx = wide ? 12192000 : 9144000;
    long cy = 6858000;
    std::vector<ZipEntry> parts = {
        {"[Content_Types].xml", contentTypes()},
        {"_rels/.rels", rels({{"officeDocument", "ppt/presentation.xml"},
                              {"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties",
                               "docProps/core.xml"},
                              {"extended-properties", "docProps/app.xml"}})},
        {"docProps/core.xml", coreProperties(title)},
        {"docProps/app.xml", appProperties(0, wide)},
        {"ppt/presentation.xml", presentation(cx, cy, wide)},
        {"ppt/_rels/presentation.xml.rels", rels({{"slideMaster", "slideMasters/slideMaster1.xml"},
                                                  {"theme", "theme/theme1.xml"},
                                                  {"presProps", "presProps.xml"},
                                                  {"viewProps", "viewProps.xml"},
                                                  {"tableStyles", "tableStyles.xml"}})},
        {"ppt/slideMasters/slideMaster1.xml", master(cx)},
        {"ppt/slideMasters/_rels/slideMaster1.xml.rels",
         rels({{"slideLayout", "../slideLayouts/slideLayout1.xml"}, {"theme", "../theme/theme1.xml"}})},
        {"ppt/slideLayouts/slideLayout1.xml", layout()},
        {"ppt/slideLayouts/_rels/slideLayout1.xml.rels", rels({{"slideMaster", "../slideMasters/slideMaster1.xml"}})},
        {"ppt/theme/theme1.xml", theme()},
        {"ppt/presProps.xml", std::string(kDecl) + "<p:presentationPr " + kNs + "/>"},
        {"ppt/viewProps.xml", std::string(kDecl) + "<p:viewPr " + kNs +
                                  "><p:normalViewPr><p:restoredLeft sz=\"15620\"/><p:restoredTop sz=\"94660\"/>"
                                  "</p:normalViewPr><p:gridSpacing cx=\"76200\" cy=\"76200\"/></p:viewPr>"},
        {"ppt/tableStyles.xml", std::string(kDecl) +
                                    "<a:tblStyleLst xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\" "
                                    "def=\"{5C22544A-7EE6-4342-B048-85BDC9FD1C3A}\"/>"},
    };
    return Deck::fromBytes(writeZip(parts), title);
}

Deck buildDeck(const DeckPlan& plan) {
    Deck deck = newDeck(plan.title, plan.wide);
    const Box size = deck.slideSize();
    const std::int64_t x = size.cx * 11 / 160;
    const std::int64_t w = size.cx - 2 * x;
    for (const SlidePlan& s : plan.slides) {
        DeckSlide& slide = deck.addSlide();
        if (!s.title.empty()) slide.addTitle(kTitleShape, s.title);
        std::int64_t y = 1825625;
        if (!s.question.empty()) {
            slide.addTextBox(kQuestionShape, s.question, {x, y, w, 923330}, 28);
            y += 1000000;
        }
        if (!s.answers.empty()) {
            std::int64_t h = 457200 * static_cast<std::int64_t>(s.answers.size());
            slide.addTextBox(kAnswersShape, join(s.answers, "\r"), {x, y, w, h}, 24);
            y += h + 228600;
        }
        for (const TextBoxPlan& b : s.boxes) {
            slide.addTextBox(b.name, b.text, {x, y, w, 646331}, 20);
            y += 700000;
        }
        for (const auto& [name, value] : s.tags) slide.tags().add(name, value);
    }
    for (const auto& [name, value] : plan.tags) deck.tags().add(name, value);
    deck.package().putPart("/docProps/app.xml", appProperties(deck.slideCount(), plan.wide), kAppCt);
    return deck;
}

DeckPlan parseDeckDescription(std::string_view text) {
    DeckPlan plan;
    enum class Section { None, Presentation, Slide } section = Section::None;
    int lineNo = 0;
    for (const std::string& raw : split(replaceAll(std::string(text), "\r\n", "\n"), "\n")) {
        ++lineNo;
        std::string line = trim(raw);
        if (line.empty() || line[0] == '#' || line[0] == ';') continue;
        auto fail = [lineNo](const std::string& why) {
            return PptxError(Fault::Usage, "Line " + std::to_string(lineNo) + ": " + why);
        };
        if (line.front() == '[') {
            if (line.back() != ']') throw fail("a section heading must end with \"]\"");
            std::string name = toLower(trim(line.substr(1, line.size() - 2)));
            if (name == "presentation") {
                section = Section::Presentation;
            } else if (name == "slide") {
                section = Section::Slide;
                plan.slides.emplace_back();
            } else {
                throw fail("unknown section [" + name + "]");
            }
            continue;
        }
        auto [keyText, valueText] = splitOnce(line, "=");
        if (line.find('=') == std::string::npos) throw fail("expected key = value");
        std::string key = trim(keyText);
        std::string value = unescape(trim(valueText), lineNo);
        std::string lowerKey = toLower(key);
        if (section == Section::None) throw fail("\"" + key + "\" comes before any [presentation] or [slide]");
        if (lowerKey.starts_with("tag ") || lowerKey.starts_with("tag\t")) {
            std::string name = trim(key.substr(4));
            if (name.empty()) throw fail("a tag needs a name");
            (section == Section::Slide ? plan.slides.back().tags : plan.tags).emplace_back(name, value);
            continue;
        }
        if (section == Section::Presentation) {
            if (lowerKey == "title") plan.title = value;
            else if (lowerKey == "wide") plan.wide = !(iequals(value, "no") || value == "0" || iequals(value, "false"));
            else throw fail("unknown key \"" + key + "\" in [presentation]");
            continue;
        }
        SlidePlan& slide = plan.slides.back();
        if (lowerKey == "title") {
            slide.title = value;
        } else if (lowerKey == "question") {
            slide.question = value;
        } else if (lowerKey == "answer") {
            slide.answers.push_back(value);
        } else if (lowerKey == "box") {
            auto [name, boxText] = splitOnce(value, "|");
            if (value.find('|') == std::string::npos || trim(name).empty())
                throw fail("a box is written as: box = NAME | text");
            slide.boxes.push_back({trim(name), trim(boxText)});
        } else {
            throw fail("unknown key \"" + key + "\" in [slide]");
        }
    }
    return plan;
}

}  // namespace tlx::pptx
