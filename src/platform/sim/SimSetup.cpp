#include "platform/sim/SimSetup.h"

#define SI_NO_CONVERSION
#include <SimpleIni.h>

#include <fstream>
#include <sstream>

#include "core/Settings.h"
#include "core/Text.h"

namespace tlx {

namespace fs = std::filesystem;

SimShowSetup readSimShowSetup(const fs::path& file) {
    SimShowSetup s;
    if (file.empty()) return s;
    const fs::path folder = file.parent_path();
    auto rel = [&](const std::string& v) -> fs::path {
        if (v.empty()) return {};
        fs::path p = v;
        return p.is_relative() ? folder / p : p;
    };
    s.presentationRunning = ParseNumber(GetProfileString(file, "presentation", "running", "1")) != 0;
    s.deck = rel(GetProfileString(file, "presentation", "deck", ""));
    s.addInFolder = GetProfileString(file, "presentation", "addin", "");
    s.script = rel(GetProfileString(file, "show", "script", ""));
    CSimpleIniA ini;
    ini.SetUnicode(false);
    if (ini.LoadFile(file.string().c_str()) >= 0) {
        CSimpleIniA::TNamesDepend keys;
        ini.GetAllKeys("displays", keys);
        for (const auto& k : keys) {
            const std::string value = trim(ini.GetValue("displays", k.pItem, ""));
            const auto [program, args] = splitOnce(value, " ");
            // A bare program name is looked up when the quick vote runs (the controller's own
            // folder first); a path is taken relative to this file.
            const bool bare = fs::path(program).filename().string() == program;
            s.displays[toUpper(k.pItem)] = {bare ? program : rel(program).string(), trim(args)};
        }
    }
    return s;
}

std::string applySimShowSetup(const SimShowSetup& setup, SimPresentationApp& app) {
    if (!setup.addInFolder.empty()) app.addInFolder = setup.addInFolder;
    for (const auto& [tag, d] : setup.displays) app.displays[tag] = d;
    if (!setup.presentationRunning) return {};
    app.start();
    if (!setup.deck.empty()) return app.Open(setup.deck.string());
    return {};
}

std::vector<ScriptStep> loadScript(const fs::path& file, std::vector<std::string>& problems) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        problems.push_back("cannot read " + file.string());
        return {};
    }
    std::stringstream ss;
    ss << in.rdbuf();
    return parseScript(ss.str(), &problems);
}

}  // namespace tlx
