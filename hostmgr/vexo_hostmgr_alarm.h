// Alarm subscription and alarm status of one login. The pass that delivers alarms to all logins belongs to the resource
// manager; it asks this object whether, and to whom.
#ifndef VEXO_HOSTMGR_ALARM_H
#define VEXO_HOSTMGR_ALARM_H

#include "hostmgr_common.h"

enum HostMgrAlarmMode : uint32_t {
    HOSTMGR_ALARM_MODE_NONE = 0,  // nothing set yet
    HOSTMGR_ALARM_MODE_USER = 1,  // all alarms; the one mode that is served
    HOSTMGR_ALARM_MODE_CHANNEL = 2,
    HOSTMGR_ALARM_MODE_SPECIAL = 3,
};

/** Who gets a login's alarms, as it was given. */
struct HostMgrAlarmSubscription {
    int hLogin;
    uint32_t dwChannel;
    uint32_t dwStreamType;  // 1: main stream, anything else: sub stream
    uint32_t dwMode;        // a HostMgrAlarmMode
    vexo_hostmgr_alarm_callback fnCallback;
    void* pUser;
};

/**
 * The upload switch and the callback are set apart; alarms are delivered while both are there:
 *
 *     switch on, no callback (as made) --callback--> switch on, callback <--Control 12--> switch off, callback
 *               ^                                            |null callback
 *               +----------Control 12---- switch off, no callback
 */
class vexo_hostmgr_alarm {
public:
    vexo_hostmgr_alarm();
    ~vexo_hostmgr_alarm();
    vexo_hostmgr_alarm(const vexo_hostmgr_alarm&) = delete;
    vexo_hostmgr_alarm& operator=(const vexo_hostmgr_alarm&) = delete;

    int HostMgr_Dev_SetAlarmCallback(int hLogin, int lChannel, int lStreamType, vexo_hostmgr_alarm_callback callback,
                                     void* pUser);
    /** Reads the recorder's event table; touches nothing of this object. */
    int HostMgr_Dev_GetAlarmStatus(int hLogin, _tagVexoHostMgrALarmStatusInfo** ppStatus, unsigned int* pCount);
    /** Sets the upload switch to the word in pInBuf; a shorter one is read as if zeros followed. */
    int HostMgrEnableAlarm(int hLogin, void* pInBuf, unsigned int dwInLength);
    void HostMgrAlarmDump(unsigned int command, vexo_print_func print);

    /** The upload switch. */
    uint32_t IsRun();
    /** The subscription, all of it as one call set it. Takes no platform lock. */
    HostMgrAlarmSubscription Subscription();

    HostMgrUseCount m_use;

private:
    HostMgrAlarmSubscription m_subscription VEXO_GUARDED_BY(m_subscription_lock);
    uint32_t bRun VEXO_GUARDED_BY(m_lock);  // upload switch
    vexo_lock* m_lock;
    HostMgrLeafLock m_subscription_lock;
};

#endif
