// Reader playback through the exported functions: the recorder pushes, one callback gets the frames of all channels.
// The recorder's own readers stand in reader_test.cpp and advance_reader_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

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

constexpr time_t SHORT = 2;  // seconds that a range is played in at its own pace

class ReaderPlaybackTest : public played::PlayTest {
protected:
    /** The beginning of a recording. */
    Span Beginning(unsigned channel, size_t index) const {
        const Span recording = Recording(channel, index);
        return {recording.start, recording.start + SHORT};
    }

    std::vector<Got> PlayThrough(unsigned channel, const Span& range) {
        Collector& collector = NewCollector();
        EXPECT_NE(StartReader(channel, range, &collector), -1);
        Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
        EXPECT_TRUE(collector.UntilEnds(1));
        EXPECT_EQ(played::Stop(Login()), 0);
        return collector.All();
    }
};

std::vector<Got> VideoOf(const std::vector<Got>& all) {
    std::vector<Got> video;
    std::copy_if(all.begin(), all.end(), std::back_inserter(video), [](const Got& got) { return got.Video(); });
    return video;
}

// ---- what comes ----------------------------------------------------------------------------------------------------

TEST_F(ReaderPlaybackTest, Play_ARange_GivesEveryFrameOnceInOrderAndItsEnd) {
    const Span range = Beginning(1, 1);
    const std::vector<Got> all = PlayThrough(1, range);
    EXPECT_THAT(TimesOf(VideoOf(all)), ElementsAreArray(PictureTimes(range.start, range.stop)));
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const Got& got) { return got.Audio(); }),
              SHORT * played::SOUNDS + 1)
        << "sound needs no switch, and both ends of the range belong to it";
    ExpectStamps(VideoOf(all), 1, 320, 240);
    for (const Got& got : all) {
        EXPECT_EQ(got.login, Login());
        EXPECT_EQ(got.handle, Login() << 16 | 1);
        EXPECT_EQ(got.channel, 1);
        EXPECT_EQ(got.stream, static_cast<int>(HOSTMGR_STREAM_MAIN));
        EXPECT_EQ(got.length, got.end ? 0 : got.frame.header.data_length + HOSTMGR_FRAME_HEADER_SIZE);
    }
    EXPECT_TRUE(all.back().end);
    ExpectNothingLeft();
}

TEST_F(ReaderPlaybackTest, Channels_Several_ComeInStepByTheirTimes) {
    const Span first = Recording(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, {played::SINCE, played::UNTIL}, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_ADDCHAN, 2);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 5);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 5);
    ASSERT_TRUE(collector.UntilEnds(2));
    const std::vector<Got> pictures = VideoOf(collector.All());
    EXPECT_TRUE(std::any_of(pictures.begin(), pictures.end(), [](const Got& got) { return got.channel == 1; }));
    EXPECT_TRUE(std::any_of(pictures.begin(), pictures.end(), [](const Got& got) { return got.channel == 2; }));
    for (size_t i = 1; i < pictures.size(); ++i) {
        EXPECT_GE(pictures[i].frame.Milliseconds(), pictures[i - 1].frame.Milliseconds()) << i;
        EXPECT_EQ(pictures[i].handle, Login() << 16 | pictures[i].channel);
    }
    EXPECT_GE(pictures.size(), 2 * played::SEGMENTS * played::LENGTH);
    EXPECT_LE(first.start * 1000ULL, pictures.back().frame.Milliseconds());
    ExpectStamps(collector.Pictures(2), 2, 320, 240);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(ReaderPlaybackTest, Speed_FirstCommandOfFive_LeavesAllFrames_TheSecondKeyFrames) {
    const Span range = Beginning(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, range, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 5);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes(range.start, range.stop)));
    collector.Forget();
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 5);
    played::Seek(Login(), range.start);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(VideoOf(collector.All())), ElementsAreArray(PictureTimes(range.start, range.stop, 1000)));
}

TEST_F(ReaderPlaybackTest, Reverse_GivesThePicturesBackwards) {
    const Span range = Beginning(1, 2);
    Command(Login(), HOSTMGR_PLAYCMD_DIRECTION, static_cast<int>(HOSTMGR_PLAYDIR_REVERSE));
    const std::vector<Got> all = PlayThrough(1, range);
    std::vector<uint64_t> expected = PictureTimes(range.start, range.stop);
    std::reverse(expected.begin(), expected.end());
    EXPECT_THAT(TimesOf(VideoOf(all)), ElementsAreArray(expected));
}

TEST_F(ReaderPlaybackTest, StreamType_Sub_IsToldAndShown) {
    const Span range = Beginning(2, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(2, range, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_STREAMTYPE, 2, HOSTMGR_STREAM_SUB);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilEnds(1));
    const std::vector<Got> pictures = collector.Pictures();
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(PictureTimes(range.start, range.stop)));
    ExpectStamps(pictures, 2, 160, 120);
    for (const Got& got : collector.All()) {
        EXPECT_EQ(got.stream, static_cast<int>(HOSTMGR_STREAM_SUB));
    }
}

// ---- commands ------------------------------------------------------------------------------------------------------

TEST_F(ReaderPlaybackTest, Seek_GoesOnFromThere_AlsoAfterTheEnd) {
    const Span recording = Recording(1, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(1));
    for (int turn = 0; turn < 2; ++turn) {
        Command(Login(), HOSTMGR_PLAYCMD_PAUSE, 1);
        played::Seek(Login(), recording.stop - 2);
        EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT), recording.stop - 2);
        collector.Forget();
        Command(Login(), HOSTMGR_PLAYCMD_PAUSE, 0);
        ASSERT_TRUE(collector.UntilEnds(1));
        EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes({recording.stop - 2, recording.stop})))
            << turn;
    }
}

TEST_F(ReaderPlaybackTest, Pause_RefusesFrames_AndNoneIsLost) {
    const Span range = Beginning(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, range, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(2));
    Command(Login(), HOSTMGR_PLAYCMD_PAUSE, 2);  // anything but 0 holds this kind of play
    size_t at_pause = 0;
    {
        Collector others;
        const agent::Session other;
        _tagVexoHostMgrTime from = played::Local(range.start);
        _tagVexoHostMgrTime to = played::Local(range.stop);
        vexo_soft::vexo_HostMgr_Dev_StartHistoryPlayV2(other.Login(), 1, 0, &from, &to, Collector::ReaderCallback,
                                                       &others);
        Command(other.Login(), HOSTMGR_PLAYCMD_SPEED, 1);
        ASSERT_TRUE(others.UntilPictures(1));
        at_pause = collector.All().size();  // a callback that was under way has ended long since
        ASSERT_TRUE(others.UntilEnds(1));
        EXPECT_EQ(played::Stop(other.Login()), 0);
    }
    EXPECT_EQ(collector.All().size(), at_pause);
    Command(Login(), HOSTMGR_PLAYCMD_PAUSE, 0);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes(range.start, range.stop)));
}

TEST_F(ReaderPlaybackTest, PlayTimes_AreTheRangeAndTheLastFrame) {
    const Span range = Beginning(1, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, range, &collector), -1);
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_START), range.start);
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_STOP), range.stop);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT), range.stop);
}

TEST_F(ReaderPlaybackTest, Callback_RefusesAFrame_ItIsOfferedAgain) {
    const Span range = Beginning(1, 0);
    std::atomic<int> refusals{3};
    Collector collector([&](const Got& got) { return got.Video() && refusals-- > 0 ? 1 : 0; });
    ASSERT_NE(StartReader(1, range, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilEnds(1));
    std::vector<uint64_t> expected(3, range.start * 1000ULL);
    const std::vector<uint64_t> whole = PictureTimes(range.start, range.stop);
    expected.insert(expected.end(), whole.begin(), whole.end());
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(expected));
    EXPECT_EQ(played::Stop(Login()), 0);
}

// ---- ends and failures ---------------------------------------------------------------------------------------------

TEST_F(ReaderPlaybackTest, Start_Again_IsRefusedUntilAStop) {
    const Span range = Beginning(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, range, &collector), -1);
    EXPECT_EQ(StartReader(2, range, &collector), -1);
    EXPECT_EQ(played::Stop(Login()), 0);
    EXPECT_NE(StartReader(2, Beginning(2, 0), &collector), -1);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(ReaderPlaybackTest, Start_RecorderFails_StartsNothing) {
    const Span range = Beginning(1, 0);
    for (const char* operation :
         {"vexo_model_new_advance_avss_reader", "vexo_model_inquiry_rec_by_time", "vexo_model_new_avss_reader"}) {
        simulator::control::Fail(operation, 1);
        EXPECT_EQ(StartReader(1, range, nullptr), -1) << operation;
        EXPECT_EQ(played::Stop(Login()), -1) << operation;
    }
    EXPECT_EQ(StartReader(257, range, nullptr), -1);
    EXPECT_EQ(StartReader(0, range, nullptr), -1) << "the recorder has no channel 0";
    ExpectNothingLeft();
}

TEST_F(ReaderPlaybackTest, Play_WithoutACallback_GivesNothingAndStops) {
    ASSERT_NE(StartReader(1, Beginning(1, 0), nullptr), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(ReaderPlaybackTest, Play_ReaderFailsMidway_StillEndsAndStops) {
    const Span range = Beginning(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, range, &collector), -1);
    simulator::control::Fail("vexo_avss_file_reader::start", 1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

// The one command that takes a channel out may come from the channel's own callback.
TEST_F(ReaderPlaybackTest, Callback_DropsItsOwnChannel_TheOtherGoesOn) {
    const Span whole = {played::SINCE, played::UNTIL};
    std::atomic<bool> dropped{false};
    Collector collector([&](const Got& got) {
        if (got.channel == 2 && !dropped.exchange(true)) {
            Command(got.login, HOSTMGR_PLAYCMD_DELCHAN, 2);
        }
        return 0;
    });
    ASSERT_NE(StartReader(1, whole, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_ADDCHAN, 2);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 5);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 5);
    ASSERT_TRUE(collector.UntilEnds(1));
    const std::vector<Got> all = collector.All();
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const Got& got) { return got.channel == 2; }), 1);
    EXPECT_GE(collector.Pictures(1).size(), played::SEGMENTS * played::LENGTH);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(ReaderPlaybackTest, Stop_DuringACallback_WaitsForItAndNothingComesAfter) {
    std::atomic<bool> stopping{false};
    std::atomic<bool> inside{false};
    Collector collector([&](const Got& /*got*/) {
        inside = true;
        live::Eventually([&] { return stopping.load(); });
        inside = false;
        return 0;
    });
    ASSERT_NE(StartReader(1, Recording(1, 0), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(live::Eventually([&] { return inside.load(); }));
    std::thread stopper([&] {
        stopping = true;
        EXPECT_EQ(played::Stop(Login()), 0);
        EXPECT_FALSE(inside);
    });
    stopper.join();
    const size_t at_stop = collector.All().size();
    ExpectNothingLeft();
    EXPECT_EQ(collector.All().size(), at_stop);
}

TEST_F(ReaderPlaybackTest, Logout_DuringAPlay_EndsItWithoutRemains) {
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, Recording(1, 0), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_ADDCHAN, 2);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(2));
    ExpectNothingLeft();
    const size_t at_logout = collector.All().size();
    const agent::Session another;
    EXPECT_GT(another.Login(), 0);
    EXPECT_EQ(collector.All().size(), at_logout);
}

TEST_F(ReaderPlaybackTest, Commands_FromManyThreads_LeaveAWholePlay) {
    const Span recording = Recording(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(StartReader(1, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int turn = 0; turn < 25; ++turn) {
                switch (thread) {
                    case 0:
                        played::Seek(Login(), recording.start + turn % 6);
                        break;
                    case 1:
                        Command(Login(), HOSTMGR_PLAYCMD_ADDCHAN, 2);
                        Command(Login(), HOSTMGR_PLAYCMD_DELCHAN, 2);
                        break;
                    case 2:
                        Command(Login(), HOSTMGR_PLAYCMD_STREAMTYPE, 1, 1 + turn % 2);
                        break;
                    default:
                        Command(Login(), HOSTMGR_PLAYCMD_SPEED, turn % 8);
                        played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

}  // namespace
