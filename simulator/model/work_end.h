// How work on a thread of the simulated recorder's own ends: with the process, and waited for. How it begins, and what
// it is, stands with the work.
#ifndef SIMULATOR_MODEL_WORK_END_H
#define SIMULATOR_MODEL_WORK_END_H

#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace simulator {

/**
 * Closes an object's work while the process ends, before what the work stands on goes; as a static object behind the
 * first use. The object itself stays, for the guest's threads may still call. In a forked child there is no thread to
 * wait for, and nothing is closed.
 */
template <typename Work>
class WorkEnd {
public:
    explicit WorkEnd(Work* work) : m_work(work), m_process(getpid()) {}
    ~WorkEnd() {
        if (getpid() == m_process) {
            m_work->Close();
        }
    }
    WorkEnd(const WorkEnd&) = delete;
    WorkEnd& operator=(const WorkEnd&) = delete;

private:
    Work* const m_work;
    const pid_t m_process;
};

/** Tells a worker, by the flag that it watches under the mutex, that there is no more work, and waits until it is out.
 */
inline void EndWorker(std::mutex* mutex, std::condition_variable* changed, bool* closed, std::thread* worker) {
    std::thread thread;
    {
        std::lock_guard<std::mutex> lock(*mutex);
        *closed = true;
        changed->notify_one();
        thread.swap(*worker);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

}  // namespace simulator

#endif
