// hostmgrctl log: the recorder's entries as they come, for people and for programs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_recordings.h"
#include "ctl_running.h"

using namespace ctl;  // the tests are all about it
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

class CtlLogTest : public CtlTest {
protected:
    CtlLogTest() {
        setenv("TZ", "CET-1", 1);
        UseScenario(R"({"channels": 2, "recordings": {"live": "off", "history": {"segments": 0}}})");
    }

    static bool Panel(const std::string& arguments) {
        return system(("'" RECORDERCTL "' " + arguments + " >/dev/null 2>&1").c_str()) == 0;
    }

    /** The first entry of a log that begins while something comes and goes at the recorder's front panel. */
    std::string EntryOf(const std::string& begin, const std::string& end) const {
        Running log(At("."), {"log", "--json", "--count", "1"});
        EXPECT_TRUE(log.WaitUntil([&] {
            Panel(begin);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));  // the recorder looks ten times a second
            Panel(end);
            return !log.Out().empty();
        }));
        const Outcome outcome = log.End();
        EXPECT_EQ(outcome.status, OK) << outcome.err;
        EXPECT_EQ(Lines(outcome.out).size(), 1U) << outcome.out;
        return outcome.out;
    }
};

TEST_F(CtlLogTest, Log_OfALogin_HasItsBeginAndItsEnd) {
    const time_t before = time(nullptr);
    const Outcome outcome = Run("log --login --seconds 1 --json");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<std::string> lines = Lines(outcome.out);
    ASSERT_EQ(lines.size(), 2U) << outcome.out;
    const json login = json::parse(lines[0]);
    EXPECT_EQ(login.at("type"), 1);
    EXPECT_GE(login.at("login"), 1);
    EXPECT_EQ(login.at("user"), "admin");
    EXPECT_EQ(login.at("text"), "admin logged in from 127.0.0.1");
    EXPECT_THAT(login.at("time").get<std::string>(), HasSubstr("+01:00"));
    EXPECT_GE(InstantOf(login.at("time")), before);
    EXPECT_LE(InstantOf(login.at("time")), time(nullptr));
    const json logout = json::parse(lines[1]);
    EXPECT_EQ(logout.at("type"), 2);
    EXPECT_EQ(logout.at("login"), login.at("login"));
}

TEST_F(CtlLogTest, Log_Text_FitsAndCarriesTimeTypeTextAndUser) {
    const Outcome outcome = Run("log -u admin -p admin12345 -a 10.1.2.3 -n 1");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, MatchesRegex("20..-..-.. ..:..:.. \\+01:00  type 1   admin logged in from 10.1.2.3 "
                                          "\\(admin\\)\n"));
    ExpectNarrow(outcome.out);
}

TEST_F(CtlLogTest, Log_Events_ComeWhileTheyHappen) {
    const json motion = json::parse(EntryOf("motion 2 on", "motion 2 off"));
    EXPECT_THAT(motion.at("text").get<std::string>(), StartsWith("motion, channel 2"));
    EXPECT_EQ(motion.at("type"), 5);
    EXPECT_EQ(motion.at("login"), 0);
    EXPECT_EQ(motion.at("user"), "");
    const json disk = json::parse(EntryOf("disk 1 error", "disk 1 ok"));
    EXPECT_THAT(disk.at("text").get<std::string>(), StartsWith("disk error, disk 1"));
    EXPECT_EQ(disk.at("type"), 6);
}

TEST_F(CtlLogTest, Log_NothingHappens_IsNoData) {
    const Outcome outcome = Run("log --seconds 0.5");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("no entry came in 0.5 seconds"));
}

TEST_F(CtlLogTest, Log_Interrupted_EndsByItselfAndLogsOut) {
    Running log(At("."), {"log", "--login"});
    ASSERT_TRUE(log.WaitFor("logged in"));
    const Outcome outcome = log.End(SIGINT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("admin logged out"));
    EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(CtlLogTest, Log_LoginRefused_SaysSo) {
    const Outcome outcome = Run("log -u admin -p wrong");
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, HasSubstr("login of user admin refused"));
}

TEST_F(CtlLogTest, Log_NobodyReadsAnyMore_Ends) {
    const Outcome outcome = Run("log --login", ">/dev/full");
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write to standard output"));
}

TEST_F(CtlLogTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments : {"log -s -1", "log -s x", "log -n 0", "log -n x", "log extra"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
