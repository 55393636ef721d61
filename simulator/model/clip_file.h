// One recorded file, read: a table of its frames and their contents, as the recorder's frames. In which order somebody
// wants them does not belong here.
#ifndef SIMULATOR_MODEL_CLIP_FILE_H
#define SIMULATOR_MODEL_CLIP_FILE_H

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "mov_writer.h"

namespace simulator {

/** A frame in the table. */
struct ClipFrame {
    int64_t time = 0;  ///< microseconds since 1970
    int64_t position = 0;
    unsigned size = 0;
    unsigned number = 0;  ///< in its track, from 1 on
    Track track = TRACK_MAIN;
    bool key = false;
};

/** The entry of a frame that was loaded; its position is not known any more. */
ClipFrame EntryOf(const LiveFrame& frame);

/** For one thread at a time. The file may be growing, and may be deleted meanwhile; the table is that of the opening.
 */
class ClipFile {
public:
    /** start: the file's, microseconds since 1970. Null when it is not there or is no recording. */
    static std::unique_ptr<ClipFile> Open(const std::string& path, int64_t start);
    ~ClipFile();
    ClipFile(const ClipFile&) = delete;
    ClipFile& operator=(const ClipFile&) = delete;

    /** By time; frames of one moment: main stream, sub stream, sound. */
    const std::vector<ClipFrame>& Frames() const { return m_frames; }

    bool Has(Track track) const { return m_tracks[track].frames > 0; }

    /** The frame at a place in the table, as it was recorded; null when the file does not give it. */
    std::shared_ptr<LiveFrame> Load(size_t index) const;

private:
    struct TrackInfo {
        unsigned frames = 0;
        int64_t last = 0;           ///< time of the last frame seen
        int64_t shortest_step = 0;  ///< between two frames; 0: not known
        int width = 0;
        int height = 0;
    };

    ClipFile() = default;
    bool Scan(const std::string& path, int64_t start);
    void Enter(const AVStream& stream, const AVPacket& packet, int64_t start);
    vexo_frame_header HeaderOf(const ClipFrame& entry) const;

    int m_descriptor = -1;
    std::vector<ClipFrame> m_frames;
    std::array<TrackInfo, TRACK_AUDIO + 1> m_tracks;
};

}  // namespace simulator

#endif
