// The FFmpeg libraries' objects with an owner, and the few steps that all users of them share. No codec settings and no
// recorder knowledge here.
#ifndef SIMULATOR_MODEL_AV_H
#define SIMULATOR_MODEL_AV_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

namespace simulator {

struct AvRelease {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
    void operator()(AVFormatContext* file) const { avformat_close_input(&file); }
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};

/** Owner of one object of the FFmpeg libraries. */
template <class T>
using Av = std::unique_ptr<T, AvRelease>;

/** A picture of that size in pixels, yuv420p, contents undefined; null when there is no memory for it. */
Av<AVFrame> NewPicture(int width, int height);

/** Scales what stands in from to fill to; *scaler is kept from call to call. False when the sizes cannot be scaled. */
bool Scale(const AVFrame& from, AVFrame& to, Av<SwsContext>* scaler);

/** The libraries' text for an error number. */
std::string AvError(int error);

/** One line for the person who runs the recorder, on standard error. */
void Tell(const std::string& text);

}  // namespace simulator

#endif
