// The resource manager: the one object that owns all logins, answers the diagnostics menu and reads the configuration.
// What a login can do stands in its seven module objects, not here.
#ifndef VEXO_HOSTMGR_RESOURCE_H
#define VEXO_HOSTMGR_RESOURCE_H

#include "hostmgr_common.h"
#include "vexo_hostmgr_alarm.h"
#include "vexo_hostmgr_capture.h"
#include "vexo_hostmgr_control.h"
#include "vexo_hostmgr_lv.h"
#include "vexo_hostmgr_playback.h"
#include "vexo_hostmgr_queryfile.h"
#include "vexo_hostmgr_talkback.h"

constexpr uint32_t HOSTMGR_LOGINS = 128;

/**
 * One login. Changed under the table lock and the manager's leaf lock together, the slot index and the authority apart;
 * so a thread may read it under either.
 *
 *     free (hLogin 0, no module objects) --login--> in use (hLogin, seven module objects) --logout--> free
 *
 * A failed login may leave a free record with module objects; the next login overwrites them, and they stay allocated.
 */
struct HostMgrUserInfo {
    uint32_t dwSlot;  // the record's own position; set once
    uint32_t hLogin;  // 0: the record is free
    char sUserName[32];
    char sPassword[16];  // in clear; the diagnostics print it
    char sIp[40];        // the peer's address, "-" when it gave none
    vexo_dev_usr_authority struAuthority;
    vexo_hostmgr_control* pControl;
    vexo_hostmgr_lv* pLv;
    vexo_hostmgr_playback* pPlayback;
    vexo_hostmgr_alarm* pAlarm;
    vexo_hostmgr_talkback* pTalkback;
    vexo_hostmgr_queryfile* pQueryFile;
    vexo_hostmgr_capture* pCapture;
};

// Where a record keeps the module object of a class.
constexpr auto HostMgrModuleOf(const vexo_hostmgr_control*) {
    return &HostMgrUserInfo::pControl;
}
constexpr auto HostMgrModuleOf(const vexo_hostmgr_lv*) {
    return &HostMgrUserInfo::pLv;
}
constexpr auto HostMgrModuleOf(const vexo_hostmgr_playback*) {
    return &HostMgrUserInfo::pPlayback;
}
constexpr auto HostMgrModuleOf(const vexo_hostmgr_alarm*) {
    return &HostMgrUserInfo::pAlarm;
}
constexpr auto HostMgrModuleOf(const vexo_hostmgr_talkback*) {
    return &HostMgrUserInfo::pTalkback;
}
constexpr auto HostMgrModuleOf(const vexo_hostmgr_queryfile*) {
    return &HostMgrUserInfo::pQueryFile;
}
constexpr auto HostMgrModuleOf(const vexo_hostmgr_capture*) {
    return &HostMgrUserInfo::pCapture;
}

class vexo_hostmgr_res_manage : public vexo_diagnose_client {
public:
    vexo_hostmgr_res_manage() = default;
    void diagnose(unsigned int command, vexo_print_func print) override;
    /** The manager lives as long as the process; destroying it is a failed assertion. */
    ~vexo_hostmgr_res_manage() override;

    /** Makes the login table, its lock, the alarm thread and the diagnostics entry. Once, from initialisation. */
    void construct_res();

    /** Finds a login's record: 0, or -1 with *ppUser untouched. The record may be another login's by the time of use:
     *  UseModule looks again. */
    int HostMgrGetUserInfo(int hLogin, HostMgrUserInfo** ppUser) VEXO_EXCLUDES(m_lock);

    /** A record's module object, kept alive while the result lives; empty unless the record is still that login's. */
    template <typename Module>
    HostMgrUse<Module> UseModule(const HostMgrUserInfo* user, uint32_t hLogin) {
        HostMgrLeafScope scope(m_record_lock);
        Module* module = user->hLogin == hLogin ? user->*HostMgrModuleOf(static_cast<Module*>(NULL)) : NULL;
        if (module != NULL)
            module->m_use.Take();
        return HostMgrUse<Module>(module);
    }

    int HostMgr_Dev_LoginV2(char* pUser, char* pPassword, char* pIp, unsigned int dwFlag, int lSpare)
        VEXO_EXCLUDES(m_lock);
    int HostMgr_Dev_Logout(int hLogin) VEXO_EXCLUDES(m_lock);

    int HostMgr_Dev_GetConfig(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum, void* lpCondBuffer,
                              unsigned int dwCondBufferSize, void* lpOutBuffer, unsigned int dwOutBufferSize,
                              unsigned int* lpBytesReturned);
    int HostMgr_Dev_SetConfig(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum, void* lpCondBuffer,
                              unsigned int dwCondBufferSize, void* lpInBuffer, unsigned int dwInBufferSize);
    int HostMgr_Dev_GetAbility(int hLogin, unsigned int dwAbilityType, char* pInBuf, unsigned int dwInLength,
                               char* pOutBuf, unsigned int dwOutLength);
    char* HostMgr_Dev_ReadCfg(char* pHostMgrName);
    int HostMgr_Dev_SaveCfg(char* pHostMgrName, char* pXml, unsigned int dwXmlSize);
    int HostMgr_Dev_ReleaseAlarmStatus(_tagVexoHostMgrALarmStatusInfo* pStatus);

private:
    HostMgrUserInfo* HostMgrMallocUserInfo() VEXO_REQUIRES(m_lock);
    int HostMgrFreeUserInfo(uint32_t handle) VEXO_REQUIRES(m_lock);
    HostMgrUserInfo* FindRecord(uint32_t handle) VEXO_REQUIRES(m_lock);
    void DropModules(HostMgrUserInfo* user) VEXO_REQUIRES(m_lock);
    const char* LoginLocally(HostMgrUserInfo* user, vexo_ip_struct* peer, unsigned int dwFlag, unsigned int* id)
        VEXO_REQUIRES(m_lock);
    const char* LoginRemotely(HostMgrUserInfo* user, const vexo_ip_struct* peer, const char* name, const char* password,
                              unsigned int* id) VEXO_REQUIRES(m_lock);
    void KeepAddress(HostMgrUserInfo* user, vexo_ip_struct* peer, const char* address) VEXO_REQUIRES(m_lock);
    void KeepCredentials(HostMgrUserInfo* user, const char* name, const char* password) VEXO_REQUIRES(m_lock);

    void DumpLogins(unsigned int command, vexo_print_func print);
    template <typename Module, void (Module::*Dump)(unsigned int, vexo_print_func)>
    void DumpModules(unsigned int command, vexo_print_func print);

    static void* HostMgrAlarmThread(void* argument);
    void HostMgrAlarmUp();
    HostMgrUse<vexo_hostmgr_alarm> UseAlarm(const HostMgrUserInfo& user);

    HostMgrUserInfo m_user_info[HOSTMGR_LOGINS];
    vexo_lock* m_lock;
    unsigned long m_alarm_thread;
    HostMgrLeafLock m_record_lock;  // for the readers that must not wait for the table lock
};

/** The manager; made on first use. Never null: a manager that cannot be made ends the process. */
vexo_hostmgr_res_manage* get_res_manage();

#endif
