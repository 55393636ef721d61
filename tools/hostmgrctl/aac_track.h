// G.711 to AAC, for a container that cannot hold G.711. Which container that is, and files, do not belong here.
#ifndef HOSTMGRCTL_AAC_TRACK_H
#define HOSTMGRCTL_AAC_TRACK_H

#include <functional>

#include "av_handle.h"

namespace hostmgrctl {

/** For one thread at a time. */
class AacTrack {
public:
    /** Gets packets, times in microseconds; they are the track's. */
    using Sink = std::function<void(AVPacket*)>;

    /** source: AV_CODEC_ID_PCM_ALAW or _MULAW, mono. */
    AacTrack(AVCodecID source, Sink sink);

    /** What a container must be told. */
    void Describe(AVCodecParameters* parameters) const;

    /** A piece of G.711; its pts is in microseconds. */
    void Put(const AVPacket& packet);

    /** The rest. */
    void Finish();

private:
    void Follow(int64_t arrival);
    void Encode(int samples);
    void Send(AVFrame* block);

    const Sink m_sink;
    Av<AVCodecContext> m_decoder;
    Av<AVCodecContext> m_encoder;
    Av<AVAudioFifo> m_waiting;
    Av<AVFrame> m_piece;
    Av<AVPacket> m_packet;
    int64_t m_next = 0;  ///< time of the first sample that waits, in samples
    bool m_started = false;
};

}  // namespace hostmgrctl

#endif
