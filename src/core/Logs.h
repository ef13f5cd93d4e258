#pragma once
// The files the controller leaves behind: the dated trace file, the vote-data trace file,
// "debug.log", "Err.log", and the tray balloons with their message log. Writing a log line
// never raises into the procedure that logs.
#include <filesystem>
#include <string>
#include <string_view>

namespace tlx {

struct GlobalState;
class Scheduler;
class Desktop;
class Tray;

class Logs {
public:
    Logs(GlobalState& glo, Scheduler& scheduler, Desktop& desktop, Tray& tray);

    // Dated trace file; only while the trace-to-file flag is on.
    void trace(float elapsedSeconds, std::string_view text, std::string_view object,
               std::string_view procedure);
    void trace(std::string_view text, std::string_view object, std::string_view procedure) {
        trace(0.0f, text, object, procedure);
    }
    // Dated vote-data trace file; only while the trace-to-file flag ("LOGEVENTS TO FILE") is
    // on, as every trace file: the writer is called for every received vote.
    void voteTrace(std::string_view text);
    // "debug.log" in the per-user data folder.
    void debugFile(std::string_view text);
    // Appends one error report block to "Err.log" under %APPDATA%/tallix.
    void appendErrLog(std::string_view report);

    // A tray balloon; iconKind 1 information, 2 warning, 3 error (0 none).
    void balloon(std::string_view text, int iconKind);

    std::filesystem::path traceFilePath() const;
    std::filesystem::path voteTraceFilePath() const;
    std::filesystem::path debugFilePath() const;
    std::filesystem::path errLogPath() const;

private:
    std::string dateAndTime() const;
    static void appendLine(const std::filesystem::path& file, std::string_view line);

    GlobalState& glo_;
    Scheduler& scheduler_;
    Desktop& desktop_;
    Tray& tray_;
    double firstTraceCounter_ = -1.0;
};

inline constexpr const char* kKeypadSetupTitle = "KEYPAD SETUP";
inline constexpr const char* kBalloonTitle = "tallix controller";

}  // namespace tlx
