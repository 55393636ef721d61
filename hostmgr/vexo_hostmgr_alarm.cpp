#include "vexo_hostmgr_alarm.h"

#include "hostmgr_event.h"
#include "hostmgr_text.h"

static const char FILE_TAG[] = "vexo_hostmgr_alarm";

constexpr uint32_t STREAM_MAIN = 1;

// Upload is on from the start, yet nothing is delivered until a callback is set.
vexo_hostmgr_alarm::vexo_hostmgr_alarm() : m_subscription(), bRun(1) {
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_alarm");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
}

vexo_hostmgr_alarm::~vexo_hostmgr_alarm() {
    vexo_utility_delete_lock(m_lock, FILE_TAG, __func__);
    m_lock = NULL;
}

// ---- subscription --------------------------------------------------------------------------------------------------

static uint32_t ModeOf(int lChannel, int lStreamType) {
    if (lChannel == 0)
        return HOSTMGR_ALARM_MODE_USER;
    return lStreamType == 0 ? HOSTMGR_ALARM_MODE_CHANNEL : HOSTMGR_ALARM_MODE_SPECIAL;
}

int vexo_hostmgr_alarm::HostMgr_Dev_SetAlarmCallback(int hLogin, int lChannel, int lStreamType,
                                                     vexo_hostmgr_alarm_callback callback, void* pUser) {
    if (hLogin < 1) {
        HOSTMGR_PUTS(ERROR, "Param invalid!!");
        return -1;
    }
    const HostMgrAlarmSubscription given = {hLogin,
                                            static_cast<uint32_t>(lChannel),
                                            static_cast<uint32_t>(lStreamType),
                                            ModeOf(lChannel, lStreamType),
                                            callback,
                                            pUser};
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    {
        HostMgrLeafScope scope(m_subscription_lock);
        m_subscription = given;
    }
    bRun = callback != NULL ? 1 : 0;
    return 0;
}

HostMgrAlarmSubscription vexo_hostmgr_alarm::Subscription() {
    HostMgrLeafScope scope(m_subscription_lock);
    return m_subscription;
}

// ---- upload switch -------------------------------------------------------------------------------------------------

// Whose login it is does not matter: it switches the object that the login frame found.
int vexo_hostmgr_alarm::HostMgrEnableAlarm(int /*hLogin*/, void* pInBuf, unsigned int dwInLength) {
    if (pInBuf == NULL || dwInLength == 0) {
        HOSTMGR_PUTS(ERROR, "Param invalid !!");
        return -1;
    }
    const uint32_t enable = HostMgrReadRecord<uint32_t>(pInBuf, dwInLength);
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    bRun = enable;
    return 0;
}

uint32_t vexo_hostmgr_alarm::IsRun() {
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    return bRun;
}

// ---- status --------------------------------------------------------------------------------------------------------

static void FillStatus(const HostMgrEventTable& events, _tagVexoHostMgrALarmStatusInfo* status) {
    for (const vexo_event_detail_info& event : events) {
        if (!HostMgrEventToStatus(event, status++))
            return;
    }
}

int vexo_hostmgr_alarm::HostMgr_Dev_GetAlarmStatus(int hLogin, _tagVexoHostMgrALarmStatusInfo** ppStatus,
                                                   unsigned int* pCount) {
    if (hLogin <= 0 || ppStatus == NULL || pCount == NULL) {
        HOSTMGR_PUTS(ERROR, "Param invalid!!");
        return -1;
    }
    HostMgrEventTable events(FILE_TAG, HOSTMGR_HERE);
    if (!events.Count() || !events.Read()) {
        HOSTMGR_PUTS(ERROR, "vexo_utility_get_event_info fail!");
        return -1;
    }
    const unsigned int bytes = events.Size() * static_cast<unsigned int>(sizeof(_tagVexoHostMgrALarmStatusInfo));
    void* list = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_ALARM_STATUS, bytes, 1);
    if (list == NULL) {
        HOSTMGR_PRINTF(ERROR, "vexo_utility_malloc %d failed!!\n", bytes);
        return -1;
    }
    memset(list, 0, bytes);
    FillStatus(events, static_cast<_tagVexoHostMgrALarmStatusInfo*>(list));
    *ppStatus = static_cast<_tagVexoHostMgrALarmStatusInfo*>(list);
    *pCount = events.Size();
    return 0;
}

// ---- dump ----------------------------------------------------------------------------------------------------------

void vexo_hostmgr_alarm::HostMgrAlarmDump(unsigned int /*command*/, vexo_print_func print) {
    if (m_lock->rd_trylock(FILE_TAG, __func__) != 0) {
        HostMgrPrintLockInfo(m_lock, HOSTMGR_DUMP_BUSY, print);
        return;
    }
    const HostMgrAlarmSubscription shown = Subscription();
    print(TEXT_ALARM_STATE, bRun != 0 ? TEXT_STARTED : TEXT_NOT_STARTED);
    print(TEXT_ALARM_SETTINGS, static_cast<unsigned int>(shown.hLogin), static_cast<int>(shown.dwChannel),
          shown.dwStreamType == STREAM_MAIN ? TEXT_MAIN_STREAM : TEXT_SUB_STREAM, static_cast<int>(shown.dwMode));
    m_lock->unlock(FILE_TAG, __func__);
}
