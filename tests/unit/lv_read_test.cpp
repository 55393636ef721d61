// One read of a stream buffer: its outputs, what it keeps of a frame, and what it makes of odd answers.
#include "lv_fixture.h"

using testing::_;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace vexo_soft;

class LvReadOutputs : public LvFixture {};
class LvReadHeld : public LvFixture {};
class LvReadNullFrame : public LvFixture {};
class LvReadReset : public LvFixture {};

// ---- outputs -------------------------------------------------------------------------------------------------------

/** One output, 0 to 5 in the order of the parameters, is null. */
class LvReadNullOutput : public LvFixture, public testing::WithParamInterface<int> {
protected:
    int ReadWithNull(int hID, ReadOutputs* out) {
        const auto unless = [](int output, auto* pointer) { return GetParam() == output ? nullptr : pointer; };
        return vexo_HostMgr_Dev_ReadRealOneFrame(hID, unless(0, &out->channel), unless(1, &out->stream),
                                                 unless(2, &out->frame), unless(3, &out->length), unless(4, &out->info),
                                                 unless(5, &out->flags));
    }
};

TEST_P(LvReadNullOutput, Read_FailsSilentlyWithoutTakingTheLock) {
    const int hID = Create();
    ReadOutputs out;
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(ReadWithNull(hID, &out), -1); }), "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(LookupCalls()));
}

TEST_P(LvReadNullOutput, OtherOutputs_AreLeftAsTheyAre) {
    ReadOutputs out;
    ReadWithNull(Create(), &out);
    EXPECT_TRUE(out.AllUntouched());
}

TEST_P(LvReadNullOutput, HeldFrame_StaysHeld) {
    const int hID = Create();
    Read(hID);
    platform.TakeCalls();
    ReadOutputs out;
    ReadWithNull(hID, &out);
    EXPECT_THAT(FrameCalls(), IsEmpty());
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(1, "1:1")));
}

INSTANTIATE_TEST_SUITE_P(Outputs, LvReadNullOutput, testing::Range(0, 6));

TEST_F(LvReadOutputs, Video_AreFilledFromSlotAndHeader) {
    const int hID = Create(12, 1);
    const TestFrame frame(77, 0xDEADBEEF, 5000);
    Main().frame = frame.Address();
    ReadOutputs out;
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID, &out), 0); }), "");
    EXPECT_EQ(out.channel, 12u);
    EXPECT_EQ(out.stream, 1u);
    EXPECT_EQ(out.frame, frame.Address());
    EXPECT_EQ(out.length, 5036u);
    EXPECT_EQ(out.info, 0xDEADBEEFu);
    EXPECT_EQ(out.flags, 0u);
}

TEST_F(LvReadOutputs, Audio_AreFilledFromSlotAndHeader) {
    const int hID = Create(12, 2);
    const TestFrame frame(78, 8, 320);
    Audio().frame = frame.Address();
    Read(hID);
    ReadOutputs out;
    EXPECT_EQ(Read(hID, &out), 0);
    EXPECT_EQ(out.channel, 12u);
    EXPECT_EQ(out.stream, 2u);
    EXPECT_EQ(out.frame, frame.Address());
    EXPECT_EQ(out.length, 356u);
    EXPECT_EQ(out.info, 8u);
    EXPECT_EQ(out.flags, 0u);
}

TEST_F(LvReadOutputs, Read_RunsUnderTheLock) {
    const int hID = Create(12, 1);
    Read(hID);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLvLock("HostMgr_Dev_ReadRealOneFrame", {FirstGet(1, 11)})));
}

class LvReadLength : public LvFixture, public testing::WithParamInterface<unsigned int> {};

TEST_P(LvReadLength, IsThePayloadsAnd36) {
    const TestFrame frame(1, 1, GetParam());
    Main().frame = frame.Address();
    ReadOutputs out;
    EXPECT_EQ(Read(Create(), &out), 0);
    EXPECT_EQ(out.length, GetParam() + 36);
}

INSTANTIATE_TEST_SUITE_P(Payloads, LvReadLength, testing::Values(0, 1, 36, 0xFFFF, 0x10000, 0x7FFFFFFF, 0xFFFFFFDB));

class LvReadUnaligned : public LvFixture, public testing::WithParamInterface<size_t> {};

TEST_P(LvReadUnaligned, Frame_IsReadAtAnyAddress) {
    const TestFrame frame(0x01020304, 9, 0x00112233, GetParam());
    Main().frame = frame.Address();
    ReadOutputs out;
    EXPECT_EQ(Read(Create(), &out), 0);
    EXPECT_EQ(out.frame, frame.Address());
    EXPECT_EQ(out.length, 0x00112233u + 36);
    EXPECT_EQ(out.info, 9u);
    EXPECT_THAT(LiveDump(), HasSubstr("当前读取的视频帧帧信息:帧号 16909060\n"));
}

INSTANTIATE_TEST_SUITE_P(Offsets, LvReadUnaligned, testing::Values(0, 1, 2, 3, 4, 5));

TEST_F(LvReadOutputs, UnknownHandle_AreZeroed) {
    ReadOutputs out;
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(LOGIN, &out), -1); }), "");
    EXPECT_TRUE(out.AllZero());
}

TEST_F(LvReadOutputs, NoFrameOfEitherKind_AreZeroed) {
    Main().result = -1;
    Audio().result = -1;
    const int hID = Create();
    ReadOutputs out;
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID, &out), -1); }), "");
    EXPECT_TRUE(out.AllZero());
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderLvLock("HostMgr_Dev_ReadRealOneFrame", {FirstGet(1), FirstGet(128)})));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_F(LvReadOutputs, NullFrame_AreZeroed) {
    Main().noFrame = true;
    Main().noVideo = 1;
    const int hID = Create();
    ReadOutputs out;
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID, &out), -1); }), "");
    EXPECT_TRUE(out.AllZero());
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

// Any answer but 0 is a failure.
class LvReadRefused : public LvFixture, public testing::WithParamInterface<int> {};

TEST_P(LvReadRefused, ByBothLists_FailsSilently) {
    Main().result = GetParam();
    Audio().result = GetParam();
    const int hID = Create();
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID), -1); }), "");
    EXPECT_THAT(FrameCalls(), ElementsAre(FirstGet(1), FirstGet(128)));
}

INSTANTIATE_TEST_SUITE_P(Answers, LvReadRefused, testing::Values(-1, 1, INT32_MAX, INT32_MIN));

// ---- the no-video-signal flag --------------------------------------------------------------------------------------

class LvReadNoVideo : public LvFixture, public testing::WithParamInterface<VEXO_BOOL> {
protected:
    static unsigned int ExpectedFlags() { return GetParam() == 1 ? 0x4 : 0; }
    static std::string ExpectedText() { return GetParam() != 0 ? "当前帧是无视频信号\n" : "当前帧不是无视频信号\n"; }
};

TEST_P(LvReadNoVideo, OfAVideoFrame_SetsTheBitForExactlyOne) {
    Main().noVideo = GetParam();
    ReadOutputs out;
    EXPECT_EQ(Read(Create(), &out), 0);
    EXPECT_EQ(out.flags, ExpectedFlags());
    EXPECT_THAT(LiveDump(), HasSubstr(ExpectedText()));
}

TEST_P(LvReadNoVideo, OfAnAudioFrame_SetsTheBitForExactlyOne) {
    Audio().noVideo = GetParam();
    const int hID = Create();
    Read(hID);
    ReadOutputs out;
    EXPECT_EQ(Read(hID, &out), 0);
    EXPECT_EQ(out.flags, ExpectedFlags());
    EXPECT_THAT(LiveDump(), HasSubstr(ExpectedText()));
}

TEST_P(LvReadNoVideo, OfTheFrameBefore_IsForgotten) {
    Main().noVideo = GetParam();
    const int hID = Create();
    Read(hID);
    ReadOutputs out;
    EXPECT_EQ(Read(hID, &out), 0);
    EXPECT_EQ(out.flags, 0u);
    EXPECT_THAT(LiveDump(), HasSubstr("当前帧不是无视频信号\n"));
}

INSTANTIATE_TEST_SUITE_P(Values, LvReadNoVideo, testing::Values(0, 1, 2, 3, 0x101, -1, INT32_MIN));

TEST_F(LvReadOutputs, FailedRead_KeepsTheFlagOfTheFrameBefore) {
    Main().noVideo = 1;
    const int hID = Create();
    Read(hID);
    Main().result = -1;
    Audio().result = -1;
    Read(hID);
    EXPECT_THAT(LiveDump(), HasSubstr("当前帧是无视频信号\n"));
}

// ---- the frame held ------------------------------------------------------------------------------------------------

TEST_F(LvReadHeld, Video_IsReleasedBeforeTheNextRead) {
    const int hID = Create(4, 1);
    Read(hID);
    platform.TakeCalls();
    Read(hID);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderLvLock("HostMgr_Dev_ReadRealOneFrame", {Rel(1, "1:1", 3), FirstGet(128, 3)})));
}

TEST_F(LvReadHeld, Audio_IsReleasedAsAudioBeforeTheNextRead) {
    const int hID = Create(4, 2);
    Read(hID);
    Read(hID);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1", 3), NextGet(2, "2:1", 3)));
}

TEST_F(LvReadHeld, FrameReleasedByTheCaller_IsNotReleasedAgain) {
    const int hID = Create();
    Read(hID);
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(128)));
}

TEST_F(LvReadHeld, NextReadFails_FrameIsReleasedOnceAllTheSame) {
    const int hID = Create();
    Read(hID);
    Main().result = -1;
    Audio().result = -1;
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), FirstGet(128), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(128), NextGet(1, "1:1")));
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvReadHeld, RecorderRefusesTheRelease_ReadGoesOn) {
    ON_CALL(platform, vexo_model_rel_frame).WillByDefault(testing::Return(-1));
    const int hID = Create();
    Read(hID);
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID), 0); }), "");
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1"), NextGet(1, "1:1")));
}

TEST_F(LvReadHeld, ReadOfAnotherBuffer_LeavesItHeld) {
    const int first = Create(1, 1);
    const int second = Create(1, 1);
    Read(first);
    EXPECT_THAT(CallsOfRead(second), ElementsAre(FirstGet(1)));
}

TEST_F(LvReadHeld, FrameNumbers_AreKeptByKind) {
    const TestFrame video(1001);
    const TestFrame audio(2002);
    Main().frame = video.Address();
    Audio().frame = audio.Address();
    const int hID = Create();
    Read(hID);
    Read(hID);
    EXPECT_THAT(LiveDump(), HasSubstr("当前读取的视频帧帧信息:帧号 1001\n"));
    EXPECT_THAT(LiveDump(), HasSubstr("当前读取的音频帧帧信息:帧号 2002\n"));
}

// ---- a success without a frame -------------------------------------------------------------------------------------

TEST_F(LvReadNullFrame, FirstVideo_EndsTheReadAndNothingIsHeld) {
    Main().noFrame = true;
    const int hID = Create();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1)));
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvReadNullFrame, FirstVideo_NextReadGetsFromTheListAtTheOldPosition) {
    Main().noFrame = true;
    const int hID = Create();
    Read(hID);
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "0:0")));
}

TEST_F(LvReadNullFrame, FirstAudio_NextReadGetsFromTheListAtTheOldPosition) {
    const int hID = Create();
    Read(hID);
    Audio().noFrame = true;
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), FirstGet(128)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(128, "0:0")));
}

TEST_F(LvReadNullFrame, LaterVideo_LeavesPositionAndTurn) {
    const int hID = Create();
    Read(hID);
    Read(hID);
    Main().noFrame = true;
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1"), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "1:1")));
    Main().noFrame = false;
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:4"), NextGet(128, "128:1")));
}

TEST_F(LvReadNullFrame, AfterAFailedFirstAttempt_EndsTheRead) {
    Main().result = -1;
    Audio().noFrame = true;
    const int hID = Create();
    EXPECT_EQ(Read(hID), -1);
    EXPECT_THAT(FrameCalls(), ElementsAre(FirstGet(1), FirstGet(128)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1), NextGet(128, "0:0")));
}

TEST_F(LvReadNullFrame, Flag_IsNotKept) {
    Main().noFrame = true;
    Main().noVideo = 1;
    Read(Create());
    EXPECT_THAT(LiveDump(), HasSubstr("当前帧不是无视频信号\n"));
}

TEST_F(LvReadNullFrame, FrameNumber_StaysThatOfTheFrameBefore) {
    const TestFrame frame(1001);
    Main().frame = frame.Address();
    const int hID = Create();
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 0);
    Read(hID);
    Main().noFrame = true;
    Read(hID);
    EXPECT_THAT(LiveDump(), HasSubstr("当前读取的视频帧帧信息:帧号 1001\n"));
}

// ---- nothing is carried from one call to the next ------------------------------------------------------------------

TEST_F(LvReadReset, FramePositionAndFlag_AreResetBeforeEachCall) {
    Main().noVideo = 1;
    Audio().noVideo = 1;
    const int hID = Create();
    for (int read = 0; read < 4; ++read)
        Read(hID);
    Audio().result = -1;
    Main().result = -1;
    Read(hID);
    EXPECT_EQ(m_before.size(), 6u);
    EXPECT_THAT(m_before, Each("null 0:0 0"));
}

/** The first attempt of a read, on video, fails after it has written all its outputs. */
class LvReadAfterMess : public LvFixture {
protected:
    void SetUp() override {
        LvFixture::SetUp();
        EXPECT_CALL(platform, vexo_model_first_get_frame(_, _, VEXO_ENC_STR_MAIN, _, _, _))
            .WillOnce([this](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** frame,
                             vexo_read_av_list_note* note, VEXO_BOOL* noVideo) {
                *frame = m_mess.Address();
                *note = {{66, 77}};
                *noVideo = 1;
                return -1;
            });
    }

    /** How audio then succeeds. */
    void AudioWrites(unsigned char* frame) {
        EXPECT_CALL(platform, vexo_model_first_get_frame(_, _, VEXO_ENC_STR_AUDIO, _, _, _))
            .WillOnce([this, frame](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char** given,
                                    vexo_read_av_list_note* note, VEXO_BOOL* noVideo) {
                m_seen = *given == nullptr && note->note[0] == 0 && note->note[1] == 0 && *noVideo == 0;
                if (frame != nullptr)
                    *given = frame;
                return 0;
            });
    }

    const TestFrame m_mess{1};
    const TestFrame m_audio{2};
    bool m_seen = false;
};

TEST_F(LvReadAfterMess, SecondAttempt_StartsClean) {
    AudioWrites(m_audio.Address());
    Read(Create());
    EXPECT_TRUE(m_seen);
}

TEST_F(LvReadAfterMess, AudioFrame_IsNotFlagged) {
    AudioWrites(m_audio.Address());
    ReadOutputs out;
    EXPECT_EQ(Read(Create(), &out), 0);
    EXPECT_EQ(out.frame, m_audio.Address());
    EXPECT_EQ(out.flags, 0u);
    EXPECT_THAT(LiveDump(), HasSubstr("当前帧不是无视频信号\n"));
}

TEST_F(LvReadAfterMess, AudioPosition_IsNotTheFailedOne) {
    AudioWrites(m_audio.Address());
    const int hID = Create();
    Read(hID);
    platform.TakeCalls();
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(128, "0:0")));
}

TEST_F(LvReadAfterMess, AudioWithoutAFrame_IsNotGivenTheFailedOne) {
    AudioWrites(nullptr);
    ReadOutputs out;
    EXPECT_EQ(Read(Create(), &out), -1);
    EXPECT_TRUE(out.AllZero());
}

TEST_F(LvReadAfterMess, VideoPosition_StaysAsItWas) {
    AudioWrites(m_audio.Address());
    const int hID = Create();
    Read(hID);
    EXPECT_CALL(platform, vexo_model_first_get_frame(_, _, VEXO_ENC_STR_MAIN, _, _, _))
        .WillOnce([](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char**, vexo_read_av_list_note*,
                     VEXO_BOOL*) { return 0; });
    Read(hID);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "0:0")));
}
