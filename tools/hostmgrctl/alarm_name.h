// What an alarm is called and where it is. The recorder has two lists of numbers for it, one of the alarms that it
// sends and one of the status that is asked for; here they become the same words.
#ifndef HOSTMGRCTL_ALARM_NAME_H
#define HOSTMGRCTL_ALARM_NAME_H

#include <hostmgr_dev.h>

#include <string>

namespace hostmgrctl {

/** An alarm in words. */
struct AlarmName {
    std::string type;     ///< "motion"; "type 7" for a number that has no name
    std::string place;    ///< what the number counts: "channel", "input", "disk", or empty when it counts nothing
    unsigned number = 0;  ///< counted from 1 where it is a channel or an input

    /** "channel 2", or empty. */
    std::string Where() const { return place.empty() ? "" : place + " " + std::to_string(number); }
};

/** Of an alarm as it is sent. */
AlarmName NameOfAlarm(unsigned type, unsigned number);

/** Of an entry of the status list. */
AlarmName NameOfStatus(const _tagVexoHostMgrALarmStatusInfo& entry);

}  // namespace hostmgrctl

#endif
