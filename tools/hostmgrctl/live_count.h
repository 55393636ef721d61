// What has been read of a live stream, in figures, as text and as JSON. Reading and writing files do not belong here.
#ifndef HOSTMGRCTL_LIVE_COUNT_H
#define HOSTMGRCTL_LIVE_COUNT_H

#include <cstdio>
#include <nlohmann/json.hpp>

#include "frame.h"

namespace hostmgrctl {

/** The frames of one kind, video or audio. */
struct TrackCount {
    uint64_t frames = 0;
    uint64_t bytes = 0;  ///< payload
    uint64_t lost = 0;   ///< numbers left out between the frames
    unsigned codec = 0;
    unsigned last_number = 0;
    int64_t first_time = 0;  ///< microseconds since 1970, as the frames say
    int64_t last_time = 0;

    void Add(const Frame& frame);
    /** From the first frame's time stamp to the last one's. */
    double Seconds() const { return static_cast<double>(last_time - first_time) / 1e6; }
    /** Frames a second by their time stamps; 0 when there are too few to tell. */
    double Rate() const;
};

class LiveCount {
public:
    /** now: the wall clock when the frame was read, microseconds since 1970. */
    void Add(const Frame& frame, int64_t now);

    const TrackCount& Video() const { return m_video; }
    const TrackCount& Audio() const { return m_audio; }

    /** Lines for a person; sound: whether there was any to be expected. */
    void Print(FILE* out, bool sound) const;
    /** Adds the members "video" to "picture_age_ms" of the summary; see README.md. */
    void AddJson(nlohmann::ordered_json* json) const;

private:
    void PrintVideo(FILE* out) const;
    void PrintAudio(FILE* out) const;

    TrackCount m_video;
    TrackCount m_audio;
    uint64_t m_key_frames = 0;
    uint64_t m_no_signal = 0;  ///< video frames that said so
    unsigned m_width = 0;
    unsigned m_height = 0;
    int64_t m_age = 0;  ///< of the last picture when it was read, microseconds
};

/** "main" or "sub". */
const char* StreamName(unsigned stream);

/** "1.2 MB". */
std::string Amount(uint64_t bytes);

}  // namespace hostmgrctl

#endif
