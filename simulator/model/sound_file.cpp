#include "sound_file.h"

#include "av.h"
#include "encoder.h"

namespace simulator {
namespace {

constexpr size_t MOST_SAMPLES = size_t{AUDIO_RATE} * 3600;

/** An open file with what turns its packets into our samples. */
struct Reading {
    Av<AVFormatContext> file;
    Av<AVCodecContext> codec;
    Av<SwrContext> resampler;
    Av<AVPacket> packet{av_packet_alloc()};
    Av<AVFrame> frame{av_frame_alloc()};
    int stream = -1;
    std::vector<int16_t> samples;
};

int OpenFile(const std::string& path, Reading* reading) {
    AVFormatContext* file = nullptr;
    int error = avformat_open_input(&file, path.c_str(), nullptr, nullptr);
    reading->file.reset(file);
    return error < 0 ? error : avformat_find_stream_info(file, nullptr);
}

int OpenDecoder(Reading* reading) {
    const AVCodec* decoder = nullptr;
    reading->stream = av_find_best_stream(reading->file.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
    if (reading->stream < 0) {
        return reading->stream;
    }
    reading->codec.reset(avcodec_alloc_context3(decoder));
    if (reading->codec == nullptr) {
        return AVERROR(ENOMEM);
    }
    reading->codec->thread_count = 1;
    const int error = avcodec_parameters_to_context(reading->codec.get(),
                                                    reading->file->streams[reading->stream]->codecpar);
    return error < 0 ? error : avcodec_open2(reading->codec.get(), decoder, nullptr);
}

int OpenResampler(Reading* reading) {
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    AVCodecContext* codec = reading->codec.get();
    if (codec->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
        av_channel_layout_default(&codec->ch_layout, codec->ch_layout.nb_channels);
    }
    SwrContext* resampler = nullptr;
    const int error = swr_alloc_set_opts2(&resampler, &mono, AV_SAMPLE_FMT_S16, AUDIO_RATE, &codec->ch_layout,
                                          codec->sample_fmt, codec->sample_rate, 0, nullptr);
    reading->resampler.reset(resampler);
    return error < 0 ? error : swr_init(resampler);
}

/** Converts a decoded frame; null: what the resampler still holds. */
void Convert(const AVFrame* frame, Reading* reading) {
    const int given = frame != nullptr ? frame->nb_samples : 0;
    const int room = swr_get_out_samples(reading->resampler.get(), given);
    if (room <= 0) {
        return;
    }
    const size_t before = reading->samples.size();
    reading->samples.resize(before + static_cast<size_t>(room));
    auto* out = reinterpret_cast<uint8_t*>(reading->samples.data() + before);
    const int made =
        swr_convert(reading->resampler.get(), &out, room,
                    frame != nullptr ? const_cast<const uint8_t**>(frame->extended_data) : nullptr, given);
    reading->samples.resize(before + static_cast<size_t>(made > 0 ? made : 0));
}

void Decode(const AVPacket* packet, Reading* reading) {
    if (avcodec_send_packet(reading->codec.get(), packet) < 0) {
        return;  // a damaged packet is passed over
    }
    while (avcodec_receive_frame(reading->codec.get(), reading->frame.get()) == 0) {
        Convert(reading->frame.get(), reading);
    }
}

void ReadAll(Reading* reading) {
    while (reading->samples.size() < MOST_SAMPLES && av_read_frame(reading->file.get(), reading->packet.get()) >= 0) {
        if (reading->packet->stream_index == reading->stream) {
            Decode(reading->packet.get(), reading);
        }
        av_packet_unref(reading->packet.get());
    }
    Decode(nullptr, reading);
    Convert(nullptr, reading);
}

}  // namespace

std::vector<int16_t> ReadSound(const std::string& path) {
    Reading reading;
    int error = OpenFile(path, &reading);
    error = error < 0 ? error : OpenDecoder(&reading);
    error = error < 0 ? error : OpenResampler(&reading);
    if (error >= 0) {
        ReadAll(&reading);
    }
    if (reading.samples.empty()) {
        Tell("the microphone hears nothing: cannot play " + path + ": " +
             (error < 0 ? AvError(error) : "there is no sound in it"));
    }
    return std::move(reading.samples);
}

}  // namespace simulator
