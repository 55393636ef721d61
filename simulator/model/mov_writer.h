// Writes a recording: a QuickTime file of main stream, sub stream and sound, in pieces from key frame to key frame, so
// that it can be played and read while it grows. When files begin and end, and where they lie, does not belong here.
#ifndef SIMULATOR_MODEL_MOV_WRITER_H
#define SIMULATOR_MODEL_MOV_WRITER_H

#include <string>
#include <vector>

#include "av.h"
#include "frame_list.h"

namespace simulator {

/** Track numbers in a recording. */
enum Track { TRACK_MAIN = 1, TRACK_SUB = 2, TRACK_AUDIO = 3 };

/** The track that a frame belongs on. */
Track TrackOf(const vexo_frame_header& header);

/** Unit of time in a recording: time stamps are kept to ten microseconds. */
constexpr int64_t TIME_UNIT = 10;

/** A frame's time stamp in microseconds since 1970. */
int64_t TimeOf(const vexo_frame_header& header);

/** How long a frame lasts by its stream's rate, in microseconds. */
int64_t DurationOf(const LiveFrame& frame);

/** For one thread at a time. */
class MovWriter {
public:
    /**
     * path: replaced when it exists. start: microseconds since 1970, a
     * multiple of TIME_UNIT. heads: a key frame of each stream that the file
     * will hold. What fails is told on standard error and leaves a writer that writes nothing.
     */
    MovWriter(const std::string& path, int64_t start, const std::vector<const LiveFrame*>& heads);
    ~MovWriter();
    MovWriter(const MovWriter&) = delete;
    MovWriter& operator=(const MovWriter&) = delete;

    /** Adds a frame of one of the streams; each stream's frames in the order of their time. False: not written. */
    bool Write(const LiveFrame& frame);

    /** Completes the file; nothing can be written any more. The destructor does it as well. */
    void Finish();

    /** Bytes in the file so far. */
    int64_t Bytes() const;

private:
    struct Close {
        void operator()(AVFormatContext* file) const;
    };

    bool AddTrack(const LiveFrame& head);
    int Begin(const std::string& path, int64_t start);

    const int64_t m_start;
    std::unique_ptr<AVFormatContext, Close> m_file;
    Av<AVPacket> m_packet;
    bool m_writing = false;
    std::vector<int64_t> m_last;  ///< time stamp of each track's last frame, in the track's own unit
};

}  // namespace simulator

#endif
