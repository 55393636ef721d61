// What single exported functions do beyond their frame, as far as it is decided at the boundary.
#include "hostmgr_dev.h"
#include "platform_mock.h"
#include "vexo_hostmgr_resource.h"

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;
using namespace vexo_soft;

/** A call's result and what it wrote. */
struct Outcome {
    int result;
    std::string console;
};

template <typename Call>
static Outcome Of(Call call) {
    Outcome outcome = {12345, ""};
    outcome.console = Console([&] { outcome.result = call(); });
    return outcome;
}

// ---- control -------------------------------------------------------------------------------------------------------

static Outcome Control(int hLogin, unsigned int command) {
    return Of([=] { return vexo_HostMgr_Dev_Control(hLogin, command, 1, 1, nullptr, 0, nullptr, 0, nullptr, 0); });
}

class ControlKnown : public HostMgrTest, public testing::WithParamInterface<unsigned int> {};

// The modules refuse these commands: null buffers, or a model library that fails. The caller does not learn of it.
TEST_P(ControlKnown, FailingOperation_IsStillZero) {
    const int hLogin = Login();
    ON_CALL(platform, vexo_model_reboot(_, _)).WillByDefault(Return(-1));
    ON_CALL(platform, vexo_model_poweroff(_)).WillByDefault(Return(-1));
    ON_CALL(platform, vexo_model_restore_factory(_, _)).WillByDefault(Return(-1));
    EXPECT_EQ(Control(hLogin, GetParam()).result, 0);
}

TEST_P(ControlKnown, UnknownLogin_IsNotLoggedIn) {
    Init();
    const Outcome outcome = Control(7, GetParam());
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.console, Error("HostMgrGetUserInfo", "Not find User 0x7!!\n") +
                                   Error("vexo_HostMgr_Dev_Control", "hLogin:7 not logged in!!\n"));
}

TEST_P(ControlKnown, BeforeInit_SaysNotInit) {
    const Outcome outcome = Control(1, GetParam());
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.console, Error("vexo_HostMgr_Dev_Control", "not init\n"));
}

INSTANTIATE_TEST_SUITE_P(Command, ControlKnown, testing::Values(2u, 10u, 11u, 12u, 20u, 25u, 30u),
                         testing::PrintToStringParamName());

class ControlUnknown : public HostMgrTest, public testing::WithParamInterface<unsigned int> {};

TEST_P(ControlUnknown, KnownLogin_FailsSilently) {
    const int hLogin = Login();
    const Outcome outcome = Control(hLogin, GetParam());
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.console, "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("lock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)",
                            "unlock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)"));
}

TEST_P(ControlUnknown, UnknownLogin_IsNotLoggedIn) {
    Init();
    const Outcome outcome = Control(7, GetParam());
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.console, Error("HostMgrGetUserInfo", "Not find User 0x7!!\n") +
                                   Error("vexo_HostMgr_Dev_Control", "hLogin:7 not logged in!!\n"));
}

TEST_P(ControlUnknown, BeforeInit_SaysNotInit) {
    const Outcome outcome = Control(1, GetParam());
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.console, Error("vexo_HostMgr_Dev_Control", "not init\n"));
}

INSTANTIATE_TEST_SUITE_P(Command, ControlUnknown, testing::Values(0u, 1u, 3u, 7u, 9u, 13u, 21u, 31u, 0xFFFFFFFFu),
                         testing::PrintToStringParamName());

// ---- live view -----------------------------------------------------------------------------------------------------

class Functions : public HostMgrTest {};

TEST_F(Functions, StartRealPlay_LooksTheLoginUpAndDoesNothing) {
    const int hLogin = Login();
    const Outcome outcome = Of([=] { return vexo_HostMgr_Dev_StartRealPlay(hLogin, -5, 99); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.console, "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("lock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)",
                            "unlock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)"));
}

TEST_F(Functions, StopRealPlay_LooksTheLoginUpAndDoesNothing) {
    const int hLogin = Login();
    const Outcome outcome = Of([=] { return vexo_HostMgr_Dev_StopRealPlay(hLogin, -5, 99); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.console, "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("lock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)",
                            "unlock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)"));
}

// As when a logout on another thread has taken the module away between the lookup and the call.
TEST_F(Functions, LoginWithoutItsModule_IsNotLoggedIn) {
    const int hLogin = Login(7);
    HostMgrUserInfo* user = nullptr;
    ASSERT_EQ(get_res_manage()->HostMgrGetUserInfo(hLogin, &user), 0);
    vexo_hostmgr_lv* kept = std::exchange(user->pLv, nullptr);
    const Outcome outcome = Of([=] { return vexo_HostMgr_Dev_StartRealPlay(hLogin, 1, 1); });
    user->pLv = kept;
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.console, Error("vexo_HostMgr_Dev_StartRealPlay", "hLogin:7 not logged in!!\n"));
}

// ---- lookup --------------------------------------------------------------------------------------------------------

TEST_F(Functions, LookupOfALogin_GivesItsRecord) {
    Login(5);
    Login(9);
    HostMgrUserInfo* user = nullptr;
    EXPECT_EQ(get_res_manage()->HostMgrGetUserInfo(9, &user), 0);
    ASSERT_NE(user, nullptr);
    EXPECT_EQ(user->hLogin, 9u);
    EXPECT_EQ(user->dwSlot, 1u);
}

TEST_F(Functions, LookupOfAnUnknownLogin_LeavesTheOutputAlone) {
    Login(5);
    HostMgrUserInfo other;
    HostMgrUserInfo* user = &other;
    EXPECT_EQ(Of([&] { return get_res_manage()->HostMgrGetUserInfo(6, &user); }).result, -1);
    EXPECT_EQ(user, &other);
}

TEST_F(Functions, LookupOfAHandleBelowOne_LeavesTheOutputAlone) {
    Init();
    HostMgrUserInfo other;
    HostMgrUserInfo* user = &other;
    EXPECT_EQ(Of([&] { return get_res_manage()->HostMgrGetUserInfo(0, &user); }).result, -1);
    EXPECT_EQ(user, &other);
}

// ---- talk ----------------------------------------------------------------------------------------------------------

TEST_F(Functions, StartTalk_IsStartTalkExWithChannelZero) {
    Login(1);
    Login(2);
    const Outcome plain = Of([] { return vexo_HostMgr_Dev_StartTalk(1, nullptr); });
    const auto plainCalls = platform.TakeCalls();
    const Outcome extended = Of([] { return vexo_HostMgr_Dev_StartTalkEx(2, 0, nullptr); });
    EXPECT_EQ(plain.result, extended.result);
    EXPECT_EQ(plain.console, extended.console);
    EXPECT_EQ(plainCalls, platform.TakeCalls());
}

// ---- alarms --------------------------------------------------------------------------------------------------------

TEST_F(Functions, ReleaseAlarmStatus_FreesTheListWithoutALogin) {
    Init();
    void* list = vexo_utility_malloc(VEXO_USER_HOSTMGR, VEXO_MEMORY_ALARM_STATUS, 32, 1);
    platform.TakeCalls();
    const Outcome outcome =
        Of([list] { return vexo_HostMgr_Dev_ReleaseAlarmStatus(static_cast<_tagVexoHostMgrALarmStatusInfo*>(list)); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.console, "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre("vexo_utility_free(vexo_hostmgr_resource, HostMgr_Dev_ReleaseAlarmStatus, 0x80005)"));
}

TEST_F(Functions, ReleaseAlarmStatusOfNull_IsZeroAndFreesNothing) {
    Init();
    const Outcome outcome = Of([] { return vexo_HostMgr_Dev_ReleaseAlarmStatus(nullptr); });
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.console, "");
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// ---- capture -------------------------------------------------------------------------------------------------------

// A plain line: no colour, no prefix. It comes after the check for initialisation and before the lookup.
TEST_F(Functions, StopCapturePicture_TellsItsHandleAndLogin) {
    Init();
    const Outcome outcome = Of([] { return vexo_HostMgr_Dev_StopCapturePicture(static_cast<int>(0x80051234u)); });
    EXPECT_EQ(outcome.console, "hCapture:0x80051234, hLogin 0x1234\n" +
                                   Error("HostMgrGetUserInfo", "Not find User 0x1234!!\n") +
                                   Error("vexo_HostMgr_Dev_StopCapturePicture", "hLogin:4660 not logged in!!\n"));
}

// ---- log hook ------------------------------------------------------------------------------------------------------

static void SomeHook(int, tag_VexoHostMgrLog*, void*) {}

TEST_F(Functions, SetHook_PassesHookAndUserOn) {
    Init();
    int user = 0;
    EXPECT_CALL(platform, vexo_model_set_log_hook(SomeHook, &user)).Times(1);
    EXPECT_EQ(Console([&user] { vexo_HostMgr_Dev_SetHook_InsertLog(77, SomeHook, &user); }), "");
}

TEST_F(Functions, SetHookOfNull_PassesNullOn) {
    Init();
    EXPECT_CALL(platform, vexo_model_set_log_hook(nullptr, nullptr)).Times(1);
    EXPECT_EQ(Console([] { vexo_HostMgr_Dev_SetHook_InsertLog(0, nullptr, nullptr); }), "");
}

TEST_F(Functions, SetHookBeforeInit_OnlySaysNotInit) {
    EXPECT_CALL(platform, vexo_model_set_log_hook(_, _)).Times(0);
    EXPECT_EQ(Console([] { vexo_HostMgr_Dev_SetHook_InsertLog(0, SomeHook, nullptr); }),
              Error("vexo_HostMgr_Dev_SetHook_InsertLog", "not init\n"));
}

TEST_F(Functions, ReadCfgBeforeInit_IsNull) {
    char name[] = "agent";
    char* document = name;
    EXPECT_EQ(Console([&] { document = vexo_HostMgr_Dev_ReadCfg(name); }),
              Error("vexo_HostMgr_Dev_ReadCfg", "not init\n"));
    EXPECT_EQ(document, nullptr);
}
