// The zero channel: one encoded stream that shows several channels, for the whole recorder; switched on by a login, at
// work while somebody reads. What its pictures show stands in mosaic.h.
#ifndef SIMULATOR_MODEL_ZERO_CHANNEL_H
#define SIMULATOR_MODEL_ZERO_CHANNEL_H

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "frame_list.h"
#include "schedule.h"

namespace simulator {

/** The most cells that a mosaic has. */
constexpr size_t MOST_CELLS = 256;

/** For any thread. */
class ZeroChannel {
public:
    /** The recorder's one. */
    static ZeroChannel& Get();

    void Enable(bool enable);
    bool Enabled();

    /** Shows those channels from the next picture on: counted from 1, row by row. False when their number is no square,
     *  none or more than MOST_CELLS. */
    bool Show(std::vector<unsigned> channels);

    /** Somebody reads: pictures are made from now until a while after the last reading. */
    void Want();

    FrameList& List() { return m_list; }

    /** Off, and showing nothing: the recorder has lost its power. */
    void Reset();

    /** Ends the work for good and waits for it; for the process's end. */
    void Close();

    /** The channels that are shown. */
    std::vector<unsigned> Shown();

private:
    ZeroChannel();
    void Run();
    void Work();
    bool Wanted() const;

    FrameList m_list;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;  // guarded by m_mutex, as all that follows
    bool m_running = false;
    bool m_closed = false;
    bool m_enabled = false;
    SteadyTime m_until;
    std::vector<unsigned> m_channels{0};
    unsigned m_layout = 0;  ///< counts the layouts
};

}  // namespace simulator

#endif
