// The whole vote path on a small scale: the load driver runs the built controller as its own
// process on a private session bus with one base of 1,000 keypads, all voting within a second,
// and two bus clients. Every vote must reach each client exactly once; speed is not judged
// here (the benchmarks report it).
#include <gtest/gtest.h>

#include <QProcess>
#include <string>

TEST(LoadDriver, AThousandKeypadsReachTwoClientsExactlyOnce) {
    QProcess run;
    run.setProcessChannelMode(QProcess::MergedChannels);
    run.start(TLX_LOAD_PATH, {"--bases", "1", "--keypads", "1000", "--seconds", "1", "--clients", "2", "--tlxctrl",
                              TLXCTRL_PATH, "--timeout", "60"});
    ASSERT_TRUE(run.waitForStarted(10000));
    const bool finished = run.waitForFinished(240000);
    if (!finished) run.kill();
    const std::string out = run.readAll().toStdString();
    ASSERT_TRUE(finished) << out;
    EXPECT_EQ(run.exitCode(), 0) << out;
    EXPECT_NE(out.find("client 1: 1000/1000 exactly once"), std::string::npos) << out;
    EXPECT_NE(out.find("client 2: 1000/1000 exactly once"), std::string::npos) << out;
    EXPECT_NE(out.find("every vote reached every client exactly once"), std::string::npos) << out;
}
