// Live view apart from reading: start and stop, the audio switch, releasing, and what a logout means for frames held.
#include "lv_fixture.h"

using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Return;

using namespace vexo_soft;

class LvRealPlay : public LvFixture {};
class LvRelease : public LvFixture {};
class LvAudioSwitch : public LvFixture {};
class LvLocks : public LvFixture {};
class LvLogout : public LvFixture {};

// ---- start and stop ------------------------------------------------------------------------------------------------

TEST_F(LvRealPlay, Start_DoesNothingWhateverItIsGiven) {
    for (const int number : {1, 0, -1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_StartRealPlay(LOGIN, number, number), 0); }), "");
        EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(LookupCalls()));
    }
}

TEST_F(LvRealPlay, Stop_DoesNothingWhateverItIsGiven) {
    for (const int number : {1, 0, -1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_StopRealPlay(LOGIN, number, number), 0); }), "");
        EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(LookupCalls()));
    }
}

TEST_F(LvRealPlay, UnknownLogin_IsNamed) {
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_StopRealPlay(9, 1, 1), -1); }),
              Error("HostMgrGetUserInfo", "Not find User 0x9!!\n") +
                  Error("vexo_HostMgr_Dev_StopRealPlay", "hLogin:9 not logged in!!\n"));
}

TEST_F(LvRealPlay, Stop_LeavesBuffersAndHeldFramesAlone) {
    const int hID = Create();
    Read(hID);
    vexo_HostMgr_Dev_StopRealPlay(LOGIN, 1, 1);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), FirstGet(128)));
}

// ---- release -------------------------------------------------------------------------------------------------------

TEST_F(LvRelease, HeldVideo_IsReleasedUnderTheLock) {
    const int hID = Create(3, 1);
    Read(hID);
    platform.TakeCalls();
    EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(hID), 0);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderLvLock("HostMgr_Dev_ReleaseRealOneFrame", {Rel(1, "1:1", 2)})));
}

TEST_F(LvRelease, HeldSubStreamVideo_IsReleasedAsSubStream) {
    const int hID = Create(3, 2);
    Read(hID);
    platform.TakeCalls();
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(2, "2:1", 2)));
}

TEST_F(LvRelease, HeldAudio_IsReleasedAtTheAudioPosition) {
    const int hID = Create(3, 1);
    Read(hID);
    Read(hID);
    platform.TakeCalls();
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(128, "128:1", 2)));
}

TEST_F(LvRelease, NothingRead_TellsTheRecorderNothing) {
    const int hID = Create();
    EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(hID), 0);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvRelease, Twice_ReleasesOnce) {
    const int hID = Create();
    Read(hID);
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    platform.TakeCalls();
    EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(hID), 0);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvRelease, RecorderRefuses_FrameCountsAsReleased) {
    const int hID = Create();
    Read(hID);
    ON_CALL(platform, vexo_model_rel_frame).WillByDefault(Return(-1));
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(hID), 0); }), "");
    platform.TakeCalls();
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvRelease, OtherBufferOfTheSameStream_KeepsItsFrame) {
    const int first = Create();
    const int second = Create();
    Read(first);
    Read(second);
    platform.TakeCalls();
    vexo_HostMgr_Dev_ReleaseRealOneFrame(first);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(1, "1:1")));
    vexo_HostMgr_Dev_ReleaseRealOneFrame(second);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(1, "1:2")));
}

/** The live-view lock answers each unlock with 5. One thread only: it does not lock. */
class LvReleaseAnswer : public LvFixture {
protected:
    void AnswerUnlock() {
        MockRwLock& lock = platform.RwLock(LV_LOCK);
        ON_CALL(lock, wr_lock).WillByDefault(Return(0));
        ON_CALL(lock, unlock).WillByDefault(Return(5));
    }
};

TEST_F(LvReleaseAnswer, KnownHandle_IsTheUnlocksOwn) {
    const int hID = Create();
    Read(hID);
    AnswerUnlock();
    EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(hID), 5);
}

TEST_F(LvReleaseAnswer, UnknownHandle_IsTheUnlocksOwn) {
    AnswerUnlock();
    EXPECT_EQ(RawConsole([] { EXPECT_EQ(vexo_HostMgr_Dev_ReleaseRealOneFrame(LOGIN), 5); }), "");
}

TEST_F(LvReleaseAnswer, Release_UnlocksOnce) {
    const int hID = Create();
    MockRwLock& lock = platform.RwLock(LV_LOCK);
    EXPECT_CALL(lock, wr_lock).WillOnce(Return(0));
    EXPECT_CALL(lock, unlock).WillOnce(Return(0));
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
}

TEST_F(LvReleaseAnswer, OtherOperations_DoNotPassItOn) {
    AnswerUnlock();
    EXPECT_EQ(vexo_HostMgr_Dev_CreateRealStreamBuffer(LOGIN, 1, 1), LOGIN);
    EXPECT_EQ(vexo_HostMgr_Dev_RealStreamBufferEnableAudio(LOGIN, 1), 0);
    EXPECT_EQ(Read(LOGIN), 0);
    EXPECT_EQ(vexo_HostMgr_Dev_DestroyRealStreamBuffer(LOGIN), 0);
}

// ---- audio switch --------------------------------------------------------------------------------------------------

TEST_F(LvAudioSwitch, Switch_IsSetUnderTheLockAndNothingElseIsAsked) {
    const int hID = Create();
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 0), 0); }), "");
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderLvLock("HostMgr_Dev_RealStreamBufferEnableAudio")));
}

TEST_F(LvAudioSwitch, UnknownHandle_SaysSoBeforeTheLockIsGivenBack) {
    MockRwLock& lock = platform.RwLock(LV_LOCK);
    ON_CALL(lock, wr_lock).WillByDefault(Return(0));
    ON_CALL(lock, unlock).WillByDefault([](const char*, const char*) { return printf("unlocked\n"); });
    EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_RealStreamBufferEnableAudio(LOGIN, 1), -1); }),
              Error("HostMgr_Dev_RealStreamBufferEnableAudio", "index == -1\n") + "unlocked\n");
}

class LvAudioOff : public LvFixture, public testing::WithParamInterface<unsigned int> {
protected:
    int CreateWithAudioOff(unsigned int stream = 1) {
        const int hID = Create(1, stream);
        EXPECT_EQ(vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, GetParam()), 0);
        platform.TakeCalls();
        return hID;
    }
};

TEST_P(LvAudioOff, EachRead_TriesVideoOnceAndNeverAudio) {
    const int hID = CreateWithAudioOff();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(1)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:2"), NextGet(1, "1:2")));
}

TEST_P(LvAudioOff, EachReadOfASubStream_TriesVideoOnceAndNeverAudio) {
    const int hID = CreateWithAudioOff(2);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(FirstGet(2)));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(2, "2:1"), NextGet(2, "2:1")));
}

TEST_P(LvAudioOff, VideoFails_ReadFailsWithoutAnAudioCall) {
    const int hID = CreateWithAudioOff();
    Main().result = -1;
    EXPECT_EQ(RawConsole([&] { EXPECT_EQ(Read(hID), -1); }), "");
    EXPECT_THAT(FrameCalls(), ElementsAre(FirstGet(1)));
}

TEST_P(LvAudioOff, VideoFailsAfterVideo_ReadFailsWithoutAnAudioCall) {
    const int hID = CreateWithAudioOff();
    Read(hID);
    Main().result = -1;
    EXPECT_EQ(Read(hID), -1);
    FrameCalls();
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(NextGet(1, "1:1")));
}

TEST_P(LvAudioOff, AfterAudioWasRead_VideoIsTriedOnce) {
    const int hID = Create();
    Read(hID);
    Read(hID);
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, GetParam());
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(128, "128:1"), NextGet(1, "1:1")));
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:2"), NextGet(1, "1:2")));
}

TEST_P(LvAudioOff, HeldAudioFrame_StaysHeldUntilRelease) {
    const int hID = Create();
    Read(hID);
    Read(hID);
    platform.TakeCalls();
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, GetParam());
    EXPECT_THAT(FrameCalls(), IsEmpty());
    vexo_HostMgr_Dev_ReleaseRealOneFrame(hID);
    EXPECT_THAT(FrameCalls(), ElementsAre(Rel(128, "128:1")));
}

TEST_P(LvAudioOff, OnAgainBeforeAnyAudio_StartsWithTheFirstFrame) {
    const int hID = CreateWithAudioOff();
    Read(hID);
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 1);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:1"), FirstGet(128)));
}

TEST_P(LvAudioOff, OnAgainAfterAudio_GoesOnWhereItStopped) {
    const int hID = Create();
    Read(hID);
    Read(hID);
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, GetParam());
    Read(hID);
    vexo_HostMgr_Dev_RealStreamBufferEnableAudio(hID, 1);
    EXPECT_THAT(CallsOfRead(hID), ElementsAre(Rel(1, "1:2"), NextGet(128, "128:1")));
}

TEST_P(LvAudioOff, OtherBuffer_KeepsItsAudio) {
    CreateWithAudioOff();
    const int other = Create();
    Read(other);
    EXPECT_THAT(CallsOfRead(other), ElementsAre(Rel(1, "1:1"), FirstGet(128)));
}

INSTANTIATE_TEST_SUITE_P(Values, LvAudioOff, testing::Values(0, 2, 3, 0x101, 0x80000001, 0xFFFFFFFF));

// ---- locks ---------------------------------------------------------------------------------------------------------

TEST_F(LvLocks, FrameCalls_AreMadeUnderTheLiveViewLockAlone) {
    std::vector<Lines> held;
    const auto note = [&] {
        held.push_back(platform.HeldLocks());
        return -1;
    };
    ON_CALL(platform, vexo_model_rel_frame)
        .WillByDefault(
            [&](unsigned int, vexo_user_id, vexo_enc_str_type, const vexo_read_av_list_note*) { return note(); });
    const int hID = Create();
    Read(hID);
    Read(hID);
    ON_CALL(platform, vexo_model_get_frame)
        .WillByDefault([&](unsigned int, vexo_user_id, vexo_enc_str_type, const vexo_read_av_list_note*,
                           unsigned char**, vexo_read_av_list_note*, VEXO_BOOL*) { return note(); });
    Read(hID);
    const int fresh = Create();
    ON_CALL(platform, vexo_model_first_get_frame)
        .WillByDefault([&](unsigned int, vexo_user_id, vexo_enc_str_type, unsigned char**, vexo_read_av_list_note*,
                           VEXO_BOOL*) { return note(); });
    Read(fresh);
    EXPECT_EQ(held.size(), 6u);  // two releases, then two attempts by each of the last two reads
    EXPECT_THAT(held, Each(ElementsAre(LV_LOCK)));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

// ---- logout --------------------------------------------------------------------------------------------------------

TEST_F(LvLogout, FramesHeld_AreNotReleased) {
    const int video = Create(1, 1);
    const int audio = Create(2, 1);
    Read(video);
    Read(audio);
    Read(audio);
    platform.TakeCalls();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_THAT(FrameCalls(), IsEmpty());
}

TEST_F(LvLogout, TableAndLock_AreGivenBackInThisOrderWithTheirTags) {
    Create();
    vexo_HostMgr_Dev_Logout(LOGIN);
    EXPECT_THAT(With("~vexo_hostmgr_lv", platform.TakeCalls()),
                ElementsAre("vexo_utility_free(vexo_hostmgr_lv, ~vexo_hostmgr_lv, 0x80002)",
                            "vexo_utility_delete_rw_lock(vexo_hostmgr_lv, vexo_hostmgr_lv, ~vexo_hostmgr_lv)"));
}

TEST_F(LvLogout, NextLoginOfTheSameHandle_StartsWithoutBuffers) {
    const int hID = Create();
    vexo_HostMgr_Dev_Logout(LOGIN);
    LogInAll({LOGIN});
    EXPECT_EQ(Read(hID), -1);
    EXPECT_EQ(Create(), hID);
}
