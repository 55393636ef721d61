// Recordings in summer time, in a time zone that has it: searches and reported times are right, ranges and seeks of a
// play are an hour late, for they are read by the season of 1 January 1970. Callers rely on both.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "played.h"

using played::Collector;
using played::Command;
using played::PictureTimes;
using played::Span;
using played::TimesOf;
using testing::ElementsAreArray;

namespace {

constexpr time_t UNTIL = 1720173600;  // 2024-07-05 12:00:00, summer time
constexpr time_t SINCE = UNTIL - 3600;
constexpr time_t HOUR = 3600;

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new played::Recorder(R"json({
    "name": "summer test",
    "cameras": [{"main": {"width": 320, "height": 240}, "sub": {"width": 160, "height": 120}}],
    "recordings": {
        "live": "off",
        "history": {"hours": 1, "segments": 4, "seconds": 6, "fps": 5, "gop": 5, "width": 320,
                    "until": "2024-07-05 12:00:00"}
    }
})json"));

class SummerPlayTest : public played::PlayTest {
protected:
    std::vector<Span> Recordings() const { return played::Spans(Login(), 1, SINCE, UNTIL); }
};

TEST_F(SummerPlayTest, Query_FindsTheRecordingsAtTheirCalendarTimes) {
    const std::vector<Span> recordings = Recordings();
    ASSERT_EQ(recordings.size(), played::SEGMENTS);
    EXPECT_GE(recordings.front().start, SINCE);
    EXPECT_LE(recordings.back().stop, UNTIL);
}

TEST_F(SummerPlayTest, Play_Range_IsAnHourLate) {
    const Span recording = Recordings().at(1);
    Collector& late = NewCollector();
    ASSERT_NE(Start(1, recording, &late, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(late.UntilEnds(1));
    EXPECT_TRUE(late.Pictures().empty()) << "an hour after this recording";
    EXPECT_EQ(played::Stop(Login()), 0);
    // The search for the range is in time, so it must reach the recording itself.
    Collector& right = NewCollector();
    ASSERT_NE(Start(1, {recording.start - HOUR, recording.stop}, &right, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(right.UntilEnds(1));
    const std::vector<uint64_t> times = TimesOf(right.Pictures());
    const std::vector<uint64_t> expected = PictureTimes(recording);
    ASSERT_GE(times.size(), expected.size());
    EXPECT_THAT(std::vector<uint64_t>(times.end() - static_cast<long>(expected.size()), times.end()),
                ElementsAreArray(expected));
    EXPECT_EQ(played::Stop(Login()), 0);
}

TEST_F(SummerPlayTest, Seek_IsAnHourLate_AndThePlayTimeRight) {
    const Span recording = Recordings().at(1);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, {recording.start - HOUR, recording.stop}, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, -32);
    ASSERT_TRUE(collector.UntilPictures(1));
    collector.Forget();
    played::Seek(Login(), recording.start + 3 - HOUR);
    ASSERT_TRUE(collector.UntilPictures(1));
    EXPECT_EQ(collector.Pictures()[0].frame.Milliseconds(), (recording.start + 3) * 1000ULL);
    EXPECT_TRUE(
        live::Eventually([&] { return played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT) == recording.start + 3; }));
}

}  // namespace
