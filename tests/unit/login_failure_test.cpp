// Logins that fail: every message, what the recorder is still asked, and what is left of the record that was taken.
// The failure exit releases "the handle that equals the slot index"; agents rely on what follows from that.
#include "login_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Return;

class LoginFailure : public LoginFixture {};
class LoginFailureExit : public LoginFixture {};

/** The console text of a failed login. */
static std::string Refusal(const std::string& text) {
    return Error("HostMgr_Dev_LoginV2", text + "\n");
}

// ---- messages ------------------------------------------------------------------------------------------------------

class LoginNotInited : public HostMgrTest {};

TEST_F(LoginNotInited, Login_SaysSoAndTouchesNothing) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr), -1); }),
              Error("vexo_HostMgr_Dev_Login", "not init\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(LoginNotInited, LoginV2_SaysSoAndTouchesNothing) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_LoginV2(nullptr, nullptr, nullptr, 0, 0), -1); }),
              Error("vexo_HostMgr_Dev_LoginV2", "not init\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(LoginNotInited, Logout_SaysSoAndTouchesNothing) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Logout(1), -1); }),
              Error("vexo_HostMgr_Dev_Logout", "not init\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// What the recorder answers to say no, apart from 0.
class LoginRefused : public LoginFixture, public testing::WithParamInterface<int> {};

TEST_P(LoginRefused, NoUserAdmin_SaysSoAndAsksNoMore) {
    ON_CALL(platform, vexo_model_get_usr_info_byname).WillByDefault(Return(GetParam()));
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginAsAdmin(), -1); }), Refusal("vexo_model_get_usr_info_byname failed !!"));
    EXPECT_THAT(With("vexo_model_", platform.TakeCalls()), ElementsAre("vexo_model_get_usr_info_byname(admin)"));
}

TEST_P(LoginRefused, LocalLogin_SaysSoAndAsksNoMore) {
    ON_CALL(platform, vexo_model_login).WillByDefault(Return(GetParam()));
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginAsAdmin(), -1); }), Refusal("vexo_model_login failed !!"));
    EXPECT_THAT(
        With("vexo_model_", platform.TakeCalls()),
        ElementsAre("vexo_model_get_usr_info_byname(admin)", "vexo_model_login(admin, secret, 127.0.0.1, 0, 0)"));
}

TEST_P(LoginRefused, RemoteLogin_SaysSoAndAsksNoMore) {
    ON_CALL(platform, vexo_model_remote_login).WillByDefault(Return(GetParam()));
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginRemotely(), -1); }), Refusal("vexo_model_remote_login failed !!"));
    EXPECT_THAT(With("vexo_model_", platform.TakeCalls()),
                ElementsAre("vexo_model_remote_login(anna, pass, 10.0.0.5, 0, null, null)"));
}

INSTANTIATE_TEST_SUITE_P(Answers, LoginRefused, testing::Values(-1, 1, INT32_MAX, INT32_MIN));

TEST_F(LoginFailure, RefusedWithAnIdWritten_IsStillAFailure) {
    ON_CALL(platform, vexo_model_remote_login)
        .WillByDefault([](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, char*, char*) {
            *id = 5;
            return -1;
        });
    RawConsole([] { EXPECT_EQ(LoginRemotely(), -1); });
    EXPECT_EQ(Listing(), "");
}

struct OneCredential {
    const char* user;
    const char* password;
};

static void PrintTo(const OneCredential& given, std::ostream* out) {
    const auto text = [](const char* credential) {
        return credential != nullptr ? "\"" + std::string(credential) + "\"" : "null";
    };
    *out << "user " << text(given.user) << " password " << text(given.password);
}

class LoginWithOneCredential : public LoginFixture, public testing::WithParamInterface<OneCredential> {};

TEST_P(LoginWithOneCredential, IsRefusedWithoutAskingTheRecorder) {
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginV2(GetParam().user, GetParam().password, "10.0.0.5"), -1); }),
              Refusal("vexo_model_remote_login failed !!"));
    EXPECT_THAT(With("vexo_model_", platform.TakeCalls()), IsEmpty());
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(0)));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Given, LoginWithOneCredential,
                         testing::Values(OneCredential{"anna", nullptr}, OneCredential{nullptr, "pass"},
                                         OneCredential{"", nullptr}, OneCredential{nullptr, ""}));

TEST_F(LoginFailure, Message_IsPrintedBeforeTheRecordIsReleasedAndTheLockGivenBack) {
    ON_CALL(platform, vexo_utility_delete_lock).WillByDefault([](vexo_lock*, const char*, const char*) {
        printf("released\n");
    });
    const std::string console = Console([] { LoginV2("anna", nullptr, nullptr); });
    EXPECT_EQ(console.find(Refusal("vexo_model_remote_login failed !!") + "released\n"), 0u) << console;
    const Lines calls = platform.TakeCalls();
    EXPECT_EQ(calls.front(), OnTable("lock", "HostMgr_Dev_LoginV2"));
    EXPECT_EQ(calls.back(), OnTable("unlock", "HostMgr_Dev_LoginV2"));
}

TEST_F(LoginFailure, AnyFailure_LeavesNoLockHeld) {
    RawConsole([] { LoginV2("anna", nullptr, nullptr); });
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
    FailLogin();
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

// ---- no module objects ---------------------------------------------------------------------------------------------

/** The nth of a login's seven module objects cannot be allocated. */
class LoginWithoutMemory : public LoginFixture, public testing::WithParamInterface<int> {
protected:
    /** The calls without those that name the object which is missing. */
    static Lines WithoutMissing(const Lines& calls) {
        static const char* const MODULES[] = {"vexo_hostmgr_control",  "vexo_hostmgr_lv",    "vexo_hostmgr_playback",
                                              "vexo_hostmgr_talkback", "vexo_hostmgr_alarm", "vexo_hostmgr_queryfile",
                                              "vexo_hostmgr_capture"};
        return Without(MODULES[GetParam() - 1], calls);
    }
};

TEST_P(LoginWithoutMemory, SaysSoAndDestroysTheOthersUnderTheTableLock) {
    FailNothrowNew(GetParam());
    EXPECT_EQ(Console([] { EXPECT_EQ(LoginAsAdmin(), -1); }), Refusal("HostMgrMallocUserInfo failed!!"));
    EXPECT_THAT(WithAny({TABLE_LOCK, "vexo_utility_new_", "vexo_utility_delete_", "vexo_model_"}, platform.TakeCalls()),
                ElementsAreArray(Joined({{OnTable("lock", "HostMgr_Dev_LoginV2")},
                                         WithoutMissing(ModulesMade()),
                                         WithoutMissing(ModulesEnded()),
                                         {OnTable("unlock", "HostMgr_Dev_LoginV2")}})));
}

TEST_P(LoginWithoutMemory, LeavesNothingBehind) {
    FailNothrowNew(GetParam());
    RawConsole([] { LoginAsAdmin(); });
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_P(LoginWithoutMemory, InAHigherSlot_LeavesTheOtherLoginsAlone) {
    LogInAll({1, 2});
    FailNothrowNew(GetParam());
    RawConsole([] { EXPECT_EQ(LoginRemotely(), -1); });
    EXPECT_EQ(Listing(), ListedAdmin(0, 1) + ListedAdmin(1, 2));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(2)));
}

TEST_P(LoginWithoutMemory, NextLogin_TakesTheSameSlot) {
    FailNothrowNew(GetParam());
    RawConsole([] { LoginAsAdmin(); });
    EXPECT_EQ(LoginAsAdmin(), 1);
    EXPECT_EQ(Listing(), ListedAdmin(0, 1));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
}

INSTANTIATE_TEST_SUITE_P(Modules, LoginWithoutMemory, testing::Range(1, 8));

// ---- the failure exit ----------------------------------------------------------------------------------------------

TEST_F(LoginFailureExit, SlotZero_DestroysItsOwnObjectsInOrderUnderTheTableLock) {
    ON_CALL(platform, vexo_model_login).WillByDefault(Return(-1));
    RawConsole([] { LoginAsAdmin(); });
    const Lines calls = platform.TakeCalls();
    EXPECT_THAT(With("vexo_utility_delete_", calls), ElementsAreArray(ModulesEnded()));
    EXPECT_EQ(calls.back(), OnTable("unlock", "HostMgr_Dev_LoginV2"));
    EXPECT_EQ(With(TABLE_LOCK, calls).size(), 2u);
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
}

/** A way to fail once the record has been taken. */
struct FailureKind {
    const char* name;
    void (*refuse)(Platform& platform);
    const char* user;
    const char* password;
};

static void PrintTo(const FailureKind& kind, std::ostream* out) {
    *out << kind.name;
}

static void RefuseAdmin(Platform& platform) {
    ON_CALL(platform, vexo_model_get_usr_info_byname).WillByDefault(Return(-1));
}
static void RefuseLocally(Platform& platform) {
    ON_CALL(platform, vexo_model_login).WillByDefault(Return(-1));
}
static void RefuseRemotely(Platform& platform) {
    ON_CALL(platform, vexo_model_remote_login).WillByDefault(Return(-1));
}
static void RefuseNothing(Platform&) {}

class LoginFailureOfKind : public LoginFixture, public testing::WithParamInterface<FailureKind> {
protected:
    void FailThisWay() {
        GetParam().refuse(platform);
        RawConsole([] { EXPECT_EQ(LoginV2(GetParam().user, GetParam().password, nullptr), -1); });
    }
};

TEST_P(LoginFailureOfKind, InSlotZero_LeavesNothing) {
    FailThisWay();
    EXPECT_THAT(platform.LiveLocks(), ElementsAre(TABLE_LOCK));
    EXPECT_THAT(platform.LiveMemory(), IsEmpty());
    EXPECT_EQ(Listing(), "");
}

TEST_P(LoginFailureOfKind, InAHigherSlot_LeavesItsObjectsAllocated) {
    LogInAll({0x501});
    FailThisWay();
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(2)));
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501));
}

TEST_P(LoginFailureOfKind, InTheSlotOfAHandlesNumber_EndsThatLogin) {
    LogInAll({0x501, 2});
    FailThisWay();
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501));
    EXPECT_THAT(With("vexo_utility_delete_", platform.TakeCalls()), ElementsAreArray(ModulesEnded()));
}

INSTANTIATE_TEST_SUITE_P(Kinds, LoginFailureOfKind,
                         testing::Values(FailureKind{"NoAdmin", RefuseAdmin, nullptr, nullptr},
                                         FailureKind{"LocalRefused", RefuseLocally, nullptr, nullptr},
                                         FailureKind{"RemoteRefused", RefuseRemotely, "anna", "pass"},
                                         FailureKind{"OnlyUser", RefuseNothing, "anna", nullptr},
                                         FailureKind{"OnlyPassword", RefuseNothing, nullptr, "pass"}),
                         [](const testing::TestParamInfo<FailureKind>& kind) { return std::string(kind.param.name); });

TEST_F(LoginFailureExit, SlotZero_IsTheOneReleasedAlthoughHigherSlotsAreFreeToo) {
    LogInAll({0x501, 0x502});
    vexo_soft::vexo_HostMgr_Dev_Logout(0x501);
    FailLogin();
    EXPECT_EQ(Listing(), ListedAdmin(1, 0x502));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));
}

TEST_F(LoginFailureExit, HigherSlot_DestroysNothingAndLeavesItsObjectsAllocated) {
    LogInAll({0x501});
    FailLogin();
    EXPECT_THAT(With("delete", platform.TakeCalls()), IsEmpty());
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(2)));
    EXPECT_EQ(platform.LiveMemory().size(), 6u);
}

TEST_F(LoginFailureExit, HigherSlot_IsFreeAndListsAndDumpsNothing) {
    LogInAll({0x501});
    FailLogin();
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501));
    TakePieces();
    platform.Diagnostics().client->diagnose(1000, CollectPrint);
    EXPECT_THAT(With("Host_1>", TakePieces()), IsEmpty());
}

TEST_F(LoginFailureExit, HigherSlot_NextLoginOverwritesTheLeftOverObjects) {
    const StatedLeak leak;
    LogInAll({0x501});
    FailLogin();
    platform.TakeCalls();
    EXPECT_EQ(LoginAsAdmin(), 0x502);
    const Lines calls = platform.TakeCalls();
    EXPECT_THAT(With("vexo_utility_new_", calls), ElementsAreArray(ModulesMade()));
    EXPECT_THAT(With("delete", calls), IsEmpty());
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501) + ListedAdmin(1, 0x502));
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(3)));
}

TEST_F(LoginFailureExit, HigherSlot_OverwrittenObjectsOutliveTheLoginThatOverwroteThem) {
    const StatedLeak leak;
    LogInAll({0x501});
    FailLogin();
    MockLock& left = platform.Lock("vexo_hostmgr_control m_lock");
    LoginAsAdmin();
    MockLock& taken = platform.Lock("vexo_hostmgr_control m_lock");
    vexo_soft::vexo_HostMgr_Dev_Logout(0x502);
    EXPECT_FALSE(left.Deleted());
    EXPECT_TRUE(taken.Deleted());
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(2)));
}

TEST_F(LoginFailureExit, EachFailureInAHigherSlot_LeavesOneMoreSetOfObjects) {
    const StatedLeak leak;
    LogInAll({0x501});
    FailLogin();
    FailLogin();
    FailLogin();
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(4)));
}

TEST_F(LoginFailureExit, HandleEqualToTheSlotIndex_LosesItsLogin) {
    LogInAll({1});
    MockLock& other = platform.Lock("vexo_hostmgr_control m_lock");
    FailLogin();  // takes slot 1
    EXPECT_TRUE(other.Deleted());
    EXPECT_FALSE(IsLoggedIn(1));
    EXPECT_EQ(Listing(), "");
    EXPECT_THAT(platform.LiveLocks(), ElementsAreArray(LocksOf(1)));  // those of the failed login
}

TEST_F(LoginFailureExit, HandleEqualToTheSlotIndex_IsReleasedAsByALogoutThatTellsTheRecorderNothing) {
    LogInAll({1});
    FailLogin();
    const Lines calls = platform.TakeCalls();
    EXPECT_THAT(With("vexo_utility_delete_", calls), ElementsAreArray(ModulesEnded()));
    EXPECT_THAT(With("vexo_model_logout", calls), IsEmpty());
    EXPECT_EQ(calls.back(), OnTable("unlock", "HostMgr_Dev_LoginV2"));
}

TEST_F(LoginFailureExit, HandleEqualToTheSlotIndex_WhereverItsSlotIs) {
    LogInAll({0x501, 5, 0x503, 0x504, 0x505});
    FailLogin();  // takes slot 5
    EXPECT_FALSE(IsLoggedIn(5));
    EXPECT_EQ(Listing(), ListedAdmin(0, 0x501) + ListedAdmin(2, 0x503) + ListedAdmin(3, 0x504) + ListedAdmin(4, 0x505));
}

TEST_F(LoginFailureExit, TwoHandlesEqualToTheSlotIndex_OnlyTheLowerSlotLosesItsLogin) {
    LogInAll({3, 0x502, 3});
    FailLogin();  // takes slot 3
    EXPECT_EQ(Listing(), ListedAdmin(1, 0x502) + ListedAdmin(2, 3));
}

TEST_F(LoginFailureExit, RecordThatLostItsLogin_IsTheNextOneTaken) {
    LogInAll({1});
    FailLogin();
    EXPECT_EQ(LoginAsAdmin(), 2);
    EXPECT_EQ(Listing(), ListedAdmin(0, 2));
}

TEST_F(LoginFailureExit, AuthorityOfTheRecordThatLostItsLogin_IsZeroed) {
    std::vector<bool> zeroed;
    ON_CALL(platform, vexo_model_get_usr_authority).WillByDefault([&](const char*, vexo_dev_usr_authority* authority) {
        const vexo_dev_usr_authority zero = {};
        zeroed.push_back(memcmp(authority, &zero, sizeof(zero)) == 0);
        memset(authority, 0xFF, sizeof(*authority));
        return 0;
    });
    LogInAll({1});
    FailLogin();
    LogInAll({2});
    EXPECT_THAT(zeroed, ElementsAre(true, true));
}
