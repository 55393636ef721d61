#include "channel_take.h"

#include <filesystem>

#include "live_count.h"
#include "local_time.h"

namespace hostmgrctl {
namespace {

constexpr int64_t SECOND = 1000000;

time_t Seconds(int64_t microseconds) {
    return static_cast<time_t>(microseconds / SECOND);
}

nlohmann::ordered_json TrackJson(const TakenTrack& track, const char* codec) {
    return {{"frames", track.frames},
            {"bytes", track.bytes},
            {"first", TimeJson(Seconds(track.first))},
            {"last", TimeJson(Seconds(track.last))},
            {"codec", codec}};
}

}  // namespace

void TakenTrack::Add(const Frame& frame) {
    first = frames == 0 ? frame.Time() : first;
    last = frame.Time();
    codec = frame.Codec();
    ++frames;
    bytes += frame.Size();
}

std::string PathOfChannel(const std::string& path, unsigned channel, size_t channels) {
    if (path.empty() || channels == 1) {
        return path;
    }
    const std::filesystem::path file(path);
    return (file.parent_path() / (file.stem().string() + "-channel" + std::to_string(channel))).string() +
           file.extension().string();
}

ChannelTake::ChannelTake(unsigned channel, const TakeSetup& setup)
    : m_channel(channel), m_setup(setup), m_stream(setup.stream), m_time_line(setup.reverse, setup.keep_gaps) {
    if (!setup.path.empty()) {
        m_file = std::make_unique<MediaFile>(setup.path, setup.audio && !setup.reverse,
                                             setup.whole ? FilePlace::Aside : FilePlace::Direct);
    }
}

void ChannelTake::Take(const Frame& frame, int speed) {
    (frame.IsAudio() ? m_audio : m_video).Add(frame);
    if (!frame.IsAudio()) {
        m_key_frames += frame.IsKey() ? 1 : 0;
        m_resized = m_resized || (m_video.frames > 1 && m_width != frame.Width());
        m_width = frame.Width();
        m_height = frame.Height();
    }
    if (m_file != nullptr && Fits(frame)) {
        m_file->Write(frame, m_time_line.Place(frame.Time(), speed));
    }
}

// Backwards only pictures that need no other one can be shown.
bool ChannelTake::Fits(const Frame& frame) const {
    return !m_setup.reverse || frame.IsKey();
}

void ChannelTake::Keep() {
    if (m_file != nullptr) {
        m_file->Finish();
    }
}

void ChannelTake::Print(FILE* out) const {
    fprintf(out, "channel %u, %s stream\n", m_channel, StreamName(m_stream));
    if (m_video.frames == 0) {
        fprintf(out, "  video   no frames\n");
    } else {
        fprintf(out, "  video   %llu frame%s, %llu key frame%s\n", static_cast<unsigned long long>(m_video.frames),
                m_video.frames == 1 ? "" : "s", static_cast<unsigned long long>(m_key_frames),
                m_key_frames == 1 ? "" : "s");
        fprintf(out, "          %s, %ux%u pixels, %s\n", VideoCodecName(m_video.codec), m_width, m_height,
                Amount(m_video.bytes).c_str());
        fprintf(out, "  from    %s\n  to      %s\n", TimeText(Seconds(m_video.first)).c_str(),
                TimeText(Seconds(m_video.last)).c_str());
    }
    if (m_audio.frames > 0) {
        fprintf(out, "  audio   %llu frames, %s, %s\n", static_cast<unsigned long long>(m_audio.frames),
                AudioCodecName(m_audio.codec), Amount(m_audio.bytes).c_str());
    }
    PrintFile(out);
}

void ChannelTake::PrintFile(FILE* out) const {
    if (m_file == nullptr || m_file->Size() == 0) {
        return;
    }
    fprintf(out, "  file    %s, %s\n", m_file->Path().c_str(), Amount(m_file->Size()).c_str());
    if (!m_file->Note().empty()) {
        fprintf(out, "          %s\n", m_file->Note().c_str());
    }
    if (m_resized) {
        fprintf(out, "          its pictures change their size on the way: not every player shows that\n");
    }
    if (m_setup.reverse) {
        fprintf(out, "          played backwards: its key frames alone\n");
    }
}

nlohmann::ordered_json ChannelTake::Json() const {
    nlohmann::ordered_json json = {
        {"channel", m_channel}, {"stream", StreamName(m_stream)}, {"video", nullptr}, {"audio", nullptr}};
    if (m_video.frames > 0) {
        json["video"] = TrackJson(m_video, VideoCodecName(m_video.codec));
        json["video"]["key_frames"] = m_key_frames;
        json["video"]["width"] = m_width;
        json["video"]["height"] = m_height;
    }
    if (m_audio.frames > 0) {
        json["audio"] = TrackJson(m_audio, AudioCodecName(m_audio.codec));
    }
    json["ended"] = m_ended;
    json["file"] = nullptr;
    if (m_file != nullptr && m_file->Size() > 0) {
        json["file"] = m_file->Json();
    }
    return json;
}

}  // namespace hostmgrctl
