#pragma once
// Makes new decks from scratch: the smallest complete package the presentation program opens
// (content types, relationships, presentation with slide and notes size, one slide master with
// a "Title Only" layout, a theme, presentation, view and table-style properties, document
// properties), filled with slides that carry a title, an optional question and answers, text
// boxes and tags.
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/files/pptx/Deck.h"

namespace tlx::pptx {

// Shape names the controller looks for on vote slides.
inline constexpr const char* kTitleShape = "Title 1";
inline constexpr const char* kQuestionShape = "tlx_Question";
inline constexpr const char* kAnswersShape = "tlx_Answers";

using TagPairs = std::vector<std::pair<std::string, std::string>>;

struct TextBoxPlan {
    std::string name;
    std::string text;  // "\r" between paragraphs
};

struct SlidePlan {
    std::string title;                 // the "Title 1" placeholder; none when empty
    std::string question;              // the "tlx_Question" text box; none when empty
    std::vector<std::string> answers;  // one paragraph each in the "tlx_Answers" text box
    std::vector<TextBoxPlan> boxes;    // further text boxes, below the others
    TagPairs tags;
};

struct DeckPlan {
    std::string title = "tallix deck";  // the document title in the document properties
    bool wide = true;                   // 16:9; false gives 4:3
    TagPairs tags;                      // presentation tags
    std::vector<SlidePlan> slides;
};

// An empty deck (no slides) with every part a presentation program needs.
Deck newDeck(const std::string& title = "tallix deck", bool wide = true);
// A deck made from the description, ready to save.
Deck buildDeck(const DeckPlan& plan);

// Reads a deck description:
//   # comment
//   [presentation]            title = ..., wide = yes|no, tag NAME = value
//   [slide]                   one section per slide, in order: title = ..., question = ...,
//                             answer = ... (repeated), box = NAME | text, tag NAME = value
// Values may use the escapes \r, \n, \v, \t and \\: in a text \r or \n starts a new paragraph
// and \v breaks a line; a tag keeps them as they are ("\r\n" between items). Throws PptxError
// (Usage) naming the line for a line it cannot read.
DeckPlan parseDeckDescription(std::string_view text);

}  // namespace tlx::pptx
