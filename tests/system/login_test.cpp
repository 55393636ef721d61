// Logins at the simulated recorder by plain calls: who is let in, under which ids, what the log hook hears.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "control.h"
#include "core/scenario.h"
#include "vexo_cfgm.h"
#include "vexo_model.h"
#include "vexo_utility.h"

namespace control = simulator::control;

namespace {

constexpr unsigned UNTOUCHED = 0xFFFFFFFF;
constexpr char ADMIN[] = "admin";

const simulator::UserSettings& Admin() {
    const auto& users = simulator::TheScenario().users;
    return *std::find_if(users.begin(), users.end(), [](const auto& user) { return user.name == ADMIN; });
}

const char* AdminPassword() {
    return Admin().password.c_str();
}

vexo_ip_struct Address(const char* text) {
    vexo_ip_struct ip = {};
    snprintf(ip.text, sizeof(ip.text), "%s", text);
    return ip;
}

class LoginTest : public testing::Test {
protected:
    void SetUp() override {
        vexo_utility_init(VEXO_UTILITY_OPS_HOST);
        vexo_cfgm_init();
    }
    void TearDown() override {
        vexo_model_set_log_hook(nullptr, nullptr);
        for (const unsigned id : m_ids) {
            vexo_model_logout(id, VEXO_FALSE);
        }
    }

    unsigned Login() {
        const vexo_ip_struct ip = Address("192.168.1.20");
        unsigned id = UNTOUCHED;
        EXPECT_EQ(vexo_model_remote_login(ADMIN, AdminPassword(), &ip, &id, VEXO_FALSE, nullptr, nullptr), 0);
        m_ids.insert(id);
        return id;
    }

    int Logout(unsigned id) {
        m_ids.erase(id);
        return vexo_model_logout(id, VEXO_FALSE);
    }

    std::set<unsigned> m_ids;
};

using LoginFunction = int (*)(const char* user, const char* password, const vexo_ip_struct* ip, unsigned* id);

int LocalLogin(const char* user, const char* password, const vexo_ip_struct* ip, unsigned* id) {
    return vexo_model_login(user, password, ip, id, VEXO_TRUE, VEXO_FALSE);
}

int RemoteLogin(const char* user, const char* password, const vexo_ip_struct* ip, unsigned* id) {
    return vexo_model_remote_login(user, password, ip, id, VEXO_FALSE, nullptr, nullptr);
}

class EitherLogin : public LoginTest, public testing::WithParamInterface<LoginFunction> {};

TEST_P(EitherLogin, KnownUserAndPassword_IsLetInAndBooked) {
    const vexo_ip_struct ip = Address("10.0.0.7");
    unsigned id = UNTOUCHED;
    ASSERT_EQ(GetParam()(ADMIN, AdminPassword(), &ip, &id), 0);
    EXPECT_GE(id, 1U);
    EXPECT_LE(id, 65535U);
    const auto taken = control::Outstanding();
    const auto names_it = [](const std::string& line) {
        return line.find("admin") != std::string::npos && line.find("10.0.0.7") != std::string::npos;
    };
    EXPECT_EQ(std::count_if(taken.begin(), taken.end(), names_it), 1);
    EXPECT_EQ(vexo_model_logout(id, VEXO_FALSE), 0);
    EXPECT_EQ(control::Outstanding().size() + 1, taken.size());
}

TEST_P(EitherLogin, UnknownWrongOrNull_IsRefusedAndWritesNothing) {
    const vexo_ip_struct ip = Address("10.0.0.7");
    const char* const attempts[][2] = {
        {"nobody", AdminPassword()}, {ADMIN, "wrong"},           {ADMIN, ""},      {"", ""},
        {"Admin", AdminPassword()},  {nullptr, AdminPassword()}, {ADMIN, nullptr}, {nullptr, nullptr}};
    for (const auto& [user, password] : attempts) {
        unsigned id = UNTOUCHED;
        EXPECT_NE(GetParam()(user, password, &ip, &id), 0) << (user != nullptr ? user : "null");
        EXPECT_EQ(id, UNTOUCHED);
    }
    EXPECT_NE(GetParam()(ADMIN, AdminPassword(), &ip, nullptr), 0);
}

INSTANTIATE_TEST_SUITE_P(LocalAndRemote, EitherLogin, testing::Values(&LocalLogin, &RemoteLogin));

TEST_F(LoginTest, NewLogin_AfterLogout_DoesNotGetTheOldId) {
    const unsigned first = Login();
    EXPECT_EQ(Logout(first), 0);
    EXPECT_NE(Login(), first);
}

TEST_F(LoginTest, Ids_Wrap_AndSkipWhatIsInUse) {
    const unsigned kept = Login();
    unsigned highest = 0;
    for (int i = 0; i < 65535; ++i) {
        const unsigned id = Login();
        ASSERT_NE(id, kept);
        ASSERT_GE(id, 1U);
        highest = std::max(highest, id);
        ASSERT_EQ(Logout(id), 0);
    }
    EXPECT_EQ(highest, 65535U);
}

TEST_F(LoginTest, TableFull_IsRefused_UntilSomebodyLeaves) {
    const vexo_ip_struct ip = Address("10.0.0.7");
    unsigned id = UNTOUCHED;
    while (m_ids.size() < 1000 && RemoteLogin(ADMIN, AdminPassword(), &ip, &id) == 0) {
        EXPECT_TRUE(m_ids.insert(id).second) << id << " was given twice";
    }
    EXPECT_EQ(m_ids.size(), 256U);
    EXPECT_EQ(Logout(*m_ids.begin()), 0);
    Login();
}

TEST_F(LoginTest, Logout_NotLoggedIn_IsRefused) {
    const unsigned id = Login();
    EXPECT_EQ(Logout(id), 0);
    for (const unsigned wrong : {id, 0U, 65536U, UNTOUCHED}) {
        EXPECT_NE(vexo_model_logout(wrong, VEXO_FALSE), 0) << wrong;
    }
}

TEST_F(LoginTest, FaultOnOrder_LoginFailsOnce) {
    control::Fail("vexo_model_remote_login", 1);
    const vexo_ip_struct ip = Address("10.0.0.7");
    unsigned id = UNTOUCHED;
    EXPECT_NE(RemoteLogin(ADMIN, AdminPassword(), &ip, &id), 0);
    EXPECT_EQ(id, UNTOUCHED);
    Login();
}

TEST_F(LoginTest, UserInfo_KnownUser_IsTheScenarios) {
    vexo_dev_usr_info info = {};
    ASSERT_EQ(vexo_model_get_usr_info_byname(ADMIN, &info), 0);
    EXPECT_STREQ(info.usr_name, ADMIN);
    EXPECT_STREQ(info.usr_password, AdminPassword());
}

TEST_F(LoginTest, UserInfo_UnknownOrNull_IsRefusedAndWritesNothing) {
    vexo_dev_usr_info info;
    memset(&info, 0x55, sizeof(info));
    const vexo_dev_usr_info before = info;
    EXPECT_NE(vexo_model_get_usr_info_byname("nobody", &info), 0);
    EXPECT_NE(vexo_model_get_usr_info_byname(nullptr, &info), 0);
    EXPECT_NE(vexo_model_get_usr_info_byname(ADMIN, nullptr), 0);
    EXPECT_EQ(memcmp(&info, &before, sizeof(info)), 0);
}

TEST_F(LoginTest, Authority_IsTheConfigurationsForTheSameUser) {
    unsigned users = 0;
    ASSERT_EQ(vexo_cfgm_get_usr_num(&users), 0);
    ASSERT_GT(users, 0U);
    for (unsigned i = 0; i < users; ++i) {
        vexo_cfgm_usr_info user = {};
        ASSERT_EQ(vexo_cfgm_get_usr_info(i, &user), 0);
        vexo_dev_usr_authority authority = {};
        ASSERT_EQ(vexo_model_get_usr_authority(user.usr_name, &authority), 0);
        EXPECT_EQ(memcmp(&authority, &user.authority, sizeof(authority)), 0) << user.usr_name;
    }
    vexo_dev_usr_authority authority = {};
    EXPECT_NE(vexo_model_get_usr_authority("nobody", &authority), 0);
    EXPECT_NE(vexo_model_get_usr_authority(ADMIN, nullptr), 0);
}

TEST_F(LoginTest, Capability_IsTheConfigurations) {
    const vexo_dev_capability* capability = vexo_model_get_dev_capability();
    ASSERT_NE(capability, nullptr);
    EXPECT_EQ(memcmp(capability, vexo_cfgm_get_dev_cap(), sizeof(*capability)), 0);
    EXPECT_EQ(vexo_model_get_dev_capability(), capability);
}

struct Heard {
    int login;
    std::string user;
    std::string text;
};

void KeepEntry(int login, tag_VexoHostMgrLog* entry, void* user) {
    static_cast<std::vector<Heard>*>(user)->push_back({login, entry->sUser, entry->sText});
}

TEST_F(LoginTest, LogHook_LoginAndLogout_AreHeardUntilTheHookIsTakenBack) {
    std::vector<Heard> heard;
    vexo_model_set_log_hook(&KeepEntry, &heard);
    const unsigned id = Login();
    Logout(id);
    vexo_model_set_log_hook(nullptr, nullptr);
    Login();
    ASSERT_EQ(heard.size(), 2U);
    for (const Heard& entry : heard) {
        EXPECT_EQ(entry.login, static_cast<int>(id));
        EXPECT_EQ(entry.user, ADMIN);
    }
    EXPECT_EQ(heard[0].text, "admin logged in from 192.168.1.20");
    EXPECT_EQ(heard[1].text, "admin logged out");
}

void LogInAndOut(int, tag_VexoHostMgrLog*, void* times) {
    auto* left = static_cast<int*>(times);
    if ((*left)-- > 0) {
        const vexo_ip_struct ip = Address("10.0.0.7");
        unsigned id = 0;
        EXPECT_EQ(RemoteLogin(ADMIN, AdminPassword(), &ip, &id), 0);
        EXPECT_EQ(vexo_model_logout(id, VEXO_FALSE), 0);
    }
}

TEST_F(LoginTest, LogHook_CallsTheRecorderItself_DoesNotHang) {
    int times = 1;
    vexo_model_set_log_hook(&LogInAndOut, &times);
    Logout(Login());
    EXPECT_LT(times, 1);
}

}  // namespace
