// What the library's callbacks bring, on its way to the command's own thread: callbacks only put it here, so they never
// wait and never call the library.
#ifndef HOSTMGRCTL_ARRIVALS_H
#define HOSTMGRCTL_ARRIVALS_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

namespace hostmgrctl {

/** For any number of threads. Must outlive the callbacks, which a library may run once more after they were taken back.
 */
template <typename Arrival>
class Arrivals {
public:
    void Put(Arrival arrival) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.push_back(std::move(arrival));
        m_changed.notify_all();
    }

    /** The oldest one; nothing when none came in that time. */
    std::optional<Arrival> Next(std::chrono::milliseconds patience) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_changed.wait_for(lock, patience, [this] { return !m_queue.empty(); })) {
            return std::nullopt;
        }
        Arrival arrival = std::move(m_queue.front());
        m_queue.pop_front();
        return arrival;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Arrival> m_queue;  // guarded by m_mutex
};

}  // namespace hostmgrctl

#endif
