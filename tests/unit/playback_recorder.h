// A recorder's recordings as the tests of playback see them: frames with time stamps, a channel's reader that hands
// them out, an advance reader that the test drives. Who uses them, and what is expected, stands elsewhere.
#ifndef PLAYBACK_RECORDER_H
#define PLAYBACK_RECORDER_H

#include <string.h>

#include <condition_variable>
#include <deque>

#include "hostmgr_common.h"
#include "platform_mock.h"

inline _tagVexoHostMgrTime HostTime(uint32_t hour, uint32_t minute, uint32_t second, uint32_t reserved = 0) {
    return {2024, 7, 5, hour, minute, second, reserved};
}
/** Seconds since 1970 of that time; tests run in UTC unless they say otherwise. */
inline long SecondsOf(long hour, long minute, long second) {
    return 1720137600 + hour * 3600 + minute * 60 + second;
}

/** A frame whose header stands at an odd address, with nothing readable behind it. */
class PlayFrame {
public:
    PlayFrame(unsigned int number, unsigned int type, long long stamp_ms, unsigned int payload)
        : m_memory(new unsigned char[sizeof(vexo_frame_header) + 1]) {
        const long long since = SecondsOf(12, 0, 0) * 1000LL + stamp_ms;  // more than the board's long holds
        vexo_frame_header header = {};
        header.magic = VEXO_FRAME_MAGIC;
        header.frame_type = type;
        header.frame_no = number;
        header.seconds = static_cast<unsigned int>(since / 1000);
        header.microseconds = static_cast<unsigned int>(since % 1000 * 1000);
        header.data_length = payload;
        memcpy(Address(), &header, sizeof(header));
    }
    unsigned char* Address() const { return m_memory.get() + 1; }

private:
    const std::unique_ptr<unsigned char[]> m_memory;
};

// ---- readers -------------------------------------------------------------------------------------------------------

/** A channel's reader: hands out its frames, each until it is released. Recorded as "reader1.open(files1)". */
class TestReader final : public vexo_avss_file_reader {
public:
    TestReader(PlatformMock& platform, std::string name) : m_platform(platform), m_name(std::move(name)) {}

    void Add(unsigned int number, unsigned int type, long long stamp_ms, unsigned int payload = 100) {
        std::lock_guard<std::mutex> guard(m_guard);
        m_frames.emplace_back(number, type, stamp_ms, payload);
    }
    void Add(std::initializer_list<long> stamps, unsigned int type = VEXO_FRAME_MAIN_KEY) {
        unsigned int number = 0;
        for (const long stamp : stamps)
            Add(++number, type, stamp);
    }

    int open(vexo_rec_file_inquiry_result* files) override {
        return Called("open", files == nullptr ? "null" : "files" + std::to_string(files->channel));
    }
    int set_frame_mode(unsigned int mode) override { return Called("set_frame_mode", mode); }
    int set_stream_type(unsigned int type) override { return Called("set_stream_type", type); }
    int set_direction(unsigned int reverse) override { return Called("set_direction", reverse); }
    int seek(long seconds) override { return Called("seek", seconds); }
    int reserved_6() override { return Reserved(); }
    int read_frame(unsigned char** frame, unsigned int reserved) override {
        Called("read_frame", reserved);
        std::lock_guard<std::mutex> guard(m_guard);
        if (!m_frames.empty() && !failing)
            *frame = m_frames.front().Address();
        return failing ? -7 : 0;
    }
    int release_frame(unsigned int frame_type) override {
        Called("release_frame", frame_type);
        std::lock_guard<std::mutex> guard(m_guard);
        if (m_frames.empty())
            ADD_FAILURE() << m_name << " has no frame to release";
        else
            m_frames.pop_front();
        return 0;
    }
    int set_time_range(long start, long stop) override {
        return Called("set_time_range", std::to_string(start) + ", " + std::to_string(stop));
    }
    int close() override {
        Called("close", std::string());
        const std::function<void()> meanwhile = on_close;
        if (meanwhile)
            meanwhile();
        return 0;
    }
    int reserved_11() override { return Reserved(); }
    int start() override {
        const std::function<void()> meanwhile = on_start;
        if (meanwhile)
            meanwhile();
        return Called("start", std::string());
    }

    const std::string& Name() const { return m_name; }
    std::atomic<bool> failing{false};
    std::atomic<bool> deleted{false};
    std::function<void()> on_start;
    std::function<void()> on_close;

private:
    int Called(const char* operation, const std::string& inputs) {
        if (deleted)
            ADD_FAILURE() << m_name << " is used after its deletion: " << operation;
        m_platform.Record(m_name + "." + operation + "(" + inputs + ")");
        return 0;
    }
    template <typename Number>
    int Called(const char* operation, Number number) {
        return Called(operation, std::to_string(number));
    }
    int Reserved() { return Called("a reserved operation", std::string()); }

    PlatformMock& m_platform;
    const std::string m_name;
    std::mutex m_guard;
    std::deque<PlayFrame> m_frames;
};

/**
 * An advance reader that pushes what the test tells it to, on the test's thread of the moment. As its contract has it:
 * removing a reader and deleting wait for a callback that runs, unless they come from inside it; a test may turn the
 * waiting off. Recorded as "advance1.add_reader(reader1)".
 */
class TestAdvanceReader final : public vexo_advance_avss_file_reader {
public:
    TestAdvanceReader(PlatformMock& platform, std::string name) : m_platform(platform), m_name(std::move(name)) {}

    /** Pushes a frame of a channel: what the library answered. */
    unsigned int Push(TestReader* reader, unsigned char* frame, VEXO_BOOL valid = VEXO_TRUE) {
        void* usr_para = nullptr;
        {
            std::lock_guard<std::mutex> guard(m_guard);
            if (m_readers.count(reader) == 0)
                return 0xDEAD;
            usr_para = m_readers[reader];
            m_running = std::this_thread::get_id();
        }
        const unsigned int answer = m_callback(usr_para, valid, frame);
        std::lock_guard<std::mutex> guard(m_guard);
        m_running = {};
        m_done.notify_all();
        return answer;
    }
    unsigned int PushFor(void* usr_para, unsigned char* frame, VEXO_BOOL valid = VEXO_TRUE) {
        return m_callback(usr_para, valid, frame);
    }

    int reserved_1() override { return Reserved(); }
    int add_reader(vexo_avss_file_reader* reader, void* usr_para) override {
        TestReader* channel = static_cast<TestReader*>(reader);
        Called("add_reader", channel->Name());
        {
            std::lock_guard<std::mutex> guard(m_guard);
            m_readers[channel] = usr_para;
        }
        if (on_add)
            on_add(channel);
        return 0;
    }
    int remove_reader(vexo_avss_file_reader* reader) override {
        TestReader* channel = static_cast<TestReader*>(reader);
        Called("remove_reader", channel->Name());
        std::unique_lock<std::mutex> guard(m_guard);
        m_readers.erase(channel);
        WaitForCallback(guard);
        return 0;
    }
    int seek(long seconds) override { return Called("seek", std::to_string(seconds)); }
    int set_callback(vexo_advance_frame_callback callback) override {
        m_callback = callback;
        return Called("set_callback", callback != nullptr ? "set" : "null");
    }
    int start(unsigned int argument) override {
        if (on_start)
            on_start();
        return Called("start", std::to_string(argument));
    }
    int stop() override { return Called("stop", ""); }
    int reserved_8() override { return Reserved(); }
    int reserved_9() override { return Reserved(); }
    int set_param(unsigned int param) override { return Called("set_param", std::to_string(param)); }

    void Delete() {
        Called("deleted", "");
        std::unique_lock<std::mutex> guard(m_guard);
        for (const auto& left : m_readers)
            ADD_FAILURE() << m_name << " is deleted with " << left.first->Name() << " in it";
        WaitForCallback(guard);
        m_deleted = true;
    }
    bool Deleted() const { return m_deleted; }

    std::atomic<bool> waits{true};
    std::function<void(TestReader*)> on_add;
    std::function<void()> on_start;

private:
    void WaitForCallback(std::unique_lock<std::mutex>& guard) {
        m_done.wait(guard, [this] {
            return !waits || m_running == std::thread::id() || m_running == std::this_thread::get_id();
        });
    }
    int Called(const char* operation, const std::string& inputs) {
        if (m_deleted)
            ADD_FAILURE() << m_name << " is used after its deletion: " << operation;
        m_platform.Record(m_name + "." + operation + "(" + inputs + ")");
        return 0;
    }
    int Reserved() { return Called("a reserved operation", std::string()); }

    PlatformMock& m_platform;
    const std::string m_name;
    std::mutex m_guard;
    std::condition_variable m_done;
    std::map<TestReader*, void*> m_readers;
    std::thread::id m_running;
    vexo_advance_frame_callback m_callback = nullptr;
    std::atomic<bool> m_deleted{false};
};

#endif
