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

TEST(ErrorObject, ReportLinesInOrder) {
    ErrorWorld w;
    clsError e(w.c().errors);
    e.StoreErrInfo(120, AppError(91, "Object variable not set"));
    e.StoreAppInfo("Controller", "GlobalInitSub", "", true);
    EXPECT_EQ(e.Report(),
              "Date: 22-Nov-2026\r\nTime: 14:03:09\r\nNumber: 91\r\nDescription: Object variable not set\r\n"
              "Module: Controller\r\nProcedure: GlobalInitSub\r\nLine: 120\r\nApp: tallix controller\r\n"
              "Version: 1.0.0\r\nLocation: /opt/tallix");
}

TEST(ErrorObject, SuppressedErrorGoesToErrLogOnly) {
    ErrorWorld w;
    clsError e(w.c().errors);
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

TEST(ErrorObject, ShownErrorUsesThePresentationProgramsTitle) {
    ErrorWorld w;
    clsError e(w.c().errors);
    e.StoreErrInfo(0, AppError(11, "Division by zero"));
    e.StoreAppInfo("tallix_controller", "SendVotes", "", true);
    e.Show();
    ASSERT_EQ(w.dialogs.shown.size(), 1u);
    EXPECT_EQ(w.dialogs.shown[0].title, "Microsoft PowerPoint");
    EXPECT_TRUE(startsWith(w.dialogs.shown[0].text, "An error has occurred: "));
    EXPECT_TRUE(contains(w.dialogs.shown[0].text, "Details: "));
    EXPECT_FALSE(contains(w.dialogs.shown[0].text, "Message Supressed"));
}

TEST(ErrorObject, UnexpectedErrorWithTheMarkerIsNotShown) {
    ErrorWorld w;
    clsError e(w.c().errors);
    e.StoreErrInfo(0, AppError(err::kUnexpected, "~ catastrophic"));
    e.StoreAppInfo("Controller", "X", "", true);
    e.Show();
    EXPECT_TRUE(w.dialogs.shown.empty());
    EXPECT_TRUE(contains(w.errLog(), "Description: ~ catastrophic"));
    clsError plain(w.c().errors);
    plain.StoreErrInfo(0, AppError(err::kUnexpected, "catastrophic"));
    plain.StoreAppInfo("Controller", "X", "", true);
    plain.Show();
    EXPECT_EQ(w.dialogs.shown.size(), 1u);
}

TEST(ErrorObject, PresentationProgramFailureAdvisesARestart) {
    ErrorWorld w;
    clsError e(w.c().errors);
    e.StoreErrInfo(0, AppError(err::kAutomationServerFault, "The server threw an exception."));
    e.StoreAppInfo("Controller", "InitPPTObject", "", true);
    e.Show();
    ASSERT_EQ(w.dialogs.shown.size(), 1u);
    EXPECT_TRUE(contains(w.dialogs.shown[0].text, "PowerPoint has encountered an unexpected error."));
    EXPECT_TRUE(contains(w.dialogs.shown[0].text, "Save your current work and restart PowerPoint."));
}

TEST(ErrorObject, ShowAllErrorsShowsSuppressedOnes) {
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
