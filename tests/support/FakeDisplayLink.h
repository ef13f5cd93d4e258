#pragma once
// The controller and the simulated show as a display program's run sees them, scripted.
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "presentation/display/DisplayRun.h"

namespace tlx::test {

class FakeLink : public DisplayLink {
public:
    LinkResult<bool> init() override {
        ++inits;
        return gate(initAbsent-- <= 0, true);
    }
    LinkResult<int> currentSlide() override { return gate(true, current); }
    LinkResult<bool> sendCommand(const std::string& line) override {
        if (absent || refuse-- > 0) return gate(true, false);
        sent.push_back(line);
        if (onSend) onSend(line);
        return gate(true, true);
    }
    LinkResult<int> showSlide() override { return sim(showing); }
    LinkResult<std::string> slideTag(int slide, const std::string& name) override { return sim(tags[{slide, name}]); }
    LinkResult<std::string> slideText(int slide, const std::string& shape) override { return sim(texts[{slide, shape}]); }

    bool absent = false;  // nobody on the bus
    int initAbsent = 0;   // init finds nobody this many times
    int refuse = 0;       // SendCommand answers false this many times
    bool simulation = true;
    int current = 2, showing = 0, inits = 0;
    std::map<std::pair<int, std::string>, std::string> tags, texts;
    std::vector<std::string> sent;
    std::function<void(const std::string&)> onSend;

private:
    template <class T>
    LinkResult<T> gate(bool there, T value) {
        if (absent || !there) return {T{}, LinkStatus::NoController, "tallix_control.tallix does not answer"};
        return {std::move(value), LinkStatus::Ok, ""};
    }
    template <class T>
    LinkResult<T> sim(T value) {
        if (!simulation) return {T{}, LinkStatus::Unavailable, "No such object path '/sim/show'"};
        return {std::move(value), LinkStatus::Ok, ""};
    }
};

}  // namespace tlx::test
