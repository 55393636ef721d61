// The resource manager's answer to the recorder's diagnostics menu. A dump must never wait for a busy library, so it
// reads the login table without the table lock.
#include "hostmgr_text.h"
#include "vexo_hostmgr_resource.h"

namespace {

/** What the listing shows of a record. Not all of it: its authority may be read under the table lock alone. */
struct ShownLogin {
    explicit ShownLogin(const HostMgrUserInfo& user) : dwSlot(user.dwSlot), hLogin(user.hLogin) {
        memcpy(sUserName, user.sUserName, sizeof(sUserName));
        memcpy(sPassword, user.sPassword, sizeof(sPassword));
        memcpy(sIp, user.sIp, sizeof(sIp));
    }

    uint32_t dwSlot;
    uint32_t hLogin;
    char sUserName[sizeof(HostMgrUserInfo::sUserName)];
    char sPassword[sizeof(HostMgrUserInfo::sPassword)];
    char sIp[sizeof(HostMgrUserInfo::sIp)];
};

}  // namespace

// The closing tag repeats the opening one; operators' scripts know it so.
void vexo_hostmgr_res_manage::DumpLogins(unsigned int /*command*/, vexo_print_func print) {
    for (const HostMgrUserInfo& user : m_user_info) {
        m_record_lock.Lock();
        const ShownLogin shown(user);
        m_record_lock.Unlock();
        if (shown.hLogin == 0)
            continue;
        print("<Host_%d>\n", shown.dwSlot);
        print("[%d]hLogin:0x%x username:%s passwd:%s ip:%s\n", shown.dwSlot, shown.hLogin, shown.sUserName,
              shown.sPassword, shown.sIp);
        print("<Host_%d>\n", shown.dwSlot);
    }
}

template <typename Module, void (Module::*Dump)(unsigned int, vexo_print_func)>
void vexo_hostmgr_res_manage::DumpModules(unsigned int command, vexo_print_func print) {
    for (const HostMgrUserInfo& user : m_user_info) {
        m_record_lock.Lock();
        const uint32_t hLogin = user.hLogin;
        m_record_lock.Unlock();
        if (hLogin == 0)
            continue;
        const HostMgrUse<Module> module = UseModule<Module>(&user, hLogin);
        if (module.Get() == NULL)
            continue;
        print("<Host_%d>\n", user.dwSlot);
        (module.Get()->*Dump)(command, print);
        print("</Host_%d>\n", user.dwSlot);
    }
}

void vexo_hostmgr_res_manage::diagnose(unsigned int command, vexo_print_func print) {
    struct Range {
        unsigned int below;
        const char* heading;
        void (vexo_hostmgr_res_manage::*dump)(unsigned int command, vexo_print_func print);
    };
    using Self = vexo_hostmgr_res_manage;
    static constexpr Range RANGES[] = {
        {1000, TEXT_DIAG_LOGINS, &Self::DumpLogins},
        {2000, TEXT_DIAG_LIVE, &Self::DumpModules<vexo_hostmgr_lv, &vexo_hostmgr_lv::HostMgrLiveDump>},
        {3000, TEXT_DIAG_PLAYBACK,
         &Self::DumpModules<vexo_hostmgr_playback, &vexo_hostmgr_playback::HostMgrPlaybackDump>},
        {4000, TEXT_DIAG_QUERY,
         &Self::DumpModules<vexo_hostmgr_queryfile, &vexo_hostmgr_queryfile::HostMgrQueryFileDump>},
        {5000, TEXT_DIAG_TALK, &Self::DumpModules<vexo_hostmgr_talkback, &vexo_hostmgr_talkback::HostMgrTalkDump>},
        {6000, TEXT_DIAG_ALARM, &Self::DumpModules<vexo_hostmgr_alarm, &vexo_hostmgr_alarm::HostMgrAlarmDump>},
    };
    for (const Range& range : RANGES) {
        if (command >= range.below)
            continue;
        print("%s", range.heading);
        (this->*range.dump)(command, print);
        return;
    }
}
