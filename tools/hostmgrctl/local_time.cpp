#include "local_time.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "exit_code.h"

namespace hostmgrctl {
namespace {

constexpr time_t MINUTE = 60;
constexpr time_t HOUR = 3600;
constexpr time_t DAY = 86400;
constexpr int FIRST_YEAR = 1900;

struct Unit {
    char letter;
    time_t seconds;
};

constexpr Unit UNITS[] = {{'s', 1}, {'m', MINUTE}, {'h', HOUR}, {'d', DAY}};

[[noreturn]] void Refuse(const std::string& text, const std::string& why) {
    throw Failure(ExitCode::Usage, "\"" + text + "\" " + why + "; " + TIME_FORMS);
}

struct tm Local(time_t seconds) {
    struct tm local = {};
    localtime_r(&seconds, &local);
    return local;
}

/** "1h30m" in seconds, at most a century; -1 when it is none. */
time_t ParseLength(const std::string& text) {
    constexpr time_t LONGEST = 100 * 366 * DAY;
    time_t sum = 0;
    size_t at = 0;
    while (at < text.size()) {
        const size_t first = at;
        time_t count = 0;
        for (; at < text.size() && isdigit(static_cast<unsigned char>(text[at])) != 0; ++at) {
            count = std::min(count * 10 + (text[at] - '0'), LONGEST);
        }
        const auto* unit = std::find_if(std::begin(UNITS), std::end(UNITS), [&](const Unit& known) {
            return at < text.size() && known.letter == text[at];
        });
        if (at == first || unit == std::end(UNITS)) {
            return -1;
        }
        sum = std::min(sum + count * unit->seconds, LONGEST);
        ++at;
    }
    return text.empty() ? -1 : sum;
}

/** Takes a leading part that strptime knows off the text. */
bool TakePart(std::string* text, const char* format, struct tm* time) {
    struct tm taken = *time;
    const char* end = strptime(text->c_str(), format, &taken);
    if (end == nullptr) {
        return false;
    }
    *time = taken;
    text->erase(0, static_cast<size_t>(end - text->c_str()));
    return true;
}

/** Takes a day's name off the text, and sets the day. */
bool TakeNamedDay(std::string* text, time_t now, struct tm* time) {
    for (const std::string name : {"yesterday", "today"}) {
        if (text->compare(0, name.size(), name) == 0) {
            text->erase(0, name.size());
            *time = Local(DayOf(name == "today" ? now : DayOf(now) - 1));
            return true;
        }
    }
    return false;
}

/** What follows the time of day: nothing, "Z", or an offset such as "+01:00". False when it is something else. */
bool ReadOffset(const std::string& text, bool* given, time_t* offset) {
    unsigned hours = 0;
    unsigned minutes = 0;
    char sign = 0;
    int length = 0;
    *given = !text.empty();
    *offset = 0;
    if (text.empty() || text == "Z") {
        return true;
    }
    const bool read = sscanf(text.c_str(), " %c%2u:%2u%n", &sign, &hours, &minutes, &length) == 3;
    *offset = (sign == '-' ? -1 : 1) * static_cast<time_t>(hours * HOUR + minutes * MINUTE);
    return read && static_cast<size_t>(length) == text.size() && (sign == '+' || sign == '-') && hours < 24 &&
           minutes < 60;
}

bool SameClock(const struct tm& left, const struct tm& right) {
    return left.tm_mday == right.tm_mday && left.tm_hour == right.tm_hour && left.tm_min == right.tm_min;
}

/**
 * The instant of a local calendar time; the earlier one of the hour that comes twice in autumn, always: mktime left
 * alone may give either. One that the clock leaves out is moved.
 */
time_t MakeTime(struct tm* time) {
    for (const int summer : {1, 0}) {
        struct tm made = *time;
        made.tm_isdst = summer;
        const time_t seconds = mktime(&made);
        if (made.tm_isdst == summer && SameClock(made, *time)) {
            *time = made;
            return seconds;
        }
    }
    time->tm_isdst = -1;
    return mktime(time);
}

/** The instant of a calendar time. */
time_t InstantOf(const std::string& text, const struct tm& wanted, bool offset_given, time_t offset) {
    struct tm time = wanted;
    const time_t seconds = offset_given ? timegm(&time) : MakeTime(&time);
    if (!SameClock(time, wanted)) {
        Refuse(text, "is a time that does not exist");
    }
    if (seconds - offset < 0) {
        Refuse(text, "lies before 1970");
    }
    return seconds - offset;
}

time_t ParseCalendar(const std::string& text, time_t now) {
    std::string rest = text;
    struct tm time = Local(DayOf(now));
    const bool day = TakePart(&rest, "%Y-%m-%d", &time) || TakeNamedDay(&rest, now, &time);
    if (day && !rest.empty() && (rest[0] == 'T' || rest[0] == ' ')) {
        rest.erase(0, 1);
    } else if (day && !rest.empty()) {
        Refuse(text, "is no time");
    }
    const bool clock = TakePart(&rest, "%H:%M:%S", &time) || TakePart(&rest, "%H:%M", &time);
    bool offset_given = false;
    time_t offset = 0;
    if ((!day && !clock) || (!clock && !rest.empty()) || !ReadOffset(rest, &offset_given, &offset)) {
        Refuse(text, "is no time");
    }
    return InstantOf(text, time, offset_given, offset);
}

std::string Formatted(const struct tm& time, const char* format) {
    char text[64];
    return std::string(text, strftime(text, sizeof(text), format, &time));
}

std::string OffsetText(const struct tm& time) {
    char text[48];
    const long minutes = std::abs(time.tm_gmtoff) / MINUTE;
    snprintf(text, sizeof(text), "%c%02ld:%02ld", time.tm_gmtoff < 0 ? '-' : '+', minutes / 60, minutes % 60);
    return text;
}

/** The seconds that a play makes of a calendar time: by the season of 1 January 1970. */
time_t AsPlayReads(const _tagVexoHostMgrTime& time) {
    struct tm read = Local(0);
    read.tm_year = static_cast<int>(time.dwYear) - FIRST_YEAR;
    read.tm_mon = static_cast<int>(time.dwMonth) - 1;
    read.tm_mday = static_cast<int>(time.dwDay);
    read.tm_hour = static_cast<int>(time.dwHour);
    read.tm_min = static_cast<int>(time.dwMinute);
    read.tm_sec = static_cast<int>(time.dwSecond);
    return mktime(&read);
}

/** How far a play is off with the calendar time of that instant. */
time_t SeasonShift(time_t seconds) {
    return AsPlayReads(CalendarTime(seconds)) - seconds;
}

}  // namespace

const char* const TIME_FORMS =
    "write times as \"2026-11-21 10:15\", \"10:15:30\", \"yesterday 18:00\", now, -1h or -1h30m";

time_t ParseTime(const std::string& text, time_t now, time_t base) {
    if (text == "now") {
        return now;
    }
    if (text.empty() || (text[0] != '-' && text[0] != '+')) {
        return ParseCalendar(text, now);
    }
    const time_t length = ParseLength(text.substr(1));
    if (length < 0) {
        Refuse(text, "is no time");
    }
    if (text[0] == '+') {
        return base >= 0 ? base + length : (Refuse(text, "has nothing that it could come after"), 0);
    }
    return length <= now ? now - length : (Refuse(text, "lies before 1970"), 0);
}

std::string TimeText(time_t seconds) {
    const struct tm time = Local(seconds);
    return Formatted(time, "%Y-%m-%d %H:%M:%S ") + OffsetText(time);
}

std::string ClockText(time_t seconds) {
    return Formatted(Local(seconds), "%H:%M:%S");
}

std::string TimeJson(time_t seconds) {
    const struct tm time = Local(seconds);
    return Formatted(time, "%Y-%m-%dT%H:%M:%S") + OffsetText(time);
}

std::string LengthText(double seconds) {
    const long whole = std::lround(seconds);
    char text[64];
    if (whole >= HOUR) {
        snprintf(text, sizeof(text), "%ld h %ld min", whole / HOUR, whole % HOUR / MINUTE);
    } else if (whole >= MINUTE) {
        snprintf(text, sizeof(text), "%ld min %ld s", whole / MINUTE, whole % MINUTE);
    } else {
        snprintf(text, sizeof(text), "%ld s", whole);
    }
    return text;
}

time_t DayOf(time_t seconds) {
    struct tm day = Local(seconds);
    day.tm_hour = day.tm_min = day.tm_sec = 0;
    return MakeTime(&day);
}

// A day of a clock change has 23 or 25 hours.
time_t NextDay(time_t day) {
    return DayOf(day + DAY + 2 * HOUR);
}

_tagVexoHostMgrTime CalendarTime(time_t seconds) {
    const struct tm local = Local(seconds);
    return {static_cast<uint32_t>(local.tm_year + FIRST_YEAR),
            static_cast<uint32_t>(local.tm_mon + 1),
            static_cast<uint32_t>(local.tm_mday),
            static_cast<uint32_t>(local.tm_hour),
            static_cast<uint32_t>(local.tm_min),
            static_cast<uint32_t>(local.tm_sec),
            0};
}

time_t FromCalendarTime(const _tagVexoHostMgrTime& time) {
    if (time.dwYear == 0) {
        return -1;
    }
    struct tm local = {};
    local.tm_year = static_cast<int>(time.dwYear) - FIRST_YEAR;
    local.tm_mon = static_cast<int>(time.dwMonth) - 1;
    local.tm_mday = static_cast<int>(time.dwDay);
    local.tm_hour = static_cast<int>(time.dwHour);
    local.tm_min = static_cast<int>(time.dwMinute);
    local.tm_sec = static_cast<int>(time.dwSecond);
    return MakeTime(&local);
}

_tagVexoHostMgrTime PlayTime(time_t seconds) {
    return CalendarTime(seconds - SeasonShift(seconds));
}

_tagVexoHostMgrTime RangeStart(time_t from) {
    return CalendarTime(std::min(from, from - SeasonShift(from)));
}

_tagVexoHostMgrTime RangeStop(time_t to) {
    return CalendarTime(std::max(to, to - SeasonShift(to)));
}

}  // namespace hostmgrctl
