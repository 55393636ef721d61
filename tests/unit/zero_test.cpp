// The zero channel: the list that the recorder is given, the square rule, reading frame by frame, and which state of it
// each call sees.
#include "vexo_hostmgr_lv.h"
#include "zero_fixture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Return;
using testing::SizeIs;

using namespace vexo_soft;

static const char START[] = "HostMgr_Dev_StartZeroCodec";
static const char SET_MODE[] = "HostMgr_Dev_SetZeroCodecMode";
static const char READ[] = "HostMgr_Dev_ReadZeroCodecStream";
static const char STOP[] = "HostMgr_Dev_StopZeroCodec";

// ---- the list ------------------------------------------------------------------------------------------------------

struct SquareRule {
    const char* name;
    unsigned int from;
    unsigned int to;
    unsigned int pictures;
};

class ZeroSquare : public Zero, public testing::WithParamInterface<SquareRule> {};

/** What the list must hold: the caller's channels up to the number of pictures, else zeros. */
static std::vector<unsigned int> ExpectedList(const std::vector<unsigned int>& channels, unsigned int pictures) {
    std::vector<unsigned int> list(256);
    list[0] = 0xFFFFFFFF;
    std::copy_n(channels.begin(), std::min<size_t>(pictures, channels.size()), list.begin());
    return list;
}

static std::string Count(unsigned int pictures) {
    return ", " + std::to_string(pictures) + ")";
}

TEST_P(ZeroSquare, Start_SendsTheListAndThePictures) {
    for (unsigned int count = std::max(1u, GetParam().from); count <= GetParam().to; ++count) {
        const Lines calls = With("set_video_channels", CallsOf([&] { EXPECT_EQ(Start(Channels(count)), LOGIN); }));
        ASSERT_THAT(calls, SizeIs(1));
        EXPECT_THAT(calls[0], testing::EndsWith(Count(GetParam().pictures)));
        EXPECT_EQ(m_list, ExpectedList(Channels(count), GetParam().pictures)) << count;
        Stop();
    }
}

TEST_P(ZeroSquare, SetMode_SendsTheListAndThePictures) {
    for (unsigned int count = GetParam().from; count <= GetParam().to; ++count) {
        const Lines calls = With("set_video_channels", CallsOf([&] { EXPECT_EQ(SetMode(Channels(count)), 0); }));
        ASSERT_THAT(calls, SizeIs(1));
        EXPECT_THAT(calls[0], testing::EndsWith(Count(GetParam().pictures)));
        EXPECT_EQ(m_list, ExpectedList(Channels(count), GetParam().pictures)) << count;
    }
}

static const SquareRule SQUARES[] = {
    {"One", 0, 1, 1},
    {"Four", 2, 4, 4},
    {"Nine", 5, 9, 9},
    {"Sixteen", 10, 16, 16},
    {"TwentyFive", 17, 25, 25},
    {"ThirtySix", 26, 36, 36},
    {"FortyNine", 37, 49, 49},
    {"SixtyFour", 50, 64, 64},
    {"FallsBackToOne", 65, 82, 1},
    {"MoreThanTheListHolds", 255, 300, 1},
};
INSTANTIATE_TEST_SUITE_P(Counts, ZeroSquare, testing::ValuesIn(SQUARES), ByName());

TEST_F(Zero, HugeCount_ReadsTheFirstChannelAlone) {
    unsigned int channel = 7;
    EXPECT_EQ(vexo_HostMgr_Dev_StartZeroCodec(LOGIN, 0, 0xFFFFFFFF, &channel), LOGIN);
    EXPECT_EQ(m_list, ExpectedList({7}, 1));
}

TEST_F(Zero, ThreeChannels_AreFourPicturesWithAZero) {
    EXPECT_THAT(ModelCalls([] {
                    Start({5, 6, 0xFFFFFFFF});
                }),
                ElementsAre("vexo_model_zero_channel_set_enable(1281, 1)",
                            "vexo_model_zero_channel_set_video_channels(1281, {5, 6, 4294967295, 0}, 4)"));
}

// ---- start ---------------------------------------------------------------------------------------------------------

TEST_F(Zero, Start_EnablesThenSendsTheListUnderTheLock) {
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Start({8}), LOGIN); }), ""); }),
              UnderLvLock(START, {"vexo_model_zero_channel_set_enable(1281, 1)",
                                  "vexo_model_zero_channel_set_video_channels(1281, {8}, 1)"}));
}

TEST_F(Zero, StartWithoutAList_FailsSilentlyWithoutTheLock) {
    unsigned int channel = 1;
    EXPECT_EQ(CallsOf([&] {
                  EXPECT_EQ(RawConsole([&] {
                                EXPECT_EQ(vexo_HostMgr_Dev_StartZeroCodec(LOGIN, 0, 0, &channel), -1);
                                EXPECT_EQ(vexo_HostMgr_Dev_StartZeroCodec(LOGIN, 0, 1, nullptr), -1);
                            }),
                            "");
              }),
              Joined({LookupCalls(), LookupCalls()}));
}

TEST_F(Zero, SecondStart_FailsSilentlyAndChangesNothing) {
    Start();
    ReadGives(0);
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Start({8}), -1); }), ""); }), UnderLvLock(START));
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:1"), Release("9:1")));
}

TEST_F(Zero, EnableIsRefused_SaysSoAndSendsNoList) {
    ON_CALL(platform, vexo_model_zero_channel_set_enable).WillByDefault(Return(-1));
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(Start(), -1); }),
                            Error(START, "vexo_model_zero_channel_set_enable failed!!\n"));
              }),
              UnderLvLock(START, {"vexo_model_zero_channel_set_enable(1281, 1)"}));
}

TEST_F(Zero, ListIsRefused_SaysSoAndLeavesItEnabledAndStopped) {
    m_list_result = 1;
    EXPECT_THAT(ModelCalls([] {
                    EXPECT_EQ(Console([] { EXPECT_EQ(Start({8}), -1); }),
                              Error(START, "vexo_model_zero_channel_set_video_channels failed!!\n"));
                }),
                ElementsAre("vexo_model_zero_channel_set_enable(1281, 1)",
                            "vexo_model_zero_channel_set_video_channels(1281, {8}, 1)"));
    m_list_result = 0;
    EXPECT_EQ(Start(), LOGIN);
}

TEST_F(Zero, TwoLogins_EachHaveTheirOwnStream) {
    LogInAll({0x502});
    EXPECT_EQ(Start({1}), LOGIN);
    EXPECT_EQ(Start({1}, 0x502), 0x502);
    ZeroOutputs out;
    RawConsole([&] { EXPECT_EQ(Read(&out), 0); });
    EXPECT_THAT(ModelCalls([&] { RawConsole([&] { EXPECT_EQ(Read(&out, 0x502), 0); }); }), ElementsAre(FIRST));
    EXPECT_THAT(ModelCalls([] { Stop(0x502); }), ElementsAre(Release("9:2")));
    EXPECT_THAT(ModelCalls([] { Stop(); }), ElementsAre(Release("9:1")));
}

// ---- mode ----------------------------------------------------------------------------------------------------------

TEST_F(Zero, SetMode_TakesNoLockAndNeedsNoStart) {
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(RawConsole([] { EXPECT_EQ(SetMode({3, 4}), 0); }), "");
              }),
              Joined({LookupCalls(), {"vexo_model_zero_channel_set_video_channels(1281, {3, 4, 0, 0}, 4)"}}));
}

TEST_F(Zero, SetModeWithUpperHalf_GivesTheLoginAlone) {
    EXPECT_THAT(ModelCalls([] { EXPECT_EQ(SetMode({3}, 0x7FFF0501), 0); }),
                ElementsAre("vexo_model_zero_channel_set_video_channels(1281, {3}, 1)"));
}

TEST_F(Zero, SetModeWithCountZero_SendsOnePictureOfNoChannel) {
    EXPECT_THAT(ModelCalls([] { EXPECT_EQ(vexo_HostMgr_Dev_SetZeroCodecMode(LOGIN, 0, 0, nullptr), 0); }),
                ElementsAre("vexo_model_zero_channel_set_video_channels(1281, {4294967295}, 1)"));
    EXPECT_EQ(m_list, ExpectedList({}, 1));
}

TEST_F(Zero, SetModeWithoutAListButACount_FailsSilently) {
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(RawConsole([] {
                                EXPECT_EQ(vexo_HostMgr_Dev_SetZeroCodecMode(LOGIN, 0, 1, nullptr), -1);
                                EXPECT_EQ(vexo_HostMgr_Dev_SetZeroCodecMode(LOGIN, 0, 65, nullptr), -1);
                            }),
                            "");
              }),
              Joined({LookupCalls(), LookupCalls()}));
}

TEST_F(Zero, SetModeIsRefused_SaysSo) {
    m_list_result = 1;
    EXPECT_EQ(Console([] { EXPECT_EQ(SetMode({3}), -1); }),
              Error(SET_MODE, "vexo_model_zero_channel_set_video_channels failed!!\n"));
}

TEST_F(Zero, SetModeWhileAFrameIsRead_DoesNotWait) {
    ON_CALL(platform, vexo_model_zero_channel_first_get_frame)
        .WillByDefault([](vexo_user_id, unsigned char**, vexo_read_av_list_note*) {
            std::thread([] { EXPECT_EQ(SetMode({3}), 0); }).join();
            return -1;
        });
    EXPECT_THAT(ReadGives(-1), ElementsAre(FIRST, "vexo_model_zero_channel_set_video_channels(1281, {3}, 1)"));
}

// ---- reading -------------------------------------------------------------------------------------------------------

TEST_F(Zero, FirstRead_SaysSoAndUsesTheFirstFrameCall) {
    Start();
    ZeroOutputs out;
    EXPECT_EQ(CallsOf([&] { EXPECT_EQ(Console([&] { EXPECT_EQ(Read(&out), 0); }), Debug(READ, "video_first 0\n")); }),
              UnderLvLock(READ, {FIRST}));
    EXPECT_EQ(HostMgrFrameHeader(out.frame).frame_no, 1u);
    EXPECT_EQ(out.length, 5001u + 36);
    EXPECT_EQ(out.info, 1001u);
}

TEST_F(Zero, NextReads_GoOnFromTheLastPositionAndThenReleaseIt) {
    Start();
    ReadGives(0);
    ZeroOutputs out;
    EXPECT_EQ(CallsOf([&] { EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(&out), 0); }), ""); }),
              UnderLvLock(READ, {Next("9:1"), Release("9:1")}));
    EXPECT_EQ(HostMgrFrameHeader(out.frame).frame_no, 2u);
    EXPECT_EQ(out.length, 5002u + 36);
    EXPECT_EQ(out.info, 1002u);
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:2"), Release("9:2")));
}

TEST_F(Zero, FirstReadFails_SaysSoAndTriesTheSameAgain) {
    Start();
    m_result = -1;
    ZeroOutputs out;
    EXPECT_EQ(CallsOf([&] {
                  EXPECT_EQ(Console([&] { EXPECT_EQ(Read(&out), -1); }),
                            Debug(READ, "video_first 0\n") +
                                Error(READ, "vexo_model_zero_channel_first_get_frame failed!!\n"));
              }),
              UnderLvLock(READ, {FIRST}));
    EXPECT_TRUE(out.FrameUntouched());
    EXPECT_EQ(out.length, 0u);
    EXPECT_EQ(out.info, 0u);
    m_result = 0;
    EXPECT_THAT(ReadGives(0), ElementsAre(FIRST));
}

TEST_F(Zero, NextReadFails_IsSilentAndKeepsTheHeldFrame) {
    Start();
    ReadGives(0);
    m_result = 1;
    ZeroOutputs out;
    EXPECT_EQ(CallsOf([&] { EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(&out), -1); }), ""); }),
              UnderLvLock(READ, {Next("9:1")}));
    EXPECT_TRUE(out.FrameUntouched());
    EXPECT_EQ(out.length, 0u);
    EXPECT_EQ(out.info, 0u);
    m_result = 0;
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:1"), Release("9:1")));
}

TEST_F(Zero, FirstReadWithoutAFrame_FailsAndTheNextUsesTheListFromItsStart) {
    Start();
    m_no_frame = true;
    ZeroOutputs out;
    EXPECT_EQ(Console([&] { EXPECT_EQ(Read(&out), -1); }), Debug(READ, "video_first 0\n"));
    EXPECT_TRUE(out.FrameUntouched());
    EXPECT_EQ(out.length, 0u);
    m_no_frame = false;
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("0:0")));
}

TEST_F(Zero, NextReadWithoutAFrame_ReleasesTheOneBeforeAndKeepsItsPosition) {
    Start();
    ReadGives(0);
    m_no_frame = true;
    EXPECT_THAT(ReadGives(-1), ElementsAre(Next("9:1"), Release("9:1")));
    EXPECT_THAT(ReadGives(-1), ElementsAre(Next("9:1")));
    m_no_frame = false;
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:1")));
}

TEST_F(Zero, ReadWithAMissingOutput_IsRefusedWithTheHandlesText) {
    Start();
    unsigned char* frame = nullptr;
    unsigned int word = 0xEEEEEEEE;
    const std::string refused = Error(READ, "lZeroCodecHandle <= 0 !!\n");
    const auto read = [](unsigned char** ppFrame, unsigned int* length, unsigned int* info) {
        EXPECT_EQ(vexo_HostMgr_Dev_ReadZeroCodecStream(LOGIN, 0, ppFrame, length, info), -1);
    };
    EXPECT_EQ(CallsOf([&] {
                  EXPECT_EQ(Console([&] { read(&frame, nullptr, &word); }), refused);
                  EXPECT_EQ(Console([&] { read(&frame, &word, nullptr); }), refused);
                  EXPECT_EQ(Console([&] { read(nullptr, &word, &word); }), refused);
              }),
              Joined({LookupCalls(), LookupCalls(), LookupCalls()}));
    EXPECT_EQ(word, 0xEEEEEEEE);
}

TEST_F(Zero, FrameAtAnyAddress_IsRead) {
    const TestFrame odd(1, 0xDEADBEEF, 77, 1);
    ON_CALL(platform, vexo_model_zero_channel_first_get_frame)
        .WillByDefault([&](vexo_user_id, unsigned char** frame, vexo_read_av_list_note*) {
            *frame = odd.Address();
            return 0;
        });
    ZeroOutputs out;
    RawConsole([&] { EXPECT_EQ(Read(&out), 0); });
    EXPECT_EQ(out.frame, odd.Address());
    EXPECT_EQ(out.length, 113u);
    EXPECT_EQ(out.info, 0xDEADBEEFu);
}

// ---- stop ----------------------------------------------------------------------------------------------------------

TEST_F(Zero, Stop_ReleasesTheHeldFrameAndLeavesTheRecorderEncoding) {
    Start();
    ReadGives(0);
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Stop(), 0); }), ""); }),
              UnderLvLock(STOP, {Release("9:1")}));
}

TEST_F(Zero, StopWithNothingHeld_ReleasesNothing) {
    Start();
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(Stop(), 0); }), UnderLvLock(STOP));
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(Stop(), 0); }), UnderLvLock(STOP));
}

TEST_F(Zero, StopThenStart_ReadsFromTheFirstFrameAgain) {
    Start();
    ReadGives(0);
    ReadGives(0);
    Stop();
    EXPECT_EQ(Start(), LOGIN);
    EXPECT_THAT(ReadGives(0), ElementsAre(FIRST));
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:3"), Release("9:3")));
}

TEST_F(Zero, ReadWithoutAStart_ReadsTheSame) {
    EXPECT_THAT(ReadGives(0), ElementsAre(FIRST));
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:1"), Release("9:1")));
}

// A start goes on with what was read before it.
TEST_F(Zero, StartAfterReads_ResetsNothing) {
    ReadGives(0);
    EXPECT_EQ(Start(), LOGIN);
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:1"), Release("9:1")));
}

// What was read without a start is forgotten, not released.
TEST_F(Zero, StopWithoutAStart_ForgetsTheHeldFrame) {
    ReadGives(0);
    EXPECT_THAT(ModelCalls([] { EXPECT_EQ(Stop(), 0); }), IsEmpty());
    EXPECT_THAT(ReadGives(0), ElementsAre(FIRST));
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("9:2"), Release("9:2")));
}

TEST_F(Zero, Stop_ForgetsThePosition) {
    Start();
    ReadGives(0);
    Stop();
    m_no_frame = true;
    ReadGives(-1);
    m_no_frame = false;
    EXPECT_THAT(ReadGives(0), ElementsAre(Next("0:0")));
}

TEST_F(Zero, StopWithUpperHalf_StopsTheLoginsStream) {
    Start();
    EXPECT_EQ(Stop(0x7FFF0501), 0);
    EXPECT_EQ(Start(), LOGIN);
}

TEST_F(Zero, Logout_MakesNoZeroChannelCall) {
    Start();
    ReadGives(0);
    EXPECT_THAT(With("zero_channel", CallsOf([] { vexo_HostMgr_Dev_Logout(LOGIN); })), IsEmpty());
}

TEST_F(Zero, ReadsOnManyThreads_ReleaseEachFrameOnce) {
    Start();
    platform.TakeCalls();
    RawConsole([] {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([] {
                for (int round = 0; round < 50; ++round) {
                    ZeroOutputs out;
                    EXPECT_EQ(Read(&out), 0);
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    });
    Stop();
    const Lines calls = platform.TakeCalls();
    for (unsigned int frame = 1; frame <= 200; ++frame)
        EXPECT_THAT(calls, Contains(Release("9:" + std::to_string(frame))).Times(1));
}

// ---- the object alone: handles that no frame lets through ----------------------------------------------------------

class ZeroObject : public HostMgrTest {
protected:
    vexo_hostmgr_lv m_lv;
    unsigned int m_channel = 1;
};

TEST_F(ZeroObject, HandleOfZeroOrLess_IsRefusedByAllThree) {
    ZeroOutputs out;
    platform.TakeCalls();
    for (const int handle : {0, -1, INT32_MIN}) {
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_lv.HostMgr_Dev_SetZeroCodecMode(handle, 0, 1, &m_channel), -1); }),
                  Error(SET_MODE, "lZeroCodecHandle <= 0 !!\n"));
        EXPECT_EQ(Console([&] {
                      EXPECT_EQ(m_lv.HostMgr_Dev_ReadZeroCodecStream(handle, 0, &out.frame, &out.length, &out.info),
                                -1);
                  }),
                  Error(READ, "lZeroCodecHandle <= 0 !!\n"));
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_lv.HostMgr_Dev_StopZeroCodec(handle), -1); }),
                  Error(STOP, "lZeroCodecHandle <= 0 !!\n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    EXPECT_EQ(out.length, 0xEEEEEEEE);
    EXPECT_EQ(out.info, 0xEEEEEEEE);
}

TEST_F(ZeroObject, HandleText_ComesBeforeTheMissingList) {
    EXPECT_EQ(Console([&] { EXPECT_EQ(m_lv.HostMgr_Dev_SetZeroCodecMode(0, 0, 1, nullptr), -1); }),
              Error(SET_MODE, "lZeroCodecHandle <= 0 !!\n"));
}

// The recorder gets the login as it came; the handle given out is its low half.
TEST_F(ZeroObject, LoginBeyond16Bits_GoesToTheRecorderWhole) {
    platform.TakeCalls();
    EXPECT_EQ(m_lv.HostMgr_Dev_StartZeroCodec(0x12345, 0, 1, &m_channel), 0x2345);
    EXPECT_THAT(With("zero_channel", platform.TakeCalls()),
                ElementsAre("vexo_model_zero_channel_set_enable(74565, 1)",
                            "vexo_model_zero_channel_set_video_channels(74565, {1}, 1)"));
}
