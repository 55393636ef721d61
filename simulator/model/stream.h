// One encoded stream of a camera while somebody reads it: schedule, encoder and the list that it fills. Made when
// reading begins and gone when it ends; who reads, and the thread, are the camera's.
#ifndef SIMULATOR_MODEL_STREAM_H
#define SIMULATOR_MODEL_STREAM_H

#include "encoder.h"
#include "frame_list.h"
#include "overlay.h"
#include "schedule.h"
#include "tone.h"

namespace simulator {

/** A moment on both clocks. */
struct Moment {
    SteadyTime due;          ///< on the schedule
    int64_t wall_clock = 0;  ///< microseconds since 1970, UTC
};

/** A frame with its payload; type, format and number are left to who makes it. */
std::shared_ptr<LiveFrame> NewFrame(const Moment& moment, const Packet& packet, bool no_video);

/** What a picture without signal looks like. */
void Blacken(AVFrame* picture);

/** Completes a frame's header by what is alike in all frames of its kind: type, codec, format; not by a video's rate
 * and size. type: VEXO_ENC_STR_MAIN or VEXO_ENC_STR_SUB. */
void MarkVideo(vexo_enc_str_type type, bool key, vexo_frame_header* header);
void MarkAudio(vexo_frame_header* header);

/** All streams of a camera are for its thread alone. The list must outlive the stream; it is emptied at its end. */
class VideoStream {
public:
    /** type: VEXO_ENC_STR_MAIN or VEXO_ENC_STR_SUB; channel counted from 1. */
    VideoStream(vexo_enc_str_type type, unsigned channel, const CameraSettings& camera, SteadyTime start,
                FrameList* list);
    ~VideoStream() { m_list->StartOver(); }
    VideoStream(const VideoStream&) = delete;
    VideoStream& operator=(const VideoStream&) = delete;

    Schedule& When() { return m_schedule; }

    /** Writes over, stamps and encodes what the camera sees, in any size; null: it sees nothing. */
    void Put(const Moment& moment, const AVFrame* scene);

private:
    bool Prepare(const AVFrame* scene);
    void Publish(const Moment& moment, const Packet& packet, bool no_video);

    const vexo_enc_str_type m_type;
    const unsigned m_channel;
    const std::string m_name;
    const VideoSettings m_settings;
    Schedule m_schedule;
    FrameList* const m_list;
    Overlay m_overlay;
    VideoEncoder m_encoder;
    Av<AVFrame> m_picture;
    Av<SwsContext> m_scaler;
};

/** The camera's sound: a tone. */
class AudioStream {
public:
    AudioStream(const CameraSettings& camera, SteadyTime start, FrameList* list);
    ~AudioStream() { m_list->StartOver(); }
    AudioStream(const AudioStream&) = delete;
    AudioStream& operator=(const AudioStream&) = delete;

    Schedule& When() { return m_schedule; }

    /** Encodes the next block; no_video is passed on to readers. */
    void Put(const Moment& moment, bool no_video);

private:
    Tone m_tone;
    Schedule m_schedule;
    FrameList* const m_list;
    AudioEncoder m_encoder;
};

}  // namespace simulator

#endif
