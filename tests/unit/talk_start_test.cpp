// Start, stop and callback of a talk: what speaks against them, their calls in order, and every call in every state.
#include "talk_fixture.h"
#include "vexo_hostmgr_talkback.h"

using testing::_;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::Return;

using namespace vexo_soft;

static const char START[] = "HostMgr_Dev_StartTalkEx";
static const char STOP[] = "HostMgr_Dev_StopTalk";
static const char SET_CALLBACK[] = "HostMgr_Dev_SetTalkCallback";

/** A whole call of a talk operation: the lookup, then what it does under the talk's lock. */
static Lines Called(const std::string& function, const Lines& calls = {}) {
    return Joined({TalkLookup(), Under(TALK_LOCK, function, calls)});
}

static void Ignore(int, int, unsigned char*, unsigned int, void*) {}

// ---- start ---------------------------------------------------------------------------------------------------------

class TalkStart : public TalkFixture {
protected:
    /** A start that fails with that message, and what it called. */
    Lines RefusedStart(const std::string& text, int channel = 0) {
        return CallsOf([&] {
            EXPECT_EQ(Console([&] { EXPECT_EQ(Start(channel), -1); }), Error("HostMgr_Dev_StartTalkEx", text));
        });
    }
};

TEST_F(TalkStart, Device_AsksForModeTwoAndMakesTheThread) {
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Start(), TALK); }), ""); }),
              Called(START, {"vexo_model_get_dev_capability()", "vexo_model_start_talking(1281, 2, 0)",
                             "vexo_utility_creat_thread({1, 0, entry, argument, 0, 0x80000}, HostMgrTalk_Thread)"}));
}

TEST_F(TalkStart, ChannelThree_AsksForModeFourWithIndexTwo) {
    EXPECT_THAT(CallsOf([] { EXPECT_EQ(Start(3), TALK); }), Contains("vexo_model_start_talking(1281, 4, 2)"));
}

TEST_F(TalkStart, HighestChannel_IsAccepted) {
    EXPECT_THAT(CallsOf([] { EXPECT_EQ(Start(16), TALK); }), Contains("vexo_model_start_talking(1281, 4, 15)"));
}

TEST_F(TalkStart, ChannelAboveTheHighest_IsRefused) {
    EXPECT_EQ(RefusedStart("INVALID_PARA\n", 17), Called(START, {"vexo_model_get_dev_capability()"}));
}

TEST_F(TalkStart, ChannelBelowZero_IsRefused) {
    EXPECT_EQ(RefusedStart("INVALID_PARA\n", -1), Called(START, {"vexo_model_get_dev_capability()"}));
    RefusedStart("INVALID_PARA\n", INT32_MIN);
}

TEST_F(TalkStart, RecorderWithoutAnalogChannels_TalksAsADevice) {
    m_capability.analog_channels = 0;
    RefusedStart("INVALID_PARA\n", 1);
    EXPECT_EQ(Start(), TALK);
}

// Word 25 of the record counts, none beside it.
TEST_F(TalkStart, HighestChannel_IsTheCapabilitysWord25) {
    memset(&m_capability, 0, sizeof(m_capability));
    unsigned int words[80] = {};
    words[25] = 5;
    words[24] = words[26] = words[27] = 99;
    memcpy(&m_capability, words, sizeof(m_capability));
    RefusedStart("INVALID_PARA\n", 6);
    EXPECT_EQ(Start(5), TALK);
}

TEST_F(TalkStart, NoCapability_IsRefused) {
    ON_CALL(platform, vexo_model_get_dev_capability).WillByDefault(Return(nullptr));
    EXPECT_EQ(RefusedStart("vexo_model_get_dev_capability error\n"),
              Called(START, {"vexo_model_get_dev_capability()"}));
}

TEST_F(TalkStart, NoParameter_IsRefusedWithoutTheLock) {
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(vexo_HostMgr_Dev_StartTalkEx(LOGIN, 0, nullptr), -1); }),
                            Error(START, "NULL == pParam\n"));
              }),
              TalkLookup());
}

TEST_F(TalkStart, Plain_IsTheOneWithChannelZero) {
    _tagVexoHostMgrTalkParam param = {};
    EXPECT_THAT(CallsOf([&] { EXPECT_EQ(vexo_HostMgr_Dev_StartTalk(LOGIN, &param), TALK); }),
                Contains("vexo_model_start_talking(1281, 2, 0)"));
}

TEST_F(TalkStart, RefusedByTheRecorder_PrintsZeroAndStaysIdle) {
    ON_CALL(platform, vexo_model_start_talking).WillByDefault(Return(-1));
    EXPECT_EQ(RefusedStart("start talk failed hTalk 0x0!!\n"),
              Called(START, {"vexo_model_get_dev_capability()", "vexo_model_start_talking(1281, 2, 0)"}));
    EXPECT_EQ(Console([] { EXPECT_EQ(Stop(), -1); }), Error(STOP, "is not run\n"));
    EXPECT_EQ(threads.Count(), 0u);
}

TEST_F(TalkStart, RefusedWithAHandle_PrintsTheHandleAndForgetsIt) {
    EXPECT_CALL(platform, vexo_model_start_talking)
        .WillOnce([](unsigned int, vexo_talk_mode, unsigned int, unsigned int* talk) {
            EXPECT_EQ(*talk, 0u);
            *talk = 0xBEEF;
            return 1;
        })
        .WillOnce([](unsigned int, vexo_talk_mode, unsigned int, unsigned int* talk) {
            *talk = TALK;
            return 0;
        });
    RefusedStart("start talk failed hTalk 0xbeef!!\n");
    EXPECT_EQ(Start(), TALK);
}

TEST_F(TalkStart, WhileRunning_IsRefusedBeforeAnythingElse) {
    Start();
    EXPECT_EQ(RefusedStart("is run!!\n", 99), Called(START));
}

TEST_F(TalkStart, AfterARefusedStop_IsRefusedWithATrailingBlank) {
    Start();
    StopRefused();
    EXPECT_EQ(RefusedStart("overflow \n", 99), Called(START));
}

TEST_F(TalkStart, AfterAStopOfAnotherHandle_IsRefused) {
    Start();
    EXPECT_EQ(Stop(TALK + 1), 0);
    EXPECT_EQ(RefusedStart("overflow \n"), Called(START));
}

TEST_F(TalkStart, AfterAStop_MakesANewThreadAndGivesTheNewHandle) {
    Start();
    Stop();
    EXPECT_THAT(
        CallsOf([] { EXPECT_EQ(Start(), TALK + 1); }),
        Contains("vexo_utility_creat_thread({1, 0, entry, argument, 0, 0x80000}, HostMgrTalk_Thread)").Times(1));
}

TEST_F(TalkStart, ThreadThatCannotBeMade_LeavesATalkWithoutOne) {
    EXPECT_CALL(platform, vexo_utility_creat_thread(_, _, _)).WillOnce(Return(-1));
    EXPECT_EQ(Start(), TALK);
    EXPECT_THAT(With("retrieve", CallsOf([] { EXPECT_EQ(Stop(), 0); })), IsEmpty());
}

// The recorder's handle 0 counts as none: the thread leaves at once, and a new talk may follow a stop.
TEST_F(TalkStart, HandleZeroFromTheRecorder_IsGivenAndTheThreadLeaves) {
    m_next_talk = 0;
    EXPECT_EQ(Start(), 0);
    EXPECT_FALSE(threads.Step());
    RefusedStart("is run!!\n");
    EXPECT_EQ(Stop(1), 0);
    EXPECT_EQ(Start(), 1);
    Stop(1);
}

TEST_F(TalkStart, TwoLogins_TalkAtOnce) {
    LogInAll({OTHER_LOGIN});
    EXPECT_EQ(Start(), TALK);
    EXPECT_EQ(Start(1, OTHER_LOGIN), TALK + 1);
    EXPECT_EQ(Stop(TALK + 1, OTHER_LOGIN), 0);
    EXPECT_EQ(Stop(), 0);
}

// ---- stop ----------------------------------------------------------------------------------------------------------

class TalkStop : public TalkFixture {
protected:
    static void RefuseHandle(int hTalk, const std::string& shown) {
        EXPECT_EQ(Console([=] { EXPECT_EQ(Stop(hTalk), -1); }), Error(STOP, "hTalk 0x" + shown + " <= 0\n"));
    }
};

TEST_F(TalkStop, Running_StopsClearsAndTakesTheThreadBackWithoutLocks) {
    Start();
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Stop(), 0); }), ""); }),
              Joined({Called(STOP, Joined({{"vexo_model_stop_talking(51)"}, Under(PLAY_LOCK, STOP)})),
                      {Retrieved(TalkThreads::FIRST), "vexo_utility_enter_thread(self, HostMgrTalk_Thread)"},
                      Under(TALK_LOCK, "HostMgrGethTalk"),
                      {"vexo_utility_exit_thread(self)"}}));
}

TEST_F(TalkStop, HandleOfZeroOrLess_IsRefusedWithoutTheLock) {
    Start();
    EXPECT_EQ(CallsOf([] {
                  RefuseHandle(0, "0");
                  RefuseHandle(-1, "ffffffff");
              }),
              Joined({TalkLookup(), TalkLookup()}));
}

TEST_F(TalkStop, Idle_IsRefused) {
    EXPECT_EQ(CallsOf([] { EXPECT_EQ(Console([] { EXPECT_EQ(Stop(), -1); }), Error(STOP, "is not run\n")); }),
              Called(STOP));
}

TEST_F(TalkStop, QueuedFrames_AreFreed) {
    Start();
    Input(InputData(Audio(320)));
    Input(InputData(Audio(320)));
    EXPECT_EQ(With("vexo_utility_free", CallsOf([] { Stop(); })), Lines(4, Freed("HostMgrClrTalkPlayNode")));
}

TEST_F(TalkStop, RefusedByTheRecorder_FailsAndKeepsThreadAndQueue) {
    Start();
    Input(InputData(Audio(320)));
    ON_CALL(platform, vexo_model_stop_talking).WillByDefault(Return(1));
    EXPECT_EQ(CallsOf([] {
                  EXPECT_EQ(Console([] { EXPECT_EQ(Stop(), -1); }),
                            Error(STOP, "vexo_model_stop_talking failed!! hTalk 0x33\n"));
              }),
              Called(STOP, {"vexo_model_stop_talking(51)"}));
    EXPECT_EQ(Console([] { EXPECT_EQ(Stop(), -1); }), Error(STOP, "is not run\n"));
}

TEST_F(TalkStop, AnotherHandle_SucceedsWithoutTheRecorderAndItsThreadLeaves) {
    Start();
    const Lines calls = CallsOf([] { EXPECT_EQ(RawConsole([] { EXPECT_EQ(Stop(TALK + 1), 0); }), ""); });
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 7),
              Joined({Called(STOP, Under(PLAY_LOCK, STOP)), {Retrieved(TalkThreads::FIRST)}}));
    EXPECT_THAT(calls, Contains("vexo_utility_exit_thread(self)"));
    EXPECT_THAT(With("vexo_model_", calls), IsEmpty());
}

TEST_F(TalkStop, AnotherHandle_KeepsLoginHandleAndCallback) {
    Start();
    Stop(TALK + 1);
    EXPECT_EQ(SetCallback(), 0);
    EXPECT_EQ(Input(InputData(Audio(320))), 0);
    EXPECT_EQ(Console([] { EXPECT_EQ(Stop(), -1); }), Error(STOP, "is not run\n"));
}

TEST_F(TalkStop, Success_ForgetsTheCallback) {
    Start();
    SetCallback();
    Stop();
    Start();
    for (int pass = 0; pass < 9; ++pass)
        CaptureAudio(320);
    EXPECT_THAT(m_handed, IsEmpty());
}

// ---- callback ------------------------------------------------------------------------------------------------------

class TalkSetCallback : public TalkFixture {};

TEST_F(TalkSetCallback, Running_IsTakenUnderTheLock) {
    Start();
    EXPECT_EQ(CallsOf([this] { EXPECT_EQ(RawConsole([this] { EXPECT_EQ(SetCallback(), 0); }), ""); }),
              Called(SET_CALLBACK));
}

TEST_F(TalkSetCallback, HandleOfNoTalk_FailsSilentlyWithoutTheLock) {
    Start();
    EXPECT_EQ(CallsOf([this] {
                  EXPECT_EQ(RawConsole([this] {
                                for (const int hTalk : {0, -1, TALK + 1})
                                    EXPECT_EQ(SetCallback(hTalk), -1);
                            }),
                            "");
              }),
              Joined({TalkLookup(), TalkLookup(), TalkLookup()}));
}

TEST_F(TalkSetCallback, Idle_FailsSilently) {
    EXPECT_EQ(RawConsole([this] {
                  EXPECT_EQ(SetCallback(), -1);
                  EXPECT_EQ(SetCallback(0), -1);
              }),
              "");
}

// A stop that gets the lock first: the callback is not kept for the next talk.
TEST_F(TalkSetCallback, StopComesInBetween_FailsAndKeepsNothing) {
    Start();
    BeforeLocking(platform.Lock(TALK_LOCK), SET_CALLBACK, [] { EXPECT_EQ(Stop(), 0); });
    EXPECT_EQ(SetCallback(), -1);
    Start();
    for (int pass = 0; pass < 9; ++pass)
        CaptureAudio(320);
    EXPECT_THAT(m_handed, IsEmpty());
}

// ---- the object alone: logins that no frame lets through -----------------------------------------------------------

class TalkObject : public HostMgrTest {
protected:
    _tagVexoHostMgrTalkParam m_param = {};
    vexo_dev_capability m_capability = {};
    vexo_hostmgr_talkback m_talk;

    void StartTalk() {
        ON_CALL(platform, vexo_model_get_dev_capability).WillByDefault(Return(&m_capability));
        ON_CALL(platform, vexo_model_start_talking)
            .WillByDefault([](unsigned int, vexo_talk_mode, unsigned int, unsigned int* talk) {
                *talk = TALK;
                return 0;
            });
        EXPECT_EQ(m_talk.HostMgr_Dev_StartTalkEx(5, 0, &m_param), TALK);
    }
};

TEST_F(TalkObject, StartOfALoginOfZeroOrLess_IsRefusedWithoutTheLock) {
    platform.TakeCalls();
    EXPECT_EQ(Console([this] { EXPECT_EQ(m_talk.HostMgr_Dev_StartTalkEx(0, 0, &m_param), -1); }),
              Error(START, "hLogin 0x0 <= 0\n"));
    EXPECT_EQ(Console([this] { EXPECT_EQ(m_talk.HostMgr_Dev_StartTalkEx(-2, 0, &m_param), -1); }),
              Error(START, "hLogin 0xfffffffe <= 0\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

TEST_F(TalkObject, StopOfALoginOfZeroOrLess_IsRefusedWithoutTheLock) {
    platform.TakeCalls();
    EXPECT_EQ(Console([this] { EXPECT_EQ(m_talk.HostMgr_Dev_StopTalk(0, 0), -1); }), Error(STOP, "hLogin 0x0 <= 0\n"));
    EXPECT_EQ(Console([this] { EXPECT_EQ(m_talk.HostMgr_Dev_StopTalk(-2, 0), -1); }),
              Error(STOP, "hLogin 0xfffffffe <= 0\n"));
    EXPECT_THAT(platform.TakeCalls(), IsEmpty());
}

// Stop goes by the talk's handle alone.
TEST_F(TalkObject, StopByAnotherLogin_StopsTheTalk) {
    StartTalk();
    EXPECT_EQ(m_talk.HostMgr_Dev_StopTalk(6, TALK), 0);
    EXPECT_THAT(platform.TakeCalls(), Contains("vexo_model_stop_talking(51)"));
}

TEST_F(TalkObject, CallbackOfAnotherLogin_IsRefused) {
    StartTalk();
    for (const int hLogin : {6, 0, -5})
        EXPECT_EQ(m_talk.HostMgr_Dev_SetTalkCallback(hLogin, TALK, Ignore, nullptr), -1);
    EXPECT_EQ(m_talk.HostMgr_Dev_SetTalkCallback(5, TALK, Ignore, nullptr), 0);
}

TEST_F(TalkObject, ThreadsArgument_IsTheObject) {
    StartTalk();
    ASSERT_EQ(platform.Threads().size(), 1u);
    EXPECT_EQ(platform.Threads()[0].ctl.argument, &m_talk);
}

// ---- every call in every state -------------------------------------------------------------------------------------

struct TalkState {
    const char* name;
    int start;  // what each call gives
    int stop;
    int stopOther;
    int input;
    int setCallback;
};

static const TalkState STATES[] = {
    {"Idle", TALK, -1, -1, -1, -1},
    {"Running", -1, 0, 0, 0, 0},
    {"Stopped", TALK + 1, -1, -1, -1, -1},
    {"LeftByARefusedStop", -1, -1, -1, 0, 0},
    {"LeftByAStopOfAnotherHandle", -1, -1, -1, 0, 0},
};

class TalkInState : public TalkFixture, public testing::WithParamInterface<TalkState> {
protected:
    void SetUp() override {
        TalkFixture::SetUp();
        const std::string name = GetParam().name;
        if (name == "Idle")
            return;
        Start();
        if (name == "Stopped")
            Stop();
        if (name == "LeftByARefusedStop")
            StopRefused();
        if (name == "LeftByAStopOfAnotherHandle")
            Stop(TALK + 1);
    }

    static void Expect(int expected, const std::function<int()>& call) {
        int result = 0;
        const std::string console = RawConsole([&] { result = call(); });
        EXPECT_EQ(result, expected) << console;
    }
};

TEST_P(TalkInState, Start) {
    Expect(GetParam().start, [] { return Start(); });
}
TEST_P(TalkInState, Stop) {
    Expect(GetParam().stop, [] { return Stop(); });
}
TEST_P(TalkInState, StopOfAnotherHandle) {
    Expect(GetParam().stopOther, [] { return Stop(TALK + 7); });
}
TEST_P(TalkInState, Input) {
    Expect(GetParam().input, [] { return Input(InputData(Audio(320))); });
}
TEST_P(TalkInState, SetCallback) {
    Expect(GetParam().setCallback, [this] { return SetCallback(); });
}

INSTANTIATE_TEST_SUITE_P(States, TalkInState, testing::ValuesIn(STATES), ByName());
