#include "core/ErrorObject.h"

#include <new>

#include "core/GlobalState.h"
#include "core/Logs.h"
#include "core/Text.h"
#include "ports/AppError.h"
#include "ports/Desktop.h"
#include "ports/Dialogs.h"
#include "ports/Scheduler.h"
#include "tlx/Version.h"

namespace tlx {

void clsError::StoreErrInfo(int lineNumber, const std::exception& error) {
    int number = err::kInvalidProcedureCall;
    if (const auto* app = dynamic_cast<const AppError*>(&error))
        number = app->number();
    else if (dynamic_cast<const std::bad_alloc*>(&error))
        number = err::kOutOfMemory;
    else if (dynamic_cast<const std::out_of_range*>(&error))
        number = err::kSubscriptOutOfRange;
    StoreErrInfo(lineNumber, number, error.what());
}

void clsError::StoreErrInfo(int lineNumber, int number, std::string description) {
    m_ErrLineNumber = lineNumber;
    m_ErrNumber = number;
    m_ErrDescription = std::move(description);
    m_ErrHelpFile.clear();
    m_HelpContext = 0;
    m_when = env_.scheduler.now();
}

void clsError::StoreAppInfo(std::string objectName, std::string procedureName, std::string extraInfo,
                            bool showUser) {
    m_ObjectName = std::move(objectName);
    m_ProcedureName = std::move(procedureName);
    m_ExtraInfo = std::move(extraInfo);
    m_ShowUser = showUser;
}

bool clsError::effectiveShowUser() const { return m_ShowUser || env_.glo.showAllErrors; }

std::string clsError::Report() const {
    std::string r;
    r += "Date: " + formatDate(m_when, "dd-mmm-yyyy") + "\r\n";
    r += "Time: " + formatDate(m_when, "hh:nn:ss") + "\r\n";
    r += "Number: " + numText(m_ErrNumber) + "\r\n";
    r += "Description: " + m_ErrDescription + "\r\n";
    r += "Module: " + m_ObjectName + "\r\n";
    r += "Procedure: " + m_ProcedureName + "\r\n";
    r += "Line: " + numText(m_ErrLineNumber) + "\r\n";
    if (!effectiveShowUser()) r += "Message Supressed: True\r\n";
    r += std::string("App: ") + version::kTitle + "\r\n";
    r += std::string("Version: ") + version::kText + "\r\n";
    r += "Location: " + env_.glo.installFolder.string();
    if (!m_ExtraInfo.empty()) r += "\r\n\r\nExtra Info: \r\n" + m_ExtraInfo;
    return r;
}

void clsError::Show() {
    const std::string report = Report();
    if (effectiveShowUser()) {
        const bool silent = m_ErrNumber == err::kUnexpected && contains(m_ErrDescription, "~");
        if (!silent) {
            std::string text;
            if (m_ErrNumber == err::kAutomationServerFault)
                text = "PowerPoint has encountered an unexpected error.\r\n\r\n"
                       "Save your current work and restart PowerPoint.\r\n\r\n";
            text += "An error has occurred: " + m_ErrDescription + "\r\n\r\nDetails: \r\n" + report;
            env_.dialogs.message("Microsoft PowerPoint", text, MsgIcon::Critical);
        }
    }
    env_.logs.appendErrLog(report);
}

void reportError(ErrorEnv& env, std::string_view object, std::string_view procedure,
                 const std::exception* error, bool showUser, std::string_view extraInfo) {
    try {
        clsError e(env);
        if (error)
            e.StoreErrInfo(0, *error);
        else
            e.StoreErrInfo(0, err::kInvalidProcedureCall, "Unknown error");
        e.StoreAppInfo(std::string(object), std::string(procedure), std::string(extraInfo), showUser);
        e.Show();
    } catch (...) {
        // Reporting an error must never raise one.
    }
}

}  // namespace tlx
