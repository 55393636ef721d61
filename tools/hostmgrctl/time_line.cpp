#include "time_line.h"

namespace hostmgrctl {
namespace {

// A play passes over a gap as long as this, and takes a usual picture's time for it.
constexpr int64_t LONGEST_STEP = 10000000;  // microseconds, and what follows
constexpr int64_t USUAL_STEP = 40000;
constexpr int64_t LONGEST_STEP_BACK = 1000000;  // sound and pictures are not quite in order

int64_t AtSpeed(int64_t step, int speed) {
    if (speed == 0) {
        return step;
    }
    return speed > 0 ? step / speed : step * -speed;
}

}  // namespace

int64_t TimeLine::Place(int64_t time, int speed) {
    if (m_begun) {
        int64_t step = m_reverse ? m_last - time : time - m_last;
        const bool gap = step >= LONGEST_STEP && !m_keep_gaps;
        if (gap || m_broken || step < -LONGEST_STEP_BACK) {
            step = USUAL_STEP;
        }
        m_at += AtSpeed(step, speed);
    }
    m_begun = true;
    m_broken = false;
    m_last = time;
    return m_at;
}

}  // namespace hostmgrctl
