// A sound file of the user's, as the samples that a talk wants. Sending them does not belong here.
#ifndef HOSTMGRCTL_SOUND_INPUT_H
#define HOSTMGRCTL_SOUND_INPUT_H

#include <memory>
#include <string>

#include "av_handle.h"
#include "g711.h"

namespace hostmgrctl {

/** For one thread at a time. */
class SoundInput {
public:
    /** Any file with sound; other rates and several channels are converted. Throws Failure with ExitCode::Usage. */
    explicit SoundInput(std::string path);

    /** The next samples, mono, G711_RATE a second; fewer than asked for at the end, and none after it. */
    Samples Next(size_t count);

    const std::string& Path() const { return m_path; }

private:
    struct Close {
        void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
    };

    [[noreturn]] void Refuse(const std::string& why) const;
    void Open();
    void Fill(size_t count);
    void Decode(const AVPacket* packet);
    void Configure(const AVFrame& piece);
    void Convert(const AVFrame* piece);

    const std::string m_path;
    std::unique_ptr<AVFormatContext, Close> m_format;
    int m_stream = -1;
    Av<AVCodecContext> m_decoder;
    Av<SwrContext> m_resampler;
    Av<AVAudioFifo> m_waiting;
    Av<AVPacket> m_packet;
    Av<AVFrame> m_piece;
    bool m_ended = false;
};

}  // namespace hostmgrctl

#endif
