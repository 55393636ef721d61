// The login table: its slots, the lookup that every login's call makes, and logging out.
#include "login_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Return;

class LoginTable : public LoginFixture {};
class LoginLookup : public LoginFixture {};
class Logout : public LoginFixture {};

constexpr int LOGINS = 128;

// ---- slots ---------------------------------------------------------------------------------------------------------

TEST_F(LoginTable, Lookup128Logins_AllAreFound) {
    std::vector<unsigned int> handles;
    for (unsigned int login = 0; login < LOGINS; ++login)
        handles.push_back(0x500 + login);
    LogInAll(handles);
    std::string listing;
    for (int slot = 0; slot < LOGINS; ++slot) {
        EXPECT_TRUE(IsLoggedIn(0x500 + slot));
        listing += ListedAdmin(slot, static_cast<unsigned int>(0x500 + slot));
    }
    EXPECT_EQ(Listing(), listing);
}

TEST_F(LoginTable, Login129_FailsAndMakesNothing) {
    for (int login = 0; login < LOGINS; ++login)
        LoginAsAdmin();
    platform.TakeCalls();
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginAsAdmin(), -1); }),
              Error("HostMgr_Dev_LoginV2", "HostMgrMallocUserInfo failed!!\n"));
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginRemotely(), -1); }),
              Error("HostMgr_Dev_LoginV2", "HostMgrMallocUserInfo failed!!\n"));
    const Lines once = {OnTable("lock", "HostMgr_Dev_LoginV2"), OnTable("unlock", "HostMgr_Dev_LoginV2")};
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(Joined({once, once})));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(LOGINS)));
}

TEST_F(LoginTable, Login129AfterALogout_TakesTheFreedSlot) {
    for (int login = 0; login < LOGINS; ++login)
        LoginAsAdmin();
    vexo_soft::vexo_HostMgr_Dev_Logout(78);
    EXPECT_EQ(LoginRemotely(), LOGINS + 1);
    EXPECT_NE(Listing().find(Listed(77, LOGINS + 1, "anna", "pass", "10.0.0.5")), std::string::npos);
}

TEST_F(LoginTable, LowestFreeSlot_IsTakenFirst) {
    LogInAll({0x500, 0x501, 0x502, 0x503});
    for (const int handle : {0x502, 0x500, 0x503})
        vexo_soft::vexo_HostMgr_Dev_Logout(handle);
    LogInAll({0x600});
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x600) + ListedAdmin(1, 0x501));
    LogInAll({0x601, 0x602, 0x603});
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x600) + ListedAdmin(1, 0x501) + ListedAdmin(2, 0x601) + ListedAdmin(3, 0x602) +
                             ListedAdmin(4, 0x603));
}

TEST_F(LoginTable, EveryLogin_HasModuleObjectsOfItsOwn) {
    LogInAll({0x501, 0x502});
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(2)));
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(0x501, 1, 1), 0x501);
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(0x502, 1, 1), 0x502);
}

// Two logins under one handle: the objects tell which was found, for a stream buffer stands in one of them only.
TEST_F(LoginTable, SameHandleTwice_LookupTakesTheLowerSlot) {
    LogInAll({7});
    const int hID = vexo_soft::vexo_HostMgr_Dev_CreateRealStreamBuffer(7, 1, 1);
    LogInAll({7});
    EXPECT_EQ(Listing(), ListedAdmin(0, 7) + ListedAdmin(1, 7));
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID), 0);
}

TEST_F(LoginTable, SameHandleTwice_LogoutReleasesTheLowerSlotFirst) {
    LogInAll({7, 7});
    MockLock& higher = platform.Lock("vexo_hostmgr_control m_lock");
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(7), 0);
    EXPECT_FALSE(higher.Deleted());
    EXPECT_EQ(Listing(), ListedAdmin(1, 7));
    EXPECT_TRUE(IsLoggedIn(7));
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(7), 0);
    EXPECT_TRUE(higher.Deleted());
    EXPECT_FALSE(IsLoggedIn(7));
}

// ---- lookup --------------------------------------------------------------------------------------------------------

static std::string NotLoggedIn(int handle) {
    return Error("vexo_HostMgr_Dev_StartRealPlay", "hLogin:" + std::to_string(handle) + " not logged in!!\n");
}

TEST_F(LoginLookup, KnownHandle_IsFoundUnderTheTableLockWithoutAWord) {
    LogInAll({0x501});
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartRealPlay(0x501, 1, 1), 0); }), "");
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre(OnTable("lock", "HostMgrGetUserInfo"), OnTable("unlock", "HostMgrGetUserInfo")));
}

class LoginLookupBelowOne : public LoginFixture, public testing::WithParamInterface<int> {};

TEST_P(LoginLookupBelowOne, SaysWhyAndTakesNoLock) {
    LogInAll({1});
    EXPECT_EQ(
        Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartRealPlay(GetParam(), 1, 1), -1); }),
        Error("HostMgrGetUserInfo", "Why hLogin:" + std::to_string(GetParam()) + " < 0!!\n") + NotLoggedIn(GetParam()));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Handles, LoginLookupBelowOne, testing::Values(0, -1, -2, INT32_MIN));

TEST_F(LoginLookup, HandleAbove0x7FFFFFFF_IsKeptAndNeverFound) {
    LogInAll({0xFFFFFFFF});
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartRealPlay(-1, 1, 1), -1); }),
              Error("HostMgrGetUserInfo", "Why hLogin:-1 < 0!!\n") + NotLoggedIn(-1));
}

class LoginLookupUnknown : public LoginFixture, public testing::WithParamInterface<std::pair<int, std::string>> {};

TEST_P(LoginLookupUnknown, SaysSoInHexadecimalAndGivesTheLockBack) {
    LogInAll({1, 0x12345});
    EXPECT_EQ(
        Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartRealPlay(GetParam().first, 1, 1), -1); }),
        Error("HostMgrGetUserInfo", "Not find User " + GetParam().second + "!!\n") + NotLoggedIn(GetParam().first));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAre(OnTable("lock", "HostMgrGetUserInfo"), OnTable("unlock", "HostMgrGetUserInfo")));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Handles, LoginLookupUnknown,
                         testing::Values(std::pair(2, "0x2"), std::pair(0xAB, "0xab"), std::pair(0x2345, "0x2345"),
                                         std::pair(0x10001, "0x10001"), std::pair(INT32_MAX, "0x7fffffff")));

TEST_F(LoginLookup, HandleBeyond16Bits_IsFoundWhole) {
    LogInAll({0x12345});
    EXPECT_TRUE(IsLoggedIn(0x12345));
    EXPECT_FALSE(IsLoggedIn(0x2345));
}

TEST_F(LoginLookup, HandleThatWasLoggedOut_IsNotFound) {
    LogInAll({0x501});
    vexo_soft::vexo_HostMgr_Dev_Logout(0x501);
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_StartRealPlay(0x501, 1, 1), -1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x501!!\n") + NotLoggedIn(0x501));
}

TEST_F(LoginLookup, Message_IsPrintedBeforeTheLockIsGivenBack) {
    ON_CALL(platform.Lock(TABLE_LOCK), unlock).WillByDefault([](const char*, const char*) {
        printf("unlocked\n");
        return 0;
    });
    ON_CALL(platform.Lock(TABLE_LOCK), lock).WillByDefault(Return(0));
    EXPECT_EQ(Console([] { vexo_soft::vexo_HostMgr_Dev_StartRealPlay(9, 1, 1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x9!!\n") + "unlocked\n" + NotLoggedIn(9));
}

// ---- logout --------------------------------------------------------------------------------------------------------

TEST_F(Logout, Login_CallsThePlatformInOrder) {
    LogInAll({0x501});
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(0x501), 0); }), "");
    EXPECT_THAT(WithAny({TABLE_LOCK, "vexo_model_", "vexo_utility_delete_"}, platform.TakeCalls()),
                ElementsAreArray(Joined({{OnTable("lock", "HostMgr_Dev_Logout"), "vexo_model_logout(1281, 0)"},
                                         ModulesEnded(),
                                         {OnTable("unlock", "HostMgr_Dev_Logout")}})));
}

TEST_F(Logout, Login_LeavesNothing) {
    LogInAll({0x501});
    vexo_soft::vexo_HostMgr_Dev_Logout(0x501);
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
    EXPECT_EQ(Listing(), "");
}

TEST_F(Logout, OtherLogins_StayAsTheyAre) {
    LogInAll({0x501, 0x502, 0x503});
    vexo_soft::vexo_HostMgr_Dev_Logout(0x502);
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501) + ListedAdmin(2, 0x503));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(2)));
}

TEST_F(Logout, TableLock_IsHeldWhileTheRecorderAnswersAndObjectsAreDestroyed) {
    LogInAll({0x501});
    std::vector<Lines> held;
    ON_CALL(platform, vexo_model_logout).WillByDefault([&](unsigned int, VEXO_BOOL) {
        held.push_back(platform.HeldLocks());
        return 0;
    });
    ON_CALL(platform, vexo_utility_delete_rw_lock).WillByDefault([&](vexo_rw_lock*, const char*, const char*) {
        held.push_back(platform.HeldLocks());
    });
    vexo_soft::vexo_HostMgr_Dev_Logout(0x501);
    EXPECT_THAT(held, ElementsAre(ElementsAre(TABLE_LOCK), ElementsAre(TABLE_LOCK), ElementsAre(TABLE_LOCK)));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

class LogoutRefused : public LoginFixture, public testing::WithParamInterface<int> {};

TEST_P(LogoutRefused, ByTheRecorder_WarnsAndReleasesAnyway) {
    LogInAll({0x501});
    ON_CALL(platform, vexo_model_logout).WillByDefault(Return(GetParam()));
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(0x501), 0); }),
              Warning("HostMgr_Dev_Logout", "Why vexo_model_logout hand:1281 failed!!\n"));
    EXPECT_THAT(With("vexo_utility_delete_", platform.TakeCalls()), ElementsAreArray(ModulesEnded()));
    EXPECT_EQ(Listing(), "");
}

TEST_P(LogoutRefused, ForAnUnknownHandle_WarnsAndSucceeds) {
    LogInAll({0x501});
    ON_CALL(platform, vexo_model_logout).WillByDefault(Return(GetParam()));
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(9), 0); }),
              Warning("HostMgr_Dev_Logout", "Why vexo_model_logout hand:9 failed!!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAre(OnTable("lock", "HostMgr_Dev_Logout"), "vexo_model_logout(9, 0)",
                                                  OnTable("unlock", "HostMgr_Dev_Logout")));
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501));
}

INSTANTIATE_TEST_SUITE_P(Answers, LogoutRefused, testing::Values(-1, 1, INT32_MAX));

TEST_F(Logout, UnknownHandleThatTheRecorderKnows_SucceedsWithoutAWord) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(9), 0); }), "");
    EXPECT_THAT(With("vexo_model_logout", platform.TakeCalls()), ElementsAre("vexo_model_logout(9, 0)"));
}

TEST_F(Logout, Twice_AsksTheRecorderTwiceAndSucceeds) {
    LogInAll({0x501});
    vexo_soft::vexo_HostMgr_Dev_Logout(0x501);
    platform.TakeCalls();
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(0x501), 0); }), "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAre(OnTable("lock", "HostMgr_Dev_Logout"), "vexo_model_logout(1281, 0)",
                                                  OnTable("unlock", "HostMgr_Dev_Logout")));
}

TEST_F(Logout, HandleBeyond16Bits_GoesWholeToTheRecorder) {
    LogInAll({0x2345, 0x12345});
    vexo_soft::vexo_HostMgr_Dev_Logout(0x12345);
    EXPECT_THAT(With("vexo_model_logout", platform.TakeCalls()), ElementsAre("vexo_model_logout(74565, 0)"));
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x2345));
}

class LogoutBelowOne : public LoginFixture, public testing::WithParamInterface<int> {};

TEST_P(LogoutBelowOne, SaysWhyAndTouchesNothing) {
    LogInAll({1, 0xFFFFFFFF});
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(GetParam()), -1); }),
              Error("HostMgr_Dev_Logout", "Why hLogin:" + std::to_string(GetParam()) + " < 0!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    EXPECT_EQ(Listing(), ListedAdmin(0, 1) + ListedAdmin(1, 0xFFFFFFFF));
}

INSTANTIATE_TEST_SUITE_P(Handles, LogoutBelowOne, testing::Values(0, -1, INT32_MIN));

TEST_F(Logout, StreamBufferHandle_IsNoLoginHandle) {
    LogInAll({0x501});
    ON_CALL(platform, vexo_model_logout).WillByDefault(Return(-1));
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(0x10501), 0); }),
              Warning("HostMgr_Dev_Logout", "Why vexo_model_logout hand:66817 failed!!\n"));
    EXPECT_TRUE(IsLoggedIn(0x501));
}
