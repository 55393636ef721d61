// What the tests of the talk share: a login whose recorder can talk, talk threads that run step by step, captured
// frames to hand out, the blocks and played frames that came of it, and lines of the record. Expectations stand in the
// tests.
#ifndef TALK_FIXTURE_H
#define TALK_FIXTURE_H

#include <string.h>

#include <condition_variable>
#include <deque>

#include "login_fixture.h"

using Bytes = std::vector<unsigned char>;

inline constexpr char TALK_LOCK[] = "vexo_hostmgr_talkback";
inline constexpr char PLAY_LOCK[] = "vexo_hostmgr_talkback play lock";
inline constexpr int TALK = 0x33;  // the recorder's handle for the first talk; the next gets the next number

// ---- lines of the record -------------------------------------------------------------------------------------------

inline Lines TalkLookup() {
    return {OnTable("lock", "HostMgrGetUserInfo"), OnTable("unlock", "HostMgrGetUserInfo")};
}

/** What is done under one of the talk's locks, by a function of its. */
inline Lines Under(const std::string& lock, const std::string& function, const Lines& calls = {}) {
    const std::string tags = "(" + lock + ", vexo_hostmgr_talkback, " + function + ")";
    return Joined({{"lock" + tags}, calls, {"unlock" + tags}});
}

inline std::string Freed(const std::string& function) {
    return "vexo_utility_free(vexo_hostmgr_talkback, " + function + ", 0x80004)";
}

inline std::string Retrieved(unsigned long thread) {
    return "vexo_utility_retrieve_thread(" + std::to_string(thread) + ")";
}

// ---- audio ---------------------------------------------------------------------------------------------------------

/** Audio that differs from byte to byte and from one seed to the next. */
inline Bytes Audio(size_t length, unsigned int seed = 1) {
    Bytes audio(length);
    for (size_t index = 0; index < length; ++index)
        audio[index] = static_cast<unsigned char>(index * 7 + index / 251 + seed * 31 + 1);
    return audio;
}

/** A frame as the recorder captures it: header and audio. claimed is what the header says of its length. */
inline Bytes CapturedFrame(const Bytes& audio, unsigned int claimed) {
    vexo_frame_header header = {};
    header.magic = VEXO_FRAME_MAGIC;
    header.frame_type = VEXO_FRAME_AUDIO;
    header.data_length = claimed;
    Bytes frame(sizeof(header));
    memcpy(frame.data(), &header, sizeof(header));
    frame.insert(frame.end(), audio.begin(), audio.end());
    return frame;
}
inline Bytes CapturedFrame(const Bytes& audio) {
    return CapturedFrame(audio, static_cast<unsigned int>(audio.size()));
}

/** The header of a block, byte by byte. */
inline Bytes BlockHeader(unsigned int used) {
    const auto byte = [used](int number) { return static_cast<unsigned char>(used >> (8 * number)); };
    return {1, 16, 1, 25, 0x40, 0x1F, 0, 0, 16, 0, 0, 0, byte(0), byte(1), byte(2), byte(3), 40, 0, 0, 0, 0, 0, 0, 0};
}

/** Audio as the agent sends it: a header of that codec, then the audio. */
inline Bytes InputData(const Bytes& audio, unsigned char codec = 1) {
    Bytes data = {codec, 0x21, 0x22, 0x23, 0x31, 0x32, 0x33, 0x34, 0x41, 0x42, 0x43, 0x44,
                  0x51,  0x52, 0x53, 0x54, 0x61, 0x62, 0x63, 0x64, 0x71, 0x72, 0x73, 0x74};
    data.insert(data.end(), audio.begin(), audio.end());
    return data;
}

inline Bytes Followed(const Bytes& first, const Bytes& second) {
    Bytes both = first;
    both.insert(both.end(), second.begin(), second.end());
    return both;
}
inline Bytes Part(const Bytes& bytes, size_t from, size_t length) {
    return Bytes(bytes.begin() + static_cast<ptrdiff_t>(from), bytes.begin() + static_cast<ptrdiff_t>(from + length));
}

// ---- threads -------------------------------------------------------------------------------------------------------

/**
 * The talk's threads, really started. Each waits before it begins and in every sleep until it is let on: one step is
 * one pass. A thread that is taken back runs freely from then on. Their ids are 2001, 2002 ...
 */
class TalkThreads {
public:
    static constexpr unsigned long FIRST = 2001;

    unsigned long Start(const vexo_thread_creat_ctl& ctl) {
        std::lock_guard<std::mutex> guard(m_guard);
        m_threads.emplace_back();
        One* one = &m_threads.back();
        one->free = m_free;
        one->thread = std::thread([this, one, ctl] {
            Self() = one;
            Wait();
            ctl.entry(ctl.argument);
            std::lock_guard<std::mutex> end(m_guard);
            one->ended = true;
            m_changed.notify_all();
        });
        return FIRST + m_threads.size() - 1;
    }

    /** On one of the threads: waits to be let on. */
    void Wait() {
        std::unique_lock<std::mutex> guard(m_guard);
        One* self = Self();
        if (self == nullptr)
            return;
        self->waiting = true;
        m_changed.notify_all();
        m_changed.wait(guard, [self] { return !self->waiting || self->free; });
        self->waiting = false;
    }

    /** Lets a thread on until it waits again or has ended; true while it goes on. Newest: the default. */
    bool Step(unsigned long id = 0) {
        std::unique_lock<std::mutex> guard(m_guard);
        One& one = id == 0 ? m_threads.back() : m_threads[id - FIRST];
        m_changed.wait(guard, [&one] { return one.waiting || one.ended; });
        one.waiting = false;
        m_changed.notify_all();
        m_changed.wait(guard, [&one] { return one.waiting || one.ended; });
        return !one.ended;
    }

    /** As the platform's operation: waits until the thread has ended. */
    void Retrieve(unsigned long id) {
        One* one = nullptr;
        {
            std::lock_guard<std::mutex> guard(m_guard);
            one = &m_threads[id - FIRST];
            EXPECT_NE(one, Self()) << "a thread takes itself back";
            EXPECT_FALSE(one->retrieved) << "a thread is taken back twice";
            one->retrieved = one->free = true;
            m_changed.notify_all();
        }
        one->thread.join();
    }

    /** From now on no thread waits. */
    void FreeAll() {
        std::lock_guard<std::mutex> guard(m_guard);
        m_free = true;
        for (One& one : m_threads)
            one.free = true;
        m_changed.notify_all();
    }

    size_t Count() {
        std::lock_guard<std::mutex> guard(m_guard);
        return m_threads.size();
    }
    bool AllRetrieved() {
        std::lock_guard<std::mutex> guard(m_guard);
        return std::all_of(m_threads.begin(), m_threads.end(), [](const One& one) { return one.retrieved; });
    }

private:
    struct One {
        std::thread thread;
        bool waiting = false;
        bool free = false;
        bool ended = false;
        bool retrieved = false;
    };

    /** The thread that runs, null on any other. */
    static One*& Self() {
        static thread_local One* self = nullptr;
        return self;
    }

    std::mutex m_guard;
    std::condition_variable m_changed;
    std::deque<One> m_threads;
    bool m_free = false;
};

// ---- fixture -------------------------------------------------------------------------------------------------------

/** A call of the talk callback, with the whole block as it stood. */
struct HandedOver {
    int hLogin;
    int hTalk;
    unsigned int length;
    void* user;
    Bytes block;
};

/** A test with a login of the handle 0x501 at a recorder that has 16 channels to talk with. */
class TalkFixture : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;
    static constexpr int OTHER_LOGIN = 0x502;  // for the tests that need a second one

    void SetUp() override {
        LoginFixture::SetUp();
        m_capability.analog_channels = 16;
        SetRecorder();
        SetThreads();
        LogInAll({LOGIN});
    }

    /** Whatever a test left behind ends with its login: every thread is taken back, nothing stays allocated or held. */
    void TearDown() override {
        for (const int hLogin : {LOGIN, OTHER_LOGIN})
            vexo_soft::vexo_HostMgr_Dev_Logout(hLogin);
        EXPECT_TRUE(threads.AllRetrieved());
        EXPECT_THAT(platform.HeldLocks(), testing::IsEmpty());
        EXPECT_THAT(platform.LiveMemory(), testing::Not(testing::Contains(0x80004u)));
    }

    static int Start(int channel = 0, int hLogin = LOGIN) {
        _tagVexoHostMgrTalkParam param = {};
        return vexo_soft::vexo_HostMgr_Dev_StartTalkEx(hLogin, channel, &param);
    }
    static int Stop(int hTalk = TALK, int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_StopTalk(hLogin, hTalk);
    }
    static int Input(Bytes data, int hTalk = TALK, int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_InputTalkData(hLogin, hTalk, reinterpret_cast<char*>(data.data()),
                                                         static_cast<unsigned int>(data.size()));
    }
    int SetCallback(int hTalk = TALK, int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_SetTalkCallback(hLogin, hTalk, TakeBlock, this);
    }
    /** A stop that the recorder refuses; the talk is left behind. */
    void StopRefused() {
        ON_CALL(platform, vexo_model_stop_talking).WillByDefault(testing::Return(-1));
        RawConsole([] { EXPECT_EQ(Stop(), -1); });
        ON_CALL(platform, vexo_model_stop_talking).WillByDefault(testing::Return(0));
    }

    /** The recorder has captured this; then one pass. */
    void Capture(const Bytes& frame) {
        m_captured.push_back(frame);
        threads.Step();
    }
    void CaptureAudio(size_t length, unsigned int seed = 1) { Capture(CapturedFrame(Audio(length, seed))); }

    /** Something happens just before a function takes a lock for the first time from now on. */
    static void BeforeLocking(MockLock& lock, const std::string& function, const std::function<void()>& action) {
        using testing::_;
        EXPECT_CALL(lock, lock(_, _)).Times(testing::AnyNumber()).WillRepeatedly(testing::DoDefault());
        EXPECT_CALL(lock, lock(_, testing::StrEq(function)))
            .WillOnce([&lock, action](const char* file, const char* name) {
                action();
                return lock.lock(file, name);
            })
            .RetiresOnSaturation();
    }

    /** The calls of an action. */
    Lines CallsOf(const std::function<void()>& action) {
        platform.TakeCalls();
        action();
        return platform.TakeCalls();
    }

    TalkThreads threads;
    vexo_dev_capability m_capability = {};
    std::deque<Bytes> m_captured;            // what the recorder hands out next
    std::vector<HandedOver> m_handed;        // what the callback got
    std::function<void()> m_in_callback;     // done in the next call of the callback
    std::function<void()> m_before_capture;  // done when the recorder is next asked for a frame
    std::vector<Bytes> m_played;             // what the recorder was given to play
    std::atomic<unsigned int> m_next_talk{TALK};

private:
    static void Once(std::function<void()>& action) {
        const std::function<void()> now = std::exchange(action, nullptr);
        if (now)
            now();
    }

    static void TakeBlock(int hLogin, int hTalk, unsigned char* data, unsigned int length, void* user) {
        TalkFixture* self = static_cast<TalkFixture*>(user);
        self->m_handed.push_back({hLogin, hTalk, length, user, Bytes(data, data + 5120)});
        Once(self->m_in_callback);
    }

    int GiveFrame(unsigned char* buffer, unsigned int size) {
        EXPECT_EQ(Bytes(buffer, buffer + size), Bytes(size)) << "the buffer is not zeroed";
        Once(m_before_capture);
        if (m_captured.empty())
            return -1;
        memcpy(buffer, m_captured.front().data(), std::min<size_t>(size, m_captured.front().size()));
        m_captured.pop_front();
        return 0;
    }

    void SetRecorder() {
        ON_CALL(platform, vexo_model_get_dev_capability).WillByDefault(testing::Return(&m_capability));
        ON_CALL(platform, vexo_model_start_talking)
            .WillByDefault([this](unsigned int, vexo_talk_mode, unsigned int, unsigned int* talk) {
                *talk = m_next_talk++;
                return 0;
            });
        ON_CALL(platform, vexo_model_get_talking_frame)
            .WillByDefault(
                [this](unsigned int, unsigned char* buffer, unsigned int size) { return GiveFrame(buffer, size); });
        ON_CALL(platform, vexo_model_play_talking_frame)
            .WillByDefault([this](unsigned int, const unsigned char* frame) {
                vexo_frame_header header;
                memcpy(&header, frame, sizeof(header));
                m_played.emplace_back(frame, frame + sizeof(header) + header.data_length);
                return 0;
            });
    }

    void SetThreads() {
        ON_CALL(platform, vexo_utility_creat_thread)
            .WillByDefault([this](const vexo_thread_creat_ctl* ctl, const char*, unsigned long* id) {
                *id = threads.Start(*ctl);
                return 0;
            });
        ON_CALL(platform, vexo_utility_sleep_ms).WillByDefault([this](unsigned int) { threads.Wait(); });
        ON_CALL(platform, vexo_utility_retrieve_thread).WillByDefault([this](unsigned long id) {
            threads.Retrieve(id);
            return 0;
        });
    }
};

#endif
