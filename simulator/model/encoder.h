// H.264 and G.711 A-law through libavcodec, with the settings that a live recorder needs: every picture leaves at once,
// every key frame stands alone. Headers, lists and pacing do not belong here.
#ifndef SIMULATOR_MODEL_ENCODER_H
#define SIMULATOR_MODEL_ENCODER_H

#include <vector>

#include "av.h"
#include "core/scenario.h"

namespace simulator {

/** One encoded frame; the data are the encoder's until it is used again. */
struct Packet {
    const uint8_t* data = nullptr;
    size_t size = 0;
    bool key = false;
};

/** Both encoders are for one thread at a time. A wrong setting leaves one that encodes nothing, after a line that says
 *  why. */
class VideoEncoder {
public:
    /** shape: width to height of the picture as it shall be shown. */
    VideoEncoder(const VideoSettings& settings, AVRational shape);

    /** Encodes a picture of the settings' size, Annex B; false when nothing came out. */
    bool Encode(AVFrame& picture, Packet* packet);

private:
    Av<AVCodecContext> m_codec;
    Av<AVPacket> m_packet;
    int64_t m_number = 0;
};

constexpr int AUDIO_RATE = 8000;  // Hz
constexpr int AUDIO_BLOCK = 320;  // samples and, in A-law, bytes of a frame
constexpr int AUDIO_BLOCKS = 25;  // frames a second

class AudioEncoder {
public:
    AudioEncoder();

    /** Encodes AUDIO_BLOCK samples. */
    bool Encode(const int16_t* samples, Packet* packet);

private:
    Av<AVCodecContext> m_codec;
    Av<AVFrame> m_block;
    Av<AVPacket> m_packet;
};

}  // namespace simulator

#endif
