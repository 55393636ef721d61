#include "sound_input.h"

#include <algorithm>
#include <filesystem>

#include "exit_code.h"
#include "frame.h"

namespace hostmgrctl {
namespace {

constexpr int FIRST_ROOM = 4096;  // samples; more is made as it is needed

}  // namespace

SoundInput::SoundInput(std::string path)
    : m_path(std::move(path)),
      m_waiting(NotNull(av_audio_fifo_alloc(AV_SAMPLE_FMT_S16, 1, FIRST_ROOM))),
      m_packet(NotNull(av_packet_alloc())),
      m_piece(NotNull(av_frame_alloc())) {
    av_log_set_level(AV_LOG_FATAL);
    Open();
    Fill(1);
    if (av_audio_fifo_size(m_waiting.get()) == 0) {
        Refuse("there is no sound in it");
    }
}

void SoundInput::Refuse(const std::string& why) const {
    throw Failure(ExitCode::Usage, "cannot read the sound of " + m_path + ": " + why);
}

void SoundInput::Open() {
    std::error_code error;
    if (std::filesystem::is_directory(m_path, error)) {
        Refuse("it is a folder");
    }
    AVFormatContext* format = nullptr;
    const std::string url = "file:" + m_path;  // a path with a colon is no address
    const int opened = avformat_open_input(&format, url.c_str(), nullptr, nullptr);
    m_format.reset(format);
    if (opened < 0) {
        Refuse(opened == AVERROR_INVALIDDATA ? "it is no sound file" : AvErrorText(opened));
    }
    const AVCodec* codec = nullptr;
    if (avformat_find_stream_info(format, nullptr) >= 0) {
        m_stream = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
    }
    if (m_stream < 0) {
        Refuse("it is no sound file");
    }
    m_decoder.reset(NotNull(avcodec_alloc_context3(codec)));
    m_decoder->thread_count = 1;
    if (avcodec_parameters_to_context(m_decoder.get(), format->streams[m_stream]->codecpar) < 0 ||
        avcodec_open2(m_decoder.get(), codec, nullptr) < 0) {
        Refuse("its coding is not known");
    }
}

void SoundInput::Fill(size_t count) {
    while (!m_ended && static_cast<size_t>(av_audio_fifo_size(m_waiting.get())) < count) {
        m_ended = av_read_frame(m_format.get(), m_packet.get()) < 0;
        if (m_ended) {
            Decode(nullptr);
            Convert(nullptr);
        } else if (m_packet->stream_index == m_stream) {
            Decode(m_packet.get());
        }
        av_packet_unref(m_packet.get());
    }
}

// A packet that cannot be decoded is left out, and what follows it goes on.
void SoundInput::Decode(const AVPacket* packet) {
    if (avcodec_send_packet(m_decoder.get(), packet) < 0) {
        return;
    }
    while (avcodec_receive_frame(m_decoder.get(), m_piece.get()) == 0) {
        Convert(m_piece.get());
    }
}

/** For pieces such as this one. */
void SoundInput::Configure(const AVFrame& piece) {
    AVChannelLayout mono;
    AVChannelLayout layout;
    av_channel_layout_default(&mono, 1);
    av_channel_layout_default(&layout, piece.ch_layout.nb_channels);  // a WAV file need not say which is which
    SwrContext* resampler = nullptr;
    const int made = swr_alloc_set_opts2(&resampler, &mono, AV_SAMPLE_FMT_S16, G711_RATE, &layout,
                                         static_cast<AVSampleFormat>(piece.format), piece.sample_rate, 0, nullptr);
    m_resampler.reset(resampler);
    if (made < 0 || swr_init(resampler) < 0) {
        Refuse("it cannot be converted to 8000 samples a second");
    }
}

/** null: what the conversion still holds. */
void SoundInput::Convert(const AVFrame* piece) {
    if (m_resampler == nullptr) {
        if (piece == nullptr) {
            return;
        }
        Configure(*piece);
    }
    const int count = piece != nullptr ? piece->nb_samples : 0;
    Samples samples(static_cast<size_t>(std::max(swr_get_out_samples(m_resampler.get(), count), 1)));
    auto* plane = reinterpret_cast<uint8_t*>(samples.data());
    const auto** input = piece != nullptr ? const_cast<const uint8_t**>(piece->extended_data) : nullptr;
    const int converted = swr_convert(m_resampler.get(), &plane, static_cast<int>(samples.size()), input, count);
    void* planes[] = {samples.data()};
    av_audio_fifo_write(m_waiting.get(), planes, std::max(converted, 0));
}

Samples SoundInput::Next(size_t count) {
    Fill(count);
    Samples samples(std::min(count, static_cast<size_t>(av_audio_fifo_size(m_waiting.get()))));
    void* planes[] = {samples.data()};
    av_audio_fifo_read(m_waiting.get(), planes, static_cast<int>(samples.size()));
    return samples;
}

}  // namespace hostmgrctl
