// Records one channel: takes what its cameras' lists bring and writes it into files. When that is done, and on which
// thread, does not belong here.
//
//   idle --a stream is at work--> gathering --GATHER--> writing --no frame for IDLE, or not to be recorded--> idle
//                                                         \--length, size, type, another stream--> the next file
#ifndef SIMULATOR_MODEL_CHANNEL_RECORDER_H
#define SIMULATOR_MODEL_CHANNEL_RECORDER_H

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "archive.h"
#include "camera.h"
#include "mov_writer.h"

namespace simulator {

/** For one thread at a time, but Disk. */
class ChannelRecorder {
public:
    /** channel counted from 1; camera must outlive this. */
    ChannelRecorder(unsigned channel, Camera* camera, unsigned file_seconds);

    /** Writes what has come since the last pass; shall: whether it is to be recorded; type: record type bits. True
     * while there is something to do. */
    bool Pass(bool shall, unsigned type);

    /** Ends the file that is being written. */
    void Close();

    /** The disk that is recorded to, counted from 1; 0: none. Any thread. */
    unsigned Disk() const { return m_disk; }

private:
    using Frame = std::shared_ptr<LiveFrame>;

    std::vector<Frame> Drain();
    void Put(const Frame& frame, unsigned type);
    void Gather(const Frame& frame, unsigned type);
    bool IsDue(const LiveFrame& frame, unsigned type) const;
    void Begin(int64_t start, unsigned type);
    void Write(const LiveFrame& frame);
    void EndFile();

    const unsigned m_channel;
    Camera* const m_camera;
    const int64_t m_longest;  ///< microseconds
    std::array<vexo_read_av_list_note, TRACK_AUDIO + 1> m_positions = {};
    std::array<Frame, TRACK_AUDIO + 1> m_heads;  ///< the last key frame of each stream, since it was idle
    std::vector<Frame> m_gathered;
    std::unique_ptr<MovWriter> m_writer;
    RecordedFile m_file;
    std::array<bool, TRACK_AUDIO + 1> m_tracks = {};  ///< that the file has
    std::chrono::steady_clock::time_point m_last;     ///< when something came
    std::atomic<unsigned> m_disk{0};
};

}  // namespace simulator

#endif
