// A still picture as a person sees it: decoded, and asked what its stamp says. Expectations do not belong here.
#ifndef TESTS_SYSTEM_STILL_PICTURE_H
#define TESTS_SYSTEM_STILL_PICTURE_H

#include <cstring>
#include <string>

#include "model/av.h"
#include "model/picture_stamp.h"

namespace still {

/** The picture of a JPEG; null when it is none, or not whole. */
inline simulator::Av<AVFrame> Decode(const std::string& jpeg) {
    using simulator::Av;
    Av<AVCodecContext> codec(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_MJPEG)));
    Av<AVFrame> picture(av_frame_alloc());
    Av<AVPacket> packet(av_packet_alloc());
    if (avcodec_open2(codec.get(), nullptr, nullptr) != 0 ||
        av_new_packet(packet.get(), static_cast<int>(jpeg.size())) != 0) {
        return nullptr;
    }
    memcpy(packet->data, jpeg.data(), jpeg.size());
    const bool decoded = avcodec_send_packet(codec.get(), packet.get()) == 0 &&
                         avcodec_send_packet(codec.get(), nullptr) == 0 &&
                         avcodec_receive_frame(codec.get(), picture.get()) == 0;
    return decoded ? std::move(picture) : nullptr;
}

/** What the picture's stamp says; channel 0 when there is none. */
inline simulator::Stamp StampOf(const AVFrame& picture) {
    simulator::Stamp stamp;
    const bool read = simulator::ReadStamp(picture.data[0], picture.linesize[0], picture.width, picture.height, &stamp);
    return read ? stamp : simulator::Stamp();
}

}  // namespace still

#endif
