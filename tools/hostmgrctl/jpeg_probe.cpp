#include "jpeg_probe.h"

#include <cstring>

#include "av_handle.h"

namespace hostmgrctl {

std::optional<PictureSize> ProbeJpeg(const std::string& jpeg) {
    av_log_set_level(AV_LOG_FATAL);
    Av<AVCodecContext> codec(NotNull(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_MJPEG))));
    Av<AVPacket> packet(NotNull(av_packet_alloc()));
    Av<AVFrame> picture(NotNull(av_frame_alloc()));
    codec->thread_count = 1;
    codec->err_recognition = AV_EF_EXPLODE;  // half a picture is none
    if (jpeg.empty() || avcodec_open2(codec.get(), nullptr, nullptr) < 0 ||
        av_new_packet(packet.get(), static_cast<int>(jpeg.size())) < 0) {
        return std::nullopt;
    }
    memcpy(packet->data, jpeg.data(), jpeg.size());
    const bool decoded = avcodec_send_packet(codec.get(), packet.get()) >= 0 &&
                         avcodec_send_packet(codec.get(), nullptr) >= 0 &&
                         avcodec_receive_frame(codec.get(), picture.get()) >= 0;
    return decoded ? std::optional<PictureSize>({picture->width, picture->height}) : std::nullopt;
}

}  // namespace hostmgrctl
