// What the tests of alarms share: a recorder with an event table, a login, a receiver of alarms, and the alarm thread
// under the test's hand, one pass at a time. Expectations stand in the tests.
#ifndef ALARM_FIXTURE_H
#define ALARM_FIXTURE_H

#include <string.h>

#include <condition_variable>
#include <optional>

#include "login_fixture.h"
#include "vexo_hostmgr_alarm.h"

using Event = vexo_event_detail_info;

inline constexpr char ALARM_LOCK[] = "vexo_hostmgr_alarm";

/** An event with everything that is not looked at filled; picture is the word at byte 80, input the one at byte 84. */
inline Event AnEvent(unsigned int event_class, unsigned int sub_type, unsigned int picture = 0,
                     unsigned int input = 0) {
    Event event;
    memset(static_cast<void*>(&event), 0xEE, sizeof(event));
    event.event_class = static_cast<unsigned char>(event_class);
    event.sub_type = static_cast<unsigned char>(sub_type);
    event.channel = picture;
    event.input = input;
    return event;
}

// ---- lines of the record -------------------------------------------------------------------------------------------

inline std::string OnAlarm(const std::string& operation, const std::string& function) {
    return operation + "(" + ALARM_LOCK + ", vexo_hostmgr_alarm, " + function + ")";
}
inline Lines UnderAlarmLock(const std::string& function) {
    return {OnAlarm("lock", function), OnAlarm("unlock", function)};
}

/** The two readings of the event table, and the memory between them. */
inline std::string CountCall() {
    return "vexo_utility_get_event_info(2, null, 0)";
}
inline std::string ReadCall(unsigned int capacity) {
    return "vexo_utility_get_event_info(2, set, " + std::to_string(capacity) + ")";
}
inline std::string EventMemory(unsigned int capacity) {
    return "vexo_utility_malloc(21, 0x26004, " + std::to_string(capacity * 172) + ", 1)";
}

// ---- receiving -----------------------------------------------------------------------------------------------------

/** One call of an alarm callback. */
struct Report {
    int hLogin;
    int channel;
    int stream;
    unsigned int type;
    std::vector<unsigned char> data;
};

/** Writes down what its callback is given; used by the alarm thread, and by the test between passes. */
class Receiver {
public:
    static void Callback(int hLogin, int lChannel, int lStreamType, unsigned int dwAlarmType, unsigned char* pBuffer,
                         unsigned int dwBufSize, void* pUser) {
        Receiver* self = static_cast<Receiver*>(pUser);
        self->m_reports.push_back(
            {hLogin, lChannel, lStreamType, dwAlarmType, std::vector<unsigned char>(pBuffer, pBuffer + dwBufSize)});
        // A copy: what it does may replace it.
        const std::function<void(unsigned char*)> then = self->m_then;
        if (then)
            then(pBuffer);
    }

    /** What the callback does besides, with the record that it was given. */
    void Then(std::function<void(unsigned char* record)> then) { m_then = std::move(then); }

    std::vector<Report> Take() { return std::exchange(m_reports, {}); }
    /** The reports so far as "login: type on channel"; they are forgotten. */
    Lines TakeLines() {
        Lines lines;
        for (const Report& report : Take())
            lines.push_back(std::to_string(report.hLogin) + ": " + std::to_string(report.type) + " on " +
                            std::to_string(report.channel));
        return lines;
    }

private:
    std::vector<Report> m_reports;
    std::function<void(unsigned char* record)> m_then;
};

// ---- the alarm thread ----------------------------------------------------------------------------------------------

/**
 * Lets the thread's body run from one sleep to the next. The body never returns: it waits for a turn that does not come
 * when the process ends, so what it waits on stays.
 */
class AlarmThread {
public:
    /** Runs one pass and returns when the thread sleeps again; the first one starts it. */
    static void RunPass(const vexo_thread_creat_ctl& ctl) {
        AlarmThread& thread = Instance();
        std::unique_lock<std::mutex> guard(thread.m_guard);
        if (thread.m_asked++ == 0)
            std::thread(ctl.entry, ctl.argument).detach();
        thread.m_changed.notify_all();
        thread.m_changed.wait(guard, [&thread] { return thread.m_done == thread.m_asked; });
    }

    /** What its sleep does. */
    static void Sleep() {
        AlarmThread& thread = Instance();
        std::unique_lock<std::mutex> guard(thread.m_guard);
        ++thread.m_done;
        thread.m_changed.notify_all();
        thread.m_changed.wait(guard, [&thread] { return thread.m_done != thread.m_asked; });
    }

private:
    static AlarmThread& Instance() {
        static AlarmThread& thread = *new AlarmThread;
        return thread;
    }

    std::mutex m_guard;
    std::condition_variable m_changed;
    unsigned int m_asked = 0;
    unsigned int m_done = 0;
};

// ---- fixture -------------------------------------------------------------------------------------------------------

/** A login of the handle 0x501 at a recorder with 4 analog channels and 16 in all. */
class AlarmFixture : public LoginFixture {
protected:
    static constexpr int LOGIN = 0x501;

    void SetUp() override {
        m_capability.analog_channels = 4;
        m_capability.total_channels = 16;
        ON_CALL(platform, vexo_cfgm_get_dev_cap).WillByDefault(testing::Return(&m_capability));
        ON_CALL(platform, vexo_utility_get_event_info)
            .WillByDefault([this](unsigned int, Event* info, unsigned int capacity, unsigned int* count) {
                return info == nullptr ? CountEvents(count) : ReadEvents(info, capacity, count);
            });
        ON_CALL(platform, vexo_utility_sleep_ms).WillByDefault([](unsigned int) { AlarmThread::Sleep(); });
        LoginFixture::SetUp();
        LogInAll({LOGIN});
    }

    static int Subscribe(Receiver* receiver, int hLogin = LOGIN, int lChannel = 0, int lStreamType = 0) {
        return vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(hLogin, lChannel, lStreamType, Receiver::Callback,
                                                            receiver);
    }
    static int Unsubscribe(int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_SetAlarmCallback(hLogin, 0, 0, nullptr, nullptr);
    }
    /** The command that switches the upload. */
    static int Enable(void* buffer, unsigned int size, int hLogin = LOGIN) {
        return vexo_soft::vexo_HostMgr_Dev_Control(hLogin, HOSTMGR_CONTROL_ALARM_ENABLE, 0, 0, buffer, size, nullptr, 0,
                                                   nullptr, 0);
    }
    static int Enable(uint32_t value, int hLogin = LOGIN) { return Enable(&value, sizeof(value), hLogin); }

    /** Runs one pass of the alarm thread. */
    void Pass() { AlarmThread::RunPass(platform.Threads().at(0).ctl); }

    /** Runs one pass and gives its calls, the sleep and the comparison of two numbers left out. */
    Lines CallsOfPass() {
        platform.TakeCalls();
        Pass();
        return Without("vexo_utility_min(", Without("vexo_utility_sleep_ms(", platform.TakeCalls()));
    }

    /** What the diagnostics say of alarms, in UTF-8. */
    std::string AlarmDump() {
        TakePieces();
        platform.Diagnostics().client->diagnose(5000, CollectPrint);
        return Utf8(TakePrinted());
    }

    std::vector<Event> m_events;
    vexo_dev_capability m_capability = {};
    int m_count_result = 0;                   // of the first reading
    int m_read_result = 0;                    // of the second
    std::optional<unsigned int> m_announced;  // what the first says instead of the number of events
    std::vector<unsigned char> m_before;      // the memory as the second found it

private:
    int CountEvents(unsigned int* count) const {
        *count = m_announced.value_or(static_cast<unsigned int>(m_events.size()));
        return m_count_result;
    }

    int ReadEvents(Event* info, unsigned int capacity, unsigned int* count) {
        const unsigned char* memory = reinterpret_cast<const unsigned char*>(info);
        m_before.assign(memory, memory + size_t{capacity} * sizeof(Event));
        std::copy_n(m_events.begin(), std::min<size_t>(capacity, m_events.size()), info);
        *count = static_cast<unsigned int>(m_events.size());
        return m_read_result;
    }
};

#endif
