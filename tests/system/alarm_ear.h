// A subscriber of alarms, for tests: what the callback brings, grouped by the pass of the alarm thread that brought it.
// A pass shows by an event that was there before all others and stays: the first of each pass. Expectations do not
// belong here.
#ifndef TESTS_SYSTEM_ALARM_EAR_H
#define TESTS_SYSTEM_ALARM_EAR_H

#include <hostmgr_dev.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <list>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "control.h"
#include "live_reader.h"

namespace agent {

/** An alarm as an agent sees it: type and channel. */
struct Alarm {
    unsigned type;
    int channel;

    bool operator==(const Alarm& other) const { return type == other.type && channel == other.channel; }
};
inline void PrintTo(const Alarm& alarm, std::ostream* out) {
    *out << "type " << alarm.type << " channel " << alarm.channel;
}

/** The event that begins each pass: an input of the recorder's that is nobody else's. */
constexpr unsigned BEAT_INPUT = 4;
constexpr Alarm BEAT = {HOSTMGR_ALARM_INPUT, static_cast<int>(BEAT_INPUT)};

/** Events that a test begins, one after the other; they end with it. */
class Events {
public:
    ~Events() {
        for (const std::function<void()>& end : m_ends) {
            end();
        }
    }

    void BeginBeat() { Begin("input", BEAT_INPUT); }

    void Begin(const std::string& kind, unsigned number) {
        simulator::control::SetEvent(kind, number, true);
        m_ends.push_back([kind, number] { simulator::control::SetEvent(kind, number, false); });
        simulator::control::SkipTime(0.001);
    }

    /** An entry as it stands in the recorder's table. */
    void Raw(unsigned char event_class, unsigned char sub_type, unsigned channel, unsigned input) {
        simulator::control::SetRawEvent(event_class, sub_type, channel, input, true);
        m_ends.push_back([=] { simulator::control::SetRawEvent(event_class, sub_type, channel, input, false); });
        simulator::control::SkipTime(0.001);
    }

private:
    std::vector<std::function<void()>> m_ends;
};

class AlarmEar {
public:
    using Clock = std::chrono::steady_clock;
    struct Pass {
        Clock::time_point begun;
        std::vector<Alarm> alarms;  ///< without the beat
    };

    static void Hear(int login, int channel, int stream, unsigned type, unsigned char* bytes, unsigned size,
                     void* user) {
        static_cast<AlarmEar*>(user)->Add(login, channel, stream, type, bytes, size);
    }

    /** Alarms whose arguments and record do not agree, or that came to the wrong login or stream. */
    unsigned Wrong() const {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_wrong;
    }

    size_t Passes() const {
        std::lock_guard<std::mutex> hold(m_lock);
        return m_passes.size();
    }

    /** Waits until so many passes are over; fewer when they did not come in time. The last one may be under way. */
    std::vector<Pass> Wait(size_t count) const {
        live::Eventually([&] { return Passes() > count; });
        std::lock_guard<std::mutex> hold(m_lock);
        return m_passes;
    }

    /** Waits for another pass; false when none came in time. */
    bool Hears() const {
        const size_t before = Passes();
        return live::Eventually([&] { return Passes() > before; });
    }

    /** Waits until a pass has begun that reads the event table, and asks the logins, after this was called. */
    void Settle() const {
        Hears();
        Hears();
    }

    /** A pass that has read the event table after this was called, whole. */
    Pass Fresh() const {
        const size_t under_way = Passes();  // the next one may have read before this call
        const std::vector<Pass> passes = Wait(under_way + 2);
        return passes.size() > under_way + 1 ? passes[under_way + 1] : Pass();
    }

    /** What the ear belongs to; before it listens. */
    void Expect(int login, int stream) {
        m_login = login;
        m_stream = stream;
    }

private:
    void Add(int login, int channel, int stream, unsigned type, const unsigned char* bytes, unsigned size) {
        _tagVexoHostMgrAlarmInfo info = {};
        memcpy(&info, bytes, sizeof info);
        const bool right = size == sizeof info && info.dwAlarmType == type &&
                           static_cast<int>(info.dwChannel) == channel && info.dwState == 1 && login == m_login &&
                           stream == m_stream;
        const Alarm alarm = {type, channel};
        std::lock_guard<std::mutex> hold(m_lock);
        m_wrong += right ? 0 : 1;
        if (alarm == BEAT) {
            m_passes.push_back({Clock::now(), {}});
        } else if (!m_passes.empty()) {
            m_passes.back().alarms.push_back(alarm);
        }
    }

    int m_login = 0;
    int m_stream = 0;
    mutable std::mutex m_lock;
    std::vector<Pass> m_passes;
    unsigned m_wrong = 0;
};

/** An ear that lasts to the end of the process: a delivery may still be under way when its login is out. */
inline AlarmEar& NewAlarmEar() {
    static std::mutex& lock = *new std::mutex;
    static std::list<AlarmEar>& ears = *new std::list<AlarmEar>;
    std::lock_guard<std::mutex> hold(lock);
    return ears.emplace_back();
}

}  // namespace agent

#endif
