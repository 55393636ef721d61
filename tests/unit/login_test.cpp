// Logging in with success: what the recorder is asked, in which order and with what, and what is kept of it.
#include "login_fixture.h"

using testing::_;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Return;

class LocalLogin : public LoginFixture {};
class RemoteLogin : public LoginFixture {};

static std::string Times(size_t count, char character) {
    return std::string(count, character);
}

// ---- at the recorder itself ----------------------------------------------------------------------------------------

TEST_F(LocalLogin, NoCredentials_CallsThePlatformInOrder) {
    LoginV2(nullptr, nullptr, nullptr);
    EXPECT_THAT(Without("vexo_utility_malloc(", platform.TakeCalls()),
                ElementsAreArray(Joined(
                    {{OnTable("lock", "HostMgr_Dev_LoginV2")},
                     ModulesMade(),
                     {"vexo_model_get_usr_info_byname(admin)", "vexo_model_login(admin, secret, 127.0.0.1, 0, 0)",
                      "vexo_model_get_usr_authority(admin)", OnTable("unlock", "HostMgr_Dev_LoginV2")}})));
}

TEST_F(LocalLogin, ThreeArguments_RunTheSameMemberWithTheFlagClear) {
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr), 1);
    const Lines calls = platform.TakeCalls();
    EXPECT_EQ(calls.front(), OnTable("lock", "HostMgr_Dev_LoginV2"));
    EXPECT_THAT(With("vexo_model_login", calls), ElementsAre("vexo_model_login(admin, secret, 127.0.0.1, 0, 0)"));
    EXPECT_EQ(calls.back(), OnTable("unlock", "HostMgr_Dev_LoginV2"));
}

TEST_F(LocalLogin, Success_PrintsNothing) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(LoginAsAdmin(), 1); }), "");
}

TEST_F(LocalLogin, UserRecord_IsZeroedBeforeItIsFilled) {
    bool zeroed = false;
    ON_CALL(platform, vexo_model_get_usr_info_byname).WillByDefault([&zeroed](const char*, vexo_dev_usr_info* info) {
        const vexo_dev_usr_info zero = {};
        zeroed = memcmp(info, &zero, sizeof(zero)) == 0;
        return 0;
    });
    LoginAsAdmin();
    EXPECT_TRUE(zeroed);
}

TEST_F(LocalLogin, LoginId_IsAllOnesBeforeItIsFilled) {
    unsigned int before = 0;
    ON_CALL(platform, vexo_model_login)
        .WillByDefault(
            [&before](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, VEXO_BOOL) {
                before = *id;
                *id = 9;
                return 0;
            });
    EXPECT_EQ(LoginAsAdmin(), 9);
    EXPECT_EQ(before, 0xFFFFFFFFu);
}

TEST_F(LocalLogin, AddressRecord_HasTheFamilyZero) {
    unsigned int family = 1;
    ON_CALL(platform, vexo_model_login)
        .WillByDefault(
            [&family](const char*, const char*, const vexo_ip_struct* ip, unsigned int*, VEXO_BOOL, VEXO_BOOL) {
                family = ip->family;
                return -1;
            });
    RawConsole([] { LoginAsAdmin(); });
    EXPECT_EQ(family, 0u);
}

TEST_F(LocalLogin, RecorderWritesNoId_AllOnesAreTheHandle) {
    ON_CALL(platform, vexo_model_login).WillByDefault(Return(0));
    EXPECT_EQ(LoginAsAdmin(), -1);
    EXPECT_EQ(Listing(), ListedAdmin(0, 0xFFFFFFFF));
}

class LocalLoginFlag : public LoginFixture, public testing::WithParamInterface<std::pair<unsigned int, std::string>> {};

TEST_P(LocalLoginFlag, LowestBit_IsWhatTheRecorderGets) {
    LoginV2(nullptr, nullptr, nullptr, GetParam().first);
    EXPECT_THAT(With("vexo_model_login", platform.TakeCalls()),
                ElementsAre("vexo_model_login(admin, secret, 127.0.0.1, " + GetParam().second + ", 0)"));
}

INSTANTIATE_TEST_SUITE_P(Flags, LocalLoginFlag,
                         testing::Values(std::pair(0u, "0"), std::pair(1u, "1"), std::pair(2u, "0"), std::pair(3u, "1"),
                                         std::pair(0xFFFFFFFEu, "0"), std::pair(0xFFFFFFFFu, "1"),
                                         std::pair(0x80000000u, "0")));

TEST_F(LocalLogin, SpareArgument_ChangesNothing) {
    Lines first;
    for (const int spare : {0, -1, 1, INT32_MAX, INT32_MIN}) {
        EXPECT_GE(LoginV2(nullptr, nullptr, nullptr, 1, spare), 1);
        const Lines calls = platform.TakeCalls();
        if (first.empty())
            first = calls;
        EXPECT_EQ(calls, first) << spare;
    }
}

TEST_F(LocalLogin, GivenAddress_IsReplacedInBothPlaces) {
    LoginV2(nullptr, nullptr, "192.168.100.200");
    EXPECT_THAT(With("vexo_model_login", platform.TakeCalls()),
                ElementsAre("vexo_model_login(admin, secret, 127.0.0.1, 0, 0)"));
    EXPECT_EQ(Listing(), ListedAdmin(0, 1));
}

TEST_F(LocalLogin, StoredNameAndPassword_AreWhatTheRecorderGets) {
    ON_CALL(platform, vexo_model_get_usr_info_byname).WillByDefault([](const char*, vexo_dev_usr_info* info) {
        strcpy(info->usr_name, "Administrator");
        strcpy(info->usr_password, "pass word");
        return 0;
    });
    LoginAsAdmin();
    EXPECT_THAT(With("vexo_model_", platform.TakeCalls()),
                ElementsAre("vexo_model_get_usr_info_byname(admin)",
                            "vexo_model_login(Administrator, pass word, 127.0.0.1, 0, 0)",
                            "vexo_model_get_usr_authority(Administrator)"));
    EXPECT_EQ(Listing(), Listed(0, 1, "Administrator", "pass word", "127.0.0.1"));
}

TEST_F(LocalLogin, LongStoredNames_GoWholeToTheRecorderAndAreKeptCut) {
    ON_CALL(platform, vexo_model_get_usr_info_byname).WillByDefault([](const char*, vexo_dev_usr_info* info) {
        strcpy(info->usr_name, Times(63, 'n').c_str());
        strcpy(info->usr_password, Times(63, 'p').c_str());
        return 0;
    });
    LoginAsAdmin();
    EXPECT_THAT(With("vexo_model_login", platform.TakeCalls()),
                ElementsAre("vexo_model_login(" + Times(63, 'n') + ", " + Times(63, 'p') + ", 127.0.0.1, 0, 0)"));
    EXPECT_EQ(Listing(), Listed(0, 1, Times(31, 'n'), Times(15, 'p'), "127.0.0.1"));
}

// ---- over the network ----------------------------------------------------------------------------------------------

TEST_F(RemoteLogin, BothCredentials_CallThePlatformInOrder) {
    LoginV2("anna", "pass", "10.0.0.5");
    EXPECT_THAT(
        Without("vexo_utility_malloc(", platform.TakeCalls()),
        ElementsAreArray(Joined({{OnTable("lock", "HostMgr_Dev_LoginV2")},
                                 ModulesMade(),
                                 {"vexo_model_remote_login(anna, pass, 10.0.0.5, 0, null, null)",
                                  "vexo_model_get_usr_authority(anna)", OnTable("unlock", "HostMgr_Dev_LoginV2")}})));
}

TEST_F(RemoteLogin, ThreeArguments_RunTheSameMember) {
    char user[] = "anna";
    char password[] = "pass";
    char ip[] = "10.0.0.5";
    EXPECT_EQ(vexo_soft::vexo_HostMgr_Dev_Login(user, password, ip), 1);
    const Lines calls = platform.TakeCalls();
    EXPECT_EQ(calls.front(), OnTable("lock", "HostMgr_Dev_LoginV2"));
    EXPECT_THAT(With("remote_login", calls),
                ElementsAre("vexo_model_remote_login(anna, pass, 10.0.0.5, 0, null, null)"));
}

TEST_F(RemoteLogin, Success_PrintsNothingAndKeepsWhatWasGiven) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(LoginRemotely(), 1); }), "");
    EXPECT_EQ(Listing(), Listed(0, 1, "anna", "pass", "10.0.0.5"));
}

TEST_F(RemoteLogin, Flag_PlaysNoPart) {
    LoginV2("anna", "pass", "10.0.0.5", 0xFFFFFFFF);
    EXPECT_THAT(With("remote_login", platform.TakeCalls()),
                ElementsAre("vexo_model_remote_login(anna, pass, 10.0.0.5, 0, null, null)"));
}

TEST_F(RemoteLogin, LoginId_IsAllOnesBeforeItIsFilled) {
    unsigned int before = 0;
    ON_CALL(platform, vexo_model_remote_login)
        .WillByDefault(
            [&before](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, char*, char*) {
                before = *id;
                *id = 9;
                return 0;
            });
    EXPECT_EQ(LoginRemotely(), 9);
    EXPECT_EQ(before, 0xFFFFFFFFu);
}

TEST_F(RemoteLogin, AddressRecord_HasTheFamilyZeroAndIsTerminated) {
    vexo_ip_struct peer = {};
    ON_CALL(platform, vexo_model_remote_login)
        .WillByDefault(
            [&peer](const char*, const char*, const vexo_ip_struct* ip, unsigned int*, VEXO_BOOL, char*, char*) {
                peer = *ip;
                return -1;
            });
    RawConsole([] { LoginV2("anna", "pass", Times(300, 'a').c_str()); });
    EXPECT_EQ(peer.family, 0u);
    EXPECT_EQ(peer.text[254], 'a');
    EXPECT_EQ(peer.text[255], '\0');
}

TEST_F(RemoteLogin, NullAddress_IsADash) {
    LoginV2("anna", "pass", nullptr);
    EXPECT_THAT(With("remote_login", platform.TakeCalls()),
                ElementsAre("vexo_model_remote_login(anna, pass, -, 0, null, null)"));
    EXPECT_EQ(Listing(), Listed(0, 1, "anna", "pass", "-"));
}

TEST_F(RemoteLogin, EmptyAddress_IsGiven) {
    LoginV2("anna", "pass", "");
    EXPECT_THAT(With("remote_login", platform.TakeCalls()),
                ElementsAre("vexo_model_remote_login(anna, pass, , 0, null, null)"));
    EXPECT_EQ(Listing(), Listed(0, 1, "anna", "pass", ""));
}

TEST_F(RemoteLogin, EmptyCredentials_AreGiven) {
    EXPECT_CALL(platform, vexo_model_remote_login(testing::StrEq(""), testing::StrEq(""), _, _, _, _, _));
    EXPECT_CALL(platform, vexo_model_get_usr_info_byname).Times(0);
    EXPECT_CALL(platform, vexo_model_get_usr_authority(testing::StrEq(""), _));
    EXPECT_EQ(LoginV2("", "", "10.0.0.5"), 1);
    EXPECT_EQ(Listing(), Listed(0, 1, "", "", "10.0.0.5"));
}

class RemoteLoginAddress : public LoginFixture, public testing::WithParamInterface<size_t> {};

TEST_P(RemoteLoginAddress, IsCutAt255ForTheRecorderAndAt39InTheRecord) {
    const std::string address = Times(GetParam(), 'a');
    LoginV2("anna", "pass", address.c_str());
    EXPECT_THAT(With("remote_login", platform.TakeCalls()),
                ElementsAre("vexo_model_remote_login(anna, pass, " + address.substr(0, 255) + ", 0, null, null)"));
    EXPECT_EQ(Listing(), Listed(0, 1, "anna", "pass", address.substr(0, 39)));
}

INSTANTIATE_TEST_SUITE_P(Lengths, RemoteLoginAddress, testing::Values(1, 38, 39, 40, 254, 255, 256, 10000));

class RemoteLoginNames : public LoginFixture, public testing::WithParamInterface<size_t> {};

TEST_P(RemoteLoginNames, GoWholeToTheRecorderAndAreKeptCutAt31And15) {
    const std::string user = Times(GetParam(), 'u');
    const std::string password = Times(GetParam(), 'p');
    EXPECT_EQ(LoginV2(user.c_str(), password.c_str(), "10.0.0.5"), 1);
    EXPECT_THAT(With("vexo_model_", platform.TakeCalls()),
                ElementsAre("vexo_model_remote_login(" + user + ", " + password + ", 10.0.0.5, 0, null, null)",
                            "vexo_model_get_usr_authority(" + user.substr(0, 31) + ")"));
    EXPECT_EQ(Listing(), Listed(0, 1, user.substr(0, 31), password.substr(0, 15), "10.0.0.5"));
}

INSTANTIATE_TEST_SUITE_P(Lengths, RemoteLoginNames, testing::Values(1, 14, 15, 16, 30, 31, 32, 33, 10000));

TEST_F(RemoteLogin, ShorterTextsInAReusedRecord_LeaveNothingOfTheLongerOnes) {
    const int longer = LoginV2("a very long user name", "long password", "2001:db8::ff00:42:8329");
    vexo_soft::vexo_HostMgr_Dev_Logout(longer);
    LoginV2("b", "c", "d");
    EXPECT_EQ(Listing(), Listed(0, 2, "b", "c", "d"));
}

// ---- both ways -----------------------------------------------------------------------------------------------------

TEST_F(LocalLogin, TableLock_IsHeldAcrossEveryCallToTheRecorder) {
    std::vector<Lines> held;
    const auto note = [&] { held.push_back(platform.HeldLocks()); };
    ON_CALL(platform, vexo_model_get_usr_info_byname).WillByDefault([&](const char*, vexo_dev_usr_info*) {
        note();
        return 0;
    });
    ON_CALL(platform, vexo_model_login)
        .WillByDefault([&](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, VEXO_BOOL) {
            note();
            *id = 1;
            return 0;
        });
    ON_CALL(platform, vexo_model_get_usr_authority).WillByDefault([&](const char*, vexo_dev_usr_authority*) {
        note();
        return 0;
    });
    LoginAsAdmin();
    EXPECT_EQ(held.size(), 3u);
    EXPECT_THAT(held, Each(ElementsAre(TABLE_LOCK)));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_F(RemoteLogin, TableLock_IsHeldAcrossTheCallToTheRecorder) {
    Lines held;
    ON_CALL(platform, vexo_model_remote_login)
        .WillByDefault([&](const char*, const char*, const vexo_ip_struct*, unsigned int* id, VEXO_BOOL, char*, char*) {
            held = platform.HeldLocks();
            *id = 1;
            return 0;
        });
    LoginRemotely();
    EXPECT_THAT(held, ElementsAre(TABLE_LOCK));
}

TEST_F(RemoteLogin, AuthorityIsRefused_LoginStands) {
    ON_CALL(platform, vexo_model_get_usr_authority).WillByDefault(Return(-1));
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(LoginRemotely(), 1); }), "");
    EXPECT_TRUE(IsLoggedIn(1));
}

TEST_F(RemoteLogin, Authority_IsFilledIntoTheRecordItself) {
    std::vector<vexo_dev_usr_authority*> fields;
    ON_CALL(platform, vexo_model_get_usr_authority).WillByDefault([&](const char*, vexo_dev_usr_authority* authority) {
        fields.push_back(authority);
        return 0;
    });
    const int first = LoginRemotely();
    LoginRemotely();
    vexo_soft::vexo_HostMgr_Dev_Logout(first);
    LoginRemotely();
    ASSERT_EQ(fields.size(), 3u);
    EXPECT_NE(fields[0], fields[1]);
    EXPECT_EQ(fields[0], fields[2]);
}

TEST_F(RemoteLogin, AuthorityOfAReusedRecord_StartsZeroed) {
    std::vector<bool> zeroed;
    ON_CALL(platform, vexo_model_get_usr_authority).WillByDefault([&](const char*, vexo_dev_usr_authority* authority) {
        const vexo_dev_usr_authority zero = {};
        zeroed.push_back(memcmp(authority, &zero, sizeof(zero)) == 0);
        memset(authority, 0xFF, sizeof(*authority));
        return 0;
    });
    vexo_soft::vexo_HostMgr_Dev_Logout(LoginRemotely());
    LoginRemotely();
    EXPECT_THAT(zeroed, ElementsAre(true, true));
}

class LoginId : public LoginFixture, public testing::WithParamInterface<unsigned int> {};

TEST_P(LoginId, FromTheRecorder_IsReturnedAndKeptAsItIs) {
    platform.NextLogin(GetParam());
    EXPECT_EQ(LoginAsAdmin(), static_cast<int>(GetParam()));
    EXPECT_EQ(Listing(), ListedAdmin(0, GetParam()));
    platform.NextLogin(GetParam());
    EXPECT_EQ(LoginRemotely(), static_cast<int>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Values, LoginId,
                         testing::Values(1, 127, 128, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0x12345, 0x7FFFFFFF, 0x80000000,
                                         0xFFFFFFFE, 0xFFFFFFFF));

TEST_F(LocalLogin, IdZero_IsReturnedAndLeavesTheSlotFree) {
    const StatedLeak leak;  // the slot counts as free, so the next login overwrites its objects
    platform.NextLogin(0);
    EXPECT_EQ(LoginAsAdmin(), 0);
    EXPECT_EQ(Listing(), "");
    platform.NextLogin(7);
    EXPECT_EQ(LoginAsAdmin(), 7);
    EXPECT_EQ(Listing(), ListedAdmin(0, 7));
}
