// Owning pointers for what the FFmpeg libraries hand out, and their errors as text. Nothing of the recorder here.
#ifndef HOSTMGRCTL_AV_HANDLE_H
#define HOSTMGRCTL_AV_HANDLE_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <string>

namespace hostmgrctl {

struct AvDelete {
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};

template <typename T>
using Av = std::unique_ptr<T, AvDelete>;

/** An error number of the FFmpeg libraries in words. */
inline std::string AvErrorText(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, text, sizeof(text));
    return text;
}

/** Throws std::bad_alloc for a null pointer: the FFmpeg libraries give one when memory is short. */
template <typename T>
T* NotNull(T* pointer) {
    if (pointer == nullptr) {
        throw std::bad_alloc();
    }
    return pointer;
}

}  // namespace hostmgrctl

#endif
