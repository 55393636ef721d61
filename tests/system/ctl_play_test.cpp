// hostmgrctl play: speeds, directions, steps and channels, and files of what was played. The library's own playback
// stands in playback_test.cpp and reader_playback_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl_recordings.h"

using namespace ctl;  // the tests are all about it
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class CtlPlayTest : public RecordingsTest {};

TEST_F(CtlPlayTest, Play_File_ShowsWhatWasPlayedAtThatSpeed) {
    const Listed recording = List(1).at(1);
    const Outcome outcome = Run("play --json -x 4 -o file.mkv" + RangeOf(recording.start, recording.stop) + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(Stamps(At("file.mkv")).times, ElementsAreArray(PictureTimes(recording.start, recording.stop)));
    const Track video = MediaView(At("file.mkv")).Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_NEAR(video.times.back() - video.times.front(), (LENGTH - 0.2) / 4, 0.05);
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("way"), "callback");
    EXPECT_EQ(summary.at("speed"), 4);
    EXPECT_EQ(InstantOf(summary.at("play_time")), recording.stop - 1);
    EXPECT_EQ(summary.at("channels").at(0).at("video").at("frames"), LENGTH * FPS);
}

TEST_F(CtlPlayTest, Play_Reverse_WritesTheKeyFramesBackwards) {
    const Listed recording = List(1).at(2);
    ASSERT_EQ(Run("play -x 4 --reverse -o file.mp4" + RangeOf(recording.start, recording.stop) + PATIENT).status, OK);
    std::vector<uint64_t> expected = PictureTimes(recording.start, recording.stop, 1000);
    std::reverse(expected.begin(), expected.end());
    EXPECT_THAT(Stamps(At("file.mp4")).times, ElementsAreArray(expected));
    const Track video = MediaView(At("file.mp4")).Only(AVMEDIA_TYPE_VIDEO);
    EXPECT_NEAR(video.times.back() - video.times.front(), (LENGTH - 1) / 4.0, 0.05);
}

TEST_F(CtlPlayTest, Play_SeekInSummerTime_GoesThere) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    UseScenario(Scenario("2024-07-05 12:00:00"));
    const std::string whole = " --from '2024-07-05 11:00' --to '2024-07-05 12:00' ";
    const Listed last = List(1, whole).at(3);
    const std::string seek = "'0:seek=" + Local(last.start + 2).substr(1);
    const Outcome outcome =
        Run("play --json -x 8 --then " + seek + " --then 0:pause --then 0.1:resume" + whole + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    const json& video = summary.at("channels").at(0).at("video");
    EXPECT_LE(video.at("frames").get<unsigned>(), LENGTH - 2 + 2) << "key frames from there on, and some before";
    EXPECT_GE(video.at("frames").get<unsigned>(), LENGTH - 2);
    EXPECT_EQ(InstantOf(video.at("last")), last.stop - 1);
}

TEST_F(CtlPlayTest, Play_Then_SeeksPausesAndChangesTheSpeed) {
    const std::vector<Listed> list = List(1);
    const std::string seek = "'0:seek=" + Local(list[3].start).substr(1);
    const Outcome outcome = Run("play --json -x -32 --then " + seek +
                                " --then 0:pause --then 0.1:resume --then 0.2:speed=4" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("speed"), 4);
    const json& video = summary.at("channels").at(0).at("video");
    EXPECT_LE(video.at("frames").get<unsigned>(), LENGTH * FPS + 1) << "the last recording, and one before the seek";
    EXPECT_GE(video.at("frames").get<unsigned>(), LENGTH * FPS);
    EXPECT_EQ(InstantOf(video.at("last")), list[3].stop - 1);
}

TEST_F(CtlPlayTest, Play_Channels_AddedDroppedAndOnTheSubStream) {
    const Outcome outcome =
        Run("play --json -x 4 --then 0:add=2 --then 0:sub=2 --then 0:drop=1 -n 400" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json channels = json::parse(outcome.out).at("channels");
    ASSERT_EQ(channels.size(), 2U);
    EXPECT_LT(channels.at(0).at("video").is_null() ? 0U : channels.at(0).at("video").at("frames").get<unsigned>(), 10U);
    EXPECT_EQ(channels.at(1).at("stream"), "sub");
    EXPECT_EQ(channels.at(1).at("video").at("width"), 160);
    EXPECT_EQ(channels.at(1).at("video").at("frames"), 4 * LENGTH * FPS);
}

TEST_F(CtlPlayTest, Play_Frames_EndsAfterSoMany) {
    const json summary = json::parse(Run("play --json -n 7 -x 4 -c 1,2" + WHOLE + PATIENT).out);
    unsigned frames = 0;
    for (const json& channel : summary.at("channels")) {
        frames += channel.at("video").is_null() ? 0 : channel.at("video").at("frames").get<unsigned>();
    }
    EXPECT_EQ(frames, 7U);
}

TEST_F(CtlPlayTest, Play_Reader_PlaysAllChannelsInStep) {
    const Outcome outcome = Run("play --json --reader -x 8 -c 1,2 -o gate.mkv" + WHOLE + PATIENT);
    ASSERT_EQ(outcome.status, OK) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_EQ(summary.at("way"), "reader");
    for (const json& channel : summary.at("channels")) {
        EXPECT_EQ(channel.at("ended"), true);
        EXPECT_GE(channel.at("video").at("key_frames").get<unsigned>(), 4 * LENGTH);
    }
    EXPECT_THAT(Stamps(At("gate-channel2.mkv")).channels, testing::Each(2U));
}

TEST_F(CtlPlayTest, Play_Text_TellsFramesTimesAndThePlayTime) {
    const Outcome outcome = Run("play -x 32" + WHOLE + PATIENT);
    EXPECT_EQ(outcome.status, OK) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("channel 1, main stream\n  video   24 frames, 24 key frames\n"));
    EXPECT_THAT(outcome.out, HasSubstr("; the play time was 2024-01-05 11:"));
    ExpectNarrow(outcome.out);
}

TEST_F(CtlPlayTest, Play_UnknownChannel_IsRefused) {
    for (const char* way : {"", " --reader"}) {
        const Outcome outcome = Run(std::string("play -c 9") + way + WHOLE);
        EXPECT_EQ(outcome.status, REFUSED) << way;
        EXPECT_THAT(outcome.err, HasSubstr("the recorder does not play channel 9: does it have that channel?"));
        EXPECT_THAT(outcome.err, HasSubstr("the recorder says: "));
    }
}

TEST_F(CtlPlayTest, Play_NothingRecorded_SaysSo) {
    const Outcome outcome = Run("play --from '2023-01-05 11:00' --to +1h" + PATIENT);
    EXPECT_EQ(outcome.status, NO_DATA);
    EXPECT_THAT(outcome.err, HasSubstr("nothing was played from 2023-01-05 11:00:00 to"));
}

}  // namespace
