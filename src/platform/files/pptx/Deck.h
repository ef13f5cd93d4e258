#pragma once
// A presentation deck read from a .pptx package: its slides in show order, their shapes with
// names, visibility and text, and the tags that the presentation program keeps on slides and on
// the presentation. Changes are written back with save(); parts that were not changed keep
// their bytes.
//
// Objects handed out by reference or pointer (slides, shapes, tag lists) stay valid as long as
// the Deck lives; a shape that was removed stays a valid object that reports removed() and
// refuses further changes.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/files/pptx/PptxError.h"

namespace pugi {
struct xml_node_struct;
}

namespace tlx::pptx {

class Deck;
class DeckSlide;
class Package;

// Tags as the presentation program keeps them: a list of name/value pairs in a tags part.
// Names compare without regard to case; add() stores the name upper-cased, as the program does.
class TagList {
public:
    std::string item(std::string_view name) const;  // "" when absent
    bool has(std::string_view name) const;
    void add(std::string_view name, std::string_view value);  // replaces a tag of the same name
    void remove(std::string_view name);                      // nothing happens when absent
    int count() const { return static_cast<int>(tags_.size()); }
    const std::string& name(int index) const;   // 1-based; throws PptxError (Usage)
    const std::string& value(int index) const;  // 1-based; throws PptxError (Usage)
    const std::vector<std::pair<std::string, std::string>>& entries() const { return tags_; }

private:
    friend class Deck;
    std::vector<std::pair<std::string, std::string>> tags_;
    std::string owner_;    // the slide or presentation part that holds the tags
    std::string part_;     // the tags part read, "" when there was none
    std::string relId_;    // the owner's relationship to it
    bool changed_ = false;
};

enum class ShapeKind { AutoShape, Picture, GraphicFrame, Group, Connector, ContentPart };

struct Box {
    std::int64_t x = 0, y = 0, cx = 0, cy = 0;  // EMU
};

class DeckShape {
public:
    std::string name() const;
    void setName(std::string_view name);
    unsigned id() const;
    ShapeKind kind() const { return kind_; }
    // The placeholder type ("title", "ctrTitle", "body", "obj" ...), "" for no placeholder.
    std::string placeholderType() const;
    bool visible() const;
    void setVisible(bool visible);

    // Shapes of the AutoShape kind carry a text frame (created on first write if missing).
    bool hasTextFrame() const { return kind_ == ShapeKind::AutoShape; }
    // The text as the program's TextRange.Text gives it: paragraphs joined by "\r", line
    // breaks inside a paragraph as "\v".
    std::string text() const;
    std::vector<std::string> paragraphs() const;
    int paragraphCount() const;
    std::string paragraph(int index) const;  // 1-based; "" beyond the last
    // Replaces the text: "\r", "\n" or "\r\n" start a new paragraph, "\v" breaks a line. Each
    // paragraph keeps its paragraph properties and the properties of its first run.
    void setText(std::string_view text);
    // Replaces one paragraph (1-based); beyond the last, empty paragraphs are added up to it.
    void setParagraph(int index, std::string_view text);

    // Members of a group, in z-order; empty for other kinds.
    const std::vector<DeckShape*>& children() const { return children_; }
    DeckShape* parent() const { return parent_; }
    DeckSlide& slide() const { return *slide_; }

    // Moves the shape in front of its siblings.
    void bringToFront();
    // Deletes the shape (and a group's members) from the slide.
    void remove();
    bool removed() const { return removed_; }

private:
    friend class DeckSlide;
    friend class Deck;
    DeckShape(DeckSlide& slide, DeckShape* parent, pugi::xml_node_struct* node, ShapeKind kind);
    void check() const;
    void changed() const;
    pugi::xml_node_struct* textBody(bool create) const;
    pugi::xml_node_struct* topNode() const;
    void markRemoved();
    std::vector<DeckShape*>& siblings() const;

    DeckSlide* slide_;
    DeckShape* parent_;
    pugi::xml_node_struct* node_;
    ShapeKind kind_;
    bool removed_ = false;
    std::string removedName_;
    std::vector<DeckShape*> children_;
};

class DeckSlide {
public:
    int index() const { return index_; }  // position in the show, 1-based
    int number() const;                   // index + the presentation's first slide number - 1
    unsigned id() const { return id_; }   // the slide's id in the presentation
    const std::string& partName() const { return part_; }
    bool hiddenInShow() const;

    TagList& tags() { return tags_; }
    const TagList& tags() const { return tags_; }

    // Top-level shapes, back to front.
    const std::vector<DeckShape*>& shapes() const { return top_; }
    // Every shape including group members, in document order.
    std::vector<DeckShape*> allShapes() const;
    // The first shape with this exact name in document order (group members included),
    // nullptr when there is none.
    DeckShape* shape(std::string_view name) const;
    // The text of the title placeholder, "" without one.
    std::string title() const;

    // Adds a text box in front of the other shapes. A zero box picks a default place.
    DeckShape& addTextBox(std::string_view name, std::string_view text, Box box = {}, int fontSizePt = 0);
    // Adds a title placeholder that takes its place and style from the layout.
    DeckShape& addTitle(std::string_view name, std::string_view text);

    Deck& deck() const { return *deck_; }

private:
    friend class Deck;
    friend class DeckShape;
    DeckSlide(Deck& deck, std::string part, unsigned id);
    void load();
    void collect(pugi::xml_node_struct* container, DeckShape* parent, std::vector<DeckShape*>& into);
    DeckShape& adopt(pugi::xml_node_struct* node);
    pugi::xml_node_struct* shapeTree();
    unsigned nextShapeId() const;
    void touch() const;

    Deck* deck_;
    std::string part_;
    unsigned id_;
    int index_ = 0;
    TagList tags_;
    std::vector<std::unique_ptr<DeckShape>> owned_;  // every shape ever made, removed ones too
    std::vector<DeckShape*> top_;
};

class Deck {
public:
    // Opens a .pptx file. Throws PptxError with a message naming the file and the fault.
    static Deck open(const std::filesystem::path& file);
    // Reads a deck from the bytes of a .pptx file; `label` names it in error messages.
    static Deck fromBytes(std::string_view bytes, std::string label = "presentation");
    Deck(Deck&&) noexcept;
    Deck& operator=(Deck&&) noexcept;
    ~Deck();

    // The file it was opened from or last saved to (empty for a deck from bytes).
    const std::filesystem::path& path() const { return path_; }

    int slideCount() const { return static_cast<int>(slides_.size()); }
    DeckSlide& slide(int index) const;  // 1-based; throws PptxError (Usage)
    const std::vector<DeckSlide*>& slides() const { return order_; }
    DeckSlide* slideById(unsigned id) const;
    int firstSlideNumber() const { return firstSlideNumber_; }
    Box slideSize() const { return slideSize_; }

    TagList& tags() { return tags_; }
    const TagList& tags() const { return tags_; }

    // Appends an empty slide on the layout of the last slide (or the first layout).
    DeckSlide& addSlide();

    // True when something was changed since the deck was opened or saved.
    bool modified() const;
    // The deck as .pptx bytes, with every change written.
    std::string toBytes();
    void save();  // to path(); throws PptxError (Usage) for a deck without one
    void saveAs(const std::filesystem::path& file);

    // The underlying package (parts, content types, relationships).
    Package& package() { return *package_; }

private:
    friend class DeckSlide;
    friend class DeckShape;
    Deck();
    void load();
    void readTags(TagList& tags, const std::string& owner, bool slide);
    void writeTags(TagList& tags, bool slide);
    std::string layoutForNewSlide();

    std::unique_ptr<Package> package_;
    std::filesystem::path path_;
    std::string presentationPart_;
    int firstSlideNumber_ = 1;
    Box slideSize_;
    TagList tags_;
    std::vector<std::unique_ptr<DeckSlide>> slides_;
    std::vector<DeckSlide*> order_;
    bool structureChanged_ = false;
};

}  // namespace tlx::pptx
