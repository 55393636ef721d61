// Callback playback through the exported functions: which pictures come, in which order, and what they show; and the
// ends that a play may come to. Downloads stand in download_test.cpp, the pace to the millisecond in the unit tests.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "played.h"

using agent::Session;
using played::Collector;
using played::Command;
using played::ExpectStamps;
using played::Got;
using played::PictureTimes;
using played::Span;
using played::TimesOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new played::Recorder(played::SCENARIO));

constexpr int FASTEST_WITH_ALL = 4;
constexpr unsigned UNKNOWN_CHANNEL = 9;

class PlaybackTest : public played::PlayTest {
protected:
    /** Plays a whole range to its end. */
    std::vector<Got> PlayThrough(unsigned channel, const Span& range, int speed = FASTEST_WITH_ALL) {
        Collector& collector = NewCollector();
        EXPECT_NE(Start(channel, range, &collector), -1);
        Command(Login(), HOSTMGR_PLAYCMD_SPEED, speed);
        EXPECT_TRUE(collector.UntilEnds(1));
        EXPECT_EQ(played::Stop(Login()), 0);
        return collector.All();
    }
};

std::vector<Got> WithoutEnd(std::vector<Got> all) {
    EXPECT_TRUE(!all.empty() && all.back().end);
    all.pop_back();
    return all;
}

// ---- what comes ----------------------------------------------------------------------------------------------------

TEST_F(PlaybackTest, Play_ARecording_GivesEveryPictureOnceInOrderAndItsEnd) {
    const Span recording = Recording(1, 1);
    const std::vector<Got> all = PlayThrough(1, recording);
    const std::vector<Got> pictures = WithoutEnd(all);
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(PictureTimes(recording)));
    ExpectStamps(pictures, 1, 320, 240);
    for (const Got& got : all) {
        EXPECT_EQ(got.login, Login());
        EXPECT_EQ(got.handle, Login() << 16 | 1);
        EXPECT_EQ(got.length, got.end ? 0 : got.frame.header.data_length + HOSTMGR_FRAME_HEADER_SIZE);
    }
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, Play_ARangeWithinARecording_KeepsToIt) {
    const Span recording = Recording(2, 0);
    const Span range = {recording.start + 2, recording.start + 4};
    const std::vector<Got> pictures = WithoutEnd(PlayThrough(2, range));
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(PictureTimes(range.start, range.stop)));
    ExpectStamps(pictures, 2, 320, 240);
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, Play_ARangeOfTwoRecordings_PassesOverTheGap) {
    const Span first = Recording(1, 1);
    const Span second = Recording(1, 2);
    const std::vector<Got> pictures = WithoutEnd(PlayThrough(1, {first.stop - 2, second.start + 1}));
    std::vector<uint64_t> expected = PictureTimes({first.stop - 2, first.stop});
    const std::vector<uint64_t> rest = PictureTimes(second.start, second.start + 1);
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(expected));
}

TEST_F(PlaybackTest, Play_FromSpeedFiveOn_GivesKeyFramesAlone) {
    const Span recording = Recording(1, 0);
    const std::vector<Got> pictures = WithoutEnd(PlayThrough(1, recording, 16));
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(PictureTimes(recording, played::GOP * played::PERIOD)));
    for (const Got& got : pictures) {
        EXPECT_EQ(got.frame.header.frame_type, HOSTMGR_FRAME_MAIN_KEY);
    }
}

TEST_F(PlaybackTest, Play_SpeedRaisedMeanwhile_GoesOnWithKeyFrames) {
    const Span recording = Recording(1, 0);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 4);
    ASSERT_TRUE(collector.UntilPictures(3));
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 32);
    const size_t before = collector.Pictures().size();
    ASSERT_TRUE(collector.UntilEnds(1));
    const std::vector<Got> pictures = collector.Pictures();
    for (size_t i = before; i < pictures.size(); ++i) {
        EXPECT_EQ(pictures[i].frame.header.frame_type, HOSTMGR_FRAME_MAIN_KEY) << i;
    }
    EXPECT_EQ(pictures.back().frame.Milliseconds(), (recording.stop - 1) * 1000ULL);
}

TEST_F(PlaybackTest, Play_Reverse_GivesEveryPictureOnceBackwards) {
    const Span recording = Recording(1, 2);
    Command(Login(), HOSTMGR_PLAYCMD_DIRECTION, static_cast<int>(HOSTMGR_PLAYDIR_REVERSE));
    const std::vector<Got> pictures = WithoutEnd(PlayThrough(1, recording));
    std::vector<uint64_t> expected = PictureTimes(recording);
    std::reverse(expected.begin(), expected.end());
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(expected));
    std::vector<Got> keys;
    std::copy_if(pictures.begin(), pictures.end(), std::back_inserter(keys),
                 [](const Got& got) { return got.frame.Key(); });
    ASSERT_EQ(keys.size(), played::LENGTH);
    ExpectStamps(keys, 1, 320, 240);
}

// The first speed command tells readers the sign bit of the direction alone, and an added channel any value but 0.
TEST_F(PlaybackTest, Play_ReverseGivenAsOne_IsForwardAfterTheFirstSpeedCommand) {
    const Span recording = Recording(1, 2);
    Command(Login(), HOSTMGR_PLAYCMD_DIRECTION, 1);
    EXPECT_THAT(TimesOf(WithoutEnd(PlayThrough(1, recording))), ElementsAreArray(PictureTimes(recording)));
}

TEST_F(PlaybackTest, Play_SoundSwitchedOn_ComesBetweenThePictures) {
    const Span recording = Recording(1, 0);
    Command(Login(), HOSTMGR_PLAYCMD_AUDIO, 1);
    const std::vector<Got> all = WithoutEnd(PlayThrough(1, recording));
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const Got& got) { return got.Audio(); }),
              played::LENGTH * played::SOUNDS);
    EXPECT_EQ(std::count_if(all.begin(), all.end(), [](const Got& got) { return got.Video(); }),
              played::LENGTH * played::FPS);
    for (size_t i = 1; i < all.size(); ++i) {
        EXPECT_GE(all[i].frame.Milliseconds(), all[i - 1].frame.Milliseconds()) << i;
    }
}

// ---- streams -------------------------------------------------------------------------------------------------------

TEST_F(PlaybackTest, StreamType_Sub_GivesTheSubStreamsPictures) {
    const Span recording = Recording(2, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(2, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_STREAMTYPE, 2, HOSTMGR_STREAM_SUB);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilEnds(1));
    const std::vector<Got> pictures = collector.Pictures();
    EXPECT_THAT(TimesOf(pictures), ElementsAreArray(PictureTimes(recording)));
    ExpectStamps(pictures, 2, 160, 120);
    for (const Got& got : pictures) {
        EXPECT_EQ(got.frame.header.frame_type, got.frame.Key() ? HOSTMGR_FRAME_SUB_KEY : HOSTMGR_FRAME_SUB_DELTA);
    }
}

TEST_F(PlaybackTest, StreamType_ChangedMeanwhile_GoesOnAtAKeyFrameOfTheOther) {
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, Recording(1, 1), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(2));
    Command(Login(), HOSTMGR_PLAYCMD_STREAMTYPE, 1, HOSTMGR_STREAM_SUB);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilEnds(1));
    const std::vector<Got> pictures = collector.Pictures();
    const auto is_sub = [](const Got& got) { return got.frame.header.width == 160; };
    const auto first_sub = std::find_if(pictures.begin(), pictures.end(), is_sub);
    ASSERT_NE(first_sub, pictures.end());
    EXPECT_EQ(first_sub->frame.header.frame_type, HOSTMGR_FRAME_SUB_KEY);
    EXPECT_TRUE(std::all_of(first_sub, pictures.end(), is_sub));
    ExpectStamps({first_sub, pictures.end()}, 1, 160, 120);
}

// ---- seek and pause ------------------------------------------------------------------------------------------------

TEST_F(PlaybackTest, Seek_ForwardAndBack_GoesOnFromThere) {
    const Span recording = Recording(1, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, -32);  // no picture comes by itself before the seek
    ASSERT_TRUE(collector.UntilPictures(1));
    for (const time_t target : {recording.start + 4, recording.start + 2}) {
        collector.Forget();
        played::Seek(Login(), target);
        ASSERT_TRUE(collector.UntilPictures(1));
        EXPECT_EQ(collector.Pictures()[0].frame.Milliseconds(), target * 1000ULL);
        EXPECT_TRUE(collector.Pictures()[0].frame.Key());
    }
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes({recording.start + 2, recording.stop})));
    ExpectStamps(collector.Pictures(), 1, 320, 240);
}

TEST_F(PlaybackTest, Seek_ToAnotherRecording_GoesOnThere) {
    const Span first = Recording(1, 0);
    const Span last = Recording(1, 3);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, {first.start, last.stop}, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(1));
    played::Seek(Login(), last.start);
    collector.Forget();
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_EQ(collector.Pictures().back().frame.Milliseconds(), last.stop * 1000ULL - played::PERIOD);
    EXPECT_GE(collector.Pictures().front().frame.Milliseconds(), last.start * 1000ULL);
}

// Another login's play from beginning to end takes the place of a wait.
TEST_F(PlaybackTest, Pause_HoldsThePlay_AndNothingIsLost) {
    const Span recording = Recording(1, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilPictures(3));
    Command(Login(), HOSTMGR_PLAYCMD_PAUSE, 1);
    const size_t at_pause = collector.All().size();
    {
        Collector others;
        const Session other;
        _tagVexoHostMgrTime from = played::Local(recording.start);
        _tagVexoHostMgrTime to = played::Local(recording.stop);
        const int handle = vexo_soft::vexo_HostMgr_Dev_StartHistoryPlay(other.Login(), 1, 0, &from, &to);
        vexo_soft::vexo_HostMgr_Dev_SetHistoryStreamCallback(other.Login(), handle, Collector::Callback, &others);
        Command(other.Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
        ASSERT_TRUE(others.UntilEnds(1));
        EXPECT_EQ(played::Stop(other.Login()), 0);
    }
    EXPECT_EQ(collector.All().size(), at_pause);
    Command(Login(), HOSTMGR_PLAYCMD_PAUSE, 0);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes(recording)));
}

TEST_F(PlaybackTest, PlayTime_FollowsThePicturesAndTheSeeks) {
    const Span recording = Recording(1, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector), -1);
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT), -1) << "nothing has come";
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT), recording.stop - 1) << "the last picture's second";
    played::Seek(Login(), recording.start + 3);
    EXPECT_EQ(played::PlayTime(Login(), HOSTMGR_PLAYTIME_CURRENT), recording.start + 3);
}

// ---- several channels ----------------------------------------------------------------------------------------------

TEST_F(PlaybackTest, Channels_Several_ComeWholeAndEndEach) {
    const Span whole = {played::SINCE, played::UNTIL};
    const Span recordings[] = {Recording(1, 0), Recording(2, 0)};
    Collector& collector = NewCollector();
    for (const unsigned channel : {1U, 2U}) {
        ASSERT_NE(Start(channel, whole, &collector), -1);
    }
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 32);
    ASSERT_TRUE(collector.UntilEnds(2));
    for (const int channel : {1, 2}) {
        const std::vector<Got> pictures = collector.Pictures(channel);
        EXPECT_EQ(pictures.size(), played::SEGMENTS * played::LENGTH);
        EXPECT_EQ(pictures.front().frame.Milliseconds(), recordings[channel - 1].start * 1000ULL);
        ExpectStamps(pictures, static_cast<unsigned>(channel), 320, 240);
    }
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, Channel_AddedAndDroppedMeanwhile_TheOtherGoesOn) {
    Collector& stays = NewCollector();
    Collector& comes = NewCollector();
    ASSERT_NE(Start(1, Recording(1, 0), &stays), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(stays.UntilPictures(2));
    const int added = Start(2, Recording(2, 0), &comes);
    EXPECT_EQ(added, Login() << 16 | 2);
    ASSERT_TRUE(comes.UntilPictures(2));
    Command(Login(), HOSTMGR_PLAYCMD_DELCHAN, 2);
    const size_t at_drop = comes.All().size();
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(stays.UntilEnds(1));
    EXPECT_LE(comes.All().size(), at_drop + 1) << "a pass that has begun may end";
    EXPECT_THAT(TimesOf(stays.Pictures()), ElementsAreArray(PictureTimes(Recording(1, 0))));
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, OneChannelTwice_IsTwoStreamsOfOneHandle) {
    const Span recording = Recording(1, 0);
    Collector& collector = NewCollector();
    const int handle = Start(1, recording, &collector);
    ASSERT_NE(handle, -1);
    EXPECT_EQ(Start(1, recording, nullptr), handle);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
    ASSERT_TRUE(collector.UntilEnds(1));
    EXPECT_THAT(TimesOf(collector.Pictures()), ElementsAreArray(PictureTimes(recording)));
    collector.Forget();
    // The first one has ended and gone, so the handle means the second one now.
    vexo_soft::vexo_HostMgr_Dev_SetHistoryStreamCallback(Login(), handle, Collector::Callback, &collector);
    EXPECT_EQ(played::Stop(Login()), 0);
    EXPECT_EQ(played::Stop(Login()), -1) << "nothing is started any more";
    ExpectNothingLeft();
}

// ---- ends and failures ---------------------------------------------------------------------------------------------

TEST_F(PlaybackTest, Play_NothingRecorded_EndsAtOnce) {
    const std::vector<Got> all = PlayThrough(1, {played::SINCE - 7200, played::SINCE - 3600});
    ASSERT_EQ(all.size(), 1U);
    EXPECT_TRUE(all[0].end);
    EXPECT_EQ(all[0].length, 0U);
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, Play_ReaderFailsMidway_EndsTheChannelThere) {
    const Span recording = Recording(1, 1);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, recording, &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(3));
    simulator::control::Fail("vexo_avss_file_reader::read_frame", 1);
    ASSERT_TRUE(collector.UntilEnds(1));
    const std::vector<uint64_t> whole = PictureTimes(recording);
    const std::vector<uint64_t> came = TimesOf(collector.Pictures());
    ASSERT_LT(came.size(), whole.size());
    EXPECT_TRUE(std::equal(came.begin(), came.end(), whole.begin()));
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

struct StartFault {
    const char* operation;
    bool leaks;  ///< the reader and the list stay behind when there is no memory for the stream
};

class StartFaultTest : public PlaybackTest, public testing::WithParamInterface<StartFault> {};

TEST_P(StartFaultTest, Start_RecorderFails_IsRefusedAndNeedsAStop) {
    const Span recording = Recording(1, 0);
    simulator::control::Fail(GetParam().operation, 1);
    EXPECT_EQ(Start(1, recording, nullptr), -1);
    EXPECT_EQ(played::Stop(Login()), 0) << "the play counts as started";
    m_session.reset();
    const std::vector<std::string> left = simulator::control::Outstanding();
    const auto count = [&](const std::string& part) {
        return std::count_if(left.begin(), left.end(),
                             [&](const std::string& line) { return line.rfind(part, 0) == 0; });
    };
    EXPECT_EQ(count("reader: "), GetParam().leaks ? 1 : 0);
    EXPECT_EQ(count("inquiry: "), GetParam().leaks ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, StartFaultTest,
                         testing::Values(StartFault{"vexo_model_inquiry_rec_by_time", false},
                                         StartFault{"vexo_model_new_avss_reader", false},
                                         StartFault{"vexo_utility_malloc", true}),
                         [](const auto& fault) { return std::string(fault.param.operation); });

TEST_F(PlaybackTest, Start_ChannelsThatAreNone_AreRefused) {
    const Span recording = Recording(1, 0);
    EXPECT_EQ(Start(0, recording, nullptr), -1);
    EXPECT_EQ(Start(257, recording, nullptr), -1);
    EXPECT_EQ(played::Stop(Login()), -1) << "these are refused before anything is started";
    EXPECT_EQ(Start(UNKNOWN_CHANNEL, recording, nullptr), -1);
    EXPECT_EQ(played::Stop(Login()), 0);
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, Stop_DuringACallback_WaitsForItAndNothingComesAfter) {
    std::atomic<bool> stopping{false};
    std::atomic<bool> inside{false};
    Collector collector([&](const Got& /*got*/) {
        inside = true;
        live::Eventually([&] { return stopping.load(); });
        inside = false;
        return 0;
    });
    ASSERT_NE(Start(1, Recording(1, 0), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, FASTEST_WITH_ALL);
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

TEST_F(PlaybackTest, Logout_DuringAPlay_EndsItWithoutRemains) {
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, Recording(1, 0), &collector), -1);
    ASSERT_NE(Start(2, Recording(2, 0), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(4));
    ExpectNothingLeft();
    const size_t at_logout = collector.All().size();
    const Session another;
    EXPECT_GT(another.Login(), 0);
    EXPECT_EQ(collector.All().size(), at_logout);
}

// The replay thread waits for the lock that a bad time selector left taken; the logout of another thread lets it go.
TEST_F(PlaybackTest, Logout_OnAnotherThreadThanTheBadTimeSelectors_EndsThePlay) {
    constexpr auto NO_SELECTOR = static_cast<HostMgrPlayTimeSelector>(9);
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, Recording(1, 0), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(2));
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    order.dwParam = NO_SELECTOR;
    vexo_soft::vexo_HostMgr_Dev_Control(Login(), HOSTMGR_CONTROL_PLAYBACK, 0, 0, nullptr, 0, &order, sizeof order,
                                        nullptr, 0);
    std::thread([this] { LogOut(); }).join();
    ExpectNothingOutstanding();
    EXPECT_THAT(simulator::control::Complaints(),
                ElementsAre(HasSubstr("lock vexo_hostmgr_playback lock, user 97: unlocked by")));
}

TEST_F(PlaybackTest, Stop_FromManyThreads_OneOfThemStopsIt) {
    Collector& collector = NewCollector();
    ASSERT_NE(Start(1, Recording(1, 0), &collector), -1);
    Command(Login(), HOSTMGR_PLAYCMD_SPEED, 1);
    ASSERT_TRUE(collector.UntilPictures(1));
    std::atomic<int> stopped{0};
    std::vector<std::thread> stoppers;
    for (int i = 0; i < 4; ++i) {
        stoppers.emplace_back([&] { stopped += played::Stop(Login()) == 0 ? 1 : 0; });
    }
    for (std::thread& stopper : stoppers) {
        stopper.join();
    }
    EXPECT_EQ(stopped, 1);
    ExpectNothingLeft();
}

TEST_F(PlaybackTest, PlayAgain_AfterAStop_BeginsAnew) {
    const Span recording = Recording(1, 0);
    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_EQ(TimesOf(WithoutEnd(PlayThrough(1, recording, 32))).size(), played::LENGTH) << turn;
    }
    ExpectNothingLeft();
}

}  // namespace
