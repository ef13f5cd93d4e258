// Participant names: where the list is looked for, the three file forms, the duplicate rule
// and its message, the replies to GETNAMES and LOADNAMES, and the export.
#include <gtest/gtest.h>

#include "core/Controller.h"
#include "core/MainForm.h"
#include "core/ParticipantNames.h"
#include "platform/files/FileSpreadsheet.h"
#include "ports/AppError.h"
#include "support/FakePresentation.h"
#include "support/TestWorld.h"
#include "support/TestPaths.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

// "keypad|name|weighting" per participant, for compact comparisons.
std::vector<std::string> table(const GlobalState& glo) {
    std::vector<std::string> v;
    for (const auto& p : glo.participants)
        v.push_back(std::to_string(p.keypad) + "|" + p.name + "|" + std::to_string(p.weighting));
    return v;
}

const char* kDuplicatesHead =
    "Please check you names.txt file\r\nThe following keypads had duplicate numbering and have NOT been imported";

// A spreadsheet that fails as a broken automation server would.
class FailingSpreadsheet : public Spreadsheet {
public:
    std::vector<std::vector<std::string>> readFirstSheet(const fs::path&) override {
        throw AppError(kWorkbookError, "The spreadsheet program stopped responding");
    }
    void writeWorkbook(const fs::path&, const std::vector<SheetRow>&) override {
        throw AppError(kWorkbookError, "The spreadsheet program stopped responding");
    }
};

class Names : public ::testing::Test {
protected:
    void SetUp() override {
        useFakePresentation(w, ppt);
        w.c().spreadsheet = &sheets;
        folder = w.dir / "show";
        fs::create_directories(folder);
        deck = &ppt.app.open(folder.string());
        w.glo().ppApp = &ppt.app;  // as start-up attaches it
    }
    std::string load() {
        std::string status;
        LoadParticipantNames(w.c(), status);
        return status;
    }
    void writeXlsx(const std::vector<SheetRow>& rows, bool inlineStrings = false) {
        writeXlsxWorkbook(folder / kParticipantListXlsx, rows, inlineStrings);
    }
    std::string errLog() { return readFile(w.c().logs.errLogPath()); }

    FakePresentationApp ppt;
    FileSpreadsheet sheets;
    TestWorld w;
    fs::path folder;
    FakePresentation* deck = nullptr;
};

SheetRow row(double keypad, const std::string& name, double weighting) {
    return {keypad, name, weighting};
}

}  // namespace

TEST_F(Names, NamesTxtKeepsTheFirstOfADuplicateAndSaysWhich) {
    writeFile(folder / "names.txt",
              "5,First Five,1\r\n"
              "\r\n"
              "6,\"Quoted Six\",2\r\n"
              "5,Second Five,3\r\n"
              "   \r\n"
              "7,Seven,4\r\n"
              "6,Another Six,1\r\n");
    EXPECT_EQ(load(), "Participant names read from names.txt");
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"5|First Five|1", "6|Quoted Six|2", "7|Seven|4"}));
    ASSERT_EQ(w.dialogs.shown.size(), 1u);
    EXPECT_EQ(w.dialogs.shown[0].title + ": " + w.dialogs.shown[0].text,
              std::string("Names Failed to Load: ") + kDuplicatesHead + "\r\n - 5\r\n - 6");
}

TEST_F(Names, NamesTxtKeepsGoodLinesAroundBadOnesAndReportsThemInTheLog) {
    w.start();
    writeFile(folder / "names.txt",
              "\xEF\xBB\xBF"
              "1,Ann\n"                        // no weighting: counts once
              "keypad,name,weighting\n"        // a title line is not a participant
              "0,Nobody,1\n"                   // 0 is no keypad
              "-4,Negative,1\n"
              "99999,Too Big,1\n"
              "2,\"Smith, John\",3\n"          // a comma inside the name
              "3,  Spaced  ,x\n"               // unreadable weighting reads as 0
              "4\n"
              "garbage without commas\n"
              "5,Last,7");                     // no line break at the end
    load();
    EXPECT_EQ(table(w.glo()),
              (std::vector<std::string>{"1|Ann|1", "2|Smith, John|3", "3|Spaced|0", "4||1", "5|Last|7"}));
    EXPECT_TRUE(w.dialogs.shown.empty());
    EXPECT_TRUE(w.logged(" - XX - Participant rows NOT imported, keypad not from 1 to 32767: keypad, 0, -4, "
                         "99999, garbage without commas"));
}

TEST_F(Names, ThePresentationTagTakesPrecedenceOverEveryFile) {
    writeFile(folder / "names.txt", "1,From File,1\r\n");
    writeXlsx({{std::string("KEYPAD"), std::string("NAME")}, row(1, "From Workbook", 1)});
    deck->tags().add(kParticipantNamesTag, "3^^\"Tag Three\"^^2|4^^Tag Four^^1||3^^Again^^1|");
    EXPECT_EQ(load(), "Participant names read from the presentation tag");
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"3|Tag Three|2", "4|Tag Four|1"}));
}

TEST_F(Names, TheWorkbookComesBeforeTheOlderWorkbookWhichComesBeforeTheTextFile) {
    writeFile(folder / "names.txt", "1,From Text,1\r\n");
    load();
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"1|From Text|1"}));
    fs::copy_file(sourceDir() / "tests" / "data" / "names" / kParticipantListXls, folder / kParticipantListXls);
    EXPECT_EQ(load(), "Participant names read from tallix Participant list.xls");
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"3|Ann Example|2", "7|Bob|1", "12|Quoted Carol|1",
                                                        "20|Zoë Ünïcode Ω|5"}));
    writeXlsx({{std::string("Keypad"), std::string("Name")}, row(9, "From Xlsx", 1)});
    EXPECT_EQ(load(), "Participant names read from tallix Participant list.xlsx");
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"9|From Xlsx|1"}));
}

TEST_F(Names, WorkbookTitlesAreFoundInAnyOrderAndEndAtTheFirstEmptyOne) {
    writeXlsx({{std::string("weighting"), std::string("Keypad"), std::string(" Name ")},
               {2.0, 12.0, std::string("\"Twelve\"")},
               {1.0, 3.0, std::string("Three")},
               {5.0, 12.0, std::string("Twelve Again")},
               {1.0, std::string(), std::string("No Keypad Ends The List")},
               {1.0, 30.0, std::string("Never Read")}});
    load();
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"12|Twelve|2", "3|Three|1"}));
    // The columns end at the first empty title; inline strings, as streaming writers store them.
    writeXlsx({{std::string("Name"), std::string("Keypad"), std::string(), std::string("Weighting")},
               {std::string("Ann"), 1.0, std::string(), 9.0}},
              true);
    load();
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"1|Ann|1"}));
}

TEST_F(Names, BrokenOrForeignWorkbooksAreTrappedAndLeaveAnEmptyList) {
    w.glo().participants.push_back({1, "stale", 1});
    // A load that leaves the list empty and the error log naming why.
    const auto refused = [&](const std::string& why) {
        load();
        EXPECT_TRUE(w.glo().participants.empty()) << why;
        EXPECT_NE(errLog().find(why), std::string::npos) << why;
    };
    writeFile(folder / kParticipantListXlsx, "this is not a workbook");
    refused("Cannot read workbook 'tallix Participant list.xlsx'");
    EXPECT_NE(errLog().find("Procedure: LoadParticipantNames"), std::string::npos);

    // A real workbook that is not a participant list.
    writeXlsx({{std::string("Item"), std::string("Cost")}, {std::string("Coffee"), 3.5}});
    refused("No \"KEYPAD\" column");

    fs::remove(folder / kParticipantListXlsx);
    writeFile(folder / kParticipantListXls, std::string(3000, '\x07'));
    refused("Cannot read workbook 'tallix Participant list.xls'");

    // Without the spreadsheet port, or when it fails, the same.
    FailingSpreadsheet failing;
    w.c().spreadsheet = &failing;
    refused("The spreadsheet program stopped responding");
    w.c().spreadsheet = nullptr;
    load();
    EXPECT_EQ(fields(w.glo().participants.empty(), w.dialogs.shown.empty()), "1|1");
}

TEST_F(Names, NothingIsLoadedWithoutAPresentationOrWhenSwitchedOff) {
    writeFile(folder / "names.txt", "1,Ann,1\r\n");
    w.writeSettings("DEBUG", "DISABLE PARTICIPANT LIST", "1");
    EXPECT_EQ(load(), "Participant list disabled");
    EXPECT_TRUE(w.glo().participants.empty());
    w.writeSettings("DEBUG", "DISABLE PARTICIPANT LIST", "0");

    ppt.app.active = -1;
    EXPECT_EQ(load(), "No active presentation");
    ppt.app.active = 0;
    w.glo().ppApp = nullptr;
    EXPECT_EQ(load(), "No active presentation");
    w.glo().ppApp = &ppt.app;
    fs::remove(folder / "names.txt");
    w.glo().participants.push_back({1, "stale", 1});
    EXPECT_EQ(load(), "No participant list found");
    EXPECT_TRUE(w.glo().participants.empty());
    // An unsaved presentation has no folder.
    ppt.app.open("");
    EXPECT_EQ(load(), "No participant list found");
    EXPECT_TRUE(w.dialogs.shown.empty());
}

TEST_F(Names, StartUpLoadsTheListGetNamesRepliesWithTheFreshListLoadNamesRereadsItAndRefusedLoadsKeepIt) {
    writeFile(folder / "names.txt", "1,Ann,2\r\n2,Bob,1\r\n");
    w.start();
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"1|Ann|2", "2|Bob|1"}));
    std::vector<std::string> sent;
    w.main().FromCtrlForm.connect([&](const std::string& s) { sent.push_back(s); });
    auto command = [&](const char* line) {
        w.main().AddDataToCommandQueue(line);
        w.scheduler.advance(200);
    };
    writeFile(folder / "names.txt", "3,Ann Example,2\r\n7,Bob,1\r\n");
    command("GETNAMES");
    EXPECT_EQ(sent, std::vector<std::string>{"StartListOfNames\r\n3, Ann Example, 2\r\n7, Bob, 1\r\nEndListOfNames"});
    writeFile(folder / "names.txt", "8,Carol,1\r\n");
    command("loadnames");
    EXPECT_EQ(sent.size(), 1u);  // LOADNAMES sends nothing
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"8|Carol|1"}));

    writeFile(folder / "names.txt", "9,Dan,1\r\n");
    w.writeSettings("DEBUG", "DISABLE PARTICIPANT LIST", "1");
    command("LOADNAMES");
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"8|Carol|1"}));
    w.writeSettings("DEBUG", "DISABLE PARTICIPANT LIST", "0");
    ppt.app.active = -1;  // no active presentation
    command("GETNAMES");
    EXPECT_EQ(sent.back(), "StartListOfNames\r\n8, Carol, 1\r\nEndListOfNames");
}

TEST_F(Names, ExportWritesTheListBesideThePresentation) {
    deck->tags().add(kParticipantNamesTag, "3^^Ann Example^^2|12^^Zoë^^-1");
    load();
    ASSERT_TRUE(ExportParticipantNames(w.c()));
    const auto rows = sheets.readFirstSheet(folder / kParticipantListXlsx);
    EXPECT_EQ(rows, (std::vector<std::vector<std::string>>{
                        {"Keypad", "Name", "Weighting"}, {"3", "Ann Example", "2"}, {"12", "Zoë", "-1"}}));
    // What was exported loads back as it was.
    deck->tags().remove(kParticipantNamesTag);
    load();
    EXPECT_EQ(table(w.glo()), (std::vector<std::string>{"3|Ann Example|2", "12|Zoë|-1"}));

    // Nowhere to write, or a failing writer: false, and the failure is reported.
    FailingSpreadsheet failing;
    w.c().spreadsheet = &failing;
    EXPECT_FALSE(ExportParticipantNames(w.c()));
    EXPECT_NE(errLog().find("Procedure: ExportParticipantNames"), std::string::npos);
    ppt.app.active = -1;
    EXPECT_FALSE(ExportParticipantNames(w.c()));
}
