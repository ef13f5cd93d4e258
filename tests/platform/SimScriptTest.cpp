// The scripted show's timing, with Await steps keeping pace with what happens outside.
#include <gtest/gtest.h>

#include "platform/sim/SimScript.h"
#include "platform/sim/VirtualScheduler.h"
#include "support/Fields.h"

using namespace tlx;
using tlx::test::fields;

namespace {

struct ScriptRun {
    VirtualScheduler scheduler;
    SimScript script{scheduler, nullptr, nullptr};
    std::vector<std::string> log;  // "ms: what"
    bool ready = false;

    explicit ScriptRun(const std::string& text) {
        script.command = [this](const std::string& line) {
            log.push_back(std::to_string(scheduler.elapsedMs()) + ": " + line);
            return true;
        };
        script.report = [this](const std::string& t) {
            if (t.find("failed") != std::string::npos) log.push_back(std::to_string(scheduler.elapsedMs()) + ": " + t);
        };
        script.condition = [this](const std::string& what) -> std::optional<bool> {
            if (what == "Ready") return ready;
            return std::nullopt;
        };
        script.load(parseScript(text));
        script.start();
    }
};

}  // namespace

TEST(SimScriptAwait, LaterStepsKeepTheirDistanceFromTheMomentTheConditionHeld) {
    ScriptRun r("1.0 Command A\n"
                "2.0 Await Ready 10\n"
                "2.5 Command B\n"
                "2.5 Command C\n"
                "4.0 Command D\n");
    r.scheduler.advance(2990);
    EXPECT_EQ(r.log, (std::vector<std::string>{"1000: A"}));
    r.ready = true;  // seen at 3 s (it is looked at every 50 ms): one second late
    r.scheduler.advance(3010);
    EXPECT_EQ(r.log, (std::vector<std::string>{"1000: A", "3500: B", "3500: C", "5000: D"}));
    EXPECT_EQ(fields(r.script.delayMs(), r.script.finished()), "1000|1");
}

TEST(SimScriptAwait, AConditionThatHoldsAlreadyCostsNothingAndOneThatNeverDoesIsReported) {
    ScriptRun at("1.0 Command A\n1.0 Await Ready\n1.5 Command B\n");
    at.ready = true;
    at.scheduler.advance(2000);
    EXPECT_EQ(at.log, (std::vector<std::string>{"1000: A", "1500: B"}));

    ScriptRun never("1.0 Await Ready 2\n1.5 Command B\n2.0 Await Sunrise\n2.1 Await\n");
    never.scheduler.advance(10000);
    EXPECT_EQ(never.log, (std::vector<std::string>{"3000: step 1 failed: Ready did not come within 2 seconds",
                                                   "3500: B", "4000: step 3 failed: no condition \"Sunrise\" to wait for",
                                                   "4100: step 4 failed: Await needs a condition"}));
}

TEST(SimScript, LinesAreReadBadOnesReportedAndStepsRunInTheOrderOfTheirTimes) {
    std::vector<std::string> problems;
    const auto steps = parseScript("# comment\n0.5 Begin\n  1 Key V   # the vote\nnonsense\n2 Command votename=A b\n-1 Next\n",
                                   &problems);
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[1].args, (std::vector<std::string>{"V"}));
    EXPECT_EQ(fields(steps[1].verb, steps[2].rest, problems.size()), "Key|votename=A b|2");
    EXPECT_EQ(fields(scriptKey("v"), scriptKey("PageDown"), scriptKey("86"), scriptKey("Nope")), "86|34|86|0");

    ScriptRun r("2.0 Command late\n1.0 Command early\n1.0 Command same\n");
    r.scheduler.advance(3000);
    EXPECT_EQ(r.log, (std::vector<std::string>{"1000: early", "1000: same", "2000: late"}));
    EXPECT_EQ(r.script.run(parseScript("0 Await Ready")[0]), "Await waits only in a started script");
}
