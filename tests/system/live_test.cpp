// Live view through the exported functions: what ReadRealOneFrame hands out is decoded, and the picture itself says
// when and where it was made. Logins and hostile callers stand in session_test.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "agent.h"

using agent::Buffer;
using agent::Read;
using agent::Session;

namespace {

constexpr unsigned SUB = HOSTMGR_STREAM_SUB;
constexpr unsigned MAIN = HOSTMGR_STREAM_MAIN;

class LiveTest : public agent::LibraryTest {
protected:
    LiveTest() { EXPECT_GT(m_session.Login(), 0); }
    const Session m_session;
};

// ---- pictures ------------------------------------------------------------------------------------------------------

/** A stream and what its pictures must be like. */
struct StreamCase {
    const char* name;
    unsigned channel;
    unsigned stream;
    int width, height;
    unsigned period;  ///< milliseconds from picture to picture
    unsigned key_type, delta_type;
};

class PictureTest : public LiveTest, public testing::WithParamInterface<StreamCase> {};

TEST_P(PictureTest, ReadRealOneFrame_Pictures_ShowTheHeadersTimeAndChannel) {
    const StreamCase& expected = GetParam();
    Buffer buffer(m_session.Login(), expected.channel, expected.stream);
    buffer.EnableAudio(0);
    live::Decoder decoder;
    for (int i = 0; i < 30; ++i) {
        const auto read = buffer.Next();
        ASSERT_TRUE(read.has_value());
        const AVFrame* picture = decoder.Decode(read->frame);
        ASSERT_NE(picture, nullptr) << "frame " << read->Number();
        EXPECT_EQ(picture->width, expected.width);
        EXPECT_EQ(picture->height, expected.height);
        const auto stamp = live::StampIn(*picture);
        ASSERT_TRUE(stamp.has_value()) << "frame " << read->Number();
        EXPECT_EQ(stamp->channel, expected.channel);
        EXPECT_NEAR(static_cast<double>(stamp->milliseconds), static_cast<double>(read->frame.Milliseconds()),
                    expected.period);
    }
}

TEST_P(PictureTest, ReadRealOneFrame_Outputs_AgreeWithTheHeader) {
    const StreamCase& expected = GetParam();
    Buffer buffer(m_session.Login(), expected.channel, expected.stream);
    for (int i = 0; i < 40; ++i) {
        const auto read = buffer.Next();
        ASSERT_TRUE(read.has_value());
        const vexo_frame_header& header = read->frame.header;
        EXPECT_EQ(read->channel, expected.channel);
        EXPECT_EQ(read->stream, expected.stream);
        EXPECT_EQ(read->length, header.data_length + HOSTMGR_FRAME_HEADER_SIZE);
        EXPECT_EQ(read->type, header.frame_type);
        EXPECT_EQ(read->flags, 0U);
        if (!read->Audio()) {
            EXPECT_TRUE(read->type == expected.key_type || read->type == expected.delta_type) << read->type;
            EXPECT_EQ(header.width, expected.width);
            EXPECT_EQ(header.height, expected.height);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Streams, PictureTest,
                         testing::Values(StreamCase{"Channel1Main", 1, MAIN, 640, 360, agent::MAIN_PERIOD,
                                                    HOSTMGR_FRAME_MAIN_KEY, HOSTMGR_FRAME_MAIN_DELTA},
                                         StreamCase{"Channel1Sub", 1, SUB, 320, 240, agent::SUB_PERIOD,
                                                    HOSTMGR_FRAME_SUB_KEY, HOSTMGR_FRAME_SUB_DELTA},
                                         StreamCase{"Channel2Sub", 2, SUB, 320, 240, agent::SUB_PERIOD,
                                                    HOSTMGR_FRAME_SUB_KEY, HOSTMGR_FRAME_SUB_DELTA}),
                         [](const auto& stream) { return stream.param.name; });

TEST_F(LiveTest, ReadRealOneFrame_FreshBuffer_BeginsWithAKeyFrame) {
    Buffer buffer(m_session.Login(), 1, MAIN);
    const auto read = buffer.Next(false);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->type, HOSTMGR_FRAME_MAIN_KEY);
}

TEST_F(LiveTest, ReadRealOneFrame_LostSignal_SetsTheFlagUntilItIsBack) {
    Buffer buffer(m_session.Login(), 1, MAIN);
    live::Decoder decoder;
    const auto flag_becomes = [&](unsigned flag) {
        return live::Eventually([&] {
            const auto read = buffer.Next(false);
            const AVFrame* picture = read ? decoder.Decode(read->frame) : nullptr;
            return picture != nullptr && live::StampIn(*picture).has_value() && read->flags == flag;
        });
    };
    EXPECT_TRUE(flag_becomes(0));
    simulator::control::SetSignal(1, false);
    EXPECT_TRUE(flag_becomes(HOSTMGR_LIVE_NO_VIDEO));
    simulator::control::SetSignal(1, true);
    EXPECT_TRUE(flag_becomes(0));
}

// ---- order ---------------------------------------------------------------------------------------------------------

TEST_F(LiveTest, ReadRealOneFrame_FrameNumbers_RiseWithoutGaps) {
    Buffer buffer(m_session.Login(), 1, MAIN);
    std::optional<unsigned> last[2];
    for (int i = 0; i < 100; ++i) {
        const auto read = buffer.Next();
        ASSERT_TRUE(read.has_value());
        auto& number = last[read->Audio() ? 1 : 0];
        if (number) {
            EXPECT_EQ(read->Number(), *number + 1) << (read->Audio() ? "audio" : "video");
        }
        number = read->Number();
    }
    EXPECT_TRUE(last[0] && last[1]) << "both video and audio";
}

/** The last frames that a buffer has read, by kind: video, audio. */
using LastRead = std::array<std::optional<Read>, 2>;

/** Waits, with a reader of its own, until so many frames of both kinds have come after these. */
bool BothWait(int login, const LastRead& last, unsigned count) {
    Buffer watcher(login, last[0]->channel, last[0]->stream);
    std::array<unsigned, 2> waiting = {0, 0};
    while (waiting[0] < count || waiting[1] < count) {
        const auto read = watcher.Next();
        if (!read) {
            return false;
        }
        const size_t kind = read->Audio() ? 1 : 0;
        waiting[kind] = std::max(read->Number(), last[kind]->Number()) - last[kind]->Number();
    }
    return true;
}

TEST_F(LiveTest, ReadRealOneFrame_BothKindsWaiting_TakeTurns) {
    Buffer buffer(m_session.Login(), 1, MAIN);
    LastRead last;
    bool last_was_audio = false;
    while (!last[0] || !last[1]) {
        const auto read = buffer.Next();
        ASSERT_TRUE(read.has_value());
        last_was_audio = read->Audio();
        last[last_was_audio ? 1 : 0] = read;
    }
    ASSERT_TRUE(BothWait(m_session.Login(), last, 10));
    for (int i = 0; i < 20; ++i) {
        const auto read = buffer.Try();
        ASSERT_TRUE(read.has_value()) << i;
        EXPECT_NE(read->Audio(), last_was_audio) << i;
        last_was_audio = read->Audio();
    }
}

TEST_F(LiveTest, RealStreamBufferEnableAudio_OnlyOneIsOn) {
    Buffer buffer(m_session.Login(), 1, MAIN);
    for (const unsigned off : {0U, 2U}) {
        ASSERT_TRUE(buffer.Next(true).has_value()) << "audio is on";
        EXPECT_EQ(buffer.EnableAudio(off), 0);
        for (int i = 0; i < 20; ++i) {
            const auto read = buffer.Next();
            ASSERT_TRUE(read.has_value());
            EXPECT_FALSE(read->Audio());
        }
        EXPECT_EQ(buffer.EnableAudio(1), 0);
    }
}

TEST_F(LiveTest, ReadRealOneFrame_SlowReader_GoesOnAtAKeyFrame) {
    Buffer slow(m_session.Login(), 1, MAIN);
    slow.EnableAudio(0);
    const auto first = slow.Next();
    ASSERT_TRUE(first.has_value());
    Buffer watcher(m_session.Login(), 1, MAIN);
    watcher.EnableAudio(0);
    for (auto read = watcher.Next(); read && read->Number() <= first->Number() + agent::FRAMES_KEPT + 5;) {
        read = watcher.Next();
    }
    auto read = slow.Next();
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->type, HOSTMGR_FRAME_MAIN_KEY);
    EXPECT_GT(read->Number(), first->Number() + 1);
    for (int i = 0; i < 10; ++i) {
        const unsigned last = read->Number();
        read = slow.Next();
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->Number(), last + 1);
    }
}

// ---- sound ---------------------------------------------------------------------------------------------------------

/** The sound of consecutive frames, decoded; fewer samples when a frame did not come or numbers were left out. */
std::vector<int16_t> Listen(Buffer* buffer, int frames) {
    simulator::Av<AVCodecContext> codec(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_PCM_ALAW)));
    codec->sample_rate = 8000;
    av_channel_layout_default(&codec->ch_layout, 1);
    avcodec_open2(codec.get(), nullptr, nullptr);
    simulator::Av<AVPacket> packet(av_packet_alloc());
    simulator::Av<AVFrame> piece(av_frame_alloc());
    std::vector<int16_t> sound;
    std::optional<unsigned> last;
    for (int i = 0; i < frames; ++i) {
        const auto read = buffer->Next(true);
        if (!read || (last && read->Number() != *last + 1) ||
            av_new_packet(packet.get(), static_cast<int>(read->frame.payload.size())) != 0) {
            return sound;
        }
        last = read->Number();
        memcpy(packet->data, read->frame.payload.data(), read->frame.payload.size());
        if (avcodec_send_packet(codec.get(), packet.get()) == 0 &&
            avcodec_receive_frame(codec.get(), piece.get()) == 0) {
            const auto* samples = reinterpret_cast<const int16_t*>(piece->data[0]);
            sound.insert(sound.end(), samples, samples + piece->nb_samples);
        }
        av_packet_unref(packet.get());
    }
    return sound;
}

unsigned RisesThroughZero(const std::vector<int16_t>& sound) {
    unsigned count = 0;
    for (size_t i = 1; i < sound.size(); ++i) {
        count += sound[i - 1] < 0 && sound[i] >= 0 ? 1 : 0;
    }
    return count;
}

TEST_F(LiveTest, ReadRealOneFrame_Audio_HasTheCamerasPitchAndLevel) {
    for (const unsigned channel : {1U, 2U}) {
        Buffer buffer(m_session.Login(), channel, SUB);
        const std::vector<int16_t> sound = Listen(&buffer, 50);  // two seconds
        ASSERT_EQ(sound.size(), 16000U);
        EXPECT_NEAR(RisesThroughZero(sound), 2.0 * agent::PITCH[channel - 1], 1.5);
        const double power = std::inner_product(sound.begin(), sound.end(), sound.begin(), 0.0) / 16000;
        EXPECT_NEAR(std::sqrt(power), 0.3 * 32767 / std::sqrt(2), 200);
    }
}

// ---- holding -------------------------------------------------------------------------------------------------------

TEST_F(LiveTest, ReadRealOneFrame_HeldFrame_IsGivenBackByNextReadReleaseAndDestroy) {
    Buffer buffer(m_session.Login(), 1, MAIN);
    ASSERT_TRUE(buffer.Next().has_value());
    EXPECT_EQ(HeldFrames(), 1);
    ASSERT_TRUE(buffer.Next().has_value());
    EXPECT_EQ(HeldFrames(), 1);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_ReleaseRealOneFrame(buffer.Handle()), 0);
    EXPECT_EQ(HeldFrames(), 0);
    ASSERT_TRUE(buffer.Next().has_value());
    EXPECT_EQ(buffer.Destroy(), 0);
    EXPECT_EQ(HeldFrames(), 0);
}

TEST_F(LiveTest, ReadRealOneFrame_HeldFrame_KeepsItsBytesWhileTheListRollsOn) {
    Buffer holder(m_session.Login(), 1, MAIN);
    const auto held = holder.Next(false);
    ASSERT_TRUE(held.has_value());
    Buffer other(m_session.Login(), 1, MAIN);
    other.EnableAudio(0);
    for (auto read = other.Next(); read && read->Number() <= held->Number() + agent::FRAMES_KEPT;) {
        read = other.Next();
    }
    EXPECT_EQ(memcmp(held->bytes + HOSTMGR_FRAME_HEADER_SIZE, held->frame.payload.data(), held->frame.payload.size()),
              0);
}

TEST_F(LiveTest, CreateRealStreamBuffer_TwoOnOneStream_AreIndependent) {
    Buffer first(m_session.Login(), 1, MAIN);
    Buffer second(m_session.Login(), 1, MAIN);
    EXPECT_NE(first.Handle(), second.Handle());
    first.EnableAudio(0);
    for (int i = 0; i < 15; ++i) {
        ASSERT_TRUE(first.Next().has_value());
    }
    auto held = second.Next(false);
    ASSERT_TRUE(held.has_value());
    EXPECT_EQ(held->type, HOSTMGR_FRAME_MAIN_KEY) << "begins for itself";
    EXPECT_EQ(first.Destroy(), 0);
    EXPECT_EQ(HeldFrames(), 1);
    EXPECT_EQ(memcmp(held->bytes + HOSTMGR_FRAME_HEADER_SIZE, held->frame.payload.data(), held->frame.payload.size()),
              0);
    unsigned last = held->Number();
    bool heard = false;
    for (int i = 0; i < 15 || !heard; ++i) {
        const auto read = second.Next();
        ASSERT_TRUE(read.has_value());
        heard = heard || read->Audio();  // its audio is its own
        if (!read->Audio()) {
            EXPECT_GT(read->Number(), last);  // a reader held up by a busy machine may lose some
            last = read->Number();
        }
    }
}

TEST_F(LiveTest, CreateRealStreamBuffer_UnknownChannel_NeverGivesAFrame) {
    Buffer buffer(m_session.Login(), agent::UNKNOWN_CHANNEL, MAIN);
    EXPECT_GT(buffer.Handle(), 0);
    for (int i = 0; i < 100; ++i) {
        EXPECT_FALSE(buffer.Try().has_value());
    }
}

class LiveEndTest : public agent::LibraryTest {};

TEST_F(LiveEndTest, DestroyAndLogout_AfterReading_NothingIsLeft) {
    {
        const Session session;
        Buffer main(session.Login(), 1, MAIN);
        Buffer sub(session.Login(), 2, SUB);
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(main.Next().has_value());
            ASSERT_TRUE(sub.Next().has_value());
        }
        EXPECT_EQ(HeldFrames(), 2);
    }
    ExpectAllGivenBack();
}

}  // namespace
