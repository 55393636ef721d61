#include "encoder.h"

extern "C" {
#include <libavutil/opt.h>
}
#include <cstring>

namespace simulator {
namespace {

constexpr unsigned BEST_QUALITY = 6;
constexpr int QUANTISER_STEP = 5;  ///< a quality below the best, the finest quantiser is so much coarser

Av<AVCodecContext> NewContext(const AVCodec* encoder) {
    Av<AVCodecContext> codec(encoder != nullptr ? avcodec_alloc_context3(encoder) : nullptr);
    if (codec != nullptr) {
        codec->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;  // errors only on the guest's console
    }
    return codec;
}

void Configure(const VideoSettings& settings, AVRational shape, AVCodecContext* codec) {
    codec->width = static_cast<int>(settings.width);
    codec->height = static_cast<int>(settings.height);
    codec->pix_fmt = AV_PIX_FMT_YUV420P;
    codec->sample_aspect_ratio = av_mul_q(shape, {codec->height, codec->width});
    codec->color_range = AVCOL_RANGE_MPEG;
    codec->colorspace = AVCOL_SPC_SMPTE170M;
    codec->color_primaries = AVCOL_PRI_SMPTE170M;
    codec->color_trc = AVCOL_TRC_SMPTE170M;
    codec->framerate = {static_cast<int>(settings.fps), 1};
    codec->time_base = av_inv_q(codec->framerate);
    codec->gop_size = static_cast<int>(settings.gop);
    codec->max_b_frames = 0;
    codec->thread_count = 1;
    codec->bit_rate = settings.kbps * 1000LL;
    codec->rc_max_rate = codec->bit_rate;
    codec->rc_buffer_size = static_cast<int>(codec->bit_rate);  // one second
    if (settings.constant) {
        codec->rc_min_rate = codec->bit_rate;
    } else {
        codec->qmin = static_cast<int>(BEST_QUALITY - settings.quality) * QUANTISER_STEP;
    }
    av_opt_set(codec->priv_data, "preset", "superfast", 0);
    av_opt_set(codec->priv_data, "tune", "zerolatency", 0);
    // Key frames on schedule and no others; each with its parameter sets, so that a reader may begin at any of them.
    const std::string params = "scenecut=0:repeat-headers=1:annexb=1";
    av_opt_set(codec->priv_data, "x264-params", (params + (settings.constant ? ":nal-hrd=cbr" : "")).c_str(), 0);
    av_opt_set(codec->priv_data, "forced-idr", "1", 0);
}

bool Open(const AVCodec* encoder, const char* what, Av<AVCodecContext>* codec) {
    const int error = *codec != nullptr ? avcodec_open2(codec->get(), encoder, nullptr) : AVERROR_ENCODER_NOT_FOUND;
    if (error != 0) {
        Tell(std::string("cannot encode ") + what + ": " + AvError(error));
        codec->reset();
    }
    return error == 0;
}

bool EncodeOne(AVCodecContext* codec, const AVFrame* frame, AVPacket* packet, Packet* out) {
    av_packet_unref(packet);
    if (avcodec_send_frame(codec, frame) != 0 || avcodec_receive_packet(codec, packet) != 0) {
        return false;
    }
    *out = {packet->data, static_cast<size_t>(packet->size), (packet->flags & AV_PKT_FLAG_KEY) != 0};
    return true;
}

}  // namespace

VideoEncoder::VideoEncoder(const VideoSettings& settings, AVRational shape) : m_packet(av_packet_alloc()) {
    const AVCodec* encoder = avcodec_find_encoder_by_name("libx264");
    m_codec = NewContext(encoder);
    if (m_codec != nullptr) {
        Configure(settings, shape, m_codec.get());
    }
    Open(encoder, "video (libx264)", &m_codec);
}

bool VideoEncoder::Encode(AVFrame& picture, Packet* packet) {
    if (m_codec == nullptr) {
        return false;
    }
    picture.pts = m_number++;
    picture.pict_type = AV_PICTURE_TYPE_NONE;
    return EncodeOne(m_codec.get(), &picture, m_packet.get(), packet);
}

AudioEncoder::AudioEncoder() : m_block(av_frame_alloc()), m_packet(av_packet_alloc()) {
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_PCM_ALAW);
    m_codec = NewContext(encoder);
    if (m_codec != nullptr) {
        m_codec->sample_rate = AUDIO_RATE;
        m_codec->sample_fmt = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&m_codec->ch_layout, 1);
    }
    if (!Open(encoder, "audio (G.711 A-law)", &m_codec)) {
        return;
    }
    m_block->format = AV_SAMPLE_FMT_S16;
    m_block->nb_samples = AUDIO_BLOCK;
    m_block->sample_rate = AUDIO_RATE;
    av_channel_layout_default(&m_block->ch_layout, 1);
    if (av_frame_get_buffer(m_block.get(), 0) != 0) {
        m_codec.reset();
    }
}

bool AudioEncoder::Encode(const int16_t* samples, Packet* packet) {
    if (m_codec == nullptr || av_frame_make_writable(m_block.get()) != 0) {
        return false;
    }
    memcpy(m_block->data[0], samples, AUDIO_BLOCK * sizeof(*samples));
    return EncodeOne(m_codec.get(), m_block.get(), m_packet.get(), packet);
}

}  // namespace simulator
