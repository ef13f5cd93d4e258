#include "core/Logs.h"


#include "core/FileSafety.h"
#include "core/GlobalState.h"
#include "core/Text.h"
#include "ports/Desktop.h"
#include "ports/Scheduler.h"
#include "ports/Tray.h"
#include "tlx/Version.h"

namespace tlx {

namespace fs = std::filesystem;

Logs::Logs(GlobalState& glo, Scheduler& scheduler, Desktop& desktop, Tray& tray)
    : glo_(glo), scheduler_(scheduler), desktop_(desktop), tray_(tray) {}

std::string Logs::dateAndTime() const {
    const DateTime now = scheduler_.now();
    return formatDate(now, "DD/MM/YY") + " " + timeOfDay(now.secondsSinceMidnight());
}

void Logs::appendLine(const fs::path& file, std::string_view line) {
    // A locked, missing or full file, or one that is not a plain file, loses this line and
    // nothing else.
    std::string text(line);
    text += "\r\n";
    appendToPrivateFile(file, text);
}

fs::path Logs::traceFilePath() const {
    return fs::path(desktop_.environment("TEMP")) /
           ("tlx_debug_" + formatDate(scheduler_.now(), "YYYY_MM_DD") + ".log");
}

fs::path Logs::voteTraceFilePath() const {
    return fs::path(desktop_.environment("TEMP")) /
           ("tlx_vote_data_debug_" + formatDate(scheduler_.now(), "YYYY_MM_DD") + ".log");
}

fs::path Logs::debugFilePath() const { return glo_.localDataFolder / "debug.log"; }

fs::path Logs::errLogPath() const {
    return fs::path(desktop_.environment("APPDATA")) / "tallix" / "Err.log";
}

void Logs::trace(float elapsedSeconds, std::string_view text, std::string_view object,
                 std::string_view procedure) {
    if (!glo_.traceToFile) return;
    try {
        const double counter = scheduler_.monotonicSeconds();
        if (firstTraceCounter_ < 0) firstTraceCounter_ = counter;
        std::string line = "[" + dateAndTime() + "] ";
        line += " | " + formatNumber(counter - firstTraceCounter_, "000.000");
        line += " | " + desktop_.programName() + ".exe (" + version::kText + ") | ";
        line += formatNumber(elapsedSeconds, "##0.000");
        line += " | [";
        line += object;
        line += "] | [";
        line += procedure;
        line += "] | ";
        line += text;
        appendLine(traceFilePath(), line);
    } catch (...) {
    }
}

void Logs::voteTrace(std::string_view text) {
    // Written only with "LOGEVENTS TO FILE" on, not whenever called: the switch keeps every
    // trace file away from a run that did not ask for one, and with it off a busy vote would
    // open and close a file for every key press.
    if (!glo_.traceToFile) return;
    try {
        std::string line = "[" + dateAndTime() + "] " + " | ";
        line += text;
        appendLine(voteTraceFilePath(), line);
    } catch (...) {
    }
}

void Logs::debugFile(std::string_view text) {
    try {
        if (glo_.localDataFolder.empty()) return;
        std::string line = "[" + dateAndTime() + "] - ";
        line += text;
        appendLine(debugFilePath(), line);
    } catch (...) {
    }
}

void Logs::appendErrLog(std::string_view report) {
    try {
        const fs::path folder = fs::path(desktop_.environment("APPDATA")) / "tallix";
        std::error_code ec;
        if (!fs::is_directory(folder, ec)) makePrivateFolder(folder);
        const std::string rule = repeat('-', 65);
        appendToPrivateFile(errLogPath(), rule + "\r\n" + std::string(report) + "\r\n" + rule + "\r\n" + "\r\n");
    } catch (...) {
    }
}

void Logs::balloon(std::string_view text, int iconKind) {
    try {
        const char* title =
            contains(text, "It may be necessary to remove and plug") ? kKeypadSetupTitle : kBalloonTitle;
        glo_.bubbleMessageLog += std::string(text) + "\r\n" + repeat('-', 67) + "\r\n";
        tray_.balloon(title, std::string(text), iconKind);
    } catch (...) {
    }
}

}  // namespace tlx
