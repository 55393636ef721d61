// When a stream's next picture or block is due: an absolute schedule against the monotonic clock, so that nothing
// drifts. What is done then does not belong here.
#ifndef SIMULATOR_MODEL_SCHEDULE_H
#define SIMULATOR_MODEL_SCHEDULE_H

#include <chrono>
#include <cstdint>

namespace simulator {

using SteadyTime = std::chrono::steady_clock::time_point;

/** Evenly spaced moments, the first one at start. */
class Schedule {
public:
    Schedule(SteadyTime start, unsigned per_second) : m_start(start), m_per_second(per_second) {}

    /** The moment that is due next. */
    SteadyTime Due() const { return m_start + std::chrono::nanoseconds(m_next * 1000000000 / m_per_second); }

    /** On to the next one. */
    void Done() { ++m_next; }

    /** Leaves moments out that lie back so far that a later one is due, too: the latest is due now. */
    void SkipTo(SteadyTime now) {
        const int64_t passed = std::chrono::nanoseconds(now - m_start).count() / 1000000000 * m_per_second;
        const int64_t rest = std::chrono::nanoseconds(now - m_start).count() % 1000000000 * m_per_second / 1000000000;
        m_next = passed + rest > m_next ? passed + rest : m_next;
    }

private:
    const SteadyTime m_start;
    const int64_t m_per_second;
    int64_t m_next = 0;
};

}  // namespace simulator

#endif
