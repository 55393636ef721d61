// The simulated recorder's cameras by plain calls: what comes out of the live frame lists is decoded, looked at and
// listened to. How readers walk the lists stands in frame_list_test.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "control.h"
#include "live_reader.h"
#include "live_recorder.h"

namespace control = simulator::control;

namespace {

using live::Decoder;
using live::Eventually;
using live::FILM;
using live::FILM_LUMA;
using live::Frame;
using live::MeanLuma;
using live::NO_FILM;
using live::OTHER_SCENE;
using live::Reader;
using live::SCENE;
using live::Settings;
using live::StampIn;

bool IsActive(unsigned channel) {
    const std::vector<unsigned> active = control::ActiveCameras();
    return std::find(active.begin(), active.end(), channel + 1) != active.end();
}

TEST(Camera, FirstFrame_Main_IsAKeyFrameThatDecodesAndTellsItsTime) {
    Reader reader(SCENE, VEXO_ENC_STR_MAIN);
    const auto frame = reader.Next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->header.magic, VEXO_FRAME_MAGIC);
    EXPECT_EQ(frame->header.frame_type, unsigned{VEXO_FRAME_MAIN_KEY});
    EXPECT_EQ(frame->header.codec, 1);
    EXPECT_EQ(frame->header.format[0], 25);
    EXPECT_EQ(frame->header.width, 640);
    EXPECT_EQ(frame->header.height, 360);
    EXPECT_LT(frame->header.microseconds, 1000000U);
    EXPECT_NEAR(static_cast<double>(frame->header.seconds), static_cast<double>(time(nullptr)), 60);
    EXPECT_FALSE(frame->no_video);
    Decoder decoder;
    const AVFrame* picture = decoder.Decode(*frame);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->width, 640);
    EXPECT_EQ(picture->height, 360);
    const auto stamp = StampIn(*picture);
    ASSERT_TRUE(stamp);
    EXPECT_EQ(stamp->channel, SCENE + 1);
    EXPECT_EQ(stamp->milliseconds, frame->Milliseconds());
}

// Walks two and a half rounds of a stream: types, numbers, and the stamp of every single picture.
void ExpectSteadyStream(unsigned channel, vexo_enc_str_type type, const simulator::VideoSettings& settings) {
    Reader reader(channel, type);
    Decoder decoder;
    std::optional<Frame> last;
    for (unsigned i = 0; i < settings.gop * 5 / 2; ++i) {
        const auto frame = reader.Next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->Key(), i % settings.gop == 0) << "frame " << i;
        if (last) {
            EXPECT_EQ(frame->header.frame_no, last->header.frame_no + 1);
            EXPECT_GT(frame->Milliseconds(), last->Milliseconds());
        }
        const AVFrame* picture = decoder.Decode(*frame);
        ASSERT_NE(picture, nullptr) << "frame " << i;
        EXPECT_EQ(picture->width, static_cast<int>(settings.width));
        EXPECT_EQ(picture->height, static_cast<int>(settings.height));
        const auto stamp = StampIn(*picture);
        ASSERT_TRUE(stamp) << "frame " << i;
        EXPECT_EQ(stamp->channel, channel + 1);
        EXPECT_EQ(stamp->milliseconds, frame->Milliseconds());
        last = frame;
    }
}

TEST(Camera, MainStream_TwoRounds_KeyFramesOnScheduleAndEveryStampRight) {
    ExpectSteadyStream(SCENE, VEXO_ENC_STR_MAIN, Settings(SCENE).main);
}

TEST(Camera, SubStream_TwoRounds_KeyFramesOnScheduleAndEveryStampRight) {
    ExpectSteadyStream(SCENE, VEXO_ENC_STR_SUB, Settings(SCENE).sub);
}

TEST(Camera, SubStream_HalfItsSize_StampIsStillRead) {
    Reader reader(SCENE, VEXO_ENC_STR_SUB);
    Decoder decoder;
    simulator::Av<AVFrame> half = simulator::NewPicture(176, 144);
    simulator::Av<SwsContext> scaler;
    for (int i = 0; i < 12; ++i) {
        const auto frame = reader.Next();
        ASSERT_TRUE(frame);
        const AVFrame* picture = decoder.Decode(*frame);
        ASSERT_NE(picture, nullptr);
        ASSERT_TRUE(simulator::Scale(*picture, *half, &scaler));
        const auto stamp = StampIn(*half);
        ASSERT_TRUE(stamp) << "frame " << i;
        EXPECT_EQ(stamp->milliseconds, frame->Milliseconds());
    }
}

TEST(Camera, TimeStamps_OverSomeSeconds_KeepTheFrameRate) {
    Reader reader(SCENE, VEXO_ENC_STR_MAIN);
    const auto first = reader.Next();
    ASSERT_TRUE(first);
    // Pictures may be left out when the machine is busy, so each must lie on the grid of the rate, not be the next.
    for (int i = 0; i < 60; ++i) {
        const auto frame = reader.Next();
        ASSERT_TRUE(frame);
        const double since = static_cast<double>(frame->Milliseconds() - first->Milliseconds()) / 40;
        EXPECT_NEAR(since, std::round(since), 0.1) << "frame " << i;
    }
}

/** A-law to linear, full scale 1. */
double Linear(unsigned char code) {
    code ^= 0x55;
    const int exponent = (code >> 4) & 7;
    const int step = ((code & 15) << 4) + 8;
    const int value = exponent == 0 ? step : (step + 256) << (exponent - 1);
    return ((code & 0x80) != 0 ? value : -value) / 32768.0;
}

/** Amplitude of one pitch in samples at 8000 Hz. */
double AmplitudeAt(double hz, const std::vector<double>& samples) {
    double real = 0;
    double imaginary = 0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double angle = 2 * M_PI * hz * static_cast<double>(i) / 8000;
        real += samples[i] * std::cos(angle);
        imaginary += samples[i] * std::sin(angle);
    }
    return 2 * std::hypot(real, imaginary) / static_cast<double>(samples.size());
}

void ExpectTone(unsigned channel) {
    Reader reader(channel, VEXO_ENC_STR_AUDIO);
    std::vector<double> samples;
    while (samples.size() < 16000) {
        const auto frame = reader.Next();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->header.frame_type, unsigned{VEXO_FRAME_AUDIO});
        EXPECT_EQ(frame->header.codec, 2);
        EXPECT_EQ(frame->header.format[0], 8000 & 0xFF);
        EXPECT_EQ(frame->header.format[2], 1);
        EXPECT_EQ(frame->header.width, 0);
        ASSERT_EQ(frame->payload.size(), 320U);
        std::transform(frame->payload.begin(), frame->payload.end(), std::back_inserter(samples), Linear);
    }
    // Over two seconds a tone whose phase jumps between blocks would lose its amplitude at its pitch.
    const double pitch = Settings(channel).audio_hz;
    const double level = Settings(channel).audio_level;
    EXPECT_NEAR(AmplitudeAt(pitch, samples), level, level * 0.02);
    EXPECT_LT(AmplitudeAt(pitch + 5, samples), level * 0.02);
    EXPECT_LT(AmplitudeAt(pitch * 1.5, samples), level * 0.02);
}

TEST(Camera, Audio_TwoSeconds_IsTheScenariosTone) {
    ExpectTone(SCENE);
    ExpectTone(OTHER_SCENE);
}

TEST(Camera, NoSignal_BlackPictureWithStampAndFlag_UntilItComesBack) {
    Reader reader(OTHER_SCENE, VEXO_ENC_STR_MAIN);
    Decoder decoder;
    std::optional<Frame> frame;
    const AVFrame* picture = nullptr;
    const auto next_with = [&](bool no_video) {
        return Eventually([&] {
            frame = reader.Next();
            picture = frame ? decoder.Decode(*frame) : nullptr;
            return !frame || frame->no_video == no_video;
        });
    };
    ASSERT_TRUE(next_with(false) && frame && picture != nullptr);
    EXPECT_GT(MeanLuma(*picture, 0, 20, 100, 40), 60);
    control::SetSignal(OTHER_SCENE + 1, false);
    ASSERT_TRUE(next_with(true) && frame && picture != nullptr);
    EXPECT_LT(MeanLuma(*picture, 0, 20, 100, 40), 24);   // nothing is to be seen
    EXPECT_GT(MeanLuma(*picture, 20, 40, 80, 60), 24);   // but the notice
    EXPECT_GT(MeanLuma(*picture, 70, 88, 100, 95), 17);  // and the mark
    const auto stamp = StampIn(*picture);
    ASSERT_TRUE(stamp);
    EXPECT_EQ(stamp->milliseconds, frame->Milliseconds());
    control::SetSignal(OTHER_SCENE + 1, true);
    ASSERT_TRUE(next_with(false) && frame && picture != nullptr);
    EXPECT_GT(MeanLuma(*picture, 0, 20, 100, 40), 60);
}

TEST(Camera, VideoFile_IsPlayedOverAndOver) {
    Reader reader(FILM, VEXO_ENC_STR_MAIN);
    Decoder decoder;
    int dark_to_bright = 0;
    bool dark = false;
    EXPECT_TRUE(Eventually([&] {
        const auto frame = reader.Next();
        const AVFrame* picture = frame ? decoder.Decode(*frame) : nullptr;
        if (picture == nullptr || frame->no_video || !StampIn(*picture)) {
            ADD_FAILURE() << "a frame without picture, signal or stamp";
            return true;
        }
        const double luma = MeanLuma(*picture, 30, 30, 70, 70);
        EXPECT_TRUE(std::fabs(luma - FILM_LUMA[0]) < 12 || std::fabs(luma - FILM_LUMA[1]) < 12) << luma;
        dark_to_bright += dark && luma > 120 ? 1 : 0;
        dark = luma < 120;
        return dark_to_bright == 3;
    }));
}

TEST(Camera, FileThatIsNoVideo_GivesNoSignal) {
    const auto frame = Reader(NO_FILM, VEXO_ENC_STR_MAIN).Next();
    ASSERT_TRUE(frame);
    EXPECT_TRUE(frame->no_video);
    EXPECT_TRUE(Decoder().Decode(*frame));
}

TEST(Camera, NobodyReads_StopsAndStartsAgainWithAKeyFrameOfANewGeneration) {
    Reader reader(SCENE, VEXO_ENC_STR_SUB);
    const auto before = reader.Next();
    ASSERT_TRUE(before);
    EXPECT_TRUE(IsActive(SCENE));
    ASSERT_TRUE(Eventually([] { return !IsActive(SCENE); }));
    const auto after = reader.Next();
    ASSERT_TRUE(after);
    EXPECT_TRUE(after->Key());
    EXPECT_NE(after->note.note[1], before->note.note[1]);
    EXPECT_GT(after->header.frame_no, before->header.frame_no);
    EXPECT_TRUE(IsActive(SCENE));
}

TEST(Camera, OtherCameraIsRead_DoesNotStart) {
    const bool read_before = IsActive(OTHER_SCENE);
    ASSERT_TRUE(Reader(SCENE, VEXO_ENC_STR_AUDIO).Next());
    EXPECT_TRUE(IsActive(SCENE));
    EXPECT_LE(IsActive(OTHER_SCENE), read_before);
}

TEST(CameraDeathTest, ProcessEnds_CamerasAtWork_EndsCleanly) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    const auto end_at_work = [] {
        for (const vexo_enc_str_type type : {VEXO_ENC_STR_MAIN, VEXO_ENC_STR_SUB, VEXO_ENC_STR_AUDIO}) {
            for (const unsigned channel : {SCENE, FILM}) {
                Reader(channel, type).Next();
            }
        }
        exit(IsActive(SCENE) && IsActive(FILM) ? 0 : 1);
    };
    EXPECT_EXIT(end_at_work(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
