#include "av.h"

#include <cstdio>

namespace simulator {

Av<AVFrame> NewPicture(int width, int height) {
    Av<AVFrame> frame(av_frame_alloc());
    if (frame == nullptr) {
        return nullptr;
    }
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    return av_frame_get_buffer(frame.get(), 0) == 0 ? std::move(frame) : nullptr;
}

bool Scale(const AVFrame& from, AVFrame& to, Av<SwsContext>* scaler) {
    scaler->reset(sws_getCachedContext(scaler->release(), from.width, from.height,
                                       static_cast<AVPixelFormat>(from.format), to.width, to.height,
                                       static_cast<AVPixelFormat>(to.format), SWS_BILINEAR, nullptr, nullptr, nullptr));
    return *scaler != nullptr &&
           sws_scale(scaler->get(), from.data, from.linesize, 0, from.height, to.data, to.linesize) == to.height;
}

std::string AvError(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof(text));
    return text;
}

void Tell(const std::string& text) {
    fprintf(stderr, "[simulated recorder] %s\n", text.c_str());
}

}  // namespace simulator
