#include <gtest/gtest.h>

#include "core/ErrorObject.h"
#include "core/MainForm.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {
struct ErrorWorld : TestWorld {
    ErrorWorld() {
        scheduler.setWallClock(DateTime{2026, 11, 22, 14, 3, 9, 0});
        glo().installFolder = "/opt/tallix";
    }
    std::string errLog() { return readFile(appData() / "tallix" / "Err.log"); }
};
}  // namespace

TEST(ErrorObject, ReportLinesInOrderAndASuppressedOneGoesToTheLogOnly) {
    ErrorWorld w;
    clsError e(w.c().errors);
    e.StoreErrInfo(120, AppError(91, "Object variable not set"));
    e.StoreAppInfo("Controller", "GlobalInitSub", "", true);
    EXPECT_EQ(e.Report(),
              "Date: 22-Nov-2026\r\nTime: 14:03:09\r\nNumber: 91\r\nDescription: Object variable not set\r\n"
              "Module: Controller\r\nProcedure: GlobalInitSub\r\nLine: 120\r\nApp: tallix controller\r\n"
              "Version: 1.0.0\r\nLocation: /opt/tallix");
    // A suppressed error goes to the error log only.
    e.StoreErrInfo(0, AppError(5, "Invalid procedure call"));
    e.StoreAppInfo("frmInit", "cmdOK_Click", "row=3", false);
    e.Show();
    EXPECT_TRUE(w.dialogs.shown.empty());
    const std::string rule(65, '-');
    const std::string log = w.errLog();
    EXPECT_TRUE(startsWith(log, rule + "\r\nDate: 22-Nov-2026\r\n"));
    EXPECT_TRUE(contains(log, "Line: 0\r\nMessage Supressed: True\r\nApp: tallix controller"));
    EXPECT_TRUE(endsWith(log, "\r\n\r\nExtra Info: \r\nrow=3\r\n" + rule + "\r\n\r\n"));
    e.Show();  // a second report is a second block after an empty line
    EXPECT_EQ(w.errLog().size(), 2 * log.size());
}

// Which errors reach the user, and with what text: the rest go to the error log only.
TEST(ErrorObject, WhatIsShownAndWhatIsOnlyLogged) {
    struct Case {
        int number;
        std::string description;
        std::vector<std::string> inTheBox;  // empty: no box
    };
    const std::vector<Case> cases = {
        {11, "Division by zero", {"An error has occurred: Division by zero", "Details: "}},
        {err::kUnexpected, "~ catastrophic", {}},  // the marker keeps it out of sight
        {err::kUnexpected, "catastrophic", {"catastrophic"}},
        {err::kAutomationServerFault, "The server threw an exception.",
         {"PowerPoint has encountered an unexpected error.", "Save your current work and restart PowerPoint."}},
    };
    for (const auto& c : cases) {
        ErrorWorld w;
        clsError e(w.c().errors);
        e.StoreErrInfo(0, AppError(c.number, c.description));
        e.StoreAppInfo("tallix_controller", "SendVotes", "", true);
        e.Show();
        EXPECT_TRUE(contains(w.errLog(), "Description: " + c.description)) << c.description;
        ASSERT_EQ(w.dialogs.shown.size(), c.inTheBox.empty() ? 0u : 1u) << c.description;
        if (c.inTheBox.empty()) continue;
        EXPECT_EQ(fields(w.dialogs.shown[0].title, contains(w.dialogs.shown[0].text, "Message Supressed")), "Microsoft PowerPoint|0");
        for (const auto& part : c.inTheBox) EXPECT_TRUE(contains(w.dialogs.shown[0].text, part)) << part;
    }
    // With every error to be shown, a suppressed one is shown too.
    ErrorWorld w;
    w.glo().showAllErrors = true;
    EXPECT_FALSE(trap(w.c().errors, "Controller", "Main", [] { throw std::runtime_error("boom"); }));
    ASSERT_EQ(w.dialogs.shown.size(), 1u);
    EXPECT_FALSE(contains(w.errLog(), "Message Supressed"));
}

TEST(ErrorObject, AFailingHandlerIsReportedAndTheControllerCarriesOn) {
    ErrorWorld w;
    w.start();
    int heard = 0;
    w.main().FromCtrlForm.connect([&](const std::string&) {
        if (++heard == 1) throw AppError(13, "Type mismatch");
    });
    w.main().AddDataToTxQueue("one");
    w.scheduler.advance(50);
    EXPECT_TRUE(contains(w.errLog(), "Number: 13\r\nDescription: Type mismatch\r\nModule: tallix_controller\r\n"
                                     "Procedure: tmr_SendData_Timer"));
    w.main().AddDataToTxQueue("two");
    w.scheduler.advance(50);
    EXPECT_EQ(heard, 2);
    // Even a report that cannot be written stays inside the trap.
    writeFile(w.dir / "not-a-folder", "x");
    w.desktop.setEnvironment("APPDATA", (w.dir / "not-a-folder").string());
    EXPECT_FALSE(trap(w.c().errors, "Controller", "X", [] { throw 42; }));
}
