// The resource manager's alarm thread: what the recorder's event table holds goes to every login that has subscribed,
// once a second, for as long as it holds.
#include "hostmgr_event.h"
#include "vexo_cfgm.h"
#include "vexo_hostmgr_resource.h"

static const char FILE_TAG[] = "vexo_hostmgr_resource";

constexpr unsigned int PASS_PAUSE_MS = 1000;

void* vexo_hostmgr_res_manage::HostMgrAlarmThread(void* argument) {
    if (argument == NULL)
        return NULL;
    for (;;) {
        static_cast<vexo_hostmgr_res_manage*>(argument)->HostMgrAlarmUp();
        vexo_utility_sleep_ms(PASS_PAUSE_MS);
    }
}

// The pass must not wait for the table lock, and a record that a failed login left behind counts like any other: what
// is asked for is the object, whoever it belongs to.
HostMgrUse<vexo_hostmgr_alarm> vexo_hostmgr_res_manage::UseAlarm(const HostMgrUserInfo& user) {
    HostMgrLeafScope scope(m_record_lock);
    if (user.pAlarm != NULL)
        user.pAlarm->m_use.Take();
    return HostMgrUse<vexo_hostmgr_alarm>(user.pAlarm);
}

/** Hands an alarm to whom the object names, if it is switched on. Nothing is held meanwhile: the callback may log out.
 */
static void Deliver(const HostMgrSite& site, vexo_hostmgr_alarm* object, _tagVexoHostMgrAlarmInfo alarm) {
    if (object->IsRun() == 0)
        return;
    const HostMgrAlarmSubscription to = object->Subscription();
    if (to.fnCallback == NULL)
        return;
    if (to.dwMode == HOSTMGR_ALARM_MODE_SPECIAL || to.dwMode == HOSTMGR_ALARM_MODE_CHANNEL) {
        HostMgrPuts(HOSTMGR_LEVEL_ERROR, site, "Not support!!");
        return;
    }
    to.fnCallback(to.hLogin, static_cast<int>(alarm.dwChannel), static_cast<int>(to.dwStreamType), alarm.dwAlarmType,
                  reinterpret_cast<unsigned char*>(&alarm), sizeof(alarm), to.pUser);
}

// One record serves all events of a pass: what an event does not set stays as the one before it left it.
void vexo_hostmgr_res_manage::HostMgrAlarmUp() {
    _tagVexoHostMgrAlarmInfo alarm;
    memset(&alarm, 0, sizeof(alarm));
    const vexo_dev_capability* capability = vexo_cfgm_get_dev_cap();
    HostMgrEventTable events(FILE_TAG, HOSTMGR_HERE);
    if (!events.Count() || capability == NULL || !events.Read())
        return;
    for (const vexo_event_detail_info& event : events) {
        HostMgrEventToAlarm(event, *capability, &alarm);
        for (const HostMgrUserInfo& user : m_user_info) {
            const HostMgrUse<vexo_hostmgr_alarm> object = UseAlarm(user);
            if (object.Get() != NULL)
                Deliver(HOSTMGR_HERE, object.Get(), alarm);
        }
    }
}

int vexo_hostmgr_res_manage::HostMgr_Dev_ReleaseAlarmStatus(_tagVexoHostMgrALarmStatusInfo* pStatus) {
    if (pStatus != NULL)
        vexo_utility_free(FILE_TAG, __func__, pStatus);
    return 0;
}
