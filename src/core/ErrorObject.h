#pragma once
// `clsError`: one trapped run-time error, its report and the "Err.log" block. Every
// procedure traps its own errors with `trap`, reports them here, and carries on; errors
// never travel up to a caller and never end the program.
#include <exception>
#include <string>
#include <string_view>

#include "ports/Clock.h"

namespace tlx {

struct GlobalState;
class Scheduler;
class Desktop;
class Dialogs;
class Logs;

// What an error report needs to know about the program around it.
struct ErrorEnv {
    GlobalState& glo;
    Scheduler& scheduler;
    Desktop& desktop;
    Dialogs& dialogs;
    Logs& logs;
};

class clsError {
public:
    explicit clsError(ErrorEnv& env) : env_(env) {}

    int ErrLineNumber() const { return m_ErrLineNumber; }
    void ErrLineNumber(int v) { m_ErrLineNumber = v; }
    int ErrNumber() const { return m_ErrNumber; }
    void ErrNumber(int v) { m_ErrNumber = v; }
    const std::string& ErrDescription() const { return m_ErrDescription; }
    void ErrDescription(std::string v) { m_ErrDescription = std::move(v); }
    const std::string& ErrHelpFile() const { return m_ErrHelpFile; }
    void ErrHelpFile(std::string v) { m_ErrHelpFile = std::move(v); }
    int HelpContext() const { return m_HelpContext; }
    void HelpContext(int v) { m_HelpContext = v; }
    const std::string& ObjectName() const { return m_ObjectName; }
    void ObjectName(std::string v) { m_ObjectName = std::move(v); }
    const std::string& ProcedureName() const { return m_ProcedureName; }
    void ProcedureName(std::string v) { m_ProcedureName = std::move(v); }
    const std::string& ExtraInfo() const { return m_ExtraInfo; }
    void ExtraInfo(std::string v) { m_ExtraInfo = std::move(v); }
    bool ShowUser() const { return m_ShowUser; }
    void ShowUser(bool v) { m_ShowUser = v; }

    // Copies number, description, help file and context of the trapped error, and the time.
    void StoreErrInfo(int lineNumber, const std::exception& error);
    void StoreErrInfo(int lineNumber, int number, std::string description);
    void StoreAppInfo(std::string objectName, std::string procedureName, std::string extraInfo,
                      bool showUser);
    // The report, one item per line.
    std::string Report() const;
    // Tells the user when asked, and appends the report to "Err.log".
    void Show();

private:
    bool effectiveShowUser() const;

    ErrorEnv& env_;
    int m_ErrLineNumber = 0;
    int m_ErrNumber = 0;
    std::string m_ErrDescription;
    std::string m_ErrHelpFile;
    int m_HelpContext = 0;
    std::string m_ObjectName;
    std::string m_ProcedureName;
    std::string m_ExtraInfo;
    bool m_ShowUser = false;
    DateTime m_when;
};

// Reports a trapped error through a fresh error object. Never throws.
void reportError(ErrorEnv& env, std::string_view object, std::string_view procedure,
                 const std::exception* error, bool showUser = false, std::string_view extraInfo = {});

// Runs body with an error trap: a thrown error is reported and the call returns false.
template <class F>
bool trap(ErrorEnv& env, std::string_view object, std::string_view procedure, F&& body,
          bool showUser = false) {
    try {
        body();
        return true;
    } catch (const std::exception& e) {
        reportError(env, object, procedure, &e, showUser);
    } catch (...) {
        reportError(env, object, procedure, nullptr, showUser);
    }
    return false;
}

}  // namespace tlx
