// What the tests of the advance reader share: a callback that keeps what it was given, the reader with it, and excerpts
// of the history to push. Expectations do not belong here.
#ifndef TESTS_SYSTEM_PUSHED_H
#define TESTS_SYSTEM_PUSHED_H

#include <algorithm>
#include <mutex>

#include "recorded.h"

namespace pushed {

using live::Eventually;
using live::Frame;
using recorded::List;
using recorded::Player;

constexpr unsigned REFUSED = 0x401A0000;

/** One call of the callback. */
struct Call {
    const void* para;
    bool valid;
    std::optional<Frame> frame;  ///< nothing: the end
};

/** What the callbacks of a test did; the callback has no pointer of its own but the reader's. */
struct Log {
    std::mutex mutex;
    std::vector<Call> calls;                                                       // guarded by mutex
    std::function<unsigned(const Call&)> answer = [](const Call&) { return 0U; };  ///< without the mutex
};
inline Log* g_log = nullptr;

inline unsigned int OnFrame(void* para, VEXO_BOOL valid, unsigned char* bytes) {
    Call call = {para, valid != VEXO_FALSE, std::nullopt};
    if (bytes != nullptr) {
        call.frame = live::CopyOf(bytes, {}, VEXO_FALSE);
    }
    {
        std::lock_guard<std::mutex> lock(g_log->mutex);
        g_log->calls.push_back(call);
    }
    return g_log->answer(call);
}

class AdvanceReaderTest : public testing::Test {
protected:
    AdvanceReaderTest() {
        g_log = &m_log;
        m_reader = vexo_model_new_advance_avss_reader(VEXO_USER_HOSTMGR, "advance");
        EXPECT_EQ(m_reader->set_callback(OnFrame), 0);
        EXPECT_EQ(m_reader->set_param(0), 0);
    }
    ~AdvanceReaderTest() override {
        Delete();
        g_log = nullptr;
    }

    void Delete() {
        if (m_reader != nullptr) {
            vexo_model_delete_advance_avss_reader(m_reader, "test", "Delete");
        }
        m_reader = nullptr;
    }

    size_t Count() {
        std::lock_guard<std::mutex> lock(m_log.mutex);
        return m_log.calls.size();
    }
    std::vector<Call> Calls() {
        std::lock_guard<std::mutex> lock(m_log.mutex);
        return m_log.calls;
    }
    size_t Ends() {
        const std::vector<Call> calls = Calls();
        return std::count_if(calls.begin(), calls.end(), [](const Call& call) { return !call.frame; });
    }
    bool Ended(size_t ends) {
        return Eventually([&] { return Ends() == ends; });
    }

    Log m_log;
    vexo_advance_avss_file_reader* m_reader = nullptr;
};

/** Three seconds of a recording, all frames, or as it is set then. */
class Excerpt {
public:
    explicit Excerpt(unsigned channel, size_t segment = 1)
        : m_list(channel), m_player(m_list), m_start(m_list.Files()[segment].start) {
        m_player->set_time_range(m_start, m_start + 3);
    }
    vexo_avss_file_reader* operator->() const { return m_player.Get(); }
    vexo_avss_file_reader* Get() const { return m_player.Get(); }
    Player& Reader() { return m_player; }
    long Start() const { return m_start; }

    /** What it gives by itself. */
    std::vector<uint64_t> Times() {
        std::vector<uint64_t> times;
        for (const Frame& frame : m_player.Rest()) {
            times.push_back(frame.Milliseconds());
        }
        m_player->seek(m_start);
        return times;
    }

private:
    const List m_list;
    Player m_player;
    const long m_start;
};

}  // namespace pushed

#endif
