#include "alarm_watch.h"

namespace hostmgrctl {
bool AlarmWatch::Silent(const Active& active, std::chrono::steady_clock::time_point now) const {
    return now - active.last.arrival > m_silence;
}

std::vector<AlarmEvent> AlarmWatch::Take(const AlarmReport& report) {
    std::vector<AlarmEvent> events;
    const auto [found, is_new] = m_active.try_emplace({report.type, report.number}, Active{report, report.time});
    Active& active = found->second;
    const bool again = !is_new && Silent(active, report.arrival);
    if (again) {
        events.push_back({AlarmChange::End, active.last, report.time, active.since});
        active.since = report.time;
    }
    active.last = report;
    events.push_back({is_new || again ? AlarmChange::Begin : AlarmChange::Active, report, report.time, active.since});
    return events;
}

std::vector<AlarmEvent> AlarmWatch::Ended(std::chrono::steady_clock::time_point now, time_t time) {
    std::vector<AlarmEvent> events;
    for (auto it = m_active.begin(); it != m_active.end();) {
        if (Silent(it->second, now)) {
            events.push_back({AlarmChange::End, it->second.last, time, it->second.since});
            it = m_active.erase(it);
        } else {
            ++it;
        }
    }
    return events;
}

}  // namespace hostmgrctl
