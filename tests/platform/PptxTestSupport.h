#pragma once
// Helpers shared by the .pptx tests: the test decks, raw zip access for crafting damaged
// packages, and a structural check of a whole package.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include <pugixml.hpp>

#include "platform/files/pptx/Deck.h"
#include "platform/files/pptx/Package.h"
#include "platform/files/pptx/Zip.h"
#include "support/TestPaths.h"
#include "core/Text.h"
#include "support/Fields.h"
#include "support/TestWorld.h"

namespace tlx::test::pptx {

using namespace tlx::pptx;

using tlx::test::fields;
using tlx::test::sourceDir;

inline std::filesystem::path deckFile(const std::string& name) { return sourceDir() / "tests/data/decks" / name; }

inline std::string deckBytes(const std::string& name) { return readFile(deckFile(name)); }

// Entry name -> bytes.
inline std::map<std::string, std::string> entriesOf(const std::string& zipBytes) {
    std::map<std::string, std::string> out;
    for (ZipEntry& e : readZip(zipBytes, "test")) out[e.name] = std::move(e.data);
    return out;
}

// The same archive with one entry changed, added, or removed when `data` is null.
inline std::string withEntry(const std::string& zipBytes, const std::string& name, const std::string* data) {
    std::vector<ZipEntry> out;
    bool found = false;
    for (ZipEntry& e : readZip(zipBytes, "test")) {
        if (e.name == name) {
            found = true;
            if (!data) continue;
            e.data = *data;
        }
        out.push_back(std::move(e));
    }
    if (!found && data) out.push_back({name, *data});
    return writeZip(out);
}

inline std::string withEntry(const std::string& zipBytes, const std::string& name, const std::string& data) {
    return withEntry(zipBytes, name, &data);
}

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    return text;
}

// Every part has a content type, every XML part is well-formed, every internal relationship
// points at a part that exists, and every relationships part belongs to a part.
inline void expectSoundPackage(Package& pkg) {
    std::vector<std::string> sources{"/"};
    for (const std::string& part : pkg.partNames()) {
        std::string type = pkg.contentType(part);
        EXPECT_FALSE(type.empty()) << part << " has no content type";
        if (type.ends_with("xml")) {
            std::string data = pkg.partData(part);
            pugi::xml_document doc;
            EXPECT_TRUE(doc.load_buffer(data.data(), data.size())) << part << " is not well-formed";
        }
        if (part.ends_with(".rels")) {
            if (part == "/_rels/.rels") continue;
            std::string owner = replaced(part, "_rels/", "");
            owner.resize(owner.size() - 5);
            EXPECT_TRUE(pkg.hasPart(owner)) << part << " belongs to no part";
        } else {
            sources.push_back(part);
        }
    }
    for (const std::string& source : sources) {
        for (const Relationship& r : pkg.relationships(source).all()) {
            if (r.external) continue;
            EXPECT_TRUE(pkg.hasPart(pkg.targetPart(source, r))) << source << " " << r.id << " -> " << r.target << " is missing";
        }
    }
}

// Element names of the children of `node`, in order.
inline std::vector<std::string> childNames(pugi::xml_node node) {
    std::vector<std::string> out;
    for (pugi::xml_node c : node.children())
        if (c.type() == pugi::node_element) out.push_back(c.name());
    return out;
}

inline std::vector<std::string> shapeNames(const std::vector<DeckShape*>& shapes) {
    std::vector<std::string> out;
    for (const DeckShape* s : shapes) out.push_back(s->name());
    return out;
}

}  // namespace tlx::test::pptx
