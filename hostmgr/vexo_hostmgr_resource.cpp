#include "vexo_hostmgr_resource.h"

#include <new>

#include "hostmgr_text.h"

static const char FILE_TAG[] = "vexo_hostmgr_resource";

constexpr unsigned int ALARM_THREAD_STACK = 0x100000;

static std::atomic<vexo_hostmgr_res_manage*> s_resource_manage{NULL};
static pthread_mutex_t s_resource_mutex = PTHREAD_MUTEX_INITIALIZER;

vexo_hostmgr_res_manage* get_res_manage() {
    vexo_hostmgr_res_manage* manage = s_resource_manage.load(std::memory_order_acquire);
    if (manage != NULL)
        return manage;
    pthread_mutex_lock(&s_resource_mutex);
    if (s_resource_manage == NULL) {
        s_resource_manage = new (std::nothrow) vexo_hostmgr_res_manage;
        HOSTMGR_ASSERT(FILE_TAG, s_resource_manage != NULL);
    }
    pthread_mutex_unlock(&s_resource_mutex);
    return s_resource_manage;
}

vexo_hostmgr_res_manage::~vexo_hostmgr_res_manage() {
    HOSTMGR_ASSERT(FILE_TAG, 0);
}

void vexo_hostmgr_res_manage::construct_res() {
    for (uint32_t slot = 0; slot < HOSTMGR_LOGINS; ++slot) {
        memset(&m_user_info[slot], 0, sizeof(m_user_info[slot]));
        m_user_info[slot].dwSlot = slot;
    }
    m_lock = vexo_utility_new_lock(VEXO_USER_HOSTMGR, "vexo_hostmgr_res_manage m_lock");
    HOSTMGR_ASSERT(FILE_TAG, m_lock != NULL);
    m_alarm_thread = 0;
    const vexo_thread_creat_ctl ctl = {1, 0, HostMgrAlarmThread, this, 0, ALARM_THREAD_STACK};
    vexo_utility_creat_thread(&ctl, "HostMgrAlarm_Thread", &m_alarm_thread);
    vexo_utility_regist_diag(this, TEXT_DIAG_TITLE, TEXT_DIAG_MENU);
}

// ---- login table ---------------------------------------------------------------------------------------------------

HostMgrUserInfo* vexo_hostmgr_res_manage::FindRecord(uint32_t handle) {
    for (HostMgrUserInfo& user : m_user_info) {
        if (user.hLogin == handle)
            return &user;
    }
    return NULL;
}

int vexo_hostmgr_res_manage::HostMgrGetUserInfo(int hLogin, HostMgrUserInfo** ppUser) {
    if (hLogin < 1) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    HostMgrUserInfo* user = FindRecord(static_cast<uint32_t>(hLogin));
    if (user == NULL) {
        HOSTMGR_PRINTF(ERROR, "Not find User 0x%x!!\n", static_cast<unsigned int>(hLogin));
        return -1;
    }
    *ppUser = user;
    return 0;
}

/** Visits a record's module objects in the order in which they are made and destroyed: talkback before alarm. */
template <typename Visit>
static void ForEachModule(HostMgrUserInfo* user, Visit visit) {
    visit(user->pControl);
    visit(user->pLv);
    visit(user->pPlayback);
    visit(user->pTalkback);
    visit(user->pAlarm);
    visit(user->pQueryFile);
    visit(user->pCapture);
}

template <typename Module>
static Module* NewModule(Module* /*kind*/) {
    return new (std::nothrow) Module;
}

// Pointers that a failed login left behind are overwritten: those objects stay allocated for the process's life.
HostMgrUserInfo* vexo_hostmgr_res_manage::HostMgrMallocUserInfo() {
    HostMgrUserInfo* user = FindRecord(0);
    if (user == NULL)
        return NULL;
    bool complete = true;
    ForEachModule(user, [this, &complete](auto*& module) {
        auto* made = NewModule(module);
        complete = complete && made != NULL;
        HostMgrLeafScope scope(m_record_lock);
        module = made;
    });
    if (complete)
        return user;
    DropModules(user);
    return NULL;
}

/** Takes a record's module objects out of it and lets go of them one by one; a call that still uses one ends it. */
void vexo_hostmgr_res_manage::DropModules(HostMgrUserInfo* user) {
    ForEachModule(user, [this](auto*& module) {
        m_record_lock.Lock();
        auto* unlinked = module;
        module = NULL;
        m_record_lock.Unlock();
        HostMgrDrop(unlinked);
    });
}

int vexo_hostmgr_res_manage::HostMgrFreeUserInfo(uint32_t handle) {
    HostMgrUserInfo* user = FindRecord(handle);
    if (user == NULL)
        return -1;
    {
        HostMgrLeafScope scope(m_record_lock);
        user->hLogin = 0;
        user->sUserName[0] = '\0';
        user->sPassword[0] = '\0';
        user->sIp[0] = '\0';
    }
    memset(&user->struAuthority, 0, sizeof(user->struAuthority));
    DropModules(user);
    return 0;
}

// ---- login and logout ----------------------------------------------------------------------------------------------

void vexo_hostmgr_res_manage::KeepAddress(HostMgrUserInfo* user, vexo_ip_struct* peer, const char* address) {
    HostMgrCopyText(peer->text, address);
    HostMgrLeafScope scope(m_record_lock);
    HostMgrCopyText(user->sIp, address);
}

void vexo_hostmgr_res_manage::KeepCredentials(HostMgrUserInfo* user, const char* name, const char* password) {
    HostMgrLeafScope scope(m_record_lock);
    HostMgrCopyText(user->sUserName, name);
    HostMgrCopyText(user->sPassword, password);
}

// The two ways in. Each returns null on success, or the text of its failure for the caller to print.

const char* vexo_hostmgr_res_manage::LoginLocally(HostMgrUserInfo* user, vexo_ip_struct* peer, unsigned int dwFlag,
                                                  unsigned int* id) {
    vexo_dev_usr_info admin;
    memset(&admin, 0, sizeof(admin));
    if (vexo_model_get_usr_info_byname("admin", &admin) != 0)
        return "vexo_model_get_usr_info_byname failed !!";
    KeepAddress(user, peer, "127.0.0.1");
    const VEXO_BOOL flag = static_cast<VEXO_BOOL>(dwFlag & 1);
    if (vexo_model_login(admin.usr_name, admin.usr_password, peer, id, flag, VEXO_FALSE) != 0)
        return "vexo_model_login failed !!";
    KeepCredentials(user, admin.usr_name, admin.usr_password);
    return NULL;
}

const char* vexo_hostmgr_res_manage::LoginRemotely(HostMgrUserInfo* user, const vexo_ip_struct* peer, const char* name,
                                                   const char* password, unsigned int* id) {
    // One credential without the other is refused without asking the model library.
    if (name == NULL || password == NULL ||
        vexo_model_remote_login(name, password, peer, id, VEXO_FALSE, NULL, NULL) != 0)
        return "vexo_model_remote_login failed !!";
    KeepCredentials(user, name, password);
    return NULL;
}

// The table lock is held across the model library's calls, so that no second login takes the same record meanwhile.
int vexo_hostmgr_res_manage::HostMgr_Dev_LoginV2(char* pUser, char* pPassword, char* pIp, unsigned int dwFlag,
                                                 int /*lSpare*/) {
    vexo_ip_struct peer;
    memset(&peer, 0, sizeof(peer));
    unsigned int id = 0xFFFFFFFF;
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    HostMgrUserInfo* user = HostMgrMallocUserInfo();
    if (user == NULL) {
        HOSTMGR_PUTS(ERROR, "HostMgrMallocUserInfo failed!!");
        return -1;
    }
    KeepAddress(user, &peer, pIp != NULL ? pIp : "-");
    const bool local = pUser == NULL && pPassword == NULL;
    const char* failure =
        local ? LoginLocally(user, &peer, dwFlag, &id) : LoginRemotely(user, &peer, pUser, pPassword, &id);
    if (failure != NULL) {
        HOSTMGR_PUTS(ERROR, failure);
        // The slot index goes where a handle is expected: agents have always lived with what that releases.
        HostMgrFreeUserInfo(user->dwSlot);
        return -1;
    }
    vexo_model_get_usr_authority(user->sUserName, &user->struAuthority);
    HostMgrLeafScope scope(m_record_lock);
    user->hLogin = id;
    return static_cast<int>(id);
}

int vexo_hostmgr_res_manage::HostMgr_Dev_Logout(int hLogin) {
    if (hLogin < 1) {
        HOSTMGR_PRINTF(ERROR, "Why hLogin:%d < 0!!\n", hLogin);
        return -1;
    }
    HostMgrLockScope lock(m_lock, FILE_TAG, __func__);
    if (vexo_model_logout(static_cast<unsigned int>(hLogin), VEXO_FALSE) != 0)
        HOSTMGR_PRINTF(WARNING, "Why vexo_model_logout hand:%d failed!!\n", hLogin);
    HostMgrFreeUserInfo(static_cast<uint32_t>(hLogin));
    return 0;
}
