// hostmgrctl capture: tasks of every kind, by what their pictures show and by what is said of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ctl_recordings.h"
#include "ctl_running.h"
#include "still_picture.h"

using namespace ctl;  // the tests are all about it
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

std::string Scenario(const std::string& more = "") {
    return R"({"cameras": [{"main": {"width": 320, "height": 240}}, {"main": {"width": 320, "height": 240}}],
               "recordings": {"live": "off", "history": {"segments": 0}})" +
           more + "}";
}

class CtlCaptureTest : public CtlTest {
protected:
    CtlCaptureTest() {
        setenv("TZ", "UTC", 1);
        tzset();
        UseScenario(Scenario());
    }

    static bool Panel(const std::string& arguments) {
        return system(("'" RECORDERCTL "' " + arguments + " >/dev/null 2>&1").c_str()) == 0;
    }

    /** Files of the recorder's own whose name begins so. */
    static size_t FilesOfRecorder(const std::string& beginning) {
        const auto folder = std::filesystem::path(getenv("RECORDER_HOME")) / "disk-1/host_pic/agentsh_capture";
        std::error_code error;
        size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            count += entry.path().filename().string().rfind(beginning, 0) == 0 ? 1 : 0;
        }
        return count;
    }
};

/** The lines of a run, by what they tell. */
struct Events {
    std::vector<json> pictures;
    std::vector<json> alarms;
    json end;

    explicit Events(const std::string& out) {
        for (const std::string& line : Lines(out)) {
            const json event = json::parse(line);
            if (event.at("event") == "picture") {
                pictures.push_back(event);
            } else if (event.at("event") == "alarm") {
                alarms.push_back(event);
            } else {
                end = event;
            }
        }
    }
};

simulator::Stamp StampOf(const std::filesystem::path& path) {
    const auto picture = still::Decode(Contents(path));
    EXPECT_NE(picture, nullptr) << path;
    return picture != nullptr ? still::StampOf(*picture) : simulator::Stamp();
}

// ---- each second and daily -----------------------------------------------------------------------------------------

TEST_F(CtlCaptureTest, Second_Json_HasALineForEachPictureAndAnEnd) {
    const Outcome outcome = Run("capture -n 3 --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.pictures.size(), 3U);
    for (size_t i = 0; i < 3; ++i) {
        const json& picture = events.pictures[i];
        EXPECT_EQ(picture.at("channel"), 1);
        EXPECT_EQ(picture.at("stream"), "main");
        EXPECT_EQ(picture.at("task"), "second");
        EXPECT_EQ(picture.at("index"), 0);
        EXPECT_EQ(picture.at("alarm_time"), nullptr);
        EXPECT_EQ(picture.at("kept"), nullptr);
        EXPECT_GT(picture.at("bytes"), 1000);
        EXPECT_THAT(picture.at("path").get<std::string>(), HasSubstr("/RT_CH0_"));
        EXPECT_TRUE(i == 0 || InstantOf(events.pictures[i - 1].at("time")) < InstantOf(picture.at("time")));
    }
    const json end = {{"event", "end"}, {"pictures", 3},    {"missed", 0},
                      {"alarms", 0},    {"stopped", false}, {"kept", json::array()}};
    EXPECT_EQ(events.end, end);
    EXPECT_EQ(FilesOfRecorder("RT_"), 0U) << "they went with the task";
    EXPECT_THAT(outcome.err, IsEmpty()) << "nothing is left with the recorder";
}

TEST_F(CtlCaptureTest, Keep_HasTheChannelsOwnPicturesOfTheirSeconds) {
    const Outcome outcome = Run("capture -c 1,2 -S sub -n 4 --keep pictures/of/today --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.pictures.size(), 4U);
    std::vector<unsigned> seen;
    for (const json& picture : events.pictures) {
        const simulator::Stamp stamp = StampOf(At(picture.at("kept")));
        EXPECT_EQ(stamp.channel, picture.at("channel"));
        EXPECT_GE(static_cast<time_t>(stamp.milliseconds / 1000), InstantOf(picture.at("time")));
        EXPECT_EQ(std::filesystem::file_size(At(picture.at("kept"))), picture.at("bytes"));
        EXPECT_EQ(picture.at("stream"), "sub");
        seen.push_back(stamp.channel);
    }
    EXPECT_THAT(seen, testing::Contains(1U));
    EXPECT_THAT(seen, testing::Contains(2U));
    ASSERT_EQ(events.end.at("kept").size(), 4U);
    for (const json& kept : events.end.at("kept")) {
        EXPECT_TRUE(std::filesystem::exists(At(kept.at("path")))) << kept;
    }
}

TEST_F(CtlCaptureTest, Daily_Comes_AroundItsTime) {
    time_t soon = time(nullptr) + 4;
    struct tm local = {};
    char text[16];
    strftime(text, sizeof(text), "%H:%M:%S", localtime_r(&soon, &local));
    const Outcome outcome = Run(std::string("capture --daily ") + text + " -s 8 --json");
    if (outcome.status == NO_DATA) {
        GTEST_FAIL() << "nine seconds passed before the recorder was up: " << outcome.err;
    }
    const Events events(outcome.out);
    ASSERT_FALSE(events.pictures.empty());
    for (const json& picture : events.pictures) {
        EXPECT_EQ(picture.at("task"), "daily");
        EXPECT_THAT(picture.at("path").get<std::string>(), HasSubstr("/OT_CH0_"));
        EXPECT_LE(std::abs(InstantOf(picture.at("time")) - soon), 4);
    }
    EXPECT_EQ(Run("capture --daily 00:00 --second -n 1 --json").status, OK) << "kinds go together";
}

TEST_F(CtlCaptureTest, Text_HasTimeChannelIndexSizeAgeAndPath) {
    const Outcome outcome = Run("capture -c 2 -n 2 --keep kept");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<std::string> lines = Lines(outcome.out);
    ASSERT_EQ(lines.size(), 8U) << outcome.out;
    EXPECT_THAT(lines[0],
                testing::MatchesRegex("20..-..-.. ..:..:.. \\+00:00  channel 2   second index 0   [0-9.]+ kB +"
                                      "age [0-9]+ s"));
    EXPECT_THAT(lines[1], testing::MatchesRegex("  kept/channel2-second-20......-.......jpg"));
    EXPECT_EQ(lines[4], "2 pictures");
    EXPECT_EQ(lines[5], "kept in kept: 2");
    ExpectNarrow(outcome.out);
}

// ---- around alarms -------------------------------------------------------------------------------------------------

TEST_F(CtlCaptureTest, Alarm_OfTheScenario_BringsItsChannelsPictures) {
    UseScenario(Scenario(R"(, "events": [{"kind": "motion", "channel": 2, "at": 3, "for": 0}])"));
    const Outcome outcome = Run("capture -c 1,2 --alarm --before 600 --after 600 -n 4 --keep kept --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.alarms.size(), 1U);
    EXPECT_EQ(events.alarms[0].at("type"), "motion");
    EXPECT_EQ(events.alarms[0].at("where"), "channel 2");
    ASSERT_EQ(events.pictures.size(), 4U);
    for (unsigned i = 0; i < 4; ++i) {
        const json& picture = events.pictures[i];
        EXPECT_EQ(picture.at("task"), "alarm");
        EXPECT_EQ(picture.at("channel"), 2);
        EXPECT_EQ(picture.at("index"), i);
        EXPECT_EQ(picture.at("alarm_time"), events.pictures[0].at("alarm_time"));
        EXPECT_EQ(StampOf(At(picture.at("kept"))).channel, 2U);
    }
}

TEST_F(CtlCaptureTest, Alarm_HasPicturesFromBeforeItAndAfterIt) {
    Running capture(At("."), {"capture", "--alarm", "--before", "600", "--after", "600", "--json"});
    ASSERT_TRUE(capture.WaitUntil([] { return FilesOfRecorder("AC_CH0_") >= 3; }));
    EXPECT_THAT(capture.Out(), IsEmpty()) << "nothing is reported before an alarm";
    ASSERT_TRUE(Panel("shelter 1 on"));
    const auto pictures = [&] { return Lines(capture.Out()).size(); };
    ASSERT_TRUE(capture.WaitUntil([&] { return pictures() >= 3; }));
    const size_t before = pictures();
    ASSERT_TRUE(capture.WaitUntil([&] { return pictures() >= before + 2; }));
    const Outcome outcome = capture.End(SIGINT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.alarms.size(), 1U);
    EXPECT_EQ(events.alarms[0].at("type"), "shelter");
    const time_t alarm = InstantOf(events.pictures.front().at("alarm_time"));
    EXPECT_LT(InstantOf(events.pictures.front().at("time")), alarm);
    EXPECT_GE(InstantOf(events.pictures.back().at("time")), alarm);
    EXPECT_EQ(events.end.at("alarms"), 1);
    EXPECT_EQ(events.end.at("stopped"), true);
}

TEST_F(CtlCaptureTest, Count_HoldsWhenManyComeAtOnce) {
    Running capture(At("."), {"capture", "--alarm", "--before", "600", "--after", "600", "-n", "2", "--json"});
    ASSERT_TRUE(capture.WaitUntil([] { return FilesOfRecorder("AC_CH0_") >= 4; }));
    ASSERT_TRUE(Panel("motion 1 on"));
    const Outcome outcome = capture.End();
    EXPECT_EQ(Events(outcome.out).pictures.size(), 2U) << outcome.err;
}

TEST_F(CtlCaptureTest, Alarm_WithoutBefore_HasPicturesFromItsBeginningOn) {
    Running capture(At("."), {"capture", "--alarm", "--before", "0", "--after", "600", "-n", "2", "--json"});
    ASSERT_TRUE(capture.WaitUntil([] { return FilesOfRecorder("AC_CH0_") >= 3; }));
    ASSERT_TRUE(Panel("motion 1 on"));
    const Outcome outcome = capture.End();
    const Events events(outcome.out);
    ASSERT_EQ(events.pictures.size(), 2U) << outcome.err;
    for (const json& picture : events.pictures) {
        EXPECT_GE(InstantOf(picture.at("time")), InstantOf(picture.at("alarm_time")));
    }
}

TEST_F(CtlCaptureTest, Alarm_IsOverWhenItsTimeHasPassed) {
    const Outcome outcome = Run("capture --alarm --trigger 0 --before 0 --after 1 -s 6 --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    for (const json& picture : events.pictures) {
        EXPECT_LE(InstantOf(picture.at("time")), InstantOf(picture.at("alarm_time")) + 1);
    }
}

TEST_F(CtlCaptureTest, Interval_LiesBetweenThePictures) {
    const Outcome outcome = Run("capture --alarm --trigger 0 --interval 3 --after 600 -n 3 --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    for (size_t i = 1; i < events.pictures.size(); ++i) {
        EXPECT_GE(InstantOf(events.pictures[i].at("time")), InstantOf(events.pictures[i - 1].at("time")) + 3);
    }
}

TEST_F(CtlCaptureTest, Alarm_NotAskedFor_BringsNothing) {
    UseScenario(Scenario(R"(, "events": [{"kind": "motion", "channel": 2, "for": 0},
                                         {"kind": "shelter", "channel": 1, "for": 0}])"));
    const Outcome outcome = Run("capture -c 1 --alarm --on motion,input -s 5 --json");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("no alarm came"));
    EXPECT_TRUE(Events(outcome.out).alarms.empty());
}

TEST_F(CtlCaptureTest, Alarm_OfNoChannel_ConcernsEveryTask) {
    UseScenario(Scenario(R"(, "events": [{"kind": "network lost", "for": 0}])"));
    const Outcome outcome = Run("capture -c 1,2 --alarm --on network --after 600 -n 4 --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.alarms.size(), 1U);
    EXPECT_EQ(events.alarms[0].at("type"), "network lost");
    std::vector<unsigned> channels;
    for (const json& picture : events.pictures) {
        channels.push_back(picture.at("channel"));
    }
    EXPECT_THAT(channels, testing::Contains(1U));
    EXPECT_THAT(channels, testing::Contains(2U));
}

TEST_F(CtlCaptureTest, Trigger_ByHand_IsAnAlarm) {
    const Outcome outcome = Run("capture --alarm --trigger 1 --after 600 -n 2 --json");
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.alarms.size(), 1U);
    EXPECT_EQ(events.alarms[0].at("type"), "by request");
    EXPECT_EQ(events.pictures.back().at("index"), 1);
}

// ---- the end, and failures -----------------------------------------------------------------------------------------

TEST_F(CtlCaptureTest, Interrupted_StopsItsTasksAndTellsTheEnd) {
    Running capture(At("."), {"capture", "--json"});
    ASSERT_TRUE(capture.WaitFor("\"picture\""));
    EXPECT_GE(FilesOfRecorder("RT_"), 1U);
    const Outcome outcome = capture.End(SIGINT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_EQ(Events(outcome.out).end.at("stopped"), true);
    EXPECT_EQ(FilesOfRecorder("RT_"), 0U);
    EXPECT_THAT(outcome.err, IsEmpty()) << "nothing is left with the recorder";
}

TEST_F(CtlCaptureTest, PictureThatCannotBeTaken_IsCountedAsMissed) {
    UseScenario(Scenario(R"(, "faults": [{"operation": "vexo_model_capture", "times": 100}])"));
    const Outcome outcome = Run("capture --alarm --trigger 0 --after 600 -n 2 --json --keep kept");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const Events events(outcome.out);
    ASSERT_EQ(events.pictures.size(), 2U);
    EXPECT_EQ(events.pictures[0].at("bytes"), 0);
    EXPECT_EQ(events.pictures[0].at("kept"), nullptr);
    EXPECT_EQ(events.end.at("missed"), 2);
    EXPECT_TRUE(events.end.at("kept").empty());
}

TEST_F(CtlCaptureTest, NoDisk_NoPicture_SaysWhatToLookFor) {
    UseScenario(Scenario(R"(, "disks": [])"));
    const Outcome outcome = Run("capture -s 3");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("no picture came of channel 1: does the recorder have the channel, and a disk"));
}

TEST_F(CtlCaptureTest, Keep_WhereNothingCanBeWritten_SaysSo) {
    std::ofstream(At("file")) << "no folder";
    for (const std::string folder : {"file", "/proc/pictures"}) {
        const Outcome outcome = Run("capture -n 1 --keep " + folder);
        EXPECT_EQ(outcome.status, NO_OUTPUT) << folder;
        EXPECT_THAT(outcome.err, HasSubstr("cannot write " + folder + ": ")) << folder;
    }
}

TEST_F(CtlCaptureTest, NobodyReadsAnyMore_Ends) {
    const Outcome outcome = Run("capture --json", ">/dev/full");
    EXPECT_EQ(outcome.status, NO_OUTPUT);
    EXPECT_THAT(outcome.err, HasSubstr("cannot write to standard output"));
    EXPECT_EQ(FilesOfRecorder("RT_"), 0U);
}

TEST_F(CtlCaptureTest, Arguments_Wrong_AreUsageErrors) {
    for (const char* arguments :
         {"capture -c 0", "capture -c 257", "capture -S third", "capture --daily 24:00", "capture --daily 12:60",
          "capture --daily 12", "capture --daily 12:30:60", "capture --daily 12:30:15x", "capture --daily noon",
          "capture --alarm --on fire", "capture --alarm --on ''", "capture --alarm --interval 0",
          "capture --alarm --before -1", "capture --trigger 3", "capture -n 0", "capture -s -1", "capture extra",
          "capture -c 1-256 --second --daily 12:30 --alarm"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
}

}  // namespace
