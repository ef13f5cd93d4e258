#pragma once
// Small helpers over pugixml for Office XML. Elements are found by their local name, whatever
// prefix the writer chose; new elements take the prefixes the document already uses.
#include <pugixml.hpp>

#include <string>
#include <string_view>

namespace tlx::pptx::xml {

inline constexpr const char* kNsP = "http://schemas.openxmlformats.org/presentationml/2006/main";
inline constexpr const char* kNsA = "http://schemas.openxmlformats.org/drawingml/2006/main";
inline constexpr const char* kNsR = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

// Parse flags: keep the declaration and whitespace-only text (a run of one blank is text).
inline constexpr unsigned kParse = pugi::parse_default | pugi::parse_declaration | pugi::parse_ws_pcdata;

std::string_view localName(const char* qualified);
inline std::string_view localName(pugi::xml_node n) { return localName(n.name()); }
std::string_view prefixOf(const char* qualified);

pugi::xml_node child(pugi::xml_node parent, std::string_view local);
// The attribute with this local name and no prefix ("id", "name").
pugi::xml_attribute plainAttr(pugi::xml_node n, std::string_view local);
// The attribute with this local name and some prefix ("r:id", "r:embed").
pugi::xml_attribute prefixedAttr(pugi::xml_node n, std::string_view local);
bool boolAttr(pugi::xml_node n, std::string_view local, bool fallback);

// The prefixes of the document's root for the presentation, drawing and relationship
// namespaces; a namespace the root does not declare yet is declared on it.
class Names {
public:
    explicit Names(pugi::xml_document& doc);
    std::string p(std::string_view local) const { return q(p_, local); }
    std::string a(std::string_view local) const { return q(a_, local); }
    std::string r(std::string_view local) const { return q(r_, local); }

private:
    static std::string q(const std::string& prefix, std::string_view local);
    std::string p_, a_, r_;
};

// Control characters other than tab, line feed and carriage return cannot appear in XML 1.0,
// even as character references. In values that must keep them (tag values) they travel as
// "_xHHHH_", the escape Office documents use; a literal "_xHHHH_" is itself escaped as "_x005F_".
std::string encodeXstring(std::string_view s);
std::string decodeXstring(std::string_view s);
// Drops the characters XML cannot carry (for text and names, where they have no meaning).
std::string xmlSafe(std::string_view s);

// Serialises without reformatting; the declaration node kept by kParse is written as it was.
std::string serialize(const pugi::xml_document& doc);

}  // namespace tlx::pptx::xml
