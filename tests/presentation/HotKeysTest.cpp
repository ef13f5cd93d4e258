#include <gtest/gtest.h>

#include "core/MainForm.h"
#include "core/Text.h"
#include "presentation/HotKeys.h"
#include "presentation/PresentationWatcher.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct KeysWorld : TestWorld {
    KeysWorld() {
        start();
        main().tmr_executeCommand.onTick = nullptr;  // keep the queue for inspection
    }
    int t = 1000;
    void down(int k) { keyboard.keyDown(k, t += 10); }
    void up(int k) { keyboard.keyUp(k, t += 10); }
    void tap(int k) {
        down(k);
        up(k);
    }
    // Holds the modifiers while the key is tapped.
    void chord(std::vector<int> mods, int k) {
        for (int m : mods) down(m);
        tap(k);
        for (auto it = mods.rbegin(); it != mods.rend(); ++it) up(*it);
    }
    std::vector<std::string> queued() { return split(main().txt_command, "\r\n"); }
};
}  // namespace

TEST(Hook, InstalledAtStartUpRenewedWhenDroppedAndShownOnTheMainForm) {
    KeysWorld w;
    EXPECT_EQ(fields(w.glo().hookActive, w.main().lblHookStatus), "1|Hook Active");
    w.keyboard.removeHook();  // dropped behind our back: the refresh timer renews it
    w.scheduler.advance(5000);
    EXPECT_TRUE(w.keyboard.hookInstalled());
    w.tap('V');
    EXPECT_TRUE(w.logged("V Down"));
    w.c().hotKeys->RemoveHook();
    EXPECT_EQ(fields(w.main().lblHookStatus, w.keyboard.hookInstalled()), "Hook Disabled|0");
    w.scheduler.advance(5000);  // removed on purpose: the refresh leaves it so
    EXPECT_FALSE(w.keyboard.hookInstalled());

    TestWorld refused;
    refused.keyboard.refuseHook = true;
    refused.start();
    EXPECT_EQ(fields(refused.glo().hookActive, refused.main().lblHookStatus, refused.main().chkLowLevelKeyboardHook),
              "0|Hot Key Disabled|0");
}

TEST(Hook, ModifierChordsQueueTheirCommands) {
    KeysWorld w;
    w.chord({vk::kLCtrl}, '5');
    w.chord({vk::kRCtrl}, 'G');
    w.chord({vk::kLCtrl}, '0');  // not zero
    w.chord({vk::kLCtrl}, vk::kPageDown);
    w.chord({vk::kLAlt}, 'A');
    for (int k : {'X', 'F', 'D', 'E', 'T', 'Q'}) w.chord({vk::kLShift, vk::kLCtrl, vk::kLAlt}, k);
    EXPECT_EQ(w.queued(), (std::vector<std::string>{"CTRL KEYDOWN=5", "CTRL KEYDOWN=G", "CTRL KEYDOWN=34",
                                                     "ALT KEYDOWN=A", "Exit", "FreeCursor", "SwitchToDebugView",
                                                     "EnablePPT", "ToggleTopMost"}));
    w.main().txt_command.clear();
    w.chord({vk::kLCtrl, vk::kRCtrl}, 'Q');  // both Ctrl keys: an admin key
    EXPECT_EQ(w.queued().front(), "ADMIN KEYDOWN=Q");
}

TEST(Hook, ARepeatingKeyIsActedOnOnce) {
    KeysWorld w;
    w.down(vk::kLCtrl);
    // The key repeats while held: identical events 30 ms apart.
    for (int i = 0; i < 5; ++i) w.keyboard.keyUp('7', 2000 + 30 * i);
    w.up(vk::kLCtrl);
    EXPECT_EQ(w.queued(), (std::vector<std::string>{"CTRL KEYDOWN=7"}));
    // With the filter off every event counts.
    w.main().txt_command.clear();
    w.main().chkRepeatFilter = false;
    w.down(vk::kLCtrl);
    for (int i = 0; i < 3; ++i) w.keyboard.keyUp('7', 4000 + 30 * i);
    EXPECT_EQ(w.queued().size(), 3u);
}

TEST(Hook, VOnReleaseStartsTheVoteCheckUnlessAVoteDisplayRuns) {
    KeysWorld w;
    w.down('V');
    EXPECT_FALSE(w.main().tmrCheck4Vote.enabled());
    w.up('V');
    EXPECT_EQ(fields(w.main().tmrCheck4Vote.enabled(), w.logged(" - XX - V Down")), "1|1");
    w.main().tmrCheck4Vote.setEnabled(false);
    w.desktop.addProcess("CHARTIST.EXE");
    w.tap('V');
    EXPECT_FALSE(w.main().tmrCheck4Vote.enabled());
    EXPECT_TRUE(startsWith(w.logLines().front().substr(14), " - XX - V Down - Matrix/Vote already running"));
}

TEST(Hook, ModeKeysOnlyForTheOldestBasesAndNeverWhileSuspended) {
    KeysWorld w;
    w.tap('X');
    EXPECT_TRUE(w.main().txt_command.empty());
    w.glo().modeKeysEnabled = true;
    for (int k : {'X', 'F', 'D', 'S'}) w.tap(k);
    EXPECT_EQ(w.queued(), (std::vector<std::string>{"Detect Mode=-1", "Detect Mode=1", "Detect Mode=2", "Detect Mode=3"}));
    w.main().txt_command.clear();
    w.glo().hotKeysSuspended = true;
    w.tap('X');
    w.chord({vk::kLCtrl}, '5');
    EXPECT_TRUE(w.main().txt_command.empty());
}

TEST(Hook, EveryKeyStillReachesItsWindow) {
    KeysWorld w;
    std::vector<int> seen;
    w.keyboard.foregroundWindow = [&](int k, bool released) {
        if (released) seen.push_back(k);
    };
    w.chord({vk::kLCtrl}, '5');
    w.tap('V');
    EXPECT_EQ(seen, (std::vector<int>{'5', vk::kLCtrl, 'V'}));
}

TEST(CtrlKey, ExitsWithNoOpenPresentationOrWithAltAlsoHeld) {
    KeysWorld w;
    w.c().hotKeys->CtrlKeyPressed("G");
    EXPECT_TRUE(w.logged("CTRL KEY PRESSED EXIT - glo.ppApp.Presentations.count = 0"));
    w.down(vk::kLCtrl);
    w.down(vk::kLAlt);
    w.c().hotKeys->CtrlKeyPressed("W");
    EXPECT_EQ(fields(w.logged("AltKeyPressed=True"), w.logged("ACTIONED")), "1|0");
    w.c().hotKeys->AltKeyPressed("A");
    EXPECT_EQ(fields(w.logged("CtrlKeyPressed=True"), w.logged("ALT KEY PRESSED EXIT - Ctrl Key also pressed")), "1|1");
}

TEST(CtrlKey, GuardsWithoutThePresentationProgram) {
    TestWorld w(false);
    w.start();
    w.c().hotKeys->CtrlKeyPressed("G");
    EXPECT_EQ(fields(w.logged("InitPPTObject FAILED"), w.logged("CTRL KEY PRESSED EXIT - Not InitPPTObject")), "1|1");
    w.c().hotKeys->AltKeyPressed("A");
    EXPECT_EQ(fields(w.logged("ALT KEY PRESSED EXIT - glo.ppApp Is Nothing"), w.logged("ALT KEY PRESSED EXIT - Not InitPPTObject")),
              "1|0");
}

// Alt exits on a failed attach as Ctrl does; its exit line names the empty program object
// when there is none, and otherwise says the attach failed.
TEST(AltKey, AFailedAttachExitsAndNamesAnEmptyProgramObjectElseTheAttach) {
    TestWorld w;
    w.start();
    w.presentation.quit();
    w.c().watcher->InitPPTObject(true);  // fails; the program object is still the old one
    ASSERT_NE(w.glo().ppApp, nullptr);
    w.c().hotKeys->AltKeyPressed("A");
    EXPECT_EQ(fields(w.logged(" - XX - InitPPTObject FAILED"), w.logged("ALT KEY PRESSED EXIT - Not InitPPTObject"),
                     w.logged("glo.ppApp.Presentations")),
              "1|1|0");
}

TEST(RegisteredHotKeys, NamesAndTheirFaults) {
    KeysWorld w;
    cRegHotKey keys(w.c());
    EXPECT_TRUE(keys.RegisterKey("V", 'V', 0));
    EXPECT_FALSE(keys.RegisterKey("V", 'B', 0));
    EXPECT_FALSE(keys.RegisterKey(std::string(33, 'k'), 'K', 0));
    EXPECT_FALSE(keys.UnregisterKey("nothing"));
    EXPECT_FALSE(keys.RegisterKey("W", 'V', 0));  // the system has V already
    const std::string log = readFile(w.appData() / "tallix" / "Err.log");
    for (const char* part : {"Description: The Key Name 'V' is already registered.",
                             "Description: Key Name too long (max 32 characters).",
                             "Description: No hot key registered under the name 'nothing'",
                             "Description: Failed to Register Hot Key", "Module: cRegHotKey"})
        EXPECT_TRUE(contains(log, part)) << part;
}

TEST(RegisteredHotKeys, VAndTheModeKeysArmedByX) {
    TestWorld w;
    w.keyboard.refuseHook = true;  // a system without the low-level hook
    w.start();
    w.main().tmr_executeCommand.onTick = nullptr;
    w.c().hotKeys->registerHotKeys();
    auto* form = w.c().forms.get<frmHotKey>(frmHotKey::kName);
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->lblStatus, "Hot Key Enabled");
    w.keyboard.tap('V', 100);
    EXPECT_EQ(fields(w.logged("V Down (HotKey - Win 98/ME)"), w.main().tmrCheck4Vote.enabled()), "1|1");
    w.keyboard.tap('F', 200);  // not armed yet
    EXPECT_FALSE(w.logged("FallBack"));
    w.keyboard.tap('X', 300);
    w.keyboard.tap('F', 400);
    EXPECT_EQ(fields(w.logged("KV3 FallBack Mode Enabled 254s (HotKey - Win 98/ME)"), w.main().txt_command), "1|Detect Mode=1");
    w.keyboard.tap('S', 500);  // disarmed again
    EXPECT_EQ(fields(w.logged("Sentry"), w.keyboard.hotKeyCount()), "0|2");
}
