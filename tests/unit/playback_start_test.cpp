// Callback playback apart from delivery: start, the streams' callbacks, stop, and the replay thread's handle.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

static const std::string START_LINE =
    Debug("HostMgr_Dev_StartHistoryPlay", "**************HostMgr_Dev_StartHistoryPlay****************!!!\n");
static const std::string STOP_LINE =
    Debug("HostMgr_Dev_StopHistoryPlay", "**************HostMgr_Dev_StopHistoryPlay****************!!!\n");
static const std::string STOP_END = Debug("HostMgr_Dev_StopHistoryPlay", "HostMgr_Dev_StopHistoryPlay end\n");

static const char NEW_THREAD[] = "vexo_utility_creat_thread({1, 0, entry, argument, 0, 0x80000}, HostMgrRePlay_Thread)";

class PlayStart : public PlaybackFixture {};
class PlayCallback : public PlaybackFixture {};
class PlayStop : public PlaybackFixture {};

// ---- start: refusals -----------------------------------------------------------------------------------------------

TEST_F(PlayStart, LoginBelowOne_IsRefused) {
    for (const int hLogin : {0, -1}) {
        EXPECT_EQ(
            Console([&] { EXPECT_EQ(Start(1, 0, hLogin), -1); }),
            START_LINE + Error("HostMgr_Dev_StartHistoryPlay", "Why hLogin:" + std::to_string(hLogin) + " < 0!!\n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayStart, ChannelOutOfRange_IsRefused) {
    for (const int lChannel : {0, 257, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(Console([&] { EXPECT_EQ(Start(lChannel), -1); }),
                  START_LINE + Error("HostMgr_Dev_StartHistoryPlay",
                                     "lChannel:" + std::to_string(lChannel) + " overflow 256!!\n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayStart, FirstAndLastChannel_AreAccepted) {
    EXPECT_EQ(Start(1), 0x5010001);
    EXPECT_EQ(Start(256), 0x5010100);
    EXPECT_THAT(With("inquiry", platform.TakeCalls()),
                ElementsAre(HasSubstr("(1281, 97, 0,"), HasSubstr("(1281, 97, 255,")));
}

TEST_F(PlayStart, NullTime_IsRefused) {
    _tagVexoHostMgrTime time = HostTime(12, 0, 0);
    for (_tagVexoHostMgrTime* start : {&time, static_cast<_tagVexoHostMgrTime*>(nullptr)}) {
        _tagVexoHostMgrTime* stop = start == nullptr ? &time : nullptr;
        EXPECT_EQ(Console([&] { EXPECT_EQ(play->HostMgr_Dev_StartHistoryPlay(LOGIN, 1, 0, start, stop), -1); }),
                  START_LINE + Error("HostMgr_Dev_StartHistoryPlay", "pStartTime or pStopTime is null!!\n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayStart, Refusals_LookAtLoginThenChannelThenTimes) {
    EXPECT_THAT(Console([&] { play->HostMgr_Dev_StartHistoryPlay(0, 0, 0, nullptr, nullptr); }), HasSubstr("hLogin"));
    EXPECT_THAT(Console([&] { play->HostMgr_Dev_StartHistoryPlay(1, 0, 0, nullptr, nullptr); }), HasSubstr("lChannel"));
}

TEST_F(PlayStart, ARefusal_StartsNothing) {
    RawConsole([&] { Start(0); });
    EXPECT_THAT(Dump(), HasSubstr("未启动"));
}

// ---- start ---------------------------------------------------------------------------------------------------------

TEST_F(PlayStart, Start_AddsThenCreatesTheThreadUnderTheLock) {
    Start();
    const Lines calls = platform.TakeCalls();
    EXPECT_EQ(calls.front(), OnPlay("lock", "HostMgr_Dev_StartHistoryPlay"));
    ASSERT_GE(calls.size(), 3u);
    EXPECT_THAT(Lines(calls.end() - 3, calls.end()), ElementsAre(HasSubstr("reader1.set_time_range"), NEW_THREAD,
                                                                 OnPlay("unlock", "HostMgr_Dev_StartHistoryPlay")));
}

TEST_F(PlayStart, FurtherChannels_ShareTheThread) {
    Start(1);
    Start(2);
    EXPECT_THAT(With("creat_thread", platform.TakeCalls()), ElementsAre(NEW_THREAD));
}

TEST_F(PlayStart, FailedAdd_CountsAsStartedAndRunsTheThread) {
    inquiryResult = -1;
    RawConsole([&] { EXPECT_EQ(Start(), -1); });
    EXPECT_THAT(With("creat_thread", platform.TakeCalls()), ElementsAre(NEW_THREAD));
    EXPECT_THAT(Dump(), HasSubstr("启动\n当前播放状态是:未知"));
    EXPECT_EQ(Stop(), 0);
}

TEST_F(PlayStart, ThreadNotToBeHad_IsAskedForByTheNextStart) {
    EXPECT_CALL(platform, vexo_utility_creat_thread).WillOnce(testing::Return(-1)).WillRepeatedly(testing::DoDefault());
    EXPECT_EQ(Start(1), 0x5010001);
    EXPECT_EQ(Start(2), 0x5010002);
    EXPECT_THAT(With("creat_thread", platform.TakeCalls()), ElementsAre(NEW_THREAD, NEW_THREAD));
    EXPECT_EQ(threads.Count(), 1u);
}

TEST_F(PlayStart, Range_IsNotTheModules) {
    Start();
    for (const uint32_t selector : {HOSTMGR_PLAYTIME_CURRENT, HOSTMGR_PLAYTIME_START, HOSTMGR_PLAYTIME_STOP}) {
        const _tagVexoHostMgrTime time = TimeOf(selector);
        EXPECT_EQ(time.dwYear, 0u) << selector;
        EXPECT_EQ(time.reserved, 0u) << selector;
    }
}

TEST_F(PlayStart, Mode_HoldsForTheChannelsStartedWithIt) {
    Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    RawConsole([&] { Receive(Start(2, 0)); });
    Reader(1).Add({0, 40});
    Reader(2).Add({0, 40});
    EXPECT_THAT(At(0), ElementsAre("1", "1"));
    EXPECT_THAT(At(0), ElementsAre("2")) << "the download";
}

TEST_F(PlayStart, AddedChannels_TakeTheModeOfTheLastStart) {
    Start(1, 5);
    Control(HOSTMGR_PLAYCMD_ADDCHAN, 2);
    Start(3, 0);
    RawConsole([&] { Speed(1); });
    const std::string dump = Dump();
    EXPECT_THAT(dump, HasSubstr("通道:0\n模式:下载模式"));
    EXPECT_THAT(dump, HasSubstr("通道:1\n模式:下载模式"));
    EXPECT_THAT(dump, HasSubstr("通道:2\n模式:回放模式"));
}

// ---- the stream's callback -----------------------------------------------------------------------------------------

TEST_F(PlayCallback, Set_IsOneLookUnderTheLock) {
    const int hStream = Start();
    platform.TakeCalls();
    EXPECT_EQ(Console([&] { EXPECT_EQ(Receive(hStream), 0); }),
              Debug("HostMgr_Dev_SetHistoryStreamCallback", "hLogin:0x501, hStream:0x5010001\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderPlayLock("HostMgr_Dev_SetHistoryStreamCallback")));
}

TEST_F(PlayCallback, LoginBelowOne_IsRefused) {
    EXPECT_EQ(
        Console([&] { EXPECT_EQ(play->HostMgr_Dev_SetHistoryStreamCallback(0, 0, Receiver::Stream, nullptr), -1); }),
        Debug("HostMgr_Dev_SetHistoryStreamCallback", "hLogin:0x0, hStream:0x0\n") +
            Error("HostMgr_Dev_SetHistoryStreamCallback", "Why hLogin:0x0 <= 0!!\n"));
    EXPECT_THAT(
        Console([&] { EXPECT_EQ(play->HostMgr_Dev_SetHistoryStreamCallback(-1, 1, Receiver::Stream, nullptr), -1); }),
        HasSubstr("Why hLogin:0xffffffff <= 0!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// So a stream of a login of 0x8000 and above cannot be given one.
TEST_F(PlayCallback, StreamBelowOne_IsRefused) {
    EXPECT_THAT(Console([&] { EXPECT_EQ(Receive(0), -1); }),
                HasSubstr(Error("HostMgr_Dev_SetHistoryStreamCallback", "Why hStream:0x0 <= 0!!\n")));
    const int hStream = Start(1, 0, 0x8000);
    EXPECT_THAT(Console([&] {
                    EXPECT_EQ(play->HostMgr_Dev_SetHistoryStreamCallback(0x8000, hStream, Receiver::Stream, nullptr),
                              -1);
                }),
                HasSubstr("Why hStream:0x80000001 <= 0!!\n"));
}

TEST_F(PlayCallback, UnknownStream_IsAWarningAndNoError) {
    Start();
    EXPECT_EQ(Console([&] { EXPECT_EQ(Receive(0x5010105), 0); }),
              Debug("HostMgr_Dev_SetHistoryStreamCallback", "hLogin:0x501, hStream:0x5010105\n") +
                  Warning("HostMgr_Dev_SetHistoryStreamCallback",
                          "Exception!! Not find hStream 0x5010105 uCh 260, Please check\n"));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_F(PlayCallback, AnotherLoginsStream_IsNotFound) {
    const int hStream = Start();
    EXPECT_THAT(Console([&] {
                    EXPECT_EQ(play->HostMgr_Dev_SetHistoryStreamCallback(LOGIN + 1, hStream, Receiver::Stream, nullptr),
                              0);
                }),
                HasSubstr("Not find hStream 0x5010001 uCh 0,"));
}

TEST_F(PlayCallback, Frame_ComesWithHandlesLengthAndUser) {
    const int hStream = Play(7);
    Reader().Add(3, VEXO_FRAME_SUB_DELTA, 0, 1000);
    RawConsole([&] { threads.Step(1); });
    const std::vector<Received> received = receiver.TakeAll();
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].what, "3");
    EXPECT_EQ(received[0].hLogin, LOGIN);
    EXPECT_EQ(received[0].hStream, hStream);
    EXPECT_EQ(received[0].length, 1036u);
}

TEST_F(PlayCallback, Replaced_TheNewOneGetsTheNextFrame) {
    const int hStream = Play(1, HOSTMGR_PLAYMODE_DOWNLOAD);
    Reader().Add({0, 1, 2});
    EXPECT_THAT(At(0), ElementsAre("1"));
    Receiver other;
    play->HostMgr_Dev_SetHistoryStreamCallback(LOGIN, hStream, Receiver::Stream, &other);
    EXPECT_THAT(At(0), IsEmpty());
    EXPECT_THAT(other.Take(), ElementsAre("2"));
    play->HostMgr_Dev_SetHistoryStreamCallback(LOGIN, hStream, nullptr, nullptr);
    EXPECT_THAT(At(0), IsEmpty());
    Receive(hStream);
    EXPECT_THAT(At(0), ElementsAre("3")) << "without a callback the frame is kept";
}

// ---- stop ----------------------------------------------------------------------------------------------------------

TEST_F(PlayStop, LoginBelowOne_IsRefused) {
    EXPECT_EQ(Console([&] { EXPECT_EQ(Stop(0), -1); }),
              STOP_LINE + Error("HostMgr_Dev_StopHistoryPlay", "Why hLogin:0x0 < 0!!\n"));
    EXPECT_THAT(Console([&] { EXPECT_EQ(Stop(-1), -1); }), HasSubstr("Why hLogin:0xffffffff < 0!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayStop, NothingStarted_SaysSo) {
    EXPECT_EQ(Console([&] { EXPECT_EQ(Stop(), -1); }),
              STOP_LINE + Error("HostMgrHistoryStreamStopPlay", "is stop!!\n") + STOP_END);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderPlayLock("HostMgr_Dev_StopHistoryPlay")));
}

TEST_F(PlayStop, WholePlay_EndsUnderTheLockAndTheThreadIsJoinedWithoutIt) {
    Play(1);
    RawConsole([&] { Start(2); });
    platform.TakeCalls();
    EXPECT_EQ(Console([&] { EXPECT_EQ(play->HostMgr_Dev_StopHistoryPlay(LOGIN, 0x5010002), 0); }),
              STOP_LINE + STOP_END);
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(Joined(
                    {UnderPlayLock("HostMgr_Dev_StopHistoryPlay", Joined({NodeFreed("reader1"), NodeFreed("reader2")})),
                     {"vexo_utility_retrieve_thread(1)"}})));
    EXPECT_TRUE(threads.Ended(1));
    ExpectNothingHeld();
}

TEST_F(PlayStop, ChannelsOfOtherLogins_GoToo) {
    Start(1);
    Start(1, 0, LOGIN + 1);
    EXPECT_EQ(Stop(), 0);
    ExpectNothingHeld();
}

TEST_F(PlayStop, SecondStop_FindsNothingAndJoinsNothing) {
    Start();
    Stop();
    platform.TakeCalls();
    RawConsole([&] { EXPECT_EQ(Stop(), -1); });
    EXPECT_THAT(With("retrieve_thread", platform.TakeCalls()), IsEmpty());
}

TEST_F(PlayStop, JoinThatFails_CountsAsDone) {
    Start();
    EXPECT_CALL(platform, vexo_utility_retrieve_thread).WillOnce([this](unsigned long id) {
        threads.Join(id);
        return -1;
    });
    EXPECT_EQ(Stop(), 0);
    EXPECT_EQ(Stop(), -1) << "joins nothing";
}

TEST_F(PlayStop, StartAfterwards_HasAThreadOfItsOwnAndWaitsForASpeed) {
    Play();
    Stop();
    RawConsole([&] { Receive(Start()); });
    Reader(2).Add({0});
    EXPECT_EQ(threads.Count(), 2u);
    EXPECT_THAT(At(0), IsEmpty()) << "not played before the first speed command";
    Speed(1);
    EXPECT_THAT(At(0), ElementsAre("1"));
}

TEST_F(PlayStop, PauseDirectionSpeedAndAudio_HoldOnIntoTheNextPlay) {
    Play();
    RawConsole([&] {
        Control(HOSTMGR_PLAYCMD_PAUSE, 1);
        Control(HOSTMGR_PLAYCMD_DIRECTION, 0xFFFFFFFF);
        Control(HOSTMGR_PLAYCMD_AUDIO, 1);
        Speed(-3);
        Stop();
        Start();
    });
    EXPECT_THAT(Dump(), HasSubstr("当前播放状态是:暂停\n"));
    Control(HOSTMGR_PLAYCMD_PAUSE, 0);
    const std::string dump = Dump();
    EXPECT_THAT(dump, HasSubstr("倒放"));
    EXPECT_THAT(dump, HasSubstr("当前播放速度是:-3\n"));
    EXPECT_THAT(dump, HasSubstr("是否播放音频:是\n"));
}
