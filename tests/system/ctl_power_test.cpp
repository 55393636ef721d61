// hostmgrctl record, reboot, poweroff, restore: what the recorder remembers of it, and that nothing great is done
// unasked. The library's own control stands in control_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_support.h"
#include "ctl_terminal.h"

using ctl::CtlTest;
using ctl::Outcome;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2 };

/** A document that the recorder keeps; null when there is none. */
json Kept(const std::string& name) {
    const std::string text = ctl::Contents(std::filesystem::path(getenv("RECORDER_HOME")) / (name + ".json"));
    return text.empty() ? json() : json::parse(text);
}

struct PowerCase {
    const char* name;
    const char* operation;
    const char* done;
};

class CtlPowerTest : public CtlTest, public testing::WithParamInterface<PowerCase> {
protected:
    static unsigned Times() {
        return Kept("power").is_null() ? 0 : Kept("power").at(GetParam().name).at("times").get<unsigned>();
    }
};

TEST_P(CtlPowerTest, WithYes_IsDone) {
    const Outcome outcome = Run(std::string(GetParam().name) + " --yes");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(outcome.out, std::string(GetParam().done) + "\n");
    EXPECT_EQ(Times(), 1U);
    EXPECT_THAT(json::parse(Run(std::string(GetParam().name) + " --yes --json").out).at("command"), testing::Gt(0));
    EXPECT_EQ(Times(), 2U);
}

TEST_P(CtlPowerTest, WithoutYes_IsNotDoneWhereNobodyCanBeAsked) {
    const Outcome outcome = Run(GetParam().name);
    EXPECT_EQ(outcome.status, USAGE);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("is not done unasked: give --yes"));
    EXPECT_EQ(Times(), 0U);
}

TEST_P(CtlPowerTest, OnATerminal_AsksAndTakesYesAlone) {
    for (const char* answer : {"no\n", "y\n", "\n", "yes please\n", "\4"}) {
        ctl::TerminalRun run({HOSTMGRCTL, GetParam().name}, At("."));
        EXPECT_EQ(run.Answer("Type yes to go on: ", answer), REFUSED) << answer;
        EXPECT_THAT(run.Shown(), HasSubstr("nothing was done: ")) << answer;
    }
    EXPECT_EQ(Times(), 0U);
    ctl::TerminalRun run({HOSTMGRCTL, GetParam().name}, At("."));
    EXPECT_EQ(run.Answer("Type yes to go on: ", "yes\n"), OK);
    EXPECT_EQ(Times(), 1U);
}

TEST_P(CtlPowerTest, RecorderFails_IsToldThoughTheLibraryHidesIt) {
    UseScenario(R"({"faults": [{"operation": ")" + std::string(GetParam().operation) + "\"}]}");
    const Outcome outcome = Run(std::string(GetParam().name) + " -y");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr(" failed\nthe recorder says: "));
    EXPECT_THAT(outcome.err, HasSubstr(GetParam().operation));
    EXPECT_EQ(Times(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Acts, CtlPowerTest,
                         testing::Values(PowerCase{"reboot", "vexo_model_reboot", "the recorder reboots"},
                                         PowerCase{"poweroff", "vexo_model_poweroff", "the recorder powers off"},
                                         PowerCase{"restore", "vexo_model_restore_factory",
                                                   "the recorder restores its factory settings"}),
                         [](const auto& act) { return act.param.name; });

TEST_F(CtlTest, Restore_ForgetsWhatWasSet) {
    ASSERT_EQ(Run("record start -c 1 --type always").status, OK);
    ASSERT_EQ(Kept("record_modes").at("1").at("mode"), 2);
    ASSERT_EQ(Run("restore --yes").status, OK);
    EXPECT_EQ(Kept("record_modes").at("1").at("mode"), 1);
}

// ---- record --------------------------------------------------------------------------------------------------------

TEST_F(CtlTest, Record_SwitchesModeAndHand) {
    const auto modes = [](unsigned channel) { return Kept("record_modes").at(std::to_string(channel)); };
    EXPECT_EQ(Run("record start -c 2").out, "channel 2: ordered recording by hand on\n");
    EXPECT_EQ(modes(2), json({{"mode", 1}, {"manual", true}}));
    EXPECT_EQ(modes(1), json({{"mode", 1}, {"manual", false}})) << "that channel alone";
    EXPECT_EQ(Run("record stop -c 2").out, "channel 2: ordered recording by hand off\n");
    EXPECT_EQ(modes(2), json({{"mode", 1}, {"manual", false}}));
    EXPECT_EQ(Run("record start -c 1,3-4 --type always").out, "channels 1, 3, 4: ordered mode 2, always\n");
    EXPECT_EQ(modes(1).at("mode"), 2);
    EXPECT_EQ(modes(2).at("mode"), 1);
    EXPECT_EQ(modes(4).at("mode"), 2);
    EXPECT_EQ(Run("record stop -c 1 --type schedule").out, "channel 1: ordered mode 0, off\n");
    EXPECT_EQ(modes(1).at("mode"), 0);
    EXPECT_EQ(Run("record start -c 1 --type schedule").out, "channel 1: ordered mode 1, by schedule\n");
    EXPECT_EQ(modes(1).at("mode"), 1);
}

TEST_F(CtlTest, Record_Json_HasTheNumbersSent) {
    EXPECT_EQ(json::parse(Run("record stop -c 1-2 --json").out),
              json({{"channels", {1, 2}}, {"type", "manual"}, {"command", 3}, {"switch", 1}}));
}

TEST_F(CtlTest, Record_ChannelThatIsNotThere_IsNoted) {
    EXPECT_THAT(Run("record start -c 9").err, HasSubstr("nothing comes of channel 9"));
}

TEST_F(CtlTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments : {"record", "record begin", "record start -c 0", "record start --type 1",
                                  "record start stop", "reboot now", "poweroff -c 1", "restore 5 --yes"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
