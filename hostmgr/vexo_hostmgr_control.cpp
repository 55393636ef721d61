#include "vexo_hostmgr_control.h"

static const char FILE_TAG[] = "vexo_hostmgr_control";

vexo_hostmgr_control::vexo_hostmgr_control() : dwPtzGroup(0), dwPtzPoint(0), dwPtzParamA(0), dwPtzParamB(0) {
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_control m_lock");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
}

vexo_hostmgr_control::~vexo_hostmgr_control() {
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// The device commands are not built yet; each answers -1 and does nothing.

int vexo_hostmgr_control::HostMgrControlPtz(int, int, int, void*, unsigned int) {
    return -1;
}

int vexo_hostmgr_control::HostMgrRecordConfig(int, int, int, void*, unsigned int) {
    return -1;
}

int vexo_hostmgr_control::HostMgrControlReboot(int) {
    return -1;
}

int vexo_hostmgr_control::HostMgrControlShutDown(int) {
    return -1;
}

int vexo_hostmgr_control::HostMgrRestoreConfig(int) {
    return -1;
}
