#include "aac_track.h"

#include <algorithm>
#include <vector>

#include "exit_code.h"
#include "frame.h"

namespace hostmgrctl {
namespace {

constexpr AVRational SAMPLES = {1, G711_RATE};
constexpr AVRational MICROSECONDS = {1, 1000000};
constexpr int64_t BIT_RATE = 32000;
constexpr int64_t LARGEST_DRIFT = G711_RATE / 10;  // samples; smaller ones are jitter of the time stamps

Av<AVCodecContext> Open(const AVCodec* codec, AVSampleFormat format) {
    Av<AVCodecContext> context(NotNull(avcodec_alloc_context3(codec)));
    context->sample_fmt = format;
    context->sample_rate = G711_RATE;
    context->time_base = SAMPLES;
    context->bit_rate = BIT_RATE;
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&context->ch_layout, 1);
    const int result = codec == nullptr ? AVERROR_DECODER_NOT_FOUND : avcodec_open2(context.get(), codec, nullptr);
    if (result < 0) {
        throw Failure(ExitCode::NoOutput,
                      "cannot turn the sound into AAC (" + AvErrorText(result) + "): write a .mkv, or give --no-audio");
    }
    return context;
}

}  // namespace

AacTrack::AacTrack(AVCodecID source, Sink sink)
    : m_sink(std::move(sink)),
      m_decoder(Open(avcodec_find_decoder(source), AV_SAMPLE_FMT_S16)),
      m_encoder(Open(avcodec_find_encoder(AV_CODEC_ID_AAC), AV_SAMPLE_FMT_FLTP)),
      m_waiting(NotNull(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, 1, m_encoder->frame_size))),
      m_piece(NotNull(av_frame_alloc())),
      m_packet(NotNull(av_packet_alloc())) {}

void AacTrack::Describe(AVCodecParameters* parameters) const {
    avcodec_parameters_from_context(parameters, m_encoder.get());
}

void AacTrack::Put(const AVPacket& packet) {
    if (avcodec_send_packet(m_decoder.get(), &packet) < 0 ||
        avcodec_receive_frame(m_decoder.get(), m_piece.get()) < 0) {
        return;
    }
    const auto* samples = reinterpret_cast<const int16_t*>(m_piece->data[0]);
    std::vector<float> plane(m_piece->nb_samples);
    std::transform(samples, samples + plane.size(), plane.begin(),
                   [](int16_t sample) { return static_cast<float>(sample) / 32768; });
    void* planes[] = {plane.data()};
    Follow(av_rescale_q(packet.pts, MICROSECONDS, SAMPLES));
    av_audio_fifo_write(m_waiting.get(), planes, m_piece->nb_samples);
    while (av_audio_fifo_size(m_waiting.get()) >= m_encoder->frame_size) {
        Encode(m_encoder->frame_size);
    }
}

// Sound that is missing leaves a gap: what comes after it keeps its own time.
void AacTrack::Follow(int64_t arrival) {
    const int64_t expected = m_next + av_audio_fifo_size(m_waiting.get());
    if (!m_started || arrival - expected > LARGEST_DRIFT) {
        m_next = arrival - av_audio_fifo_size(m_waiting.get());
        m_started = true;
    }
}

void AacTrack::Encode(int samples) {
    Av<AVFrame> block(NotNull(av_frame_alloc()));
    block->format = AV_SAMPLE_FMT_FLTP;
    block->sample_rate = G711_RATE;
    block->nb_samples = samples;
    av_channel_layout_default(&block->ch_layout, 1);
    if (av_frame_get_buffer(block.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    av_audio_fifo_read(m_waiting.get(), reinterpret_cast<void**>(block->data), samples);
    block->pts = m_next;
    m_next += samples;
    Send(block.get());
}

void AacTrack::Send(AVFrame* block) {
    avcodec_send_frame(m_encoder.get(), block);
    while (avcodec_receive_packet(m_encoder.get(), m_packet.get()) == 0) {
        av_packet_rescale_ts(m_packet.get(), SAMPLES, MICROSECONDS);
        m_sink(m_packet.get());
        av_packet_unref(m_packet.get());
    }
}

void AacTrack::Finish() {
    const int left = av_audio_fifo_size(m_waiting.get());
    if (left > 0) {
        Encode(left);
    }
    Send(nullptr);
}

}  // namespace hostmgrctl
