#pragma once
// A started controller for the harnesses that feed outside text through the controller
// itself: the simulated desktop and presentation program on the virtual scheduler, and a
// base-station library whose answers (device lists, registry texts) and events (votes,
// presenter keys) the harness scripts.
#include <memory>
#include <string>
#include <vector>

#include "core/GlobalState.h"
#include "ports/BaseLibrary.h"
#include "support/TestWorld.h"

namespace tlx {
class KelvarinDrivers;
class MainForm;
}  // namespace tlx

namespace tlx::fuzz {

class ScriptedBase;
class ScriptedVPanel;

// What the scripted bases answer.
struct BaseScript {
    std::string usbDevices = "100100100100";
    std::string ethernetDevices;
    std::string registry = "300100001;1|300100002;2|300100003;3";
    std::string firmware = "2.00.01.1801.1545";
};

class ScriptedBaseLibrary : public BaseLibrary {
public:
    ScriptedBaseLibrary();
    ~ScriptedBaseLibrary() override;
    std::unique_ptr<KelvarinBase> createBase(LibraryGeneration generation) override;
    std::unique_ptr<KelvarinVPanel> createVPanel() override;

    BaseScript script;
    // Base objects that are bound to a base now (Connect succeeded, not yet disconnected
    // or destroyed), in the order they connected; the control of the oldest bases.
    std::vector<ScriptedBase*> connected() const;
    KelvarinBase* firstConnected() const;
    KelvarinVPanel* vPanel() const;

private:
    friend class ScriptedBase;
    friend class ScriptedVPanel;
    std::vector<ScriptedBase*> live_;
    ScriptedVPanel* vPanel_ = nullptr;
};

// The port file rows of the world: a Corehub G2 base (keypads 1..40) and an oldest-generation
// base on serial port 1 (keypads 41..60).
std::vector<PortEntry> defaultBases();

class FuzzWorld {
public:
    explicit FuzzWorld(const std::vector<PortEntry>& bases = defaultBases());
    ~FuzzWorld();

    // Opens a small deck with two vote slides in the presentation program.
    void openDeck();
    // Runs start-up as the program does.
    void start();
    // Both: start-up with the deck open, as most harnesses want it.
    void startWithDeck() {
        openDeck();
        start();
    }
    // Queues a command text as a display program would, and lets the queue, the vote buffer
    // and the send timer run.
    void send(const std::string& text);
    void run(double ms);
    // Asks for the names as a display program would. Whatever was read, the reply holds one
    // participant a line between "StartListOfNames" and "EndListOfNames".
    void checkNamesReply();

    ScriptedBaseLibrary library;  // outlives the controller
    test::TestWorld w;
    KelvarinDrivers* drivers = nullptr;
    MainForm& main();
    // Every text the controller sent out.
    std::vector<std::string> sent;
};

// A controller started with `bytes` as the participant workbook `name` beside the
// presentation, asked for the names.
void startWithParticipantList(const std::string& name, const std::string& bytes);

}  // namespace tlx::fuzz
