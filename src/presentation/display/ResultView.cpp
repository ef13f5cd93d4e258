#include "presentation/display/ResultView.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>

#include "core/Text.h"

namespace tlx {

namespace {

constexpr const char* kAbstain = "-2";

std::optional<long long> wholeAnswer(const std::string& a) {
    std::size_t i = a.size() > 1 && a[0] == '-' ? 1 : 0;
    if (i >= a.size() || a.size() - i > 15) return std::nullopt;
    long long v = 0;
    for (; i < a.size(); ++i) {
        if (a[i] < '0' || a[i] > '9') return std::nullopt;
        v = v * 10 + (a[i] - '0');
    }
    return a[0] == '-' ? -v : v;
}

// Numbers in numeric order before any other text.
bool answerBefore(const std::string& a, const std::string& b) {
    const auto x = wholeAnswer(a), y = wholeAnswer(b);
    if (x && y) return *x < *y;
    if (x || y) return x.has_value();
    return a < b;
}

double percent(long long part, long long whole) {
    return whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0.0;
}

// Cut to n characters (bytes of UTF-8 sequences kept together), marking the cut with "~".
std::string fit(const std::string& s, std::size_t n) {
    if (s.size() <= n) return s;
    if (n == 0) return {};
    std::size_t cut = n - 1;
    while (cut > 0 && (static_cast<unsigned char>(s[cut]) & 0xC0) == 0x80) --cut;
    return s.substr(0, cut) + "~";
}

std::string bar(double share, int width) {
    const int n = static_cast<int>(std::lround(share / 100.0 * width));
    return std::string(static_cast<std::size_t>(std::clamp(n, 0, std::max(width, 0))), '#');
}

struct Columns {
    std::size_t answer = 6;
    std::size_t label = 0;
    int bar = 0;
};

// A row is: mark, answer, 2 blanks, label, blank, count (7), blank, share (8), 2 blanks, bar.
Columns columns(const std::vector<ResultRow>& rows, int width) {
    Columns c;
    for (const auto& r : rows) {
        c.answer = std::max(c.answer, std::min<std::size_t>(r.answer.size(), 12));
        c.label = std::max(c.label, std::min<std::size_t>(r.label.size(), 28));
    }
    const int fixed = static_cast<int>(c.answer) + 22;
    // Labels give way to a bar of at least 10.
    c.label = std::min<std::size_t>(c.label, static_cast<std::size_t>(std::max(width - fixed - 10, 0)));
    c.bar = std::max(width - fixed - static_cast<int>(c.label), 0);
    return c;
}

std::string rowLine(const ResultRow& r, const Columns& c) {
    const std::string mark = r.correct ? "*" : " ";
    std::string line = fmt::format("{}{:>{}}  {:<{}} {:>7} {:>7.1f}%  {}", mark, fit(r.answer, c.answer), c.answer,
                                   fit(r.label, c.label), c.label, r.count, r.share, bar(r.share, c.bar));
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string s(text);
    for (char& ch : s)
        if (static_cast<unsigned char>(ch) < 0x20 || ch == 0x7f) ch = ' ';
    return s;
}

std::string optionLabel(const std::string& answer, const std::string& text) {
    std::string t = trim(printable(text));
    if (!answer.empty() && startsWith(t, answer)) {
        const std::string rest = t.substr(answer.size());
        if (!rest.empty() && (rest[0] == '.' || rest[0] == ')' || rest[0] == ':')) t = trim(rest.substr(1));
    }
    return t;
}

std::vector<ResultRow> resultRows(const DisplayModel& m, std::size_t maxOthers) {
    const VoteTally& t = m.tally;
    const long long voters = t.voters();
    std::vector<ResultRow> rows;
    std::set<std::string> shown;
    auto row = [&](const std::string& answer, std::string label, bool offered) {
        ResultRow r;
        r.answer = answer;
        r.label = std::move(label);
        r.count = t.count(answer);
        r.share = percent(r.count, voters);
        r.offered = offered;
        r.correct = offered && m.setup.correctAnswer && numText(*m.setup.correctAnswer) == answer;
        rows.push_back(std::move(r));
        shown.insert(answer);
    };
    for (int i = 0; i < m.options; ++i) {
        const std::string a = numText(m.setup.startFrom + i);
        const std::size_t index = static_cast<std::size_t>(i);
        row(a, index < m.labels.size() ? optionLabel(a, m.labels[index]) : std::string(), true);
    }
    if (t.count(kAbstain) > 0 && !shown.count(kAbstain)) row(kAbstain, "abstain", false);
    std::vector<std::string> others;
    for (const auto& [answer, count] : t.answers())
        if (!shown.count(answer)) others.push_back(answer);
    std::sort(others.begin(), others.end(), answerBefore);
    for (std::size_t i = 0; i < others.size() && i < maxOthers; ++i) row(others[i], "", false);
    if (others.size() > maxOthers) {
        ResultRow rest;
        rest.label = fmt::format("... {} more answers", others.size() - maxOthers);
        for (std::size_t i = maxOthers; i < others.size(); ++i) rest.count += t.count(others[i]);
        rest.share = percent(rest.count, voters);
        rows.push_back(std::move(rest));
    }
    return rows;
}

long long reportedKeypads(const DisplayModel& m) {
    const std::string v = trim(m.tally.info("numKeypads"));
    if (!isNumeric(v)) return 0;
    const double d = ParseNumber(v);
    return d >= 1 && d < 1e9 ? static_cast<long long>(d) : 0;
}

std::string voteTitle(const DisplayModel& m) {
    if (!m.question.empty()) return printable(m.question);
    if (!m.setup.voteName.empty()) return printable(m.setup.voteName);
    return "slide " + numText(m.slide);
}

std::string voteDescription(const DisplayModel& m) {
    std::string d = "slide " + numText(m.slide) + ", " + m.setup.tag + ", " + printable(m.setup.voteType) + ", " +
                    numText(m.options) + (m.options == 1 ? " option" : " options") + " from " +
                    numText(m.setup.startFrom);
    if (!m.setup.keypadsActive.empty()) d += ", keypads " + m.setup.keypadsActive;
    return d;
}

std::string voterSummary(const DisplayModel& m) {
    const VoteTally& t = m.tally;
    std::string s = numText(t.voters()) + (t.voters() == 1 ? " voter" : " voters");
    if (const long long all = reportedKeypads(m)) s += " of " + numText(all);
    s += ", " + numText(t.received()) + (t.received() == 1 ? " vote" : " votes");
    if (t.changes()) s += ", " + numText(t.changes()) + " changed";
    if (t.skipped()) s += ", " + numText(t.skipped()) + " skipped";
    return s;
}

std::string liveLine(const DisplayModel& m) {
    std::string line = voterSummary(m);
    for (const ResultRow& r : resultRows(m, 6)) {
        line += " | ";
        if (!r.answer.empty()) line += fit(r.answer, 12);
        if (!r.label.empty()) line += (r.answer.empty() ? "" : " ") + fit(r.label, 16);
        line += ": " + numText(r.count);
    }
    return line;
}

std::vector<std::string> chartLines(const DisplayModel& m, int width) {
    width = std::clamp(width, 40, 200);
    std::vector<std::string> lines;
    lines.push_back(fit(voteTitle(m), static_cast<std::size_t>(width)));
    const auto rows = resultRows(m, 8);
    const Columns c = columns(rows, width);
    for (const ResultRow& r : rows) lines.push_back(rowLine(r, c));
    lines.push_back(fit(voterSummary(m) + fmt::format(" - open {:.1f} s", m.seconds), static_cast<std::size_t>(width)));
    return lines;
}

std::vector<std::string> resultTable(const DisplayModel& m, int width) {
    width = std::clamp(width, 40, 200);
    std::vector<std::string> lines;
    const auto rows = resultRows(m);
    const Columns c = columns(rows, width);
    lines.push_back("Result: " + voteTitle(m));
    lines.push_back("(" + voteDescription(m) + ")");
    lines.push_back(fmt::format(" {:>{}}  {:<{}} {:>7} {:>8}", "answer", c.answer, "", c.label, "votes", "share"));
    for (const ResultRow& r : rows) lines.push_back(rowLine(r, c));
    for (auto& l : resultSummary(m)) lines.push_back(std::move(l));
    return lines;
}

std::string shareText(double share) { return fmt::format("{:.1f}%", share); }

std::vector<std::string> resultSummary(const DisplayModel& m) {
    std::vector<std::string> lines;
    const VoteTally& t = m.tally;
    std::string voters = "voters: " + numText(t.voters());
    if (const long long all = reportedKeypads(m)) voters += fmt::format(" of {} keypads ({:.1f}%)", all, percent(t.voters(), all));
    lines.push_back(voters);
    lines.push_back("votes received: " + numText(t.received()) + " (" + numText(t.changes()) +
                    (t.changes() == 1 ? " changed answer)" : " changed answers)"));
    if (t.skipped()) lines.push_back("records skipped (malformed): " + numText(t.skipped()));
    if (m.setup.correctAnswer) {
        const long long right = t.count(numText(*m.setup.correctAnswer));
        lines.push_back(fmt::format("correct answer {}: {} of {} voters", *m.setup.correctAnswer, right, t.voters()));
    }
    std::string open = fmt::format("open for {:.1f} s", m.seconds);
    if (m.bases >= 0) open += " on " + numText(m.bases) + (m.bases == 1 ? " base station" : " base stations");
    if (m.controllerGone) open += "; the controller left before the vote was ended";
    lines.push_back(open);
    return lines;
}

}  // namespace tlx
