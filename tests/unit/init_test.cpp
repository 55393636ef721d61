#include <dlfcn.h>

#include <thread>

#include "hostmgr_dev.h"
#include "platform_mock.h"
#include "vexo_hostmgr_resource.h"

using testing::_;
using testing::Each;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Return;
using vexo_soft::vexo_HostMgr_Dev_init;

static const auto ALL_STEPS =
    ElementsAre("vexo_utility_init(1)", "vexo_cfgm_init()", "vexo_utility_new_lock(97, vexo_hostmgr_res_manage m_lock)",
                "vexo_utility_creat_thread({1, 0, entry, argument, 0, 0x100000}, HostMgrAlarm_Thread)",
                "vexo_utility_regist_diag()");

class Initialisation : public HostMgrTest {};

TEST_F(Initialisation, FirstCall_RunsItsStepsInOrder) {
    vexo_HostMgr_Dev_init();
    EXPECT_THAT(platform.TakeCalls(), ALL_STEPS);
}

TEST_F(Initialisation, FirstCall_PrintsNothing) {
    EXPECT_EQ(RawConsole(vexo_HostMgr_Dev_init), "");
}

TEST_F(Initialisation, SecondCall_DoesNothing) {
    Init();
    EXPECT_EQ(RawConsole(vexo_HostMgr_Dev_init), "");
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(Initialisation, TwoThreadsAtOnce_RunTheStepsOnce) {
    std::atomic<int> arrived{0};
    ON_CALL(platform, vexo_utility_init(_)).WillByDefault([&arrived](vexo_utility_ops_type) {
        while (arrived < 2)  // the other thread is at the door, too
            std::this_thread::yield();
        return 0;
    });
    const auto start = [this, &arrived] {
        ++arrived;
        vexo_HostMgr_Dev_init();
        EXPECT_NE(platform.Diagnostics().client, nullptr) << "came back before initialisation was complete";
    };
    std::thread other(start);
    start();
    other.join();
    EXPECT_THAT(platform.TakeCalls(), ALL_STEPS);
}

TEST_F(Initialisation, UtilityAndConfigurationFail_AreIgnored) {
    ON_CALL(platform, vexo_utility_init(_)).WillByDefault(Return(-1));
    ON_CALL(platform, vexo_cfgm_init()).WillByDefault(Return(-1));
    EXPECT_EQ(RawConsole(vexo_HostMgr_Dev_init), "");
    EXPECT_THAT(platform.TakeCalls(), ALL_STEPS);
}

TEST_F(Initialisation, AlarmThreadFails_IsIgnored) {
    ON_CALL(platform, vexo_utility_creat_thread(_, _, _)).WillByDefault(Return(-1));
    EXPECT_EQ(RawConsole(vexo_HostMgr_Dev_init), "");
    EXPECT_THAT(platform.TakeCalls(), ALL_STEPS);
    EXPECT_EQ(Login(3), 3);
}

TEST_F(Initialisation, AlarmThread_GetsTheManager) {
    Init();
    ASSERT_EQ(platform.Threads().size(), 1u);
    EXPECT_EQ(platform.Threads()[0].ctl.argument, get_res_manage());
}

TEST_F(Initialisation, AlarmThread_IdStartsAtZero) {
    unsigned long id = 77;
    ON_CALL(platform, vexo_utility_creat_thread(_, _, _))
        .WillByDefault([&id](const vexo_thread_creat_ctl*, const char*, unsigned long* given) {
            id = *given;
            return 0;
        });
    Init();
    EXPECT_EQ(id, 0u);
}

TEST_F(Initialisation, Diagnostics_GetTheManager) {
    Init();
    EXPECT_EQ(platform.Diagnostics().client, get_res_manage());
}

TEST_F(Initialisation, DiagnosticsTitle_IsGbk) {
    Init();
    EXPECT_EQ(Utf8(platform.Diagnostics().title), "诊断 hostmgr 资源");
}

TEST_F(Initialisation, DiagnosticsMenu_IsGbk) {
    Init();
    EXPECT_EQ(Utf8(platform.Diagnostics().menu),
              "<1000 平台库登录信息\n"
              "<2000 打印预览信息\n"
              "<3000 打印回放信息\n"
              "<4000 打印文件查询信息\n"
              "<5000 打印对讲信息\n"
              "<6000 打印报警信息\n");
}

// The platform keeps both by pointer: they must stand in the program itself, not on a stack or a heap.
TEST_F(Initialisation, DiagnosticsTexts_HaveStaticStorage) {
    Init();
    Dl_info object;
    EXPECT_NE(dladdr(platform.Diagnostics().title, &object), 0);
    EXPECT_NE(dladdr(platform.Diagnostics().menu, &object), 0);
}

// ---- what ends the process -----------------------------------------------------------------------------------------

class InitialisationDeathTest : public HostMgrTest {};

TEST_F(InitialisationDeathTest, TableLockFails_IsAFailedAssertion) {
    platform.FailLock(1);
    EXPECT_EXIT(OnConsole(vexo_HostMgr_Dev_init), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_resource", "construct_res", "m_lock != NULL"));
}

// Memory runs out within the configuration manager's start: the manager is made after that, not before.
TEST_F(InitialisationDeathTest, NoMemoryForTheManager_IsAFailedAssertion) {
    ON_CALL(platform, vexo_cfgm_init()).WillByDefault([] {
        FailNothrowNew(1);
        return 0;
    });
    EXPECT_EXIT(OnConsole(vexo_HostMgr_Dev_init), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_resource", "get_res_manage", "s_resource_manage != NULL"));
}

TEST_F(InitialisationDeathTest, ManagerDeleted_IsAFailedAssertion) {
    Init();
    vexo_diagnose_client* manager = platform.Diagnostics().client;
    EXPECT_EXIT(OnConsole([manager] { delete manager; }), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_resource", "~vexo_hostmgr_res_manage", "0"));
}

TEST_F(InitialisationDeathTest, ManagerDestroyedInPlace_IsAFailedAssertion) {
    Init();
    vexo_diagnose_client* manager = platform.Diagnostics().client;
    EXPECT_EXIT(OnConsole([manager] { manager->~vexo_diagnose_client(); }), ExitedWithCode(255),
                FailedAssertion("vexo_hostmgr_resource", "~vexo_hostmgr_res_manage", "0"));
}

// ---- the alarm thread's body ---------------------------------------------------------------------------------------

TEST_F(Initialisation, AlarmThreadBody_WithoutManager_ReturnsAtOnce) {
    Init();
    EXPECT_EQ(platform.Threads().at(0).ctl.entry(nullptr), nullptr);
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// The body never returns: the third sleep ends it, with status 0 when all three were a second long.
TEST_F(InitialisationDeathTest, AlarmThreadBody_SleepsOneSecondPerPass) {
    Init();
    const vexo_thread_creat_ctl ctl = platform.Threads().at(0).ctl;
    std::vector<unsigned int> sleeps;
    ON_CALL(platform, vexo_utility_sleep_ms(_)).WillByDefault([&sleeps](unsigned int milliseconds) {
        sleeps.push_back(milliseconds);
        if (sleeps.size() == 3)
            _exit(testing::Value(sleeps, Each(1000u)) ? 0 : 1);
    });
    EXPECT_EXIT(ctl.entry(ctl.argument), ExitedWithCode(0), "");
}
