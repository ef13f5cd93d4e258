#include "platform/files/pptx/Xml.h"

#include <cstring>
#include <sstream>

namespace tlx::pptx::xml {
namespace {

// The strict variants of the namespaces mean the same.
bool isNamespace(std::string_view uri, const char* transitional, std::string_view strictTail) {
    if (uri == transitional) return true;
    return uri.starts_with("http://purl.oclc.org/ooxml/") && uri.ends_with(strictTail);
}

}  // namespace

std::string_view localName(const char* qualified) {
    std::string_view s(qualified);
    auto colon = s.find(':');
    return colon == std::string_view::npos ? s : s.substr(colon + 1);
}

std::string_view prefixOf(const char* qualified) {
    std::string_view s(qualified);
    auto colon = s.find(':');
    return colon == std::string_view::npos ? std::string_view() : s.substr(0, colon);
}

pugi::xml_node child(pugi::xml_node parent, std::string_view local) {
    for (pugi::xml_node c = parent.first_child(); c; c = c.next_sibling())
        if (c.type() == pugi::node_element && localName(c) == local) return c;
    return {};
}

pugi::xml_attribute plainAttr(pugi::xml_node n, std::string_view local) {
    for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute())
        if (local == a.name()) return a;
    return {};
}

pugi::xml_attribute prefixedAttr(pugi::xml_node n, std::string_view local) {
    for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute())
        if (std::strchr(a.name(), ':') && localName(a.name()) == local && prefixOf(a.name()) != "xmlns")
            return a;
    return {};
}

bool boolAttr(pugi::xml_node n, std::string_view local, bool fallback) {
    pugi::xml_attribute a = plainAttr(n, local);
    if (!a) return fallback;
    std::string_view v = a.value();
    if (v == "1" || v == "true") return true;
    if (v == "0" || v == "false") return false;
    return fallback;
}

Names::Names(pugi::xml_document& doc) {
    pugi::xml_node root = doc.document_element();
    bool hasP = false, hasA = false, hasR = false;
    for (pugi::xml_attribute at = root.first_attribute(); at; at = at.next_attribute()) {
        std::string_view name = at.name();
        std::string prefix;
        if (name == "xmlns") {
            prefix.clear();
        } else if (name.starts_with("xmlns:")) {
            prefix = std::string(name.substr(6));
        } else {
            continue;
        }
        std::string_view uri = at.value();
        if (!hasP && isNamespace(uri, kNsP, "/presentationml/main")) { p_ = prefix; hasP = true; }
        if (!hasA && isNamespace(uri, kNsA, "/drawingml/main")) { a_ = prefix; hasA = true; }
        if (!hasR && isNamespace(uri, kNsR, "/officeDocument/relationships")) { r_ = prefix; hasR = true; }
    }
    // Declare what is missing under the usual prefix, or a free variant of it.
    auto declare = [&root](std::string& prefix, const char* wanted, const char* uri) {
        std::string candidate = wanted;
        for (int i = 2; root.attribute(("xmlns:" + candidate).c_str()); ++i)
            candidate = std::string(wanted) + std::to_string(i);
        root.append_attribute(("xmlns:" + candidate).c_str()) = uri;
        prefix = candidate;
    };
    if (!hasP) declare(p_, "p", kNsP);
    if (!hasA) declare(a_, "a", kNsA);
    if (!hasR) declare(r_, "r", kNsR);
}

std::string Names::q(const std::string& prefix, std::string_view local) {
    if (prefix.empty()) return std::string(local);
    std::string s = prefix;
    s += ':';
    s += local;
    return s;
}

std::string serialize(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return out.str();
}

}  // namespace tlx::pptx::xml
