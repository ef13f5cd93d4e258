#include "support/TestWorld.h"

#include <atomic>
#include <fstream>
#include <random>
#include <sstream>

#include "core/MainForm.h"
#include "core/PortFile.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "presentation/PresentationModules.h"
#include "presentation/Tallix.h"
#include "support/DriverTestWorld.h"

namespace tlx::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    std::random_device rd;
    path_ = fs::temp_directory_path() /
            ("tlx-test-" + std::to_string(rd()) + "-" + std::to_string(counter++));
    fs::create_directories(path_);
}

TempDir::~TempDir() {
    std::error_code ec;
    // Undo permission changes a test made, so the tree can go.
    for (auto it = fs::recursive_directory_iterator(path_, ec); it != fs::recursive_directory_iterator(); ++it)
        fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
}

void FakeDialogs::message(const std::string& title, const std::string& text, MsgIcon) {
    shown.push_back({"message", title, text});
}

bool FakeDialogs::askYesNo(const std::string& title, const std::string& text, MsgIcon) {
    shown.push_back({"question", title, text});
    if (answers.empty()) return true;
    const bool a = answers.front();
    answers.erase(answers.begin());
    return a;
}

std::optional<std::string> FakeDialogs::inputBox(const std::string& title, const std::string& prompt,
                                                 const std::string& initial) {
    shown.push_back({"input", title, prompt});
    if (inputs.empty()) return initial;
    auto a = inputs.front();
    inputs.erase(inputs.begin());
    return a;
}

std::vector<std::string> FakeDialogs::texts() const {
    std::vector<std::string> v;
    for (const auto& s : shown) v.push_back(s.text);
    return v;
}

bool FakeDialogs::any(const std::string& text) const {
    for (const auto& s : shown)
        if (s.text.find(text) != std::string::npos) return true;
    return false;
}

TestWorld::TestWorld(bool presentationRunning) {
    for (const auto& p : {appData(), programData(), temp(), install()}) fs::create_directories(p);
    desktop.setEnvironment("APPDATA", appData().string());
    desktop.setEnvironment("PROGRAMDATA", programData().string());
    desktop.setEnvironment("ALLUSERSPROFILE", programData().string());
    desktop.setEnvironment("TEMP", temp().string());
    desktop.setInstallFolder(install());
    if (presentationRunning) presentation.start();
    controller = std::make_unique<Controller>(Ports{scheduler, desktop, dialogs, tray, presentation});
    installPresentationSide(*controller);
    controller->keyboard = &keyboard;
}

TestWorld::~TestWorld() {
    presentation.addIn = {};
    addIn.reset();
    controller.reset();
}

MainForm& TestWorld::main() {
    MainForm* m = controller->mainForm();
    if (!m) throw std::runtime_error("main form not loaded");
    return *m;
}

void TestWorld::start() {
    Main(*controller);
    scheduler.runDue();
}

std::vector<std::string> TestWorld::logLines() {
    std::vector<std::string> v;
    if (MainForm* m = controller->mainForm())
        for (std::size_t i = 0; i < m->txt_log.lineCount(); ++i) v.push_back(m->txt_log.line(i));
    return v;
}

bool TestWorld::logged(const std::string& part) {
    for (const auto& l : logLines())
        if (l.find(part) != std::string::npos) return true;
    return false;
}

std::vector<std::string> TestWorld::traceLines() {
    std::vector<std::string> v;
    const auto text = readFile(controller->logs.traceFilePath());
    for (auto& l : split(text, "\r\n"))
        if (!l.empty()) v.push_back(l);
    return v;
}

void TestWorld::writeSettings(const std::string& section, const std::string& key, const std::string& value) {
    WriteProfileString(appData() / "tallix" / "tlx.ini", section, key, value);
}

KelvarinDrivers& TestWorld::useSimBases() {
    auto drivers = std::make_unique<KelvarinDrivers>(*controller, baseLibrary);
    KelvarinDrivers& ref = *drivers;
    controller->drivers = std::move(drivers);
    return ref;
}

SimBaseStation& TestWorld::addSimBase(const std::string& id, int keypads, const std::string& type,
                                      long long hidStart) {
    SimBaseSpec setup;
    setup.type = type;
    setup.id = id;
    if (type == "KELVARIN COREHUB G1") setup.firmware = "1.01.00.1607.1819";
    addKeypads(setup, keypads, hidStart);
    return baseLibrary.addBase(std::move(setup));
}

void TestWorld::writePortFile(const std::vector<PortEntry>& bases) {
    PortFileData data;
    data.bases = bases;
    tlx::writePortFile(appData() / "tallix" / "port.tlc", data);
}

fs::path TestWorld::openDeck(const pptx::DeckPlan& setup, const std::string& name) {
    const fs::path file = dir / name;
    pptx::buildDeck(setup).saveAs(file);
    const std::string error = presentation.Open(file.string());
    if (!error.empty()) throw std::runtime_error(error);
    return file;
}

void TestWorld::wireAddIn() {
    addIn = std::make_unique<tallix>(*controller);
    addIn->init("");
    presentation.addIn.showBegin = [this](std::int64_t window) { addIn->SlideShowBegin(window); };
    presentation.addIn.nextSlide = [this] { addIn->SlideShowNextSlide(); };
    presentation.addIn.showEnd = [this] { addIn->SlideShowEnd(); };
    presentation.addIn.closing = [this] { addIn->PowerPointClosed(); };
}

std::string readFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

void writeFile(const fs::path& p, const std::string& content) {
    if (p.has_parent_path()) fs::create_directories(p.parent_path());
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out << content;
}

}  // namespace tlx::test
