// The simulated recorder's zero channel by plain calls: every picture is decoded, and each cell of the square tells by
// its own stamp which camera it shows.
#include <thread>

#include "control.h"
#include "device_support.h"
#include "live_reader.h"
#include "mosaic_cells.h"
#include "recorder_test_support.h"
#include "scene_view.h"

namespace control = simulator::control;
using device::Login;
using live::Decoder;
using live::Eventually;
using recorder_test::Contains;
using recorder_test::NewComplaints;

namespace {

constexpr unsigned NOTHING = 0xFFFFFFFF;
constexpr unsigned CHANNELS = 70;
constexpr int WIDTH = 1280;
constexpr int HEIGHT = 720;
[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "channels": 70, "zero_channel": {"fps": 5, "gop": 5, "kbps": 6000}
})"));

/** Reads the zero channel; each frame is released at once. */
class ZeroReader {
public:
    std::optional<live::Frame> Next() {
        std::optional<live::Frame> frame;
        Eventually([&] { return (frame = Try()).has_value(); });
        return frame;
    }

    /** Reads until a picture shows those channels, cell by cell; tells what the last one showed when none did. */
    testing::AssertionResult Shows(const std::vector<unsigned>& expected) {
        std::vector<unsigned> shown;
        const bool found = Eventually([&] {
            const auto frame = Next();
            const AVFrame* picture = frame ? m_decoder.Decode(*frame) : nullptr;
            shown = picture != nullptr ? mosaic::CellsOf(*picture, expected.size()) : std::vector<unsigned>();
            return shown == expected;
        });
        return found ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << "the last picture shows " << testing::PrintToString(shown);
    }

    const AVFrame* Decode(const live::Frame& frame) { return m_decoder.Decode(frame); }

    const AVFrame* NextPicture() {
        const auto frame = Next();
        return frame ? m_decoder.Decode(*frame) : nullptr;
    }

private:
    std::optional<live::Frame> Try() {
        unsigned char* bytes = nullptr;
        vexo_read_av_list_note note = {};
        const int result = m_begun ? vexo_model_zero_channel_get_frame(VEXO_USER_HOSTMGR, &m_note, &bytes, &note)
                                   : vexo_model_zero_channel_first_get_frame(VEXO_USER_HOSTMGR, &bytes, &note);
        if (result != 0 || bytes == nullptr) {
            return std::nullopt;
        }
        m_begun = true;
        m_note = note;
        const live::Frame frame = live::CopyOf(bytes, note, VEXO_FALSE);
        EXPECT_EQ(vexo_model_zero_channel_rel_frame(VEXO_USER_HOSTMGR, &note), 0);
        return frame;
    }

    bool m_begun = false;
    vexo_read_av_list_note m_note = {};
    Decoder m_decoder;
};

class MosaicTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(vexo_model_zero_channel_set_enable(m_login.Id(), VEXO_TRUE), 0); }
    void TearDown() override { EXPECT_EQ(vexo_model_zero_channel_set_enable(m_login.Id(), VEXO_FALSE), 0); }

    int Show(const std::vector<unsigned>& channels) const {
        return vexo_model_zero_channel_set_video_channels(m_login.Id(), channels.data(),
                                                          static_cast<unsigned>(channels.size()));
    }

    Login m_login;
};

TEST_F(MosaicTest, Frames_HaveTheZeroChannelsTypesAndKeysOnSchedule) {
    ASSERT_EQ(Show({1}), 0);
    ZeroReader reader;
    for (int i = 0; i < 11; ++i) {
        const auto frame = reader.Next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->header.magic, VEXO_FRAME_MAGIC);
        EXPECT_EQ(frame->header.frame_type, unsigned{i % 5 == 0 ? VEXO_FRAME_ZERO_KEY : VEXO_FRAME_ZERO_DELTA}) << i;
        EXPECT_EQ(frame->header.codec, 1);
        EXPECT_EQ(frame->header.width, WIDTH);
        EXPECT_EQ(frame->header.height, HEIGHT);
    }
}

TEST_F(MosaicTest, ThreeChannels_InASquareOfFour_LeaveTheFourthBlack) {
    ASSERT_EQ(Show({1, 2, 3, 0}), 0);  // the square that three channels make
    ZeroReader reader;
    ASSERT_TRUE(reader.Shows({1, 2, 3, 0}));
    const AVFrame* picture = reader.NextPicture();
    ASSERT_NE(picture, nullptr);
    EXPECT_LT(live::MeanLuma(*picture, 50, 50, 100, 100), 18);
    EXPECT_GT(live::MeanLuma(*picture, 0, 0, 50, 50), 40);
}

TEST_F(MosaicTest, SixtyFiveChannels_AreNoSquare_AndTheFirstAloneIsOne) {
    std::vector<unsigned> channels(65);
    for (unsigned i = 0; i < 65; ++i) {
        channels[i] = i + 1;
    }
    EXPECT_NE(Show(channels), 0);
    ASSERT_EQ(Show({65}), 0);
    ZeroReader reader;
    EXPECT_TRUE(reader.Shows({65}));
}

TEST_F(MosaicTest, SixtyFourChannels_EachInItsPlace) {
    std::vector<unsigned> channels;
    for (unsigned i = 0; i < 64; ++i) {
        channels.push_back(CHANNELS - i);
    }
    ASSERT_EQ(Show(channels), 0);
    ZeroReader reader;
    EXPECT_TRUE(reader.Shows(channels));
}

TEST_F(MosaicTest, TwoHundredFiftySixCells_AreDrawn) {
    std::vector<unsigned> channels(256, 0);
    channels[0] = 7;
    channels[255] = 9;
    ASSERT_EQ(Show(channels), 0);
    ZeroReader reader;
    ASSERT_TRUE(Eventually([&] {
        const AVFrame* picture = reader.NextPicture();
        return picture != nullptr && live::MeanLuma(*picture, 0, 0, 6, 6) > 40 &&
               live::MeanLuma(*picture, 94, 94, 100, 100) > 40 && live::MeanLuma(*picture, 10, 10, 90, 90) < 18;
    }));
    channels.push_back(1);
    EXPECT_NE(Show(channels), 0);
}

TEST_F(MosaicTest, LaidOutAnew_WhileItIsRead_GoesOnWithoutABreak) {
    ASSERT_EQ(Show({1}), 0);
    ZeroReader reader;
    ASSERT_TRUE(reader.Shows({1}));
    const auto before = reader.Next();
    ASSERT_TRUE(before);
    ASSERT_EQ(Show({5, 6, 0, NOTHING, 1, CHANNELS + 1, 2, 2, 3}), 0);
    EXPECT_TRUE(reader.Shows({5, 6, 0, 0, 1, 0, 2, 2, 3}));
    ASSERT_EQ(Show({4}), 0);
    EXPECT_TRUE(reader.Shows({4}));
    const auto after = reader.Next();
    ASSERT_TRUE(after);
    EXPECT_EQ(after->note.note[1], before->note.note[1]) << "the same stream";
}

TEST_F(MosaicTest, Camera_WithoutSignal_IsBlackInItsCell) {
    ASSERT_EQ(Show({1, 2, 3, 4}), 0);
    ZeroReader reader;
    ASSERT_TRUE(reader.Shows({1, 2, 3, 4}));
    control::SetSignal(2, false);
    EXPECT_TRUE(Eventually([&] {
        const AVFrame* picture = reader.NextPicture();
        return picture != nullptr && live::MeanLuma(*picture, 52, 12, 98, 20) < 20;
    }));
    const AVFrame* picture = reader.NextPicture();
    ASSERT_NE(picture, nullptr);
    EXPECT_GT(live::MeanLuma(*picture, 2, 12, 48, 20), 40);
    control::SetSignal(2, true);
}

TEST_F(MosaicTest, Camera_ThatTurns_TurnsInItsCell) {
    device::Drive(m_login, 0, 1);
    control::SkipTime(100);
    ASSERT_EQ(Show({1}), 0);
    ZeroReader reader;
    device::SceneView scene(1, 1, WIDTH, HEIGHT);
    const auto shows = [&](const simulator::View& view) {
        return Eventually([&] {
            const auto frame = reader.Next();
            const AVFrame* picture = frame ? reader.Decode(*frame) : nullptr;
            return picture != nullptr && scene.Difference(*picture, *frame, view) < 4;
        });
    };
    ASSERT_TRUE(shows({0.5, 0.5, 1}));
    device::Drive(m_login, 0, 0x100, {0, {7, 0, 0, 0}});  // all the way up
    control::SkipTime(100);
    EXPECT_TRUE(shows({0.5, 0, 1}));
    device::Drive(m_login, 0, 1);
}

TEST_F(MosaicTest, SwitchedOff_GivesNoFrames_UntilItIsOnAgain) {
    ASSERT_EQ(Show({3}), 0);
    ZeroReader reader;
    ASSERT_TRUE(reader.Shows({3}));
    ASSERT_EQ(vexo_model_zero_channel_set_enable(m_login.Id(), VEXO_FALSE), 0);
    unsigned char* frame = nullptr;
    vexo_read_av_list_note note = {};
    EXPECT_NE(vexo_model_zero_channel_first_get_frame(VEXO_USER_HOSTMGR, &frame, &note), 0);
    ASSERT_EQ(vexo_model_zero_channel_set_enable(m_login.Id(), VEXO_TRUE), 0);
    EXPECT_TRUE(reader.Shows({3}));
}

TEST_F(MosaicTest, HeldFrame_IsBookedUntilReleased_AndTwiceIsMisuse) {
    ASSERT_EQ(Show({1}), 0);
    unsigned char* frame = nullptr;
    vexo_read_av_list_note note = {};
    ASSERT_TRUE(Eventually([&] {
        return vexo_model_zero_channel_first_get_frame(VEXO_USER_HOSTMGR, &frame, &note) == 0 && frame != nullptr;
    }));
    const std::string line = "frame: zero channel frame " + std::to_string(note.note[0]);
    EXPECT_EQ(recorder_test::CountOutstanding(line), 1);
    const NewComplaints complaints;
    EXPECT_EQ(vexo_model_zero_channel_rel_frame(VEXO_USER_HOSTMGR, &note), 0);
    EXPECT_EQ(recorder_test::CountOutstanding(line), 0);
    EXPECT_EQ(complaints.Text(), "");
    EXPECT_NE(vexo_model_zero_channel_rel_frame(VEXO_USER_HOSTMGR, &note), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "zero channel frame")) << complaints.Text();
}

TEST_F(MosaicTest, Arguments_ThatCannotBe_Fail) {
    EXPECT_NE(Show({}), 0);
    EXPECT_NE(Show({1, 2}), 0);
    EXPECT_NE(vexo_model_zero_channel_set_video_channels(m_login.Id(), nullptr, 1), 0);
    const unsigned one = 1;
    EXPECT_NE(vexo_model_zero_channel_set_video_channels(m_login.Id(), &one, 0xFFFFFFFF), 0);
    EXPECT_NE(vexo_model_zero_channel_set_video_channels(m_login.Id() + 1, &one, 1), 0);
    EXPECT_NE(vexo_model_zero_channel_set_enable(m_login.Id() + 1, VEXO_TRUE), 0);
    control::Fail("vexo_model_zero_channel_set_video_channels", 1);
    EXPECT_NE(Show({1}), 0);
    EXPECT_EQ(Show({1}), 0);
}

TEST_F(MosaicTest, LaidOutAndRead_ByManyThreads_Holds) {
    ASSERT_EQ(Show({1}), 0);
    std::vector<std::thread> threads;
    threads.emplace_back([this] {
        for (unsigned i = 0; i < 40; ++i) {
            EXPECT_EQ(i % 2 ? Show({i % CHANNELS + 1}) : Show({1, i % CHANNELS + 1, 3, 0}), 0);
            std::this_thread::yield();
        }
    });
    for (int reader_number = 0; reader_number < 3; ++reader_number) {
        threads.emplace_back([] {
            ZeroReader reader;
            for (int i = 0; i < 8; ++i) {
                EXPECT_TRUE(reader.Next());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(MosaicSettings, Told_AsTheScenarioSays) {
    vexo_resolution_ability ability;
    vexo_resolution resolution;
    unsigned bps = 0;
    unsigned mode = 7;
    unsigned fps = 0;
    ASSERT_EQ(vexo_model_zero_channel_get_resolution_ability(&ability), 0);
    EXPECT_EQ(ability.node_num, 1U);
    EXPECT_EQ(ability.node[0].width, unsigned{WIDTH});
    ASSERT_EQ(vexo_model_zero_channel_get_resolution(&resolution), 0);
    EXPECT_EQ(resolution.height, unsigned{HEIGHT});
    ASSERT_EQ(vexo_model_zero_channel_get_bps(&bps, &mode), 0);
    EXPECT_EQ(bps, 6000U);
    EXPECT_EQ(mode, 1U);
    ASSERT_EQ(vexo_model_zero_channel_get_fps(&fps), 0);
    EXPECT_EQ(fps, 5U);
}

}  // namespace
