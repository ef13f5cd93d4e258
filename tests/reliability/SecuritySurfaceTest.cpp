// What another user or a bus client can reach through the controller's files: its own files
// are private, log files in shared places are not followed elsewhere, and no command line
// writes outside the data folders.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>

#include "EventWorld.h"
#include "core/CommandDispatcher.h"
#include "core/FileSafety.h"
#include "core/Options.h"
#include "core/PortFile.h"
#include "core/Settings.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

fs::perms modeOf(const fs::path& p) { return fs::symlink_status(p).permissions() & fs::perms::mask; }
constexpr fs::perms k0600 = fs::perms::owner_read | fs::perms::owner_write;
constexpr fs::perms k0700 = fs::perms::owner_all;

// Every file and link under a folder, with its content (a link: its target).
std::map<std::string, std::string> snapshot(const fs::path& root) {
    std::map<std::string, std::string> m;
    for (auto it = fs::recursive_directory_iterator(root); it != fs::recursive_directory_iterator(); ++it) {
        const auto st = it->symlink_status();
        const std::string rel = fs::relative(it->path(), root).string();
        if (fs::is_symlink(st))
            m[rel] = "-> " + fs::read_symlink(it->path()).string();
        else if (fs::is_regular_file(st))
            m[rel] = readFile(it->path());
    }
    return m;
}

}  // namespace

TEST(PrivateFiles, SettingsPortFileAndLogsAreForTheUserAloneInAFolderOfTheirOwnAndTheSharedFolderKeepsItsMode) {
    TestWorld w;
    // A data folder left open by an older run is closed again.
    fs::create_directories(w.appData() / "tallix");
    fs::permissions(w.appData() / "tallix", fs::perms::all, fs::perm_options::replace);
    // The shared folder keeps the mode its administrator gave it.
    const auto shared = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec | fs::perms::others_read |
                        fs::perms::others_exec;
    fs::create_directories(w.programData() / "tallix");
    fs::permissions(w.programData() / "tallix", shared, fs::perm_options::replace);
    w.writeSettings("DEBUG", "LOGEVENTS TO FILE", "1");
    ::umask(022);
    w.start();
    const fs::path data = w.appData() / "tallix";
    ASSERT_TRUE(w.c().settings.SaveSettings(w.glo().options));
    PortFileData table;
    table.bases = {{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}};
    ASSERT_EQ(writePortFile(data / "port.tlc", table), PortFileWriteStatus::Ok);
    w.c().logs.debugFile("x");
    w.c().logs.appendErrLog("x");
    w.c().logs.voteTrace("x");
    EXPECT_EQ(modeOf(data), k0700);
    EXPECT_EQ(modeOf(w.programData() / "tallix"), shared);
    for (const fs::path& f : {data / "tlx.ini", data / "port.tlc", data / "debug.log", data / "Err.log",
                              w.c().logs.traceFilePath(), w.c().logs.voteTraceFilePath()}) {
        ASSERT_TRUE(fs::is_regular_file(f)) << f;
        EXPECT_EQ(modeOf(f), k0600) << f;
    }
}

TEST(PrivateFiles, ALinkOrAPipePlantedWhereALogGoesIsNotWrittenThrough) {
    TestWorld w;
    w.start();
    w.glo().traceToFile = true;
    const fs::path victim = w.dir / "victim";
    writeFile(victim, "precious");
    fs::remove(w.c().logs.traceFilePath());  // the start-up's own lines
    fs::create_symlink(victim, w.c().logs.traceFilePath());
    fs::create_symlink(victim, w.c().logs.voteTraceFilePath());
    ASSERT_EQ(::mkfifo(w.c().logs.debugFilePath().c_str(), 0600), 0);  // a pipe nobody reads would block
    w.c().logs.trace("x", "Controller", "Test");
    w.c().logs.voteTrace("x");
    w.c().logs.debugFile("x");
    EXPECT_EQ(fields(readFile(victim), fs::is_symlink(w.c().logs.traceFilePath())), "precious|1");
}

TEST(PrivateFiles, ALinkInPlaceOfTheSettingsOrThePortFileIsReplacedNotFollowed) {
    TestWorld w;
    w.start();
    const fs::path data = w.appData() / "tallix";
    const fs::path victim = w.dir / "victim";
    writeFile(victim, "precious");
    fs::remove(data / "tlx.ini");
    fs::create_symlink(victim, data / "tlx.ini");
    fs::create_symlink(victim, data / "port.tlc");
    ASSERT_TRUE(w.c().settings.SaveSettings(w.glo().options));
    ASSERT_EQ(writePortFile(data / "port.tlc", keyboardVotingPortData()), PortFileWriteStatus::Ok);
    EXPECT_EQ(fields(readFile(victim), fs::is_symlink(data / "tlx.ini"), fs::is_symlink(data / "port.tlc")),
              "precious|0|0");
}

TEST(WriteSurface, NoCommandLineWritesOutsideTheDataFolders) {
    EventWorld w(1, 10);
    const fs::path outside = w.dir / "outside";
    fs::create_directories(outside);
    writeFile(outside / "victim", "precious");
    // Links a client might hope the controller follows: out of the data folder and the
    // temporary folder, to the victim and to a folder outside.
    fs::create_symlink(outside, w.appData() / "tallix" / "out");
    fs::create_symlink(outside / "victim", w.appData() / "tallix" / "debug.log");
    fs::create_symlink(outside, w.temp() / "out");
    const auto before = snapshot(w.dir.path());

    const std::vector<std::string> names = {"../../outside/victim", "..\\..\\outside\\victim",
                                            (outside / "victim").string(), (outside / "new").string(),
                                            "out/new", "out/victim", "/etc/passwd", "C:\\Windows\\x.ini",
                                            "tlx.ini", "port.tlc", "names.txt", "x/../../../new"};
    const std::vector<std::string> commands = {
        "ACTIVEKEYPADS", "BASEINFO", "CLEAR", "ENABLEPPT", "ENDCONVERT", "ENDWIZARD", "FREECURSOR", "GETNAMES",
        "GETVOTEINFO", "LOADNAMES", "INSERTCHARTS", "PCAOPTIONS", "PPA_ENDSHOWEDIT", "PPA_STARTSHOWEDIT",
        "READACTIVEKEYPADS", "STARTVOTE", "PAUSEVOTE", "RESUMEVOTE", "ENDVOTE", "SHOWBUBBLEMESSAGELOG", "SHOWDEBUG",
        "SHOWPROCESSLIST", "SHOWWINDOWHANDLES", "SWITCHTODEBUGVIEW", "TEXTVOTE", "TEXTVOTES", "WINNING KEYPAD"};
    const std::vector<std::string> keys = {
        "votetype", "options", "startfrom", "abstain", "addtask", "deletetask", "allocation", "answertext",
        "balloonhelp", "detect mode", "kelvarindisplay", "keypadsactive", "kvpoptions", "limits", "points",
        "postvotedtext", "prevotetext", "questiontextshort", "randomvotestring", "votename", "votetext"};
    Display& d = w.join();
    for (const auto& name : names) {
        w.tallixInit(name);
        for (const auto& c : commands) {
            d.client->SendCommand(c);
            d.client->SendCommand(c + " " + name);
            d.client->SendCommand(c + "=" + name);
        }
        for (const auto& k : keys) d.client->SendCommand(k + "=" + name);
        w.scheduler.advance(500);
    }
    w.scheduler.advance(2000);
    ASSERT_FALSE(w.glo().ShuttingDown);

    auto after = snapshot(w.dir.path());
    // What the controller may write: its data folders and the temporary folder.
    for (auto it = after.begin(); it != after.end();) {
        const std::string& rel = it->first;
        const bool ours = rel.rfind("appdata/tallix/", 0) == 0 || rel.rfind("programdata/tallix/", 0) == 0 ||
                          (rel.rfind("temp/", 0) == 0 && rel.find('/', 5) == std::string::npos);
        if (ours && before.count(rel) == 0)
            it = after.erase(it);
        else
            ++it;
    }
    for (const auto& [rel, content] : after) {
        auto was = before.find(rel);
        EXPECT_TRUE(was != before.end()) << "written outside the data folders: " << rel;
        if (was != before.end() && rel.rfind("appdata/tallix/", 0) != 0 && rel.rfind("temp/", 0) != 0) {
            EXPECT_EQ(content, was->second) << "changed outside the data folders: " << rel;
        }
    }
    EXPECT_EQ(readFile(outside / "victim"), "precious");
    EXPECT_EQ(snapshot(outside), (std::map<std::string, std::string>{{"victim", "precious"}}));
}
