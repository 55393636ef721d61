// A live frame list: the latest frames of one stream, walked by any number of readers, and the frames that readers
// hold. It does not know who encodes; a list is filled by one encoder at a time.
#ifndef SIMULATOR_MODEL_FRAME_LIST_H
#define SIMULATOR_MODEL_FRAME_LIST_H

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "vexo_types.h"

namespace simulator {

/** A frame as readers get it. The bytes do not change once it is in a list. */
struct LiveFrame {
    vexo_frame_header header = {};
    bool key = false;                  ///< a reader may begin here; true of every audio frame
    bool no_video = false;             ///< made while the camera had no signal
    std::vector<unsigned char> bytes;  ///< header and payload
};

/** What a reader gets. */
struct HandedFrame {
    unsigned char* bytes = nullptr;
    vexo_read_av_list_note note = {};  ///< frame number, generation of the list
    bool no_video = false;
};

/** Any thread; no operation waits for more than another one's end. */
class FrameList {
public:
    /** label: for the guest watch, such as "channel 1 main"; capacity: frames kept before the oldest goes. */
    FrameList(std::string label, unsigned capacity);

    /** Adds a frame: numbers it and completes its bytes, whose first 36 are the header's place. */
    void Add(std::shared_ptr<LiveFrame> frame);

    /** The encoder has ended: drops all frames that nobody holds; positions given so far are of an older generation. */
    void StartOver();

    /** Hands out the newest frame to begin with; false when there is none. */
    bool First(vexo_user_id user, HandedFrame* out);

    /** Hands out the frame after a position, or the oldest to begin with when that is gone; false when there is none.
     */
    bool After(vexo_user_id user, const vexo_read_av_list_note& position, HandedFrame* out);

    /** Takes one hand-out back; false, with a complaint, when that user does not hold that position. */
    bool Release(vexo_user_id user, const vexo_read_av_list_note& position);

    /**
     * For the recorder itself: the frames after a position, or after the oldest to begin with when that is gone; moves
     * the position behind them. Nothing is handed out: whoever has a frame keeps it in memory.
     */
    std::vector<std::shared_ptr<LiveFrame>> Since(vexo_read_av_list_note* position);

    /** Prints a heading and the newest frames, one line each. */
    void Dump(vexo_print_func print);

private:
    using FramePtr = std::shared_ptr<LiveFrame>;
    using HoldKey = std::tuple<unsigned, unsigned, unsigned>;  // user, generation, number
    struct Hold {
        FramePtr frame;
        unsigned count = 0;
    };

    void HandOut(vexo_user_id user, const FramePtr& frame, HandedFrame* out);
    FramePtr Next(const vexo_read_av_list_note& position) const;
    FramePtr OldestKey() const;
    unsigned HeldCount(unsigned number) const;
    std::vector<std::string> Describe();

    const std::string m_label;
    const unsigned m_capacity;
    std::mutex m_mutex;
    std::deque<FramePtr> m_frames;  // guarded by m_mutex, as all that follows
    std::map<HoldKey, Hold> m_holds;
    unsigned m_number = 0;
    unsigned m_generation = 1;
};

}  // namespace simulator

#endif
