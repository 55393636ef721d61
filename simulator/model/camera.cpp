#include "camera.h"

#include <pthread.h>

#include <set>
#include <system_error>

#include "control.h"
#include "ptz.h"
#include "work_end.h"

namespace simulator {
namespace {

using std::chrono::steady_clock;

// Tells the control header who is at work. The lock spans the telling, so that the last word is the true one.
void TellActive(unsigned channel, bool active) {
    static std::mutex& mutex = *new std::mutex;
    static std::set<unsigned>& channels = *new std::set<unsigned>;
    std::lock_guard<std::mutex> lock(mutex);
    if (active) {
        channels.insert(channel);
    } else {
        channels.erase(channel);
    }
    control::SetActiveCameras({channels.begin(), channels.end()});
}

}  // namespace

Camera::Camera(unsigned channel, const CameraSettings& settings, unsigned seed, unsigned frames_kept)
    : m_channel(channel),
      m_settings(settings),
      m_seed(seed),
      m_lists{{"channel " + std::to_string(channel) + " main", frames_kept},
              {"channel " + std::to_string(channel) + " sub", frames_kept},
              {"channel " + std::to_string(channel) + " audio", frames_kept}} {}

FrameList* Camera::ListOf(vexo_enc_str_type type) {
    switch (type) {
        case VEXO_ENC_STR_MAIN:
            return &m_lists.main;
        case VEXO_ENC_STR_SUB:
            return &m_lists.sub;
        case VEXO_ENC_STR_AUDIO:
            return &m_lists.audio;
    }
    return nullptr;
}

SteadyTime* Camera::UntilOf(vexo_enc_str_type type) {
    switch (type) {
        case VEXO_ENC_STR_MAIN:
            return &m_main_until;
        case VEXO_ENC_STR_SUB:
            return &m_sub_until;
        case VEXO_ENC_STR_AUDIO:
            return &m_audio_until;
    }
    return nullptr;
}

void Camera::Want(vexo_enc_str_type type) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const SteadyTime now = steady_clock::now();
    SteadyTime* until = UntilOf(type);
    const bool changes = until != nullptr && *until <= now;
    if (until != nullptr) {
        *until = now + LINGER;
    }
    Start();
    if (changes) {
        m_changed.notify_one();
    }
}

// What the thread may still make until it notices is of the new generation and of no harm.
void Camera::EndStreams() {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const vexo_enc_str_type type : {VEXO_ENC_STR_MAIN, VEXO_ENC_STR_SUB, VEXO_ENC_STR_AUDIO}) {
        *UntilOf(type) = SteadyTime();
        ListOf(type)->StartOver();
    }
    m_changed.notify_one();
}

void Camera::Close() {
    EndWorker(&m_mutex, &m_changed, &m_closed, &m_thread);
}

// Under the lock. A thread that is not running any more needs no lock for its last steps, so joining it is short.
void Camera::Start() {
    if (m_running || m_closed) {
        return;
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    try {
        m_thread = std::thread(&Camera::Run, this);
        m_running = true;
        TellActive(m_channel, true);
    } catch (const std::system_error& error) {
        Tell("camera " + std::to_string(m_channel) + " cannot start: " + error.what());
    }
}

void Camera::Run() {
    pthread_setname_np(pthread_self(), ("camera " + std::to_string(m_channel)).c_str());
    do {
        CameraWork work(m_channel, m_settings, m_seed, &m_lists);
        while (Next(&work)) {
            work.Work(ViewOf(m_channel - 1));
        }
    } while (!Retire());
}

// Waits until something is due; false when nothing is wanted any more. Streams are opened and closed outside the lock.
bool Camera::Next(CameraWork* work) {
    std::unique_lock<std::mutex> lock(m_mutex);
    Demand demand;
    do {
        demand = DemandNow();
        lock.unlock();
        work->Adjust(demand);
        lock.lock();
    } while (demand.Any() && m_changed.wait_until(lock, work->Due(), [&] { return !(DemandNow() == demand); }));
    return demand.Any();
}

// The thread's last word, unless somebody began to read in the meantime.
bool Camera::Retire() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (DemandNow().Any()) {
        return false;
    }
    m_running = false;
    TellActive(m_channel, false);
    return true;
}

// Under the lock.
Demand Camera::DemandNow() const {
    const SteadyTime now = m_closed ? SteadyTime::max() : steady_clock::now();
    return {now < m_main_until, now < m_sub_until, now < m_audio_until};
}

}  // namespace simulator
