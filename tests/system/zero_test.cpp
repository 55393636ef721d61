// The zero channel through the exported functions: every picture is decoded, and each cell of the square tells by its
// own stamp which camera it shows. The recorder's own mosaic stands in mosaic_test.cpp.
#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <thread>

#include "agent.h"
#include "mosaic_cells.h"

namespace control = simulator::control;
using agent::Session;

namespace {

constexpr unsigned CHANNELS = 70;
const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new agent::Recorder(R"json({
    "name": "zero channel test",
    "channels": 70, "zero_channel": {"fps": 5, "gop": 5, "kbps": 6000},
    "recordings": {"live": "off", "history": {"segments": 0}}
})json"));

/** One login's zero channel. */
class Zero {
public:
    explicit Zero(int login) : m_login(login) {}
    ~Zero() { Stop(); }
    Zero(const Zero&) = delete;
    Zero& operator=(const Zero&) = delete;

    int Start(std::vector<unsigned> channels) {
        return vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(m_login, 0, static_cast<unsigned>(channels.size()),
                                                          channels.data());
    }
    int SetMode(std::vector<unsigned> channels) {
        return vexo_soft::vexo_HostMgr_Dev_SetZeroCodecMode(m_login, 0, static_cast<unsigned>(channels.size()),
                                                            channels.data());
    }
    int Stop() { return vexo_soft::vexo_HostMgr_Dev_StopZeroCodec(m_login); }

    struct Read {
        const unsigned char* bytes = nullptr;  ///< the recorder's memory
        unsigned length = 0;
        unsigned type = 0;
        live::Frame frame;
    };

    std::optional<Read> Try() {
        Read read;
        unsigned char* bytes = nullptr;
        if (vexo_soft::vexo_HostMgr_Dev_ReadZeroCodecStream(m_login, 0, &bytes, &read.length, &read.type) != 0) {
            EXPECT_EQ(bytes, nullptr);
            EXPECT_EQ(read.length + read.type, 0U);
            return std::nullopt;
        }
        read.bytes = bytes;
        read.frame = live::CopyOf(bytes, {}, VEXO_FALSE);
        return read;
    }

    std::optional<Read> Next() {
        std::optional<Read> read;
        live::Eventually([&] { return (read = Try()).has_value(); });
        return read;
    }

    const AVFrame* NextPicture() {
        const auto read = Next();
        return read ? m_decoder.Decode(read->frame) : nullptr;
    }

    /** Reads until a picture shows those channels, cell by cell. */
    testing::AssertionResult Shows(const std::vector<unsigned>& expected) {
        std::vector<unsigned> shown;
        const bool found = live::Eventually([&] {
            const AVFrame* picture = NextPicture();
            shown = picture != nullptr ? mosaic::CellsOf(*picture, expected.size()) : std::vector<unsigned>();
            return shown == expected;
        });
        return found ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << "the last picture shows " << testing::PrintToString(shown);
    }

private:
    const int m_login;
    live::Decoder m_decoder;
};

std::vector<unsigned> From1To(unsigned last) {
    std::vector<unsigned> channels(last);
    std::iota(channels.begin(), channels.end(), 1U);
    return channels;
}

/** A list in the square that holds it. */
std::vector<unsigned> InSquareOf(size_t cells, std::vector<unsigned> channels) {
    channels.resize(cells);
    return channels;
}

class ZeroTest : public agent::LibraryTest {
protected:
    Session m_session;
    Zero m_zero{m_session.Login()};
};

// ---- layout --------------------------------------------------------------------------------------------------------

TEST_F(ZeroTest, Start_ThreeChannels_AreASquareOfFourWithABlackPlace) {
    ASSERT_EQ(m_zero.Start({3, 1, 2}), m_session.Login());
    ASSERT_TRUE(m_zero.Shows({3, 1, 2, 0}));
    const AVFrame* picture = m_zero.NextPicture();
    ASSERT_NE(picture, nullptr);
    EXPECT_GT(live::MeanLuma(*picture, 0, 50, 50, 100), 40);
    EXPECT_LT(live::MeanLuma(*picture, 50, 50, 100, 100), 18);
}

TEST_F(ZeroTest, Start_SixtyFiveChannels_ShowTheFirstAlone) {
    std::vector<unsigned> channels = From1To(65);
    channels[0] = 70;
    ASSERT_EQ(m_zero.Start(channels), m_session.Login());
    EXPECT_TRUE(m_zero.Shows({70}));
}

TEST_F(ZeroTest, Start_SixtyFourChannels_AreAllThere) {
    ASSERT_EQ(m_zero.Start(From1To(64)), m_session.Login());
    EXPECT_TRUE(m_zero.Shows(From1To(64)));
}

/** Laid out anew while it is read, by every size of square and both of its ends. */
TEST_F(ZeroTest, SetMode_FromSizeToSize_ShowsEachInTheSquareThatHoldsIt) {
    ASSERT_EQ(m_zero.Start({9}), m_session.Login());
    ASSERT_TRUE(m_zero.Shows({9}));
    const auto before = m_zero.Next();
    ASSERT_TRUE(before);
    for (const auto& [count, cells] : {std::pair{2U, 4U},
                                       {4U, 4U},
                                       {5U, 9U},
                                       {10U, 16U},
                                       {25U, 25U},
                                       {26U, 36U},
                                       {37U, 49U},
                                       {50U, 64U},
                                       {1U, 1U}}) {
        ASSERT_EQ(m_zero.SetMode(From1To(count)), 0);
        EXPECT_TRUE(m_zero.Shows(InSquareOf(cells, From1To(count)))) << count;
    }
    const auto after = m_zero.Next();
    ASSERT_TRUE(after);
    EXPECT_GT(after->frame.header.frame_no, before->frame.header.frame_no) << "one stream all the time";
}

TEST_F(ZeroTest, SetMode_MoreThanFit_OrNothing_FallsBackToOnePicture) {
    ASSERT_EQ(m_zero.Start({1, 2, 3, 4}), m_session.Login());
    ASSERT_TRUE(m_zero.Shows({1, 2, 3, 4}));
    ASSERT_EQ(m_zero.SetMode(From1To(70)), 0);
    EXPECT_TRUE(m_zero.Shows({1}));
    ASSERT_EQ(m_zero.SetMode({}), 0);
    EXPECT_TRUE(m_zero.Shows({0})) << "no channel at all";
    ASSERT_EQ(m_zero.SetMode({5, CHANNELS + 1, 0, 7}), 0);
    EXPECT_TRUE(m_zero.Shows({5, 0, 0, 7}));
}

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(ZeroTest, Read_FramesAreTheZeroChannels_FromAKeyFrameOn) {
    ASSERT_EQ(m_zero.Start({1}), m_session.Login());
    unsigned number = 0;
    for (int i = 0; i < 11; ++i) {
        const auto read = m_zero.Next();
        ASSERT_TRUE(read);
        EXPECT_EQ(read->type, i % 5 == 0 ? HOSTMGR_FRAME_ZERO_KEY : HOSTMGR_FRAME_ZERO_DELTA) << i;
        EXPECT_EQ(read->type, read->frame.header.frame_type);
        EXPECT_EQ(read->length, read->frame.payload.size() + HOSTMGR_FRAME_HEADER_SIZE);
        EXPECT_EQ(read->frame.header.frame_no, i == 0 ? read->frame.header.frame_no : number + 1);
        number = read->frame.header.frame_no;
    }
}

TEST_F(ZeroTest, Read_HeldFrame_KeepsItsBytesUntilTheNextOne_AndIsGivenBackByStop) {
    {
        const Session session;
        Zero zero(session.Login());
        ASSERT_EQ(zero.Start({1}), session.Login());
        const auto held = zero.Next();
        ASSERT_TRUE(held);
        EXPECT_EQ(HeldFrames(), 1);
        const Session other;
        Zero watcher(other.Login());
        ASSERT_EQ(watcher.Start({1}), other.Login());
        for (int i = 0; i < 8; ++i) {
            ASSERT_TRUE(watcher.Next());
        }
        EXPECT_EQ(
            memcmp(held->bytes + HOSTMGR_FRAME_HEADER_SIZE, held->frame.payload.data(), held->frame.payload.size()), 0);
        EXPECT_EQ(watcher.Stop(), 0);
        EXPECT_EQ(HeldFrames(), 1);
        ASSERT_TRUE(zero.Next());
        EXPECT_EQ(HeldFrames(), 1);
        EXPECT_EQ(zero.Stop(), 0);
        EXPECT_EQ(HeldFrames(), 0);
    }
    EXPECT_EQ(control::Complaints(), std::vector<std::string>());
}

TEST_F(ZeroTest, Read_AfterStopAndStart_BeginsWithAKeyFrameAgain) {
    ASSERT_EQ(m_zero.Start({1}), m_session.Login());
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(m_zero.Next());
    }
    ASSERT_EQ(m_zero.Stop(), 0);
    ASSERT_EQ(m_zero.Start({2}), m_session.Login());
    const auto read = m_zero.Next();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->type, HOSTMGR_FRAME_ZERO_KEY);
}

// ---- start and stop ------------------------------------------------------------------------------------------------

TEST_F(ZeroTest, Start_Twice_IsRefusedAndChangesNothing) {
    ASSERT_EQ(m_zero.Start({1}), m_session.Login());
    ASSERT_TRUE(m_zero.Shows({1}));
    EXPECT_EQ(m_zero.Start({2}), -1);
    const AVFrame* picture = m_zero.NextPicture();
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(mosaic::CellsOf(*picture, 1), std::vector<unsigned>{1});
}

TEST_F(ZeroTest, NothingToShow_IsRefusedWithoutAskingTheRecorder) {
    control::Fail("vexo_model_zero_channel_set_enable", 1);
    control::Fail("vexo_model_zero_channel_set_video_channels", 1);
    EXPECT_EQ(m_zero.Start({}), -1);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartZeroCodec(m_session.Login(), 0, 4, nullptr), -1);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_SetZeroCodecMode(m_session.Login(), 0, 4, nullptr), -1);
    EXPECT_EQ(m_zero.Start({1}), -1) << "the first use of that operation";
    EXPECT_EQ(m_zero.Start({1}), -1) << "the first use of the other one";
    EXPECT_EQ(m_zero.Start({1}), m_session.Login());
}

TEST_F(ZeroTest, Start_ListRefusedByTheRecorder_LeavesTheChannelOnAndStartCanBeTriedAgain) {
    control::Fail("vexo_model_zero_channel_set_video_channels", 1);
    EXPECT_EQ(m_zero.Start({1}), -1);
    ASSERT_EQ(m_zero.Start({2}), m_session.Login());
    EXPECT_TRUE(m_zero.Shows({2}));
    control::Fail("vexo_model_zero_channel_set_enable", 1);
    EXPECT_EQ(m_zero.Stop(), 0);
    EXPECT_EQ(m_zero.Start({1}), -1);
}

TEST_F(ZeroTest, Read_FailsOnce_KeepsTheHeldFrameAndGoesOn) {
    ASSERT_EQ(m_zero.Start({1}), m_session.Login());
    const auto first = m_zero.Next();
    ASSERT_TRUE(first);
    control::Fail("vexo_model_zero_channel_get_frame", 1);
    EXPECT_FALSE(m_zero.Try());
    EXPECT_EQ(HeldFrames(), 1);
    const auto second = m_zero.Next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->frame.header.frame_no, first->frame.header.frame_no + 1);
}

TEST_F(ZeroTest, Stop_TheRecorderGoesOn_ForTheOtherLogin) {
    const Session other;
    Zero reader(other.Login());
    ASSERT_EQ(m_zero.Start({1, 2}), m_session.Login());
    ASSERT_EQ(reader.Start({3}), other.Login());
    EXPECT_TRUE(m_zero.Shows({3})) << "there is one mosaic for all";
    ASSERT_EQ(m_zero.Stop(), 0);
    EXPECT_TRUE(reader.Shows({3}));
    ASSERT_EQ(m_zero.SetMode({4}), 0) << "started or not does not matter";
    EXPECT_TRUE(reader.Shows({4}));
}

TEST_F(ZeroTest, ReadAndLaidOut_ByManyThreads_NothingIsLeft) {
    std::atomic<int> failures{0};
    {
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < 4; ++i) {
            threads.emplace_back([&failures, i] {
                const Session session;
                Zero zero(session.Login());
                failures += zero.Start({i + 1}) == session.Login() ? 0 : 1;
                for (unsigned turn = 0; turn < 6; ++turn) {
                    failures += zero.SetMode(From1To(turn * 4 + i)) == 0 ? 0 : 1;
                    failures += zero.Next() ? 0 : 1;
                }
                failures += zero.Stop() == 0 ? 0 : 1;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(HeldFrames(), 0);
    EXPECT_EQ(control::Complaints(), std::vector<std::string>());
}

}  // namespace
