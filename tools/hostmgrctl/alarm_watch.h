// Begin and end of alarms, made out of reports that come again each second while an alarm lasts and cease with it. How
// they are shown does not belong here.
#ifndef HOSTMGRCTL_ALARM_WATCH_H
#define HOSTMGRCTL_ALARM_WATCH_H

#include <map>
#include <utility>
#include <vector>

#include "alarm_feed.h"

namespace hostmgrctl {

enum class AlarmChange {
    Begin,
    Active,  ///< a repetition
    End,
};

/** Something to tell. */
struct AlarmEvent {
    AlarmChange change = AlarmChange::Begin;
    AlarmReport report;  ///< the one that it comes from; of an end the last one
    time_t time = 0;     ///< when it was noticed
    time_t since = 0;    ///< when the alarm began
};

class AlarmWatch {
public:
    /** silence: seconds without a report after which an alarm has ended. */
    explicit AlarmWatch(double silence) : m_silence(silence) {}

    /** What a report says: an end before it when the alarm had been silent for long enough, and a begin or an active.
     */
    std::vector<AlarmEvent> Take(const AlarmReport& report);

    /** The alarms that have been silent for long enough by now. */
    std::vector<AlarmEvent> Ended(std::chrono::steady_clock::time_point now, time_t time);

private:
    using Key = std::pair<unsigned, unsigned>;  // type and number

    struct Active {
        AlarmReport last;
        time_t since = 0;
    };

    bool Silent(const Active& active, std::chrono::steady_clock::time_point now) const;

    const std::chrono::duration<double> m_silence;
    std::map<Key, Active> m_active;
};

}  // namespace hostmgrctl

#endif
