// A play of recordings, from start to stop: a callback playback, a download or a reader playback, its commands, and its
// frames in the order in which the library handed them out. What is done with the frames does not belong here.
#ifndef HOSTMGRCTL_PLAYBACK_H
#define HOSTMGRCTL_PLAYBACK_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <set>
#include <vector>

#include "frame.h"
#include "recordings.h"

namespace hostmgrctl {

/** How the library plays. */
enum class PlayWay {
    Callback,  ///< its replay thread paces each channel: StartHistoryPlay, mode 0
    Download,  ///< as fast as it can be read: StartHistoryPlay, mode 1
    Reader,    ///< the recorder's own reader paces all channels together: StartHistoryPlayV2
};

struct PlaySetup {
    PlayWay way = PlayWay::Callback;
    Range range;
    unsigned stream = HOSTMGR_STREAM_MAIN;
    bool audio = true;
    bool reverse = false;
};

/** What a callback brought: a copy of a frame, or the end of a channel. */
struct Played {
    unsigned channel = 0;
    unsigned stream = 0;  ///< 0: the library did not say
    std::vector<unsigned char> bytes;

    bool End() const { return bytes.empty(); }
    Frame View() const { return Frame(bytes.data(), static_cast<unsigned>(bytes.size()), 0); }
};

/** For one thread; the library's callbacks only fill a queue. */
class Playback {
public:
    /** Starts all channels; nothing comes before Speed. Throws Failure when the recorder refuses one. */
    Playback(int login, const PlaySetup& setup);
    ~Playback();
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    /** The next frame or end of a channel; nothing when none came in that time. */
    std::optional<Played> Next(std::chrono::milliseconds patience);

    // Commands: HOSTMGR_PLAYCMD_...
    void Speed(int speed);
    void Pause(bool pause);
    void Seek(time_t target);
    void Audio(bool audio);
    void AddChannel(unsigned channel);
    void DropChannel(unsigned channel);
    void SetStream(unsigned channel, unsigned stream);
    /** The play time that the library reports, seconds since 1970; -1 when it has none. */
    time_t CurrentTime();

private:
    static void Callback(int login, int handle, unsigned char* buffer, unsigned length, void* user);
    static int ReaderCallback(int login, int handle, int channel, int stream, unsigned char* buffer, unsigned length,
                              void* user);
    void StartCallback(unsigned channel);
    void StartReader(unsigned channel);
    void Take(Played played);
    HostMgrPlayCtrlParam Control(HostMgrPlayCtrlParam command);
    void Command(HostMgrPlayCommand command, unsigned value, unsigned value_2 = 0);
    void Flow(bool free);

    const int m_login;
    const PlaySetup m_setup;
    bool m_begun = false;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Played> m_queue;  // guarded by m_mutex, as what follows
    size_t m_waiting = 0;        // bytes in the queue
    bool m_free = false;         // callbacks do not wait for room: the library is being called
};

}  // namespace hostmgrctl

#endif
