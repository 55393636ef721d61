// The simulated recorder's talk by plain calls: the tone that its microphone hears, at its pace, and what its
// loudspeaker plays, as the WAV file that it leaves. A sound file as microphone stands in talk_file_test.cpp.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <optional>
#include <thread>

#include "control.h"
#include "device_support.h"
#include "live_reader.h"
#include "recorder_test_support.h"
#include "sound.h"

namespace control = simulator::control;
using device::Home;
using device::Login;
using live::Eventually;
using recorder_test::Contains;
using recorder_test::CountOutstanding;
using recorder_test::NewComplaints;
using sound::Encoded;
using sound::ExpectTone;
using sound::FromALaw;

namespace {

[[maybe_unused]] const testing::Environment* const RECORDER =
    testing::AddGlobalTestEnvironment(new device::Recorder(R"({
    "cameras": [{"name": "Gate"}, {"name": "Yard", "audio": {"hz": 1250, "level": 0.7}}],
    "talk": {"hz": 620, "level": 0.4}
})"));

constexpr unsigned MULAW = 1;
constexpr unsigned ALAW = 2;
constexpr unsigned ADPCM = 4;
constexpr unsigned FRAME = 36 + 320;

class TalkTest : public testing::Test {
protected:
    void Start(vexo_talk_mode mode, unsigned channel) {
        ASSERT_EQ(vexo_model_start_talking(m_login.Id(), mode, channel, &m_talk), 0);
        ASSERT_GE(static_cast<int>(m_talk), 1);
    }
    void TearDown() override {
        if (m_talk != 0) {
            EXPECT_EQ(vexo_model_stop_talking(m_talk), 0);
        }
    }

    /** The next captured frame. */
    std::vector<unsigned char> Capture() {
        std::vector<unsigned char> frame(4096, 0xEE);
        EXPECT_TRUE(Eventually([&] { return vexo_model_get_talking_frame(m_talk, frame.data(), 4096) == 0; }));
        EXPECT_EQ(frame[FRAME], 0xEE) << "more than a frame was written";
        frame.resize(FRAME);
        return frame;
    }

    std::vector<double> CaptureSamples(size_t count) {
        std::vector<double> samples;
        while (samples.size() < count) {
            const std::vector<unsigned char> frame = Capture();
            std::transform(frame.begin() + 36, frame.end(), std::back_inserter(samples), FromALaw);
        }
        return samples;
    }

    int Play(unsigned codec, const std::vector<unsigned char>& payload) const {
        vexo_frame_header header = {};
        header.magic = VEXO_FRAME_MAGIC;
        header.frame_type = VEXO_FRAME_AUDIO;
        header.data_length = static_cast<unsigned>(payload.size());
        header.codec = static_cast<unsigned char>(codec);
        std::vector<unsigned char> frame(sizeof header + payload.size());
        memcpy(frame.data(), &header, sizeof header);
        std::copy(payload.begin(), payload.end(), frame.begin() + sizeof header);
        return vexo_model_play_talking_frame(m_talk, frame.data());
    }

    Login m_login;
    unsigned m_talk = 0;
};

vexo_frame_header HeaderOf(const std::vector<unsigned char>& frame) {
    vexo_frame_header header;
    memcpy(&header, frame.data(), sizeof header);
    return header;
}

// ---- captured ------------------------------------------------------------------------------------------------------

TEST_F(TalkTest, Captured_Frame_HasTheHeaderOfLiveSound) {
    Start(VEXO_TALK_DEVICE, 0);
    const vexo_frame_header first = HeaderOf(Capture());
    const vexo_frame_header second = HeaderOf(Capture());
    EXPECT_EQ(first.magic, VEXO_FRAME_MAGIC);
    EXPECT_EQ(first.frame_type, unsigned{VEXO_FRAME_AUDIO});
    EXPECT_EQ(first.data_length, 320U);
    EXPECT_EQ(first.codec, ALAW);
    EXPECT_EQ(first.format[0], 8000 & 0xFF);
    EXPECT_EQ(first.format[2], 1);
    EXPECT_NEAR(static_cast<double>(first.seconds), static_cast<double>(time(nullptr)), 60);
    EXPECT_EQ(second.frame_no, first.frame_no + 1);
}

TEST_F(TalkTest, Captured_FromTheRecorder_IsTheScenariosTone) {
    Start(VEXO_TALK_DEVICE, 0);
    ExpectTone(CaptureSamples(12000), 620, 0.4);
}

TEST_F(TalkTest, Captured_FromAChannel_IsTheCamerasTone) {
    Start(VEXO_TALK_CHANNEL, 1);
    ExpectTone(CaptureSamples(12000), 1250, 0.7);
}

TEST_F(TalkTest, Captured_FramesComeAtRealPaceAndLieOnItsGrid) {
    using std::chrono::steady_clock;
    const auto begun = steady_clock::now();
    Start(VEXO_TALK_DEVICE, 0);
    const auto milliseconds = [](const vexo_frame_header& header) {
        return header.seconds * 1000.0 + header.microseconds / 1000.0;
    };
    const double first = milliseconds(HeaderOf(Capture()));
    for (int i = 2; i <= 30; ++i) {
        const double part = (milliseconds(HeaderOf(Capture())) - first) / 40;
        EXPECT_NEAR(part, std::round(part), 0.2) << "frame " << i;
        const double elapsed = std::chrono::duration<double>(steady_clock::now() - begun).count();
        EXPECT_LE(i, elapsed * 25 + 1) << "a frame came before its time";
    }
}

TEST_F(TalkTest, Captured_FetchedLate_FramesTellWhenTheyWereHeard) {
    Start(VEXO_TALK_DEVICE, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(250));  // six frames are due by then
    const vexo_frame_header first = HeaderOf(Capture());
    const vexo_frame_header fifth = [&] {
        for (int i = 0; i < 3; ++i) {
            Capture();
        }
        return HeaderOf(Capture());
    }();
    const double apart = (static_cast<double>(fifth.seconds) - static_cast<double>(first.seconds)) * 1000 +
                         (static_cast<double>(fifth.microseconds) - static_cast<double>(first.microseconds)) / 1000;
    EXPECT_NEAR(apart, 160, 10);
}

TEST_F(TalkTest, Captured_IntoASmallBuffer_IsCutAndStillClaimsItsLength) {
    Start(VEXO_TALK_DEVICE, 0);
    std::array<unsigned char, 64> buffer;
    buffer.fill(0xEE);
    EXPECT_NE(vexo_model_get_talking_frame(m_talk, buffer.data(), 35), 0);
    ASSERT_TRUE(Eventually([&] { return vexo_model_get_talking_frame(m_talk, buffer.data(), 40) == 0; }));
    EXPECT_EQ(HeaderOf({buffer.begin(), buffer.end()}).data_length, 320U);
    EXPECT_EQ(std::count(buffer.begin() + 40, buffer.end(), 0xEE), 24);
}

TEST_F(TalkTest, Captured_BeforeTheFirstIsDue_IsAFailure) {
    Start(VEXO_TALK_DEVICE, 0);
    std::array<unsigned char, 4096> buffer;
    int frames = 0;
    while (vexo_model_get_talking_frame(m_talk, buffer.data(), 4096) == 0) {
        ++frames;
    }
    EXPECT_LT(frames, 38);
}

// ---- played --------------------------------------------------------------------------------------------------------

/** The samples of the newest file of played sound. */
std::vector<double> PlayedSamples() {
    const std::vector<std::filesystem::path> files = sound::PlayedFiles();
    return files.empty() ? std::vector<double>() : sound::WaveSamples(files.back());
}

TEST_F(TalkTest, Played_ALaw_IsTheSameToneInTheFile) {
    Start(VEXO_TALK_DEVICE, 0);
    for (const auto& payload : Encoded(AV_CODEC_ID_PCM_ALAW, sound::Tone(700, 0.5, 16000))) {
        ASSERT_EQ(Play(ALAW, payload), 0);
    }
    const std::vector<double> samples = PlayedSamples();
    EXPECT_EQ(samples.size(), 16000U);
    ExpectTone(samples, 700, 0.5);
}

TEST_F(TalkTest, Played_MuLaw_IsTheSameToneInTheFile) {
    Start(VEXO_TALK_CHANNEL, 0);
    for (const auto& payload : Encoded(AV_CODEC_ID_PCM_MULAW, sound::Tone(900, 0.25, 16000))) {
        ASSERT_EQ(Play(MULAW, payload), 0);
    }
    const std::vector<double> samples = PlayedSamples();
    EXPECT_EQ(samples.size(), 16000U);
    ExpectTone(samples, 900, 0.25);
}

TEST_F(TalkTest, Played_Adpcm_IsTheSameToneInTheFile) {
    Start(VEXO_TALK_DEVICE, 0);
    for (const auto& payload : Encoded(AV_CODEC_ID_ADPCM_IMA_WAV, sound::Tone(500, 0.4, 20000))) {
        ASSERT_EQ(Play(ADPCM, payload), 0);
    }
    const std::vector<double> samples = PlayedSamples();
    EXPECT_GT(samples.size(), 18000U);
    ExpectTone(samples, 500, 0.4);
}

TEST_F(TalkTest, Played_WhatWasCaptured_IsTheSameAgain) {
    Start(VEXO_TALK_DEVICE, 0);
    for (int i = 0; i < 30; ++i) {
        const std::vector<unsigned char> frame = Capture();
        ASSERT_EQ(vexo_model_play_talking_frame(m_talk, frame.data()), 0);
    }
    ExpectTone(PlayedSamples(), 620, 0.4);
}

TEST_F(TalkTest, Played_NothingAtAll_LeavesNoFile) {
    Start(VEXO_TALK_DEVICE, 0);
    const auto files = [] { return std::distance(std::filesystem::directory_iterator(Home() / "talk"), {}); };
    const auto before = files();
    EXPECT_NE(Play(ALAW, {}), 0);
    EXPECT_EQ(files(), before);
}

// ---- misuse --------------------------------------------------------------------------------------------------------

TEST_F(TalkTest, Talk_Open_IsBookedUntilStopped) {
    Start(VEXO_TALK_CHANNEL, 1);
    const std::string line = "talk: " + std::to_string(m_talk) + " with channel 2";
    EXPECT_EQ(CountOutstanding(line), 1);
    EXPECT_EQ(vexo_model_stop_talking(m_talk), 0);
    EXPECT_EQ(CountOutstanding(line), 0);
    m_talk = 0;
}

TEST_F(TalkTest, Start_WithoutLoginChannelModeOrOutput_Fails) {
    unsigned talk = 77;
    EXPECT_NE(vexo_model_start_talking(m_login.Id() + 1, VEXO_TALK_DEVICE, 0, &talk), 0);
    EXPECT_NE(vexo_model_start_talking(m_login.Id(), VEXO_TALK_CHANNEL, 2, &talk), 0);
    EXPECT_NE(vexo_model_start_talking(m_login.Id(), static_cast<vexo_talk_mode>(3), 0, &talk), 0);
    EXPECT_NE(vexo_model_start_talking(m_login.Id(), VEXO_TALK_DEVICE, 0, nullptr), 0);
    EXPECT_EQ(talk, 77U);
}

TEST_F(TalkTest, Stop_Twice_FailsWithComplaint) {
    unsigned talk = 0;
    ASSERT_EQ(vexo_model_start_talking(m_login.Id(), VEXO_TALK_DEVICE, 0, &talk), 0);
    ASSERT_EQ(vexo_model_stop_talking(talk), 0);
    const NewComplaints complaints;
    EXPECT_NE(vexo_model_stop_talking(talk), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "talk given back that was not taken")) << complaints.Text();
}

TEST_F(TalkTest, Use_OnceAfterTheStop_IsOvertaken_TwiceIsMisuse) {
    unsigned talk = 0;
    ASSERT_EQ(vexo_model_start_talking(m_login.Id(), VEXO_TALK_DEVICE, 0, &talk), 0);
    std::vector<unsigned char> frame(4096);
    ASSERT_TRUE(Eventually([&] { return vexo_model_get_talking_frame(talk, frame.data(), 4096) == 0; }));
    ASSERT_EQ(vexo_model_stop_talking(talk), 0);
    const NewComplaints complaints;
    EXPECT_NE(vexo_model_get_talking_frame(talk, frame.data(), 4096), 0);
    EXPECT_NE(vexo_model_play_talking_frame(talk, frame.data()), 0);
    EXPECT_EQ(complaints.Text(), "");
    const std::string handle = std::to_string(talk);
    EXPECT_NE(vexo_model_get_talking_frame(talk, frame.data(), 4096), 0);
    EXPECT_EQ(complaints.Text(), "vexo_model_get_talking_frame with talk " + handle + ", which is not open\n");
    EXPECT_NE(vexo_model_play_talking_frame(talk, frame.data()), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "vexo_model_play_talking_frame with talk " + handle)) << complaints.Text();
    EXPECT_NE(vexo_model_get_talking_frame(talk + 1, frame.data(), 4096), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "with talk " + std::to_string(talk + 1))) << "never given out";
}

TEST_F(TalkTest, Played_WhatIsNoSound_IsRefusedWithComplaint) {
    Start(VEXO_TALK_DEVICE, 0);
    const NewComplaints complaints;
    EXPECT_NE(Play(3, std::vector<unsigned char>(320)), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "320 bytes of codec 3 cannot be decoded")) << complaints.Text();
    EXPECT_NE(Play(ADPCM, std::vector<unsigned char>(3)), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "3 bytes of codec 4 cannot be decoded")) << complaints.Text();
    vexo_frame_header claims = {VEXO_FRAME_MAGIC, VEXO_FRAME_AUDIO, 0, 0, 0, 0xFFFFFFFF, ALAW, {}, {}, 0, 0};
    EXPECT_NE(vexo_model_play_talking_frame(m_talk, reinterpret_cast<unsigned char*>(&claims)), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "it claims 4294967295 bytes of sound")) << complaints.Text();
    const std::array<unsigned char, 36> zeros = {};
    EXPECT_NE(vexo_model_play_talking_frame(m_talk, zeros.data()), 0);
    EXPECT_TRUE(Contains(complaints.Text(), "it does not begin as an audio frame does")) << complaints.Text();
}

TEST_F(TalkTest, Faults_OnOrder_FailOnceEach) {
    control::Fail("vexo_model_start_talking", 1);
    unsigned talk = 77;
    EXPECT_NE(vexo_model_start_talking(m_login.Id(), VEXO_TALK_DEVICE, 0, &talk), 0);
    EXPECT_EQ(talk, 77U);
    Start(VEXO_TALK_DEVICE, 0);
    control::Fail("vexo_model_stop_talking", 1);
    EXPECT_NE(vexo_model_stop_talking(m_talk), 0);
    control::Fail("vexo_model_play_talking_frame", 1);
    EXPECT_NE(Play(ALAW, std::vector<unsigned char>(320, 0xD5)), 0);
    EXPECT_EQ(Play(ALAW, std::vector<unsigned char>(320, 0xD5)), 0);
}

TEST_F(TalkTest, ManyThreads_TalkAtOnce_EachHasItsOwn) {
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 4; ++i) {
        threads.emplace_back([this, i] {
            unsigned talk = 0;
            ASSERT_EQ(vexo_model_start_talking(m_login.Id(), i % 2 ? VEXO_TALK_CHANNEL : VEXO_TALK_DEVICE, 0, &talk),
                      0);
            std::array<unsigned char, 4096> buffer;
            for (int frames = 0; frames < 10;) {
                if (vexo_model_get_talking_frame(talk, buffer.data(), 4096) == 0) {
                    ++frames;
                    EXPECT_EQ(vexo_model_play_talking_frame(talk, buffer.data()), 0);
                }
            }
            EXPECT_EQ(vexo_model_stop_talking(talk), 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
