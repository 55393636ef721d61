// Downloads through the exported functions: every frame of a range once, in order, unpaced. Paced playback stands in
// playback_test.cpp, an hour in one piece in long_download_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "played.h"

using played::Collector;
using played::Command;
using played::ExpectStamps;
using played::Got;
using played::PictureTimes;
using played::Span;
using played::TimesOf;
using testing::ElementsAreArray;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new played::Recorder(played::SCENARIO));

class DownloadTest : public played::PlayTest {
protected:
    std::vector<Got> Download(unsigned channel, const Span& range, int speed = 1) {
        Collector& collector = NewCollector();
        EXPECT_NE(Start(channel, range, &collector, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
        Command(Login(), HOSTMGR_PLAYCMD_SPEED, speed);
        EXPECT_TRUE(collector.UntilEnds(1));
        EXPECT_EQ(played::Stop(Login()), 0);
        return collector.All();
    }

    /** All pictures of a channel's history. */
    std::vector<uint64_t> AllPictures(unsigned channel) const {
        std::vector<uint64_t> times;
        for (const Span& span : played::Spans(Login(), channel)) {
            const std::vector<uint64_t> some = PictureTimes(span);
            times.insert(times.end(), some.begin(), some.end());
        }
        return times;
    }
};

std::vector<Got> VideoOf(const std::vector<Got>& all) {
    std::vector<Got> video;
    std::copy_if(all.begin(), all.end(), std::back_inserter(video), [](const Got& got) { return got.Video(); });
    return video;
}

TEST_F(DownloadTest, Download_SeveralRecordings_GivesEveryPictureOnceInOrder) {
    const std::vector<Got> all = Download(1, {played::SINCE, played::UNTIL});
    const std::vector<Got> pictures = VideoOf(all);
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(AllPictures(1)));
    EXPECT_EQ(all.size(), pictures.size() + 1) << "and the end, and no sound";
    EXPECT_TRUE(all.back().end);
    ExpectStamps(pictures, 1, 320, 240);
    ExpectNothingLeft();
}

TEST_F(DownloadTest, Download_WithSound_GivesEveryFrameOfBoth) {
    Command(Login(), HOSTMGR_PLAYCMD_AUDIO, 1);
    const Span recording = Recording(2, 3);
    const std::vector<Got> all = Download(2, recording);
    EXPECT_THAT(TimesOf(VideoOf(all)), ElementsAreArray(PictureTimes(recording)));
    std::vector<Got> sound;
    std::copy_if(all.begin(), all.end(), std::back_inserter(sound), [](const Got& got) { return got.Audio(); });
    EXPECT_THAT(TimesOf(sound), ElementsAreArray(PictureTimes(recording, 1000 / played::SOUNDS)));
}

// Frames come as fast as they can be read, so neither the slowest speed nor a speed of key frames alone matters to
// what is delivered of all frames.
TEST_F(DownloadTest, Download_AtTheSlowestSpeed_IsNotPaced) {
    const Span recording = Recording(1, 0);
    EXPECT_THAT(TimesOf(VideoOf(Download(1, recording, -32))), ElementsAreArray(PictureTimes(recording)));
}

TEST_F(DownloadTest, Download_PlayTime_StaysAsItIs) {
    Download(1, Recording(1, 0));
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT), -1);
}

TEST_F(DownloadTest, Download_SubStream_IsWhole) {
    const Span recording = Recording(1, 2);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
    Command(Login(), HOSTMGR_PLAYCMD_STREAMTYPE, 1, HOSTMGR_STREAM_SUB);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes(recording)));
    ExpectStamps(collector.Pictures(), 1, 160, 120);
}

TEST_F(DownloadTest, Download_TwoChannelsAtOnce_AreBothWhole) {
    Collector& collector = NewCollector();
    for (const unsigned channel : {1U, 2U}) {
        ASSERT_NE(Start(channel, {played::SINCE, played::UNTIL}, &collector, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
    }
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilEnds(2));
    for (const int channel : {1, 2}) {
        EXPECT_THAT(TimesOf(collector.Pictures(channel)), ElementsAreArray(AllPictures(channel))) << channel;
    }
}

// A download beside a play of the same channel by another login: neither takes frames from the other.
TEST_F(DownloadTest, Download_TwoLoginsOneChannel_BothAreWhole) {
    const Span recording = Recording(1, 1);
    Collector& mine = NewCollector();
    ASSERT_NE(Start(1, recording, &mine, HOSTMGR_PLAYMODE_DOWNLOAD), -1);
    Collector others;
    const agent::Session other;
    _tagVexoHostMgrTime from = played::Local(recording.start);
    _tagVexoHostMgrTime to = played::Local(recording.stop);
    const int handle = vexo_soft::vexo_HostMgr_Dev_StartHistoryPlay(other.Login(), 1, 1, &from, &to);
    vexo_soft::vexo_HostMgr_Dev_SetHistoryStreamCallback(other.Login(), handle, Collector::Callback, &others);
    Command(other.Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(mine.UntilEnds(1));
    ASSERT_TRUE(others.UntilEnds(1));
    EXPECT_THAT(TimesOf(mine.Pictures()), ElementsAreArray(PictureTimes(recording)));
    EXPECT_THAT(TimesOf(others.Pictures()), ElementsAreArray(PictureTimes(recording)));
}

}  // namespace
