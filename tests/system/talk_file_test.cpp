// The simulated recorder's microphone when the scenario names a sound file: another rate, two channels, and shorter
// than the talk.
#include <algorithm>
#include <array>
#include <cstring>

#include "device_support.h"
#include "live_reader.h"
#include "sound.h"

namespace {

constexpr double FILE_RATE = 22050;

void Put(std::string* bytes, unsigned value, int size) {
    for (int i = 0; i < size; ++i) {
        bytes->push_back(static_cast<char>(value >> 8 * i & 0xFF));
    }
}

/** A WAV file of two channels with the same tone in both. */
std::string StereoWave(const std::vector<double>& tone) {
    const auto size = static_cast<unsigned>(tone.size() * 4);
    std::string wave = "RIFF";
    Put(&wave, size + 36, 4);
    wave += "WAVEfmt ";
    Put(&wave, 16, 4);
    Put(&wave, 1, 2);
    Put(&wave, 2, 2);
    Put(&wave, static_cast<unsigned>(FILE_RATE), 4);
    Put(&wave, static_cast<unsigned>(FILE_RATE) * 4, 4);
    Put(&wave, 4, 2);
    Put(&wave, 16, 2);
    wave += "data";
    Put(&wave, size, 4);
    for (const double sample : tone) {
        const auto value = static_cast<unsigned>(std::lround(sample * 32767)) & 0xFFFF;
        Put(&wave, value, 2);
        Put(&wave, value, 2);
    }
    return wave;
}

class RecorderWithFile : public device::Recorder {
public:
    RecorderWithFile() : Recorder(R"({"talk": {"source": "voice.wav"}})") {}
    void SetUp() override {
        // Half a second, 300 whole turns: the tone runs on when the file begins anew.
        std::ofstream(device::Home() / "voice.wav", std::ios::binary)
            << StereoWave(sound::Tone(600, 0.45, static_cast<size_t>(FILE_RATE / 2), FILE_RATE));
        Recorder::SetUp();
    }
};
[[maybe_unused]] const testing::Environment* const RECORDER = testing::AddGlobalTestEnvironment(new RecorderWithFile);

TEST(TalkFile, Captured_SoundFile_IsItsToneAtItsPitchAndLevelOverAndOver) {
    const device::Login login;
    unsigned talk = 0;
    ASSERT_EQ(vexo_model_start_talking(login.Id(), VEXO_TALK_DEVICE, 0, &talk), 0);
    std::vector<double> samples;
    while (samples.size() < 16000) {
        std::array<unsigned char, 4096> frame;
        ASSERT_TRUE(live::Eventually([&] { return vexo_model_get_talking_frame(talk, frame.data(), 4096) == 0; }));
        std::transform(frame.begin() + 36, frame.begin() + 356, std::back_inserter(samples), sound::FromALaw);
    }
    EXPECT_EQ(vexo_model_stop_talking(talk), 0);
    // Where the file begins anew its edges may be blurred by a few samples; the rest is the tone.
    EXPECT_NEAR(sound::AmplitudeAt(600, samples), 0.45, 0.03);
    EXPECT_LT(sound::AmplitudeAt(900, samples), 0.02);
    EXPECT_LT(sound::AmplitudeAt(300, samples), 0.02);
}

}  // namespace
