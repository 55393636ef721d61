#include "g711.h"

#include <cstring>

#include "exit_code.h"
#include "frame.h"

namespace hostmgrctl {
namespace {

Av<AVCodecContext> Open(const AVCodec* codec) {
    Av<AVCodecContext> context(NotNull(avcodec_alloc_context3(codec)));
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->sample_rate = G711_RATE;
    av_channel_layout_default(&context->ch_layout, 1);
    const int result = codec == nullptr ? AVERROR_DECODER_NOT_FOUND : avcodec_open2(context.get(), codec, nullptr);
    if (result < 0) {
        throw Failure(ExitCode::Refused, "this build of the FFmpeg libraries has no G.711: " + AvErrorText(result));
    }
    return context;
}

}  // namespace

G711::G711(AVCodecID law)
    : m_law(law),
      m_decoder(Open(avcodec_find_decoder(law))),
      m_encoder(Open(avcodec_find_encoder(law))),
      m_frame(NotNull(av_frame_alloc())),
      m_packet(NotNull(av_packet_alloc())) {}

Samples G711::Decode(const uint8_t* bytes, size_t size) {
    Samples samples;
    av_packet_unref(m_packet.get());
    if (size == 0 || av_new_packet(m_packet.get(), static_cast<int>(size)) < 0) {
        return samples;
    }
    memcpy(m_packet->data, bytes, size);
    avcodec_send_packet(m_decoder.get(), m_packet.get());
    while (avcodec_receive_frame(m_decoder.get(), m_frame.get()) == 0) {
        const auto* decoded = reinterpret_cast<const int16_t*>(m_frame->data[0]);
        samples.insert(samples.end(), decoded, decoded + m_frame->nb_samples);
    }
    return samples;
}

std::vector<uint8_t> G711::Encode(const Samples& samples) {
    std::vector<uint8_t> bytes;
    av_frame_unref(m_frame.get());
    m_frame->format = AV_SAMPLE_FMT_S16;
    m_frame->sample_rate = G711_RATE;
    m_frame->nb_samples = static_cast<int>(samples.size());
    av_channel_layout_default(&m_frame->ch_layout, 1);
    if (av_frame_get_buffer(m_frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    memcpy(m_frame->data[0], samples.data(), samples.size() * sizeof(int16_t));
    avcodec_send_frame(m_encoder.get(), m_frame.get());
    while (avcodec_receive_packet(m_encoder.get(), m_packet.get()) == 0) {
        bytes.insert(bytes.end(), m_packet->data, m_packet->data + m_packet->size);
        av_packet_unref(m_packet.get());
    }
    return bytes;
}

}  // namespace hostmgrctl
