// Walks through recorded files frame by frame: which frame comes next, forward or backward, within a range of time. The
// platform's objects and their rules of holding frames stand in channel_reader.h.
#ifndef SIMULATOR_MODEL_FILE_READER_H
#define SIMULATOR_MODEL_FILE_READER_H

#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "archive.h"
#include "clip_file.h"

namespace simulator {

/** What a reader shall give. Sound comes forward and with all frames only. */
struct ReadSettings {
    bool key_only = false;
    bool reverse = false;
    Track video = TRACK_MAIN;
    int64_t from = std::numeric_limits<int64_t>::min();  ///< microseconds since 1970, both included
    int64_t to = std::numeric_limits<int64_t>::max();

    bool operator==(const ReadSettings& other) const {
        return key_only == other.key_only && reverse == other.reverse && video == other.video && from == other.from &&
               to == other.to;
    }
    /** Whether a frame is among what shall be given. */
    bool Admits(const ClipFrame& frame) const;
};

/** For one thread at a time. */
class FileReader {
public:
    /** Begins with these files, by time, where the settings say. */
    void Open(std::vector<RecordedFile> files);

    /** Changes what is given; reading goes on from the moment it is at. */
    void Set(const ReadSettings& settings);
    const ReadSettings& Settings() const { return m_settings; }

    /**
     * Goes on from that moment, microseconds since 1970: forward with the first key frame that is not before it,
     * backward with the last frame that is not after it.
     */
    void Seek(int64_t moment);

    /** The next frame; null at the end. Files that are gone are passed over, and so are those without the stream. */
    std::shared_ptr<LiveFrame> Next();

private:
    /** Where reading is: at a frame that was given, or at a moment that was sought. */
    struct Position {
        int64_t time = 0;
        std::optional<Track> given;
    };

    void Place();
    void PlaceInFile();
    Position Begin() const;
    bool EnterFile();
    void LeaveFile();
    bool Beyond(int64_t time) const;
    std::shared_ptr<LiveFrame> NextOfFile();

    ReadSettings m_settings;
    std::vector<RecordedFile> m_files;
    std::optional<Position> m_position;  ///< nothing: nothing was given or sought since opening
    bool m_key_needed = true;            ///< forward: nothing is given before a key frame
    bool m_placed = false;               ///< m_file and m_index are where m_position says
    long m_file = 0;                     ///< of m_files; one beyond at the end
    long m_index = 0;                    ///< of the clip's frames; one beyond at its end
    long m_clip_file = -1;               ///< whose clip is open
    std::unique_ptr<ClipFile> m_clip;
};

}  // namespace simulator

#endif
