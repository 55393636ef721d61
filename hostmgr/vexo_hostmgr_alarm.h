// Alarm subscription and alarm status of one login. The pass that delivers alarms to all logins belongs to the resource
// manager; it asks this object whether, and to whom.
#ifndef VEXO_HOSTMGR_ALARM_H
#define VEXO_HOSTMGR_ALARM_H

#include "hostmgr_common.h"

class vexo_hostmgr_alarm {
public:
    vexo_hostmgr_alarm();
    ~vexo_hostmgr_alarm();
    vexo_hostmgr_alarm(const vexo_hostmgr_alarm&) = delete;
    vexo_hostmgr_alarm& operator=(const vexo_hostmgr_alarm&) = delete;

    int HostMgr_Dev_SetAlarmCallback(int hLogin, int lChannel, int lStreamType, vexo_hostmgr_alarm_callback callback,
                                     void* pUser);
    int HostMgr_Dev_GetAlarmStatus(int hLogin, _tagVexoHostMgrALarmStatusInfo** ppStatus, unsigned int* pCount);
    int HostMgrEnableAlarm(int hLogin, void* pInBuf, unsigned int dwInLength);
    void HostMgrAlarmDump(unsigned int command, vexo_print_func print);

    HostMgrUseCount m_use;

private:
    int hLogin;
    uint32_t dwChannel;
    uint32_t dwStreamType;  // 1: main stream, anything else: sub stream
    uint32_t dwMode;        // 1 user, 2 channel, 3 special
    vexo_hostmgr_alarm_callback fnCallback;
    void* pUser;
    uint32_t bRun;  // upload switch
    uint32_t dwReserved;
    vexo_lock* m_lock;
};

#endif
