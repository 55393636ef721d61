// The frames that the exported functions run in: every function before initialisation, on nobody's handle, and on a
// login's. What single functions do beyond their frame stands in frame_function_test.cpp.
#include "exported_functions.h"
#include "hostmgr_dev.h"
#include "platform_mock.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::ValuesIn;

static const std::vector<std::string> LOOKUP_CALLS = {
    "lock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)",
    "unlock(vexo_hostmgr_res_manage m_lock, vexo_hostmgr_resource, HostMgrGetUserInfo)"};

class FrameTest : public HostMgrTest, public testing::WithParamInterface<ExportedFunction> {
protected:
    /** Calls the function; its result and what it wrote are kept. */
    void Call(int handle) {
        console = Console([this, handle] { result = GetParam().call(handle); });
        calls = platform.TakeCalls();
    }

    /** A message of the function itself. */
    static std::string Says(const std::string& text) { return Error(GetParam().name, text); }

    /** What comes before the lookup on every path. */
    static std::string Preface(int handle) {
        if (GetParam().frame == Frame::NOT_SUPPORTED_LOGIN)
            return Says("Not support\n");
        if (GetParam().name != std::string("vexo_HostMgr_Dev_StopCapturePicture"))
            return "";
        char line[64];
        snprintf(line, sizeof(line), "hCapture:0x%x, hLogin 0x%x\n", handle, handle & 0xFFFF);
        return line;
    }

    /** The login that the function looks up for a handle. */
    static int LoginOf(int handle) {
        const bool derived = GetParam().frame == Frame::DERIVED || GetParam().frame == Frame::STREAM;
        return derived ? handle & 0xFFFF : handle;
    }

    int result = 12345;
    std::string console;
    std::vector<std::string> calls;
};

TEST(Catalogue, Functions_Are70WithInit) {
    EXPECT_EQ(ExportedFunctions().size() + 1, 70u);
    EXPECT_EQ(ExportedFunctions({Frame::NOT_SUPPORTED, Frame::NOT_SUPPORTED_LOGIN, Frame::LOOKUP}).size(), 29u);
    EXPECT_EQ(ExportedFunctions({Frame::NOT_SUPPORTED, Frame::NOT_SUPPORTED_LOGIN}).size(), 28u);
}

// ---- before initialisation -----------------------------------------------------------------------------------------

class BeforeInit : public FrameTest {};

TEST_P(BeforeInit, AnyHandle_SaysNotInitAndTouchesNothing) {
    const bool placeholder = GetParam().frame == Frame::NOT_SUPPORTED || GetParam().frame == Frame::NOT_SUPPORTED_LOGIN;
    for (const int handle : {1, 0, -1, 0x50007}) {
        Call(handle);
        EXPECT_EQ(console, (placeholder ? Says("Not support\n") : "") + Says("not init\n"));
        EXPECT_EQ(result, -1);
        EXPECT_THAT(calls, IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Every, BeforeInit, ValuesIn(ExportedFunctions()), ByName());

// ---- not supported -------------------------------------------------------------------------------------------------

class NotSupported : public FrameTest {};

TEST_P(NotSupported, AfterInit_SaysOnlySo) {
    Init();
    Call(1);
    EXPECT_EQ(console, Says("Not support\n"));
    EXPECT_EQ(result, -1);
    EXPECT_THAT(calls, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Every, NotSupported, ValuesIn(ExportedFunctions({Frame::NOT_SUPPORTED})), ByName());

class PlaceholderWithLogin : public FrameTest {};

TEST_P(PlaceholderWithLogin, KnownLogin_LooksItUpAndFails) {
    const int hLogin = Login(7);
    Call(hLogin);
    EXPECT_EQ(console, GetParam().frame == Frame::LOOKUP ? "" : Says("Not support\n"));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(calls, LOOKUP_CALLS);
}

INSTANTIATE_TEST_SUITE_P(Every, PlaceholderWithLogin,
                         ValuesIn(ExportedFunctions({Frame::NOT_SUPPORTED_LOGIN, Frame::LOOKUP})), ByName());

// ---- nobody's handle -----------------------------------------------------------------------------------------------

class NotLoggedIn : public FrameTest {};

TEST_P(NotLoggedIn, UnknownHandle_SaysSoTwiceAndFails) {
    Login(8);
    const int handle = 0x50007;
    Call(handle);
    char unknown[64];
    snprintf(unknown, sizeof(unknown), "Not find User 0x%x!!\n", LoginOf(handle));
    EXPECT_EQ(console, Preface(handle) + Error("HostMgrGetUserInfo", unknown) +
                           Says("hLogin:" + std::to_string(LoginOf(handle)) + " not logged in!!\n"));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(calls, LOOKUP_CALLS);
}

TEST_P(NotLoggedIn, HandleLoggedOut_SaysSoTwiceAndFails) {
    const int hLogin = Login(7);
    vexo_soft::vexo_HostMgr_Dev_Logout(hLogin);
    platform.TakeCalls();
    Call(hLogin);
    EXPECT_EQ(console, Preface(hLogin) + Error("HostMgrGetUserInfo", "Not find User 0x7!!\n") +
                           Says("hLogin:7 not logged in!!\n"));
    EXPECT_EQ(result, -1);
    EXPECT_EQ(calls, LOOKUP_CALLS);
}

// A derived handle may be positive and still name login 0.
TEST_P(NotLoggedIn, LoginZero_IsRefusedWithoutLocking) {
    Init();
    const int handle = LoginOf(0x50000) == 0 ? 0x50000 : 0;
    Call(handle);
    EXPECT_EQ(console, Preface(handle) + Error("HostMgrGetUserInfo", "Why hLogin:0 < 0!!\n") +
                           Says("hLogin:0 not logged in!!\n"));
    EXPECT_EQ(result, -1);
    EXPECT_THAT(calls, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Every, NotLoggedIn,
                         ValuesIn(ExportedFunctions({Frame::LOGIN, Frame::DERIVED, Frame::STREAM, Frame::LOOKUP,
                                                     Frame::NOT_SUPPORTED_LOGIN})),
                         ByName());

class NegativeLogin : public FrameTest {};

TEST_P(NegativeLogin, NegativeHandle_IsRefusedWithoutLocking) {
    Init();
    Call(-3);
    EXPECT_EQ(console,
              Preface(-3) + Error("HostMgrGetUserInfo", "Why hLogin:-3 < 0!!\n") + Says("hLogin:-3 not logged in!!\n"));
    EXPECT_EQ(result, -1);
    EXPECT_THAT(calls, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Every, NegativeLogin,
                         ValuesIn(ExportedFunctions({Frame::LOGIN, Frame::LOOKUP, Frame::NOT_SUPPORTED_LOGIN})),
                         ByName());

// ---- stream buffer handles -----------------------------------------------------------------------------------------

class StreamHandle : public FrameTest {};

TEST_P(StreamHandle, ZeroHandle_IsRefusedBeforeAnyLookup) {
    Login();
    Call(0);
    EXPECT_EQ(console, Says("hID 0x0\n"));
    EXPECT_EQ(result, -1);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_P(StreamHandle, NegativeHandle_IsRefusedBeforeAnyLookup) {
    Login();
    Call(static_cast<int>(0x80000001u));
    EXPECT_EQ(console, Says("hID 0x80000001\n"));
    EXPECT_EQ(result, -1);
    EXPECT_THAT(calls, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Every, StreamHandle, ValuesIn(ExportedFunctions({Frame::STREAM})), ByName());

// ---- a login's handle ----------------------------------------------------------------------------------------------

class KnownLogin : public FrameTest {
protected:
    void ExpectFound() {
        EXPECT_THAT(console, Not(HasSubstr("not logged in")));
        ASSERT_GE(calls.size(), LOOKUP_CALLS.size());
        EXPECT_EQ(std::vector<std::string>(calls.begin(), calls.begin() + 2), LOOKUP_CALLS);
    }
};

TEST_P(KnownLogin, ItsHandle_IsFound) {
    Call(Login(7));
    ExpectFound();
}

INSTANTIATE_TEST_SUITE_P(Every, KnownLogin, ValuesIn(ExportedFunctions({Frame::LOGIN, Frame::DERIVED, Frame::STREAM})),
                         ByName());

class KnownDerived : public KnownLogin {};

TEST_P(KnownDerived, AnyUpperHalf_IsFound) {
    Login(0x8007);
    for (const unsigned int upper : {0x0u, 0x1u, 0x80u, 0x23Fu, 0x7FFFu}) {
        Call(static_cast<int>(upper << 16 | 0x8007));
        ExpectFound();
    }
}

INSTANTIATE_TEST_SUITE_P(Every, KnownDerived, ValuesIn(ExportedFunctions({Frame::DERIVED, Frame::STREAM})), ByName());

class KnownDerivedNegative : public KnownLogin {};

TEST_P(KnownDerivedNegative, NegativeHandle_IsFound) {
    Login(7);
    Call(static_cast<int>(0xFFFF0007u));
    ExpectFound();
}

INSTANTIATE_TEST_SUITE_P(Every, KnownDerivedNegative, ValuesIn(ExportedFunctions({Frame::DERIVED})), ByName());
