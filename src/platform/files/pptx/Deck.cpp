#include "platform/files/pptx/Deck.h"

#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "core/Text.h"
#include "platform/files/pptx/Package.h"
#include "platform/files/pptx/Xml.h"

namespace tlx::pptx {

using pugi::xml_node;
using xml::child;
using xml::localName;

namespace {

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n";

xml_node node(pugi::xml_node_struct* s) { return xml_node(s); }

bool shapeKindOf(std::string_view local, ShapeKind& kind) {
    if (local == "sp") kind = ShapeKind::AutoShape;
    else if (local == "pic") kind = ShapeKind::Picture;
    else if (local == "graphicFrame") kind = ShapeKind::GraphicFrame;
    else if (local == "grpSp") kind = ShapeKind::Group;
    else if (local == "cxnSp") kind = ShapeKind::Connector;
    else if (local == "contentPart") kind = ShapeKind::ContentPart;
    else return false;
    return true;
}

// The non-visual properties of a shape: nvSpPr, nvPicPr, nvGraphicFramePr ...
xml_node nonVisual(xml_node shape) {
    for (xml_node c = shape.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && localName(c).starts_with("nv")) return c;
    return {};
}

xml_node cNvPr(xml_node shape) { return child(nonVisual(shape), "cNvPr"); }

std::vector<xml_node> childrenNamed(xml_node parent, std::string_view local) {
    std::vector<xml_node> out;
    for (xml_node c = parent.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && localName(c) == local) out.push_back(c);
    return out;
}

std::string paragraphText(xml_node p) {
    std::string s;
    for (xml_node c = p.first_child(); c; c = c.next_sibling()) {
        std::string_view local = localName(c);
        if (local == "r" || local == "fld") s += child(c, "t").text().get();
        else if (local == "br") s += '\v';
    }
    return s;
}

// "\r\n", "\r" and "\n" all end a paragraph.
std::vector<std::string> splitParagraphs(std::string_view text) {
    std::vector<std::string> out(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            out.emplace_back();
        } else {
            out.back() += c;
        }
    }
    return out;
}

// Replaces the runs, breaks and fields of a paragraph with `text`, keeping its paragraph
// properties and giving the new runs the properties of its first run.
void setParagraphNode(xml_node p, std::string_view text, const xml::Names& ns) {
    std::vector<xml_node> old;
    xml_node templ;
    xml_node end;
    for (xml_node c = p.first_child(); c; c = c.next_sibling()) {
        std::string_view local = localName(c);
        if (local == "r" || local == "br" || local == "fld") {
            old.push_back(c);
            if (!templ && local != "br") templ = child(c, "rPr");
        } else if (local == "endParaRPr") {
            end = c;
        }
    }
    if (!templ) templ = end;
    auto insert = [&](const std::string& name) { return end ? p.insert_child_before(name.c_str(), end) : p.append_child(name.c_str()); };
    auto props = [&](xml_node into) {
        if (!templ) return;
        xml_node copy = into.append_copy(templ);
        copy.set_name(ns.a("rPr").c_str());
        copy.remove_attribute("err");  // the spelling mark belonged to the old words
    };
    std::vector<std::string> lines = split(text, "\v");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) props(insert(ns.a("br")));
        if (lines[i].empty()) continue;
        xml_node r = insert(ns.a("r"));
        props(r);
        r.append_child(ns.a("t").c_str()).text().set(xml::xmlSafe(lines[i]).c_str());
    }
    for (xml_node o : old) p.remove_child(o);
}

xml_node insertBeforeFirst(xml_node parent, const std::string& name, std::initializer_list<std::string_view> followers) {
    for (xml_node c = parent.first_child(); c; c = c.next_sibling())
        for (std::string_view f : followers)
            if (c.type() == pugi::node_element && localName(c) == f) return parent.insert_child_before(name.c_str(), c);
    return parent.append_child(name.c_str());
}

std::int64_t attrInt(xml_node n, const char* name, std::int64_t fallback) {
    pugi::xml_attribute a = n.attribute(name);
    return a ? a.as_llong(fallback) : fallback;
}

}  // namespace

// ================================================================ TagList

std::string TagList::item(std::string_view name) const {
    for (const auto& [n, v] : tags_)
        if (iequals(n, name)) return v;
    return "";
}

bool TagList::has(std::string_view name) const {
    for (const auto& t : tags_)
        if (iequals(t.first, name)) return true;
    return false;
}

void TagList::add(std::string_view name, std::string_view value) {
    std::string upper = toUpper(name);
    for (auto& t : tags_)
        if (iequals(t.first, name)) {
            if (t.first != upper || t.second != value) changed_ = true;
            t.first = upper;
            t.second = std::string(value);
            return;
        }
    tags_.emplace_back(std::move(upper), std::string(value));
    changed_ = true;
}

void TagList::remove(std::string_view name) {
    auto n = std::erase_if(tags_, [&](const auto& t) { return iequals(t.first, name); });
    if (n > 0) changed_ = true;
}

const std::string& TagList::name(int index) const {
    if (index < 1 || index > count())
        throw PptxError(Fault::Usage, "Tag index " + std::to_string(index) + " is out of range (" +
                                          std::to_string(count()) + " tags)");
    return tags_[static_cast<std::size_t>(index - 1)].first;
}

const std::string& TagList::value(int index) const {
    name(index);
    return tags_[static_cast<std::size_t>(index - 1)].second;
}

// ================================================================ DeckShape

DeckShape::DeckShape(DeckSlide& slide, DeckShape* parent, pugi::xml_node_struct* n, ShapeKind kind)
    : slide_(&slide), parent_(parent), node_(n), kind_(kind) {}

void DeckShape::check() const {
    if (removed_) throw PptxError(Fault::Usage, "The shape '" + removedName_ + "' was deleted");
}

void DeckShape::changed() const { slide_->touch(); }

std::string DeckShape::name() const {
    if (removed_) return removedName_;
    return xml::plainAttr(cNvPr(node(node_)), "name").value();
}

void DeckShape::setName(std::string_view name) {
    check();
    xml_node c = cNvPr(node(node_));
    if (!c) return;
    pugi::xml_attribute a = xml::plainAttr(c, "name");
    if (!a) a = c.append_attribute("name");
    a.set_value(xml::xmlSafe(name).c_str());
    changed();
}

unsigned DeckShape::id() const {
    check();
    return xml::plainAttr(cNvPr(node(node_)), "id").as_uint();
}

std::string DeckShape::placeholderType() const {
    check();
    xml_node ph = child(child(nonVisual(node(node_)), "nvPr"), "ph");
    if (!ph) return "";
    pugi::xml_attribute type = xml::plainAttr(ph, "type");
    return type ? type.value() : "obj";
}

bool DeckShape::visible() const {
    check();
    return !xml::boolAttr(cNvPr(node(node_)), "hidden", false);
}

void DeckShape::setVisible(bool visible) {
    check();
    xml_node c = cNvPr(node(node_));
    if (!c || this->visible() == visible) return;
    if (visible) {
        c.remove_attribute(xml::plainAttr(c, "hidden"));
    } else {
        pugi::xml_attribute a = xml::plainAttr(c, "hidden");
        if (!a) a = c.append_attribute("hidden");
        a.set_value("1");
    }
    changed();
}

pugi::xml_node_struct* DeckShape::textBody(bool create) const {
    check();
    if (kind_ != ShapeKind::AutoShape) {
        if (!create) return nullptr;
        throw PptxError(Fault::Usage, "The shape '" + name() + "' has no text frame");
    }
    xml_node sp = node(node_);
    xml_node body = child(sp, "txBody");
    if (body || !create) return body.internal_object();
    xml::Names ns(slide_->deck_->package_->xml(slide_->part_));
    body = insertBeforeFirst(sp, ns.p("txBody"), {"extLst"});
    xml_node bodyPr = body.append_child(ns.a("bodyPr").c_str());
    bodyPr.append_attribute("rtlCol") = "0";
    bodyPr.append_attribute("anchor") = "ctr";
    body.append_child(ns.a("lstStyle").c_str());
    body.append_child(ns.a("p").c_str()).append_child(ns.a("endParaRPr").c_str()).append_attribute("lang") = "en-US";
    return body.internal_object();
}

std::vector<std::string> DeckShape::paragraphs() const {
    std::vector<std::string> out;
    xml_node body = node(textBody(false));
    for (xml_node p : childrenNamed(body, "p")) out.push_back(paragraphText(p));
    return out;
}

std::string DeckShape::text() const { return join(paragraphs(), "\r"); }

int DeckShape::paragraphCount() const { return static_cast<int>(paragraphs().size()); }

std::string DeckShape::paragraph(int index) const {
    std::vector<std::string> all = paragraphs();
    if (index < 1 || index > static_cast<int>(all.size())) return "";
    return all[static_cast<std::size_t>(index - 1)];
}

void DeckShape::setText(std::string_view text) {
    xml_node body = node(textBody(true));
    xml::Names ns(slide_->deck_->package_->xml(slide_->part_));
    std::vector<std::string> wanted = splitParagraphs(text);
    std::vector<xml_node> have = childrenNamed(body, "p");
    if (have.empty()) have.push_back(insertBeforeFirst(body, ns.a("p"), {"extLst"}));
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (i >= have.size()) have.push_back(body.insert_copy_after(have.back(), have.back()));
        setParagraphNode(have[i], wanted[i], ns);
    }
    for (std::size_t i = wanted.size(); i < have.size(); ++i) body.remove_child(have[i]);
    changed();
}

void DeckShape::setParagraph(int index, std::string_view text) {
    if (index < 1) throw PptxError(Fault::Usage, "Paragraph index " + std::to_string(index) + " is out of range");
    xml_node body = node(textBody(true));
    xml::Names ns(slide_->deck_->package_->xml(slide_->part_));
    std::vector<xml_node> have = childrenNamed(body, "p");
    if (have.empty()) have.push_back(insertBeforeFirst(body, ns.a("p"), {"extLst"}));
    while (static_cast<int>(have.size()) < index) {
        have.push_back(body.insert_copy_after(have.back(), have.back()));
        setParagraphNode(have.back(), "", ns);
    }
    std::vector<std::string> parts = splitParagraphs(text);
    xml_node at = have[static_cast<std::size_t>(index - 1)];
    setParagraphNode(at, parts[0], ns);
    for (std::size_t i = 1; i < parts.size(); ++i) {
        at = body.insert_copy_after(at, at);
        setParagraphNode(at, parts[i], ns);
    }
    changed();
}

pugi::xml_node_struct* DeckShape::topNode() const {
    xml_node n = node(node_);
    xml_node up = n.parent();
    std::string_view local = localName(up);
    if (local == "Choice" || local == "Fallback") return up.parent().internal_object();
    return n.internal_object();
}

std::vector<DeckShape*>& DeckShape::siblings() const { return parent_ ? parent_->children_ : slide_->top_; }

void DeckShape::bringToFront() {
    check();
    xml_node n = node(topNode());
    xml_node container = n.parent();
    xml_node ext = child(container, "extLst");
    if (ext) container.insert_move_before(n, ext);
    else container.append_move(n);
    std::vector<DeckShape*>& sibs = siblings();
    auto it = std::find(sibs.begin(), sibs.end(), this);
    if (it != sibs.end()) std::rotate(it, it + 1, sibs.end());
    changed();
}

void DeckShape::markRemoved() {
    if (removed_) return;
    for (DeckShape* c : children_) c->markRemoved();
    removedName_ = name();
    removed_ = true;
    node_ = nullptr;
}

void DeckShape::remove() {
    check();
    xml_node n = node(topNode());
    std::vector<DeckShape*>& sibs = siblings();
    std::erase(sibs, this);
    markRemoved();
    n.parent().remove_child(n);
    changed();
}

// ================================================================ DeckSlide

DeckSlide::DeckSlide(Deck& deck, std::string part, unsigned id) : deck_(&deck), part_(std::move(part)), id_(id) {}

int DeckSlide::number() const { return index_ + deck_->firstSlideNumber_ - 1; }

bool DeckSlide::hiddenInShow() const {
    return !xml::boolAttr(deck_->package_->xml(part_).document_element(), "show", true);
}

void DeckSlide::touch() const { deck_->package_->touch(part_); }

void DeckSlide::load() {
    Package& pkg = *deck_->package_;
    xml_node root = pkg.xml(part_).document_element();
    if (localName(root) != "sld")
        throw PptxError(Fault::BrokenPart, "'" + pkg.label() + "': part " + part_ + " is not a slide (its root is <" +
                                               std::string(root.name()) + ">)");
    xml_node tree = child(child(root, "cSld"), "spTree");
    collect(tree.internal_object(), nullptr, top_);
    deck_->readTags(tags_, part_, true);
}

void DeckSlide::collect(pugi::xml_node_struct* container, DeckShape* parent, std::vector<DeckShape*>& into) {
    for (xml_node c = node(container).first_child(); c; c = c.next_sibling()) {
        if (c.type() != pugi::node_element) continue;
        std::string_view local = localName(c);
        if (local == "AlternateContent") {
            // Newer content with a fallback: the chosen branch is what the program shows.
            xml_node branch = child(c, "Choice");
            if (!branch) branch = child(c, "Fallback");
            collect(branch.internal_object(), parent, into);
            continue;
        }
        ShapeKind kind;
        if (!shapeKindOf(local, kind)) continue;
        owned_.push_back(std::unique_ptr<DeckShape>(new DeckShape(*this, parent, c.internal_object(), kind)));
        DeckShape* shape = owned_.back().get();
        into.push_back(shape);
        if (kind == ShapeKind::Group) collect(c.internal_object(), shape, shape->children_);
    }
}

std::vector<DeckShape*> DeckSlide::allShapes() const {
    std::vector<DeckShape*> out;
    auto walk = [&out](auto& self, const std::vector<DeckShape*>& list) -> void {
        for (DeckShape* s : list) {
            out.push_back(s);
            self(self, s->children());
        }
    };
    walk(walk, top_);
    return out;
}

DeckShape* DeckSlide::shape(std::string_view name) const {
    for (DeckShape* s : allShapes())
        if (s->name() == name) return s;
    return nullptr;
}

std::string DeckSlide::title() const {
    for (DeckShape* s : allShapes()) {
        std::string type = s->placeholderType();
        if (type == "title" || type == "ctrTitle") return s->text();
    }
    return "";
}

unsigned DeckSlide::nextShapeId() const {
    unsigned highest = 1;
    auto walk = [&highest](auto& self, xml_node n) -> void {
        for (xml_node c = n.first_child(); c; c = c.next_sibling()) {
            if (c.type() != pugi::node_element) continue;
            if (localName(c) == "cNvPr") highest = std::max(highest, xml::plainAttr(c, "id").as_uint());
            self(self, c);
        }
    };
    walk(walk, deck_->package_->xml(part_).document_element());
    return highest + 1;
}

DeckShape& DeckSlide::adopt(pugi::xml_node_struct* n) {
    owned_.push_back(std::unique_ptr<DeckShape>(new DeckShape(*this, nullptr, n, ShapeKind::AutoShape)));
    top_.push_back(owned_.back().get());
    return *owned_.back();
}

pugi::xml_node_struct* DeckSlide::shapeTree() {
    pugi::xml_document& doc = deck_->package_->xml(part_);
    xml::Names ns(doc);
    xml_node root = doc.document_element();
    xml_node cSld = child(root, "cSld");
    if (!cSld) cSld = root.prepend_child(ns.p("cSld").c_str());
    xml_node tree = child(cSld, "spTree");
    if (!tree) {
        tree = insertBeforeFirst(cSld, ns.p("spTree"), {"custDataLst", "controls", "extLst"});
        xml_node nv = tree.append_child(ns.p("nvGrpSpPr").c_str());
        xml_node c = nv.append_child(ns.p("cNvPr").c_str());
        c.append_attribute("id") = 1;
        c.append_attribute("name") = "";
        nv.append_child(ns.p("cNvGrpSpPr").c_str());
        nv.append_child(ns.p("nvPr").c_str());
        tree.append_child(ns.p("grpSpPr").c_str());
    }
    return tree.internal_object();
}

DeckShape& DeckSlide::addTextBox(std::string_view name, std::string_view text, Box box, int fontSizePt) {
    pugi::xml_document& doc = deck_->package_->xml(part_);
    xml_node tree = node(shapeTree());
    xml::Names ns(doc);
    if (box.cx <= 0 || box.cy <= 0) {
        Box size = deck_->slideSize_;
        box = {size.cx / 12, size.cy / 4, size.cx * 10 / 12, size.cy / 8};
    }
    xml_node sp = insertBeforeFirst(tree, ns.p("sp"), {"extLst"});
    xml_node nv = sp.append_child(ns.p("nvSpPr").c_str());
    xml_node c = nv.append_child(ns.p("cNvPr").c_str());
    c.append_attribute("id") = nextShapeId();
    c.append_attribute("name") = xml::xmlSafe(name).c_str();
    nv.append_child(ns.p("cNvSpPr").c_str()).append_attribute("txBox") = "1";
    nv.append_child(ns.p("nvPr").c_str());
    xml_node spPr = sp.append_child(ns.p("spPr").c_str());
    xml_node xfrm = spPr.append_child(ns.a("xfrm").c_str());
    xml_node off = xfrm.append_child(ns.a("off").c_str());
    off.append_attribute("x") = static_cast<long long>(box.x);
    off.append_attribute("y") = static_cast<long long>(box.y);
    xml_node ext = xfrm.append_child(ns.a("ext").c_str());
    ext.append_attribute("cx") = static_cast<long long>(box.cx);
    ext.append_attribute("cy") = static_cast<long long>(box.cy);
    xml_node geom = spPr.append_child(ns.a("prstGeom").c_str());
    geom.append_attribute("prst") = "rect";
    geom.append_child(ns.a("avLst").c_str());
    spPr.append_child(ns.a("noFill").c_str());
    xml_node body = sp.append_child(ns.p("txBody").c_str());
    xml_node bodyPr = body.append_child(ns.a("bodyPr").c_str());
    bodyPr.append_attribute("wrap") = "square";
    bodyPr.append_attribute("rtlCol") = "0";
    bodyPr.append_child(ns.a("spAutoFit").c_str());
    body.append_child(ns.a("lstStyle").c_str());
    xml_node end = body.append_child(ns.a("p").c_str()).append_child(ns.a("endParaRPr").c_str());
    end.append_attribute("lang") = "en-US";
    if (fontSizePt > 0) end.append_attribute("sz") = fontSizePt * 100;
    end.append_attribute("dirty") = "0";
    DeckShape& shape = adopt(sp.internal_object());
    shape.setText(text);
    return shape;
}

DeckShape& DeckSlide::addTitle(std::string_view name, std::string_view text) {
    pugi::xml_document& doc = deck_->package_->xml(part_);
    xml_node tree = node(shapeTree());
    xml::Names ns(doc);
    xml_node sp = insertBeforeFirst(tree, ns.p("sp"), {"extLst"});
    xml_node nv = sp.append_child(ns.p("nvSpPr").c_str());
    xml_node c = nv.append_child(ns.p("cNvPr").c_str());
    c.append_attribute("id") = nextShapeId();
    c.append_attribute("name") = xml::xmlSafe(name).c_str();
    nv.append_child(ns.p("cNvSpPr").c_str()).append_child(ns.a("spLocks").c_str()).append_attribute("noGrp") = "1";
    nv.append_child(ns.p("nvPr").c_str()).append_child(ns.p("ph").c_str()).append_attribute("type") = "title";
    sp.append_child(ns.p("spPr").c_str());
    xml_node body = sp.append_child(ns.p("txBody").c_str());
    body.append_child(ns.a("bodyPr").c_str());
    body.append_child(ns.a("lstStyle").c_str());
    xml_node end = body.append_child(ns.a("p").c_str()).append_child(ns.a("endParaRPr").c_str());
    end.append_attribute("lang") = "en-US";
    end.append_attribute("dirty") = "0";
    DeckShape& shape = adopt(sp.internal_object());
    shape.setText(text);
    return shape;
}

// ================================================================ Deck

Deck::Deck() = default;
Deck::~Deck() = default;

Deck::Deck(Deck&& o) noexcept { *this = std::move(o); }

Deck& Deck::operator=(Deck&& o) noexcept {
    package_ = std::move(o.package_);
    path_ = std::move(o.path_);
    presentationPart_ = std::move(o.presentationPart_);
    firstSlideNumber_ = o.firstSlideNumber_;
    slideSize_ = o.slideSize_;
    tags_ = std::move(o.tags_);
    slides_ = std::move(o.slides_);
    order_ = std::move(o.order_);
    structureChanged_ = o.structureChanged_;
    for (auto& s : slides_) s->deck_ = this;  // the slides point back at their deck
    return *this;
}

Deck Deck::open(const std::filesystem::path& file) {
    std::error_code ec;
    if (!std::filesystem::exists(file, ec))
        throw PptxError(Fault::Io, "Cannot open '" + file.string() + "': the file does not exist");
    if (std::filesystem::is_directory(file, ec))
        throw PptxError(Fault::Io, "Cannot open '" + file.string() + "': it is a folder");
    std::ifstream in(file, std::ios::binary);
    std::ostringstream bytes;
    if (!in || !(bytes << in.rdbuf()))
        throw PptxError(Fault::Io, "Cannot read '" + file.string() + "'");
    Deck deck = fromBytes(bytes.str(), file.string());
    deck.path_ = file;
    return deck;
}

Deck Deck::fromBytes(std::string_view bytes, std::string label) {
    Deck deck;
    deck.package_ = std::make_unique<Package>(Package::fromBytes(bytes, std::move(label)));
    deck.load();
    return deck;
}

void Deck::load() {
    Package& pkg = *package_;
    const std::string& label = pkg.label();
    const Relationship* main = pkg.relationships("/").firstOfType(rel::kOfficeDocument);
    if (!main)
        throw PptxError(Fault::NotPresentation, "'" + label + "' is not a presentation: the package names no main document");
    presentationPart_ = pkg.targetPart("/", *main);
    if (!pkg.hasPart(presentationPart_))
        throw PptxError(Fault::MissingPart, "'" + label + "': the main document " + presentationPart_ + " is missing");
    std::string type = pkg.contentType(presentationPart_);
    if (type.find("presentationml") == std::string::npos && type.find("ms-powerpoint") == std::string::npos)
        throw PptxError(Fault::NotPresentation, "'" + label + "' is not a presentation: its main document is of type '" +
                                                    type + "'");
    xml_node root = pkg.xml(presentationPart_).document_element();
    if (localName(root) != "presentation")
        throw PptxError(Fault::BrokenPart, "'" + label + "': part " + presentationPart_ + " is not a presentation (its root is <" +
                                               std::string(root.name()) + ">)");
    firstSlideNumber_ = static_cast<int>(attrInt(root, "firstSlideNum", 1));
    xml_node size = child(root, "sldSz");
    slideSize_ = {0, 0, attrInt(size, "cx", 9144000), attrInt(size, "cy", 6858000)};

    Relationships& rels = pkg.relationships(presentationPart_);
    for (xml_node id : childrenNamed(child(root, "sldIdLst"), "sldId")) {
        int index = slideCount() + 1;
        std::string rid = xml::prefixedAttr(id, "id").value();
        const Relationship* r = rels.byId(rid);
        if (!r)
            throw PptxError(Fault::BrokenPart, "'" + label + "': slide " + std::to_string(index) +
                                                   " names the relationship '" + rid + "', which the presentation does not have");
        std::string part = pkg.targetPart(presentationPart_, *r);
        if (part.empty() || !pkg.hasPart(part))
            throw PptxError(Fault::MissingPart, "'" + label + "': slide " + std::to_string(index) + " refers to the missing part " +
                                                    (part.empty() ? r->target : part));
        for (const DeckSlide* s : order_)
            if (iequals(s->part_, part))
                throw PptxError(Fault::BrokenPart, "'" + label + "': the part " + part + " is listed as two slides");
        slides_.push_back(std::unique_ptr<DeckSlide>(new DeckSlide(*this, part, xml::plainAttr(id, "id").as_uint())));
        DeckSlide& slide = *slides_.back();
        slide.index_ = index;
        order_.push_back(&slide);
        slide.load();
    }
    readTags(tags_, presentationPart_, false);
}

DeckSlide& Deck::slide(int index) const {
    if (index < 1 || index > slideCount())
        throw PptxError(Fault::Usage, "Slide index " + std::to_string(index) + " is out of range (the deck has " +
                                          std::to_string(slideCount()) + " slides)");
    return *order_[static_cast<std::size_t>(index - 1)];
}

DeckSlide* Deck::slideById(unsigned id) const {
    for (DeckSlide* s : order_)
        if (s->id_ == id) return s;
    return nullptr;
}

// ---------------------------------------------------------------- tags

void Deck::readTags(TagList& tags, const std::string& owner, bool slide) {
    Package& pkg = *package_;
    tags.owner_ = owner;
    xml_node root = pkg.xml(owner).document_element();
    // Slides keep the reference in cSld; tolerate writers that put it on the root.
    xml_node ref = child(child(slide ? child(root, "cSld") : root, "custDataLst"), "tags");
    if (!ref && slide) ref = child(child(root, "custDataLst"), "tags");
    Relationships& rels = pkg.relationships(owner);
    const Relationship* r = nullptr;
    if (ref) {
        std::string rid = xml::prefixedAttr(ref, "id").value();
        r = rels.byId(rid);
        if (!r)
            throw PptxError(Fault::BrokenPart, "'" + pkg.label() + "': part " + owner + " names the tags relationship '" + rid +
                                                   "', which it does not have");
    } else {
        r = rels.firstOfType(rel::kTags);
    }
    if (!r) return;
    std::string part = pkg.targetPart(owner, *r);
    if (part.empty() || !pkg.hasPart(part))
        throw PptxError(Fault::MissingPart, "'" + pkg.label() + "': the tags of " + owner + " are in the missing part " +
                                                (part.empty() ? r->target : part));
    for (xml_node t : childrenNamed(pkg.xml(part).document_element(), "tag"))
        tags.tags_.emplace_back(xml::decodeXstring(xml::plainAttr(t, "name").value()),
                                xml::decodeXstring(xml::plainAttr(t, "val").value()));
    tags.part_ = part;
    tags.relId_ = r->id;
}

void Deck::writeTags(TagList& tags, bool slide) {
    if (!tags.changed_) return;
    Package& pkg = *package_;
    const std::string& owner = tags.owner_;
    Relationships& rels = pkg.relationships(owner);
    if (tags.tags_.empty()) {
        if (!tags.part_.empty()) {
            // No tags left: take the reference, the relationship and (unless shared) the part away.
            xml_node root = pkg.xml(owner).document_element();
            for (xml_node holder : {child(root, "cSld"), root}) {
                xml_node list = child(holder, "custDataLst");
                for (xml_node t : childrenNamed(list, "tags"))
                    if (tags.relId_ == xml::prefixedAttr(t, "id").value()) list.remove_child(t);
                if (list && !list.find_child([](xml_node n) { return n.type() == pugi::node_element; }))
                    holder.remove_child(list);
            }
            pkg.touch(owner);
            rels.remove(tags.relId_);
            if (pkg.referenceCount(tags.part_) == 0) pkg.removePart(tags.part_);
            tags.part_.clear();
            tags.relId_.clear();
        }
        tags.changed_ = false;
        return;
    }
    if (!tags.part_.empty() && pkg.referenceCount(tags.part_) > 1) {
        // Another part shares these tags: this owner gets a copy of its own.
        std::string copy = pkg.freePartName("/ppt/tags", "tag", "xml");
        pkg.putPart(copy, "", ct::kTags);
        rels.retarget(tags.relId_, Package::relativeTarget(owner, copy));
        tags.part_ = copy;
    }
    if (tags.part_.empty()) {
        std::string part = pkg.freePartName("/ppt/tags", "tag", "xml");
        pkg.putPart(part, "", ct::kTags);
        std::string rid = rels.add(rel::kTags, Package::relativeTarget(owner, part));
        pugi::xml_document& doc = pkg.xml(owner);
        xml::Names ns(doc);
        xml_node root = doc.document_element();
        xml_node holder = root;
        if (slide) {
            holder = child(root, "cSld");
            if (!holder) holder = root.prepend_child(ns.p("cSld").c_str());
        }
        xml_node list = child(holder, "custDataLst");
        if (!list)
            list = slide ? insertBeforeFirst(holder, ns.p("custDataLst"), {"controls", "extLst"})
                         : insertBeforeFirst(holder, ns.p("custDataLst"), {"kinsoku", "defaultTextStyle", "modifyVerifier", "extLst"});
        list.append_child(ns.p("tags").c_str()).append_attribute(ns.r("id").c_str()) = rid.c_str();
        pkg.touch(owner);
        tags.part_ = part;
        tags.relId_ = rid;
    }
    pugi::xml_document out;
    pugi::xml_node list = out.append_child("p:tagLst");
    list.append_attribute("xmlns:a") = xml::kNsA;
    list.append_attribute("xmlns:r") = xml::kNsR;
    list.append_attribute("xmlns:p") = xml::kNsP;
    for (const auto& [name, value] : tags.tags_) {
        pugi::xml_node t = list.append_child("p:tag");
        t.append_attribute("name") = xml::encodeXstring(name).c_str();
        t.append_attribute("val") = xml::encodeXstring(value).c_str();
    }
    pkg.putPart(tags.part_, kDeclaration + xml::serialize(out), ct::kTags);
    tags.changed_ = false;
}

// ---------------------------------------------------------------- slides

std::string Deck::layoutForNewSlide() {
    Package& pkg = *package_;
    if (!order_.empty()) {
        const std::string& last = order_.back()->part_;
        if (const Relationship* r = pkg.relationships(last).firstOfType(rel::kSlideLayout)) return pkg.targetPart(last, *r);
    }
    for (const Relationship& m : pkg.relationships(presentationPart_).all()) {
        if (!rel::sameType(m.type, "http://schemas.openxmlformats.org/officeDocument/2006/relationships/slideMaster")) continue;
        std::string master = pkg.targetPart(presentationPart_, m);
        if (const Relationship* r = pkg.relationships(master).firstOfType(rel::kSlideLayout)) return pkg.targetPart(master, *r);
    }
    throw PptxError(Fault::BrokenPart, "'" + pkg.label() + "' has no slide layout for a new slide");
}

DeckSlide& Deck::addSlide() {
    Package& pkg = *package_;
    std::string layout = layoutForNewSlide();
    std::string part = pkg.freePartName("/ppt/slides", "slide", "xml");
    pkg.putPart(part,
                std::string(kDeclaration) +
                    "<p:sld xmlns:a=\"" + xml::kNsA + "\" xmlns:r=\"" + xml::kNsR + "\" xmlns:p=\"" + xml::kNsP +
                    "\"><p:cSld><p:spTree><p:nvGrpSpPr><p:cNvPr id=\"1\" name=\"\"/><p:cNvGrpSpPr/><p:nvPr/>"
                    "</p:nvGrpSpPr><p:grpSpPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"0\" cy=\"0\"/>"
                    "<a:chOff x=\"0\" y=\"0\"/><a:chExt cx=\"0\" cy=\"0\"/></a:xfrm></p:grpSpPr></p:spTree></p:cSld>"
                    "<p:clrMapOvr><a:masterClrMapping/></p:clrMapOvr></p:sld>",
                ct::kSlide);
    pkg.relationships(part).add(rel::kSlideLayout, Package::relativeTarget(part, layout));
    std::string rid = pkg.relationships(presentationPart_).add(rel::kSlide, Package::relativeTarget(presentationPart_, part));

    pugi::xml_document& doc = pkg.xml(presentationPart_);
    xml::Names ns(doc);
    xml_node root = doc.document_element();
    xml_node list = child(root, "sldIdLst");
    if (!list) {
        xml_node after;
        for (const char* before : {"sldMasterIdLst", "notesMasterIdLst", "handoutMasterIdLst"})
            if (xml_node n = child(root, before)) after = n;
        list = after ? root.insert_child_after(ns.p("sldIdLst").c_str(), after) : root.prepend_child(ns.p("sldIdLst").c_str());
    }
    unsigned id = 255;
    for (xml_node s : childrenNamed(list, "sldId")) id = std::max(id, xml::plainAttr(s, "id").as_uint());
    xml_node entry = list.append_child(ns.p("sldId").c_str());
    entry.append_attribute("id") = id + 1;
    entry.append_attribute(ns.r("id").c_str()) = rid.c_str();
    pkg.touch(presentationPart_);

    slides_.push_back(std::unique_ptr<DeckSlide>(new DeckSlide(*this, part, id + 1)));
    DeckSlide& slide = *slides_.back();
    slide.index_ = slideCount();
    order_.push_back(&slide);
    slide.load();
    structureChanged_ = true;
    return slide;
}

// ---------------------------------------------------------------- saving

bool Deck::modified() const {
    if (structureChanged_ || tags_.changed_ || package_->modified()) return true;
    return std::any_of(order_.begin(), order_.end(), [](const DeckSlide* s) { return s->tags_.changed_; });
}

std::string Deck::toBytes() {
    for (DeckSlide* s : order_) writeTags(s->tags_, true);
    writeTags(tags_, false);
    structureChanged_ = false;
    return package_->toBytes();
}

void Deck::save() {
    if (path_.empty()) throw PptxError(Fault::Usage, "The deck '" + package_->label() + "' has no file to save to");
    saveAs(path_);
}

void Deck::saveAs(const std::filesystem::path& file) {
    std::string bytes = toBytes();
    // Write beside the target and rename, so that a failed save leaves the old file whole.
    std::filesystem::path temp = file;
    temp += ".saving";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out || !out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) || !out.flush()) {
            std::error_code ignore;
            std::filesystem::remove(temp, ignore);
            throw PptxError(Fault::Io, "Cannot write '" + file.string() + "'");
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, file, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        throw PptxError(Fault::Io, "Cannot write '" + file.string() + "': " + ec.message());
    }
    path_ = file;
    package_->setLabel(file.string());
}

}  // namespace tlx::pptx
