// The commands of a play: the buffer, each command's effect, what it locks and prints, and the values that it clamps.
#include "playback_fixture.h"

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

using namespace vexo_soft;

static const char CONTROL[] = "HostMgrHistoryStreamPlayControl";

static std::string CommandLine(unsigned int command) {
    char text[40];
    snprintf(text, sizeof(text), "PlayCmd 0x%x\n", command);
    return Debug(CONTROL, text);
}

class PlayControl : public PlaybackFixture {
protected:
    /** The calls of a command on a play that was started before. */
    Lines CallsOf(uint32_t command, uint32_t param = 0, uint32_t param2 = 0, int result = 0) {
        platform.TakeCalls();
        RawConsole([&] { EXPECT_EQ(Control(command, param, param2), result); });
        return platform.TakeCalls();
    }
};

class PlaySpeed : public PlayControl {};
class PlaySeek : public PlayControl {};
class PlayTime : public PlayControl {};
class PlayChannels : public PlayControl {};

// ---- the buffer ----------------------------------------------------------------------------------------------------

TEST_F(PlayControl, BufferOfAnotherSize_IsRefusedBeforeAnything) {
    unsigned char buffer[64] = {};
    for (const unsigned int size : {0u, 59u, 61u, 0xFFFFFFFFu}) {
        char text[120];
        snprintf(text, sizeof(text), "pInBuf %p, dwInLength %d size 60\n", static_cast<void*>(buffer),
                 static_cast<int>(size));
        EXPECT_EQ(Console([&] {
                      EXPECT_EQ(
                          play->HostMgrHistoryStreamPlayControl(LOGIN, 0, 0, buffer, 60, buffer, size, buffer, 60), -1);
                  }),
                  Error(CONTROL, text));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayControl, NoBuffer_IsRefused) {
    EXPECT_EQ(Console([&] {
                  EXPECT_EQ(play->HostMgrHistoryStreamPlayControl(LOGIN, 0, 0, nullptr, 0, nullptr, 60, nullptr, 0),
                            -1);
              }),
              Error(CONTROL, "pInBuf (nil), dwInLength 60 size 60\n"));
}

TEST_F(PlayControl, BufferAtAnyAddress_IsReadAndWritten) {
    RawConsole([this] { StartV2(); });
    alignas(8) unsigned char buffer[61] = {};
    HostMgrPlayCtrlParam param = {};
    param.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    param.dwParam = HOSTMGR_PLAYTIME_STOP;
    memcpy(buffer + 1, &param, sizeof(param));
    RawConsole([&] {
        EXPECT_EQ(play->HostMgrHistoryStreamPlayControl(LOGIN, 0, 0, nullptr, 0, buffer + 1, 60, nullptr, 0), 0);
    });
    memcpy(&param, buffer + 1, sizeof(param));
    EXPECT_EQ(param.struTime.dwHour, 13u);
    EXPECT_EQ(param.struTime.reserved, 88u);
}

TEST_F(PlayControl, UnknownCommand_IsNamed) {
    for (const unsigned int command : {0u, 11u, 0xFFFFFFFFu}) {
        char text[60];
        snprintf(text, sizeof(text), "Not support!! PlayCmd 0x%x\n", command);
        EXPECT_EQ(Console([&] { EXPECT_EQ(Control(command), -1); }), CommandLine(command) + Error(CONTROL, text));
    }
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayControl, Nothing_TakesNoLock) {
    EXPECT_EQ(Console([&] { EXPECT_EQ(Control(HOSTMGR_PLAYCMD_NOP), 0); }), CommandLine(4));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(PlayControl, PauseAudioAndDirection_SetAWordUnderTheLock) {
    for (const uint32_t command : {HOSTMGR_PLAYCMD_PAUSE, HOSTMGR_PLAYCMD_AUDIO, HOSTMGR_PLAYCMD_DIRECTION}) {
        EXPECT_EQ(Console([&] { EXPECT_EQ(Control(command, 1), 0); }), CommandLine(command));
        EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderPlayLock(CONTROL)));
    }
}

TEST_F(PlayControl, Direction_DoesNotReachAReaderThatRuns) {
    Play();
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_DIRECTION, 0xFFFFFFFF), ElementsAreArray(UnderPlayLock(CONTROL)));
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_SPEED, 2),
                ElementsAreArray(UnderPlayLock(CONTROL, {"reader1.set_frame_mode(2)"})));
}

// ---- speed ---------------------------------------------------------------------------------------------------------

static Lines Opened(const std::string& reader, const std::string& files, const std::string& range) {
    return {reader + ".open(" + files + ")",
            reader + ".set_stream_type(1)",
            reader + ".set_direction(0)",
            reader + ".set_frame_mode(2)",
            reader + ".start()",
            reader + ".set_time_range(" + range + ")"};
}

/** What mktime makes of a time of zeros, as in a range that no reader start has filled. */
static std::string RangeOfZeros() {
    const _tagVexoHostMgrTime zeros = {};
    time_t seconds = 0;
    HostMgrHostTimeToSeconds(&zeros, &seconds);
    EXPECT_LT(seconds, 0);
    return std::to_string(static_cast<long>(seconds)) + ", " + std::to_string(static_cast<long>(seconds));
}

TEST_F(PlaySpeed, First_SetsTheModesUnderTheLockAndOpensWithoutIt) {
    RawConsole([this] {
        Start(1);
        Start(2);
    });
    const std::string range = RangeOfZeros();
    EXPECT_THAT(
        CallsOf(HOSTMGR_PLAYCMD_SPEED, 1),
        ElementsAreArray(Joined({UnderPlayLock(CONTROL, {"reader1.set_frame_mode(2)", "reader2.set_frame_mode(2)"}),
                                 Opened("reader1", "files0", range), Opened("reader2", "files1", range)})));
}

// A play that begins fast gets all frames from its readers; the delivery drops the others itself.
TEST_F(PlaySpeed, FirstAtFive_LeavesTheReadersAtAllFrames) {
    RawConsole([this] { Start(); });
    EXPECT_THAT(With("set_frame_mode", CallsOf(HOSTMGR_PLAYCMD_SPEED, 5)),
                ElementsAre("reader1.set_frame_mode(0)", "reader1.set_frame_mode(2)"));
}

TEST_F(PlaySpeed, Later_SetsTheModesOnly) {
    Play();
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_SPEED, 4),
                ElementsAreArray(UnderPlayLock(CONTROL, {"reader1.set_frame_mode(2)"})));
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_SPEED, 5),
                ElementsAreArray(UnderPlayLock(CONTROL, {"reader1.set_frame_mode(0)"})));
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_SPEED, 0xFFFFFFFF),
                ElementsAreArray(UnderPlayLock(CONTROL, {"reader1.set_frame_mode(2)"})));
}

struct SpeedRow {
    const char* name;
    int given;
    int kept;
};
static void PrintTo(const SpeedRow& row, std::ostream* out) {
    *out << row.name;
}
class PlaySpeedTable : public PlaySpeed, public testing::WithParamInterface<SpeedRow> {};

TEST_P(PlaySpeedTable, Speed_IsClampedAndPrinted) {
    Play();
    const std::string kept = std::to_string(GetParam().kept);
    EXPECT_EQ(Console([&] { EXPECT_EQ(Speed(GetParam().given), 0); }),
              CommandLine(1) + Debug(CONTROL, "iSpeed " + kept + "\n"));
    EXPECT_THAT(Dump(), HasSubstr("当前播放速度是:" + kept + "\n"));
}
INSTANTIATE_TEST_SUITE_P(Each, PlaySpeedTable,
                         testing::Values(SpeedRow{"Hundred", 100, 32}, SpeedRow{"ThirtyThree", 33, 32},
                                         SpeedRow{"ThirtyTwo", 32, 32}, SpeedRow{"Zero", 0, 0},
                                         SpeedRow{"MinusThirtyTwo", -32, -32}, SpeedRow{"MinusThirtyThree", -33, -32},
                                         SpeedRow{"MinusHundred", -100, -32}, SpeedRow{"Highest", INT32_MAX, 32},
                                         SpeedRow{"Lowest", INT32_MIN, -32}),
                         ByName());

struct OpenDirectionRow {
    const char* name;
    uint32_t direction;
    const char* call;
};
static void PrintTo(const OpenDirectionRow& row, std::ostream* out) {
    *out << row.name;
}
class PlaySpeedDirection : public PlaySpeed, public testing::WithParamInterface<OpenDirectionRow> {};

// Adding a channel passes 1 for any value but 0.
TEST_P(PlaySpeedDirection, First_PassesTheSignBitAlone) {
    RawConsole([this] {
        Start();
        Control(HOSTMGR_PLAYCMD_DIRECTION, GetParam().direction);
    });
    EXPECT_THAT(With("set_direction", CallsOf(HOSTMGR_PLAYCMD_SPEED, 1)), ElementsAre(GetParam().call));
}
INSTANTIATE_TEST_SUITE_P(Each, PlaySpeedDirection,
                         testing::Values(OpenDirectionRow{"Forward", 0, "reader1.set_direction(0)"},
                                         OpenDirectionRow{"One", 1, "reader1.set_direction(0)"},
                                         OpenDirectionRow{"Highest", 0x7FFFFFFF, "reader1.set_direction(0)"},
                                         OpenDirectionRow{"SignBit", 0x80000000, "reader1.set_direction(1)"},
                                         OpenDirectionRow{"AllBits", 0xFFFFFFFF, "reader1.set_direction(1)"}),
                         ByName());

TEST_F(PlaySpeed, First_OpensWithTheStreamTypeChosenBefore) {
    RawConsole([this] {
        Start();
        Control(HOSTMGR_PLAYCMD_STREAMTYPE, 1, 2);
    });
    EXPECT_THAT(With("set_stream_type", CallsOf(HOSTMGR_PLAYCMD_SPEED, 1)), ElementsAre("reader1.set_stream_type(2)"));
}

TEST_F(PlaySpeed, FirstOfAReaderPlay_OpensWithItsRangeThenStartsTheAdvanceReader) {
    RawConsole([this] { StartV2(); });
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_SPEED, 1),
                ElementsAreArray(Joined({UnderPlayLock(CONTROL, {"reader1.set_frame_mode(2)"}),
                                         Opened("reader1", "files0", "1720180800, 1720184400"),
                                         {"advance1.start(0)"}})));
    EXPECT_THAT(With("advance1", CallsOf(HOSTMGR_PLAYCMD_SPEED, 2)), IsEmpty());
}

// An earlier reader playback's range stays, and the first speed command confines a callback playback to it.
TEST_F(PlaySpeed, FirstAfterAReaderPlay_UsesItsRange) {
    RawConsole([this] {
        StartV2();
        Stop();
        Start();
    });
    EXPECT_THAT(With("set_time_range", CallsOf(HOSTMGR_PLAYCMD_SPEED, 1)),
                ElementsAre("reader2.set_time_range(1720180800, 1720184400)"));
}

// ---- seek ----------------------------------------------------------------------------------------------------------

TEST_F(PlaySeek, BeforeAStart_IsRefusedSilentlyAndChangesNothing) {
    EXPECT_EQ(Console([this] { EXPECT_EQ(Seek(HostTime(12, 30, 0)), -1); }), CommandLine(3));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
    EXPECT_EQ(TimeOf(HOSTMGR_PLAYTIME_CURRENT).dwYear, 0u);
}

TEST_F(PlaySeek, Channels_GoOnFromThere) {
    Play(1);
    Play(2);
    EXPECT_EQ(Console([this] { EXPECT_EQ(Seek(HostTime(12, 30, 5, 9)), 0); }),
              CommandLine(3) + Debug(CONTROL, "**** SeekTime 2024-07-05 12:30:05 ******\n"));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderPlayLock(CONTROL, {"reader1.seek(1720182605)", "reader2.seek(1720182605)"})));
    const _tagVexoHostMgrTime time = TimeOf(HOSTMGR_PLAYTIME_CURRENT);
    EXPECT_EQ(time.dwMinute, 30u);
    EXPECT_EQ(time.dwSecond, 5u);
    EXPECT_EQ(time.reserved, 9u) << "all seven words";
}

TEST_F(PlaySeek, AdvanceReader_IsMovedFirst) {
    PlayV2();
    EXPECT_EQ(Console([this] { EXPECT_EQ(Seek(HostTime(12, 30, 0)), 0); }),
              CommandLine(3) + Debug(CONTROL, "vexo_advance_avss_file_reader seek!!\n") +
                  Debug(CONTROL, "**** SeekTime 2024-07-05 12:30:00 ******\n"));
    EXPECT_THAT(platform.TakeCalls(),
                ElementsAreArray(UnderPlayLock(CONTROL, {"advance1.seek(1720182600)", "reader1.seek(1720182600)"})));
}

TEST_F(PlaySeek, IdlePlay_IsMovedToo) {
    RawConsole([this] { Start(); });
    platform.TakeCalls();
    EXPECT_EQ(Seek(HostTime(12, 30, 0)), 0);
    EXPECT_THAT(With("seek", platform.TakeCalls()), ElementsAre("reader1.seek(1720182600)"));
}

// Where summer time is kept a summer time of day comes out an hour late: agents have always seen it so.
TEST_F(PlaySeek, SummerTime_IsTakenAsWinterTime) {
    SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    RawConsole([this] { Start(); });
    platform.TakeCalls();
    Seek(HostTime(12, 30, 0));
    EXPECT_THAT(With("seek", platform.TakeCalls()), ElementsAre("reader1.seek(1720179000)"));
}

TEST_F(PlaySeek, AcrossAYearsEnd_CountsOn) {
    RawConsole([this] { Start(); });
    platform.TakeCalls();
    Seek({2023, 12, 31, 23, 59, 59, 0});
    Seek({2024, 1, 1, 0, 0, 0, 0});
    EXPECT_THAT(With("seek", platform.TakeCalls()),
                ElementsAre("reader1.seek(1704067199)", "reader1.seek(1704067200)"));
}

// ---- times ---------------------------------------------------------------------------------------------------------

TEST_F(PlayTime, RangeOfAReaderPlay_IsReadUnderTheLock) {
    RawConsole([this] { StartV2(); });
    platform.TakeCalls();
    const _tagVexoHostMgrTime start = TimeOf(HOSTMGR_PLAYTIME_START);
    EXPECT_THAT(platform.TakeCalls(), ElementsAreArray(UnderPlayLock(CONTROL)));
    EXPECT_EQ(start.dwHour, 12u);
    EXPECT_EQ(start.reserved, 77u);
    const _tagVexoHostMgrTime stop = TimeOf(HOSTMGR_PLAYTIME_STOP);
    EXPECT_EQ(stop.dwHour, 13u);
    EXPECT_EQ(stop.reserved, 88u);
}

TEST_F(PlayTime, Answer_ChangesTheTimeOfTheBufferAlone) {
    RawConsole([this] { StartV2(); });
    HostMgrPlayCtrlParam param;
    memset(&param, 0xEE, sizeof(param));
    param.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    param.dwParam = HOSTMGR_PLAYTIME_START;
    HostMgrPlayCtrlParam expected = param;
    expected.struTime = HostTime(12, 0, 0, 77);
    RawConsole([&] { EXPECT_EQ(Control(&param), 0); });
    EXPECT_EQ(memcmp(&param, &expected, sizeof(param)), 0);
}

TEST_F(PlayTime, UnknownSelector_LeavesTheLockTaken) {
    for (const uint32_t selector : {3u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(selector);
        play = std::make_unique<vexo_hostmgr_playback>();
        platform.TakeCalls();
        HostMgrPlayCtrlParam param = {};
        param.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
        param.dwParam = selector;
        param.struTime = HostTime(1, 2, 3);
        char text[40];
        snprintf(text, sizeof(text), "Error Param 0x%x\n", selector);
        EXPECT_EQ(Console([&] { EXPECT_EQ(Control(&param), -1); }), CommandLine(6) + Error(CONTROL, text));
        EXPECT_THAT(platform.TakeCalls(), ElementsAre(OnPlay("lock", CONTROL)));
        EXPECT_TRUE(platform.Lock(PLAY_LOCK).Held());
        EXPECT_EQ(param.struTime.dwHour, 1u) << "nothing is written";
        play.reset();
        EXPECT_THAT(platform.TakeCalls(),
                    ElementsAre(OnPlay("unlock", "~vexo_hostmgr_playback"),
                                "vexo_utility_delete_lock(vexo_hostmgr_playback lock, vexo_hostmgr_playback, "
                                "~vexo_hostmgr_playback)"));
    }
}

// ---- channels ------------------------------------------------------------------------------------------------------

TEST_F(PlayChannels, AddToAReaderPlay_TakesItsRangeAndItsAdvanceReader) {
    PlayV2();
    const Lines calls = CallsOf(HOSTMGR_PLAYCMD_ADDCHAN, 2);
    EXPECT_EQ(calls.front(), OnPlay("lock", CONTROL));
    EXPECT_EQ(calls.back(), OnPlay("unlock", CONTROL));
    EXPECT_THAT(
        With("inquiry", calls),
        ElementsAre("vexo_model_inquiry_rec_by_time(1281, 97, 1, 2024-7-5 12:0:0, 2024-7-5 13:0:0, 0xffff, 0)"));
    EXPECT_THAT(WithAny({"reader2", "advance"}, calls),
                ElementsAre("reader2.open(files1)", "reader2.set_stream_type(1)", "reader2.set_direction(0)",
                            "reader2.set_frame_mode(2)", "reader2.start()", "advance1.add_reader(reader2)",
                            "reader2.set_time_range(1720180800, 1720184400)"));
}

// A callback playback has no range of its own there.
TEST_F(PlayChannels, AddToACallbackPlay_HasARangeOfZeros) {
    Play();
    const Lines calls = CallsOf(HOSTMGR_PLAYCMD_ADDCHAN, 2);
    EXPECT_THAT(With("inquiry", calls),
                ElementsAre("vexo_model_inquiry_rec_by_time(1281, 97, 1, 0-0-0 0:0:0, 0-0-0 0:0:0, 0xffff, 0)"));
    EXPECT_THAT(With("set_time_range", calls), ElementsAre("reader2.set_time_range(" + RangeOfZeros() + ")"));
    RawConsole([this] { Receive(0x5010002); });
    Reader(2).Add({0});
    EXPECT_THAT(At(0), ElementsAre("end", "1"));
}

TEST_F(PlayChannels, AddThatFails_IsNoErrorOfTheCommand) {
    PlayV2();
    inquiryResult = -1;
    EXPECT_THAT(Console([this] { EXPECT_EQ(Control(HOSTMGR_PLAYCMD_ADDCHAN, 2), 0); }),
                HasSubstr(Error("HostMgrAddPlayNode", "HostMgrMallocPlayNode failed!!\n")));
    EXPECT_THAT(platform.HeldLocks(), IsEmpty());
}

TEST_F(PlayChannels, AddOfAnyNumber_Passes) {
    RawConsole([this] { StartV2(); });
    EXPECT_THAT(With("inquiry", CallsOf(HOSTMGR_PLAYCMD_ADDCHAN, 0)), ElementsAre(HasSubstr("(1281, 97, 4294967295,")));
    EXPECT_THAT(With("inquiry", CallsOf(HOSTMGR_PLAYCMD_ADDCHAN, 1000)), ElementsAre(HasSubstr("(1281, 97, 999,")));
}

TEST_F(PlayChannels, AddBeforeAStart_LinksTheChannel) {
    CallsOf(HOSTMGR_PLAYCMD_ADDCHAN, 2);
    RawConsole([this] { EXPECT_EQ(StartV2(1), 0x5010001); });
    EXPECT_THAT(With("set_frame_mode(0)", CallsOf(HOSTMGR_PLAYCMD_SPEED, 8)),
                ElementsAre("reader1.set_frame_mode(0)", "reader2.set_frame_mode(0)"));
    platform.TakeCalls();
    RawConsole([this] { Stop(); });
    EXPECT_THAT(With("remove_reader", platform.TakeCalls()),
                ElementsAre("advance1.remove_reader(reader1)", "advance1.remove_reader(reader2)"))
        << "whether it was ever in there or not";
    ExpectNothingHeld();
}

struct TypeRow {
    const char* name;
    uint32_t param2;
    const char* call;
    const char* dumped;
};
static void PrintTo(const TypeRow& row, std::ostream* out) {
    *out << row.name;
}
class PlayStreamType : public PlayChannels, public testing::WithParamInterface<TypeRow> {};

TEST_P(PlayStreamType, StreamType_ReachesReaderAndNode) {
    Play();
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_STREAMTYPE, 1, GetParam().param2),
                ElementsAreArray(UnderPlayLock(CONTROL, {GetParam().call})));
    EXPECT_THAT(Dump(), HasSubstr(GetParam().dumped));
}
INSTANTIATE_TEST_SUITE_P(Each, PlayStreamType,
                         testing::Values(TypeRow{"Zero", 0, "reader1.set_stream_type(1)", "流类型:主码流\n"},
                                         TypeRow{"One", 1, "reader1.set_stream_type(1)", "流类型:主码流\n"},
                                         TypeRow{"Two", 2, "reader1.set_stream_type(2)", "流类型:子码流\n"},
                                         TypeRow{"Three", 3, "reader1.set_stream_type(2)", "流类型:子码流\n"},
                                         TypeRow{"Highest", 0xFFFFFFFF, "reader1.set_stream_type(2)",
                                                 "流类型:子码流\n"}),
                         ByName());

TEST_F(PlayChannels, StreamTypeOfAnUnknownChannel_IsIgnored) {
    Play();
    EXPECT_THAT(CallsOf(HOSTMGR_PLAYCMD_STREAMTYPE, 2, 2), ElementsAreArray(UnderPlayLock(CONTROL)));
}

TEST_F(PlayChannels, StreamType_IsSetForTheFirstOfAnyLogin) {
    RawConsole([this] {
        Start(3, 0, LOGIN + 1);
        Start(3);
    });
    EXPECT_THAT(With("reader", CallsOf(HOSTMGR_PLAYCMD_STREAMTYPE, 3, 2)), ElementsAre("reader1.set_stream_type(2)"));
}

// ---- through the exported function ---------------------------------------------------------------------------------

class PlayControlExported : public LoginFixture {};

TEST_F(PlayControlExported, Command20_TakesTheSecondBufferAndAnswersZeroWhateverBecomesOfIt) {
    LogInAll({0x501});
    HostMgrPlayCtrlParam param = {};
    param.dwPlayCmd = 99;
    EXPECT_EQ(Console([&] {
                  EXPECT_EQ(vexo_HostMgr_Dev_Control(0x501, HOSTMGR_CONTROL_PLAYBACK, 0, 0, nullptr, 0, &param,
                                                     sizeof(param), nullptr, 0),
                            0);
              }),
              CommandLine(99) + Error(CONTROL, "Not support!! PlayCmd 0x63\n"));
    EXPECT_THAT(Console([&] {
                    EXPECT_EQ(vexo_HostMgr_Dev_Control(0x501, HOSTMGR_CONTROL_PLAYBACK, 0, 0, &param, sizeof(param),
                                                       nullptr, 0, &param, sizeof(param)),
                              0);
                }),
                HasSubstr("pInBuf (nil), dwInLength 0 size 60\n"));
}

TEST_F(PlayControlExported, GetTime_WritesIntoTheSecondBuffer) {
    LogInAll({0x501});
    HostMgrPlayCtrlParam param = {};
    param.dwPlayCmd = HOSTMGR_PLAYCMD_GETTIME;
    param.struTime = HostTime(1, 2, 3);
    RawConsole([&] {
        vexo_HostMgr_Dev_Control(0x501, HOSTMGR_CONTROL_PLAYBACK, 0, 0, nullptr, 0, &param, sizeof(param), nullptr, 0);
    });
    EXPECT_EQ(param.struTime.dwYear, 0u);
}
