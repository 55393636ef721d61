#include "hostmgr_common.h"

#include <stdarg.h>
#include <stdlib.h>
#include <sys/time.h>

const HostMgrLevel HOSTMGR_LEVEL_ERROR = {"\033[0;32;31m", "[HOSTMGR] ERROR! %s[%d]:"};
const HostMgrLevel HOSTMGR_LEVEL_WARNING = {"\033[1;33m", "[HOSTMGR] WARNING! %s[%d]:"};
const HostMgrLevel HOSTMGR_LEVEL_DEBUG = {"\033[0;32;32m", "[HOSTMGR] DEBUG! %s[%d]:"};

static const char COLOUR_RESET[] = "\033[m";

static void BeginMessage(const HostMgrLevel& level, const HostMgrSite& site) {
    flockfile(stdout);
    printf("%s", level.colour);
    printf(level.prefix, site.function, site.line);
}

static void EndMessage() {
    printf("%s", COLOUR_RESET);
    funlockfile(stdout);
}

void HostMgrPuts(const HostMgrLevel& level, const HostMgrSite& site, const char* text) {
    BeginMessage(level, site);
    puts(text);
    EndMessage();
}

void HostMgrPrintf(const HostMgrLevel& level, const HostMgrSite& site, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    BeginMessage(level, site);
    vprintf(format, arguments);
    EndMessage();
    va_end(arguments);
}

void HostMgrAssertFailed(const char* file, const HostMgrSite& site, const char* condition) {
    flockfile(stdout);
    printf("%s", HOSTMGR_LEVEL_ERROR.colour);
    printf("ASSERT!\n >File name: %s\n >Function: %s\n >Line No: %d\n >Condition: %s\n", file, site.function, site.line,
           condition);
    EndMessage();
    exit(-1);
}

void HostMgrHostToVexoTime(const _tagVexoHostMgrTime* hostTime, vexo_time_struct* vexoTime) {
    vexoTime->year = static_cast<unsigned short>(hostTime->dwYear);
    vexoTime->month = static_cast<unsigned short>(hostTime->dwMonth);
    vexoTime->day = static_cast<unsigned short>(hostTime->dwDay);
    vexoTime->hour = static_cast<unsigned short>(hostTime->dwHour);
    vexoTime->minute = static_cast<unsigned short>(hostTime->dwMinute);
    vexoTime->second = static_cast<unsigned short>(hostTime->dwSecond);
}

/** Local time of an instant; all zero when there is none (a year beyond what the fields hold). */
static struct tm LocalTime(time_t seconds) {
    struct tm local;
    if (localtime_r(&seconds, &local) == NULL)
        memset(&local, 0, sizeof(local));
    return local;
}

void HostMgrSecondsToHostTime(time_t seconds, _tagVexoHostMgrTime* hostTime) {
    struct tm local;
    if (localtime_r(&seconds, &local) == NULL) {
        memset(hostTime, 0, offsetof(_tagVexoHostMgrTime, reserved));
        return;
    }
    hostTime->dwYear = static_cast<uint32_t>(local.tm_year + 1900);
    hostTime->dwMonth = static_cast<uint32_t>(local.tm_mon + 1);
    hostTime->dwDay = static_cast<uint32_t>(local.tm_mday);
    hostTime->dwHour = static_cast<uint32_t>(local.tm_hour);
    hostTime->dwMinute = static_cast<uint32_t>(local.tm_min);
    hostTime->dwSecond = static_cast<uint32_t>(local.tm_sec);
}

void HostMgrHostTimeToSeconds(const _tagVexoHostMgrTime* hostTime, time_t* seconds) {
    struct tm local = LocalTime(*seconds);
    // Unsigned on purpose: a field out of range wraps as it does on the recorder, and never overflows a signed value.
    local.tm_year = static_cast<int>(hostTime->dwYear - 1900);
    local.tm_mon = static_cast<int>(hostTime->dwMonth - 1);
    local.tm_mday = static_cast<int>(hostTime->dwDay);
    local.tm_hour = static_cast<int>(hostTime->dwHour);
    local.tm_min = static_cast<int>(hostTime->dwMinute);
    local.tm_sec = static_cast<int>(hostTime->dwSecond);
    *seconds = mktime(&local);
}

int HostMgrCompareHostTime(const _tagVexoHostMgrTime* lhostTime, const _tagVexoHostMgrTime* rhostTime) {
    if (lhostTime == NULL || rhostTime == NULL) {
        HOSTMGR_PRINTF(ERROR, "lhostTime %p, rhostTime %p\n", static_cast<const void*>(lhostTime),
                       static_cast<const void*>(rhostTime));
        return 2;
    }
    time_t left = 0;
    time_t right = 0;
    HostMgrHostTimeToSeconds(lhostTime, &left);
    HostMgrHostTimeToSeconds(rhostTime, &right);
    // The order is the recorder's own: 1 says that left comes before right.
    if (left == right)
        return 0;
    return left < right ? 1 : -1;
}

void HostMgrPrintfCurTime() {
    struct timeval now;
    gettimeofday(&now, NULL);
    HOSTMGR_PRINTF(DEBUG, "%ld.%03ld s\n", static_cast<long>(now.tv_sec), static_cast<long>(now.tv_usec / 1000 % 1000));
}

int HostMgrCheckUserAuthority(int /*hLogin*/, unsigned int /*dwRight*/, unsigned int /*dwChannel*/) {
    return 0;
}
