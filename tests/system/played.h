// What the tests of playback through the exported functions share: a recorder with a history at a known time, searches,
// play commands, and a collector that callbacks fill. Expectations on what comes do not belong here.
#ifndef TESTS_SYSTEM_PLAYED_H
#define TESTS_SYSTEM_PLAYED_H

#include <gmock/gmock.h>

#include <condition_variable>
#include <ctime>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "agent.h"

namespace played {

constexpr unsigned SEGMENTS = 4;  // recordings of a channel: as the scenario says, and what follows
constexpr unsigned LENGTH = 6;    // seconds of each
constexpr unsigned FPS = 5;
constexpr unsigned GOP = 5;
constexpr uint64_t PERIOD = 1000 / FPS;  // milliseconds from picture to picture
constexpr unsigned SOUNDS = 25;          // frames of sound a second
constexpr time_t UNTIL = 1704452400;     // 2024-01-05 12:00:00 in the time zone below, where it is winter
constexpr time_t SINCE = UNTIL - 3600;

inline constexpr char SCENARIO[] = R"json({
    "name": "play test",
    "cameras": [
        {"name": "Front gate", "main": {"width": 320, "height": 240}, "sub": {"width": 160, "height": 120}},
        {"name": "Car park", "main": {"width": 320, "height": 240}, "sub": {"width": 160, "height": 120}}
    ],
    "recordings": {
        "live": "off",
        "history": {"hours": 1, "segments": 4, "seconds": 6, "fps": 5, "gop": 5, "width": 320,
                    "until": "2024-01-05 12:00:00"}
    }
})json";

/** Brings the recorder up on a scenario, in a time zone with summer time; agent.h's scenario gives way. */
class Recorder : public testing::Environment {
public:
    explicit Recorder(std::string scenario) : m_scenario(std::move(scenario)) {}

    void SetUp() override {
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
        tzset();
        const std::string path = std::string(getenv("RECORDER_HOME")) + "/played.json";
        std::ofstream(path) << m_scenario;
        setenv("RECORDER_SCENARIO", path.c_str(), 1);
    }

private:
    const std::string m_scenario;
};

/** The local calendar time of an instant. */
inline _tagVexoHostMgrTime Local(time_t seconds) {
    struct tm local = {};
    localtime_r(&seconds, &local);
    return {static_cast<uint32_t>(local.tm_year + 1900),
            static_cast<uint32_t>(local.tm_mon + 1),
            static_cast<uint32_t>(local.tm_mday),
            static_cast<uint32_t>(local.tm_hour),
            static_cast<uint32_t>(local.tm_min),
            static_cast<uint32_t>(local.tm_sec),
            0};
}

/** The instant of a local calendar time; -1 for a record of zeros. */
inline time_t Instant(const _tagVexoHostMgrTime& time) {
    struct tm local = {};
    local.tm_year = static_cast<int>(time.dwYear) - 1900;
    local.tm_mon = static_cast<int>(time.dwMonth) - 1;
    local.tm_mday = static_cast<int>(time.dwDay);
    local.tm_hour = static_cast<int>(time.dwHour);
    local.tm_min = static_cast<int>(time.dwMinute);
    local.tm_sec = static_cast<int>(time.dwSecond);
    local.tm_isdst = -1;
    return time.dwYear == 0 ? -1 : mktime(&local);
}

/** One recording, seconds since 1970. */
struct Span {
    time_t start = 0;
    time_t stop = 0;
};

/** A channel's recordings, by a search of that login's. */
inline std::vector<Span> Spans(int login, unsigned channel, time_t from = SINCE, time_t to = UNTIL) {
    _tagVexoHostMgrQueryFile query = {HOSTMGR_FILE_ALL, Local(from), Local(to)};
    const int count = vexo_soft::vexo_HostMgr_Dev_QueryFile(login, static_cast<int>(channel), &query);
    std::vector<Span> spans;
    for (int i = 0; i < count; ++i) {
        _tagVexoHostMgrQueryFileResult entry = {};
        EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_GetQueryFileResult(login, i, &entry, 1), 1);
        spans.push_back({Instant(entry.struStartTime), Instant(entry.struStopTime)});
    }
    vexo_soft::vexo_HostMgr_Dev_QueryRelease(login);
    return spans;
}

/** When pictures are made from one second to another, both included, in milliseconds since 1970. */
inline std::vector<uint64_t> PictureTimes(time_t from, time_t to, uint64_t period = PERIOD) {
    std::vector<uint64_t> times;
    for (uint64_t time = from * 1000ULL; time <= to * 1000ULL; time += period) {
        times.push_back(time);
    }
    return times;
}

/** All pictures of a recording. */
inline std::vector<uint64_t> PictureTimes(const Span& span, uint64_t period = PERIOD) {
    std::vector<uint64_t> times = PictureTimes(span.start, span.stop, period);
    times.pop_back();  // the stop is the end of the last one
    return times;
}

// ---- commands ------------------------------------------------------------------------------------------------------

inline HostMgrPlayCtrlParam Send(int login, HostMgrPlayCtrlParam order) {
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Control(login, HOSTMGR_CONTROL_PLAYBACK, 0, 0, nullptr, 0, &order,
                                                  sizeof(order), nullptr, 0),
              0);
    return order;
}

inline void Command(int login, HostMgrPlayCommand command, int value = 0, unsigned value_2 = 0) {
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = command;
    order.dwParam = static_cast<uint32_t>(value);
    order.dwParam2 = value_2;
    Send(login, order);
}

inline void Seek(int login, time_t target) {
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = HOSTMGR_PLAYCMD_SEEK;
    order.struTime = Local(target);
    Send(login, order);
}

inline time_t PlayTime(int login, HostMgrPlayTimeSelector which) {
    HostMgrPlayCtrlParam order = {};
    order.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    order.dwParam = which;
    return Instant(Send(login, order).struTime);
}

inline int Stop(int login) {
    return vexo_soft::vexo_HostMgr_Dev_StopHistoryPlay(login, 0);
}

// ---- what comes ----------------------------------------------------------------------------------------------------

/** What a callback brought. */
struct Got {
    int login = 0;
    int handle = 0;
    int channel = 0;  ///< reader playback: as the callback says; callback playback: from the handle
    int stream = 0;   ///< reader playback alone
    bool end = false;
    unsigned length = 0;
    live::Frame frame;

    bool Audio() const { return !end && frame.header.frame_type == HOSTMGR_FRAME_AUDIO; }
    bool Video() const { return !end && !Audio(); }
};

/** Gathers what callbacks bring; for any thread. A hook may look at each one while its callback still runs. */
class Collector {
public:
    using Hook = std::function<int(const Got&)>;

    explicit Collector(Hook hook = nullptr) : m_hook(std::move(hook)) {}

    static void Callback(int login, int handle, unsigned char* buffer, unsigned length, void* user) {
        static_cast<Collector*>(user)->Take(login, handle, handle & 0xFFFF, 0, buffer, length);
    }

    static int ReaderCallback(int login, int handle, int channel, int stream, unsigned char* buffer, unsigned length,
                              void* user) {
        return static_cast<Collector*>(user)->Take(login, handle, channel, stream, buffer, length);
    }

    /** Waits until what has come so far is as wanted; false when that took too long. */
    bool Until(const std::function<bool(const std::vector<Got>&)>& wanted) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_came.wait_for(lock, live::PATIENCE, [&] { return wanted(m_all); });
    }

    bool UntilEnds(long count) {
        return Until([count](const std::vector<Got>& all) {
            return std::count_if(all.begin(), all.end(), [](const Got& got) { return got.end; }) >= count;
        });
    }

    bool UntilPictures(long count) {
        return Until([count](const std::vector<Got>& all) {
            return std::count_if(all.begin(), all.end(), [](const Got& got) { return got.Video(); }) >= count;
        });
    }

    std::vector<Got> All() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_all;
    }

    std::vector<Got> Pictures(int channel = 0) {
        std::vector<Got> pictures;
        for (const Got& got : All()) {
            if (got.Video() && (channel == 0 || got.channel == channel)) {
                pictures.push_back(got);
            }
        }
        return pictures;
    }

    void Forget() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_all.clear();
    }

private:
    int Take(int login, int handle, int channel, int stream, const unsigned char* buffer, unsigned length) {
        Got got = {login, handle, channel, stream, buffer == nullptr, length, {}};
        if (buffer != nullptr) {
            got.frame = live::CopyOf(buffer, {}, VEXO_FALSE);
        }
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_all.push_back(got);
            m_came.notify_all();
        }
        return m_hook ? m_hook(got) : 0;
    }

    const Hook m_hook;
    std::mutex m_mutex;
    std::condition_variable m_came;
    std::vector<Got> m_all;  // guarded by m_mutex
};

inline std::vector<uint64_t> TimesOf(const std::vector<Got>& all) {
    std::vector<uint64_t> times;
    for (const Got& got : all) {
        times.push_back(got.frame.Milliseconds());
    }
    return times;
}

/** Decodes every picture and compares what it shows with its header and the channel. */
inline void ExpectStamps(const std::vector<Got>& pictures, unsigned channel, int width, int height) {
    live::Decoder decoder;
    for (const Got& got : pictures) {
        const AVFrame* picture = decoder.Decode(got.frame);
        ASSERT_NE(picture, nullptr) << got.frame.Milliseconds();
        EXPECT_EQ(picture->width, width);
        EXPECT_EQ(picture->height, height);
        const auto stamp = live::StampIn(*picture);
        ASSERT_TRUE(stamp.has_value()) << got.frame.Milliseconds();
        EXPECT_EQ(stamp->channel, channel);
        EXPECT_EQ(stamp->milliseconds, got.frame.Milliseconds());
    }
}

/** A test with a login and its recordings. */
class PlayTest : public agent::LibraryTest {
protected:
    PlayTest() : m_session(std::make_unique<agent::Session>()) { EXPECT_GT(Login(), 0); }

    int Login() const { return m_session->Login(); }

    /** A collector that outlives the login, and so the last callback; a hook's own data needs a stop before it goes. */
    Collector& NewCollector() { return m_collectors.emplace_back(); }

    Span Recording(unsigned channel, size_t index) const { return Spans(Login(), channel).at(index); }

    void LogOut() { m_session.reset(); }

    /** Logs out, and sees that nothing is left of it. */
    void ExpectNothingLeft() {
        LogOut();
        ExpectAllGivenBack();
    }

    /** Starts a channel over a range, with that collector; the handle. */
    int Start(unsigned channel, const Span& range, Collector* collector,
              HostMgrPlayMode mode = HOSTMGR_PLAYMODE_PLAYBACK) const {
        _tagVexoHostMgrTime from = Local(range.start);
        _tagVexoHostMgrTime to = Local(range.stop);
        const int handle =
            vexo_soft::vexo_HostMgr_Dev_StartHistoryPlay(Login(), static_cast<int>(channel), mode, &from, &to);
        if (handle != -1 && collector != nullptr) {
            EXPECT_EQ(
                vexo_soft::vexo_HostMgr_Dev_SetHistoryStreamCallback(Login(), handle, Collector::Callback, collector),
                0);
        }
        return handle;
    }

    int StartReader(unsigned channel, const Span& range, Collector* collector) const {
        _tagVexoHostMgrTime from = Local(range.start);
        _tagVexoHostMgrTime to = Local(range.stop);
        return vexo_soft::vexo_HostMgr_Dev_StartHistoryPlayV2(
            Login(), static_cast<int>(channel), HOSTMGR_PLAYMODE_PLAYBACK, &from, &to,
            collector != nullptr ? Collector::ReaderCallback : nullptr, collector);
    }

    std::list<Collector> m_collectors;
    std::unique_ptr<agent::Session> m_session;
};

}  // namespace played

#endif
