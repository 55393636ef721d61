#include "live_recorder.h"

#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "cameras.h"
#include "channel_recorder.h"
#include "core/events.h"
#include "record_mode.h"
#include "work_end.h"

namespace simulator {
namespace {

constexpr std::chrono::milliseconds PASS{100};

// Record type bits of a channel, counted from 1, by what is the case there.
unsigned TypeOf(const std::vector<CurrentEvent>& events, unsigned channel) {
    unsigned type = 0;
    for (const CurrentEvent& event : events) {
        if (event.number == channel && event.kind == EventKind::Motion) {
            type |= RECORD_MOTION;
        } else if (event.number == channel &&
                   (event.kind == EventKind::Input || event.kind == EventKind::CameraInput)) {
            type |= RECORD_ALARM;
        }
    }
    return type != 0 ? type : RECORD_SCHEDULE;
}

// One thread for all channels; it rests while there is nothing to record.
class LiveRecorder {
public:
    LiveRecorder();

    void Wake();
    /** Ends all files for good; for the process's end. */
    void Close();

    unsigned DiskOf(size_t index) const { return index < m_channels.size() ? m_channels[index]->Disk() : 0; }
    size_t Channels() const { return m_channels.size(); }

private:
    void Run();
    bool Pass();

    const LiveRecording m_when = TheScenario().recordings.live;
    std::vector<std::unique_ptr<ChannelRecorder>> m_channels;  ///< the thread's
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;             // guarded by m_mutex
    bool m_closed = false;            // guarded by m_mutex
    std::atomic<bool> m_busy{false};  ///< the thread makes its passes; set under m_mutex
};

LiveRecorder::LiveRecorder() {
    const auto& cameras = TheScenario().cameras;
    for (unsigned index = 0; index < cameras.size(); ++index) {
        m_channels.push_back(
            std::make_unique<ChannelRecorder>(index + 1, FindCamera(index), TheScenario().recordings.file_seconds));
    }
}

void LiveRecorder::Wake() {
    if (m_when == LiveRecording::Off || m_busy) {
        return;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_closed) {
        return;
    }
    m_busy = true;
    m_changed.notify_one();
    if (m_thread.joinable()) {
        return;
    }
    try {
        m_thread = std::thread(&LiveRecorder::Run, this);
    } catch (const std::system_error& error) {
        Tell(std::string("nothing is recorded: ") + error.what());
    }
}

void LiveRecorder::Close() {
    EndWorker(&m_mutex, &m_changed, &m_closed, &m_thread);
    for (const auto& channel : m_channels) {
        channel->Close();
    }
}

void LiveRecorder::Run() {
    pthread_setname_np(pthread_self(), "live recorder");
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_closed) {
        m_busy = true;
        lock.unlock();
        const bool more = Pass();
        lock.lock();
        m_changed.wait_for(lock, PASS, [this] { return m_closed; });
        if (!more && !m_closed) {
            m_busy = false;
            m_changed.wait(lock, [this] { return m_closed || m_busy; });
        }
    }
}

bool LiveRecorder::Pass() {
    const std::vector<CurrentEvent> events = CurrentEvents();
    bool more = false;
    for (unsigned index = 0; index < m_channels.size(); ++index) {
        const bool shall = ShallRecord(index);
        if (shall && m_when == LiveRecording::Always) {
            for (const vexo_enc_str_type type : {VEXO_ENC_STR_MAIN, VEXO_ENC_STR_SUB, VEXO_ENC_STR_AUDIO}) {
                FindCamera(index)->Want(type);
            }
        }
        more = m_channels[index]->Pass(shall, TypeOf(events, index + 1)) || more;
    }
    return more || m_when == LiveRecording::Always;
}

LiveRecorder& TheLiveRecorder() {
    static LiveRecorder* const recorder = new LiveRecorder;
    static const WorkEnd end(recorder);  // completes the files, before the cameras go
    return *recorder;
}

}  // namespace

void WakeLiveRecorder() {
    TheLiveRecorder().Wake();
}

bool IsChannelRecording(unsigned index) {
    return TheLiveRecorder().DiskOf(index) != 0;
}

bool IsDiskRecording(unsigned disk) {
    const LiveRecorder& recorder = TheLiveRecorder();
    for (size_t index = 0; index < recorder.Channels(); ++index) {
        if (recorder.DiskOf(index) == disk && disk != 0) {
            return true;
        }
    }
    return false;
}

}  // namespace simulator
