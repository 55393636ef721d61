#include "stream.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "picture_stamp.h"

namespace simulator {
namespace {

constexpr unsigned char CODEC_H264 = 1;
constexpr unsigned char CODEC_ALAW = 2;
constexpr const char* NO_SIGNAL = "NO VIDEO SIGNAL";

const VideoSettings& SettingsOf(const CameraSettings& camera, vexo_enc_str_type type) {
    return type == VEXO_ENC_STR_MAIN ? camera.main : camera.sub;
}

unsigned FrameType(vexo_enc_str_type type, bool key) {
    if (type == VEXO_ENC_STR_MAIN) {
        return key ? VEXO_FRAME_MAIN_KEY : VEXO_FRAME_MAIN_DELTA;
    }
    return key ? VEXO_FRAME_SUB_KEY : VEXO_FRAME_SUB_DELTA;
}

// Both streams show the same picture: the main stream's shape, whatever the sub stream's pixels are.
AVRational ShapeOf(const CameraSettings& camera) {
    return {static_cast<int>(camera.main.width), static_cast<int>(camera.main.height)};
}

}  // namespace

void Blacken(AVFrame* picture) {
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = plane == 0 ? picture->height : (picture->height + 1) / 2;
        memset(picture->data[plane], plane == 0 ? 16 : 128, static_cast<size_t>(rows) * picture->linesize[plane]);
    }
}

std::shared_ptr<LiveFrame> NewFrame(const Moment& moment, const Packet& packet, bool no_video) {
    auto frame = std::make_shared<LiveFrame>();
    frame->header.magic = VEXO_FRAME_MAGIC;
    frame->header.seconds = static_cast<unsigned>(moment.wall_clock / 1000000);
    frame->header.microseconds = static_cast<unsigned>(moment.wall_clock % 1000000);
    frame->header.data_length = static_cast<unsigned>(packet.size);
    frame->key = packet.key;
    frame->no_video = no_video;
    frame->bytes.resize(sizeof(frame->header) + packet.size);
    memcpy(frame->bytes.data() + sizeof(frame->header), packet.data, packet.size);
    return frame;
}

void MarkVideo(vexo_enc_str_type type, bool key, vexo_frame_header* header) {
    header->magic = VEXO_FRAME_MAGIC;
    header->frame_type = FrameType(type, key);
    header->codec = CODEC_H264;
}

void MarkAudio(vexo_frame_header* header) {
    header->magic = VEXO_FRAME_MAGIC;
    header->frame_type = VEXO_FRAME_AUDIO;
    header->codec = CODEC_ALAW;
    const unsigned char format[4] = {AUDIO_RATE & 0xFF, 16, 1, 16};
    memcpy(header->format, format, sizeof(format));
}

VideoStream::VideoStream(vexo_enc_str_type type, unsigned channel, const CameraSettings& camera, SteadyTime start,
                         FrameList* list)
    : m_type(type),
      m_channel(channel),
      m_name(camera.name),
      m_settings(SettingsOf(camera, type)),
      m_schedule(start, m_settings.fps),
      m_list(list),
      m_overlay(static_cast<int>(m_settings.width), static_cast<int>(m_settings.height)),
      m_encoder(m_settings, ShapeOf(camera)),
      m_picture(NewPicture(static_cast<int>(m_settings.width), static_cast<int>(m_settings.height))) {}

void VideoStream::Put(const Moment& moment, const AVFrame* scene) {
    if (!Prepare(scene)) {
        return;
    }
    if (!m_overlay.Write(m_name, moment.wall_clock, scene == nullptr ? NO_SIGNAL : "", m_picture.get())) {
        m_picture = NewPicture(static_cast<int>(m_settings.width), static_cast<int>(m_settings.height));
        return;
    }
    const Stamp stamp = {static_cast<uint64_t>(moment.wall_clock) / 1000, m_channel};
    PaintStamp(stamp, m_picture->data, m_picture->linesize, m_picture->width, m_picture->height);
    Packet packet;
    if (m_encoder.Encode(*m_picture, &packet)) {
        Publish(moment, packet, scene == nullptr);
    }
}

bool VideoStream::Prepare(const AVFrame* scene) {
    if (m_picture == nullptr || av_frame_make_writable(m_picture.get()) != 0) {
        return false;
    }
    if (scene == nullptr) {
        Blacken(m_picture.get());
        return true;
    }
    if (scene->width == m_picture->width && scene->height == m_picture->height) {
        return av_frame_copy(m_picture.get(), scene) >= 0;
    }
    return Scale(*scene, *m_picture, &m_scaler);
}

void VideoStream::Publish(const Moment& moment, const Packet& packet, bool no_video) {
    auto frame = NewFrame(moment, packet, no_video);
    MarkVideo(m_type, packet.key, &frame->header);
    frame->header.format[0] = static_cast<unsigned char>(m_settings.fps);
    frame->header.width = static_cast<unsigned short>(m_settings.width);
    frame->header.height = static_cast<unsigned short>(m_settings.height);
    m_list->Add(std::move(frame));
}

AudioStream::AudioStream(const CameraSettings& camera, SteadyTime start, FrameList* list)
    : m_tone(camera.audio_hz, camera.audio_level, AUDIO_RATE), m_schedule(start, AUDIO_BLOCKS), m_list(list) {}

void AudioStream::Put(const Moment& moment, bool no_video) {
    std::array<int16_t, AUDIO_BLOCK> samples;
    std::generate(samples.begin(), samples.end(), [this] { return m_tone.Next(); });
    Packet packet;
    if (!m_encoder.Encode(samples.data(), &packet)) {
        return;
    }
    auto frame = NewFrame(moment, packet, no_video);
    MarkAudio(&frame->header);
    frame->key = true;
    m_list->Add(std::move(frame));
}

}  // namespace simulator
