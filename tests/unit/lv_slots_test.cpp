// The stream buffers' slots: creating and destroying them, and which slot a handle names.
#include "lv_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using namespace vexo_soft;

class LvCreate : public LvFixture {};
class LvHandle : public LvFixture {};
class LvDestroy : public LvFixture {};

constexpr int SLOTS = 128;

// ---- create --------------------------------------------------------------------------------------------------------

TEST_F(LvCreate, FirstSlot_HandleIsTheLoginNumber) {
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), LOGIN); }), "");
}

TEST_F(LvCreate, LaterSlots_HandleCarriesTheIndexInItsHighHalf) {
    for (int slot = 0; slot < SLOTS; ++slot)
        EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), slot << 16 | LOGIN);
}

TEST_F(LvCreate, Slot_IsClaimedUnderTheLockAndNothingElseIsAsked) {
    vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLvLock("HostMgr_Dev_CreateRealStreamBuffer")));
}

TEST_F(LvCreate, SameChannelAndStreamAgain_TakesAnotherSlot) {
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 7, 2), LOGIN);
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 7, 2), 0x10000 | LOGIN);
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 7, 2), 0x20000 | LOGIN);
}

TEST_F(LvCreate, Buffer129_FailsAndGivesTheLockBack) {
    for (int slot = 0; slot < SLOTS; ++slot)
        Create();
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), -1); }),
              Error("HostMgr_Dev_CreateRealStreamBuffer", "Not find !!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLvLock("HostMgr_Dev_CreateRealStreamBuffer")));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_F(LvCreate, Buffer129_SaysSoBeforeItGivesTheLockBack) {
    for (int slot = 0; slot < SLOTS; ++slot)
        Create();
    MockRwLock& lock = platform.RwLock(LV_LOCK);
    ON_CALL(lock, wr_lock).WillByDefault(testing::Return(0));
    ON_CALL(lock, unlock).WillByDefault([](const char*, const char*) { return printf("unlocked\n"); });
    EXPECT_EQ(Console([] { vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1); }),
              Error("HostMgr_Dev_CreateRealStreamBuffer", "Not find !!\n") + "unlocked\n");
}

TEST_F(LvCreate, AfterADestroyInAFullTable_TakesTheFreedSlot) {
    for (int slot = 0; slot < SLOTS; ++slot)
        Create();
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(77 << 16 | LOGIN);
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), 77 << 16 | LOGIN);
}

TEST_F(LvCreate, SeveralFreeSlots_TakesTheLowest) {
    for (int slot = 0; slot < 5; ++slot)
        Create();
    for (const int slot : {3, 1, 4})
        vexo_HostMgr_Dev_DestroyRealStreamBuffer(slot << 16 | LOGIN);
    for (const int slot : {1, 3, 4, 5})
        EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), slot << 16 | LOGIN);
}

TEST_F(LvCreate, OtherLogin_HasSlotsOfItsOwn) {
    LogInAll({0x502});
    for (int slot = 0; slot < SLOTS; ++slot)
        Create();
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(0x502, 1, 1), 0x502);
}

TEST_F(LvCreate, ReusedSlot_StartsAfresh) {
    const int hID = Create(1, 1);
    Read(hID);
    Read(hID);
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 0);
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID);
    EXPECT_EQ(Create(9, 2), hID);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(2, 8)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(2, "2:1", 8), FirstGet(128, 8)));
}

struct CreateParam {
    unsigned int channel;
    unsigned int stream;
};

static void PrintTo(const CreateParam& param, std::ostream* out) {
    *out << "channel " << param.channel << " stream " << param.stream;
}

class LvCreateRefused : public LvFixture, public testing::WithParamInterface<CreateParam> {};

// The numbers are printed as signed ones.
TEST_P(LvCreateRefused, SaysWhyAndTakesNoLock) {
    const CreateParam param = GetParam();
    const std::string numbers = "Invalid Param:dwChannel " + std::to_string(static_cast<int>(param.channel)) +
                                ", dwStreamIdx " + std::to_string(static_cast<int>(param.stream)) + " \n";
    EXPECT_EQ(
        Console([&] { EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, param.channel, param.stream), -1); }),
        Error("HostMgr_Dev_CreateRealStreamBuffer", numbers));
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(LookupCalls()));
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), LOGIN);
}

INSTANTIATE_TEST_SUITE_P(Params, LvCreateRefused,
                         testing::Values(CreateParam{257, 1}, CreateParam{0x7FFFFFFF, 1}, CreateParam{0x80000000, 2},
                                         CreateParam{0xFFFFFFFF, 1}, CreateParam{1, 0}, CreateParam{1, 3},
                                         CreateParam{1, 128}, CreateParam{1, 0x80000001}, CreateParam{1, 0xFFFFFFFF},
                                         CreateParam{300, 5}));

class LvCreateAccepted : public LvFixture, public testing::WithParamInterface<CreateParam> {};

TEST_P(LvCreateAccepted, ReadsFromTheChannelBefore) {
    const int hID = Create(GetParam().channel, GetParam().stream);
    const unsigned int index = GetParam().channel - 1;
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(GetParam().stream, index)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(GetParam().stream, std::to_string(GetParam().stream) + ":1", index),
                                              FirstGet(128, index)));
}

// Channel 0 passes: the model library gets 0xFFFFFFFF and decides.
INSTANTIATE_TEST_SUITE_P(Params, LvCreateAccepted,
                         testing::Values(CreateParam{0, 1}, CreateParam{0, 2}, CreateParam{1, 1}, CreateParam{1, 2},
                                         CreateParam{255, 1}, CreateParam{256, 1}, CreateParam{256, 2}));

TEST_F(LvCreate, ChannelZero_IsHandedOutAsZero) {
    const int hID = Create(0, 1);
    ReadOutputs out;
    EXPECT_EQ(Read(hID, &out), 0);
    EXPECT_EQ(out.channel, 0u);
}

// ---- handles -------------------------------------------------------------------------------------------------------

/** An operation that takes a stream buffer's handle. */
struct HandleOperation {
    const char* name;
    int (*run)(int hID);
    int unknown;              // its answer to a handle that names no buffer
    const char* unknownText;  // what it then says
};

static void PrintTo(const HandleOperation& operation, std::ostream* out) {
    *out << operation.name;
}

static int RunRead(int hID) {
    ReadOutputs out;
    return vexo_HostMgr_Dev_ReadRealOneFrame(hID, &out.channel, &out.stream, &out.frame, &out.length, &out.info,
                                             &out.flags);
}
static int RunEnableAudio(int hID) {
    return vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 1);
}

static const HandleOperation HANDLE_OPERATIONS[] = {
    {"ReadRealOneFrame", RunRead, -1, ""},
    {"ReleaseRealOneFrame", vexo_HostMgr_Dev_ReleaseRealOneFrame, 0, ""},
    {"DestroyRealStreamBuffer", vexo_HostMgr_Dev_DestroyRealStreamBuffer, -1, ""},
    {"RealStreamBufferEnableAudio", RunEnableAudio, -1, "index == -1\n"},
};

class LvHandleOf : public LvFixture, public testing::WithParamInterface<HandleOperation> {
protected:
    /** The operation does not find a buffer of that handle, and does nothing but look under the lock. */
    void ExpectUnknown(int hID) {
        const HandleOperation operation = GetParam();
        const std::string member = std::string("HostMgr_Dev_") + operation.name;
        const std::string text = *operation.unknownText != '\0' ? Error(member, operation.unknownText) : "";
        platform.TakeCalls();
        EXPECT_EQ(Console([&] { EXPECT_EQ(operation.run(hID), operation.unknown); }), text) << std::hex << hID;
        EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLvLock(member))) << std::hex << hID;
        EXPECT_THAT(platform.HeldLocks(), IsEmpty());
    }
};

TEST_P(LvHandleOf, OpenBuffer_IsFoundWithoutAWord) {
    Create();
    const int hID = Create();
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(GetParam().run(hID), 0); }), "");
    const Lines calls = platform.TakeCalls();
    const Lines locks = UnderLvLock(std::string("HostMgr_Dev_") + GetParam().name);
    EXPECT_THAT(Without("_get_frame(", calls), ElementsAreArray(locks));
}

TEST_P(LvHandleOf, SlotThatIsFree_IsNotFound) {
    Create();
    ExpectUnknown(1 << 16 | LOGIN);
    ExpectUnknown(127 << 16 | LOGIN);
}

TEST_P(LvHandleOf, NoBufferAtAll_IsNotFound) {
    ExpectUnknown(LOGIN);
}

TEST_P(LvHandleOf, SlotOutOfRange_IsNotFound) {
    for (int slot = 0; slot < SLOTS; ++slot)
        Create();
    ExpectUnknown(128 << 16 | LOGIN);
    ExpectUnknown(0xFF << 16 | LOGIN);
    ExpectUnknown(0x7FFF << 16 | LOGIN);
}

TEST_P(LvHandleOf, BufferThatWasDestroyed_IsNotFound) {
    const int hID = Create();
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID);
    ExpectUnknown(hID);
}

TEST_P(LvHandleOf, BufferOfAnotherLogin_IsNotFound) {
    Create();
    const int hID = Create();
    LogInAll({0x502});
    Create(1, 1, 0x502);
    ExpectUnknown((hID & ~0xFFFF) | 0x502);
}

// A login beyond 16 bits gets handles that name another login, or none: its buffers cannot be reached.
TEST_P(LvHandleOf, BufferOfALoginBeyond16Bits_IsNotReached) {
    LogInAll({0x10501});
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(0x10501, 1, 1), LOGIN);
    ExpectUnknown(LOGIN);
}

TEST_P(LvHandleOf, HandleOfZeroOrLess_IsRefusedBeforeTheLookup) {
    for (const int hID : {0, -1, INT32_MIN, INT32_MIN + LOGIN}) {
        char text[32];
        snprintf(text, sizeof(text), "hID 0x%x\n", static_cast<unsigned int>(hID));
        EXPECT_EQ(Console([&] { EXPECT_EQ(GetParam().run(hID), -1); }),
                  Error(std::string("vexo_HostMgr_Dev_") + GetParam().name, text));
        EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    }
}

TEST_P(LvHandleOf, UnknownLogin_IsNamedByTheLowHalf) {
    EXPECT_EQ(Console([] { EXPECT_EQ(GetParam().run(3 << 16 | 0x777), -1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x777!!\n") +
                  Error(std::string("vexo_HostMgr_Dev_") + GetParam().name, "hLogin:1911 not logged in!!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(LookupCalls()));
}

TEST_P(LvHandleOf, LoginThatEnded_IsNotLoggedIn) {
    const int hID = Create();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_EQ(Console([&] { EXPECT_EQ(GetParam().run(hID), -1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x501!!\n") +
                  Error(std::string("vexo_HostMgr_Dev_") + GetParam().name, "hLogin:1281 not logged in!!\n"));
}

INSTANTIATE_TEST_SUITE_P(Operations, LvHandleOf, testing::ValuesIn(HANDLE_OPERATIONS),
                         [](const testing::TestParamInfo<HandleOperation>& operation) {
                             return std::string(operation.param.name);
                         });

TEST_F(LvHandle, Login0xFFFF_WorksInEverySlot) {
    LogInAll({0xFFFF});
    EXPECT_EQ(Create(1, 1, 0xFFFF), 0xFFFF);
    EXPECT_EQ(Create(1, 1, 0xFFFF), 0x1FFFF);
    EXPECT_EQ(Read(0x1FFFF), 0);
    EXPECT_EQ(vexo_HostMgr_Dev_DestroyRealStreamBuffer(0x1FFFF), 0);
    EXPECT_EQ(vexo_HostMgr_Dev_DestroyRealStreamBuffer(0xFFFF), 0);
}

TEST_F(LvHandle, EachSlot_ReadsItsOwnChannelAndStream) {
    for (unsigned int slot = 0; slot < SLOTS; ++slot)
        Create(slot + 1, slot % 2 + 1);
    for (unsigned int slot = 0; slot < SLOTS; ++slot) {
        ReadOutputs out;
        EXPECT_EQ(Read(static_cast<int>(slot << 16) | LOGIN, &out), 0);
        EXPECT_EQ(out.channel, slot + 1);
        EXPECT_EQ(out.stream, slot % 2 + 1);
        EXPECT_THAT(FrameCalls(), ElementsAre(FirstGet(slot % 2 + 1, slot)));
    }
}

// ---- destroy -------------------------------------------------------------------------------------------------------

TEST_F(LvDestroy, NothingHeld_TellsTheRecorderNothing) {
    const int hID = Create();
    EXPECT_EQ(vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID), 0);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLvLock("HostMgr_Dev_DestroyRealStreamBuffer")));
}

TEST_F(LvDestroy, HeldVideo_IsReleasedAndNothingElseIsTold) {
    const int hID = Create(5, 2);
    Read(hID);
    platform.TakeCalls();
    EXPECT_EQ(vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID), 0);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderLvLock("HostMgr_Dev_DestroyRealStreamBuffer", {Rel(2, "2:1", 4)})));
}

TEST_F(LvDestroy, HeldAudio_IsReleasedAtTheAudioPosition) {
    const int hID = Create(5, 2);
    Read(hID);
    Read(hID);
    platform.TakeCalls();
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(128, "128:1", 4)));
}

TEST_F(LvDestroy, FrameAlreadyReleased_IsNotReleasedAgain) {
    const int hID = Create();
    Read(hID);
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    platform.TakeCalls();
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvDestroy, OtherBuffers_StayAsTheyAre) {
    const int first = Create(1, 1);
    const int second = Create(2, 1);
    Read(first);
    Read(second);
    platform.TakeCalls();
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(first);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(1, "1:1", 0)));
    EXPECT_THAT(CallsOfRead(second), ElementsAre(Rel(1, "1:2", 1), FirstGet(128, 1)));
}

TEST_F(LvDestroy, Slot_IsNoLongerDumped) {
    const int hID = Create();
    EXPECT_NE(LiveDump().find("[0]Login 0x501"), std::string::npos);
    vexo_HostMgr_Dev_DestroyRealStreamBuffer(hID);
    EXPECT_EQ(LiveDump().find("Login 0x"), std::string::npos);
}
