// Times as people write and read them, and as the library wants them: local time, printed with its offset from UTC.
// What happens at a time does not belong here.
#ifndef HOSTMGRCTL_LOCAL_TIME_H
#define HOSTMGRCTL_LOCAL_TIME_H

#include <hostmgr_dev.h>

#include <cstdint>
#include <ctime>
#include <string>

namespace hostmgrctl {

/** The forms that ParseTime takes, for help texts. */
extern const char* const TIME_FORMS;

/**
 * Seconds since 1970 of "2026-11-21 10:15:30", "2026-11-21T10:15:30+01:00", "2026-11-21", "10:15" (today), "yesterday
 * 10:15", "now", "-1h30m" (before now), "+90s" (after base). Throws Failure with ExitCode::Usage for anything else, for
 * a time that the calendar or the local clock does not have, and for "+" without a base (base below 0).
 */
time_t ParseTime(const std::string& text, time_t now, time_t base = -1);

/** "2026-11-21 10:15:30 +01:00". */
std::string TimeText(time_t seconds);
/** "10:15:30". */
std::string ClockText(time_t seconds);
/** "2026-11-21T10:15:30+01:00", for JSON. */
std::string TimeJson(time_t seconds);
/** "45 s", "2 min 5 s", "1 h 2 min". */
std::string LengthText(double seconds);

/** Midnight at the beginning of the local day, and of the day after it. */
time_t DayOf(time_t seconds);
time_t NextDay(time_t day);

/** As a search wants a time: the calendar time as it is. */
_tagVexoHostMgrTime CalendarTime(time_t seconds);
/** Back from what the library reports; -1 for a record of zeros. */
time_t FromCalendarTime(const _tagVexoHostMgrTime& time);

/** A range or a seek target that a play understands as that instant: it reads calendar times without regard to season.
 */
_tagVexoHostMgrTime PlayTime(time_t seconds);
/** Calendar times whose range covers from..to however it is read, by season or not; a play may then give more. */
_tagVexoHostMgrTime RangeStart(time_t from);
_tagVexoHostMgrTime RangeStop(time_t to);

}  // namespace hostmgrctl

#endif
