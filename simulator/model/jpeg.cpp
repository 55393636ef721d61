#include "jpeg.h"

#include <algorithm>
#include <array>

namespace simulator {
namespace {

constexpr int QUALITY = 3;  ///< 1 finest, 31 coarsest

/** From limited range to the full range that JPEG has: black 16 and white 235 to 0 and 255, colours about 128. */
std::array<uint8_t, 256> FullRange(int zero, int span, int middle) {
    std::array<uint8_t, 256> table;
    for (int i = 0; i < 256; ++i) {
        const int value = ((i - zero) * 255 + (i < zero ? -span : span) / 2) / span + middle;
        table[i] = static_cast<uint8_t>(std::clamp(value, 0, 255));
    }
    return table;
}

Av<AVFrame> Widened(const AVFrame& picture) {
    static const std::array<uint8_t, 256> luma = FullRange(16, 219, 0);
    static const std::array<uint8_t, 256> chroma = FullRange(128, 224, 128);
    Av<AVFrame> wide = NewPicture(picture.width, picture.height);
    for (int plane = 0; wide != nullptr && plane < 3; ++plane) {
        const auto& table = plane == 0 ? luma : chroma;
        const int width = plane == 0 ? picture.width : (picture.width + 1) / 2;
        const int height = plane == 0 ? picture.height : (picture.height + 1) / 2;
        for (int y = 0; y < height; ++y) {
            const uint8_t* from = picture.data[plane] + y * picture.linesize[plane];
            std::transform(from, from + width, wide->data[plane] + y * wide->linesize[plane],
                           [&table](uint8_t value) { return table[value]; });
        }
    }
    return wide;
}

Av<AVCodecContext> OpenEncoder(int width, int height) {
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    Av<AVCodecContext> codec(encoder != nullptr ? avcodec_alloc_context3(encoder) : nullptr);
    if (codec == nullptr) {
        return nullptr;
    }
    codec->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR;  // errors only on the guest's console
    codec->width = width;
    codec->height = height;
    codec->pix_fmt = AV_PIX_FMT_YUV420P;
    codec->color_range = AVCOL_RANGE_JPEG;
    codec->time_base = {1, 1};
    codec->thread_count = 1;
    codec->flags |= AV_CODEC_FLAG_QSCALE;
    codec->global_quality = FF_QP2LAMBDA * QUALITY;
    return avcodec_open2(codec.get(), encoder, nullptr) == 0 ? std::move(codec) : nullptr;
}

}  // namespace

std::vector<uint8_t> EncodeJpeg(const AVFrame& picture) {
    const Av<AVFrame> wide = Widened(picture);
    const Av<AVCodecContext> codec = OpenEncoder(picture.width, picture.height);
    const Av<AVPacket> packet(av_packet_alloc());
    if (wide == nullptr || codec == nullptr || packet == nullptr) {
        Tell("cannot take a picture: there is no JPEG encoder, or no memory");
        return {};
    }
    wide->color_range = AVCOL_RANGE_JPEG;
    wide->quality = codec->global_quality;
    wide->pts = 0;
    if (avcodec_send_frame(codec.get(), wide.get()) != 0 || avcodec_receive_packet(codec.get(), packet.get()) != 0) {
        Tell("cannot take a picture: the JPEG encoder failed");
        return {};
    }
    return {packet->data, packet->data + packet->size};
}

}  // namespace simulator
