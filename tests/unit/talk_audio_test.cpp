// The recorder's audio on its way to the agent: what a block holds, byte by byte, when it is handed over and how long
// it is said to be; the path where a frame does not fit; frames that claim odd lengths.
#include "talk_fixture.h"

using testing::IsEmpty;
using testing::SizeIs;

using namespace vexo_soft;

class TalkAudio : public TalkFixture {
protected:
    void SetUp() override {
        TalkFixture::SetUp();
        Start();
        SetCallback();
        threads.Step();
    }

    /** Frames of 320 bytes of different audio, from a seed on. */
    void CaptureFrames(unsigned int count, unsigned int seed = 1) {
        for (unsigned int frame = 0; frame < count; ++frame)
            CaptureAudio(320, seed + frame);
    }

    /** What a block in the regular course holds: header and these frames. */
    static Bytes RegularBlock(unsigned int count, unsigned int seed = 1) {
        Bytes block = BlockHeader(24 + 320 * count);
        for (unsigned int frame = 0; frame < count; ++frame)
            block = Followed(block, Audio(320, seed + frame));
        return block;
    }

    static Bytes Said(const HandedOver& handed) { return Part(handed.block, 0, handed.length); }
};

// ---- the regular course --------------------------------------------------------------------------------------------

TEST_F(TalkAudio, SevenFrames_AreKept) {
    CaptureFrames(7);
    EXPECT_THAT(m_handed, IsEmpty());
}

TEST_F(TalkAudio, EighthFrame_HandsOverABlockOf2584Bytes) {
    CaptureFrames(8);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].hLogin, LOGIN);
    EXPECT_EQ(m_handed[0].hTalk, TALK);
    EXPECT_EQ(m_handed[0].length, 2584u);
    EXPECT_EQ(m_handed[0].user, this);
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8));
    EXPECT_EQ(Part(m_handed[0].block, 2584, 5120 - 2584), Bytes(5120 - 2584));
}

TEST_F(TalkAudio, BlocksFollowEachOther) {
    CaptureFrames(24);
    ASSERT_THAT(m_handed, SizeIs(3));
    for (unsigned int block = 0; block < 3; ++block)
        EXPECT_EQ(Said(m_handed[block]), RegularBlock(8, 1 + 8 * block));
}

TEST_F(TalkAudio, PassWithoutAFrame_ChangesNothing) {
    CaptureFrames(4);
    threads.Step();
    threads.Step();
    CaptureFrames(4, 5);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8));
}

TEST_F(TalkAudio, NoCallback_BlocksAreDroppedWhole) {
    vexo_HostMgr_Dev_SetTalkCallback(LOGIN, TALK, nullptr, nullptr);
    CaptureFrames(8);
    SetCallback();
    CaptureFrames(7, 9);
    EXPECT_THAT(m_handed, IsEmpty());
    CaptureFrames(1, 16);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8, 9));
}

TEST_F(TalkAudio, CallbackSetMeanwhile_GetsWhatWasGathered) {
    vexo_HostMgr_Dev_SetTalkCallback(LOGIN, TALK, nullptr, nullptr);
    CaptureFrames(5);
    SetCallback();
    CaptureFrames(3, 6);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8));
}

TEST_F(TalkAudio, Callback_RunsWithoutALock) {
    int checked = 0;
    const auto check = [&] {
        EXPECT_THAT(platform.HeldLocks(), IsEmpty());
        ++checked;
    };
    m_in_callback = check;
    CaptureFrames(8);
    m_in_callback = check;
    CaptureAudio(5120);
    EXPECT_EQ(checked, 2);
}

TEST_F(TalkAudio, StopBetweenFrames_ForgetsThem) {
    CaptureFrames(5);
    Stop();
    Start();
    EXPECT_EQ(SetCallback(TALK + 1), 0);
    threads.Step();
    CaptureFrames(8, 11);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].hTalk, TALK + 1);
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8, 11));
}

// ---- the frame that does not fit -----------------------------------------------------------------------------------

TEST_F(TalkAudio, FrameThatDoesNotFit_FirstHandsOverWhatWasGathered) {
    CaptureFrames(3);
    CaptureAudio(5120, 9);
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(m_handed[0].length, 984u);
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(3));
    EXPECT_EQ(m_handed[0].user, this);
    EXPECT_EQ(m_handed[0].hTalk, TALK);
}

// The audio stands at the very start, over the header; of its length only the first frame is said.
TEST_F(TalkAudio, FrameThatDoesNotFit_StandsAtTheStartOfTheBlockInsteadOfTheHeader) {
    CaptureFrames(3);
    Capture(CapturedFrame(Audio(4060, 9), 5120));
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(m_handed[1].length, 320u);
    EXPECT_EQ(m_handed[1].block, Followed(Audio(4060, 9), Bytes(1060)));
}

TEST_F(TalkAudio, FrameThatDoesNotFit_LeavesTheRestOfTheBlockAsItWas) {
    CaptureFrames(7);
    CaptureAudio(2857, 9);
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(7));
    EXPECT_EQ(m_handed[1].length, 320u);
    EXPECT_EQ(m_handed[1].block, Followed(Audio(2857, 9), Bytes(5120 - 2857)));
}

TEST_F(TalkAudio, FrameAfterOneThatDidNotFit_StartsARegularBlock) {
    CaptureAudio(5120, 9);
    m_handed.clear();
    CaptureFrames(8);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8));
}

// Nothing gathered still hands over the header's place.
TEST_F(TalkAudio, FrameThatDoesNotFitAnEmptyBlock_HandsOver24BytesFirst) {
    CaptureAudio(5097);
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(m_handed[0].length, 24u);
    EXPECT_EQ(m_handed[0].block, Bytes(5120));
    EXPECT_EQ(m_handed[1].length, 320u);
}

TEST_F(TalkAudio, FrameThatJustFits_StandsBehindTheHeader) {
    CaptureAudio(5096);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].length, 344u);
    EXPECT_EQ(Part(m_handed[0].block, 0, 24 + 4060), Followed(BlockHeader(5120), Part(Audio(5096), 0, 4060)));
}

TEST_F(TalkAudio, LastFrameThatFitsBehindSeven_IsHandedOverWithTheLengthOfAFrame) {
    CaptureFrames(7);
    CaptureAudio(2856, 8);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].length, 2584u);
    EXPECT_EQ(Part(m_handed[0].block, 0, 24), BlockHeader(5120));
    EXPECT_EQ(Part(m_handed[0].block, 2264, 2856), Audio(2856, 8));
}

TEST_F(TalkAudio, FrameThatDoesNotFitWithoutACallback_StillEmptiesTheBlock) {
    vexo_HostMgr_Dev_SetTalkCallback(LOGIN, TALK, nullptr, nullptr);
    CaptureFrames(3);
    CaptureAudio(5120, 9);
    SetCallback();
    CaptureFrames(8, 20);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8, 20));
}

// ---- odd lengths ---------------------------------------------------------------------------------------------------

TEST_F(TalkAudio, FrameOf2560Bytes_FillsTheBlockAtOnce) {
    CaptureAudio(2560);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(m_handed[0].length, 344u);
    EXPECT_EQ(Part(m_handed[0].block, 0, 2584), Followed(BlockHeader(2584), Audio(2560)));
}

TEST_F(TalkAudio, FrameOf2559Bytes_CountsAsSeven) {
    CaptureAudio(2559);
    EXPECT_THAT(m_handed, IsEmpty());
    CaptureAudio(320, 2);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), Followed(BlockHeader(2584), Followed(Part(Audio(2559), 0, 2240), Audio(320, 2))));
}

// A frame shorter than 320 bytes counts as none, and the next one takes its place.
TEST_F(TalkAudio, ShortFrame_IsOverwrittenByTheNext) {
    CaptureAudio(319, 50);
    CaptureFrames(7);
    CaptureAudio(1, 51);
    EXPECT_THAT(m_handed, IsEmpty());
    CaptureFrames(1, 8);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8));
}

TEST_F(TalkAudio, ShortFrameAfterSeven_ShowsInTheBytesUsed) {
    CaptureFrames(7);
    CaptureAudio(100, 50);
    CaptureAudio(5120, 9);
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(Said(m_handed[0]), Followed(BlockHeader(24 + 7 * 320 + 100), Part(RegularBlock(7), 24, 7 * 320)));
}

TEST_F(TalkAudio, EmptyFrame_WritesAHeaderAlone) {
    CaptureAudio(0);
    CaptureAudio(5120, 9);
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(Said(m_handed[0]), BlockHeader(24));
}

TEST_F(TalkAudio, FrameOf5121Bytes_IsRefusedWithAWarning) {
    CaptureFrames(4);
    EXPECT_EQ(Console([this] { Capture(CapturedFrame({}, 5121)); }),
              Warning("HostMgrSendTalkData", "Get a big frame len 5121, Why!!!\n"));
    CaptureFrames(4, 5);
    ASSERT_THAT(m_handed, SizeIs(1));
    EXPECT_EQ(Said(m_handed[0]), RegularBlock(8));
}

TEST_F(TalkAudio, LengthsThatLookNegative_AreRefusedWithAWarning) {
    EXPECT_EQ(Console([this] { Capture(CapturedFrame({}, 0xFFFFFFFF)); }),
              Warning("HostMgrSendTalkData", "Get a big frame len -1, Why!!!\n"));
    EXPECT_EQ(Console([this] { Capture(CapturedFrame({}, 0x80000000)); }),
              Warning("HostMgrSendTalkData", "Get a big frame len -2147483648, Why!!!\n"));
    EXPECT_THAT(m_handed, IsEmpty());
}

// The recorder may write 4096 bytes, so of such a frame 4060 are audio; the rest is silence, every time.
TEST_F(TalkAudio, FrameThatClaimsMoreThanIsFetched_EndsInZeros) {
    for (unsigned int seed = 1; seed <= 2; ++seed) {
        m_handed.clear();
        CaptureAudio(5120, seed);
        ASSERT_THAT(m_handed, SizeIs(2));
        EXPECT_EQ(m_handed[1].block, Followed(Part(Audio(5120, seed), 0, 4060), Bytes(1060)));
    }
}

TEST_F(TalkAudio, ShortAnswerAfterALongOne_DoesNotShowTheLongOnesAudio) {
    CaptureAudio(4060, 9);
    m_handed.clear();
    Capture(CapturedFrame(Audio(10), 5120));
    ASSERT_THAT(m_handed, SizeIs(2));
    EXPECT_EQ(m_handed[1].block, Followed(Audio(10), Bytes(5110)));
}

TEST_F(TalkAudio, Fetch_Asks4096BytesOfTheTalk) {
    EXPECT_EQ(With("get_talking_frame", CallsOf([this] { CaptureFrames(1); })),
              Lines{"vexo_model_get_talking_frame(51, 4096)"});
}
