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

namespace {

bool forbidden(char c) {
    auto u = static_cast<unsigned char>(c);
    return u < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

bool isHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// "_xHHHH_" at position i.
bool escapeAt(std::string_view s, std::size_t i) {
    if (i + 7 > s.size() || s[i] != '_' || s[i + 1] != 'x' || s[i + 6] != '_') return false;
    for (std::size_t k = i + 2; k < i + 6; ++k)
        if (!isHex(s[k])) return false;
    return true;
}

}  // namespace

std::string encodeXstring(std::string_view s) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        auto u = static_cast<unsigned char>(s[i]);
        if (forbidden(s[i]) || escapeAt(s, i)) {
            out += "_x00";
            out += digits[u >> 4];
            out += digits[u & 15];
            out += '_';
        } else {
            out += s[i];
        }
    }
    return out;
}

std::string decodeXstring(std::string_view s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (escapeAt(s, i)) {
            unsigned value = static_cast<unsigned>(std::stoul(std::string(s.substr(i + 2, 4)), nullptr, 16));
            if (value < 0x80) {
                out += static_cast<char>(value);
            } else if (value < 0x800) {
                out += static_cast<char>(0xC0 | (value >> 6));
                out += static_cast<char>(0x80 | (value & 0x3F));
            } else if (value < 0xD800 || value > 0xDFFF) {
                out += static_cast<char>(0xE0 | (value >> 12));
                out += static_cast<char>(0x80 | ((value >> 6) & 0x3F));
                out += static_cast<char>(0x80 | (value & 0x3F));
            } else {
                out += s[i];  // half of a surrogate pair: keep the text as it is
                continue;
            }
            i += 6;
            continue;
        }
        out += s[i];
    }
    return out;
}

std::string xmlSafe(std::string_view s) {
    std::string out;
    for (char c : s)
        if (!forbidden(c)) out += c;
    return out;
}

std::string serialize(const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return out.str();
}

}  // namespace tlx::pptx::xml
