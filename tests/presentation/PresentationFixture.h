#pragma once
// A started controller beside the simulated presentation program with a deck of its own,
// recording keypad drivers and the add-in reporting the show.
#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "core/Text.h"
#include "support/RecordingDrivers.h"
#include "support/TestWorld.h"

namespace tlx::test {

inline pptx::SlidePlan slide(std::string title, pptx::TagPairs tags = {}, std::string question = {}) {
    return {std::move(title), std::move(question), {}, {}, std::move(tags)};
}

struct ShowWorld : TestWorld {
    explicit ShowWorld(std::vector<pptx::SlidePlan> slides, pptx::TagPairs presentationTags = {}) {
        pptx::DeckPlan plan;
        plan.slides = std::move(slides);
        plan.tags = std::move(presentationTags);
        deck = openDeck(plan);
        auto d = std::make_unique<RecordingDrivers>(calls);
        drivers = d.get();
        c().drivers = std::move(d);
        start();
        wireAddIn();
    }
    // Everything the trace file says, without its stamps.
    std::vector<std::string> traceTexts() {
        std::vector<std::string> v;
        for (const auto& l : traceLines()) v.push_back(l.substr(l.rfind("] | ") + 4));
        return v;
    }
    bool traced(const std::string& text) {
        for (const auto& t : traceTexts())
            if (t == text) return true;
        return false;
    }
    int count(const std::string& call) { return static_cast<int>(std::count(calls.begin(), calls.end(), call)); }
    void typeKey(int vk) {
        presentation.KeyDown(vk);
        scheduler.advance(5);
        presentation.KeyUp(vk);
    }
    // V typed on the show, and the vote check's tick after it.
    void pressV() {
        typeKey('V');
        scheduler.advance(100);
    }
    std::filesystem::path deck;
    CallLog calls;
    RecordingDrivers* drivers = nullptr;
};

}  // namespace tlx::test
