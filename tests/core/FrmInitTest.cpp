#include <gtest/gtest.h>

#include "core/FrmInit.h"
#include "core/PortFile.h"
#include "core/Settings.h"
#include "core/Text.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct InitWorld : TestWorld {
    InitWorld() {
        start();
        form = &c().forms.load<FrmInit>(c());
        form->loadFromGlobals();
    }
    void rows(std::vector<InitGridRow> r) { form->rows = std::move(r); }
    std::vector<std::string> messages() {
        std::vector<std::string> v;
        for (const auto& d : dialogs.shown) v.push_back(d.title + ": " + d.text);
        return v;
    }
    FrmInit* form = nullptr;
};
InitGridRow g2(std::string port, std::string lo, std::string hi) {
    return InitGridRow{std::move(port), "Kelvarin Corehub g2", std::move(lo), std::move(hi)};
}
}  // namespace

TEST(KeypadSetup, BaseTypeChoicesAndTheirStoredForms) {
    for (const auto& [choice, stored] : std::vector<std::pair<std::string, std::string>>{
             {"Kelvarin Base v3", "KELVARIN BASE V3"}, {"Keyboard", "KBOARD"}, {"Modem", "KBOARD"},
             {"KEYBOARD", "KBOARD"}, {"MODEM (KEYBOARD VOTING)", "KBOARD"}, {"Toaster", ""}})
        EXPECT_EQ(FrmInit::storedBaseType(choice), stored) << choice;
}

TEST(KeypadSetup, EachCheckHasItsMessageAndKeepsTheFormOpen) {
    struct Case {
        std::vector<InitGridRow> rows;
        std::vector<std::string> expected;
    };
    const std::vector<Case> cases = {
        {{InitGridRow{"1", "", "1", "20"}}, {"Keypad Setup: No base type selected"}},
        {{g2("1", "1", "4096")}, {"Keypad Setup: Highest Keypad Number cannot be greater than 4095"}},
        {{g2("1", "1", "20"), g2("2", "30", "30"), g2("3", "50", "40")},
         {"Keypad Setup: Error: Base Station 2\r\nLowest Keypad Number equal to or greater than Highest",
          "Keypad Setup: Error: Base Station 3\r\nLowest Keypad Number equal to or greater than Highest"}},
        {{g2("1", "", "x")}, {"Keypad Setup: Error: No valid Low or High Keypad numbers entered"}},
    };
    for (const auto& c : cases) {
        InitWorld w;
        w.rows(c.rows);
        EXPECT_FALSE(w.form->cmdOK_Click());
        EXPECT_EQ(w.messages(), c.expected);
        EXPECT_EQ(fields(w.c().forms.isLoaded(FrmInit::kName), std::filesystem::exists(w.appData() / "tallix" / "port.tlc")),
                  "1|0");
    }
}

TEST(KeypadSetup, PopUpAndCloseChecks) {
    InitWorld w;
    w.rows({g2("1", "1", "20")});
    w.form->chkPopUpOn = true;
    EXPECT_FALSE(w.form->cmdOK_Click());
    EXPECT_EQ(w.messages(), (std::vector<std::string>{
                                "Keypad Setup - PopUp Display: Please enter a value for 'Auto PopUp when down to'",
                                "Keypad Setup - PopUp Display: Please enter a value for 'Show how many'"}));
    w.dialogs.shown.clear();
    w.form->txtPopUp = "5";
    w.form->txtHowMany = "10";
    w.form->chkClose = true;
    EXPECT_EQ(w.form->closeLabel(), "Close voting when 100% have voted");
    w.form->sldClosePercent = 0;
    EXPECT_EQ(w.form->closeLabel(), "Close voting when 0% have voted");
    EXPECT_FALSE(w.form->cmdOK_Click());
    EXPECT_EQ(w.messages(),
              (std::vector<std::string>{"Keypad Setup: Percentage value on which to close vote must be greater than 0"}));
}

TEST(KeypadSetup, AcceptedEntriesAreWrittenToThePortFileAndSettings) {
    InitWorld w;
    struct Up : NoBaseDrivers {
        bool openBase(const PortEntry&) override { return ++opened > 0; }
        int opened = 0;
    };
    auto drivers = std::make_unique<Up>();
    auto* up = drivers.get();
    w.c().drivers = std::move(drivers);
    w.rows({g2("100100100100", "1", "40"), InitGridRow{"200200200200", "Kelvarin Corehub g2", "41", "80", true, 2, 40}});
    w.form->chkClose = true;
    w.form->sldClosePercent = 90;
    EXPECT_TRUE(w.form->cmdOK_Click());
    EXPECT_TRUE(w.dialogs.shown.empty());
    w.scheduler.runDue();
    EXPECT_FALSE(w.c().forms.isLoaded(FrmInit::kName));
    const auto r = readPortFile(w.appData() / "tallix" / "port.tlc");
    ASSERT_EQ(r.status, PortFileStatus::Ok);
    ASSERT_EQ(r.data.bases.size(), 2u);
    const auto& b = r.data.bases[1];
    EXPECT_EQ(fields(b.baseType, b.gridLo, b.offset, r.data.popUp.close, r.data.popUp.closePercent),
              "KELVARIN COREHUB G2|41|40|1|90");
    // The new bases are connected at once.
    EXPECT_EQ(fields(w.glo().bases.size(), up->opened, std::filesystem::exists(w.appData() / "tallix" / "tlx.ini")), "2|2|1");
    EXPECT_EQ(GetProfileString(w.appData() / "tallix" / "tlx.ini", "KELVARIN CORE HUB OPTIONS", "VOTED TEXT", ""),
              "Sending Vote...");
}

TEST(KeypadSetup, NoBaseFoundMeansKeyboardVoting) {
    InitWorld w;
    w.form->ScanSystem();
    EXPECT_EQ(w.messages(), (std::vector<std::string>{"Keypad Setup: No base stations found, keyboard voting enabled"}));
    ASSERT_EQ(w.form->rows.size(), 1u);
    EXPECT_EQ(FrmInit::storedBaseType(w.form->rows[0].baseType), "KBOARD");
    EXPECT_TRUE(w.form->cmdOK_Click());
    EXPECT_EQ(readPortFile(w.appData() / "tallix" / "port.tlc").data.bases[0].baseType, "KBOARD");
}

TEST(KeypadSetup, ScanKeepsTheRangesOfBasesSeenBefore) {
    InitWorld w;
    struct Found : NoBaseDrivers {
        std::vector<FoundBase> scanForBases() override {
            return {{"KELVARIN COREHUB G2", "100100100100"}, {"KELVARIN COREHUB G2", "300300300300"}};
        }
    };
    w.c().drivers = std::make_unique<Found>();
    w.rows({g2("100100100100", "5", "60")});
    std::vector<std::string> captions;
    w.form->changed.connect([&] { captions.push_back(w.form->Caption()); });
    w.form->ScanSystem();
    EXPECT_NE(std::find(captions.begin(), captions.end(), "Scanning System"), captions.end());
    ASSERT_EQ(w.form->rows.size(), 2u);
    EXPECT_EQ(fields(w.form->rows[0].lowest, w.form->rows[0].highest, w.form->rows[1].serialNumber, w.dialogs.shown.size()),
              "5|60|300300300300|0");
}
