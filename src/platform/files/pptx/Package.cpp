#include "platform/files/pptx/Package.h"

#include <algorithm>

#include "core/Text.h"
#include "platform/files/pptx/PptxError.h"
#include "platform/files/pptx/Xml.h"
#include "platform/files/pptx/Zip.h"

namespace tlx::pptx {
namespace {

constexpr const char* kContentTypesEntry = "[Content_Types].xml";
constexpr const char* kNsContentTypes = "http://schemas.openxmlformats.org/package/2006/content-types";
constexpr const char* kNsRelationships = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n";

std::string lower(std::string_view s) { return toLower(s); }

std::string extensionOf(std::string_view part) {
    auto slash = part.rfind('/');
    auto dot = part.rfind('.');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash)) return "";
    return std::string(part.substr(dot + 1));
}

std::string percentDecode(std::string_view s) {
    std::string out;
    out.reserve(s.size());
    auto hex = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '%' && i + 2 < s.size() && hex(s[i + 1]) >= 0 && hex(s[i + 2]) >= 0) {
            out += static_cast<char>(hex(s[i + 1]) * 16 + hex(s[i + 2]));
            i += 2;
        } else {
            out += s[i];
        }
    }
    return out;
}

std::vector<std::string> segments(std::string_view path) {
    std::vector<std::string> out;
    for (const std::string& s : split(path, "/"))
        if (!s.empty()) out.push_back(s);
    return out;
}

// The folder of a part as segments ("/" for the package has none).
std::vector<std::string> folderOf(std::string_view part) {
    std::vector<std::string> segs = segments(part);
    if (!segs.empty() && part != "/") segs.pop_back();
    if (part == "/") segs.clear();
    return segs;
}

std::string serializeRelationships(const std::vector<Relationship>& items) {
    pugi::xml_document doc;
    pugi::xml_node root = doc.append_child("Relationships");
    root.append_attribute("xmlns") = kNsRelationships;
    for (const Relationship& r : items) {
        pugi::xml_node n = root.append_child("Relationship");
        n.append_attribute("Id") = r.id.c_str();
        n.append_attribute("Type") = r.type.c_str();
        n.append_attribute("Target") = r.target.c_str();
        if (r.external) n.append_attribute("TargetMode") = "External";
    }
    return kDeclaration + xml::serialize(doc);
}

}  // namespace

bool rel::sameType(std::string_view type, std::string_view wanted) {
    if (type == wanted) return true;
    auto tail = [](std::string_view t) {
        auto slash = t.rfind('/');
        return slash == std::string_view::npos ? t : t.substr(slash + 1);
    };
    return tail(type) == tail(wanted) && type.find("relationships") != std::string_view::npos;
}

// ---------------------------------------------------------------- Relationships

const Relationship* Relationships::byId(std::string_view id) const {
    for (const Relationship& r : items_)
        if (r.id == id) return &r;
    return nullptr;
}

const Relationship* Relationships::firstOfType(std::string_view type) const {
    for (const Relationship& r : items_)
        if (rel::sameType(r.type, type)) return &r;
    return nullptr;
}

std::string Relationships::add(std::string_view type, std::string_view target) {
    long next = 1;
    for (const Relationship& r : items_)
        if (r.id.starts_with("rId")) next = std::max(next, static_cast<long>(leadingNumber(r.id.substr(3))) + 1);
    std::string id = "rId" + std::to_string(next);
    while (byId(id)) id = "rId" + std::to_string(++next);
    items_.push_back({id, std::string(type), std::string(target), false});
    changed_ = true;
    return id;
}

void Relationships::remove(std::string_view id) {
    auto it = std::remove_if(items_.begin(), items_.end(), [&](const Relationship& r) { return r.id == id; });
    if (it != items_.end()) {
        items_.erase(it, items_.end());
        changed_ = true;
    }
}

void Relationships::retarget(std::string_view id, std::string_view target) {
    for (Relationship& r : items_)
        if (r.id == id) {
            r.target = std::string(target);
            changed_ = true;
        }
}

// ---------------------------------------------------------------- Package internals

struct Package::Impl {
    struct Entry {
        std::string name;  // "/ppt/slides/slide1.xml"; the content-types entry keeps its zip name
        std::string data;
    };
    struct XmlPart {
        pugi::xml_document doc;
        bool changed = false;
    };
    std::vector<Entry> entries;
    std::vector<std::pair<std::string, std::string>> defaults;   // extension, type
    std::vector<std::pair<std::string, std::string>> overrides;  // part, type
    bool typesChanged = false;
    std::map<std::string, Relationships> rels;                   // by lower-case source part
    std::map<std::string, std::unique_ptr<XmlPart>> xmlParts;   // by lower-case part

    Entry* find(std::string_view part) {
        for (Entry& e : entries)
            if (iequals(e.name, part)) return &e;
        return nullptr;
    }
    const Entry* find(std::string_view part) const { return const_cast<Impl*>(this)->find(part); }
};

Package::Package() : d_(std::make_unique<Impl>()) {}
Package::Package(Package&&) noexcept = default;
Package& Package::operator=(Package&&) noexcept = default;
Package::~Package() = default;

Package Package::fromBytes(std::string_view bytes, std::string label) {
    Package pkg;
    pkg.label_ = std::move(label);
    bool haveTypes = false;
    std::string typesXml;
    for (ZipEntry& z : readZip(bytes, pkg.label_)) {
        if (iequals(z.name, kContentTypesEntry)) {
            haveTypes = true;
            typesXml = z.data;
            pkg.d_->entries.push_back({z.name, std::move(z.data)});
            continue;
        }
        std::string name = "/" + z.name;
        if (pkg.d_->find(name))
            throw PptxError(Fault::BrokenPart, "'" + pkg.label_ + "' holds the part " + name + " twice");
        pkg.d_->entries.push_back({std::move(name), std::move(z.data)});
    }
    if (!haveTypes)
        throw PptxError(Fault::NotPresentation,
                        "'" + pkg.label_ + "' is not a presentation: the package has no [Content_Types].xml");

    pugi::xml_document doc;
    pugi::xml_parse_result ok = doc.load_buffer(typesXml.data(), typesXml.size(), xml::kParse);
    if (!ok || !doc.document_element())
        throw PptxError(Fault::BrokenPart, "'" + pkg.label_ + "': [Content_Types].xml is not well-formed XML (" +
                                               ok.description() + " at offset " + std::to_string(ok.offset) + ")");
    for (pugi::xml_node n : doc.document_element().children()) {
        std::string_view local = xml::localName(n);
        if (local == "Default")
            pkg.d_->defaults.emplace_back(n.attribute("Extension").value(), n.attribute("ContentType").value());
        else if (local == "Override")
            pkg.d_->overrides.emplace_back(n.attribute("PartName").value(), n.attribute("ContentType").value());
    }
    return pkg;
}

bool Package::hasPart(std::string_view part) const { return d_->find(part) != nullptr; }

std::vector<std::string> Package::partNames() const {
    std::vector<std::string> names;
    for (const Impl::Entry& e : d_->entries)
        if (!iequals(e.name, kContentTypesEntry) && !e.name.ends_with("/")) names.push_back(e.name);
    return names;
}

std::string Package::partData(std::string_view part) const {
    auto x = d_->xmlParts.find(lower(part));
    if (x != d_->xmlParts.end() && x->second->changed) return xml::serialize(x->second->doc);
    for (const auto& [key, rs] : d_->rels)
        if (rs.changed_ && iequals(relsPartOf(rs.source_), part)) return serializeRelationships(rs.items_);
    const Impl::Entry* e = d_->find(part);
    if (!e) throw PptxError(Fault::MissingPart, "'" + label_ + "' has no part " + std::string(part));
    return e->data;
}

void Package::putPart(std::string_view part, std::string data, std::string_view contentType) {
    if (Impl::Entry* e = d_->find(part)) {
        e->data = std::move(data);
    } else {
        d_->entries.push_back({std::string(part), std::move(data)});
    }
    d_->xmlParts.erase(lower(part));
    if (contentType.empty() || this->contentType(part) == contentType) return;
    for (auto& [name, type] : d_->overrides)
        if (iequals(name, part)) {
            type = std::string(contentType);
            d_->typesChanged = true;
            return;
        }
    d_->overrides.emplace_back(std::string(part), std::string(contentType));
    d_->typesChanged = true;
}

void Package::removePart(std::string_view part) {
    std::string rels = relsPartOf(part);
    std::erase_if(d_->entries, [&](const Impl::Entry& e) { return iequals(e.name, part) || iequals(e.name, rels); });
    std::size_t before = d_->overrides.size();
    std::erase_if(d_->overrides, [&](const auto& o) { return iequals(o.first, part) || iequals(o.first, rels); });
    if (d_->overrides.size() != before) d_->typesChanged = true;
    d_->xmlParts.erase(lower(part));
    d_->xmlParts.erase(lower(rels));
    d_->rels.erase(lower(part));
}

std::string Package::contentType(std::string_view part) const {
    for (const auto& [name, type] : d_->overrides)
        if (iequals(name, part)) return type;
    std::string ext = extensionOf(part);
    for (const auto& [e, type] : d_->defaults)
        if (iequals(e, ext)) return type;
    return "";
}

// ---------------------------------------------------------------- relationships

std::string Package::relsPartOf(std::string_view part) {
    if (part == "/" || part.empty()) return "/_rels/.rels";
    auto slash = part.rfind('/');
    return std::string(part.substr(0, slash + 1)) + "_rels/" + std::string(part.substr(slash + 1)) + ".rels";
}

Relationships& Package::relationships(std::string_view part) {
    std::string key = lower(part.empty() ? "/" : part);
    auto it = d_->rels.find(key);
    if (it != d_->rels.end()) return it->second;
    Relationships& rs = d_->rels[key];
    rs.source_ = std::string(part.empty() ? "/" : part);
    std::string relsName = relsPartOf(part);
    const Impl::Entry* e = d_->find(relsName);
    if (!e) return rs;
    pugi::xml_document doc;
    pugi::xml_parse_result ok = doc.load_buffer(e->data.data(), e->data.size(), xml::kParse);
    if (!ok || !doc.document_element()) {
        d_->rels.erase(key);
        throw PptxError(Fault::BrokenPart, "'" + label_ + "': part " + relsName + " is not well-formed XML (" +
                                               ok.description() + " at offset " + std::to_string(ok.offset) + ")");
    }
    for (pugi::xml_node n : doc.document_element().children()) {
        if (xml::localName(n) != "Relationship") continue;
        Relationship r{n.attribute("Id").value(), n.attribute("Type").value(), n.attribute("Target").value(),
                       iequals(n.attribute("TargetMode").value(), "External")};
        if (r.id.empty()) {
            d_->rels.erase(key);
            throw PptxError(Fault::BrokenPart, "'" + label_ + "': part " + relsName + " has a relationship without an Id");
        }
        rs.items_.push_back(std::move(r));
    }
    return rs;
}

std::string Package::targetPart(std::string_view source, const Relationship& r) const {
    if (r.external) return "";
    return resolve(source, r.target);
}

int Package::referenceCount(std::string_view part) {
    // Read every relationships part first, so that the count sees the whole package.
    std::vector<std::string> sources;
    for (const Impl::Entry& e : d_->entries) {
        std::string_view n = e.name;
        auto mark = n.rfind("/_rels/");
        if (mark == std::string_view::npos || !n.ends_with(".rels")) continue;
        std::string file(n.substr(mark + 7, n.size() - mark - 7 - 5));
        sources.push_back(std::string(n.substr(0, mark + 1)) + file);
    }
    for (const std::string& s : sources) {
        try {
            relationships(s);
        } catch (const PptxError&) {
            // A broken relationships part elsewhere points at nothing we could count.
        }
    }
    int count = 0;
    for (const auto& [key, rs] : d_->rels)
        for (const Relationship& r : rs.items_)
            if (!r.external && iequals(resolve(rs.source_, r.target), part)) ++count;
    return count;
}

std::string Package::resolve(std::string_view sourcePart, std::string_view target) {
    std::string t = percentDecode(target);
    auto hash = t.find('#');
    if (hash != std::string::npos) t.erase(hash);
    std::vector<std::string> out;
    if (!t.starts_with("/")) out = folderOf(sourcePart);
    for (const std::string& seg : segments(t)) {
        if (seg == ".") continue;
        if (seg == "..") {
            if (!out.empty()) out.pop_back();
            continue;
        }
        out.push_back(seg);
    }
    return "/" + join(out, "/");
}

std::string Package::relativeTarget(std::string_view sourcePart, std::string_view targetPart) {
    std::vector<std::string> from = folderOf(sourcePart);
    std::vector<std::string> to = segments(targetPart);
    std::size_t common = 0;
    while (common < from.size() && common + 1 < to.size() && iequals(from[common], to[common])) ++common;
    std::string out;
    for (std::size_t i = common; i < from.size(); ++i) out += "../";
    for (std::size_t i = common; i < to.size(); ++i) {
        out += to[i];
        if (i + 1 < to.size()) out += '/';
    }
    return out;
}

std::string Package::freePartName(std::string_view dir, std::string_view stem, std::string_view ext) const {
    for (int n = 1;; ++n) {
        std::string name = std::string(dir) + "/" + std::string(stem) + std::to_string(n) + "." + std::string(ext);
        if (!hasPart(name)) return name;
    }
}

// ---------------------------------------------------------------- XML parts

pugi::xml_document& Package::xml(std::string_view part) {
    std::string key = lower(part);
    auto it = d_->xmlParts.find(key);
    if (it != d_->xmlParts.end()) return it->second->doc;
    const Impl::Entry* e = d_->find(part);
    if (!e) throw PptxError(Fault::MissingPart, "'" + label_ + "' has no part " + std::string(part));
    auto x = std::make_unique<Impl::XmlPart>();
    pugi::xml_parse_result ok = x->doc.load_buffer(e->data.data(), e->data.size(), xml::kParse);
    if (!ok)
        throw PptxError(Fault::BrokenPart, "'" + label_ + "': part " + std::string(part) + " is not well-formed XML (" +
                                               ok.description() + " at offset " + std::to_string(ok.offset) + ")");
    if (!x->doc.document_element())
        throw PptxError(Fault::BrokenPart, "'" + label_ + "': part " + std::string(part) + " holds no XML element");
    return d_->xmlParts.emplace(key, std::move(x)).first->second->doc;
}

void Package::touch(std::string_view part) {
    auto it = d_->xmlParts.find(lower(part));
    if (it != d_->xmlParts.end()) it->second->changed = true;
}

bool Package::modified() const {
    if (d_->typesChanged) return true;
    for (const auto& [k, x] : d_->xmlParts)
        if (x->changed) return true;
    for (const auto& [k, r] : d_->rels)
        if (r.changed_) return true;
    return false;
}

std::string Package::toBytes() {
    Impl& d = *d_;
    // Relationships first: writing a new relationships part may add a content type.
    for (auto& [key, rs] : d.rels) {
        if (!rs.changed_) continue;
        putPart(relsPartOf(rs.source_), serializeRelationships(rs.items_), ct::kRelationships);
        rs.changed_ = false;
    }
    for (auto& [key, x] : d.xmlParts) {
        if (!x->changed) continue;
        for (Impl::Entry& e : d.entries)
            if (lower(e.name) == key) e.data = xml::serialize(x->doc);
        x->changed = false;
    }
    if (d.typesChanged) {
        pugi::xml_document doc;
        pugi::xml_node root = doc.append_child("Types");
        root.append_attribute("xmlns") = kNsContentTypes;
        for (const auto& [ext, type] : d.defaults) {
            pugi::xml_node n = root.append_child("Default");
            n.append_attribute("Extension") = ext.c_str();
            n.append_attribute("ContentType") = type.c_str();
        }
        for (const auto& [part, type] : d.overrides) {
            pugi::xml_node n = root.append_child("Override");
            n.append_attribute("PartName") = part.c_str();
            n.append_attribute("ContentType") = type.c_str();
        }
        for (Impl::Entry& e : d.entries)
            if (iequals(e.name, kContentTypesEntry)) e.data = kDeclaration + xml::serialize(doc);
        d.typesChanged = false;
    }
    std::vector<ZipEntry> zipEntries;
    zipEntries.reserve(d.entries.size());
    for (const Impl::Entry& e : d.entries)
        zipEntries.push_back({iequals(e.name, kContentTypesEntry) ? e.name : e.name.substr(1), e.data});
    return writeZip(zipEntries);
}

}  // namespace tlx::pptx
