// Reader playback: its start and its refusals, what the advance reader's frames become, and the end of the reader.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

static const char START_V2[] = "HostMgr_Dev_StartHistoryPlayV2";
static const std::string START_LINE =
    Debug(START_V2, "**************HostMgr_Dev_StartHistoryPlayV2****************!!!\n");
static const unsigned int REFUSED = 0x401A0000;

class ReaderStart : public PlaybackFixture {};
class ReaderFrames : public PlaybackFixture {};
class ReaderStop : public PlaybackFixture {};

static Lines AdvanceEnded() {
    return {"advance1.stop()", "advance1.stop()",
            "vexo_model_delete_advance_avss_reader(vexo_hostmgr_playback, destroy_advance_avss_reader)",
            "advance1.deleted()"};
}

// ---- start ---------------------------------------------------------------------------------------------------------

TEST_F(ReaderStart, LoginBelowOne_IsRefused) {
    EXPECT_EQ(Console([&] { EXPECT_EQ(StartV2(1, 0), -1); }), START_LINE + Error(START_V2, "Why hLogin:0 < 0!!\n"));
    EXPECT_EQ(Console([&] { EXPECT_EQ(StartV2(1, -5), -1); }), START_LINE + Error(START_V2, "Why hLogin:-5 < 0!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ReaderStart, ChannelAbove256_IsRefused) {
    EXPECT_EQ(Console([&] { EXPECT_EQ(StartV2(257), -1); }),
              START_LINE + Error(START_V2, "lChannel:257 overflow 256!!\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    EXPECT_EQ(StartV2(256), 0x5010100);
}

TEST_F(ReaderStart, NullTime_IsRefused) {
    _tagVexoHostMgrTime time = HostTime(12, 0, 0);
    for (_tagVexoHostMgrTime* start : {&time, static_cast<_tagVexoHostMgrTime*>(nullptr)}) {
        _tagVexoHostMgrTime* stop = start == nullptr ? &time : nullptr;
        EXPECT_EQ(Console([&] {
                      EXPECT_EQ(play->HostMgr_Dev_StartHistoryPlayV2(LOGIN, 1, 0, start, stop, nullptr, nullptr), -1);
                  }),
                  START_LINE + Error(START_V2, "pStartTime or pStopTime is null!!\n"));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ReaderStart, Start_MakesTheAdvanceReaderThenAddsTheChannel) {
    EXPECT_EQ(StartV2(), 0x5010001);
    const Lines calls = platform.TakeCalls();
    EXPECT_EQ(calls.front(), OnPlay("lock", START_V2));
    EXPECT_EQ(calls.back(), OnPlay("unlock", START_V2));
    EXPECT_THAT(
        WithAny({"advance", "reader1", "thread"}, calls),
        ElementsAre("vexo_model_new_advance_avss_reader(97, vexo_hostmgr_playback)", "advance1.set_callback(set)",
                    "advance1.set_param(0)", "reader1.open(files0)", "reader1.set_stream_type(1)",
                    "reader1.set_direction(0)", "reader1.set_frame_mode(2)", "reader1.start()",
                    "advance1.add_reader(reader1)", "reader1.set_time_range(1720180800, 1720184400)"));
    EXPECT_EQ(threads.Count(), 0u);
}

TEST_F(ReaderStart, WhileStarted_IsRefused) {
    StartV2();
    platform.TakeCalls();
    EXPECT_EQ(Console([&] { EXPECT_EQ(StartV2(2), -1); }),
              START_LINE + Error(START_V2, "Has been started but not stop, why start again!!\n"));
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderPlayLock(START_V2)));
    RawConsole([this] { Stop(); });
    EXPECT_EQ(StartV2(2), 0x5010002);
}

TEST_F(ReaderStart, WhileACallbackPlayRuns_IsRefused) {
    Play();
    RawConsole([&] { EXPECT_EQ(StartV2(2), -1); });
    EXPECT_EQ(Advances(), 0u);
}

TEST_F(ReaderStart, NoAdvanceReader_IsNamedTwiceAndLeavesThePlayStopped) {
    noAdvanceReader = true;
    EXPECT_EQ(Console([&] { EXPECT_EQ(StartV2(), -1); }),
              START_LINE + Error("creat_advance_avss_reader", "vexo_model_new_advance_avss_reader failed!!\n") +
                  Error(START_V2, "creat_advance_avss_reader failed!!\n"));
    EXPECT_EQ(platform.TakeCalls().back(), OnPlay("unlock", START_V2));
    EXPECT_THAT(Dump(), HasSubstr("未启动"));
}

TEST_F(ReaderStart, FailedAdd_DestroysTheAdvanceReaderAndLeavesThePlayStopped) {
    inquiryResult = -1;
    EXPECT_THAT(Console([&] { EXPECT_EQ(StartV2(), -1); }),
                testing::EndsWith(Error("HostMgrAddPlayNode", "HostMgrMallocPlayNode failed!!\n") +
                                  Error(START_V2, "HostMgrAddPlayNode failed!!\n")));
    EXPECT_THAT(With("advance", platform.TakeCalls()),
                ElementsAre("vexo_model_new_advance_avss_reader(97, vexo_hostmgr_playback)",
                            "advance1.set_callback(set)", "advance1.set_param(0)", "advance1.stop()",
                            "vexo_model_delete_advance_avss_reader(vexo_hostmgr_playback, destroy_advance_avss_reader)",
                            "advance1.deleted()"));
    EXPECT_THAT(Dump(), HasSubstr("未启动"));
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_START).dwYear, 0u) << "the range is kept on success only";
    ExpectNothingHeld();
    inquiryResult = 0;
    EXPECT_EQ(StartV2(), 0x5010001);
}

TEST_F(ReaderStart, ChannelZeroAndBelow_ReachTheRecorder) {
    EXPECT_EQ(StartV2(0), 0x5010000);
    EXPECT_THAT(With("inquiry", platform.TakeCalls()), ElementsAre(HasSubstr("(1281, 97, 4294967295,")));
}

// Its handle is -1 as well, but the channel was added: it plays, and its reader is not lost.
TEST_F(ReaderStart, ChannelMinusOne_IsAddedAndAnsweredWithMinusOne) {
    EXPECT_THAT(Console([&] { EXPECT_EQ(StartV2(-1), -1); }), Not(HasSubstr("failed")));
    EXPECT_FALSE(Advance().Deleted());
    EXPECT_FALSE(Reader().deleted);
    Speed(1);
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), 0u);
    EXPECT_THAT(receiver.Take(), ElementsAre("1"));
    EXPECT_EQ(Stop(), 0);
    ExpectNothingHeld();
}

TEST_F(ReaderStart, Mode_IsNotUsed) {
    StartV2();
    Speed(1);
    EXPECT_THAT(Dump(), HasSubstr("模式:回放模式"));
    Stop();
    Start(1, 1);
    Stop();
    StartV2();
    Speed(1);
    EXPECT_THAT(Dump(), HasSubstr("模式:下载模式")) << "an earlier callback start's";
}

TEST_F(ReaderStart, CallbackStartMeanwhile_JoinsThePlayAndTheAdvanceReader) {
    PlayV2();
    RawConsole([this] { EXPECT_EQ(Start(2), 0x5010002); });
    EXPECT_THAT(With("advance1", platform.TakeCalls()), ElementsAre("advance1.add_reader(reader2)"));
    EXPECT_EQ(threads.Count(), 1u);
}

// ---- frames --------------------------------------------------------------------------------------------------------

TEST_F(ReaderFrames, Frame_ComesWithChannelStreamTypeAndLength) {
    PlayV2(7);
    EXPECT_EQ(Advance().Push(&Reader(), Frame(3, VEXO_FRAME_AUDIO, 0, 320)), 0u);
    std::vector<Received> received = receiver.TakeAll();
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(received[0].what, "3");
    EXPECT_EQ(received[0].hLogin, LOGIN);
    EXPECT_EQ(received[0].hStream, 0x5010007);
    EXPECT_EQ(received[0].lChannel, 7);
    EXPECT_EQ(received[0].dwStreamType, 1);
    EXPECT_EQ(received[0].length, 356u);
    Control(HOSTMGR_PLAYCMD_STREAMTYPE, 7, 2);
    Advance().Push(&Reader(), Frame(4));
    EXPECT_EQ(receiver.TakeAll()[0].dwStreamType, 2);
}

TEST_F(ReaderFrames, Frame_TakesNoLock) {
    PlayV2();
    Advance().Push(&Reader(), Frame(1));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(ReaderFrames, EveryFrame_MovesThePlayTime) {
    PlayV2();
    Advance().Push(&Reader(), Frame(1, VEXO_FRAME_AUDIO, 3723000));
    const _tagVexoHostMgrTime time = TimeOf(HOSTMGR_PLAYTIME_CURRENT);
    EXPECT_EQ(time.dwHour, 13u);
    EXPECT_EQ(time.dwMinute, 2u);
    EXPECT_EQ(time.dwSecond, 3u);
    EXPECT_EQ(time.reserved, 77u);
}

TEST_F(ReaderFrames, Answer_IsZeroOrRefused) {
    PlayV2();
    for (const int result : {1, -1, INT32_MIN}) {
        receiver.result = result;
        EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), REFUSED);
    }
    receiver.result = 0;
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), 0u);
}

TEST_F(ReaderFrames, NullFrame_IsTheEndMarkAndAlwaysTaken) {
    PlayV2();
    receiver.result = -1;
    for (const VEXO_BOOL valid : {VEXO_TRUE, VEXO_FALSE}) {
        EXPECT_EQ(
            Console([&] { EXPECT_EQ(Advance().Push(&Reader(), nullptr, valid), 0u); }),
            Debug("VexoHisStreamCallBack", NULL_FRAME_TEXT) + Debug("HostMgrHistoryStreamPlayData", NULL_FRAME_TEXT));
        const std::vector<Received> received = receiver.TakeAll();
        ASSERT_EQ(received.size(), 1u);
        EXPECT_EQ(received[0].frame, nullptr);
        EXPECT_EQ(received[0].length, 0u);
        EXPECT_EQ(received[0].lChannel, 1);
    }
    EXPECT_FALSE(Reader().deleted) << "the end is only told";
}

TEST_F(ReaderFrames, NoNode_IsRefused) {
    PlayV2();
    EXPECT_EQ(Console([&] { EXPECT_EQ(Advance().PushFor(nullptr, Frame(1)), REFUSED); }),
              Error("VexoHisStreamCallBack", "usr_para is NULL\n"));
}

TEST_F(ReaderFrames, NodeWithoutPlay_IsRefused) {
    PlayV2();
    HostMgrPlayNode node = {};
    EXPECT_EQ(Console([&] { EXPECT_EQ(Advance().PushFor(&node, nullptr), REFUSED); }),
              Error("VexoHisStreamCallBack", "Playback is NULL!!\n"));
}

TEST_F(ReaderFrames, FrameThatIsNotValid_IsRefused) {
    PlayV2();
    EXPECT_EQ(Console([&] { EXPECT_EQ(Advance().Push(&Reader(), Frame(1), VEXO_FALSE), REFUSED); }),
              Error("VexoHisStreamCallBack", "is_valid_data\n"));
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1), 7), 0u) << "any value but 0 is valid";
}

TEST_F(ReaderFrames, BeforeTheFirstSpeed_AreRefused) {
    StartV2();
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), REFUSED);
    RawConsole([this] { EXPECT_EQ(Advance().Push(&Reader(), nullptr), 0u); });
    EXPECT_THAT(receiver.Take(), IsEmpty());
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwYear, 0u);
}

// The replay thread holds on exactly 1.
TEST_F(ReaderFrames, PausedByAnyValue_AreRefused) {
    PlayV2();
    for (const uint32_t pause : {1u, 2u, 0xFFFFFFFFu}) {
        Control(HOSTMGR_PLAYCMD_PAUSE, pause);
        EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), REFUSED);
    }
    EXPECT_THAT(receiver.Take(), IsEmpty());
    Control(HOSTMGR_PLAYCMD_PAUSE, 0);
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), 0u);
}

TEST_F(ReaderFrames, WithoutCallback_AreRefusedAndDoNotMoveThePlayTime) {
    _tagVexoHostMgrTime time = HostTime(12, 0, 0);
    play->HostMgr_Dev_StartHistoryPlayV2(LOGIN, 1, 0, &time, &time, nullptr, nullptr);
    Speed(1);
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), REFUSED);
    EXPECT_EQ(Console([&] { EXPECT_EQ(Advance().Push(&Reader(), nullptr), 0u); }),
              Debug("VexoHisStreamCallBack", NULL_FRAME_TEXT));
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwYear, 0u);
}

// An empty channel may end before its addition is through.
TEST_F(ReaderFrames, EndDuringTheAddition_IsToldAndNothingIsFreed) {
    PlayV2();
    Advance().on_add = [this](TestReader* reader) { Advance().Push(reader, nullptr); };
    RawConsole([this] { Control(HOSTMGR_PLAYCMD_ADDCHAN, 2); });
    EXPECT_THAT(receiver.Take(), ElementsAre("end"));
    EXPECT_FALSE(Reader(2).deleted);
    EXPECT_EQ(Advance().Push(&Reader(2), Frame(1)), 0u);
}

TEST_F(ReaderFrames, SpeedAudioAndPace_DoNotFilter) {
    PlayV2();
    Speed(32);
    Advance().Push(&Reader(), Frame(1, VEXO_FRAME_MAIN_DELTA, 0));
    Advance().Push(&Reader(), Frame(2, VEXO_FRAME_AUDIO, 0));
    Advance().Push(&Reader(), Frame(3, 77, 99999));
    EXPECT_THAT(receiver.Take(), ElementsAre("1", "2", "3"));
}

// ---- a command inside the callback ---------------------------------------------------------------------------------

TEST_F(ReaderFrames, CallbackDeletesItsOwnChannel_WhichIsFreedWhenItReturns) {
    PlayV2();
    bool freed = true;
    int result = -1;
    receiver.meanwhile = [&](const Received&) {
        result = Control(HOSTMGR_PLAYCMD_DELCHAN, 1);
        freed = Reader().deleted;
    };
    platform.TakeCalls();
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), 0u);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(freed);
    EXPECT_THAT(Without(PLAY_LOCK, platform.TakeCalls()), ElementsAreArray(NodeFreed("reader1", "advance1")));
    EXPECT_EQ(Advance().Push(&Reader(), Frame(2)), 0xDEADu) << "it is out of the advance reader";
    EXPECT_EQ(Stop(), 0);
    ExpectNothingHeld();
}

TEST_F(ReaderFrames, CallbackDeletesItsOwnChannelTwice_TheSecondFindsNothing) {
    PlayV2();
    std::vector<int> results;
    receiver.meanwhile = [&](const Received&) {
        results = {Control(HOSTMGR_PLAYCMD_DELCHAN, 1), Control(HOSTMGR_PLAYCMD_DELCHAN, 1)};
    };
    RawConsole([&] { Advance().Push(&Reader(), Frame(1)); });
    EXPECT_THAT(results, ElementsAre(0, -1));
}

TEST_F(ReaderFrames, CallbackDeletesAnotherChannel_WhichGoesOnTheSpot) {
    PlayV2();
    RawConsole([this] { Control(HOSTMGR_PLAYCMD_ADDCHAN, 2); });
    bool freed = false;
    receiver.meanwhile = [&](const Received&) {
        Control(HOSTMGR_PLAYCMD_DELCHAN, 2);
        freed = Reader(2).deleted;
    };
    EXPECT_EQ(Advance().Push(&Reader(1), Frame(1)), 0u);
    EXPECT_TRUE(freed);
}

TEST_F(ReaderFrames, CallbackSendsEveryOtherCommand_AndNoneWaits) {
    PlayV2();
    receiver.meanwhile = [this](const Received&) {
        EXPECT_EQ(Speed(2), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_PAUSE, 0), 0);
        EXPECT_EQ(Seek(HostTime(12, 30, 0)), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_AUDIO, 1), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_GETTIME, 0), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_DIRECTION, 0), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_ADDCHAN, 2), 0);
        EXPECT_EQ(Control(HOSTMGR_PLAYCMD_STREAMTYPE, 1, 2), 0);
    };
    EXPECT_EQ(Advance().Push(&Reader(), Frame(1)), 0u);
    EXPECT_EQ(Readers(), 2u);
}

// ---- stop ----------------------------------------------------------------------------------------------------------

TEST_F(ReaderStop, Stop_RemovesTheReadersThenStopsTwiceAndDeletesUnderTheLock) {
    PlayV2(1);
    RawConsole([this] { Control(HOSTMGR_PLAYCMD_ADDCHAN, 2); });
    platform.TakeCalls();
    RawConsole([this] { EXPECT_EQ(Stop(), 0); });
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderPlayLock(
                    "HostMgr_Dev_StopHistoryPlay",
                    Joined({NodeFreed("reader1", "advance1"), NodeFreed("reader2", "advance1"), AdvanceEnded()}))));
    ExpectNothingHeld();
}

TEST_F(ReaderStop, StartAfterwards_HasAnAdvanceReaderOfItsOwn) {
    PlayV2();
    Stop();
    PlayV2();
    EXPECT_EQ(Advances(), 2u);
    EXPECT_EQ(Advance(2).Push(&Reader(2), Frame(1)), 0u);
}

TEST_F(ReaderStop, AllChannelsDeleted_LeavesTheReaderUntilStop) {
    PlayV2();
    Control(HOSTMGR_PLAYCMD_DELCHAN, 1);
    EXPECT_FALSE(Advance().Deleted());
    platform.TakeCalls();
    RawConsole([this] { EXPECT_EQ(Stop(), 0); });
    EXPECT_THAT(Without(PLAY_LOCK, platform.TakeCalls()), ElementsAreArray(AdvanceEnded()));
}
