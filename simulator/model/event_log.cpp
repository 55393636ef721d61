#include "event_log.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

#include "av.h"
#include "core/events.h"
#include "log.h"
#include "work_end.h"

namespace simulator {
namespace {

constexpr std::chrono::milliseconds PASS{100};

using Happening = std::pair<EventKind, unsigned>;
using Happenings = std::map<Happening, double>;  ///< with the uptime at which each began

// Entries of any class that a test has put into the table have no name and are left out.
Happenings Now() {
    Happenings now;
    for (const CurrentEvent& event : CurrentEvents()) {
        if (event.kind) {
            now[{*event.kind, event.number}] = event.since;
        }
    }
    return now;
}

void Enter(const Happening& happening, const char* what) {
    const EventTraits& traits = TraitsOf(happening.first);
    const bool disk = happening.first == EventKind::DiskFull || happening.first == EventKind::DiskError;
    std::string text = traits.name;
    if (*traits.subject != '\0') {
        text += std::string(", ") + traits.subject + " " + std::to_string(happening.second);
    }
    Log(0, disk ? LogType::Disk : LogType::Alarm, "", text + what);
}

class EventLog {
public:
    void Wake();
    /** For the process's end. */
    void Close();

private:
    void Run();
    void Compare(const Happenings& now);

    Happenings m_before;  // the thread's while it is awake, else guarded by m_mutex
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;  // guarded by m_mutex, as all that follows
    bool m_awake = false;
    bool m_closed = false;
};

void EventLog::Wake() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_closed || m_awake) {
        return;
    }
    m_before = Now();  // what is the case already is no news
    m_awake = true;
    m_changed.notify_one();
    if (m_thread.joinable()) {
        return;
    }
    try {
        m_thread = std::thread(&EventLog::Run, this);
    } catch (const std::system_error& error) {
        Tell(std::string("no events are logged: ") + error.what());
    }
}

void EventLog::Close() {
    EndWorker(&m_mutex, &m_changed, &m_closed, &m_thread);
}

void EventLog::Compare(const Happenings& now) {
    for (const auto& [happening, since] : m_before) {
        const auto found = now.find(happening);
        if (found == now.end() || found->second != since) {
            Enter(happening, ": over");
        }
    }
    for (const auto& [happening, since] : now) {
        const auto found = m_before.find(happening);
        if (found == m_before.end() || found->second != since) {
            Enter(happening, "");
        }
    }
    m_before = now;
}

void EventLog::Run() {
    pthread_setname_np(pthread_self(), "event log");
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_closed) {
        while (!m_closed && m_awake) {
            m_changed.wait_for(lock, PASS, [this] { return m_closed; });
            lock.unlock();
            Compare(Now());
            const bool heard = IsLogHeard();
            lock.lock();
            m_awake = heard;
        }
        m_changed.wait(lock, [this] { return m_closed || m_awake; });
    }
}

EventLog& TheEventLog() {
    static EventLog* const log = new EventLog;
    static const WorkEnd end(log);
    return *log;
}

}  // namespace

void WakeEventLog() {
    TheEventLog().Wake();
}

}  // namespace simulator
