// The platform's reader of one channel's recordings, as the guest holds it. In which order frames come stands in
// file_reader.h, how several channels are pushed in step in advance_reader.h.
//
//   made --open--> open --start--> reading --close--> made     open takes a new list in every state
#ifndef SIMULATOR_MODEL_CHANNEL_READER_H
#define SIMULATOR_MODEL_CHANNEL_READER_H

#include <mutex>

#include "file_reader.h"
#include "vexo_model.h"

namespace simulator {

/** A recorded frame that somebody has; its bytes stay as long. */
using FramePtr = std::shared_ptr<LiveFrame>;

/** For any thread: the guest sets it while an advance reader reads. */
class ChannelReader : public vexo_avss_file_reader {
public:
    virtual ~ChannelReader() = default;

    int open(vexo_rec_file_inquiry_result* files) override;
    int set_frame_mode(unsigned int mode) override;
    int set_stream_type(unsigned int type) override;
    int set_direction(unsigned int reverse) override;
    int seek(long seconds) override;
    int reserved_6() override { return -1; }
    int read_frame(unsigned char** frame, unsigned int reserved) override;
    int release_frame(unsigned int frame_type) override;
    int set_time_range(long start, long stop) override;
    int close() override;
    int reserved_11() override { return -1; }
    int start() override;

    /** What an advance reader finds when it looks for this reader's next frame. */
    struct Offer {
        bool reading = false;  ///< false: not started, or closed
        FramePtr frame;        ///< null while reading: the end
        unsigned turn = 0;     ///< changes when the guest sends the reader elsewhere: an end is to be told again
        bool reverse = false;
        bool key_only = false;
    };
    Offer Look();

    /** Done with a frame that Look gave, unless the guest has meanwhile sent the reader elsewhere. */
    void Take(const FramePtr& frame);

    /** As seek, asked by an advance reader. */
    bool Go(long seconds);

private:
    int Change(const ReadSettings& settings);
    FramePtr Pending();

    std::mutex m_mutex;
    FileReader m_files;  // guarded by m_mutex, as all that follows
    bool m_open = false;
    bool m_started = false;
    FramePtr m_pending;  ///< offered until it is released
    FramePtr m_held;     ///< what the guest last read and has not released
    unsigned m_turn = 0;
};

}  // namespace simulator

#endif
