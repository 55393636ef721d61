#include "vexo_hostmgr_alarm.h"

static const char FILE_TAG[] = "vexo_hostmgr_alarm";

// Upload is on from the start, yet nothing is delivered until a callback is set.
vexo_hostmgr_alarm::vexo_hostmgr_alarm()
    : hLogin(0), dwChannel(0), dwStreamType(0), dwMode(0), fnCallback(NULL), pUser(NULL), bRun(1), dwReserved(0) {
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_alarm");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
}

vexo_hostmgr_alarm::~vexo_hostmgr_alarm() {
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// Subscription, status and dump are not built yet; the operations answer -1 and do nothing, the dump prints nothing.

int vexo_hostmgr_alarm::HostMgr_Dev_SetAlarmCallback(int, int, int, vexo_hostmgr_alarm_callback, void*) {
    return -1;
}

int vexo_hostmgr_alarm::HostMgr_Dev_GetAlarmStatus(int, _tagVexoHostMgrALarmStatusInfo**, unsigned int*) {
    return -1;
}

int vexo_hostmgr_alarm::HostMgrEnableAlarm(int, void*, unsigned int) {
    return -1;
}

void vexo_hostmgr_alarm::HostMgrAlarmDump(unsigned int /*command*/, vexo_print_func /*print*/) {}
