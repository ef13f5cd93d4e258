// tlx-mkdeck: writes example decks from a short description, and prints the outline of a deck
// (slides, shapes, text, tags) so that a deck can be checked without a presentation program.
//
//   tlx-mkdeck examples/decks/demo.ini -o examples/decks/demo.pptx
//   tlx-mkdeck --show examples/decks/demo.pptx
#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <sstream>

#include "core/Text.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "tlx/Version.h"

namespace {

std::string visibleText(std::string text) {
    text = tlx::replaceAll(std::move(text), "\r", " | ");
    text = tlx::replaceAll(std::move(text), "\v", " / ");
    return tlx::replaceAll(std::move(text), "\n", "\\n");
}

void printTags(const tlx::pptx::TagList& tags, const std::string& indent) {
    for (int i = 1; i <= tags.count(); ++i)
        std::cout << indent << "tag " << tags.name(i) << " = " << visibleText(tags.value(i)) << "\n";
}

void printShapes(const std::vector<tlx::pptx::DeckShape*>& shapes, const std::string& indent) {
    for (const tlx::pptx::DeckShape* s : shapes) {
        std::cout << indent << "shape \"" << s->name() << "\"" << (s->visible() ? "" : " (hidden)");
        if (s->hasTextFrame()) std::cout << ": " << visibleText(s->text());
        std::cout << "\n";
        printShapes(s->children(), indent + "  ");
    }
}

void show(const std::string& file) {
    tlx::pptx::Deck deck = tlx::pptx::Deck::open(file);
    std::cout << file << ": " << deck.slideCount() << " slides\n";
    printTags(deck.tags(), "  ");
    for (tlx::pptx::DeckSlide* slide : deck.slides()) {
        std::cout << "  slide " << slide->index() << " (" << slide->partName() << ")\n";
        printTags(slide->tags(), "    ");
        printShapes(slide->shapes(), "    ");
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Writes example .pptx decks from a description, or prints a deck's outline."};
    app.set_version_flag("--version", std::string("tlx-mkdeck ") + tlx::version::kText);
    std::string description;
    std::string output;
    std::string showFile;
    app.add_option("description", description, "Deck description ([presentation] and [slide] sections)");
    app.add_option("-o,--output", output, "The .pptx file to write");
    app.add_option("--show", showFile, "Print the slides, shapes and tags of a .pptx file");
    CLI11_PARSE(app, argc, argv);

    try {
        if (!showFile.empty()) {
            show(showFile);
            return 0;
        }
        if (description.empty() || output.empty()) {
            std::cerr << "Give a description and an output file (-o), or --show FILE.\n";
            return 2;
        }
        std::ifstream in(description, std::ios::binary);
        if (!in) {
            std::cerr << "Cannot read '" << description << "'\n";
            return 1;
        }
        std::ostringstream text;
        text << in.rdbuf();
        tlx::pptx::DeckPlan plan;
        try {
            plan = tlx::pptx::parseDeckDescription(text.str());
        } catch (const tlx::pptx::PptxError& e) {
            throw tlx::pptx::PptxError(e.fault(), description + ": " + e.what());
        }
        tlx::pptx::Deck deck = tlx::pptx::buildDeck(plan);
        deck.saveAs(output);
        std::cout << "Wrote " << output << " (" << deck.slideCount() << " slides)\n";
        return 0;
    } catch (const tlx::pptx::PptxError& e) {
        std::cerr << e.what() << "\n";
        return 1;
    }
}
