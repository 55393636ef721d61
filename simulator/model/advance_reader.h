// The platform's advance reader: pushes the frames of several channel readers, merged by time and paced, on a thread of
// its own. What a reader gives, and in which direction, is the reader's.
//
//   idle --start--> pushing --stop--> idle      a stop waits for a callback that runs, unless called from it
#ifndef SIMULATOR_MODEL_ADVANCE_READER_H
#define SIMULATOR_MODEL_ADVANCE_READER_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include "channel_reader.h"

namespace simulator {

/** How much faster time passes when a reader gives key frames only. */
constexpr int KEY_FRAMES_PACE = 8;

/** What the threads share; lives until the last of them is done with it. For any thread. */
class Advance : public std::enable_shared_from_this<Advance> {
public:
    void Add(std::shared_ptr<ChannelReader> reader, void* usr_para);
    /** False when the reader is none of these. Waits until no callback runs for it, unless called from that callback.
     */
    bool Remove(const ChannelReader* reader);
    void Seek(long seconds);
    void SetCallback(vexo_advance_frame_callback callback);
    bool Start();
    void Stop();

private:
    using Clock = std::chrono::steady_clock;

    struct Member {
        std::shared_ptr<ChannelReader> reader;
        void* usr_para = nullptr;
        std::optional<unsigned> ended_turn;  ///< in which turn of the reader its end has been told
    };
    /** What shall be pushed next. */
    struct Choice {
        std::shared_ptr<ChannelReader> reader;
        void* usr_para = nullptr;
        ChannelReader::Offer offer;
    };
    /** The frame that was pushed last, and when it was due. */
    struct Pushed {
        int64_t time;
        Clock::time_point due;
    };

    void Run(unsigned run);
    void Round(std::unique_lock<std::mutex>& lock);
    std::optional<Choice> Choose();
    Clock::time_point DueOf(const Choice& choice, Clock::time_point now) const;
    bool Push(const Choice& choice, std::unique_lock<std::mutex>& lock);
    void Settle(const Choice& choice, Clock::time_point due, bool accepted);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Member> m_members;  // guarded by m_mutex, as all that follows
    vexo_advance_frame_callback m_callback = nullptr;
    unsigned m_run = 0;           ///< number of the present run; a thread of another one ends
    std::set<unsigned> m_active;  ///< runs whose threads have not ended yet
    bool m_pushing = false;
    const ChannelReader* m_called_for = nullptr;  ///< whose frame the callback has now
    std::thread::id m_caller;                     ///< the thread that runs it
    std::optional<Pushed> m_last;
    Clock::time_point m_not_before;  ///< nothing is pushed earlier
};

/** The object as the guest holds it. */
class AdvanceReader : public vexo_advance_avss_file_reader {
public:
    virtual ~AdvanceReader() { m_advance->Stop(); }

    int reserved_1() override { return -1; }
    int add_reader(vexo_avss_file_reader* reader, void* usr_para) override;
    int remove_reader(vexo_avss_file_reader* reader) override;
    int seek(long seconds) override;
    int set_callback(vexo_advance_frame_callback callback) override;
    int start(unsigned int argument) override;
    int stop() override;
    int reserved_8() override { return -1; }
    int reserved_9() override { return -1; }
    int set_param(unsigned int param) override;

    Advance& Shared() { return *m_advance; }

private:
    const std::shared_ptr<Advance> m_advance = std::make_shared<Advance>();
};

}  // namespace simulator

#endif
