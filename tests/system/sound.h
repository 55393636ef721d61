// What tests of sound share: tones as samples and an ear for them, G.711 and ADPCM, and a look into the WAV files that
// the simulated recorder writes of what it plays. Test cases do not belong here.
#ifndef TESTS_SYSTEM_SOUND_H
#define TESTS_SYSTEM_SOUND_H

extern "C" {
#include <libavcodec/avcodec.h>
}
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace sound {

// ---- tones ---------------------------------------------------------------------------------------------------------

constexpr double RATE = 8000;

/** A tone as samples, full scale 1. */
inline std::vector<double> Tone(double hz, double level, size_t samples, double rate = RATE) {
    std::vector<double> tone(samples);
    for (size_t i = 0; i < samples; ++i) {
        tone[i] = level * std::sin(2 * M_PI * hz * static_cast<double>(i) / rate);
    }
    return tone;
}

/** Amplitude of one pitch. Over a second or more, a tone whose phase jumps loses its amplitude. */
inline double AmplitudeAt(double hz, const std::vector<double>& samples, double rate = RATE) {
    double real = 0;
    double imaginary = 0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double angle = 2 * M_PI * hz * static_cast<double>(i) / rate;
        real += samples[i] * std::cos(angle);
        imaginary += samples[i] * std::sin(angle);
    }
    return 2 * std::hypot(real, imaginary) / static_cast<double>(samples.size());
}

/** That pitch at that level, and nothing beside it. */
inline void ExpectTone(const std::vector<double>& samples, double hz, double level) {
    ASSERT_GE(samples.size(), static_cast<size_t>(RATE));
    EXPECT_NEAR(AmplitudeAt(hz, samples), level, level * 0.03);
    EXPECT_LT(AmplitudeAt(hz + 7, samples), level * 0.05);
    EXPECT_LT(AmplitudeAt(hz * 1.5, samples), level * 0.03);
}

/** G.711 A-law to linear, full scale 1. */
inline double FromALaw(unsigned char code) {
    code ^= 0x55;
    const int exponent = (code >> 4) & 7;
    const int step = ((code & 15) << 4) + 8;
    const int value = exponent == 0 ? step : (step + 256) << (exponent - 1);
    return ((code & 0x80) != 0 ? value : -value) / 32768.0;
}

/** Encodes a tone with the codec library; each packet is one frame's payload. */
inline std::vector<std::vector<unsigned char>> Encoded(AVCodecID id, const std::vector<double>& tone) {
    const AVCodec* encoder = avcodec_find_encoder(id);
    AVCodecContext* codec = avcodec_alloc_context3(encoder);
    codec->sample_rate = 8000;
    codec->sample_fmt = encoder->sample_fmts[0];
    av_channel_layout_default(&codec->ch_layout, 1);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "block_size", "512", 0);  // of ADPCM; the others have no blocks
    EXPECT_EQ(avcodec_open2(codec, encoder, &options), 0);
    av_dict_free(&options);
    const size_t step = codec->frame_size > 0 ? static_cast<size_t>(codec->frame_size) : 320;
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();
    std::vector<std::vector<unsigned char>> payloads;
    for (size_t at = 0; at + step <= tone.size(); at += step) {
        frame->format = codec->sample_fmt;
        frame->nb_samples = static_cast<int>(step);
        av_channel_layout_copy(&frame->ch_layout, &codec->ch_layout);
        av_frame_get_buffer(frame, 0);
        auto* samples = reinterpret_cast<int16_t*>(frame->extended_data[0]);
        std::transform(tone.begin() + static_cast<long>(at), tone.begin() + static_cast<long>(at + step), samples,
                       [](double sample) { return static_cast<int16_t>(std::lround(sample * 32767)); });
        avcodec_send_frame(codec, frame);
        while (avcodec_receive_packet(codec, packet) == 0) {
            payloads.emplace_back(packet->data, packet->data + packet->size);
            av_packet_unref(packet);
        }
        av_frame_unref(frame);
    }
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&codec);
    return payloads;
}

// ---- files of played sound -----------------------------------------------------------------------------------------

/** A number of a file, low byte first. */
inline unsigned Word(const std::string& bytes, size_t at, size_t size) {
    unsigned value = 0;
    for (size_t i = size; i-- > 0;) {
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    }
    return value;
}

/** The files of played sound in the recorder's home folder, oldest first; none before the first talk. */
inline std::vector<std::filesystem::path> PlayedFiles() {
    std::vector<std::filesystem::path> files;
    std::error_code none;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(getenv("RECORDER_HOME")) / "talk", none)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end(),
              [](const auto& left, const auto& right) { return last_write_time(left) < last_write_time(right); });
    return files;
}

inline std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/** Whether a WAV file has at least so many samples, and its header tells of all of them: it may just be growing. */
inline bool HasSamples(const std::filesystem::path& path, size_t samples) {
    const std::string wave = Contents(path);
    return wave.size() >= 44 + 2 * samples && Word(wave, 40, 4) == wave.size() - 44;
}

/** The samples of a WAV file, full scale 1, after a look at its header. */
inline std::vector<double> WaveSamples(const std::filesystem::path& path) {
    const std::string wave = Contents(path);
    EXPECT_GE(wave.size(), 44U);
    if (wave.size() < 44) {
        return {};
    }
    EXPECT_EQ(wave.substr(0, 4) + wave.substr(8, 8), "RIFFWAVEfmt ");
    EXPECT_EQ(Word(wave, 4, 4), wave.size() - 8);
    EXPECT_EQ(Word(wave, 20, 2), 1U);  // PCM
    EXPECT_EQ(Word(wave, 22, 2), 1U);  // channels
    EXPECT_EQ(Word(wave, 24, 4), 8000U);
    EXPECT_EQ(Word(wave, 28, 4), 16000U);
    EXPECT_EQ(Word(wave, 34, 2), 16U);
    EXPECT_EQ(wave.substr(36, 4), "data");
    EXPECT_EQ(Word(wave, 40, 4), wave.size() - 44);
    std::vector<double> samples;
    for (size_t at = 44; at + 1 < wave.size(); at += 2) {
        samples.push_back(static_cast<int16_t>(Word(wave, at, 2)) / 32768.0);
    }
    return samples;
}

}  // namespace sound

#endif
