// Playthrough on a real sound server: a PulseAudio server of the test's own with two null
// sinks. A tone played into the first sink reaches the engine through that sink's monitor,
// is played into the second sink, and is found again in what the second sink's monitor
// records.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>
#include <csignal>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>

#include "platform/audio/QtAudioEngine.h"
#include "support/TestWorld.h"

using namespace tlx;
using namespace tlx::test;

namespace {

constexpr int kRate = 44100;
constexpr double kToneHz = 880.0;

QCoreApplication& coreApp() {
    static int argc = 1;
    static char name[] = "tests_audio";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);  // never destroyed, as Qt wants
    return *app;
}

// Lets the event loop run until the condition holds or the time is up.
template <class F>
bool pollFor(F condition, int ms) {
    QDeadlineTimer deadline(ms);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

// The server runs in a folder of its own until the test program ends. It is stopped only
// after Qt Multimedia has let go of it at exit: Qt's sound-server connection is torn down by a
// static destructor, which hangs when the server is already gone. The exit handler that stops
// the server is registered before Qt Multimedia is first used, so it runs after Qt's.
qint64 g_serverPid = 0;

bool alive(pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) == 0; }

void stopServer() {
    if (g_serverPid <= 0) return;
    const auto pid = static_cast<pid_t>(g_serverPid);
    ::kill(pid, SIGTERM);
    // At exit there is no event loop left to poll with: short naps, three seconds at most.
    QDeadlineTimer deadline(3000);
    while (alive(pid) && !deadline.hasExpired()) QThread::msleep(20);
    if (alive(pid)) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    g_serverPid = 0;
}

class SoundServer {
public:
    explicit SoundServer(const std::filesystem::path& dir) : dir_(dir) {}

    // Empty when the server runs, else why not.
    std::string start() {
        const QString exe = QStandardPaths::findExecutable("pulseaudio");
        if (exe.isEmpty()) return "pulseaudio is not installed";
        if (QStandardPaths::findExecutable("pacat").isEmpty()) return "pacat (pulseaudio-utils) is not installed";
        const auto run = dir_ / "run";
        std::filesystem::create_directories(run);
        std::filesystem::permissions(run, std::filesystem::perms::owner_all);
        writeFile(dir_ / "server.pa",
                  "load-module module-null-sink sink_name=first rate=44100 channels=2 "
                  "sink_properties=device.description=First\n"
                  "load-module module-null-sink sink_name=second rate=44100 channels=2 "
                  "sink_properties=device.description=Second\n"
                  // Qt lists no monitor sources: the first sink's monitor is offered as a source
                  // of its own, as a microphone would be.
                  "load-module module-remap-source master=first.monitor source_name=first_in "
                  "source_properties=device.description=Monitor_of_First\n"
                  "load-module module-native-protocol-unix\n");
        env_ = QProcessEnvironment::systemEnvironment();
        env_.insert("XDG_RUNTIME_DIR", QString::fromStdString(run.string()));
        env_.insert("PULSE_RUNTIME_PATH", QString::fromStdString(run.string()));
        env_.insert("HOME", QString::fromStdString(dir_.string()));
        env_.insert("PULSE_SERVER", "unix:" + QString::fromStdString((run / "native").string()));
        static const bool registered = [] { return std::atexit(stopServer) == 0; }();
        (void)registered;
        const auto log = dir_ / "server.log";
        // -n: no default configuration; --system=false and --disallow-exit so that it also runs
        // as root in a container and no client can stop it.
        std::vector<std::string> args = {exe.toStdString(), "--daemonize=no", "-n", "-F", (dir_ / "server.pa").string(),
                                         "--system=false", "--disallow-exit", "--exit-idle-time=-1",
                                         "--log-target=stderr"};
        std::vector<std::string> envs;
        for (const QString& e : env_.toStringList()) envs.push_back(e.toStdString());
        auto pointers = [](std::vector<std::string>& v) {
            std::vector<char*> p;
            for (auto& x : v) p.push_back(x.data());
            p.push_back(nullptr);
            return p;
        };
        auto argv = pointers(args);
        auto envp = pointers(envs);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_adddup2(&files, 1, 2);
        pid_t spawned = 0;
        const int rc = posix_spawn(&spawned, args[0].c_str(), &files, nullptr, argv.data(), envp.data());
        posix_spawn_file_actions_destroy(&files);
        if (rc != 0) return "pulseaudio did not start";
        g_serverPid = spawned;
        const auto pid = static_cast<pid_t>(g_serverPid);
        const bool up = pollFor([&] { return !alive(pid) || std::filesystem::exists(run / "native"); }, 5000);
        if (!up || !alive(pid)) {
            g_serverPid = 0;
            return "pulseaudio did not come up: " + readFile(log);
        }
        // The engine's process talks to this server only.
        qputenv("PULSE_SERVER", env_.value("PULSE_SERVER").toUtf8());
        qputenv("PULSE_RUNTIME_PATH", env_.value("PULSE_RUNTIME_PATH").toUtf8());
        return {};
    }

    // A tool of the server's own, with its environment.
    void tool(QProcess& p, const QString& program, const QStringList& args) {
        p.setProcessEnvironment(env_);
        p.start(QStandardPaths::findExecutable(program), args);
    }
    int pactl(const QStringList& args) {
        QProcess p;
        tool(p, "pactl", args);
        p.waitForFinished(5000);
        return p.exitCode();
    }

private:
    std::filesystem::path dir_;
    QProcessEnvironment env_;
};

int indexOf(const std::vector<AudioDeviceInfo>& list, const std::string& part) {
    for (std::size_t i = 0; i < list.size(); ++i)
        if (list[i].name.find(part) != std::string::npos) return static_cast<int>(i);
    return -1;
}

// The tone's samples, both channels alike, as 16-bit little-endian frames.
QByteArray tone(double seconds) {
    const int frames = static_cast<int>(seconds * kRate);
    QByteArray data(frames * 4, '\0');
    auto* s = reinterpret_cast<qint16*>(data.data());
    for (int i = 0; i < frames; ++i) {
        const auto v = static_cast<qint16>(12000.0 * std::sin(2.0 * std::numbers::pi * kToneHz * i / kRate));
        s[2 * i] = s[2 * i + 1] = v;
    }
    return data;
}

// The strength of one frequency in the left channel (a single DFT bin), relative to the signal.
double strength(const std::vector<double>& x, double hz) {
    double re = 0, im = 0, energy = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double a = 2.0 * std::numbers::pi * hz * static_cast<double>(i) / kRate;
        re += x[i] * std::cos(a);
        im -= x[i] * std::sin(a);
        energy += x[i] * x[i];
    }
    if (energy <= 0) return 0;
    return (re * re + im * im) / (energy * static_cast<double>(x.size()) / 2.0);
}

}  // namespace

TEST(QtAudioEngine, ToneInTheFirstSinkComesOutOfTheSecond) {
    coreApp();
    TempDir dir;
    SoundServer server(dir.path());
    if (const std::string why = server.start(); !why.empty()) GTEST_SKIP() << "No sound server: " << why;

    QtAudioEngine engine;
    int failures = 0, failureCode = 0;
    engine.onFailure = [&](int code) {
        ++failures;
        failureCode = code;
    };
    // The server's devices, by the names it gives them.
    std::vector<AudioDeviceInfo> inputs, outputs;
    const bool listed = pollFor(
        [&] {
            inputs = engine.recordDevices();
            outputs = engine.playbackDevices();
            return indexOf(inputs, "Monitor_of_First") >= 0 && indexOf(outputs, "Second") >= 0;
        },
        5000);
    if (!listed && inputs.empty() && outputs.empty())
        GTEST_SKIP() << "Qt Multimedia sees no devices of the sound server (no PulseAudio backend)";
    ASSERT_TRUE(listed) << [&] {
        std::string names;
        for (const auto& d : inputs) names += "in: " + d.name + "\n";
        for (const auto& d : outputs) names += "out: " + d.name + "\n";
        return names;
    }();
    const int in = indexOf(inputs, "Monitor_of_First");
    const int out = indexOf(outputs, "Second");
    ASSERT_GE(in, 0);

    // A wrong device is refused with its code.
    EXPECT_FALSE(engine.init(static_cast<int>(outputs.size()) + 3, kRate));
    EXPECT_EQ(engine.errorGetCode(), AudioErrorCode::Device);

    // The tone goes into the first sink; what the second sink plays is recorded.
    QProcess player, recorder;
    server.tool(player, "pacat", {"--playback", "--device=first", "--format=s16le", "--rate=44100", "--channels=2",
                                  "--raw", "--latency-msec=20"});
    ASSERT_TRUE(player.waitForStarted(3000));
    player.write(tone(4.0));
    server.tool(recorder, "pacat", {"--record", "--device=second.monitor", "--format=s16le", "--rate=44100",
                                    "--channels=2", "--raw", "--latency-msec=20"});
    ASSERT_TRUE(recorder.waitForStarted(3000));

    ASSERT_TRUE(engine.init(out, kRate)) << engine.errorGetCode();
    ASSERT_TRUE(engine.recordInit(in)) << engine.errorGetCode();
    ASSERT_TRUE(engine.streamCreate(kRate, 2)) << engine.errorGetCode();
    ASSERT_TRUE(engine.recordStart(kRate, 2)) << engine.errorGetCode();
    ASSERT_TRUE(engine.channelPlay()) << engine.errorGetCode();
    EXPECT_FALSE(engine.recordInit(in));  // already open
    EXPECT_EQ(engine.errorGetCode(), AudioErrorCode::Already);

    // Levels: the master input only, and the output.
    EXPECT_TRUE(engine.recordSetInput(-1, 0.9));
    ASSERT_TRUE(engine.recordGetInput(-1).has_value());
    EXPECT_NEAR(*engine.recordGetInput(-1), 0.9, 0.01);
    EXPECT_FALSE(engine.recordGetInput(0).has_value());
    EXPECT_TRUE(engine.setVolume(1.0));
    EXPECT_NEAR(engine.getVolume(), 1.0, 0.01);
    EXPECT_FALSE(engine.setVolume(1.5));

    QByteArray heard;
    double peakLevel = 0;
    std::int64_t mostBuffered = 0;
    const std::int64_t perSecond = engine.channelSeconds2Bytes(1.0);
    EXPECT_EQ(perSecond, kRate * 4);
    pollFor(
        [&] {
            heard += recorder.readAllStandardOutput();
            peakLevel = std::max(peakLevel, engine.channelLevel());
            mostBuffered = std::max(mostBuffered, engine.channelBufferedBytes());
            return heard.size() >= 3 * perSecond;
        },
        6000);
    recorder.kill();
    recorder.waitForFinished(1000);
    player.kill();
    player.waitForFinished(1000);

    if (const char* dump = std::getenv("TLX_AUDIO_DUMP")) writeFile(dump, heard.toStdString());
    // What was heard carries the tone. On a busy machine the output runs dry for a few
    // milliseconds now and then, which breaks a long analysis: 10 ms windows are judged one by
    // one, and most of the last two seconds' must hold the tone and nothing else (a missing or
    // wrong tone leaves none). Over the clean windows together the zero crossings give the
    // frequency closely.
    ASSERT_GE(heard.size(), 2 * perSecond) << "the second sink played too little";
    const auto* s = reinterpret_cast<const qint16*>(heard.constData());
    const std::size_t frames = static_cast<std::size_t>(heard.size() / 4);
    constexpr std::size_t kWindow = kRate / 100;
    int windows = 0, clean = 0, cleanCrossings = 0;
    for (std::size_t start = frames - 2 * kRate; start + kWindow <= frames; start += kWindow) {
        std::vector<double> left;
        for (std::size_t i = start; i < start + kWindow; ++i) left.push_back(s[2 * i]);
        int crossings = 0;
        for (std::size_t i = 1; i < left.size(); ++i)
            if ((left[i - 1] < 0) != (left[i] < 0)) ++crossings;
        // Two zero crossings per period; the window is a hundredth of a second.
        const double hz = crossings / 2.0 * 100.0;
        ++windows;
        if (strength(left, kToneHz) > 0.8 && strength(left, 1.5 * kToneHz) < 0.05 && std::abs(hz - kToneHz) <= 60.0) {
            ++clean;
            cleanCrossings += crossings;
        }
    }
    ASSERT_GE(clean * 2, windows) << clean << " of " << windows << " windows hold the tone";
    EXPECT_NEAR(cleanCrossings / 2.0 / (clean * 0.01), kToneHz, kToneHz * 0.02);
    EXPECT_GT(peakLevel, 0.2);
    // What is held between the recording and the speaker is read (how much depends on the
    // machine's load; the window's restart rule deals with too much).
    EXPECT_GT(mostBuffered, 0);
    EXPECT_LT(mostBuffered, perSecond);

    // The second sink goes away: the engine says so once and plays no more.
    ASSERT_EQ(server.pactl({"unload-module", "module-null-sink"}), 0);
    EXPECT_TRUE(pollFor([&] { return failures > 0; }, 3000));
    pollFor([] { return false; }, 600);
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(failureCode, AudioErrorCode::Device);
    engine.recordFree();
    engine.free();
    EXPECT_EQ(engine.channelBufferedBytes(), 0);
}
