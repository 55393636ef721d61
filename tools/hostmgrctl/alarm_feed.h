// The recorder's alarms from the library's callback, one by one, to be taken out by the command's own thread. What is
// made of them does not belong here.
#ifndef HOSTMGRCTL_ALARM_FEED_H
#define HOSTMGRCTL_ALARM_FEED_H

#include <chrono>
#include <ctime>
#include <optional>

namespace hostmgrctl {

/** An alarm as the library reports it. */
struct AlarmReport {
    std::chrono::steady_clock::time_point arrival;
    time_t time = 0;
    unsigned type = 0;    ///< a HostMgrAlarmType, or 0
    unsigned number = 0;  ///< of the channel, input or disk
    unsigned state = 0;
};

/** A login's subscription, from construction to destruction; one at a time. */
class AlarmFeed {
public:
    /** Throws Failure when refused. */
    explicit AlarmFeed(int login);
    ~AlarmFeed();
    AlarmFeed(const AlarmFeed&) = delete;
    AlarmFeed& operator=(const AlarmFeed&) = delete;

    /** The next report; nothing when none came in that time. */
    std::optional<AlarmReport> Next(std::chrono::milliseconds patience);

private:
    const int m_login;
};

}  // namespace hostmgrctl

#endif
