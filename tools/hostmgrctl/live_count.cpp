#include "live_count.h"

#include <cmath>
#include <string>

namespace hostmgrctl {
namespace {

std::string Fixed(double value, int places) {
    char text[64];
    snprintf(text, sizeof(text), "%.*f", places, value);
    return text;
}

/** Two places, for JSON. */
double Rounded(double value) {
    return std::round(value * 100) / 100;
}

std::string Frames(const TrackCount& track) {
    std::string text = std::to_string(track.frames) + (track.frames == 1 ? " frame" : " frames");
    if (track.frames > 1) {
        text += ", " + Fixed(track.Rate(), 1) + " a second";
    }
    return track.lost == 0 ? text : text + ", " + std::to_string(track.lost) + " lost";
}

nlohmann::ordered_json TrackJson(const TrackCount& track, const char* codec) {
    return {{"frames", track.frames},        {"seconds", Rounded(track.Seconds())},
            {"rate", Rounded(track.Rate())}, {"lost", track.lost},
            {"bytes", track.bytes},          {"codec", codec}};
}

}  // namespace

const char* StreamName(unsigned stream) {
    return stream == HOSTMGR_STREAM_MAIN ? "main" : "sub";
}

std::string Amount(uint64_t bytes) {
    if (bytes < 1000) {
        return std::to_string(bytes) + " bytes";
    }
    const double thousands = static_cast<double>(bytes) / 1000;
    return thousands < 1000 ? Fixed(thousands, 1) + " kB" : Fixed(thousands / 1000, 1) + " MB";
}

void TrackCount::Add(const Frame& frame) {
    if (frames == 0) {
        first_time = frame.Time();
    } else {
        const unsigned step = frame.Number() - last_number;  // numbers wrap; a step back is a list that began anew
        lost += step > 0 && step < 0x80000000 ? step - 1 : 0;
    }
    ++frames;
    bytes += frame.Size();
    codec = frame.Codec();
    last_number = frame.Number();
    last_time = frame.Time();
}

double TrackCount::Rate() const {
    return frames > 1 && last_time > first_time ? static_cast<double>(frames - 1) / Seconds() : 0;
}

void LiveCount::Add(const Frame& frame, int64_t now) {
    if (frame.IsAudio()) {
        m_audio.Add(frame);
        return;
    }
    m_video.Add(frame);
    m_key_frames += frame.IsKey() ? 1 : 0;
    m_no_signal += frame.NoSignal() ? 1 : 0;
    m_width = frame.Width();
    m_height = frame.Height();
    m_age = now - frame.Time();
}

void LiveCount::Print(FILE* out, bool sound) const {
    PrintVideo(out);
    if (sound) {
        PrintAudio(out);
    }
    if (m_no_signal > 0) {
        fprintf(out, "  signal  the recorder reports no video signal in %llu of %llu frames\n",
                static_cast<unsigned long long>(m_no_signal), static_cast<unsigned long long>(m_video.frames));
    }
    if (m_video.frames > 0) {
        fprintf(out, "  age     the last picture was %s ms old when it was read\n",
                Fixed(static_cast<double>(m_age) / 1000, 0).c_str());
    }
}

void LiveCount::PrintVideo(FILE* out) const {
    if (m_video.frames == 0) {
        fprintf(out, "  video   no frames\n");
        return;
    }
    fprintf(out, "  video   %s, %llu key %s\n", Frames(m_video).c_str(), static_cast<unsigned long long>(m_key_frames),
            m_key_frames == 1 ? "frame" : "frames");
    fprintf(out, "          %s, %ux%u pixels, %s\n", VideoCodecName(m_video.codec), m_width, m_height,
            Amount(m_video.bytes).c_str());
}

void LiveCount::PrintAudio(FILE* out) const {
    if (m_audio.frames == 0) {
        fprintf(out, "  audio   no frames\n");
        return;
    }
    fprintf(out, "  audio   %s\n          %s, %s\n", Frames(m_audio).c_str(), AudioCodecName(m_audio.codec),
            Amount(m_audio.bytes).c_str());
}

void LiveCount::AddJson(nlohmann::ordered_json* json) const {
    (*json)["video"] = nullptr;
    (*json)["audio"] = nullptr;
    (*json)["picture_age_ms"] = nullptr;
    if (m_video.frames > 0) {
        nlohmann::ordered_json video = TrackJson(m_video, VideoCodecName(m_video.codec));
        video["key_frames"] = m_key_frames;
        video["width"] = m_width;
        video["height"] = m_height;
        video["no_signal_frames"] = m_no_signal;
        (*json)["video"] = video;
        (*json)["picture_age_ms"] = Rounded(static_cast<double>(m_age) / 1000);
    }
    if (m_audio.frames > 0) {
        (*json)["audio"] = TrackJson(m_audio, AudioCodecName(m_audio.codec));
    }
}

}  // namespace hostmgrctl
