// The simulated recorder's channel reader: which frames come, in which order, and what their pictures say. Its
// states stand in reader_state_test.cpp; the reader that pushes several channels stands in advance_reader_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "recorded.h"

namespace {

using live::Decoder;
using live::Frame;
using live::StampIn;
using recorded::FPS;
using recorded::GOP;
using recorded::IsVideo;
using recorded::LENGTH;
using recorded::List;
using recorded::Player;
using recorded::SEGMENTS;
using recorded::SUB;
using recorded::UNTIL;
using recorded::VideoOf;
using testing::IsEmpty;
using testing::SizeIs;

const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new recorded::Recorder(recorded::HISTORY));

constexpr uint64_t PERIOD = 1000 / FPS;  // milliseconds from picture to picture
constexpr size_t PICTURES = LENGTH * FPS;
constexpr size_t SOUNDS = LENGTH * 25;

/** When the pictures of some recordings were made, in milliseconds since 1970, as the history makes them. */
std::vector<uint64_t> PictureTimes(const std::vector<vexo_rec_file>& files) {
    std::vector<uint64_t> times;
    for (const vexo_rec_file& file : files) {
        for (size_t i = 0; i < PICTURES; ++i) {
            times.push_back(file.start * 1000ULL + i * PERIOD);
        }
    }
    return times;
}

std::vector<uint64_t> TimesOf(const std::vector<Frame>& frames) {
    std::vector<uint64_t> times;
    for (const Frame& frame : frames) {
        times.push_back(frame.Milliseconds());
    }
    return times;
}

/** Decodes every picture and compares its stamp with its header. */
void ExpectStamps(const std::vector<Frame>& pictures, unsigned channel, int width, int height) {
    Decoder decoder;
    for (const Frame& frame : pictures) {
        const AVFrame* picture = decoder.Decode(frame);
        ASSERT_NE(picture, nullptr) << frame.Milliseconds();
        EXPECT_EQ(picture->width, width);
        EXPECT_EQ(picture->height, height);
        const auto stamp = StampIn(*picture);
        ASSERT_TRUE(stamp) << frame.Milliseconds();
        EXPECT_EQ(stamp->channel, channel + 1);
        EXPECT_EQ(stamp->milliseconds, frame.Milliseconds());
    }
}

class ReaderTest : public testing::Test {
protected:
    const List m_list{0};
    const std::vector<vexo_rec_file> m_files = m_list.Files();
};

// ---- order ---------------------------------------------------------------------------------------------------------

TEST_F(ReaderTest, Forward_EveryPictureOfEveryFileOnce_AndItsStampIsRight) {
    Player player(m_list);
    const std::vector<Frame> pictures = VideoOf(player.Rest());
    EXPECT_EQ(TimesOf(pictures), PictureTimes(m_files));
    ExpectStamps(pictures, 0, 320, 180);
}

TEST_F(ReaderTest, Forward_SoundComesBetweenThePicturesByTime) {
    Player player(m_list);
    const std::vector<Frame> frames = player.Rest();
    ASSERT_THAT(frames, SizeIs(SEGMENTS * (PICTURES + SOUNDS)));
    const std::vector<uint64_t> times = TimesOf(frames);
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    uint64_t sound = m_files[0].start * 1000ULL;
    for (size_t i = 0; i < PICTURES + SOUNDS; ++i) {
        if (!IsVideo(frames[i])) {
            EXPECT_EQ(frames[i].Milliseconds(), sound);
            sound += 40;
        }
    }
}

TEST_F(ReaderTest, Headers_TellStreamKindAndFormat) {
    Player player(m_list);
    for (unsigned i = 0; i < 2 * GOP; ++i) {
        const auto frame = player.NextVideo();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->header.magic, VEXO_FRAME_MAGIC);
        EXPECT_EQ(frame->header.frame_type, unsigned{i % GOP == 0 ? VEXO_FRAME_MAIN_KEY : VEXO_FRAME_MAIN_DELTA});
        EXPECT_EQ(frame->header.frame_no, i + 1);
        EXPECT_EQ(frame->header.codec, 1);
        EXPECT_EQ(frame->header.format[0], FPS);
        EXPECT_EQ(frame->header.width, 320);
        EXPECT_EQ(frame->header.height, 180);
    }
    Player sound(m_list);
    sound.Next();
    const auto block = sound.Next();
    ASSERT_TRUE(block);
    EXPECT_EQ(block->header.frame_type, unsigned{VEXO_FRAME_AUDIO});
    EXPECT_EQ(block->header.codec, 2);
    EXPECT_EQ(block->header.data_length, 320U);
    EXPECT_EQ(block->header.width, 0);
}

TEST_F(ReaderTest, Backward_EveryPictureLastFirst_WithoutSound) {
    Player player(m_list);
    player->set_direction(1);
    const std::vector<Frame> frames = player.Rest();
    EXPECT_TRUE(std::all_of(frames.begin(), frames.end(), IsVideo));
    std::vector<uint64_t> times = PictureTimes(m_files);
    std::reverse(times.begin(), times.end());
    EXPECT_EQ(TimesOf(frames), times);
}

TEST_F(ReaderTest, BackwardKeyFrames_DecodeOneByOne) {
    Player player(m_list);
    player->set_direction(1);
    player->set_frame_mode(0);
    const std::vector<Frame> frames = player.Rest();
    ASSERT_THAT(frames, SizeIs(SEGMENTS * PICTURES / GOP));
    EXPECT_TRUE(std::is_sorted(frames.rbegin(), frames.rend(), [](const Frame& left, const Frame& right) {
        return left.Milliseconds() < right.Milliseconds();
    }));
    ExpectStamps(frames, 0, 320, 180);
}

TEST_F(ReaderTest, KeyFrames_ComeAloneAndWithoutSound) {
    Player player(m_list);
    EXPECT_EQ(player->set_frame_mode(0), 0);
    const std::vector<Frame> frames = player.Rest();
    ASSERT_THAT(frames, SizeIs(SEGMENTS * PICTURES / GOP));
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].header.frame_type, unsigned{VEXO_FRAME_MAIN_KEY});
    }
    ExpectStamps(frames, 0, 320, 180);
}

TEST_F(ReaderTest, FrameMode_BackToAll_GoesOnWithTheVeryNextFrame) {
    Player player(m_list);
    player->set_frame_mode(0);
    player.NextVideo();
    const auto second = player.NextVideo();
    player->set_frame_mode(2);
    const auto third = player.NextVideo();
    ASSERT_TRUE(second && third);
    EXPECT_EQ(third->Milliseconds(), second->Milliseconds() + PERIOD);
}

TEST_F(ReaderTest, SubStream_IsTheSmallPictureOfTheSameMoments) {
    Player player(m_list);
    EXPECT_EQ(player->set_stream_type(SUB), 0);
    const std::vector<Frame> pictures = VideoOf(player.Rest());
    EXPECT_EQ(TimesOf(pictures), PictureTimes(m_files));
    EXPECT_EQ(pictures[0].header.frame_type, unsigned{VEXO_FRAME_SUB_KEY});
    EXPECT_EQ(pictures[1].header.frame_type, unsigned{VEXO_FRAME_SUB_DELTA});
    ExpectStamps(pictures, 0, 160, 130);
}

TEST_F(ReaderTest, SubStreamOfTheOtherChannel_IsNotMadeLarger) {
    const List list(1);
    Player player(list);
    player->set_stream_type(SUB);
    const auto first = player.NextVideo();
    ASSERT_TRUE(first);
    ExpectStamps({*first}, 1, 128, 96);
}

TEST_F(ReaderTest, StreamType_ChangedOnTheWay_GoesOnAtAKeyFrameOfTheOther) {
    Player player(m_list);
    std::optional<Frame> last;
    for (unsigned i = 0; i < GOP + 2; ++i) {
        last = player.NextVideo();
    }
    player->set_stream_type(SUB);
    const auto next = player.NextVideo();
    ASSERT_TRUE(last && next);
    EXPECT_EQ(next->header.frame_type, unsigned{VEXO_FRAME_SUB_KEY});
    EXPECT_EQ(next->Milliseconds(), m_files[0].start * 1000ULL + 2 * GOP * PERIOD);
}

TEST_F(ReaderTest, Direction_TurnedOnTheWay_GoesBackFromThere) {
    Player player(m_list);
    for (unsigned i = 0; i < 6; ++i) {
        player.NextVideo();
    }
    player->set_direction(1);
    std::vector<uint64_t> times = PictureTimes({m_files[0]});
    times.resize(5);
    std::reverse(times.begin(), times.end());
    EXPECT_EQ(TimesOf(player.Rest()), times);
}

TEST_F(ReaderTest, Direction_ForwardAgainFromTheBeginning_BeginsAtAKeyFrame) {
    Player player(m_list);
    player->set_direction(1);
    player.Next();
    player.Next();
    player->set_direction(0);
    EXPECT_THAT(player.Rest(), IsEmpty());  // no key frame follows in the last second
    player->seek(m_files[3].stop - 3);
    player->set_direction(1);
    const auto last = player.NextVideo();
    player->set_direction(0);
    const auto next = player.NextVideo();
    ASSERT_TRUE(last && next);
    EXPECT_TRUE(next->Key());
    EXPECT_GT(next->Milliseconds(), last->Milliseconds());
}

// ---- holding -------------------------------------------------------------------------------------------------------

TEST_F(ReaderTest, Frame_NotReleased_IsOfferedAgain) {
    Player player(m_list);
    unsigned char* first = nullptr;
    unsigned char* again = nullptr;
    ASSERT_EQ(player->read_frame(&first, 0), 0);
    ASSERT_EQ(player->read_frame(&again, 0), 0);
    EXPECT_EQ(first, again);
    ASSERT_EQ(player->release_frame(8), 0);  // the type is ignored
    ASSERT_EQ(player->read_frame(&again, 0), 0);
    EXPECT_NE(live::CopyOf(again, {}, VEXO_FALSE).header.frame_type, unsigned{VEXO_FRAME_MAIN_KEY});
}

TEST_F(ReaderTest, Seek_FrameHeld_IsNotOfferedAgain) {
    Player player(m_list);
    const auto held = player.Read();
    ASSERT_EQ(player->seek(m_files[2].start), 0);
    const auto next = player.Read();
    ASSERT_TRUE(held && next);
    EXPECT_EQ(next->Milliseconds(), m_files[2].start * 1000ULL);
}

TEST_F(ReaderTest, KeyMode_HeldFrameIsNoKeyFrame_IsNotOfferedAgain) {
    Player player(m_list);
    player.NextVideo();
    while (!IsVideo(*player.Read())) {
        player->release_frame(0);
    }
    player->set_frame_mode(0);
    const auto next = player.Read();
    ASSERT_TRUE(next);
    EXPECT_TRUE(next->Key());
    EXPECT_EQ(next->Milliseconds(), m_files[0].start * 1000ULL + GOP * PERIOD);
}

TEST_F(ReaderTest, Release_NothingHeld_Fails) {
    Player player(m_list);
    EXPECT_NE(player->release_frame(0), 0);
    player.Next();
    EXPECT_NE(player->release_frame(0), 0);
}

// ---- seek and range ------------------------------------------------------------------------------------------------

TEST_F(ReaderTest, Seek_IntoAFile_GoesOnAtTheFirstKeyFrameNotBefore) {
    Player player(m_list);
    for (const long second : {3L, 1L, 5L}) {
        ASSERT_EQ(player->seek(m_files[1].start + second), 0);
        const auto frame = player.Next();
        ASSERT_TRUE(frame);
        EXPECT_TRUE(frame->Key());
        EXPECT_EQ(frame->Milliseconds(), (m_files[1].start + second) * 1000ULL);
        ExpectStamps({*frame}, 0, 320, 180);
    }
}

TEST_F(ReaderTest, Seek_IntoAGap_GoesOnAtTheNextFile) {
    Player player(m_list);
    player->seek(m_files[1].stop + 10);
    const auto frame = player.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Milliseconds(), m_files[2].start * 1000ULL);
}

TEST_F(ReaderTest, Seek_BackwardIntoAFile_GoesOnAtTheLastFrameNotAfter) {
    Player player(m_list);
    player->set_direction(1);
    player->seek(m_files[2].start + 2);
    const auto frame = player.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Milliseconds(), (m_files[2].start + 2) * 1000ULL);
    player->seek(m_files[2].start - 10);
    const auto before_gap = player.Next();
    ASSERT_TRUE(before_gap);
    EXPECT_EQ(before_gap->Milliseconds(), m_files[1].stop * 1000ULL - PERIOD);
}

TEST_F(ReaderTest, Seek_BeyondTheEnds_IsTheEndOrTheBeginning) {
    Player player(m_list);
    player->seek(UNTIL + 1000);
    EXPECT_FALSE(player.Next());
    player->seek(0);
    const auto first = player.Next();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->Milliseconds(), m_files[0].start * 1000ULL);
    player->seek(-5);
    EXPECT_TRUE(player.Next());
}

TEST_F(ReaderTest, TimeRange_LimitsBothWays) {
    const long from = m_files[1].start + 2;
    const long to = m_files[2].start + 3;
    std::vector<uint64_t> expected;
    for (const uint64_t time : PictureTimes(m_files)) {
        if (time >= from * 1000ULL && time <= to * 1000ULL) {
            expected.push_back(time);
        }
    }
    Player forward(m_list);
    ASSERT_EQ(forward->set_time_range(from, to), 0);
    const std::vector<Frame> pictures = VideoOf(forward.Rest());
    EXPECT_EQ(TimesOf(pictures), expected);
    ExpectStamps(pictures, 0, 320, 180);
    Player backward(m_list);
    backward->set_direction(1);
    backward->set_time_range(from, to);
    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(TimesOf(backward.Rest()), expected);
}

TEST_F(ReaderTest, TimeRange_StopNotPositive_IsIgnoredAndTheRangeKept) {
    const long from = m_files[1].start;
    const long to = m_files[1].stop;
    Player player(m_list);
    player->set_time_range(from, to);
    EXPECT_EQ(player->set_time_range(-1, -1), 0);
    EXPECT_EQ(player->set_time_range(from + 3, 0), 0);
    EXPECT_EQ(TimesOf(VideoOf(player.Rest())), PictureTimes({m_files[1]}));
}

TEST_F(ReaderTest, TimeRange_StopBeforeStart_FailsAndTheRangeIsKept) {
    Player player(m_list);
    player->set_time_range(m_files[1].start, m_files[1].stop);
    EXPECT_NE(player->set_time_range(m_files[2].stop, m_files[2].start), 0);
    EXPECT_EQ(TimesOf(VideoOf(player.Rest())), PictureTimes({m_files[1]}));
}

TEST_F(ReaderTest, TimeRange_KeptWhenTheListIsOpenedAgain) {
    Player player(m_list);
    player->set_time_range(m_files[3].start, m_files[3].stop);
    player.Next();
    ASSERT_EQ(player->open(m_list.Get()), 0);
    ASSERT_EQ(player->start(), 0);
    player->set_time_range(-1, -1);
    EXPECT_EQ(TimesOf(VideoOf(player.Rest())), PictureTimes({m_files[3]}));
}

TEST_F(ReaderTest, Seek_OutsideTheRange_StaysInIt) {
    Player player(m_list);
    player->set_time_range(m_files[1].start + 2, m_files[1].stop);
    player->seek(m_files[0].start);
    const auto frame = player.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->Milliseconds(), (m_files[1].start + 2) * 1000ULL);
    player->seek(m_files[2].start);
    EXPECT_FALSE(player.Next());
}

TEST_F(ReaderTest, TimeRange_BetweenTwoFiles_IsTheEndAtOnce) {
    Player player(m_list);
    player->set_time_range(m_files[0].stop + 1, m_files[1].start - 1);
    EXPECT_FALSE(player.Next());
}

}  // namespace
