// hostmgrctl alarms and alarm-status: begin and end of what the scenario plans, repetitions, JSON, commands that are
// run. The library's own alarms stand in alarm_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_support.h"

using ctl::CtlTest;
using ctl::Outcome;
using nlohmann::json;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

enum ExitStatus { OK = 0, REFUSED = 1, USAGE = 2, NO_DATA = 3 };

const std::string PATIENT = " -s 120 ";  // only a test that fails waits so long
constexpr char MOTION[] = R"({"channels": 3, "events": [{"kind": "motion", "channel": 2, "at": 1, "for": 3}]})";
constexpr char MOTION_FOR_GOOD[] = R"({"channels": 3, "events": [{"kind": "motion", "channel": 2, "for": 0}]})";
constexpr char ALL_KINDS[] = R"({"channels": 3, "disks": [{"megabytes": 2000}, {"megabytes": 2000}], "events": [
    {"kind": "motion", "channel": 2, "for": 0}, {"kind": "video loss", "channel": 3, "for": 0},
    {"kind": "shelter", "channel": 1, "for": 0}, {"kind": "disk full", "disk": 1, "for": 0},
    {"kind": "disk error", "disk": 2, "for": 0}, {"kind": "input", "input": 4, "for": 0},
    {"kind": "network lost", "for": 0}, {"kind": "address conflict", "for": 0}]})";

class CtlAlarmsTest : public CtlTest {
protected:
    /** The lines of standard output, each an object. */
    static std::vector<json> Objects(const Outcome& outcome) {
        std::vector<json> objects;
        for (const std::string& line : ctl::Lines(outcome.out)) {
            objects.push_back(json::parse(line));
        }
        return objects;
    }
};

std::string Words(const json& alarm) {
    const std::string type = alarm.at("type");
    return alarm.at("place").is_null() ? type
                                       : type + ", " + alarm.at("place").get<std::string>() + " " +
                                             std::to_string(alarm.at("number").get<unsigned>());
}

// ---- begin and end -------------------------------------------------------------------------------------------------

TEST_F(CtlAlarmsTest, Alarm_OfTheScenario_IsToldWithItsBeginAndItsEnd) {
    UseScenario(MOTION);
    const Outcome outcome = Run("alarms --json -n 2" + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<json> alarms = Objects(outcome);
    ASSERT_EQ(alarms.size(), 2U);
    EXPECT_EQ(alarms[0].at("event"), "begin");
    EXPECT_EQ(alarms[1].at("event"), "end");
    for (const json& alarm : alarms) {
        EXPECT_EQ(Words(alarm), "motion, channel 2");
        EXPECT_EQ(alarm.at("since"), alarms[0].at("time"));
        EXPECT_EQ(alarm.at("raw"), json({{"type", 1}, {"channel", 2}, {"state", 1}}));
    }
    EXPECT_EQ(alarms[0].at("seconds"), 0);
    EXPECT_GE(alarms[1].at("seconds").get<int>(), 1) << "it lasted three seconds and was told each second";
    EXPECT_GT(alarms[1].at("time").get<std::string>(), alarms[1].at("last").get<std::string>());
}

TEST_F(CtlAlarmsTest, Text_HasTimeWithOffsetAndFits) {
    UseScenario(MOTION);
    setenv("TZ", "CET-1", 1);
    const Outcome outcome = Run("alarms -n 2" + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<std::string> lines = ctl::Lines(outcome.out);
    ASSERT_EQ(lines.size(), 2U);
    const std::string time = "^20..-..-.. ..:..:.. \\+01:00  ";
    EXPECT_THAT(lines[0], ContainsRegex(time + "begin   motion            channel 2$"));
    EXPECT_THAT(lines[1], ContainsRegex(time + "end     motion            channel 2   after [0-9]+ s$"));
    EXPECT_LE(lines[1].size(), 80U);
}

TEST_F(CtlAlarmsTest, Every_Repetition_IsToldWhenAskedFor) {
    UseScenario(MOTION_FOR_GOOD);
    const Outcome outcome = Run("alarms --every --json -n 3 --silence 60" + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    std::vector<std::string> events;
    for (const json& alarm : Objects(outcome)) {
        events.push_back(alarm.at("event"));
    }
    EXPECT_THAT(events, ElementsAre("begin", "active", "active"));
}

TEST_F(CtlAlarmsTest, Repetitions_AreNotToldUnasked) {
    UseScenario(MOTION_FOR_GOOD);
    const Outcome outcome = Run("alarms -s 3 --silence 60");
    EXPECT_EQ(outcome.status, OK);
    EXPECT_EQ(ctl::Lines(outcome.out).size(), 1U) << outcome.out;
}

TEST_F(CtlAlarmsTest, Kinds_AllOfThem_HaveTheirWords) {
    UseScenario(ALL_KINDS);
    const Outcome outcome = Run("alarms --json -n 8 --silence 60" + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    std::vector<std::string> words;
    for (const json& alarm : Objects(outcome)) {
        words.push_back(Words(alarm));
    }
    EXPECT_THAT(words, UnorderedElementsAre("motion, channel 2", "video loss, channel 3", "shelter, channel 1",
                                            "disk full, disk 1", "disk error, disk 2", "input, input 4", "network lost",
                                            "address conflict"));
}

TEST_F(CtlAlarmsTest, NoAlarm_InThatTime_IsNoData) {
    const Outcome outcome = Run("alarms -s 0.5");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("no alarm came for 0.5 seconds"));
}

TEST_F(CtlAlarmsTest, Line_IsThereAtOnceAndAnInterruptEndsWell) {
    UseScenario(MOTION_FOR_GOOD);
    const Outcome outcome = Run("alarms --json --exec 'cp stdout.txt seen.txt; kill -TERM $PPID'" + PATIENT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(Objects(outcome).size(), 1U);
    EXPECT_EQ(ctl::Contents(At("seen.txt")), outcome.out) << "while the tool still ran";
}

// ---- a command for each --------------------------------------------------------------------------------------------

TEST_F(CtlAlarmsTest, Exec_GetsTheAlarmInVariablesAndAsJson) {
    UseScenario(MOTION);
    const Outcome outcome = Run("alarms --json -n 2" + PATIENT +
                                "--exec 'cat >>seen.json; echo \"$HOSTMGR_ALARM_EVENT|$HOSTMGR_ALARM_TYPE|"
                                "$HOSTMGR_ALARM_PLACE|$HOSTMGR_ALARM_NUMBER\" >>seen.txt; echo noise'");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(ctl::Contents(At("seen.txt")), "begin|motion|channel|2\nend|motion|channel|2\n");
    EXPECT_EQ(ctl::Contents(At("seen.json")), outcome.out);
    EXPECT_EQ(Objects(outcome).size(), 2U) << "the command's output is kept apart";
    EXPECT_THAT(outcome.err, HasSubstr("noise\nnoise\n"));
}

TEST_F(CtlAlarmsTest, Exec_ThatFails_IsToldAndTheAlarmsGoOn) {
    UseScenario(MOTION);
    const Outcome outcome = Run("alarms --json -n 2 --exec 'exit 3'" + PATIENT);
    EXPECT_EQ(outcome.status, OK);
    EXPECT_EQ(Objects(outcome).size(), 2U);
    EXPECT_THAT(outcome.err, HasSubstr("the command of --exec ended with status 3"));
}

// ---- status --------------------------------------------------------------------------------------------------------

TEST_F(CtlAlarmsTest, Status_Json_HasWordsAndTheRecordersOwnNumbers) {
    UseScenario(ALL_KINDS);
    const Outcome outcome = Run("alarm-status --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    std::vector<std::string> words;
    const json status = json::parse(outcome.out);
    for (const json& alarm : status.at("alarms")) {
        words.push_back(Words(alarm));
        if (alarm.at("type") == "motion") {
            EXPECT_EQ(alarm.at("raw"), json({{"type", 3}, {"state", 1}, {"channel", 1}}));
        }
    }
    // The list has no type for inputs, and carries no network events.
    EXPECT_THAT(words, UnorderedElementsAre("motion, channel 2", "video loss, channel 3", "shelter, channel 1",
                                            "disk full, disk 1", "disk error, disk 2", "other, number 3", "not told",
                                            "not told"));
}

TEST_F(CtlAlarmsTest, Status_Table_FitsAndHasALineForEach) {
    UseScenario(MOTION_FOR_GOOD);
    const Outcome outcome = Run("alarm-status");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, ContainsRegex("^1 alarm is active, 20..-"));
    EXPECT_THAT(outcome.out, HasSubstr("\n  motion            channel 2     3, 1\n"));
    for (const std::string& line : ctl::Lines(outcome.out)) {
        EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST_F(CtlAlarmsTest, Status_NothingActive_SaysSoAndIsNoError) {
    const Outcome text = Run("alarm-status");
    EXPECT_EQ(text.status, OK);
    EXPECT_THAT(text.out, HasSubstr("no alarm is active, or "));
    EXPECT_THAT(json::parse(Run("alarm-status --json").out).at("alarms"), IsEmpty());
}

TEST_F(CtlAlarmsTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments : {"alarms -s -1", "alarms -n 0", "alarms --silence 1", "alarms extra",
                                  "alarm-status extra", "alarm-status -n 1"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
