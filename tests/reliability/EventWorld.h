#pragma once
// A started controller over simulated bases on virtual time, with display programs that are
// instances of the automation class: enough of an event to open votes, press keypads and
// count what each display program receives.
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "drivers/PrioritizerDriver.h"
#include "presentation/Tallix.h"
#include "support/TestWorld.h"

namespace tlx::test {

// What one display program has heard: every "[keypad;vote]," record counted.
struct Display {
    explicit Display(Controller& c) : client(std::make_unique<tallix>(c)) {
        client->init("");
        client->FromTLXCtrl.connect([this](const std::string& s) { take(s); });
    }
    void take(const std::string& s) {
        const std::string text = replaceAll(s, "\r\n", "");
        std::size_t pos = 0;
        while ((pos = text.find('[', pos)) != std::string::npos) {
            const std::size_t end = text.find("],", pos);
            if (end == std::string::npos) break;
            ++records[text.substr(pos + 1, end - pos - 1)];
            ++total;
            pos = end + 2;
        }
    }
    // Records heard more than once.
    std::vector<std::string> doubled() const {
        std::vector<std::string> v;
        for (const auto& [r, n] : records)
            if (n > 1) v.push_back(r);
        return v;
    }
    bool heard(const std::string& record) const { return records.count(record) > 0; }
    void clear() {
        records.clear();
        total = 0;
    }
    std::unique_ptr<tallix> client;
    std::map<std::string, int> records;  // "keypad;vote" -> times heard
    long total = 0;
};

struct EventWorld : TestWorld {
    // `bases` Corehub G2 bases of `keypads` keypads each; base i's keypads are numbered from
    // i * keypads + 1 through the port file's offsets.
    // `beforeStart` may break a base before the controller first opens it.
    EventWorld(int bases, int keypads, const std::function<void(EventWorld&)>& beforeStart = {}) : perBase(keypads) {
        kelvarin = &useSimBases();
        std::vector<PortEntry> entries;
        for (int i = 0; i < bases; ++i) {
            ids.push_back(std::to_string(100100100100LL + 100LL * i));
            addSimBase(ids.back(), keypads, "KELVARIN COREHUB G2", 300100001LL + 10000LL * i);
            entries.push_back({ids.back(), "KELVARIN COREHUB G2", 1, keypads, false, 0, i * keypads});
        }
        writePortFile(entries);
        if (beforeStart) beforeStart(*this);
        start();
        scheduler.advance(100);
    }
    Display& join() {
        displays.push_back(std::make_unique<Display>(c()));
        return *displays.back();
    }
    // The display program's side of a vote: configuration, then STARTVOTE.
    void openVote(tallix& client, int options = 4) {
        for (const std::string& line :
             {std::string("votetype=SINGLEDIGIT"), "options=" + std::to_string(options), std::string("startfrom=1"),
              std::string("STARTVOTE")})
            client.SendCommand(line);
        scheduler.advance(200);
    }
    void openVote(Display& d, int options = 4) { openVote(*d.client, options); }
    void closeVote(tallix& client) {
        client.SendCommand("ENDVOTE");
        scheduler.advance(200);
    }
    void closeVote(Display& d) { closeVote(*d.client); }
    // A client's init call with these arguments, as a display program or the add-in makes it.
    void tallixInit(const std::string& args) {
        tallix client(c());
        client.init(args);
        scheduler.advance(100);
    }
    // Keypad `keypad` of base `base` (from 0) presses `keys`; true when the base took it.
    bool press(int base, int keypad, const std::string& keys) {
        const bool ok = baseLibrary.press(ids.at(static_cast<std::size_t>(base)), keypad, keys).ok;
        scheduler.advance(40);
        return ok;
    }
    // The record a display program gets for that press.
    std::string record(int base, int keypad, const std::string& vote) const {
        return std::to_string(base * perBase + keypad) + ";" + vote;
    }
    // Whether each base has a vote open, "1|0|...".
    std::string open() {
        std::string s;
        for (std::size_t i = 0; i < ids.size(); ++i) s += std::string(i ? "|" : "") + (baseLibrary.station(i).voteOpen ? "1" : "0");
        return s;
    }
    int perBase;
    KelvarinDrivers* kelvarin = nullptr;
    std::vector<std::string> ids;
    std::vector<std::unique_ptr<Display>> displays;
};

}  // namespace tlx::test
