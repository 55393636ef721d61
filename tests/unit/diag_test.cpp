// The answer to the recorder's diagnostics menu, through the client that the library registered.
#include <string.h>

#include "hostmgr_dev.h"
#include "platform_mock.h"
#include "vexo_hostmgr_resource.h"

using testing::_;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::Return;
using testing::StartsWith;
using namespace vexo_soft;

class Diagnostics : public HostMgrTest {
protected:
    Diagnostics() { Init(); }

    /** What a command prints, in UTF-8. */
    std::string Dump(unsigned int command) {
        platform.Diagnostics().client->diagnose(command, CollectPrint);
        return Utf8(TakePrinted());
    }

    /** A remote login that the model library gives the id. */
    void LoginAs(unsigned int id, const char* user, const char* password, const char* ip) {
        platform.NextLogin(id);
        ASSERT_EQ(vexo_HostMgr_Dev_Login(const_cast<char*>(user), const_cast<char*>(password), const_cast<char*>(ip)),
                  static_cast<int>(id));
        platform.TakeCalls();
    }

    /** A login that fails and leaves its module objects in the first free record, which is not record 0. */
    void FailLogin() {
        ON_CALL(platform, vexo_model_login(_, _, _, _, _, _)).WillByDefault(Return(-1));
        ASSERT_EQ(vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr), -1);
        platform.TakeCalls();
    }
};

// ---- ranges --------------------------------------------------------------------------------------------------------

struct Range {
    const char* name;
    unsigned int first;
    unsigned int last;
    const char* heading;
};

static void PrintTo(const Range& range, std::ostream* out) {
    *out << range.name;
}

static const Range RANGES[] = {
    {"Logins", 0, 999, "平台登录信息:\n"},   {"Live", 1000, 1999, "预览信息:\n"},
    {"Playback", 2000, 2999, "回放信息:\n"}, {"Query", 3000, 3999, "文件查询信息:\n"},
    {"Talkback", 4000, 4999, "对讲信息:\n"}, {"Alarm", 5000, 5999, "报警信息:\n"},
    {"Nothing", 6000, 0xFFFFFFFF, ""},
};

class DiagnosticsRange : public Diagnostics, public testing::WithParamInterface<Range> {};

TEST_P(DiagnosticsRange, WithoutLogins_PrintsItsHeadingOnly) {
    EXPECT_EQ(Dump(GetParam().first), GetParam().heading);
    EXPECT_EQ(Dump(GetParam().last), GetParam().heading);
}

TEST_P(DiagnosticsRange, WithoutLogins_CallsNothing) {
    Dump(GetParam().first);
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_P(DiagnosticsRange, WithLogin_WritesNothingToTheConsole) {
    Login();
    EXPECT_EQ(RawConsole([this] { Dump(GetParam().first); }), "");
}

// The dump would complain of a lock taken twice if it waited for the table.
TEST_P(DiagnosticsRange, WithTheTableLocked_DoesNotWait) {
    Login();
    MockLock& table = platform.Lock("vexo_hostmgr_res_manage m_lock");
    table.lock("test", "test");
    EXPECT_THAT(Dump(GetParam().last), StartsWith(GetParam().heading));
    table.unlock("test", "test");
}

INSTANTIATE_TEST_SUITE_P(Each, DiagnosticsRange, testing::ValuesIn(RANGES), ByName());

class DiagnosticsModules : public Diagnostics, public testing::WithParamInterface<Range> {};

TEST_P(DiagnosticsModules, WithLogin_SurroundsItsModuleByTags) {
    Login();
    const std::string printed = Dump(GetParam().first);
    EXPECT_THAT(printed, StartsWith(GetParam().heading + std::string("<Host_0>\n")));
    EXPECT_THAT(printed, EndsWith("</Host_0>\n"));
}

TEST_P(DiagnosticsModules, WithSeveralLogins_NamesEachSlot) {
    Login(5);
    Login(9);
    const std::string printed = Dump(GetParam().last);
    EXPECT_THAT(printed, testing::HasSubstr("</Host_0>\n<Host_1>\n"));
    EXPECT_THAT(printed, EndsWith("</Host_1>\n"));
}

TEST_P(DiagnosticsModules, AfterAFailedLogin_SkipsWhatItLeft) {
    Login(5);
    FailLogin();
    EXPECT_THAT(Dump(GetParam().first), testing::Not(testing::HasSubstr("Host_1")));
}

INSTANTIATE_TEST_SUITE_P(Each, DiagnosticsModules, testing::ValuesIn(RANGES + 1, RANGES + 6), ByName());

// The record query keeps no state worth showing; it does not even look at its lock.
TEST_F(Diagnostics, QueryRange_PrintsTheTagsOnlyAndTouchesNoLock) {
    Login();
    EXPECT_EQ(Dump(3000), "文件查询信息:\n<Host_0>\n</Host_0>\n");
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(Diagnostics, LoginWithoutThatModule_IsSkipped) {
    Login(5);
    Login(9);
    HostMgrUserInfo* user = nullptr;
    ASSERT_EQ(get_res_manage()->HostMgrGetUserInfo(5, &user), 0);
    vexo_hostmgr_queryfile* kept = std::exchange(user->pQueryFile, nullptr);
    EXPECT_EQ(Dump(3000), "文件查询信息:\n<Host_1>\n</Host_1>\n");
    user->pQueryFile = kept;
}

// ---- logins --------------------------------------------------------------------------------------------------------

TEST_F(Diagnostics, LocalLogin_IsListedWithPasswordInClear) {
    Login(0x1A);
    EXPECT_EQ(Dump(0),
              "平台登录信息:\n"
              "<Host_0>\n"
              "[0]hLogin:0x1a username:admin passwd:secret ip:127.0.0.1\n"
              "<Host_0>\n");
}

TEST_F(Diagnostics, SeveralLogins_AreListedInSlotOrder) {
    LoginAs(500, "peer", "pass word", "10.0.0.9");
    LoginAs(3, "other", "", nullptr);
    EXPECT_EQ(Dump(999),
              "平台登录信息:\n"
              "<Host_0>\n"
              "[0]hLogin:0x1f4 username:peer passwd:pass word ip:10.0.0.9\n"
              "<Host_0>\n"
              "<Host_1>\n"
              "[1]hLogin:0x3 username:other passwd: ip:-\n"
              "<Host_1>\n");
}

TEST_F(Diagnostics, LoggedOutSlot_IsNotListed) {
    LoginAs(5, "first", "one", "10.0.0.1");
    LoginAs(6, "second", "two", "10.0.0.2");
    ASSERT_EQ(vexo_HostMgr_Dev_Logout(5), 0);
    EXPECT_EQ(Dump(1),
              "平台登录信息:\n"
              "<Host_1>\n"
              "[1]hLogin:0x6 username:second passwd:two ip:10.0.0.2\n"
              "<Host_1>\n");
}

TEST_F(Diagnostics, FailedLogin_IsNotListed) {
    LoginAs(5, "first", "one", "10.0.0.1");
    FailLogin();
    EXPECT_EQ(Dump(1),
              "平台登录信息:\n"
              "<Host_0>\n"
              "[0]hLogin:0x5 username:first passwd:one ip:10.0.0.1\n"
              "<Host_0>\n");
}

TEST_F(Diagnostics, LoginListing_CallsNothing) {
    Login();
    Dump(0);
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}
