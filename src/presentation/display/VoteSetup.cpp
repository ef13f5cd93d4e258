#include "presentation/display/VoteSetup.h"

#include <cctype>
#include <cmath>

#include "core/Text.h"

namespace tlx {

namespace {

std::string decodeEntities(std::string_view v) {
    static const std::pair<const char*, char> kEntities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
    std::string out;
    out.reserve(v.size());
    for (std::size_t i = 0; i < v.size();) {
        bool done = false;
        if (v[i] == '&')
            for (const auto& [name, ch] : kEntities)
                if (v.substr(i).starts_with(name)) {
                    out += ch;
                    i += std::string_view(name).size();
                    done = true;
                    break;
                }
        if (!done) out += v[i++];
    }
    return out;
}

// A whole number from lo to hi, or nullopt.
std::optional<int> wholeNumber(std::string_view text, int lo, int hi) {
    if (!isNumeric(text)) return std::nullopt;
    const double d = ParseNumber(text);
    if (d != std::floor(d) || d < lo || d > hi) return std::nullopt;
    return static_cast<int>(d);
}

bool isName(std::string_view s) {
    if (s.empty()) return false;
    for (char c : s)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '-' && c != '.') return false;
    return true;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> configElements(std::string_view text,
                                                                 std::vector<std::string>* problems) {
    std::vector<std::pair<std::string, std::string>> out;
    auto problem = [&](std::string p) {
        if (problems) problems->push_back(std::move(p));
    };
    std::size_t i = 0;
    while (i < text.size()) {
        const std::size_t open = text.find('<', i);
        const std::string stray = trim(text.substr(i, open == std::string_view::npos ? std::string_view::npos : open - i));
        if (!stray.empty()) problem("text outside an element: \"" + stray + "\"");
        if (open == std::string_view::npos) break;
        const std::size_t close = text.find('>', open);
        if (close == std::string_view::npos) {
            problem("an element that does not end: \"" + std::string(text.substr(open)) + "\"");
            break;
        }
        const std::string name = trim(text.substr(open + 1, close - open - 1));
        if (!isName(name)) {
            problem("not an element: \"" + std::string(text.substr(open, close - open + 1)) + "\"");
            i = close + 1;
            continue;
        }
        // The closing tag, found without regard to case.
        const std::string endTag = "</" + toLower(name) + ">";
        const std::string lowerRest = toLower(text.substr(close + 1));
        const std::size_t end = lowerRest.find(endTag);
        if (end == std::string::npos) {
            problem("<" + name + "> has no closing tag");
            i = close + 1;
            continue;
        }
        out.emplace_back(name, decodeEntities(text.substr(close + 1, end)));
        i = close + 1 + end + endTag.size();
    }
    return out;
}

std::string keyLineValue(std::string_view value) {
    std::string v(value);
    for (char& c : v)
        if (c == '\r' || c == '\n') c = ' ';
    return trim(v);
}

std::optional<std::string> keypadListText(std::string_view text) {
    std::vector<std::string> numbers;
    for (const auto& part : split(text, ",")) {
        const std::string t = trim(part);
        if (t.empty()) continue;
        for (char c : t)
            if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
        numbers.push_back(t);
    }
    return join(numbers, ",");
}

VoteSetup readVoteSetup(std::string_view tag, std::string_view text) {
    VoteSetup s;
    s.tag = toUpper(trim(tag));
    if (s.tag.empty()) s.tag = "TLXVOTE";
    if (s.tag == "TLXRESHOW") {
        // Its value names the slide whose vote is shown again.
        const std::string t = trim(text);
        if (const auto n = wholeNumber(t, 1, 100000)) {
            s.reshowOf = *n;
            return s;
        }
    }
    const auto elements = configElements(text, &s.problems);
    for (const auto& element : elements) {
        // Not a structured binding: clang before 16 cannot capture one in the lambda below.
        const std::string& rawName = element.first;
        const std::string name = toLower(rawName);
        const std::string value = trim(element.second);
        auto cannot = [&](const std::string& what) {
            s.problems.push_back("<" + rawName + "> \"" + value + "\" is not " + what);
        };
        if (name == "votetype") {
            if (value.empty())
                cannot("a vote type");
            else
                s.voteType = toUpper(keyLineValue(value));
        } else if (name == "options") {
            if (const auto n = wholeNumber(value, 1, 1000))
                s.options = *n;
            else
                cannot("an option count from 1 to 1000");
        } else if (name == "startfrom") {
            if (const auto n = wholeNumber(value, 0, 1000))
                s.startFrom = *n;
            else
                cannot("a first option number from 0 to 1000");
        } else if (name == "votename") {
            s.voteName = keyLineValue(value);
        } else if (name == "question") {
            s.question = keyLineValue(value);
        } else if (name == "keypadsactive") {
            if (const auto list = keypadListText(value))
                s.keypadsActive = *list;
            else
                cannot("a list of keypad numbers");
        } else if (name == "abstain") {
            if (const auto n = wholeNumber(value, 0, 99))
                s.abstain = *n;
            else
                cannot("an abstain key from 0 to 99");
        } else if (name == "correctanswer") {
            if (const auto n = wholeNumber(value, 0, 1000))
                s.correctAnswer = *n;
            else
                cannot("an answer number");
        } else if (name == "seconds") {
            const double d = isNumeric(value) ? ParseNumber(value) : -1;
            if (d > 0 && d <= 86400)
                s.seconds = d;
            else
                cannot("a number of seconds above 0");
        } else {
            s.others.emplace_back(rawName, element.second);
        }
    }
    return s;
}

std::vector<std::string> setupLines(const VoteSetup& setup, int options) {
    std::vector<std::string> lines;
    lines.push_back("votetype=" + keyLineValue(setup.voteType));
    lines.push_back("options=" + numText(options));
    lines.push_back("startfrom=" + numText(setup.startFrom));
    if (!setup.voteName.empty()) lines.push_back("votename=" + keyLineValue(setup.voteName));
    if (!setup.keypadsActive.empty()) lines.push_back("keypadsactive=" + keyLineValue(setup.keypadsActive));
    if (setup.abstain) lines.push_back("abstain=" + numText(*setup.abstain));
    return lines;
}

}  // namespace tlx
