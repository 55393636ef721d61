// One talk between the guest and the recorder or one of its cameras: what the microphone hears, frame by frame at real
// pace, and a file that holds what the loudspeaker plays. The table of talks stands in talks.cpp.
#ifndef SIMULATOR_MODEL_TALK_H
#define SIMULATOR_MODEL_TALK_H

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "av.h"
#include "encoder.h"
#include "vexo_types.h"
#include "wave_file.h"

namespace simulator {

/** What a microphone hears: the next sample, and the next. */
class Microphone {
public:
    virtual ~Microphone() = default;
    virtual int16_t Next() = 0;
};

/** Of the recorder itself, as the scenario's talk says. */
std::unique_ptr<Microphone> RecorderMicrophone();
/** Of a camera, counted from 0: its tone. */
std::unique_ptr<Microphone> CameraMicrophone(unsigned index);

/** Makes samples of played frames; each decoder for one talk. */
class TalkDecoder {
public:
    /** codec: as the frame header tells it. False when it is not known or the payload does not fit it. */
    bool Decode(unsigned char codec, const unsigned char* data, size_t size, std::vector<int16_t>* samples);

private:
    AVCodecContext* Open(unsigned char codec);

    unsigned char m_opened = 0;
    Av<AVCodecContext> m_codec;
    Av<AVPacket> m_packet{av_packet_alloc()};
    Av<AVFrame> m_frame{av_frame_alloc()};
};

/** For one thread at a time. Times are in seconds of the monotonic clock. */
class Talk {
public:
    Talk(std::unique_ptr<Microphone> microphone, std::string played_path, double now);

    /** Header and payload of the next captured frame; empty when none is due yet. A guest that has not asked for long
     *  finds the last second and a half. */
    std::vector<unsigned char> Capture(double now);

    /** Plays a frame; false, with the reason for a complaint or a line, when it cannot. */
    bool Play(const unsigned char* frame, std::string* why);

    const std::string& PlayedPath() const { return m_played.Path(); }
    double PlayedSeconds() const { return static_cast<double>(m_played.Samples()) / AUDIO_RATE; }

private:
    unsigned NextSize() const;
    bool Hear(size_t size);

    const std::unique_ptr<Microphone> m_microphone;
    const double m_begun;
    size_t m_captured = 0;  ///< frames fetched
    int64_t m_number = 0;   ///< number of the next frame, those left out included,
    int64_t m_sample = 0;   ///< and of its first sample
    std::vector<unsigned char> m_coded;
    AudioEncoder m_encoder;
    TalkDecoder m_decoder;
    WaveFile m_played;
};

}  // namespace simulator

#endif
