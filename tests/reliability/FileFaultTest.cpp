// The controller's own files under faults: killed half-way through writing them, found damaged
// at start-up, a disk that refuses log lines. Nothing the user had is lost and the vote goes on.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "EventWorld.h"
#include "core/FileSafety.h"
#include "core/Options.h"
#include "core/PortFile.h"
#include "core/Settings.h"

using namespace tlx;
using namespace tlx::test;
namespace fs = std::filesystem;

namespace {

// Runs `write` in a child process that the kernel kills (SIGXFSZ) as soon as a file it writes
// grows past `limit` bytes: the process dies in the middle of the write, as a crash or a
// power cut of the program would leave it.
void killedWhileWriting(rlim_t limit, const std::function<void()>& write) {
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        rlimit none{0, 0};
        ::setrlimit(RLIMIT_CORE, &none);
        rlimit fsize{limit, limit};
        ::setrlimit(RLIMIT_FSIZE, &fsize);
        write();
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the write finished within " << limit << " bytes";
    EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
}

// Makes every file write of this process fail as on a full disk (EFBIG, no signal) while alive.
class FullDisk {
public:
    FullDisk() {
        ::getrlimit(RLIMIT_FSIZE, &saved_);
        old_ = ::signal(SIGXFSZ, SIG_IGN);
        rlimit zero{0, saved_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &zero);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &saved_);
        ::signal(SIGXFSZ, old_);
    }

private:
    rlimit saved_{};
    sighandler_t old_;
};

Options longTexts(const std::string& fill) {
    Options o;
    for (const char* key : {"VOTED TEXT", "PREVOTE TEXT", "VOTE END TEXT", "VOTE SUCCESS TEXT"})
        o.set(section::kCoreHubOptions, key, fill + std::string(300, fill[0]));
    return o;
}

struct DataWorld : TestWorld {
    DataWorld() { c().resolveDataFolders(); }
    fs::path data() { return appData() / "tallix"; }
};

}  // namespace

TEST(KilledWhileWriting, SettingsAreTheOldFileOrTheNewOneNeverAMixAndAFailedWriteKeepsTheOld) {
    DataWorld w;
    const Options before = longTexts("old");
    const Options after = longTexts("NEW");
    ASSERT_TRUE(w.c().settings.SaveSettings(before));
    const std::string oldBytes = readFile(w.data() / "tlx.ini");
    for (rlim_t limit : {rlim_t{1}, rlim_t{700}, static_cast<rlim_t>(oldBytes.size() - 10)}) {
        killedWhileWriting(limit, [&] { w.c().settings.SaveSettings(after); });
        EXPECT_EQ(readFile(w.data() / "tlx.ini"), oldBytes) << "killed at " << limit << " bytes";
    }
    {
        FullDisk full;  // a write that fails outright
        EXPECT_FALSE(w.c().settings.SaveSettings(after));
    }
    EXPECT_EQ(readFile(w.data() / "tlx.ini"), oldBytes);
    ASSERT_TRUE(w.c().settings.SaveSettings(after));
    Options back;
    w.c().settings.loadOptions(back);
    EXPECT_EQ(back.values(), after.values());
    // The half-written temporary file of the killed runs is gone with the next write.
    for (const auto& e : fs::directory_iterator(w.data()))
        EXPECT_EQ(e.path().filename().string().find(".new"), std::string::npos) << e.path();
}

TEST(KilledWhileWriting, ThePortFileIsTheOldTableOrTheNewOne) {
    DataWorld w;
    const fs::path file = w.data() / "port.tlc";
    PortFileData one, two;
    one.bases = {{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}};
    two.bases = one.bases;
    for (int i = 1; i < 10; ++i) two.bases.push_back({std::to_string(200200200200LL + i), "KELVARIN COREHUB G2", 1, 40, false, 0, 40 * i});
    ASSERT_EQ(writePortFile(file, one), PortFileWriteStatus::Ok);
    const std::string oldBytes = readFile(file);
    killedWhileWriting(oldBytes.size() + 20, [&] { writePortFile(file, two); });
    EXPECT_EQ(readFile(file), oldBytes);
    const auto r = readPortFile(file);
    EXPECT_EQ(fields(r.status == PortFileStatus::Ok, r.data.bases.size()), "1|1");
}

TEST(DamagedFiles, APortFileCutOrGarbledGivesKeyboardVotingAndIsKeptAside) {
    std::vector<std::pair<std::string, std::function<std::string(std::string)>>> damages = {
        {"cut in half", [](const std::string& s) { return s.substr(0, s.size() / 2); }},
        {"cut by five bytes", [](const std::string& s) { return s.substr(0, s.size() - 5); }},
        {"one byte changed", [](std::string s) { s[s.size() - 3] ^= 0x10; return s; }},
        {"the last byte changed", [](std::string s) { s.back() ^= 0x01; return s; }},
        {"the middle byte changed", [](std::string s) { s[s.size() / 2] ^= 0x01; return s; }},
        {"emptied", [](const std::string&) { return std::string(); }},
        {"a text file", [](const std::string&) { return std::string("Port=1\r\nBaseType=KELVARIN COREHUB G2\r\n"); }},
    };
    for (std::size_t at : {0, 4, 10})  // the head is sealed as much as the table
        damages.push_back({"byte " + std::to_string(at) + " changed", [at](std::string s) { s[at] ^= 0x01; return s; }});
    for (const auto& [what, damage] : damages) {
        SCOPED_TRACE(what);
        TestWorld w;
        const fs::path file = w.appData() / "tallix" / "port.tlc";
        PortFileData good;
        good.bases = {{"100100100100", "KELVARIN COREHUB G2", 1, 40, false, 0, 0}};
        ASSERT_EQ(writePortFile(file, good), PortFileWriteStatus::Ok);
        const std::string bad = damage(readFile(file));
        writeFile(file, bad);
        w.start();
        EXPECT_TRUE(w.dialogs.any("Decrypt Error"));
        ASSERT_EQ(w.glo().bases.size(), 1u);
        EXPECT_EQ(fields(w.glo().bases[0].baseType, w.glo().InitialisedState == INIT_STATE_INITIALISED), "KBOARD|1");
        EXPECT_EQ(fields(readFile(file), readFile(file.string() + ".bad")), fields(bad, bad));
        EXPECT_TRUE(w.logged("port.tlc is damaged: defaults used where it cannot be read; a copy is kept as " +
                             file.string() + ".bad"));
        // The next keypad set-up writes the table anew; the copy stays as it was.
        ASSERT_EQ(writePortFile(file, good), PortFileWriteStatus::Ok);
        EXPECT_EQ(fields(readPortFile(file).status == PortFileStatus::Ok, readFile(file.string() + ".bad")), fields(1, bad));
    }
}

TEST(DamagedFiles, AnotherDamagedPortFileLaterIsKeptBesideTheFirstNotOverIt) {
    DataWorld w;
    const fs::path file = w.data() / "port.tlc";
    writeFile(file, "first damage");
    w.c().readPortFile();
    writeFile(file, "second damage");
    w.c().readPortFile();
    w.c().readPortFile();  // the same bytes again: no third copy
    EXPECT_EQ(fields(readFile(file.string() + ".bad"), readFile(file.string() + ".bad1"), fs::exists(file.string() + ".bad2")),
              "first damage|second damage|0");
}

TEST(DamagedFiles, ASettingsFileCutMidLineKeepsWhatItHasAndIsKeptAside) {
    TestWorld w;
    const fs::path ini = w.appData() / "tallix" / "tlx.ini";
    const std::string cut =
        "[KELVARIN OPTIONS]\r\nKEYPAD BEEP=1\r\n[KELVARIN CORE HUB OPTIONS]\r\nVOTED TEXT=Thanks\r\nPREVOTE TE";
    writeFile(ini, cut);
    w.start();
    EXPECT_EQ(fields(w.glo().options.text(section::kKelvarinOptions, "KEYPAD BEEP"), w.glo().options.text(section::kCoreHubOptions, "VOTED TEXT")),
              "1|Thanks");
    EXPECT_EQ(w.glo().options.text(section::kCoreHubOptions, "PREVOTE TEXT"),
              Options{}.text(section::kCoreHubOptions, "PREVOTE TEXT"));
    EXPECT_TRUE(w.logged("tlx.ini is damaged: defaults used where it cannot be read; a copy is kept as " +
                         ini.string() + ".bad"));
    EXPECT_EQ(readFile(ini.string() + ".bad"), cut);
    // Saving writes a whole file; the damaged one stays aside.
    ASSERT_TRUE(w.c().settings.SaveSettings(w.glo().options));
    EXPECT_EQ(fields(settingsTextLooksDamaged(readFile(ini)), readFile(ini.string() + ".bad")), fields(0, cut));
}

TEST(DamagedFiles, GarbageInTheSettingsFileGivesDefaultsAndTheFileIsKeptBeforeASave) {
    DataWorld w;
    const fs::path ini = w.data() / "tlx.ini";
    std::string junk = "[KELVARIN OPTIONS]\r\nKEYPAD BEEP=1\r\n";
    for (int i = 0; i < 2048; ++i) junk += static_cast<char>((i * 37 + 11) % 256);
    writeFile(ini, junk);
    Options o;
    w.c().settings.loadOptions(o);
    EXPECT_EQ(o.text(section::kCoreHubOptions, "VOTED TEXT"), Options{}.text(section::kCoreHubOptions, "VOTED TEXT"));
    // No start-up in between: the save itself keeps the damaged file aside.
    ASSERT_TRUE(w.c().settings.SaveSettings(o));
    EXPECT_EQ(readFile(ini.string() + ".bad"), junk);
}

TEST(DamagedFiles, SoundSettingsFilesAreNotTakenForDamagedOnes) {
    for (const std::string sound : {"", "\xEF\xBB\xBF[DEBUG]\r\n; note\r\n\r\nLOGEVENTS TO FILE=1\r\n  \r\n",
                                    "DETECTOR STATUS,1\r\nVOTED TEXT,Thank you\r\n"})
        EXPECT_FALSE(settingsTextLooksDamaged(sound)) << sound;
    EXPECT_TRUE(settingsTextLooksDamaged("[DEBUG\r\n") && settingsTextLooksDamaged(std::string("[DEBUG]\r\nA=1\0\r\n", 14)));
    TestWorld w;
    w.writeSettings("DEBUG", "SHOW ALL ERRORS", "0");
    w.start();
    EXPECT_EQ(fields(w.logged("is damaged"), fs::exists(w.appData() / "tallix" / "tlx.ini.bad")), "0|0");
}

// A vote of 30 keypads with a line for each log besides: every vote arrives once.
static void voteWhileLogsFail(EventWorld& w) {
    Display& d = w.join();
    w.openVote(d);
    for (int k = 1; k <= 30; ++k) ASSERT_TRUE(w.press(0, k, std::to_string(1 + k % 4)));
    w.c().logs.debugFile("refused");
    w.c().logs.appendErrLog("refused");
    w.closeVote(d);
    EXPECT_EQ(fields(d.total, d.doubled().empty(), w.glo().ShuttingDown), "30|1|0");
}

TEST(LogDisk, AFullDiskSkipsTheLogLinesAndTheVoteGoesOn) {
    EventWorld w(1, 30);
    w.glo().traceToFile = true;
    w.c().logs.trace("before", "Controller", "Test");
    const auto traceBefore = fs::file_size(w.c().logs.traceFilePath());
    {
        FullDisk full;
        voteWhileLogsFail(w);
    }
    EXPECT_EQ(fs::file_size(w.c().logs.traceFilePath()), traceBefore);
    // With room again, lines are written again.
    w.c().logs.trace("after", "Controller", "Test");
    EXPECT_GT(fs::file_size(w.c().logs.traceFilePath()), traceBefore);
}

TEST(LogDisk, LogFoldersThatCannotBeWrittenSkipTheLinesAndTheVoteGoesOn) {
    // Tests run as root, for whom permission bits stop no write: the folders are made
    // impossible instead, each below a plain file.
    EventWorld w(1, 30);
    w.glo().traceToFile = true;
    writeFile(w.dir / "plain", "x");
    w.desktop.setEnvironment("TEMP", (w.dir / "plain" / "temp").string());
    w.desktop.setEnvironment("APPDATA", (w.dir / "plain" / "appdata").string());
    w.glo().localDataFolder = w.dir / "plain" / "data";
    voteWhileLogsFail(w);
}
