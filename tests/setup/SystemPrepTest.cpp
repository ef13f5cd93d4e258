// The system-preparation window over simulated bases of the second Corehub generation.
#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include "SetupWorld.h"
#include "core/MainForm.h"
#include "platform/files/FileSpreadsheet.h"
#include "setup/SystemPrep.h"
#include "support/Fields.h"

using namespace tlx;
using namespace tlx::test;

namespace {

// One G2 base with two registered keypads and a presenter; two spare keypads lie in the room,
// the second of them with old firmware.
const std::string kWorld = R"([bases]
count=1
[base1]
type=KELVARIN COREHUB G2
id=100100100700
keypads=1-2
hidstart=300700001
presenter=300799901
spares=300700010-300700011
firmware.300700011=2.00.01.1901.1200
)";

using Prep = frmKelvarinCorehubSystemPrep;

struct PrepWorld : SetupWorld {
    explicit PrepWorld(const std::string& world = kWorld) : SetupWorld(world) {}
    Prep& open() { return showSystemPrep(w.c()); }
    // Through the base's preparation to the device lists.
    Prep& openPrepared() {
        Prep& p = open();
        settle();
        p.cmdSetupBaseUnplug_Click();
        settle();
        return p;
    }
    void enterKeypad(Prep& p, const std::string& hid, const std::string& sid = "") {
        p.txtKeypadHID = hid;
        if (!sid.empty()) p.txtStartingSID = sid;
        p.txtKeypadHID_Enter();
    }
    bool registered(const std::string& hid) { return station().keypadByHid(hid) != nullptr; }
};

std::vector<std::string> column(const std::vector<PrepDeviceRow>& rows, std::string PrepDeviceRow::*field) {
    std::vector<std::string> out;
    for (const auto& r : rows) out.push_back(r.*field);
    return out;
}

// A list row as "hid|sid|icon|status".
std::string row(const PrepDeviceRow& r) { return fields(r.hid, r.sid, r.icon, r.status); }

std::filesystem::path invoice(const std::filesystem::path& dir, const char* sheet = "Serial Numbers") {
    const auto file = dir / "invoice.xlsx";
    lxw_workbook* wb = workbook_new(file.string().c_str());
    worksheet_write_string(workbook_add_worksheet(wb, "Invoice"), 0, 0, "Invoice 77", nullptr);
    lxw_worksheet* s = workbook_add_worksheet(wb, sheet);
    worksheet_write_string(s, 0, 0, "Serial Number", nullptr);
    worksheet_write_string(s, 7, 0, "stale", nullptr);
    EXPECT_EQ(workbook_close(wb), LXW_NO_ERROR);
    return file;
}

}  // namespace

TEST(SystemPrepRun, PreparesTheBaseProgramsFourKeypadsAndExportsTheirSerialNumbers) {
    PrepWorld s;
    s.w.main().AddDataToCommandQueue("SYSTEMPREP");
    s.settle();
    auto* opened = s.w.c().forms.get<Prep>(Prep::kName);
    ASSERT_NE(opened, nullptr);
    Prep& p = *opened;
    EXPECT_TRUE(p.Visible());

    // A: the base is reset, then waits for the operator to replug it.
    ASSERT_EQ(p.lvwBaseStations.size(), 1u);
    EXPECT_EQ(fields(p.lvwBaseStations[0].icon, p.lblStatus, s.station().callCount("ResetBase"), p.lblSetupBaseResetDone,
                     p.prepStep == Prep::kStepReplug),
              "OK|PROGRAMMING BASE|1|1|1");
    s.settle(1000);
    EXPECT_EQ(s.station().callCount("RebootRadio"), 0) << "nothing happens until the operator says so";
    p.cmdSetupBaseUnplug_Click();
    EXPECT_EQ(s.station().callCount("RebootRadio"), 1);
    // The base runs the latest firmware: no question.
    EXPECT_TRUE(s.w.dialogs.shown.empty()) << s.lastText();
    s.settle();

    // The lists: the registered keypads and the presenter.
    ASSERT_EQ(fields(p.prepStep == Prep::kStepDeviceLists, p.lvwKeypadRegister.size()), "1|2");
    EXPECT_EQ(fields(row(p.lvwKeypadRegister[0]), row(p.lvwKeypadRegister[1])),
              "300 700 001|1|UNKNOWN||300 700 002|2|UNKNOWN|");
    ASSERT_EQ(p.lvwPresenterScannerRegister.size(), 1u);
    EXPECT_EQ(fields(p.lvwPresenterScannerRegister[0].hid, p.txtStartingSID), "300 799 901|3");

    // B: the two spares entered by hand, one with blanks between its digit groups.
    s.enterKeypad(p, "300 700 010");
    s.enterKeypad(p, "300700011");
    EXPECT_TRUE(s.w.dialogs.shown.empty()) << s.lastText();
    EXPECT_EQ(column(p.lvwKeypadRegister, &PrepDeviceRow::sid), (std::vector<std::string>{"1", "2", "3", "4"}));
    ASSERT_TRUE(s.registered("300700010") && s.registered("300700011"));
    EXPECT_EQ(fields(s.station().keypadByHid("300700011")->sid, p.cmdProgramKeypadsEnabled), "4|1");

    // C: programming.
    std::vector<std::string> statuses;
    p.changed.connect([&] {
        if (statuses.empty() || statuses.back() != p.lblStatus) statuses.push_back(p.lblStatus);
    });
    p.cmdProgramKeypads_Click();
    ASSERT_GE(statuses.size(), 3u);
    EXPECT_EQ(fields(statuses[0], statuses[1], p.lblStatus), "Waiting for keypads to join base....|Updating base for "
                                                             "programming....|Waiting for keypads to respond...");
    EXPECT_EQ(column(p.lvwKeypadRegister, &PrepDeviceRow::status), std::vector<std::string>(4, "Waiting..."));
    EXPECT_EQ(fields(p.lvwKeypadRegister[0].icon, s.station().setup.session.RegistrationOpen, p.lblCountdown), "BUSY|1|30s");

    s.w.scheduler.advanceSeconds(1.05);
    EXPECT_EQ(join(column(p.lvwKeypadRegister, &PrepDeviceRow::status), ","),
              "Programmed,Programmed,Programmed,Old Firmware Detected");
    EXPECT_EQ(fields(p.lblCountdown, p.lvwKeypadRegister[3].icon, p.lblStatus, p.lvwPresenterScannerRegister[0].icon),
              "29s|ERROR|3 of 4 keypads responded OK, 1 errors|OK");
    EXPECT_TRUE(s.registered("300700011")) << "a keypad with old firmware stays registered";

    s.w.scheduler.advanceSeconds(30);
    EXPECT_EQ(fields(p.prepStep == Prep::kStepDone, p.lblCountdown, s.station().setup.session.RegistrationOpen, p.lblStatus),
              "1||0|3 of 4 keypads responded OK, 1 errors");

    // E: the serial numbers into the invoice workbook.
    FileSpreadsheet files;
    s.w.c().spreadsheet = &files;
    const auto book = invoice(s.w.dir.path());
    s.w.dialogs.inputs = {book.string()};
    s.w.dialogs.answers = {true};
    p.cmdExportToExcel_Click();
    EXPECT_EQ(s.box(), "Confirm Update: "
                       "Update serial number information in the following Excel invoice file?\r\ninvoice.xlsx");
    const auto rows = readXlsxSheet(book, "Serial Numbers");
    std::vector<std::string> serials;
    for (std::size_t r = 1; r < rows.size(); ++r) serials.push_back(rows[r].empty() ? "" : rows[r][0]);
    EXPECT_EQ(serials, (std::vector<std::string>{"300 700 001", "300 700 002", "300 700 010", "300 700 011",
                                                 "300 799 901"}))
        << "the stale number in row 8 is emptied";

    // F: one keypad is not OK, so leaving is asked about.
    s.w.dialogs.answers = {false};
    EXPECT_FALSE(p.RequestClose());
    EXPECT_EQ(s.box(), "Confirm: Not all devices are confirmed as programmed, are you sure you wish to continue?");
    s.w.dialogs.answers = {true};
    EXPECT_TRUE(p.RequestClose());
    s.settle();
    EXPECT_FALSE(s.w.c().forms.isLoaded(Prep::kName));
}

TEST(SystemPrepFirmware, AnOldBaseIsAskedAboutEqualToTheLatestIsOkAndOlderIsFlagged) {
    // Keypad 2 runs exactly the latest keypad firmware, keypad 1 one build older (the date
    // code's year is compared first); the presenter an older build.
    PrepWorld s(kWorld + "firmware=2.00.01.1801.1544\nfirmware.300700001=2.00.01.2003.2038\n"
                         "firmware.300700002=2.00.01.2103.2038\nfirmware.300799901=2.00.01.2103.2102\n");
    Prep& p = s.open();
    s.settle();
    s.w.dialogs.answers = {false};
    p.cmdSetupBaseUnplug_Click();
    EXPECT_EQ(s.box(),
              "System Prep: Base station 100 100 100 700\r\nBase station firmware must be updated.\r\n100 100 100 700 firmware: "
              "2.00.01.1801.1544\r\nLatest base station firmware: 2.00.01.1801.1545\r\n\r\nContinue with the base "
              "station as is?");
    s.settle();
    // No: the set-up stops with that base; its lists are not shown.
    EXPECT_EQ(fields(p.prepStep == Prep::kStepReplug, p.lvwKeypadRegister.size()), "1|0");
    s.w.dialogs.answers = {false};
    EXPECT_FALSE(p.RequestClose());
    EXPECT_EQ(s.box(), "Confirm Exit: The setup process is incomplete, are you sure you wish to quit now?");
    EXPECT_TRUE(p.RequestClose());
    s.settle();

    // Yes: it goes on as it is.
    Prep& again = s.open();
    s.settle();
    s.w.dialogs.answers = {true};
    again.cmdSetupBaseUnplug_Click();
    s.settle();
    ASSERT_EQ(fields(again.prepStep == Prep::kStepDeviceLists, again.lvwKeypadRegister.size()), "1|2");
    again.cmdProgramKeypads_Click();
    s.w.scheduler.advanceSeconds(1);
    EXPECT_EQ(column(again.lvwKeypadRegister, &PrepDeviceRow::status),
              (std::vector<std::string>{"Old Firmware Detected", "Programmed"}));
    EXPECT_EQ(fields(again.lvwKeypadRegister[1].icon, again.lblStatus), "OK|1 of 2 keypads responded OK, 1 errors");
    EXPECT_EQ(row(again.lvwPresenterScannerRegister[0]), "300 799 901|Presenter|ERROR|Old Firmware Detected");
}

TEST(SystemPrepSteps, AFailingBaseIsReportedAndAnUnknownStepRefused) {
    PrepWorld s;
    s.w.baseLibrary.fail("100100100700", "ResetBase", 6);
    Prep& p = s.open();
    s.settle();
    EXPECT_TRUE(s.w.dialogs.any("Code: 6\r\nBase Station: 100 100 100 700\r\nDescription: TX Comms failed"));
    // The controller goes on: the lists follow.
    EXPECT_EQ(fields(p.prepStep == Prep::kStepDeviceLists, p.lvwKeypadRegister.size()), "1|2");

    p.prepStep = 3;
    p.tmrPrep.setEnabled(true);
    s.settle();
    EXPECT_EQ(fields(s.box(), p.tmrPrep.enabled()), "Error: Unknown timer event activated|0");
}

TEST(SystemPrepEntry, BadTextIsRefusedAndTheListsStayAsTheyWere) {
    PrepWorld s;
    Prep& p = s.openPrepared();
    const auto keypads = p.lvwKeypadRegister;
    for (const char* bad : {"", "   ", "300-700-010", "30070O010", "1234567890123456"}) {
        s.enterKeypad(p, bad);
        EXPECT_EQ(s.box(), "Error: Invalid HID entered") << bad;
    }
    for (const char* bad : {"x", "0", "4096", "1.5"}) {
        s.enterKeypad(p, "300700010", bad);
        EXPECT_EQ(s.lastText(), "Invalid SID entered") << bad;
    }
    p.txtPresenterScannerHID = "presenter";
    p.txtPresenterScannerHID_Enter();
    EXPECT_EQ(s.lastText(), "Invalid HID entered");
    EXPECT_EQ(column(p.lvwKeypadRegister, &PrepDeviceRow::key), column(keypads, &PrepDeviceRow::key));
    EXPECT_EQ(fields(p.lvwPresenterScannerRegister.size(), s.registered("300700010"), s.station().callCount("AddKeypadToRegistry")),
              "1|0|0");

    // A base that refuses the entry: its error, and no row.
    s.station().setup.session.RegistryMode = 0;
    s.enterKeypad(p, "300700010", "3");
    EXPECT_TRUE(s.w.dialogs.any("Code: 21\r\nBase Station: 100 100 100 700\r\nDescription: Registry mode is Fixed "
                                "(read only)"));
    EXPECT_EQ(p.lvwKeypadRegister.size(), 2u);
}

TEST(SystemPrepEntry, SwappingAndDeletingKeypads) {
    PrepWorld s;
    Prep& p = s.openPrepared();
    p.cmdScanKeypadSwap_Click();
    EXPECT_EQ(s.box(), "Error: Nothing selected to replace");

    p.lvwKeypadRegister[1].selected = true;
    s.w.dialogs.inputs = {std::string("abc")};
    p.cmdScanKeypadSwap_Click();
    EXPECT_EQ(fields(s.lastText(), s.registered("300700002")), "Invalid HID entered|1");

    s.w.dialogs.inputs = {std::string(" 300 700 010 ")};
    p.cmdScanKeypadSwap_Click();
    EXPECT_EQ(s.box(), "Replace Keypad: Scan/enter new HID");
    EXPECT_EQ(fields(row(p.lvwKeypadRegister[1]), s.registered("300700002"), p.cmdProgramKeypadsEnabled),
              "300 700 010|2|UNKNOWN||0|1");
    ASSERT_TRUE(s.registered("300700010"));
    EXPECT_EQ(s.station().keypadByHid("300700010")->sid, 2) << "the new keypad takes the old one's number";

    // Deleting asks first; "No" keeps everything.
    p.lvwKeypadRegister[0].selected = true;
    s.w.dialogs.answers = {false};
    p.cmdScanKeypadDelete_Click();
    EXPECT_EQ(fields(s.box(), p.lvwKeypadRegister.size()), "Confirm Delete: Remove selected Keypads(s) from this system?|2");
    s.w.dialogs.answers = {true};
    p.cmdScanKeypadDelete_Click();
    EXPECT_EQ(fields(p.lvwKeypadRegister.size(), s.registered("300700001"), s.registered("300700010")), "0|0|0");

    p.lvwPresenterScannerRegister[0].selected = true;
    p.cmdPresenterScannerDelete_Click();
    EXPECT_EQ(fields(s.lastText(), p.lvwPresenterScannerRegister.size(), p.cmdProgramKeypadsEnabled),
              "Remove selected Presenter/Scanner(s) from this system?|0|0");
}

TEST(SystemPrepExport, EveryFailureHasItsMessageAndWritesNothing) {
    PrepWorld s;
    Prep& p = s.openPrepared();
    // No spreadsheet program at all.
    p.cmdExportToExcel_Click();
    EXPECT_EQ(s.box(), "Unable to Export to Excel: Excel object not found\r\nError connecting to Excel application");

    FileSpreadsheet files;
    s.w.c().spreadsheet = &files;
    s.w.dialogs.inputs = {(s.w.dir / "nowhere.xlsx").string()};
    p.cmdExportToExcel_Click();
    EXPECT_EQ(s.lastText(), "There are no workbooks open in Excel");

    const auto book = invoice(s.w.dir.path(), "Serials");
    s.w.dialogs.inputs = {book.string()};
    p.cmdExportToExcel_Click();
    EXPECT_EQ(s.box(), "Unable to Export to Excel: "
                       "There are no Serial Number worksheets available in any open Excel files");

    const auto damaged = s.w.dir / "damaged.xlsx";
    writeFile(damaged, "PK not really");
    s.w.dialogs.inputs = {damaged.string()};
    p.cmdExportToExcel_Click();
    EXPECT_EQ(s.lastTitle(), "Export to Excel Error");
    EXPECT_TRUE(startsWith(s.lastText(), "Error 1004\r\nCannot update workbook 'damaged.xlsx'")) << s.lastText();

    // "No" to the update writes nothing; the named workbook is offered again next time.
    std::filesystem::remove(book);
    const auto good = invoice(s.w.dir.path());
    const auto before = readXlsxSheet(good, "Serial Numbers");
    s.w.dialogs.inputs = {"\"" + good.string() + "\""};
    s.w.dialogs.answers = {false};
    p.cmdExportToExcel_Click();
    EXPECT_EQ(fields(s.lastTitle(), p.exportWorkbook), "Confirm Update|" + good.string());
    EXPECT_EQ(readXlsxSheet(good, "Serial Numbers"), before);
}
