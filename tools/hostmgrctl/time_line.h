// Where the frames of a play stand in a file: one after the other at the speed of the play, with gaps between
// recordings left out, so that the file plays through. Files do not belong here.
#ifndef HOSTMGRCTL_TIME_LINE_H
#define HOSTMGRCTL_TIME_LINE_H

#include <cstdint>

namespace hostmgrctl {

class TimeLine {
public:
    /** keep_gaps: time that is not recorded passes in the file, too. */
    TimeLine(bool reverse, bool keep_gaps) : m_reverse(reverse), m_keep_gaps(keep_gaps) {}

    /** Where the next frame stands, microseconds; time: its own; speed: as the speed command has it. */
    int64_t Place(int64_t time, int speed);

    /** The play went elsewhere: the next frame follows the last one directly. */
    void Break() { m_broken = true; }

private:
    const bool m_reverse;
    const bool m_keep_gaps;
    bool m_begun = false;
    bool m_broken = false;
    int64_t m_last = 0;  ///< the last frame's own time
    int64_t m_at = 0;    ///< where it stands
};

}  // namespace hostmgrctl

#endif
