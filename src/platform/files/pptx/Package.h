#pragma once
// An Open Packaging Conventions package held in memory: its parts in archive order, their
// content types and the relationships between them. Untouched parts keep their bytes;
// parts whose XML was changed are written again at save.
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace tlx::pptx {

namespace ct {
inline constexpr const char* kRelationships = "application/vnd.openxmlformats-package.relationships+xml";
inline constexpr const char* kXml = "application/xml";
inline constexpr const char* kSlide = "application/vnd.openxmlformats-officedocument.presentationml.slide+xml";
inline constexpr const char* kTags = "application/vnd.openxmlformats-officedocument.presentationml.tags+xml";
}  // namespace ct

namespace rel {
inline constexpr const char* kOfficeDocument = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument";
inline constexpr const char* kSlide = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/slide";
inline constexpr const char* kSlideLayout = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/slideLayout";
inline constexpr const char* kTags = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/tags";
// Relationship types compare by their last segment, so the strict variants match too.
bool sameType(std::string_view type, std::string_view wanted);
}  // namespace rel

struct Relationship {
    std::string id;
    std::string type;
    std::string target;  // as written
    bool external = false;
};

class Relationships {
public:
    const std::vector<Relationship>& all() const { return items_; }
    const Relationship* byId(std::string_view id) const;
    const Relationship* firstOfType(std::string_view type) const;
    // Adds an internal relationship and returns its new, unused id ("rIdN").
    std::string add(std::string_view type, std::string_view target);
    void remove(std::string_view id);
    void retarget(std::string_view id, std::string_view target);

private:
    friend class Package;
    std::string source_;
    std::vector<Relationship> items_;
    bool changed_ = false;
};

class Package {
public:
    // Reads a package from the bytes of a zip archive; `label` names it in error messages.
    static Package fromBytes(std::string_view bytes, std::string label);
    Package(Package&&) noexcept;
    Package& operator=(Package&&) noexcept;
    ~Package();

    const std::string& label() const { return label_; }
    void setLabel(std::string label) { label_ = std::move(label); }

    // Part names are absolute ("/ppt/slides/slide1.xml") and compare without regard to case.
    bool hasPart(std::string_view part) const;
    std::vector<std::string> partNames() const;
    // The bytes of a part as they will be saved (changed XML and relationships included).
    std::string partData(std::string_view part) const;
    // Adds a part, or replaces the bytes of an existing one, and makes its content type
    // resolve to `contentType`.
    void putPart(std::string_view part, std::string data, std::string_view contentType);
    void removePart(std::string_view part);

    // The content type of a part from [Content_Types].xml, "" when none applies.
    std::string contentType(std::string_view part) const;

    // The relationships whose source is `part` ("/" for the package itself); empty when the
    // part has no relationships part. Changes are saved with the package.
    Relationships& relationships(std::string_view part);
    // The part a relationship of `source` points at ("" for an external target).
    std::string targetPart(std::string_view source, const Relationship& r) const;
    // How many internal relationships of the whole package point at `part`.
    int referenceCount(std::string_view part);

    // The parsed XML of a part, read once and kept. Throws PptxError when the part is
    // missing (MissingPart) or not well-formed (BrokenPart).
    pugi::xml_document& xml(std::string_view part);
    // Marks a part's XML as changed, so that the save writes it again.
    void touch(std::string_view part);
    bool modified() const;

    // The whole package as zip bytes.
    std::string toBytes();

    // Path helpers.
    static std::string relsPartOf(std::string_view part);
    static std::string resolve(std::string_view sourcePart, std::string_view target);
    static std::string relativeTarget(std::string_view sourcePart, std::string_view targetPart);
    // The smallest "/dir/stemN.ext" that is not yet a part.
    std::string freePartName(std::string_view dir, std::string_view stem, std::string_view ext) const;

private:
    Package();
    struct Impl;
    std::unique_ptr<Impl> d_;
    std::string label_;
};

}  // namespace tlx::pptx
