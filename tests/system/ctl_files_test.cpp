// hostmgrctl files, and the times and channels that it takes as play and download do: table, bars, JSON, exit codes.
// The search itself stands in file_query_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl_recordings.h"

using namespace ctl;  // the tests are all about it
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class CtlFilesTest : public RecordingsTest {};

// ---- files ---------------------------------------------------------------------------------------------------------

TEST_F(CtlFilesTest, Files_Json_IsCleanAndListsEveryRecording) {
    const Outcome outcome = Run("files --json -c 2" + WHOLE);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const json list = json::parse(outcome.out);
    EXPECT_EQ(list.at("from"), "2024-01-05T11:00:00+00:00");
    EXPECT_EQ(list.at("to"), "2024-01-05T12:00:00+00:00");
    const json& channel = list.at("channels").at(0);
    EXPECT_EQ(channel.at("channel"), 2);
    EXPECT_EQ(channel.at("seconds"), 4 * LENGTH);
    ASSERT_EQ(channel.at("files").size(), 4U);
    const json types = {{1}, {2}, {4}, {2, 4}};
    for (size_t i = 0; i < 4; ++i) {
        const json& file = channel.at("files").at(i);
        EXPECT_EQ(file.at("seconds"), LENGTH);
        EXPECT_EQ(InstantOf(file.at("stop")) - InstantOf(file.at("start")), LENGTH);
        EXPECT_EQ(file.at("types"), types.at(i));
        EXPECT_EQ(file.at("info").size(), 2U);
    }
}

TEST_F(CtlFilesTest, Files_Text_FitsAndHasALineForEach) {
    const std::vector<Listed> list = List(1);
    setenv("LC_ALL", "C", 1);
    const Outcome text = Run("files" + WHOLE);
    EXPECT_EQ(text.status, OK) << text.err;
    EXPECT_THAT(text.out, StartsWith("channel 1: 4 recordings, 24 s in all\n"));
    for (const Listed& listed : list) {
        const std::string start = Local(listed.start);
        EXPECT_THAT(text.out, HasSubstr("  " + start.substr(1, start.size() - 2) + " +00:00  6 s "));
    }
    ExpectNarrow(text.out);
}

TEST_F(CtlFilesTest, Files_Bars_StandWhereTheDayIsRecorded) {
    setenv("LC_ALL", "C", 1);
    const Outcome outcome = Run("files --bars -c 1,2 --from 2024-01-05 --to '2024-01-05 23:59:59'");
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    const std::vector<std::string> lines = ctl::Lines(outcome.out);
    std::vector<std::string> bars;
    for (size_t i = 1; i < lines.size(); ++i) {
        if (lines[i - 1].find("  00       03       06") == 0) {
            bars.push_back(lines[i].substr(2));
        }
    }
    ASSERT_EQ(bars.size(), 2U) << outcome.out;
    for (const unsigned channel : {1U, 2U}) {
        std::string expected(72, '.');
        for (const Listed& listed : List(channel)) {
            expected[static_cast<size_t>(listed.start % 86400 / 1200)] = '-';
        }
        EXPECT_EQ(bars[channel - 1], expected) << channel;
    }
    EXPECT_THAT(outcome.out, Not(HasSubstr("number  start")));
}

TEST_F(CtlFilesTest, Files_Type_FindsThoseAlone) {
    EXPECT_EQ(List(1, WHOLE + "--type 1").size(), 1U);
    EXPECT_EQ(List(1, WHOLE + "--type 2").size(), 2U);
    EXPECT_EQ(List(1, WHOLE + "--type '2|4'").size(), 3U);
    EXPECT_EQ(List(1, WHOLE + "--type 2+4").at(0).types, std::vector<unsigned>({2, 4}));
}

TEST_F(CtlFilesTest, Files_NothingRecorded_SaysSo) {
    const Outcome outcome = Run("files --from '2023-01-05 11:00' --to +1h");
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("nothing is recorded from 2023-01-05 11:00:00 to 2023-01-05 12:00:00 +00:00"));
}

TEST_F(CtlFilesTest, Files_UnknownChannel_IsRefused) {
    const Outcome outcome = Run("files -c 9" + WHOLE);
    EXPECT_EQ(outcome.status, REFUSED);
    EXPECT_THAT(outcome.err, HasSubstr("channel 9 failed: does the recorder have that channel?"));
}

// ---- arguments -----------------------------------------------------------------------------------------------------

TEST_F(CtlFilesTest, Arguments_Wrong_AreUsageErrorsThatSayWhatToDo) {
    for (const char* arguments : {"files -c 0",
                                  "files -c 257",
                                  "files -c 2-1",
                                  "files -c 1,,2",
                                  "files -c x",
                                  "files --from soon",
                                  "files --from 25:00",
                                  "files --from 2024-02-30",
                                  "files --from -1w",
                                  "files --from +1h",
                                  "files --from ''",
                                  "files --from now --to -1h",
                                  "files --from '2024-01-05 11:00 +1'",
                                  "files --type 3",
                                  "play -x 33",
                                  "play -x -33",
                                  "play --then pause",
                                  "play --then 1:dance",
                                  "play --then 1:speed=33",
                                  "play --then 1:add=0",
                                  "play --then 1:pause=1",
                                  "play --then 1:seek=never",
                                  "play --then -1:pause",
                                  "play -o picture.jpg",
                                  "play -n 0",
                                  "download",
                                  "download -o picture.jpg",
                                  "download -o x.mkv -S third"}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, USAGE) << arguments << outcome.err;
        EXPECT_THAT(outcome.out, IsEmpty()) << arguments;
        EXPECT_THAT(outcome.err, Not(IsEmpty())) << arguments;
    }
    EXPECT_THAT(FilesThere(), IsEmpty());
}

TEST_F(CtlFilesTest, Times_InAllTheirForms_MeanTheSame) {
    for (const char* from : {"'2024-01-05 11:00'", "'2024-01-05 11:00:00'", "2024-01-05T11:00:00+00:00",
                             "2024-01-05T13:00:00+02:00", "2024-01-05T11:00Z"}) {
        const Outcome outcome = Run(std::string("files --json --to '2024-01-05 12:00' --from ") + from);
        EXPECT_EQ(outcome.status, OK) << from << outcome.err;
        EXPECT_EQ(json::parse(outcome.out).at("from"), "2024-01-05T11:00:00+00:00") << from;
    }
    EXPECT_EQ(json::parse(Run("files --json --from '2024-01-05 11:00' --to +1h30m").out).at("to"),
              "2024-01-05T12:30:00+00:00");
    EXPECT_THAT(Run("files --from yesterday --to 'today 00:00'").err, HasSubstr(" 00:00:00 +00:00"));
}

TEST_F(CtlFilesTest, Times_ThatTheClockLeavesOut_AreRefused) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    const Outcome outcome = Run("files --from '2024-03-31 02:30'");
    EXPECT_EQ(outcome.status, USAGE);
    EXPECT_THAT(outcome.err, HasSubstr("is a time that does not exist"));
}

}  // namespace
