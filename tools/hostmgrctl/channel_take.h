// What came of one channel of a play: figures as text and as JSON, and the file that it is written to. The play itself
// does not belong here.
#ifndef HOSTMGRCTL_CHANNEL_TAKE_H
#define HOSTMGRCTL_CHANNEL_TAKE_H

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "media_file.h"
#include "recordings.h"
#include "time_line.h"

namespace hostmgrctl {

/** The frames of one kind, video or audio, and their own times in microseconds since 1970. */
struct TakenTrack {
    uint64_t frames = 0;
    uint64_t bytes = 0;
    unsigned codec = 0;
    int64_t first = 0;
    int64_t last = 0;

    void Add(const Frame& frame);
};

struct TakeSetup {
    std::string path;  ///< of the file to write; empty: none
    unsigned stream = HOSTMGR_STREAM_MAIN;
    bool audio = true;
    bool reverse = false;
    bool keep_gaps = false;
    bool whole = false;  ///< written aside, and put in its place by Keep alone
};

class ChannelTake {
public:
    ChannelTake(unsigned channel, const TakeSetup& setup);

    /** Counts a frame and writes it. */
    void Take(const Frame& frame, int speed);
    /** The play went elsewhere. */
    void Break() { m_time_line.Break(); }
    void End() { m_ended = true; }
    void SetStream(unsigned stream) { m_stream = stream; }

    /** Completes the file. */
    void Keep();

    unsigned Channel() const { return m_channel; }
    const TakenTrack& Video() const { return m_video; }
    const TakenTrack& Audio() const { return m_audio; }
    bool Ended() const { return m_ended; }
    /** Null when none was asked for. */
    const MediaFile* File() const { return m_file.get(); }

    void Print(FILE* out) const;
    /** The members "channel" to "file"; see README.md. */
    nlohmann::ordered_json Json() const;

private:
    bool Fits(const Frame& frame) const;
    void PrintFile(FILE* out) const;

    const unsigned m_channel;
    const TakeSetup m_setup;
    unsigned m_stream;
    TimeLine m_time_line;
    std::unique_ptr<MediaFile> m_file;
    TakenTrack m_video;
    TakenTrack m_audio;
    uint64_t m_key_frames = 0;
    unsigned m_width = 0;
    unsigned m_height = 0;
    bool m_resized = false;  ///< pictures of several sizes came
    bool m_ended = false;
};

/** The file of a channel when there are several: "gate.mkv" becomes "gate-channel2.mkv". */
std::string PathOfChannel(const std::string& path, unsigned channel, size_t channels);

}  // namespace hostmgrctl

#endif
