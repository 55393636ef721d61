// G.711 and samples, one law at a time. Where the sound comes from and goes to does not belong here.
#ifndef HOSTMGRCTL_G711_H
#define HOSTMGRCTL_G711_H

#include <cstdint>
#include <vector>

#include "av_handle.h"

namespace hostmgrctl {

using Samples = std::vector<int16_t>;

/** For one thread at a time; G711_RATE samples a second, one byte each. */
class G711 {
public:
    /** law: AV_CODEC_ID_PCM_ALAW or _MULAW. */
    explicit G711(AVCodecID law);

    Samples Decode(const uint8_t* bytes, size_t size);
    std::vector<uint8_t> Encode(const Samples& samples);

    AVCodecID Law() const { return m_law; }

private:
    const AVCodecID m_law;
    Av<AVCodecContext> m_decoder;
    Av<AVCodecContext> m_encoder;
    Av<AVFrame> m_frame;
    Av<AVPacket> m_packet;
};

}  // namespace hostmgrctl

#endif
