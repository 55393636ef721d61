// What the tests of live streams share: a reader of one list that waits with a deadline, and a decoder whose pictures
// can be asked what they show. Expectations do not belong here.
#ifndef TESTS_SYSTEM_LIVE_READER_H
#define TESTS_SYSTEM_LIVE_READER_H

#include <chrono>
#include <cstring>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "model/av.h"
#include "model/picture_stamp.h"
#include "vexo_model.h"

namespace live {

/** Long enough for the slowest machine and build; only a test that fails waits so long. */
constexpr std::chrono::seconds PATIENCE{60};

/** Asks again and again until the answer is yes; false when that took too long. */
inline bool Eventually(const std::function<bool()>& happened) {
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (!happened()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/** A copy of a frame. */
struct Frame {
    vexo_frame_header header = {};
    std::vector<unsigned char> payload;
    vexo_read_av_list_note note = {};
    bool no_video = false;

    bool Key() const { return header.frame_type == VEXO_FRAME_MAIN_KEY || header.frame_type == VEXO_FRAME_SUB_KEY; }
    /** Time stamp in milliseconds since 1970. */
    uint64_t Milliseconds() const { return header.seconds * 1000ULL + header.microseconds / 1000; }
};

inline Frame CopyOf(const unsigned char* bytes, const vexo_read_av_list_note& note, VEXO_BOOL no_video) {
    Frame frame;
    memcpy(&frame.header, bytes, sizeof(frame.header));
    frame.payload.assign(bytes + sizeof(frame.header), bytes + sizeof(frame.header) + frame.header.data_length);
    frame.note = note;
    frame.no_video = no_video != VEXO_FALSE;
    return frame;
}

/** Walks one list; channel counted from 0. */
class Reader {
public:
    Reader(unsigned channel, vexo_enc_str_type type) : m_channel(channel), m_type(type) {}

    /** The first frame, or the one after the last; nothing when none came in time. Each is released at once. */
    std::optional<Frame> Next() {
        std::optional<Frame> frame;
        Eventually([&] { return (frame = Try()).has_value(); });
        return frame;
    }

    /** The next frame if it is there. */
    std::optional<Frame> Try() {
        unsigned char* bytes = nullptr;
        VEXO_BOOL no_video = VEXO_FALSE;
        vexo_read_av_list_note note = {};
        const int result =
            m_begun ? vexo_model_get_frame(m_channel, VEXO_USER_HOSTMGR, m_type, &m_note, &bytes, &note, &no_video)
                    : vexo_model_first_get_frame(m_channel, VEXO_USER_HOSTMGR, m_type, &bytes, &note, &no_video);
        if (result != 0) {
            return std::nullopt;
        }
        m_begun = true;
        m_note = note;
        const Frame frame = CopyOf(bytes, note, no_video);
        return vexo_model_rel_frame(m_channel, VEXO_USER_HOSTMGR, m_type, &note) == 0 ? std::optional(frame)
                                                                                      : std::nullopt;
    }

private:
    const unsigned m_channel;
    const vexo_enc_str_type m_type;
    bool m_begun = false;
    vexo_read_av_list_note m_note = {};
};

/** Decodes H.264 from frame to frame. */
class Decoder {
public:
    Decoder() : m_codec(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264))), m_picture(av_frame_alloc()) {
        m_codec->thread_count = 1;
        m_codec->flags |= AV_CODEC_FLAG_LOW_DELAY;
        avcodec_open2(m_codec.get(), nullptr, nullptr);
    }

    /** The picture of that frame, the decoder's until the next call; null when it gives none. */
    const AVFrame* Decode(const Frame& frame) {
        simulator::Av<AVPacket> packet(av_packet_alloc());
        if (av_new_packet(packet.get(), static_cast<int>(frame.payload.size())) != 0) {
            return nullptr;
        }
        memcpy(packet->data, frame.payload.data(), frame.payload.size());
        const bool done = avcodec_send_packet(m_codec.get(), packet.get()) == 0 &&
                          avcodec_receive_frame(m_codec.get(), m_picture.get()) == 0;
        return done ? m_picture.get() : nullptr;
    }

private:
    simulator::Av<AVCodecContext> m_codec;
    simulator::Av<AVFrame> m_picture;
};

inline std::optional<simulator::Stamp> StampIn(const AVFrame& picture) {
    simulator::Stamp stamp;
    const bool read = simulator::ReadStamp(picture.data[0], picture.linesize[0], picture.width, picture.height, &stamp);
    return read ? std::optional(stamp) : std::nullopt;
}

/** Mean luma of a part of the picture; bounds in hundredths of its width and height. */
inline double MeanLuma(const AVFrame& picture, int left, int top, int right, int bottom) {
    double sum = 0;
    long count = 0;
    for (int y = picture.height * top / 100; y < picture.height * bottom / 100; ++y) {
        for (int x = picture.width * left / 100; x < picture.width * right / 100; ++x, ++count) {
            sum += picture.data[0][y * picture.linesize[0] + x];
        }
    }
    return sum / static_cast<double>(count);
}

}  // namespace live

#endif
