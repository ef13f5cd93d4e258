#include "support/FuzzWorld.h"

#include <algorithm>
#include <stdexcept>

#include "core/MainForm.h"
#include "core/Text.h"
#include "drivers/KelvarinDrivers.h"
#include "platform/files/FileSpreadsheet.h"
#include "platform/files/pptx/DeckBuilder.h"
#include "support/Harness.h"

namespace tlx::fuzz {

namespace fs = std::filesystem;

// Every operation succeeds; what a base reports comes from the library's script.
class ScriptedBase : public KelvarinBase {
public:
    ScriptedBase(ScriptedBaseLibrary& lib, LibraryGeneration generation) : lib_(lib), generation_(generation) {}
    ~ScriptedBase() override { unbind(); }

    int GetUSBDevices(std::string& list) override {
        list = lib_.script.usbDevices;
        return BaseErrorCode::Success;
    }
    int GetEthernetDevices(std::string& list) override {
        list = lib_.script.ethernetDevices;
        return BaseErrorCode::Success;
    }
    int Connect(const std::string& connection) override {
        id_.clear();
        for (char c : connection.substr(0, connection.find('|')))
            if (c != ' ') id_ += c;
        if (std::find(lib_.live_.begin(), lib_.live_.end(), this) == lib_.live_.end()) lib_.live_.push_back(this);
        return BaseErrorCode::Success;
    }
    int Disconnect() override {
        unbind();
        return BaseErrorCode::Success;
    }
    int GetBaseConfig(KelvarinBaseConfig& config) override {
        config.BaseName = generation_ == LibraryGeneration::Prioritizer2 ? "KELVARIN COREHUB G2" : "KELVARIN COREHUB G1";
        config.BaseID = id_;
        config.FirmwareVersion = lib_.script.firmware;
        config.RegistryLowSID = 1;
        config.RegistryHighSID = 40;
        return BaseErrorCode::Success;
    }
    int SetBaseConfig(const KelvarinBaseConfig&) override { return BaseErrorCode::Success; }
    int GetSessionConfig(KelvarinSessionConfig& config) override {
        config = session_;
        return BaseErrorCode::Success;
    }
    int SetSessionConfig(const KelvarinSessionConfig& config) override {
        session_ = config;
        return BaseErrorCode::Success;
    }
    int RadioEnable(bool) override { return BaseErrorCode::Success; }
    int RadioStatus(int& status) override {
        status = 1;
        return BaseErrorCode::Success;
    }
    int ResetBase() override { return BaseErrorCode::Success; }
    int RebootRadio() override { return BaseErrorCode::Success; }
    int GetKeypadConfig(const std::string& hid, KelvarinKeypadConfig& config) override {
        config.HID = hid;
        return BaseErrorCode::Success;
    }
    int SetKeypadConfig(const KelvarinKeypadConfig&) override { return BaseErrorCode::Success; }
    int GetRegistry(std::string& registry) override {
        registry = lib_.script.registry;
        return BaseErrorCode::Success;
    }
    int GetKeypadFromRegistry(int sid, KelvarinKeypadConfig& config) override {
        config.SID = sid;
        return BaseErrorCode::Success;
    }
    int AddKeypadToRegistry(const std::string&, int) override { return BaseErrorCode::Success; }
    int DeleteKeypadFromRegistry(const std::string&) override { return BaseErrorCode::Success; }
    int DeleteRegistry() override { return BaseErrorCode::Success; }
    int UpdateRegistryFlashRIT(const std::string&, int) override { return BaseErrorCode::Success; }
    int StartAudio(const std::string&, const KelvarinAudioOptions&) override { return BaseErrorCode::Success; }
    int StopAudio() override { return BaseErrorCode::Success; }
    int PrepareKeypadSurveyScan(const std::vector<std::string>&, const KelvarinSurveyOptions&) override {
        return BaseErrorCode::Success;
    }
    int BeginKeypadSurveyScan() override { return BaseErrorCode::Success; }
    int EndKeypadSurveyScan() override { return BaseErrorCode::Success; }
    int StartVote(const KelvarinVote&) override { return BaseErrorCode::Success; }
    int PrepareVote(const KelvarinVote&) override { return BaseErrorCode::Success; }
    int BeginLiveVote() override { return BaseErrorCode::Success; }
    int PauseVote() override { return BaseErrorCode::Success; }
    int ResumeVote() override { return BaseErrorCode::Success; }
    int EndVote(const std::string&) override { return BaseErrorCode::Success; }
    int GetChannelList(KelvarinChannelList& list) override {
        list.Channel = session_.AltChannels;
        return BaseErrorCode::Success;
    }
    int ChannelScan(int, int, int, int) override { return BaseErrorCode::Success; }
    int ShowWinningKeypad(const std::string&, const KelvarinWinnerMessage&) override { return BaseErrorCode::Success; }
    int SetPresenterEchoMessage(const std::string&, const std::string&) override { return BaseErrorCode::Success; }
    int SetPresenterGotoMenu(const std::string&, const std::string&) override { return BaseErrorCode::Success; }
    int SetPresenterMenu(const std::string&, const KelvarinPresenterMenu&) override { return BaseErrorCode::Success; }

private:
    void unbind() { lib_.live_.erase(std::remove(lib_.live_.begin(), lib_.live_.end(), this), lib_.live_.end()); }

    ScriptedBaseLibrary& lib_;
    LibraryGeneration generation_;
    std::string id_;
    KelvarinSessionConfig session_;
};

class ScriptedVPanel : public KelvarinVPanel {
public:
    explicit ScriptedVPanel(ScriptedBaseLibrary& lib) : lib_(lib) { lib_.vPanel_ = this; }
    ~ScriptedVPanel() override {
        if (lib_.vPanel_ == this) lib_.vPanel_ = nullptr;
    }
    std::vector<int> AvailablePorts() override { return {1}; }
    int OpenPort(int) override { return BaseErrorCode::Success; }
    int ClosePort(int) override { return BaseErrorCode::Success; }
    int StartVote(int, const KelvarinVote&) override { return BaseErrorCode::Success; }
    int EndVote(int) override { return BaseErrorCode::Success; }
    int SetDetectMode(int) override { return BaseErrorCode::Success; }

private:
    ScriptedBaseLibrary& lib_;
};

ScriptedBaseLibrary::ScriptedBaseLibrary() = default;
ScriptedBaseLibrary::~ScriptedBaseLibrary() = default;

std::unique_ptr<KelvarinBase> ScriptedBaseLibrary::createBase(LibraryGeneration generation) {
    return std::make_unique<ScriptedBase>(*this, generation);
}

std::unique_ptr<KelvarinVPanel> ScriptedBaseLibrary::createVPanel() { return std::make_unique<ScriptedVPanel>(*this); }

std::vector<ScriptedBase*> ScriptedBaseLibrary::connected() const { return live_; }

KelvarinBase* ScriptedBaseLibrary::firstConnected() const { return live_.empty() ? nullptr : live_.front(); }

KelvarinVPanel* ScriptedBaseLibrary::vPanel() const { return vPanel_; }

std::vector<PortEntry> defaultBases() {
    return {{"100100100100", "KELVARIN COREHUB G2", 1, 40}, {"1", "KELVARIN BASE V3", 41, 60}};
}

FuzzWorld::FuzzWorld(const std::vector<PortEntry>& bases) {
    auto d = std::make_unique<KelvarinDrivers>(w.c(), library);
    drivers = d.get();
    w.c().drivers = std::move(d);
    if (!bases.empty()) w.writePortFile(bases);
}

FuzzWorld::~FuzzWorld() = default;

void FuzzWorld::openDeck() {
    // Built once per process: making a package is far slower than writing its bytes.
    static const std::string bytes = [] {
        pptx::DeckPlan plan;
        plan.slides.push_back({"Welcome", "", {}, {}, {}});
        plan.slides.push_back({"Question one", "Which?", {"One", "Two", "Three"}, {},
                               {{"TLXVOTE", "<VoteType>SINGLEDIGIT</VoteType><Options>3</Options>"}}});
        plan.slides.push_back({"Question two", "How many?", {}, {},
                               {{"TLXQUIZ", "<VoteType>NUMERIC</VoteType><CorrectAnswer>4</CorrectAnswer>"}}});
        return pptx::buildDeck(plan).toBytes();
    }();
    const fs::path file = w.dir / "deck.pptx";
    test::writeFile(file, bytes);
    w.presentation.Open(file.string());
}

void FuzzWorld::start() {
    w.start();
    if (MainForm* m = w.c().mainForm()) m->FromCtrlForm.connect([this](const std::string& s) { sent.push_back(s); });
}

MainForm& FuzzWorld::main() { return w.main(); }

void FuzzWorld::send(const std::string& text) {
    if (MainForm* m = w.c().mainForm()) m->AddDataToCommandQueue(text);
    run(200);
}

void FuzzWorld::run(double ms) { w.scheduler.advance(static_cast<std::int64_t>(ms)); }

void FuzzWorld::checkNamesReply() {
    sent.clear();
    send("GETNAMES");
    std::string reply;
    for (const auto& s : sent)
        if (startsWith(s, "StartListOfNames")) reply = s;
    require(!reply.empty() && split(reply, "\r\n").size() == w.glo().participants.size() + 2);
}

void startWithParticipantList(const std::string& name, const std::string& bytes) {
    FileSpreadsheet spreadsheet;  // outlives the world, which reads through it to the end
    FuzzWorld world;
    world.w.c().spreadsheet = &spreadsheet;
    test::writeFile(world.w.dir / name, bytes);
    world.startWithDeck();
    world.checkNamesReply();
}

}  // namespace tlx::fuzz
