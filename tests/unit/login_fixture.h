// What the tests of logins share: ways in, the login listing, the calls that make and end a login's module objects.
// Expectations stand in the tests; what other tests need, too, stands in platform_mock.h and test_support.h.
#ifndef LOGIN_FIXTURE_H
#define LOGIN_FIXTURE_H

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "hostmgr_dev.h"
#include "platform_mock.h"

using Lines = std::vector<std::string>;

inline constexpr char TABLE_LOCK[] = "vexo_hostmgr_res_manage m_lock";

/** The table lock's part of the record: "lock" or "unlock", by a function of the resource manager. */
inline std::string OnTable(const std::string& operation, const std::string& function) {
    return operation + "(" + TABLE_LOCK + ", vexo_hostmgr_resource, " + function + ")";
}

/** The locks of one login's module objects, in the order in which the objects are made. */
inline Lines ModuleLocks() {
    return {
        "vexo_hostmgr_control m_lock",     "vexo_hostmgr_lv",    "vexo_hostmgr_playback lock", "vexo_hostmgr_talkback",
        "vexo_hostmgr_talkback play lock", "vexo_hostmgr_alarm", "vexo_hostmgr_queryfile",     "vexo_hostmgr_capture"};
}

/** The calls that create these locks. */
inline Lines ModulesMade() {
    return {"vexo_utility_new_lock(97, vexo_hostmgr_control m_lock)",
            "vexo_utility_new_rw_lock(97, vexo_hostmgr_lv)",
            "vexo_utility_new_lock(97, vexo_hostmgr_playback lock)",
            "vexo_utility_new_lock(97, vexo_hostmgr_talkback)",
            "vexo_utility_new_lock(97, vexo_hostmgr_talkback play lock)",
            "vexo_utility_new_lock(97, vexo_hostmgr_alarm)",
            "vexo_utility_new_lock(97, vexo_hostmgr_queryfile)",
            "vexo_utility_new_rw_lock(97, vexo_hostmgr_capture)"};
}

/** The calls that delete them, in the order in which the objects are destroyed: talkback before alarm. */
inline Lines ModulesEnded() {
    return {"vexo_utility_delete_lock(vexo_hostmgr_control m_lock, vexo_hostmgr_control, ~vexo_hostmgr_control)",
            "vexo_utility_delete_rw_lock(vexo_hostmgr_lv, vexo_hostmgr_lv, ~vexo_hostmgr_lv)",
            "vexo_utility_delete_lock(vexo_hostmgr_playback lock, vexo_hostmgr_playback, ~vexo_hostmgr_playback)",
            "vexo_utility_delete_lock(vexo_hostmgr_talkback play lock, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)",
            "vexo_utility_delete_lock(vexo_hostmgr_talkback, vexo_hostmgr_talkback, ~vexo_hostmgr_talkback)",
            "vexo_utility_delete_lock(vexo_hostmgr_alarm, vexo_hostmgr_alarm, ~vexo_hostmgr_alarm)",
            "vexo_utility_delete_lock(vexo_hostmgr_queryfile, vexo_hostmgr_queryfile, ~vexo_hostmgr_queryfile)",
            "vexo_utility_delete_rw_lock(vexo_hostmgr_capture, vexo_hostmgr_capture, ~vexo_hostmgr_capture)"};
}

/** The lines that hold a text, or one of several. */
inline Lines WithAny(const Lines& texts, const Lines& lines) {
    Lines kept;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(kept), [&texts](const std::string& line) {
        return std::any_of(texts.begin(), texts.end(),
                           [&line](const std::string& text) { return line.find(text) != std::string::npos; });
    });
    return kept;
}
inline Lines With(const std::string& text, const Lines& lines) {
    return WithAny({text}, lines);
}

/** The lines that do not hold a text. */
inline Lines Without(const std::string& text, const Lines& lines) {
    Lines kept;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(kept),
                 [&text](const std::string& line) { return line.find(text) == std::string::npos; });
    return kept;
}

inline Lines Joined(const std::vector<Lines>& parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/** A login as the diagnostics list it. */
inline std::string Listed(int slot, unsigned int handle, const std::string& user, const std::string& password,
                          const std::string& ip) {
    char hex[16];
    snprintf(hex, sizeof(hex), "0x%x", handle);
    const std::string number = std::to_string(slot);
    return "<Host_" + number + ">\n[" + number + "]hLogin:" + hex + " username:" + user + " passwd:" + password +
           " ip:" + ip + "\n<Host_" + number + ">\n";
}
inline std::string ListedAdmin(int slot, unsigned int handle) {
    return Listed(slot, handle, "admin", "secret", "127.0.0.1");
}

/** A test of an initialised library without logins. */
class LoginFixture : public HostMgrTest {
protected:
    void SetUp() override { Init(); }

    // The exported functions take texts that they do not change as if they did.
    static int LoginV2(const char* user, const char* password, const char* ip, unsigned int flag = 0, int spare = 0) {
        return vexo_soft::vexo_HostMgr_Dev_LoginV2(const_cast<char*>(user), const_cast<char*>(password),
                                                   const_cast<char*>(ip), flag, spare);
    }
    static int LoginAsAdmin() { return LoginV2(nullptr, nullptr, nullptr); }
    static int LoginRemotely() { return LoginV2("anna", "pass", "10.0.0.5"); }

    /** Logs in as the recorder's own user so that the slots from first on get the handles. */
    void LogInAll(const std::vector<unsigned int>& handles) {
        for (const unsigned int handle : handles) {
            platform.NextLogin(handle);
            EXPECT_EQ(LoginAsAdmin(), static_cast<int>(handle));
        }
        platform.TakeCalls();
    }

    /** A remote login that the recorder refuses; what it prints is of no interest. */
    void FailLogin() {
        ON_CALL(platform, vexo_model_remote_login)
            .WillByDefault([](const char*, const char*, const vexo_ip_struct*, unsigned int*, VEXO_BOOL, char*, char*) {
                return -1;
            });
        RawConsole([] { EXPECT_EQ(LoginRemotely(), -1); });
    }

    /** What the diagnostics say of all logins, without the heading. */
    std::string Listing() {
        TakePieces();
        platform.Diagnostics().client->diagnose(0, CollectPrint);
        const std::string printed = TakePrinted();
        return printed.substr(printed.find('\n') + 1);
    }

    /** The locks of so many logins, and the table's. */
    static Lines LocksOf(int logins) {
        Lines locks = {TABLE_LOCK};
        for (int login = 0; login < logins; ++login)
            locks = Joined({locks, ModuleLocks()});
        return locks;
    }

    /** Whether a login is found, by a call that does nothing else. */
    static bool IsLoggedIn(int hLogin) {
        int result = -1;
        RawConsole([&] { result = vexo_soft::vexo_HostMgr_Dev_StartRealPlay(hLogin, 1, 1); });
        return result == 0;
    }
};

#endif
