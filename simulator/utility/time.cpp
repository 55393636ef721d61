#include <climits>
#include <cstring>
#include <ctime>
#include <limits>

#include "core/faults.h"
#include "vexo_utility.h"

namespace {

constexpr long MILLISECONDS = 1000;     ///< in a second
constexpr long MICROSECONDS = 1000000;  ///< in a second

/** The smaller and the greater limit of a type, for results that are out of range. */
template <typename Number>
Number LimitTowards(bool negative) {
    return negative ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
}

/** Whether mktime left the calendar time as it was given: it moves one that does not exist. */
bool IsSame(const struct tm& broken, const vexo_time_struct& time) {
    return broken.tm_year + 1900 == time.year && broken.tm_mon + 1 == time.month && broken.tm_mday == time.day &&
           broken.tm_hour == time.hour && broken.tm_min == time.minute && broken.tm_sec == time.second;
}

}  // namespace

long vexo_utility_cnt_delta_ms(const struct timeval* from, const struct timeval* to) {
    time_t seconds = 0;
    if (__builtin_sub_overflow(to->tv_sec, from->tv_sec, &seconds)) {
        return LimitTowards<long>(to->tv_sec < from->tv_sec);
    }
    long microseconds = static_cast<long>(to->tv_usec - from->tv_usec);
    // One sign for both parts, so that the division below rounds the whole towards 0.
    if (seconds > 0 && microseconds < 0) {
        --seconds;
        microseconds += MICROSECONDS;
    } else if (seconds < 0 && microseconds > 0) {
        ++seconds;
        microseconds -= MICROSECONDS;
    }
    long whole = 0;
    long sum = 0;
    if (__builtin_mul_overflow(seconds, MILLISECONDS, &whole) ||
        __builtin_add_overflow(whole, microseconds / (MICROSECONDS / MILLISECONDS), &sum)) {
        return LimitTowards<long>(seconds < 0);
    }
    return sum;
}

void vexo_utility_add_time(struct timeval* time, long milliseconds) {
    long seconds = milliseconds / MILLISECONDS;
    long microseconds = static_cast<long>(time->tv_usec) + milliseconds % MILLISECONDS * (MICROSECONDS / MILLISECONDS);
    seconds += microseconds / MICROSECONDS;
    microseconds %= MICROSECONDS;
    if (microseconds < 0) {
        microseconds += MICROSECONDS;
        --seconds;
    }
    if (__builtin_add_overflow(time->tv_sec, seconds, &time->tv_sec)) {
        time->tv_sec = LimitTowards<time_t>(seconds < 0);
    }
    time->tv_usec = microseconds;
}

// Seconds whose year does not fit the record give a record of zeros, which is no time.
void vexo_utility_linux_to_vexo_time(long seconds, vexo_time_struct* time) {
    *time = {};
    const time_t given = seconds;
    struct tm broken = {};
    if (localtime_r(&given, &broken) == nullptr || broken.tm_year < -1900 || broken.tm_year > USHRT_MAX - 1900) {
        return;
    }
    *time = {static_cast<unsigned short>(broken.tm_year + 1900), static_cast<unsigned short>(broken.tm_mon + 1),
             static_cast<unsigned short>(broken.tm_mday),        static_cast<unsigned short>(broken.tm_hour),
             static_cast<unsigned short>(broken.tm_min),         static_cast<unsigned short>(broken.tm_sec)};
}

long vexo_utility_vexo_to_linux_time(const vexo_time_struct* time) {
    if (simulator::ShallFail("vexo_utility_vexo_to_linux_time")) {
        return -1;
    }
    struct tm broken = {};
    broken.tm_year = time->year - 1900;
    broken.tm_mon = time->month - 1;
    broken.tm_mday = time->day;
    broken.tm_hour = time->hour;
    broken.tm_min = time->minute;
    broken.tm_sec = time->second;
    broken.tm_isdst = -1;
    const time_t seconds = mktime(&broken);
    return IsSame(broken, *time) ? static_cast<long>(seconds) : -1;
}

unsigned int vexo_utility_min(unsigned int left, unsigned int right) {
    return left < right ? left : right;
}
