#include "core/ParticipantNames.h"

#include <cmath>
#include <fstream>
#include <sstream>

#include "core/Controller.h"
#include "core/NumberFields.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "ports/Dialogs.h"
#include "ports/PresentationApp.h"
#include "ports/Spreadsheet.h"

namespace tlx {

namespace fs = std::filesystem;

namespace {

constexpr const char* kObject = "Controller";

// Fills the table one record at a time: the first occurrence of a keypad wins, later ones
// are collected for the message.
class NameTable {
public:
    explicit NameTable(std::vector<GlobalState::Participant>& rows) : rows_(rows) {
        for (const auto& r : rows_) seen(r.keypad) = true;
    }

    // Empties the table and forgets every keypad seen.
    void clear() {
        rows_.clear();
        seen_.assign(seen_.size(), false);
    }

    // keypad, name and weighting as text; an absent or blank weighting counts 1.
    void add(const std::string& keypadText, const std::string& nameText, const std::string* weightingText) {
        const double k = std::nearbyint(ParseNumber(keypadText));
        // Not a keypad number at all (text, 0, negative, beyond the field): not imported, and
        // said so once the load is done.
        if (!(k >= 1 && k <= 32767)) {
            notImported_ += (notImported_.empty() ? "" : ", ") + trim(keypadText);
            return;
        }
        const auto keypad = toInt16Field(k);
        // A lookup by number, not a walk of the table: lists run to thousands of people.
        if (seen(keypad)) {
            duplicates_ += "\r\n - " + numText(static_cast<int>(keypad));
            return;
        }
        seen(keypad) = true;
        GlobalState::Participant p;
        p.keypad = keypad;
        p.name = cleanName(nameText);
        if (weightingText && !trim(*weightingText).empty()) p.weighting = toInt32Field(ParseNumber(*weightingText));
        rows_.push_back(std::move(p));
    }

    // One delimited record: keypad first, weighting last, the name in between (a name may
    // itself hold the separator, as "Smith, John" does).
    void addFields(const std::vector<std::string>& f, std::string_view sep) {
        if (f.empty()) return;
        if (f.size() == 1) return add(f[0], "", nullptr);
        if (f.size() == 2) return add(f[0], f[1], nullptr);
        const std::vector<std::string> middle(f.begin() + 1, f.end() - 1);
        add(f[0], join(middle, sep), &f.back());
    }

    const std::string& duplicates() const { return duplicates_; }
    const std::string& notImported() const { return notImported_; }
    std::size_t size() const { return rows_.size(); }

private:
    static std::string cleanName(const std::string& text) {
        std::string n;
        n.reserve(text.size());
        for (char c : text) {
            if (c == '"') continue;
            // A line break inside a name would break the one-line-per-participant reply.
            n += (c == '\r' || c == '\n') ? ' ' : c;
        }
        return trim(n);
    }

    std::vector<bool>::reference seen(int keypad) { return seen_[static_cast<std::size_t>(keypad + 32768)]; }

    std::vector<GlobalState::Participant>& rows_;
    std::vector<bool> seen_ = std::vector<bool>(65536, false);  // by keypad number, any 16-bit value
    std::string duplicates_;
    std::string notImported_;
};

void readTag(const std::string& tag, NameTable& table) {
    for (const auto& record : split(tag, "|")) {
        if (trim(record).empty()) continue;
        table.addFields(split(record, "^^"), "^^");
    }
}

void readNamesTxt(const fs::path& file, NameTable& table) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw AppError(err::kFileNotFound, "File not found: " + file.string());
    std::stringstream ss;
    ss << in.rdbuf();
    std::string text = ss.str();
    if (startsWith(text, "\xEF\xBB\xBF")) text.erase(0, 3);  // a UTF-8 mark from a text editor
    for (auto line : split(text, "\n")) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (trim(line).empty()) continue;
        table.addFields(split(line, ","), ",");
    }
}

void readWorkbook(Controller& c, const fs::path& file, NameTable& table) {
    if (!c.spreadsheet) throw AppError(err::kCannotCreateObject, "ActiveX component can't create object");
    const auto rows = c.spreadsheet->readFirstSheet(file);
    if (rows.empty()) return;
    // The titles along row 1, up to the first empty one, in any order.
    int keypadCol = -1, nameCol = -1, weightingCol = -1;
    for (std::size_t col = 0; col < rows[0].size(); ++col) {
        const std::string title = toUpper(trim(rows[0][col]));
        if (title.empty()) break;
        if (title == "KEYPAD" && keypadCol < 0) keypadCol = static_cast<int>(col);
        if (title == "NAME" && nameCol < 0) nameCol = static_cast<int>(col);
        if (title == "WEIGHTING" && weightingCol < 0) weightingCol = static_cast<int>(col);
    }
    if (keypadCol < 0)
        throw AppError(err::kSubscriptOutOfRange,
                       "No \"KEYPAD\" column in the first worksheet of " + file.filename().string());
    auto cell = [&](const std::vector<std::string>& row, int col) -> const std::string* {
        static const std::string empty;
        if (col < 0) return nullptr;
        return static_cast<std::size_t>(col) < row.size() ? &row[static_cast<std::size_t>(col)] : &empty;
    };
    for (std::size_t r = 1; r < rows.size(); ++r) {
        const std::string* keypad = cell(rows[r], keypadCol);
        if (trim(*keypad).empty()) break;  // the list ends at the first empty keypad cell
        const std::string* name = cell(rows[r], nameCol);
        table.add(*keypad, name ? *name : std::string(), cell(rows[r], weightingCol));
    }
}

ppt::Presentation* activePresentation(Controller& c) {
    ppt::Application* app = c.glo.ppApp;
    if (!app || app->presentationCount() <= 0) return nullptr;
    return app->activePresentation();
}

}  // namespace

void LoadParticipantNames(Controller& c, std::string& status) {
    GlobalState& glo = c.glo;
    status.clear();
    NameTable table(glo.participants);
    trap(c.errors, kObject, "LoadParticipantNames", [&] {
        // A refused load leaves the list as it was.
        if (c.settings.DisableParticipantList()) {
            status = "Participant list disabled";
            return;
        }
        ppt::Presentation* p = activePresentation(c);
        if (!p) {
            status = "No active presentation";
            return;
        }
        table.clear();
        const std::string tag = p->tags().item(kParticipantNamesTag);
        if (!tag.empty()) {
            status = "Participant names read from the presentation tag";
            readTag(tag, table);
            return;
        }
        const std::string folder = p->path();
        if (folder.empty()) {
            status = "No participant list found";
            return;
        }
        fs::path file;
        std::error_code ec;
        for (const char* name : {kParticipantListXlsx, kParticipantListXls, kNamesTxt})
            if (fs::is_regular_file(fs::path(folder) / name, ec)) {
                file = fs::path(folder) / name;
                break;
            }
        if (file.empty()) {
            status = "No participant list found";
            return;
        }
        status = "Participant names read from " + file.filename().string();
        const std::string upper = toUpper(file.filename().string());
        if (endsWith(upper, ".XLS") || endsWith(upper, ".XLSX"))
            readWorkbook(c, file, table);
        else
            readNamesTxt(file, table);
    });
    if (!table.notImported().empty())
        c.LogEvent("Participant rows NOT imported, keypad not from 1 to 32767: " + table.notImported(), 2);
    // Whatever the source, a keypad appears once; the message keeps its historic wording.
    if (!table.duplicates().empty())
        c.ports.dialogs.message("Names Failed to Load",
                                "Please check you names.txt file\r\nThe following keypads had duplicate numbering "
                                "and have NOT been imported" +
                                    table.duplicates(),
                                MsgIcon::Information);
}

bool ExportParticipantNames(Controller& c) {
    bool written = false;
    trap(c.errors, kObject, "ExportParticipantNames", [&] {
        ppt::Presentation* p = activePresentation(c);
        if (!p || p->path().empty()) return;
        if (!c.spreadsheet) throw AppError(err::kCannotCreateObject, "ActiveX component can't create object");
        std::vector<SheetRow> rows;
        rows.push_back({std::string("Keypad"), std::string("Name"), std::string("Weighting")});
        for (const auto& r : c.glo.participants)
            rows.push_back({static_cast<double>(r.keypad), r.name, static_cast<double>(r.weighting)});
        c.spreadsheet->writeWorkbook(fs::path(p->path()) / kParticipantListXlsx, rows);
        written = true;
    });
    return written;
}

std::string participantNamesReply(const GlobalState& glo) {
    std::string reply = "StartListOfNames";
    for (const auto& r : glo.participants)
        reply += "\r\n" + numText(static_cast<int>(r.keypad)) + ", " + r.name + ", " + numText(r.weighting);
    reply += "\r\nEndListOfNames";
    return reply;
}

}  // namespace tlx
